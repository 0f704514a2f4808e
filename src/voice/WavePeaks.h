#pragma once

#include <QList>
#include <QString>

#include <stop_token>

/// How far samples swing, all channels together.
struct WaveSwing {
    float least = 0.0F;
    float greatest = 0.0F;

    friend bool operator==(const WaveSwing&, const WaveSwing&) = default;
};

/// The outline of an audio file: how far it swings, kept in levels of detail, so that a stretch of
/// any length is told from a handful of numbers.
class WavePeaks {
public:
    /// Frames of the file behind each number of the finest level.
    static constexpr qint64 kFinestFrames = 128;

    /// Each level stands for so many numbers of the one before it.
    static constexpr qint64 kCoarser = 4;

    /// Of no file: nothing swings.
    WavePeaks() = default;

    /// Of a whole file. As of no file where it cannot be read, or holds more than AudioDecoder
    /// reads; nothing sensible once it is asked to stop.
    static WavePeaks read(const QString& path, const std::stop_token& stop = {});

    /// Length of the file; 0 without one.
    double seconds() const;

    /// The swing of the file between two times in seconds, to within a quarter of their distance or
    /// the finest level; still where they lie outside of it.
    WaveSwing between(double from, double to) const;

private:
    void addBlock(const float* interleaved, qint64 frames, int channels);
    void addCoarserLevels();

    int sampleRate_ = 0;
    qint64 frames_ = 0;
    /// From the finest to the one that has a single number.
    QList<QList<WaveSwing>> levels_;
};
