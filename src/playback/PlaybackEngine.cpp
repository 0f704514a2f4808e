#include "playback/PlaybackEngine.h"

#include "model/Audibility.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "playback/ChannelInstrument.h"
#include "playback/ChannelPlan.h"
#include "playback/LivePreview.h"
#include "playback/Metronome.h"
#include "playback/NoteRenderer.h"
#include "playback/SongVoices.h"
#include "playback/SoundfontPlayer.h"
#include "playback/VoiceMixer.h"
#include "playback/VoiceOutput.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr float kMetronomeVolume = 0.9F;

} // namespace

PlaybackEngine::PlaybackEngine(SoundfontPlayer* player, LoopLibrary* library,
                               InstrumentLibrary* instruments, QObject* parent)
    : QObject(parent), player_(player), library_(library), instruments_(instruments),
      mixer_(std::make_unique<VoiceMixer>()), voices_(std::make_unique<VoiceOutput>()),
      preview_(std::make_unique<LivePreview>(player, instruments))
{
    tickTimer_.setTimerType(Qt::PreciseTimer);
    tickTimer_.setInterval(Transport::kTickPeriod);
    connect(&tickTimer_, &QTimer::timeout, this, &PlaybackEngine::onTick);
}

PlaybackEngine::~PlaybackEngine()
{
    // The voice output runs the event loop as it goes: no tick and no preview may come of that.
    tickTimer_.stop();
    preview_.reset();
}

QList<NoteEvent> PlaybackEngine::renderTrackNotes(const Project& project, const Track& track,
                                                  const LoopLibrary* library)
{
    return NoteRenderer::trackNotes(project, track, library);
}

QList<NoteEvent> PlaybackEngine::renderHarmonyNotes(const Project& project)
{
    return NoteRenderer::harmonyNotes(project);
}

void PlaybackEngine::setProject(Project* project)
{
    stop();
    project_ = project;
    moveIdlePlayhead(0.0);
}

void PlaybackEngine::play(double fromBeat)
{
    if (!project_ || !player_ || !player_->hasSynth())
        return;
    if (playing_)
        player_->allNotesOff(-1);
    const double start = fromBeat >= 0.0 ? fromBeat : idleBeat_;
    buildSchedule();
    refreshChannels();
    playing_ = true;
    cursor_ = Transport::startCursor(score_.events, start);
    startTogether(start);
    if (!playing_)
        return;
    tickTimer_.start();
    emit playingChanged(true);
    emit playheadChanged(start);
}

void PlaybackEngine::pause()
{
    if (!playing_)
        return;
    idleBeat_ = playheadBeat();
    ceasePlaying();
}

void PlaybackEngine::stop()
{
    preview_->endRunning();
    if (playing_)
        ceasePlaying();
    moveIdlePlayhead(range_.enabled ? range_.start : 0.0);
}

void PlaybackEngine::ceasePlaying()
{
    playing_ = false;
    tickTimer_.stop();
    player_->allNotesOff(-1);
    stopVoicePlayback();
    emit playingChanged(false);
}

void PlaybackEngine::setPlayheadBeat(double beat)
{
    // In this order of arguments, what is no number counts as 0 too.
    const double target = std::max(0.0, beat);
    if (playing_)
        play(target);
    else
        moveIdlePlayhead(target);
}

void PlaybackEngine::seek(double beat)
{
    setPlayheadBeat(beat);
    if (!playing_)
        play(beat);
}

void PlaybackEngine::moveIdlePlayhead(double beat)
{
    idleBeat_ = beat;
    emit playheadChanged(beat);
}

double PlaybackEngine::playheadBeat() const
{
    return playing_ ? Transport::beatAfter(anchorBeat_, tempo_, clock_.nsecsElapsed()) : idleBeat_;
}

void PlaybackEngine::setMetronomeEnabled(bool on)
{
    if (metronomeEnabled_ == on)
        return;
    metronomeEnabled_ = on;
    if (playing_)
        play(playheadBeat());
}

void PlaybackEngine::setLoopRange(double start, double end)
{
    if (start < end)
        range_ = {.enabled = true, .start = std::max(start, 0.0), .end = end};
}

void PlaybackEngine::clearLoopRange()
{
    range_.enabled = false;
}

void PlaybackEngine::rescheduleIfPlaying()
{
    if (!playing_)
        return;
    followProject();
    if (!playing_)
        return;
    const QList<float> levels = SongVoices::levels(*project_);
    // A clip more or less is another arrangement, which waits for the next start.
    levelsAwaited_ = levels.size() == voiceLevels_.size() && levels != voiceLevels_;
    const double beat = playheadBeat();
    player_->allNotesOff(-1);
    buildSchedule();
    cursor_ = cursorForBeat(beat);
}

void PlaybackEngine::followLevels()
{
    if (!levelsAwaited_ || !voicesReady())
        return;
    levelsAwaited_ = false;
    voiceLevels_ = SongVoices::levels(*project_);
    voices_->goOnWith(mixedVoices());
}

void PlaybackEngine::followProject()
{
    if (tempo_ != project_->bpm || voicesHeard_ != SongVoices::heard(*project_))
        startTogether(playheadBeat());
}

