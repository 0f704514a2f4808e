#include "shell/VoiceRecording.h"

#include "model/Project.h"
#include "playback/CountIn.h"
#include "playback/PlaybackEngine.h"
#include "shell/Prompts.h"
#include "shell/VoiceTake.h"
#include "shell/theme/UserSettings.h"
#include "voice/AudioRecorder.h"

#include <QDir>
#include <QFileInfo>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto kCountInKey = "contarAntesDeGrabar"_L1;

} // namespace

// The recorder is the window's too: its sources go with the window's events.
VoiceRecording::VoiceRecording(SoundfontPlayer* player, PlaybackEngine& engine, Prompts& prompts,
                               QWidget* window)
    : QObject(window), engine_(engine), prompts_(prompts), window_(window),
      recorder_(std::make_unique<AudioRecorder>(this)),
      countIn_(std::make_unique<CountIn>(player, this)),
      countsIn_(userSettings().value(kCountInKey).toBool())
{
    connect(recorder_.get(), &AudioRecorder::recordingFailed, this,
            &VoiceRecording::onRecordingFailed);
    connect(recorder_.get(), &AudioRecorder::levelHeard, this, &VoiceRecording::levelHeard);
    connect(countIn_.get(), &CountIn::counted, this, &VoiceRecording::counted);
    connect(countIn_.get(), &CountIn::ended, this, &VoiceRecording::beginTake);
    // Who plays the song meanwhile does not want to wait for it.
    connect(&engine_, &PlaybackEngine::playingChanged, this, &VoiceRecording::cancelCountIn);
}

VoiceRecording::~VoiceRecording() = default;

void VoiceRecording::setCountsIn(bool on)
{
    countsIn_ = on;
    userSettings().setValue(kCountInKey, on);
}

bool VoiceRecording::isCounting() const
{
    return countIn_->isCounting();
}

bool VoiceRecording::isSinging() const
{
    return take_ || isCounting();
}

void VoiceRecording::moveTo(const QString& folder)
{
    folder_ = folder;
    if (take_)
        take_->moveTo(folder);
}

void VoiceRecording::toggle(Project& work, const QString& folder)
{
    if (take_)
        return finish();
    if (isCounting())
        return cancelCountIn();
    work_ = &work;
    folder_ = folder;
    start();
}

void VoiceRecording::start()
{
    if (!recorder_->startRecording())
        return;
    if (!countsIn_ || engine_.isPlaying())
        return beginTake();
    engine_.refreshChannels();
    countIn_->start(work_->timeSignature, work_->bpm);
    emit singingChanged();
}

void VoiceRecording::beginTake()
{
    // What came while one counted is not sung.
    recorder_->beginAnew();
    if (!engine_.isPlaying())
        engine_.play();
    take_ = std::make_unique<VoiceTake>(*work_, engine_, folder_);
    emit singingChanged();
}

void VoiceRecording::cancelCountIn()
{
    if (!isCounting())
        return;
    countIn_->stop();
    recorder_->cancelRecording();
    emit singingChanged();
    emit told(tr("Grabación descartada."));
}

void VoiceRecording::cancel()
{
    // Nothing is sung yet.
    if (isCounting())
        return cancelCountIn();
    if (!take_ ||
        prompts_.ask(window_, tr("Grabación"), tr("¿Descartar lo que se está grabando?"),
                     QMessageBox::Yes | QMessageBox::No, QMessageBox::No) != QMessageBox::Yes)
        return;
    // A microphone that went away meanwhile has ended the take.
    if (!std::exchange(take_, nullptr))
        return;
    recorder_->cancelRecording();
    engine_.pause();
    emit singingChanged();
    emit told(tr("Grabación descartada."));
}

void VoiceRecording::finish()
{
    cancelCountIn();
    if (!take_)
        return;
    const auto take = std::exchange(take_, nullptr);
    take->end();
    engine_.pause();
    emit singingChanged();
    double seconds = 0.0;
    const QString path = write(*take, &seconds);
    if (path.isEmpty())
        return;
    if (seconds <= 0.0) {
        emit told(tr("La grabación quedó vacía."));
        return;
    }
    const double beats = take->work().bpm * seconds / 60.0;
    // What only another place had room for is heard from there.
    const QFileInfo file(path);
    const bool atHome = file.dir() == QDir(folder_);
    emit recorded({.audioFilePath = atHome ? file.fileName() : file.absoluteFilePath(),
                   .offsetBeats = take->offsetOf(beats),
                   .durationBeats = beats,
                   .tune = {}});
    emit told(tr("Voz grabada (%1 s).").arg(seconds, 0, 'f', 1));
}

QString VoiceRecording::write(const VoiceTake& take, double* seconds)
{
    QDir().mkpath(folder_);
    const QString path = take.file();
    *seconds = recorder_->stopRecording(path);
    return recorder_->holdsTake() ? rescue(path, seconds) : path;
}

QString VoiceRecording::rescue(const QString& file, double* seconds)
{
    while (prompts_.offer(window_, tr("Grabación"), tr("No pude guardar la grabación."),
                          tr("Guardar en otro lugar…"))) {
        const auto path = prompts_.askSaveFile(window_, tr("Guardar la grabación"),
                                               QFileInfo(file).fileName(), tr("WAV (*.wav)"));
        if (path && (*seconds = recorder_->writeHeldTake(*path)) > 0.0)
            return *path;
    }
    recorder_->forgetHeldTake();
    return {};
}

void VoiceRecording::onRecordingFailed(const QString& message)
{
    finish();
    prompts_.warn(window_, tr("Grabación"), message);
}
