#pragma once

#include "music/HarmonyTrack.h"

/// Chord lanes of a few bars, and what they hold.
namespace ChordLane {

inline constexpr double kBar = 4.0;

inline HarmonyDegreeEvent chord(int degree, double startBeat, double durationBeats)
{
    return {.degree = degree,
            .extension = ChordExtension::Triad,
            .startBeat = startBeat,
            .durationBeats = durationBeats};
}

inline HarmonyTrack trackOf(const QList<HarmonyBlock>& blocks)
{
    HarmonyTrack track;
    track.blocks = blocks;
    return track;
}

/// A track whose bar 0 holds these chords.
inline HarmonyTrack barOf(const QList<HarmonyDegreeEvent>& events)
{
    return trackOf({{.barIndex = 0, .events = events}});
}

/// Degree of the chord in force, 0 where none is.
inline int degreeAt(const HarmonyTrack& track, double beat, double beatsPerBar = kBar)
{
    const HarmonyDegreeEvent* event = track.eventAt(beat, beatsPerBar);
    return event ? event->degree : 0;
}

inline QList<qint32> barsOf(const HarmonyTrack& track)
{
    QList<qint32> bars;
    for (const HarmonyBlock& block : track.blocks)
        bars.append(block.barIndex);
    return bars;
}

inline void insert(HarmonyTrack& track, double startBeat, double durationBeats, int degree,
                   double beatsPerBar = kBar)
{
    track.insertEvent(startBeat, durationBeats, degree, ChordExtension::Triad, beatsPerBar);
}

} // namespace ChordLane
