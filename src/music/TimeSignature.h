#pragma once

#include <QMetaType>

#include <algorithm>

/// The meter of a work or a rhythm. A beat is a quarter note in every meter.
struct TimeSignature {
    qint32 numerator = 4;
    qint32 denominator = 4;
    /// The pulse divides in three (6/8, 9/8, 12/8). Does not enter the length of a bar.
    bool isCompound = false;

    /// Length of a bar in beats: 4/4 gives 4.0, 6/8 gives 3.0. Not finite for a denominator of 0.
    double beatsPerBar() const { return numerator * 4.0 / denominator; }

    /// Length of a pulse in beats: 1.5 in a compound meter and 1.0 in any other.
    double pulseBeats() const { return isCompound ? 1.5 : 1.0; }

    /// Pulses of a bar; 0 for a damaged meter.
    qint32 pulsesPerBar() const { return std::max(isCompound ? numerator / 3 : numerator, 0); }

    friend bool operator==(const TimeSignature&, const TimeSignature&) = default;
};

Q_DECLARE_METATYPE(TimeSignature)
