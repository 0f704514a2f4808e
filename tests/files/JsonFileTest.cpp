#include "files/JsonFile.h"

#include "support/Files.h"
#include "support/TestProgram.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

namespace JsonFileTests {

class JsonFileTest : public QObject {
    Q_OBJECT

private slots:
    void aDocumentIsAnObjectOrAnArray_data();
    void aDocumentIsAnObjectOrAnArray();
    void aFileBeyondTheBoundIsNone();
    void aMissingFileIsNone();
};

void JsonFileTest::aDocumentIsAnObjectOrAnArray_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("object");
    QTest::addColumn<bool>("array");
    QTest::newRow("an object") << QByteArray(R"({"a": 1})") << true << false;
    QTest::newRow("an array") << QByteArray("[1]") << false << true;
    QTest::newRow("a byte order mark") << QByteArray("\xEF\xBB\xBF{}") << true << false;
    QTest::newRow("nothing") << QByteArray() << false << false;
    QTest::newRow("a number") << QByteArray("17") << false << false;
    QTest::newRow("half a document") << QByteArray(R"({"a": )") << false << false;
    QTest::newRow("something behind it") << QByteArray("{} {}") << false << false;
    QTest::newRow("five thousand levels") << QByteArray(5000, '[') << false << false;
}

void JsonFileTest::aDocumentIsAnObjectOrAnArray()
{
    QFETCH(QByteArray, bytes);
    const QTemporaryDir dir;
    writeBytes(dir.filePath("a.json"), bytes);
    const QJsonDocument document = JsonFile::read(dir.filePath("a.json"), 10000);
    QTEST(document.isObject(), "object");
    QTEST(document.isArray(), "array");
    QTEST(JsonFile::readObject(dir.filePath("a.json"), 10000).has_value(), "object");
}

void JsonFileTest::aFileBeyondTheBoundIsNone()
{
    const QTemporaryDir dir;
    writeBytes(dir.filePath("a.json"), "{}   ");
    QVERIFY(JsonFile::readObject(dir.filePath("a.json"), 5));
    QVERIFY(!JsonFile::readObject(dir.filePath("a.json"), 4));
}

void JsonFileTest::aMissingFileIsNone()
{
    const QTemporaryDir dir;
    QVERIFY(JsonFile::read(dir.filePath("a.json"), 5).isNull());
    QVERIFY(!JsonFile::readObject(dir.filePath("a.json"), 5));
}

VELTA_GUILESS_TEST(JsonFileTest)

} // namespace JsonFileTests

#include "JsonFileTest.moc"
