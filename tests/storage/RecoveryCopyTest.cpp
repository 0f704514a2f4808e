#include "storage/RecoveryCopy.h"

#include "model/Project.h"
#include "support/Files.h"
#include "support/FullDisk.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace RecoveryCopyTests {

using namespace ProjectBuilder;

namespace {

Song songOf(int bpm)
{
    Song song;
    song.name = "Zamba";
    song.bpm = bpm;
    return song;
}

/// As after a night on which the computer's clock was set.
void setTimes(const QString& folder, const QDateTime& time)
{
    for (const QFileInfo& info : QDir(folder).entryInfoList(QDir::Files)) {
        QFile file(info.filePath());
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(time, QFileDevice::FileModificationTime));
    }
}

} // namespace

/// Copies of works, kept by programs and found by the next.
class RecoveryCopyTest : public QObject {
    Q_OBJECT

private slots:

    void init() { dir_ = std::make_unique<QTemporaryDir>(); }

    void whatWasKeptIsFoundByTheNextProgram();
    void theLastStateIsFound();
    void aCopySharesNothingWithTheSong();
    void nothingIsFoundOfARunningProgram();
    void nothingIsFoundOfWhatWasRemoved();
    void whoFindsACopyHasItAlone();
    void whereNothingCanBeWrittenNothingIsKept();
    void aFullDiskKeepsTheFormerCopy();
    void aClockThatWasSetChangesNothing_data();
    void aClockThatWasSetChangesNothing();

private:
    /// Two folders deeper than anything that is there.
    QString folder() const { return dir_->filePath("datos/recuperacion"); }

    QStringList files() const { return QDir(folder()).entryList(QDir::Files | QDir::Hidden); }

    std::unique_ptr<QTemporaryDir> dir_;
};

void RecoveryCopyTest::whatWasKeptIsFoundByTheNextProgram()
{
    Project song;
    Generator(31, Numbers::AnyFinite).fill(song);
    RecoveryCopy(folder()).keep({"zamba", "a mark", "/clips", song});
    const auto found = AbandonedCopy::findAll(folder());
    QCOMPARE(found.size(), std::size_t(1));
    QCOMPARE(found[0].id(), "zamba");
    QCOMPARE(found[0].lastSeen(), "a mark");
    QCOMPARE(found[0].clipsFolder(), "/clips");
    QCOMPARE(found[0].name(), song.name);
    const std::unique_ptr<Project> read(Project::fromJson(found[0].project(), nullptr));
    QCOMPARE(read->toJson(), song.toJson());
}

void RecoveryCopyTest::theLastStateIsFound()
{
    {
        RecoveryCopy copy(folder());
        for (int bpm = 60; bpm < 100; ++bpm)
            copy.keep({{}, {}, {}, songOf(bpm)});
        QVERIFY(copy.keepNow({{}, {}, {}, songOf(100)}));
        for (int bpm = 101; bpm < 140; ++bpm)
            copy.keep({{}, {}, {}, songOf(bpm)});
    }
    const auto found = AbandonedCopy::findAll(folder());
    QCOMPARE(found.at(0).project()["bpm"].toInt(), 139);
}

/// The song is edited on while a thread of its own writes the copy.
void RecoveryCopyTest::aCopySharesNothingWithTheSong()
{
    Song song = songOf(90);
    song.tracks = {melodyTrack({melody(QList<NoteEvent>(20000, note(60, 0.0)))})};
    {
        RecoveryCopy copy(folder());
        NoteEvent* notes = song.tracks[0].melodyBlocks[0].notes.data();
        copy.keep({{}, {}, {}, song});
        for (int i = 0; i < 20000; ++i)
            notes[i].pitch = 72;
    }
    const auto found = AbandonedCopy::findAll(folder());
    const std::unique_ptr<Project> read(Project::fromJson(found.at(0).project(), nullptr));
    QCOMPARE(read->tracks[0].melodyBlocks[0].notes, QList<NoteEvent>(20000, note(60, 0.0)));
}

