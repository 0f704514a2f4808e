#include "views/arranger/ClipShape.h"

#include <algorithm>
#include <cmath>

namespace {

/// Between the line of the greatest gain, or of none, and the edge of the block.
constexpr double kMargin = 3.0;

/// Of the screen.
constexpr double kHandleSize = 8.0;
constexpr double kHandleReach = 3.0;
constexpr double kLineReach = 3.0;
constexpr double kLeastWidth = 40.0;

/// What is no number counts as 0.
double held(double value, double most)
{
    return value > 0.0 ? std::min(value, most) : 0.0;
}

double halfHeight(const QRectF& rect)
{
    return rect.height() / 2.0 - kMargin;
}

} // namespace

double ClipShape::gainY(double gain) const
{
    return rect.center().y() - (held(gain, ClipEdits::kMostGain) - 1.0) * halfHeight(rect);
}

double ClipShape::gainAt(double sceneY) const
{
    return 1.0 + (rect.center().y() - sceneY) / halfHeight(rect);
}

double ClipShape::playedRight() const
{
    return rect.left() + held(playedSeconds * secondWidth, rect.width());
}

double ClipShape::fadeInX() const
{
    return rect.left() + held(levels.fadeIn * secondWidth, playedRight() - rect.left());
}

double ClipShape::fadeOutX() const
{
    return playedRight() - held(levels.fadeOut * secondWidth, playedRight() - rect.left());
}

double ClipShape::fadeInAt(double sceneX) const
{
    return (sceneX - rect.left()) / secondWidth;
}

double ClipShape::fadeOutAt(double sceneX) const
{
    return (playedRight() - sceneX) / secondWidth;
}

double ClipShape::levelAt(double seconds) const
{
    double level = levels.gain;
    if (seconds < levels.fadeIn)
        level *= seconds / levels.fadeIn;
    if (levels.fadeOut > 0.0F && seconds > playedSeconds - levels.fadeOut)
        level *= (playedSeconds - seconds) / levels.fadeOut;
    return level;
}

bool ClipShape::hasHandles(double horizontalScale) const
{
    return rect.width() * horizontalScale >= kLeastWidth && secondWidth > 0.0;
}

QRectF ClipShape::fadeHandle(ClipHandle fade, double horizontalScale) const
{
    const double width = kHandleSize / horizontalScale;
    const double x = fade == ClipHandle::FadeIn ? fadeInX() : fadeOutX();
    const double left = std::min(std::max(x - width / 2.0, rect.left()), rect.right() - width);
    return {left, rect.top(), width, kHandleSize};
}

std::optional<ClipHandle> ClipShape::handleAt(const QPointF& place, double horizontalScale) const
{
    if (!rect.contains(place) || !hasHandles(horizontalScale))
        return std::nullopt;
    const auto reaches = [&](ClipHandle fade) {
        const double reach = kHandleReach / horizontalScale;
        return fadeHandle(fade, horizontalScale)
            .adjusted(-reach, -kHandleReach, reach, kHandleReach)
            .contains(place);
    };
    const bool in = reaches(ClipHandle::FadeIn);
    const bool out = reaches(ClipHandle::FadeOut);
    // Where both meet, each is taken from its own side.
    if (in && out)
        return place.x() < (fadeInX() + fadeOutX()) / 2.0 ? ClipHandle::FadeIn
                                                          : ClipHandle::FadeOut;
    if (in || out)
        return in ? ClipHandle::FadeIn : ClipHandle::FadeOut;
    if (std::abs(place.y() - gainY(levels.gain)) <= kLineReach)
        return ClipHandle::Gain;
    return std::nullopt;
}
