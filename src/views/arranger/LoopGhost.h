#pragma once

#include "views/arranger/ArrangerLayout.h"

#include <QRectF>
#include <QString>

#include <optional>

class LoopLibrary;
class QPainter;
class Project;
struct LoopDragPayload;

/// Where a loop that is dragged over the arranger would lie if it were dropped.
struct LoopGhost {
    /// From the start of its bar to its end, as high as a block, in scene pixels: on the lane of
    /// its layer, or below all lanes where that is still to be made.
    QRectF block;
    /// Tells the loop and the bar.
    QString label;

    /// Nothing for a loop that the library lacks. `sceneX` is the place of the mouse.
    static std::optional<LoopGhost> of(const LoopDragPayload& loop, double sceneX,
                                       const Project& project, const QList<LaneInfo>& lanes,
                                       const LoopLibrary& library);

    /// Paints the bars that the loop would fill over everything that is seen, and the block; both
    /// rectangles are in scene pixels. What the block says stays in sight.
    void paint(QPainter& painter, const QRectF& seen) const;

    friend bool operator==(const LoopGhost&, const LoopGhost&) = default;
};
