#include "voice/PitchDetector.h"

#include "voice/CorrelationScreen.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

namespace {

/// Smallest curvature of the correlation that its peak is refined by.
constexpr double kParabolaEpsilon = 1e-12;

/// How far from the exact part of a lag its period may correlate best, as a share of the period.
constexpr double kPeriodTolerance = 0.02;

/// Share of the lag's correlation that one period must reach. A third harmonic on a narrow formant
/// comes up to 0.95.
constexpr double kNearlyAsHigh = 0.97;

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

/// The quick correlations of one frame after another, and the lags that may hold the highest.
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

    /// The correlation of the frame that was asked for last, within CorrelationScreen::kMaxError.
    double correlation(const Frame& frame, int lag) const
    {
        const bool inRange = lags_.min <= lag && lag <= lags_.max;
        const double quick =
            inRange ? quick_[static_cast<std::size_t>(lag - lags_.min)] : kNotCovered;
        return quick < kNotCovered ? quick : frame.correlation(lag);
    }

private:
    /// Beyond any correlation.
    static constexpr double kNotCovered = std::numeric_limits<double>::infinity();

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

/// The lag of the highest correlation, or nothing in a frame without pitch.
std::optional<double> bestLag(const Frame& frame, const std::vector<int>& candidates, LagRange lags)
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
        return std::nullopt;
    const bool inside = lags.min < bestLag && bestLag < lags.max;
    return inside ? refinedLag(frame, bestLag, best) : bestLag;
}

/// Height, between samples, of the highest peak of the correlation at a whole lag up to `reach`
/// away from a lag; 0 where there is none.
double peakHeight(const LagPicker& picker, const Frame& frame, double lag, double reach)
{
    const int first = std::max(1, static_cast<int>(std::ceil(lag - reach)));
    const int last = static_cast<int>(std::floor(lag + reach));
    double highest = 0.0;
    double before = picker.correlation(frame, first - 1);
    double here = picker.correlation(frame, first);
    for (int at = first; at <= last; ++at) {
        const double after = picker.correlation(frame, at + 1);
        const double curvature = before - 2.0 * here + after;
        if (here >= before && here >= after && curvature < 0.0)
            highest =
                std::max(highest, here - (before - after) * (before - after) / (8.0 * curvature));
        before = here;
        here = after;
    }
    return highest;
}

/// Of how many periods a lag is the length: the highest odd number of them for which a single one
/// correlates nearly as well, or 1.
int oddPeriodsIn(double lag, const LagPicker& picker, const Frame& frame, LagRange lags)
{
    const double height = peakHeight(picker, frame, lag, 1.0);
    if (height <= 0.0)
        return 1;
    const int most = static_cast<int>(lag / std::max(lags.min, 1));
    for (int periods = most - (most + 1) % 2; periods >= 3; periods -= 2) {
        const double period = lag / periods;
        const double reach = std::max(1.0, kPeriodTolerance * period);
        if (peakHeight(picker, frame, period, reach) >= kNearlyAsHigh * height)
            return periods;
    }
    return 1;
}

} // namespace

QList<float> PitchDetector::detectTrack(const QList<float>& samples, int sampleRate,
                                        OddFractions fractions, const std::stop_token& stop)
{
    if (samples.size() < kFrameSize || sampleRate < 1)
        return {};
    QList<float> pitches((samples.size() - kFrameSize) / kHopSize + 1, 0.0F);
    const LagRange lags = lagRange(sampleRate);
    if (lags.max < lags.min)
        return pitches;

    CorrelationScreen screen(samples, lags.min, lags.max);
    LagPicker picker(lags);
    for (qsizetype i = 0; i < pitches.size() && !stop.stop_requested(); ++i) {
        const std::vector<double>& products = screen.nextFrame();
        const Frame frame(samples.constData() + i * kHopSize);
        if (frame.energy() / kFrameSize < kSilenceThreshold)
            continue;
        const auto lag = bestLag(frame, picker.candidates(frame, products), lags);
        if (!lag)
            continue;
        const int periods =
            fractions == OddFractions::Undone ? oddPeriodsIn(*lag, picker, frame, lags) : 1;
        pitches[i] = static_cast<float>(sampleRate / *lag * periods);
    }
    return pitches;
}
