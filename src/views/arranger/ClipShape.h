#pragma once

#include "views/arranger/ClipEdits.h"

#include <QRectF>

#include <optional>

/// A clip as it is drawn: where it lies in the scene and how loud it is. Heights of the scene are
/// those of the screen; its widths are scaled.
struct ClipShape {
    QRectF rect;
    /// In scene pixels.
    double secondWidth = 0.0;
    /// Of the clip, from its beginning.
    double playedSeconds = 0.0;
    ClipLevels levels;

    /// The height at which the line of a gain lies: that of 1 in the middle.
    double gainY(double gain) const;

    /// What a gain is that has its line at a height.
    double gainAt(double sceneY) const;

    /// Where what is played ends, inside the block.
    double playedRight() const;

    /// Where the fades end and begin, as far as there is room for them.
    double fadeInX() const;
    double fadeOutX() const;

    /// How long a fade is that has its handle at a place.
    double fadeInAt(double sceneX) const;
    double fadeOutAt(double sceneX) const;

    /// The factor with which a moment of the clip is heard, its fades included.
    double levelAt(double seconds) const;

    /// Whether there is room on the screen for handles beside what moves the block.
    bool hasHandles(double horizontalScale) const;

    /// The handle of a fade, a square on the screen at the top of the block, and inside of it.
    QRectF fadeHandle(ClipHandle fade, double horizontalScale) const;

    /// What a mouse takes hold of; nothing beside the line and the squares, and on a block too
    /// narrow for them.
    std::optional<ClipHandle> handleAt(const QPointF& place, double horizontalScale) const;
};
