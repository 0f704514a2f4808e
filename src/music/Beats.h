#pragma once

#include <QtGlobal>

#include <optional>

/// Musical time. Positions and lengths are doubles in beats, and a beat is a quarter note;
/// bars count from 0.

/// Tolerance of comparisons between positions, in beats.
inline constexpr double kBeatEpsilon = 1e-9;

/// Sample rate of everything the program mixes, in Hz.
inline constexpr int kSampleRate = 44100;

/// True for a bar length, in beats, that time can be divided by: positive and finite.
bool isBarLength(double beatsPerBar);

/// The bar that holds an absolute beat, or nothing where no 32-bit bar number does: for a bar
/// length that is none, a beat that is not finite, or one out of reach.
std::optional<qint32> barAt(double beat, double beatsPerBar);

/// Frames of kSampleRate in one beat at a tempo in quarter notes per minute; a tempo below 1
/// counts as 1.
double framesPerBeat(qint32 bpm);

/// The whole frames in a number of frames, cut toward zero. Values beyond 2^53 in magnitude are
/// held there, so that sums of results stay in range, and what is not a number gives 0.
qint64 wholeFrames(double frames);
