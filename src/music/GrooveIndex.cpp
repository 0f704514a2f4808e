#include "music/GrooveIndex.h"

#include <algorithm>
#include <cmath>

namespace {

/// Keeps the nearest of the offsets that it is shown, the first of the list among equals.
class Nearest {
public:
    explicit Nearest(double position) : position_(position) {}

    /// False once an offset is farther away than the nearest one, as all beyond it are.
    bool keepsUp(const GrooveOffset* offset)
    {
        const double distance = std::abs(offset->position - position_);
        if (!(distance <= distance_))
            return false;
        // Offsets of one list: the lower address is the earlier offset.
        if (!offset_ || distance < distance_ || offset < offset_)
            offset_ = offset;
        distance_ = distance;
        return true;
    }

    const GrooveOffset* offset() const { return offset_; }

private:
    double position_;
    double distance_ = GrooveIndex::kReach;
    const GrooveOffset* offset_ = nullptr;
};

} // namespace

GrooveIndex::GrooveIndex(const QList<GrooveOffset>& offsets)
{
    const auto position = [](const GrooveOffset* offset) { return offset->position; };
    byPosition_.reserve(static_cast<std::size_t>(offsets.size()));
    for (const GrooveOffset& offset : offsets) {
        if (!std::isnan(offset.position))
            byPosition_.push_back(&offset);
    }
    std::ranges::stable_sort(byPosition_, {}, position);
    const auto repeated = std::unique(
        byPosition_.begin(), byPosition_.end(),
        [](const GrooveOffset* a, const GrooveOffset* b) { return a->position == b->position; });
    byPosition_.erase(repeated, byPosition_.end());
}

const GrooveOffset* GrooveIndex::nearest(double position) const
{
    const auto middle = std::ranges::lower_bound(
        byPosition_, position, {}, [](const GrooveOffset* offset) { return offset->position; });
    Nearest nearest(position);
    for (auto after = middle; after != byPosition_.end() && nearest.keepsUp(*after); ++after) {
    }
    for (auto before = middle; before != byPosition_.begin() && nearest.keepsUp(*(before - 1));
         --before) {
    }
    return nearest.offset();
}
