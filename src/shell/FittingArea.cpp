#include "shell/FittingArea.h"

#include <QEvent>

#include <utility>

FittingArea::FittingArea(QWidget* content, Wish wish, std::function<int()> leastHeight,
                         QWidget* parent)
    : QScrollArea(parent), wish_(wish), leastHeight_(std::move(leastHeight))
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setWidget(content);
    keepLeastHeight();
}

QSize FittingArea::sizeHint() const
{
    if (!widget())
        return QScrollArea::sizeHint();
    const QSize all = widget()->sizeHint();
    return wish_ == Wish::All ? all : QSize(all.width(), minimumHeight());
}

bool FittingArea::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == widget() && event->type() == QEvent::LayoutRequest)
        keepLeastHeight();
    return QScrollArea::eventFilter(watched, event);
}

void FittingArea::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    // Rows that wrap are lower in a wider place.
    keepLeastHeight();
}

void FittingArea::keepLeastHeight()
{
    setMinimumHeight(leastHeight_());
    updateGeometry();
}
