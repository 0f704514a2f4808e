#include "voice/VoiceMix.h"

#include "model/Audibility.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "voice/AudioDecoder.h"
#include "voice/SampleBuffer.h"
#include "voice/VoiceTuner.h"

#include <QDir>

#include <algorithm>
#include <cmath>

namespace {

/// The clip's file as mono samples at the mixing rate.
QList<float> samplesOf(const AudioClip& clip, const QString& projectDir)
{
    const AudioDecoder::Result decoded =
        AudioDecoder::decode(QDir(projectDir).filePath(clip.audioFilePath));
    if (!decoded.ok)
        return {};
    const QList<float> mono = AudioDecoder::toMono(decoded);
    return decoded.sampleRate == kSampleRate ? mono : VoiceMix::resampled(mono, decoded.sampleRate);
}

/// Where a clip lies in a mix, in frames.
struct Span {
    /// Place of the clip's first frame in the mix, which may be before it.
    qint64 start;
    /// What is played of the clip, in the mix or not.
    qint64 played;
    /// The clip's own frames that lie in the mix, from `first` to before `last`.
    qint64 first;
    qint64 last;
};

Span spanOf(const AudioClip& clip, qint64 clipFrames, double beatFrames, qint64 mixFrames)
{
    qint64 played = clipFrames;
    if (clip.durationBeats > 0.0)
        played = std::min(played, wholeFrames(clip.durationBeats * beatFrames));
    const qint64 start = wholeFrames(clip.offsetBeats * beatFrames);
    return {.start = start,
            .played = played,
            .first = std::max<qint64>(0, -start),
            .last = std::min(played, mixFrames - start)};
}

/// A ramp over the first and the last frames of what is played of a clip.
class Fades {
public:
    Fades(const AudioClip& clip, qint64 playedFrames)
        : played_(playedFrames),
          in_(wholeFrames(static_cast<double>(clip.fadeInSeconds * float(kSampleRate)))),
          out_(wholeFrames(static_cast<double>(clip.fadeOutSeconds * float(kSampleRate))))
    {}

    float applied(float sample, qint64 frame) const
    {
        if (frame < in_)
            sample *= static_cast<float>(frame) / static_cast<float>(in_);
        if (out_ > 0 && frame > played_ - out_)
            sample *= static_cast<float>(played_ - frame) / static_cast<float>(out_);
        return sample;
    }

private:
    qint64 played_;
    qint64 in_;
    qint64 out_;
};

/// Adds a sample, unless that gives something other than a finite number.
void addFinite(float& sum, float sample)
{
    const float raised = sum + sample;
    if (std::isfinite(raised))
        sum = raised;
}

void addClip(const AudioClip& clip, const QList<float>& mono, const Span& span, float trackVolume,
             QList<float>& mix)
{
    const float gain = clip.gain * trackVolume;
    const Fades fades(clip, span.played);
    float* out = mix.data() + 2 * (span.start + span.first);
    for (qint64 i = span.first; i < span.last; ++i) {
        const float sample = fades.applied(mono[i] * gain, i);
        addFinite(*out++, sample);
        addFinite(*out++, sample);
    }
}

} // namespace

QList<float> VoiceMix::render(const Project& project, const QString& projectDir, qint64 frames)
{
    if (frames < 1 || frames > kMaxFrames)
        return {};
    QList<float> mix = silentSamples(2 * frames);
    if (mix.isEmpty())
        return {};
    const bool soloed =
        Audibility::anySolo(project.tracks) || Audibility::anySolo(project.audioTracks);
    const double beatFrames = framesPerBeat(project.bpm);
    for (const AudioTrack& track : project.audioTracks) {
        if (!Audibility::sounds(track, soloed))
            continue;
        for (const AudioClip& clip : track.clips) {
            if (!std::isfinite(clip.offsetBeats * beatFrames))
                continue;
            QList<float> mono = samplesOf(clip, projectDir);
            const Span span = spanOf(clip, mono.size(), beatFrames, frames);
            if (span.first >= span.last)
                continue;
            if (clip.tune.enabled) {
                mono.resize(std::min(mono.size(), span.last + VoiceTuner::kReach));
                mono = VoiceTuner::tune(mono, kSampleRate, project.keySignature, clip.tune);
            }
            addClip(clip, mono, span, track.volume, mix);
        }
    }
    return mix;
}

QList<float> VoiceMix::resampled(const QList<float>& mono, int sampleRate)
{
    const double ratio = sampleRate / static_cast<double>(kSampleRate);
    const auto count =
        std::min(wholeFrames(std::floor(static_cast<double>(mono.size()) / ratio)) - 1,
                 AudioDecoder::kMaxSamples);
    if (mono.isEmpty() || sampleRate < 1 || count < 1)
        return {};
    QList<float> out(count);
    float* sample = out.data();
    for (qsizetype i = 0; i < count; ++i) {
        const double position = static_cast<double>(i) * ratio;
        const auto k = static_cast<qsizetype>(position);
        const float fraction = static_cast<float>(position - static_cast<double>(k));
        // Below the mixing rate the last position may stand on the last sample: it is held there.
        const float next = mono[std::min(k + 1, mono.size() - 1)];
        *sample++ = (1.0F - fraction) * mono[k] + fraction * next;
    }
    return out;
}
