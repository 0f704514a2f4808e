#include "views/pianoroll/NoteEditor.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "views/StepKeys.h"
#include "views/pianoroll/PianoRollLayout.h"
#include "views/pianoroll/PianoRollScene.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace {

constexpr double kSnapWithoutProject = 0.5;

} // namespace

NoteEditor::NoteEditor(PianoRollScene* scene, QObject* parent) : QObject(parent), scene_(scene)
{}

void NoteEditor::setContext(Project* project, PlaybackEngine* playback)
{
    cancelDrag();
    keyRun_.reset();
    open_ = OpenMelody::firstOf(project);
    playback_ = playback;
}

void NoteEditor::setBlock(int track, int block)
{
    endGestures();
    open_.trackIndex = track;
    open_.blockIndex = block;
}

double NoteEditor::snapBeats() const
{
    return project() ? PianoRollLayout::snapBeats(project()->timeSignature, subdivisionLevel_)
                     : kSnapWithoutProject;
}

NoteEditor::Notes NoteEditor::notesOfBlock() const
{
    const MelodyBlock* block = activeBlock();
    return block ? Notes(block->notes) : std::nullopt;
}

// ---- Selection -----------------------------------------------------------------------------

int NoteEditor::currentNote() const
{
    const QList<int> selected = scene_->selectedNotes();
    return selected.contains(currentNote_) ? currentNote_ : selected.value(0, -1);
}

void NoteEditor::goToNote(int index)
{
    endGestures();
    currentNote_ = index;
    scene_->selectNotes({index});
    emit reached({index});
}

void NoteEditor::takeNoteAlong(int index)
{
    endGestures();
    currentNote_ = index;
    scene_->selectNotes(scene_->selectedNotes() << index);
    emit reached({index});
}

void NoteEditor::selectAllNotes()
{
    const MelodyBlock* block = open_.block();
    QList<int> notes(block ? block->notes.size() : 0);
    std::iota(notes.begin(), notes.end(), 0);
    scene_->selectNotes(notes);
    emit allSelected();
}

// ---- Drags ---------------------------------------------------------------------------------

void NoteEditor::take(const QPointF& place, bool byTheEnd)
{
    drag_ = Drag{.mode = byTheEnd ? DragMode::Resize : DragMode::Move,
                 .start = place,
                 .notes = NoteEdits::dragged(*activeBlock(), scene_->selectedNotes()),
                 .block = RecordDrag(Qt::LeftButton, notesOfBlock())};
}

void NoteEditor::draw(const QPointF& place)
{
    const double step = snapBeats();
    const int pitch = PianoRollLayout::sceneYToPitch(place.y());
    const double beat = std::floor(place.x() / PianoRollLayout::kBeatPixels / step) * step;
    if (pitch == -1 || beat < 0.0)
        return;
    addNoteAt(beat, pitch, step);
    drag_ = Drag{.mode = DragMode::Draw,
                 .start = place,
                 .drawBeat = beat,
                 .drawPitch = pitch,
                 .drawIndex = static_cast<int>(activeBlock()->notes.size()) - 1,
                 .block = RecordDrag(Qt::LeftButton, notesOfBlock(), true)};
    emit drawingBegun(pitch);
}

void NoteEditor::dragTo(const QPointF& place, Qt::MouseButtons buttons)
{
    using Move = RecordDrag<Notes>::Move;
    switch (drag_->block.move(buttons, notesOfBlock())) {
    case Move::Follow:
        follow(place);
        break;
    case Move::Finish:
        endDrag();
        break;
    case Move::Drop:
        cancelDrag();
        break;
    }
}

void NoteEditor::follow(const QPointF& place)
{
    if (MelodyBlock* block = activeBlock())
        apply(*block, place);
    if (drag_->block.leave(notesOfBlock()))
        emit changed();
}

void NoteEditor::apply(MelodyBlock& block, const QPointF& place) const
{
    const double step = snapBeats();
    const QPointF way = place - drag_->start;
    const double beats = NoteEdits::snapped(way.x() / PianoRollLayout::kBeatPixels, step);
    if (drag_->mode == DragMode::Move) {
        NoteEdits::move(block, drag_->notes, beats, -PianoRollLayout::rowsIn(way.y()));
    } else if (drag_->mode == DragMode::Resize) {
        NoteEdits::resize(block, drag_->notes, beats, step);
    } else if (drag_->drawIndex < block.notes.size()) {
        block.notes[drag_->drawIndex].durationBeats =
            NoteEdits::drawnLength(drag_->drawBeat, place.x() / PianoRollLayout::kBeatPixels, step);
    }
}

bool NoteEditor::isEndedBy(Qt::MouseButton button) const
{
    return drag_ && drag_->block.isEndedBy(button);
}

void NoteEditor::endDrag()
{
    if (!drag_)
        return;
    const bool isEdit = drag_->block.isEdit(notesOfBlock());
    cancelDrag();
    if (isEdit)
        commitEdit();
}

void NoteEditor::cancelDrag()
{
    if (!drag_)
        return;
    // Before anybody hears of it, who may look at the notes.
    const Drag drag = *std::exchange(drag_, std::nullopt);
    if (drag.mode == DragMode::Draw)
        emit drawingEnded(drag.drawPitch);
    emit dragEnded();
}

