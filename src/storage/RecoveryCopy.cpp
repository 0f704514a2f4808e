#include "storage/RecoveryCopy.h"

#include "files/JsonFile.h"
#include "model/ProjectJson.h"
#include "records/RecordJson.h"
#include "storage/ProjectHead.h"

#include <QCoreApplication>
#include <QDir>
#include <QRandomGenerator>
#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

namespace Records {

template <>
constexpr auto kFields<CopyFile> = FieldList{
    Field{"clipsFolder"_L1, &CopyFile::clipsFolder},
    Field{"id"_L1, &CopyFile::id},
    Field{"lastSeen"_L1, &CopyFile::lastSeen},
    Field{"project"_L1, &CopyFile::project},
};

} // namespace Records

namespace {

QByteArray textOf(const KeptWork& work)
{
    const CopyFile file{work.clipsFolder, work.id, work.lastSeen, ProjectJson::write(work.song)};
    return QJsonDocument(RecordJson::write(file)).toJson(QJsonDocument::Compact);
}

QString newName()
{
    return u"%1-%2.json"_s.arg(QCoreApplication::applicationPid())
        .arg(QRandomGenerator::system()->generate(), 8, 16, QChar(u'0'));
}

QString lockOf(const QString& path)
{
    return path + ".lock"_L1;
}

/// The path of the copy that a file belongs to: the copy itself, its lock, or one that was being
/// written.
QString copyOf(const QString& path)
{
    const qsizetype suffix = path.lastIndexOf(".json"_L1);
    return suffix < 0 ? QString() : path.left(suffix) + ".json"_L1;
}

/// The lock of a copy, if no running program holds it.
std::unique_ptr<QLockFile> lockOfGone(const QString& path)
{
    auto lock = std::make_unique<QLockFile>(lockOf(path));
    // Whether a program is gone is asked of the system; a clock may be wrong.
    lock->setStaleLockTime(0);
    return lock->tryLock(0) ? std::move(lock) : nullptr;
}

QStringList copiesIn(const QDir& folder)
{
    QStringList copies;
    for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden, QDir::Time)) {
        const QString copy = copyOf(folder.filePath(name));
        if (!copy.isEmpty() && !copies.contains(copy))
            copies.append(copy);
    }
    return copies;
}

void removeUnfinished(const QString& copy)
{
    const QDir folder(QFileInfo(copy).path());
    const QString name = QFileInfo(copy).fileName();
    for (const QString& left : folder.entryList({name + ".*"_L1}, QDir::Files | QDir::Hidden)) {
        if (left != lockOf(name))
            QFile::remove(folder.filePath(left));
    }
}

} // namespace

QString RecoveryCopy::standardFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/recuperacion"_L1;
}

RecoveryCopy::RecoveryCopy(const QString& folder)
    : path_(folder + u'/' + newName()), lock_(lockOf(path_))
{
    lock_.setStaleLockTime(0);
    writer_.setMaxThreadCount(1);
}

RecoveryCopy::~RecoveryCopy()
{
    writer_.waitForDone();
}

bool RecoveryCopy::lock()
{
    return lock_.isLocked() || (QDir().mkpath(QFileInfo(path_).path()) && lock_.tryLock(0));
}

void RecoveryCopy::write(const KeptWork& work)
{
    written_ = WholeFile::replace(path_, textOf(work));
}

void RecoveryCopy::keep(const KeptWork& work)
{
    if (!lock())
        return;
    kept_ = {work.id, work.lastSeen, work.clipsFolder, detachedCopy(work.song)};
    writer_.start([this, own = *kept_] { write(own); });
}

bool RecoveryCopy::keepNow(const KeptWork& work)
{
    writer_.waitForDone();
    if (written_ && kept_ == work && QFile::exists(path_))
        return true;
    keep(work);
    return writer_.waitForDone() && kept_ == work && written_;
}

void RecoveryCopy::remove()
{
    writer_.waitForDone();
    kept_.reset();
    written_ = false;
    QFile::remove(path_);
}

AbandonedCopy::AbandonedCopy(const QString& path, std::unique_ptr<QLockFile> lock,
                             const CopyFile& file)
    : path_(path), lock_(std::move(lock)), file_(file)
{}

std::vector<AbandonedCopy> AbandonedCopy::findAll(const QString& folder)
{
    std::vector<AbandonedCopy> found;
    for (const QString& path : copiesIn(QDir(folder))) {
        auto lock = lockOfGone(path);
        if (!lock)
            continue;
        removeUnfinished(path);
        const auto json =
            JsonFile::readObject(path, ProjectHead::kMaxFileBytes, WholeFile::Links::Refuse);
        const auto file = RecordJson::read<CopyFile>(json.value_or(QJsonObject()));
        if (file.project.isObject())
            found.push_back(AbandonedCopy(path, std::move(lock), file));
    }
    return found;
}

QString AbandonedCopy::name() const
{
    return file_.project["name"_L1].toString();
}

void AbandonedCopy::remove()
{
    QFile::remove(path_);
    lock_->unlock();
}
