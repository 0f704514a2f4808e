#pragma once

#include "model/AudioTrack.h"
#include "voice/ClipSound.h"

#include <QList>
#include <QString>

#include <stop_token>

class Project;

/// The voice tracks of a project as sound.
namespace VoiceMix {

/// Frames that a mix may hold, so that its interleaved samples count in 32 bits: under 7 hours.
inline constexpr qint64 kMaxFrames = (qint64(1) << 30) - 1;

/// A clip that is heard, with what its track and its file do to it.
struct Voice {
    AudioClip clip;
    /// Of the track.
    float volume = 0.0F;
    ClipSource source;

    friend bool operator==(const Voice&, const Voice&) = default;
};

/// All that a mix of voices depends on, by value: equal ones sound equal.
struct Voices {
    QList<Voice> clips;
    /// Of the project.
    qint32 bpm = 0;

    friend bool operator==(const Voices&, const Voices&) = default;
};

/// What is heard of a project's voices, mute and solo heeded. Clips lie in `projectDir`; one whose
/// place is not a finite number is left out.
Voices voicesOf(const Project& project, const QString& projectDir);

/// The samples that render() gives, up to the end of the last clip; empty without any. What `cache`
/// holds is not read again. Nothing once it is asked to stop.
QList<float> renderToTheEnd(const Voices& voices, ClipCache& cache,
                            const std::stop_token& stop = {});

/// The voice tracks alone, from the start of the song: interleaved stereo at kSampleRate, always
/// 2 * `frames` samples for a number of frames in 0..kMaxFrames, and none beyond or where memory
/// does not hold them. Mute and solo are heeded; clips are read from `projectDir`, tuned, faded
/// and added. A clip that cannot be read, or whose place is not a finite number, is left out.
QList<float> render(const Project& project, const QString& projectDir, qint64 frames);

} // namespace VoiceMix
