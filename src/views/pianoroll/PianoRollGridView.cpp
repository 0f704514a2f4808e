#include "views/pianoroll/PianoRollGridView.h"

#include "shell/theme/CanvasColors.h"
#include "views/pianoroll/PianoRollBackdrop.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QScrollBar>
#include <QWheelEvent>

#include <cstdlib>

namespace {

constexpr double kWheelZoom = 1.15;

} // namespace

PianoRollGridView::PianoRollGridView(PianoRollCanvas* canvas, QWidget* parent)
    : QGraphicsView(parent), canvas_(canvas)
{
    setScene(canvas->scene());
    // The keys beside the grid stand in line with its rows.
    setFrameShape(QFrame::NoFrame);
    setRenderHint(QPainter::Antialiasing, false);
    setTransformationAnchor(AnchorUnderMouse);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setMouseTracking(true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

NoteItem* PianoRollGridView::noteItemAt(const QPointF& place) const
{
    return canvas_->scene()->noteAt(place);
}

double PianoRollGridView::viewportY(double sceneY) const
{
    return viewportTransform().map(QPointF(0.0, sceneY)).y();
}

void PianoRollGridView::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
    canvas_->applyVerticalFit();
}

// ---- Wheel ---------------------------------------------------------------------------------

void PianoRollGridView::wheelEvent(QWheelEvent* event)
{
    const QPoint angle = event->angleDelta();
    const bool ctrl = event->modifiers() & Qt::ControlModifier;
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool up = angle.y() > 0;
    if (ctrl && shift)
        canvas_->zoomVertical(up ? kWheelZoom : 1.0 / kWheelZoom);
    else if (ctrl)
        canvas_->zoomHorizontal(up ? kWheelZoom : 1.0 / kWheelZoom);
    else if (shift)
        scrollHorizontally(angle.x() != 0 ? angle.x() : angle.y());
    else if (std::abs(angle.x()) <= std::abs(angle.y()))
        canvas_->wheelNotes(angle.y());
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
    if (const Project* project = canvas_->project())
        PianoRollBackdrop::paint(*painter, rect, *project, canvas_->subdivisionLevel());
    else
        painter->fillRect(rect, canvasColors().canvasBackground);
}
