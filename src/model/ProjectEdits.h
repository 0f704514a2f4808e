#pragma once

#include <QString>

#include <optional>

class Project;
struct AudioClip;
struct LoopBlock;
struct MelodyBlock;
struct Song;
struct TimeSignature;
struct Track;

/// What the commands of the window do to a project. Nothing is announced from here.
namespace ProjectEdits {

/// Whether there is anything in a work that would be missed: a chord, a clip, a loop block or a
/// note. Tracks by themselves and empty melody blocks are nothing.
bool hasContent(const Project& project);

/// Whether two states of a work are the same to its user. A melody track that is shown is given an
/// empty block to write in, which is no difference.
bool isSameWork(const Song& former, const Song& present);

/// A melody block without notes, as long as the song and at least eight bars; without bars, of the
/// default length.
MelodyBlock blankMelody(const Project& project);

/// Adds a note track with a piano and a blank melody, above the accompaniment, and returns its
/// index.
qsizetype addNoteTrack(Project& project, const QString& name);

/// Removes a note track. False where there is none with that index.
bool removeNoteTrack(Project& project, qsizetype index);

/// Removes a voice track. False where there is none with that index.
bool removeAudioTrack(Project& project, qsizetype index);

/// Lays a clip on the last voice track, which is made with a name where there is none.
void addClip(Project& project, const QString& newTrackName, const AudioClip& clip);

/// Where a track is after an edit that has added tracks to a list, or removed some, side by side;
/// -1 for one that is gone. Which is which is told by names, layers and instruments.
int trackAfter(const QList<Track>& former, const QList<Track>& present, int index);

/// The layer that an accompaniment track serves: its own, or else that of its first loop. Empty for
/// a track without either.
QString effectiveLayer(const Track& track);

/// The rhythm of the loop that begins before all others; empty for a work without loops.
QString firstRhythm(const Song& song);

/// The start, in beats, of the bar that holds a beat; 0.0 where the meter has no bars.
double barStart(const Project& project, double beat);

/// Index of the first accompaniment track of a layer; nothing where there is none.
std::optional<qsizetype> accompanimentOf(const Project& project, const QString& layerId);

/// Whether a loop would add nothing but loudness to one that is present: the same one begins at
/// its place, and lasts at least as long.
bool covers(const LoopBlock& present, const LoopBlock& block);

/// Whether a loop on the track of its layer covers one that is to be laid there.
bool hasLoop(const Project& project, const LoopBlock& block);

/// The one loop block that another state of the work lacks; nothing where the two differ otherwise
/// in their loops.
std::optional<LoopBlock> loopMissingIn(const Song& lacking, const Song& work);

/// Lays a loop on the first accompaniment track of its layer and returns the index of that track. A
/// layer without one gets a new track at the end, with a name and an instrument. Nothing is laid
/// where that would be one track too many.
std::optional<qsizetype> addLoop(Project& project, const LoopBlock& block,
                                 const QString& instrumentId, const QString& newTrackName);

/// Sets the key to Minor for a `mode` of 1 and to Major for any other: the key that a work came
/// with may be in another mode, and loses it here.
void setKey(Project& project, int rootPitchClass, int mode);

/// Gives a work another meter. Everything stays at its beats, and bars are counted anew.
void setMeter(Project& project, const TimeSignature& meter);

} // namespace ProjectEdits
