#include "views/arranger/BlockOrder.h"

#include "model/Project.h"

#include <algorithm>
#include <cmath>

using BlockEdits::holds;

namespace {

bool isDrawable(const BlockSpan& span)
{
    return std::isfinite(span.start) && std::isfinite(span.length) &&
           std::abs(span.start) <= ArrangerLayout::kMostBeats;
}

QList<BlockRef> refs(BlockKind kind, int track, qsizetype count)
{
    QList<BlockRef> blocks;
    for (int i = 0; i < count; ++i)
        blocks.append({kind, track, i});
    return blocks;
}

QList<BlockRef> refsIn(const Project& project, const LaneRef& lane)
{
    QList<BlockRef> blocks;
    if (lane.kind == LaneKind::Harmony) {
        for (const HarmonyBlock& bar : project.harmonyTrack.blocks)
            blocks += refs(BlockKind::Chord, bar.barIndex, bar.events.size());
    } else if (lane.kind == LaneKind::NoteTrack && holds(project.tracks, lane.trackIndex)) {
        const Track& track = project.tracks.at(lane.trackIndex);
        blocks = refs(BlockKind::Melody, lane.trackIndex, track.melodyBlocks.size()) +
                 refs(BlockKind::Loop, lane.trackIndex, track.loopBlocks.size());
    } else if (lane.kind == LaneKind::AudioTrack && holds(project.audioTracks, lane.trackIndex)) {
        blocks = refs(BlockKind::Audio, lane.trackIndex,
                      project.audioTracks.at(lane.trackIndex).clips.size());
    }
    return blocks;
}

} // namespace

LaneRef BlockOrder::refOf(const LaneInfo& lane)
{
    return {lane.kind, lane.trackIndex, lane.groupKey};
}

const LaneInfo* BlockOrder::laneOf(const QList<LaneInfo>& lanes, const LaneRef& ref)
{
    const auto lane =
        std::ranges::find_if(lanes, [&](const LaneInfo& info) { return refOf(info) == ref; });
    return lane == lanes.end() ? nullptr : &*lane;
}

const LaneInfo* BlockOrder::laneBeside(const QList<LaneInfo>& lanes, const LaneRef& ref, int up)
{
    if (lanes.isEmpty())
        return nullptr;
    const LaneInfo* from = laneOf(lanes, ref);
    const qsizetype start = from ? from - lanes.data() : 0;
    for (qsizetype i = start - up; holds(lanes, static_cast<int>(i)); i -= up) {
        if (lanes.at(i).kind != LaneKind::Section)
            return &lanes.at(i);
    }
    return &lanes.at(start);
}

LaneRef BlockOrder::laneRefOf(const BlockRef& block)
{
    if (block.kind == BlockKind::Chord)
        return {};
    const bool voice = block.kind == BlockKind::Audio;
    return {voice ? LaneKind::AudioTrack : LaneKind::NoteTrack, block.trackIndex};
}

std::optional<BlockSpan> BlockOrder::placeOf(const Project& project, const BlockRef& block)
{
    const auto span = BlockEdits::spanOf(project, block);
    return span && isDrawable(*span) ? span : std::nullopt;
}

QList<PlacedBlock> BlockOrder::blocksOf(const Project& project, const LaneRef& lane)
{
    QList<PlacedBlock> placed;
    for (const BlockRef& block : refsIn(project, lane)) {
        if (const auto span = placeOf(project, block))
            placed.append({block, *span});
    }
    std::ranges::stable_sort(placed, {}, [](const PlacedBlock& one) { return one.span.start; });
    return placed;
}

std::optional<BlockRef> BlockOrder::neighbour(const QList<PlacedBlock>& blocks,
                                              const std::optional<BlockRef>& block, int direction,
                                              double beat)
{
    if (blocks.isEmpty())
        return std::nullopt;
    const auto present =
        std::ranges::find_if(blocks, [&](const PlacedBlock& one) { return one.block == block; });
    if (present == blocks.end())
        return std::ranges::min_element(
                   blocks, {},
                   [&](const PlacedBlock& one) { return std::abs(one.span.start - beat); })
            ->block;
    const qsizetype next = present - blocks.begin() + direction;
    return blocks.at(std::clamp<qsizetype>(next, 0, blocks.size() - 1)).block;
}
