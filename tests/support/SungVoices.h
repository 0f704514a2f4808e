#pragma once

#include <QList>

#include <array>
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
double unit(std::mt19937& generator);

/// Spread as the bell curve is, with a deviation of 1, by the sum of twelve even numbers.
double bell(std::mt19937& generator);

/// Minor thirds upward from A2, every singer up to 45 cents off in a way of their own.
QList<Singer> all();

/// One period of the voice, so that a sample costs one reading. Harmonics fall by 12 dB an octave
/// but for the resonances, 80 Hz wide, and end below 8 kHz.
QList<double> period(const Singer& singer);

/// A held note.
QList<float> samples(const Singer& singer, Manner manner, int sampleRate, qsizetype count);

} // namespace SungVoices
