#pragma once

#include "export/ExportProgress.h"
#include "playback/Schedule.h"

#include <QList>

#include <functional>
#include <memory>

class SoundfontPlayer;

/// What the notes of a song sound like.
namespace NoteMix {

using NewSynthesiser = std::function<std::unique_ptr<SoundfontPlayer>()>;

/// Plays events, each exactly on its frame, into an interleaved stereo buffer of the song's length.
/// A song of many notes is shared between two synthesisers that play side by side, each the
/// channels of its own with effects of its own: `another` makes the second one, set up as the
/// first. The bits do not depend on how the two get on. False if the progress is to stop.
bool write(const QList<ScheduledEvent>& events, double beatFrames, SoundfontPlayer& player,
           const NewSynthesiser& another, QList<float>& mix, const ExportProgress& progress);

} // namespace NoteMix
