// What playback costs the thread of the windows: at its start, at an edit, and at every tick.

#include "RatioReporter.h"
#include "Songs.h"
#include "model/UndoStack.h"
#include "playback/NoteRenderer.h"
#include "playback/PlaybackEngine.h"
#include "playback/Schedule.h"
#include "playback/SoundfontPlayer.h"
#include "playback/Transport.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <functional>

namespace {

constexpr int kBars = 200;

/// An application that knows how long the last tick of an engine took: the engine's is the only
/// timer of its period.
class TickWatch : public QCoreApplication {
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject* receiver, QEvent* event) override
    {
        const auto* timer = qobject_cast<QTimer*>(receiver);
        const bool tick = timer && event->type() == QEvent::Timer && timer->interval() == kTickMs;
        QElapsedTimer clock;
        clock.start();
        const bool result = QCoreApplication::notify(receiver, event);
        if (tick && onTick)
            onTick(static_cast<double>(clock.nsecsElapsed()) / 1e9);
        return result;
    }

    /// Called with seconds, if it is set.
    std::function<void(double)> onTick;

private:
    static constexpr int kTickMs = 8;
};

TickWatch* watch = nullptr;

/// A dense song of 13 tracks on the real bank. At a tempo of 0 its playhead stands still.
class Concert {
public:
    explicit Concert(int bpm)
    {
        player_.loadGmBank(StagedContent::instance().bank());
        library_.reload();
        song_->bpm = bpm;
        engine_.setProject(song_.get());
    }

    PlaybackEngine& engine() { return engine_; }

    const Project& song() const { return *song_; }

private:
    StagedContent& content_ = StagedContent::instance();
    SoundfontPlayer player_{SoundfontPlayer::Mode::Realtime};
    std::unique_ptr<Project> song_ = accompaniedSong(kMaxNoteTracks, kBars);
    LoopLibrary library_{QCoreApplication::applicationDirPath() + "/resources/loops",
                         &content_.instruments()};
    PlaybackEngine engine_{&player_, &library_, &content_.instruments()};
};

/// The yardstick: the notes of the song, which every schedule is made of.
void renderNotes(benchmark::State& state)
{
    const auto song = accompaniedSong(kMaxNoteTracks, kBars);
    qsizetype notes = 0;
    for (auto _ : state) {
        notes = NoteRenderer::harmonyNotes(*song).size();
        for (const Track& track : song->tracks)
            notes +=
                NoteRenderer::trackNotes(*song, track, &StagedContent::instance().library()).size();
    }
    state.counters["notes"] = static_cast<double>(notes);
}

void reschedule(benchmark::State& state)
{
    Concert concert(0);
    concert.engine().play(0.0);
    for (auto _ : state)
        concert.engine().rescheduleIfPlaying();
}

void startPlaying(benchmark::State& state)
{
    Concert concert(0);
    for (auto _ : state)
        concert.engine().play(0.0);
}

/// The song as it is scheduled.
Score scoreOf(const Project& song)
{
    Score score;
    Schedule::appendSong(score, song, &StagedContent::instance().library(), false);
    Schedule::sort(score.events);
    return score;
}

/// Between two events in the middle of the song.
double quietBeat(const Score& score)
{
    const qsizetype middle = score.events.size() / 2;
    const auto later = std::ranges::upper_bound(score.events, score.events[middle].beat, {},
                                                &ScheduledEvent::beat);
    return (score.events[middle].beat + later->beat) / 2.0;
}

void stepWithNothingDue(benchmark::State& state)
{
    const Score score = scoreOf(*accompaniedSong(kMaxNoteTracks, kBars));
    const double beat = quietBeat(score);
    const int cursor = Transport::cursorForBeat(score.events, beat);
    for (auto _ : state)
        benchmark::DoNotOptimize(Transport::step(score, cursor, beat, {}, 4.0));
}

void jump(benchmark::State& state)
{
    const Score score = scoreOf(*accompaniedSong(kMaxNoteTracks, kBars));
    const double beat = quietBeat(score);
    for (auto _ : state)
        benchmark::DoNotOptimize(Transport::cursorForBeat(score.events, beat));
}

