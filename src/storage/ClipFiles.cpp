#include "storage/ClipFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

/// On a disk that is full, what was copied may be shorter.
bool copyWhole(const QString& from, const QString& to)
{
    if (QFile::copy(from, to) && QFileInfo(to).size() == QFileInfo(from).size())
        return true;
    QFile::remove(to);
    return false;
}

/// Name of a whole copy in a folder, which is made; empty if there is none to be had.
QString copyOf(const QFileInfo& file, const QString& folder)
{
    const QString copy = ClipFiles::freePath(folder, file.completeBaseName(), file.suffix());
    const bool whole = QDir().mkpath(folder) && copyWhole(file.filePath(), copy);
    return whole ? QFileInfo(copy).fileName() : QString();
}

bool liesIn(const QString& folder, const QString& name)
{
    return QFileInfo(name).fileName() == name && QFileInfo(folder + u'/' + name).isFile();
}

} // namespace

QString ClipFiles::freePath(const QString& folder, const QString& baseName, const QString& suffix)
{
    QString path = u"%1/%2.%3"_s.arg(folder, baseName, suffix);
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = u"%1/%2_%3.%4"_s.arg(folder, baseName, QString::number(number), suffix);
    return path;
}

std::optional<ClipFiles::Copies> ClipFiles::copyInto(const QStringList& names, const QString& from,
                                                     const QString& to)
{
    Copies copies;
    for (const QString& name : names) {
        if (!liesIn(from, name))
            continue;
        const QString copy = copyOf(QFileInfo(from + u'/' + name), to);
        if (copy.isEmpty()) {
            discard(copies, to);
            return std::nullopt;
        }
        copies.insert(name, copy);
    }
    return copies;
}

void ClipFiles::rename(QList<AudioTrack>& tracks, const Copies& copies)
{
    for (AudioTrack& track : tracks) {
        for (AudioClip& clip : track.clips)
            clip.audioFilePath = copies.value(clip.audioFilePath, clip.audioFilePath);
    }
}

QStringList ClipFiles::namesIn(const QList<AudioTrack>& tracks)
{
    QStringList names;
    for (const AudioTrack& track : tracks) {
        for (const AudioClip& clip : track.clips)
            names.append(clip.audioFilePath);
    }
    names.removeDuplicates();
    return names;
}

ClipFiles::Copies ClipFiles::gather(const QStringList& names, const QString& folder)
{
    Copies copies;
    for (const QString& path : names) {
        const QFileInfo file(path);
        if (!file.isAbsolute() || !file.isFile())
            continue;
        const bool home = file.dir() == QDir(folder);
        const QString name = home ? file.fileName() : copyOf(file, folder);
        if (!name.isEmpty())
            copies.insert(path, name);
    }
    return copies;
}

std::optional<ClipFiles::Copies> ClipFiles::copyAll(const QStringList& names, const QString& from,
                                                    const QString& to)
{
    auto copies = copyInto(names, from, to);
    if (!copies)
        return std::nullopt;
    const Copies gathered = gather(names, to);
    copies->insert(gathered);
    const bool whole = std::ranges::all_of(names, [&](const QString& name) {
        const QFileInfo file(name);
        return !file.isAbsolute() || !file.isFile() || gathered.contains(name);
    });
    if (whole)
        return copies;
    discard(*copies, to);
    return std::nullopt;
}

void ClipFiles::discard(const Copies& copies, const QString& folder)
{
    for (const QString& copy : copies)
        QFile::remove(folder + u'/' + copy);
    QDir().rmdir(folder);
}
