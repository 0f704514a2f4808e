#pragma once

#include <QGraphicsView>

class NoteItem;
class PianoRollCanvas;

/// The grid of the piano roll: paints the key, the chords and the lines of time under the notes.
class PianoRollGridView : public QGraphicsView {
    Q_OBJECT

public:
    explicit PianoRollGridView(PianoRollCanvas* canvas, QWidget* parent = nullptr);

    /// The topmost editable note at a place of the scene, or null.
    NoteItem* noteItemAt(const QPointF& place) const;

    /// The height in the viewport of a height of the scene, in pixels and parts of them.
    double viewportY(double sceneY) const;

protected:
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;

private:
    void scrollHorizontally(int pixels);

    PianoRollCanvas* canvas_;
};
