#pragma once

#include "model/AudioTrack.h"
#include "music/KeySignature.h"

#include <QList>
#include <QString>

#include <list>
#include <stop_token>

/// All that decides how a clip's file sounds, and a sign of what the file holds.
struct ClipSource {
    QString path;
    /// Bytes, and milliseconds of the epoch; both -1 where there is no file.
    qint64 size = -1;
    qint64 modified = -1;
    /// Both as they are by default for a clip that is not tuned.
    KeySignature key;
    VoiceTuneSettings tune;

    friend bool operator==(const ClipSource&, const ClipSource&) = default;

    /// Looks at the file as it is now.
    static ClipSource of(const AudioClip& clip, const QString& folder, const KeySignature& key);
};

/// A clip's file as sound, before it is placed, cut and faded: mono at kSampleRate, tuned.
struct ClipSound {
    /// From the file's beginning on; empty where it cannot be read.
    QList<float> samples;
    /// Frames of the whole file, of which `samples` may be the first part.
    qint64 length = 0;

    /// Reads and tunes the first `frames` of a file, or all there are; `samples` holds that many or
    /// a few more. Nothing sensible once it is asked to stop.
    static ClipSound read(const ClipSource& source, qint64 frames,
                          const std::stop_token& stop = {});
};

/// Keeps the clips that were read last. Not for several threads at once.
class ClipCache {
public:
    static constexpr qint64 kMaxBytes = qint64(256) << 20;

    /// Clips of more than `maxBytes` together are not kept: those go first that were asked for
    /// longest ago.
    explicit ClipCache(qint64 maxBytes = kMaxBytes) : maxBytes_(maxBytes) {}

    /// As ClipSound::read(). `samples` may hold more than was asked for.
    ClipSound sound(const ClipSource& source, qint64 frames, const std::stop_token& stop = {});

private:
    struct Entry {
        ClipSource source;
        ClipSound sound;
    };

    void keep(const ClipSource& source, const ClipSound& sound);

    qint64 maxBytes_;
    /// The one asked for last in front.
    std::list<Entry> entries_;
};
