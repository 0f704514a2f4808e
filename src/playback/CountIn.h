#pragma once

#include "playback/Schedule.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QTimer>

class SoundfontPlayer;
struct TimeSignature;

/// A bar of clicks ahead of something that is to begin with the next one, while the song stands
/// still. The clicks are the metronome's.
class CountIn : public QObject {
    Q_OBJECT

public:
    /// `player` is not owned, and may be null: then one counts unheard.
    explicit CountIn(SoundfontPlayer* player, QObject* parent = nullptr);

    /// Counts a bar in a tempo, from its first click on. One without length, or at a tempo that
    /// stands still, has ended with the next tick. The channel of the metronome has its instrument
    /// by now.
    void start(const TimeSignature& meter, qint32 bpm);

    /// Ends it without ended().
    void stop();

    bool isCounting() const { return timer_.isActive(); }

signals:
    /// With each click, from 1.
    void counted(int click);

    /// The bar is over: what was counted in begins now.
    void ended();

private:
    void onTick();

    SoundfontPlayer* player_;
    /// Of the bar, in order.
    QList<ScheduledEvent> events_;
    qsizetype next_ = 0;
    int click_ = 0;
    /// In beats.
    double bar_ = 0.0;
    qint32 bpm_ = 0;
    QElapsedTimer clock_;
    QTimer timer_;
};
