// The offline mix against the bare synthesiser, and the memory that it takes.

#include "RatioReporter.h"
#include "Songs.h"
#include "export/AudioExporter.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "playback/Schedule.h"
#include "playback/SoundfontPlayer.h"

#include <QFile>

#include <fluidsynth.h>

#include <functional>

namespace {

constexpr int kBars = 24;

std::unique_ptr<Project> song()
{
    auto project = accompaniedSong(kMaxNoteTracks - 1, kBars);
    project->tracks.append(melodyTrack(4 * kBars));
    return project;
}

void mix(benchmark::State& state)
{
    StagedContent& content = StagedContent::instance();
    const auto project = song();
    for (auto _ : state)
        benchmark::DoNotOptimize(
            AudioExporter::renderFullMix(*project, QString(), &content.library(),
                                         &content.instruments(), content.bank(), nullptr));
}

/// What the yardstick plays: the song's events by frame, and its length.
struct Score {
    QList<ScheduledEvent> events;
    qint64 frames = 0;
};

Score scoreOf(const Project& project)
{
    Score score;
    double end = project.endBeat();
    for (int channel = 0; channel < project.tracks.size(); ++channel)
        Schedule::appendNotes(
            score.events,
            PlaybackEngine::renderTrackNotes(project, project.tracks[channel],
                                             &StagedContent::instance().library()),
            channel, end);
    Schedule::appendNotes(score.events, PlaybackEngine::renderHarmonyNotes(project),
                          kHarmonyChannel, end);
    Schedule::sort(score.events);
    score.frames = wholeFrames(end * framesPerBeat(project.bpm)) + AudioExporter::kTailFrames;
    return score;
}

/// FluidSynth by itself, set up as the program sets it up.
class BareSynth {
public:
    BareSynth(const QString& bank)
    {
        fluid_settings_setnum(settings_, "synth.sample-rate", kSampleRate);
        fluid_settings_setnum(settings_, "synth.gain", 0.6);
        synth_ = new_fluid_synth(settings_);
        bank_ = fluid_synth_sfload(synth_, qUtf8Printable(bank), 0);
    }

    ~BareSynth()
    {
        delete_fluid_synth(synth_);
        delete_fluid_settings(settings_);
    }

    BareSynth(const BareSynth&) = delete;
    BareSynth& operator=(const BareSynth&) = delete;

    void setUp(int channel, const Track& track)
    {
        const InstrumentLibrary& instruments = StagedContent::instance().instruments();
        const Instrument& instrument = *instruments.find(track.instrumentId);
        const bool drums = instrument.category == InstrumentCategory::Percussion;
        fluid_synth_program_select(synth_, channel, bank_, drums ? 128 : 0,
                                   drums ? 0 : instruments.effectiveGmProgram(instrument));
        fluid_synth_cc(synth_, channel, 7, static_cast<int>(track.volume * 127.0F));
    }

    void apply(const ScheduledEvent& event)
    {
        if (event.noteOn)
            fluid_synth_noteon(synth_, event.channel, event.pitch, event.velocity);
        else
            fluid_synth_noteoff(synth_, event.channel, event.pitch);
    }

    void render(float* out, qint64 frames)
    {
        fluid_synth_write_float(synth_, static_cast<int>(frames), out, 0, 2, out, 1, 2);
    }

private:
    fluid_settings_t* settings_ = new_fluid_settings();
    fluid_synth_t* synth_ = nullptr;
    int bank_ = -1;
};

void bareSynth(benchmark::State& state)
{
    const auto project = song();
    const Score score = scoreOf(*project);
    const double beatFrames = framesPerBeat(project->bpm);
    for (auto _ : state) {
        BareSynth synth(StagedContent::instance().bank());
        for (int channel = 0; channel < project->tracks.size(); ++channel)
            synth.setUp(channel, project->tracks[channel]);
        Track chords;
        chords.instrumentId = QStringLiteral("gm_piano");
        chords.volume = project->harmonyTrack.volume;
        synth.setUp(kHarmonyChannel, chords);

        std::vector<float> out(static_cast<std::size_t>(2 * score.frames));
        qint64 done = 0;
        for (const ScheduledEvent& event : score.events) {
            const qint64 frame = wholeFrames(event.beat * beatFrames);
            if (frame > done)
                synth.render(out.data() + 2 * done, frame - done);
            done = std::max(done, frame);
            synth.apply(event);
        }
        synth.render(out.data() + 2 * done, score.frames - done);
        benchmark::DoNotOptimize(out.data());
    }
}

BENCHMARK(mix)->Unit(benchmark::kMillisecond);
BENCHMARK(bareSynth)->Unit(benchmark::kMillisecond);

/// A figure of this process in MiB, as the kernel tells it.
double memoryMiB(const char* figure)
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly))
        return 0.0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(figure))
            return line.simplified().split(' ').value(1).toDouble() / 1024.0;
    }
    return 0.0;
}

/// Makes the kernel's peak count from now on.
void forgetPeak()
{
    QFile clear("/proc/self/clear_refs");
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

/// What the process takes at its peak while a job runs, over what it had before.
double peakMiB(const std::function<void()>& job)
{
    const double before = memoryMiB("VmRSS:");
    forgetPeak();
    job();
    return memoryMiB("VmHWM:") - before;
}

/// Holds the memory of a mix of three minutes with a voice against its two buffers and the bank.
void printMixMemory()
{
    StagedContent& content = StagedContent::instance();
    const auto project = accompaniedSong(kMaxNoteTracks, 168);
    project->audioTracks.append(AudioTrack());
    const double bank = peakMiB([&] {
        SoundfontPlayer player(SoundfontPlayer::Mode::Offline);
        player.loadGmBank(content.bank());
        for (int channel = 0; channel < project->tracks.size(); ++channel)
            PlaybackEngine::configureChannel(&player, &content.instruments(), channel,
                                             project->tracks[channel].instrumentId);
    });
    double buffer = 0.0;
    const double mix = peakMiB([&] {
        const QList<float> samples =
            AudioExporter::renderFullMix(*project, QString(), &content.library(),
                                         &content.instruments(), content.bank(), nullptr);
        buffer = static_cast<double>(samples.size()) * sizeof(float) / 1048576.0;
    });
    std::printf("Mix of three minutes: %.1f MiB at its peak; its two buffers are %.1f MiB, and the "
                "bank alone takes %.1f MiB\n\n",
                mix, 2 * buffer, bank);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    printMixMemory();
    return runBenchmarks(
        argc, argv,
        {{"Mix over bare FluidSynth", "mix", "bareSynth", "at most 0.75 on two cores"}});
}
