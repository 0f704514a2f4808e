#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/EditorPage.h"
#include "shell/MainWindow.h"
#include "shell/OpenWork.h"
#include "shell/RecoveryBar.h"
#include "shell/VoiceRecording.h"
#include "storage/ProjectStorageProvider.h"

#include <QCloseEvent>

// ---- Whether the work is safe --------------------------------------------------------------

bool MainWindow::projectHasContent() const
{
    return work_->hasContent();
}

bool MainWindow::confirmDiscardChanges()
{
    finishGestures();
    if (!work_->isUnsaved() || (work_->hasFile() && saveCurrentProject()))
        return true;
    const auto answer = prompts_.ask(
        this, tr("Obra sin guardar"),
        tr("«%1» todavía no está guardada. ¿Querés guardarla antes?").arg(project()->name),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    if (answer == QMessageBox::Save)
        return saveCurrentProject();
    return answer != QMessageBox::Cancel;
}

bool MainWindow::mayClose()
{
    if (!work_->hasFile())
        return confirmDiscardChanges();
    finishGestures();
    return !work_->isUnsaved() || saveCurrentProject() ||
           prompts_.ask(this, tr("Obra sin guardar"), tr("¿Cerrar sin guardar?"),
                        QMessageBox::Yes | QMessageBox::No, QMessageBox::No) == QMessageBox::Yes;
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    finishGestures();
    voice_->finish();
    engine()->stop();
    event->setAccepted(mayClose());
    if (!event->isAccepted())
        return;
    keepLayout();
    work_->forgetKept();
}

bool MainWindow::saveOverOthers()
{
    const auto answer =
        prompts_.ask(this, tr("Guardar"), tr("Otra persona cambió esta obra. ¿Guardar como copia?"),
                     QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, QMessageBox::Yes);
    if (answer == QMessageBox::Yes)
        work_->setId(work_->storage().createProjectId(project()->name));
    return answer == QMessageBox::Yes || answer == QMessageBox::No;
}

// ---- The recovery copy ---------------------------------------------------------------------

void MainWindow::findAbandoned()
{
    std::vector<AbandonedCopy> copies = AbandonedCopy::findAll(RecoveryCopy::standardFolder());
    // A program that ended right behind a save has nothing to give back.
    std::erase_if(copies, [this](AbandonedCopy& copy) {
        const bool saved = work_->storage().readProject(copy.id()) == copy.project();
        if (saved)
            copy.remove();
        return saved;
    });
    page_->recoveryBar()->add(std::move(copies));
}

void MainWindow::recover()
{
    finishGestures();
    voice_->finish();
    const AbandonedCopy* copy = page_->recoveryBar()->offered();
    if (!copy || !confirmDiscardChanges())
        return;
    exchangeProject(Project::fromJson(copy->project(), this), copy->id());
    // The work changes hands only when it is kept by this program.
    if (work_->takeOver(*copy))
        page_->recoveryBar()->dropOffered();
}
