#pragma once

#include <QList>

/// How loud a mix is.
struct Loudness {
    /// Integrated loudness in LUFS (EBU R 128); minus infinity for silence.
    double lufs = 0.0;
    /// Largest magnitude in dB of full scale; minus infinity for silence.
    double peakDb = 0.0;

    /// `mix` is interleaved stereo at kSampleRate.
    static Loudness of(const QList<float>& mix);
};
