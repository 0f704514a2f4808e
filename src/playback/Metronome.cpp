#include "playback/Metronome.h"

#include "music/Beats.h"
#include "music/TimeSignature.h"
#include "playback/ChannelPlan.h"

#include <algorithm>

namespace {

constexpr double kClickBeats = 0.1;
constexpr double kLeastBars = 4.0;

struct Click {
    int pitch;
    int velocity;
};

// High and low wood block of the General MIDI drum kit.
constexpr Click kAccent{.pitch = 76, .velocity = 110};
constexpr Click kOrdinary{.pitch = 77, .velocity = 80};

double clicksUntil(const TimeSignature& meter, double end)
{
    const double bar = meter.beatsPerBar();
    return std::max(isBarLength(bar) ? kLeastBars * bar : 0.0, end) + kBeatEpsilon;
}

void appendClick(QList<ScheduledEvent>& events, double beat, const Click& click)
{
    events.append({.beat = beat,
                   .noteOn = true,
                   .channel = kMetronomeChannel,
                   .pitch = click.pitch,
                   .velocity = click.velocity});
    events.append({.beat = beat + kClickBeats,
                   .noteOn = false,
                   .channel = kMetronomeChannel,
                   .pitch = click.pitch,
                   .velocity = 0});
}

} // namespace

void Metronome::appendClicks(QList<ScheduledEvent>& events, const TimeSignature& meter, double end)
{
    const double step = meter.pulseBeats();
    // A damaged meter may have no click to a bar; then each is the first of its own.
    const int clicksPerBar = std::max(meter.pulsesPerBar(), 1);
    const double until = clicksUntil(meter, end);
    double beat = 0.0;
    for (int index = 0; beat < until && index < kMaxClicks; ++index) {
        appendClick(events, beat, index % clicksPerBar == 0 ? kAccent : kOrdinary);
        beat += step;
    }
}
