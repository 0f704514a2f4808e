#pragma once

#include "model/AudioTrack.h"
#include "music/KeySignature.h"
#include "voice/VoiceFrames.h"

#include <QList>

#include <stop_token>

/// Draws a sung mono recording to the notes of a key: the pitch of every frame is found, with odd
/// fractions undone, and the frame shifted to the nearest note in phase with the one before. Works
/// on pitch alone: time is not touched.
class VoiceTuner {
public:
    /// Weights of the present and of the previous frame in the smoothing of ratios.
    static constexpr float kRatioKeep = 0.7F;
    static constexpr float kRatioCarry = 0.3F;

    /// Samples behind one that decide how it is tuned: every frame that begins before it is
    /// analysed whole. What such a frame reads for it lies nearer, a tritone up (848 samples over a
    /// frame) and half a period along (512).
    static constexpr qsizetype kReach = kFrameSize;

    /// A list as long as `samples`; the samples themselves when tuning is off, has no intensity,
    /// or the recording is shorter than one frame. `sampleRate` is in Hz. Once it is asked to stop
    /// it is soon done, and the result nothing sensible.
    static QList<float> tune(const QList<float>& samples, int sampleRate, const KeySignature& key,
                             const VoiceTuneSettings& settings, const std::stop_token& stop = {});

    /// The pitch ratio of every frame, smoothed: what brings detected `pitches` (Hz, 0.0 = none)
    /// to the nearest notes of a scale of pitch classes, scaled by an intensity from 0 to 1. An
    /// empty scale stands for all semitones.
    static QList<float> ratiosTowardScale(const QList<float>& pitches, const QList<int>& scale,
                                          float intensity);
};
