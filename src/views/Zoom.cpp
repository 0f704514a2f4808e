#include "views/Zoom.h"

#include <QCursor>
#include <QGraphicsView>
#include <QScrollBar>

namespace {

/// The place of the view, in pixels, that stays where it is.
double anchorOf(const QGraphicsView& view, double playheadX, Zoom::By by)
{
    const QWidget* viewport = view.viewport();
    const QScrollBar* bar = view.horizontalScrollBar();
    const bool atStart = bar->value() == bar->minimum();
    if (atStart && (by == Zoom::By::Command || !viewport->underMouse()))
        return 0.0;
    if (viewport->underMouse())
        return viewport->mapFromGlobal(QCursor::pos()).x();
    const double playhead = view.viewportTransform().map(QPointF(playheadX, 0.0)).x();
    return playhead >= 0.0 && playhead <= viewport->width() ? playhead : viewport->width() / 2.0;
}

} // namespace

void Zoom::set(QGraphicsView& view, const QTransform& scale, double playheadX, By by)
{
    const double anchor = anchorOf(view, playheadX, by);
    const double sceneX = view.viewportTransform().inverted().map(QPointF(anchor, 0.0)).x();
    const int y = view.verticalScrollBar()->value();
    view.setTransform(scale);
    view.horizontalScrollBar()->setValue(qRound(sceneX * scale.m11() - anchor));
    // The anchor of the view would move the rows by parts of them.
    view.verticalScrollBar()->setValue(y);
}
