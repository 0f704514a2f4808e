#pragma once

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

    /// Forgets a drag that is under way; what it has done so far stays.
    void cancelDrag();

    bool isDragging() const { return drag_.has_value(); }

protected:
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
        /// Of the record at the press; nothing for a chord, which stays where it is.
        std::optional<BlockSpan> original;
        bool moved = false;
    };

    void selectLaneAt(double sceneY, Qt::KeyboardModifiers modifiers);
    void pressOnBlock(BlockItem* item, const QMouseEvent& event, const QPointF& place);
    bool pressOnEmpty(const QMouseEvent& event, const QPointF& place);
    void startDrag(BlockItem* item, const QPointF& place);
    void select(BlockItem* item);

    TrackArranger* arranger_;
    std::optional<Drag> drag_;
};
