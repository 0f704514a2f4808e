#pragma once

#include "music/NoteEvent.h"

#include <QList>

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

/// Building time-ordered lists of events from notes.
namespace Schedule {

/// Appends a note-on and a note-off for each note, and raises `end` to the end of every note.
void appendNotes(QList<ScheduledEvent>& events, const QList<NoteEvent>& notes, int channel,
                 double& end);

/// Orders by beat; at one beat note-offs stand before note-ons, so that a note that ends where
/// the next one starts on its pitch is released first.
void sort(QList<ScheduledEvent>& events);

} // namespace Schedule
