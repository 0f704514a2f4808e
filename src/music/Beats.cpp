#include "music/Beats.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// Largest magnitude to which every 64-bit integer is also a double.
constexpr double kLargestWhole = 9007199254740992.0;

} // namespace

bool isBarLength(double beatsPerBar)
{
    return std::isfinite(beatsPerBar) && beatsPerBar > 0.0;
}

std::optional<qint32> barAt(double beat, double beatsPerBar)
{
    if (!isBarLength(beatsPerBar))
        return std::nullopt;
    const double bar = std::floor(beat / beatsPerBar);
    const bool inReach =
        bar >= std::numeric_limits<qint32>::min() && bar <= std::numeric_limits<qint32>::max();
    return inReach ? std::optional(static_cast<qint32>(bar)) : std::nullopt;
}

double framesPerBeat(qint32 bpm)
{
    constexpr double kFramesPerMinute = 60.0 * kSampleRate;
    return kFramesPerMinute / std::max(bpm, 1);
}

qint64 wholeFrames(double frames)
{
    if (std::isnan(frames))
        return 0;
    return static_cast<qint64>(std::clamp(frames, -kLargestWhole, kLargestWhole));
}
