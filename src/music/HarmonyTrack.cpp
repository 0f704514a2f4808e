#include "music/HarmonyTrack.h"

#include "music/Beats.h"

#include <algorithm>

namespace {

/// No chord that a user lays is longer; one that a damaged file holds may be, and is cut.
constexpr qint32 kMostBarsOfAChord = 4096;

/// The chords of a bar once [start, start + duration) belongs to another one.
QList<HarmonyDegreeEvent> withRoomFor(const QList<HarmonyDegreeEvent>& events, double start,
                                      double duration)
{
    QList<HarmonyDegreeEvent> kept;
    for (HarmonyDegreeEvent event : events) {
        if (event.startBeat < start) {
            if (event.endBeat() > start)
                event.durationBeats = start - event.startBeat;
        } else if (event.startBeat < start + duration) {
            continue;
        }
        if (event.durationBeats > HarmonyTrack::kShortestRemainder)
            kept.append(event);
    }
    return kept;
}

/// The chords of a bar with nothing left of them in [start, end).
QList<HarmonyDegreeEvent> withHole(const QList<HarmonyDegreeEvent>& events, double start,
                                   double end)
{
    QList<HarmonyDegreeEvent> kept;
    const auto keep = [&](HarmonyDegreeEvent event, double from, double to) {
        event.startBeat = from;
        event.durationBeats = to - from;
        if (event.durationBeats > HarmonyTrack::kShortestRemainder)
            kept.append(event);
    };
    for (const HarmonyDegreeEvent& event : events) {
        const double eventEnd = event.endBeat();
        if (eventEnd <= start || event.startBeat >= end) {
            kept.append(event);
            continue;
        }
        keep(event, event.startBeat, start);
        keep(event, end, eventEnd);
    }
    return kept;
}

} // namespace

bool HarmonyDegreeEvent::covers(double beatInBar) const
{
    return beatInBar >= startBeat - kBeatEpsilon && endBeat() - kBeatEpsilon > beatInBar;
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

bool HarmonyTrack::overlayEvent(double startBeat, double durationBeats, int degree,
                                ChordExtension extension, double beatsPerBar)
{
    const double end = startBeat + durationBeats;
    const auto first = barAt(startBeat, beatsPerBar);
    const auto last = barAt(end, beatsPerBar);
    if (!first || !last || *first < 0 || !(durationBeats > 0.0))
        return false;
    const qint32 bars = std::min(*last - *first, kMostBarsOfAChord);
    for (qint32 i = 0; i <= bars; ++i) {
        const qint32 bar = *first + i;
        const double from = std::max(0.0, startBeat - bar * beatsPerBar);
        const double to = std::min(beatsPerBar, end - bar * beatsPerBar);
        if (to - from <= kShortestRemainder)
            continue;
        HarmonyBlock& block = ensureBlockForBar(bar);
        block.events = withHole(block.events, from, to);
        block.events.append({.degree = degree,
                             .extension = extension,
                             .startBeat = from,
                             .durationBeats = to - from});
        std::ranges::stable_sort(block.events, {}, &HarmonyDegreeEvent::startBeat);
    }
    return true;
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
