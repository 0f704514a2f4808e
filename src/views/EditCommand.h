#pragma once

#include <QKeySequence>
#include <QList>

#include <array>
#include <optional>

class QKeyEvent;

/// What the menu of edits asks of an editor.
enum class EditCommand { Cut, Copy, Paste, Duplicate, SelectAll };

/// In the order of the menu.
inline constexpr std::array kEditCommands{EditCommand::Cut, EditCommand::Copy, EditCommand::Paste,
                                          EditCommand::Duplicate, EditCommand::SelectAll};

/// An editor that can be asked.
class CommandedEditor {
public:
    virtual ~CommandedEditor() = default;

    /// Whether there is anything that the command would act on.
    virtual bool can(EditCommand command) const = 0;

    /// Does nothing where it cannot.
    virtual void perform(EditCommand command) = 0;
};

/// The keys of the commands. An editor takes them before the menu does, since it has other uses
/// for some of them where there is nothing to act on.
namespace EditKeys {

QKeySequence keysOf(EditCommand command);

/// The command that a key gives; nothing for any other key.
std::optional<EditCommand> commandOf(const QKeyEvent& event);

} // namespace EditKeys
