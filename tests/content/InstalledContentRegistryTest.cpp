#include "content/InstalledContentRegistry.h"

#include "support/Files.h"
#include "support/FullDisk.h"
#include "support/JsonEdit.h"
#include "support/TestProgram.h"

#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <limits>

namespace InstalledContentRegistryTests {

namespace {

const QByteArray kFile = R"({
    "installedRhythms": ["zamba", "chacarera"],
    "installedInstruments": [
        {"instrumentId": "charango", "localFilePath": "instruments/charango.sf2",
         "referenceCount": 2},
        {"instrumentId": "quena", "localFilePath": "instruments/quena.sf2", "referenceCount": 1}
    ]
})";

/// A registry in a folder of its own, with its soundfonts beside it.
struct Stage {
    Stage()
        : registry(dir.filePath("installed_registry.json"), soundfonts()),
          changed(&registry, &InstalledContentRegistry::registryChanged)
    {
        QDir().mkpath(soundfonts());
    }

    explicit Stage(const QByteArray& file) : Stage()
    {
        writeBytes(path(), file);
        registry.load();
        changed.clear();
    }

    QString path() const { return dir.filePath("installed_registry.json"); }

    QString soundfonts() const { return dir.filePath("soundfonts"); }

    QString bank(const QString& id) const { return soundfonts() + "/instruments/" + id + ".sf2"; }

    QTemporaryDir dir;
    InstalledContentRegistry registry;
    QSignalSpy changed;
};

InstalledInstrumentRecord recordOf(const QString& id, int count = 0)
{
    return {id, "instruments/" + id + ".sf2", count};
}

} // namespace

class InstalledContentRegistryTest : public QObject {
    Q_OBJECT

private slots:
    void aFirstRunFindsNothingAndSaysNothing();
    void constructingReadsNothing();
    void loadingReadsRhythmsAndRecords();
    void loadingReplacesWhatWasThere();
    void aFileThatIsGoneEmptiesTheRegistry();
    void idsAreComparedExactly();
    void aDamagedFileReadsAsWhatIsLeftOfIt_data();
    void aDamagedFileReadsAsWhatIsLeftOfIt();
    void aFileBeyondTheBoundHoldsNothing();
    void savingWritesBothLists();
    void savingFailsWhereNoFileCanBe();
    void savingFailsOnAFullDisk();
    void sharedBanksAreDeletedWithTheLastRhythm();
    void registeringTwiceListsOnceAndCountsTwice();
    void registeringIgnoresTheGivenCount();
    void aBankElsewhereIsNotCounted();
    void registeringSavesThenTells();
    void unregisteringWhatIsNotListedChangesNothing();
    void unregisteringTakesOneOccurrence();
    void unregisteringCountsOnlyTheNamedInstruments();
    void aBankOfTheProgramGoesWithTheDownloadedRhythm();
    void aCountOfZeroGoesAtTheNextUninstall();
    void aBankThatIsGoneIsForgotten();
    void aBankThatCannotBeDeletedIsForgotten();
    void exhaustedCountsStayInRange();
    void nothingIsDeletedOutsideTheSoundfonts_data();
    void nothingIsDeletedOutsideTheSoundfonts();
    void nothingIsDeletedBehindALink();
    void anIdMayStandInTheListItself();
    void damagedFilesNeverHarm();
};

// ---- Reading -------------------------------------------------------------------------------

void InstalledContentRegistryTest::aFirstRunFindsNothingAndSaysNothing()
{
    Stage stage;
    stage.registry.load();
    QVERIFY(stage.registry.installedRhythms().isEmpty());
    QVERIFY(stage.registry.installedInstruments().isEmpty());
    QCOMPARE(stage.changed.size(), 0);
    QVERIFY(!QFile::exists(stage.path()));
}

void InstalledContentRegistryTest::constructingReadsNothing()
{
    const QTemporaryDir dir;
    QVERIFY(writeBytes(dir.filePath("r.json"), kFile));
    const InstalledContentRegistry registry(dir.filePath("r.json"), dir.path());
    QVERIFY(registry.installedRhythms().isEmpty());
}

