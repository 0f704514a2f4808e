#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

class LevelMeter;
class QLabel;
class QToolButton;

/// What shows that a voice is being recorded: the button that began it turns red, a clock counts in
/// the place of its caption, and beside it stand a button that drops the take and the level of the
/// microphone for as long.
class TakeSign : public QObject {
    Q_OBJECT

public:
    /// Takes two cards of the ribbon, of which it hides the second one, and a meter in the ribbon
    /// that is hidden too. Nothing is owned.
    TakeSign(QToolButton* record, QToolButton* cancel, LevelMeter* meter, QObject* parent);

    /// Starts the clock at 0:00, or puts the caption back.
    void show(bool recording);

    /// Shows a click of those that count the take in, from 1, in the place of the time.
    void showCount(int click);

    void showLevel(float peak);

private:
    void showTime();

    QToolButton* record_;
    QLabel* clock_;
    QToolButton* cancel_;
    LevelMeter* meter_;
    QString caption_;
    QElapsedTimer elapsed_;
    QTimer tick_{this};
};
