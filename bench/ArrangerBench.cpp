// What an edit costs in the arranger, and whether the length of a song matters where it is not
// seen.

#include "Editing.h"
#include "RatioReporter.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/AudioClipItem.h"
#include "views/arranger/TrackArranger.h"
#include "voice/AudioDecoder.h"

#include <QApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTemporaryDir>

#include <cmath>
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

    static std::unique_ptr<Stage> ofBars(int bars)
    {
        auto stage = std::make_unique<Stage>(1, 1, 0);
        stage->project->tracks[0].loopBlocks[0].startBeat = (bars - 1) * kBar;
        emit stage->project->changed();
        return stage;
    }

    QWidget* grid() const { return arranger.view()->viewport(); }

    /// In the first block.
    static QPointF grip() { return {70.0, 65.0}; }

    void rebuild() { arranger.rebuildScene(); }

    std::unique_ptr<Project> project;
    TrackArranger arranger;
};

/// A song of 13 tracks and 96 bars beside two voices of three minutes, which are seen.
class VoicedStage : public Stage {
public:
    static constexpr int kBars = 96;
    static constexpr double kVoiceSeconds = 180.0;

    VoicedStage() : Stage(kMaxNoteTracks, kMaxNoteTracks * kBars, kBars)
    {
        engine.projectDir = folder.path();
        AudioDecoder::writeWav(folder.filePath(QStringLiteral("voz.wav")), voice(), kSampleRate, 1);
        AudioTrack track;
        for (const double offset : {0.0, 16.0})
            track.clips.append({.audioFilePath = QStringLiteral("voz.wav"),
                                .offsetBeats = offset,
                                .durationBeats = kVoiceSeconds * project->bpm / 60.0,
                                .tune = {}});
        project->audioTracks = {track, track};
        arranger.setContext(project.get(), &engine, nullptr);
        const auto* item =
            dynamic_cast<const AudioClipItem*>(arranger.scene()->itemOf({BlockKind::Audio, 0, 0}));
        while (!item->isDrawn())
            QCoreApplication::processEvents();
        arranger.view()->verticalScrollBar()->setValue(arranger.laneTopForAudioTrack(0) - 100);
    }

    QPointF inTheVoice(double below) const
    {
        return arranger.view()->mapFromScene(
            QPointF(200.0, arranger.laneTopForAudioTrack(0) + below));
    }

    static QList<float> voice()
    {
        QList<float> samples(static_cast<qsizetype>(kVoiceSeconds * kSampleRate));
        for (qsizetype i = 0; i < samples.size(); ++i) {
            const auto second = static_cast<double>(i) / kSampleRate;
            samples[i] = static_cast<float>(0.9 * std::sin(second) * std::sin(2000.0 * second));
        }
        return samples;
    }

    QTemporaryDir folder;
    PlaybackEngine engine{nullptr, nullptr, nullptr};
};

VoicedStage* voicedStage = nullptr;

/// As many rectangles as the rebuild makes blocks.
void refillOfPlainItems(benchmark::State& state)
{
    Editing::refill(state, 1400,
                    [](int i) { return QRectF(128.0 * (i % 100), 42.0 * (i / 100), 128.0, 36.0); });
}

void dragStepOfAVoice(benchmark::State& state)
{
    Editing::dragSteps(state, voicedStage->grid(), voicedStage->inTheVoice(30.0));
}

void hit(int key, Qt::KeyboardModifiers modifiers = {})
{
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, modifiers);
        QApplication::sendEvent(&voicedStage->arranger, &event);
    }
    QCoreApplication::processEvents();
}

/// One click after the other, up to the repainted screen.
void clickOnAVoice(benchmark::State& state)
{
    const QPointF place = voicedStage->inTheVoice(30.0);
    for (auto _ : state) {
        Editing::mouse(voicedStage->grid(), QEvent::MouseButtonPress, place);
        Editing::mouse(voicedStage->grid(), QEvent::MouseButtonRelease, place);
        QCoreApplication::processEvents();
    }
}

void dragStepOfAllBlocks(benchmark::State& state)
{
    hit(Qt::Key_A, Qt::ControlModifier);
    Editing::dragSteps(state, voicedStage->grid(), voicedStage->inTheVoice(30.0));
    hit(Qt::Key_Escape);
}

/// All of them to and fro, each hit an edit.
void arrowOfAllBlocks(benchmark::State& state)
{
    hit(Qt::Key_A, Qt::ControlModifier);
    bool right = false;
    for (auto _ : state)
        hit((right = !right) ? Qt::Key_Right : Qt::Key_Left);
    hit(Qt::Key_Escape);
}

