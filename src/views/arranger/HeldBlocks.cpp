#include "views/arranger/HeldBlocks.h"

#include "model/Project.h"
#include "views/arranger/ChordPieces.h"
#include "views/arranger/EqualBlocks.h"

#include <algorithm>
#include <utility>

namespace {

bool isChord(const BlockRef& block)
{
    return block.kind == BlockKind::Chord;
}

/// A damaged file may have two bars of one number, and so two blocks of one reference.
QList<BlockRef> once(QList<BlockRef> blocks)
{
    std::ranges::sort(blocks);
    blocks.erase(std::ranges::unique(blocks).begin(), blocks.end());
    return blocks;
}

template <typename Record>
int appendCopy(QList<Record>& list, int index)
{
    list.append(Record(list.at(index)));
    return static_cast<int>(list.size()) - 1;
}

/// Repeats a record at the end of its list.
BlockRef appendCopy(Project& project, const BlockRef& block)
{
    BlockRef copy = block;
    if (block.kind == BlockKind::Audio)
        copy.blockIndex = appendCopy(project.audioTracks[block.trackIndex].clips, block.blockIndex);
    else if (block.kind == BlockKind::Melody)
        copy.blockIndex =
            appendCopy(project.tracks[block.trackIndex].melodyBlocks, block.blockIndex);
    else
        copy.blockIndex = appendCopy(project.tracks[block.trackIndex].loopBlocks, block.blockIndex);
    return copy;
}

} // namespace

HeldBlocks::HeldBlocks(const Project& project, const QList<BlockRef>& blocks)
{
    for (const BlockRef& block : once(blocks)) {
        const auto span = BlockEdits::spanOf(project, block);
        if (!span)
            continue;
        taken_.append({.block = block, .span = *span});
        if (isChord(block))
            taken_.last().chord = ChordPieces::eventOf(project, block);
        present_.append(block);
    }
    // In this order a later chord makes room for itself in an earlier one.
    std::ranges::stable_sort(taken_, {}, [](const Taken& taken) { return taken.span.start; });
    if (holdsChords())
        chords_ = project.harmonyTrack.blocks;
}

bool HeldBlocks::holdsChords() const
{
    return std::ranges::any_of(taken_, [](const Taken& taken) { return isChord(taken.block); });
}

HeldBlocks::Record HeldBlocks::record(const Project& project) const
{
    Record record;
    const auto add = [&](const BlockRef& block) {
        if (!isChord(block))
            record.spans.append(BlockEdits::spanOf(project, block));
    };
    for (const Taken& taken : taken_)
        add(taken.block);
    std::ranges::for_each(copies_, add);
    if (holdsChords())
        record.chords = project.harmonyTrack.blocks;
    return record;
}

void HeldBlocks::set(Project& project, Act act, double beats, double step)
{
    putBack(project);
    act_ = act;
    way_ = act == Act::Stretch ? beats : heldAtStart(beats);
    if (way_ == 0.0)
        return;
    present_ = setSpans(project, act, step);
    if (act == Act::Copy)
        copies_ = present_;
    if (holdsChords())
        present_ += layChords(project, act, step);
}

void HeldBlocks::putBack(Project& project)
{
    BlockEdits::removeAll(project, copies_);
    copies_.clear();
    present_.clear();
    for (const Taken& taken : std::as_const(taken_)) {
        BlockEdits::setStart(project, taken.block, taken.span.start);
        BlockEdits::setLength(project, taken.block, taken.span.length);
        present_.append(taken.block);
    }
    if (holdsChords())
        project.harmonyTrack.blocks = chords_;
}

double HeldBlocks::heldAtStart(double beats) const
{
    // What lies before it already moves only back.
    return isEmpty() ? 0.0 : std::max(beats, std::min(0.0, -taken_.first().span.start));
}

BlockSpan HeldBlocks::spanAfter(const Taken& taken, Act act, double step) const
{
    return act == Act::Stretch ? BlockEdits::resized(taken.span, way_, step)
                               : BlockEdits::moved(taken.span, way_);
}

