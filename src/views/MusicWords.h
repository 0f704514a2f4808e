#pragma once

#include "music/ChordVoicer.h"
#include "music/KeySignature.h"
#include "music/TimeSignature.h"

#include <QString>

/// Music as one says it, for those who hear the screen read.
namespace MusicWords {

/// "Do sostenido 4": a note number with its octave, 4 being that of middle C.
QString note(int pitch);

/// "Fa sostenido menor": a chord of a key; nothing for a degree outside 1..7.
QString chord(const KeySignature& key, int degree, ChordExtension extension);

/// "negra con puntillo": a length in beats as the value of a note; in quarter notes where there is
/// no such value.
QString value(double beats);

/// "2 compases": a length in whole bars; as value() where it is none.
QString length(double beats, double beatsPerBar);

/// "compás 3": the bar of a beat, from 1; nothing where bars have no length.
QString bar(double beat, double beatsPerBar);

/// "compás 3, pulso 2,5": a beat of a song in a meter, both from 1.
QString place(double beat, const TimeSignature& meter);

/// "Do mayor".
QString key(const KeySignature& key);

/// Names and such with commas between them, without those that are empty.
QString list(const QStringList& words);

} // namespace MusicWords
