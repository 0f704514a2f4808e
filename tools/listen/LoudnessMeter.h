#pragma once

#include "music/Beats.h"

#include <ebur128.h>
#include <memory>

struct LoudnessMeterEnd {
    void operator()(ebur128_state* state) const { ebur128_destroy(&state); }
};

using LoudnessMeter = std::unique_ptr<ebur128_state, LoudnessMeterEnd>;

/// A meter of libebur128 for interleaved stereo at kSampleRate; null where memory is short.
inline LoudnessMeter loudnessMeter(int mode)
{
    return LoudnessMeter(ebur128_init(2, kSampleRate, mode));
}
