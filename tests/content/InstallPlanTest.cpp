#include "content/InstallPlan.h"

#include "support/ContentFixture.h"
#include "support/JsonEdit.h"
#include "support/TestProgram.h"

#include <QTest>

namespace InstallPlanTests {

namespace {

Instrument recorded(const QString& id, const QString& bankPath)
{
    return {.id = id,
            .name = id,
            .category = InstrumentCategory::Strings,
            .source = InstrumentSource::CustomRecordedBank,
            .generalMidiProgram = 0,
            .soundfontBankPath = bankPath};
}

Instrument recorded(const QString& id)
{
    return recorded(id, "instruments/" + id + ".sf2");
}

const QByteArray kPackage = R"({"rhythm": {"id": "zamba"}, "instruments": [
    {"id": "charango", "source": "CustomRecordedBank",
     "soundfontBankPath": "instruments/charango.sf2"},
    {"id": "gm_piano", "source": "GeneralMidiBank", "soundfontBankPath": "../x"},
    {"id": "quena", "source": "CustomRecordedBank"},
    {"id": "erke"}]})";

} // namespace

class InstallPlanTest : public QObject {
    Q_OBJECT

private slots:
    void onlyRecordedInstrumentsAreRead();
    void whatIsNoPackageIsRefused_data();
    void whatIsNoPackageIsRefused();
    void noErrorNeedBeAskedFor();
    void instrumentsKeepToTheBankRoot_data();
    void instrumentsKeepToTheBankRoot();
    void aFolderOfBanksThatLeadsOutIsRefused();
    void everyInstrumentIsLookedAt();
    void banksThatAreThereAreNotFetched();
    void aBankIsLookedForWhereItIsDeclared();
    void everyRecordedInstrumentIsRecorded();
    void damagedPackagesNeverHarm();
};

void InstallPlanTest::onlyRecordedInstrumentsAreRead()
{
    QList<Instrument> instruments;
    QString error;
    QVERIFY(InstallPlan::readRecorded(kPackage, &instruments, &error));
    QCOMPARE(InstallPlan::ids(instruments), QStringList({"charango", "quena"}));
    QCOMPARE(instruments[0].soundfontBankPath, "instruments/charango.sf2");
    QVERIFY(instruments[1].soundfontBankPath.isEmpty());
    QVERIFY(error.isEmpty());
}

void InstallPlanTest::whatIsNoPackageIsRefused_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("reason");
    QTest::newRow("nothing") << QByteArray() << "";
    QTest::newRow("a page") << QByteArray("<html></html>") << "";
    QTest::newRow("an array") << QByteArray("[{}]") << "";
    QTest::newRow("half of a package") << kPackage.left(80) << "";
    QTest::newRow("nested without end") << "{\"rhythm\":" + QByteArray(100000, '{') << "";
    QTest::newRow("no rhythm") << QByteArray("{}") << "falta rhythm.id";
    QTest::newRow("a rhythm without an id")
        << QByteArray(R"({"rhythm": {"displayName": "Zamba"}})") << "falta rhythm.id";
    QTest::newRow("an id that is no text")
        << QByteArray(R"({"rhythm": {"id": 7}})") << "falta rhythm.id";
}

void InstallPlanTest::whatIsNoPackageIsRefused()
{
    QFETCH(QByteArray, text);
    QList<Instrument> instruments;
    QString error;
    QVERIFY(!InstallPlan::readRecorded(text, &instruments, &error));
    QTEST(error, "reason");
    QVERIFY(instruments.isEmpty());
}

void InstallPlanTest::noErrorNeedBeAskedFor()
{
    QList<Instrument> instruments;
    QVERIFY(!InstallPlan::readRecorded("{}", &instruments, nullptr));
    QVERIFY(!InstallPlan::keepToBankRoot({recorded("..")}, "/banks", nullptr));
}

void InstallPlanTest::instrumentsKeepToTheBankRoot_data()
{
    const QString badId = "el id de un instrumento no sirve como nombre de archivo";
    const QString badPath = "el banco de charango no está en su carpeta";
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    QTest::newRow("as it ought to be") << "charango"
                                       << "instruments/charango.sf2"
                                       << "";
    QTest::newRow("another folder of the root") << "charango"
                                                << "andes/c.sf2" << badPath;
    QTest::newRow("no path") << "charango"
                             << "" << badPath;
    QTest::newRow("the bank of another instrument") << "charango"
                                                    << "instruments/quena.sf2" << badPath;
    QTest::newRow("its own bank, written in another way") << "charango"
                                                          << "instruments//charango.sf2" << badPath;
    QTest::newRow("no id") << ""
                           << "instruments/a.sf2" << badId;
    QTest::newRow("an id up") << "../charango"
                              << "instruments/a.sf2" << badId;
    QTest::newRow("an id with a slash") << "a/b"
                                        << "instruments/a.sf2" << badId;
    QTest::newRow("an id with a backslash") << "a\\b"
                                            << "instruments/a.sf2" << badId;
    QTest::newRow("an id of two dots") << ".."
                                       << "instruments/a.sf2" << badId;
    QTest::newRow("an absolute path") << "charango"
                                      << "/etc/passwd" << badPath;
    QTest::newRow("a path up") << "charango"
                               << "../a.sf2" << badPath;
    QTest::newRow("a path up from inside") << "charango"
                                           << "instruments/../../a" << badPath;
    QTest::newRow("a path behind a link out") << "charango"
                                              << "out/a.sf2" << badPath;
    QTest::newRow("the bank of the program") << "charango"
                                             << "velta_bank_gm.sf2" << badPath;
    QTest::newRow("the bank of the program, written in other ways")
        << "charango"
        << ".//Velta_Bank_GM.SF2" << badPath;
    QTest::newRow("an id whose bank file leads out") << "linked"
                                                     << "instruments/linked.sf2"
                                                     << "el banco de linked no está en su carpeta";
}

