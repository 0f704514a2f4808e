#pragma once

class Project;
struct MelodyBlock;
struct Track;

/// The one melody block of a song that is open for writing, by its place. The place may be stale.
struct OpenMelody {
    /// Not owned, and may be null.
    Project* project = nullptr;
    /// -1 for none.
    int trackIndex = -1;
    /// A track that has blocks, but none of this number, has the nearest one open.
    int blockIndex = 0;

    /// The first track of a song.
    static OpenMelody firstOf(Project* project);

    /// Null where the number stands for none.
    const Track* track() const;

    /// Null for no track, for one of the accompaniment and for one without a melody block. Valid
    /// until the next change of the track's blocks.
    const MelodyBlock* block() const;

    /// As block(), but a track without a melody block is given one, as long as the song, here and
    /// without a word.
    MelodyBlock* blockToWriteIn() const;
};
