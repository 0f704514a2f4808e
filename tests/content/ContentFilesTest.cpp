#include "content/ContentFiles.h"

#include "support/Files.h"
#include "support/FullDisk.h"
#include "support/TestProgram.h"
#include "support/TinyBank.h"

#include <QTemporaryDir>
#include <QTest>

namespace ContentFilesTests {

class ContentFilesTest : public QObject {
    Q_OBJECT

private slots:
    void aPlainFileNameNamesAFileAndNothingElse_data();
    void aPlainFileNameNamesAFileAndNothingElse();
    void aPathStaysInsideItsFolder_data();
    void aPathStaysInsideItsFolder();
    void linksAreFollowed_data();
    void linksAreFollowed();
    void theFolderItselfMayBeALink();
    void aFolderThatIsNotThereHoldsPathsToo();
    void aSoundFontIsKnownByItsOutline_data();
    void aSoundFontIsKnownByItsOutline();
    void replacingMakesTheFolders();
    void replacingExchangesTheWholeFile();
    void replacingALinkLeavesItsTarget();
    void replacingFailsWhereNoFolderCanBe();
    void aFullDiskLeavesTheFormerFile_data();
    void aFullDiskLeavesTheFormerFile();
};

void ContentFilesTest::aPlainFileNameNamesAFileAndNothingElse_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("plain");
    QTest::newRow("a word") << "chacarera" << true;
    QTest::newRow("an id") << "folklore_carnavalito-2" << true;
    QTest::newRow("dots inside") << "zamba.v1..2" << true;
    QTest::newRow("letters beyond ASCII") << "ñandú 𝄞" << true;
    QTest::newRow("a space") << "bombo leguero" << true;
    QTest::newRow("percent and hash are letters in a name") << "a%2Fb#c" << true;
    QTest::newRow("the beginning of a device's name") << "console" << true;
    QTest::newRow("a device's name inside") << "my con" << true;
    QTest::newRow("a number behind what has ten devices") << "com10" << true;
    QTest::newRow("nothing") << "" << false;
    QTest::newRow("this folder") << "." << false;
    QTest::newRow("the folder above") << ".." << false;
    QTest::newRow("hidden") << ".bashrc" << false;
    QTest::newRow("a path") << "a/b" << false;
    QTest::newRow("a path up") << "../x" << false;
    QTest::newRow("a path up and down") << "a/../../x" << false;
    QTest::newRow("an absolute path") << "/etc/passwd" << false;
    QTest::newRow("a slash at the end") << "a/" << false;
    QTest::newRow("a path of Windows") << "..\\x" << false;
    QTest::newRow("a drive") << "C:x" << false;
    QTest::newRow("a stream") << "x:y" << false;
    QTest::newRow("a null character") << QString::fromLatin1("a\0b", 3) << false;
    QTest::newRow("a line break") << "a\nb" << false;
    QTest::newRow("a late control character") << QString("a%1").arg(QChar(0x85)) << false;
    QTest::newRow("a wildcard") << "a*" << false;
    QTest::newRow("a query") << "a?b" << false;
    QTest::newRow("markup") << "<b>" << false;
    QTest::newRow("half a character") << QString(QChar(0xD834)) << false;
    QTest::newRow("a device") << "NUL" << false;
    QTest::newRow("a device with a suffix") << "con.x" << false;
    QTest::newRow("a numbered device") << "LPT1" << false;
    QTest::newRow("a device with a raised number") << "com²" << false;
    QTest::newRow("a device before a space") << "aux .x" << false;
}

void ContentFilesTest::aPlainFileNameNamesAFileAndNothingElse()
{
    QFETCH(QString, name);
    QTEST(ContentFiles::isPlainFileName(name), "plain");
}

