#pragma once

#include "voice/VoiceFrames.h"

#include <QList>

#include <stop_token>

/// Estimates the fundamental frequency of a sung mono recording, frame by frame, as the lag of
/// the highest normalized autocorrelation. Octave errors are accepted.
class PitchDetector {
public:
    /// Lowest and highest frequency that the search is laid out for, in Hz.
    static constexpr double kMinPitchHz = 70.0;
    static constexpr double kMaxPitchHz = 1000.0;

    /// Upper bound of the longest lag, in samples, at any sample rate.
    static constexpr int kMaxLag = 1024;

    /// Mean square below which a frame is silent.
    static constexpr double kSilenceThreshold = 1e-6;

    /// Lowest correlation of a voiced frame.
    static constexpr double kVoicedThreshold = 0.5;

    /// What becomes of a third, a fifth or any other odd fraction of a pitch that a frame is found
    /// at, since several periods correlate as well as one. Undone, it is the pitch itself; an
    /// octave is left as it is found, being a note of the same name.
    enum class OddFractions { Kept, Undone };

    /// One value in Hz for every whole frame, 0.0 where there is no pitch. Empty when there is
    /// less than one frame, or no sample rate. Once asked to stop, the rest is 0.0.
    ///
    /// With fractions kept, the answer is that of the plain search: for every lag L the sums of
    /// x[i] * x[i + L], of x[i]^2 and of x[i + L]^2 over the overlap, products in single and sums
    /// in double precision from the first sample on, and the shortest lag of the highest
    /// correlation. It comes from far fewer such sums; CorrelationScreen tells which can be left
    /// out.
    static QList<float> detectTrack(const QList<float>& samples, int sampleRate,
                                    OddFractions fractions = OddFractions::Kept,
                                    const std::stop_token& stop = {});
};
