#pragma once

#include "views/arranger/ArrangerLayout.h"
#include "views/arranger/BlockEdits.h"

#include <QList>

#include <optional>

/// A block and where it lies in the song.
struct PlacedBlock {
    BlockRef block;
    BlockSpan span;

    friend bool operator==(const PlacedBlock&, const PlacedBlock&) = default;
};

/// The lane that the keys are on. It may be gone: see BlockOrder::laneOf().
struct LaneRef {
    LaneKind kind = LaneKind::Harmony;
    int trackIndex = -1;
    QString groupKey = {};

    friend bool operator==(const LaneRef&, const LaneRef&) = default;
};

/// In which order the keys go through lanes and blocks.
namespace BlockOrder {

LaneRef refOf(const LaneInfo& lane);

/// The lane that a reference stands for, or null.
const LaneInfo* laneOf(const QList<LaneInfo>& lanes, const LaneRef& ref);

/// The lane above for 1, below for -1, headings of sections being passed over; at the end, the one
/// itself. A reference that stands for no lane counts as the first. Null where there are no lanes.
const LaneInfo* laneBeside(const QList<LaneInfo>& lanes, const LaneRef& ref, int up);

/// The lane of a block.
LaneRef laneRefOf(const BlockRef& block);

/// Where the record of a block lies; nothing for a stale reference and for a place that is not
/// drawn.
std::optional<BlockSpan> placeOf(const Project& project, const BlockRef& block);

/// The blocks of a lane, by their starts.
QList<PlacedBlock> blocksOf(const Project& project, const LaneRef& lane);

/// The block behind another, or the one before it for a direction of -1; at the end, that one
/// itself. Where it is not among them, the one that starts nearest to a beat; nothing for none.
std::optional<BlockRef> neighbour(const QList<PlacedBlock>& blocks,
                                  const std::optional<BlockRef>& block, int direction, double beat);

} // namespace BlockOrder
