#pragma once

#include <QMap>
#include <QObject>
#include <QString>

#include <fluidsynth.h>

#include <memory>

/// The synthesiser: 16 channels, one General MIDI bank and any number of instrument banks, over
/// FluidSynth at kSampleRate. Without a synthesiser every operation does nothing and returns
/// false; without an audio driver notes are processed and nothing is heard.
class SoundfontPlayer : public QObject {
    Q_OBJECT

public:
    enum class Mode {
        /// An audio driver pulls the sound on a thread of its own.
        Realtime = 0,
        /// The caller pulls the sound with renderFloat().
        Offline = 1
    };

    explicit SoundfontPlayer(Mode mode, QObject* parent = nullptr);
    ~SoundfontPlayer() override;

    bool hasSynth() const { return synth_ != nullptr; }

    /// Loads the bank that all ordinary instruments share. On failure the former bank stays and
    /// bankLoadFailed() is emitted. In real time the samples of a program are read when a channel
    /// is given it, and given back when no channel has it any more: the file has to stay.
    bool loadGmBank(const QString& path);

    /// Loads the bank of one instrument; true at once if that instrument has one already.
    bool loadInstrumentBank(const QString& instrumentId, const QString& path);

    bool instrumentBankLoaded(const QString& instrumentId) const;

    /// Gives a channel a zero-based General MIDI program, held in 0..127.
    void selectGmProgram(int channel, int program);

    /// Gives a channel the drum kit, or the piano of a bank that has no drums.
    void selectGmDrums(int channel);

    /// Gives a channel the instrument's own bank. False if it is not loaded.
    bool selectInstrumentBank(int channel, const QString& instrumentId);

    /// Linear volume, 0.0 to 1.0.
    void setChannelVolume(int channel, float volume);

    /// `pitch` is held in 0..127, `velocity` in 1..127: a velocity of 0 is no note-off.
    void noteOn(int channel, int pitch, int velocity);

    void noteOff(int channel, int pitch);

    /// Releases the notes of a channel; of every channel for a negative number.
    void allNotesOff(int channel);

    /// Cuts all sound at once.
    void allSoundOff();

    /// Renders the next `frames` frames into 2 * `frames` interleaved stereo samples.
    bool renderFloat(float* interleaved, int frames);

signals:
    void bankLoadFailed(const QString& path);

private:
    struct Deleter {
        void operator()(fluid_settings_t* settings) const { delete_fluid_settings(settings); }

        void operator()(fluid_synth_t* synth) const { delete_fluid_synth(synth); }

        void operator()(fluid_audio_driver_t* driver) const { delete_fluid_audio_driver(driver); }
    };

    /// When the samples of a bank are read.
    enum class Samples {
        /// All of them as it is loaded; the file may then change or go.
        AtOnce = 0,
        /// Those of a program as it is selected.
        OnSelection = 1
    };

    /// Loads a bank and returns its id, or a negative number, told by bankLoadFailed().
    int loadBank(const QString& path, Samples samples);

    void drainWithoutDriver();

    // Destroyed from the last to the first, as their use of one another asks for.
    std::unique_ptr<fluid_settings_t, Deleter> settings_;
    std::unique_ptr<fluid_synth_t, Deleter> synth_;
    std::unique_ptr<fluid_audio_driver_t, Deleter> driver_;
    Mode mode_;
    int gmBankId_ = -1;
    QMap<QString, int> instrumentBanks_;
};
