#include "content/ContentCatalog.h"
#include "content/LoopLibrary.h"
#include "export/ExportError.h"
#include "model/Project.h"
#include "shell/LoopBrowser.h"
#include "shell/MainWindow.h"
#include "shell/MissingRhythms.h"
#include "shell/OnlineSearchModel.h"
#include "shell/OpenWork.h"
#include "shell/Services.h"
#include "shell/VoiceRecording.h"
#include "storage/ProjectStorageProvider.h"
#include "storage/WorkArchive.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGuiApplication>
#include <QMimeData>
#include <QTimer>
#include <QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Names that a message has room for.
constexpr qsizetype kNamedRhythms = 6;

/// The work in one file that is dragged, if it is that and nothing else.
std::optional<QString> draggedWorkFile(const QMimeData& mime)
{
    const QList<QUrl> urls = mime.urls();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return std::nullopt;
    const QString path = urls.first().toLocalFile();
    const bool isWork = path.endsWith(QLatin1StringView(WorkArchive::kSuffix), Qt::CaseInsensitive);
    return isWork ? std::optional(path) : std::nullopt;
}

} // namespace

void MainWindow::exportWork()
{
    exportFile({.title = tr("Exportar obra completa"),
                .suffix = QLatin1StringView(WorkArchive::kSuffix),
                .filter = workFileFilter(),
                .failureTitle = tr("Exportar obra completa"),
                .write = [this](const QString& path, QString* error, const ExportProgress&) {
                    if (WorkArchive::write(*project(), work_->clipsFolder(), path))
                        return true;
                    setError(error, tr("No pude escribir el archivo."));
                    return false;
                }});
}

QString MainWindow::workFileFilter()
{
    return tr("Obra de Velta (*.velta)");
}

std::optional<QString> MainWindow::askWorkFile()
{
    return prompts_.askOpenFile(this, tr("Abrir obra"), workFileFilter());
}

void MainWindow::openWorkFile(const QString& path)
{
    finishGestures();
    voice_->finish();
    if (confirmDiscardChanges())
        takeWorkFile(path);
}

void MainWindow::takeWorkFile(const QString& path)
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const auto id = work_->storage().importProject(path);
    QGuiApplication::restoreOverrideCursor();
    if (!id) {
        prompts_.warn(this, tr("Abrir obra"), tr("No pude abrir la obra."));
        return;
    }
    openProject(*id);
    offerMissingRhythms();
}

QString MainWindow::rhythmName(const QString& id) const
{
    if (const Rhythm* rhythm = loopLibrary()->findRhythm(id))
        return OnlineSearchModel::oneLine(rhythm->displayName);
    const CatalogEntry* offered = services_->catalog()->findEntry(id);
    return OnlineSearchModel::oneLine(offered ? offered->displayName : id);
}

void MainWindow::offerMissingRhythms()
{
    const QStringList missing = missingRhythms(*project(), *loopLibrary());
    if (missing.isEmpty())
        return;
    QStringList names;
    for (const QString& id : missing.first(std::min(missing.size(), kNamedRhythms)))
        names.append(rhythmName(id));
    if (missing.size() > kNamedRhythms)
        names.append(tr("%1 más").arg(missing.size() - kNamedRhythms));
    const QString sentence = missing.size() == 1
                                 ? tr("Esta obra usa un ritmo que esta computadora no tiene: %1.")
                                 : tr("Esta obra usa ritmos que esta computadora no tiene: %1.");
    if (prompts_.suggest(this, tr("Abrir obra"), sentence.arg(names.join(u", "_s)),
                         tr("Buscar más ritmos…")))
        loopBrowser_->openOnlineSearch(missing);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (draggedWorkFile(*event->mimeData()))
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    const auto path = draggedWorkFile(*event->mimeData());
    if (!path)
        return;
    event->acceptProposedAction();
    // Whoever the file comes from waits until the drop is done.
    QTimer::singleShot(0, this, [this, path] { openWorkFile(*path); });
}
