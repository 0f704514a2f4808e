#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>

class QAudioSource;
class QIODevice;

/// Records the default microphone into memory, and writes a finished take as a mono WAV file.
class AudioRecorder : public QObject {
    Q_OBJECT

public:
    explicit AudioRecorder(QObject* parent = nullptr);
    ~AudioRecorder() override;

    /// Starts a take. False during another, which goes on, and where there is no microphone to
    /// record with, which recordingFailed() tells.
    bool startRecording();

    /// Forgets what has come of the take so far: it begins here.
    void beginAnew();

    /// Ends the take and writes it at the rate at which the device recorded, its channels folded
    /// into one. The length in seconds; 0.0 if there was no take, nothing came or the file cannot
    /// be written: then the take stays in memory.
    double stopRecording(const QString& path);

    /// Whether an ended take is still in memory because no file has taken it yet.
    bool holdsTake() const { return !held_.isEmpty(); }

    /// Writes such a take. Its length in seconds, or 0.0 if this file cannot be written either.
    double writeHeldTake(const QString& path);

    void forgetHeldTake() { held_.clear(); }

    /// Ends the take and forgets it.
    void cancelRecording();

    bool isRecording() const { return recording_; }

signals:
    /// `message` is for the user. During a take: the microphone is gone. The take goes on without
    /// it, and what had come by then is there for stopRecording().
    void recordingFailed(const QString& message);

    /// Each time that sound has come during a take: its greatest magnitude, 0 to 1.
    void levelHeard(float peak);

private:
    /// Looks whether the take still has a microphone, and tells once when it has not.
    void watch();
    void takeWhatCame();
    void endSource();

    QAudioSource* source_ = nullptr;
    /// Of the source, which gives it up when the sound server goes away.
    QPointer<QIODevice> inputDevice_;
    /// 16-bit samples, interleaved.
    QByteArray pcm_;
    /// Runs with a take that has a microphone.
    QTimer watch_;
    /// Size of the take at the last look, and how often it had not grown.
    qsizetype seenBytes_ = 0;
    int silentLooks_ = 0;
    /// An ended take, in mono, until it is whole on the disk.
    QList<float> held_;
    int heldRate_ = 0;
    bool recording_ = false;
};
