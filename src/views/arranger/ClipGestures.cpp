#include "views/arranger/ClipGestures.h"

#include "views/arranger/ArrangerScene.h"
#include "views/arranger/AudioClipItem.h"
#include "views/arranger/ClipWords.h"

#include <QKeyEvent>

#include <cmath>
#include <utility>

namespace {

/// Pixels of the screen after which one sees which way a mouse goes.
constexpr double kWay = 3.0;

/// What a key does to a clip: which of its levels, and how many steps up.
struct ClipKey {
    ClipHandle handle;
    int steps;
};

std::optional<ClipKey> clipKeyOf(const QKeyEvent& event)
{
    const Qt::KeyboardModifiers held =
        event.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier);
    const int up = event.key() == Qt::Key_Up ? 1 : event.key() == Qt::Key_Down ? -1 : 0;
    const int right = event.key() == Qt::Key_Right ? 1 : event.key() == Qt::Key_Left ? -1 : 0;
    if (up != 0 && held == Qt::NoModifier)
        return ClipKey{ClipHandle::Gain, up};
    if (right != 0 && held == Qt::AltModifier)
        return ClipKey{ClipHandle::FadeIn, right};
    // Desktops keep most other keys with arrows for themselves.
    if (up != 0 && held == Qt::AltModifier)
        return ClipKey{ClipHandle::FadeOut, up};
    return std::nullopt;
}

} // namespace

ClipGestures::ClipGestures(ArrangerScene* scene, QObject* parent) : QObject(parent), scene_(scene)
{}

std::optional<ClipLevels> ClipGestures::levelsOf(const BlockRef& block) const
{
    return project_ ? ClipEdits::levelsOf(*project_, block) : std::nullopt;
}

QList<std::optional<ClipLevels>> ClipGestures::levelsOf(const QList<BlockRef>& clips) const
{
    QList<std::optional<ClipLevels>> levels;
    for (const BlockRef& clip : clips)
        levels.append(levelsOf(clip));
    return levels;
}

const AudioClipItem* ClipGestures::itemOf(const BlockRef& block) const
{
    return dynamic_cast<const AudioClipItem*>(scene_->itemOf(block));
}

// ---- Mouse ---------------------------------------------------------------------------------

std::optional<ClipHandle> ClipGestures::handleAt(const QPointF& place, double scale) const
{
    const auto* item = dynamic_cast<const AudioClipItem*>(scene_->blockAt(place));
    if (!item)
        return std::nullopt;
    const auto handle = item->clip().handleAt(place, scale);
    // The end of the block is where it is stretched, all the way down from the handle of its fade.
    const bool grip = ArrangerLayout::isOnGrip(place.x(), item->rect(), scale);
    return handle == ClipHandle::Gain && grip ? std::nullopt : handle;
}

bool ClipGestures::press(const QPointF& place, double scale)
{
    const auto handle = handleAt(place, scale);
    if (!handle)
        return false;
    const BlockRef block = scene_->blockAt(place)->block();
    const QList<BlockRef> clips{block};
    held_ = Held{{clips, *handle, Levels(Qt::LeftButton, levelsOf(clips))}, place, false};
    if (!scene_->selectedBlocks().contains(block))
        scene_->selectBlocks({block});
    return true;
}

std::optional<QPointF> ClipGestures::move(const QPointF& place, Qt::MouseButtons buttons,
                                          double scale)
{
    switch (held_->levels.move(buttons, levelsOf(held_->clips))) {
    case Levels::Move::Finish:
        end();
        return std::nullopt;
    case Levels::Move::Drop:
        cancel();
        return std::nullopt;
    case Levels::Move::Follow:
        break;
    }
    const QPointF way((place.x() - held_->press.x()) * scale, place.y() - held_->press.y());
    if (!held_->follows) {
        if (way.manhattanLength() < kWay)
            return std::nullopt;
        if (held_->handle == ClipHandle::Gain && std::abs(way.x()) > std::abs(way.y()))
            return std::exchange(held_, std::nullopt)->press;
    }
    held_->follows = true;
    follow(place);
    return std::nullopt;
}

void ClipGestures::follow(const QPointF& place)
{
    const AudioClipItem* item = itemOf(held_->clips.first());
    const auto levels = levelsOf(held_->clips.first());
    if (!item || !levels)
        return cancel();
    const ClipShape shape = item->clip();
    leave(*held_,
          {ClipEdits::with(*levels, held_->handle, valueAt(shape, place), shape.playedSeconds)});
}

