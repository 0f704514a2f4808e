#include "views/pianoroll/PianoRollGridView.h"

#include "model/Track.h"
#include "shell/theme/CanvasColors.h"
#include "views/AccessibleItems.h"
#include "views/RubberBand.h"
#include "views/pianoroll/PianoRollBackdrop.h"
#include "views/pianoroll/PianoRollLayout.h"
#include "views/pianoroll/PianoRollScene.h"
#include "views/pianoroll/RollNotes.h"

#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <cmath>
#include <cstdlib>
#include <utility>

namespace {

constexpr double kWheelZoom = 1.15;

} // namespace

PianoRollGridView::PianoRollGridView(PianoRollScene* scene, RollNotes* notes, QWidget* parent)
    : QGraphicsView(parent), scene_(scene), notes_(notes)
{
    setScene(scene);
    // The keys beside the grid stand in line with its rows.
    setFrameShape(QFrame::NoFrame);
    setRenderHint(QPainter::Antialiasing, false);
    setTransformationAnchor(AnchorUnderMouse);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setMouseTracking(true);
    colorRubberBand(*this);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // A scene takes whatever is dragged over it, and the window would not get it any more.
    setAcceptDrops(false);
    viewport()->setAcceptDrops(false);
}

NoteItem* PianoRollGridView::noteItemAt(const QPointF& place) const
{
    return scene_->noteAt(place);
}

double PianoRollGridView::viewportY(double sceneY) const
{
    return viewportTransform().map(QPointF(0.0, sceneY)).y();
}

void PianoRollGridView::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
    emit heightChanged();
}

void PianoRollGridView::showEvent(QShowEvent* event)
{
    // A view that is shown goes to where its anchor was last.
    const int x = horizontalScrollBar()->value();
    QGraphicsView::showEvent(event);
    horizontalScrollBar()->setValue(x);
    emit heightChanged();
}

bool PianoRollGridView::event(QEvent* event)
{
    // The release goes to the dialog that has opened.
    if (event->type() == QEvent::WindowBlocked)
        endDrag();
    return QGraphicsView::event(event);
}

// ---- Drags ---------------------------------------------------------------------------------

std::optional<QList<NoteEvent>> PianoRollGridView::notesOfBlock() const
{
    const MelodyBlock* block = notes_->activeBlock();
    return block ? std::optional(block->notes) : std::nullopt;
}

void PianoRollGridView::endDrag()
{
    if (!drag_)
        return;
    const bool edited = drag_->block.isEdit(notesOfBlock());
    cancelDrag();
    if (edited)
        notes_->commitEdit();
}

void PianoRollGridView::cancelDrag()
{
    if (!drag_)
        return;
    // Before the preview ends: who hears of that may look at the grid.
    const Drag drag = *std::exchange(drag_, std::nullopt);
    if (drag.mode == DragMode::Draw)
        notes_->endPreview(drag.drawPitch);
    notes_->fitScene();
}

void PianoRollGridView::dragTo(const QPointF& place)
{
    applyTo(*notes_->activeBlock(), place);
    if (drag_->block.leave(notesOfBlock()))
        notes_->rebuildScene();
}

void PianoRollGridView::applyTo(MelodyBlock& block, const QPointF& place)
{
    const double step = notes_->snapBeats();
    const QPointF way = place - drag_->start;
    const double beats = NoteEdits::snapped(way.x() / PianoRollLayout::kBeatPixels, step);
    if (drag_->mode == DragMode::Move) {
        applyMoveDelta(beats, -PianoRollLayout::rowsIn(way.y()));
    } else if (drag_->mode == DragMode::Resize) {
        applyResizeDelta(beats);
    } else if (drag_->drawIndex < block.notes.size()) {
        block.notes[drag_->drawIndex].durationBeats =
            NoteEdits::drawnLength(drag_->drawBeat, place.x() / PianoRollLayout::kBeatPixels, step);
    }
}

void PianoRollGridView::applyMoveDelta(double beats, int pitches)
{
    if (MelodyBlock* block = notes_->activeBlock())
        NoteEdits::move(*block, drag_->notes, beats, pitches);
}

void PianoRollGridView::applyResizeDelta(double beats)
{
    if (MelodyBlock* block = notes_->activeBlock())
        NoteEdits::resize(*block, drag_->notes, beats, notes_->snapBeats());
}

// ---- Mouse ---------------------------------------------------------------------------------

