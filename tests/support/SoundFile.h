#pragma once

#include <QList>
#include <QString>

#include <sndfile.h>

/// Sound files made straight with libsndfile, for tests of what reads them.
namespace SoundFile {

/// Whether this build of libsndfile can write a format (major | subtype).
inline bool canWrite(int format)
{
    SF_INFO info{};
    info.samplerate = 44100;
    info.channels = 1;
    info.format = format;
    return sf_format_check(&info) != 0;
}

/// Writes interleaved samples; false unless all frames were written.
inline bool write(const QString& path, int format, int sampleRate, int channels,
                  const QList<float>& samples)
{
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = channels;
    info.format = format;
    SNDFILE* file = sf_open(path.toUtf8().constData(), SFM_WRITE, &info);
    if (!file)
        return false;
    const sf_count_t frames = samples.size() / channels;
    const bool all = sf_writef_float(file, samples.constData(), frames) == frames;
    return sf_close(file) == 0 && all;
}

/// A mono file that keeps every bit of its samples.
inline bool writeExact(const QString& path, const QList<float>& samples, int sampleRate = 44100)
{
    return write(path, SF_FORMAT_WAV | SF_FORMAT_FLOAT, sampleRate, 1, samples);
}

} // namespace SoundFile
