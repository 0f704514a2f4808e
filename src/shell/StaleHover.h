#pragma once

#include <QObject>

/// Takes the mark of the mouse from what the mouse has left unseen: while a list, a menu or a
/// dialog is open, the moves of the mouse are its own, and what was under the mouse before hears of
/// no leave.
class StaleHover : public QObject {
    Q_OBJECT

public:
    /// Watches every window of the program.
    explicit StaleHover(QObject* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
