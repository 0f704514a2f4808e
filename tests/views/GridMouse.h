#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QTest>
#include <QWidget>

/// The mouse over the grid of an editor, at places in its pixels.
class GridMouse {
public:
    virtual ~GridMouse() = default;

    virtual QWidget* grid() const = 0;

    void press(const QPoint& place, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {}) const
    {
        QTest::mousePress(grid(), button, modifiers, place);
    }

    void move(const QPoint& place) const { QTest::mouseMove(grid(), place); }

    /// As after a release that went elsewhere: no button is held any more.
    void moveWithoutButtons(const QPoint& place) const
    {
        QMouseEvent event(QEvent::MouseMove, place, grid()->mapToGlobal(place), Qt::NoButton,
                          Qt::NoButton, {});
        QApplication::sendEvent(grid(), &event);
    }

    void release(const QPoint& place, Qt::MouseButton button = Qt::LeftButton) const
    {
        QTest::mouseRelease(grid(), button, {}, place);
    }

    void click(const QPoint& place, Qt::MouseButton button = Qt::LeftButton,
               Qt::KeyboardModifiers modifiers = {}) const
    {
        press(place, button, modifiers);
        release(place, button);
    }
};
