#pragma once

#include <QList>
#include <QStringList>

/// Watches what the program asks of LAME, and makes it fail where a test wants it to. Works as
/// FluidSpy does, in executables that are built with LameSpy.cpp.
namespace LameSpy {

/// Forgets all calls and lets everything succeed.
void reset();

/// lame_init() gives nothing.
void letInitFail();

/// lame_init_params() refuses.
void refuseParameters();

/// Encoding fails from the call of this number on, counted from 0.
void failEncodingFrom(int call);

/// Every call but those that hand over samples, by name without prefix and by value:
/// "set_brate 192".
QStringList calls();

/// Frames handed over by each call.
const QList<int>& chunkFrames();

/// Sizes of the output buffers that came with them.
const QList<int>& bufferSizes();

/// All samples handed over, interleaved.
const QList<short>& samples();

} // namespace LameSpy
