#pragma once

#include "views/RecordDrag.h"
#include "views/arranger/BlockEdits.h"

#include <QGraphicsView>

#include <optional>

class BlockItem;
class TrackArranger;

/// The grid of the arranger: paints the lanes and the lines of time under the blocks, and turns
/// the mouse into edits.
class ArrangerGridView : public QGraphicsView {
    Q_OBJECT

public:
    explicit ArrangerGridView(TrackArranger* arranger, QWidget* parent = nullptr);

    TrackArranger* arranger() const { return arranger_; }

    /// Ends a drag that is under way as if the mouse let go.
    void endDrag();

    /// Forgets a drag that is under way; what it has done so far stays.
    void cancelDrag();

    bool isDragging() const { return drag_.has_value(); }

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;

private:
    enum class DragMode { Move, Resize };

    /// A block between press and release.
    struct Drag {
        DragMode mode;
        BlockRef block;
        /// Of the press, in scene pixels.
        double startX;
        /// Nothing for a chord, which stays where it is.
        RecordDrag<std::optional<BlockSpan>> span;
    };

    void selectLaneAt(double sceneY, Qt::KeyboardModifiers modifiers);
    void pressOnBlock(BlockItem* item, const QMouseEvent& event, const QPointF& place);
    bool pressOnEmpty(const QMouseEvent& event, const QPointF& place);
    void startDrag(BlockItem* item, const QPointF& place);
    std::optional<BlockSpan> draggedSpan() const;
    void dragTo(double sceneX);
    void showCursorAt(const QPointF& place);
    void select(BlockItem* item);

    TrackArranger* arranger_;
    std::optional<Drag> drag_;
};
