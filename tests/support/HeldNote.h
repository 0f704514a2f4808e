#pragma once

#include <QList>

/// Measurements on a note that is held, over the whole of it.
namespace HeldNote {

inline constexpr int kWindow = 2048;
inline constexpr int kStep = 512;

/// Weights of a window's samples.
const QList<double>& hann();

/// Phase of a frequency in the window that starts at a sample.
double phaseAt(const QList<float>& samples, qsizetype start, double hz, int sampleRate);

/// How far, in cents, a partial near `hz` is off it in every window: by how much its phase runs
/// ahead between two windows a little apart, which no beating hides.
QList<double> centsOff(const QList<float>& samples, double hz, int sampleRate);

double median(QList<double> values);

/// Deviation of the loudness over its mean.
double amplitudeModulation(const QList<float>& samples);

} // namespace HeldNote
