#pragma once

#include "music/LoopSection.h"
#include "views/arranger/BlockOrder.h"
#include "views/arranger/LoopGhost.h"

#include <QGraphicsView>

#include <optional>

class ArrangerScene;
class BlockEditor;
class BlockItem;
class LoopLibrary;

/// The grid of the arranger: paints the lanes and the lines of time under the blocks, and turns
/// the mouse into edits. What goes beyond blocks it asks for.
class ArrangerGridView : public QGraphicsView {
    Q_OBJECT

public:
    /// Neither is owned.
    ArrangerGridView(ArrangerScene* scene, BlockEditor* blocks, QWidget* parent = nullptr);

    BlockEditor* blocks() const { return blocks_; }

    /// The lanes that the blocks lie in.
    void setLanes(const QList<LaneInfo>& lanes);

    const QList<LaneInfo>& lanes() const { return lanes_; }

    /// Says how long the loops are that are dragged over the view. Not owned; may be null.
    void setLibrary(const LoopLibrary* library) { library_ = library; }

    /// Where the loop would lie that is dragged over the view; nothing while none is.
    const std::optional<LoopGhost>& ghost() const { return ghost_; }

    bool isDragging() const;

    /// Tells what keys have made of the clip that is selected, in a tip and to who cannot see it.
    void tellClip();

    /// As if the user went to a block.
    void requestBlock(const BlockRef& block) { emit blockRequested(block); }

signals:
    /// A lane was pressed: of chords, of notes or of a voice. An additive press takes further
    /// tracks along.
    void lanePressed(const LaneRef& lane, bool additive);

    void blockRequested(const BlockRef& block);

    /// A click has taken a block away.
    void deletedByClick();

    /// A chord is to be chosen for the step of a beat.
    void chordRequested(double beat, const QPoint& globalPos);

    /// A melody block is to be opened for editing.
    void openMelodyBlock(int trackIndex, int blockIndex);

    /// A loop was dropped on the bar that starts at a beat.
    void loopDropped(const QString& rhythmId, const QString& layerId, LoopSection section,
                     int variantIndex, double beat);

    /// The wheel asks for another scale.
    void zoomRequested(double factor);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void drawForeground(QPainter* painter, const QRectF& rect) override;
    void drawBackground(QPainter* painter, const QRectF& rect) override;

private:
    const LaneInfo* laneAt(double sceneY) const;
    void pressLaneAt(double sceneY, Qt::KeyboardModifiers modifiers);
    void pressOnBlock(const BlockItem& item, const QMouseEvent& event, const QPointF& place);
    bool pressOnEmpty(const QMouseEvent& event, const QPointF& place);
    void startRectangle(QMouseEvent* event);
    bool moveClip(const QMouseEvent& event, const QPointF& place);
    void takeBlock(const BlockItem& item, const QMouseEvent& event, const QPointF& place);
    bool isOnGrip(const BlockItem& item, const QPointF& place) const;
    void showCursorAt(const QPointF& place);
    std::optional<LoopGhost> ghostOf(const QDropEvent& event) const;
    void showGhost(const std::optional<LoopGhost>& ghost);

    ArrangerScene* scene_;
    BlockEditor* blocks_;
    QList<LaneInfo> lanes_;
    const LoopLibrary* library_ = nullptr;
    std::optional<LoopGhost> ghost_;
};
