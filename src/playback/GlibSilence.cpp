#include "playback/GlibSilence.h"

#include <QLibrary>

namespace {

using LogHandler = void (*)(const char* domain, int level, const char* message, void* data);
using SetLogHandler = unsigned (*)(const char* domain, int levels, LogHandler handler, void* data);

void ignoreMessage(const char*, int, const char*, void*)
{}

/// Handlers pile up, so there is one for the life of the program.
bool installHandler()
{
    // The two lowest bits are flags beside the levels.
    constexpr int kEveryLevel = ~3;
    // FluidSynth brings the library along, or does without it; this program never needs it.
    const auto setHandler = reinterpret_cast<SetLogHandler>(
        QLibrary::resolve(QStringLiteral("glib-2.0"), 0, "g_log_set_handler"));
    if (setHandler)
        setHandler(nullptr, kEveryLevel, ignoreMessage, nullptr);
    return setHandler != nullptr;
}

} // namespace

void silenceGlib()
{
    [[maybe_unused]] static const bool installed = installHandler();
}
