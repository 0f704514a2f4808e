#include "music/HarmonyTrack.h"

#include "music/Beats.h"

#include <algorithm>

namespace {

/// What is left of a cut chord below this length, in beats, is dropped.
constexpr double kShortestRemainder = 1e-6;

/// The chords of a bar once [start, start + duration) belongs to another one.
QList<HarmonyDegreeEvent> withRoomFor(const QList<HarmonyDegreeEvent>& events, double start,
                                      double duration)
{
    QList<HarmonyDegreeEvent> kept;
    for (HarmonyDegreeEvent event : events) {
        if (event.startBeat < start) {
            if (event.startBeat + event.durationBeats > start)
                event.durationBeats = start - event.startBeat;
        } else if (event.startBeat < start + duration) {
            continue;
        }
        if (event.durationBeats > kShortestRemainder)
            kept.append(event);
    }
    return kept;
}

} // namespace

bool HarmonyDegreeEvent::covers(double beatInBar) const
{
    return beatInBar >= startBeat - kBeatEpsilon &&
           startBeat + durationBeats - kBeatEpsilon > beatInBar;
}

bool HarmonyTrack::isEmpty() const
{
    return std::ranges::all_of(blocks, [](const auto& block) { return block.events.isEmpty(); });
}

const HarmonyBlock* HarmonyTrack::blockForBar(qint32 bar) const
{
    const auto found = std::ranges::find(blocks, bar, &HarmonyBlock::barIndex);
    return found == blocks.end() ? nullptr : &*found;
}

const HarmonyDegreeEvent* HarmonyTrack::eventAt(double beat, double beatsPerBar) const
{
    const auto bar = barAt(beat, beatsPerBar);
    const HarmonyBlock* block = bar ? blockForBar(*bar) : nullptr;
    if (!block)
        return nullptr;
    const double local = beat - *bar * beatsPerBar;
    const auto found = std::ranges::find_if(
        block->events, [local](const HarmonyDegreeEvent& event) { return event.covers(local); });
    return found == block->events.end() ? nullptr : &*found;
}

HarmonyBlock& HarmonyTrack::ensureBlockForBar(qint32 bar)
{
    if (!blockForBar(bar)) {
        blocks.append(HarmonyBlock{.barIndex = bar, .events = {}});
        std::ranges::stable_sort(blocks, {}, &HarmonyBlock::barIndex);
    }
    return *std::ranges::find(blocks, bar, &HarmonyBlock::barIndex);
}

void HarmonyTrack::insertEvent(double startBeat, double durationBeats, int degree,
                               ChordExtension extension, double beatsPerBar)
{
    const auto bar = barAt(startBeat, beatsPerBar);
    if (!bar || !(durationBeats > 0.0))
        return;
    const double localStart = startBeat - *bar * beatsPerBar;
    const double localDuration = std::min(durationBeats, beatsPerBar - localStart);

    HarmonyBlock& block = ensureBlockForBar(*bar);
    QList<HarmonyDegreeEvent> events = withRoomFor(block.events, localStart, localDuration);
    events.append({.degree = degree,
                   .extension = extension,
                   .startBeat = localStart,
                   .durationBeats = localDuration});
    std::ranges::stable_sort(events, {}, &HarmonyDegreeEvent::startBeat);
    block.events = events;
}

void HarmonyTrack::removeEventAt(double beat, double beatsPerBar)
{
    if (!isBarLength(beatsPerBar))
        return;
    if (const auto bar = barAt(beat, beatsPerBar)) {
        const double local = beat - *bar * beatsPerBar;
        for (HarmonyBlock& block : blocks) {
            if (block.barIndex == *bar)
                block.events.removeIf([local](const auto& event) { return event.covers(local); });
        }
    }
    removeEmptyBlocks();
}

void HarmonyTrack::removeEmptyBlocks()
{
    blocks.removeIf([](const HarmonyBlock& block) { return block.events.isEmpty(); });
}
