#pragma once

class QGraphicsView;
class QTransform;

namespace Zoom {

/// Who asks for another scale.
enum class By { Command, Wheel };

/// Gives a view another scale, so that what one looks at stays where it is: by the wheel, what lies
/// under the mouse; by a command the left edge, if that is where the song starts, or else what lies
/// under the mouse, the playhead, if it is in sight, or the middle. The height in the view stays.
/// The view is aligned to the left; `playheadX` is in scene pixels.
void set(QGraphicsView& view, const QTransform& scale, double playheadX, By by);

} // namespace Zoom
