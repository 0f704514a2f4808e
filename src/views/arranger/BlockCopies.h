#pragma once

#include "model/AudioTrack.h"
#include "model/Track.h"
#include "music/HarmonyTrack.h"
#include "views/arranger/BlockEdits.h"

#include <QList>

class Project;

/// Copies of blocks, to be laid again elsewhere. They outlive what they were made of.
class BlockCopies {
public:
    /// What came of laying.
    struct Laid {
        QList<BlockRef> blocks;
        /// Blocks that lie there already, just as the copies would: those were not laid again.
        QList<BlockRef> present;
        /// Copies for which there is no track, and no room for another one.
        int homeless = 0;
    };

    BlockCopies() = default;

    /// Stale references are left out.
    BlockCopies(const Project& project, const QList<BlockRef>& blocks);

    bool isEmpty() const;

    /// The start of the first of them, in absolute beats, and the way to the end of the last.
    const BlockSpan& span() const { return span_; }

    /// Lays the copies with the first of them at a beat, the others as far behind it as they were.
    /// Each goes to the track that it came from, as long as that still is one of its kind: else a
    /// melody to `melodyTrack`, a loop to the track of its layer, which is made where there is
    /// none, and a voice to the last of the voices.
    Laid layAt(Project& project, double beat, int melodyTrack) const;

    /// Voices are files of the work that they were recorded for.
    void forgetVoices() { voices_.clear(); }

private:
    struct Melody {
        int track;
        bool isAccompaniment;
        MelodyBlock block;
    };

    struct Loop {
        int track;
        /// Of the track that it came from.
        QString layerId;
        QString instrumentId;
        QString trackName;
        LoopBlock block;
    };

    struct Voice {
        int track;
        QString trackName;
        AudioClip clip;
    };

    struct Chord {
        double start;
        HarmonyDegreeEvent event;
    };

    void add(const Project& project, const BlockRef& block, const BlockSpan& span);
    void layMelodies(Project& project, double way, int melodyTrack, Laid& laid) const;
    void layLoops(Project& project, double way, Laid& laid) const;
    void layVoices(Project& project, double way, Laid& laid) const;
    void layChords(Project& project, double way, Laid& laid) const;

    BlockSpan span_;
    QList<Melody> melodies_;
    QList<Loop> loops_;
    QList<Voice> voices_;
    QList<Chord> chords_;
};
