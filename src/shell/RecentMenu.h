#pragma once

#include <QMenu>

class ProjectStorageProvider;

/// The works that were used last. They are looked up whenever the menu opens.
class RecentMenu : public QMenu {
    Q_OBJECT

public:
    /// The storage is not owned.
    RecentMenu(const QString& title, ProjectStorageProvider& storage, QWidget* parent);

signals:
    void chosen(const QString& id);

private:
    void fill();

    ProjectStorageProvider& storage_;
};
