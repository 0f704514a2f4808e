#pragma once

#include <QObject>

class QWidget;

/// Lets the wheel pass over a box or a slider that does not have the focus: who scrolls a panel
/// means the panel. It belongs to the control, which does not take the focus by the wheel either.
class WheelGuard : public QObject {
    Q_OBJECT

public:
    explicit WheelGuard(QWidget* control);

    /// Guards every box and slider in a panel.
    static void guardAllIn(QWidget& panel);

    bool eventFilter(QObject* watched, QEvent* event) override;
};
