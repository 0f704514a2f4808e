#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/CopyName.h"
#include "shell/MainWindow.h"
#include "shell/VoiceTake.h"
#include "storage/ClipFiles.h"
#include "storage/ProjectStorageProvider.h"

#include <QStatusBar>

namespace {

constexpr int kSavedMs = 2000;
constexpr int kCopiedMs = 5000;

QStringList namesOf(const QList<ProjectInfo>& works)
{
    QStringList names;
    for (const ProjectInfo& work : works)
        names.append(work.name);
    return names;
}

} // namespace

void MainWindow::saveAs()
{
    finishGestures();
    if (!project_)
        return;
    if (currentProjectId_.isEmpty()) {
        saveCurrentProject();
        return;
    }
    const auto name = askName(tr("Guardar como"));
    if (name && goOnInCopy(*name))
        statusBar()->showMessage(tr("Obra guardada."), kSavedMs);
}

void MainWindow::duplicateWork()
{
    finishGestures();
    if (!project_ || ((!hasFile() || hasUnsavedWork()) && !saveCurrentProject()))
        return;
    const QString former = project_->name;
    if (goOnInCopy(copyName(former, namesOf(storage_->listProjects()))))
        statusBar()->showMessage(
            tr("Ahora estás en «%1». «%2» queda como estaba.").arg(project_->name, former),
            kCopiedMs);
}

void MainWindow::renameWork()
{
    finishGestures();
    if (!project_)
        return;
    const auto name = askName(tr("Cambiar nombre"));
    if (!name || *name == project_->name)
        return;
    project_->name = *name;
    showProjectName();
    if (hasFile())
        saveCurrentProject();
    else
        keepSoon();
}

bool MainWindow::goOnInCopy(const QString& name)
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
        prompts_.warn(this, tr("Guardar"), tr("No pude guardar la obra."));
        return false;
    }
    renameClips(*clips);
    project_->name = name;
    currentProjectId_ = id;
    engine_->projectDir = folder;
    engine_->prepareVoices();
    if (take_)
        take_->moveTo(folder);
    showProjectName();
    markSaved();
    return true;
}
