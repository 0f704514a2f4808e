#pragma once

class QKeyEvent;
class QWidget;

/// What the keys that press a control do where other shortcuts would take them away.
namespace FocusedControl {

/// Whether Space belongs to this control, or null, rather than to playback: it presses a button or
/// a check box, and opens the list of a combo box.
bool takesSpace(const QKeyEvent& event, const QWidget* control);

/// Return does to a control what Space does. False where there is nothing to press.
bool pressByReturn(const QKeyEvent& event, QWidget* control);

} // namespace FocusedControl
