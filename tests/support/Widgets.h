#pragma once

#include <QAbstractButton>
#include <QAction>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QToolButton>

#include <algorithm>

/// Finds what is on the screen by the words that a user sees there. Null where there is none.
namespace Widgets {

/// A button, label or other widget of a kind with this text.
template <typename Kind>
Kind* withText(const QWidget& root, const QString& text)
{
    const auto found = root.findChildren<Kind*>();
    const auto match =
        std::ranges::find_if(found, [&](const Kind* widget) { return widget->text() == text; });
    return match == found.end() ? nullptr : *match;
}

/// What stands over a caption, in the same column.
template <typename Kind = QWidget>
Kind* over(const QWidget& root, const QString& caption)
{
    const QLabel* label = withText<QLabel>(root, caption);
    if (!label)
        return nullptr;
    for (Kind* widget :
         label->parentWidget()->findChildren<Kind*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (widget != static_cast<const QWidget*>(label))
            return widget;
    }
    return nullptr;
}

inline QMenu* menu(const QMainWindow& window, const QString& title)
{
    const auto menus = window.findChildren<QMenu*>();
    const auto match =
        std::ranges::find_if(menus, [&](const QMenu* menu) { return menu->title() == title; });
    return match == menus.end() ? nullptr : *match;
}

/// The entry of any menu with this text.
inline QAction* entry(const QMainWindow& window, const QString& text)
{
    for (const QMenu* menu : window.findChildren<QMenu*>()) {
        for (QAction* action : menu->actions()) {
            if (action->text() == text)
                return action;
        }
    }
    return nullptr;
}

inline void click(QWidget* widget)
{
    QTest::mouseClick(widget, Qt::LeftButton);
}

} // namespace Widgets
