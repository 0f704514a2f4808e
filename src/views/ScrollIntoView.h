#pragma once

class QGraphicsView;

/// Scrolls a view no further than it takes to show a stretch of its scene, and its start where
/// there is no room for all of it. Places are in scene pixels; the other direction stays.
namespace ScrollIntoView {

void horizontally(const QGraphicsView& view, double left, double right);
void vertically(const QGraphicsView& view, double top, double bottom);

} // namespace ScrollIntoView
