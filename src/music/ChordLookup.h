#pragma once

#include "music/HarmonyTrack.h"

#include <QHash>

#include <vector>

/// The chords of a song, laid out to be asked for every note of it.
///
/// Finds exactly what HarmonyTrack::eventAt() finds, in a time that does not grow with the song.
/// Reads the track that it was built from, which must outlive it unchanged.
class ChordLookup {
public:
    /// A track and the length of a bar in beats.
    ChordLookup(const HarmonyTrack& track, double beatsPerBar);

    /// The chord in force at an absolute beat, or null.
    const HarmonyDegreeEvent* at(double beat) const;

private:
    /// A stretch of one bar, [from, to) in beats from its start, under one chord.
    struct Stretch {
        double from;
        double to;
        const HarmonyDegreeEvent* event;
    };

    /// The stretches of one bar: stretches_[first] to stretches_[last - 1], in order.
    struct Bar {
        std::size_t first;
        std::size_t last;
    };

    void appendStretches(const QList<HarmonyDegreeEvent>& events);

    double beatsPerBar_;
    std::vector<Stretch> stretches_;
    QHash<qint32, Bar> bars_;
};
