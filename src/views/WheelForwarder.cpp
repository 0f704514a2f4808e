#include "views/WheelForwarder.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

WheelForwarder::WheelForwarder(QWidget* from, QWidget* to) : QObject(from), to_(to)
{
    from->installEventFilter(this);
}

bool WheelForwarder::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Wheel)
        return QObject::eventFilter(watched, event);
    return QCoreApplication::sendEvent(to_, event);
}
