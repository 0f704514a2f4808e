#pragma once

#include <QList>

/// Generated sound and measurements on it, mono, that share no code with what they test.
namespace Tones {

/// A sung vowel: harmonics under three resonances, with vibrato.
struct Voice {
    double hz = 220.0;
    double amplitude = 0.5;
    double vibratoHz = 5.5;
    /// Deviation to either side.
    double vibratoCents = 30.0;
};

QList<float> silence(qsizetype count);

QList<float> sine(double hz, int sampleRate, qsizetype count, double amplitude = 0.5);

/// A sine whose frequency moves evenly from `fromHz` to `toHz`.
QList<float> chirp(double fromHz, double toHz, int sampleRate, qsizetype count,
                   double amplitude = 0.5);

/// `amplitude` for the first half of every period of whole samples, its negative for the rest.
QList<float> square(int period, qsizetype count, float amplitude = 0.5F);

/// White noise, the same for the same seed on every platform.
QList<float> noise(qsizetype count, unsigned seed, double amplitude = 0.5);

/// Loudness of a vowel's spectrum at a frequency, by the resonances of an "a".
double vowelGain(double hz);

QList<float> voice(const Voice& sung, int sampleRate, qsizetype count);

/// Sample by sample; as long as the shorter one.
QList<float> sum(const QList<float>& a, const QList<float>& b);

QList<float> scaled(QList<float> samples, float factor);

/// Of any two samples at one place; beyond all samples for lists of two lengths.
double largestDifference(const QList<float>& a, const QList<float>& b);

double energy(const QList<float>& samples);

double rms(const QList<float>& samples);

double cents(double hz, double referenceHz);

/// Power of one frequency in the samples, by Goertzel's recursion.
double powerAt(const QList<double>& samples, int sampleRate, double hz);

/// Strength of one frequency in the samples, seen through a Hann window.
double strengthAt(const QList<float>& samples, int sampleRate, double hz);

/// The strongest frequency between two bounds: a scan in steps finer than the spectrum's
/// resolution, then a ternary search around the best step.
double strongestHz(const QList<float>& samples, int sampleRate, double lowHz, double highHz);

/// Frequency of a tone that crosses zero upward once a period, from its first crossing to its
/// last, each placed between samples by a line. 0.0 with fewer than two crossings.
double hzByZeroCrossings(const QList<float>& samples, int sampleRate);

} // namespace Tones
