#pragma once

#include "music/HarmonyTrack.h"

/// The chord lane of a work whose bars are counted in another length: every chord stays at its
/// beats. It is cut at each new bar line, and goes on over a former one behind which the same chord
/// follows. Where either length is none, or a bar would hold more than a thousand of the others,
/// the lane stays as it is.
HarmonyTrack withBarsCountedAnew(HarmonyTrack track, double formerBeatsPerBar, double beatsPerBar);
