#include "music/CountedBars.h"

#include "music/Beats.h"

#include <QMap>

#include <algorithm>
#include <cmath>

namespace {

/// Of a bar of one length in bars of another.
constexpr double kMostBarsInABar = 1000.0;

/// A chord at its absolute beats; that of the event counts from there.
struct PlacedChord {
    double start = 0.0;
    HarmonyDegreeEvent event;

    double end() const { return start + event.durationBeats; }
};

/// What is in force of each chord: up to the end of its bar, in the order of time.
QList<PlacedChord> placed(const QList<HarmonyBlock>& blocks, double beatsPerBar)
{
    QList<PlacedChord> chords;
    for (const HarmonyBlock& block : blocks) {
        for (HarmonyDegreeEvent event : block.events) {
            event.durationBeats = std::min(event.durationBeats, beatsPerBar - event.startBeat);
            if (std::isfinite(event.startBeat) &&
                event.durationBeats > HarmonyTrack::kShortestRemainder)
                chords.append({block.barIndex * beatsPerBar + event.startBeat, event});
        }
    }
    std::ranges::stable_sort(chords, {}, &PlacedChord::start);
    return chords;
}

bool isBarLine(double beat, double beatsPerBar)
{
    return std::abs(std::remainder(beat, beatsPerBar)) < kBeatEpsilon;
}

/// Chords that only a bar line has parted, as one.
QList<PlacedChord> joined(const QList<PlacedChord>& chords, double beatsPerBar)
{
    QList<PlacedChord> result;
    for (const PlacedChord& chord : chords) {
        PlacedChord* former = result.isEmpty() ? nullptr : &result.last();
        if (former && former->event.degree == chord.event.degree &&
            former->event.extension == chord.event.extension &&
            std::abs(former->end() - chord.start) < kBeatEpsilon &&
            isBarLine(chord.start, beatsPerBar))
            former->event.durationBeats = chord.end() - former->start;
        else
            result.append(chord);
    }
    return result;
}

void cutAtBarLines(PlacedChord chord, double beatsPerBar,
                   QMap<qint32, QList<HarmonyDegreeEvent>>& bars)
{
    while (chord.event.durationBeats > HarmonyTrack::kShortestRemainder) {
        const auto bar = barAt(chord.start + kBeatEpsilon, beatsPerBar);
        if (!bar)
            return;
        HarmonyDegreeEvent part = chord.event;
        part.startBeat = std::max(0.0, chord.start - *bar * beatsPerBar);
        part.durationBeats = std::min(part.durationBeats, beatsPerBar - part.startBeat);
        // So far away that beats are no more told apart.
        if (!(chord.start + part.durationBeats > chord.start))
            return;
        bars[*bar].append(part);
        chord.start += part.durationBeats;
        chord.event.durationBeats -= part.durationBeats;
    }
}

} // namespace

HarmonyTrack withBarsCountedAnew(HarmonyTrack track, double formerBeatsPerBar, double beatsPerBar)
{
    if (!isBarLength(formerBeatsPerBar) || !isBarLength(beatsPerBar) ||
        formerBeatsPerBar == beatsPerBar || formerBeatsPerBar / beatsPerBar > kMostBarsInABar)
        return track;
    QMap<qint32, QList<HarmonyDegreeEvent>> bars;
    for (const PlacedChord& chord :
         joined(placed(track.blocks, formerBeatsPerBar), formerBeatsPerBar))
        cutAtBarLines(chord, beatsPerBar, bars);
    track.blocks.clear();
    for (auto bar = bars.cbegin(); bar != bars.cend(); ++bar)
        track.blocks.append(HarmonyBlock{.barIndex = bar.key(), .events = bar.value()});
    return track;
}
