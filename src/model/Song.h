#pragma once

#include "model/AudioTrack.h"
#include "model/Track.h"
#include "music/HarmonyTrack.h"
#include "music/KeySignature.h"
#include "music/TimeSignature.h"

#include <QStringList>

/// All that a project file holds, as one value.
struct Song {
    static constexpr qint32 kDefaultBpm = 120;

    QString name;
    /// Quarter notes per minute, in every meter.
    qint32 bpm = kDefaultBpm;
    TimeSignature timeSignature;
    KeySignature keySignature;
    /// In the order of lanes and channels.
    QList<Track> tracks;
    QList<AudioTrack> audioTracks;
    HarmonyTrack harmonyTrack;
    /// Keys of the arranger's folded track groups.
    QStringList collapsedGroups;

    friend bool operator==(const Song&, const Song&) = default;
};

/// Copies that share no list with what they were made of. Views write through references into the
/// records of a project, and would reach into a copy that still shares its lists.
Track detachedCopy(Track track);
AudioTrack detachedCopy(AudioTrack track);
HarmonyTrack detachedCopy(HarmonyTrack track);
Song detachedCopy(Song song);
