#pragma once

#include <QGraphicsView>

class NoteEditor;
class NoteItem;
class PianoRollScene;

/// The grid of the piano roll: paints the key, the chords and the lines of time under the notes,
/// and turns the mouse into edits.
class PianoRollGridView : public QGraphicsView {
    Q_OBJECT

public:
    /// Neither is owned.
    PianoRollGridView(PianoRollScene* scene, NoteEditor* notes, QWidget* parent = nullptr);

    NoteEditor* notes() const { return notes_; }

    /// The scene of the view.
    PianoRollScene* roll() const { return scene_; }

    /// The topmost editable note at a place of the scene, or null.
    NoteItem* noteItemAt(const QPointF& place) const;

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
    void startRubberBand(QMouseEvent* event);
    void pressOnNote(NoteItem* note, const QPointF& place, Qt::KeyboardModifiers modifiers);
    void pressOnGrid(const QPointF& place);
    void deleteAt(const QPointF& place);
    bool isOnGrip(const NoteItem& note, const QPointF& place) const;
    void showCursorAt(const QPointF& place);
    void scrollHorizontally(int pixels);

    PianoRollScene* scene_;
    NoteEditor* notes_;
};
