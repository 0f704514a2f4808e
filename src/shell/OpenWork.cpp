#include "shell/OpenWork.h"

#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "playback/PlaybackEngine.h"
#include "storage/ClipFiles.h"
#include "storage/LocalStorageProvider.h"

namespace {

/// From the first edit that is not kept yet. Edits in between do not put it off: nobody loses more
/// than this.
constexpr int kKeepMs = 2000;

} // namespace

OpenWork::OpenWork(PlaybackEngine& engine, QObject* parent)
    : QObject(parent), engine_(engine), storage_(std::make_unique<LocalStorageProvider>(QString())),
      copy_(RecoveryCopy::standardFolder())
{
    keepTimer_.setSingleShot(true);
    keepTimer_.setInterval(kKeepMs);
    connect(&keepTimer_, &QTimer::timeout, this, &OpenWork::keep);
}

OpenWork::~OpenWork() = default;

void OpenWork::open(Project* project, const QString& id)
{
    if (project_)
        project_->deleteLater();
    project_ = project;
    id_ = id;
    engine_.setProject(project);
    hearFrom(id.isEmpty() ? QString() : storage_->projectFolder(id));
}

void OpenWork::accept()
{
    undoStack_.reset(*project_);
    markSaved();
}

bool OpenWork::takeOver(const AbandonedCopy& copy)
{
    if (!copy.clipsFolder().isEmpty())
        engine_.projectDir = copy.clipsFolder();
    storage_->setLastSeen(copy.id(), copy.lastSeen());
    saved_.reset();
    look();
    return copy_.keepNow(present());
}

// ---- Whether it is safe --------------------------------------------------------------------

bool OpenWork::hasContent() const
{
    return project_ && ProjectEdits::hasContent(*project_);
}

bool OpenWork::hasFile() const
{
    return !id_.isEmpty() && storage_->hasProject(id_);
}

bool OpenWork::isUnsaved() const
{
    if (!hasFile())
        return hasContent();
    return !saved_ || !ProjectEdits::isSameWork(*saved_, *project_);
}

void OpenWork::look()
{
    emit looked(isUnsaved());
}

void OpenWork::markSaved()
{
    saved_ = detachedCopy(*project_);
    forgetKept();
    look();
}

void OpenWork::snapshot()
{
    undoStack_.snapshot(*project_);
    keepSoon();
}

void OpenWork::restore(const Song& state)
{
    const QString name = project_->name;
    static_cast<Song&>(*project_) = state;
    project_->name = name;
    keepSoon();
}

void OpenWork::keepSoon()
{
    if (!keepTimer_.isActive())
        keepTimer_.start();
    look();
}

void OpenWork::keep()
{
    if (isUnsaved())
        copy_.keep(present());
    else
        copy_.remove();
}

void OpenWork::forgetKept()
{
    keepTimer_.stop();
    copy_.remove();
}

KeptWork OpenWork::present() const
{
    return {id_, storage_->lastSeen(id_), engine_.projectDir, *project_};
}

// ---- Saving --------------------------------------------------------------------------------

bool OpenWork::save()
{
    copy_.keepNow(present());
    if (!bringClipsHome() || !storage_->saveProject(id_, *project_))
        return false;
    markSaved();
    return true;
}

bool OpenWork::goOnInCopy(const QString& name)
{
    const QString id = storage_->createProjectId(name);
    const QString folder = storage_->projectFolder(id);
    const auto clips = ClipFiles::copyAll(namesOfClips(), clipsFolder(), folder);
    Project copy;
    static_cast<Song&>(copy) = *project_;
    copy.name = name;
    ClipFiles::rename(copy.audioTracks, clips.value_or(ClipFiles::Copies()));
    if (!clips || !storage_->saveProject(id, copy)) {
        ClipFiles::discard(clips.value_or(ClipFiles::Copies()), folder);
        return false;
    }
    renameClips(*clips);
    project_->name = name;
    id_ = id;
    hearFrom(folder);
    markSaved();
    return true;
}

// ---- The clips -----------------------------------------------------------------------------

QString OpenWork::clipsFolder() const
{
    return engine_.projectDir.isEmpty() ? storage_->projectFolder(id_) : engine_.projectDir;
}

void OpenWork::addClip(const QString& trackName, const AudioClip& clip)
{
    // A work that was never saved has no folder of its own to be heard from.
    engine_.projectDir = clipsFolder();
    ProjectEdits::addClip(*project_, trackName, clip);
}

void OpenWork::hearFrom(const QString& folder)
{
    engine_.projectDir = folder;
    engine_.prepareVoices();
    emit movedTo(clipsFolder());
}

bool OpenWork::bringClipsHome()
{
    const QString folder = storage_->projectFolder(id_);
    const QString& former = engine_.projectDir;
    if (!former.isEmpty() && former != folder) {
        const auto copies = ClipFiles::copyInto(namesOfClips(), former, folder);
        if (!copies)
            return false;
        renameClips(*copies);
    }
    renameClips(ClipFiles::gather(namesOfClips(), folder));
    hearFrom(folder);
    return true;
}

/// What undo can bring back is meant too.
QStringList OpenWork::namesOfClips() const
{
    return ClipFiles::namesIn(undoStack_.audioTracks() + project_->audioTracks);
}

void OpenWork::renameClips(const QHash<QString, QString>& names)
{
    if (names.isEmpty())
        return;
    const auto rename = [&](QList<AudioTrack>& tracks) { ClipFiles::rename(tracks, names); };
    rename(project_->audioTracks);
    undoStack_.changeAudioTracks(rename);
}
