#pragma once

/// Keeps GLib, on which a reader of sound banks in FluidSynth may stand, from writing its own
/// diagnostics to the error stream. Does nothing on systems without it.
void silenceGlib();
