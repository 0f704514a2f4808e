// What the commands and the keys of the piano roll do to the notes.

#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "views/pianoroll/NoteEdits.h"
#include "views/pianoroll/PianoKeyboardWidget.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QKeyEvent>
#include <QMetaMethod>

#include <algorithm>
#include <utility>

namespace {

constexpr int kPreviewVelocity = 100;
constexpr int kLowestOctave = 1;
constexpr int kHighestOctave = 7;

} // namespace

// ---- Edits ---------------------------------------------------------------------------------

void PianoRollCanvas::addNoteAt(double beat, int pitch, double duration)
{
    MelodyBlock* block = activeBlock();
    if (!block)
        return;
    NoteEdits::add(*block, beat, pitch, duration);
    rebuildScene();
}

void PianoRollCanvas::commitEdit()
{
    if (MelodyBlock* block = activeBlock())
        NoteEdits::finish(*block);
    // Who listens announces the change, and the scene is made anew; without anybody the items would
    // stand for other notes.
    if (isSignalConnected(QMetaMethod::fromSignal(&PianoRollCanvas::edited)))
        emit edited();
    else
        rebuildScene();
}

void PianoRollCanvas::deleteSelectedNotes()
{
    MelodyBlock* block = activeBlock();
    const QList<int> selected = scene_->selectedNotes();
    if (!block || selected.isEmpty())
        return;
    NoteEdits::remove(*block, selected);
    commitEdit();
}

void PianoRollCanvas::copySelection()
{
    if (const MelodyBlock* block = activeBlock())
        copyBuffer_ = NoteEdits::copied(*block, scene_->selectedNotes());
}

void PianoRollCanvas::pasteAtPlayhead()
{
    MelodyBlock* block = activeBlock();
    if (!block || copyBuffer_.isEmpty() || !playback_)
        return;
    scene_->clearSelection();
    NoteEdits::paste(*block, copyBuffer_, playback_->playheadBeat(), snapBeats());
    commitEdit();
}

void PianoRollCanvas::duplicateSelection()
{
    MelodyBlock* block = activeBlock();
    const QList<int> selected = scene_->selectedNotes();
    if (!block || selected.isEmpty())
        return;
    NoteEdits::duplicate(*block, selected, snapBeats());
    commitEdit();
}

// ---- Live notes ----------------------------------------------------------------------------

int PianoRollCanvas::keyLetterToPitch(int key, bool sharp) const
{
    return NoteEdits::keyLetterToPitch(key, sharp, keyboardOctave_);
}

void PianoRollCanvas::startPreview(int pitch)
{
    if (playback_ && track())
        playback_->previewNoteOn(pitch, track()->instrumentId, kPreviewVelocity);
}

void PianoRollCanvas::endPreview(int pitch)
{
    if (playback_)
        playback_->previewNoteOff(pitch);
}

void PianoRollCanvas::liveNoteOn(int pitch)
{
    if (!playback_ || !track())
        return;
    startPreview(pitch);
    if (playback_->isPlaying() && !liveStarts_.contains(pitch))
        liveStarts_.insert(pitch, NoteEdits::snapped(playback_->playheadBeat(), snapBeats()));
}

void PianoRollCanvas::liveNoteOff(int pitch)
{
    endPreview(pitch);
    const auto start = liveStarts_.constFind(pitch);
    if (start == liveStarts_.constEnd())
        return;
    const double startBeat = *start;
    liveStarts_.erase(start);
    if (!playback_ || !project_)
        return;
    if (MelodyBlock* block = activeBlock())
        NoteEdits::record(*block, pitch, startBeat, playback_->playheadBeat(), snapBeats());
    commitEdit();
}

/// Ends what the mouse and the keys hold, without writing to a project that is being left.
void PianoRollCanvas::forgetGestures()
{
    view_->cancelDrag();
    liveStarts_.clear();
    keyboard_->release();
    endHeldKeys();
}

void PianoRollCanvas::endHeldKeys()
{
    for (const int pitch : std::exchange(heldKeys_, {}))
        liveNoteOff(pitch);
}

// ---- Keys ----------------------------------------------------------------------------------

void PianoRollCanvas::keyPressEvent(QKeyEvent* event)
{
    if (scrollByKey(*event))
        return;
    if (event->isAutoRepeat())
        event->accept();
    else if (!editByKey(*event) && !playByKey(*event))
        QWidget::keyPressEvent(event);
}

bool PianoRollCanvas::scrollByKey(const QKeyEvent& event)
{
    if (event.key() != Qt::Key_Up && event.key() != Qt::Key_Down)
        return false;
    scrollNotes(event.key() == Qt::Key_Up ? 1 : -1);
    return true;
}

bool PianoRollCanvas::editByKey(const QKeyEvent& event)
{
    const bool ctrl = event.modifiers() & Qt::ControlModifier;
    const int key = event.key();
    if (key == Qt::Key_Backspace || key == Qt::Key_Delete)
        deleteSelectedNotes();
    else if (key == Qt::Key_X && !ctrl)
        keyboardOctave_ = std::min(keyboardOctave_ + 1, kHighestOctave);
    else if (key == Qt::Key_Z && !ctrl)
        keyboardOctave_ = std::max(keyboardOctave_ - 1, kLowestOctave);
    else if (key == Qt::Key_C && ctrl)
        copySelection();
    else if (key == Qt::Key_V && ctrl)
        pasteAtPlayhead();
    else if (key == Qt::Key_D && ctrl)
        duplicateSelection();
    else
        return false;
    return true;
}

bool PianoRollCanvas::playByKey(const QKeyEvent& event)
{
    if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier))
        return false;
    const int pitch = keyLetterToPitch(event.key(), event.modifiers() & Qt::ShiftModifier);
    if (pitch == -1 || heldKeys_.contains(event.key()))
        return false;
    heldKeys_.insert(event.key(), pitch);
    liveNoteOn(pitch);
    return true;
}

void PianoRollCanvas::keyReleaseEvent(QKeyEvent* event)
{
    if (event->isAutoRepeat())
        event->accept();
    else if (heldKeys_.contains(event->key()))
        liveNoteOff(heldKeys_.take(event->key()));
    else
        QWidget::keyReleaseEvent(event);
}

void PianoRollCanvas::focusOutEvent(QFocusEvent* event)
{
    // The release of a held key goes to who has the focus now.
    endHeldKeys();
    QWidget::focusOutEvent(event);
}