void ContentFilesTest::aPathStaysInsideItsFolder_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("stays");
    QTest::newRow("a file") << "a.sf2" << true;
    QTest::newRow("a file in a folder") << "instruments/charango.sf2" << true;
    QTest::newRow("deep down") << "a/b/c/d.sf2" << true;
    QTest::newRow("over this folder") << "./instruments/./a.sf2" << true;
    QTest::newRow("two slashes") << "instruments//a.sf2" << true;
    QTest::newRow("dots in a name") << "..a/b..sf2" << true;
    QTest::newRow("the folder itself") << "" << true;
    QTest::newRow("up") << "../a.sf2" << false;
    QTest::newRow("only up") << ".." << false;
    QTest::newRow("up from inside") << "instruments/../../a.sf2" << false;
    QTest::newRow("up and back into a folder called alike") << "../soundfonts2/a.sf2" << false;
    QTest::newRow("up at the end") << "instruments/.." << false;
    QTest::newRow("absolute") << "/etc/passwd" << false;
    QTest::newRow("a resource") << ":/velta.qss" << false;
    QTest::newRow("a drive") << "C:/a.sf2" << false;
    QTest::newRow("a drive's own folder") << "C:a.sf2" << false;
    QTest::newRow("another computer") << "//host/a.sf2" << false;
    QTest::newRow("up in the way of Windows") << "..\\a.sf2" << false;
    QTest::newRow("a stream") << "a.sf2:b" << false;
    QTest::newRow("a null character") << QString::fromLatin1("a\0/../b", 7) << false;
    QTest::newRow("longer than any path") << QString("a/").repeated(400000) << false;
}

void ContentFilesTest::aPathStaysInsideItsFolder()
{
    QFETCH(QString, path);
    const QTemporaryDir dir;
    QDir().mkpath(dir.filePath("soundfonts/instruments"));
    QDir().mkpath(dir.filePath("soundfonts2"));
    QTEST(ContentFiles::staysInside(dir.filePath("soundfonts"), path), "stays");
}

void ContentFilesTest::linksAreFollowed_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("stays");
    QTest::newRow("a file behind a link out") << "out/secret.sf2" << false;
    QTest::newRow("a new file behind a link out") << "out/new.sf2" << false;
    QTest::newRow("a new folder behind a link out") << "out/new/new.sf2" << false;
    QTest::newRow("the link out") << "out" << false;
    QTest::newRow("a file that is a link out") << "file.sf2" << false;
    QTest::newRow("a link to nowhere") << "nowhere" << false;
    QTest::newRow("behind a link to nowhere") << "nowhere/a.sf2" << false;
    QTest::newRow("a link to itself") << "loop/a.sf2" << false;
    QTest::newRow("behind a link that stays") << "in/a.sf2" << true;
}

void ContentFilesTest::linksAreFollowed()
{
    QFETCH(QString, path);
    const QTemporaryDir dir;
    const QString folder = dir.filePath("soundfonts");
    QVERIFY(writeBytes(folder + "/instruments/a.sf2", "a"));
    QVERIFY(writeBytes(dir.filePath("outside/secret.sf2"), "s"));
    QVERIFY(QFile::link(dir.filePath("outside"), folder + "/out"));
    QVERIFY(QFile::link(dir.filePath("outside/secret.sf2"), folder + "/file.sf2"));
    QVERIFY(QFile::link(dir.filePath("missing"), folder + "/nowhere"));
    QVERIFY(QFile::link(folder + "/loop", folder + "/loop"));
    QVERIFY(QFile::link(folder + "/instruments", folder + "/in"));
    QTEST(ContentFiles::staysInside(folder, path), "stays");
}

void ContentFilesTest::theFolderItselfMayBeALink()
{
    const QTemporaryDir dir;
    QVERIFY(QDir().mkpath(dir.filePath("elsewhere/instruments")));
    QVERIFY(QFile::link(dir.filePath("elsewhere"), dir.filePath("soundfonts")));
    QVERIFY(ContentFiles::staysInside(dir.filePath("soundfonts"), "instruments/a.sf2"));
    QVERIFY(!ContentFiles::staysInside(dir.filePath("soundfonts"), "../a.sf2"));
}

void ContentFilesTest::aFolderThatIsNotThereHoldsPathsToo()
{
    const QTemporaryDir dir;
    QVERIFY(ContentFiles::staysInside(dir.filePath("a/b"), "instruments/a.sf2"));
    QVERIFY(!ContentFiles::staysInside(dir.filePath("a/b"), "../a.sf2"));
    QVERIFY(ContentFiles::staysInside("/", "a.sf2"));
}

