#pragma once

#include "music/NoteEvent.h"

#include <QHash>
#include <QList>
#include <QString>

class LoopLibrary;
struct Track;

/// The rows that the notes of a track are drawn on, from top to bottom.
struct NoteRows {
    QList<int> pitches;
    /// One for each row.
    QList<QString> names;

    /// Drums have a row each. Notes have a row for every semitone from the lowest to the highest,
    /// but for gaps of more than an octave. Pitches lie in 0..127.
    static NoteRows of(const Track& track, const QList<NoteEvent>& notes,
                       const LoopLibrary& library, const QHash<int, QString>& drums);
};

/// The notes as they are drawn: within 0..127, and those of a noise of the recorded guitar, which
/// sounds alike on many keys, on one.
QList<NoteEvent> drawnNotes(const Track& track, QList<NoteEvent> notes);
