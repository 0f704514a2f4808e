#include "content/ContentFiles.h"

#include "files/WholeFile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QtEndian>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Far above any real path, and far below what a walk through its folders can bear.
constexpr qsizetype kMaxPathLength = 1024;

/// What some system forbids in a name, or takes for a separator, a drive or a stream.
bool isForbidden(QChar character)
{
    return character.category() == QChar::Other_Control ||
           QStringView(u"/\\:*?\"<>|").contains(character);
}

/// Windows has these names stand for devices in every folder, whatever suffix they bear.
bool isDevice(const QString& name)
{
    static const QRegularExpression device(u"^(con|prn|aux|nul|conin\\$|conout\\$|"
                                           "(com|lpt)[0-9\u00B9\u00B2\u00B3]) *(\\.|$)"_s,
                                           QRegularExpression::CaseInsensitiveOption);
    return device.match(name).hasMatch();
}

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

} // namespace

bool ContentFiles::isPlainFileName(const QString& name)
{
    return !name.isEmpty() && !name.startsWith(u'.') && name.isValidUtf16() &&
           std::ranges::none_of(name, isForbidden) && !isDevice(name);
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

bool ContentFiles::isSoundFont(const QByteArray& bytes)
{
    constexpr qsizetype kHead = 8;
    if (bytes.size() < kHead + 4 || !bytes.startsWith("RIFF") || bytes.sliced(kHead, 4) != "sfbk")
        return false;
    return qFromLittleEndian<quint32>(bytes.constData() + 4) <= bytes.size() - kHead;
}

bool ContentFiles::replaceFile(const QString& path, const QByteArray& bytes)
{
    const QFileInfo info(path);
    if (info.isSymLink() && !QFile::remove(path))
        return false;
    QDir().mkpath(info.path());
    return WholeFile::replace(path, bytes);
}
