#pragma once

#include <QList>
#include <QObject>

class MixBuffer;
class QAudioSink;

/// The sound device beside the synthesiser's: plays a finished mix of the voices. Where there is
/// no device that takes it, nothing is heard and nothing is said.
class VoiceOutput : public QObject {
    Q_OBJECT

public:
    explicit VoiceOutput(QObject* parent = nullptr);
    ~VoiceOutput() override;

    /// Plays interleaved stereo at kSampleRate from a frame on, in place of what plays. A frame
    /// outside the mix counts as its nearest end.
    void play(const QList<float>& mix, qint64 fromFrame);

    /// Goes on with another mix of the same song where the former one is. Nothing where none plays.
    void goOnWith(const QList<float>& mix);

    void stop();

    /// Whether a device was found for what was played last.
    bool isActive() const { return sink_ != nullptr; }

private:
    QAudioSink* sink_ = nullptr;
    MixBuffer* buffer_ = nullptr;
};
