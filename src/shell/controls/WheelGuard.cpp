#include "shell/controls/WheelGuard.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>
#include <QSlider>

WheelGuard::WheelGuard(QWidget* control) : QObject(control)
{
    if (control->focusPolicy() == Qt::WheelFocus)
        control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(this);
}

void WheelGuard::guardAllIn(QWidget& panel)
{
    for (auto* box : panel.findChildren<QComboBox*>())
        new WheelGuard(box);
    for (auto* box : panel.findChildren<QAbstractSpinBox*>())
        new WheelGuard(box);
    for (auto* slider : panel.findChildren<QSlider*>())
        new WheelGuard(slider);
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::Wheel || static_cast<QWidget*>(watched)->hasFocus())
        return QObject::eventFilter(watched, event);
    // The panel around it gets what is not taken here.
    event->ignore();
    return true;
}
