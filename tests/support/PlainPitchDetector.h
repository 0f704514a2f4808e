#pragma once

#include <QList>

/// Pitch detection in its plainest form: three whole sums for every lag of every frame. Slow, and
/// the reference for the bits of any faster form.
namespace PlainPitchDetector {

/// Correlation of a frame of 2048 samples with itself `lag` samples later: products in single
/// precision, sums in double precision, in order.
double correlation(const float* frame, int lag);

double frameEnergy(const float* frame);

float framePitch(const float* frame, int sampleRate);

QList<float> detectTrack(const QList<float>& samples, int sampleRate);

/// Height of the highest peak of the correlation at whole lags from `lag - reach` to `lag + reach`,
/// by the parabola through it and its neighbours; 0 without one.
double peakHeight(const float* frame, double lag, double reach);

/// A frame's pitch with an odd fraction undone: the highest odd multiple whose single period
/// correlates nearly as well.
double undoneFraction(const float* frame, double hz, int sampleRate);

} // namespace PlainPitchDetector
