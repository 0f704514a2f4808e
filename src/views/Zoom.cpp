#include "views/Zoom.h"

#include <QCursor>
#include <QGraphicsView>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

double Zoom::zoomed(double zoom, double factor)
{
    return std::isnan(zoom * factor) ? zoom : std::clamp(zoom * factor, kLeast, kMost);
}

double Zoom::wheelFactor(int angleDelta)
{
    return angleDelta > 0 ? kWheelStep : 1.0 / kWheelStep;
}

double Zoom::anchor(const QGraphicsView& view, double playheadX, By by)
{
    const QWidget* viewport = view.viewport();
    const QScrollBar* bar = view.horizontalScrollBar();
    const bool atStart = bar->value() == bar->minimum();
    if (atStart && (by == By::Command || !viewport->underMouse()))
        return 0.0;
    if (viewport->underMouse())
        return viewport->mapFromGlobal(QCursor::pos()).x();
    const double playhead = view.viewportTransform().map(QPointF(playheadX, 0.0)).x();
    return playhead >= 0.0 && playhead <= viewport->width() ? playhead : viewport->width() / 2.0;
}

void Zoom::set(QGraphicsView& view, const QTransform& scale, double anchor)
{
    const double sceneX = view.viewportTransform().inverted().map(QPointF(anchor, 0.0)).x();
    const int y = view.verticalScrollBar()->value();
    view.setTransform(scale);
    view.horizontalScrollBar()->setValue(qRound(sceneX * scale.m11() - anchor));
    // The anchor of the view would move the rows by parts of them.
    view.verticalScrollBar()->setValue(y);
}
