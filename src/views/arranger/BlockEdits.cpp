#include "views/arranger/BlockEdits.h"

#include "model/Project.h"
#include "views/arranger/ArrangerLayout.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace {

template <typename List>
bool holds(const List& list, int index)
{
    return index >= 0 && index < list.size();
}

template <typename Record>
const Record& at(const QList<Record>& list, int index)
{
    return list.at(index);
}

template <typename Record>
Record& at(QList<Record>& list, int index)
{
    return list[index];
}

/// Calls `visit` with the start and the length of a record, if there is one that has them.
template <typename AnyProject, typename Visit>
void visitSpan(AnyProject& project, const BlockRef& block, Visit visit)
{
    if (block.kind == BlockKind::Audio) {
        if (holds(project.audioTracks, block.trackIndex) &&
            holds(project.audioTracks.at(block.trackIndex).clips, block.blockIndex)) {
            auto& clip = at(at(project.audioTracks, block.trackIndex).clips, block.blockIndex);
            visit(clip.offsetBeats, clip.durationBeats);
        }
        return;
    }
    if (block.kind == BlockKind::Chord || !holds(project.tracks, block.trackIndex))
        return;
    const auto visitIn = [&](auto& blocks) {
        if (holds(blocks, block.blockIndex)) {
            auto& record = at(blocks, block.blockIndex);
            visit(record.startBeat, record.durationBeats);
        }
    };
    auto& track = at(project.tracks, block.trackIndex);
    if (block.kind == BlockKind::Melody)
        visitIn(track.melodyBlocks);
    else
        visitIn(track.loopBlocks);
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
    std::optional<BlockSpan> span;
    visitSpan(project, block, [&](double start, double length) {
        span = BlockSpan{.start = start, .length = length};
    });
    return span;
}

void BlockEdits::setStart(Project& project, const BlockRef& block, double start)
{
    visitSpan(project, block, [&](double& present, double&) { present = start; });
}

void BlockEdits::setLength(Project& project, const BlockRef& block, double length)
{
    visitSpan(project, block, [&](double&, double& present) { present = length; });
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
