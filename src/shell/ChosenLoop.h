#pragma once

#include "model/Track.h"

#include <optional>

class LoopLibrary;

/// A variant of the library on its way into the song.
struct ChosenLoop {
    LoopBlock block;
    QString instrumentId;
    /// Suits the track of a new layer.
    QString trackName;
};

/// The variant, as a block of its own length that is to lie at a beat. Nothing where the library
/// lacks the rhythm, the layer or the variant.
std::optional<ChosenLoop> chosenLoop(const LoopLibrary& library, const QString& rhythmId,
                                     const QString& layerId, LoopSection section, int variantIndex,
                                     double startBeat);
