#pragma once

#include "model/GridSubdivision.h"
#include "music/NoteEvent.h"
#include "views/EditCommand.h"
#include "views/RecordDrag.h"
#include "views/pianoroll/NoteEdits.h"
#include "views/pianoroll/OpenMelody.h"

#include <QList>
#include <QObject>
#include <QPointF>

#include <optional>

class PianoRollScene;
class PlaybackEngine;
struct ArrowKey;

/// What mouse and keys do to the notes of one melody block: it knows which are selected and which
/// are held, writes into the project and says so. How they are shown is the business of others.
class NoteEditor : public QObject, public CommandedEditor {
    Q_OBJECT

public:
    /// The scene is not owned; selections are those of its items.
    explicit NoteEditor(PianoRollScene* scene, QObject* parent);

    /// Goes to the first track of a project. Nothing is owned, and each may be null. What is held
    /// is let go where it is.
    void setContext(Project* project, PlaybackEngine* playback);

    /// Goes to a block of a track, or to the nearest that it has. A number that stands for no
    /// track leaves nothing to edit.
    void setBlock(int track, int block);

    void setSubdivisionLevel(GridSubdivisionLevel level) { subdivisionLevel_ = level; }

    Project* project() const { return open_.project; }

    PlaybackEngine* playback() const { return playback_; }

    /// -1 for none.
    int activeTrack() const { return open_.trackIndex; }

    /// Null where the number of the active track stands for none.
    const Track* track() const { return open_.track(); }

    GridSubdivisionLevel subdivisionLevel() const { return subdivisionLevel_; }

    /// Length of a step in beats.
    double snapBeats() const;

    /// The block whose notes can be edited, or null: for no track, and for one of the
    /// accompaniment. A track without a melody block is given one, as long as the song, here and
    /// without a word. Valid until the next change of the track's blocks.
    MelodyBlock* activeBlock() const { return open_.blockToWriteIn(); }

    /// As activeBlock().
    bool hasEditableBlock() const { return activeBlock() != nullptr; }

    // ---- Selection ----

    /// The selected note that the keys are on; -1 where none is selected.
    int currentNote() const;

    /// Selects one note, which the keys are on then.
    void goToNote(int index);

    // ---- Drags ----

    /// Takes the selected notes at a place of the scene, or by their ends.
    void take(const QPointF& place, bool byTheEnd);

    /// Begins a note at a place of the scene, which becomes as long as the mouse goes.
    void draw(const QPointF& place);

    /// Has what is held go along with the mouse.
    void dragTo(const QPointF& place, Qt::MouseButtons buttons);

    bool isDragging() const { return drag_.has_value(); }

    /// Whether the drag is one of this button.
    bool isEndedBy(Qt::MouseButton button) const;

    /// Ends a drag that is under way as if the mouse let go.
    void endDrag();

    /// Forgets a drag; what it has done so far stays.
    void cancelDrag();

    /// Ends a drag, and a run of arrows as if the key came up: whoever puts other records into the
    /// project, or reads it as a whole, does so first.
    void endGestures();

    // ---- Keys ----

    /// Moves or stretches the selected notes by an arrow that is pressed, or held on. False where
    /// none is selected.
    bool step(int key, bool heldOn, const ArrowKey& arrow);

    /// Goes on to the next note, or takes it along. False where there is none.
    bool go(const ArrowKey& arrow);

    /// The key of a run of arrows; nothing while there is none.
    std::optional<int> runningKey() const;

    /// Makes one edit of what an arrow that is held down has done.
    void endKeyRun();

    // ---- Edits ----

    /// Adds a note to the block at an absolute beat, and says nothing of it.
    void addNoteAt(double beat, int pitch, double duration);

    /// Puts the notes of the block in order, and says that the project has been edited.
    void commitEdit();

    void deleteSelectedNotes();

    /// Writes a note of a step at the playhead, as near to a pitch as there are rows, and selects
    /// it. While nothing plays the playhead goes on to its end. The pitch; nothing where there is
    /// no block to write in.
    std::optional<int> writeNote(int pitch);

    /// Writes a note that was played from one absolute beat to another. An edit even where there
    /// is no block to write in.
    void recordNote(int pitch, double startBeat, double endBeat);

    bool can(EditCommand command) const override;
    void perform(EditCommand command) override;

    /// What was copied before is gone, even if nothing is selected. Copies outlive their block.
    void copySelection();

    /// Selects what it has pasted.
    void pasteAtPlayhead();

    /// Repeats the selected notes right behind them, and selects what is new.
    void duplicateSelection();

signals:
    /// The notes have changed on the way of a gesture: whoever shows them shows them anew.
    void changed();

    /// A drag is over, and the song may be longer than is shown.
    void dragEnded();

    /// An edit of the song is done.
    void edited();

    /// The keys have come to some notes, which want to be seen.
    void reached(const QList<int>& notes);

    /// All notes have been selected.
    void allSelected();

    /// The playhead is to go along with what is written.
    void playheadRequested(double beat);

    /// A note of a pitch is being drawn, and is no more.
    void drawingBegun(int pitch);
    void drawingEnded(int pitch);

private:
    enum class DragMode { Draw, Move, Resize };

    /// All notes of the block; nothing where the block is gone.
    using Notes = std::optional<QList<NoteEvent>>;

    /// Notes between press and release.
    struct Drag {
        DragMode mode;
        /// Of the press, in scene pixels.
        QPointF start;
        /// What was selected at the press.
        QList<DraggedNote> notes = {};
        /// Of the note that is being drawn: its absolute beat, its pitch and its place in the
        /// block.
        double drawBeat = 0.0;
        int drawPitch = -1;
        int drawIndex = -1;
        RecordDrag<Notes> block;
    };

    /// An arrow that is held down over notes.
    struct KeyRun {
        int key;
        RecordDrag<Notes> block;
    };

    Notes notesOfBlock() const;
    void apply(MelodyBlock& block, const QPointF& place) const;
    void follow(const QPointF& place);
    void changeSelected(const ArrowKey& arrow);
    bool isPlayheadAtEndOf(const QList<int>& notes) const;
    void takePlayheadAlong(const QList<int>& notes);
    void takeNoteAlong(int index);
    void selectAllNotes();
    void commitSelecting(const QList<NoteEvent>& notes);

    PianoRollScene* scene_;
    OpenMelody open_;
    PlaybackEngine* playback_ = nullptr;
    GridSubdivisionLevel subdivisionLevel_ = GridSubdivisionLevel::Division;
    /// Shared by all tracks and blocks.
    QList<NoteEvent> copyBuffer_;
    /// May be selected no longer.
    int currentNote_ = -1;
    std::optional<Drag> drag_;
    std::optional<KeyRun> keyRun_;
};
