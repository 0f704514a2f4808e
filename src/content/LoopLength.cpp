#include "content/LoopLength.h"

#include "content/LoopLibrary.h"

std::optional<double> loopBeats(const LoopLibrary& library, const QString& rhythmId,
                                const QString& layerId, LoopSection section, int variantIndex)
{
    const Rhythm* rhythm = library.findRhythm(rhythmId);
    const LoopVariant* variant = library.findVariant(layerId, section, variantIndex);
    if (!rhythm || !variant || !library.findLayer(layerId))
        return std::nullopt;
    return rhythm->timeSignature.beatsPerBar() * variant->durationBars;
}
