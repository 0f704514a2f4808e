#include "playback/CountIn.h"

#include "music/Beats.h"
#include "music/TimeSignature.h"
#include "playback/ChannelPlan.h"
#include "playback/Metronome.h"
#include "playback/SoundfontPlayer.h"
#include "playback/Transport.h"

namespace {

/// The clicks of one bar, with their ends.
QList<ScheduledEvent> clicksOf(const TimeSignature& meter)
{
    QList<ScheduledEvent> events;
    Metronome::appendClicks(events, meter, 0.0);
    events.removeIf([bar = meter.beatsPerBar()](const ScheduledEvent& event) {
        return event.beat >= bar - kBeatEpsilon;
    });
    Schedule::sort(events);
    return events;
}

} // namespace

CountIn::CountIn(SoundfontPlayer* player, QObject* parent) : QObject(parent), player_(player)
{
    timer_.setTimerType(Qt::PreciseTimer);
    timer_.setInterval(Transport::kTickPeriod);
    connect(&timer_, &QTimer::timeout, this, &CountIn::onTick);
}

void CountIn::start(const TimeSignature& meter, qint32 bpm)
{
    // A song that stands still would be counted in for ever.
    bar_ = isBarLength(meter.beatsPerBar()) && bpm > 0 ? meter.beatsPerBar() : 0.0;
    events_ = bar_ > 0.0 ? clicksOf(meter) : QList<ScheduledEvent>();
    next_ = 0;
    click_ = 0;
    bpm_ = bpm;
    clock_.start();
    timer_.start();
}

void CountIn::stop()
{
    timer_.stop();
    if (player_)
        player_->allNotesOff(kMetronomeChannel);
}

void CountIn::onTick()
{
    const double beat = Transport::beatAfter(0.0, bpm_, clock_.nsecsElapsed());
    while (isCounting() && next_ < events_.size() && events_.at(next_).beat <= beat) {
        const ScheduledEvent event = events_.at(next_++);
        if (player_)
            Schedule::perform(event, *player_);
        if (event.noteOn)
            emit counted(++click_);
    }
    // Who is told of a click may have ended it all.
    if (!isCounting() || beat < bar_)
        return;
    stop();
    emit ended();
}
