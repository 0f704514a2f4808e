#include "export/Mp3Writer.h"

#include "music/Beats.h"

#include <QIODevice>

#include <lame/lame.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>

namespace {

constexpr int kChannels = 2;
constexpr int kKilobits = 192;
constexpr int kQuality = 5;

/// Frames given to LAME at once.
constexpr qsizetype kMp3ChunkFrames = 8192;

short toPcm16(float sample)
{
    if (std::isnan(sample))
        return 0;
    if (sample > 1.0F)
        return 32767;
    return static_cast<short>(static_cast<int>(std::max(sample, -1.0F) * 32767.0F));
}

/// The output buffer that LAME's documentation asks for, over the whole song.
qsizetype bufferSize(qsizetype frames)
{
    return frames * 5 / 4 + 8224;
}

bool writeAll(QIODevice& device, const QByteArray& buffer, int size)
{
    return device.write(buffer.constData(), size) == size;
}

} // namespace

void Mp3Writer::Closer::operator()(lame_global_struct* lame) const
{
    lame_close(lame);
}

Mp3Writer::Mp3Writer() : lame_(lame_init())
{
    if (!lame_)
        return;
    lame_global_struct* lame = lame_.get();
    lame_set_errorf(lame, nullptr);
    lame_set_msgf(lame, nullptr);
    lame_set_debugf(lame, nullptr);
    lame_set_in_samplerate(lame, kSampleRate);
    lame_set_num_channels(lame, kChannels);
    lame_set_brate(lame, kKilobits);
    lame_set_quality(lame, kQuality);
    ready_ = lame_init_params(lame) >= 0;
}

bool Mp3Writer::encode(const QList<float>& samples, QIODevice& device,
                       const ExportProgress& progress)
{
    const qsizetype frames = samples.size() / kChannels;
    QByteArray buffer(bufferSize(frames), Qt::Uninitialized);
    const auto room = static_cast<int>(std::min<qsizetype>(buffer.size(), INT_MAX));
    const auto data = reinterpret_cast<unsigned char*>(buffer.data());
    std::array<short, kChannels * kMp3ChunkFrames> pcm;

    bool written = true;
    for (qsizetype done = 0; written && done < frames; done += kMp3ChunkFrames) {
        if (!goesOn(progress, static_cast<double>(done) / static_cast<double>(frames)))
            return false;
        const qsizetype chunk = std::min(frames - done, kMp3ChunkFrames);
        std::transform(samples.constBegin() + kChannels * done,
                       samples.constBegin() + kChannels * (done + chunk), pcm.begin(), toPcm16);
        const int bytes = lame_encode_buffer_interleaved(lame_.get(), pcm.data(),
                                                         static_cast<int>(chunk), data, room);
        if (bytes < 0)
            break;
        written = writeAll(device, buffer, bytes);
    }
    const int bytes = lame_encode_flush(lame_.get(), data, room);
    return written && (bytes <= 0 || writeAll(device, buffer, bytes));
}
