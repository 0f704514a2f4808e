#pragma once

/// Keeps ALSA, which the synthesiser's audio driver may use, from writing its own diagnostics to
/// the error stream. Does nothing on systems without it.
void silenceAlsa();
