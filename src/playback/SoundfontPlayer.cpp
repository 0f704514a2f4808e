#include "playback/SoundfontPlayer.h"

#include "music/Beats.h"
#include "playback/AlsaSilence.h"
#include "playback/GlibSilence.h"
#include "playback/SoundThreads.h"
#include "voice/SoundServer.h"

#include <QFileInfo>

#include <algorithm>
#include <array>

namespace {

constexpr int kChannels = 16;
constexpr double kGain = 0.6;
#ifdef Q_OS_LINUX
/// Of the driver's own size, 64 frames.
constexpr int kPeriods = 24;
#endif

constexpr int kDrumBank = 128;
constexpr int kVolumeController = 7;

/// Keeps FluidSynth, its audio back end and its readers of banks off the standard streams.
void silenceLibraries()
{
    for (const int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
        fluid_set_log_function(
            level, [](int, const char*, void*) {}, nullptr);
    silenceAlsa();
    silenceGlib();
}

int midiPitch(int pitch)
{
    return std::clamp(pitch, 0, 127);
}

int midiVolume(float volume)
{
    const float value = volume * 127.0F;
    return value > 0.0F ? static_cast<int>(std::min(value, 127.0F)) : 0;
}

} // namespace

SoundfontPlayer::SoundfontPlayer(Mode mode, QObject* parent) : QObject(parent), mode_(mode)
{
    silenceLibraries();
    settings_.reset(new_fluid_settings());
    fluid_settings_setnum(settings_.get(), "synth.sample-rate", kSampleRate);
    fluid_settings_setint(settings_.get(), "synth.midi-channels", kChannels);
    fluid_settings_setnum(settings_.get(), "synth.gain", kGain);
#ifdef Q_OS_LINUX
    // The driver would hurry its own thread alone, and not that of the sound server's library,
    // whose lock it needs: SoundThreads hurries both.
    fluid_settings_setint(settings_.get(), "audio.realtime-prio", 0);
    // A buffer of 35 ms in place of 23: where no thread may be hurried it runs empty less than half
    // as often, and a key is still heard within 40 ms. A larger one takes longer and hardly helps.
    fluid_settings_setint(settings_.get(), "audio.periods", kPeriods);
#endif
    synth_.reset(new_fluid_synth(settings_.get()));
    // A server that hangs would hang whoever asks for its devices.
    if (synth_ && mode_ == Mode::Realtime && SoundServer::answers())
        driver_.reset(new_fluid_audio_driver(settings_.get(), synth_.get()));
    if (driver_)
        SoundThreads::hurrySoon();
}

SoundfontPlayer::~SoundfontPlayer()
{
    if (!driver_ || SoundServer::answers())
        return;
    // Its thread waits for a server that hangs, and so would who waits for its end. What it plays
    // with stays where it is as long as the process.
    static_cast<void>(driver_.release());
    static_cast<void>(synth_.release());
    static_cast<void>(settings_.release());
}

int SoundfontPlayer::loadBank(const QString& path, Samples samples)
{
    // Presets of the channels stay as they are: banks may arrive while others sound.
    constexpr int kKeepPresets = 0;
    int id = FLUID_FAILED;
    // Opening a pipe may block for ever.
    if (synth_ && QFileInfo(path).isFile()) {
        fluid_settings_setint(settings_.get(), "synth.dynamic-sample-loading",
                              static_cast<int>(samples));
        id = fluid_synth_sfload(synth_.get(), path.toUtf8().constData(), kKeepPresets);
    }
    if (id < 0)
        emit bankLoadFailed(path);
    return id;
}

bool SoundfontPlayer::loadGmBank(const QString& path)
{
    // An export is over soon; what plays live stands as long as the program runs.
    const int id = loadBank(path, mode_ == Mode::Realtime ? Samples::OnSelection : Samples::AtOnce);
    if (id < 0)
        return false;
    gmBankId_ = id;
    return true;
}

bool SoundfontPlayer::loadInstrumentBank(const QString& instrumentId, const QString& path)
{
    if (!synth_)
        return false;
    if (instrumentBankLoaded(instrumentId))
        return true;
    // It is small, and goes or is replaced when its rhythm does: nothing is read from it later.
    const int id = loadBank(path, Samples::AtOnce);
    if (id < 0)
        return false;
    instrumentBanks_.insert(instrumentId, id);
    return true;
}

bool SoundfontPlayer::instrumentBankLoaded(const QString& instrumentId) const
{
    return instrumentBanks_.contains(instrumentId);
}

void SoundfontPlayer::selectGmProgram(int channel, int program)
{
    if (synth_ && gmBankId_ >= 0)
        fluid_synth_program_select(synth_.get(), channel, gmBankId_, 0,
                                   std::clamp(program, 0, 127));
}

void SoundfontPlayer::selectGmDrums(int channel)
{
    if (!synth_ || gmBankId_ < 0)
        return;
    if (fluid_synth_program_select(synth_.get(), channel, gmBankId_, kDrumBank, 0) != FLUID_OK)
        fluid_synth_program_select(synth_.get(), channel, gmBankId_, 0, 0);
}

bool SoundfontPlayer::selectInstrumentBank(int channel, const QString& instrumentId)
{
    if (!synth_ || !instrumentBankLoaded(instrumentId))
        return false;
    return fluid_synth_program_select(synth_.get(), channel, instrumentBanks_.value(instrumentId),
                                      0, 0) == FLUID_OK;
}

void SoundfontPlayer::setChannelVolume(int channel, float volume)
{
    if (!synth_)
        return;
    fluid_synth_cc(synth_.get(), channel, kVolumeController, midiVolume(volume));
    drainWithoutDriver();
}

void SoundfontPlayer::noteOn(int channel, int pitch, int velocity)
{
    if (!synth_)
        return;
    fluid_synth_noteon(synth_.get(), channel, midiPitch(pitch), std::clamp(velocity, 1, 127));
    drainWithoutDriver();
}

void SoundfontPlayer::noteOff(int channel, int pitch)
{
    if (!synth_)
        return;
    fluid_synth_noteoff(synth_.get(), channel, midiPitch(pitch));
    drainWithoutDriver();
}

void SoundfontPlayer::allNotesOff(int channel)
{
    if (!synth_)
        return;
    const int first = channel < 0 ? 0 : channel;
    const int count = channel < 0 ? kChannels : 1;
    for (int i = 0; i < count; ++i)
        fluid_synth_all_notes_off(synth_.get(), first + i);
    drainWithoutDriver();
}

void SoundfontPlayer::allSoundOff()
{
    if (!synth_)
        return;
    for (int channel = 0; channel < kChannels; ++channel)
        fluid_synth_all_sounds_off(synth_.get(), channel);
    drainWithoutDriver();
}

bool SoundfontPlayer::renderFloat(float* interleaved, int frames)
{
    return synth_ && fluid_synth_write_float(synth_.get(), frames, interleaved, 0, 2, interleaved,
                                             1, 2) == FLUID_OK;
}

/// Without a driver nobody takes the events that notes, and volumes under them, leave in the
/// synthesiser's queue, and it would fill up: a short stretch of sound is rendered and thrown
/// away instead.
void SoundfontPlayer::drainWithoutDriver()
{
    constexpr int kFrames = 64;
    if (mode_ != Mode::Realtime || driver_)
        return;
    std::array<float, 2 * kFrames> discarded;
    renderFloat(discarded.data(), kFrames);
}
