#include "playback/Transport.h"

#include "music/Beats.h"
#include "playback/NoteRenderer.h"

#include <algorithm>
#include <cmath>

namespace {

/// Shortest range that a position can be wrapped into, in beats.
constexpr double kMinLoopSpan = 1e-6;

/// How far before a beat the notes begin that are heard from there on: a humanized note may stand
/// up to 0.035 beats before its bar line. No note met is released yet, as none is shorter.
constexpr double kReachBackBeats = NoteRenderer::kMinNoteBeats;

/// Latest wrap that still makes up for what it has missed. Where a range was set behind the
/// playhead, whole bars would sound at once.
constexpr double kMostLateBeats = 0.25;

/// How far past the end of a range the playhead is, in the passes behind it too.
double overshoot(double beat, const RepeatRange& range)
{
    const double span = std::max(range.end - range.start, kMinLoopSpan);
    const double late = std::fmod(beat - range.end, span);
    // A playhead beyond all numbers overshoots by none.
    return std::isfinite(late) ? late : 0.0;
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

int Transport::startCursor(const QList<ScheduledEvent>& events, double beat)
{
    return cursorForBeat(events, beat - kReachBackBeats);
}

double Transport::beatAfter(double anchorBeat, qint32 bpm, qint64 nanoseconds)
{
    return anchorBeat + bpm * (static_cast<double>(nanoseconds) / 1e9) / 60.0;
}

TransportStep Transport::step(const Score& score, int cursor, double beat, const RepeatRange& range,
                              double tailBeats)
{
    TransportStep step{.beat = beat, .first = cursor};
    step.wrapped = range.enabled && beat >= range.end - kBeatEpsilon;
    if (step.wrapped) {
        // The overshoot is kept, so that the pulse does not slip.
        const double late = overshoot(beat, range);
        step.beat = range.start + late;
        step.first = late <= kMostLateBeats ? startCursor(score.events, range.start)
                                            : cursorForBeat(score.events, step.beat);
    }
    step.next = firstEventAfter(score.events, step.first, step.beat);
    step.ended =
        !range.enabled && step.next >= score.events.size() && step.beat > score.end + tailBeats;
    return step;
}
