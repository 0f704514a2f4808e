#include "export/AudioExporter.h"
#include "export/MidiExporter.h"
#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/ExportDialog.h"
#include "shell/MainWindow.h"
#include "shell/OpenWork.h"
#include "shell/Services.h"
#include "shell/VoiceRecording.h"

#include <QStatusBar>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kExportedMs = 4000;

} // namespace

void MainWindow::exportMidi()
{
    exportFile(
        {.title = tr("Exportar MIDI"),
         .suffix = u".mid"_s,
         .filter = tr("MIDI (*.mid)"),
         .failureTitle = tr("Exportar MIDI"),
         .write = [this](const QString& path, QString* error, const ExportProgress& progress) {
             return MidiExporter::exportProject(*project(), services_->loops(),
                                                services_->instruments(), path, error, progress);
         }});
}

void MainWindow::exportAudio(bool mp3)
{
    const auto write = mp3 ? &AudioExporter::exportMp3 : &AudioExporter::exportWav;
    exportFile({.title = mp3 ? tr("Exportar MP3") : tr("Exportar WAV"),
                .suffix = mp3 ? u".mp3"_s : u".wav"_s,
                .filter = mp3 ? tr("MP3 (*.mp3)") : tr("WAV (*.wav)"),
                .failureTitle = tr("Exportar"),
                .write = [this, write](const QString& path, QString* error,
                                       const ExportProgress& progress) {
                    return write(*project(), work_->clipsFolder(), services_->loops(),
                                 services_->instruments(), Services::bankPath(), path, error,
                                 progress);
                }});
}

void MainWindow::exportFile(const ExportKind& kind)
{
    finishGestures();
    if (!project())
        return;
    const auto path =
        prompts_.askSaveFile(this, kind.title, project()->name + kind.suffix, kind.filter);
    if (!path)
        return;
    // A voice that is being recorded belongs to the song too.
    voice_->finish();
    engine()->pause();
    ExportDialog dialog(kind.title, this);
    QString error;
    const bool written =
        kind.write(*path, &error, [&](double done) { return dialog.advance(done); });
    const bool cancelled = dialog.wasCanceled();
    dialog.hide();
    if (written)
        statusBar()->showMessage(tr("Exportado a %1").arg(*path), kExportedMs);
    else if (!cancelled)
        prompts_.warn(this, kind.failureTitle, tr("Falló la exportación: %1").arg(error));
}