void InstallPlanTest::instrumentsKeepToTheBankRoot()
{
    QFETCH(QString, id);
    QFETCH(QString, path);
    const ContentFixture content;
    ContentFixture::write(content.filePath("secret"), "s");
    ContentFixture::write(content.bankRoot() + "/instruments/a.sf2", "a");
    QVERIFY(QFile::link(content.filePath("."), content.bankRoot() + "/out"));
    QVERIFY(
        QFile::link(content.filePath("secret"), content.bankRoot() + "/instruments/linked.sf2"));
    QString error;
    const bool keeps =
        InstallPlan::keepToBankRoot({recorded(id, path)}, content.bankRoot(), &error);
    QTEST(error, "reason");
    QCOMPARE(keeps, error.isEmpty());
}

void InstallPlanTest::aFolderOfBanksThatLeadsOutIsRefused()
{
    const ContentFixture content;
    QVERIFY(QDir().mkpath(content.filePath("elsewhere")));
    QVERIFY(QFile::link(content.filePath("elsewhere"), content.bankRoot() + "/instruments"));
    QVERIFY(!InstallPlan::keepToBankRoot({recorded("charango")}, content.bankRoot(), nullptr));
}

void InstallPlanTest::everyInstrumentIsLookedAt()
{
    QString error;
    QVERIFY(InstallPlan::keepToBankRoot({}, "/banks", &error));
    QVERIFY(InstallPlan::keepToBankRoot({recorded("a"), recorded("b")}, "/banks", &error));
    QVERIFY(error.isEmpty());
    QVERIFY(!InstallPlan::keepToBankRoot({recorded("a"), recorded("b", "../b")}, "/banks", &error));
    QCOMPARE(error, "el banco de b no está en su carpeta");
}

void InstallPlanTest::banksThatAreThereAreNotFetched()
{
    ContentFixture content;
    ContentFixture::write(content.bankRoot() + "/instruments/b.sf2", "any content");
    QCOMPARE(InstallPlan::banksToFetch({recorded("a"), recorded("b"), recorded("c")},
                                       content.instruments()),
             QStringList({"a", "c"}));
}

void InstallPlanTest::aBankIsLookedForWhereItIsDeclared()
{
    ContentFixture content;
    ContentFixture::write(content.bankRoot() + "/instruments/a.sf2", "any content");
    QCOMPARE(InstallPlan::banksToFetch({recorded("a", "other/a.sf2")}, content.instruments()),
             QStringList{"a"});
    ContentFixture::write(content.bankRoot() + "/other/a.sf2", "any content");
    QCOMPARE(InstallPlan::banksToFetch({recorded("a", "other/a.sf2")}, content.instruments()),
             QStringList());
}

void InstallPlanTest::everyRecordedInstrumentIsRecorded()
{
    const auto records = InstallPlan::records({recorded("a"), recorded("b", "x/y.sf2")});
    QCOMPARE(records.size(), 2);
    QCOMPARE(records[0].instrumentId, "a");
    QCOMPARE(records[0].localFilePath, "instruments/a.sf2");
    QCOMPARE(records[0].referenceCount, 1);
    QCOMPARE(records[1].localFilePath, "x/y.sf2");
}

void InstallPlanTest::damagedPackagesNeverHarm()
{
    ContentFixture content;
    QRandomGenerator random(22);
    int accepted = 0;
    for (int round = 0; round < 500; ++round) {
        const QJsonValue json = JsonEdit::mutated(JsonEdit::parsed(kPackage), random, 12);
        QByteArray text = QJsonDocument(json.toObject()).toJson();
        if (round % 2 == 0)
            text = JsonEdit::mutated(text, random, 4);
        QList<Instrument> instruments;
        if (!InstallPlan::readRecorded(text, &instruments, nullptr) ||
            !InstallPlan::keepToBankRoot(instruments, content.bankRoot(), nullptr))
            continue;
        ++accepted;
        for (const QString& id : InstallPlan::banksToFetch(instruments, content.instruments()))
            QVERIFY2(!id.isEmpty() && !id.contains('/') && !id.contains(".."), qPrintable(id));
    }
    QVERIFY(accepted > 50);
}

VELTA_GUILESS_TEST(InstallPlanTest)

} // namespace InstallPlanTests

#include "InstallPlanTest.moc"
