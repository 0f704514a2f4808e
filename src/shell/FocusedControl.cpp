#include "shell/FocusedControl.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QKeyEvent>

bool FocusedControl::takesSpace(const QKeyEvent& event, const QWidget* control)
{
    return event.key() == Qt::Key_Space && event.modifiers() == Qt::NoModifier &&
           (qobject_cast<const QAbstractButton*>(control) ||
            qobject_cast<const QComboBox*>(control));
}

bool FocusedControl::pressByReturn(const QKeyEvent& event, QWidget* control)
{
    if ((event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter) || event.isAutoRepeat())
        return false;
    if (auto* button = qobject_cast<QAbstractButton*>(control)) {
        button->animateClick();
        return true;
    }
    if (auto* box = qobject_cast<QComboBox*>(control)) {
        box->showPopup();
        return true;
    }
    return false;
}
