#include "music/ChordLookup.h"

#include "music/Beats.h"

#include <algorithm>
#include <set>

ChordLookup::ChordLookup(const HarmonyTrack& track, double beatsPerBar) : beatsPerBar_(beatsPerBar)
{
    bars_.reserve(track.blocks.size());
    for (const HarmonyBlock& block : track.blocks) {
        if (bars_.contains(block.barIndex))
            continue;
        const std::size_t first = stretches_.size();
        appendStretches(block.events);
        bars_.insert(block.barIndex, {first, stretches_.size()});
    }
}

/// Where chords overlap, the first in the list is in force.
void ChordLookup::appendStretches(const QList<HarmonyDegreeEvent>& events)
{
    struct Edge {
        double beat;
        qsizetype index;
        bool opens;
    };

    std::vector<Edge> edges;
    edges.reserve(static_cast<std::size_t>(2 * events.size()));
    for (qsizetype i = 0; i < events.size(); ++i) {
        const double from = events[i].startBeat - kBeatEpsilon;
        const double to = events[i].endBeat() - kBeatEpsilon;
        if (from < to) {
            edges.push_back({from, i, true});
            edges.push_back({to, i, false});
        }
    }
    std::ranges::sort(edges, {}, &Edge::beat);

    std::set<qsizetype> open;
    for (std::size_t i = 0; i < edges.size(); ++i) {
        if (edges[i].opens)
            open.insert(edges[i].index);
        else
            open.erase(edges[i].index);
        const bool lastOfBeat = i + 1 == edges.size() || edges[i + 1].beat > edges[i].beat;
        if (lastOfBeat && !open.empty())
            stretches_.push_back({edges[i].beat, edges[i + 1].beat, &events[*open.begin()]});
    }
}

const HarmonyDegreeEvent* ChordLookup::at(double beat) const
{
    const auto bar = barAt(beat, beatsPerBar_);
    const auto found = bar ? bars_.constFind(*bar) : bars_.cend();
    if (found == bars_.cend())
        return nullptr;
    const auto first = stretches_.begin() + static_cast<std::ptrdiff_t>(found->first);
    const auto last = stretches_.begin() + static_cast<std::ptrdiff_t>(found->last);

    const double local = beat - *bar * beatsPerBar_;
    const auto after =
        std::upper_bound(first, last, local,
                         [](double value, const Stretch& stretch) { return value < stretch.from; });
    if (after == first)
        return nullptr;
    const Stretch& candidate = *(after - 1);
    return candidate.to > local ? candidate.event : nullptr;
}
