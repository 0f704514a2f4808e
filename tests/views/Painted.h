#pragma once

#include <QColor>
#include <QImage>
#include <QTest>
#include <QWidget>

#include <cstdlib>

/// What a widget paints, a pixel for each of its units whatever the scale of the screen.
inline QImage painted(QWidget* widget)
{
    widget->ensurePolished();
    QImage image(widget->size(), QImage::Format_RGB32);
    widget->render(&image);
    return image;
}

/// A translucent color over an opaque one.
inline QColor over(const QColor& color, const QColor& ground)
{
    const auto channel = [&](int front, int back) {
        return back + (front - back) * color.alpha() / 255;
    };
    return QColor(channel(color.red(), ground.red()), channel(color.green(), ground.green()),
                  channel(color.blue(), ground.blue()));
}

/// Equal but for the rounding of blends.
inline bool isNear(const QColor& left, const QColor& right, int tolerance = 2)
{
    return std::abs(left.red() - right.red()) <= tolerance &&
           std::abs(left.green() - right.green()) <= tolerance &&
           std::abs(left.blue() - right.blue()) <= tolerance;
}

/// Fails, and tells the two colors, where they differ by more than a rounding.
#define COMPARE_COLOR(actual, expected)                                                            \
    do {                                                                                           \
        const QColor actualColor = (actual);                                                       \
        const QColor expectedColor = (expected);                                                   \
        QVERIFY2(isNear(actualColor, expectedColor),                                               \
                 qPrintable(actualColor.name() + " in place of " + expectedColor.name()));         \
    } while (false)
