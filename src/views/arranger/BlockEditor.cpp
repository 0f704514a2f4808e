#include "views/arranger/BlockEditor.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "views/StepKeys.h"
#include "views/arranger/ArrangerLayout.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/ClipGestures.h"

#include <algorithm>
#include <cmath>
#include <utility>

BlockEditor::BlockEditor(ArrangerScene* scene, QObject* parent)
    : QObject(parent), scene_(scene), clips_(new ClipGestures(scene, this))
{
    connect(clips_, &ClipGestures::changed, this, &BlockEditor::changed);
    connect(clips_, &ClipGestures::ended, this, &BlockEditor::dragEnded);
    connect(clips_, &ClipGestures::edited, this, &BlockEditor::edited);
}

void BlockEditor::setContext(Project* project, const LoopLibrary* library)
{
    forgetGestures();
    if (project_ != project)
        copies_.forgetVoices();
    project_ = project;
    clips_->setProject(project);
    library_ = library;
}

double BlockEditor::snapBeats() const
{
    return project_ ? ArrangerLayout::snapBeats(project_->timeSignature) : 1.0;
}

// ---- Selection -----------------------------------------------------------------------------

QList<BlockRef> BlockEditor::selected() const
{
    return scene_->selectedBlocks();
}

std::optional<BlockRef> BlockEditor::current() const
{
    const QList<BlockRef> blocks = selected();
    if (blocks.isEmpty())
        return std::nullopt;
    return blocks.contains(current_) ? current_ : blocks.first();
}

void BlockEditor::select(const BlockRef& block)
{
    current_ = block;
    selectAll({block});
}

void BlockEditor::selectAll(const QList<BlockRef>& blocks)
{
    scene_->selectBlocks(blocks);
}

void BlockEditor::add(const BlockRef& block)
{
    current_ = block;
    selectAll(selected() << block);
}

// ---- Drags ---------------------------------------------------------------------------------

void BlockEditor::take(const BlockRef& block, Press press, bool byTheEnd, double sceneX)
{
    Click click = Click::Nothing;
    const bool isSelected = selected().contains(block);
    if (isSelected)
        click = press == Press::Additive ? Click::Deselected : Click::Alone;
    else if (press == Press::Additive)
        add(block);
    else
        select(block);
    current_ = block;
    const HeldBlocks held(*project_, selected());
    drag_ = Drag{.block = block,
                 .byTheEnd = byTheEnd,
                 .startX = sceneX,
                 .click = click,
                 .held = held,
                 .records = Records(Qt::LeftButton, held.record(*project_))};
}

void BlockEditor::dragTo(double sceneX, Qt::MouseButtons buttons, bool copying)
{
    switch (drag_->records.move(buttons, drag_->held.record(*project_))) {
    case Records::Move::Follow:
        break;
    case Records::Move::Finish:
        endDrag();
        return;
    case Records::Move::Drop:
        cancelDrag();
        return;
    }
    using Act = HeldBlocks::Act;
    const Act unstretched = copying ? Act::Copy : Act::Move;
    const double step = snapBeats();
    drag_->held.set(*project_, drag_->byTheEnd ? Act::Stretch : unstretched,
                    BlockEdits::wayOver(sceneX - drag_->startX, step), step);
    if (!drag_->records.leave(drag_->held.record(*project_)))
        return;
    showAnew(drag_->held.blocks());
    if (selected().isEmpty())
        cancelDrag();
}

bool BlockEditor::isEndedBy(Qt::MouseButton button) const
{
    return drag_ && drag_->records.isEndedBy(button);
}

void BlockEditor::release()
{
    if (!drag_)
        return;
    const BlockRef block = drag_->block;
    const Click click = drag_->click;
    if (endDrag())
        return;
    if (click == Click::Alone) {
        select(block);
    } else if (click == Click::Deselected) {
        QList<BlockRef> others = selected();
        others.removeAll(block);
        selectAll(others);
    }
}

bool BlockEditor::endDrag()
{
    clips_->end();
    if (!drag_)
        return false;
    const bool isEdit = drag_->records.isEdit(drag_->held.record(*project_));
    const auto present = isEdit ? drag_->held.settle(*project_) : std::nullopt;
    const QList<BlockRef> blocks = drag_->held.blocks();
    cancelDrag();
    if (!isEdit)
        return false;
    if (present) {
        showAnew(blocks);
        emit alreadyThere(*present);
        return true;
    }
    emit edited();
    selectAll(blocks);
    return true;
}

void BlockEditor::cancelDrag()
{
    if (!drag_)
        return;
    drag_.reset();
    emit dragEnded();
}

