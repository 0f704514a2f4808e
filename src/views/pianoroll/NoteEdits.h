#pragma once

#include "music/NoteEvent.h"

#include <QList>

#include <optional>

struct MelodyBlock;

/// A note of a block as it was when the mouse took it.
struct DraggedNote {
    /// In the list of its block. It holds as long as nothing sorts the block.
    int index = 0;
    int pitch = 60;
    /// Beats from the start of the block.
    double startBeat = 0.0;
    /// Beats.
    double durationBeats = 1.0;
    int velocity = 100;

    friend bool operator==(const DraggedNote&, const DraggedNote&) = default;
};

/// What the gestures and the keys of the piano roll do to the notes of a block. Steps are beats
/// above 0; an index that stands for no note is passed over, and a list of none does nothing.
namespace NoteEdits {

/// The multiple of a step nearest to a beat.
double snapped(double beat, double step);

/// Ends an edit: the notes are in order and the block is a beat or more long and holds them all.
/// Indices into the block are stale afterwards.
void finish(MelodyBlock& block);

/// Appends a note at an absolute beat, or at the start of the block if that comes later, and lets
/// the block grow.
void add(MelodyBlock& block, double beat, int pitch, double durationBeats);

/// Length of a note that is being drawn, in whole steps, at least one. Both beats are absolute.
double drawnLength(double startBeat, double beat, double step);

QList<DraggedNote> dragged(const MelodyBlock& block, const QList<int>& indices);

/// Sets notes a way off from where the mouse took them, each held by itself at the start of the
/// block and in the rows.
void move(MelodyBlock& block, const QList<DraggedNote>& notes, double beats, int pitches);

/// Makes notes longer than they were when the mouse took them, to whole steps, at least one.
void resize(MelodyBlock& block, const QList<DraggedNote>& notes, double beats, double step);

/// Moves notes together, no further than the first of them that comes to the start of the block or
/// to the edge of the rows. What lies beyond already moves only back.
void nudge(MelodyBlock& block, const QList<int>& indices, double beats, int pitches);

/// The place in the block of the note that comes next in time, at one start the higher, behind the
/// last of some notes, or before the first of them for a direction of -1; at the end, that one
/// itself. For no notes, the one nearest to a beat of the block; -1 in a block of none. Notes that
/// cannot be drawn are passed over.
int neighbour(const MelodyBlock& block, const QList<int>& indices, int direction, double beat);

/// The end of the last of some notes, in absolute beats; nothing for none.
std::optional<double> endOf(const MelodyBlock& block, const QList<int>& indices);

/// The places of notes that have some values, ascending: as many of one value as there are.
QList<int> placesOf(const MelodyBlock& block, QList<NoteEvent> notes);

/// The notes at some places, in their order.
QList<NoteEvent> notesAt(const MelodyBlock& block, const QList<int>& indices);

/// Removes notes and ends the edit. The block keeps its length.
void remove(MelodyBlock& block, QList<int> indices);

/// Notes in the order of the indices, counted from the earliest of them.
QList<NoteEvent> copied(const MelodyBlock& block, const QList<int>& indices);

/// Puts copied notes at the step of the block nearest to an absolute beat and ends the edit. The
/// notes as they lie there.
QList<NoteEvent> paste(MelodyBlock& block, const QList<NoteEvent>& notes, double beat, double step);

/// Repeats notes right behind the last of them, a whole number of steps later, and ends the edit.
/// The notes that are new.
QList<NoteEvent> duplicate(MelodyBlock& block, const QList<int>& indices, double step);

/// Adds a note that was played and ends the edit. Both beats are absolute; the start is a snapped
/// one, and the length comes out in whole steps, at least one.
void record(MelodyBlock& block, int pitch, double startBeat, double endBeat, double step);

/// The MIDI note of a letter from A to G in an octave, 4 being that of middle C; -1 for any other
/// Qt::Key.
int keyLetterToPitch(int key, bool sharp, int octave);

} // namespace NoteEdits
