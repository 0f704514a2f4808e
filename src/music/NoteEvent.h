#pragma once

#include <QtGlobal>

/// One note. Inside a block its start counts from the block's start; in a rendered list it is
/// an absolute position in the song.
struct NoteEvent {
    /// MIDI note number.
    qint32 pitch = 60;
    /// Beats.
    double startBeat = 0.0;
    /// Beats.
    double durationBeats = 1.0;
    /// MIDI velocity.
    qint32 velocity = 100;

    /// As written; see NoteRenderer::releaseBeats() for when the note is let go.
    double endBeat() const { return startBeat + durationBeats; }

    friend bool operator==(const NoteEvent&, const NoteEvent&) = default;
};
