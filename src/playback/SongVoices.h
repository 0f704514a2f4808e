#pragma once

#include "voice/VoiceMix.h"

#include <QList>

class Project;
class QString;

/// What playback asks about the voices of a song.
namespace SongVoices {

/// The voices of a project that may be null; none where it has no folder.
VoiceMix::Voices of(const Project* project, const QString& projectDir);

/// Which of the voice tracks are heard: those that have clips, and are neither muted nor left out
/// by a solo.
QList<bool> heard(const Project& project);

/// Gains and fades of all clips, one after the other.
QList<float> levels(const Project& project);

/// Where the last clip of the voices that are heard ends, in beats; 0 where there is none.
double endBeat(const Project& project);

/// Whether voices go on for so long, more than an hour, that they are mixed only when they are
/// asked for: a damaged file may place a clip where its mix would fill the memory.
bool areTooLongToMixAhead(const VoiceMix::Voices& voices);

} // namespace SongVoices
