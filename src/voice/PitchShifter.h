#pragma once

#include <QList>

/// Changes the pitch of a mono recording over time without changing its length: every frame is
/// read at its own speed, windowed and added back at its own place.
class PitchShifter {
public:
    /// Ratios at or beyond these count as 1.0.
    static constexpr float kMinRatio = 0.25F;
    static constexpr float kMaxRatio = 4.0F;

    /// Sum of windows at or below which the input sample is kept.
    static constexpr float kMinWindowSum = 0.0001F;

    /// A list as long as `samples`. `ratios` holds one pitch ratio for every frame of kFrameSize
    /// samples, kHopSize apart (1.0 = unchanged, 2.0 = an octave up); its last value serves for
    /// the frames beyond it. Without samples or ratios the samples come back as they are.
    static QList<float> process(const QList<float>& samples, const QList<float>& ratios);
};
