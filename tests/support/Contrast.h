#pragma once

#include <QColor>
#include <QImage>
#include <QWidget>

#include <algorithm>
#include <cmath>

/// How well colours are told apart, by the formulas of WCAG 2.1 ("relative luminance" and "contrast
/// ratio").
namespace Contrast {

/// 0 for black to 1 for white.
inline double luminance(const QColor& color)
{
    const auto linear = [](double channel) {
        return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

/// 1 for equal colours to 21 for black and white.
inline double ratio(const QColor& left, const QColor& right)
{
    const auto [darker, lighter] = std::minmax({luminance(left), luminance(right)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// What a part of a window looks like, a pixel for each of its units whatever the screen's scale.
inline QImage pictureOf(QWidget& window, const QRect& area)
{
    QImage image(area.size(), QImage::Format_RGB32);
    window.render(&image, {}, area);
    return image;
}

/// The pixels that differ between two pictures by at least a ratio.
inline int pixelsThatDiffer(const QImage& left, const QImage& right, double least)
{
    int count = 0;
    for (int y = 0; y < left.height(); ++y)
        for (int x = 0; x < left.width(); ++x)
            count += ratio(left.pixelColor(x, y), right.pixelColor(x, y)) >= least;
    return count;
}

} // namespace Contrast
