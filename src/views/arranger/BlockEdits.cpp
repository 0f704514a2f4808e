#include "views/arranger/BlockEdits.h"

#include "model/Project.h"
#include "views/arranger/ArrangerLayout.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <type_traits>
#include <utility>

using BlockEdits::holds;

namespace {

/// The record of a block in one of the lists of its track; null for none.
template <typename Tracks, typename List>
auto recordOf(Tracks& tracks, List list, const BlockRef& block)
{
    const bool any = holds(tracks, block.trackIndex) &&
                     holds(tracks.at(block.trackIndex).*list, block.blockIndex);
    return any ? &(tracks[block.trackIndex].*list)[block.blockIndex] : nullptr;
}

/// The numbers of a record that say where it lies. Null for a stale reference, and for a chord.
template <typename Number>
struct Place {
    Number* start = nullptr;
    Number* length = nullptr;
};

/// Numbers to write to, unless the project is a constant.
template <typename AnyProject>
auto placeOf(AnyProject& project, const BlockRef& block)
{
    using Number = std::conditional_t<std::is_const_v<AnyProject>, const double, double>;
    Place<Number> place;
    switch (block.kind) {
    case BlockKind::Melody:
        if (auto* melody = recordOf(project.tracks, &Track::melodyBlocks, block))
            place = {&melody->startBeat, &melody->durationBeats};
        break;
    case BlockKind::Loop:
        if (auto* loop = recordOf(project.tracks, &Track::loopBlocks, block))
            place = {&loop->startBeat, &loop->durationBeats};
        break;
    case BlockKind::Audio:
        if (auto* clip = recordOf(project.audioTracks, &AudioTrack::clips, block))
            place = {&clip->offsetBeats, &clip->durationBeats};
        break;
    case BlockKind::Chord:
        break;
    }
    return place;
}

void removeChord(HarmonyTrack& harmony, const BlockRef& block)
{
    for (HarmonyBlock& bar : harmony.blocks) {
        if (bar.barIndex == block.trackIndex && holds(bar.events, block.blockIndex))
            bar.events.removeAt(block.blockIndex);
    }
    harmony.removeEmptyBlocks();
}

template <typename List>
void removeFrom(List& list, int index)
{
    if (holds(list, index))
        list.removeAt(index);
}

std::optional<BlockSpan> spanOfChord(const Project& project, const BlockRef& chord)
{
    const HarmonyBlock* bar = project.harmonyTrack.blockForBar(chord.trackIndex);
    if (!bar || !holds(bar->events, chord.blockIndex))
        return std::nullopt;
    const HarmonyDegreeEvent& event = bar->events.at(chord.blockIndex);
    return BlockSpan{bar->barIndex * project.beatsPerBar() + event.startBeat, event.durationBeats};
}

} // namespace

std::optional<BlockSpan> BlockEdits::spanOf(const Project& project, const BlockRef& block)
{
    if (block.kind == BlockKind::Chord)
        return spanOfChord(project, block);
    const auto place = placeOf(project, block);
    return place.start ? std::optional(BlockSpan{*place.start, *place.length}) : std::nullopt;
}

void BlockEdits::setStart(Project& project, const BlockRef& block, double start)
{
    if (const auto place = placeOf(project, block); place.start)
        *place.start = start;
}

void BlockEdits::setLength(Project& project, const BlockRef& block, double length)
{
    if (const auto place = placeOf(project, block); place.length)
        *place.length = length;
}

void BlockEdits::remove(Project& project, const BlockRef& block)
{
    switch (block.kind) {
    case BlockKind::Melody:
        if (holds(project.tracks, block.trackIndex))
            removeFrom(project.tracks[block.trackIndex].melodyBlocks, block.blockIndex);
        break;
    case BlockKind::Loop:
        if (holds(project.tracks, block.trackIndex))
            removeFrom(project.tracks[block.trackIndex].loopBlocks, block.blockIndex);
        break;
    case BlockKind::Audio:
        if (holds(project.audioTracks, block.trackIndex))
            removeFrom(project.audioTracks[block.trackIndex].clips, block.blockIndex);
        break;
    case BlockKind::Chord:
        removeChord(project.harmonyTrack, block);
        break;
    }
}

void BlockEdits::removeAll(Project& project, QList<BlockRef> blocks)
{
    // The last of a list first, so that the others stay where they are.
    std::ranges::sort(blocks, std::greater());
    for (const BlockRef& block : std::as_const(blocks))
        remove(project, block);
}

double BlockEdits::wayOver(double scenePixels, double step)
{
    return std::round(scenePixels / ArrangerLayout::kBeatPixels / step) * step;
}

BlockSpan BlockEdits::moved(const BlockSpan& original, double beats)
{
    return {std::max(0.0, beats + original.start), original.length};
}

BlockSpan BlockEdits::resized(const BlockSpan& original, double beats, double step)
{
    return {original.start, std::max(step, beats + original.length)};
}
