#include "voice/Resampled.h"

#include "music/Beats.h"
#include "voice/AudioDecoder.h"

#include <algorithm>
#include <cmath>

QList<float> resampled(const QList<float>& mono, int sampleRate)
{
    const double ratio = sampleRate / static_cast<double>(kSampleRate);
    const auto count =
        std::min(wholeFrames(std::floor(static_cast<double>(mono.size()) / ratio)) - 1,
                 AudioDecoder::kMaxSamples);
    if (mono.isEmpty() || sampleRate < 1 || count < 1)
        return {};
    QList<float> out(count);
    float* sample = out.data();
    for (qsizetype i = 0; i < count; ++i) {
        const double position = static_cast<double>(i) * ratio;
        const auto k = static_cast<qsizetype>(position);
        const float fraction = static_cast<float>(position - static_cast<double>(k));
        // Below the mixing rate the last position may stand on the last sample: it is held there.
        const float next = mono[std::min(k + 1, mono.size() - 1)];
        *sample++ = (1.0F - fraction) * mono[k] + fraction * next;
    }
    return out;
}
