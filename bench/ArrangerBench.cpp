// What an edit costs in the arranger, and whether the length of a song matters where it is not
// seen.

#include "Editing.h"
#include "RatioReporter.h"
#include "model/Project.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/TrackArranger.h"

#include <QApplication>

#include <memory>

namespace {

constexpr double kBar = 4.0;

/// Blocks of a bar each, in turn over the tracks, and a chord on each of the beats.
std::unique_ptr<Project> songOf(int tracks, int blocks, int chords)
{
    auto project = std::make_unique<Project>();
    project->tracks.resize(tracks);
    for (int i = 0; i < tracks; ++i) {
        project->tracks[i].name = QStringLiteral("Pista %1").arg(i + 1);
        project->tracks[i].isAccompaniment = i >= tracks / 2;
    }
    for (int i = 0; i < blocks; ++i) {
        Track& track = project->tracks[i % tracks];
        const double start = (i / tracks) * kBar;
        if (track.isAccompaniment)
            track.loopBlocks.append(LoopBlock{start, kBar, {}, {}, LoopSection::Normal, 1});
        else
            track.melodyBlocks.append(MelodyBlock{start, kBar, {}});
    }
    for (int i = 0; i < chords; ++i)
        project->harmonyTrack.insertEvent(i, 1.0, 1 + i % 7, ChordExtension::Triad, kBar);
    return project;
}

/// A song in an arranger on the screen.
class Stage {
public:
    Stage(int tracks, int blocks, int chords) : project(songOf(tracks, blocks, chords))
    {
        arranger.resize(1400, 800);
        arranger.show();
        arranger.setContext(project.get(), nullptr, nullptr);
        QCoreApplication::processEvents();
    }

    QWidget* grid() const { return arranger.view()->viewport(); }

    std::unique_ptr<Project> project;
    TrackArranger arranger;
};

Stage* fullStage = nullptr;
Stage* smallStage = nullptr;

void rebuild(benchmark::State& state)
{
    for (auto _ : state) {
        fullStage->arranger.rebuildScene();
        Editing::settle(state);
    }
}

/// As many rectangles as the rebuild makes blocks.
void refillOfPlainItems(benchmark::State& state)
{
    Editing::refill(state, 1400,
                    [](int i) { return QRectF(128.0 * (i % 100), 42.0 * (i / 100), 128.0, 36.0); });
}

/// In the first block.
constexpr QPointF kGrip(70.0, 65.0);

void dragStepInAFullSong(benchmark::State& state)
{
    Editing::dragSteps(state, fullStage->grid(), kGrip);
}

void dragStepInASmallSong(benchmark::State& state)
{
    Editing::dragSteps(state, smallStage->grid(), kGrip);
}

/// Paints the grid alone, into an image of the same size whatever the length of the song.
void paintGrid(benchmark::State& state, int bars)
{
    const Stage stage(1, 1, 0);
    stage.project->tracks[0].loopBlocks[0].startBeat = (bars - 1) * kBar;
    emit stage.project->changed();
    Editing::paint(state, stage.grid());
}

void gridOfAHundredBars(benchmark::State& state)
{
    paintGrid(state, 100);
}

void gridOfTenThousandBars(benchmark::State& state)
{
    paintGrid(state, 10000);
}

BENCHMARK(rebuild)->Unit(benchmark::kMillisecond);
BENCHMARK(refillOfPlainItems)->Unit(benchmark::kMillisecond);
BENCHMARK(dragStepInAFullSong)->Unit(benchmark::kMillisecond);
BENCHMARK(dragStepInASmallSong)->Unit(benchmark::kMillisecond);
BENCHMARK(gridOfAHundredBars)->Unit(benchmark::kMillisecond);
BENCHMARK(gridOfTenThousandBars)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Stage full(kMaxNoteTracks, 1000, 400);
    Stage small(8, 80, 40);
    fullStage = &full;
    smallStage = &small;
    return runBenchmarks(argc, argv,
                         {{"Rebuild of 1400 blocks over refill of 1400 plain items", "rebuild",
                           "refillOfPlainItems", "below 6, and the rebuild itself below 20 ms"},
                          {"Drag step with 1400 blocks over one with 120", "dragStepInAFullSong",
                           "dragStepInASmallSong", "below 4, and the steps below 33 ms and 8 ms"},
                          {"Grid of 10000 bars over grid of 100 bars", "gridOfTenThousandBars",
                           "gridOfAHundredBars", "1"}});
}
