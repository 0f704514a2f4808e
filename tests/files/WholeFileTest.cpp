#include "files/WholeFile.h"

#include "support/Files.h"
#include "support/FullDisk.h"
#include "support/TestProgram.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <sys/stat.h>

namespace WholeFileTests {

/// Files read and written at one go, on disks that have room and on disks that have none.
class WholeFileTest : public QObject {
    Q_OBJECT

private slots:

    void init() { dir_ = std::make_unique<QTemporaryDir>(); }

    // Reading
    void aFileIsReadUpToItsBound();
    void onlyRegularFilesAreRead_data();
    void onlyRegularFilesAreRead();
    void aLinkIsFollowedOnlyWhereItMayBe();

    // Replacing
    void replacingGivesANewFile();
    void replacingRefusesALink();
    void whereNoFileCanBeNothingIsWritten_data();
    void whereNoFileCanBeNothingIsWritten();

    // Rewriting
    void rewritingKeepsTheFileItself();
    void rewritingFollowsALink();
    void aMissingFileIsMade();
    void rewrittenIsWhatWasGiven_data();
    void rewrittenIsWhatWasGiven();

    // A full disk
    void aFullDiskKeepsTheFormerBytes_data();
    void aFullDiskKeepsTheFormerBytes();
    void aFullDiskLeavesNoBeginning();
    void whatIsBrokenOffIsNoMixture();

private:
    QString path(const QString& name = "archivo") const { return dir_->filePath(name); }