/// The engine's own tick, as its timer drives it; one iteration is one tick.
void tickWithNothingDue(benchmark::State& state)
{
    Concert concert(0);
    concert.engine().play(quietBeat(scoreOf(concert.song())));
    QEventLoop loop;
    double seconds = 0.0;
    watch->onTick = [&](double tick) {
        seconds = tick;
        loop.quit();
    };
    for (auto _ : state) {
        loop.exec();
        state.SetIterationTime(seconds);
    }
    watch->onTick = nullptr;
}

/// The longest time for which the event loop does not come round while some seconds pass.
double longestGapWithin(int seconds)
{
    QEventLoop loop;
    QTimer heart;
    heart.setTimerType(Qt::PreciseTimer);
    QElapsedTimer sinceBeat;
    qint64 longest = 0;
    QObject::connect(&heart, &QTimer::timeout, &loop, [&] {
        longest = std::max(longest, sinceBeat.nsecsElapsed());
        sinceBeat.restart();
    });
    QTimer::singleShot(1000 * seconds, &loop, &QEventLoop::quit);
    sinceBeat.start();
    heart.start(1);
    loop.exec();
    return static_cast<double>(longest) / 1e9;
}

/// The yardstick: what this machine does to a thread that has nothing to do.
void longestGapAtRest(benchmark::State& state)
{
    for (auto _ : state)
        state.SetIterationTime(longestGapWithin(static_cast<int>(state.range(0))));
}

void longestGapWhilePlaying(benchmark::State& state)
{
    Concert concert(accompaniedSong(1, 1)->bpm);
    for (auto _ : state) {
        concert.engine().play(0.0);
        state.SetIterationTime(longestGapWithin(static_cast<int>(state.range(0))));
        concert.engine().stop();
    }
}

/// 5,000 notes on 13 tracks.
std::unique_ptr<Project> writtenSong()
{
    constexpr int kNotes = 5000;
    auto song = std::make_unique<Project>();
    for (int i = 0; i < kMaxNoteTracks; ++i)
        song->tracks.append(melodyTrack((kNotes + i) / kMaxNoteTracks));
    return song;
}

void songToJson(benchmark::State& state)
{
    const auto song = writtenSong();
    for (auto _ : state)
        benchmark::DoNotOptimize(song->toJson());
}

/// A change of the last thing compared, the tempo aside: the worst a comparison can meet.
void snapshot(benchmark::State& state)
{
    const auto song = writtenSong();
    UndoStack stack;
    stack.reset(*song);
    NoteEvent& last = song->tracks.last().melodyBlocks.last().notes.last();
    for (auto _ : state) {
        last.velocity = last.velocity == 90 ? 91 : 90;
        stack.snapshot(*song);
    }
}

BENCHMARK(renderNotes)->Unit(benchmark::kMillisecond);
BENCHMARK(reschedule)->Unit(benchmark::kMillisecond);
BENCHMARK(startPlaying)->Unit(benchmark::kMillisecond);
BENCHMARK(stepWithNothingDue)->Unit(benchmark::kMicrosecond);
BENCHMARK(jump)->Unit(benchmark::kMicrosecond);
BENCHMARK(tickWithNothingDue)->UseManualTime()->Iterations(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(songToJson)->Unit(benchmark::kMillisecond);
BENCHMARK(snapshot)->Unit(benchmark::kMillisecond);
// The number is one of seconds.
BENCHMARK(longestGapAtRest)
    ->Arg(10)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(longestGapWhilePlaying)
    ->Arg(10)
    ->UseManualTime()
    ->Iterations(1)
    ->Repetitions(3)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    TickWatch application(argc, argv);
    watch = &application;
    return runBenchmarks(
        argc, argv,
        {{"A new schedule over its notes", "reschedule", "renderNotes", "below 2"},
         {"A start over its notes", "startPlaying", "renderNotes", "below 2"},
         {"The longest gap while playing over one at rest", "longestGapWhilePlaying/10",
          "longestGapAtRest/10", "below 4"},
         {"A snapshot over the song's JSON", "snapshot", "songToJson", "below 2"}});
}
