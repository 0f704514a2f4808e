#include "export/ExportFile.h"
#include "model/Project.h"
#include "shell/MainWindow.h"
#include "shell/sheet/SheetPreview.h"

#include <QStatusBar>

namespace {

constexpr int kSheetSavedMs = 4000;

} // namespace

void MainWindow::printSheet()
{
    finishGestures();
    if (!project())
        return;
    const SongSheet sheet = SongSheet::of(*project());
    SheetPreview preview(sheet, this);
    connect(&preview, &SheetPreview::saveRequested, this, [&] {
        if (saveSheet(sheet, &preview))
            preview.accept();
    });
    prompts_.run(preview);
}

bool MainWindow::saveSheet(const SongSheet& sheet, QWidget* over)
{
    const auto path = prompts_.askSaveFile(over, tr("Guardar hoja"),
                                           sheet.title + QStringLiteral(".pdf"), tr("PDF (*.pdf)"));
    if (!path)
        return false;
    ExportFile file(*path);
    if (!file.open() || !SheetPreview::writePdf(sheet, file.device()) || !file.commit()) {
        prompts_.warn(over, tr("Guardar hoja"),
                      tr("No pude guardar la hoja: %1").arg(file.errorString()));
        return false;
    }
    statusBar()->showMessage(tr("Hoja guardada en %1").arg(*path), kSheetSavedMs);
    return true;
}
