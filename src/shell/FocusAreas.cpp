#include "shell/FocusAreas.h"

#include <QApplication>
#include <QScrollArea>

#include <algorithm>

namespace {

bool isStop(const QWidget* widget)
{
    return (widget->focusPolicy() & Qt::TabFocus) && widget->isVisible() && widget->isEnabled();
}

bool holds(const QWidget* area, const QWidget* widget)
{
    return area == widget || area->isAncestorOf(widget);
}

/// In the order of the Tab key.
QWidget* firstStopIn(QWidget* area)
{
    QWidget* widget = area;
    do {
        if (holds(area, widget) && isStop(widget))
            return widget;
        widget = widget->nextInFocusChain();
    } while (widget != area);
    return nullptr;
}

void showWhole(QWidget* widget)
{
    for (QWidget* parent = widget->parentWidget(); parent; parent = parent->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(parent))
            area->ensureWidgetVisible(widget);
    }
}

} // namespace

void FocusAreas::go(const QList<QWidget*>& areas, int step)
{
    const QWidget* focused = QApplication::focusWidget();
    const auto present = std::ranges::find_if(
        areas, [&](const QWidget* area) { return focused && holds(area, focused); });
    const qsizetype count = areas.size();
    const qsizetype from = present == areas.end() ? (step > 0 ? -1 : 0) : present - areas.begin();
    for (qsizetype far = 1; far <= count; ++far) {
        if (QWidget* stop = firstStopIn(areas[((from + far * step) % count + count) % count])) {
            stop->setFocus(step > 0 ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            showWhole(stop);
            return;
        }
    }
}
