#include "storage/LocalStorageProvider.h"

#include "model/Project.h"
#include "suite/Recientes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QStandardPaths>

#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype kLongestSlug = 40;

QString projectFile(const QString& folder)
{
    return folder + "/project.json"_L1;
}

std::optional<QJsonObject> readProjectFile(const QString& folder)
{
    QFile file(projectFile(folder));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

/// Rewrites the file in place. False if it cannot be opened.
bool writeProjectFile(const QString& folder, const Project& project)
{
    QFile file(projectFile(folder));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    file.write(QJsonDocument(project.toJson()).toJson(QJsonDocument::Indented));
    return true;
}

/// Lets the members of a current session find the work in every program of the suite.
void noteRecentUse(const QString& folder)
{
    brusel::Recientes::registrarEnSesionActiva(folder, u"velta"_s, false);
}

/// Moves works that an older version kept with the application's data. A work whose name is taken
/// at the new place stays where it is, and is tried again at the next start.
void moveWorksOfOlderLayout(const QString& root)
{
    const QDir old(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) +
                   "/proyectos"_L1);
    if (!old.exists())
        return;
    for (const QString& name : old.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted)) {
        const QString target = root + u'/' + name;
        if (!QFileInfo::exists(target))
            QDir().rename(old.filePath(name), target);
    }
    QDir().rmdir(old.path());
}

QString slugOf(const QString& name)
{
    static const QRegularExpression foreign(u"[^a-z0-9]+"_s);
    const QString slug = name.toLower().replace(foreign, u"_"_s).left(kLongestSlug);
    return slug.isEmpty() ? u"proyecto"_s : slug;
}

} // namespace

LocalStorageProvider::LocalStorageProvider(const QString& root) : root_(root)
{
    if (root_.isEmpty()) {
        root_ = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/Velta"_L1;
        QDir().mkpath(root_);
        moveWorksOfOlderLayout(root_);
    }
    QDir().mkpath(root_);
}

QList<ProjectInfo> LocalStorageProvider::listProjects()
{
    QList<ProjectInfo> projects;
    const QFileInfoList folders =
        QDir(root_).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time);
    for (const QFileInfo& folder : folders) {
        const auto json = readProjectFile(folder.filePath());
        if (!json)
            continue;
        projects.append({.id = folder.fileName(),
                         .name = (*json)["name"_L1].toString(folder.fileName()),
                         .modifiedAt = QFileInfo(projectFile(folder.filePath())).lastModified(),
                         .folderPath = folder.filePath()});
    }
    return projects;
}

Project* LocalStorageProvider::loadProject(const QString& id, QObject* parent)
{
    const QString folder = projectFolder(id);
    const auto json = readProjectFile(folder);
    if (!json)
        return nullptr;
    noteRecentUse(folder);
    return Project::fromJson(*json, parent);
}

bool LocalStorageProvider::saveProject(const QString& id, const Project& project)
{
    const QString folder = projectFolder(id);
    if (!QDir().mkpath(folder) || !writeProjectFile(folder, project))
        return false;
    noteRecentUse(folder);
    return true;
}

bool LocalStorageProvider::deleteProject(const QString& id)
{
    if (id.isEmpty())
        return false;
    QDir folder(projectFolder(id));
    return folder.exists() && folder.removeRecursively();
}

QString LocalStorageProvider::createProjectId(const QString& name)
{
    const QString slug = slugOf(name);
    QString id = slug;
    for (int number = 2; QFileInfo::exists(projectFolder(id)); ++number)
        id = slug + u'_' + QString::number(number);
    return id;
}

QString LocalStorageProvider::projectFolder(const QString& id) const
{
    return root_ + u'/' + id;
}
