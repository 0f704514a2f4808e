#pragma once

#include "music/TimeSignature.h"

#include <QList>
#include <QRect>
#include <QSizeF>
#include <QString>

class LoopLibrary;
class Project;
struct Track;

/// Keys of the groups in a project's list of folded groups.
inline constexpr QLatin1StringView kGroupPercusion("acomp/percusion");
inline constexpr QLatin1StringView kGroupInstrumental("acomp/instrumental");

/// What a lane of the arranger stands for.
enum class LaneKind { Harmony = 0, Section = 1, Group = 2, NoteTrack = 3, AudioTrack = 4 };

/// One lane, in scene pixels.
struct LaneInfo {
    LaneKind kind = LaneKind::Harmony;
    /// Into the tracks or the audio tracks of the project; -1 for lanes that are no track.
    int trackIndex = -1;
    int top = 0;
    int height = 0;
    QString label = {};
    /// Of a group: its key in the project's list of folded groups.
    QString groupKey = {};
    /// Of a group: whether it is folded.
    bool collapsed = false;
    /// Of a group: how many tracks it has, folded or not.
    int childCount = 0;

    int bottom() const { return top + height; }

    friend bool operator==(const LaneInfo&, const LaneInfo&) = default;
};

/// A vertical line of the arranger's grid.
struct GridLine {
    double beat = 0.0;
    bool isBar = false;

    friend bool operator==(const GridLine&, const GridLine&) = default;
};

/// Where things of the song stand in the arranger. Scene coordinates never change with the zoom,
/// which is the scale of the view.
namespace ArrangerLayout {

inline constexpr int kBeatPixels = 32;
inline constexpr int kHeaderWidth = 170;
inline constexpr int kCornerHeight = 34;

/// Inside the harmony lane, in pixels.
inline constexpr int kChordTop = 2;
inline constexpr int kChordHeight = 22;

/// Inside the lane of a track, in pixels.
inline constexpr int kBlockInset = 3;
inline constexpr int kBlockHeight = 36;

/// The least width of a block in the scene: what a file gives no length is seen and taken by it.
inline constexpr int kLeastBlockWidth = 8;

/// What lies beyond is not drawn: six days of music, and as far as a view can scroll.
inline constexpr double kMostBeats = 1e6;

/// Whether a track plays pitches, as the layer that it serves says. A track whose layer nobody
/// knows does.
bool isPitchedTrack(const Track& track, const LoopLibrary* library);

/// The lanes of a project from top to bottom. `library` may be null.
QList<LaneInfo> lanes(const Project& project, const LoopLibrary* library);

/// The lane at a height of the scene, or null.
const LaneInfo* laneAtY(const QList<LaneInfo>& lanes, double y);

/// The lane of a track, or null where its group is folded.
const LaneInfo* laneOfTrack(const QList<LaneInfo>& lanes, LaneKind kind, int trackIndex);

/// The scene, eight bars wider than the song.
QSizeF sceneSize(const Project& project, const QList<LaneInfo>& lanes);

/// Step of the grid in beats: the pulse.
double snapBeats(const TimeSignature& meter);

/// The start of the step that holds a place of the scene, in beats.
double stepAt(double sceneX, double step);

/// The start of the bar that holds a place of the scene, in beats, at least 0; 0 for a bar that
/// has no length.
double barAt(double sceneX, double beatsPerBar);

/// The lines that a stretch of the scene needs, from one before it to one behind it.
QList<GridLine> gridLines(double left, double right, const TimeSignature& meter);

/// The mute button of a row of the left column, in the pixels of the row.
QRect muteSquare(const QRect& row);

/// Whether a place of a block lies on its resize grip: its last 7 pixels on screen, but no more
/// than a third of it, so that the block can be moved at every scale.
bool isOnGrip(double sceneX, const QRectF& block, double horizontalScale);

} // namespace ArrangerLayout
