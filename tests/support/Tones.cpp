#include "support/Tones.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

QList<float> Tones::silence(qsizetype count)
{
    return QList<float>(count, 0.0F);
}

QList<float> Tones::sine(double hz, int sampleRate, qsizetype count, double amplitude)
{
    QList<float> samples(count);
    const double step = 2.0 * std::numbers::pi * hz / sampleRate;
    for (qsizetype i = 0; i < count; ++i)
        samples[i] = static_cast<float>(amplitude * std::sin(step * static_cast<double>(i)));
    return samples;
}

QList<float> Tones::chirp(double fromHz, double toHz, int sampleRate, qsizetype count,
                          double amplitude)
{
    QList<float> samples(count);
    double phase = 0.0;
    for (qsizetype i = 0; i < count; ++i) {
        const double share = static_cast<double>(i) / static_cast<double>(count);
        samples[i] = static_cast<float>(amplitude * std::sin(phase));
        phase += 2.0 * std::numbers::pi * (fromHz + (toHz - fromHz) * share) / sampleRate;
    }
    return samples;
}

QList<float> Tones::square(int period, qsizetype count, float amplitude)
{
    QList<float> samples(count);
    for (qsizetype i = 0; i < count; ++i)
        samples[i] = i % period < period / 2 ? amplitude : -amplitude;
    return samples;
}

QList<float> Tones::noise(qsizetype count, unsigned seed, double amplitude)
{
    std::mt19937 generator(seed);
    QList<float> samples(count);
    for (float& sample : samples) {
        const double unit = static_cast<double>(generator()) / 4294967295.0;
        sample = static_cast<float>(amplitude * (2.0 * unit - 1.0));
    }
    return samples;
}

double Tones::vowelGain(double hz)
{
    double gain = 0.05;
    for (const double formant : {700.0, 1220.0, 2600.0}) {
        const double distance = (hz - formant) / 130.0;
        gain += 1.0 / (1.0 + distance * distance);
    }
    return gain;
}

QList<float> Tones::voice(const Voice& sung, int sampleRate, qsizetype count)
{
    const int harmonics = std::clamp(static_cast<int>(0.45 * sampleRate / sung.hz), 1, 24);
    QList<double> gains;
    double sum = 0.0;
    for (int k = 1; k <= harmonics; ++k) {
        gains.append(vowelGain(k * sung.hz) / k);
        sum += gains.last();
    }
    QList<float> samples(count);
    double phase = 0.0;
    for (qsizetype i = 0; i < count; ++i) {
        double value = 0.0;
        for (int k = 1; k <= harmonics; ++k)
            value += gains.at(k - 1) * std::sin(k * phase);
        samples[i] = static_cast<float>(sung.amplitude / sum * value);
        const double seconds = static_cast<double>(i) / sampleRate;
        const double bend = std::sin(2.0 * std::numbers::pi * sung.vibratoHz * seconds);
        const double hz = sung.hz * std::exp2(sung.vibratoCents * bend / 1200.0);
        phase = std::fmod(phase + 2.0 * std::numbers::pi * hz / sampleRate, 2.0 * std::numbers::pi);
    }
    return samples;
}

QList<float> Tones::sum(const QList<float>& a, const QList<float>& b)
{
    QList<float> samples(std::min(a.size(), b.size()));
    for (qsizetype i = 0; i < samples.size(); ++i)
        samples[i] = a[i] + b[i];
    return samples;
}

QList<float> Tones::scaled(QList<float> samples, float factor)
{
    for (float& sample : samples)
        sample *= factor;
    return samples;
}

double Tones::largestDifference(const QList<float>& a, const QList<float>& b)
{
    double largest = a.size() == b.size() ? 0.0 : 1e9;
    for (qsizetype i = 0; i < std::min(a.size(), b.size()); ++i)
        largest =
            std::max(largest, std::abs(static_cast<double>(a[i]) - static_cast<double>(b[i])));
    return largest;
}

double Tones::energy(const QList<float>& samples)
{
    double sum = 0.0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum;
}

double Tones::rms(const QList<float>& samples)
{
    return samples.isEmpty() ? 0.0
                             : std::sqrt(energy(samples) / static_cast<double>(samples.size()));
}

double Tones::cents(double hz, double referenceHz)
{
    return 1200.0 * std::log2(hz / referenceHz);
}

double Tones::powerAt(const QList<double>& samples, int sampleRate, double hz)
{
    const double twice = 2.0 * std::cos(2.0 * std::numbers::pi * hz / sampleRate);
    double last = 0.0;
    double beforeLast = 0.0;
    for (const double sample : samples) {
        const double next = sample + twice * last - beforeLast;
        beforeLast = last;
        last = next;
    }
    return last * last + beforeLast * beforeLast - twice * last * beforeLast;
}

double Tones::strengthAt(const QList<float>& samples, int sampleRate, double hz)
{
    const auto count = static_cast<double>(samples.size());
    const double step = 2.0 * std::numbers::pi * hz / sampleRate;
    const double hann = 2.0 * std::numbers::pi / count;
    double real = 0.0;
    double imaginary = 0.0;
    for (qsizetype i = 0; i < samples.size(); ++i) {
        const auto at = static_cast<double>(i);
        const double value = static_cast<double>(samples[i]) * (0.5 - 0.5 * std::cos(hann * at));
        real += value * std::cos(step * at);
        imaginary += value * std::sin(step * at);
    }
    return std::hypot(real, imaginary) * 4.0 / count;
}

double Tones::strongestHz(const QList<float>& samples, int sampleRate, double lowHz, double highHz)
{
    const double step = 0.5 * sampleRate / static_cast<double>(samples.size());
    double bestHz = lowHz;
    double best = -1.0;
    for (double hz = lowHz; hz <= highHz; hz += step) {
        const double strength = strengthAt(samples, sampleRate, hz);
        if (strength > best) {
            best = strength;
            bestHz = hz;
        }
    }
    double low = bestHz - step;
    double high = bestHz + step;
    while (high - low > 1e-4) {
        const double third = (high - low) / 3.0;
        if (strengthAt(samples, sampleRate, low + third) <
            strengthAt(samples, sampleRate, high - third))
            low += third;
        else
            high -= third;
    }
    return (low + high) / 2.0;
}

double Tones::hzByZeroCrossings(const QList<float>& samples, int sampleRate)
{
    double first = 0.0;
    double last = 0.0;
    int crossings = 0;
    for (qsizetype i = 1; i < samples.size(); ++i) {
        const auto before = static_cast<double>(samples[i - 1]);
        const auto after = static_cast<double>(samples[i]);
        if (!(before < 0.0 && after >= 0.0))
            continue;
        last = static_cast<double>(i - 1) + before / (before - after);
        if (crossings++ == 0)
            first = last;
    }
    return crossings < 2 ? 0.0 : (crossings - 1) * sampleRate / (last - first);
}
