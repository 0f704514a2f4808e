#include "support/FluidSpy.h"

#include <fluidsynth.h>

#include <dlfcn.h>
#include <limits>
#include <mutex>
#include <utility>

namespace {

struct State {
    QList<FluidSpy::Call> calls;
    qint64 frames = 0;
    bool synthFails = false;
    bool soundIsSpoilt = false;
    FluidSpy::Driver driver = FluidSpy::Driver::Fails;
    fluid_synth_t* lastSynth = nullptr;
};

State& state()
{
    static State instance;
    return instance;
}

/// Synthesisers may play on threads of their own.
std::mutex& mutex()
{
    static std::mutex instance;
    return instance;
}

/// Stands for a driver that never asks for sound; only its address is used.
char standingDriver;

/// Writes down a call, unless the library makes it itself inside another one.
class Recorded {
public:
    template <typename... Arguments>
    explicit Recorded(const char* function, const Arguments&... arguments)
    {
        if (depth_++ > 0)
            return;
        QStringList words{QString::fromLatin1(function)};
        (words.append(word(arguments)), ...);
        const std::lock_guard lock(mutex());
        state().calls.append({.text = words.join(u' '), .frame = state().frames});
    }

    ~Recorded() { --depth_; }

    Recorded(const Recorded&) = delete;
    Recorded& operator=(const Recorded&) = delete;

    bool outermost() const { return depth_ == 1; }

private:
    static QString word(const char* text) { return QString::fromUtf8(text); }

    static QString word(int number) { return QString::number(number); }

    static QString word(double number) { return QString::number(number); }