void ContentFilesTest::aSoundFontIsKnownByItsOutline_data()
{
    const QByteArray bank = TinyBank::bytes({{0, 0, 100}});
    const QByteArray list = TinyBank::chunk("LIST", "INFO");
    const QByteArray noise = QByteArray(4000, '\x9D');
    const auto riff = [](const QByteArray& content) { return TinyBank::chunk("RIFF", content); };
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isOne");
    QTest::newRow("a bank") << bank << true;
    QTest::newRow("a byte of padding behind the bank") << bank + '\0' << true;
    QTest::newRow("more than padding behind the bank") << bank + "xy" << false;
    QTest::newRow("a chunk ahead of the first list")
        << riff("sfbk" + TinyBank::chunk("JUNK", "a") + list) << true;
    QTest::newRow("a list alone") << riff("sfbk" + list) << true;
    QTest::newRow("an empty list") << riff("sfbk" + TinyBank::chunk("LIST", "")) << true;
    QTest::newRow("a list that is cut") << riff("sfbk" + list.chopped(2)) << false;
    QTest::newRow("no list") << riff("sfbkJUNK" + QByteArray(4, '\0')) << false;
    QTest::newRow("no chunk") << riff("sfbk") << false;
    QTest::newRow("noise under a head of its own size") << riff("sfbk" + noise) << false;
    QTest::newRow("noise behind a head that states less")
        << "RIFF" + TinyBank::number(4, 4) + "sfbk" + noise << false;
    QTest::newRow("a bank that lacks its last byte") << bank.chopped(1) << false;
    QTest::newRow("half a bank") << bank.left(bank.size() / 2) << false;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("a head without its kind") << bank.left(8) << false;
    QTest::newRow("a page") << QByteArray("<html><body>Not found</body></html>") << false;
    QTest::newRow("another file of this family")
        << QByteArray("RIFF\x04\x00\x00\x00WAVEfmt ", 16) << false;
    QTest::newRow("a length beyond any file")
        << QByteArray("RIFF\xFF\xFF\xFF\xFFsfbk", 12) << false;
}

void ContentFilesTest::aSoundFontIsKnownByItsOutline()
{
    QFETCH(QByteArray, bytes);
    QTEST(ContentFiles::isSoundFont(bytes), "isOne");
}

void ContentFilesTest::replacingMakesTheFolders()
{
    const QTemporaryDir dir;
    QVERIFY(ContentFiles::replaceFile(dir.filePath("a/b/c.json"), "new"));
    QCOMPARE(bytesOf(dir.filePath("a/b/c.json")), QByteArray("new"));
}

void ContentFilesTest::replacingExchangesTheWholeFile()
{
    const QTemporaryDir dir;
    QVERIFY(writeBytes(dir.filePath("c.json"), "a long former content"));
    QVERIFY(ContentFiles::replaceFile(dir.filePath("c.json"), "new"));
    QCOMPARE(bytesOf(dir.filePath("c.json")), QByteArray("new"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"c.json"});
}

void ContentFilesTest::replacingALinkLeavesItsTarget()
{
    const QTemporaryDir dir;
    QVERIFY(writeBytes(dir.filePath("target"), "former"));
    QVERIFY(QFile::link(dir.filePath("target"), dir.filePath("link")));
    QVERIFY(ContentFiles::replaceFile(dir.filePath("link"), "new"));
    QCOMPARE(bytesOf(dir.filePath("target")), QByteArray("former"));
    QCOMPARE(bytesOf(dir.filePath("link")), QByteArray("new"));
}

void ContentFilesTest::replacingFailsWhereNoFolderCanBe()
{
    const QTemporaryDir dir;
    QVERIFY(writeBytes(dir.filePath("a"), "a file"));
    QVERIFY(!ContentFiles::replaceFile(dir.filePath("a/b.json"), "new"));
    QCOMPARE(bytesOf(dir.filePath("a")), QByteArray("a file"));
}

void ContentFilesTest::aFullDiskLeavesTheFormerFile_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("little more than there is room for") << 4097;
    QTest::newRow("much more than there is room for") << 1000000;
}

void ContentFilesTest::aFullDiskLeavesTheFormerFile()
{
    QFETCH(int, size);
    const QTemporaryDir dir;
    QVERIFY(writeBytes(dir.filePath("a"), "former"));
    {
        const FullDisk full(4096);
        QVERIFY(!ContentFiles::replaceFile(dir.filePath("a"), QByteArray(size, 'x')));
        QVERIFY(!ContentFiles::replaceFile(dir.filePath("b"), QByteArray(size, 'x')));
    }
    QCOMPARE(bytesOf(dir.filePath("a")), QByteArray("former"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"a"});
}

VELTA_GUILESS_TEST(ContentFilesTest)

} // namespace ContentFilesTests

#include "ContentFilesTest.moc"
