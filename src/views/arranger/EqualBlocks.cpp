#include "views/arranger/EqualBlocks.h"

#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "music/Beats.h"

#include <cmath>

namespace {

bool isSame(double one, double other)
{
    return std::abs(one - other) < kBeatEpsilon;
}

template <typename Record>
std::optional<BlockRef> coverIn(const QList<Record>& records, const BlockRef& block,
                                const std::function<bool(const BlockRef&)>& counts)
{
    if (block.blockIndex < 0 || block.blockIndex >= records.size())
        return std::nullopt;
    for (int i = 0; i < records.size(); ++i) {
        const BlockRef other{block.kind, block.trackIndex, i};
        if (i != block.blockIndex &&
            EqualBlocks::covers(records.at(i), records.at(block.blockIndex)) && counts(other))
            return other;
    }
    return std::nullopt;
}

} // namespace

bool EqualBlocks::covers(const MelodyBlock& present, const MelodyBlock& block)
{
    return isSame(present.startBeat, block.startBeat) &&
           isSame(present.durationBeats, block.durationBeats) && present.notes == block.notes;
}

bool EqualBlocks::covers(const LoopBlock& present, const LoopBlock& block)
{
    return ProjectEdits::covers(present, block);
}

bool EqualBlocks::covers(const AudioClip& present, const AudioClip& block)
{
    if (!isSame(present.offsetBeats, block.offsetBeats) ||
        !isSame(present.durationBeats, block.durationBeats))
        return false;
    AudioClip moved = block;
    moved.offsetBeats = present.offsetBeats;
    moved.durationBeats = present.durationBeats;
    return moved == present;
}

std::optional<BlockRef> EqualBlocks::coverOf(const Project& project, const BlockRef& block,
                                             const std::function<bool(const BlockRef&)>& counts)
{
    const auto holds = [&](const auto& tracks) {
        return BlockEdits::holds(tracks, block.trackIndex);
    };
    if (block.kind == BlockKind::Audio)
        return holds(project.audioTracks)
                   ? coverIn(project.audioTracks.at(block.trackIndex).clips, block, counts)
                   : std::nullopt;
    if (block.kind == BlockKind::Chord || !holds(project.tracks))
        return std::nullopt;
    const Track& track = project.tracks.at(block.trackIndex);
    return block.kind == BlockKind::Melody ? coverIn(track.melodyBlocks, block, counts)
                                           : coverIn(track.loopBlocks, block, counts);
}
