#include "voice/VoiceTuner.h"

#include "voice/PitchDetector.h"
#include "voice/PitchShifter.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kReferenceHz = 440.0;
constexpr double kReferenceNote = 69.0;
constexpr int kSearchSemitones = 6;

double noteOfHz(double hz)
{
    return 12.0 * std::log2(hz / kReferenceHz) + kReferenceNote;
}

double hzOfNote(double note)
{
    return kReferenceHz * std::pow(2.0, (note - kReferenceNote) / 12.0);
}

/// The note of the scale nearest to a fractional MIDI note, the lower of two equally near.
double nearestNote(double note, const QList<int>& scale)
{
    double target = std::round(note);
    double best = 1e9;
    const int centre = static_cast<int>(note);
    for (int n = centre - kSearchSemitones; n <= centre + kSearchSemitones; ++n) {
        const double distance = std::abs(n - note);
        if (distance < best && scale.contains(((n % 12) + 12) % 12)) {
            best = distance;
            target = n;
        }
    }
    return target;
}

/// The period at every frame in samples, 0.0 without a pitch.
QList<float> periodsOf(const QList<float>& pitches, int sampleRate)
{
    QList<float> periods(pitches.size());
    std::ranges::transform(pitches, periods.begin(), [sampleRate](float hz) {
        return hz > 0.0F ? static_cast<float>(sampleRate) / hz : 0.0F;
    });
    return periods;
}

} // namespace

QList<float> VoiceTuner::tune(const QList<float>& samples, int sampleRate, const KeySignature& key,
                              const VoiceTuneSettings& settings, const std::stop_token& stop)
{
    if (!settings.enabled || !(settings.intensity > 0.0F) || samples.isEmpty())
        return samples;
    const QList<float> pitches =
        PitchDetector::detectTrack(samples, sampleRate, PitchDetector::OddFractions::Undone, stop);
    if (pitches.isEmpty() || stop.stop_requested())
        return samples;
    return PitchShifter::process(
        samples, ratiosTowardScale(pitches, key.scalePitchClasses(), settings.intensity),
        periodsOf(pitches, sampleRate));
}

QList<float> VoiceTuner::ratiosTowardScale(const QList<float>& pitches, const QList<int>& scale,
                                           float intensity)
{
    const double amount = std::clamp(static_cast<double>(intensity), 0.0, 1.0);
    QList<float> ratios(pitches.size(), 1.0F);
    for (qsizetype i = 0; i < pitches.size(); ++i) {
        const double hz = static_cast<double>(pitches[i]);
        if (!(hz > 0.0) || !std::isfinite(hz))
            continue;
        const double targetHz = hzOfNote(nearestNote(noteOfHz(hz), scale));
        ratios[i] = static_cast<float>((targetHz / hz - 1.0) * amount + 1.0);
    }
    for (qsizetype i = 1; i < ratios.size(); ++i)
        ratios[i] = ratios[i] * kRatioKeep + ratios[i - 1] * kRatioCarry;
    return ratios;
}
