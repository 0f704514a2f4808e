#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/EditorPage.h"
#include "shell/MainWindow.h"
#include "shell/OpenWork.h"
#include "shell/StatusLine.h"
#include "shell/VoiceRecording.h"
#include "storage/ClipFiles.h"
#include "views/arranger/TrackArranger.h"
#include "voice/AudioDecoder.h"

#include <QDir>
#include <QFileInfo>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

double secondsOf(const AudioDecoder::Result& audio)
{
    if (audio.channels <= 0 || audio.sampleRate <= 0)
        return 0.0;
    return static_cast<double>(audio.samples.size()) / audio.channels / audio.sampleRate;
}

} // namespace

void MainWindow::importVoiceFile()
{
    if (!project())
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
    QDir().mkpath(work_->clipsFolder());
    const QString target =
        ClipFiles::freePath(work_->clipsFolder(), QFileInfo(*source).completeBaseName(), u"wav"_s);
    if (!AudioDecoder::replaceWav(target, audio.samples, audio.sampleRate, audio.channels)) {
        prompts_.warn(this, tr("Importar audio"), tr("No pude guardar el audio."));
        return;
    }
    const double beats = project()->bpm * secondsOf(audio) / 60.0;
    layClip({.audioFilePath = QFileInfo(target).fileName(),
             .offsetBeats = std::floor(engine()->playheadBeat()),
             .durationBeats = beats,
             .tune = {}});
}

void MainWindow::layClip(const AudioClip& clip)
{
    work_->addClip(tr("Voz"), clip);
    snapshotAndRefresh();
    arranger_->showLane(
        {LaneKind::AudioTrack, static_cast<int>(project()->audioTracks.size()) - 1});
}

void MainWindow::toggleVoiceRecording()
{
    voice_->toggle(*project(), work_->clipsFolder());
}

void MainWindow::cancelVoiceRecording()
{
    voice_->cancel();
}

void MainWindow::stopPlayback()
{
    voice_->finish();
    engine()->stop();
}

void MainWindow::showRecording()
{
    page_->showRecording(voice_->isSinging());
    statusLine_->showSinging(!voice_->isSinging()   ? StatusLine::Singing::No
                             : voice_->isCounting() ? StatusLine::Singing::SoonByTheCount
                                                    : StatusLine::Singing::Yes);
}
