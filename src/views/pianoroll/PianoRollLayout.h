#pragma once

#include "model/GridSubdivision.h"
#include "music/KeySignature.h"
#include "music/NoteEvent.h"
#include "music/TimeSignature.h"

#include <QList>
#include <QRectF>
#include <QSizeF>

#include <optional>

class Project;
struct MelodyBlock;

/// The pitches that a piano roll shows at a time, from its top row down. Not a zoom: rows are as
/// tall as the window allows.
struct PitchRows {
    static constexpr int kFewest = 8;
    static constexpr int kMost = 73;
    static constexpr int kUsual = 13;

    int count = kUsual;
    int top = 72;

    bool contains(int pitch) const { return pitch <= top && pitch > top - count; }

    /// The same number of rows from another pitch on, or from the nearest that leaves no row
    /// without a pitch.
    PitchRows withTop(int pitch) const;

    /// One row more or less than these, within kFewest and kMost. The top may then be out of
    /// reach; see withTop().
    PitchRows withOneMore() const;
    PitchRows withOneFewer() const;

    /// The rows that hold all notes, one free row above them and one below, and at least kUsual;
    /// the default for no notes.
    static PitchRows around(const QList<NoteEvent>& notes);

    friend bool operator==(const PitchRows&, const PitchRows&) = default;
};

/// A turn of the wheel: how many rows it goes up, and what is left over of it.
struct WheelTurn {
    int rows = 0;
    /// In angle units, 120 to a row.
    int remainder = 0;

    friend bool operator==(const WheelTurn&, const WheelTurn&) = default;
};

/// A vertical line of the piano roll.
struct PianoRollLine {
    enum class Kind { Subdivision, Beat, Bar };

    double beat = 0.0;
    Kind kind = Kind::Subdivision;

    friend bool operator==(const PianoRollLine&, const PianoRollLine&) = default;
};

/// Where pitches and beats stand in the piano roll. Scene coordinates never change with the zoom,
/// which is the scale of the view.
namespace PianoRollLayout {

inline constexpr int kBeatPixels = 64;
inline constexpr int kRowPixels = 16;
inline constexpr int kNoteHeight = 14;
inline constexpr int kHighestPitch = 96;
inline constexpr int kLowestPitch = 24;
inline constexpr int kRows = kHighestPitch - kLowestPitch + 1;
inline constexpr int kSceneHeight = kRows * kRowPixels;

/// What lies beyond is not drawn: six days of music, and as far as a view can scroll.
inline constexpr double kMostBeats = 1e6;

/// The top of a pitch's row in scene pixels.
double pitchToSceneY(int pitch);

/// The pitch of the row at a height of the scene; -1 outside the rows.
int sceneYToPitch(double sceneY);

/// The whole rows nearest to a way down the scene.
int rowsIn(double scenePixels);

/// Rows of the scene that a stretch of it touches, as the highest and the lowest pitch.
struct PitchSpan {
    int highest = kHighestPitch;
    int lowest = kLowestPitch;
};

PitchSpan pitchesBetween(double top, double bottom);

/// The scene, eight bars wider than the song.
QSizeF sceneSize(const Project& project);

/// Where a note of a block stands; nothing for one that cannot be drawn.
std::optional<QRectF> noteRect(const MelodyBlock& block, const NoteEvent& note);

bool isBlackKey(int pitch);

bool isInScale(const KeySignature& key, int pitch);

/// Length of a step in beats, at a level of division that a value out of range takes for the
/// pulse.
double snapBeats(const TimeSignature& meter, GridSubdivisionLevel level);

/// The lines that a stretch of the scene needs, from one pulse before it to one behind it.
QList<PianoRollLine> gridLines(double left, double right, const TimeSignature& meter,
                               GridSubdivisionLevel level);

/// Whether a place of a note lies on its resize grip: its last 6 pixels on screen, but no more than
/// a third of it, so that the note can be moved at every scale.
bool isOnGrip(double sceneX, const QRectF& note, double horizontalScale);

/// Turns the wheel further by an angle, from what was left of the turns before. A turn the other
/// way starts anew.
WheelTurn turned(int remainder, int angleDelta);

/// Bars that the notes of a block touch; 0 where bars have no length.
int barsOf(const MelodyBlock& block, double beatsPerBar);

} // namespace PianoRollLayout
