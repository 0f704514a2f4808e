#include "views/pianoroll/PianoRollLayout.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "views/TimelineRuler.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

constexpr int kAngleOfARow = 120;
constexpr double kGripPixels = 6.0;
constexpr double kExtraBars = 8.0;
constexpr int kNoteTop = 1;

/// Far beyond any pitch, and still fit to reckon with.
constexpr int kAbsurdPitch = 1'000'000;

struct Range {
    int low;
    int high;
};

Range rangeOf(const QList<NoteEvent>& notes)
{
    const auto [low, high] = std::ranges::minmax_element(notes, {}, &NoteEvent::pitch);
    return {std::clamp(low->pitch, -kAbsurdPitch, kAbsurdPitch),
            std::clamp(high->pitch, -kAbsurdPitch, kAbsurdPitch)};
}

PianoRollLine::Kind lineKind(double beat, double bar, double pulse)
{
    const auto isMultipleOf = [beat](double length) {
        return std::fmod(beat + kBeatEpsilon, length) < 1e-6;
    };
    if (isMultipleOf(bar))
        return PianoRollLine::Kind::Bar;
    return isMultipleOf(pulse) ? PianoRollLine::Kind::Beat : PianoRollLine::Kind::Subdivision;
}

} // namespace

// ---- Rows ----------------------------------------------------------------------------------

PitchRows PitchRows::withTop(int pitch) const
{
    const int lowestTop = PianoRollLayout::kLowestPitch - 1 + count;
    return {count, std::clamp(pitch, lowestTop, PianoRollLayout::kHighestPitch)};
}

PitchRows PitchRows::withOneMore() const
{
    return {std::min(count + 1, kMost), top};
}

PitchRows PitchRows::withOneFewer() const
{
    return {std::max(count - 1, kFewest), top};
}

PitchRows PitchRows::around(const QList<NoteEvent>& notes)
{
    if (notes.isEmpty())
        return {};
    const Range range = rangeOf(notes);
    int top = range.high + 1;
    int low = range.low - 1;
    const int count = top - low + 1;
    if (count < kUsual) {
        top += (kUsual + 1 - count) / 2;
        low -= (kUsual - count) / 2;
    }
    if (top > PianoRollLayout::kHighestPitch) {
        low -= top - PianoRollLayout::kHighestPitch;
        top = PianoRollLayout::kHighestPitch;
    }
    if (low >= PianoRollLayout::kLowestPitch)
        return {top - low + 1, top};
    return {std::min(kMost, top - low + 1),
            std::min(PianoRollLayout::kHighestPitch, top - low + PianoRollLayout::kLowestPitch)};
}

double PianoRollLayout::pitchToSceneY(int pitch)
{
    return (static_cast<double>(kHighestPitch) - pitch) * kRowPixels;
}

int PianoRollLayout::sceneYToPitch(double sceneY)
{
    const double row = std::floor(sceneY / kRowPixels);
    if (!(row >= 0.0 && row < kRows))
        return -1;
    return kHighestPitch - static_cast<int>(row);
}

int PianoRollLayout::rowsIn(double scenePixels)
{
    const double rows = std::round(scenePixels / kRowPixels);
    return static_cast<int>(std::clamp<double>(rows, -kRows, kRows));
}

PianoRollLayout::PitchSpan PianoRollLayout::pitchesBetween(double top, double bottom)
{
    const auto pitchAt = [](double y) {
        return kHighestPitch -
               static_cast<int>(std::clamp(std::floor(y / kRowPixels), 0.0, kRows - 1.0));
    };
    return {pitchAt(top), pitchAt(bottom)};
}

WheelTurn PianoRollLayout::turned(int remainder, int angleDelta)
{
    const bool sameWay = (angleDelta > 0) == (remainder > 0);
    const qint64 angle = qint64{angleDelta} + (sameWay ? remainder : 0);
    return {static_cast<int>(angle / kAngleOfARow), static_cast<int>(angle % kAngleOfARow)};
}

// ---- Notes ---------------------------------------------------------------------------------

QSizeF PianoRollLayout::sceneSize(const Project& project)
{
    const double bar = project.beatsPerBar();
    const double bars = project.barCount(Project::kLeastBars) + kExtraBars;
    const double beats = isBarLength(bar) ? std::min(bar * bars, kMostBeats) : 0.0;
    return {beats * kBeatPixels, kSceneHeight};
}

std::optional<QRectF> PianoRollLayout::noteRect(const MelodyBlock& block, const NoteEvent& note)
{
    const double start = block.startBeat + note.startBeat;
    if (!std::isfinite(start) || !std::isfinite(note.durationBeats) || std::abs(start) > kMostBeats)
        return std::nullopt;
    return QRectF(start * kBeatPixels, pitchToSceneY(note.pitch) + kNoteTop,
                  std::clamp(note.durationBeats, 0.0, kMostBeats) * kBeatPixels, kNoteHeight);
}

bool PianoRollLayout::isOnGrip(double sceneX, const QRectF& note, double horizontalScale)
{
    return sceneX > note.right() - std::min(kGripPixels / horizontalScale, note.width() / 3.0);
}

int PianoRollLayout::barsOf(const MelodyBlock& block, double beatsPerBar)
{
    double start = std::numeric_limits<double>::infinity();
    double end = -start;
    for (const NoteEvent& note : block.notes) {
        start = std::min(start, block.startBeat + note.startBeat);
        end = std::max(end, block.startBeat + note.endBeat());
    }
    const double bars = std::ceil(end / beatsPerBar - kBeatEpsilon) -
                        std::floor(start / beatsPerBar + kBeatEpsilon);
    if (!isBarLength(beatsPerBar) || !std::isfinite(bars))
        return 0;
    constexpr double kMost = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp(bars, 0.0, kMost));
}

// ---- Backdrop ------------------------------------------------------------------------------

bool PianoRollLayout::isBlackKey(int pitch)
{
    static constexpr std::array<bool, 12> kBlack{false, true,  false, true,  false, false,
                                                 true,  false, true,  false, true,  false};
    return kBlack[static_cast<std::size_t>((pitch % 12 + 12) % 12)];
}

bool PianoRollLayout::isInScale(const KeySignature& key, int pitch)
{
    return key.degreeOfPitchClass(pitch) != 0;
}

double PianoRollLayout::snapBeats(const TimeSignature& meter, GridSubdivisionLevel level)
{
    switch (level) {
    case GridSubdivisionLevel::Pulse:
        break;
    case GridSubdivisionLevel::Division:
        return meter.pulseBeats() / (meter.isCompound ? 3.0 : 2.0);
    case GridSubdivisionLevel::Subdivision:
        return 0.25;
    }
    return meter.pulseBeats();
}

QList<PianoRollLine> PianoRollLayout::gridLines(double left, double right,
                                                const TimeSignature& meter,
                                                GridSubdivisionLevel level)
{
    const double pulse = meter.pulseBeats();
    const double step = snapBeats(meter, level);
    const double bar = meter.beatsPerBar();
    const double last = std::min(right / kBeatPixels + pulse, kMostBeats);
    QList<PianoRollLine> lines;
    for (double beat = std::floor(std::max(0.0, left / kBeatPixels - pulse) / step) * step;
         beat <= last; beat += step)
        lines.append({.beat = beat, .kind = lineKind(beat, bar, pulse)});
    return lines;
}