void PianoRollGridView::mousePressEvent(QMouseEvent* event)
{
    const bool left = event->button() == Qt::LeftButton;
    const bool right = event->button() == Qt::RightButton;
    if ((!left && !right) || !notes_->activeBlock()) {
        QGraphicsView::mousePressEvent(event);
        return;
    }
    notes_->endKeyRun();
    const QPointF place = mapToScene(event->position().toPoint());
    if (right) {
        deleteAt(place);
        return;
    }
    // The release of the press before this one may have gone elsewhere.
    endDrag();
    setDragMode(NoDrag);
    if (event->modifiers() & Qt::ShiftModifier)
        startRubberBand(event);
    else if (NoteItem* note = noteItemAt(place))
        pressOnNote(note, place, event->modifiers());
    else
        drawNote(place);
}

void PianoRollGridView::deleteAt(const QPointF& place)
{
    NoteItem* note = noteItemAt(place);
    if (!note)
        return;
    note->setSelected(true);
    notes_->deleteSelectedNotes();
}

void PianoRollGridView::startRubberBand(QMouseEvent* event)
{
    setDragMode(RubberBandDrag);
    QGraphicsView::mousePressEvent(event);
}

void PianoRollGridView::pressOnNote(NoteItem* note, const QPointF& place,
                                    Qt::KeyboardModifiers modifiers)
{
    if (!note->isSelected()) {
        if (!(modifiers & Qt::ControlModifier))
            scene()->clearSelection();
        note->setSelected(true);
    }
    const MelodyBlock& block = *notes_->activeBlock();
    const bool grip = PianoRollLayout::isOnGrip(place.x(), note->rect(), transform().m11());
    drag_ = Drag{.mode = grip ? DragMode::Resize : DragMode::Move,
                 .start = place,
                 .notes = NoteEdits::dragged(block, scene_->selectedNotes()),
                 .block = RecordDrag(Qt::LeftButton, notesOfBlock())};
    AccessibleItems::tellCurrent(this);
}

void PianoRollGridView::drawNote(const QPointF& place)
{
    scene()->clearSelection();
    const double step = notes_->snapBeats();
    const int pitch = PianoRollLayout::sceneYToPitch(place.y());
    const double beat = std::floor(place.x() / PianoRollLayout::kBeatPixels / step) * step;
    if (pitch == -1 || beat < 0.0)
        return;
    notes_->addNoteAt(beat, pitch, step);
    drag_ = Drag{.mode = DragMode::Draw,
                 .start = place,
                 .drawBeat = beat,
                 .drawPitch = pitch,
                 .drawIndex = static_cast<int>(notes_->activeBlock()->notes.size()) - 1,
                 .block = RecordDrag(Qt::LeftButton, notesOfBlock(), true)};
    notes_->startPreview(pitch);
}

void PianoRollGridView::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF place = mapToScene(event->position().toPoint());
    if (!drag_) {
        showCursorAt(place);
        QGraphicsView::mouseMoveEvent(event);
        return;
    }
    using Move = decltype(drag_->block)::Move;
    switch (drag_->block.move(event->buttons(), notesOfBlock())) {
    case Move::Follow:
        dragTo(place);
        break;
    case Move::Finish:
        endDrag();
        break;
    case Move::Drop:
        cancelDrag();
        break;
    }
}

void PianoRollGridView::showCursorAt(const QPointF& place)
{
    const NoteItem* note = noteItemAt(place);
    const bool grip = note && PianoRollLayout::isOnGrip(place.x(), note->rect(), transform().m11());
    viewport()->setCursor(grip ? Qt::SizeHorCursor : Qt::ArrowCursor);
}

void PianoRollGridView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!drag_) {
        QGraphicsView::mouseReleaseEvent(event);
        if (event->button() == Qt::LeftButton)
            setDragMode(NoDrag);
    } else if (drag_->block.isEndedBy(event->button())) {
        endDrag();
    }
}

// ---- Wheel ---------------------------------------------------------------------------------

void PianoRollGridView::wheelEvent(QWheelEvent* event)
{
    const QPoint angle = event->angleDelta();
    const bool ctrl = event->modifiers() & Qt::ControlModifier;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool up = angle.y() > 0;
    if (ctrl && shift)
        emit rowZoomRequested(up ? kWheelZoom : 1.0 / kWheelZoom);
    else if (ctrl)
        emit zoomRequested(up ? kWheelZoom : 1.0 / kWheelZoom);
    else if (shift)
        scrollHorizontally(angle.x() != 0 ? angle.x() : angle.y());
    else if (std::abs(angle.x()) <= std::abs(angle.y()))
        emit rowsTurned(angle.y());
    else
        scrollHorizontally(angle.x());
    event->accept();
}

void PianoRollGridView::scrollHorizontally(int pixels)
{
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - pixels);
}

// ---- Painting ------------------------------------------------------------------------------

void PianoRollGridView::drawBackground(QPainter* painter, const QRectF& rect)
{
    if (const Project* project = notes_->project())
        PianoRollBackdrop::paint(*painter, rect, *project, notes_->subdivisionLevel());
    else
        painter->fillRect(rect, canvasColors().canvasBackground);
}
