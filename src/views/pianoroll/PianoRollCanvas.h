#pragma once

#include "model/GridSubdivision.h"
#include "views/Zoom.h"

#include <QList>
#include <QWidget>

class LiveNotes;
class NoteEditor;
class PianoKeyboardWidget;
class PianoRollGridView;
class PianoRollScene;
class PianoRollViewport;
class PlaybackEngine;
class PlayheadFollower;
class Project;
class QLabel;
class TimelineRuler;
struct ArrowKey;
struct MelodyBlock;

/// Shows the notes of one melody block, pitch against time, and where the song is played. It holds
/// nothing of the song. What mouse and keys do to the notes is the business of NoteEditor, what is
/// played that of LiveNotes, and which rows are seen that of PianoRollViewport.
class PianoRollCanvas : public QWidget {
    Q_OBJECT

public:
    explicit PianoRollCanvas(QWidget* parent = nullptr);
    ~PianoRollCanvas() override;

    /// Shows a project from its first track and its first bar on, in the scale 1. Nothing is owned,
    /// and each may be null.
    void setContext(Project* project, PlaybackEngine* playback);

    /// Shows the first block of a track, and the notes of others behind it.
    void setVisibleTracks(const QList<int>& tracks, int active);

    void setActiveTrack(int track);
    void setActiveBlock(int track, int block);

    void setSubdivisionLevel(GridSubdivisionLevel level);

    NoteEditor* notes() const { return notes_; }

    LiveNotes* live() const { return live_; }

    PianoRollViewport* rows() const { return rows_; }

    PianoRollScene* scene() const { return scene_; }

    PianoRollGridView* view() const { return view_; }

    PianoKeyboardWidget* keyboard() const { return keyboard_; }

    TimelineRuler* ruler() const { return ruler_; }

    /// Keeps the playhead of a song that plays in sight.
    PlayheadFollower* follower() const { return follower_; }

    void rebuildScene();

    /// See NoteEditor::endGestures().
    void endDrag();

    /// Whether some note of the block is in sight, or there is none.
    bool melodyVisible() const;

    /// Shows all pitches of the block at once.
    void showWholeMelody();

    /// What one looks at stays where it is; see Zoom::anchor().
    void zoomHorizontal(double factor, Zoom::By by = Zoom::By::Command);

    /// Moves the playhead to a beat of the song as shown, and the view to where it is. Starts
    /// nothing.
    void placePlayhead(double beat);

    /// Shows the playhead in red while a voice is recorded.
    void setRecording(bool recording);

signals:
    void edited();

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    bool stepByKey(const QKeyEvent& event);
    bool changeByArrow(const QKeyEvent& event, const ArrowKey& arrow);
    bool movePlayhead(double step, int direction);
    bool writeByKey(const QKeyEvent& event);
    bool deselectByKey(const QKeyEvent& event);
    bool editByKey(const QKeyEvent& event);
    bool playByKey(const QKeyEvent& event);

    void connectParts();
    void connectNotes();
    void nameParts();
    QWidget* makeBar();
    QWidget* makeCorner();
    void showTrack(int track, int block);
    void showMelody();
    void showNotes(const QList<int>& indices);
    void showEdit();
    void fitScene();
    QList<int> ghostTracks() const;
    QString captionOf(const MelodyBlock& block) const;
    void updateCaption();
    void syncRulerAndKeyboard();
    void updatePlayhead(double beat);
    void tellPlayhead();
    void seek(double beat);

    QList<int> visibleTracks_;

    PianoRollScene* scene_;
    NoteEditor* notes_;
    LiveNotes* live_;
    QLabel* caption_;
    TimelineRuler* ruler_;
    PianoRollGridView* view_;
    PianoRollViewport* rows_;
    PlayheadFollower* follower_;
    PianoKeyboardWidget* keyboard_;
};