void InstalledContentRegistryTest::loadingReadsRhythmsAndRecords()
{
    Stage stage;
    QVERIFY(writeBytes(stage.path(), kFile));
    stage.registry.load();
    QCOMPARE(stage.registry.installedRhythms(), QStringList({"zamba", "chacarera"}));
    const QList<InstalledInstrumentRecord> expected{recordOf("charango", 2), recordOf("quena", 1)};
    QCOMPARE(stage.registry.installedInstruments(), expected);
    QCOMPARE(stage.changed.size(), 1);
}

void InstalledContentRegistryTest::loadingReplacesWhatWasThere()
{
    Stage stage(kFile);
    QVERIFY(writeBytes(stage.path(), R"({"installedRhythms": ["cueca"]})"));
    stage.registry.load();
    QCOMPARE(stage.registry.installedRhythms(), QStringList{"cueca"});
    QVERIFY(stage.registry.installedInstruments().isEmpty());
}

void InstalledContentRegistryTest::aFileThatIsGoneEmptiesTheRegistry()
{
    Stage stage(kFile);
    QVERIFY(QFile::remove(stage.path()));
    stage.registry.load();
    QVERIFY(stage.registry.installedRhythms().isEmpty());
    QVERIFY(stage.registry.installedInstruments().isEmpty());
    QCOMPARE(stage.changed.size(), 0);
}

void InstalledContentRegistryTest::idsAreComparedExactly()
{
    const Stage stage(kFile);
    QVERIFY(stage.registry.isRhythmInstalled("zamba"));
    QVERIFY(stage.registry.isInstrumentInstalled("quena"));
    for (const char* other : {"Zamba", "Quena", "zamb", "", "charang"}) {
        QVERIFY2(!stage.registry.isRhythmInstalled(other), other);
        QVERIFY2(!stage.registry.isInstrumentInstalled(other), other);
    }
}

void InstalledContentRegistryTest::aDamagedFileReadsAsWhatIsLeftOfIt_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("rhythms");
    QTest::addColumn<int>("records");
    QTest::newRow("nothing") << QByteArray() << QStringList() << 0;
    QTest::newRow("no JSON") << QByteArray("<html>") << QStringList() << 0;
    QTest::newRow("cut short") << kFile.left(60) << QStringList() << 0;
    QTest::newRow("an array") << QByteArray("[1, 2]") << QStringList() << 0;
    QTest::newRow("lists of other types")
        << QByteArray(R"({"installedRhythms": {"a": 1}, "installedInstruments": "b"})")
        << QStringList() << 0;
    QTest::newRow("a rhythm that is no text")
        << QByteArray(R"({"installedRhythms": ["a", 1e300, null, "b"]})")
        << QStringList{"a", "", "", "b"} << 0;
    QTest::newRow("a record that is no object")
        << QByteArray(R"({"installedInstruments": [7, [], {}, null]})") << QStringList() << 0;
    QTest::newRow("rhythms of the program, in whatever case")
        << QByteArray(R"({"installedRhythms": ["folklore_zamba", "a", "FOLKLORE_Zamba"]})")
        << QStringList{"a"} << 0;
    QTest::newRow("banks that stand elsewhere") << QByteArray(R"({"installedInstruments": [
        {"instrumentId": "velta_bank_gm", "localFilePath": "velta_bank_gm.sf2"},
        {"instrumentId": "charango", "localFilePath": "instruments/quena.sf2"},
        {"instrumentId": "charango", "localFilePath": "instruments//charango.sf2"},
        {"instrumentId": "../velta_bank_gm", "localFilePath": "instruments/../velta_bank_gm.sf2"},
        {"instrumentId": "charango"}, {"instrumentId": "", "localFilePath": "instruments/.sf2"}]})")
                                                << QStringList() << 0;
    QTest::newRow("nested without end")
        << "{\"installedRhythms\": " + QByteArray(200000, '[') << QStringList() << 0;
}

void InstalledContentRegistryTest::aDamagedFileReadsAsWhatIsLeftOfIt()
{
    QFETCH(QByteArray, file);
    QFETCH(int, records);
    Stage stage;
    QVERIFY(writeBytes(stage.path(), file));
    stage.registry.load();
    QTEST(stage.registry.installedRhythms(), "rhythms");
    QCOMPARE(stage.registry.installedInstruments().size(), records);
    QCOMPARE(stage.changed.size(), 1);
}

