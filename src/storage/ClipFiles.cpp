#include "storage/ClipFiles.h"

#include "model/Project.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Files as clips name them, with the names of their copies.
using Copies = QHash<QString, QString>;

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

void removeAll(const QString& folder, const Copies& copies)
{
    for (const QString& copy : copies)
        QFile::remove(folder + u'/' + copy);
}

void rename(Project& project, const Copies& copies)
{
    for (AudioTrack& track : project.audioTracks) {
        for (AudioClip& clip : track.clips)
            clip.audioFilePath = copies.value(clip.audioFilePath, clip.audioFilePath);
    }
}

} // namespace

QString ClipFiles::freePath(const QString& folder, const QString& baseName, const QString& suffix)
{
    QString path = u"%1/%2.%3"_s.arg(folder, baseName, suffix);
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = u"%1/%2_%3.%4"_s.arg(folder, baseName, QString::number(number), suffix);
    return path;
}

bool ClipFiles::copyInto(Project& project, const QString& from, const QString& to)
{
    Copies copies;
    for (const AudioTrack& track : std::as_const(project.audioTracks)) {
        for (const AudioClip& clip : track.clips) {
            const QString& name = clip.audioFilePath;
            if (copies.contains(name) || !liesIn(from, name))
                continue;
            const QString copy = copyOf(QFileInfo(from + u'/' + name), to);
            if (copy.isEmpty()) {
                removeAll(to, copies);
                return false;
            }
            copies.insert(name, copy);
        }
    }
    rename(project, copies);
    return true;
}

void ClipFiles::gather(Project& project, const QString& folder)
{
    Copies names;
    for (const AudioTrack& track : std::as_const(project.audioTracks)) {
        for (const AudioClip& clip : track.clips) {
            const QFileInfo file(clip.audioFilePath);
            if (names.contains(clip.audioFilePath) || !file.isAbsolute() || !file.isFile())
                continue;
            const bool home = file.dir() == QDir(folder);
            const QString name = home ? file.fileName() : copyOf(file, folder);
            if (!name.isEmpty())
                names.insert(clip.audioFilePath, name);
        }
    }
    rename(project, names);
}
