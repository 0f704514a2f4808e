#pragma once

#include "voice/VoiceFrames.h"

#include <QList>

/// Changes the pitch of a mono recording over time without changing its length: every frame is
/// read at its own speed, windowed and added back at its own place. Where the period of the sound
/// is known, a frame begins to read up to half a period beside its place, in phase with the frame
/// before it.
class PitchShifter {
public:
    /// Ratios at or beyond these count as 1.0.
    static constexpr float kMinRatio = 0.25F;
    static constexpr float kMaxRatio = 4.0F;

    /// The longest period that is heeded, in samples: half of one never reaches back before the
    /// frame in front. Others, and those below one sample, count as none.
    static constexpr float kMaxPeriod = 2.0F * kHopSize;

    /// Sum of windows at or below which the input sample is kept.
    static constexpr float kMinWindowSum = 0.0001F;

    /// A list as long as `samples`. `ratios` holds one pitch ratio for every frame of kFrameSize
    /// samples, kHopSize apart (1.0 = unchanged, 2.0 = an octave up), and `periods` the period of
    /// the sound at every frame in samples (0.0 = none); their last values serve for the frames
    /// beyond them. Without periods every frame reads from its own place. Without samples or ratios
    /// the samples come back as they are.
    static QList<float> process(const QList<float>& samples, const QList<float>& ratios,
                                const QList<float>& periods = {});
};
