#include "storage/LocalStorageProvider.h"

#include "files/JsonFile.h"
#include "model/Project.h"
#include "storage/ProjectHead.h"
#include "storage/WorkArchive.h"
#include "suite/Recientes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <functional>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qsizetype kLongestSlug = 40;

QString projectFile(const QString& folder)
{
    return folder + "/project.json"_L1;
}

/// Tells the content of a project file from any other.
QString markOf(const QByteArray& bytes)
{
    return QString::number(qHashBits(bytes.constData(), static_cast<size_t>(bytes.size())), 16);
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

/// Qt takes the current folder for the trash where the user's data have no folder yet.
bool moveToTrash(const QString& folder)
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return QDir().mkpath(data) && QFile::moveToTrash(folder);
}

/// Folders with a project file, that of the latest one first. No file is read.
QStringList foldersByLastWrite(const QString& root)
{
    QList<std::pair<QDateTime, QString>> folders;
    for (const QString& name : QDir(root).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString folder = root + u'/' + name;
        const QFileInfo file(projectFile(folder));
        if (file.isFile())
            folders.append({file.lastModified(), folder});
    }
    std::ranges::sort(folders, std::ranges::greater());
    QStringList paths;
    for (const auto& [written, folder] : folders)
        paths.append(folder);
    return paths;
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

std::optional<ProjectInfo> LocalStorageProvider::infoOf(const QFileInfo& folder)
{
    const QString file = projectFile(folder.filePath());
    const auto head = ProjectHead::read(file);
    if (!head)
        return std::nullopt;
    return ProjectInfo{.id = folder.fileName(),
                       .name = head->name.value_or(folder.fileName()),
                       .modifiedAt = QFileInfo(file).lastModified(),
                       .folderPath = folder.filePath(),
                       .song = head->song};
}

QList<ProjectInfo> LocalStorageProvider::listProjects()
{
    QList<ProjectInfo> projects;
    const QFileInfoList folders =
        QDir(root_).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time);
    for (const QFileInfo& folder : folders) {
        if (const auto info = infoOf(folder))
            projects.append(*info);
    }
    return projects;
}

QList<ProjectInfo> LocalStorageProvider::recentProjects(qsizetype limit)
{
    QList<ProjectInfo> recent;
    const auto take = [&](const QString& folder) {
        const auto info = recent.size() < limit ? infoOf(QFileInfo(folder)) : std::nullopt;
        if (info)
            recent.append(*info);
    };
    const QStringList used = brusel::Recientes::rutasDeSesionActiva(u"velta"_s);
    if (used.isEmpty()) {
        for (const QString& folder : foldersByLastWrite(root_))
            take(folder);
        return recent;
    }
    for (const QString& folder : used) {
        // Works elsewhere cannot be opened by their id.
        if (QFileInfo(folder).dir() == QDir(root_))
            take(folder);
    }
    return recent;
}

Project* LocalStorageProvider::loadProject(const QString& id, QObject* parent)
{
    const QString folder = projectFolder(id);
    const auto bytes = WholeFile::read(projectFile(folder), ProjectHead::kMaxFileBytes);
    const QJsonDocument document = QJsonDocument::fromJson(bytes.value_or(QByteArray()));
    if (!document.isObject())
        return nullptr;
    seen_.insert(id, markOf(*bytes));
    noteRecentUse(folder);
    return Project::fromJson(document.object(), parent);
}

std::optional<QJsonObject> LocalStorageProvider::readProject(const QString& id) const
{
    return JsonFile::readObject(projectFile(projectFolder(id)), ProjectHead::kMaxFileBytes);
}

bool LocalStorageProvider::saveProject(const QString& id, const Project& project)
{
    const QString folder = projectFolder(id);
    const QByteArray bytes = QJsonDocument(project.toJson()).toJson(QJsonDocument::Indented);
    if (!QDir().mkpath(folder) || !WholeFile::rewrite(projectFile(folder), bytes))
        return false;
    // What the disk gives back is the work, whatever was said about the writing.
    if (WholeFile::read(projectFile(folder), bytes.size()) != bytes)
        return false;
    seen_.insert(id, markOf(bytes));
    noteRecentUse(folder);
    return true;
}

bool LocalStorageProvider::hasProject(const QString& id) const
{
    return !id.isEmpty() && QFileInfo(projectFile(projectFolder(id))).isFile();
}

bool LocalStorageProvider::changedElsewhere(const QString& id) const
{
    const auto bytes = WholeFile::read(projectFile(projectFolder(id)), ProjectHead::kMaxFileBytes);
    // A file that is no work is nobody's change: a save that was broken off leaves one.
    return bytes && seen_.contains(id) && seen_.value(id) != markOf(*bytes) &&
           QJsonDocument::fromJson(*bytes).isObject();
}

QString LocalStorageProvider::lastSeen(const QString& id) const
{
    return seen_.value(id);
}

void LocalStorageProvider::setLastSeen(const QString& id, const QString& mark)
{
    seen_.insert(id, mark);
}

bool LocalStorageProvider::deleteProject(const QString& id)
{
    const QString folder = projectFolder(id);
    const QFileInfo info(folder);
    if (id.isEmpty() || !(info.isDir() || info.isSymLink()))
        return false;
    // What a link leads to is not this work alone.
    if (info.isSymLink())
        return QFile::remove(folder);
    return moveToTrash(folder) || QDir(folder).removeRecursively();
}

std::optional<QString> LocalStorageProvider::importProject(const QString& archive)
{
    // On the disk of the works, so that what is whole is put in its place at once. Its name hides
    // it from listings, and from the user.
    const QTemporaryDir workshop(root_ + "/.obra-XXXXXX"_L1);
    const QString unpacked = workshop.filePath(u"obra"_s);
    const auto text = workshop.isValid() ? WorkArchive::unpack(archive, unpacked) : std::nullopt;
    if (!text)
        return std::nullopt;
    const QString id = createProjectId(QJsonDocument::fromJson(*text)["name"_L1].toString());
    return QDir().rename(unpacked, projectFolder(id)) ? std::optional(id) : std::nullopt;
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