/// What is told by the handle, had it been taken in its middle.
double ClipGestures::valueAt(const ClipShape& shape, const QPointF& place) const
{
    ClipShape before = shape;
    before.levels = *held_->levels.original().first();
    const QPointF way = place - held_->press;
    switch (held_->handle) {
    case ClipHandle::FadeIn:
        return shape.fadeInAt(before.fadeInX() + way.x());
    case ClipHandle::FadeOut:
        return shape.fadeOutAt(before.fadeOutX() + way.x());
    case ClipHandle::Gain:
        break;
    }
    return shape.gainAt(before.gainY(before.levels.gain) + way.y());
}

void ClipGestures::release()
{
    const bool isClick = held_ && !held_->follows;
    const QList<BlockRef> clips = held_ ? held_->clips : QList<BlockRef>();
    end();
    if (isClick)
        scene_->selectBlocks(clips);
}

// ---- Keys ----------------------------------------------------------------------------------

bool ClipGestures::acts(const QKeyEvent& event) const
{
    return clipKeyOf(event) && !selectedClips().isEmpty();
}

bool ClipGestures::goesOn(const QKeyEvent& event) const
{
    return run_ && run_->key == event.key() && event.isAutoRepeat();
}

QList<BlockRef> ClipGestures::selectedClips() const
{
    QList<BlockRef> clips = scene_->selectedBlocks();
    clips.removeIf([this](const BlockRef& block) { return !itemOf(block) || !levelsOf(block); });
    return clips;
}

bool ClipGestures::step(const QKeyEvent& event)
{
    const auto key = clipKeyOf(event);
    const QList<BlockRef> clips = goesOn(event) ? run_->clips : selectedClips();
    if (!key || clips.isEmpty())
        return false;
    if (!goesOn(event))
        run_ = KeyRun{{clips, key->handle, Levels(Qt::NoButton, levelsOf(clips))}, event.key()};
    stepOn(*run_, key->steps);
    return true;
}

/// Each of the clips from where it is, as far as there is room.
void ClipGestures::stepOn(Gesture& gesture, int steps)
{
    QList<std::optional<ClipLevels>> levels = levelsOf(gesture.clips);
    for (qsizetype i = 0; i < levels.size(); ++i) {
        if (const AudioClipItem* item = itemOf(gesture.clips.at(i)); item && levels.at(i))
            levels[i] = ClipEdits::stepped(*levels.at(i), gesture.handle, steps,
                                           item->clip().playedSeconds);
    }
    leave(gesture, levels);
}

std::optional<int> ClipGestures::runningKey() const
{
    return run_ ? std::optional(run_->key) : std::nullopt;
}

// ---- Both ----------------------------------------------------------------------------------

QString ClipGestures::words(const std::optional<BlockRef>& clip) const
{
    const Gesture* gesture = run_                      ? static_cast<const Gesture*>(&*run_)
                             : held_ && held_->follows ? static_cast<const Gesture*>(&*held_)
                                                       : nullptr;
    if (!gesture)
        return {};
    const bool has = clip && gesture->clips.contains(*clip);
    const auto levels = levelsOf(has ? *clip : gesture->clips.first());
    return levels ? ClipWords::level(*levels, gesture->handle) : QString();
}

void ClipGestures::leave(Gesture& gesture, const QList<std::optional<ClipLevels>>& levels)
{
    if (!gesture.levels.leave(levels))
        return;
    for (qsizetype i = 0; i < levels.size(); ++i) {
        if (levels.at(i))
            ClipEdits::setLevels(*project_, gesture.clips.at(i), *levels.at(i));
    }
    const QList<BlockRef> selected = scene_->selectedBlocks();
    emit changed();
    scene_->selectBlocks(selected);
}

void ClipGestures::end()
{
    if (held_)
        commit(*std::exchange(held_, std::nullopt));
    if (run_)
        commit(*std::exchange(run_, std::nullopt));
}

void ClipGestures::commit(const Gesture& gesture)
{
    emit ended();
    if (!gesture.levels.isEdit(levelsOf(gesture.clips)))
        return;
    const QList<BlockRef> selected = scene_->selectedBlocks();
    emit edited();
    scene_->selectBlocks(selected);
}

void ClipGestures::cancel()
{
    held_.reset();
    run_.reset();
}
