#pragma once

#include <QCoreApplication>
#include <QList>
#include <QString>

#include <functional>
#include <span>

class QIODevice;

/// Reads and writes audio files through libsndfile.
class AudioDecoder {
    Q_DECLARE_TR_FUNCTIONS(AudioDecoder)

public:
    struct Result {
        /// Interleaved, -1.0 to 1.0 for ordinary files.
        QList<float> samples;
        /// Hz.
        int sampleRate = 0;
        int channels = 0;
        /// At least one frame was read.
        bool ok = false;
        /// What went wrong when `ok` is false.
        QString error;
    };

    /// Samples that a file may hold, all channels together: over an hour and a half of mono, and
    /// 1 GiB of memory. A longer file is refused.
    static constexpr qint64 kMaxSamples = qint64(1) << 28;

    /// Reads a whole file of any format that libsndfile knows.
    static Result decode(const QString& path);

    /// Takes a stretch of a file, interleaved, with its rate in Hz and its number of channels.
    /// False ends the reading.
    using BlockVisitor =
        std::function<bool(std::span<const float> block, int sampleRate, int channels)>;

    /// Hands over the whole file of any format that libsndfile knows, a stretch at a time; nothing
    /// of one that cannot be read.
    static void visit(const QString& path, const BlockVisitor& visit);

    /// The mean of the channels, frame by frame; a mono result is shared without a copy.
    static QList<float> toMono(const Result& result);

    /// Writes interleaved samples as a 16-bit PCM WAV; what lies beyond -1.0 to 1.0 is held there.
    /// False if the file cannot be made or does not take all frames.
    static bool writeWav(const QString& path, const QList<float>& samples, int sampleRate,
                         int channels);

    /// The same, put in the place of the file with this path once it is whole. What was there stays
    /// as it was otherwise.
    static bool replaceWav(const QString& path, const QList<float>& samples, int sampleRate,
                           int channels);

    /// The same into a device that is open for writing and can be sought in.
    static bool writeWav(QIODevice& device, const QList<float>& samples, int sampleRate,
                         int channels);
};
