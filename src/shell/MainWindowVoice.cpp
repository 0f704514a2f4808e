#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "storage/ProjectStorageProvider.h"
#include "voice/AudioDecoder.h"
#include "voice/AudioRecorder.h"

#include <QFileInfo>
#include <QStatusBar>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kTakeMs = 3000;

/// A file that does not exist yet: the name itself, or with the first free number from 2 on.
QString freeImportPath(const QString& folder, const QString& baseName)
{
    QString path = folder + u'/' + baseName + ".wav"_L1;
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = folder + u"/%1_%2.wav"_s.arg(baseName).arg(number);
    return path;
}

QString freeTakePath(const QString& folder)
{
    QString path;
    int number = 1;
    do {
        path = folder + u"/voz_%1.wav"_s.arg(number++);
    } while (QFileInfo::exists(path));
    return path;
}

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
    const QString folder = storage_->projectFolder(currentProjectId_);
    const QString target = freeImportPath(folder, QFileInfo(*source).completeBaseName());
    AudioDecoder::writeWav(target, audio.samples, audio.sampleRate, audio.channels);
    const double beats = project_->bpm * secondsOf(audio) / 60.0;
    ProjectEdits::addClip(*project_, tr("Voz"),
                          clipOf(target, std::floor(engine_->playheadBeat()), beats));
    snapshotAndRefresh();
}

void MainWindow::toggleVoiceRecording()
{
    if (!project_)
        return;
    if (voiceRecording_)
        finishTake();
    else
        startTake();
}

void MainWindow::startTake()
{
    if (!recorder_->startRecording())
        return;
    voiceRecording_ = true;
    statusBar()->showMessage(tr("Grabando voz… tocá «Grabar voz» de nuevo para terminar."));
    if (!engine_->isPlaying())
        engine_->play();
}

void MainWindow::finishTake()
{
    voiceRecording_ = false;
    const double stopBeat = engine_->playheadBeat();
    engine_->pause();
    const QString path = freeTakePath(storage_->projectFolder(currentProjectId_));
    const double seconds = recorder_->stopRecording(path);
    if (seconds <= 0.0) {
        statusBar()->showMessage(tr("La grabación quedó vacía."), kTakeMs);
        return;
    }
    // The take ends where playback was stopped.
    const double beats = project_->bpm * seconds / 60.0;
    ProjectEdits::addClip(*project_, tr("Voz"),
                          clipOf(path, std::max(0.0, stopBeat - beats), beats));
    snapshotAndRefresh();
    statusBar()->showMessage(tr("Voz grabada (%1 s).").arg(seconds, 0, 'f', 1), kTakeMs);
}

void MainWindow::onRecordingFailed(const QString& message)
{
    voiceRecording_ = false;
    prompts_.warn(this, tr("Grabación"), message);
}
