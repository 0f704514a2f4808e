#include "model/Track.h"

#include <algorithm>
#include <tuple>

void MelodyBlock::fitDurationToNotes(double minimum)
{
    double needed = minimum;
    for (const NoteEvent& note : notes)
        needed = std::max(needed, note.endBeat());
    durationBeats = std::max(durationBeats, needed);
}

void MelodyBlock::sortNotes()
{
    std::ranges::stable_sort(notes, [](const NoteEvent& a, const NoteEvent& b) {
        return std::tie(a.startBeat, a.pitch) < std::tie(b.startBeat, b.pitch);
    });
}
