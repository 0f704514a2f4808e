#pragma once

#include <QList>
#include <QString>

/// How strongly a voice is drawn to the notes of the key.
struct VoiceTuneSettings {
    bool enabled = false;
    /// 0 leaves the voice alone, 1 corrects fully.
    float intensity = 0.5F;

    friend bool operator==(const VoiceTuneSettings&, const VoiceTuneSettings&) = default;
};

/// One audio file placed on a voice track. The file itself is never changed.
struct AudioClip {
    /// File name relative to the project's folder.
    QString audioFilePath;
    /// Absolute beats.
    double offsetBeats = 0.0;
    /// Beats at the tempo of the moment of capture; 0 plays the whole file.
    double durationBeats = 0.0;
    /// Linear.
    float gain = 1.0F;
    float fadeInSeconds = 0.0F;
    float fadeOutSeconds = 0.0F;
    VoiceTuneSettings tune;

    double endBeat() const { return offsetBeats + durationBeats; }

    friend bool operator==(const AudioClip&, const AudioClip&) = default;
};

/// A voice track.
struct AudioTrack {
    QString name;
    /// Linear gain, 0 to 1.
    float volume = 0.8F;
    bool muted = false;
    bool solo = false;
    QList<AudioClip> clips;

    friend bool operator==(const AudioTrack&, const AudioTrack&) = default;
};
