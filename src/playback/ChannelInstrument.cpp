#include "playback/ChannelInstrument.h"

#include "content/InstrumentLibrary.h"
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

void ChannelInstrument::configure(SoundfontPlayer* player, InstrumentLibrary* instruments,
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
