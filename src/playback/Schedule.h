#pragma once

#include "music/NoteEvent.h"

#include <QList>

class LoopLibrary;
class Project;
class SoundfontPlayer;

/// One thing for the synthesiser to do at a beat of the song.
struct ScheduledEvent {
    /// Absolute beats.
    double beat = 0.0;
    bool noteOn = false;
    int channel = 0;
    int pitch = 0;
    /// 0 in a note-off.
    int velocity = 0;

    friend bool operator==(const ScheduledEvent&, const ScheduledEvent&) = default;
};

/// Everything that the synthesiser has to play, in order.
struct Score {
    QList<ScheduledEvent> events;
    /// Where the last note ends, in beats.
    double end = 0.0;
};

/// Building time-ordered lists of events from notes.
namespace Schedule {

/// Appends a note-on and a note-off for each note, at its start and where
/// NoteRenderer::releaseBeats() has it, and raises `end` to the written end of every note.
void appendNotes(QList<ScheduledEvent>& events, const QList<NoteEvent>& notes, int channel,
                 double& end);

/// Appends the notes of every track that is heard, each on the channel of its place, and of the
/// chords. `anySolo` tells whether only soloed tracks are heard. False when a bound of
/// NoteRenderer has cut the song.
bool appendSong(Score& score, const Project& project, const LoopLibrary* library, bool anySolo);

/// Orders by beat; at one beat note-offs stand before note-ons, so that a note that ends where
/// the next one starts on its pitch is released first.
void sort(QList<ScheduledEvent>& events);

/// Has a synthesiser do what an event asks for.
void perform(const ScheduledEvent& event, SoundfontPlayer& player);

} // namespace Schedule
