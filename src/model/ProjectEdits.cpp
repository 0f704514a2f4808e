#include "model/ProjectEdits.h"

#include "model/Project.h"

#include <algorithm>

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

qsizetype ProjectEdits::addNoteTrack(Project& project, const QString& name)
{
    Track track;
    track.name = name;
    track.instrumentId = u"gm_piano"_s;
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
