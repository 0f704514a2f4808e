#include "support/LameSpy.h"

#include <lame/lame.h>

#include <dlfcn.h>
#include <limits>

namespace {

struct State {
    QStringList calls;
    QList<int> chunkFrames;
    QList<int> bufferSizes;
    QList<short> samples;
    /// LAME is at work and calls functions of its own.
    bool inside = false;
    bool initFails = false;
    bool refuses = false;
    int failsFrom = std::numeric_limits<int>::max();
};

State& state()
{
    static State instance;
    return instance;
}

template <typename Function>
Function* library(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void record(const char* call, int value)
{
    if (!state().inside)
        state().calls.append(QString::fromLatin1(call) + u' ' + QString::number(value));
}

} // namespace

// ---- What a test asks ----------------------------------------------------------------------

void LameSpy::reset()
{
    state() = {};
}

void LameSpy::letInitFail()
{
    state().initFails = true;
}

void LameSpy::refuseParameters()
{
    state().refuses = true;
}

void LameSpy::failEncodingFrom(int call)
{
    state().failsFrom = call;
}

QStringList LameSpy::calls()
{
    return state().calls;
}

const QList<int>& LameSpy::chunkFrames()
{
    return state().chunkFrames;
}

const QList<int>& LameSpy::bufferSizes()
{
    return state().bufferSizes;
}

const QList<short>& LameSpy::samples()
{
    return state().samples;
}

// ---- In the place of the library -----------------------------------------------------------

lame_global_flags* lame_init()
{
    static auto* const pass = library<decltype(lame_init)>("lame_init");
    state().calls.append(QStringLiteral("init"));
    return state().initFails ? nullptr : pass();
}

int lame_close(lame_global_flags* lame)
{
    static auto* const pass = library<decltype(lame_close)>("lame_close");
    state().calls.append(QStringLiteral("close"));
    return pass(lame);
}

int lame_set_in_samplerate(lame_global_flags* lame, int value)
{
    static auto* const pass = library<decltype(lame_set_in_samplerate)>("lame_set_in_samplerate");
    record("set_in_samplerate", value);
    return pass(lame, value);
}

int lame_set_num_channels(lame_global_flags* lame, int value)
{
    static auto* const pass = library<decltype(lame_set_num_channels)>("lame_set_num_channels");
    record("set_num_channels", value);
    return pass(lame, value);
}

int lame_set_brate(lame_global_flags* lame, int value)
{
    static auto* const pass = library<decltype(lame_set_brate)>("lame_set_brate");
    record("set_brate", value);
    return pass(lame, value);
}

int lame_set_quality(lame_global_flags* lame, int value)
{
    static auto* const pass = library<decltype(lame_set_quality)>("lame_set_quality");
    record("set_quality", value);
    return pass(lame, value);
}

int lame_init_params(lame_global_flags* lame)
{
    static auto* const pass = library<decltype(lame_init_params)>("lame_init_params");
    state().calls.append(QStringLiteral("init_params"));
    if (state().refuses)
        return -1;
    state().inside = true;
    const int result = pass(lame);
    state().inside = false;
    return result;
}

int lame_encode_buffer_interleaved(lame_global_flags* lame, short* pcm, int frames,
                                   unsigned char* buffer, int size)
{
    static auto* const pass =
        library<decltype(lame_encode_buffer_interleaved)>("lame_encode_buffer_interleaved");
    const bool fails = state().chunkFrames.size() >= state().failsFrom;
    state().chunkFrames.append(frames);
    state().bufferSizes.append(size);
    state().samples += QList<short>(pcm, pcm + 2 * frames);
    return fails ? -1 : pass(lame, pcm, frames, buffer, size);
}

int lame_encode_flush(lame_global_flags* lame, unsigned char* buffer, int size)
{
    static auto* const pass = library<decltype(lame_encode_flush)>("lame_encode_flush");
    state().calls.append(QStringLiteral("encode_flush"));
    return pass(lame, buffer, size);
}
