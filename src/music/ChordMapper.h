#pragma once

#include "music/KeySignature.h"

/// Moves notes of accompaniment loops, which are written in C Major over degree I, into the key
/// and onto the chord of a song. Any integers give a MIDI pitch in 0..127.
namespace ChordMapper {

/// The pitch shifted chromatically by the tonic, for a note under which no chord is in force.
int transposeToKey(int pitch, const KeySignature& key);

/// The pitch walked along the scale of the key onto the chord of a degree, in the octave that
/// lies within a tritone of transposeToKey(). A chromatic note moves in parallel with the
/// chord's root. A degree outside 1..7 gives transposeToKey().
int mapPitch(int pitch, const KeySignature& key, int degree);

} // namespace ChordMapper
