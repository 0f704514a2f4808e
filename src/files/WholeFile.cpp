#include "files/WholeFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

bool isRegular(const QString& path, WholeFile::Links links)
{
    const QFileInfo info(path);
    return info.isFile() && (links == WholeFile::Links::Follow || !info.isSymLink());
}

/// Some file systems tell of a full disk only here.
bool syncToDisk(QFile& file)
{
#ifdef Q_OS_UNIX
    return file.flush() && ::fsync(file.handle()) == 0;
#else
    return file.flush();
#endif
}

bool writeAt(QFile& file, qint64 position, QByteArrayView bytes)
{
    return file.seek(position) && file.write(bytes.data(), bytes.size()) == bytes.size();
}

/// Has the file take the room that it will need, without a change to its former bytes.
bool appendTail(QFile& file, const QByteArray& bytes)
{
    const qint64 former = file.size();
    if (bytes.size() <= former)
        return true;
    if (writeAt(file, former, QByteArrayView(bytes).sliced(former)) && syncToDisk(file))
        return true;
    file.resize(former);
    return false;
}

/// Puts the bytes where the former ones were. The first one comes last: what is broken off in
/// between is no mixture that could be taken for a document.
bool exchangeBytes(QFile& file, const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return file.resize(0) && syncToDisk(file);
    const QByteArrayView all(bytes);
    return writeAt(file, 0, QByteArrayView("\0", 1)) && writeAt(file, 1, all.sliced(1)) &&
           file.resize(bytes.size()) && writeAt(file, 0, all.first(1)) && syncToDisk(file);
}

} // namespace

std::optional<QByteArray> WholeFile::read(const QString& path, qint64 maxBytes, Links links)
{
    QFile file(path);
    if (!isRegular(path, links) || !file.open(QIODevice::ReadOnly) || file.size() > maxBytes)
        return std::nullopt;
    // A file that grows meanwhile is read no further than it was promised.
    const QByteArray bytes = file.read(file.size());
    return file.error() == QFileDevice::NoError ? std::optional(bytes) : std::nullopt;
}

bool WholeFile::replace(const QString& path, const QByteArray& bytes,
                        const std::function<bool()>& agree)
{
    // QSaveFile would follow the link and put the bytes in the place of its target.
    if (QFileInfo(path).isSymLink())
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // Bytes for which there is no room are no error to commit().
    return file.write(bytes) == bytes.size() && file.flush() && (!agree || agree()) &&
           file.commit();
}

bool WholeFile::rewrite(const QString& path, const QByteArray& bytes)
{
    const bool existed = QFileInfo::exists(path);
    if (existed && !isRegular(path, Links::Follow))
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        return false;
    if (!appendTail(file, bytes)) {
        if (!existed)
            file.remove();
        return false;
    }
    return exchangeBytes(file, bytes);
}
