#include "FuzzLaws.h"
#include "FuzzTargets.h"
#include "model/Project.h"
#include "storage/LocalStorageProvider.h"
#include "storage/WorkArchive.h"

#include <QSet>

#include <memory>

using FuzzLaws::require;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto kEverything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

QSet<QString> clipsOf(const Project& work)
{
    QSet<QString> clips;
    for (const AudioTrack& track : work.audioTracks) {
        for (const AudioClip& clip : track.clips)
            clips.insert(clip.audioFilePath);
    }
    return clips;
}

} // namespace

void FuzzTargets::velta_obra(const QByteArray& input)
{
    const QDir scratch = FuzzLaws::scratch();
    const QString archive = FuzzLaws::file(u"obra.velta"_s, input);
    const QStringList before = scratch.entryList(kEverything);
    const QDir works(scratch.filePath(u"obras"_s));
    LocalStorageProvider storage(works.path());
    const auto id = storage.importProject(archive);
    require(works.entryList(kEverything) == (id ? QStringList(*id) : QStringList()),
            "a work has one folder, and what is refused has none");
    if (id) {
        const std::unique_ptr<Project> work(storage.loadProject(*id, nullptr));
        require(work != nullptr, "what was unpacked can be opened");
        const QSet<QString> clips = clipsOf(*work);
        const QDir folder(storage.projectFolder(*id));
        for (const QFileInfo& file : folder.entryInfoList(kEverything))
            require(file.isFile() && !file.isSymLink() &&
                        (file.fileName() == "project.json"_L1 || clips.contains(file.fileName())),
                    "a work's folder holds its file and its clips");
        require(WorkArchive::write(*work, folder.path(), scratch.filePath(u"otra.velta"_s)),
                "what was unpacked can be packed again");
        QFile::remove(scratch.filePath(u"otra.velta"_s));
    }
    QDir(works).removeRecursively();
    QFile::remove(archive);
    QStringList after = scratch.entryList(kEverything);
    after.append(u"obra.velta"_s);
    after.sort();
    QStringList expected = before;
    expected.sort();
    require(after == expected, "nothing is written beside the works");
}
