// What three tuned minutes of voice cost the thread of the windows at a start and at a wrap, once
// they are mixed. With a sound server the voices are sent to it.

#include "RatioReporter.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "voice/VoiceMix.h"

#include <QAudioDevice>
#include <QCoreApplication>
#include <QFile>
#include <QMediaDevices>
#include <QTemporaryDir>
#include <QThread>

#include <memory>

namespace {

constexpr int kSeconds = 180;

/// A work of one voice that is out of tune, in a folder of its own.
class VoiceWork {
public:
    VoiceWork()
    {
        QFile file(folder_.filePath("voz.wav"));
        const QList<float> voice = Tones::voice({.hz = 233.0}, kSampleRate, kSeconds * kSampleRate);
        if (!file.open(QIODevice::WriteOnly) || !file.write(WavFile::bytes(voice)))
            qFatal("No voice can be written.");
        AudioClip clip;
        clip.audioFilePath = "voz.wav";
        clip.durationBeats = kSeconds * song_->bpm / 60.0;
        clip.tune = {.enabled = true, .intensity = 0.8F};
        AudioTrack track;
        track.clips = {clip};
        song_->audioTracks = {track};
        engine_.setProject(song_.get());
        engine_.projectDir = folder_.path();
        engine_.prepareVoices();
        while (!engine_.voicesReady())
            QThread::msleep(10);
    }

    PlaybackEngine& engine() { return engine_; }

    QList<float> uncachedMix() const
    {
        return VoiceMix::render(*song_, folder_.path(), qint64(kSeconds) * kSampleRate);
    }

private:
    QTemporaryDir folder_;
    std::unique_ptr<Project> song_ = std::make_unique<Project>();
    InstrumentLibrary instruments_{folder_.path()};
    LoopLibrary library_{folder_.path(), &instruments_};
    SoundfontPlayer player_{SoundfontPlayer::Mode::Realtime};
    PlaybackEngine engine_{&player_, &library_, &instruments_};
};

VoiceWork& work()
{
    static VoiceWork work;
    return work;
}

/// Lets go what a start has left to the event loop, outside the measure.
void tidy(benchmark::State& state)
{
    state.PauseTiming();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    state.ResumeTiming();
}

/// The yardstick: the mix that every start and every wrap would otherwise wait for.
void mixAnew(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(work().uncachedMix());
}

void start(benchmark::State& state)
{
    for (auto _ : state) {
        work().engine().play(0.0);
        tidy(state);
    }
    work().engine().stop();
    state.counters["device"] = QMediaDevices::defaultAudioOutput().isNull() ? 0.0 : 1.0;
}

void wrap(benchmark::State& state)
{
    for (auto _ : state) {
        work().engine().startVoicePlayback(16.0);
        tidy(state);
    }
    work().engine().stopVoicePlayback();
}

BENCHMARK(mixAnew)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(start)->Iterations(20)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(wrap)->Iterations(20)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return runBenchmarks(
        argc, argv,
        {{"A start over a mix anew (start: below 20 ms)", "start", "mixAnew", "below 0.02"},
         {"A wrap over a mix anew (wrap: below 5 ms)", "wrap", "mixAnew", "below 0.005"}});
}
