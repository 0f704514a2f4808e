// What the keys of the piano roll do.

#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "views/StepKeys.h"
#include "views/pianoroll/LiveNotes.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollScene.h"
#include "views/pianoroll/PianoRollViewport.h"

#include <QKeyEvent>

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
        return notes_->project() && movePlayhead(notes_->project()->beatsPerBar(), pages);
    const auto arrow = StepKeys::arrowOf(event);
    if (arrow && changeByArrow(event, *arrow))
        return true;
    if (event.key() == Qt::Key_Up || event.key() == Qt::Key_Down) {
        rows_->scrollNotes(event.key() == Qt::Key_Up ? 1 : -1);
        return true;
    }
    if (!arrow || arrow->act == ArrowKey::Act::Stretch)
        return false;
    return arrow->act == ArrowKey::Act::Move ? movePlayhead(notes_->snapBeats(), arrow->right)
                                             : notes_->go(*arrow);
}

/// Whether there is anything selected that the arrow acts on.
bool PianoRollCanvas::changeByArrow(const QKeyEvent& event, const ArrowKey& arrow)
{
    const bool stretchesUp = arrow.act == ArrowKey::Act::Stretch && arrow.right == 0;
    const bool goes = arrow.act == ArrowKey::Act::Go || arrow.act == ArrowKey::Act::Extend;
    return !goes && !stretchesUp && notes_->step(event.key(), event.isAutoRepeat(), arrow);
}

bool PianoRollCanvas::movePlayhead(double step, int direction)
{
    if (!notes_->playback())
        return false;
    placePlayhead(StepKeys::stepped(notes_->playback()->playheadBeat(), step, direction));
    return true;
}

bool PianoRollCanvas::writeByKey(const QKeyEvent& event)
{
    if (!StepKeys::isEnter(event))
        return false;
    const auto pitch = notes_->writeNote(live_->writtenPitch());
    if (pitch)
        live_->hold(event.key(), *pitch);
    return pitch.has_value();
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
        notes_->deleteSelectedNotes();
    else if (key == Qt::Key_X && !ctrl)
        live_->shiftOctave(1);
    else if (key == Qt::Key_Z && !ctrl)
        live_->shiftOctave(-1);
    else if (const auto command = EditKeys::commandOf(event))
        notes_->perform(*command);
    else
        return false;
    return true;
}

bool PianoRollCanvas::playByKey(const QKeyEvent& event)
{
    return !(event.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) &&
           live_->press(event.key(), event.modifiers() & Qt::ShiftModifier);
}

void PianoRollCanvas::keyReleaseEvent(QKeyEvent* event)
{
    if (!event->isAutoRepeat() && notes_->runningKey() == event->key())
        notes_->endKeyRun();
    if (event->isAutoRepeat())
        event->accept();
    else if (!live_->release(event->key()))
        QWidget::keyReleaseEvent(event);
}

void PianoRollCanvas::focusOutEvent(QFocusEvent* event)
{
    // The release of a held key goes to who has the focus now.
    live_->releaseAll();
    notes_->endKeyRun();
    QWidget::focusOutEvent(event);
}
