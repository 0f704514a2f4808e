#include "views/pianoroll/NoteEdits.h"

#include "model/Track.h"
#include "music/Beats.h"
#include "views/pianoroll/PianoRollLayout.h"

#include <Qt>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr double kShortestBlock = 1.0;
constexpr int kVelocity = 100;

bool holds(const MelodyBlock& block, int index)
{
    return index >= 0 && index < block.notes.size();
}

double earliestStart(const QList<NoteEvent>& notes)
{
    double earliest = std::numeric_limits<double>::infinity();
    for (const NoteEvent& note : notes)
        earliest = std::min(earliest, note.startBeat);
    return earliest;
}

double latestEnd(const QList<NoteEvent>& notes)
{
    double latest = -std::numeric_limits<double>::infinity();
    for (const NoteEvent& note : notes)
        latest = std::max(latest, note.endBeat());
    return latest;
}

/// The drawable notes of a block, by start and then by pitch.
QList<int> inTime(const MelodyBlock& block)
{
    QList<int> order;
    for (int i = 0; i < block.notes.size(); ++i) {
        if (PianoRollLayout::noteRect(block, block.notes.at(i)))
            order.append(i);
    }
    std::ranges::stable_sort(order, {}, [&](int i) {
        const NoteEvent& note = block.notes.at(i);
        return std::pair(note.startBeat, note.pitch);
    });
    return order;
}

int nearestTo(const MelodyBlock& block, const QList<int>& order, double beat)
{
    const auto far = [&](int i) { return std::abs(block.notes.at(i).startBeat - beat); };
    const auto nearest = std::ranges::min_element(order, {}, far);
    return nearest == order.end() ? -1 : *nearest;
}

/// A length in whole steps, at least one.
double wholeSteps(double beats, double step)
{
    return std::max(step, NoteEdits::snapped(beats, step));
}

void append(MelodyBlock& block, QList<NoteEvent> notes, double shift)
{
    for (NoteEvent& note : notes)
        note.startBeat += shift;
    block.notes.append(notes);
}

/// Adds notes some beats later, ends the edit, and gives them as they are then.
QList<NoteEvent> laid(MelodyBlock& block, const QList<NoteEvent>& notes, double shift)
{
    append(block, notes, shift);
    const QList<NoteEvent> added = block.notes.last(notes.size());
    NoteEdits::finish(block);
    return added;
}

} // namespace

double NoteEdits::snapped(double beat, double step)
{
    return std::round(beat / step) * step;
}

void NoteEdits::finish(MelodyBlock& block)
{
    block.sortNotes();
    block.fitDurationToNotes(kShortestBlock);
}

void NoteEdits::add(MelodyBlock& block, double beat, int pitch, double durationBeats)
{
    block.notes.append(NoteEvent{.pitch = pitch,
                                 .startBeat = std::max(0.0, beat - block.startBeat),
                                 .durationBeats = durationBeats,
                                 .velocity = kVelocity});
    block.fitDurationToNotes(kShortestBlock);
}

double NoteEdits::drawnLength(double startBeat, double beat, double step)
{
    return std::max(step, std::ceil((beat - startBeat) / step) * step);
}

QList<DraggedNote> NoteEdits::dragged(const MelodyBlock& block, const QList<int>& indices)
{
    QList<DraggedNote> notes;
    for (const int index : indices) {
        if (!holds(block, index))
            continue;
        const NoteEvent& note = block.notes.at(index);
        notes.append(DraggedNote{.index = index,
                                 .pitch = note.pitch,
                                 .startBeat = note.startBeat,
                                 .durationBeats = note.durationBeats,
                                 .velocity = note.velocity});
    }
    return notes;
}

void NoteEdits::move(MelodyBlock& block, const QList<DraggedNote>& notes, double beats, int pitches)
{
    for (const DraggedNote& taken : notes) {
        if (!holds(block, taken.index))
            continue;
        NoteEvent& note = block.notes[taken.index];
        const qint64 pitch = qint64{taken.pitch} + pitches;
        note.pitch = static_cast<int>(std::clamp<qint64>(pitch, PianoRollLayout::kLowestPitch,
                                                         PianoRollLayout::kHighestPitch));
        note.startBeat = std::max(0.0, taken.startBeat + beats);
    }
}

void NoteEdits::resize(MelodyBlock& block, const QList<DraggedNote>& notes, double beats,
                       double step)
{
    for (const DraggedNote& taken : notes) {
        if (holds(block, taken.index))
            block.notes[taken.index].durationBeats = wholeSteps(taken.durationBeats + beats, step);
    }
}

