#pragma once

#include "music/LoopSection.h"

#include <QString>

#include <optional>

class LoopLibrary;

/// The beats that a variant lasts, in bars of its rhythm's own meter. Nothing where the library
/// lacks the rhythm, the layer or the variant.
std::optional<double> loopBeats(const LoopLibrary& library, const QString& rhythmId,
                                const QString& layerId, LoopSection section, int variantIndex);
