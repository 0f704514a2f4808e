#pragma once

#include "music/HarmonyTrack.h"
#include "views/arranger/BlockEdits.h"

#include <QList>

class Project;

/// A chord and where it is to lie in the song.
struct PlacedChord {
    BlockSpan span;
    HarmonyDegreeEvent event;
};

/// Chords as blocks, which may lie anywhere: the lane of chords holds them bar by bar, each apart
/// from the others.
namespace ChordPieces {

/// The record of a chord, which there has to be.
const HarmonyDegreeEvent& eventOf(const Project& project, const BlockRef& chord);

/// A lane without some of its chords.
HarmonyTrack without(HarmonyTrack harmony, QList<BlockRef> chords);

/// Lays chords one after the other over what is there, once some others are gone. What there is of
/// them then, ascending; nothing, with the lane as it was, where one of them has no bar to lie in.
QList<BlockRef> lay(Project& project, const QList<PlacedChord>& chords,
                    const QList<BlockRef>& gone = {});

} // namespace ChordPieces
