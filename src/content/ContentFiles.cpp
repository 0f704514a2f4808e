#include "content/ContentFiles.h"

#include "files/FileNames.h"
#include "files/WholeFile.h"

#include <QDir>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Far above any real path, and far below what a walk through its folders can bear.
constexpr qsizetype kMaxPathLength = 1024;

/// The path without links, of which the part that exists is resolved and the rest taken as it is.
/// Empty for a link that leads nowhere.
QString resolved(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists())
        return info.canonicalFilePath();
    if (info.isSymLink() || info.isRoot())
        return {};
    const QString folder = resolved(info.path());
    return folder.isEmpty() ? QString() : QDir(folder).filePath(info.fileName());
}

/// Whether the words of a path, links aside, go down only.
bool goesDown(const QString& relativePath)
{
    return relativePath.size() <= kMaxPathLength && QDir::isRelativePath(relativePath) &&
           !relativePath.contains(u'\\') && !relativePath.contains(u':') &&
           !relativePath.contains(QChar::Null) && !relativePath.split(u'/').contains(".."_L1);
}

/// Bytes ahead of what a chunk of a RIFF file holds: its name and its size.
constexpr qsizetype kChunkHead = 8;

/// The size that a chunk states. Its whole head must be there.
qsizetype chunkSize(QByteArrayView chunk)
{
    return static_cast<qsizetype>(qFromLittleEndian<quint32>(chunk.data() + 4));
}

/// Whether one of the chunks that stand one after the other is a list, and there to its end.
bool holdsList(QByteArrayView chunks)
{
    while (chunks.size() >= kChunkHead) {
        const qsizetype size = chunkSize(chunks);
        if (size > chunks.size() - kChunkHead)
            return false;
        if (chunks.startsWith("LIST"))
            return true;
        const qsizetype whole = kChunkHead + size + size % 2;
        chunks = chunks.sliced(std::min(whole, chunks.size()));
    }
    return false;
}

} // namespace

bool ContentFiles::isPlainFileName(const QString& name)
{
    return FileNames::isPlain(name);
}

bool ContentFiles::staysInside(const QString& folder, const QString& relativePath)
{
    if (!goesDown(relativePath))
        return false;
    const QString root = resolved(QFileInfo(folder).absoluteFilePath());
    const QString path = resolved(QDir(root).absoluteFilePath(QDir::cleanPath(relativePath)));
    const QString below = root.endsWith(u'/') ? root : root + u'/';
    return !root.isEmpty() && (path == root || path.startsWith(below));
}

QString ContentFiles::bankFile(const QString& instrumentId)
{
    return "instruments/"_L1 + instrumentId + ".sf2"_L1;
}

bool ContentFiles::isSoundFont(const QByteArray& bytes)
{
    constexpr qsizetype kHead = kChunkHead + 4;
    if (bytes.size() < kHead || !bytes.startsWith("RIFF") || bytes.sliced(kChunkHead, 4) != "sfbk")
        return false;
    const qsizetype held = bytes.size() - kChunkHead;
    const qsizetype stated = chunkSize(bytes);
    return (stated == held || stated + 1 == held) && holdsList(QByteArrayView(bytes).sliced(kHead));
}

bool ContentFiles::replaceFile(const QString& path, const QByteArray& bytes,
                               const std::function<bool()>& agree)
{
    const QFileInfo info(path);
    if (info.isSymLink() && !QFile::remove(path))
        return false;
    QDir().mkpath(info.path());
    return WholeFile::replace(path, bytes, agree);
}
