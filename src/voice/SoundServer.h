#pragma once

#include <QByteArray>

/// The server that keeps the sound devices of a desktop. A program that asks one which hangs for a
/// device waits for ever.
namespace SoundServer {

/// Whether a device may be asked for. Greets the server and waits two seconds for its answer; as
/// long as that has not come, later calls hardly wait again. True where there is no server at all:
/// whoever asks for a device then hears so at once. For the GUI thread.
bool answers();

/// The id of the microphone that the user's desktop records from; empty where nobody knows. It
/// waits two seconds at most.
QByteArray defaultMicrophone();

} // namespace SoundServer
