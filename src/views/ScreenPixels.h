#pragma once

#include <QPainter>
#include <QtMath>

/// Makes whole pixels of the screen the units of a painter, for as long as it lives. Scales and
/// scrolls of a window, and of the screen it is on, put rows between pixels; what repeats itself
/// or is one pixel thin has to keep to pixels all the same.
class ScreenPixels {
public:
    explicit ScreenPixels(QPainter& painter)
        : painter_(painter), toScreen_(painter.deviceTransform())
    {
        painter_.save();
        painter_.setWorldTransform(toScreen_.inverted() * painter_.worldTransform());
    }

    ~ScreenPixels() { painter_.restore(); }

    Q_DISABLE_COPY_MOVE(ScreenPixels)

    QPainter& painter() { return painter_; }

    /// Where the song starts.
    int origin() const { return qFloor(toScreen_.dx()); }

    int x(double sceneX) const { return qRound(toScreen_.map(QPointF(sceneX, 0.0)).x()); }

    int y(double sceneY) const { return qRound(toScreen_.map(QPointF(0.0, sceneY)).y()); }

    /// Rounded as a painter rounds what it fills.
    QRect rect(const QRectF& area) const
    {
        return {QPoint(x(area.left()), y(area.top())),
                QPoint(x(area.right()) - 1, y(area.bottom()) - 1)};
    }

private:
    QPainter& painter_;
    QTransform toScreen_;
};

/// Paints straight lines as rectangles: these meet the rows, and a painter takes much longer over
/// a line than over a rectangle.
class LinePainter {
public:
    LinePainter(QPainter& painter, const QRectF& exposed)
        : screen_(painter), area_(screen_.rect(exposed))
    {}

    void horizontal(double sceneY, const QColor& color)
    {
        screen_.painter().fillRect(area_.left(), screen_.y(sceneY), area_.width(), 1, color);
    }

    /// One pixel wide from its place on, or two around it.
    void vertical(double sceneX, int pixels, const QColor& color)
    {
        const int x = screen_.x(sceneX) - (pixels - 1);
        // Taller ones would be shared among threads, which takes longer than painting them.
        constexpr int kTallest = 64;
        for (int y = area_.top(); y <= area_.bottom(); y += kTallest)
            screen_.painter().fillRect(x, y, pixels, qMin(kTallest, area_.bottom() + 1 - y), color);
    }

private:
    ScreenPixels screen_;
    /// What is exposed.
    QRect area_;
};
