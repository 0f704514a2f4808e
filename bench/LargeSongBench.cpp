// What one does to a large song in the whole window. An edit, a step of a drag, a turned page and a
// step of scrolling each have a frame of a screen that shows 60 a second: 16 ms.

#include "Editing.h"
#include "OpenedWindow.h"
#include "RatioReporter.h"
#include "Songs.h"
#include "playback/PlaybackEngine.h"
#include "support/SoundFile.h"
#include "views/PlayheadFollower.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerLayout.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollLayout.h"
#include "views/pianoroll/PianoRollViewport.h"

#include <QDir>
#include <QScrollBar>

namespace {

MainWindow* openedWindow = nullptr;

/// 13 tracks of 96 bars with a chord in each, two of the tracks of hand-written notes, and two
/// voices of three minutes.
void openLargeSong()
{
    Project& project = *openedWindow->project();
    static_cast<Song&>(project) = *accompaniedSong(11, 96);
    project.tracks.prepend(melodyTrack(300));
    project.tracks.prepend(melodyTrack(300));
    const QList<float> voice(3 * 60 * 44100, 0.1F);
    AudioTrack voices;
    for (const char* name : {"uno.wav", "dos.wav"}) {
        SoundFile::write(QDir::home().filePath(QString::fromLatin1(name)),
                         SF_FORMAT_WAV | SF_FORMAT_PCM_16, 44100, 1, voice);
        AudioClip clip;
        clip.audioFilePath = QString::fromLatin1(name);
        clip.durationBeats = 3.0 * project.bpm;
        voices.clips.append(clip);
    }
    project.audioTracks = {voices};
    openedWindow->engine()->projectDir = QDir::homePath();
    openedWindow->snapshotAndRefresh();
    QCoreApplication::processEvents();
}

TrackArranger& arranger()
{
    return *openedWindow->findChild<TrackArranger*>();
}

PianoRollCanvas& pianoRoll()
{
    return *openedWindow->findChild<PianoRollCanvas*>();
}

void editALargeSong(benchmark::State& state)
{
    openLargeSong();
    Project& project = *openedWindow->project();
    for (auto _ : state) {
        project.tracks[0].melodyBlocks[0].notes[5].pitch ^= 1;
        openedWindow->snapshotAndRefresh();
        QCoreApplication::processEvents();
    }
}

void dragABlockOfALargeSong(benchmark::State& state)
{
    openLargeSong();
    const int top = arranger().laneTopForNoteTrack(0);
    Editing::dragSteps(state, arranger().view()->viewport(), QPointF(70.0, top + 20.0));
}

void dragANoteOfALargeSong(benchmark::State& state)
{
    openLargeSong();
    QWidget* grid = pianoRoll().view()->viewport();
    const NoteEvent& note = openedWindow->project()->tracks.at(0).melodyBlocks.at(0).notes.at(0);
    const double row = static_cast<double>(grid->height()) / pianoRoll().rows()->visibleRows();
    Editing::dragSteps(state, grid,
                       QPointF(8.0, (pianoRoll().rows()->topPitch() - note.pitch + 0.5) * row));
}

/// Both editors, over pages of the song in turn.
void turnPagesOfALargeSong(benchmark::State& state)
{
    openLargeSong();
    for (PlayheadFollower* follower : {arranger().follower(), pianoRoll().follower()}) {
        follower->setClock([now = qint64{0}]() mutable { return now += 10000; });
        follower->showStart();
    }
    int page = 0;
    for (auto _ : state) {
        const double beat = 20.0 * (++page % 9);
        arranger().follower()->follow(beat * ArrangerLayout::kBeatPixels);
        pianoRoll().follower()->follow(beat * PianoRollLayout::kBeatPixels);
        QCoreApplication::processEvents();
    }
}

/// One of the editors, by a notch of the wheel.
void scrollALargeSong(benchmark::State& state, QScrollBar& bar)
{
    openLargeSong();
    int step = 0;
    for (auto _ : state) {
        bar.setValue(60 * (++step % 30));
        QCoreApplication::processEvents();
    }
    bar.setValue(0);
}

void scrollTheArrangerOfALargeSong(benchmark::State& state)
{
    scrollALargeSong(state, *arranger().view()->horizontalScrollBar());
}

void scrollTheRollOfALargeSong(benchmark::State& state)
{
    scrollALargeSong(state, *pianoRoll().view()->horizontalScrollBar());
}

/// What undo keeps of an edit, the yardstick.
void stateAsJson(benchmark::State& state)
{
    openLargeSong();
    for (auto _ : state)
        benchmark::DoNotOptimize(openedWindow->project()->toJson());
}

BENCHMARK(editALargeSong)->Unit(benchmark::kMillisecond);
BENCHMARK(dragABlockOfALargeSong)->Unit(benchmark::kMillisecond);
BENCHMARK(dragANoteOfALargeSong)->Unit(benchmark::kMillisecond);
BENCHMARK(turnPagesOfALargeSong)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollTheArrangerOfALargeSong)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollTheRollOfALargeSong)->Unit(benchmark::kMillisecond);
BENCHMARK(stateAsJson)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    OpenedWindow opened(argc, argv);
    openedWindow = opened.window();
    return runBenchmarks(argc, argv,
                         {{"Edit of a large song over its state as JSON", "editALargeSong",
                           "stateAsJson", "the edit itself below 16 ms"},
                          {"Turned page over an edit", "turnPagesOfALargeSong", "editALargeSong",
                           "the page itself below 16 ms"}});
}
