#include "storage/RecoveryCopy.h"
#include "support/OwnProcess.h"
#include "support/ProjectBuilder.h"
#include "support/SeededRandom.h"
#include "support/WindowStage.h"

#include <QTest>

#include <csignal>

using namespace ProjectBuilder;

namespace {

constexpr int kNotes = 2000;

/// How often the program is killed in a row of this test, unless VELTA_KILLS says another number.
constexpr int kKills = 12;

int killsOfARow()
{
    const int asked = qEnvironmentVariableIntValue("VELTA_KILLS");
    return asked > 0 ? asked : kKills;
}

/// The notes of the song's only track after so many edits: each edit moves them all.
QList<NoteEvent> notesAfter(int edits)
{
    QList<NoteEvent> notes;
    for (int i = 0; i < kNotes; ++i)
        notes.append(note(40 + (i + edits) % 40, i * 0.25));
    return notes;
}

void edit(MainWindow& window, int number)
{
    window.project()->bpm = number;
    window.project()->tracks[0].melodyBlocks = {melody(notesAfter(number))};
    window.snapshotAndRefresh();
}

/// Edits and saves without a pause, and tells behind each edit how many came before, all saved.
int saveForEver()
{
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    window.openProjectById("obra");
    int number = 1;
    do {
        edit(window, ++number);
        OwnProcess::say(QString::number(number - 1));
    } while (window.saveCurrentProject());
    return 1;
}

/// Edits a work that nobody saves, every few milliseconds, and tells when each was done.
int editForEver()
{
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    QElapsedTimer clock;
    clock.start();
    int number = 0;
    do {
        edit(window, ++number);
        OwnProcess::say(QString("%1 %2").arg(number).arg(clock.elapsed()));
        QTest::qWait(20);
    } while (window.project());
    return 0;
}

/// The work as a pupil finds it: of its file and the copies that programs have left, the newest.
Song foundWork()
{
    LocalStorageProvider storage{QString()};
    Song newest;
    newest.bpm = 0;
    const auto look = [&](const QJsonObject& json) {
        const std::unique_ptr<Project> work(Project::fromJson(json, nullptr));
        if (work->bpm > newest.bpm)
            newest = *work;
    };
    look(storage.readProject("obra").value_or(QJsonObject{{"bpm", 0}}));
    for (AbandonedCopy& copy : AbandonedCopy::findAll(RecoveryCopy::standardFolder())) {
        look(copy.project());
        copy.remove();
    }
    return newest;
}

} // namespace

/// The program killed at random moments, by a power cut as well as by a fault of its own.
class KilledWindowTest : public QObject {
    Q_OBJECT

private slots:
    void noSavedWorkIsLost();
    void noMoreThanTheLastTwoSecondsAreLost();
};

void KilledWindowTest::noSavedWorkIsLost()
{
    UserHome home;
    home.installBank();
    SeededRandom random(1);
    int damagedFiles = 0;
    for (int round = 0; round < killsOfARow(); ++round) {
        Project first;
        first.bpm = 1;
        first.tracks = {melodyTrack({melody(notesAfter(1))})};
        QVERIFY(LocalStorageProvider(QString()).saveProject("obra", first));
        QProcess program;
        OwnProcess::start(program, "save");
        QVERIFY(program.waitForReadyRead());
        QTest::qSleep(random.between(0, 300));
        program.kill();
        program.waitForFinished();
        QCOMPARE(program.exitStatus(), QProcess::CrashExit);
        const QList<QByteArray> lines = program.readAllStandardOutput().trimmed().split('\n');
        const int saved = lines.last().toInt();
        QVERIFY(saved >= 1);

        damagedFiles += LocalStorageProvider(QString()).readProject("obra") ? 0 : 1;
        const Song found = foundWork();
        QVERIFY2(found.bpm >= saved,
                 qPrintable(QString("%1 was saved, %2 is there").arg(saved).arg(found.bpm)));
        QCOMPARE(found.tracks.value(0).melodyBlocks.value(0).notes, notesAfter(found.bpm));
    }
    qInfo("%d kills, %d files damaged, 0 works lost", killsOfARow(), damagedFiles);
}

void KilledWindowTest::noMoreThanTheLastTwoSecondsAreLost()
{
    UserHome home;
    home.installBank();
    SeededRandom random(2);
    // What the machine may need to write what is due, and does need when it is busy.
    constexpr int kPatienceMs = 8000;
    for (int round = 0; round < std::max(3, killsOfARow() / 10); ++round) {
        QProcess program;
        OwnProcess::start(program, "edit");
        QVERIFY(program.waitForReadyRead());
        QTest::qSleep(2000 + kPatienceMs + random.between(0, 2000));
        program.kill();
        program.waitForFinished();
        const QList<QByteArray> lines = program.readAllStandardOutput().trimmed().split('\n');
        const qint64 end = lines.last().split(' ').last().toLongLong();
        int due = 0;
        for (const QByteArray& line : lines) {
            if (line.split(' ').last().toLongLong() <= end - 2000 - kPatienceMs / 2)
                due = line.split(' ').first().toInt();
        }
        QVERIFY(due >= 1);
        const Song found = foundWork();
        QVERIFY2(found.bpm >= due, qPrintable(QString("%1 was due, %2 is there of %3")
                                                  .arg(due)
                                                  .arg(found.bpm)
                                                  .arg(lines.size())));
        QCOMPARE(found.tracks.value(0).melodyBlocks.value(0).notes, notesAfter(found.bpm));
    }
}

int main(int argc, char** argv)
{
    return OwnProcess::main<KilledWindowTest>(argc, argv,
                                              {{"save", saveForEver}, {"edit", editForEver}});
}

#include "KilledWindowTest.moc"
