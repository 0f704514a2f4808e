#include "shell/StaleHover.h"

#include <QApplication>
#include <QCursor>
#include <QHoverEvent>
#include <QWidget>

namespace {

bool isUnderMouse(const QWidget& widget)
{
    return widget.rect().contains(widget.mapFromGlobal(QCursor::pos()));
}

void leave(QWidget& widget)
{
    QEvent left(QEvent::Leave);
    QApplication::sendEvent(&widget, &left);
    QHoverEvent hoverLeft(QEvent::HoverLeave, QPointF(-1, -1), QPointF(-1, -1), QPointF(0, 0));
    QApplication::sendEvent(&widget, &hoverLeft);
}

void endStaleHover()
{
    for (QWidget* widget : QApplication::allWidgets()) {
        if (widget->underMouse() && !isUnderMouse(*widget))
            leave(*widget);
    }
}

} // namespace

StaleHover::StaleHover(QObject* parent) : QObject(parent)
{
    qApp->installEventFilter(this);
}

bool StaleHover::eventFilter(QObject* watched, QEvent* event)
{
    // Whatever the closing does to the mouse itself comes first.
    if (event->type() == QEvent::Hide && watched->isWidgetType() &&
        static_cast<QWidget*>(watched)->isWindow())
        QMetaObject::invokeMethod(this, endStaleHover, Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}
