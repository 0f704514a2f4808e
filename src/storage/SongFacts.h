#pragma once

#include "music/KeySignature.h"
#include "music/TimeSignature.h"

#include <QString>

/// What tells the music of one work from that of another.
struct SongFacts {
    TimeSignature timeSignature;
    KeySignature key;
    /// How long it plays, to the end of its last bar; 0.0 for an empty song, and for one whose
    /// numbers say nothing that a clock could show.
    double seconds = 0.0;
    /// Id of the rhythm that it begins with; empty for a song without loops.
    QString rhythmId = {};

    bool operator==(const SongFacts&) const = default;
};
