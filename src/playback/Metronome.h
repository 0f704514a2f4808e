#pragma once

#include "playback/Schedule.h"

struct TimeSignature;

/// Clicks on the pulse, with an accent on the first of each bar.
namespace Metronome {

/// Clicks that a song may hold: more than a day of them at 60 a minute.
inline constexpr qsizetype kMaxClicks = 100'000;

/// Appends the clicks from the start of the song up to a beat, and for four bars at least. In a
/// compound meter they fall every 1.5 beats, `numerator` / 3 to a bar; otherwise every beat,
/// `numerator` to a bar, whatever the denominator.
void appendClicks(QList<ScheduledEvent>& events, const TimeSignature& meter, double end);

} // namespace Metronome
