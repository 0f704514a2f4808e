#pragma once

#include <QDialog>
#include <QList>
#include <QString>

#include <optional>

class Prompts;
class ProjectStorageProvider;
class QListWidget;
struct ProjectInfo;

/// The saved works to choose one from, or to delete.
class OpenProjectDialog : public QDialog {
    Q_OBJECT

public:
    /// Shows a listing of the storage. Storage and prompts are not owned.
    OpenProjectDialog(const QList<ProjectInfo>& works, ProjectStorageProvider* storage,
                      Prompts& prompts, QWidget* parent = nullptr);

    /// Storage id of the current work, if there is one.
    std::optional<QString> currentId() const;

private:
    void deleteCurrent();

    ProjectStorageProvider* storage_;
    Prompts& prompts_;
    QListWidget* list_;
};
