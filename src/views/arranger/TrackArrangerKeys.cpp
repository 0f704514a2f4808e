// What the keys of the arranger do.

#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "views/AccessibleItems.h"
#include "views/ScrollIntoView.h"
#include "views/StepKeys.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerHeaderColumn.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/BlockEditor.h"
#include "views/arranger/TrackArranger.h"

#include <QKeyEvent>

#include <array>

namespace {

/// The pitch class that a letter key names; nothing for other keys.
std::optional<int> pitchClassOfKey(int key)
{
    static constexpr std::array<int, 7> kFromA{9, 11, 0, 2, 4, 5, 7};
    if (key < Qt::Key_A || key > Qt::Key_G)
        return std::nullopt;
    return kFromA.at(static_cast<std::size_t>(key - Qt::Key_A));
}

ChordExtension extensionOf(Qt::KeyboardModifiers modifiers)
{
    if (modifiers & Qt::AltModifier)
        return ChordExtension::Ninth;
    return modifiers & Qt::ControlModifier ? ChordExtension::Seventh : ChordExtension::Triad;
}

} // namespace

bool TrackArranger::event(QEvent* event)
{
    // Alt with a letter would open a menu of the window before it could lay a chord, and the keys
    // of commands that have nothing to act on lay one too.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool laysANinth = key->modifiers() & Qt::AltModifier && pitchClassOfKey(key->key());
        if (project_ && (laysANinth || EditKeys::commandOf(*key))) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void TrackArranger::keyPressEvent(QKeyEvent* event)
{
    if (stepByKey(*event))
        return;
    if (event->isAutoRepeat())
        event->accept();
    else if (!enterByKey(*event) && !deselectByKey(*event) && !deleteByKey(*event) &&
             !commandByKey(*event) && !layChordOfKey(*event))
        QWidget::keyPressEvent(event);
}

bool TrackArranger::stepByKey(const QKeyEvent& event)
{
    if (!project_)
        return false;
    if (const int pages = StepKeys::pageOf(event); pages != 0)
        return movePlayhead(project_->beatsPerBar(), pages);
    if (blocks_->stepClip(event)) {
        view_->tellClip();
        return true;
    }
    const auto arrow = StepKeys::arrowOf(event);
    if (!arrow)
        return false;
    if (arrow->act == ArrowKey::Act::Go || arrow->act == ArrowKey::Act::Extend)
        return goByArrow(*arrow);
    if (arrow->right == 0)
        return false;
    return changeByArrow(event, *arrow) ||
           (arrow->act == ArrowKey::Act::Move && movePlayhead(snapBeats(), arrow->right));
}

/// Whether there is a block that the arrow acts on.
bool TrackArranger::changeByArrow(const QKeyEvent& event, const ArrowKey& arrow)
{
    if (!blocks_->step(event.key(), event.isAutoRepeat(), arrow))
        return false;
    if (const auto block = blocks_->current())
        showBlock(*block);
    return true;
}

bool TrackArranger::goByArrow(const ArrowKey& arrow)
{
    endDrag();
    if (arrow.right != 0)
        goAlongLane(arrow);
    else
        goToLaneBeside(arrow);
    return true;
}

void TrackArranger::goAlongLane(const ArrowKey& arrow)
{
    const auto block = BlockOrder::neighbour(BlockOrder::blocksOf(*project_, keyLane()),
                                             blocks_->current(), arrow.right, placeInSong());
    if (block && arrow.act == ArrowKey::Act::Extend)
        takeAlong(*block);
    else if (block)
        goToBlock(*block);
}

void TrackArranger::goToLaneBeside(const ArrowKey& arrow)
{
    const double beat = placeInSong();
    const LaneInfo* lane = BlockOrder::laneBeside(lanes_, keyLane(), arrow.up);
    if (!lane || BlockOrder::refOf(*lane) == keyLane())
        return;
    const LaneRef ref = BlockOrder::refOf(*lane);
    const bool extends = arrow.act == ArrowKey::Act::Extend;
    showLane(ref);
    if (extends)
        setKeyLane(ref, true);
    else
        goToLane(ref);
    const auto block =
        BlockOrder::neighbour(BlockOrder::blocksOf(*project_, ref), std::nullopt, 0, beat);
    if (!block)
        AccessibleItems::tellCurrent(header_);
    else if (extends)
        takeAlong(*block);
    else
        goToBlock(*block);
}

void TrackArranger::goToLane(const LaneRef& lane)
{
    scene_->clearSelection();
    if (lane.kind != LaneKind::Group)
        pressLane(lane, false);
    setKeyLane(lane, true);
}

/// The lane of the keys is not the selected one where blocks of several were taken along.
bool TrackArranger::areKeysOn(const LaneRef& lane) const
{
    return lane == keyLane() &&
           (lane.kind != LaneKind::NoteTrack || lane.trackIndex == activeTrack());
}

void TrackArranger::goToBlock(const BlockRef& block)
{
    endDrag();
    if (const LaneRef lane = BlockOrder::laneRefOf(block); !areKeysOn(lane))
        goToLane(lane);
    blocks_->select(block);
    showBlock(block);
}

void TrackArranger::takeAlong(const BlockRef& block)
{
    blocks_->add(block);
    showBlock(block);
}

void TrackArranger::showBlock(const BlockRef& block)
{
    const BlockItem* item = scene_->itemOf(block);
    if (!item)
        return;
    ScrollIntoView::horizontally(*view_, item->rect().left(), item->rect().right());
    ScrollIntoView::vertically(*view_, item->rect().top(), item->rect().bottom());
    AccessibleItems::tellCurrent(view_);
}

void TrackArranger::showLane(const LaneRef& lane)
{
    if (const LaneInfo* info = BlockOrder::laneOf(lanes_, lane))
        ScrollIntoView::vertically(*view_, info->top, info->bottom());
}

void TrackArranger::showBeat(double beat)
{
    const double x = beat * ArrangerLayout::kBeatPixels;
    ScrollIntoView::horizontally(*view_, x, x);
}

/// In beats: where the keys are, by what is selected or else by the playhead.
double TrackArranger::placeInSong() const
{
    const auto block = blocks_->current();
    const auto span = block ? BlockOrder::placeOf(*project_, *block) : std::nullopt;
    if (span)
        return span->start;
    return playback_ ? playback_->playheadBeat() : 0.0;
}

bool TrackArranger::movePlayhead(double step, int direction)
{
    if (!playback_)
        return false;
    placePlayhead(StepKeys::stepped(playback_->playheadBeat(), step, direction));
    return true;
}

bool TrackArranger::enterByKey(const QKeyEvent& event)
{
    if (!project_ || !StepKeys::isEnter(event))
        return false;
    endDrag();
    const auto block = blocks_->current();
    if (keyLane().kind == LaneKind::Harmony)
        openHarmonyMenuAtPlayhead();
    else if (keyLane().kind == LaneKind::Group)
        toggleGroup(keyLane().groupKey);
    else if (block && block->kind == BlockKind::Melody)
        emit openMelodyBlock(block->trackIndex, block->blockIndex);
    else
        return false;
    return true;
}

bool TrackArranger::deselectByKey(const QKeyEvent& event)
{
    // During a take the key drops the take.
    if (event.key() != Qt::Key_Escape || scene_->isRecording() || scene_->selectedItems().isEmpty())
        return false;
    endDrag();
    scene_->clearSelection();
    return true;
}

bool TrackArranger::deleteByKey(const QKeyEvent& event)
{
    if (event.key() != Qt::Key_Delete && event.key() != Qt::Key_Backspace)
        return false;
    blocks_->endKeyRun();
    blocks_->removeSelected();
    return true;
}

bool TrackArranger::can(EditCommand command) const
{
    switch (command) {
    case EditCommand::Cut:
    case EditCommand::Copy:
    case EditCommand::Duplicate:
        return project_ && !blocks_->selected().isEmpty();
    case EditCommand::Paste:
        return project_ && blocks_->hasCopies();
    case EditCommand::SelectAll:
        break;
    }
    return project_ && !scene_->blocks().isEmpty();
}

void TrackArranger::perform(EditCommand command)
{
    if (!can(command))
        return;
    endDrag();
    if (command == EditCommand::Copy || command == EditCommand::Cut)
        blocks_->copySelected();
    if (command == EditCommand::Cut)
        blocks_->removeSelected();
    else if (command == EditCommand::Paste)
        blocks_->paste(stepUnderPlayhead(), activeTrack());
    else if (command == EditCommand::Duplicate)
        blocks_->duplicateSelected();
    else if (command == EditCommand::SelectAll)
        blocks_->selectAll(scene_->blocks());
    const auto block = blocks_->current();
    if (block && (command == EditCommand::Paste || command == EditCommand::Duplicate))
        showBlock(*block);
    else if (command == EditCommand::SelectAll)
        AccessibleItems::tellCurrent(view_);
}

bool TrackArranger::commandByKey(const QKeyEvent& event)
{
    const auto command = EditKeys::commandOf(event);
    if (!command || !can(*command))
        return false;
    perform(*command);
    return true;
}

bool TrackArranger::layChordOfKey(const QKeyEvent& event)
{
    const auto letter = pitchClassOfKey(event.key());
    if (!project_ || !letter)
        return false;
    const int pitchClass = (*letter + (event.modifiers() & Qt::ShiftModifier ? 1 : 0)) % 12;
    insertHarmonyAtPlayhead(project_->keySignature.degreeOfPitchClass(pitchClass),
                            extensionOf(event.modifiers()));
    return true;
}

void TrackArranger::keyReleaseEvent(QKeyEvent* event)
{
    if (!event->isAutoRepeat() && blocks_->runningKey() == event->key())
        blocks_->endKeyRun();
    QWidget::keyReleaseEvent(event);
}

void TrackArranger::focusInEvent(QFocusEvent* event)
{
    header_->setHasKeys(true);
    QWidget::focusInEvent(event);
}

void TrackArranger::focusOutEvent(QFocusEvent* event)
{
    // The release of a held key goes to who has the focus now.
    blocks_->endKeyRun();
    header_->setHasKeys(false);
    QWidget::focusOutEvent(event);
}
