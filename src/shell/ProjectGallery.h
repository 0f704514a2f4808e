#pragma once

#include "music/KeySignature.h"
#include "music/TimeSignature.h"
#include "shell/Prompts.h"

#include <QWidget>

class ProjectStorageProvider;
class QListWidget;

/// The saved works as a page of big icons, and the dialog that asks for a new one. It changes
/// nothing but the list itself: what the user wants is told by signals.
class ProjectGallery : public QWidget {
    Q_OBJECT

public:
    /// The storage and the prompts are not owned.
    explicit ProjectGallery(ProjectStorageProvider* storage, QWidget* parent = nullptr,
                            Prompts& prompts = Prompts::dialogs());

    /// Reads the list anew.
    void refresh();

    /// Asks for what a new work starts with. True when the user accepted; otherwise nothing is
    /// written. `name` is trimmed and may be empty, `bpm` is 40 to 240.
    static bool askNewProject(QWidget* parent, QString* name, TimeSignature* timeSignature,
                              KeySignature* key, int* bpm, Prompts& prompts = Prompts::dialogs());

    void openNewProjectDialog();

signals:
    void openRequested(const QString& id);
    void createRequested(const QString& name, const TimeSignature& timeSignature,
                         const KeySignature& key, int bpm);

private:
    void openCurrent();
    void deleteCurrent();

    ProjectStorageProvider* storage_;
    Prompts& prompts_;
    QListWidget* list_;
};