    static inline thread_local int depth_ = 0;
};

template <typename Function>
Function* library(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// ---- What a test asks ----------------------------------------------------------------------

void FluidSpy::reset()
{
    fluid_synth_t* const lastSynth = state().lastSynth;
    state() = {};
    state().lastSynth = lastSynth;
}

void FluidSpy::letSynthFail()
{
    state().synthFails = true;
}

void FluidSpy::spoilSound()
{
    state().soundIsSpoilt = true;
}

void FluidSpy::setDriver(Driver driver)
{
    state().driver = driver;
}

const QList<FluidSpy::Call>& FluidSpy::timeline()
{
    return state().calls;
}

QStringList FluidSpy::calls()
{
    QStringList texts;
    for (const Call& call : state().calls)
        texts.append(call.text);
    return texts;
}

QStringList FluidSpy::calls(const QStringList& functions)
{
    QStringList texts;
    for (const Call& call : state().calls) {
        if (functions.contains(call.text.section(u' ', 0, 0)))
            texts.append(call.text);
    }
    return texts;
}

int FluidSpy::activeVoices()
{
    return fluid_synth_get_active_voice_count(state().lastSynth);
}

// ---- In the place of the library -----------------------------------------------------------

fluid_settings_t* new_fluid_settings()
{
    static auto* const pass = library<decltype(new_fluid_settings)>("new_fluid_settings");
    const Recorded call("new_settings");
    return pass();
}

void delete_fluid_settings(fluid_settings_t* settings)
{
    static auto* const pass = library<decltype(delete_fluid_settings)>("delete_fluid_settings");
    const Recorded call("delete_settings");
    pass(settings);
}

int fluid_settings_setnum(fluid_settings_t* settings, const char* name, double value)
{
    static auto* const pass = library<decltype(fluid_settings_setnum)>("fluid_settings_setnum");
    const Recorded call("setnum", name, value);
    return pass(settings, name, value);
}

int fluid_settings_setint(fluid_settings_t* settings, const char* name, int value)
{
    static auto* const pass = library<decltype(fluid_settings_setint)>("fluid_settings_setint");
    const Recorded call("setint", name, value);
    return pass(settings, name, value);
}

int fluid_settings_setstr(fluid_settings_t* settings, const char* name, const char* value)
{
    static auto* const pass = library<decltype(fluid_settings_setstr)>("fluid_settings_setstr");
    const Recorded call("setstr", name, value);
    return pass(settings, name, value);
}

fluid_synth_t* new_fluid_synth(fluid_settings_t* settings)
{
    static auto* const pass = library<decltype(new_fluid_synth)>("new_fluid_synth");
    const Recorded call("new_synth");
    state().lastSynth = state().synthFails ? nullptr : pass(settings);
    return state().lastSynth;
}

void delete_fluid_synth(fluid_synth_t* synth)
{
    static auto* const pass = library<decltype(delete_fluid_synth)>("delete_fluid_synth");
    const Recorded call("delete_synth");
    pass(synth);
}

fluid_audio_driver_t* new_fluid_audio_driver(fluid_settings_t*, fluid_synth_t*)
{
    const Recorded call("new_driver");
    if (state().driver == FluidSpy::Driver::Fails)
        return nullptr;
    return reinterpret_cast<fluid_audio_driver_t*>(&standingDriver);
}

void delete_fluid_audio_driver(fluid_audio_driver_t*)
{
    const Recorded call("delete_driver");
}

int fluid_synth_sfload(fluid_synth_t* synth, const char* path, int resetPresets)
{
    static auto* const pass = library<decltype(fluid_synth_sfload)>("fluid_synth_sfload");
    const Recorded call("sfload", path, resetPresets);
    return pass(synth, path, resetPresets);
}

int fluid_synth_program_select(fluid_synth_t* synth, int channel, int font, int bank, int program)
{
    static auto* const pass =
        library<decltype(fluid_synth_program_select)>("fluid_synth_program_select");
    const Recorded call("program_select", channel, font, bank, program);
    return pass(synth, channel, font, bank, program);
}

int fluid_synth_cc(fluid_synth_t* synth, int channel, int controller, int value)
{
    static auto* const pass = library<decltype(fluid_synth_cc)>("fluid_synth_cc");
    const Recorded call("cc", channel, controller, value);
    return pass(synth, channel, controller, value);
}

int fluid_synth_noteon(fluid_synth_t* synth, int channel, int pitch, int velocity)
{
    static auto* const pass = library<decltype(fluid_synth_noteon)>("fluid_synth_noteon");
    const Recorded call("noteon", channel, pitch, velocity);
    return pass(synth, channel, pitch, velocity);
}

int fluid_synth_noteoff(fluid_synth_t* synth, int channel, int pitch)
{
    static auto* const pass = library<decltype(fluid_synth_noteoff)>("fluid_synth_noteoff");
    const Recorded call("noteoff", channel, pitch);
    return pass(synth, channel, pitch);
}

int fluid_synth_all_notes_off(fluid_synth_t* synth, int channel)
{
    static auto* const pass =
        library<decltype(fluid_synth_all_notes_off)>("fluid_synth_all_notes_off");
    const Recorded call("all_notes_off", channel);
    return pass(synth, channel);
}

int fluid_synth_all_sounds_off(fluid_synth_t* synth, int channel)
{
    static auto* const pass =
        library<decltype(fluid_synth_all_sounds_off)>("fluid_synth_all_sounds_off");
    const Recorded call("all_sounds_off", channel);
    return pass(synth, channel);
}

int fluid_synth_write_float(fluid_synth_t* synth, int frames, void* left, int leftOffset,
                            int leftStep, void* right, int rightOffset, int rightStep)
{
    static auto* const pass = library<decltype(fluid_synth_write_float)>("fluid_synth_write_float");
    const Recorded call("write_float", frames, leftOffset, leftStep, rightOffset, rightStep,
                        left == right ? "together" : "apart");
    bool isSpoilt = false;
    if (call.outermost()) {
        const std::lock_guard lock(mutex());
        state().frames += frames;
        isSpoilt = std::exchange(state().soundIsSpoilt, false);
    }
    const int result =
        pass(synth, frames, left, leftOffset, leftStep, right, rightOffset, rightStep);
    if (isSpoilt)
        static_cast<float*>(left)[leftOffset] = std::numeric_limits<float>::quiet_NaN();
    return result;
}
