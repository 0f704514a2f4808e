// What keeps a work: its JSON, whose cost must stay in proportion to the notes, the state that undo
// takes after every edit, the copy for recovery, and the save.

#include "RatioReporter.h"
#include "Songs.h"
#include "model/UndoStack.h"
#include "storage/LocalStorageProvider.h"
#include "storage/RecoveryCopy.h"

#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

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

/// From a note that has moved to the state that undo keeps of it.
void undoState(benchmark::State& state)
{
    const auto song = songOf(static_cast<int>(state.range(0)));
    UndoStack stack;
    stack.reset(*song);
    int edit = 0;
    for (auto _ : state) {
        song->tracks[0].melodyBlocks[0].notes[0].pitch = 40 + ++edit % 40;
        stack.snapshot(*song);
    }
}

/// What keeping a copy takes of the thread that edits; the writing is waited for outside.
void keepCopy(benchmark::State& state)
{
    const auto song = songOf(static_cast<int>(state.range(0)));
    const QTemporaryDir dir;
    RecoveryCopy copy(dir.path());
    for (auto _ : state) {
        copy.keep({QString(), QString(), QString(), *song});
        state.PauseTiming();
        copy.remove();
        state.ResumeTiming();
    }
}

/// In memory, where a system keeps a folder there: how long a disk takes is its own matter.
QString memoryFolder()
{
    return QFileInfo(QStringLiteral("/dev/shm")).isWritable()
               ? QStringLiteral("/dev/shm/velta-bench-XXXXXX")
               : QDir::tempPath() + QStringLiteral("/velta-bench-XXXXXX");
}

void save(benchmark::State& state)
{
    const auto song = songOf(static_cast<int>(state.range(0)));
    const QTemporaryDir dir(memoryFolder());
    LocalStorageProvider storage(dir.path());
    for (auto _ : state)
        benchmark::DoNotOptimize(storage.saveProject(QStringLiteral("obra"), *song));
}

/// The file emptied, and the text written into it, with no look at what became of it.
void careless(benchmark::State& state)
{
    const auto song = songOf(static_cast<int>(state.range(0)));
    const QTemporaryDir dir(memoryFolder());
    for (auto _ : state) {
        QFile file(dir.filePath(QStringLiteral("project.json")));
        if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            file.write(QJsonDocument(song->toJson()).toJson(QJsonDocument::Indented));
    }
}

BENCHMARK(undoState)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(keepCopy)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(save)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(careless)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(toJson)->Arg(5000)->Unit(benchmark::kMillisecond);
BENCHMARK(toJson)->Arg(50000)->Arg(500000)->Unit(benchmark::kMillisecond);
BENCHMARK(loadJson)->Arg(50000)->Arg(500000)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    return runBenchmarks(
        argc, argv,
        {{"toJson, 500,000 over 50,000 notes", "toJson/500000", "toJson/50000", "10"},
         {"a state of undo over the song as JSON", "undoState/5000", "toJson/5000", "below 1"},
         {"keeping a copy over the song as JSON", "keepCopy/5000", "toJson/5000", "below 1"},
         {"a save over a careless one", "save/5000", "careless/5000", "at most 1.03"},
         {"loadJson, 500,000 over 50,000 notes", "loadJson/500000", "loadJson/50000", "10"}});
}