void NoteEditor::endGestures()
{
    endDrag();
    endKeyRun();
}

// ---- Keys ----------------------------------------------------------------------------------

bool NoteEditor::step(int key, bool heldOn, const ArrowKey& arrow)
{
    if (!heldOn || runningKey() != key) {
        endKeyRun();
        if (scene_->selectedNotes().isEmpty())
            return false;
        endDrag();
        keyRun_ = KeyRun{.key = key, .block = RecordDrag(Qt::NoButton, notesOfBlock())};
    }
    changeSelected(arrow);
    return true;
}

void NoteEditor::changeSelected(const ArrowKey& arrow)
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
    if (!keyRun_->block.leave(notesOfBlock()))
        return;
    emit changed();
    scene_->selectNotes(selected);
    emit reached(selected);
    if (takesPlayhead)
        takePlayheadAlong(selected);
}

bool NoteEditor::go(const ArrowKey& arrow)
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

std::optional<int> NoteEditor::runningKey() const
{
    return keyRun_ ? std::optional(keyRun_->key) : std::nullopt;
}

void NoteEditor::endKeyRun()
{
    if (!keyRun_)
        return;
    const KeyRun run = *std::exchange(keyRun_, std::nullopt);
    const MelodyBlock* block = activeBlock();
    if (block && run.block.isEdit(block->notes))
        commitSelecting(NoteEdits::notesAt(*block, scene_->selectedNotes()));
}

/// Who writes by key goes on behind what was written.
bool NoteEditor::isPlayheadAtEndOf(const QList<int>& notes) const
{
    const auto end = NoteEdits::endOf(*activeBlock(), notes);
    return playback_ && !playback_->isPlaying() && end &&
           std::abs(playback_->playheadBeat() - *end) < kBeatEpsilon;
}

void NoteEditor::takePlayheadAlong(const QList<int>& notes)
{
    if (const auto end = NoteEdits::endOf(*activeBlock(), notes))
        emit playheadRequested(*end);
}

// ---- Edits ---------------------------------------------------------------------------------

void NoteEditor::addNoteAt(double beat, int pitch, double duration)
{
    MelodyBlock* block = activeBlock();
    if (!block)
        return;
    NoteEdits::add(*block, beat, pitch, duration);
    emit changed();
}

void NoteEditor::commitEdit()
{
    // What an arrow has done so far belongs to this edit.
    keyRun_.reset();
    if (MelodyBlock* block = activeBlock())
        NoteEdits::finish(*block);
    emit edited();
}

/// Selects some notes of the block besides, by their values.
void NoteEditor::commitSelecting(const QList<NoteEvent>& notes)
{
    commitEdit();
    const MelodyBlock* block = activeBlock();
    scene_->selectNotes(block ? NoteEdits::placesOf(*block, notes) : QList<int>());
}

void NoteEditor::deleteSelectedNotes()
{
    MelodyBlock* block = activeBlock();
    const QList<int> selected = scene_->selectedNotes();
    if (!block || selected.isEmpty())
        return;
    NoteEdits::remove(*block, selected);
    commitEdit();
}

std::optional<int> NoteEditor::writeNote(int pitch)
{
    endGestures();
    MelodyBlock* block = activeBlock();
    if (!block || !playback_)
        return std::nullopt;
    const double step = snapBeats();
    const int row =
        std::clamp(pitch, PianoRollLayout::kLowestPitch, PianoRollLayout::kHighestPitch);
    NoteEdits::add(*block, NoteEdits::snapped(playback_->playheadBeat(), step), row, step);
    const NoteEvent written = block->notes.last();
    const double end = block->startBeat + written.endBeat();
    commitSelecting({written});
    emit reached(scene_->selectedNotes());
    if (!playback_->isPlaying())
        emit playheadRequested(end);
    return row;
}

void NoteEditor::recordNote(int pitch, double startBeat, double endBeat)
{
    if (MelodyBlock* block = activeBlock())
        NoteEdits::record(*block, pitch, startBeat, endBeat, snapBeats());
    commitEdit();
}

bool NoteEditor::can(EditCommand command) const
{
    const MelodyBlock* block = open_.block();
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

void NoteEditor::perform(EditCommand command)
{
    endGestures();
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

void NoteEditor::copySelection()
{
    if (const MelodyBlock* block = activeBlock())
        copyBuffer_ = NoteEdits::copied(*block, scene_->selectedNotes());
}

void NoteEditor::pasteAtPlayhead()
{
    MelodyBlock* block = activeBlock();
    if (!block || copyBuffer_.isEmpty() || !playback_)
        return;
    commitSelecting(NoteEdits::paste(*block, copyBuffer_, playback_->playheadBeat(), snapBeats()));
    emit reached(scene_->selectedNotes());
}

void NoteEditor::duplicateSelection()
{
    MelodyBlock* block = activeBlock();
    const QList<int> selected = scene_->selectedNotes();
    if (!block || selected.isEmpty())
        return;
    commitSelecting(NoteEdits::duplicate(*block, selected, snapBeats()));
    emit reached(scene_->selectedNotes());
}
