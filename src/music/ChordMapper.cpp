#include "music/ChordMapper.h"

#include "music/PitchRange.h"

namespace {

constexpr int kMiddleC = 60;
constexpr int kTritone = 6;
constexpr int kChromatic = -1;

/// Steps of the C Major scale by semitones above C.
constexpr std::array<int, 12> kDiatonicIndex{0, kChromatic, 1, kChromatic, 2, 3, kChromatic,
                                             4, kChromatic, 5, kChromatic, 6};

constexpr qint64 floorDiv12(qint64 value)
{
    return value >= 0 ? value / 12 : -((-value + 11) / 12);
}

/// Semitones above the key's tonic of a note that lies `within` semitones above C.
int distanceAboveTonic(int within, const ScaleRow& row, int degree)
{
    const int index = kDiatonicIndex[static_cast<std::size_t>(within)];
    if (index == kChromatic)
        return row[static_cast<std::size_t>(degree - 1)] + within;
    const int step = index + degree - 1;
    return row[static_cast<std::size_t>(step % 7)] + (step >= 7 ? 12 : 0);
}

/// The octave of `pitch` within a tritone of the anchor, of which it lies a semitone below or
/// less than an octave above; an exact tritone stays where it is.
qint64 anchorRegister(qint64 pitch, qint64 anchor)
{
    return pitch - anchor > kTritone ? pitch - 12 : pitch;
}

} // namespace

int ChordMapper::transposeToKey(int pitch, const KeySignature& key)
{
    return foldIntoMidiRange(qint64(pitch) + key.rootPitchClass);
}

int ChordMapper::mapPitch(int pitch, const KeySignature& key, int degree)
{
    if (degree < 1 || degree > 7)
        return transposeToKey(pitch, key);
    const qint64 aboveMiddleC = qint64(pitch) - kMiddleC;
    const qint64 octave = floorDiv12(aboveMiddleC);
    const int within = static_cast<int>(aboveMiddleC - 12 * octave);
    const qint64 root = key.rootPitchClass;
    const qint64 mapped =
        root + distanceAboveTonic(within, scaleRow(key.mode), degree) + kMiddleC + 12 * octave;
    return foldIntoMidiRange(anchorRegister(mapped, root + pitch));
}