void NoteEdits::nudge(MelodyBlock& block, const QList<int>& indices, double beats, int pitches)
{
    int down = PianoRollLayout::kLowestPitch - PianoRollLayout::kHighestPitch;
    int up = -down;
    const QList<DraggedNote> notes = dragged(block, indices);
    for (const DraggedNote& note : notes) {
        beats = std::max(beats, -std::max(0.0, note.startBeat));
        const int pitch =
            std::clamp(note.pitch, PianoRollLayout::kLowestPitch, PianoRollLayout::kHighestPitch);
        down = std::max(down, PianoRollLayout::kLowestPitch - pitch);
        up = std::min(up, PianoRollLayout::kHighestPitch - pitch);
    }
    move(block, notes, beats, std::clamp(pitches, down, up));
}

int NoteEdits::neighbour(const MelodyBlock& block, const QList<int>& indices, int direction,
                         double beat)
{
    const QList<int> order = inTime(block);
    QList<qsizetype> places;
    for (const int index : indices) {
        if (const qsizetype place = order.indexOf(index); place >= 0)
            places.append(place);
    }
    if (places.isEmpty())
        return nearestTo(block, order, beat);
    const qsizetype next =
        direction > 0 ? std::ranges::max(places) + 1 : std::ranges::min(places) - 1;
    return order.at(std::clamp<qsizetype>(next, 0, order.size() - 1));
}

std::optional<double> NoteEdits::endOf(const MelodyBlock& block, const QList<int>& indices)
{
    const QList<NoteEvent> notes = notesAt(block, indices);
    return notes.isEmpty() ? std::nullopt : std::optional(block.startBeat + latestEnd(notes));
}

QList<int> NoteEdits::placesOf(const MelodyBlock& block, QList<NoteEvent> notes)
{
    QList<int> places;
    for (int i = 0; i < block.notes.size() && !notes.isEmpty(); ++i) {
        if (notes.removeOne(block.notes.at(i)))
            places.append(i);
    }
    return places;
}

QList<NoteEvent> NoteEdits::notesAt(const MelodyBlock& block, const QList<int>& indices)
{
    QList<NoteEvent> notes;
    for (const int index : indices) {
        if (holds(block, index))
            notes.append(block.notes.at(index));
    }
    return notes;
}

void NoteEdits::remove(MelodyBlock& block, QList<int> indices)
{
    if (indices.isEmpty())
        return;
    std::ranges::sort(indices);
    QList<NoteEvent> kept;
    for (int index = 0; index < block.notes.size(); ++index) {
        if (!std::ranges::binary_search(indices, index))
            kept.append(block.notes.at(index));
    }
    block.notes = kept;
    finish(block);
}

QList<NoteEvent> NoteEdits::copied(const MelodyBlock& block, const QList<int>& indices)
{
    QList<NoteEvent> notes = notesAt(block, indices);
    const double earliest = earliestStart(notes);
    // Starts without a finite difference are no numbers afterwards; those come to the front.
    for (NoteEvent& note : notes)
        note.startBeat = std::max(0.0, note.startBeat - earliest);
    return notes;
}

QList<NoteEvent> NoteEdits::paste(MelodyBlock& block, const QList<NoteEvent>& notes, double beat,
                                  double step)
{
    if (notes.isEmpty())
        return {};
    return laid(block, notes, std::max(0.0, snapped(beat - block.startBeat, step)));
}

QList<NoteEvent> NoteEdits::duplicate(MelodyBlock& block, const QList<int>& indices, double step)
{
    const QList<NoteEvent> notes = notesAt(block, indices);
    if (notes.isEmpty())
        return {};
    const double length = latestEnd(notes) - earliestStart(notes);
    // Sums of starts and lengths miss the grid by some bits, which must not cost a step.
    const double shift = std::ceil((length - kBeatEpsilon) / step) * step;
    return laid(block, notes, std::max(0.0, shift));
}

void NoteEdits::record(MelodyBlock& block, int pitch, double startBeat, double endBeat, double step)
{
    add(block, startBeat, pitch, wholeSteps(endBeat - startBeat, step));
    finish(block);
}

int NoteEdits::keyLetterToPitch(int key, bool sharp, int octave)
{
    static constexpr std::array<int, 7> kSemitonesFromA{9, 11, 0, 2, 4, 5, 7};
    if (key < Qt::Key_A || key > Qt::Key_G)
        return -1;
    const auto letter = static_cast<std::size_t>(key - Qt::Key_A);
    const qint64 pitch = kSemitonesFromA[letter] + (sharp ? 1 : 0) + 12 * (qint64{octave} + 1);
    return static_cast<int>(std::clamp<qint64>(pitch, 0, 127));
}
