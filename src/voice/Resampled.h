#pragma once

#include <QList>

/// Mono samples at kSampleRate, by linear interpolation. The result is one sample shorter than
/// it could be, so that every sample has a right neighbour.
QList<float> resampled(const QList<float>& mono, int sampleRate);
