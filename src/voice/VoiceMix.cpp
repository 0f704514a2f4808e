#include "voice/VoiceMix.h"

#include "model/Audibility.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "voice/AudioDecoder.h"
#include "voice/SampleBuffer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace {

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

/// A clip of a mix that is heard, and its sound.
struct Part {
    ClipSound sound;
    Span span;
};

/// The clip in a mix of so many frames, or nothing where it is not heard. Without a cache the file
/// is read.
std::optional<Part> partOf(const VoiceMix::Voice& voice, double beatFrames, qint64 mixFrames,
                           ClipCache* cache, const std::stop_token& stop)
{
    const qint64 start = wholeFrames(voice.clip.offsetBeats * beatFrames);
    qint64 most = std::numeric_limits<qint64>::max();
    if (voice.clip.durationBeats > 0.0)
        most = wholeFrames(voice.clip.durationBeats * beatFrames);
    const qint64 first = std::max<qint64>(0, -start);
    const qint64 heard = std::min(most, mixFrames - start);
    if (first >= heard)
        return std::nullopt;
    const ClipSound sound = cache ? cache->sound(voice.source, heard, stop)
                                  : ClipSound::read(voice.source, heard, stop);
    const Span span{.start = start,
                    .played = std::min(most, sound.length),
                    .first = first,
                    .last = std::min(heard, sound.length)};
    if (span.first >= span.last)
        return std::nullopt;
    return Part{sound, span};
}

/// A ramp over the first and the last frames of what is played of a clip.
class Fades {
public:
    Fades(const AudioClip& clip, qint64 playedFrames)
        : played_(playedFrames),
          in_(wholeFrames(static_cast<double>(clip.fadeInSeconds * float(kSampleRate)))),
          out_(wholeFrames(static_cast<double>(clip.fadeOutSeconds * float(kSampleRate))))
    {}

    /// `frame` lies before the end of what is played.
    float applied(float sample, qint64 frame) const
    {
        if (frame < in_)
            sample *= static_cast<float>(frame) / static_cast<float>(in_);
        if (frame > played_ - out_)
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

void addPart(const VoiceMix::Voice& voice, const Part& part, QList<float>& mix)
{
    const float gain = voice.clip.gain * voice.volume;
    const Fades fades(voice.clip, part.span.played);
    const float* mono = part.sound.samples.constData();
    float* out = mix.data() + 2 * (part.span.start + part.span.first);
    for (qint64 i = part.span.first; i < part.span.last; ++i) {
        const float sample = fades.applied(mono[i] * gain, i);
        addFinite(*out++, sample);
        addFinite(*out++, sample);
    }
}

} // namespace

VoiceMix::Voices VoiceMix::voicesOf(const Project& project, const QString& projectDir)
{
    const bool soloed =
        Audibility::anySolo(project.tracks) || Audibility::anySolo(project.audioTracks);
    Voices voices{.clips = {}, .bpm = project.bpm};
    for (const AudioTrack& track : project.audioTracks) {
        if (!Audibility::sounds(track, soloed))
            continue;
        for (const AudioClip& clip : track.clips) {
            if (std::isfinite(clip.offsetBeats * framesPerBeat(project.bpm)))
                voices.clips.append(
                    {clip, track.volume, ClipSource::of(clip, projectDir, project.keySignature)});
        }
    }
    return voices;
}

QList<float> VoiceMix::render(const Project& project, const QString& projectDir, qint64 frames)
{
    if (frames < 1 || frames > kMaxFrames)
        return {};
    QList<float> mix = silentSamples(2 * frames);
    if (mix.isEmpty())
        return {};
    const Voices voices = voicesOf(project, projectDir);
    for (const Voice& voice : voices.clips) {
        if (const auto part = partOf(voice, framesPerBeat(voices.bpm), frames, nullptr, {}))
            addPart(voice, *part, mix);
    }
    return mix;
}

QList<float> VoiceMix::renderToTheEnd(const Voices& voices, ClipCache& cache,
                                      const std::stop_token& stop)
{
    QList<std::optional<Part>> parts;
    qint64 end = 0;
    for (const Voice& voice : voices.clips) {
        if (stop.stop_requested())
            return {};
        parts.append(partOf(voice, framesPerBeat(voices.bpm), kMaxFrames, &cache, stop));
        if (const auto& part = parts.constLast())
            end = std::max(end, part->span.start + part->span.last);
    }
    QList<float> mix = end > 0 && !stop.stop_requested() ? silentSamples(2 * end) : QList<float>();
    for (qsizetype i = 0; i < parts.size() && !mix.isEmpty(); ++i) {
        if (parts.at(i))
            addPart(voices.clips.at(i), *parts.at(i), mix);
    }
    return mix;
}