void InstalledContentRegistryTest::aFileBeyondTheBoundHoldsNothing()
{
    const auto padded = [](qint64 size) { return kFile + QByteArray(size - kFile.size(), ' '); };
    const qint64 bound = InstalledContentRegistry::kMaxFileBytes;
    QCOMPARE(Stage(padded(bound)).registry.installedRhythms().size(), 2);
    QCOMPARE(Stage(padded(bound + 1)).registry.installedRhythms().size(), 0);
}

// ---- Writing -------------------------------------------------------------------------------

void InstalledContentRegistryTest::savingWritesBothLists()
{
    const Stage stage(kFile);
    QVERIFY(QFile::remove(stage.path()));
    QVERIFY(stage.registry.save());
    const QByteArray written = bytesOf(stage.path());
    QCOMPARE(JsonEdit::parsed(written), JsonEdit::parsed(kFile));
    QVERIFY2(written.contains("\n    \"installedRhythms\": [\n        \"zamba\",\n"), written);
}

void InstalledContentRegistryTest::savingFailsWhereNoFileCanBe()
{
    const QTemporaryDir dir;
    QVERIFY(!InstalledContentRegistry(dir.filePath("missing/r.json"), dir.path()).save());
    QVERIFY(!InstalledContentRegistry(dir.path(), dir.path()).save());
}

void InstalledContentRegistryTest::savingFailsOnAFullDisk()
{
    Stage stage;
    stage.registry.registerRhythm(QString(10000, 'x'), {});
    const FullDisk full(4096);
    QVERIFY(!stage.registry.save());
}

// ---- Counting ------------------------------------------------------------------------------

void InstalledContentRegistryTest::sharedBanksAreDeletedWithTheLastRhythm()
{
    Stage stage;
    QVERIFY(writeBytes(stage.bank("charango"), "bank"));
    stage.registry.registerRhythm("a", {recordOf("charango")});
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 1)});
    stage.registry.registerRhythm("b", {recordOf("charango")});
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 2)});

    QCOMPARE(stage.registry.unregisterRhythm("a", {"charango"}), QStringList());
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 1)});
    QVERIFY(QFile::exists(stage.bank("charango")));

    QCOMPARE(stage.registry.unregisterRhythm("b", {"charango"}),
             QStringList{stage.bank("charango")});
    QVERIFY(stage.registry.installedInstruments().isEmpty());
    QVERIFY(!QFile::exists(stage.bank("charango")));
}

void InstalledContentRegistryTest::registeringTwiceListsOnceAndCountsTwice()
{
    Stage stage;
    stage.registry.registerRhythm("a", {recordOf("charango")});
    stage.registry.registerRhythm("a", {recordOf("charango")});
    QCOMPARE(stage.registry.installedRhythms(), QStringList{"a"});
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 2)});
}

void InstalledContentRegistryTest::registeringIgnoresTheGivenCount()
{
    Stage stage;
    stage.registry.registerRhythm("a", {recordOf("charango", 40), recordOf("quena", -3)});
    const QList<InstalledInstrumentRecord> expected{recordOf("charango", 1), recordOf("quena", 1)};
    QCOMPARE(stage.registry.installedInstruments(), expected);
}

void InstalledContentRegistryTest::aBankElsewhereIsNotCounted()
{
    Stage stage(kFile);
    stage.registry.registerRhythm(
        "cueca", {{"charango", "elsewhere/c.sf2", 1}, {"erke", "elsewhere/erke.sf2", 1}});
    QVERIFY(stage.registry.isRhythmInstalled("cueca"));
    QCOMPARE(stage.registry.installedInstruments(),
             (QList{recordOf("charango", 2), recordOf("quena", 1)}));
}

