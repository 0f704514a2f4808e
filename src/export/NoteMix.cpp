#include "export/NoteMix.h"

#include "music/Beats.h"
#include "playback/SoundfontPlayer.h"

#include <QMap>
#include <QSet>

#include <algorithm>
#include <atomic>
#include <span>
#include <thread>
#include <vector>

namespace {

/// Longest run of one call to the synthesiser.
constexpr qint64 kRenderBlockFrames = 4096;

/// Renders a run of frames, which begins at the first number and is as long as the second. False if
/// there is to be no more.
using RenderRun = std::function<bool(qint64, qint64)>;

/// Plays the events, each exactly on its frame, and renders what lies between. False if a run is
/// the last.
bool perform(const QList<ScheduledEvent>& events, double beatFrames, qint64 total,
             SoundfontPlayer& player, const RenderRun& render)
{
    qint64 done = 0;
    const auto renderUntil = [&](qint64 frame) {
        while (done < frame) {
            const qint64 count = std::min(frame - done, kRenderBlockFrames);
            if (!render(done, count))
                return false;
            done += count;
        }
        return true;
    };
    for (const ScheduledEvent& event : events) {
        if (!renderUntil(std::min(wholeFrames(event.beat * beatFrames), total)))
            return false;
        if (done >= total)
            break;
        Schedule::perform(event, player);
    }
    return renderUntil(total);
}

/// How far a mix is written, told from one thread to another.
class Written {
public:
    void upTo(qint64 frame)
    {
        frame_ = frame;
        frame_.notify_one();
    }

    /// The mix is given up.
    void end() { upTo(kNoMore); }

    /// Waits until a mix is written up to a frame. False if it never will be.
    bool reaches(qint64 frame) const
    {
        qint64 written = frame_;
        while (written < frame && written != kNoMore) {
            frame_.wait(written);
            written = frame_;
        }
        return written != kNoMore;
    }

private:
    static constexpr qint64 kNoMore = -1;
    std::atomic<qint64> frame_ = 0;
};

/// Writes what the events sound like into a stereo buffer. False if the progress is to stop.
bool writeNotes(const QList<ScheduledEvent>& events, double beatFrames, SoundfontPlayer& player,
                QList<float>& mix, const ExportProgress& progress, Written& written)
{
    const qint64 total = mix.size() / 2;
    float* out = mix.data();
    const bool whole = perform(events, beatFrames, total, player, [&](qint64 from, qint64 count) {
        if (!goesOn(progress, static_cast<double>(from) / static_cast<double>(total)))
            return false;
        player.renderFloat(out + 2 * from, static_cast<int>(count));
        written.upTo(from + count);
        return true;
    });
    if (!whole)
        written.end();
    return whole;
}

/// Adds what the events sound like to a stereo buffer, behind the one who writes it.
void addNotes(const QList<ScheduledEvent>& events, double beatFrames, SoundfontPlayer& player,
              std::span<float> mix, const Written& written)
{
    std::vector<float> run(2 * kRenderBlockFrames);
    const auto total = static_cast<qint64>(mix.size() / 2);
    perform(events, beatFrames, total, player, [&](qint64 from, qint64 count) {
        player.renderFloat(run.data(), static_cast<int>(count));
        const bool isWritten = written.reaches(from + count);
        const auto into =
            mix.subspan(static_cast<std::size_t>(2 * from), static_cast<std::size_t>(2 * count));
        if (isWritten)
            std::ranges::transform(into, run, into.begin(), std::plus());
        return isWritten;
    });
}

/// The channels that a second synthesiser plays, so that both have about as many notes; none where
/// there are few. They depend on the song alone: where it is rendered changes no bit of it.
QSet<int> secondChannels(const QList<ScheduledEvent>& events)
{
    constexpr qsizetype kNotesWorthTheirOwn = 1000;
    QMap<int, qsizetype> notes;
    for (const ScheduledEvent& event : events)
        notes[event.channel] += event.noteOn ? 1 : 0;
    QList<int> channels = notes.keys();
    std::ranges::stable_sort(channels, std::greater(), [&](int channel) { return notes[channel]; });
    qsizetype first = 0;
    qsizetype second = 0;
    QSet<int> result;
    for (const int channel : std::as_const(channels)) {
        if (second < first)
            result.insert(channel);
        (second < first ? second : first) += notes[channel];
    }
    return second < kNotesWorthTheirOwn ? QSet<int>() : result;
}

} // namespace

bool NoteMix::write(const QList<ScheduledEvent>& events, double beatFrames, SoundfontPlayer& player,
                    const NewSynthesiser& another, QList<float>& mix,
                    const ExportProgress& progress)
{
    Written written;
    const QSet<int> channels = secondChannels(events);
    const auto second = channels.isEmpty() ? nullptr : another();
    if (!second || !second->hasSynth())
        return writeNotes(events, beatFrames, player, mix, progress, written);
    QList<ScheduledEvent> own;
    QList<ScheduledEvent> others;
    for (const ScheduledEvent& event : events)
        (channels.contains(event.channel) ? others : own).append(event);
    const std::span<float> samples(mix.data(), static_cast<std::size_t>(mix.size()));
    const std::jthread beside([&] { addNotes(others, beatFrames, *second, samples, written); });
    return writeNotes(own, beatFrames, player, mix, progress, written);
}
