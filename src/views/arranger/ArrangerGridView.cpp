#include "views/arranger/ArrangerGridView.h"

#include "model/Project.h"
#include "shell/theme/CanvasColors.h"
#include "views/AccessibleItems.h"
#include "views/LoopDragPayload.h"
#include "views/RubberBand.h"
#include "views/ScreenPixels.h"
#include "views/Zoom.h"
#include "views/arranger/ArrangerLayout.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/BlockEditor.h"
#include "views/arranger/ClipGestures.h"

#include <QMimeData>
#include <QMouseEvent>
#include <QToolTip>

using namespace Qt::Literals::StringLiterals;

namespace {

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

std::optional<LoopDragPayload> loopOf(const QDropEvent& event)
{
    return LoopDragPayload::fromJson(
        event.mimeData()->data(QLatin1StringView(kLoopVariantMimeType)));
}

void acceptLoop(QDropEvent* event)
{
    if (isLoop(event->mimeData()))
        event->acceptProposedAction();
    else
        event->ignore();
}

} // namespace

ArrangerGridView::ArrangerGridView(ArrangerScene* scene, BlockEditor* blocks, QWidget* parent)
    : QGraphicsView(parent), scene_(scene), blocks_(blocks)
{
    setScene(scene);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setMouseTracking(true);
    colorRubberBand(*this);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
}

void ArrangerGridView::setLanes(const QList<LaneInfo>& lanes)
{
    lanes_ = lanes;
    // Items tell the view where they come and go, but the lanes behind them are none.
    viewport()->update();
}

bool ArrangerGridView::isDragging() const
{
    return blocks_->isDragging() || blocks_->clips()->isHeld();
}

void ArrangerGridView::tellClip()
{
    const auto block = blocks_->current();
    const BlockItem* item = block ? scene_->itemOf(*block) : nullptr;
    if (!item)
        return;
    QToolTip::showText(viewport()->mapToGlobal(mapFromScene(item->rect().bottomLeft())),
                       blocks_->clips()->words(block), viewport());
    AccessibleItems::tellCurrent(this);
}

bool ArrangerGridView::event(QEvent* event)
{
    // The release goes to the dialog that has opened.
    if (event->type() == QEvent::WindowBlocked)
        blocks_->endDrag();
    return QGraphicsView::event(event);
}

const LaneInfo* ArrangerGridView::laneAt(double sceneY) const
{
    return ArrangerLayout::laneAtY(lanes_, sceneY);
}

// ---- Mouse ---------------------------------------------------------------------------------

void ArrangerGridView::mousePressEvent(QMouseEvent* event)
{
    if (!blocks_->project())
        return;
    blocks_->endKeyRun();
    const QPointF place = mapToScene(event->position().toPoint());
    // The release of the press before this one may have gone elsewhere.
    if (blocks_->isEndedBy(event->button()))
        blocks_->endDrag();
    setDragMode(NoDrag);
    pressLaneAt(place.y(), event->modifiers());
    // Not before: who listens to the selection may have the scene made anew.
    const BlockItem* block = scene_->blockAt(place);
    const bool left = event->button() == Qt::LeftButton;
    const bool right = event->button() == Qt::RightButton;
    if (left && event->modifiers() & Qt::ShiftModifier)
        startRectangle(event);
    else if (block && (left || right))
        pressOnBlock(*block, *event, place);
    else if (pressOnEmpty(*event, place))
        return;
    else if (left)
        startRectangle(event);
    else
        QGraphicsView::mousePressEvent(event);
}

void ArrangerGridView::pressLaneAt(double sceneY, Qt::KeyboardModifiers modifiers)
{
    const LaneInfo* lane = laneAt(sceneY);
    if (lane && lane->kind != LaneKind::Section && lane->kind != LaneKind::Group)
        emit lanePressed(BlockOrder::refOf(*lane), modifiers & Qt::ControlModifier);
}

void ArrangerGridView::pressOnBlock(const BlockItem& item, const QMouseEvent& event,
                                    const QPointF& place)
{
    if (event.button() == Qt::RightButton) {
        blocks_->remove(item.block());
        emit deletedByClick();
    } else if (event.modifiers() == Qt::NoModifier &&
               blocks_->clips()->press(place, transform().m11())) {
        AccessibleItems::tellCurrent(this);
    } else {
        takeBlock(item, event, place);
    }
}

/// False where the mouse holds no clip, or holds its block by now.
bool ArrangerGridView::moveClip(const QMouseEvent& event, const QPointF& place)
{
    ClipGestures& clips = *blocks_->clips();
    if (!clips.isHeld())
        return false;
    if (const auto press = clips.move(place, event.buttons(), transform().m11())) {
        if (const BlockItem* item = scene_->blockAt(*press))
            takeBlock(*item, event, *press);
        return false;
    }
    if (!clips.words().isEmpty())
        QToolTip::showText(event.globalPosition().toPoint(), clips.words(), viewport());
    return true;
}

