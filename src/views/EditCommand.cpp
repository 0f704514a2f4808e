#include "views/EditCommand.h"

#include <QKeyEvent>

QKeySequence EditKeys::keysOf(EditCommand command)
{
    switch (command) {
    case EditCommand::Cut:
        return Qt::CTRL | Qt::Key_X;
    case EditCommand::Copy:
        return Qt::CTRL | Qt::Key_C;
    case EditCommand::Paste:
        return Qt::CTRL | Qt::Key_V;
    case EditCommand::Duplicate:
        return Qt::CTRL | Qt::Key_D;
    case EditCommand::SelectAll:
        break;
    }
    return Qt::CTRL | Qt::Key_A;
}

std::optional<EditCommand> EditKeys::commandOf(const QKeyEvent& event)
{
    for (const EditCommand command : kEditCommands) {
        if (keysOf(command)[0] == event.keyCombination())
            return command;
    }
    return std::nullopt;
}
