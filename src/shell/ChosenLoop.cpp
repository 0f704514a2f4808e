#include "shell/ChosenLoop.h"

#include "content/LoopLength.h"
#include "content/LoopLibrary.h"

using namespace Qt::Literals::StringLiterals;

std::optional<ChosenLoop> chosenLoop(const LoopLibrary& library, const QString& rhythmId,
                                     const QString& layerId, LoopSection section, int variantIndex,
                                     double startBeat)
{
    const auto beats = loopBeats(library, rhythmId, layerId, section, variantIndex);
    if (!beats)
        return std::nullopt;
    const LoopLayer* layer = library.findLayer(layerId);
    return ChosenLoop{
        .block = {.startBeat = startBeat,
                  .durationBeats = *beats,
                  .rhythmId = rhythmId,
                  .layerId = layerId,
                  .section = section,
                  .variantIndex = variantIndex},
        .instrumentId = layer->instrumentId,
        .trackName = u"%1 · %2"_s.arg(library.findRhythm(rhythmId)->displayName, layer->label)};
}