void InstalledContentRegistryTest::registeringSavesThenTells()
{
    Stage stage(kFile);
    QByteArray whenTold;
    connect(&stage.registry, &InstalledContentRegistry::registryChanged, this,
            [&] { whenTold = bytesOf(stage.path()); });
    stage.registry.registerRhythm("cueca", {});
    QCOMPARE(stage.changed.size(), 1);
    QVERIFY2(whenTold.contains("\"cueca\""), whenTold);
    stage.registry.unregisterRhythm("cueca", {});
    QCOMPARE(stage.changed.size(), 2);
    QVERIFY2(!whenTold.contains("\"cueca\""), whenTold);
}

void InstalledContentRegistryTest::unregisteringWhatIsNotListedChangesNothing()
{
    Stage stage(kFile);
    QVERIFY(writeBytes(stage.bank("quena"), "bank"));
    QCOMPARE(stage.registry.unregisterRhythm("folklore_carnavalito", {"quena"}), QStringList());
    QCOMPARE(stage.registry.installedInstruments()[1], recordOf("quena", 1));
    QCOMPARE(bytesOf(stage.path()), kFile);
    QCOMPARE(stage.changed.size(), 0);
    QVERIFY(QFile::exists(stage.bank("quena")));
}

void InstalledContentRegistryTest::unregisteringTakesOneOccurrence()
{
    Stage stage(R"({"installedRhythms": ["a", "b", "a"]})");
    stage.registry.unregisterRhythm("a", {});
    QCOMPARE(stage.registry.installedRhythms(), QStringList({"b", "a"}));
}

void InstalledContentRegistryTest::unregisteringCountsOnlyTheNamedInstruments()
{
    Stage stage(kFile);
    stage.registry.unregisterRhythm("zamba", {"charango"});
    const QList<InstalledInstrumentRecord> expected{recordOf("charango", 1), recordOf("quena", 1)};
    QCOMPARE(stage.registry.installedInstruments(), expected);
}

void InstalledContentRegistryTest::aBankOfTheProgramGoesWithTheDownloadedRhythm()
{
    Stage stage;
    QVERIFY(writeBytes(stage.bank("bombo_leguero"), "came with the program"));
    stage.registry.registerRhythm("zamba", {recordOf("bombo_leguero")});
    stage.registry.unregisterRhythm("zamba", {"bombo_leguero"});
    QVERIFY(!QFile::exists(stage.bank("bombo_leguero")));
}

void InstalledContentRegistryTest::aCountOfZeroGoesAtTheNextUninstall()
{
    Stage stage(R"({"installedRhythms": ["a"], "installedInstruments": [
        {"instrumentId": "quena", "localFilePath": "instruments/quena.sf2",
         "referenceCount": 0}]})");
    QVERIFY(writeBytes(stage.bank("quena"), "bank"));
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("quena", 0)});
    QCOMPARE(stage.registry.unregisterRhythm("a", {}), QStringList{stage.bank("quena")});
    QVERIFY(stage.registry.installedInstruments().isEmpty());
    QVERIFY(!QFile::exists(stage.bank("quena")));
}

void InstalledContentRegistryTest::aBankThatIsGoneIsForgotten()
{
    Stage stage(kFile);
    QCOMPARE(stage.registry.unregisterRhythm("zamba", {"quena"}), QStringList());
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 2)});
}

void InstalledContentRegistryTest::aBankThatCannotBeDeletedIsForgotten()
{
    Stage stage(kFile);
    QVERIFY(QDir().mkpath(stage.bank("quena")));
    QCOMPARE(stage.registry.unregisterRhythm("zamba", {"quena"}), QStringList());
    QVERIFY(!stage.registry.isInstrumentInstalled("quena"));
    QVERIFY(QFile::exists(stage.bank("quena")));
}

// ---- Damaged and hostile files -------------------------------------------------------------

