#include "playback/AlsaSilence.h"

#ifdef __linux__

#include <alsa/asoundlib.h>

namespace {

void ignoreMessage(const char*, int, const char*, int, const char*, ...)
{}

} // namespace

void silenceAlsa()
{
    snd_lib_error_set_handler(ignoreMessage);
}

#else

void silenceAlsa()
{}

#endif
