#include "views/ScrollIntoView.h"

#include <QGraphicsView>
#include <QScrollBar>

#include <algorithm>

namespace {

/// Free pixels between what is shown and the edge of the view.
constexpr double kRoomBeside = 12.0;

/// `first` and `last` are pixels of a viewport that is `room` long.
void scroll(QScrollBar& bar, double first, double last, double room)
{
    const double toTheEnd = std::max(0.0, last + kRoomBeside - room);
    bar.setValue(bar.value() + qRound(std::min(toTheEnd, first - kRoomBeside)));
}

} // namespace

void ScrollIntoView::horizontally(const QGraphicsView& view, double left, double right)
{
    const QTransform place = view.viewportTransform();
    scroll(*view.horizontalScrollBar(), place.map(QPointF(left, 0.0)).x(),
           place.map(QPointF(right, 0.0)).x(), view.viewport()->width());
}

void ScrollIntoView::vertically(const QGraphicsView& view, double top, double bottom)
{
    const QTransform place = view.viewportTransform();
    scroll(*view.verticalScrollBar(), place.map(QPointF(0.0, top)).y(),
           place.map(QPointF(0.0, bottom)).y(), view.viewport()->height());
}
