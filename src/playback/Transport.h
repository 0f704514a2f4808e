#pragma once

#include "playback/Schedule.h"

#include <QList>

#include <chrono>

/// The bars that are played over and over.
struct RepeatRange {
    bool enabled = false;
    /// Beats, `start` < `end`.
    double start = 0.0;
    double end = 0.0;
};

/// What playback has to do at one tick of its clock.
struct TransportStep {
    /// Where the playhead is now, in beats.
    double beat = 0.0;
    /// The end of the range was passed, and the playhead has gone back into it.
    bool wrapped = false;
    /// The events that are due: [first, next). `next` is where the following tick goes on. After a
    /// wrap they begin with those that the range begins with, however late the tick came.
    int first = 0;
    int next = 0;
    /// The song is over, the silence at its end included.
    bool ended = false;
};

/// The decisions of the transport, without clock or sound.
namespace Transport {

/// How often whoever plays looks at the clock.
inline constexpr std::chrono::milliseconds kTickPeriod(8);

/// Index of the first event at a beat or later; the number of events if there is none.
int cursorForBeat(const QList<ScheduledEvent>& events, double beat);

/// Index of the first event to play when playback sets out from a beat: a little before it, so that
/// no note is lost that the humanizer has moved ahead of its bar line.
int startCursor(const QList<ScheduledEvent>& events, double beat);

/// Where the playhead is, some nanoseconds after it was at `anchorBeat`.
double beatAfter(double anchorBeat, qint32 bpm, qint64 nanoseconds);

/// What is due when the clock has brought the playhead to `beat`. `cursor` is where the last step
/// ended, `tailBeats` the silence that a song ends with.
TransportStep step(const Score& score, int cursor, double beat, const RepeatRange& range,
                   double tailBeats);

} // namespace Transport
