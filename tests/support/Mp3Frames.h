#pragma once

#include <QByteArray>

#include <array>

/// A walk over the frames of an MP3 file by their headers alone.
namespace Mp3Frames {

struct Walk {
    int frames = 0;
    /// Every frame is MPEG 1, Layer III, stereo, at these.
    int kilobits = 0;
    int sampleRate = 0;
    /// The file is frames from its first byte to its last, all of one kind.
    bool ok = false;
};

inline int byteAt(const QByteArray& file, qsizetype at)
{
    return static_cast<unsigned char>(file.at(at));
}

inline Walk over(const QByteArray& file)
{
    static constexpr std::array<int, 16> kKilobits{0,   32,  40,  48,  56,  64,  80,  96,
                                                   112, 128, 160, 192, 224, 256, 320, 0};
    static constexpr std::array<int, 4> kRates{44100, 48000, 32000, 0};
    constexpr int kMono = 3;
    Walk walk;
    qsizetype at = 0;
    while (at + 4 <= file.size()) {
        const bool layer3 = byteAt(file, at) == 0xFF && (byteAt(file, at + 1) & 0xFE) == 0xFA;
        const int bits = byteAt(file, at + 2);
        const int kilobits = kKilobits[static_cast<std::size_t>(bits >> 4)];
        const int rate = kRates[static_cast<std::size_t>((bits >> 2) & 3)];
        const bool stereo = byteAt(file, at + 3) >> 6 != kMono;
        if (!layer3 || !stereo || kilobits == 0 || rate == 0)
            return walk;
        if (walk.frames++ > 0 && (walk.kilobits != kilobits || walk.sampleRate != rate))
            return walk;
        walk.kilobits = kilobits;
        walk.sampleRate = rate;
        at += 144000 * kilobits / rate + ((bits >> 1) & 1);
    }
    walk.ok = at == file.size();
    return walk;
}

} // namespace Mp3Frames
