#include "views/arranger/ClipEdits.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "views/StepKeys.h"

#include <algorithm>
#include <cmath>

namespace {

float valueOf(const ClipLevels& levels, ClipHandle handle)
{
    if (handle == ClipHandle::Gain)
        return levels.gain;
    return handle == ClipHandle::FadeIn ? levels.fadeIn : levels.fadeOut;
}

double stepOf(ClipHandle handle)
{
    return handle == ClipHandle::Gain ? ClipEdits::kGainStep : ClipEdits::kFadeStep;
}

/// In this order of arguments, what is no number counts as 0.
double atLeastZero(double value)
{
    return std::max(0.0, value);
}

} // namespace

const AudioClip* ClipEdits::clipOf(const Project& project, const BlockRef& block)
{
    if (block.kind != BlockKind::Audio || block.trackIndex < 0 || block.blockIndex < 0 ||
        block.trackIndex >= project.audioTracks.size() ||
        block.blockIndex >= project.audioTracks.at(block.trackIndex).clips.size())
        return nullptr;
    return &project.audioTracks.at(block.trackIndex).clips.at(block.blockIndex);
}

ClipLevels ClipEdits::levelsOf(const AudioClip& clip)
{
    return {clip.gain, clip.fadeInSeconds, clip.fadeOutSeconds};
}

std::optional<ClipLevels> ClipEdits::levelsOf(const Project& project, const BlockRef& block)
{
    const AudioClip* clip = clipOf(project, block);
    return clip ? std::optional(levelsOf(*clip)) : std::nullopt;
}

void ClipEdits::setLevels(Project& project, const BlockRef& block, const ClipLevels& levels)
{
    if (!clipOf(project, block))
        return;
    AudioClip& clip = project.audioTracks[block.trackIndex].clips[block.blockIndex];
    clip.gain = levels.gain;
    clip.fadeInSeconds = levels.fadeIn;
    clip.fadeOutSeconds = levels.fadeOut;
}

double ClipEdits::secondsOf(const Project& project, const AudioClip& clip)
{
    return atLeastZero(clip.durationBeats) * framesPerBeat(project.bpm) / kSampleRate;
}

ClipLevels ClipEdits::with(const ClipLevels& levels, ClipHandle handle, double value,
                           double playedSeconds)
{
    const double step = stepOf(handle);
    const double rounded = atLeastZero(std::round(value / step) * step);
    const auto fade = [&](float other) {
        return static_cast<float>(
            std::min(rounded, atLeastZero(playedSeconds - atLeastZero(other))));
    };
    ClipLevels changed = levels;
    if (handle == ClipHandle::Gain)
        changed.gain = static_cast<float>(std::min(rounded, kMostGain));
    else if (handle == ClipHandle::FadeIn)
        changed.fadeIn = fade(levels.fadeOut);
    else
        changed.fadeOut = fade(levels.fadeIn);
    return changed;
}

ClipLevels ClipEdits::stepped(const ClipLevels& levels, ClipHandle handle, int steps,
                              double playedSeconds)
{
    // A little more than rounding leaves between a float and the multiple that it stands for.
    constexpr double kFloatSlack = 1e-4;
    const double step = stepOf(handle);
    const double present = std::round(valueOf(levels, handle) / step) * step;
    const double value = valueOf(levels, handle);
    const double from = std::abs(present - value) < kFloatSlack ? present : value;
    return with(levels, handle, StepKeys::stepped(from, step, steps), playedSeconds);
}
