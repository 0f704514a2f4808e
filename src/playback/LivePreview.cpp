#include "playback/LivePreview.h"

#include "playback/ChannelInstrument.h"
#include "playback/ChannelPlan.h"
#include "playback/SoundfontPlayer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr float kPreviewVolume = 0.9F;

/// The variant's notes as events, in order. What is at no place, or at one that no clock reaches,
/// is left out.
QList<ScheduledEvent> eventsOf(const LoopVariant& variant, double msPerBeat)
{
    QList<NoteEvent> notes = variant.notes;
    notes.removeIf([msPerBeat](const NoteEvent& note) {
        return !std::isfinite(note.startBeat * msPerBeat) ||
               !std::isfinite(note.endBeat() * msPerBeat);
    });
    QList<ScheduledEvent> events;
    double end = 0.0;
    Schedule::appendNotes(events, notes, kPreviewChannel, end);
    Schedule::sort(events);
    return events;
}

} // namespace

LivePreview::LivePreview(SoundfontPlayer* player, InstrumentLibrary* instruments, QObject* parent)
    : QObject(parent), player_(player), instruments_(instruments)
{
    for (QTimer* timer : {&chordTimer_, &variantTimer_}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
    }
    chordTimer_.setInterval(kChordPreviewMs);
    connect(&chordTimer_, &QTimer::timeout, this, &LivePreview::endChord);
    connect(&variantTimer_, &QTimer::timeout, this, &LivePreview::playDueEvents);
}

bool LivePreview::canSound() const
{
    return player_ && player_->hasSynth();
}

void LivePreview::configure(const QString& instrumentId)
{
    ChannelInstrument::configure(player_, instruments_, kPreviewChannel, instrumentId);
    player_->setChannelVolume(kPreviewChannel, kPreviewVolume);
    instrumentId_ = instrumentId;
}

void LivePreview::noteOn(int pitch, const QString& instrumentId, int velocity)
{
    if (!canSound())
        return;
    endRunning();
    if (instrumentId != instrumentId_)
        configure(instrumentId);
    player_->noteOn(kPreviewChannel, pitch, velocity);
    held_.insert(pitch);
}

void LivePreview::noteOff(int pitch)
{
    if (!player_)
        return;
    player_->noteOff(kPreviewChannel, pitch);
    held_.remove(pitch);
}

void LivePreview::chord(const QList<int>& pitches, int velocity)
{
    if (!canSound())
        return;
    endRunning();
    player_->selectGmProgram(kPreviewChannel, kHarmonyProgram);
    instrumentId_.reset();
    for (const int pitch : pitches) {
        player_->noteOn(kPreviewChannel, pitch, velocity);
        held_.insert(pitch);
    }
    chord_ = pitches;
    chordTimer_.start();
}

void LivePreview::endChord()
{
    chordTimer_.stop();
    for (const int pitch : std::exchange(chord_, {}))
        noteOff(pitch);
}

void LivePreview::variant(const LoopVariant& variant, const QString& instrumentId, int bpm)
{
    if (!canSound())
        return;
    const bool pressedAgain =
        isVariantRunning() && variant == variant_ && instrumentId == instrumentId_;
    stop();
    if (pressedAgain)
        return;
    configure(instrumentId);
    variant_ = variant;
    msPerBeat_ = 60000.0 / std::max(bpm, 1);
    events_ = eventsOf(variant, msPerBeat_);
    next_ = 0;
    clock_.start();
    variantTimer_.start(0);
}

double LivePreview::dueMs(const ScheduledEvent& event) const
{
    return std::floor(event.beat * msPerBeat_);
}

void LivePreview::playDueEvents()
{
    const auto now = static_cast<double>(clock_.elapsed());
    while (isVariantRunning() && dueMs(events_.at(next_)) <= now)
        Schedule::perform(events_.at(next_++), *player_);
    constexpr double kLongest = std::numeric_limits<int>::max();
    if (isVariantRunning())
        variantTimer_.start(static_cast<int>(std::min(dueMs(events_.at(next_)) - now, kLongest)));
}

void LivePreview::endRunning()
{
    if (chordTimer_.isActive())
        endChord();
    if (isVariantRunning())
        stop();
}

void LivePreview::stop()
{
    if (!player_)
        return;
    chordTimer_.stop();
    variantTimer_.stop();
    events_.clear();
    next_ = 0;
    player_->allNotesOff(kPreviewChannel);
    held_.clear();
}
