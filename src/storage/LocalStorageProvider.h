#pragma once

#include "storage/ProjectStorageProvider.h"

#include <QHash>

class QFileInfo;

/// Works as folders under one root, each with a project.json and its audio files. There is no
/// index: the folders are the list.
class LocalStorageProvider : public ProjectStorageProvider {
public:
    /// An empty root stands for the folder "Velta" in the user's documents, into which works of
    /// the older layout, under the application's data, are moved.
    explicit LocalStorageProvider(const QString& root);

    QList<ProjectInfo> listProjects() override;
    QList<ProjectInfo> recentProjects(qsizetype limit) override;
    Project* loadProject(const QString& id, QObject* parent) override;
    std::optional<QJsonObject> readProject(const QString& id) const override;
    bool saveProject(const QString& id, const Project& project) override;
    bool hasProject(const QString& id) const override;
    bool changedElsewhere(const QString& id) const override;
    QString lastSeen(const QString& id) const override;
    void setLastSeen(const QString& id, const QString& mark) override;
    bool deleteProject(const QString& id) override;
    std::optional<QString> importProject(const QString& archive) override;

    /// Lower case, with "_" for every run of other characters than a-z and 0-9, at most 40 long;
    /// then "_2", "_3"... until no folder has that name. "proyecto" for an empty title.
    QString createProjectId(const QString& name) override;

    QString projectFolder(const QString& id) const override;

private:
    /// One line of a listing; nothing for a folder that holds no work.
    static std::optional<ProjectInfo> infoOf(const QFileInfo& folder);

    QString root_;
    /// Of each work that was read or written: a mark of its file as it was then.
    QHash<QString, QString> seen_;
};
