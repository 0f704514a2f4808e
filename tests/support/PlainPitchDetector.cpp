#include "support/PlainPitchDetector.h"

#include <algorithm>
#include <cmath>

double PlainPitchDetector::correlation(const float* frame, int lag)
{
    double products = 0.0;
    double energy = 0.0;
    double laterEnergy = 0.0;
    for (int i = 0; i < 2048 - lag; ++i) {
        const float a = frame[i];
        const float b = frame[i + lag];
        const float product = a * b;
        const float square = a * a;
        const float laterSquare = b * b;
        products += static_cast<double>(product);
        energy += static_cast<double>(square);
        laterEnergy += static_cast<double>(laterSquare);
    }
    const double norm = std::sqrt(energy * laterEnergy);
    return norm > 0.0 ? products / norm : 0.0;
}

double PlainPitchDetector::frameEnergy(const float* frame)
{
    double energy = 0.0;
    for (int i = 0; i < 2048; ++i) {
        const float square = frame[i] * frame[i];
        energy += static_cast<double>(square);
    }
    return energy;
}

float PlainPitchDetector::framePitch(const float* frame, int sampleRate)
{
    const int lagMin = static_cast<int>(sampleRate / 1000.0);
    const int lagMax = std::min(static_cast<int>(sampleRate / 70.0), 1024);
    if (frameEnergy(frame) / 2048.0 < 1e-6 || lagMax < lagMin)
        return 0.0F;

    double best = 0.0;
    int bestLag = -1;
    for (int lag = lagMin; lag <= lagMax; ++lag) {
        const double r = correlation(frame, lag);
        if (r > best) {
            best = r;
            bestLag = lag;
        }
    }
    if (bestLag < 0 || best < 0.5)
        return 0.0F;

    double lag = bestLag;
    if (lagMin < bestLag && bestLag < lagMax) {
        const double r1 = correlation(frame, bestLag - 1);
        const double r2 = correlation(frame, bestLag);
        const double r3 = correlation(frame, bestLag + 1);
        const double d = r1 - 2.0 * r2 + r3;
        if (std::abs(d) > 1e-12)
            lag = bestLag + 0.5 * (r1 - r3) / d;
    }
    return static_cast<float>(sampleRate / lag);
}

QList<float> PlainPitchDetector::detectTrack(const QList<float>& samples, int sampleRate)
{
    QList<float> pitches;
    if (sampleRate < 1)
        return pitches;
    for (qsizetype start = 0; start + 2048 <= samples.size(); start += 512)
        pitches.append(framePitch(samples.constData() + start, sampleRate));
    return pitches;
}

double PlainPitchDetector::peakHeight(const float* frame, double lag, double reach)
{
    double highest = 0.0;
    for (int at = 1; at <= lag + reach; ++at) {
        if (at < lag - reach)
            continue;
        const double r1 = correlation(frame, at - 1);
        const double r2 = correlation(frame, at);
        const double r3 = correlation(frame, at + 1);
        const double d = r1 - 2.0 * r2 + r3;
        if (r2 >= r1 && r2 >= r3 && d < 0.0)
            highest = std::max(highest, r2 - (r1 - r3) * (r1 - r3) / (8.0 * d));
    }
    return highest;
}

double PlainPitchDetector::undoneFraction(const float* frame, double hz, int sampleRate)
{
    const int lagMin = static_cast<int>(sampleRate / 1000.0);
    const double lag = sampleRate / hz;
    const double height = peakHeight(frame, lag, 1.0);
    for (int m = 1023; m >= 3 && height > 0.0; m -= 2) {
        if (lag / m < lagMin || lag / m < 1.0)
            continue;
        if (peakHeight(frame, lag / m, std::max(1.0, 0.02 * lag / m)) >= 0.97 * height)
            return m * hz;
    }
    return hz;
}
