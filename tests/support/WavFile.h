#pragma once

#include <QByteArray>
#include <QList>

#include <cmath>

/// 16-bit PCM WAV files, written and read byte by byte.
namespace WavFile {

struct Content {
    int sampleRate = 0;
    int channels = 0;
    /// Interleaved.
    QList<int> samples;
    /// The header is of plain 16-bit PCM and tells the true sizes.
    bool ok = false;
};

inline QByteArray littleEndian(qint64 value, int bytes)
{
    QByteArray result;
    for (int i = 0; i < bytes; ++i)
        result.append(static_cast<char>((value >> (8 * i)) & 0xFF));
    return result;
}

inline qint64 number(const QByteArray& bytes, qsizetype at, int size)
{
    qint64 value = 0;
    for (int i = size - 1; i >= 0; --i)
        value = value * 256 + static_cast<unsigned char>(bytes.at(at + i));
    return value;
}

/// Interleaved samples in -1.0 to 1.0.
inline QByteArray bytes(const QList<float>& samples, int sampleRate = 44100, int channels = 1)
{
    QByteArray data;
    for (const float sample : samples)
        data += littleEndian(std::lround(sample * 32767.0F), 2);
    return "RIFF" + littleEndian(36 + data.size(), 4) + "WAVEfmt " + littleEndian(16, 4) +
           littleEndian(1, 2) + littleEndian(channels, 2) + littleEndian(sampleRate, 4) +
           littleEndian(2 * channels * sampleRate, 4) + littleEndian(2 * channels, 2) +
           littleEndian(16, 2) + "data" + littleEndian(data.size(), 4) + data;
}

inline Content read(const QByteArray& file)
{
    Content content;
    constexpr qsizetype kHeader = 44;
    if (file.size() < kHeader || file.mid(0, 4) != "RIFF" || file.mid(8, 8) != "WAVEfmt " ||
        file.mid(36, 4) != "data")
        return content;
    content.channels = static_cast<int>(number(file, 22, 2));
    content.sampleRate = static_cast<int>(number(file, 24, 4));
    for (qsizetype at = kHeader; at + 1 < file.size(); at += 2)
        content.samples.append(static_cast<qint16>(number(file, at, 2)));
    const bool sizes =
        number(file, 4, 4) == file.size() - 8 && number(file, 40, 4) == file.size() - kHeader;
    const bool plain = number(file, 16, 4) == 16 && number(file, 20, 2) == 1 &&
                       number(file, 32, 2) == 2 * content.channels && number(file, 34, 2) == 16;
    content.ok = sizes && plain;
    return content;
}

} // namespace WavFile
