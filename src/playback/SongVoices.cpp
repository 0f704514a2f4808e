#include "playback/SongVoices.h"

#include "model/Audibility.h"
#include "model/Project.h"
#include "music/Beats.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kMostFramesAhead = 3600.0 * kSampleRate;

} // namespace

VoiceMix::Voices SongVoices::of(const Project* project, const QString& projectDir)
{
    return !project || projectDir.isEmpty() ? VoiceMix::Voices()
                                            : VoiceMix::voicesOf(*project, projectDir);
}

QList<bool> SongVoices::heard(const Project& project)
{
    const bool soloed =
        Audibility::anySolo(project.tracks) || Audibility::anySolo(project.audioTracks);
    QList<bool> heard;
    for (const AudioTrack& track : project.audioTracks)
        heard.append(!track.clips.isEmpty() && Audibility::sounds(track, soloed));
    return heard;
}

QList<float> SongVoices::levels(const Project& project)
{
    QList<float> levels;
    for (const AudioTrack& track : project.audioTracks) {
        for (const AudioClip& clip : track.clips)
            levels.append({clip.gain, clip.fadeInSeconds, clip.fadeOutSeconds});
    }
    return levels;
}

double SongVoices::endBeat(const Project& project)
{
    const QList<bool> isHeard = heard(project);
    double end = 0.0;
    for (qsizetype i = 0; i < isHeard.size(); ++i) {
        if (!isHeard.at(i))
            continue;
        for (const AudioClip& clip : project.audioTracks.at(i).clips)
            end = std::isfinite(clip.endBeat()) ? std::max(end, clip.endBeat()) : end;
    }
    return end;
}

bool SongVoices::areTooLongToMixAhead(const VoiceMix::Voices& voices)
{
    return std::ranges::any_of(voices.clips, [&voices](const VoiceMix::Voice& voice) {
        const double end = voice.clip.offsetBeats + std::max(0.0, voice.clip.durationBeats);
        return end * framesPerBeat(voices.bpm) > kMostFramesAhead;
    });
}
