#include "voice/PitchShifter.h"

#include "voice/VoiceFrames.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace {

using Window = std::array<float, kFrameSize>;

const Window& hannWindow()
{
    static const Window window = [] {
        Window values{};
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double phase = 2.0 * std::numbers::pi * static_cast<double>(i) / (kFrameSize - 1);
            values[i] = static_cast<float>(0.5 - 0.5 * std::cos(phase));
        }
        return values;
    }();
    return window;
}

/// A ratio out of range is ignored rather than held at the limit.
float usableRatio(float ratio)
{
    return ratio > PitchShifter::kMinRatio && ratio < PitchShifter::kMaxRatio ? ratio : 1.0F;
}

/// A period that no frame can be moved by counts as none.
float usablePeriod(float period)
{
    return period >= 1.0F && period <= PitchShifter::kMaxPeriod ? period : 0.0F;
}

/// How far from its own place each frame begins to read, so that it goes on in phase with the
/// frame before it. Frames that overlap at their own places beat instead: a tone that is to move
/// by less than half a line of the frame rate stays where it was, and wavers.
class PhaseKeeper {
public:
    /// The distance for the next frame, in samples, at most half a period (and half a sample, for
    /// a frame without one). `period` is 0 for a frame without pitch.
    double next(float ratio, float period)
    {
        const double speed = std::abs(ratio - 1.0F) < kNoShift ? 1.0 : static_cast<double>(ratio);
        if (!first_)
            drift_ += (formerSpeed_ - 1.0) * kHopSize + (formerSpeed_ - speed) * kMeetingPoint;
        first_ = false;
        formerSpeed_ = speed;
        if (period > 0.0F)
            period_ = static_cast<double>(period);
        drift_ = period_ > 0.0 ? drift_ - period_ * std::round(drift_ / period_) : 0.0;
        // Noise has no phase to keep, and reading it between samples would dull it.
        if (period <= 0.0F)
            drift_ = std::round(drift_);
        return drift_;
    }

private:
    /// Where two frames ought to read the same: in the middle of what they share, counted from
    /// the start of the later one.
    static constexpr int kMeetingPoint = (kFrameSize - kHopSize) / 2;

    /// Ratios this near to 1 keep a voice that is in tune from wandering off.
    static constexpr float kNoShift = 1e-4F;

    bool first_ = true;
    double drift_ = 0.0;
    double formerSpeed_ = 1.0;
    /// The last one known: a gap in the middle of a note does not break it.
    double period_ = 0.0;
};

/// Adds one windowed frame, read from `drift` samples beside its own start at the speed of
/// `ratio`. Positions are counted from there: late in a long recording nothing of them is lost.
void addFrame(const QList<float>& samples, qsizetype start, double drift, float ratio,
              QList<float>& out, QList<float>& windowSum)
{
    const Window& window = hannWindow();
    const qsizetype length = std::min<qsizetype>(kFrameSize, samples.size() - start);
    const double whole = std::floor(drift);
    const auto origin = static_cast<float>(drift - whole);
    const qsizetype readStart = start + static_cast<qsizetype>(whole);
    const qsizetype readable = samples.size() - readStart;
    const float* in = samples.constData() + readStart;
    float* sum = out.data() + start;
    float* weight = windowSum.data() + start;
    for (qsizetype i = 0; i < length; ++i) {
        const float position = static_cast<float>(i) * ratio + origin;
        const auto k = static_cast<qsizetype>(position);
        if (k + 1 >= readable)
            return;
        const float fraction = position - static_cast<float>(k);
        const float sample = (1.0F - fraction) * in[k] + fraction * in[k + 1];
        const float w = window[static_cast<std::size_t>(i)];
        sum[i] += sample * w;
        weight[i] += w;
    }
}

/// The value of a frame; the last one serves on.
float valueAt(const QList<float>& values, qsizetype frame)
{
    return values.isEmpty() ? 0.0F : values[std::min(frame, values.size() - 1)];
}

} // namespace

QList<float> PitchShifter::process(const QList<float>& samples, const QList<float>& ratios,
                                   const QList<float>& periods)
{
    if (samples.isEmpty() || ratios.isEmpty())
        return samples;
    QList<float> out(samples.size(), 0.0F);
    QList<float> windowSum(samples.size(), 0.0F);
    PhaseKeeper phase;
    for (qsizetype start = 0; start == 0 || start + kHopSize < samples.size(); start += kHopSize) {
        const float ratio = usableRatio(valueAt(ratios, start / kHopSize));
        const float period = usablePeriod(valueAt(periods, start / kHopSize));
        addFrame(samples, start, phase.next(ratio, period), ratio, out, windowSum);
    }
    for (qsizetype i = 0; i < out.size(); ++i)
        out[i] = windowSum.at(i) > kMinWindowSum ? out[i] / windowSum.at(i) : samples[i];
    return out;
}
