#include "playback/PlaybackEngine.h"

#include "content/InstrumentLibrary.h"
#include "model/Track.h"
#include "playback/NoteRenderer.h"
#include "playback/SoundfontPlayer.h"

namespace {

bool selectOwnBank(SoundfontPlayer* player, const InstrumentLibrary& instruments, int channel,
                   const Instrument& instrument)
{
    if (!instruments.customBankAvailable(instrument))
        return false;
    if (!player->instrumentBankLoaded(instrument.id))
        player->loadInstrumentBank(instrument.id, instruments.customBankAbsolutePath(instrument));
    return player->selectInstrumentBank(channel, instrument.id);
}

} // namespace

PlaybackEngine::PlaybackEngine(SoundfontPlayer* player, LoopLibrary* library,
                               InstrumentLibrary* instruments, QObject* parent)
    : QObject(parent), player_(player), library_(library), instruments_(instruments)
{}

QList<NoteEvent> PlaybackEngine::renderTrackNotes(const Project& project, const Track& track,
                                                  const LoopLibrary* library)
{
    return NoteRenderer::trackNotes(project, track, library);
}

QList<NoteEvent> PlaybackEngine::renderHarmonyNotes(const Project& project)
{
    return NoteRenderer::harmonyNotes(project);
}

void PlaybackEngine::configureChannel(SoundfontPlayer* player, InstrumentLibrary* instruments,
                                      int channel, const QString& instrumentId)
{
    const Instrument* instrument = instruments ? instruments->find(instrumentId) : nullptr;
    if (!instrument) {
        player->selectGmProgram(channel, 0);
        return;
    }
    if (selectOwnBank(player, *instruments, channel, *instrument))
        return;
    if (instrument->category == InstrumentCategory::Percussion)
        player->selectGmDrums(channel);
    else
        player->selectGmProgram(channel, instruments->effectiveGmProgram(*instrument));
}

void PlaybackEngine::configureChannelForInstrument(int channel, const QString& instrumentId)
{
    configureChannel(player_, instruments_, channel, instrumentId);
}

void PlaybackEngine::setupTrackChannel(int channel, const Track& track)
{
    configureChannelForInstrument(channel, track.instrumentId);
    player_->setChannelVolume(channel, track.volume);
}