void BlockEditor::showAnew(const QList<BlockRef>& blocks)
{
    emit changed();
    selectAll(blocks);
}

// ---- Keys ----------------------------------------------------------------------------------

bool BlockEditor::step(int key, bool heldOn, const ArrowKey& arrow)
{
    if (!heldOn || !keyRun_ || keyRun_->key != key || !ownsRun()) {
        endDrag();
        endKeyRun();
        const QList<BlockRef> blocks = selected();
        if (!project_ || blocks.isEmpty())
            return false;
        const HeldBlocks held(*project_, blocks);
        keyRun_ = KeyRun{
            .key = key, .held = held, .records = Records(Qt::NoButton, held.record(*project_))};
    }
    const auto act =
        arrow.act == ArrowKey::Act::Stretch ? HeldBlocks::Act::Stretch : HeldBlocks::Act::Move;
    stepOn(act, arrow.right * snapBeats());
    if (keyRun_->records.leave(keyRun_->held.record(*project_)))
        showAnew(keyRun_->held.blocks());
    return true;
}

void BlockEditor::stepOn(HeldBlocks::Act act, double way)
{
    HeldBlocks& held = keyRun_->held;
    const double step = snapBeats();
    const double former = held.way();
    held.set(*project_, act, former + way, step);
    if (const auto present = held.present(*project_))
        emit alreadyThere(*present);
    while (held.present(*project_)) {
        const HeldBlocks::Record reached = held.record(*project_);
        held.set(*project_, act, held.way() + way, step);
        // Neither start of the song nor shortest length lets them pass.
        if (held.record(*project_) == reached)
            held.set(*project_, act, former, step);
    }
}

bool BlockEditor::ownsRun() const
{
    return keyRun_->records.move({}, keyRun_->held.record(*project_)) != Records::Move::Drop;
}

bool BlockEditor::stepClip(const QKeyEvent& event)
{
    if (!clips_->acts(event))
        return false;
    if (!clips_->goesOn(event)) {
        endDrag();
        endKeyRun();
    }
    return clips_->step(event);
}

std::optional<int> BlockEditor::runningKey() const
{
    return keyRun_ ? std::optional(keyRun_->key) : clips_->runningKey();
}

void BlockEditor::endKeyRun()
{
    clips_->end();
    if (!keyRun_)
        return;
    const KeyRun run = *std::exchange(keyRun_, std::nullopt);
    if (!project_ || !run.records.isEdit(run.held.record(*project_)))
        return;
    const QList<BlockRef> blocks = selected();
    emit edited();
    selectAll(blocks);
}

// ---- Edits ---------------------------------------------------------------------------------

void BlockEditor::forgetGestures()
{
    clips_->cancel();
    cancelDrag();
    keyRun_.reset();
}

void BlockEditor::remove(const BlockRef& block)
{
    if (!project_)
        return;
    // What is held is known by an index, which may be another block's from here on.
    forgetGestures();
    BlockEdits::remove(*project_, block);
    emit edited();
}

void BlockEditor::removeSelected()
{
    const QList<BlockRef> blocks = selected();
    if (!project_ || blocks.isEmpty())
        return;
    forgetGestures();
    BlockEdits::removeAll(*project_, blocks);
    emit edited();
}

void BlockEditor::copySelected()
{
    const QList<BlockRef> blocks = selected();
    if (project_ && !blocks.isEmpty())
        copies_ = BlockCopies(*project_, blocks);
}

void BlockEditor::paste(double beat, int melodyTrack)
{
    if (project_ && hasCopies())
        lay(copies_, beat, melodyTrack);
}

void BlockEditor::duplicateSelected()
{
    const QList<BlockRef> blocks = selected();
    if (!project_ || blocks.isEmpty())
        return;
    const BlockCopies copies(*project_, blocks);
    const double step = snapBeats();
    const double steps = std::max(1.0, std::ceil((copies.span().length - kBeatEpsilon) / step));
    lay(copies, copies.span().start + steps * step, -1);
}

void BlockEditor::lay(const BlockCopies& copies, double beat, int melodyTrack)
{
    forgetGestures();
    const BlockCopies::Laid laid = copies.layAt(*project_, beat, melodyTrack);
    if (!laid.blocks.isEmpty()) {
        emit edited();
        current_ = laid.blocks.first();
        selectAll(laid.blocks);
    }
    if (laid.homeless > 0)
        emit tracksExhausted();
    else if (laid.blocks.isEmpty() && !laid.present.isEmpty())
        emit alreadyThere(laid.present.first());
}
