#include "views/arranger/ArrangerGridView.h"

#include "model/Project.h"
#include "shell/theme/CanvasColors.h"
#include "views/AccessibleItems.h"
#include "views/LoopDragPayload.h"
#include "views/ScreenPixels.h"
#include "views/arranger/ArrangerLayout.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/TrackArranger.h"

#include <QMimeData>
#include <QMouseEvent>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double kWheelZoom = 1.15;
constexpr int kBarLinePixels = 2;

QColor laneColor(const LaneInfo& lane)
{
    const CanvasColors& colors = canvasColors();
    if (lane.kind == LaneKind::Harmony)
        return colors.laneHarmony;
    if (lane.kind == LaneKind::Section)
        return ThemeManager::instance()->isDark() ? QColor(0x2b, 0x36, 0x1b)
                                                  : QColor(0xd7, 0xe1, 0xc9);
    return lane.trackIndex % 2 != 0 ? colors.laneOdd : colors.laneEven;
}

void paintLanes(QPainter& painter, const QList<LaneInfo>& lanes, const QRectF& exposed)
{
    for (const LaneInfo& lane : lanes)
        painter.fillRect(QRectF(exposed.left(), lane.top, exposed.width(), lane.height),
                         laneColor(lane));
    // Each of them lies in the first row of the next lane.
    LinePainter lines(painter, exposed);
    for (const LaneInfo& lane : lanes)
        lines.horizontal(lane.bottom(), canvasColors().laneSeparator);
}

void paintLines(QPainter& painter, const TimeSignature& meter, const QRectF& exposed)
{
    LinePainter lines(painter, exposed);
    for (const GridLine& line : ArrangerLayout::gridLines(exposed.left(), exposed.right(), meter)) {
        const double x = line.beat * ArrangerLayout::kBeatPixels;
        if (line.isBar)
            lines.vertical(x, kBarLinePixels, canvasColors().barLine);
        else
            lines.vertical(x, 1, canvasColors().beatLine);
    }
}

bool isLoop(const QMimeData* data)
{
    return data->hasFormat(QLatin1StringView(kLoopVariantMimeType));
}

void acceptLoop(QDropEvent* event)
{
    if (isLoop(event->mimeData()))
        event->acceptProposedAction();
    else
        event->ignore();
}

} // namespace

ArrangerGridView::ArrangerGridView(TrackArranger* arranger, QWidget* parent)
    : QGraphicsView(parent), arranger_(arranger)
{
    setScene(arranger->scene());
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setMouseTracking(true);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
}

bool ArrangerGridView::event(QEvent* event)
{
    // The release goes to the dialog that has opened.
    if (event->type() == QEvent::WindowBlocked)
        endDrag();
    return QGraphicsView::event(event);
}

// ---- Drags ---------------------------------------------------------------------------------

std::optional<BlockSpan> ArrangerGridView::draggedSpan() const
{
    return BlockEdits::spanOf(*arranger_->project(), drag_->block);
}

void ArrangerGridView::endDrag()
{
    if (!drag_)
        return;
    const bool edited = drag_->span.isEdit(draggedSpan());
    cancelDrag();
    if (edited)
        arranger_->commitEdit();
}

void ArrangerGridView::cancelDrag()
{
    if (!drag_)
        return;
    drag_.reset();
    arranger_->fitScene();
}

void ArrangerGridView::dragTo(double sceneX)
{
    const std::optional<BlockSpan>& original = drag_->span.original();
    if (!original)
        return;
    Project& project = *arranger_->project();
    const double way = sceneX - drag_->startX;
    const double step = arranger_->snapBeats();
    if (drag_->mode == DragMode::Resize)
        BlockEdits::setLength(project, drag_->block,
                              BlockEdits::resized(*original, way, step).length);
    else
        BlockEdits::setStart(project, drag_->block, BlockEdits::moved(*original, way, step).start);
    if (!drag_->span.leave(draggedSpan()))
        return;
    arranger_->rebuildScene();
    if (BlockItem* item = arranger_->scene()->itemOf(drag_->block))
        select(item);
    else
        cancelDrag();
}

// ---- Mouse ---------------------------------------------------------------------------------

void ArrangerGridView::mousePressEvent(QMouseEvent* event)
{
    if (!arranger_->project())
        return;
    arranger_->endKeyRun();
    const QPointF place = mapToScene(event->position().toPoint());
    // The release of the press before this one may have gone elsewhere.
    if (drag_ && drag_->span.isEndedBy(event->button()))
        endDrag();
    selectLaneAt(place.y(), event->modifiers());
    // Not before: who listens to the selection may have the scene made anew.
    BlockItem* block = arranger_->scene()->blockAt(place);
    const bool left = event->button() == Qt::LeftButton;
    const bool right = event->button() == Qt::RightButton;
    if (block && (left || right))
        pressOnBlock(block, *event, place);
    else if (!pressOnEmpty(*event, place))
        QGraphicsView::mousePressEvent(event);
}

