#include "views/StepKeys.h"

#include "music/Beats.h"

#include <QKeyEvent>

#include <algorithm>
#include <cmath>

namespace {

/// The arrows of the number pad are arrows.
Qt::KeyboardModifiers modifiersOf(const QKeyEvent& event)
{
    return event.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier);
}

std::optional<ArrowKey::Act> actOf(Qt::KeyboardModifiers modifiers)
{
    if (modifiers == Qt::NoModifier)
        return ArrowKey::Act::Move;
    if (modifiers == Qt::ShiftModifier)
        return ArrowKey::Act::Stretch;
    if (modifiers == Qt::ControlModifier)
        return ArrowKey::Act::Go;
    if (modifiers == (Qt::ControlModifier | Qt::ShiftModifier))
        return ArrowKey::Act::Extend;
    return std::nullopt;
}

} // namespace

std::optional<ArrowKey> StepKeys::arrowOf(const QKeyEvent& event)
{
    const auto act = actOf(modifiersOf(event));
    if (!act)
        return std::nullopt;
    switch (event.key()) {
    case Qt::Key_Left:
        return ArrowKey{.act = *act, .right = -1};
    case Qt::Key_Right:
        return ArrowKey{.act = *act, .right = 1};
    case Qt::Key_Up:
        return ArrowKey{.act = *act, .up = 1};
    case Qt::Key_Down:
        return ArrowKey{.act = *act, .up = -1};
    default:
        return std::nullopt;
    }
}

int StepKeys::pageOf(const QKeyEvent& event)
{
    if (modifiersOf(event) != Qt::NoModifier)
        return 0;
    if (event.key() == Qt::Key_PageDown)
        return 1;
    return event.key() == Qt::Key_PageUp ? -1 : 0;
}

bool StepKeys::isEnter(const QKeyEvent& event)
{
    return (event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) &&
           modifiersOf(event) == Qt::NoModifier;
}

double StepKeys::stepped(double beat, double step, int direction)
{
    if (!isBarLength(step))
        return beat;
    const double steps = direction > 0 ? std::floor((beat + kBeatEpsilon) / step) + 1.0
                                       : std::ceil((beat - kBeatEpsilon) / step) - 1.0;
    return std::max(0.0, steps * step);
}
