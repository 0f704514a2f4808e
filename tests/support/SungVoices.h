#pragma once

#include "support/Tones.h"

#include <QList>

#include <array>
#include <cmath>
#include <numbers>
#include <random>

/// Sixty-five synthetic singers, out of tune as pupils are: five vowels on thirteen pitches from A2
/// to A5, the same on every machine.
namespace SungVoices {

/// How a note is held. All but the steady ones wander slowly.
enum class Manner { Steady, Jitter, Breath, Vibrato };

/// The three lowest resonances of a vowel, in Hz.
using Formants = std::array<double, 3>;

struct Singer {
    Formants vowel{};
    double hz = 0.0;
    unsigned seed = 0;
};

/// Means of adult speakers for "a", "e", "i", "o", "u".
inline constexpr std::array<Formants, 5> kVowels{{{730.0, 1090.0, 2440.0},
                                                  {530.0, 1840.0, 2480.0},
                                                  {270.0, 2290.0, 3010.0},
                                                  {570.0, 840.0, 2410.0},
                                                  {300.0, 870.0, 2240.0}}};

/// Evenly spread over 0.0 to 1.0.
inline double unit(std::mt19937& generator)
{
    return static_cast<double>(generator()) / 4294967295.0;
}

/// Spread as the bell curve is, with a deviation of 1, by the sum of twelve even numbers.
inline double bell(std::mt19937& generator)
{
    double sum = -6.0;
    for (int i = 0; i < 12; ++i)
        sum += unit(generator);
    return sum;
}

/// Minor thirds upward from A2, every singer up to 45 cents off in a way of their own.
inline QList<Singer> all()
{
    QList<Singer> singers;
    for (const Formants& vowel : kVowels) {
        for (int third = 0; third <= 12; ++third) {
            const auto seed = static_cast<unsigned>(singers.size() + 1);
            std::mt19937 generator(seed);
            const double cents = 90.0 * (unit(generator) - 0.5);
            singers.append({vowel, 110.0 * std::exp2(third / 4.0 + cents / 1200.0), seed});
        }
    }
    return singers;
}

/// One period of the voice, so that a sample costs one reading. Harmonics fall by 12 dB an octave
/// but for the resonances, 80 Hz wide, and end below 8 kHz.
inline QList<double> period(const Singer& singer)
{
    constexpr int kSize = 4096;
    QList<double> wave(kSize + 1, 0.0);
    for (int k = 1; k * singer.hz < 8000.0; ++k) {
        double gain = 0.02;
        for (const double formant : singer.vowel) {
            const double distance = (k * singer.hz - formant) / 80.0;
            gain += 1.0 / (1.0 + distance * distance);
        }
        for (int i = 0; i <= kSize; ++i)
            wave[i] += gain / k * std::sin(2.0 * std::numbers::pi * k * i / kSize);
    }
    const double peak = std::abs(*std::ranges::max_element(
        wave, [](double a, double b) { return std::abs(a) < std::abs(b); }));
    for (double& value : wave)
        value *= 0.5 / peak;
    return wave;
}

/// A held note.
inline QList<float> samples(const Singer& singer, Manner manner, int sampleRate, qsizetype count)
{
    const QList<double> wave = period(singer);
    const auto size = static_cast<double>(wave.size() - 1);
    std::mt19937 generator(singer.seed + 1000);
    const double wanderPhase = 2.0 * std::numbers::pi * unit(generator);
    const bool steady = manner == Manner::Steady;
    const double vibratoCents = manner == Manner::Vibrato ? 25.0 : 0.0;
    QList<float> sung(count);
    double phase = 0.0;
    // Of the period that sounds: no two are equally long, by 0.3 %.
    double jitter = 1.0;
    for (qsizetype i = 0; i < count; ++i) {
        const double at = phase * size;
        const auto k = static_cast<qsizetype>(at);
        const double part = at - static_cast<double>(k);
        sung[i] = static_cast<float>((1.0 - part) * wave.at(k) + part * wave.at(k + 1));
        const double turns = 2.0 * std::numbers::pi * static_cast<double>(i) / sampleRate;
        const double wander = steady ? 0.0 : 8.0 * std::sin(0.7 * turns + wanderPhase);
        const double cents = wander + vibratoCents * std::sin(5.5 * turns);
        phase += singer.hz * jitter * std::exp2(cents / 1200.0) / sampleRate;
        if (phase >= 1.0) {
            phase -= 1.0;
            jitter = steady ? 1.0 : 1.0 + 0.003 * bell(generator);
        }
    }
    if (manner != Manner::Breath)
        return sung;
    // White noise is flat: its root mean square is its reach over the root of three.
    const double breath = Tones::rms(sung) * std::exp2(-2.0) * std::sqrt(3.0);
    return Tones::sum(sung, Tones::noise(count, singer.seed, breath));
}

} // namespace SungVoices
