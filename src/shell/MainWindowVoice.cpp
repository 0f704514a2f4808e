#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "playback/CountIn.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "shell/TransportControls.h"
#include "shell/VoiceTake.h"
#include "storage/ClipFiles.h"
#include "storage/ProjectStorageProvider.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "voice/AudioDecoder.h"
#include "voice/AudioRecorder.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QStatusBar>

#include <cmath>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kTakeMs = 3000;

double secondsOf(const AudioDecoder::Result& audio)
{
    if (audio.channels <= 0 || audio.sampleRate <= 0)
        return 0.0;
    return static_cast<double>(audio.samples.size()) / audio.channels / audio.sampleRate;
}

AudioClip clipOf(const QString& path, double offsetBeats, double durationBeats)
{
    AudioClip clip;
    clip.audioFilePath = QFileInfo(path).fileName();
    clip.offsetBeats = offsetBeats;
    clip.durationBeats = durationBeats;
    return clip;
}

} // namespace

void MainWindow::importVoiceFile()
{
    if (!project_)
        return;
    const auto source =
        prompts_.askOpenFile(this, tr("Importar audio"), tr("Audio (*.wav *.mp3 *.ogg *.opus)"));
    if (!source)
        return;
    const AudioDecoder::Result audio = AudioDecoder::decode(*source);
    if (!audio.ok) {
        prompts_.warn(this, tr("Importar audio"),
                      tr("No pude leer el archivo: %1").arg(audio.error));
        return;
    }
    QDir().mkpath(clipsFolder());
    const QString target =
        ClipFiles::freePath(clipsFolder(), QFileInfo(*source).completeBaseName(), u"wav"_s);
    if (!AudioDecoder::replaceWav(target, audio.samples, audio.sampleRate, audio.channels)) {
        prompts_.warn(this, tr("Importar audio"), tr("No pude guardar el audio."));
        return;
    }
    const double beats = project_->bpm * secondsOf(audio) / 60.0;
    layClip(*project_, clipOf(target, std::floor(engine_->playheadBeat()), beats));
}

QString MainWindow::clipsFolder() const
{
    return engine_->projectDir.isEmpty() ? storage_->projectFolder(currentProjectId_)
                                         : engine_->projectDir;
}

void MainWindow::layClip(Project& work, const AudioClip& clip)
{
    // A work that was never saved has no folder of its own to be heard from.
    engine_->projectDir = clipsFolder();
    ProjectEdits::addClip(work, tr("Voz"), clip);
    snapshotAndRefresh();
    arranger_->showLane({LaneKind::AudioTrack, static_cast<int>(work.audioTracks.size()) - 1});
}

void MainWindow::toggleVoiceRecording()
{
    if (!project_)
        return;
    if (take_)
        finishTake();
    else if (countIn_->isCounting())
        cancelCountIn();
    else
        startTake();
}

void MainWindow::stopPlayback()
{
    finishTake();
    engine_->stop();
}

void MainWindow::startTake()
{
    if (!recorder_->startRecording())
        return;
    if (!countInAction_->isChecked() || engine_->isPlaying())
        return beginTake();
    engine_->refreshChannels();
    countIn_->start(project_->timeSignature, project_->bpm);
    showRecording(true);
}

void MainWindow::beginTake()
{
    // What came while one counted is not sung.
    recorder_->beginAnew();
    if (!engine_->isPlaying())
        engine_->play();
    take_ = std::make_unique<VoiceTake>(*project_, *engine_, clipsFolder());
    showRecording(true);
}

void MainWindow::cancelCountIn()
{
    if (!countIn_->isCounting())
        return;
    countIn_->stop();
    recorder_->cancelRecording();
    showRecording(false);
    statusBar()->showMessage(tr("Grabación descartada."), kTakeMs);
}

bool MainWindow::isSinging() const
{
    return take_ || countIn_->isCounting();
}

void MainWindow::tellTake()
{
    takeNotice_->setText(countIn_->isCounting()
                             ? tr("Un compás y grabamos… Esc cancela.")
                             : tr("Grabando voz… tocá «Grabar voz» de nuevo para terminar."));
}

void MainWindow::showRecording(bool recording)
{
    tellTake();
    transport_->showRecording(recording);
    pianoRoll_->setRecording(recording);
    arranger_->setRecording(recording);
    takeNotice_->setVisible(recording);
    updateHint();
}

void MainWindow::cancelVoiceRecording()
{
    // Nothing is sung yet.
    if (countIn_->isCounting())
        return cancelCountIn();
    if (!take_ ||
        prompts_.ask(this, tr("Grabación"), tr("¿Descartar lo que se está grabando?"),
                     QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;
    // A microphone that went away meanwhile has ended the take.
    if (!std::exchange(take_, nullptr))
        return;
    recorder_->cancelRecording();
    engine_->pause();
    showRecording(false);
    statusBar()->showMessage(tr("Grabación descartada."), kTakeMs);
}

void MainWindow::finishTake()
{
    cancelCountIn();
    if (!take_)
        return;
    const auto take = std::exchange(take_, nullptr);
    take->end();
    engine_->pause();
    showRecording(false);
    QDir().mkpath(clipsFolder());
    QString path = take->file();
    double seconds = recorder_->stopRecording(path);
    if (recorder_->holdsTake())
        path = rescueTake(path, &seconds);
    if (path.isEmpty())
        return;
    if (seconds <= 0.0) {
        statusBar()->showMessage(tr("La grabación quedó vacía."), kTakeMs);
        return;
    }
    const double beats = take->work().bpm * seconds / 60.0;
    AudioClip clip = clipOf(path, take->offsetOf(beats), beats);
    // What only another place had room for is heard from there.
    if (QFileInfo(path).dir() != QDir(clipsFolder()))
        clip.audioFilePath = QFileInfo(path).absoluteFilePath();
    layClip(take->work(), clip);
    statusBar()->showMessage(tr("Voz grabada (%1 s).").arg(seconds, 0, 'f', 1), kTakeMs);
}

QString MainWindow::rescueTake(const QString& file, double* seconds)
{
    while (prompts_.offer(this, tr("Grabación"), tr("No pude guardar la grabación."),
                          tr("Guardar en otro lugar…"))) {
        const auto path = prompts_.askSaveFile(this, tr("Guardar la grabación"),
                                               QFileInfo(file).fileName(), tr("WAV (*.wav)"));
        if (path && (*seconds = recorder_->writeHeldTake(*path)) > 0.0)
            return *path;
    }
    recorder_->forgetHeldTake();
    return {};
}

void MainWindow::onRecordingFailed(const QString& message)
{
    finishTake();
    prompts_.warn(this, tr("Grabación"), message);
}
