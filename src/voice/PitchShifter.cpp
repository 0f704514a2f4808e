#include "voice/PitchShifter.h"

#include "voice/VoiceFrames.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
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

/// Adds one windowed frame, read from its own start at the speed of `ratio`.
void addFrame(const QList<float>& samples, qsizetype start, float ratio, QList<float>& out,
              QList<float>& windowSum)
{
    const Window& window = hannWindow();
    const qsizetype size = samples.size();
    const qsizetype length = std::min<qsizetype>(kFrameSize, size - start);
    const float* in = samples.constData();
    float* sum = out.data() + start;
    float* weight = windowSum.data() + start;
    const float origin = static_cast<float>(start);
    for (qsizetype i = 0; i < length; ++i) {
        const float position = static_cast<float>(i) * ratio + origin;
        const auto k = static_cast<qsizetype>(position);
        if (k + 1 >= size)
            return;
        const float fraction = position - static_cast<float>(k);
        const float sample = (1.0F - fraction) * in[k] + fraction * in[k + 1];
        const float w = window[static_cast<std::size_t>(i)];
        sum[i] += sample * w;
        weight[i] += w;
    }
}

} // namespace

QList<float> PitchShifter::process(const QList<float>& samples, const QList<float>& ratios)
{
    if (samples.isEmpty() || ratios.isEmpty())
        return samples;
    QList<float> out(samples.size(), 0.0F);
    QList<float> windowSum(samples.size(), 0.0F);
    qsizetype frame = 0;
    qsizetype start = 0;
    do {
        const float ratio = ratios[std::min(frame, ratios.size() - 1)];
        addFrame(samples, start, usableRatio(ratio), out, windowSum);
        ++frame;
        start = frame * kHopSize;
    } while (start + kHopSize < samples.size());

    std::ranges::transform(out, windowSum, out.begin(), std::divides());
    for (qsizetype i = 0; i < out.size(); ++i) {
        if (windowSum.at(i) <= kMinWindowSum)
            out[i] = samples[i];
    }
    return out;
}