/// Whether the press has done its work.
bool ArrangerGridView::pressOnEmpty(const QMouseEvent& event, const QPointF& place)
{
    const LaneInfo* lane = laneAt(place.y());
    const bool left = event.button() == Qt::LeftButton;
    const bool right = event.button() == Qt::RightButton;
    if ((left || right) && lane && lane->kind == LaneKind::Harmony) {
        // The menu takes the release.
        blocks_->endDrag();
        emit chordRequested(ArrangerLayout::stepAt(place.x(), blocks_->snapBeats()),
                            event.globalPosition().toPoint());
        return true;
    }
    return right;
}

/// With Ctrl it takes further blocks along.
void ArrangerGridView::startRectangle(QMouseEvent* event)
{
    setDragMode(RubberBandDrag);
    QGraphicsView::mousePressEvent(event);
}

void ArrangerGridView::takeBlock(const BlockItem& item, const QMouseEvent& event,
                                 const QPointF& place)
{
    const bool additive = event.modifiers() & Qt::ControlModifier;
    blocks_->take(item.block(), additive ? BlockEditor::Press::Additive : BlockEditor::Press::Plain,
                  isOnGrip(item, place), place.x());
    AccessibleItems::tellCurrent(this);
}

bool ArrangerGridView::isOnGrip(const BlockItem& item, const QPointF& place) const
{
    return ArrangerLayout::isOnGrip(place.x(), item.rect(), transform().m11());
}

void ArrangerGridView::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF place = mapToScene(event->position().toPoint());
    if (moveClip(*event, place))
        return;
    if (blocks_->isDragging()) {
        const bool copying = event->modifiers() & Qt::AltModifier;
        viewport()->setCursor(copying ? Qt::DragCopyCursor : Qt::ArrowCursor);
        blocks_->dragTo(place.x(), event->buttons(), copying);
    } else {
        showCursorAt(place);
        QGraphicsView::mouseMoveEvent(event);
    }
}

void ArrangerGridView::showCursorAt(const QPointF& place)
{
    if (const auto handle = blocks_->clips()->handleAt(place, transform().m11())) {
        viewport()->setCursor(handle == ClipHandle::Gain ? Qt::SizeVerCursor : Qt::SizeHorCursor);
        return;
    }
    const BlockItem* item = scene_->blockAt(place);
    viewport()->setCursor(item && isOnGrip(*item, place) ? Qt::SizeHorCursor : Qt::ArrowCursor);
}

void ArrangerGridView::mouseReleaseEvent(QMouseEvent* event)
{
    if (blocks_->clips()->isHeld() && event->button() == Qt::LeftButton) {
        blocks_->clips()->release();
    } else if (!blocks_->isDragging()) {
        QGraphicsView::mouseReleaseEvent(event);
        if (event->button() == Qt::LeftButton)
            setDragMode(NoDrag);
    } else if (blocks_->isEndedBy(event->button())) {
        blocks_->release();
    }
}

void ArrangerGridView::mouseDoubleClickEvent(QMouseEvent* event)
{
    for (QGraphicsItem* item : items(event->position().toPoint())) {
        const auto* block = qgraphicsitem_cast<BlockItem*>(item);
        if (block && block->block().kind == BlockKind::Melody) {
            const BlockRef melody = block->block();
            emit openMelodyBlock(melody.trackIndex, melody.blockIndex);
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
    emit zoomRequested(Zoom::wheelFactor(event->angleDelta().y()));
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
    showGhost(ghostOf(*event));
}

void ArrangerGridView::dragLeaveEvent(QDragLeaveEvent* /*event*/)
{
    showGhost(std::nullopt);
}

std::optional<LoopGhost> ArrangerGridView::ghostOf(const QDropEvent& event) const
{
    const auto loop = loopOf(event);
    if (!loop || !blocks_->project() || !library_)
        return std::nullopt;
    return LoopGhost::of(*loop, mapToScene(event.position().toPoint()).x(), *blocks_->project(),
                         lanes_, *library_);
}

void ArrangerGridView::showGhost(const std::optional<LoopGhost>& ghost)
{
    if (ghost_ == ghost)
        return;
    ghost_ = ghost;
    viewport()->update();
}

void ArrangerGridView::dropEvent(QDropEvent* event)
{
    showGhost(std::nullopt);
    const auto loop = loopOf(*event);
    if (!loop || !blocks_->project()) {
        event->ignore();
        return;
    }
    const double beat = ArrangerLayout::barAt(mapToScene(event->position().toPoint()).x(),
                                              blocks_->project()->beatsPerBar());
    emit loopDropped(loop->rhythmId, loop->layerId, loop->section, loop->variantIndex, beat);
    event->acceptProposedAction();
}

// ---- Painting ------------------------------------------------------------------------------

void ArrangerGridView::drawBackground(QPainter* painter, const QRectF& rect)
{
    painter->fillRect(rect, canvasColors().arrangerBackground);
    paintLanes(*painter, lanes_, rect);
    if (const Project* project = blocks_->project())
        paintLines(*painter, project->timeSignature, rect);
}

void ArrangerGridView::drawForeground(QPainter* painter, const QRectF& /*rect*/)
{
    if (ghost_)
        ghost_->paint(*painter, mapToScene(viewport()->rect()).boundingRect());
}