    QStringList everything() const
    {
        return QDir(dir_->path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> dir_;
};

// ---- Reading -------------------------------------------------------------------------------

void WholeFileTest::aFileIsReadUpToItsBound()
{
    writeBytes(path(), "12345");
    QCOMPARE(WholeFile::read(path(), 5), QByteArray("12345"));
    QVERIFY(!WholeFile::read(path(), 4));
    QVERIFY(!WholeFile::read(path("none"), 5));
    writeBytes(path("empty"), "");
    QCOMPARE(WholeFile::read(path("empty"), 0), QByteArray());
}

void WholeFileTest::onlyRegularFilesAreRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a folder") << "folder";
    QTest::newRow("a pipe") << "pipe";
    QTest::newRow("a device without an end") << "/dev/zero";
    QTest::newRow("a link to a pipe") << "link";
}

void WholeFileTest::onlyRegularFilesAreRead()
{
    QFETCH(QString, name);
    QDir().mkpath(path("folder"));
    mkfifo(path("pipe").toUtf8().constData(), 0600);
    QFile::link(path("pipe"), path("link"));
    const QString there = name.startsWith('/') ? name : path(name);
    QVERIFY(QFileInfo::exists(there) || QFileInfo(there).isSymLink());
    QVERIFY(!WholeFile::read(there, 1024));
    QVERIFY(!WholeFile::rewrite(there, "bytes"));
}

void WholeFileTest::aLinkIsFollowedOnlyWhereItMayBe()
{
    writeBytes(path("target"), "bytes");
    QVERIFY(QFile::link(path("target"), path()));
    QCOMPARE(WholeFile::read(path(), 5), QByteArray("bytes"));
    QVERIFY(!WholeFile::read(path(), 5, WholeFile::Links::Refuse));
    QVERIFY(WholeFile::read(path("target"), 5, WholeFile::Links::Refuse));
}

// ---- Replacing -----------------------------------------------------------------------------

void WholeFileTest::replacingGivesANewFile()
{
    writeBytes(path(), "former");
    QFile held(path());
    QVERIFY(held.open(QIODevice::ReadOnly));
    QVERIFY(WholeFile::replace(path(), "new"));
    QCOMPARE(bytesOf(path()), "new");
    QCOMPARE(held.readAll(), "former");
    QCOMPARE(everything(), QStringList{"archivo"});
}

void WholeFileTest::replacingRefusesALink()
{
    writeBytes(path("target"), "somebody's");
    QVERIFY(QFile::link(path("target"), path()));
    QVERIFY(!WholeFile::replace(path(), "new"));
    QCOMPARE(bytesOf(path("target")), "somebody's");
    QVERIFY(QFileInfo(path()).isSymLink());
}

void WholeFileTest::whereNoFileCanBeNothingIsWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no folder") << "missing/archivo";
    QTest::newRow("a folder has the name") << "folder";
    QTest::newRow("below a file") << "file/archivo";
    QTest::newRow("a name too long for any file system") << QString(5000, 'x');
}

void WholeFileTest::whereNoFileCanBeNothingIsWritten()
{
    QFETCH(QString, name);
    QDir().mkpath(path("folder"));
    writeBytes(path("file"), "file");
    QVERIFY(!WholeFile::replace(path(name), "bytes"));
    QVERIFY(!WholeFile::rewrite(path(name), "bytes"));
    QCOMPARE(everything(), (QStringList{"file", "folder"}));
}

// ---- Rewriting -----------------------------------------------------------------------------

void WholeFileTest::rewritingKeepsTheFileItself()
{
    writeBytes(path(), "former");
    QVERIFY(QFile::setPermissions(path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    QFile held(path());
    QVERIFY(held.open(QIODevice::ReadOnly));
    QVERIFY(WholeFile::rewrite(path(), "new bytes"));
    QCOMPARE(held.readAll(), "new bytes");
    QVERIFY(QFileInfo(path()).permission(QFile::ReadOther));
    QCOMPARE(everything(), QStringList{"archivo"});
}

void WholeFileTest::rewritingFollowsALink()
{
    writeBytes(path("target"), "former");
    QVERIFY(QFile::link(path("target"), path()));
    QVERIFY(WholeFile::rewrite(path(), "new"));
    QCOMPARE(bytesOf(path("target")), "new");
    QVERIFY(QFileInfo(path()).isSymLink());
}

void WholeFileTest::aMissingFileIsMade()
{
    QVERIFY(WholeFile::rewrite(path(), "bytes"));
    QCOMPARE(bytesOf(path()), "bytes");
}

void WholeFileTest::rewrittenIsWhatWasGiven_data()
{
    QTest::addColumn<int>("former");
    QTest::addColumn<int>("size");
    const QList<int> sizes{0, 1, 4095, 4096, 70000, 1000000};
    for (const int former : sizes) {
        for (const int size : sizes)
            QTest::addRow("%d bytes become %d", former, size) << former << size;
    }
}

void WholeFileTest::rewrittenIsWhatWasGiven()
{
    QFETCH(int, former);
    QFETCH(int, size);
    writeBytes(path(), QByteArray(former, 'a'));
    QByteArray bytes(size, 'b');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i % 251);
    QVERIFY(WholeFile::rewrite(path(), bytes));
    QVERIFY(bytesOf(path()) == bytes);
}

// ---- A full disk ---------------------------------------------------------------------------

void WholeFileTest::aFullDiskKeepsTheFormerBytes_data()
{
    QTest::addColumn<int>("room");
    QTest::newRow("no room at all") << 0;
    QTest::newRow("room for what was there") << 1000;
    QTest::newRow("room for a part of what is new") << 1200;
}

void WholeFileTest::aFullDiskKeepsTheFormerBytes()
{
    QFETCH(int, room);
    const QByteArray former(1000, 'a');
    writeBytes(path(), former);
    {
        const FullDisk disk(static_cast<rlim_t>(room));
        QVERIFY(!WholeFile::replace(path(), QByteArray(1500, 'b')));
        QCOMPARE(bytesOf(path()), former);
        QVERIFY(!WholeFile::rewrite(path(), QByteArray(1500, 'b')));
    }
    QCOMPARE(bytesOf(path()), former);
    QCOMPARE(everything(), QStringList{"archivo"});
    QVERIFY(WholeFile::rewrite(path(), QByteArray(1500, 'b')));
    QCOMPARE(bytesOf(path()), QByteArray(1500, 'b'));
}

void WholeFileTest::aFullDiskLeavesNoBeginning()
{
    {
        const FullDisk disk(100);
        QVERIFY(!WholeFile::rewrite(path(), QByteArray(1500, 'b')));
        QVERIFY(!WholeFile::replace(path(), QByteArray(1500, 'b')));
    }
    QCOMPARE(everything(), QStringList());
}

/// A disk that fails in the midst of bytes for which there was room.
void WholeFileTest::whatIsBrokenOffIsNoMixture()
{
    writeBytes(path(), "[" + QByteArray(998, '1') + "]");
    {
        const FullDisk disk(500);
        QVERIFY(!WholeFile::rewrite(path(), "[" + QByteArray(998, '2') + "]"));
    }
    QCOMPARE(bytesOf(path()).at(0), '\0');
    QCOMPARE(bytesOf(path()).at(900), '1');
}

VELTA_GUILESS_TEST(WholeFileTest)

} // namespace WholeFileTests

#include "WholeFileTest.moc"