QList<BlockRef> HeldBlocks::setSpans(Project& project, Act act, double step) const
{
    QList<BlockRef> blocks;
    for (const Taken& taken : taken_) {
        if (isChord(taken.block))
            continue;
        const BlockRef block = act == Act::Copy ? appendCopy(project, taken.block) : taken.block;
        const BlockSpan span = spanAfter(taken, act, step);
        BlockEdits::setStart(project, block, span.start);
        BlockEdits::setLength(project, block, span.length);
        blocks.append(block);
    }
    return blocks;
}

/// Where one of the chords has no bar to go to, all of them stay.
QList<BlockRef> HeldBlocks::layChords(Project& project, Act act, double step) const
{
    QList<PlacedChord> laid;
    for (const Taken& taken : taken_) {
        if (isChord(taken.block))
            laid.append({.span = spanAfter(taken, act, step), .event = taken.chord});
    }
    const QList<BlockRef> chords = takenChords();
    const QList<BlockRef> pieces =
        ChordPieces::lay(project, laid, act == Act::Copy ? QList<BlockRef>() : chords);
    return pieces.isEmpty() ? chords : pieces;
}

QList<BlockRef> HeldBlocks::takenChords() const
{
    QList<BlockRef> chords;
    for (const Taken& taken : taken_) {
        if (isChord(taken.block))
            chords.append(taken.block);
    }
    return chords;
}

// ---- Equal blocks --------------------------------------------------------------------------

std::optional<BlockRef> HeldBlocks::coverOf(const Project& project, const BlockRef& block) const
{
    return EqualBlocks::coverOf(project, block,
                                [&](const BlockRef& other) { return !present_.contains(other); });
}

/// Whether the lane of chords is the same without those that are held.
bool HeldBlocks::bringNoChord(const Project& project) const
{
    HarmonyTrack former;
    former.blocks = chords_;
    const HarmonyTrack others =
        ChordPieces::without(former, act_ == Act::Copy ? QList<BlockRef>() : takenChords());
    return others.blocks == project.harmonyTrack.blocks;
}

std::optional<BlockRef> HeldBlocks::present(const Project& project) const
{
    if (way_ == 0.0)
        return std::nullopt;
    for (const BlockRef& block : present_) {
        if (const auto cover = coverOf(project, block))
            return cover;
    }
    const bool onlyChords = !present_.isEmpty() && std::ranges::all_of(present_, isChord);
    return onlyChords && bringNoChord(project) ? std::optional(present_.first()) : std::nullopt;
}

std::optional<BlockRef> HeldBlocks::settle(Project& project)
{
    auto cover = present(project);
    if (!cover || (act_ == Act::Copy && takeOutDoubles(project)))
        return std::nullopt;
    const bool chord = isChord(*cover);
    const HarmonyDegreeEvent event =
        chord ? ChordPieces::eventOf(project, *cover) : HarmonyDegreeEvent();
    putBack(project);
    way_ = 0.0;
    // The chords that are back in its bar may lie before it.
    if (const HarmonyBlock* bar = project.harmonyTrack.blockForBar(cover->trackIndex); chord && bar)
        cover->blockIndex = static_cast<int>(bar->events.indexOf(event));
    return cover;
}

/// Whether anything is left of the copies.
bool HeldBlocks::takeOutDoubles(Project& project)
{
    QList<BlockRef> doubles;
    QList<BlockRef> kept;
    for (const BlockRef& copy : std::as_const(copies_))
        (coverOf(project, copy) ? doubles : kept).append(copy);
    BlockEdits::removeAll(project, doubles);
    for (BlockRef& copy : kept)
        copy.blockIndex -=
            static_cast<int>(std::ranges::count_if(doubles, [&](const BlockRef& gone) {
                return gone.kind == copy.kind && gone.trackIndex == copy.trackIndex && gone < copy;
            }));
    QList<BlockRef> left = kept;
    std::ranges::copy_if(present_, std::back_inserter(left), isChord);
    copies_ = kept;
    present_ = left;
    return !kept.isEmpty() || (holdsChords() && !bringNoChord(project));
}
