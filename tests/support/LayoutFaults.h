#pragma once

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QStringList>
#include <QToolButton>
#include <QWidget>

/// What is wrong with how the controls of a window lie, by arithmetic rather than by eye: a control
/// that lies over another, one that sticks out of what it is in, a text that is cut.
namespace LayoutFaults {

inline QString nameOf(const QWidget& widget)
{
    const QString name =
        widget.accessibleName().isEmpty() ? widget.objectName() : widget.accessibleName();
    return QString("%1 '%2' %3")
        .arg(widget.metaObject()->className(), widget.property("text").toString(), name);
}

/// What a user reads or presses in a window. Parts of other controls are theirs to lay out.
inline QList<QWidget*> controlsOf(const QWidget& window)
{
    QList<QWidget*> found;
    for (QWidget* widget : window.findChildren<QWidget*>()) {
        const bool isControl =
            qobject_cast<QLabel*>(widget) || qobject_cast<QAbstractButton*>(widget) ||
            qobject_cast<QComboBox*>(widget) || qobject_cast<QAbstractSpinBox*>(widget) ||
            qobject_cast<QLineEdit*>(widget) || qobject_cast<QSlider*>(widget) ||
            qobject_cast<QAbstractItemView*>(widget);
        if (isControl && widget->isVisible() &&
            !qobject_cast<QAbstractSpinBox*>(widget->parentWidget()) &&
            widget->window() == window.window())
            found.append(widget);
    }
    return found;
}

/// In its window.
inline QRect placeOf(const QWidget& widget)
{
    return {widget.mapTo(widget.window(), QPoint()), widget.size()};
}

/// What can be seen of a control: all that no place around it hides that scrolls.
inline QRect seenOf(const QWidget& control)
{
    QRect seen = placeOf(control);
    for (const QWidget* around = control.parentWidget(); around && !around->isWindow();
         around = around->parentWidget()) {
        const auto* area = qobject_cast<const QAbstractScrollArea*>(around->parentWidget());
        if (area && area->viewport() == around)
            seen &= placeOf(*around);
    }
    return seen;
}

/// What the control is laid out in: the window, or what scrolls.
inline QRect roomOf(const QWidget& control)
{
    const QWidget* around = control.parentWidget();
    while (!around->isWindow()) {
        const auto* area = qobject_cast<const QAbstractScrollArea*>(
            around->parentWidget() ? around->parentWidget()->parentWidget() : nullptr);
        if (area && area->viewport() == around->parentWidget())
            break;
        around = around->parentWidget();
    }
    return {around->mapTo(control.window(), QPoint()), around->size()};
}

/// The least size in which nothing of its text is cut. One that is wrapped, and one that leaves
/// out what does not fit, is cut by its height alone.
inline QSize leastSizeOf(const QWidget& control)
{
    if (const auto* label = qobject_cast<const QLabel*>(&control); label && label->wordWrap())
        return {0, label->heightForWidth(label->width())};
    if (const auto* box = qobject_cast<const QAbstractSpinBox*>(&control)) {
        const auto* field = box->findChild<QLineEdit*>();
        return {box->width() - field->width() +
                    field->fontMetrics().horizontalAdvance(field->text()),
                field->fontMetrics().height()};
    }
    // These are as large as their style says, whatever is in them.
    if (qobject_cast<const QToolButton*>(&control))
        return control.fontMetrics().tightBoundingRect(control.property("text").toString()).size() +
               QSize(2, 2);
    return control.minimumSizeHint();
}

/// Empty where nothing is wrong.
inline QStringList of(const QWidget& window)
{
    QStringList faults;
    const QList<QWidget*> controls = controlsOf(window);
    for (qsizetype i = 0; i < controls.size(); ++i) {
        const QWidget& control = *controls[i];
        if (!roomOf(control).contains(placeOf(control)))
            faults.append(nameOf(control) + " sticks out");
        for (qsizetype j = i + 1; j < controls.size(); ++j) {
            if (seenOf(control).intersects(seenOf(*controls[j])) &&
                !control.isAncestorOf(controls[j]) && !controls[j]->isAncestorOf(&control))
                faults.append(nameOf(control) + " lies over " + nameOf(*controls[j]));
        }
        if (qobject_cast<const QAbstractItemView*>(&control))
            continue;
        const QSize needed = leastSizeOf(control);
        if (control.width() < needed.width() || control.height() < needed.height())
            faults.append(QString("%1 is cut: %2x%3 for %4x%5")
                              .arg(nameOf(control))
                              .arg(control.width())
                              .arg(control.height())
                              .arg(needed.width())
                              .arg(needed.height()));
    }
    return faults;
}

/// As of(), for the rows of a list that stand below one another.
inline QStringList ofRows(const QAbstractItemView& view)
{
    QStringList faults;
    int bottom = -1;
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        const QRect rect = view.visualRect(view.model()->index(row, 0));
        if (rect.top() <= bottom)
            faults.append(
                QString("row %1 begins at %2, over %3").arg(row).arg(rect.top()).arg(bottom));
        if (rect.height() < view.fontMetrics().height())
            faults.append(QString("row %1 is %2 high").arg(row).arg(rect.height()));
        bottom = rect.bottom();
    }
    return faults;
}

} // namespace LayoutFaults
