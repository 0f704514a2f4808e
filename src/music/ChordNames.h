#pragma once

#include "music/ChordVoicer.h"

/// What chords are called on the screen. A degree outside 1..7 is no chord and has no name.
namespace ChordNames {

/// By the root, as on a sheet for singing: "Fa", "Lam", "Si°", "Sol7", "Domaj7", "Sim7♭5", "Rem9".
QString nameOf(const KeySignature& key, int degree, ChordExtension extension);

/// What stands behind the root in its name: "", "m", "°", "7", "maj7", "m7♭5".
QString qualityOf(const KeySignature& key, int degree, ChordExtension extension);

/// Degree and name: "IV · Fa".
QString labelOf(const KeySignature& key, int degree, ChordExtension extension);

} // namespace ChordNames
