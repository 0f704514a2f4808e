#include "playback/Schedule.h"

#include "model/Audibility.h"
#include "model/Project.h"
#include "playback/ChannelPlan.h"
#include "playback/NoteRenderer.h"
#include "playback/SoundfontPlayer.h"

#include <algorithm>
#include <tuple>

void Schedule::appendNotes(QList<ScheduledEvent>& events, const QList<NoteEvent>& notes,
                           int channel, double& end)
{
    events.reserve(events.size() + 2 * notes.size());
    const QList<double> releases = NoteRenderer::releaseBeats(notes);
    for (qsizetype i = 0; i < notes.size(); ++i) {
        const NoteEvent& note = notes.at(i);
        events.append({.beat = note.startBeat,
                       .noteOn = true,
                       .channel = channel,
                       .pitch = note.pitch,
                       .velocity = note.velocity});
        events.append({.beat = releases.at(i),
                       .noteOn = false,
                       .channel = channel,
                       .pitch = note.pitch,
                       .velocity = 0});
        end = std::max(end, note.endBeat());
    }
}

bool Schedule::appendSong(Score& score, const Project& project, const LoopLibrary* library,
                          bool anySolo)
{
    const auto tracks = std::min<qsizetype>(project.tracks.size(), kMaxNoteTracks);
    for (int channel = 0; channel < tracks; ++channel) {
        const Track& track = project.tracks.at(channel);
        if (!Audibility::sounds(track, anySolo))
            continue;
        const auto rendered = NoteRenderer::render(project, track, library);
        appendNotes(score.events, rendered.notes, channel, score.end);
        if (rendered.cut || score.events.size() > 2 * NoteRenderer::kMaxSongNotes)
            return false;
    }
    if (!project.harmonyTrack.muted)
        appendNotes(score.events, NoteRenderer::harmonyNotes(project), kHarmonyChannel, score.end);
    return true;
}

void Schedule::sort(QList<ScheduledEvent>& events)
{
    std::ranges::stable_sort(events, [](const ScheduledEvent& a, const ScheduledEvent& b) {
        return std::tie(a.beat, a.noteOn) < std::tie(b.beat, b.noteOn);
    });
}

void Schedule::perform(const ScheduledEvent& event, SoundfontPlayer& player)
{
    if (event.noteOn)
        player.noteOn(event.channel, event.pitch, event.velocity);
    else
        player.noteOff(event.channel, event.pitch);
}
