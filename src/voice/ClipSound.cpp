#include "voice/ClipSound.h"

#include "music/Beats.h"
#include "voice/AudioDecoder.h"
#include "voice/Resampled.h"
#include "voice/VoiceTuner.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

/// What is kept of a long file is cut here, so that a little more of it can be heard without
/// tuning it anew.
constexpr qint64 kKeptStep = qint64(60) * kSampleRate;

qint64 bytesOf(const ClipSound& sound)
{
    return sound.samples.capacity() * static_cast<qint64>(sizeof(float));
}

bool holds(const ClipSound& sound, qint64 frames)
{
    return sound.samples.size() >= std::min(frames, sound.length);
}

} // namespace

ClipSource ClipSource::of(const AudioClip& clip, const QString& folder, const KeySignature& key)
{
    ClipSource source;
    source.path = QDir(folder).filePath(clip.audioFilePath);
    const QFileInfo file(source.path);
    if (file.exists()) {
        source.size = file.size();
        source.modified = file.lastModified().toMSecsSinceEpoch();
    }
    if (clip.tune.enabled) {
        source.key = key;
        source.tune = clip.tune;
    }
    return source;
}

ClipSound ClipSound::read(const ClipSource& source, qint64 frames, const std::stop_token& stop)
{
    const AudioDecoder::Result decoded = AudioDecoder::decode(source.path);
    if (!decoded.ok)
        return {};
    QList<float> mono = AudioDecoder::toMono(decoded);
    if (decoded.sampleRate != kSampleRate)
        mono = resampled(mono, decoded.sampleRate);
    const qint64 length = mono.size();
    if (source.tune.enabled) {
        // Compared this way round, since a number of frames may be too large to add to.
        if (frames < length - VoiceTuner::kReach)
            mono = mono.first(frames + VoiceTuner::kReach);
        mono = VoiceTuner::tune(mono, kSampleRate, source.key, source.tune, stop);
    }
    if (frames < mono.size())
        mono = mono.first(frames);
    return {.samples = mono, .length = length};
}

ClipSound ClipCache::sound(const ClipSource& source, qint64 frames, const std::stop_token& stop)
{
    const auto kept = std::ranges::find(entries_, source, &Entry::source);
    if (kept != entries_.end()) {
        entries_.splice(entries_.begin(), entries_, kept);
        if (holds(kept->sound, frames))
            return kept->sound;
        entries_.pop_front();
    }
    const qint64 wholeSteps = (frames / kKeptStep + 1) * kKeptStep;
    const ClipSound sound = ClipSound::read(source, wholeSteps, stop);
    if (!stop.stop_requested())
        keep(source, sound);
    return sound;
}

void ClipCache::keep(const ClipSource& source, const ClipSound& sound)
{
    if (bytesOf(sound) > maxBytes_)
        return;
    entries_.push_front({source, sound});
    qint64 bytes = 0;
    const auto first = std::ranges::find_if(entries_, [&](const Entry& entry) {
        bytes += bytesOf(entry.sound);
        return bytes > maxBytes_;
    });
    entries_.erase(first, entries_.end());
}
