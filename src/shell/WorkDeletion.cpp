#include "shell/WorkDeletion.h"

#include "shell/Prompts.h"
#include "storage/ProjectStorageProvider.h"

#include <QCoreApplication>

bool askAndDelete(const WorkDeletion& deletion, QWidget* over, ProjectStorageProvider& storage,
                  Prompts& prompts)
{
    const QString question =
        QCoreApplication::translate("WorkDeletion", "¿Borrar «%1»? No se puede deshacer.");
    if (prompts.ask(over, deletion.title, question.arg(deletion.name),
                    QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return false;
    storage.deleteProject(deletion.id);
    return true;
}
