#pragma once

#include "music/HarmonyTrack.h"
#include "views/arranger/BlockEdits.h"

#include <QList>

class Project;

/// Some blocks in the hands of the mouse or of the keys. Whatever is done to them is done to where
/// they lay when they were taken, so that the way back restores everything.
class HeldBlocks {
public:
    enum class Act { Move, Copy, Stretch };

    /// By what the holder knows its own again: where the blocks lie, and for chords, which make
    /// room for themselves, the whole lane.
    struct Record {
        QList<std::optional<BlockSpan>> spans;
        QList<HarmonyBlock> chords;

        friend bool operator==(const Record&, const Record&) = default;
    };

    /// Stale references are left out.
    HeldBlocks(const Project& project, const QList<BlockRef>& blocks);

    bool isEmpty() const { return taken_.isEmpty(); }

    /// Sets the blocks, their ends or copies of them some beats off. They go together, no further
    /// than the first of them to the start of the song; a block does not get shorter than a step.
    /// A copy that would lie on its original is none. The project holds what this has left there.
    void set(Project& project, Act act, double beats, double step);

    /// The way that set() has come, in beats: what it was told, or where the start of the song was
    /// in the way.
    double way() const { return way_; }

    /// The blocks as they are to be found now; the copies, where there are some.
    const QList<BlockRef>& blocks() const { return present_; }

    Record record(const Project& project) const;

    /// A block that lies there already where one of these has come to; nothing where each of them
    /// brings something new. Chords, which replace what they come to, do so together.
    std::optional<BlockRef> present(const Project& project) const;

    /// Lets go. Copies of what lies there already are taken out again, and all blocks are put back
    /// where one of them lies on an equal one. What is present() then, if nothing else is left of
    /// it all.
    std::optional<BlockRef> settle(Project& project);

private:
    struct Taken {
        BlockRef block;
        BlockSpan span;
        /// Of a chord.
        HarmonyDegreeEvent chord = {};
    };

    bool holdsChords() const;
    void putBack(Project& project);
    QList<BlockRef> setSpans(Project& project, Act act, double step) const;
    QList<BlockRef> layChords(Project& project, Act act, double step) const;
    BlockSpan spanAfter(const Taken& taken, Act act, double step) const;
    double heldAtStart(double beats) const;
    QList<BlockRef> takenChords() const;
    std::optional<BlockRef> coverOf(const Project& project, const BlockRef& block) const;
    bool bringNoChord(const Project& project) const;
    bool takeOutDoubles(Project& project);

    QList<Taken> taken_;
    QList<HarmonyBlock> chords_;
    /// Of the records that set() has added, at the ends of their lists.
    QList<BlockRef> copies_;
    QList<BlockRef> present_;
    Act act_ = Act::Move;
    double way_ = 0.0;
};
