#pragma once

#include <QObject>
#include <QString>

#include <memory>

class AudioRecorder;
class CountIn;
class PlaybackEngine;
class Project;
class Prompts;
class QWidget;
class SoundfontPlayer;
class VoiceTake;
struct AudioClip;

/// Records the voice of somebody who sings along: a bar is counted first where the user has set
/// that, then the song plays and the take runs, and in the end there is a file and a clip of it.
class VoiceRecording : public QObject {
    Q_OBJECT

public:
    /// Questions are asked over the window. Nothing is owned; the player may be null.
    VoiceRecording(SoundfontPlayer* player, PlaybackEngine& engine, Prompts& prompts,
                   QWidget* window);
    ~VoiceRecording() override;

    /// Begins to record for a work whose clips lie in `folder`, or ends what is under way: a count,
    /// of which nothing is left, or a take. The work lives until then.
    void toggle(Project& work, const QString& folder);

    /// Ends the take, if there is one, into the work that it belongs to.
    void finish();

    /// Asks, and then drops the take that is under way: nothing is kept of it. A count ends without
    /// a question.
    void cancel();

    /// The clips of the work lie in another folder from now on.
    void moveTo(const QString& folder);

    /// Nothing is sung yet, but will be at the end of the bar.
    bool isCounting() const;

    /// A take is under way, or counted in.
    bool isSinging() const;

    /// Whether a bar is counted before a take begins, for this user and in all windows to come.
    bool countsIn() const { return countsIn_; }

    void setCountsIn(bool on);

signals:
    /// isSinging() or isCounting() has changed.
    void singingChanged();

    /// With each click of a count, from 1.
    void counted(int click);

    /// How loud the microphone is, 0 to 1.
    void levelHeard(float peak);

    /// Something to be told in passing.
    void told(const QString& text);

    /// A take of the work has ended in a file, and this is its clip.
    void recorded(const AudioClip& clip);

private:
    /// Begins to sing at once, or counts a bar first if the song stands still: one that plays
    /// counts by itself.
    void start();

    /// The microphone is open, and what comes from now on is the take.
    void beginTake();
    void cancelCountIn();

    /// Writes an ended take. The path of the file, which is empty for one that is given up.
    QString write(const VoiceTake& take, double* seconds);

    /// Offers another place for a take that found no room in its file, until one takes it or the
    /// user gives it up.
    QString rescue(const QString& file, double* seconds);
    void onRecordingFailed(const QString& message);

    PlaybackEngine& engine_;
    Prompts& prompts_;
    QWidget* window_;
    std::unique_ptr<AudioRecorder> recorder_;
    std::unique_ptr<CountIn> countIn_;
    /// Of what is under way.
    Project* work_ = nullptr;
    QString folder_;
    /// Null while nobody sings.
    std::unique_ptr<VoiceTake> take_;
    bool countsIn_;
};
