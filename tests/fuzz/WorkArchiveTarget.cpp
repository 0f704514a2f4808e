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
    // A folder of its own: beside it the suite's data folder comes to be, as soon as a work is
    // opened.
    const QDir scratch(FuzzLaws::scratch().filePath(u"archivo"_s));
    require(scratch.mkpath(u"."_s), "the scratch folder takes a folder");
    const QString archive = FuzzLaws::file(u"archivo/obra.velta"_s, input);
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
    require(scratch.isEmpty(kEverything), "nothing is written beside the works");
}
