#pragma once

#include <QString>

class InstrumentLibrary;
class SoundfontPlayer;

namespace ChannelInstrument {

/// Gives a channel an instrument: its own bank where there is one, else the drum kit for
/// percussion and a General MIDI program for the rest. An unknown instrument is a piano.
/// `instruments` may be null.
void configure(SoundfontPlayer* player, InstrumentLibrary* instruments, int channel,
               const QString& instrumentId);

} // namespace ChannelInstrument
