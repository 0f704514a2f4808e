#include "model/ProjectEdits.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "music/CountedBars.h"

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

bool hasNotes(const Track& track)
{
    return !track.loopBlocks.isEmpty() ||
           std::ranges::any_of(track.melodyBlocks,
                               [](const MelodyBlock& block) { return !block.notes.isEmpty(); });
}

bool hasClips(const AudioTrack& track)
{
    return !track.clips.isEmpty();
}

/// A new accompaniment track at the end of the list, without a layer. Nothing in a full list.
std::optional<qsizetype> addAccompaniment(Project& project, const QString& instrumentId,
                                          const QString& name)
{
    if (project.tracks.size() >= kMaxNoteTracks)
        return std::nullopt;
    Track track;
    track.name = name;
    track.instrumentId = instrumentId;
    track.isAccompaniment = true;
    project.tracks.append(track);
    return project.tracks.size() - 1;
}

/// Whether the same loop, wherever it lies and however long it is.
bool isSameLoop(const LoopBlock& one, const LoopBlock& other)
{
    return one.rhythmId == other.rhythmId && one.layerId == other.layerId &&
           one.section == other.section && one.variantIndex == other.variantIndex;
}

QList<LoopBlock> loopsOf(const Song& work)
{
    QList<LoopBlock> loops;
    for (const Track& track : work.tracks)
        loops.append(track.loopBlocks);
    return loops;
}

bool isSameTrack(const Track& one, const Track& other)
{
    return one.name == other.name && one.layerId == other.layerId &&
           one.instrumentId == other.instrumentId && one.isAccompaniment == other.isAccompaniment;
}

template <typename TrackList>
bool removeAt(TrackList& tracks, qsizetype index)
{
    if (index < 0 || index >= tracks.size())
        return false;
    tracks.removeAt(index);
    return true;
}

} // namespace

bool ProjectEdits::hasContent(const Project& project)
{
    return !project.harmonyTrack.isEmpty() || std::ranges::any_of(project.audioTracks, hasClips) ||
           std::ranges::any_of(project.tracks, hasNotes);
}

MelodyBlock ProjectEdits::blankMelody(const Project& project)
{
    MelodyBlock block;
    const double bar = project.beatsPerBar();
    if (isBarLength(bar))
        block.durationBeats = bar * project.barCount(Project::kLeastBars);
    return block;
}

bool ProjectEdits::isSameWork(const Song& former, const Song& present)
{
    Song comparable = present;
    const qsizetype common = std::min(former.tracks.size(), present.tracks.size());
    for (qsizetype i = 0; i < common; ++i) {
        const QList<MelodyBlock>& blocks = present.tracks.at(i).melodyBlocks;
        if (former.tracks.at(i).melodyBlocks.isEmpty() && blocks.size() == 1 &&
            blocks.first().notes.isEmpty())
            comparable.tracks[i].melodyBlocks.clear();
    }
    return comparable == former;
}

qsizetype ProjectEdits::addNoteTrack(Project& project, const QString& name)
{
    Track track;
    track.name = name;
    track.instrumentId = u"gm_piano"_s;
    track.melodyBlocks = {blankMelody(project)};
    const auto accompaniment = std::ranges::find_if(
        std::as_const(project.tracks), [](const Track& other) { return other.isAccompaniment; });
    const qsizetype index = accompaniment - project.tracks.cbegin();
    project.tracks.insert(index, track);
    return index;
}

void ProjectEdits::setKey(Project& project, int rootPitchClass, int mode)
{
    project.keySignature.rootPitchClass = rootPitchClass;
    project.keySignature.mode = mode == 1 ? KeyMode::Minor : KeyMode::Major;
}

void ProjectEdits::setMeter(Project& project, const TimeSignature& meter)
{
    project.harmonyTrack =
        withBarsCountedAnew(project.harmonyTrack, project.beatsPerBar(), meter.beatsPerBar());
    project.timeSignature = meter;
}

bool ProjectEdits::removeNoteTrack(Project& project, qsizetype index)
{
    return removeAt(project.tracks, index);
}

bool ProjectEdits::removeAudioTrack(Project& project, qsizetype index)
{
    return removeAt(project.audioTracks, index);
}

void ProjectEdits::addClip(Project& project, const QString& newTrackName, const AudioClip& clip)
{
    if (project.audioTracks.isEmpty()) {
        AudioTrack track;
        track.name = newTrackName;
        project.audioTracks.append(track);
    }
    project.audioTracks.last().clips.append(clip);
}

int ProjectEdits::trackAfter(const QList<Track>& former, const QList<Track>& present, int index)
{
    const auto come = static_cast<int>(present.size() - former.size());
    const auto place =
        static_cast<int>(std::ranges::mismatch(former, present, isSameTrack).in1 - former.begin());
    if (come == 0 || index < place)
        return index;
    return index + come < place ? -1 : index + come;
}

QString ProjectEdits::effectiveLayer(const Track& track)
{
    if (track.layerId.isEmpty() && !track.loopBlocks.isEmpty())
        return track.loopBlocks.first().layerId;
    return track.layerId;
}

QString ProjectEdits::firstRhythm(const Song& song)
{
    const LoopBlock* first = nullptr;
    for (const Track& track : song.tracks) {
        for (const LoopBlock& block : track.loopBlocks) {
            if (!first || block.startBeat < first->startBeat)
                first = &block;
        }
    }
    return first ? first->rhythmId : QString();
}

double ProjectEdits::barStart(const Project& project, double beat)
{
    const double bar = project.beatsPerBar();
    return isBarLength(bar) ? std::floor(beat / bar) * bar : 0.0;
}

std::optional<qsizetype> ProjectEdits::accompanimentOf(const Project& project,
                                                       const QString& layerId)
{
    const auto track = std::ranges::find_if(project.tracks, [&](const Track& candidate) {
        return candidate.isAccompaniment && effectiveLayer(candidate) == layerId;
    });
    if (track == project.tracks.cend())
        return std::nullopt;
    return track - project.tracks.cbegin();
}

bool ProjectEdits::covers(const LoopBlock& present, const LoopBlock& block)
{
    return isSameLoop(present, block) &&
           std::abs(present.startBeat - block.startBeat) < kBeatEpsilon &&
           present.durationBeats > block.durationBeats - kBeatEpsilon;
}

bool ProjectEdits::hasLoop(const Project& project, const LoopBlock& block)
{
    const auto track = accompanimentOf(project, block.layerId);
    return track &&
           std::ranges::any_of(project.tracks.at(*track).loopBlocks,
                               [&](const LoopBlock& other) { return covers(other, block); });
}

std::optional<LoopBlock> ProjectEdits::loopMissingIn(const Song& lacking, const Song& work)
{
    const QList<LoopBlock> fewer = loopsOf(lacking);
    const QList<LoopBlock> loops = loopsOf(work);
    if (loops.size() != fewer.size() + 1)
        return std::nullopt;
    const auto [missing, next] = std::ranges::mismatch(loops, fewer);
    return std::equal(missing + 1, loops.end(), next) ? std::optional(*missing) : std::nullopt;
}

std::optional<qsizetype> ProjectEdits::addLoop(Project& project, const LoopBlock& block,
                                               const QString& instrumentId,
                                               const QString& newTrackName)
{
    auto index = accompanimentOf(project, block.layerId);
    if (!index)
        index = addAccompaniment(project, instrumentId, newTrackName);
    if (!index)
        return std::nullopt;
    Track& track = project.tracks[*index];
    if (track.layerId.isEmpty())
        track.layerId = block.layerId;
    track.loopBlocks.append(block);
    return index;
}
