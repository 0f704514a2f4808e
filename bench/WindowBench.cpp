// From a click on the program's icon to its first painted window, and what an edit costs there.

#include "OpenedWindow.h"
#include "RatioReporter.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "shell/IgualadorSimbolos.h"
#include "shell/theme/ThemeManager.h"
#include "storage/LocalStorageProvider.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTimer>

#include <chrono>
#include <string_view>

namespace {

// What a process of this program does in place of measuring.
constexpr const char* kFirstPaint = "--first-paint";
constexpr const char* kLoadBank = "--load-bank";

double secondsNow()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Ends the event loop when a window has been painted.
class FirstPaint : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && qobject_cast<MainWindow*>(watched))
            QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
        return false;
    }
};

/// Opens the window as the program does, and prints when it was painted.
int openWindow(int argc, char** argv)
{
    QApplication application(argc, argv);
    application.installEventFilter(new ovelin::IgualadorSimbolos(&application));
    QStandardPaths::setTestModeEnabled(true);
    ThemeManager::instance()->applySavedTheme();
    MainWindow window;
    FirstPaint firstPaint;
    window.installEventFilter(&firstPaint);
    window.showMaximized();
    QApplication::exec();
    std::printf("%.6f\n", secondsNow());
    return 0;
}

/// Loads the bank alone, and prints the seconds that it took.
int loadBank(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    SoundfontPlayer player(SoundfontPlayer::Mode::Offline);
    const double start = secondsNow();
    player.loadGmBank(MainWindow::resourcesDir() + QStringLiteral("/soundfonts/velta_bank_gm.sf2"));
    std::printf("%.6f\n", secondsNow() - start);
    return 0;
}

double numberFromChild(const char* task)
{
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(task)});
    child.waitForFinished();
    return child.readAllStandardOutput().trimmed().toDouble();
}

void processStartToFirstPaint(benchmark::State& state)
{
    for (auto _ : state) {
        const double start = secondsNow();
        state.SetIterationTime(numberFromChild(kFirstPaint) - start);
    }
}

/// In a process of its own, since two synthesisers of one process share their samples.
void bankLoad(benchmark::State& state)
{
    for (auto _ : state)
        state.SetIterationTime(numberFromChild(kLoadBank));
}

constexpr double kBar = 4.0;
constexpr int kBlocksPerTrack = 10;

Track melodyTrack(int notes)
{
    Track track;
    for (int i = 0; i < kBlocksPerTrack; ++i)
        track.melodyBlocks.append(
            {.startBeat = i * 4 * kBar, .durationBeats = 4 * kBar, .notes = {}});
    for (int i = 0; i < notes; ++i)
        track.melodyBlocks[i % kBlocksPerTrack].notes.append(
            {.pitch = 48 + i % 36,
             .startBeat = (i / kBlocksPerTrack) * 0.25,
             .durationBeats = 0.25,
             .velocity = 60 + i % 60});
    return track;
}

Track loopTrack(const LoopLayer& layer)
{
    Track track;
    track.isAccompaniment = true;
    track.layerId = layer.id;
    track.instrumentId = layer.instrumentId;
    for (int i = 0; i < kBlocksPerTrack; ++i)
        track.loopBlocks.append({.startBeat = i * 4 * kBar,
                                 .durationBeats = 4 * kBar,
                                 .rhythmId = layer.rhythmId,
                                 .layerId = layer.id,
                                 .section = LoopSection::Normal,
                                 .variantIndex = 3});
    return track;
}

/// A pupil's song: 8 tracks, 80 blocks, half of them loops, 1,500 written notes, a chord on each
/// bar.
void fill(Project& project, const LoopLibrary& library)
{
    constexpr int kTracks = 4;
    project.tracks.clear();
    for (int i = 0; i < kTracks; ++i)
        project.tracks.append(melodyTrack(1500 / kTracks));
    const QList<LoopLayer> layers = library.layersForRhythm(QStringLiteral("popular_cumbia"));
    for (int i = 0; i < kTracks; ++i)
        project.tracks.append(loopTrack(layers.at(i)));
    for (int bar = 0; bar < 4 * kBlocksPerTrack; ++bar)
        project.harmonyTrack.insertEvent(bar * kBar, kBar, 1 + bar % 7, ChordExtension::Triad,
                                         kBar);
}

MainWindow* openedWindow = nullptr;

/// From the edit to the repainted window, with the song playing.
void editWhilePlaying(benchmark::State& state)
{
    Project& project = *openedWindow->project();
    fill(project, *openedWindow->loopLibrary());
    openedWindow->snapshotAndRefresh();
    openedWindow->engine()->play(0.0);
    for (auto _ : state) {
        project.bpm = project.bpm == 100 ? 101 : 100;
        openedWindow->snapshotAndRefresh();
        QCoreApplication::processEvents();
    }
    openedWindow->engine()->stop();
}

/// The part of an edit that undo needs, the yardstick of the whole.
void stateAsJson(benchmark::State& state)
{
    fill(*openedWindow->project(), *openedWindow->loopLibrary());
    for (auto _ : state)
        benchmark::DoNotOptimize(openedWindow->project()->toJson());
}

QString nameOfWork(int notes)
{
    return QStringLiteral("notas_%1").arg(notes);
}

/// Saves a work whose first track holds that many notes in one block.
void saveWork(int notes)
{
    Project work;
    Track track;
    track.melodyBlocks.append({.startBeat = 0.0, .durationBeats = notes * 0.25, .notes = {}});
    for (int i = 0; i < notes; ++i)
        track.melodyBlocks[0].notes.append({.pitch = 48 + i % 36,
                                            .startBeat = i * 0.25,
                                            .durationBeats = 0.25,
                                            .velocity = 60 + i % 60});
    work.tracks.append(track);
    LocalStorageProvider(QString()).saveProject(nameOfWork(notes), work);
}

/// From the choice of a work to its painted window.
void openWork(benchmark::State& state)
{
    const int notes = static_cast<int>(state.range(0));
    saveWork(notes);
    for (auto _ : state) {
        openedWindow->openProjectById(nameOfWork(notes));
        QCoreApplication::processEvents();
    }
}

void switchTheme(benchmark::State& state)
{
    for (auto _ : state)
        ThemeManager::instance()->setDark(!ThemeManager::instance()->isDark());
}

BENCHMARK(processStartToFirstPaint)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bankLoad)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(editWhilePlaying)->Unit(benchmark::kMillisecond);
BENCHMARK(stateAsJson)->Unit(benchmark::kMillisecond);
BENCHMARK(openWork)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond);
BENCHMARK(switchTheme)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    const bool child = argc == 2 && (argv[1] == std::string_view(kFirstPaint) ||
                                     argv[1] == std::string_view(kLoadBank));
    if (child)
        return argv[1] == std::string_view(kLoadBank) ? loadBank(argc, argv)
                                                      : openWindow(argc, argv);
    OpenedWindow opened(argc, argv);
    openedWindow = opened.window();
    return runBenchmarks(argc, argv,
                         {{"First painted window over the load of the bank",
                           "processStartToFirstPaint", "bankLoad", "below 3"},
                          {"Opening a work, 20,000 over 5,000 notes", "openWork/20000",
                           "openWork/5000", "4, and 5,000 notes in 60 ms"},
                          {"Edit of a playing song over its state as JSON", "editWhilePlaying",
                           "stateAsJson", "the edit itself below 50 ms"}});
}
