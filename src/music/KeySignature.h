#pragma once

#include <QList>
#include <QMetaType>
#include <QString>

#include <array>

/// The four modes. Minor is the natural minor.
enum class KeyMode : qint32 { Major = 0, Minor = 1, Dorian = 2, Lydian = 3 };

/// The key of a work: the source of its scale, its chords and the names of its notes.
struct KeySignature {
    /// Tonic, 0 = C to 11 = B.
    qint32 rootPitchClass = 0;
    /// A value that names no mode acts as Major everywhere.
    KeyMode mode = KeyMode::Major;

    /// The seven pitch classes of the scale in degree order, the tonic first.
    QList<int> scalePitchClasses() const;

    /// Degree 1..7 of a pitch class (any integer, a MIDI pitch too), 0 if it is not in the scale.
    int degreeOfPitchClass(int pitchClass) const;

    /// Name of a pitch class (any integer) from "Do" to "Si", with sharps only.
    static QString solfegeName(int pitchClass);

    /// Name of a pitch class (any integer) from "C" to "B", with sharps only.
    static QString letterName(int pitchClass);

    friend bool operator==(const KeySignature&, const KeySignature&) = default;
};

Q_DECLARE_METATYPE(KeySignature)

/// Semitones above the tonic of the degrees 1 to 7 of a mode.
using ScaleRow = std::array<int, 7>;

/// The row of a mode; the row of Major for a value that names no mode.
const ScaleRow& scaleRow(KeyMode mode);
