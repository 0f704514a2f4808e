// Which rows of the piano roll are seen, and at which scale.

#include "model/Track.h"
#include "playback/PlaybackEngine.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"

#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kLeastZoom = 0.2;
constexpr double kMostZoom = 6.0;

} // namespace

bool PianoRollCanvas::melodyVisible()
{
    const MelodyBlock* block = activeBlock();
    return !block || block->notes.isEmpty() ||
           std::ranges::any_of(
               block->notes, [this](const NoteEvent& note) { return rows_.contains(note.pitch); });
}

void PianoRollCanvas::showWholeMelody()
{
    const MelodyBlock* block = activeBlock();
    rows_ = block ? PitchRows::around(block->notes) : PitchRows();
    applyVerticalFit();
}

void PianoRollCanvas::applyVerticalFit()
{
    const int height = view_->viewport()->height();
    if (height <= 0)
        return;
    zoomY_ = static_cast<double>(height) / (rows_.count * PianoRollLayout::kRowPixels);
    // The rows change, not the place in the song.
    const int x = view_->horizontalScrollBar()->value();
    view_->setTransform(QTransform::fromScale(zoomX_, zoomY_));
    view_->horizontalScrollBar()->setValue(x);
    scrollToTopPitch(rows_.top, false);
    syncRulerAndKeyboard();
}

void PianoRollCanvas::zoomHorizontal(double factor, Zoom::By by)
{
    const double zoom = zoomX_ * factor;
    if (std::isnan(zoom))
        return;
    zoomX_ = std::clamp(zoom, kLeastZoom, kMostZoom);
    const double playhead = playback_ ? playback_->playheadBeat() : 0.0;
    Zoom::set(*view_, QTransform::fromScale(zoomX_, zoomY_),
              playhead * PianoRollLayout::kBeatPixels, by);
    syncRulerAndKeyboard();
}

void PianoRollCanvas::zoomVertical(double factor)
{
    rows_ = factor > 1.0 ? rows_.withOneFewer() : rows_.withOneMore();
    applyVerticalFit();
}

void PianoRollCanvas::scrollToTopPitch(int pitch, bool animated)
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

void PianoRollCanvas::scrollNotes(int delta)
{
    scrollToTopPitch(rows_.top + std::clamp(delta, -PitchRows::kMost, PitchRows::kMost), true);
}

void PianoRollCanvas::wheelNotes(int angleDelta)
{
    const WheelTurn turn = PianoRollLayout::turned(wheelRemainder_, angleDelta);
    wheelRemainder_ = turn.remainder;
    if (turn.rows != 0)
        scrollNotes(turn.rows);
}