void ArrangerGridView::selectLaneAt(double sceneY, Qt::KeyboardModifiers modifiers)
{
    const LaneInfo* lane = arranger_->laneAtY(sceneY);
    if (lane && lane->kind == LaneKind::NoteTrack)
        arranger_->selectNoteTrack(lane->trackIndex, modifiers & Qt::ControlModifier);
    else if (lane && lane->kind == LaneKind::AudioTrack)
        arranger_->selectAudioTrack(lane->trackIndex);
    else if (lane && lane->kind == LaneKind::Harmony)
        arranger_->setKeyLane(BlockOrder::refOf(*lane));
}

void ArrangerGridView::pressOnBlock(BlockItem* item, const QMouseEvent& event, const QPointF& place)
{
    if (event.button() == Qt::RightButton) {
        arranger_->deleteItem(item);
        emit arranger_->deletedByClick();
    } else {
        startDrag(item, place);
    }
}

/// Whether the press has done its work.
bool ArrangerGridView::pressOnEmpty(const QMouseEvent& event, const QPointF& place)
{
    const LaneInfo* lane = arranger_->laneAtY(place.y());
    const bool left = event.button() == Qt::LeftButton;
    const bool right = event.button() == Qt::RightButton;
    if ((left || right) && lane && lane->kind == LaneKind::Harmony) {
        // The menu takes the release.
        endDrag();
        arranger_->openHarmonyMenu(ArrangerLayout::stepAt(place.x(), arranger_->snapBeats()),
                                   event.globalPosition().toPoint());
        return true;
    }
    if (left)
        scene()->clearSelection();
    return right;
}

void ArrangerGridView::startDrag(BlockItem* item, const QPointF& place)
{
    select(item);
    const BlockRef block = item->block();
    const bool grip = ArrangerLayout::isOnGrip(place.x(), item->rect(), transform().m11());
    drag_ =
        Drag{.mode = grip ? DragMode::Resize : DragMode::Move,
             .block = block,
             .startX = place.x(),
             .span = RecordDrag(Qt::LeftButton, BlockEdits::spanOf(*arranger_->project(), block))};
    AccessibleItems::tellCurrent(this);
}

void ArrangerGridView::select(BlockItem* item)
{
    scene()->clearSelection();
    item->setSelected(true);
}

void ArrangerGridView::mouseMoveEvent(QMouseEvent* event)
{
    if (!drag_) {
        showCursorAt(mapToScene(event->position().toPoint()));
        QGraphicsView::mouseMoveEvent(event);
        return;
    }
    using Move = decltype(drag_->span)::Move;
    switch (drag_->span.move(event->buttons(), draggedSpan())) {
    case Move::Follow:
        dragTo(mapToScene(event->position().toPoint()).x());
        break;
    case Move::Finish:
        endDrag();
        break;
    case Move::Drop:
        cancelDrag();
        break;
    }
}

void ArrangerGridView::showCursorAt(const QPointF& place)
{
    const BlockItem* item = arranger_->scene()->blockAt(place);
    const bool grip = item && item->block().kind != BlockKind::Chord &&
                      ArrangerLayout::isOnGrip(place.x(), item->rect(), transform().m11());
    viewport()->setCursor(grip ? Qt::SizeHorCursor : Qt::ArrowCursor);
}

void ArrangerGridView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!drag_)
        QGraphicsView::mouseReleaseEvent(event);
    else if (drag_->span.isEndedBy(event->button()))
        endDrag();
}

void ArrangerGridView::mouseDoubleClickEvent(QMouseEvent* event)
{
    for (QGraphicsItem* item : items(event->position().toPoint())) {
        const auto* block = qgraphicsitem_cast<BlockItem*>(item);
        if (block && block->block().kind == BlockKind::Melody) {
            const BlockRef melody = block->block();
            emit arranger_->openMelodyBlock(melody.trackIndex, melody.blockIndex);
            return;
        }
    }
    QGraphicsView::mouseDoubleClickEvent(event);
}

void ArrangerGridView::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QGraphicsView::wheelEvent(event);
        return;
    }
    arranger_->zoomHorizontal(event->angleDelta().y() > 0 ? kWheelZoom : 1.0 / kWheelZoom,
                              Zoom::By::Wheel);
    event->accept();
}

// ---- Drops ---------------------------------------------------------------------------------

void ArrangerGridView::dragEnterEvent(QDragEnterEvent* event)
{
    acceptLoop(event);
}

void ArrangerGridView::dragMoveEvent(QDragMoveEvent* event)
{
    acceptLoop(event);
}

void ArrangerGridView::dropEvent(QDropEvent* event)
{
    const auto loop =
        LoopDragPayload::fromJson(event->mimeData()->data(QLatin1StringView(kLoopVariantMimeType)));
    if (!loop || !arranger_->project()) {
        event->ignore();
        return;
    }
    const double beat = ArrangerLayout::barAt(mapToScene(event->position().toPoint()).x(),
                                              arranger_->project()->beatsPerBar());
    emit arranger_->loopDropped(loop->rhythmId, loop->layerId, loop->section, loop->variantIndex,
                                beat);
    event->acceptProposedAction();
}

// ---- Painting ------------------------------------------------------------------------------

void ArrangerGridView::drawBackground(QPainter* painter, const QRectF& rect)
{
    painter->fillRect(rect, canvasColors().arrangerBackground);
    paintLanes(*painter, arranger_->lanes(), rect);
    if (const Project* project = arranger_->project())
        paintLines(*painter, project->timeSignature, rect);
}
