#include "voice/WavePeaks.h"

#include "voice/AudioDecoder.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

WaveSwing united(const WaveSwing& a, const WaveSwing& b)
{
    return {std::min(a.least, b.least), std::max(a.greatest, b.greatest)};
}

/// In this order of arguments, what is no number swings nothing.
WaveSwing widened(const WaveSwing& swing, float sample)
{
    return {std::min(swing.least, sample), std::max(swing.greatest, sample)};
}

QList<WaveSwing> coarser(const QList<WaveSwing>& fine)
{
    QList<WaveSwing> level;
    for (qsizetype i = 0; i < fine.size(); ++i) {
        if (i % WavePeaks::kCoarser == 0)
            level.append(WaveSwing());
        level.last() = united(level.constLast(), fine.at(i));
    }
    return level;
}

} // namespace

WavePeaks WavePeaks::read(const QString& path, const std::stop_token& stop)
{
    WavePeaks peaks;
    bool whole = true;
    AudioDecoder::visit(path, [&](std::span<const float> block, int sampleRate, int channels) {
        const qint64 frames = std::ssize(block) / channels;
        whole = (peaks.frames_ + frames) * channels <= AudioDecoder::kMaxSamples;
        if (!whole || stop.stop_requested())
            return false;
        peaks.sampleRate_ = sampleRate;
        peaks.addBlock(block.data(), frames, channels);
        return true;
    });
    if (!whole || peaks.sampleRate_ < 1)
        return {};
    peaks.addCoarserLevels();
    return peaks;
}

void WavePeaks::addBlock(const float* interleaved, qint64 frames, int channels)
{
    if (levels_.isEmpty())
        levels_.append(QList<WaveSwing>());
    QList<WaveSwing>& finest = levels_.first();
    const float* next = interleaved;
    for (qint64 i = 0; i < frames; ++i, next += channels) {
        if ((frames_ + i) % kFinestFrames == 0)
            finest.append(WaveSwing());
        const float mean = std::accumulate(next, next + channels, 0.0F) / float(channels);
        finest.last() = widened(finest.constLast(), mean);
    }
    frames_ += frames;
}

void WavePeaks::addCoarserLevels()
{
    while (levels_.constLast().size() > 1)
        levels_.append(coarser(levels_.constLast()));
}

double WavePeaks::seconds() const
{
    return sampleRate_ > 0 ? static_cast<double>(frames_) / sampleRate_ : 0.0;
}

WaveSwing WavePeaks::between(double from, double to) const
{
    const double first = std::max(from, 0.0) * sampleRate_;
    const double last = std::min(to, seconds()) * sampleRate_;
    if (!(first < last))
        return {};
    qsizetype level = 0;
    double width = kFinestFrames;
    // The last level has a single number, which stands for the whole file, if not for more.
    while (width * kCoarser * kCoarser <= last - first) {
        width *= kCoarser;
        ++level;
    }
    const QList<WaveSwing>& swings = levels_.at(level);
    const auto begin = static_cast<qsizetype>(first / width);
    const auto end = std::min(static_cast<qsizetype>(std::ceil(last / width)), swings.size());
    return std::accumulate(swings.begin() + begin, swings.begin() + end, WaveSwing(), united);
}
