#include "shell/EditorFocus.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>

namespace {

bool confirmsANumber(const QObject* box, const QEvent* event)
{
    if (event->type() != QEvent::KeyPress || !qobject_cast<const QAbstractSpinBox*>(box))
        return false;
    const int key = static_cast<const QKeyEvent*>(event)->key();
    return key == Qt::Key_Return || key == Qt::Key_Enter;
}

} // namespace

EditorFocus::EditorFocus(const QList<QWidget*>& editors, QObject* parent)
    : QObject(parent), editors_(editors), last_(editors.first())
{
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (editors_.contains(now))
            last_ = now;
    });
}

void EditorFocus::returnFrom(const QWidget* panel)
{
    // The list of a combo box is a window of its own.
    for (const QComboBox* box : panel->findChildren<QComboBox*>())
        box->view()->window()->installEventFilter(this);
    for (QAbstractSpinBox* box : panel->findChildren<QAbstractSpinBox*>())
        box->installEventFilter(this);
}

void EditorFocus::giveBack() const
{
    last_->setFocus(Qt::OtherFocusReason);
}

bool EditorFocus::eventFilter(QObject* watched, QEvent* event)
{
    // The box still has its own work to do with the event.
    if (event->type() == QEvent::Hide || confirmsANumber(watched, event))
        QMetaObject::invokeMethod(this, &EditorFocus::giveBack, Qt::QueuedConnection);
    return QObject::eventFilter(watched, event);
}
