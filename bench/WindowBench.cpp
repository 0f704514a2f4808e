// From a click on the program's icon to its first painted window, and what an edit costs there.

#include "RatioReporter.h"
#include "model/Project.h"
#include "playback/SoundfontPlayer.h"
#include "shell/IgualadorSimbolos.h"
#include "shell/MainWindow.h"
#include "shell/theme/ThemeManager.h"

#include <QApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
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

/// A song of 13 tracks and 5,000 notes.
void fill(Project& project)
{
    constexpr int kNotes = 5000;
    project.tracks = QList<Track>(kMaxNoteTracks);
    for (int i = 0; i < kNotes; ++i) {
        Track& track = project.tracks[i % kMaxNoteTracks];
        if (track.melodyBlocks.isEmpty())
            track.melodyBlocks.append({.startBeat = 0.0, .durationBeats = 400.0, .notes = {}});
        track.melodyBlocks[0].notes.append({.pitch = 48 + i % 36,
                                            .startBeat = i * 0.25,
                                            .durationBeats = 0.25,
                                            .velocity = 60 + i % 60});
    }
}

MainWindow* openedWindow = nullptr;

void editWithoutViews(benchmark::State& state)
{
    Project& project = *openedWindow->project();
    fill(project);
    for (auto _ : state) {
        project.bpm = project.bpm == 100 ? 101 : 100;
        openedWindow->snapshotAndRefresh();
    }
}

void switchTheme(benchmark::State& state)
{
    for (auto _ : state)
        ThemeManager::instance()->setDark(!ThemeManager::instance()->isDark());
}

BENCHMARK(processStartToFirstPaint)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bankLoad)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(editWithoutViews)->Unit(benchmark::kMillisecond);
BENCHMARK(switchTheme)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    const bool child = argc == 2 && (argv[1] == std::string_view(kFirstPaint) ||
                                     argv[1] == std::string_view(kLoadBank));
    if (child)
        return argv[1] == std::string_view(kLoadBank) ? loadBank(argc, argv)
                                                      : openWindow(argc, argv);
    const QTemporaryDir home;
    qputenv("HOME", home.path().toUtf8());
    qunsetenv("XDG_CONFIG_HOME");
    QApplication application(argc, argv);
    MainWindow window;
    openedWindow = &window;
    return runBenchmarks(argc, argv,
                         {{"First painted window over the load of the bank",
                           "processStartToFirstPaint", "bankLoad", "below 3"}});
}
