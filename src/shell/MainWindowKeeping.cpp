#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "shell/RecoveryBar.h"
#include "storage/ProjectStorageProvider.h"
#include "storage/RecoveryCopy.h"

#include <QCloseEvent>
#include <QTimer>

namespace {

/// From the first edit that is not kept yet. Edits in between do not put it off: nobody loses more
/// than this.
constexpr int kKeepMs = 2000;

} // namespace

// ---- Whether the work is safe --------------------------------------------------------------

bool MainWindow::projectHasContent() const
{
    return project_ && ProjectEdits::hasContent(*project_);
}

bool MainWindow::hasFile() const
{
    return !currentProjectId_.isEmpty() && storage_->hasProject(currentProjectId_);
}

bool MainWindow::hasUnsavedWork() const
{
    if (!hasFile())
        return projectHasContent();
    return !saved_ || !ProjectEdits::isSameWork(*saved_, *project_);
}

void MainWindow::showUnsaved()
{
    setWindowModified(hasUnsavedWork());
}

void MainWindow::markSaved()
{
    saved_ = detachedCopy(*project_);
    keepTimer_->stop();
    copy_->remove();
    showUnsaved();
}

bool MainWindow::confirmDiscardChanges()
{
    finishGestures();
    if (!hasUnsavedWork() || (hasFile() && saveCurrentProject()))
        return true;
    const auto answer = prompts_.ask(
        this, tr("Obra sin guardar"),
        tr("«%1» todavía no está guardada. ¿Querés guardarla antes?").arg(project_->name),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    if (answer == QMessageBox::Save)
        return saveCurrentProject();
    return answer != QMessageBox::Cancel;
}

bool MainWindow::mayClose()
{
    if (!hasFile())
        return confirmDiscardChanges();
    finishGestures();
    return !hasUnsavedWork() || saveCurrentProject() ||
           prompts_.ask(this, tr("Obra sin guardar"), tr("¿Cerrar sin guardar?"),
                        QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    finishGestures();
    finishTake();
    engine_->stop();
    event->setAccepted(mayClose());
    if (!event->isAccepted())
        return;
    keepLayout();
    keepTimer_->stop();
    copy_->remove();
}

bool MainWindow::saveOverOthers()
{
    const auto answer =
        prompts_.ask(this, tr("Guardar"), tr("Otra persona cambió esta obra. ¿Guardar como copia?"),
                     QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Yes);
    if (answer == QMessageBox::Yes)
        currentProjectId_ = storage_->createProjectId(project_->name);
    return answer == QMessageBox::Yes || answer == QMessageBox::No;
}

// ---- The recovery copy ---------------------------------------------------------------------

void MainWindow::createRecovery()
{
    copy_ = std::make_unique<RecoveryCopy>(RecoveryCopy::standardFolder());
    keepTimer_ = new QTimer(this);
    keepTimer_->setSingleShot(true);
    keepTimer_->setInterval(kKeepMs);
    connect(keepTimer_, &QTimer::timeout, this, &MainWindow::keepCopy);
}

void MainWindow::keepSoon()
{
    if (!keepTimer_->isActive())
        keepTimer_->start();
    showUnsaved();
}

KeptWork MainWindow::presentWork() const
{
    return {currentProjectId_, storage_->lastSeen(currentProjectId_), engine_->projectDir,
            *project_};
}

void MainWindow::keepCopy()
{
    if (hasUnsavedWork())
        copy_->keep(presentWork());
    else
        copy_->remove();
}

void MainWindow::findAbandoned()
{
    std::vector<AbandonedCopy> copies = AbandonedCopy::findAll(RecoveryCopy::standardFolder());
    // A program that ended right behind a save has nothing to give back.
    std::erase_if(copies, [this](AbandonedCopy& copy) {
        const bool saved = storage_->readProject(copy.id()) == copy.project();
        if (saved)
            copy.remove();
        return saved;
    });
    recoveryBar_->add(std::move(copies));
}

void MainWindow::recover()
{
    finishGestures();
    finishTake();
    const AbandonedCopy* copy = recoveryBar_->offered();
    if (!copy || !confirmDiscardChanges())
        return;
    exchangeProject(Project::fromJson(copy->project(), this), copy->id());
    if (!copy->clipsFolder().isEmpty())
        engine_->projectDir = copy->clipsFolder();
    storage_->setLastSeen(copy->id(), copy->lastSeen());
    saved_.reset();
    showUnsaved();
    // The work changes hands only when it is kept by this program.
    if (copy_->keepNow(presentWork()))
        recoveryBar_->dropOffered();
}
