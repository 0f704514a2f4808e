#include "export/AudioExporter.h"

#include "export/ExportError.h"
#include "export/ExportFile.h"
#include "export/Mp3Writer.h"
#include "export/NoteMix.h"
#include "model/Audibility.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "playback/ChannelPlan.h"
#include "playback/NoteRenderer.h"
#include "playback/PlaybackEngine.h"
#include "playback/Schedule.h"
#include "playback/SoundfontPlayer.h"
#include "voice/AudioDecoder.h"
#include "voice/SampleBuffer.h"
#include "voice/VoiceMix.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

namespace {

/// How much of an export is done when its mix is.
constexpr double kWavMixShare = 0.95;
constexpr double kMp3MixShare = 0.75;

/// Gives every channel that may sound its instrument and its volume.
void prepareChannels(const Project& project, InstrumentLibrary* instruments,
                     SoundfontPlayer& player)
{
    const auto tracks = std::min<qsizetype>(project.tracks.size(), kMaxNoteTracks);
    for (int channel = 0; channel < tracks; ++channel) {
        const Track& track = project.tracks.at(channel);
        PlaybackEngine::configureChannel(&player, instruments, channel, track.instrumentId);
        player.setChannelVolume(channel, track.volume);
    }
    if (!project.harmonyTrack.muted) {
        player.selectGmProgram(kHarmonyChannel, kHarmonyProgram);
        player.setChannelVolume(kHarmonyChannel, project.harmonyTrack.volume);
    }
}

/// The events of all that sounds. Nothing when the song is beyond the bounds of rendering.
std::optional<Score> scoreOf(const Project& project, const LoopLibrary* library)
{
    const bool soloed =
        Audibility::anySolo(project.tracks) || Audibility::anySolo(project.audioTracks);
    Score score{.events = {}, .end = project.filledEndBeat()};
    if (!Schedule::appendSong(score, project, library, soloed))
        return std::nullopt;
    Schedule::sort(score.events);
    return score;
}

QString tooLong()
{
    return AudioExporter::tr("La obra es demasiado larga para exportarla.");
}

/// A silent mix up to a beat and its tail, or an empty list when that is more than a mix or the
/// memory holds.
QList<float> silentMix(double endBeat, double beatFrames)
{
    constexpr auto kMostFrames =
        static_cast<double>(VoiceMix::kMaxFrames - AudioExporter::kTailFrames);
    const double frames = endBeat * beatFrames;
    if (!(frames <= kMostFrames))
        return {};
    return silentSamples(2 * (wholeFrames(frames) + AudioExporter::kTailFrames));
}

/// The note tracks and the chords alone, or an empty list with the reason in `error`, if it was not
/// the progress that is to stop. The synthesiser is gone when this returns: the voices come next
/// and take as much memory.
QList<float> renderNotes(const Project& project, const LoopLibrary* library,
                         InstrumentLibrary* instruments, const QString& gmBankPath, QString* error,
                         const ExportProgress& progress)
{
    const auto synthesiser = [&] {
        auto player = std::make_unique<SoundfontPlayer>(SoundfontPlayer::Mode::Offline);
        player->loadGmBank(gmBankPath);
        prepareChannels(project, instruments, *player);
        return player;
    };
    const auto player = synthesiser();
    if (!player->hasSynth()) {
        setError(error, AudioExporter::tr("No pude inicializar FluidSynth."));
        return {};
    }
    const auto score = scoreOf(project, library);
    const double beatFrames = framesPerBeat(project.bpm);
    QList<float> mix = score ? silentMix(score->end, beatFrames) : QList<float>();
    if (mix.isEmpty())
        setError(error, tooLong());
    else if (!NoteMix::write(score->events, beatFrames, *player, synthesiser, mix, progress))
        mix.clear();
    return mix;
}

/// Adds the voices, if there are any, and clips at full scale: the only limiter there is.
void addVoices(const QList<float>& voices, QList<float>& mix)
{
    float* sample = mix.data();
    for (qsizetype i = 0; i < mix.size(); ++i) {
        const float sum = sample[i] + (voices.isEmpty() ? 0.0F : voices.at(i));
        sample[i] = std::isnan(sum) ? 0.0F : std::clamp(sum, -1.0F, 1.0F);
    }
}

} // namespace

QList<float> AudioExporter::renderFullMix(const Project& project, const QString& projectDir,
                                          const LoopLibrary* library,
                                          InstrumentLibrary* instruments, const QString& gmBankPath,
                                          QString* error, const ExportProgress& progress)
{
    QList<float> mix = renderNotes(project, library, instruments, gmBankPath, error, progress);
    if (mix.isEmpty())
        return {};
    QList<float> voices;
    if (!project.audioTracks.isEmpty()) {
        voices = renderVoiceMix(project, projectDir, mix.size() / 2);
        if (voices.isEmpty()) {
            setError(error, tooLong());
            return {};
        }
    }
    addVoices(voices, mix);
    return mix;
}

QList<float> AudioExporter::renderVoiceMix(const Project& project, const QString& projectDir,
                                           long long frames)
{
    return VoiceMix::render(project, projectDir, frames);
}

bool AudioExporter::exportWav(const Project& project, const QString& projectDir,
                              const LoopLibrary* library, InstrumentLibrary* instruments,
                              const QString& gmBankPath, const QString& path, QString* error,
                              const ExportProgress& progress)
{
    const QList<float> mix = renderFullMix(project, projectDir, library, instruments, gmBankPath,
                                           error, partOf(progress, 0.0, kWavMixShare));
    if (mix.isEmpty() || !goesOn(progress, kWavMixShare))
        return false;
    ExportFile file(path);
    if (!file.open() || !AudioDecoder::writeWav(file.device(), mix, kSampleRate, 2) ||
        !file.commit()) {
        setError(error, tr("No pude escribir el WAV."));
        return false;
    }
    return true;
}

bool AudioExporter::exportMp3(const Project& project, const QString& projectDir,
                              const LoopLibrary* library, InstrumentLibrary* instruments,
                              const QString& gmBankPath, const QString& path, QString* error,
                              const ExportProgress& progress)
{
    const QList<float> mix = renderFullMix(project, projectDir, library, instruments, gmBankPath,
                                           error, partOf(progress, 0.0, kMp3MixShare));
    if (mix.isEmpty())
        return false;
    Mp3Writer writer;
    if (!writer.isReady()) {
        setError(error, tr("No pude inicializar LAME."));
        return false;
    }
    ExportFile file(path);
    if (!file.open() || !writer.encode(mix, file.device(), partOf(progress, kMp3MixShare, 1.0)) ||
        !file.commit()) {
        setError(error, file.errorString());
        return false;
    }
    return true;
}
