#pragma once

#include "storage/SongFacts.h"

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

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
    /// Nothing for a work that is too large to be looked into.
    std::optional<SongFacts> song = std::nullopt;
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

    /// The works that are still there of those that the members of the current session used last,
    /// the latest first; without a session, those that were written last. At most `limit`.
    virtual QList<ProjectInfo> recentProjects(qsizetype limit) = 0;

    /// The work with this id, owned by the caller and parented to `parent`; null if it cannot be
    /// read.
    virtual Project* loadProject(const QString& id, QObject* parent) = 0;

    /// What the file of a work holds; nothing if it cannot be read. Nothing is noted of this look.
    virtual std::optional<QJsonObject> readProject(const QString& id) const = 0;

    /// Writes a work, making its folder, and reads it back. False if the disk does not hold the
    /// whole work afterwards; where there was no room for it, the former file stays.
    virtual bool saveProject(const QString& id, const Project& project) = 0;

    /// Whether the file of a work is there, readable or not.
    virtual bool hasProject(const QString& id) const = 0;

    /// Whether somebody else has changed the file of a work since it was read or saved from here.
    virtual bool changedElsewhere(const QString& id) const = 0;

    /// A mark of the file of a work as it was last read or saved from here; empty for a work that
    /// was neither.
    virtual QString lastSeen(const QString& id) const = 0;

    /// Takes the file of a work for seen as it was when somebody got this mark of it.
    virtual void setLastSeen(const QString& id, const QString& mark) = 0;

    /// Removes a work with everything in its folder, to the system's trash where there is one. Of a
    /// folder that is a link, the link alone. False if there is none, or it resists.
    virtual bool deleteProject(const QString& id) = 0;

    /// Unpacks an archive of a work as a new one, and returns its id. Nothing, with nothing left
    /// behind, for a file that is no such archive.
    virtual std::optional<QString> importProject(const QString& archive) = 0;

    /// A new id made from a title. Nothing is created.
    virtual QString createProjectId(const QString& name) = 0;

    /// Path of a work's folder, which need not exist.
    virtual QString projectFolder(const QString& id) const = 0;
};
