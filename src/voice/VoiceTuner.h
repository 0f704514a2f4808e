#pragma once

#include "model/AudioTrack.h"
#include "music/KeySignature.h"

#include <QList>

/// Draws a sung mono recording to the notes of a key. Works on pitch alone: time is not touched.
class VoiceTuner {
public:
    /// Weights of the present and of the previous frame in the smoothing of ratios.
    static constexpr float kRatioKeep = 0.7F;
    static constexpr float kRatioCarry = 0.3F;

    /// A list as long as `samples`; the samples themselves when tuning is off, has no intensity,
    /// or the recording is shorter than one frame. `sampleRate` is in Hz.
    static QList<float> tune(const QList<float>& samples, int sampleRate, const KeySignature& key,
                             const VoiceTuneSettings& settings);

    /// The pitch ratio of every frame, smoothed: what brings detected `pitches` (Hz, 0.0 = none)
    /// to the nearest notes of a scale of pitch classes, scaled by an intensity from 0 to 1. An
    /// empty scale stands for all semitones.
    static QList<float> ratiosTowardScale(const QList<float>& pitches, const QList<int>& scale,
                                          float intensity);
};
