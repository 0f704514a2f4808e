#include "voice/PitchDetector.h"

#include "voice/CorrelationScreen.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

/// Smallest curvature of the correlation that its peak is refined by.
constexpr double kParabolaEpsilon = 1e-12;

struct LagRange {
    int min;
    int max;
};

LagRange lagRange(int sampleRate)
{
    return {static_cast<int>(sampleRate / PitchDetector::kMaxPitchHz),
            std::min(static_cast<int>(sampleRate / PitchDetector::kMinPitchHz),
                     PitchDetector::kMaxLag)};
}

/// One frame with the sums that its correlations share.
class Frame {
public:
    explicit Frame(const float* samples) : samples_(samples)
    {
        for (std::size_t i = 0; i < kFrameSize; ++i) {
            squares_[i] = samples[i] * samples[i];
            energy_[i + 1] = energy_[i] + static_cast<double>(squares_[i]);
        }
    }

    /// Energy of the first `count` samples.
    double energyOfFirst(int count) const { return energy_[static_cast<std::size_t>(count)]; }

    double energy() const { return energy_[kFrameSize]; }

    /// The normalized correlation with itself `lag` samples later.
    double correlation(int lag) const
    {
        const int overlap = kFrameSize - lag;
        const float* later = samples_ + lag;
        const float* laterSquares = squares_.data() + lag;
        double products = 0.0;
        double laterEnergy = 0.0;
        for (int i = 0; i < overlap; ++i) {
            products += static_cast<double>(samples_[i] * later[i]);
            laterEnergy += static_cast<double>(laterSquares[i]);
        }
        const double norm = std::sqrt(energyOfFirst(overlap) * laterEnergy);
        return norm > 0.0 ? products / norm : 0.0;
    }

private:
    const float* samples_;
    std::array<float, kFrameSize> squares_;
    /// energy_[n] sums the first n squares.
    std::array<double, kFrameSize + 1> energy_{};
};

/// Finds, for one frame after another, the lags that may hold the highest correlation.
class LagPicker {
public:
    explicit LagPicker(LagRange lags)
        : lags_(lags), quick_(static_cast<std::size_t>(lags.max - lags.min + 1))
    {
        candidates_.reserve(quick_.size());
    }

    /// The lags of a frame, ascending, among which is the shortest one of highest correlation if
    /// that correlation reaches the voiced threshold. Lags that the screen's error bound does not
    /// cover are always among them.
    const std::vector<int>& candidates(const Frame& frame, const std::vector<double>& products)
    {
        candidates_.clear();
        const double total = frame.energy();
        const double leastEnergy = total < CorrelationScreen::kMostEnergy
                                       ? total * CorrelationScreen::kLeastShare
                                       : std::numeric_limits<double>::infinity();
        double best = PitchDetector::kVoicedThreshold + CorrelationScreen::kMaxError;
        for (std::size_t i = 0; i < quick_.size(); ++i) {
            const int lag = lags_.min + static_cast<int>(i);
            const double energy = frame.energyOfFirst(kFrameSize - lag);
            const double laterEnergy = total - frame.energyOfFirst(lag);
            const bool covered = energy > leastEnergy && laterEnergy > leastEnergy;
            quick_[i] = covered ? products[i] / std::sqrt(energy * laterEnergy) : kNotCovered;
            if (covered)
                best = std::max(best, quick_[i]);
        }
        const double least = best - 2.0 * CorrelationScreen::kMaxError;
        for (std::size_t i = 0; i < quick_.size(); ++i) {
            if (quick_[i] >= least)
                candidates_.push_back(lags_.min + static_cast<int>(i));
        }
        return candidates_;
    }

private:
    static constexpr double kNotCovered = 2.0;

    LagRange lags_;
    std::vector<double> quick_;
    std::vector<int> candidates_;
};

/// The peak between samples of the correlation, by a parabola through it and its neighbours.
double refinedLag(const Frame& frame, int lag, double correlation)
{
    const double before = frame.correlation(lag - 1);
    const double after = frame.correlation(lag + 1);
    const double curvature = before - 2.0 * correlation + after;
    if (std::abs(curvature) > kParabolaEpsilon)
        return lag + 0.5 * (before - after) / curvature;
    return lag;
}

float pitchOf(const Frame& frame, const std::vector<int>& candidates, LagRange lags, int sampleRate)
{
    int bestLag = 0;
    double best = 0.0;
    for (const int lag : candidates) {
        const double correlation = frame.correlation(lag);
        if (correlation > best) {
            best = correlation;
            bestLag = lag;
        }
    }
    if (best < PitchDetector::kVoicedThreshold)
        return 0.0F;
    const bool inside = lags.min < bestLag && bestLag < lags.max;
    const double lag = inside ? refinedLag(frame, bestLag, best) : bestLag;
    return static_cast<float>(sampleRate / lag);
}

} // namespace

QList<float> PitchDetector::detectTrack(const QList<float>& samples, int sampleRate)
{
    if (samples.size() < kFrameSize || sampleRate < 1)
        return {};
    QList<float> pitches((samples.size() - kFrameSize) / kHopSize + 1, 0.0F);
    const LagRange lags = lagRange(sampleRate);
    if (lags.max < lags.min)
        return pitches;

    CorrelationScreen screen(samples, lags.min, lags.max);
    LagPicker picker(lags);
    for (qsizetype i = 0; i < pitches.size(); ++i) {
        const std::vector<double>& products = screen.nextFrame();
        const Frame frame(samples.constData() + i * kHopSize);
        if (frame.energy() / kFrameSize < kSilenceThreshold)
            continue;
        pitches[i] = pitchOf(frame, picker.candidates(frame, products), lags, sampleRate);
    }
    return pitches;
}
