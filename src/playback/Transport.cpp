#include "playback/Transport.h"

#include "music/Beats.h"

#include <algorithm>
#include <cmath>

namespace {

/// Shortest range that a position can be wrapped into, in beats.
constexpr double kMinLoopSpan = 1e-6;

/// The overshoot past the end is kept, so that the pulse does not slip.
double wrapped(double beat, const RepeatRange& range)
{
    const double span = std::max(range.end - range.start, kMinLoopSpan);
    const double overshoot = std::fmod(beat - range.end, span);
    // A playhead beyond all numbers overshoots by none.
    return std::isfinite(overshoot) ? range.start + overshoot : range.start;
}

int firstEventAfter(const QList<ScheduledEvent>& events, int cursor, double beat)
{
    const auto count = static_cast<int>(events.size());
    while (cursor < count && events.at(cursor).beat <= beat + kBeatEpsilon)
        ++cursor;
    return cursor;
}

} // namespace

int Transport::cursorForBeat(const QList<ScheduledEvent>& events, double beat)
{
    const auto found = std::ranges::find_if(
        events, [beat](const ScheduledEvent& event) { return event.beat >= beat - kBeatEpsilon; });
    return static_cast<int>(found - events.cbegin());
}

double Transport::beatAfter(double anchorBeat, qint32 bpm, qint64 nanoseconds)
{
    return anchorBeat + bpm * (static_cast<double>(nanoseconds) / 1e9) / 60.0;
}

TransportStep Transport::step(const Score& score, int cursor, double beat, const RepeatRange& range,
                              double beatsPerBar)
{
    TransportStep step{.beat = beat, .first = cursor};
    step.wrapped = range.enabled && beat >= range.end - kBeatEpsilon;
    if (step.wrapped) {
        step.beat = wrapped(beat, range);
        step.first = cursorForBeat(score.events, step.beat);
    }
    step.next = firstEventAfter(score.events, step.first, step.beat);
    step.ended =
        !range.enabled && step.next >= score.events.size() && step.beat > score.end + beatsPerBar;
    return step;
}
