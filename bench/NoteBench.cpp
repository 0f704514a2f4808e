// Notes of a song: their rendering and their MIDI file must cost in proportion to its length.

#include "RatioReporter.h"
#include "Songs.h"
#include "export/MidiExporter.h"
#include "playback/PlaybackEngine.h"

#include <QTemporaryDir>

namespace {

void renderTracks(benchmark::State& state, int tracks)
{
    const auto song = accompaniedSong(tracks, static_cast<int>(state.range(0)));
    qsizetype notes = 0;
    for (auto _ : state) {
        notes = 0;
        for (const Track& track : song->tracks) {
            const QList<NoteEvent> rendered = PlaybackEngine::renderTrackNotes(
                *song, track, &StagedContent::instance().library());
            benchmark::DoNotOptimize(rendered.constData());
            notes += rendered.size();
        }
    }
    state.counters["notes"] = static_cast<double>(notes);
    state.counters["notes_per_second"] = benchmark::Counter(
        static_cast<double>(notes), benchmark::Counter::kIsIterationInvariantRate);
}

void renderOneTrack(benchmark::State& state)
{
    renderTracks(state, 1);
}

void renderThirteenTracks(benchmark::State& state)
{
    renderTracks(state, kMaxNoteTracks);
}

void renderHarmony(benchmark::State& state)
{
    const auto song = accompaniedSong(0, static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(PlaybackEngine::renderHarmonyNotes(*song));
}

void exportMidi(benchmark::State& state)
{
    StagedContent& content = StagedContent::instance();
    const auto song = accompaniedSong(5, static_cast<int>(state.range(0)));
    const QTemporaryDir dir;
    for (auto _ : state)
        MidiExporter::exportProject(*song, &content.library(), &content.instruments(),
                                    dir.filePath("song.mid"), nullptr);
}

BENCHMARK(renderOneTrack)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(renderThirteenTracks)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(renderHarmony)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(exportMidi)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    return runBenchmarks(
        argc, argv,
        {{"Track notes, 1,000 over 100 bars", "renderOneTrack/1000", "renderOneTrack/100", "10"},
         {"Track notes, 10,000 over 1,000 bars", "renderOneTrack/10000", "renderOneTrack/1000",
          "10"},
         {"Chord notes, 10,000 over 1,000 bars", "renderHarmony/10000", "renderHarmony/1000", "10"},
         {"MIDI file, 1,000 over 100 bars", "exportMidi/1000", "exportMidi/100", "10"},
         {"MIDI file, 10,000 over 1,000 bars", "exportMidi/10000", "exportMidi/1000", "10"}});
}
