#include "listen/Loudness.h"

#include "music/Beats.h"

#include <algorithm>
#include <cmath>
#include <ebur128.h>
#include <limits>
#include <memory>

namespace {

struct StateDeleter {
    void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

double decibels(float magnitude)
{
    return magnitude > 0.0F ? 20.0 * std::log10(magnitude)
                            : -std::numeric_limits<double>::infinity();
}

} // namespace

Loudness Loudness::of(const QList<float>& mix)
{
    Loudness loudness{.lufs = -std::numeric_limits<double>::infinity()};
    const std::unique_ptr<ebur128_state, StateDeleter> state(
        ebur128_init(2, kSampleRate, EBUR128_MODE_I));
    if (state) {
        ebur128_add_frames_float(state.get(), mix.constData(),
                                 static_cast<std::size_t>(mix.size() / 2));
        ebur128_loudness_global(state.get(), &loudness.lufs);
    }
    float peak = 0.0F;
    for (const float sample : mix)
        peak = std::max(peak, std::abs(sample));
    loudness.peakDb = decibels(peak);
    return loudness;
}
