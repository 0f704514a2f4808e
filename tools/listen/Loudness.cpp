#include "listen/Loudness.h"

#include "listen/LoudnessMeter.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

double decibels(float magnitude)
{
    return magnitude > 0.0F ? 20.0 * std::log10(magnitude)
                            : -std::numeric_limits<double>::infinity();
}

} // namespace

Loudness Loudness::of(const QList<float>& mix)
{
    Loudness loudness{.lufs = -std::numeric_limits<double>::infinity()};
    if (const LoudnessMeter meter = loudnessMeter(EBUR128_MODE_I)) {
        ebur128_add_frames_float(meter.get(), mix.constData(),
                                 static_cast<std::size_t>(mix.size() / 2));
        ebur128_loudness_global(meter.get(), &loudness.lufs);
    }
    float peak = 0.0F;
    for (const float sample : mix)
        peak = std::max(peak, std::abs(sample));
    loudness.peakDb = decibels(peak);
    return loudness;
}
