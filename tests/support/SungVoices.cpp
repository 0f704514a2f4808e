#include "support/SungVoices.h"

#include "support/Tones.h"

#include <algorithm>
#include <cmath>
#include <numbers>

double SungVoices::unit(std::mt19937& generator)
{
    return static_cast<double>(generator()) / 4294967295.0;
}

double SungVoices::bell(std::mt19937& generator)
{
    double sum = -6.0;
    for (int i = 0; i < 12; ++i)
        sum += unit(generator);
    return sum;
}

QList<SungVoices::Singer> SungVoices::all()
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

QList<double> SungVoices::period(const Singer& singer)
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

QList<float> SungVoices::samples(const Singer& singer, Manner manner, int sampleRate,
                                 qsizetype count)
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
