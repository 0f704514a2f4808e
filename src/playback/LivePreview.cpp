#include "playback/LivePreview.h"

#include "content/Rhythm.h"
#include "playback/ChannelInstrument.h"
#include "playback/ChannelPlan.h"
#include "playback/SoundfontPlayer.h"

#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace {

constexpr float kPreviewVolume = 0.9F;

/// When something at a beat is due, in whole milliseconds. Nothing for a place that is no number.
std::optional<int> dueMs(double beat, double msPerBeat)
{
    const double ms = beat * msPerBeat;
    if (!std::isfinite(ms))
        return std::nullopt;
    return static_cast<int>(std::clamp<double>(ms, 0.0, std::numeric_limits<int>::max()));
}

} // namespace

LivePreview::LivePreview(SoundfontPlayer* player, InstrumentLibrary* instruments, QObject* parent)
    : QObject(parent), player_(player), instruments_(instruments)
{}

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
    player_->selectGmProgram(kPreviewChannel, kHarmonyProgram);
    instrumentId_.clear();
    for (const int pitch : pitches) {
        player_->noteOn(kPreviewChannel, pitch, velocity);
        held_.insert(pitch);
        QTimer::singleShot(kChordPreviewMs, this, [this, pitch] { noteOff(pitch); });
    }
}

void LivePreview::variant(const LoopVariant& variant, const QString& instrumentId, int bpm)
{
    if (!canSound())
        return;
    stop();
    configure(instrumentId);
    const double msPerBeat = 60000.0 / std::max(bpm, 1);
    for (const NoteEvent& note : variant.notes) {
        const auto start = dueMs(note.startBeat, msPerBeat);
        const auto end = dueMs(note.startBeat + note.durationBeats, msPerBeat);
        if (!start || !end)
            continue;
        QTimer::singleShot(*start, this, [this, note] {
            player_->noteOn(kPreviewChannel, note.pitch, note.velocity);
        });
        QTimer::singleShot(*end, this,
                           [this, note] { player_->noteOff(kPreviewChannel, note.pitch); });
    }
}

void LivePreview::stop()
{
    if (!player_)
        return;
    player_->allNotesOff(kPreviewChannel);
    held_.clear();
}
