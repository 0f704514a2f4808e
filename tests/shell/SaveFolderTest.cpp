#include "shell/SaveFolder.h"

#include "support/Nobody.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"

#include <QStandardPaths>
#include <QTest>

namespace SaveFolderTests {

class SaveFolderTest : public QObject {
    Q_OBJECT

private slots:
    void theFirstFolderThatTakesFilesIsProposed_data();
    void theFirstFolderThatTakesFilesIsProposed();
    void theCurrentFolderIsProposedWhereNoneTakesFiles();
};

void SaveFolderTest::theFirstFolderThatTakesFilesIsProposed_data()
{
    QTest::addColumn<QStringList>("closed");
    QTest::addColumn<QStringList>("missing");
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("proposed");
    QTest::newRow("the last one") << QStringList() << QStringList() << "last"
                                  << "last";
    QTest::newRow("none was the last") << QStringList() << QStringList() << ""
                                       << "current";
    QTest::newRow("the last one went") << QStringList() << QStringList("last") << "last"
                                       << "current";
    QTest::newRow("the last one was closed") << QStringList("last") << QStringList() << "last"
                                             << "current";
    QTest::newRow("started where nobody writes") << QStringList("current") << QStringList() << ""
                                                 << "home/Music";
    QTest::newRow("no folder for music")
        << QStringList("current") << QStringList("home/Music") << ""
        << "home/Documents";
    QTest::newRow("no folders but the home")
        << QStringList("current") << QStringList({"home/Music", "home/Documents"}) << ""
        << "home";
    QTest::newRow("a closed folder for music")
        << QStringList({"current", "home/Music"}) << QStringList() << ""
        << "home/Documents";
}

void SaveFolderTest::theFirstFolderThatTakesFilesIsProposed()
{
    QFETCH(QStringList, closed);
    QFETCH(QStringList, missing);
    QFETCH(QString, last);
    QFETCH(QString, proposed);
    const UserHome place;
    QVERIFY(Nobody::open(place.filePath(".")));
    for (const QString folder : {"home", "home/Music", "home/Documents", "current", "last"}) {
        if (missing.contains(folder))
            continue;
        QVERIFY(QDir().mkdir(place.filePath(folder)));
        QVERIFY(closed.contains(folder) ? Nobody::close(place.filePath(folder))
                                        : Nobody::open(place.filePath(folder)));
    }
    qputenv("HOME", place.filePath("home").toUtf8());
    QVERIFY(QDir::setCurrent(place.filePath("current")));
    const QString lastPath = last.isEmpty() ? last : place.filePath(last);
    QCOMPARE(
        Nobody::answers([&] { return SaveFolder::after(lastPath) == place.filePath(proposed); }),
        1);
}

void SaveFolderTest::theCurrentFolderIsProposedWhereNoneTakesFiles()
{
    const UserHome place;
    QVERIFY(Nobody::close(place.filePath(".")));
    QCOMPARE(Nobody::answers([&] { return SaveFolder::after({}) == QDir::currentPath(); }), 1);
    QVERIFY(Nobody::open(place.filePath(".")));
}

VELTA_GUILESS_TEST(SaveFolderTest)

} // namespace SaveFolderTests

#include "SaveFolderTest.moc"
