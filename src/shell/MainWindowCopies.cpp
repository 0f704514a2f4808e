#include "model/Project.h"
#include "shell/CopyName.h"
#include "shell/MainWindow.h"
#include "shell/OpenWork.h"
#include "storage/ProjectStorageProvider.h"

#include <QStatusBar>

namespace {

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
    if (!project())
        return;
    if (work_->id().isEmpty()) {
        saveCurrentProject();
        return;
    }
    const auto name = askName(tr("Guardar como"));
    if (name && goOnInCopy(*name))
        tellSaved();
}

void MainWindow::duplicateWork()
{
    finishGestures();
    if (!project() || ((!work_->hasFile() || work_->isUnsaved()) && !saveCurrentProject()))
        return;
    const QString former = project()->name;
    if (goOnInCopy(copyName(former, namesOf(work_->storage().listProjects()))))
        statusBar()->showMessage(
            tr("Ahora estás en «%1». «%2» queda como estaba.").arg(project()->name, former),
            kCopiedMs);
}

void MainWindow::renameWork()
{
    finishGestures();
    if (!project())
        return;
    const auto name = askName(tr("Cambiar nombre"));
    if (!name || *name == project()->name)
        return;
    project()->name = *name;
    showProjectName();
    if (work_->hasFile())
        saveCurrentProject();
    else
        work_->keepSoon();
}

bool MainWindow::goOnInCopy(const QString& name)
{
    if (!work_->goOnInCopy(name)) {
        prompts_.warn(this, tr("Guardar"), tr("No pude guardar la obra."));
        return false;
    }
    showProjectName();
    return true;
}
