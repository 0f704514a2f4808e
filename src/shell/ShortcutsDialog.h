#pragma once

#include <QDialog>

class QMenuBar;
class QTreeWidget;
class QTreeWidgetItem;

/// What can be done with keys: the entries of the menus with the keys that they have at this
/// moment, and the keys of the two editors.
class ShortcutsDialog : public QDialog {
    Q_OBJECT

public:
    explicit ShortcutsDialog(const QMenuBar& menus, QWidget* parent = nullptr);

private:
    void addMenus(const QMenuBar& menus);
    void addEditors();
    void addRoll();
    void addArranger();
    static void addClip(QTreeWidgetItem* arranger);

    /// What keys do in either editor.
    void addBoth(QTreeWidgetItem* editor);

    QTreeWidget* list_;
};