void PlaybackEngine::refreshChannels()
{
    prepareVoices();
    if (!project_ || !player_)
        return;
    const auto tracks = std::min<qsizetype>(project_->tracks.size(), kMaxNoteTracks);
    for (int channel = 0; channel < tracks; ++channel)
        setupTrackChannel(channel, project_->tracks.at(channel));
    player_->selectGmProgram(kHarmonyChannel, kHarmonyProgram);
    player_->setChannelVolume(kHarmonyChannel, project_->harmonyTrack.volume);
    player_->selectGmDrums(kMetronomeChannel);
    player_->setChannelVolume(kMetronomeChannel, kMetronomeVolume);
}

int PlaybackEngine::cursorForBeat(double beat) const
{
    return Transport::cursorForBeat(score_.events, beat);
}

void PlaybackEngine::buildSchedule()
{
    score_ = Score();
    // The solo of a voice silences other voices only, as long as the song plays live.
    Schedule::appendSong(score_, *project_, library_, Audibility::anySolo(project_->tracks));
    setSongEnd();
    if (metronomeEnabled_) {
        const double end = std::max(project_->endBeat(), score_.end);
        Metronome::appendClicks(score_.events, project_->timeSignature,
                                range_.enabled ? std::max(range_.end, end) : end);
    }
    Schedule::sort(score_.events);
}

/// A song ends with the last that sounds, and a bar of silence for that to ring out. Where nothing
/// sounds the bars of the work are played, so that notes can be played into them.
void PlaybackEngine::setSongEnd()
{
    const double bar = project_->beatsPerBar();
    score_.end = std::max(score_.end, SongVoices::endBeat(*project_));
    tailBeats_ = bar;
    if (score_.events.isEmpty() && !(score_.end > 0.0)) {
        score_.end = project_->barCount(Project::kLeastBars) * bar;
        tailBeats_ = 0.0;
    }
}

/// The voices take their time to be mixed. It passes before the clock starts, so that notes and
/// voices set out from one beat at one moment.
void PlaybackEngine::startTogether(double beat)
{
    stopVoicePlayback();
    const QList<float> voices = mixedVoices();
    // Whoever is told of the wait may have ended it all.
    if (!playing_)
        return;
    tempo_ = project_->bpm;
    voicesHeard_ = SongVoices::heard(*project_);
    voiceLevels_ = SongVoices::levels(*project_);
    levelsAwaited_ = false;
    anchorBeat_ = beat;
    clock_.restart();
    playVoices(voices, beat);
}

void PlaybackEngine::onTick()
{
    if (!playing_)
        return;
    followProject();
    if (!playing_)
        return;
    followLevels();
    const TransportStep step = Transport::step(score_, cursor_, playheadBeat(), range_, tailBeats_);
    if (step.wrapped) {
        player_->allNotesOff(-1);
        startTogether(step.beat);
        if (!playing_)
            return;
    }
    dispatch(step.first, step.next);
    cursor_ = step.next;
    emit playheadChanged(step.beat);
    if (playing_ && step.ended)
        stop();
}

void PlaybackEngine::dispatch(int first, int next)
{
    for (int i = first; i < next; ++i)
        Schedule::perform(score_.events.at(i), *player_);
}

void PlaybackEngine::startVoicePlayback(double fromBeat)
{
    stopVoicePlayback();
    playVoices(mixedVoices(), fromBeat);
}

void PlaybackEngine::prepareVoices()
{
    const VoiceMix::Voices voices = SongVoices::of(project_, projectDir);
    if (!SongVoices::areTooLongToMixAhead(voices))
        mixer_->prepare(voices);
}

bool PlaybackEngine::voicesReady() const
{
    return mixer_->isReady(SongVoices::of(project_, projectDir));
}

QList<float> PlaybackEngine::mixedVoices()
{
    const bool early = !voicesReady();
    if (early)
        emit waitingForVoices(true);
    const QList<float> mix = mixer_->mix(SongVoices::of(project_, projectDir));
    if (early)
        emit waitingForVoices(false);
    return mix;
}

void PlaybackEngine::playVoices(const QList<float>& mix, double fromBeat)
{
    if (!mix.isEmpty())
        voices_->play(mix, wholeFrames(fromBeat * framesPerBeat(project_->bpm)));
}

void PlaybackEngine::stopVoicePlayback()
{
    voices_->stop();
}

void PlaybackEngine::configureChannel(SoundfontPlayer* player, InstrumentLibrary* instruments,
                                      int channel, const QString& instrumentId)
{
    ChannelInstrument::configure(player, instruments, channel, instrumentId);
}

void PlaybackEngine::configureChannelForInstrument(int channel, const QString& instrumentId)
{
    if (player_)
        configureChannel(player_, instruments_, channel, instrumentId);
}

void PlaybackEngine::setupTrackChannel(int channel, const Track& track)
{
    if (!player_)
        return;
    configureChannelForInstrument(channel, track.instrumentId);
    player_->setChannelVolume(channel, track.volume);
}

void PlaybackEngine::previewNoteOn(int pitch, const QString& instrumentId, int velocity)
{
    preview_->noteOn(pitch, instrumentId, velocity);
}

void PlaybackEngine::previewNoteOff(int pitch)
{
    preview_->noteOff(pitch);
}

void PlaybackEngine::previewChord(const QList<int>& pitches, int velocity)
{
    preview_->chord(pitches, velocity);
}

void PlaybackEngine::previewVariant(const LoopVariant& variant, const QString& instrumentId,
                                    int bpm, double /*lengthBeats*/)
{
    preview_->variant(variant, instrumentId, bpm);
}

void PlaybackEngine::stopPreview()
{
    preview_->stop();
}

const QSet<int>& PlaybackEngine::previewHeld() const
{
    return preview_->held();
}
