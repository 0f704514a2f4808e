#pragma once

#include "voice/VoiceFrames.h"

#include <QList>

#include <vector>

/// Quick correlations of the overlapping frames of a recording, with a proven bound on their
/// error, to tell which lags of a frame need the exact sums at all.
///
/// A frame shares three quarters of its samples with the next one. The products of samples a lag
/// apart are therefore summed once for every stretch of kHopSize samples, in single precision
/// and many at a time, and frames add up the sums of their stretches. For a lag of 294 samples
/// that is 512 products a frame instead of 1754.
class CorrelationScreen {
public:
    /// The largest distance between a quick correlation and the exact one.
    ///
    /// A product enters its stretch's sum through at most 32 additions in its lane, 4 across the
    /// lanes and 15 for the samples behind the last whole group of lanes, each with a relative
    /// error of 2^-24; the sum of the products' magnitudes is at most the root of the energies'
    /// product (Cauchy-Schwarz). That gives 51 * 2^-24 = 3.1e-6. The rest is room for what is
    /// rounded in double precision, energies included, down to kLeastShare. Silent frames, whose
    /// squares may vanish from single precision, are not meant.
    static constexpr double kMaxError = 5e-6;

    /// Smallest share of a frame's energy that either end of the overlap may hold for the bound
    /// to stand.
    static constexpr double kLeastShare = 1e-6;

    /// Largest energy of a frame for which single precision sums cannot overflow.
    static constexpr double kMostEnergy = 1e30;

    /// Screens lags from `lagMin` to `lagMax` inclusive (0 <= lagMin <= lagMax <= kFrameSize / 2).
    /// `samples` is kept as a shared copy.
    CorrelationScreen(const QList<float>& samples, int lagMin, int lagMax);

    /// Sums of products of the next frame, one for each lag from lagMin; the first call gives
    /// those of frame 0. They live until the next call.
    const std::vector<double>& nextFrame();

private:
    /// The sums of one stretch for all lags.
    struct Stretch {
        /// Over the whole stretch.
        std::vector<float> whole;
        /// Over the part that ends a frame, of (kFrameSize - lag) % kHopSize samples.
        std::vector<float> head;
    };

    static constexpr int kStretches = kFrameSize / kHopSize;

    Stretch& stretch(qsizetype index);
    void sumStretch(qsizetype index);

    QList<float> samples_;
    int lagMin_;
    int lagMax_;
    qsizetype frame_ = 0;
    /// The stretches of the present frame, by number modulo kStretches.
    std::vector<Stretch> ring_;
    std::vector<float> window_;
    std::vector<double> products_;
};
