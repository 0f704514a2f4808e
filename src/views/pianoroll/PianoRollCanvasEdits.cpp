// What the commands of the piano roll do to the notes.

#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "views/AccessibleItems.h"
#include "views/pianoroll/NoteEdits.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QMetaMethod>

#include <algorithm>
#include <numeric>

namespace {

constexpr int kPreviewVelocity = 100;

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
    // What an arrow has done so far belongs to this edit.
    keyRun_.reset();
    if (MelodyBlock* block = activeBlock())
        NoteEdits::finish(*block);
    // Who listens announces the change, and the scene is made anew; without anybody the items would
    // stand for other notes.
    if (isSignalConnected(QMetaMethod::fromSignal(&PianoRollCanvas::edited)))
        emit edited();
    else
        rebuildScene();
}

void PianoRollCanvas::commitSelecting(const QList<NoteEvent>& notes)
{
    commitEdit();
    const MelodyBlock* block = activeBlock();
    scene_->selectNotes(block ? NoteEdits::placesOf(*block, notes) : QList<int>());
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
    commitSelecting(NoteEdits::paste(*block, copyBuffer_, playback_->playheadBeat(), snapBeats()));
    showNotes(scene_->selectedNotes());
}

void PianoRollCanvas::duplicateSelection()
{
    MelodyBlock* block = activeBlock();
    const QList<int> selected = scene_->selectedNotes();
    if (!block || selected.isEmpty())
        return;
    commitSelecting(NoteEdits::duplicate(*block, selected, snapBeats()));
    showNotes(scene_->selectedNotes());
}

bool PianoRollCanvas::can(EditCommand command) const
{
    const MelodyBlock* block = shownBlock();
    switch (command) {
    case EditCommand::Cut:
    case EditCommand::Copy:
    case EditCommand::Duplicate:
        return block && !scene_->selectedNotes().isEmpty();
    case EditCommand::Paste:
        return playback_ && track() && !track()->isAccompaniment && !copyBuffer_.isEmpty();
    case EditCommand::SelectAll:
        break;
    }
    return block && !block->notes.isEmpty();
}

void PianoRollCanvas::perform(EditCommand command)
{
    endDrag();
    switch (command) {
    case EditCommand::Cut:
        copySelection();
        deleteSelectedNotes();
        break;
    case EditCommand::Copy:
        copySelection();
        break;
    case EditCommand::Paste:
        pasteAtPlayhead();
        break;
    case EditCommand::Duplicate:
        duplicateSelection();
        break;
    case EditCommand::SelectAll:
        selectAllNotes();
        break;
    }
}

void PianoRollCanvas::selectAllNotes()
{
    const MelodyBlock* block = shownBlock();
    QList<int> notes(block ? block->notes.size() : 0);
    std::iota(notes.begin(), notes.end(), 0);
    scene_->selectNotes(notes);
    AccessibleItems::tellCurrent(view_);
}

std::optional<int> PianoRollCanvas::writeNote()
{
    endDrag();
    MelodyBlock* block = activeBlock();
    if (!block || !playback_)
        return std::nullopt;
    const double step = snapBeats();
    const int pitch =
        std::clamp(writtenPitch_, PianoRollLayout::kLowestPitch, PianoRollLayout::kHighestPitch);
    NoteEdits::add(*block, NoteEdits::snapped(playback_->playheadBeat(), step), pitch, step);
    const NoteEvent written = block->notes.last();
    const double end = block->startBeat + written.startBeat + written.durationBeats;
    commitSelecting({written});
    showNotes(scene_->selectedNotes());
    if (!playback_->isPlaying())
        placePlayhead(end);
    return pitch;
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
    writtenPitch_ = pitch;
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
