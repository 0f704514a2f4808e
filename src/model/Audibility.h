#pragma once

#include <algorithm>

/// Which tracks of a project are heard, for lists of note tracks and of voice tracks alike.
namespace Audibility {

/// Whether any track of a list is soloed.
template <typename TrackList>
bool anySolo(const TrackList& tracks)
{
    return std::ranges::any_of(tracks, [](const auto& track) { return track.solo; });
}

/// Whether a track is heard, given whether any track that counts is soloed: mute beats solo.
template <typename AnyTrack>
bool sounds(const AnyTrack& track, bool anySolo)
{
    return !track.muted && (!anySolo || track.solo);
}

} // namespace Audibility