void InstalledContentRegistryTest::exhaustedCountsStayInRange()
{
    Stage stage(R"({"installedRhythms": ["a"], "installedInstruments": [
        {"instrumentId": "most", "localFilePath": "instruments/most.sf2",
         "referenceCount": 2147483647},
        {"instrumentId": "least", "localFilePath": "instruments/least.sf2",
         "referenceCount": -2147483648},
        {"instrumentId": "absurd", "localFilePath": "instruments/absurd.sf2",
         "referenceCount": 1e300},
        {"instrumentId": "half", "localFilePath": "instruments/half.sf2",
         "referenceCount": 1.5}]})");
    QCOMPARE(stage.registry.installedInstruments()[2].referenceCount, 0);
    QCOMPARE(stage.registry.installedInstruments()[3].referenceCount, 0);
    stage.registry.registerRhythm("b", {recordOf("most")});
    QCOMPARE(stage.registry.installedInstruments()[0].referenceCount,
             std::numeric_limits<qint32>::max());
    stage.registry.unregisterRhythm("b", {"least"});
    QCOMPARE(stage.registry.installedInstruments().size(), 1);
}

void InstalledContentRegistryTest::nothingIsDeletedOutsideTheSoundfonts_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("up") << "../victim.txt";
    QTest::newRow("up from inside") << "instruments/../../victim.txt";
    QTest::newRow("absolute") << "%1/victim.txt";
    QTest::newRow("behind a link") << "out/victim.txt";
    QTest::newRow("the folder itself") << "";
    QTest::newRow("a folder in it") << "instruments";
}

void InstalledContentRegistryTest::nothingIsDeletedOutsideTheSoundfonts()
{
    QFETCH(QString, path);
    Stage stage;
    const QString victim = stage.dir.filePath("victim.txt");
    QVERIFY(writeBytes(victim, "precious"));
    QVERIFY(writeBytes(stage.bank("quena"), "bank"));
    QVERIFY(QFile::link(stage.dir.path(), stage.soundfonts() + "/out"));
    path.replace("%1", stage.dir.path());
    stage.registry.registerRhythm("a", {{"x", path, 1}});
    QCOMPARE(stage.registry.unregisterRhythm("a", {"x"}), QStringList());
    QCOMPARE(bytesOf(victim), QByteArray("precious"));
    QVERIFY(QFile::exists(stage.bank("quena")));
    QVERIFY(!stage.registry.isInstrumentInstalled("x"));
}

void InstalledContentRegistryTest::nothingIsDeletedBehindALink()
{
    Stage stage;
    const QString victim = stage.dir.filePath("victim.sf2");
    QVERIFY(writeBytes(victim, "precious"));
    QVERIFY(QDir().mkpath(stage.soundfonts() + "/instruments"));
    QVERIFY(QFile::link(victim, stage.bank("quena")));
    stage.registry.registerRhythm("a", {recordOf("quena")});
    stage.registry.unregisterRhythm("a", {"quena"});
    QCOMPARE(bytesOf(victim), QByteArray("precious"));
}

void InstalledContentRegistryTest::anIdMayStandInTheListItself()
{
    Stage stage(kFile);
    stage.registry.registerRhythm(stage.registry.installedRhythms()[0],
                                  stage.registry.installedInstruments());
    QCOMPARE(stage.registry.installedInstruments()[0], recordOf("charango", 3));
    stage.registry.unregisterRhythm(stage.registry.installedRhythms()[0], {});
    QCOMPARE(stage.registry.installedRhythms(), QStringList{"chacarera"});
}

void InstalledContentRegistryTest::damagedFilesNeverHarm()
{
    QRandomGenerator random(20);
    Stage stage;
    const QString victim = stage.dir.filePath("victim.txt");
    QVERIFY(writeBytes(victim, "precious"));
    for (int round = 0; round < 300; ++round) {
        const QJsonValue json = JsonEdit::mutated(JsonEdit::parsed(kFile), random, 8);
        const QByteArray text = QJsonDocument(json.toObject()).toJson();
        QVERIFY(writeBytes(stage.path(), JsonEdit::mutated(text, random, 4)));
        stage.registry.load();
        stage.registry.registerRhythm("x", {recordOf("charango")});
        stage.registry.unregisterRhythm("x", {"charango", "quena", ""});
        QVERIFY(!stage.registry.isRhythmInstalled("x"));
        QCOMPARE(bytesOf(victim), QByteArray("precious"));
    }
}

VELTA_GUILESS_TEST(InstalledContentRegistryTest)

} // namespace InstalledContentRegistryTests

#include "InstalledContentRegistryTest.moc"
