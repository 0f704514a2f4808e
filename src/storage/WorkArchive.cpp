#include "storage/WorkArchive.h"

#include "files/FileNames.h"
#include "files/WholeFile.h"
#include "files/ZipFile.h"
#include "model/Project.h"
#include "storage/ProjectHead.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QSet>
#include <QStringDecoder>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString kProjectFile = u"project.json"_s;

/// Text that shrinks a lot must not look like a bomb, however large it is.
constexpr qsizetype kDeflatedText = 32 * 1024 * 1024;

/// One spelling for all that some file system takes for one name.
QString folded(const QString& name)
{
    return name.normalized(QString::NormalizationForm_C).toCaseFolded();
}

// ---- Writing -------------------------------------------------------------------------------

/// The files of a work's clips: what the archive calls them, and where they lie.
struct ClipSources {
    /// By the path that a clip has.
    QHash<QString, QString> names;
    QMap<QString, QString> paths;
    QSet<QString> taken{folded(kProjectFile)};

    QString freeName(const QString& fileName) const
    {
        const QString plain = FileNames::isPlain(fileName) ? fileName : u"toma.wav"_s;
        const QFileInfo info(plain);
        QString name = plain;
        for (int number = 2; taken.contains(folded(name)); ++number)
            name =
                u"%1_%2.%3"_s.arg(info.completeBaseName(), QString::number(number), info.suffix());
        return name;
    }

    void add(const QString& clipPath, const QString& folder)
    {
        if (clipPath.isEmpty() || names.contains(clipPath))
            return;
        const QFileInfo file(QDir(folder), clipPath);
        const QString name = freeName(QFileInfo(clipPath).fileName());
        taken.insert(folded(name));
        names.insert(clipPath, name);
        if (file.isFile())
            paths.insert(name, file.absoluteFilePath());
    }
};

ClipSources sourcesOf(const Project& project, const QString& folder)
{
    ClipSources sources;
    for (const AudioTrack& track : project.audioTracks) {
        for (const AudioClip& clip : track.clips)
            sources.add(clip.audioFilePath, folder);
    }
    return sources;
}

/// The work's file, in which clips are called as in the archive.
QByteArray textOf(const Project& project, const ClipSources& sources)
{
    Project carried;
    static_cast<Song&>(carried) = project;
    for (AudioTrack& track : carried.audioTracks) {
        for (AudioClip& clip : track.clips)
            clip.audioFilePath = sources.names.value(clip.audioFilePath);
    }
    return QJsonDocument(carried.toJson()).toJson(QJsonDocument::Indented);
}

bool keepsToBounds(const ClipSources& sources, qint64 textBytes)
{
    qint64 bytes = textBytes;
    for (const QString& path : sources.paths)
        bytes += QFileInfo(path).size();
    return textBytes <= ProjectHead::kMaxFileBytes && bytes <= WorkArchive::kMaxBytes &&
           sources.paths.size() <= WorkArchive::kMaxFiles;
}

// ---- Reading -------------------------------------------------------------------------------

/// Entries by their names. Nothing if one of them is no plain file with a plain name of its own.
std::optional<QHash<QString, qsizetype>> namesOf(const QList<ZipEntry>& entries)
{
    QHash<QString, qsizetype> names;
    QSet<QString> taken;
    for (qsizetype index = 0; index < entries.size(); ++index) {
        QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString name = utf8(entries[index].name);
        if (utf8.hasError() || !FileNames::isPlain(name) || !entries[index].plain ||
            taken.contains(folded(name)))
            return std::nullopt;
        taken.insert(folded(name));
        names.insert(name, index);
    }
    return names;
}

bool keepsToBounds(const QList<ZipEntry>& entries, qint64 archiveBytes)
{
    qint64 bytes = 0;
    for (const ZipEntry& entry : entries) {
        if (entry.size > WorkArchive::kMaxBytes - bytes)
            return false;
        bytes += entry.size;
    }
    return entries.size() <= WorkArchive::kMaxFiles + 1 &&
           (bytes <= WorkArchive::kFreelyUnpacked ||
            bytes / WorkArchive::kMaxGrowth <= archiveBytes);
}

/// The names of the files that the clips of a work name; nothing if one of them is no plain name.
std::optional<QSet<QString>> clipNames(const QJsonObject& json)
{
    Project project;
    project.loadJson(json);
    QSet<QString> names;
    for (const AudioTrack& track : std::as_const(project.audioTracks)) {
        for (const AudioClip& clip : track.clips) {
            if (clip.audioFilePath.isEmpty())
                continue;
            if (!FileNames::isPlain(clip.audioFilePath) ||
                folded(clip.audioFilePath) == folded(kProjectFile))
                return std::nullopt;
            names.insert(clip.audioFilePath);
        }
    }
    return names;
}

bool unpackInto(const QString& path, const ZipReader& archive, qsizetype index)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && archive.unpack(index, file) &&
           file.flush();
}

} // namespace

bool WorkArchive::write(const Project& project, const QString& clipsFolder, const QString& path)
{
    const ClipSources sources = sourcesOf(project, clipsFolder);
    const QByteArray text = textOf(project, sources);
    if (!keepsToBounds(sources, text.size()))
        return false;
    using Method = ZipWriter::Method;
    ZipWriter archive(path);
    bool added = archive.add(kProjectFile, text,
                             text.size() <= kDeflatedText ? Method::Deflate : Method::Store);
    for (auto source = sources.paths.cbegin(); source != sources.paths.cend(); ++source)
        added = added && archive.addFile(source.key(), source.value(), Method::Store);
    return added && archive.finish();
}

std::optional<QByteArray> WorkArchive::unpack(const QString& path, const QString& folder)
{
    const auto archive = ZipReader::open(path);
    if (!archive || !keepsToBounds(archive->entries(), QFileInfo(path).size()))
        return std::nullopt;
    const auto names = namesOf(archive->entries());
    const qsizetype head = names ? names->value(kProjectFile, -1) : -1;
    if (head < 0 || archive->entries()[head].size > ProjectHead::kMaxFileBytes)
        return std::nullopt;
    QBuffer text;
    text.open(QIODevice::WriteOnly);
    if (!archive->unpack(head, text))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(text.data());
    const auto clips = document.isObject() ? clipNames(document.object()) : std::nullopt;
    if (!clips || !QDir().mkpath(folder) ||
        !WholeFile::replace(folder + u'/' + kProjectFile, text.data()))
        return std::nullopt;
    for (const QString& clip : *clips) {
        if (names->contains(clip) &&
            !unpackInto(folder + u'/' + clip, *archive, names->value(clip)))
            return std::nullopt;
    }
    return text.data();
}
