#include "model/Song.h"

Track detachedCopy(Track track)
{
    track.loopBlocks.detach();
    for (MelodyBlock& block : track.melodyBlocks)
        block.notes.detach();
    return track;
}

AudioTrack detachedCopy(AudioTrack track)
{
    track.clips.detach();
    return track;
}

HarmonyTrack detachedCopy(HarmonyTrack track)
{
    for (HarmonyBlock& block : track.blocks)
        block.events.detach();
    return track;
}

Song detachedCopy(Song song)
{
    for (Track& track : song.tracks)
        track = detachedCopy(std::move(track));
    for (AudioTrack& track : song.audioTracks)
        track = detachedCopy(std::move(track));
    song.harmonyTrack = detachedCopy(std::move(song.harmonyTrack));
    song.collapsedGroups.detach();
    return song;
}
