#pragma once

#include "music/NoteEvent.h"
#include "views/EditCommand.h"
#include "views/RecordDrag.h"
#include "views/Zoom.h"
#include "views/pianoroll/PianoRollLayout.h"
#include "views/pianoroll/RollNotes.h"

#include <QHash>
#include <QList>
#include <QVariantAnimation>
#include <QWidget>

#include <optional>

class PianoKeyboardWidget;
class PianoRollGridView;
class PianoRollScene;
class PlaybackEngine;
class PlayheadFollower;
class Project;
class QLabel;
class TimelineRuler;
struct ArrowKey;
struct Track;

/// Where the notes of one melody block are written, pitch against time. It holds nothing of the
/// song; it writes gestures straight into the project and says so.
class PianoRollCanvas : public QWidget, public CommandedEditor, public RollNotes {
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

    Project* project() const override { return project_; }

    PlaybackEngine* playback() const { return playback_; }

    /// -1 for none.
    int activeTrack() const { return activeTrack_; }

    GridSubdivisionLevel subdivisionLevel() const override { return subdivisionLevel_; }

    PianoRollScene* scene() const { return scene_; }

    PianoRollGridView* view() const { return view_; }

    PianoKeyboardWidget* keyboard() const { return keyboard_; }

    TimelineRuler* ruler() const { return ruler_; }

    /// Keeps the playhead of a song that plays in sight.
    PlayheadFollower* follower() const { return follower_; }

    QString caption() const override;

    double snapBeats() const override;
    MelodyBlock* activeBlock() override;

    /// As activeBlock().
    bool hasEditableBlock();

    void rebuildScene() override;
    void fitScene() override;

    /// Ends a drag of notes that is under way as if the mouse let go, and a run of arrows as if the
    /// key came up: whoever puts other records into the project, or reads it as a whole, does so
    /// first.
    void endDrag();

    void endKeyRun() override;

    /// Writes the track, the key and the length of the block over the grid.
    void updateCaption();

    /// In beats. The view does not follow.
    void updatePlayhead(double beat);

    /// Moves the playhead to a beat of the song as shown, and the view to where it is. Starts
    /// nothing.
    void placePlayhead(double beat);

    /// Shows the playhead in red while a voice is recorded.
    void setRecording(bool recording);

    /// Puts the ruler and the keys where the view stands.
    void syncRulerAndKeyboard();

    // ---- Edits ----

    void addNoteAt(double beat, int pitch, double duration) override;
    void commitEdit() override;

    /// As commitEdit(), and selects some notes of the block, by their values.
    void commitSelecting(const QList<NoteEvent>& notes);

    void deleteSelectedNotes() override;

    /// Writes a note of a step at the playhead, at the pitch that was played last, and selects it.
    /// While nothing plays the playhead goes on to its end. The pitch; nothing where there is no
    /// block to write in.
    std::optional<int> writeNote();

    void goToNote(int index) override;
    int currentNote() const override;

    bool can(EditCommand command) const override;
    void perform(EditCommand command) override;

    /// What was copied before is gone, even if nothing is selected. Copies outlive their block.
    void copySelection();

    /// Selects what it has pasted.
    void pasteAtPlayhead();

    /// Repeats the selected notes right behind them, and selects what is new.
    void duplicateSelection();

    // ---- Live notes ----

    /// The octave that the letters play, 1 to 7; 4 is that of middle C.
    int keyboardOctave() const { return keyboardOctave_; }

    /// That of the next note that is written by key: the one that was played last.
    int writtenPitch() const { return writtenPitch_; }

    /// -1 for keys other than the letters A to G.
    int keyLetterToPitch(int key, bool sharp) const;

    void startPreview(int pitch) override;
    void endPreview(int pitch) override;

    /// Sounds a pitch until liveNoteOff(), which writes it into the block if the song was playing.
    void liveNoteOn(int pitch);
    void liveNoteOff(int pitch);

    // ---- Rows and zoom ----

    int visibleRows() const { return rows_.count; }

    int topPitch() const { return rows_.top; }

    double zoomX() const { return zoomX_; }

    double zoomY() const { return zoomY_; }

    /// Whether some note of the block is in sight, or there is none.
    bool melodyVisible();

    /// Shows all pitches of the block at once.
    void showWholeMelody();

    /// What one looks at stays where it is; see Zoom::set().
    void zoomHorizontal(double factor, Zoom::By by = Zoom::By::Command);

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

protected:
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    /// An arrow that is held down over notes.
    struct KeyRun {
        int key;
        /// All notes of the block; nothing where the block is gone.
        RecordDrag<std::optional<QList<NoteEvent>>> block;
    };

    bool stepByKey(const QKeyEvent& event);
    bool changeByArrow(const QKeyEvent& event, const ArrowKey& arrow);
    void changeSelected(const ArrowKey& arrow);
    bool goByArrow(const ArrowKey& arrow);
    bool movePlayhead(double step, int direction);
    bool isPlayheadAtEndOf(const QList<int>& notes);
    void takeNoteAlong(int index);
    void selectAllNotes();
    const MelodyBlock* shownBlock() const;
    void takePlayheadAlong(const QList<int>& notes);
    void showNotes(const QList<int>& indices);
    bool writeByKey(const QKeyEvent& event);
    bool deselectByKey(const QKeyEvent& event);
    bool editByKey(const QKeyEvent& event);
    bool playByKey(const QKeyEvent& event);
    void endHeldKeys();
    void forgetGestures();

    void connectParts();
    void nameParts();
    QWidget* makeBar();
    QWidget* makeCorner();
    void showTrack(int track, int block);
    const Track* track() const;
    QList<int> ghostTracks() const;
    QString captionOf(const MelodyBlock& block) const;
    void seek(double beat);
    void tellPlayhead();

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

    /// Shared by all tracks and blocks.
    QList<NoteEvent> copyBuffer_;
    /// The beats at which notes that are being recorded began, by pitch.
    QHash<int, double> liveStarts_;
    /// The pitches of the letters that are held down, by key.
    QHash<int, int> heldKeys_;
    int keyboardOctave_ = 4;
    int writtenPitch_ = 60;
    /// May be selected no longer.
    int currentNote_ = -1;
    std::optional<KeyRun> keyRun_;

    PianoRollScene* scene_;
    QLabel* caption_;
    TimelineRuler* ruler_;
    PianoRollGridView* view_;
    PlayheadFollower* follower_;
    PianoKeyboardWidget* keyboard_;
};
