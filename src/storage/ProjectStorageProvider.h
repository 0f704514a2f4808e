#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

class Project;
class QObject;

/// One line of a listing of saved works.
struct ProjectInfo {
    /// Name of the folder.
    QString id;
    /// Title of the work; the id where the file has none.
    QString name;
    /// When project.json was last written.
    QDateTime modifiedAt;
    QString folderPath;
};

/// Where works are kept. A work is known by its id, which is at the same time the name of its
/// folder and never changes.
class ProjectStorageProvider {
public:
    ProjectStorageProvider() = default;
    virtual ~ProjectStorageProvider() = default;
    ProjectStorageProvider(const ProjectStorageProvider&) = delete;
    ProjectStorageProvider& operator=(const ProjectStorageProvider&) = delete;

    /// The works that can be read, the folder changed last first.
    virtual QList<ProjectInfo> listProjects() = 0;

    /// The work with this id, owned by the caller and parented to `parent`; null if it cannot be
    /// read.
    virtual Project* loadProject(const QString& id, QObject* parent) = 0;

    /// Writes a work, making its folder. False if the folder or the file cannot be opened.
    virtual bool saveProject(const QString& id, const Project& project) = 0;

    /// Removes a work with everything in its folder. False if there is none, or it resists.
    virtual bool deleteProject(const QString& id) = 0;

    /// A new id made from a title. Nothing is created.
    virtual QString createProjectId(const QString& name) = 0;

    /// Path of a work's folder, which need not exist.
    virtual QString projectFolder(const QString& id) const = 0;
};
