#pragma once

#include <QtGlobal>

#include <optional>

class QKeyEvent;

/// What an arrow asks of an editor. Both editors read the arrows alike: plain ones move what is
/// selected, with Shift they stretch it, with Ctrl they go on to the next, and with both they take
/// the next along.
struct ArrowKey {
    enum class Act { Move, Stretch, Go, Extend };

    Act act = Act::Move;
    /// 1 to later, -1 to earlier, 0 for an upright arrow.
    int right = 0;
    /// 1 to above, -1 to below, 0 for a level arrow.
    int up = 0;

    friend bool operator==(const ArrowKey&, const ArrowKey&) = default;
};

namespace StepKeys {

/// Nothing for other keys, and for arrows with other modifiers.
std::optional<ArrowKey> arrowOf(const QKeyEvent& event);

/// 1 for the key that goes a page on, -1 for the one that goes a page back, 0 for any other.
int pageOf(const QKeyEvent& event);

bool isEnter(const QKeyEvent& event);

/// The next multiple of a step behind a beat, or the one before it for a direction of -1, at least
/// 0. A step that is not positive and finite leaves the beat alone.
double stepped(double beat, double step, int direction);

} // namespace StepKeys
