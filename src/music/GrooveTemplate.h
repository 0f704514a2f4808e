#pragma once

#include <QList>
#include <QString>

/// How the strokes near one position of the bar lean in a tradition.
struct GrooveOffset {
    /// Beats from the start of the bar.
    double position = 0.0;
    /// Beats; negative is ahead of the beat.
    double timingOffsetBeats = 0.0;
    /// MIDI velocity units.
    qint32 velocityOffset = 0;

    friend bool operator==(const GrooveOffset&, const GrooveOffset&) = default;
};

/// The micro-timing and the accents of one rhythm.
struct GrooveTemplate {
    QString rhythmId;
    /// In file order, which decides between offsets at equal distance.
    QList<GrooveOffset> offsets;

    /// The offset nearest to a position in the bar, the first of the list among equals, or null
    /// when none is within an eighth of a beat. A note at the end of the bar is not drawn to an
    /// offset at its start.
    const GrooveOffset* nearest(double position) const;

    friend bool operator==(const GrooveTemplate&, const GrooveTemplate&) = default;
};
