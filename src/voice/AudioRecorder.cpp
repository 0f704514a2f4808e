#include "voice/AudioRecorder.h"

#include "music/Beats.h"
#include "voice/AudioDecoder.h"
#include "voice/SoundServer.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSource>
#include <QCoreApplication>
#include <QMediaDevices>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

namespace {

constexpr std::chrono::milliseconds kLookPeriod(500);

/// Looks at a microphone without a sample from it, for five seconds, before it counts as gone. A
/// silent one gives zeros.
constexpr int kMostSilentLooks = 10;

/// Qt knows the output that the user has chosen, but with some versions of it no input.
QAudioDevice defaultMicrophone()
{
    const QByteArray chosen = SoundServer::defaultMicrophone();
    const QList<QAudioDevice> microphones = QMediaDevices::audioInputs();
    const auto found = std::ranges::find(microphones, chosen, &QAudioDevice::id);
    return found == microphones.end() ? QMediaDevices::defaultAudioInput() : *found;
}

QAudioFormat wantedFormat()
{
    QAudioFormat format;
    format.setSampleRate(kSampleRate);
    format.setChannelCount(1);
    format.setSampleFormat(QAudioFormat::Int16);
    return format;
}

/// The wanted format, or else what the device prefers, in 16 bits. Nothing if it knows no 16 bits.
std::optional<QAudioFormat> formatFor(const QAudioDevice& device)
{
    QAudioFormat format = wantedFormat();
    if (device.isFormatSupported(format))
        return format;
    format = device.preferredFormat();
    if (format.sampleFormat() == QAudioFormat::Int16)
        return format;
    format.setSampleFormat(QAudioFormat::Int16);
    return device.isFormatSupported(format) ? std::optional(format) : std::nullopt;
}

/// One sample a frame, the mean of its channels.
QList<float> monoOf(const QByteArray& pcm, int channels)
{
    constexpr float kScale = 1.0F / 32768.0F;
    const qsizetype frames = pcm.size() / static_cast<qsizetype>(sizeof(qint16)) / channels;
    QList<float> mono;
    mono.reserve(frames);
    const char* next = pcm.constData();
    for (qsizetype frame = 0; frame < frames; ++frame) {
        float sum = 0.0F;
        for (int channel = 0; channel < channels; ++channel, next += sizeof(qint16)) {
            qint16 sample = 0;
            std::memcpy(&sample, next, sizeof sample);
            sum += static_cast<float>(sample) * kScale;
        }
        mono.append(sum / static_cast<float>(channels));
    }
    return mono;
}

/// The greatest magnitude, 0 to 1.
float peakOf(const QByteArray& pcm)
{
    int peak = 0;
    for (qsizetype at = 0; at + qsizetype(sizeof(qint16)) <= pcm.size(); at += sizeof(qint16)) {
        qint16 sample = 0;
        std::memcpy(&sample, pcm.constData() + at, sizeof sample);
        peak = std::max(peak, std::abs(static_cast<int>(sample)));
    }
    return static_cast<float>(peak) / 32768.0F;
}

} // namespace

AudioRecorder::AudioRecorder(QObject* parent) : QObject(parent)
{
    watch_.setInterval(kLookPeriod);
    connect(&watch_, &QTimer::timeout, this, &AudioRecorder::watch);
}

AudioRecorder::~AudioRecorder()
{
    cancelRecording();
    // Deleting a source runs the event loop, which must not come back to delete it once more.
    for (QAudioSource* source : findChildren<QAudioSource*>())
        QCoreApplication::removePostedEvents(source, QEvent::DeferredDelete);
}

bool AudioRecorder::startRecording()
{
    if (recording_)
        return false;
    // A server that hangs would hang whoever asks for its devices.
    if (!SoundServer::answers()) {
        emit recordingFailed(tr("No pude abrir el micrófono."));
        return false;
    }
    // Asked right before it is used: starting a device that has vanished since would hang.
    const QAudioDevice device = defaultMicrophone();
    if (device.isNull()) {
        emit recordingFailed(tr("No hay micrófono disponible."));
        return false;
    }
    const auto format = formatFor(device);
    if (!format) {
        emit recordingFailed(tr("El micrófono no soporta PCM de 16 bits."));
        return false;
    }
    source_ = new QAudioSource(device, *format, this);
    pcm_.clear();
    held_.clear();
    inputDevice_ = source_->start();
    if (!inputDevice_) {
        endSource();
        emit recordingFailed(tr("No pude abrir el micrófono."));
        return false;
    }
    connect(inputDevice_, &QIODevice::readyRead, this, &AudioRecorder::takeWhatCame);
    seenBytes_ = 0;
    silentLooks_ = 0;
    watch_.start();
    recording_ = true;
    return true;
}

void AudioRecorder::takeWhatCame()
{
    const QByteArray came = inputDevice_->readAll();
    pcm_.append(came);
    emit levelHeard(peakOf(came));
}

void AudioRecorder::beginAnew()
{
    pcm_.clear();
    seenBytes_ = 0;
}

/// A server that dies ends the source. One that hangs, or loses its last microphone, says nothing.
void AudioRecorder::watch()
{
    silentLooks_ = pcm_.size() > seenBytes_ ? 0 : silentLooks_ + 1;
    seenBytes_ = pcm_.size();
    if (source_->state() != QAudio::StoppedState && silentLooks_ < kMostSilentLooks &&
        !QMediaDevices::defaultAudioInput().isNull())
        return;
    watch_.stop();
    emit recordingFailed(tr("No hay micrófono disponible."));
}

double AudioRecorder::stopRecording(const QString& path)
{
    if (!recording_ || !source_)
        return 0.0;
    const QAudioFormat format = source_->format();
    endSource();
    held_ = monoOf(std::exchange(pcm_, {}), std::max(format.channelCount(), 1));
    heldRate_ = format.sampleRate();
    return writeHeldTake(path);
}

double AudioRecorder::writeHeldTake(const QString& path)
{
    if (held_.isEmpty() || !AudioDecoder::replaceWav(path, held_, heldRate_, 1))
        return 0.0;
    return static_cast<double>(std::exchange(held_, {}).size()) / heldRate_;
}

void AudioRecorder::cancelRecording()
{
    if (!recording_)
        return;
    endSource();
    pcm_.clear();
}

void AudioRecorder::endSource()
{
    watch_.stop();
    if (inputDevice_)
        disconnect(inputDevice_, nullptr, this, nullptr);
    source_->stop();
    // Deleting a source runs the event loop, which must not happen under a caller's feet.
    source_->deleteLater();
    source_ = nullptr;
    inputDevice_ = nullptr;
    recording_ = false;
}
