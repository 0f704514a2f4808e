#pragma once

#include "views/EditCommand.h"

#include <QMenu>

#include <functional>

/// The menu "Edición": undo and redo, and the commands for the editor that has the keys.
class EditMenu : public QMenu {
    Q_OBJECT

public:
    /// Nothing can be undone yet.
    EditMenu(const QString& title, const std::function<CommandedEditor&()>& keyEditor,
             QWidget* parent);

    void setAvailable(bool canUndo, bool canRedo);

signals:
    void undoRequested();
    void redoRequested();

private:
    void addCommand(EditCommand command, const QString& text);

    std::function<CommandedEditor&()> keyEditor_;
    QAction* undo_;
    QAction* redo_;
};