/// One step of the line of a gain, up to the repainted screen.
void gainStep(benchmark::State& state)
{
    const QPointF line = voicedStage->inTheVoice(21.0);
    Editing::mouse(voicedStage->grid(), QEvent::MouseButtonPress, line);
    int step = 0;
    for (auto _ : state) {
        Editing::mouse(voicedStage->grid(), QEvent::MouseMove,
                       line + QPointF(0.0, ++step % 2 ? -6.0 : 6.0));
        QCoreApplication::processEvents();
    }
    Editing::mouse(voicedStage->grid(), QEvent::MouseMove, line);
    Editing::mouse(voicedStage->grid(), QEvent::MouseButtonRelease, line);
}

void scrollOverVoices(benchmark::State& state)
{
    QScrollBar* bar = voicedStage->arranger.view()->horizontalScrollBar();
    int step = 0;
    for (auto _ : state) {
        bar->setValue(37 * (++step % 100));
        QCoreApplication::processEvents();
    }
    bar->setValue(0);
}

/// A page is another place altogether.
void pageOverVoices(benchmark::State& state)
{
    QScrollBar* bar = voicedStage->arranger.view()->horizontalScrollBar();
    int step = 0;
    for (auto _ : state) {
        bar->setValue(++step % 2 ? 2000 : 0);
        QCoreApplication::processEvents();
    }
    bar->setValue(0);
}

void playheadOverVoices(benchmark::State& state)
{
    int step = 0;
    for (auto _ : state) {
        voicedStage->engine.setPlayheadBeat(0.016 * (++step % 1000));
        QCoreApplication::processEvents();
    }
}

/// The grid with two voices in sight, from as far away and from as near as one gets.
void gridOfVoices(benchmark::State& state, double zoom)
{
    voicedStage->arranger.zoomHorizontal(zoom);
    Editing::paint(state, voicedStage->grid());
    voicedStage->arranger.zoomHorizontal(1.0 / zoom);
}

void gridOfVoicesFromAfar(benchmark::State& state)
{
    gridOfVoices(state, 0.2);
}

void gridOfVoicesAtOnce(benchmark::State& state)
{
    gridOfVoices(state, 1.0);
}

void gridOfVoicesFromNear(benchmark::State& state)
{
    gridOfVoices(state, 6.0);
}

BENCHMARK(dragStepOfAVoice)->Unit(benchmark::kMillisecond);
BENCHMARK(clickOnAVoice)->Unit(benchmark::kMillisecond);
BENCHMARK(dragStepOfAllBlocks)->Unit(benchmark::kMillisecond);
BENCHMARK(arrowOfAllBlocks)->Unit(benchmark::kMillisecond);
BENCHMARK(gainStep)->Unit(benchmark::kMillisecond);
BENCHMARK(scrollOverVoices)->Unit(benchmark::kMillisecond);
BENCHMARK(pageOverVoices)->Unit(benchmark::kMillisecond);
BENCHMARK(playheadOverVoices)->Unit(benchmark::kMillisecond);
BENCHMARK(gridOfVoicesFromAfar)->Unit(benchmark::kMillisecond);
BENCHMARK(gridOfVoicesAtOnce)->Unit(benchmark::kMillisecond);
BENCHMARK(gridOfVoicesFromNear)->Unit(benchmark::kMillisecond);
BENCHMARK(refillOfPlainItems)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    Stage full(kMaxNoteTracks, 1000, 400);
    Stage small(8, 80, 40);
    VoicedStage voiced;
    voicedStage = &voiced;
    Editing::addEditor<Stage>(full, small);
    return runBenchmarks(argc, argv,
                         {{"Rebuild of 1400 blocks over refill of 1400 plain items", "rebuild",
                           "refillOfPlainItems", "below 6, and the rebuild itself below 20 ms"},
                          {"Drag step with 1400 blocks over one with 120", "dragStepInAFullSong",
                           "dragStepInASmallSong", "below 4, and the steps below 33 ms and 8 ms"},
                          {"Drag step of a voice over one in a small song", "dragStepOfAVoice",
                           "dragStepInASmallSong", "every step with voices below 16 ms"},
                          {"Voices from near over voices from afar", "gridOfVoicesFromNear",
                           "gridOfVoicesFromAfar", "1"},
                          {"Grid of 10000 bars over grid of 100 bars", "gridOfTenThousandBars",
                           "gridOfAHundredBars", "1"}});
}
