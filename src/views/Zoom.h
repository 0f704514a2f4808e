#pragma once

class QGraphicsView;
class QTransform;

/// The scale of time of the editors.
namespace Zoom {

inline constexpr double kLeast = 0.2;
inline constexpr double kMost = 6.0;

/// Factors of one notch of the wheel and of one command.
inline constexpr double kWheelStep = 1.15;
inline constexpr double kCommandStep = 1.25;

/// Who asks for another scale.
enum class By { Command, Wheel };

/// A zoom by a factor, within kLeast and kMost. A product that is no number leaves it.
double zoomed(double zoom, double factor);

/// The factor of a turn of the wheel by an angle, whatever its length.
double wheelFactor(int angleDelta);

/// The place of the viewport, in pixels, that stays where it is: by the wheel, what lies under the
/// mouse; by a command the left edge, if that is where the song starts, or else what lies under the
/// mouse, the playhead, if it is in sight, or the middle. `playheadX` is in scene pixels.
double anchor(const QGraphicsView& view, double playheadX, By by);

/// Gives a view that is aligned to the left another scale. What lies at the anchor stays there, and
/// so does the height in the view.
void set(QGraphicsView& view, const QTransform& scale, double anchor);

} // namespace Zoom
