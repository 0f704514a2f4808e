#pragma once

#include <QObject>

/// Turns the wheel over one widget into the wheel over another: what stands beside a view scrolls
/// with it. It belongs to the first.
class WheelForwarder : public QObject {
    Q_OBJECT

public:
    WheelForwarder(QWidget* from, QWidget* to);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* to_;
};
