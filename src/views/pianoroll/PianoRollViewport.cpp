#include "views/pianoroll/PianoRollViewport.h"

#include <QGraphicsView>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kScrollMs = 140;

} // namespace

PianoRollViewport::PianoRollViewport(QGraphicsView* view) : QObject(view), view_(view)
{
    scrollAnimation_.setDuration(kScrollMs);
    scrollAnimation_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&scrollAnimation_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& y) { view_->verticalScrollBar()->setValue(y.toInt()); });
}

bool PianoRollViewport::containsAnyOf(const QList<NoteEvent>& notes) const
{
    return notes.isEmpty() || std::ranges::any_of(notes, [this](const NoteEvent& note) {
               return contains(note.pitch);
           });
}

void PianoRollViewport::reset()
{
    rows_ = PitchRows();
    zoomX_ = 1.0;
    applyVerticalFit();
}

void PianoRollViewport::showAll(const QList<NoteEvent>& notes)
{
    rows_ = PitchRows::around(notes);
    applyVerticalFit();
}

// ---- Scale ---------------------------------------------------------------------------------

void PianoRollViewport::setScale(double x, double y, double anchor)
{
    zoomX_ = x;
    zoomY_ = y;
    Zoom::set(*view_, QTransform::fromScale(x, y), anchor);
}

void PianoRollViewport::applyVerticalFit()
{
    const int height = view_->viewport()->height();
    if (height <= 0)
        return;
    const double rows = rows_.count * PianoRollLayout::kRowPixels;
    // The rows change, not the place in the song.
    setScale(zoomX_, height / rows, 0.0);
    scrollToTopPitch(rows_.top, false);
    emit scaled();
}

void PianoRollViewport::zoomHorizontal(double factor, double playheadX, Zoom::By by)
{
    setScale(Zoom::zoomed(zoomX_, factor), zoomY_, Zoom::anchor(*view_, playheadX, by));
    emit scaled();
}

void PianoRollViewport::zoomVertical(double factor)
{
    rows_ = factor > 1.0 ? rows_.withOneFewer() : rows_.withOneMore();
    applyVerticalFit();
}

// ---- Scrolling -----------------------------------------------------------------------------

void PianoRollViewport::scrollToTopPitch(int pitch, bool animated)
{
    rows_ = rows_.withTop(pitch);
    const auto y =
        static_cast<int>(std::lround(PianoRollLayout::pitchToSceneY(rows_.top) * zoomY_));
    QScrollBar* bar = view_->verticalScrollBar();
    scrollAnimation_.stop();
    if (!animated) {
        bar->setValue(y);
        return;
    }
    scrollAnimation_.setStartValue(bar->value());
    scrollAnimation_.setEndValue(y);
    scrollAnimation_.start();
}

void PianoRollViewport::scrollTo(int pitch)
{
    if (!contains(pitch))
        scrollToTopPitch(pitch > rows_.top ? pitch : pitch + rows_.count - 1, false);
}

void PianoRollViewport::scrollNotes(int delta)
{
    scrollToTopPitch(rows_.top + std::clamp(delta, -PitchRows::kMost, PitchRows::kMost), true);
}

void PianoRollViewport::wheelNotes(int angleDelta)
{
    const WheelTurn turn = PianoRollLayout::turned(wheelRemainder_, angleDelta);
    wheelRemainder_ = turn.remainder;
    if (turn.rows != 0)
        scrollNotes(turn.rows);
}
