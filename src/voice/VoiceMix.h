#pragma once

#include <QList>
#include <QString>

class Project;

/// The voice tracks of a project as sound.
namespace VoiceMix {

/// Frames that a mix may hold, so that its interleaved samples count in 32 bits: under 7 hours.
inline constexpr qint64 kMaxFrames = (qint64(1) << 30) - 1;

/// The voice tracks alone, from the start of the song: interleaved stereo at kSampleRate, always
/// 2 * `frames` samples for a number of frames in 0..kMaxFrames, and none beyond or where memory
/// does not hold them. Mute and solo are heeded; clips are read from `projectDir`, tuned, faded
/// and added. A clip that cannot be read, or whose place is not a finite number, is left out.
QList<float> render(const Project& project, const QString& projectDir, qint64 frames);

/// Mono samples at kSampleRate, by linear interpolation. The result is one sample shorter than
/// it could be, so that every sample has a right neighbour.
QList<float> resampled(const QList<float>& mono, int sampleRate);

} // namespace VoiceMix
