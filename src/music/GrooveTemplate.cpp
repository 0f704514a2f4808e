#include "music/GrooveTemplate.h"

#include <cmath>
#include <limits>

namespace {

/// In beats, with slack for rounding.
constexpr double kReach = 0.125000001;

} // namespace

const GrooveOffset* GrooveTemplate::nearest(double position) const
{
    const GrooveOffset* found = nullptr;
    double least = std::numeric_limits<double>::infinity();
    for (const GrooveOffset& offset : offsets) {
        const double distance = std::abs(offset.position - position);
        if (distance < least) {
            least = distance;
            found = &offset;
        }
    }
    return least <= kReach ? found : nullptr;
}
