// The project as JSON: taken after every edit, so its cost must stay in proportion to the notes.

#include "RatioReporter.h"
#include "Songs.h"

namespace {

std::unique_ptr<Project> songOf(int notes)
{
    auto song = std::make_unique<Project>();
    for (int track = 0; track < 10; ++track)
        song->tracks.append(melodyTrack(notes / 10));
    return song;
}

void toJson(benchmark::State& state)
{
    const auto song = songOf(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(song->toJson());
}

void loadJson(benchmark::State& state)
{
    const QJsonObject json = songOf(static_cast<int>(state.range(0)))->toJson();
    Project song;
    for (auto _ : state)
        song.loadJson(json);
}

BENCHMARK(toJson)->Arg(50000)->Arg(500000)->Unit(benchmark::kMillisecond);
BENCHMARK(loadJson)->Arg(50000)->Arg(500000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(
        argc, argv,
        {{"toJson, 500,000 over 50,000 notes", "toJson/500000", "toJson/50000", "10"},
         {"loadJson, 500,000 over 50,000 notes", "loadJson/500000", "loadJson/50000", "10"}});
}
