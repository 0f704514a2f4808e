#pragma once

#include <QString>

class ProjectStorageProvider;
class Prompts;
class QWidget;

/// The question before a saved work goes for good.
struct WorkDeletion {
    QString title;
    /// Storage id of the work.
    QString id;
    /// What the question calls it.
    QString name;
};

/// Asks, and deletes the work if it is to go, which is true then. Enter chooses to keep it.
bool askAndDelete(const WorkDeletion& deletion, QWidget* over, ProjectStorageProvider& storage,
                  Prompts& prompts);
