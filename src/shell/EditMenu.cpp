#include "shell/EditMenu.h"

#include <QHash>

EditMenu::EditMenu(const QString& title, const std::function<CommandedEditor&()>& keyEditor,
                   QWidget* parent)
    : QMenu(title, parent), keyEditor_(keyEditor),
      undo_(addAction(tr("Deshacer"), this, &EditMenu::undoRequested)),
      redo_(addAction(tr("Rehacer"), this, &EditMenu::redoRequested))
{
    undo_->setShortcuts(QKeySequence::Undo);
    redo_->setShortcuts(QKeySequence::Redo);
    setAvailable(false, false);
    const QHash<EditCommand, QString> texts{{EditCommand::Cut, tr("Cortar")},
                                            {EditCommand::Copy, tr("Copiar")},
                                            {EditCommand::Paste, tr("Pegar")},
                                            {EditCommand::Duplicate, tr("Duplicar")},
                                            {EditCommand::SelectAll, tr("Seleccionar todo")}};
    addSeparator();
    for (const EditCommand command : kEditCommands) {
        if (command == EditCommand::SelectAll)
            addSeparator();
        addCommand(command, texts.value(command));
    }
}

void EditMenu::setAvailable(bool canUndo, bool canRedo)
{
    undo_->setEnabled(canUndo);
    redo_->setEnabled(canRedo);
}

void EditMenu::addCommand(EditCommand command, const QString& text)
{
    QAction* entry = addAction(text, this, [this, command] { keyEditor_().perform(command); });
    entry->setShortcut(EditKeys::keysOf(command));
    connect(this, &QMenu::aboutToShow, entry,
            [this, entry, command] { entry->setEnabled(keyEditor_().can(command)); });
    // The keys ask again.
    connect(this, &QMenu::aboutToHide, entry, [entry] { entry->setEnabled(true); });
}
