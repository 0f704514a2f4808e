// A voice of one minute: the pitch search against its plain form, and the whole tuning.

#include "RatioReporter.h"
#include "music/Beats.h"
#include "support/PlainPitchDetector.h"
#include "support/Tones.h"
#include "voice/PitchDetector.h"
#include "voice/VoiceTuner.h"

#include <cmath>

namespace {

constexpr int kSeconds = 60;

/// A minute of song: two notes a second, up and down two octaves and a little out of tune.
const QList<float>& song()
{
    static const QList<float> samples = [] {
        QList<float> sung;
        for (int note = 0; note < 2 * kSeconds; ++note) {
            const int step = note % 48 < 24 ? note % 48 : 48 - note % 48;
            const double hz = 112.0 * std::exp2(step / 12.0);
            sung += Tones::voice({.hz = hz}, kSampleRate, kSampleRate / 2);
        }
        return sung;
    }();
    return samples;
}

/// Seconds of sound worked through in a second.
void reportRealTime(benchmark::State& state)
{
    state.counters["x_real_time"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * kSeconds, benchmark::Counter::kIsRate);
}

void plainPitchDetector(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(PlainPitchDetector::detectTrack(song(), kSampleRate));
    reportRealTime(state);
}

void pitchDetector(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(PitchDetector::detectTrack(song(), kSampleRate));
    reportRealTime(state);
}

void voiceTuner(benchmark::State& state)
{
    const VoiceTuneSettings settings{.enabled = true, .intensity = 0.8F};
    for (auto _ : state)
        benchmark::DoNotOptimize(VoiceTuner::tune(song(), kSampleRate, KeySignature(), settings));
    reportRealTime(state);
}

BENCHMARK(plainPitchDetector)->Unit(benchmark::kMillisecond);
BENCHMARK(pitchDetector)->Unit(benchmark::kMillisecond);
BENCHMARK(voiceTuner)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(argc, argv,
                         {{"Plain pitch search over PitchDetector", "plainPitchDetector",
                           "pitchDetector", "at least 6"},
                          {"Plain pitch search over the whole VoiceTuner", "plainPitchDetector",
                           "voiceTuner", "(see x_real_time: at least 150)"}});
}
