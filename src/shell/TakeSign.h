#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

class QLabel;
class QToolButton;

/// What shows that a voice is being recorded: the button that began it turns red, a clock counts in
/// the place of its caption, and a button that drops the take stands beside it for as long.
class TakeSign : public QObject {
    Q_OBJECT

public:
    /// Takes two cards of the ribbon, of which it hides the second one. Neither is owned.
    TakeSign(QToolButton* record, QToolButton* cancel, QObject* parent);

    /// Starts the clock at 0:00, or puts the caption back.
    void show(bool recording);

private:
    void showTime();

    QToolButton* record_;
    QLabel* clock_;
    QToolButton* cancel_;
    QString caption_;
    QElapsedTimer elapsed_;
    QTimer tick_{this};
};
