#include "playback/Schedule.h"

#include "playback/NoteRenderer.h"

#include <algorithm>
#include <tuple>

void Schedule::appendNotes(QList<ScheduledEvent>& events, const QList<NoteEvent>& notes,
                           int channel, double& end)
{
    events.reserve(events.size() + 2 * notes.size());
    for (const NoteEvent& note : notes) {
        events.append({.beat = note.startBeat,
                       .noteOn = true,
                       .channel = channel,
                       .pitch = note.pitch,
                       .velocity = note.velocity});
        events.append(
            {.beat = note.startBeat + std::max(note.durationBeats, NoteRenderer::kMinNoteBeats),
             .noteOn = false,
             .channel = channel,
             .pitch = note.pitch,
             .velocity = 0});
        end = std::max(end, note.startBeat + note.durationBeats);
    }
}

void Schedule::sort(QList<ScheduledEvent>& events)
{
    std::ranges::stable_sort(events, [](const ScheduledEvent& a, const ScheduledEvent& b) {
        return std::tie(a.beat, a.noteOn) < std::tie(b.beat, b.noteOn);
    });
}
