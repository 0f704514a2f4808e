#pragma once

#include <QRectF>

/// How wide the scene of an editor is.
enum class SceneWidth {
    /// As the song.
    Fit,
    /// As before, unless the song has become longer. A scene that gets narrower under a drag
    /// scrolls,
    /// and the drag would take that for a way of the mouse.
    Keep,
};

inline QRectF sceneRectFor(const QSizeF& size, const QRectF& before, SceneWidth width)
{
    const bool keep = width == SceneWidth::Keep && before.width() > size.width();
    return {0.0, 0.0, keep ? before.width() : size.width(), size.height()};
}
