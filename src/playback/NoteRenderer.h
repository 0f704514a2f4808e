#pragma once

#include "music/NoteEvent.h"

#include <QList>

#include <optional>

class LoopLibrary;
class Project;
struct LoopBlock;
struct Track;

/// The one rule by which the blocks of a project become notes.
///
/// A bound far above any real work keeps a damaged or hostile project from asking for notes
/// without end: the notes of one track that come from loops, and those of a whole song, as many
/// as would fill a day without a pause. Where it cuts a track, `cut` is set, if it is given.
namespace NoteRenderer {

/// Loop notes that one track may hold: a day of nearly 12 notes a second.
inline constexpr qsizetype kMaxTrackNotes = 1'000'000;

/// Notes that a song may hold, all its tracks together.
inline constexpr qsizetype kMaxSongNotes = 4 * kMaxTrackNotes;

/// Shortest time between a note-on and its note-off, in beats.
inline constexpr double kMinNoteBeats = 0.05;

/// Velocity and octave of the chords themselves.
inline constexpr int kHarmonyVelocity = 72;
inline constexpr int kHarmonyOctave = 4;

/// What is rendered of a track.
struct TrackNotes {
    QList<NoteEvent> notes;
    /// Whether kMaxTrackNotes has cut them.
    bool cut = false;
};

/// All notes of a track in absolute beats, humanized and sorted by start. Mute and solo are not
/// looked at. Without a library the loop blocks yield nothing, and so does a block whose content
/// is not installed. A note whose place is not a finite number is left out.
TrackNotes render(const Project& project, const Track& track, const LoopLibrary* library);

/// As render(), whether they are cut or not.
QList<NoteEvent> trackNotes(const Project& project, const Track& track, const LoopLibrary* library);

/// The chords of the harmony track as notes in absolute beats, sorted by start.
QList<NoteEvent> harmonyNotes(const Project& project);

/// Length in beats of the loop that a block repeats; `projectBar` is that of a bar of the song, for
/// a rhythm that is not installed. Nothing where the loop is not, or has no length.
std::optional<double> loopBeats(const LoopBlock& block, const LoopLibrary& library,
                                double projectBar);

/// Where each of the notes that share a channel is released, in beats and in the order of `notes`:
/// at its end, kMinNoteBeats behind its start at least, but no later than the next start on its
/// pitch. A release goes by the key: a later one would end the note that was struck there since.
/// Notes that start together keep their own ends.
QList<double> releaseBeats(const QList<NoteEvent>& notes);

} // namespace NoteRenderer
