#pragma once

#include <QMetaObject>
#include <QString>

#include <optional>

class PlaybackEngine;
class Project;

/// A voice that is being recorded: the work that it belongs to, where in the song it began and the
/// file that it will be kept in. The sound itself is with the AudioRecorder.
class VoiceTake {
public:
    /// Begins where the playhead is, in a work whose clips lie in `folder`. Neither the work nor
    /// the engine is owned, and the engine outlives the take.
    VoiceTake(Project& work, const PlaybackEngine& engine, const QString& folder);
    ~VoiceTake();
    VoiceTake(const VoiceTake&) = delete;
    VoiceTake& operator=(const VoiceTake&) = delete;

    Project& work() const { return work_; }

    /// The work is kept in another folder from now on.
    void moveTo(const QString& folder) { folder_ = folder; }

    /// Path of the first voz_1.wav, voz_2.wav... that does not exist.
    QString file() const;

    /// Ends the take at the playhead; what playback does from now on has no effect.
    void end();

    /// Where the clip of an ended take begins, in beats. A song that played all along says where
    /// the take ended, and its length where it began. One that ended or was stopped before has put
    /// the playhead elsewhere: then the clip lies where the take began.
    double offsetOf(double durationBeats) const;

private:
    Project& work_;
    const PlaybackEngine& engine_;
    QString folder_;
    double startBeat_;
    /// Nothing for as long as the take runs, and for one that outlasted playback.
    std::optional<double> endBeat_;
    bool playedAlong_;
    QMetaObject::Connection playback_;
};
