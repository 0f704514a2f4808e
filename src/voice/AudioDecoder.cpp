#include "voice/AudioDecoder.h"

#include <QDir>
#include <QFileInfo>
#include <QIODevice>
#include <QSaveFile>

#include <sndfile.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <memory>
#include <mutex>

namespace {

struct SndFileCloser {
    void operator()(SNDFILE* file) const { sf_close(file); }
};

using SndFile = std::unique_ptr<SNDFILE, SndFileCloser>;

/// libsndfile tells why an opening failed in a variable of the whole process: held while a file is
/// opened and the reason read.
std::mutex openingMutex;

/// Null without an error of libsndfile for a path that C would cut at a null character.
SndFile openFile(const QString& path, int mode, SF_INFO* info)
{
    if (path.contains(QChar::Null))
        return nullptr;
    // A bare "-" would stand for the standard streams.
    return SndFile(sf_open(QDir().absoluteFilePath(path).toUtf8().constData(), mode, info));
}

/// False for what may block or never end, as pipes and devices do.
bool mayBeRead(const QString& path)
{
    if (path.contains(QChar::Null))
        return false;
    const QFileInfo entry(path);
    return !entry.exists() || entry.isFile() || entry.isDir();
}

/// Frames asked of libsndfile at once: what a header claims is not trusted with memory.
constexpr sf_count_t kReadFrames = 65536;

/// Frames clamped and handed to libsndfile at once.
constexpr sf_count_t kWriteFrames = 65536;

/// Hands an open file over block by block, until it ends or nobody wants more of it.
void visitBlocks(SNDFILE* file, const SF_INFO& info, const AudioDecoder::BlockVisitor& visit)
{
    QList<float> block(kReadFrames * info.channels);
    sf_count_t read = kReadFrames;
    while (read == kReadFrames) {
        read = sf_readf_float(file, block.data(), kReadFrames);
        if (read <= 0)
            return;
        const auto samples = static_cast<std::size_t>(read * info.channels);
        if (!visit({block.constData(), samples}, info.samplerate, info.channels))
            return;
    }
}

/// All samples of an open file, or none when they are more than AudioDecoder::kMaxSamples.
QList<float> readSamples(SNDFILE* file, const SF_INFO& info)
{
    QList<float> samples;
    visitBlocks(file, info, [&samples](std::span<const float> block, int, int) {
        const qsizetype filled = samples.size();
        if (filled + std::ssize(block) > AudioDecoder::kMaxSamples) {
            samples.clear();
            return false;
        }
        samples.resize(filled + std::ssize(block));
        std::ranges::copy(block, samples.data() + filled);
        return true;
    });
    return samples;
}

/// A file that may be read and is open, or null with the reason.
SndFile openToRead(const QString& path, SF_INFO* info, QString* error)
{
    if (!mayBeRead(path))
        return nullptr;
    const std::scoped_lock opening(openingMutex);
    SndFile file = openFile(path, SFM_READ, info);
    if (!file && error)
        *error = QString::fromUtf8(sf_strerror(nullptr));
    return file;
}

/// False if the file does not take all frames. libsndfile folds what lies beyond full scale over
/// to the other side, and its own clipping rounds ordinary samples otherwise.
bool writeClamped(SNDFILE* file, const QList<float>& samples, int channels)
{
    const sf_count_t frames = samples.size() / channels;
    QList<float> block;
    for (sf_count_t done = 0; done < frames; done += kWriteFrames) {
        const sf_count_t count = std::min(frames - done, kWriteFrames);
        block = samples.mid(done * channels, count * channels);
        for (float& sample : block)
            sample = std::clamp(sample, -1.0F, 1.0F);
        if (sf_writef_float(file, block.constData(), count) != count)
            return false;
    }
    return true;
}

SF_INFO wavInfo(int sampleRate, int channels)
{
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    return info;
}

/// What libsndfile writes to in place of a file. It does not look whether a header that it goes
/// back for reaches the device.
struct Target {
    QIODevice& device;
    bool failed = false;
};

Target& targetOf(void* user)
{
    return *static_cast<Target*>(user);
}

sf_count_t seekIn(sf_count_t offset, int whence, void* user)
{
    auto& [device, failed] = targetOf(user);
    const qint64 from = whence == SEEK_CUR ? device.pos() : whence == SEEK_END ? device.size() : 0;
    failed = !device.seek(from + offset) || failed;
    return device.pos();
}

sf_count_t writeTo(const void* bytes, sf_count_t count, void* user)
{
    auto& [device, failed] = targetOf(user);
    const sf_count_t written = device.write(static_cast<const char*>(bytes), count);
    failed = written != count || failed;
    return written;
}

SF_VIRTUAL_IO writingToTarget()
{
    return {.get_filelen = [](void* user) -> sf_count_t { return targetOf(user).device.size(); },
            .seek = seekIn,
            .read = [](void*, sf_count_t, void*) -> sf_count_t { return 0; },
            .write = writeTo,
            .tell = [](void* user) -> sf_count_t { return targetOf(user).device.pos(); }};
}

} // namespace

AudioDecoder::Result AudioDecoder::decode(const QString& path)
{
    Result result;
    result.error = tr("archivo vacío o ilegible");
    SF_INFO info{};
    const SndFile file = openToRead(path, &info, &result.error);
    if (!file)
        return result;
    result.sampleRate = info.samplerate;
    result.channels = info.channels;
    result.samples = readSamples(file.get(), info);
    result.ok = !result.samples.isEmpty();
    if (result.ok)
        result.error.clear();
    return result;
}

void AudioDecoder::visit(const QString& path, const BlockVisitor& visit)
{
    SF_INFO info{};
    if (const SndFile file = openToRead(path, &info, nullptr))
        visitBlocks(file.get(), info, visit);
}

QList<float> AudioDecoder::toMono(const Result& result)
{
    if (result.channels < 2)
        return result.samples;
    const qsizetype frames = result.samples.size() / result.channels;
    QList<float> mono(frames);
    const float* sample = result.samples.constData();
    for (float& out : mono) {
        float sum = 0.0F;
        for (int channel = 0; channel < result.channels; ++channel)
            sum += *sample++;
        out = sum / static_cast<float>(result.channels);
    }
    return mono;
}

bool AudioDecoder::writeWav(const QString& path, const QList<float>& samples, int sampleRate,
                            int channels)
{
    SF_INFO info = wavInfo(sampleRate, channels);
    std::unique_lock opening(openingMutex);
    const SndFile file = openFile(path, SFM_WRITE, &info);
    opening.unlock();
    return file && writeClamped(file.get(), samples, channels);
}

bool AudioDecoder::replaceWav(const QString& path, const QList<float>& samples, int sampleRate,
                              int channels)
{
    QSaveFile file(path);
    // Bytes for which there is no room are no error to commit().
    return file.open(QIODevice::WriteOnly) && writeWav(file, samples, sampleRate, channels) &&
           file.flush() && file.commit();
}

bool AudioDecoder::writeWav(QIODevice& device, const QList<float>& samples, int sampleRate,
                            int channels)
{
    SF_INFO info = wavInfo(sampleRate, channels);
    SF_VIRTUAL_IO io = writingToTarget();
    Target target{device};
    std::unique_lock opening(openingMutex);
    SndFile file(sf_open_virtual(&io, SFM_WRITE, &info, &target));
    opening.unlock();
    const bool written = file && writeClamped(file.get(), samples, channels);
    file.reset();
    return written && !target.failed;
}
