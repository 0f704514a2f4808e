#include "suite/ArchivoJson.h"

#include "suite/SuiteFolder.h"
#include "support/FullDisk.h"
#include "support/TestProgram.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace ArchivoJsonTests {

using namespace brusel;

/// Reading and writing of whole documents.
class ArchivoJsonTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void aFileIsIndentedJsonInUtf8();
    void aWrittenDocumentComesBack();
    void writingPutsTheNewFileInPlaceOfTheOld();
    void writingFailsWhereNoFileCanBe_data();
    void writingFailsWhereNoFileCanBe();
    void writingFollowsNoLink();
    void aFullDiskKeepsTheFormerFile_data();
    void aFullDiskKeepsTheFormerFile();
    void whatIsNoDocumentReadsAsNull_data();
    void whatIsNoDocumentReadsAsNull();
    void aByteOrderMarkIsNoObstacle();
    void filesAreReadUpToTheirBound();
    void filesAreWrittenUpToTheirBound();

private:
    QString file() const { return dir_->filePath("archivo.json"); }

    std::unique_ptr<QTemporaryDir> dir_;
};

void ArchivoJsonTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    dir_ = std::make_unique<QTemporaryDir>();
}

void ArchivoJsonTest::aFileIsIndentedJsonInUtf8()
{
    QVERIFY(escribirJson(file(), QJsonDocument(QJsonObject{{"nombre", QString("Iñaki")}})));
    QCOMPARE(bytesOf(file()), QByteArray("{\n    \"nombre\": \"I\xC3\xB1"
                                         "aki\"\n}\n"));
}

void ArchivoJsonTest::aWrittenDocumentComesBack()
{
    const QJsonDocument document(QJsonArray{1, QJsonObject{{"a", QJsonArray{true, "b"}}}});
    QVERIFY(escribirJson(file(), document));
    QCOMPARE(leerJson(file()), document);
}

void ArchivoJsonTest::writingPutsTheNewFileInPlaceOfTheOld()
{
    writeBytes(file(), QByteArray(100000, ' '));
    QFile held(file());
    QVERIFY(held.open(QIODevice::ReadOnly));
    QVERIFY(escribirJson(file(), QJsonDocument(QJsonArray())));
    QCOMPARE(bytesOf(file()), QByteArray("[\n]\n"));
    QCOMPARE(held.readAll(), QByteArray(100000, ' '));
    QCOMPARE(QDir(dir_->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList{"archivo.json"});
}

void ArchivoJsonTest::writingFailsWhereNoFileCanBe_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("no folder") << "missing/archivo.json";
    QTest::newRow("a folder has the name") << "folder";
    QTest::newRow("below a file") << "file/archivo.json";
    QTest::newRow("a name too long for any file system") << QString(5000, 'x');
}

void ArchivoJsonTest::writingFailsWhereNoFileCanBe()
{
    QFETCH(QString, path);
    QDir().mkpath(dir_->filePath("folder"));
    writeBytes(dir_->filePath("file"), "file");
    QVERIFY(!escribirJson(dir_->filePath(path), QJsonDocument(QJsonArray())));
    QCOMPARE(QDir(dir_->path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             (QStringList{"file", "folder"}));
}

void ArchivoJsonTest::writingFollowsNoLink()
{
    const QString target = dir_->filePath("target.json");
    QVERIFY(QFile::link(target, file()));
    QVERIFY(!escribirJson(file(), QJsonDocument(QJsonArray())));
    QVERIFY(!QFile::exists(target));
    writeBytes(target, "somebody's");
    QVERIFY(!escribirJson(file(), QJsonDocument(QJsonArray())));
    QCOMPARE(bytesOf(target), "somebody's");
    QVERIFY(QFileInfo(file()).isSymLink());
}

void ArchivoJsonTest::aFullDiskKeepsTheFormerFile_data()
{
    QTest::addColumn<int>("room");
    QTest::newRow("no room at all") << 0;
    QTest::newRow("room for a part") << 1000;
}

void ArchivoJsonTest::aFullDiskKeepsTheFormerFile()
{
    QFETCH(int, room);
    const QTemporaryDir folder;
    const QString path = folder.filePath("sesion.json");
    const QJsonDocument former(QJsonObject{{"modo", "solo"}});
    QVERIFY(escribirJson(path, former));
    const QJsonDocument longer(QJsonObject{{"modo", QString(1500, 'x')}});
    {
        const FullDisk disk(static_cast<rlim_t>(room));
        QVERIFY(!escribirJson(path, longer));
    }
    QCOMPARE(leerJson(path), former);
    QVERIFY(escribirJson(path, longer));
    QCOMPARE(leerJson(path), longer);
}

void ArchivoJsonTest::whatIsNoDocumentReadsAsNull_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("no file") << -1;
    for (int i = 0; i < obstacles().size(); ++i)
        QTest::newRow(obstacles()[i].name) << i;
}

void ArchivoJsonTest::whatIsNoDocumentReadsAsNull()
{
    QFETCH(int, index);
    if (index >= 0)
        obstacles()[index].place(file());
    QVERIFY(leerJson(file()).isNull());
}

void ArchivoJsonTest::aByteOrderMarkIsNoObstacle()
{
    writeBytes(file(), "\xEF\xBB\xBF[7]");
    QCOMPARE(leerJson(file()), QJsonDocument(QJsonArray{7}));
}

void ArchivoJsonTest::filesAreReadUpToTheirBound()
{
    const QByteArray full = "[" + QByteArray(kMaxArchivoJson - 2, ' ') + "]";
    writeBytes(file(), full);
    QCOMPARE(leerJson(file()), QJsonDocument(QJsonArray()));
    writeBytes(file(), full + "\n");
    QVERIFY(leerJson(file()).isNull());
}

void ArchivoJsonTest::filesAreWrittenUpToTheirBound()
{
    // A list of one string has eleven bytes around its characters: two brackets, four spaces, two
    // quotation marks and three ends of lines.
    const qsizetype longest = kMaxArchivoJson - 11;
    const QJsonDocument full(QJsonArray{QString(longest, 'x')});
    QVERIFY(escribirJson(file(), full));
    QCOMPARE(QFileInfo(file()).size(), kMaxArchivoJson);
    QVERIFY(!escribirJson(file(), QJsonDocument(QJsonArray{QString(longest + 1, 'y')})));
    QCOMPARE(leerJson(file()), full);
}

VELTA_GUILESS_TEST(ArchivoJsonTest)

} // namespace ArchivoJsonTests

#include "ArchivoJsonTest.moc"
