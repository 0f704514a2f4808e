#pragma once

#include "music/KeySignature.h"

#include <QList>
#include <QString>

/// How many thirds are stacked on a degree.
enum class ChordExtension : qint32 { Triad = 0, Seventh = 1, Ninth = 2 };

/// Turns a degree of a key into the notes and the label of its chord. A degree outside 1..7 is
/// no chord: the lists come back empty and the label null. An unknown extension is a triad.
namespace ChordVoicer {

/// MIDI pitches of the chord in close root position, root first; degree 1 of C in octave 4 is
/// 48, 52, 55. Pitches out of 0..127 are moved into it by octaves.
QList<int> chordPitches(const KeySignature& key, int degree, ChordExtension extension,
                        int octave = 4);

/// Pitch classes 0..11 of the chord in stacking order, without repeats.
QList<int> chordPitchClasses(const KeySignature& key, int degree, ChordExtension extension);

/// Roman numeral of the chord, such as "V7" or "vii°": upper case for a major third, a degree
/// sign for a diminished fifth, then the number of the extension.
QString degreeLabel(const KeySignature& key, int degree, ChordExtension extension);

} // namespace ChordVoicer
