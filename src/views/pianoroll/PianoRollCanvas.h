#pragma once

#include "model/GridSubdivision.h"
#include "views/pianoroll/PianoRollLayout.h"

#include <QList>
#include <QVariantAnimation>
#include <QWidget>

class PianoKeyboardWidget;
class PianoRollGridView;
class PianoRollScene;
class PlaybackEngine;
class Project;
class QLabel;
class TimelineRuler;
struct Track;

/// Where the notes of one melody block are written, pitch against time. It holds nothing of the
/// song; it writes gestures straight into the project and says so.
class PianoRollCanvas : public QWidget {
    Q_OBJECT

public:
    explicit PianoRollCanvas(QWidget* parent = nullptr);
    ~PianoRollCanvas() override;

    /// Shows a project from its first track on. Nothing is owned, and each may be null.
    void setContext(Project* project, PlaybackEngine* playback);

    /// Shows the first block of a track, and the notes of others behind it.
    void setVisibleTracks(const QList<int>& tracks, int active);

    void setActiveTrack(int track);
    void setActiveBlock(int track, int block);

    void setSubdivisionLevel(GridSubdivisionLevel level);

    Project* project() const { return project_; }

    PlaybackEngine* playback() const { return playback_; }

    /// -1 for none.
    int activeTrack() const { return activeTrack_; }

    GridSubdivisionLevel subdivisionLevel() const { return subdivisionLevel_; }

    PianoRollScene* scene() const { return scene_; }

    PianoRollGridView* view() const { return view_; }

    PianoKeyboardWidget* keyboard() const { return keyboard_; }

    TimelineRuler* ruler() const { return ruler_; }

    /// Length of a step in beats.
    double snapBeats() const;

    /// The block whose notes can be edited, or null: for no track, and for one of the
    /// accompaniment. A track without a melody block is given one, as long as the song, here and
    /// without a word. Valid until the next change of the track's blocks.
    MelodyBlock* activeBlock();

    /// As activeBlock().
    bool hasEditableBlock();

    void rebuildScene();

    // ---- Rows and zoom ----

    int visibleRows() const { return rows_.count; }

    int topPitch() const { return rows_.top; }

    double zoomX() const { return zoomX_; }

    double zoomY() const { return zoomY_; }

    /// Whether some note of the block is in sight, or there is none.
    bool melodyVisible();

    /// Shows all pitches of the block at once.
    void showWholeMelody();

    void zoomHorizontal(double factor);

    /// A factor above 1 shows one row fewer, any other one more.
    void zoomVertical(double factor);

    /// Puts a pitch into the top row, or the nearest that can stand there.
    void scrollToTopPitch(int pitch, bool animated);

    void scrollNotes(int delta);

    /// Turns the wheel by an angle, 120 to a row; a positive one shows higher notes.
    void wheelNotes(int angleDelta);

    /// Makes the rows as tall as the view allows.
    void applyVerticalFit();

signals:
    void edited();

private:
    QWidget* makeBar();
    QWidget* makeCorner();
    void showTrack(int track, int block);
    const Track* track() const;
    QList<int> ghostTracks() const;
    void updateCaption();
    QString captionOf(const MelodyBlock& block) const;
    void updatePlayhead(double beat);
    void syncRulerAndKeyboard();
    void seek(double beat);

    Project* project_ = nullptr;
    PlaybackEngine* playback_ = nullptr;
    int activeTrack_ = -1;
    int activeBlockIndex_ = 0;
    QList<int> visibleTracks_;
    GridSubdivisionLevel subdivisionLevel_ = GridSubdivisionLevel::Division;

    PitchRows rows_;
    double zoomX_ = 1.0;
    double zoomY_ = 1.0;
    int wheelRemainder_ = 0;
    QVariantAnimation scrollAnimation_;

    PianoRollScene* scene_;
    QLabel* caption_;
    TimelineRuler* ruler_;
    PianoRollGridView* view_;
    PianoKeyboardWidget* keyboard_;
};
