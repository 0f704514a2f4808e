#pragma once

#include "views/arranger/BlockEdits.h"

#include <optional>

struct AudioClip;

/// How loud a clip is from its beginning to its end.
struct ClipLevels {
    /// Linear.
    float gain = 1.0F;
    /// Seconds that a clip takes to come and to go.
    float fadeIn = 0.0F;
    float fadeOut = 0.0F;

    friend bool operator==(const ClipLevels&, const ClipLevels&) = default;
};

/// What of a clip's levels a gesture changes.
enum class ClipHandle { Gain, FadeIn, FadeOut };

/// What gestures do to the levels of clips. A stale reference, and one to what is no clip, does
/// nothing.
namespace ClipEdits {

/// The most that a gesture makes of a gain; a file may hold more.
inline constexpr double kMostGain = 2.0;

/// Gestures leave multiples of these: of a gain, and of a fade in seconds.
inline constexpr double kGainStep = 0.05;
inline constexpr double kFadeStep = 0.05;

/// The record of a clip, or null. It lives until the project is changed.
const AudioClip* clipOf(const Project& project, const BlockRef& block);

ClipLevels levelsOf(const AudioClip& clip);
std::optional<ClipLevels> levelsOf(const Project& project, const BlockRef& block);
void setLevels(Project& project, const BlockRef& block, const ClipLevels& levels);

/// Seconds that the record of a clip plays at the tempo of the project, as long as its file holds
/// out.
double secondsOf(const Project& project, const AudioClip& clip);

/// Levels with another gain or another fade, which leaves the other fade its room in what is
/// played of the clip.
ClipLevels with(const ClipLevels& levels, ClipHandle handle, double value, double playedSeconds);

/// Levels some steps further, from one multiple of a step to the next.
ClipLevels stepped(const ClipLevels& levels, ClipHandle handle, int steps, double playedSeconds);

} // namespace ClipEdits
