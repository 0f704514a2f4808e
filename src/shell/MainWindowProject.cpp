#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "model/UndoStack.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "shell/OpenProjectDialog.h"
#include "shell/ProjectGallery.h"
#include "shell/RecoveryBar.h"
#include "shell/VoiceTake.h"
#include "storage/ClipFiles.h"
#include "storage/ProjectStorageProvider.h"
#include "storage/RecoveryCopy.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QMenu>
#include <QStatusBar>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kSavedMs = 2000;
constexpr int kNothingToRemoveMs = 5000;

constexpr qsizetype kRecentWorks = 10;
constexpr int kRecentNameWidth = 320;

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
    finishTake();
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
    const QString id = storage_->createProjectId(name);
    Project created;
    created.name = name.isEmpty() ? tr("Mi canción") : name;
    created.timeSignature = timeSignature;
    created.keySignature = key;
    created.bpm = bpm;
    created.tracks.append(firstTrack(tr("Melodía")));
    if (storage_->saveProject(id, created))
        openProject(id);
    else
        prompts_.warn(this, tr("Nuevo proyecto"), tr("No pude crear el proyecto."));
}

void MainWindow::openProject(const QString& id)
{
    finishGestures();
    Project* opened = storage_->loadProject(id, this);
    if (opened) {
        exchangeProject(opened, id);
        return;
    }
    // A save that was broken off leaves a damaged file, and the copy that was kept before it.
    findAbandoned();
    recoveryBar_->bringForward(id);
    prompts_.warn(this, tr("Abrir proyecto"), tr("No pude abrir el proyecto."));
}

void MainWindow::openProjectById(const QString& id)
{
    openProject(id);
}

void MainWindow::openProjectDialog()
{
    finishGestures();
    finishTake();
    const QList<ProjectInfo> works = storage_->listProjects();
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
    OpenProjectDialog dialog(works, storage_.get(), prompts_, this,
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

void MainWindow::fillRecentMenu()
{
    recentMenu_->clear();
    for (const ProjectInfo& work : storage_->recentProjects(kRecentWorks)) {
        const QString name = recentMenu_->fontMetrics().elidedText(
            work.name.simplified(), Qt::ElideMiddle, kRecentNameWidth);
        const QString time = work.modifiedAt.toString(u"dd/MM/yyyy HH:mm"_s);
        recentMenu_->addAction(QString(name).replace(u'&', "&&"_L1) + u"  ·  "_s + time, this,
                               [this, id = work.id] { openRecentProject(id); });
    }
    if (recentMenu_->isEmpty())
        recentMenu_->addAction(tr("Todavía no hay ninguna"))->setEnabled(false);
}

void MainWindow::openRecentProject(const QString& id)
{
    finishGestures();
    finishTake();
    if (confirmDiscardChanges())
        openProject(id);
}

void MainWindow::finishGestures()
{
    headerPanel_->takeTypedName();
    pianoRoll_->endDrag();
    arranger_->endDrag();
}

bool MainWindow::saveCurrentProject()
{
    finishGestures();
    if (!project_ || (currentProjectId_.isEmpty() && !nameForFirstSave()))
        return false;
    if (storage_->changedElsewhere(currentProjectId_) && !saveOverOthers())
        return false;
    copy_->keepNow(presentWork());
    if (!bringClipsHome() || !storage_->saveProject(currentProjectId_, *project_)) {
        prompts_.warn(this, tr("Guardar"), tr("No pude guardar la obra."));
        return false;
    }
    markSaved();
    statusBar()->showMessage(tr("Obra guardada."), kSavedMs);
    return true;
}

std::optional<QString> MainWindow::askName(const QString& title)
{
    QString name;
    while (name.isEmpty()) {
        const auto answer =
            prompts_.askText(this, title, tr("¿Cómo se llama esta obra?"), project_->name);
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
    project_->name = *name;
    currentProjectId_ = storage_->createProjectId(*name);
    showProjectName();
    return true;
}

bool MainWindow::bringClipsHome()
{
    const QString folder = storage_->projectFolder(currentProjectId_);
    const QString& former = engine_->projectDir;
    if (!former.isEmpty() && former != folder) {
        const auto copies = ClipFiles::copyInto(namesOfClips(), former, folder);
        if (!copies)
            return false;
        renameClips(*copies);
    }
    renameClips(ClipFiles::gather(namesOfClips(), folder));
    engine_->projectDir = folder;
    engine_->prepareVoices();
    if (take_)
        take_->moveTo(folder);
    return true;
}

/// What undo can bring back is meant too.
QStringList MainWindow::namesOfClips() const
{
    return ClipFiles::namesIn(undoStack_->audioTracks() + project_->audioTracks);
}

void MainWindow::renameClips(const QHash<QString, QString>& names)
{
    if (names.isEmpty())
        return;
    const auto rename = [&](QList<AudioTrack>& tracks) { ClipFiles::rename(tracks, names); };
    rename(project_->audioTracks);
    undoStack_->changeAudioTracks(rename);
}

void MainWindow::addTrack()
{
    finishGestures();
    if (!project_)
        return;
    if (project_->tracks.size() >= kMaxNoteTracks) {
        prompts_.inform(this, tr("Veltas"),
                        tr("Se alcanzó el máximo de %1 veltas de notas.").arg(kMaxNoteTracks));
        return;
    }
    const qsizetype position =
        ProjectEdits::addNoteTrack(*project_, tr("Velta %1").arg(project_->tracks.size() + 1));
    snapshotAndRefresh();
    arranger_->selectNoteTrack(static_cast<int>(position), false);
    arranger_->showLane(arranger_->keyLane());
}

void MainWindow::removeSelectedTrack()
{
    finishGestures();
    if (!project_)
        return;
    const int voice = arranger_->selectedAudioTrack();
    if (voice < 0 && !ProjectEdits::removeNoteTrack(*project_, arranger_->activeTrack())) {
        statusBar()->showMessage(tr("Elegí la velta que querés quitar."), kNothingToRemoveMs);
        return;
    }
    if (voice >= 0)
        ProjectEdits::removeAudioTrack(*project_, voice);
    snapshotAndRefresh();
    arranger_->selectNoteTrack(project_->tracks.isEmpty() ? -1 : 0, false);
}
