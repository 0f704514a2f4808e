#include "views/pianoroll/PianoRollGridView.h"

#include "model/Track.h"
#include "shell/theme/CanvasColors.h"
#include "views/AccessibleItems.h"
#include "views/RubberBand.h"
#include "views/Zoom.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollBackdrop.h"
#include "views/pianoroll/PianoRollLayout.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <cstdlib>

PianoRollGridView::PianoRollGridView(PianoRollScene* scene, NoteEditor* notes, QWidget* parent)
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
        notes_->endDrag();
    return QGraphicsView::event(event);
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
    notes_->endDrag();
    setDragMode(NoDrag);
    if (event->modifiers() & Qt::ShiftModifier)
        startRubberBand(event);
    else if (NoteItem* note = noteItemAt(place))
        pressOnNote(note, place, event->modifiers());
    else
        pressOnGrid(place);
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
    notes_->take(place, isOnGrip(*note, place));
    AccessibleItems::tellCurrent(this);
}

void PianoRollGridView::pressOnGrid(const QPointF& place)
{
    scene()->clearSelection();
    notes_->draw(place);
}

bool PianoRollGridView::isOnGrip(const NoteItem& note, const QPointF& place) const
{
    return PianoRollLayout::isOnGrip(place.x(), note.rect(), transform().m11());
}

void PianoRollGridView::mouseMoveEvent(QMouseEvent* event)
{
    const QPointF place = mapToScene(event->position().toPoint());
    if (notes_->isDragging()) {
        notes_->dragTo(place, event->buttons());
        return;
    }
    showCursorAt(place);
    QGraphicsView::mouseMoveEvent(event);
}

void PianoRollGridView::showCursorAt(const QPointF& place)
{
    const NoteItem* note = noteItemAt(place);
    viewport()->setCursor(note && isOnGrip(*note, place) ? Qt::SizeHorCursor : Qt::ArrowCursor);
}

void PianoRollGridView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!notes_->isDragging()) {
        QGraphicsView::mouseReleaseEvent(event);
        if (event->button() == Qt::LeftButton)
            setDragMode(NoDrag);
    } else if (notes_->isEndedBy(event->button())) {
        notes_->endDrag();
    }
}

// ---- Wheel ---------------------------------------------------------------------------------

void PianoRollGridView::wheelEvent(QWheelEvent* event)
{
    const QPoint angle = event->angleDelta();
    const bool ctrl = event->modifiers() & Qt::ControlModifier;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    if (ctrl && shift)
        emit rowZoomRequested(Zoom::wheelFactor(angle.y()));
    else if (ctrl)
        emit zoomRequested(Zoom::wheelFactor(angle.y()));
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
