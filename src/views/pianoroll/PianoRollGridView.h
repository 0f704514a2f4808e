#pragma once

#include "music/NoteEvent.h"
#include "views/RecordDrag.h"
#include "views/pianoroll/NoteEdits.h"

#include <QGraphicsView>

#include <optional>

class NoteItem;
class PianoRollScene;
class RollNotes;

/// The grid of the piano roll: paints the key, the chords and the lines of time under the notes,
/// and turns the mouse into edits.
class PianoRollGridView : public QGraphicsView {
    Q_OBJECT

public:
    /// Neither is owned.
    PianoRollGridView(PianoRollScene* scene, RollNotes* notes, QWidget* parent = nullptr);

    RollNotes* notes() const { return notes_; }

    /// The scene of the view.
    PianoRollScene* roll() const { return scene_; }

    /// The topmost editable note at a place of the scene, or null.
    NoteItem* noteItemAt(const QPointF& place) const;

    /// Ends a drag of notes that is under way as if the mouse let go.
    void endDrag();

    /// Forgets a drag of notes; what it has done so far stays.
    void cancelDrag();

    /// Whether the mouse holds notes.
    bool isDragging() const { return drag_.has_value(); }

    /// The notes that edits act on; nothing where there is no block to edit.
    std::optional<QList<NoteEvent>> notesOfBlock() const;

    /// The height in the viewport of a height of the scene, in pixels and parts of them.
    double viewportY(double sceneY) const;

signals:
    /// There is another height for the rows.
    void heightChanged();

    /// The wheel asks for another scale of time or for another number of rows, by factors.
    void zoomRequested(double factor);
    void rowZoomRequested(double factor);

    /// The wheel was turned by an angle over the rows.
    void rowsTurned(int angleDelta);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;

private:
    enum class DragMode { Draw, Move, Resize };

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
        /// All notes of the block; nothing where the block is gone.
        RecordDrag<std::optional<QList<NoteEvent>>> block;
    };

    void startRubberBand(QMouseEvent* event);
    void pressOnNote(NoteItem* note, const QPointF& place, Qt::KeyboardModifiers modifiers);
    void drawNote(const QPointF& place);
    void deleteAt(const QPointF& place);
    void dragTo(const QPointF& place);
    void applyTo(MelodyBlock& block, const QPointF& place);
    void applyMoveDelta(double beats, int pitches);
    void applyResizeDelta(double beats);
    void showCursorAt(const QPointF& place);
    void scrollHorizontally(int pixels);

    PianoRollScene* scene_;
    RollNotes* notes_;
    std::optional<Drag> drag_;
};
