#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "shell/EditorPage.h"
#include "shell/MainWindow.h"
#include "shell/OpenProjectDialog.h"
#include "shell/OpenWork.h"
#include "shell/ProjectGallery.h"
#include "shell/RecoveryBar.h"
#include "shell/VoiceRecording.h"
#include "storage/ProjectStorageProvider.h"
#include "views/arranger/TrackArranger.h"

#include <QStatusBar>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kSavedMs = 2000;
constexpr int kNothingToRemoveMs = 5000;

Track firstTrack(const QString& name)
{
    Track track;
    track.name = name;
    track.instrumentId = u"gm_piano"_s;
    return track;
}

} // namespace

void MainWindow::startBlankProject()
{
    auto* blank = new Project(this);
    blank->name = tr("Obra sin título");
    blank->tracks.append(firstTrack(tr("Melodía")));
    exchangeProject(blank, QString());
}

void MainWindow::newProject()
{
    finishGestures();
    voice_->finish();
    if (!confirmDiscardChanges())
        return;
    QString name;
    TimeSignature timeSignature;
    KeySignature key;
    int bpm = Project::kDefaultBpm;
    if (ProjectGallery::askNewProject(this, &name, &timeSignature, &key, &bpm, prompts_))
        createProject(name, timeSignature, key, bpm);
}

void MainWindow::createProject(const QString& name, const TimeSignature& timeSignature,
                               const KeySignature& key, int bpm)
{
    const QString id = work_->storage().createProjectId(name);
    Project created;
    created.name = name.isEmpty() ? tr("Mi canción") : name;
    created.timeSignature = timeSignature;
    created.keySignature = key;
    created.bpm = bpm;
    created.tracks.append(firstTrack(tr("Melodía")));
    if (work_->storage().saveProject(id, created))
        openProject(id);
    else
        prompts_.warn(this, tr("Nuevo proyecto"), tr("No pude crear el proyecto."));
}

void MainWindow::openProject(const QString& id)
{
    finishGestures();
    Project* opened = work_->storage().loadProject(id, this);
    if (opened) {
        exchangeProject(opened, id);
        return;
    }
    // A save that was broken off leaves a damaged file, and the copy that was kept before it.
    findAbandoned();
    page_->recoveryBar()->bringForward(id);
    prompts_.warn(this, tr("Abrir proyecto"), tr("No pude abrir el proyecto."));
}

void MainWindow::openProjectById(const QString& id)
{
    openProject(id);
}

void MainWindow::openProjectDialog()
{
    finishGestures();
    voice_->finish();
    const QList<ProjectInfo> works = work_->storage().listProjects();
    if (works.isEmpty()) {
        const bool fromFile =
            prompts_.suggest(this, tr("Abrir obra"),
                             tr("Todavía no hay ninguna obra guardada.\n\nCuando guardes esta "
                                "(Archivo → Guardar), va a aparecer acá."),
                             tr("Desde un archivo…"));
        const auto path = fromFile ? askWorkFile() : std::nullopt;
        if (path)
            openWorkFile(*path);
        return;
    }
    if (!confirmDiscardChanges())
        return;
    OpenProjectDialog dialog(works, &work_->storage(), prompts_, this,
                             [this](const QString& id) { return rhythmName(id); });
    if (!prompts_.run(dialog))
        return;
    if (dialog.wantsFile()) {
        if (const auto path = askWorkFile())
            takeWorkFile(*path);
    } else if (const auto id = dialog.currentId()) {
        openProject(*id);
    }
}

void MainWindow::openRecentProject(const QString& id)
{
    finishGestures();
    voice_->finish();
    if (confirmDiscardChanges())
        openProject(id);
}

bool MainWindow::saveCurrentProject()
{
    finishGestures();
    if (!project() || (work_->id().isEmpty() && !nameForFirstSave()))
        return false;
    if (work_->storage().changedElsewhere(work_->id()) && !saveOverOthers())
        return false;
    if (!work_->save()) {
        prompts_.warn(this, tr("Guardar"), tr("No pude guardar la obra."));
        return false;
    }
    tellSaved();
    return true;
}

void MainWindow::tellSaved()
{
    statusBar()->showMessage(tr("Obra guardada."), kSavedMs);
}

std::optional<QString> MainWindow::askName(const QString& title)
{
    QString name;
    while (name.isEmpty()) {
        const auto answer =
            prompts_.askText(this, title, tr("¿Cómo se llama esta obra?"), project()->name);
        if (!answer)
            return std::nullopt;
        name = answer->trimmed();
        if (name.isEmpty())
            prompts_.inform(this, title, tr("Para guardarla, la obra necesita un nombre."));
    }
    return name;
}

bool MainWindow::nameForFirstSave()
{
    const auto name = askName(tr("Guardar obra"));
    if (!name)
        return false;
    project()->name = *name;
    work_->setId(work_->storage().createProjectId(*name));
    showProjectName();
    return true;
}

void MainWindow::addTrack()
{
    finishGestures();
    if (!project())
        return;
    if (project()->tracks.size() >= kMaxNoteTracks) {
        prompts_.inform(this, tr("Veltas"),
                        tr("Se alcanzó el máximo de %1 veltas de notas.").arg(kMaxNoteTracks));
        return;
    }
    const qsizetype position =
        ProjectEdits::addNoteTrack(*project(), tr("Velta %1").arg(project()->tracks.size() + 1));
    snapshotAndRefresh();
    arranger_->selectNoteTrack(static_cast<int>(position), false);
    arranger_->showLane(arranger_->keyLane());
}

void MainWindow::removeSelectedTrack()
{
    finishGestures();
    if (!project())
        return;
    const int voice = arranger_->selectedAudioTrack();
    if (voice < 0 && !ProjectEdits::removeNoteTrack(*project(), arranger_->activeTrack())) {
        statusBar()->showMessage(tr("Elegí la velta que querés quitar."), kNothingToRemoveMs);
        return;
    }
    if (voice >= 0)
        ProjectEdits::removeAudioTrack(*project(), voice);
    snapshotAndRefresh();
    arranger_->selectNoteTrack(project()->tracks.isEmpty() ? -1 : 0, false);
}
