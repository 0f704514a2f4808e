#pragma once

#include <QtGlobal>

/// How loosely a track is played.
struct HumanizeSettings {
    bool enabled = true;
    /// 0 leaves the notes alone, 1 loosens fully; larger values act as 1.
    float intensity = 0.4F;
    /// Seed of the jitter: equal seeds give equal playing.
    quint32 seed = 1;

    friend bool operator==(const HumanizeSettings&, const HumanizeSettings&) = default;
};
