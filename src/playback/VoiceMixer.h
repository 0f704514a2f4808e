#pragma once

#include "voice/VoiceMix.h"

#include <QFuture>
#include <QList>
#include <QThreadPool>

#include <memory>
#include <stop_token>

/// Mixes the voices ahead of playback, on a thread of its own, and keeps the mix and the clips that
/// it is made of. What that thread works on are values that nobody else touches; all operations
/// belong to one thread.
class VoiceMixer {
public:
    VoiceMixer();

    /// Calls off a mix that is under way.
    ~VoiceMixer();

    VoiceMixer(const VoiceMixer&) = delete;
    VoiceMixer& operator=(const VoiceMixer&) = delete;

    /// Begins to mix voices in place of the former ones, unless they are the same.
    void prepare(const VoiceMix::Voices& voices);

    /// Whether mix() would return at once.
    bool isReady(const VoiceMix::Voices& voices) const;

    /// The voices to the end of the last clip; see VoiceMix::renderToTheEnd(). Waits where they are
    /// not mixed yet.
    QList<float> mix(const VoiceMix::Voices& voices);

private:
    VoiceMix::Voices voices_;
    QFuture<QList<float>> mix_;
    /// Of the mix that is under way.
    std::stop_source stop_;
    /// Used on the other thread alone.
    std::unique_ptr<ClipCache> clips_ = std::make_unique<ClipCache>();
    /// One thread, on which mixes follow one another. The last member: it waits for the thread.
    QThreadPool thread_;
};
