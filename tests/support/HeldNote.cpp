#include "support/HeldNote.h"

#include <algorithm>
#include <cmath>
#include <numbers>

const QList<double>& HeldNote::hann()
{
    static const QList<double> weights = [] {
        QList<double> values;
        for (int i = 0; i < kWindow; ++i)
            values.append(0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * i / kWindow));
        return values;
    }();
    return weights;
}

double HeldNote::phaseAt(const QList<float>& samples, qsizetype start, double hz, int sampleRate)
{
    const double step = 2.0 * std::numbers::pi * hz / sampleRate;
    const double turnReal = std::cos(step);
    const double turnImaginary = -std::sin(step);
    double wheelReal = 1.0;
    double wheelImaginary = 0.0;
    double real = 0.0;
    double imaginary = 0.0;
    for (int i = 0; i < kWindow; ++i) {
        const double value = hann().at(i) * static_cast<double>(samples.at(start + i));
        real += value * wheelReal;
        imaginary += value * wheelImaginary;
        const double turned = wheelReal * turnReal - wheelImaginary * turnImaginary;
        wheelImaginary = wheelReal * turnImaginary + wheelImaginary * turnReal;
        wheelReal = turned;
    }
    return std::atan2(imaginary, real);
}

QList<double> HeldNote::centsOff(const QList<float>& samples, double hz, int sampleRate)
{
    constexpr int kApart = 256;
    QList<double> cents;
    for (qsizetype start = 0; start + kWindow + kApart <= samples.size(); start += kStep) {
        const double before = phaseAt(samples, start, hz, sampleRate);
        const double after = phaseAt(samples, start + kApart, hz, sampleRate);
        const double expected = 2.0 * std::numbers::pi * hz * kApart / sampleRate;
        const double ahead = std::remainder(after - before - expected, 2.0 * std::numbers::pi);
        cents.append(1200.0 * std::log2(1.0 + ahead / expected));
    }
    return cents;
}

double HeldNote::median(QList<double> values)
{
    std::ranges::sort(values);
    return values.isEmpty() ? 0.0 : values.at(values.size() / 2);
}

double HeldNote::amplitudeModulation(const QList<float>& samples)
{
    QList<double> levels;
    double mean = 0.0;
    for (qsizetype start = 0; start + kWindow <= samples.size(); start += kStep) {
        double sum = 0.0;
        for (int i = 0; i < kWindow; ++i) {
            const auto sample = static_cast<double>(samples.at(start + i));
            sum += hann().at(i) * sample * sample;
        }
        levels.append(std::sqrt(sum));
        mean += levels.last();
    }
    mean /= static_cast<double>(levels.size());
    double squares = 0.0;
    for (const double level : levels)
        squares += (level - mean) * (level - mean);
    return std::sqrt(squares / static_cast<double>(levels.size())) / mean;
}
