#pragma once

#include <QDialog>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

class Prompts;
class ProjectStorageProvider;
class QDialogButtonBox;
class QLineEdit;
class QListWidget;
struct ProjectInfo;

/// The saved works to choose one from, or to delete: the one that was written last is first. Each
/// says what tells it from others of its name. Many of them can be searched.
class OpenProjectDialog : public QDialog {
    Q_OBJECT

public:
    /// Works from which on there is a field to search them with.
    static constexpr qsizetype kManyWorks = 8;

    /// What a rhythm is called, by its id.
    using RhythmNames = std::function<QString(const QString& id)>;

    /// Shows a listing of the storage. Storage and prompts are not owned. Without names of rhythms
    /// none is told.
    OpenProjectDialog(const QList<ProjectInfo>& works, ProjectStorageProvider* storage,
                      Prompts& prompts, QWidget* parent = nullptr,
                      const RhythmNames& rhythmNames = {});

    /// Whether the user would rather have a work that lies elsewhere in one file.
    bool wantsFile() const { return wantsFile_; }

    /// Storage id of the current work, if there is one that is seen.
    std::optional<QString> currentId() const;

protected:
    /// Up and Down go through the list from the field too.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void addWork(const ProjectInfo& work, const RhythmNames& rhythmNames);
    QLineEdit* searchField();
    QDialogButtonBox* buttonRow();

    /// Leaves the works whose names hold all words, with whatever accents and in whatever case.
    void search(const QString& words);
    void deleteCurrent();

    ProjectStorageProvider* storage_;
    Prompts& prompts_;
    QListWidget* list_;
    bool wantsFile_ = false;
};
