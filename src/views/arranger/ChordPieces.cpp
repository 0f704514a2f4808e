#include "views/arranger/ChordPieces.h"

#include "model/Project.h"
#include "music/Beats.h"

#include <algorithm>
#include <functional>

namespace {

/// What there is of a chord that was laid over some stretch of a lane.
QList<BlockRef> piecesOf(const HarmonyTrack& harmony, const PlacedChord& chord, double beatsPerBar)
{
    QList<BlockRef> pieces;
    const double end = chord.span.start + chord.span.length;
    for (const HarmonyBlock& bar : harmony.blocks) {
        for (int i = 0; i < bar.events.size(); ++i) {
            const HarmonyDegreeEvent& event = bar.events.at(i);
            const double start = bar.barIndex * beatsPerBar + event.startBeat;
            if (event.degree == chord.event.degree && event.extension == chord.event.extension &&
                start > chord.span.start - kBeatEpsilon &&
                start + event.durationBeats < end + kBeatEpsilon)
                pieces.append({BlockKind::Chord, bar.barIndex, i});
        }
    }
    return pieces;
}

} // namespace

const HarmonyDegreeEvent& ChordPieces::eventOf(const Project& project, const BlockRef& chord)
{
    return project.harmonyTrack.blockForBar(chord.trackIndex)->events.at(chord.blockIndex);
}

HarmonyTrack ChordPieces::without(HarmonyTrack harmony, QList<BlockRef> chords)
{
    // The last of a bar first, so that the others stay where they are.
    std::ranges::sort(chords, std::greater());
    for (const BlockRef& chord : std::as_const(chords))
        harmony.ensureBlockForBar(chord.trackIndex).events.removeAt(chord.blockIndex);
    harmony.removeEmptyBlocks();
    return harmony;
}

QList<BlockRef> ChordPieces::lay(Project& project, const QList<PlacedChord>& chords,
                                 const QList<BlockRef>& gone)
{
    const double bar = project.beatsPerBar();
    HarmonyTrack harmony = without(project.harmonyTrack, gone);
    const bool all = std::ranges::all_of(chords, [&](const PlacedChord& chord) {
        return harmony.overlayEvent(chord.span.start, chord.span.length, chord.event.degree,
                                    chord.event.extension, bar);
    });
    if (!all)
        return {};
    project.harmonyTrack.blocks = harmony.blocks;
    QList<BlockRef> pieces;
    for (const PlacedChord& chord : chords)
        pieces += piecesOf(harmony, chord, bar);
    std::ranges::sort(pieces);
    pieces.erase(std::ranges::unique(pieces).begin(), pieces.end());
    return pieces;
}
