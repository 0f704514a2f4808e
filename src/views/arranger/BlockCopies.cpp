#include "views/arranger/BlockCopies.h"

#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "views/arranger/ChordPieces.h"
#include "views/arranger/EqualBlocks.h"

#include <algorithm>

using BlockEdits::holds;

namespace {

/// The index of a record that covers another one, or -1.
template <typename Record>
int placeOf(const QList<Record>& records, const Record& record)
{
    const auto cover = std::ranges::find_if(
        records, [&](const Record& present) { return EqualBlocks::covers(present, record); });
    return cover == records.end() ? -1 : static_cast<int>(cover - records.begin());
}

bool takesMelodies(const Project& project, int track, bool isAccompaniment)
{
    return holds(project.tracks, track) &&
           project.tracks.at(track).isAccompaniment == isAccompaniment;
}

/// The track for a melody that has lost its own, or -1.
int otherMelodyTrack(const Project& project, int wished)
{
    if (takesMelodies(project, wished, false))
        return wished;
    const auto first = std::ranges::find(project.tracks, false, &Track::isAccompaniment);
    return first == project.tracks.end() ? -1 : static_cast<int>(first - project.tracks.begin());
}

int lastIndexOf(qsizetype size)
{
    return static_cast<int>(size) - 1;
}

} // namespace

BlockCopies::BlockCopies(const Project& project, const QList<BlockRef>& blocks)
{
    double end = 0.0;
    bool any = false;
    for (const BlockRef& block : blocks) {
        const auto span = BlockEdits::spanOf(project, block);
        if (!span)
            continue;
        span_.start = any ? std::min(span_.start, span->start) : span->start;
        end = any ? std::max(end, span->start + span->length) : span->start + span->length;
        any = true;
        add(project, block, *span);
    }
    span_.length = end - span_.start;
}

void BlockCopies::add(const Project& project, const BlockRef& block, const BlockSpan& span)
{
    if (block.kind == BlockKind::Chord) {
        chords_.append({.start = span.start, .event = ChordPieces::eventOf(project, block)});
    } else if (block.kind == BlockKind::Audio) {
        const AudioTrack& track = project.audioTracks.at(block.trackIndex);
        voices_.append({.track = block.trackIndex,
                        .trackName = track.name,
                        .clip = track.clips.at(block.blockIndex)});
    } else if (block.kind == BlockKind::Melody) {
        const Track& track = project.tracks.at(block.trackIndex);
        melodies_.append({.track = block.trackIndex,
                          .isAccompaniment = track.isAccompaniment,
                          .block = track.melodyBlocks.at(block.blockIndex)});
    } else {
        const Track& track = project.tracks.at(block.trackIndex);
        loops_.append({.track = block.trackIndex,
                       .layerId = ProjectEdits::effectiveLayer(track),
                       .instrumentId = track.instrumentId,
                       .trackName = track.name,
                       .block = track.loopBlocks.at(block.blockIndex)});
    }
}

bool BlockCopies::isEmpty() const
{
    return melodies_.isEmpty() && loops_.isEmpty() && voices_.isEmpty() && chords_.isEmpty();
}

BlockCopies::Laid BlockCopies::layAt(Project& project, double beat, int melodyTrack) const
{
    Laid laid;
    const double way = beat - span_.start;
    layMelodies(project, way, melodyTrack, laid);
    layLoops(project, way, laid);
    layVoices(project, way, laid);
    layChords(project, way, laid);
    return laid;
}

void BlockCopies::layMelodies(Project& project, double way, int melodyTrack, Laid& laid) const
{
    for (Melody copy : melodies_) {
        const bool own = takesMelodies(project, copy.track, copy.isAccompaniment);
        const int track = own ? copy.track : otherMelodyTrack(project, melodyTrack);
        if (track < 0) {
            ++laid.homeless;
            continue;
        }
        copy.block.startBeat += way;
        QList<MelodyBlock>& blocks = project.tracks[track].melodyBlocks;
        if (const int present = placeOf(blocks, copy.block); present >= 0) {
            laid.present.append({BlockKind::Melody, track, present});
            continue;
        }
        blocks.append(copy.block);
        laid.blocks.append({BlockKind::Melody, track, lastIndexOf(blocks.size())});
    }
}

void BlockCopies::layLoops(Project& project, double way, Laid& laid) const
{
    for (Loop copy : loops_) {
        copy.block.startBeat += way;
        const bool own =
            holds(project.tracks, copy.track) &&
            ProjectEdits::effectiveLayer(project.tracks.at(copy.track)) == copy.layerId;
        const int present =
            own ? placeOf(project.tracks.at(copy.track).loopBlocks, copy.block) : -1;
        if (present >= 0) {
            laid.present.append({BlockKind::Loop, copy.track, present});
            continue;
        }
        std::optional<qsizetype> home = copy.track;
        if (own)
            project.tracks[copy.track].loopBlocks.append(copy.block);
        else
            home = ProjectEdits::addLoop(project, copy.block, copy.instrumentId, copy.trackName);
        if (home)
            laid.blocks.append({BlockKind::Loop, static_cast<int>(*home),
                                lastIndexOf(project.tracks.at(*home).loopBlocks.size())});
        else
            ++laid.homeless;
    }
}

void BlockCopies::layVoices(Project& project, double way, Laid& laid) const
{
    for (Voice copy : voices_) {
        copy.clip.offsetBeats += way;
        const int track = holds(project.audioTracks, copy.track)
                              ? copy.track
                              : lastIndexOf(project.audioTracks.size());
        const int present =
            track >= 0 ? placeOf(project.audioTracks.at(track).clips, copy.clip) : -1;
        if (present >= 0) {
            laid.present.append({BlockKind::Audio, track, present});
            continue;
        }
        if (track >= 0)
            project.audioTracks[track].clips.append(copy.clip);
        else
            ProjectEdits::addClip(project, copy.trackName, copy.clip);
        const int home = std::max(track, 0);
        laid.blocks.append(
            {BlockKind::Audio, home, lastIndexOf(project.audioTracks.at(home).clips.size())});
    }
}

void BlockCopies::layChords(Project& project, double way, Laid& laid) const
{
    QList<PlacedChord> chords;
    for (const Chord& copy : chords_)
        chords.append({.span = {copy.start + way, copy.event.durationBeats}, .event = copy.event});
    if (chords.isEmpty())
        return;
    const QList<HarmonyBlock> before = project.harmonyTrack.blocks;
    const QList<BlockRef> pieces = ChordPieces::lay(project, chords);
    (project.harmonyTrack.blocks == before ? laid.present : laid.blocks) += pieces;
}