void RecoveryCopyTest::nothingIsFoundOfARunningProgram()
{
    RecoveryCopy copy(folder());
    QVERIFY(copy.keepNow({{}, {}, {}, songOf(90)}));
    QVERIFY(AbandonedCopy::findAll(folder()).empty());
    QVERIFY(QFile::exists(copy.path()));
    QVERIFY(copy.keepNow({{}, {}, {}, songOf(91)}));
}

void RecoveryCopyTest::nothingIsFoundOfWhatWasRemoved()
{
    QVERIFY(AbandonedCopy::findAll(folder()).empty());
    {
        RecoveryCopy copy(folder());
        copy.keep({{}, {}, {}, songOf(90)});
        copy.remove();
        QVERIFY(!QFile::exists(copy.path()));
    }
    QVERIFY(AbandonedCopy::findAll(folder()).empty());
    QCOMPARE(files(), QStringList());
}

void RecoveryCopyTest::whoFindsACopyHasItAlone()
{
    RecoveryCopy(folder()).keep({{}, {}, {}, songOf(90)});
    {
        const auto found = AbandonedCopy::findAll(folder());
        QCOMPARE(found.size(), std::size_t(1));
        QVERIFY(AbandonedCopy::findAll(folder()).empty());
    }
    auto again = AbandonedCopy::findAll(folder());
    QCOMPARE(again.size(), std::size_t(1));
    again[0].remove();
    again.clear();
    QVERIFY(AbandonedCopy::findAll(folder()).empty());
    QCOMPARE(files(), QStringList());
}

void RecoveryCopyTest::whereNothingCanBeWrittenNothingIsKept()
{
    writeBytes(dir_->filePath("datos"), "in the way");
    RecoveryCopy copy(folder());
    copy.keep({{}, {}, {}, songOf(90)});
    QVERIFY(!copy.keepNow({{}, {}, {}, songOf(90)}));
    copy.remove();
    QVERIFY(AbandonedCopy::findAll(folder()).empty());
}

void RecoveryCopyTest::aFullDiskKeepsTheFormerCopy()
{
    {
        RecoveryCopy copy(folder());
        QVERIFY(copy.keepNow({{}, {}, {}, songOf(90)}));
        Song longer = songOf(91);
        longer.name = QString(5000, 'x');
        const FullDisk disk(1000);
        QVERIFY(!copy.keepNow({{}, {}, {}, longer}));
    }
    const auto found = AbandonedCopy::findAll(folder());
    QCOMPARE(found.at(0).project()["bpm"].toInt(), 90);
}

void RecoveryCopyTest::aClockThatWasSetChangesNothing_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::newRow("long ago") << QDateTime(QDate(1980, 1, 1), QTime(0, 0));
    QTest::newRow("yesterday") << QDateTime::currentDateTime().addDays(-1);
    QTest::newRow("tomorrow") << QDateTime::currentDateTime().addDays(1);
    QTest::newRow("in years") << QDateTime(QDate(2037, 1, 1), QTime(0, 0));
}

void RecoveryCopyTest::aClockThatWasSetChangesNothing()
{
    QFETCH(QDateTime, time);
    {
        RecoveryCopy copy(folder());
        QVERIFY(copy.keepNow({{}, {}, {}, songOf(90)}));
        setTimes(folder(), time);
        QVERIFY2(AbandonedCopy::findAll(folder()).empty(), "the program that keeps it runs on");
        QVERIFY(copy.keepNow({{}, {}, {}, songOf(91)}));
        setTimes(folder(), time);
    }
    const auto found = AbandonedCopy::findAll(folder());
    QCOMPARE(found.size(), std::size_t(1));
    QCOMPARE(found[0].project()["bpm"].toInt(), 91);
}

VELTA_GUILESS_TEST(RecoveryCopyTest)

} // namespace RecoveryCopyTests

#include "RecoveryCopyTest.moc"
