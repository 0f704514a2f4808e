// What the keys of the piano roll do.

#include "model/Project.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "views/AccessibleItems.h"
#include "views/ScrollIntoView.h"
#include "views/StepKeys.h"
#include "views/pianoroll/NoteEdits.h"
#include "views/pianoroll/PianoKeyboardWidget.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QKeyEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int kLowestOctave = 1;
constexpr int kHighestOctave = 7;

} // namespace

/// Ends what the mouse and the keys hold, without writing to a project that is being left.
void PianoRollCanvas::forgetGestures()
{
    view_->cancelDrag();
    keyRun_.reset();
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

bool PianoRollCanvas::event(QEvent* event)
{
    // The menu has the same keys for either editor.
    if (event->type() == QEvent::ShortcutOverride &&
        EditKeys::commandOf(*static_cast<QKeyEvent*>(event))) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void PianoRollCanvas::keyPressEvent(QKeyEvent* event)
{
    if (stepByKey(*event))
        return;
    if (event->isAutoRepeat())
        event->accept();
    else if (!writeByKey(*event) && !deselectByKey(*event) && !editByKey(*event) &&
             !playByKey(*event))
        QWidget::keyPressEvent(event);
}

bool PianoRollCanvas::stepByKey(const QKeyEvent& event)
{
    if (const int pages = StepKeys::pageOf(event); pages != 0)
        return project_ && movePlayhead(project_->beatsPerBar(), pages);
    const auto arrow = StepKeys::arrowOf(event);
    if (arrow && changeByArrow(event, *arrow))
        return true;
    if (event.key() == Qt::Key_Up || event.key() == Qt::Key_Down) {
        scrollNotes(event.key() == Qt::Key_Up ? 1 : -1);
        return true;
    }
    if (!arrow || arrow->act == ArrowKey::Act::Stretch)
        return false;
    return arrow->act == ArrowKey::Act::Move ? movePlayhead(snapBeats(), arrow->right)
                                             : goByArrow(*arrow);
}

/// Whether there is anything selected that the arrow acts on.
bool PianoRollCanvas::changeByArrow(const QKeyEvent& event, const ArrowKey& arrow)
{
    const bool stretchesUp = arrow.act == ArrowKey::Act::Stretch && arrow.right == 0;
    const bool goes = arrow.act == ArrowKey::Act::Go || arrow.act == ArrowKey::Act::Extend;
    if (goes || stretchesUp)
        return false;
    const bool goesOn = keyRun_ && keyRun_->key == event.key() && event.isAutoRepeat();
    if (!goesOn) {
        endKeyRun();
        if (scene_->selectedNotes().isEmpty())
            return false;
        endDrag();
        keyRun_ =
            KeyRun{.key = event.key(), .block = RecordDrag(Qt::NoButton, view_->notesOfBlock())};
    }
    changeSelected(arrow);
    return true;
}

void PianoRollCanvas::changeSelected(const ArrowKey& arrow)
{
    MelodyBlock* block = activeBlock();
    const QList<int> selected = scene_->selectedNotes();
    if (!block || selected.isEmpty())
        return;
    const bool takesPlayhead = isPlayheadAtEndOf(selected);
    const double step = snapBeats();
    if (arrow.act == ArrowKey::Act::Stretch)
        NoteEdits::resize(*block, NoteEdits::dragged(*block, selected), arrow.right * step, step);
    else
        NoteEdits::nudge(*block, selected, arrow.right * step, arrow.up);
    if (!keyRun_->block.leave(view_->notesOfBlock()))
        return;
    rebuildScene();
    scene_->selectNotes(selected);
    showNotes(selected);
    if (takesPlayhead)
        takePlayheadAlong(selected);
}

void PianoRollCanvas::endKeyRun()
{
    if (!keyRun_)
        return;
    const KeyRun run = *std::exchange(keyRun_, std::nullopt);
    const MelodyBlock* block = activeBlock();
    if (block && run.block.isEdit(block->notes))
        commitSelecting(NoteEdits::notesAt(*block, scene_->selectedNotes()));
}

bool PianoRollCanvas::goByArrow(const ArrowKey& arrow)
{
    const MelodyBlock* block = activeBlock();
    if (!block)
        return false;
    const double playhead = playback_ ? playback_->playheadBeat() : 0.0;
    const int note = NoteEdits::neighbour(*block, scene_->selectedNotes(), arrow.right,
                                          playhead - block->startBeat);
    if (note < 0)
        return false;
    if (arrow.act == ArrowKey::Act::Extend)
        takeNoteAlong(note);
    else
        goToNote(note);
    return true;
}

void PianoRollCanvas::goToNote(int index)
{
    endDrag();
    currentNote_ = index;
    scene_->selectNotes({index});
    showNotes({index});
}

void PianoRollCanvas::takeNoteAlong(int index)
{
    endDrag();
    currentNote_ = index;
    scene_->selectNotes(scene_->selectedNotes() << index);
    showNotes({index});
}

bool PianoRollCanvas::movePlayhead(double step, int direction)
{
    if (!playback_)
        return false;
    placePlayhead(StepKeys::stepped(playback_->playheadBeat(), step, direction));
    return true;
}

/// Who writes by key goes on behind what was written.
bool PianoRollCanvas::isPlayheadAtEndOf(const QList<int>& notes)
{
    const auto end = NoteEdits::endOf(*activeBlock(), notes);
    return playback_ && !playback_->isPlaying() && end &&
           std::abs(playback_->playheadBeat() - *end) < kBeatEpsilon;
}

void PianoRollCanvas::takePlayheadAlong(const QList<int>& notes)
{
    if (const auto end = NoteEdits::endOf(*activeBlock(), notes))
        placePlayhead(*end);
}

/// The rows by no more than it takes to show the first of them.
void PianoRollCanvas::showNotes(const QList<int>& indices)
{
    const MelodyBlock* block = activeBlock();
    if (!block || indices.isEmpty())
        return;
    const NoteEvent& note = block->notes.at(indices.first());
    if (const auto rect = PianoRollLayout::noteRect(*block, note))
        ScrollIntoView::horizontally(*view_, rect->left(), rect->right());
    if (!rows_.contains(note.pitch))
        scrollToTopPitch(note.pitch > rows_.top ? note.pitch : note.pitch + rows_.count - 1, false);
    AccessibleItems::tellCurrent(view_);
}

bool PianoRollCanvas::writeByKey(const QKeyEvent& event)
{
    if (!StepKeys::isEnter(event))
        return false;
    const auto pitch = writeNote();
    if (!pitch)
        return false;
    // It sounds for as long as the key is held.
    heldKeys_.insert(event.key(), *pitch);
    startPreview(*pitch);
    return true;
}

bool PianoRollCanvas::deselectByKey(const QKeyEvent& event)
{
    // During a take the key drops the take.
    if (event.key() != Qt::Key_Escape || scene_->isRecording() || scene_->selectedItems().isEmpty())
        return false;
    endDrag();
    scene_->clearSelection();
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
    else if (const auto command = EditKeys::commandOf(event))
        perform(*command);
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
    if (!event->isAutoRepeat() && keyRun_ && keyRun_->key == event->key())
        endKeyRun();
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
    endKeyRun();
    QWidget::focusOutEvent(event);
}
