// What an edit and a look cost in the piano roll, and whether the length of a song matters where
// it is not seen.

#include "Editing.h"
#include "RatioReporter.h"
#include "model/Project.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QApplication>
#include <QGraphicsItem>
#include <QScrollBar>

#include <memory>

namespace {

constexpr double kBar = 4.0;
constexpr double kNoteBeats = 0.5;

/// Notes of half a beat, a few of them at a time, going up and down through three octaves.
MelodyBlock melodyOf(int notes, int lowest)
{
    MelodyBlock block;
    for (int i = 0; i < notes; ++i) {
        const double start = (i / 4) * kNoteBeats;
        block.notes.append(NoteEvent{lowest + (i * 7) % 36, start, kNoteBeats, 100});
    }
    block.fitDurationToNotes(kBar);
    return block;
}

/// A melody with others behind it, over a chord in each bar.
std::unique_ptr<Project> songOf(int notes, int ghostTracks, int ghostNotes)
{
    auto project = std::make_unique<Project>();
    project->tracks.resize(1 + ghostTracks);
    project->tracks[0].melodyBlocks = {melodyOf(notes, 48)};
    for (int i = 1; i <= ghostTracks; ++i)
        project->tracks[i].melodyBlocks = {melodyOf(ghostNotes, 42 + i)};
    for (int bar = 0; bar < project->barCount(8); ++bar)
        project->harmonyTrack.insertEvent(bar * kBar, kBar, 1 + bar % 7, ChordExtension::Triad,
                                          kBar);
    return project;
}

/// A song in a piano roll on the screen, all of its pitches on show.
class Stage {
public:
    Stage(int notes, int ghostTracks, int ghostNotes)
        : project(songOf(notes, ghostTracks, ghostNotes))
    {
        canvas.resize(1400, 800);
        canvas.show();
        canvas.setContext(project.get(), nullptr);
        QList<int> visible;
        for (int i = 0; i < project->tracks.size(); ++i)
            visible.append(i);
        canvas.setVisibleTracks(visible, 0);
        canvas.showWholeMelody();
        QCoreApplication::processEvents();
    }

    static std::unique_ptr<Stage> ofBars(int bars)
    {
        auto stage = std::make_unique<Stage>(1, 0, 0);
        stage->project->tracks[0].melodyBlocks[0].durationBeats = bars * kBar;
        emit stage->project->changed();
        return stage;
    }

    QWidget* grid() const { return canvas.view()->viewport(); }

    void rebuild() { canvas.rebuildScene(); }

    /// The middle of the first note, in the grid.
    QPointF grip() const
    {
        const auto items = canvas.scene()->items(Qt::AscendingOrder);
        for (const QGraphicsItem* item : items) {
            if (item->type() == NoteItem::Type)
                return canvas.view()->mapFromScene(item->sceneBoundingRect().center());
        }
        return {};
    }

    std::unique_ptr<Project> project;
    PianoRollCanvas canvas;
};

Stage* fullStage = nullptr;

/// As many rectangles as the rebuild makes notes.
void refillOfPlainItems(benchmark::State& state)
{
    Editing::refill(state, 4000,
                    [](int i) { return QRectF(32.0 * (i / 4), 16.0 * (i % 36), 32.0, 14.0); });
}

/// The mouse over the grid without a button.
void hover(benchmark::State& state)
{
    int step = 0;
    for (auto _ : state)
        Editing::mouse(fullStage->grid(), QEvent::MouseMove, QPointF(300.0 + ++step % 400, 300.0));
}

/// One frame of a scroll, the song as wide as it is at the start or as dense as it can be.
void scrollFrames(benchmark::State& state, double zoom)
{
    fullStage->canvas.zoomHorizontal(zoom);
    QCoreApplication::processEvents();
    QScrollBar* bar = fullStage->canvas.view()->horizontalScrollBar();
    int step = 0;
    for (auto _ : state) {
        bar->setValue(bar->minimum() + 7 * (++step % 200));
        QCoreApplication::processEvents();
    }
    bar->setValue(bar->minimum());
    fullStage->canvas.zoomHorizontal(1.0 / zoom);
}

void scrollFrame(benchmark::State& state)
{
    scrollFrames(state, 1.0);
}

void scrollFrameOfASqueezedSong(benchmark::State& state)
{
    scrollFrames(state, 0.2);
}

/// Paints the whole grid at once, as after an edit.
void paintFrames(benchmark::State& state, double zoom)
{
    fullStage->canvas.zoomHorizontal(zoom);
    QCoreApplication::processEvents();
    for (auto _ : state)
        fullStage->grid()->repaint();
    fullStage->canvas.zoomHorizontal(1.0 / zoom);
}

void fullFrame(benchmark::State& state)
{
    paintFrames(state, 1.0);
}

void fullFrameOfASqueezedSong(benchmark::State& state)
{
    paintFrames(state, 0.2);
}

BENCHMARK(refillOfPlainItems)->Unit(benchmark::kMillisecond);
BENCHMARK(hover)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollFrameOfASqueezedSong)->Unit(benchmark::kMillisecond);
BENCHMARK(fullFrame)->Unit(benchmark::kMillisecond);
BENCHMARK(fullFrameOfASqueezedSong)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Stage full(2000, 4, 500);
    Stage small(200, 0, 0);
    fullStage = &full;
    Editing::addEditor<Stage>(full, small);
    return runBenchmarks(argc, argv,
                         {{"Rebuild of 4000 notes over refill of 4000 plain items", "rebuild",
                           "refillOfPlainItems", "below 4, and the rebuild itself below 25 ms"},
                          {"Drag step with 4000 notes over one with 200", "dragStepInAFullSong",
                           "dragStepInASmallSong", "the steps below 33 ms and 8 ms"},
                          {"Frame of a scroll over a whole frame", "scrollFrame", "fullFrame",
                           "below 1, and frames of a scroll below 16 ms"},
                          {"Grid of 10000 bars over grid of 100 bars", "gridOfTenThousandBars",
                           "gridOfAHundredBars", "1"}});
}
