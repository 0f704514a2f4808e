#pragma once

#include "music/GrooveTemplate.h"

#include <vector>

/// The offsets of a groove, laid out to be asked for every note of a song.
///
/// Reads the list that it was built from, which must outlive it unchanged.
class GrooveIndex {
public:
    /// Farthest distance, in beats, at which an offset still takes hold of a note: an eighth of a
    /// beat, with slack for rounding.
    static constexpr double kReach = 0.125000001;

    explicit GrooveIndex(const QList<GrooveOffset>& offsets);

    /// The offset nearest to a position in the bar, the first of the list among equals, or null
    /// when none is in reach. A note at the end of the bar is not drawn to an offset at its start.
    const GrooveOffset* nearest(double position) const;

private:
    /// In ascending order of position, the first of the list alone for each position.
    std::vector<const GrooveOffset*> byPosition_;
};
