#include "playback/VoiceOutput.h"

#include "music/Beats.h"
#include "playback/SoundThreads.h"
#include "voice/SoundServer.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QBuffer>
#include <QMediaDevices>

#include <algorithm>

namespace {

constexpr int kStereo = 2;
constexpr qint64 kBytesPerFrame = kStereo * sizeof(float);

QAudioFormat voiceFormat()
{
    QAudioFormat format;
    format.setSampleRate(kSampleRate);
    format.setChannelCount(kStereo);
    format.setSampleFormat(QAudioFormat::Float);
    return format;
}

} // namespace

/// The mix of a whole song is large: it is read where it lies, not from a copy.
class MixBuffer : public QBuffer {
public:
    MixBuffer(const QList<float>& mix, qint64 fromFrame, QObject* parent) : QBuffer(parent)
    {
        start(mix, fromFrame * kBytesPerFrame);
    }

    void goOnWith(const QList<float>& mix)
    {
        const qint64 place = pos();
        close();
        start(mix, place);
    }

private:
    void start(const QList<float>& mix, qint64 place)
    {
        mix_ = mix;
        setData(QByteArray::fromRawData(reinterpret_cast<const char*>(mix_.constData()),
                                        mix_.size() * static_cast<qsizetype>(sizeof(float))));
        open(QIODevice::ReadOnly);
        seek(std::clamp<qint64>(place, 0, size()));
    }

    QList<float> mix_;
};

VoiceOutput::VoiceOutput(QObject* parent) : QObject(parent)
{}

VoiceOutput::~VoiceOutput()
{
    // The sink runs the event loop as it is deleted, in which it would go on reading, and children
    // die in the order of their birth, the buffer first.
    if (sink_)
        sink_->stop();
    delete sink_;
}

void VoiceOutput::play(const QList<float>& mix, qint64 fromFrame)
{
    stop();
    // A server that hangs would hang whoever asks for its devices.
    if (!SoundServer::answers())
        return;
    // Asked right before it is used: starting a device that has vanished since would hang.
    const QAudioDevice device = QMediaDevices::defaultAudioOutput();
    if (device.isNull() || !device.isFormatSupported(voiceFormat()))
        return;
    const qint64 frames = mix.size() / kStereo;
    buffer_ = new MixBuffer(mix, std::clamp<qint64>(fromFrame, 0, frames), this);
    sink_ = new QAudioSink(device, voiceFormat(), this);
    sink_->start(buffer_);
    SoundThreads::hurrySoon();
}

void VoiceOutput::goOnWith(const QList<float>& mix)
{
    // The sink reads on this thread, so it never finds the mix half exchanged.
    if (sink_)
        buffer_->goOnWith(mix);
}

void VoiceOutput::stop()
{
    // Deleting a sink runs the event loop, which must not happen under a caller's feet.
    if (sink_) {
        sink_->stop();
        sink_->deleteLater();
    }
    if (buffer_)
        buffer_->deleteLater();
    sink_ = nullptr;
    buffer_ = nullptr;
}
