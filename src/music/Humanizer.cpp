#include "music/Humanizer.h"

#include <algorithm>
#include <cmath>

namespace {

/// Largest shifts at intensity 1.
constexpr double kTimingJitterBeats = 0.035;
constexpr double kVelocityJitter = 12.0;

double positionInBar(double beat, double beatsPerBar)
{
    const double position = std::fmod(beat, beatsPerBar);
    return position < 0.0 ? position + beatsPerBar : position;
}

bool leavesUntouched(const HumanizeSettings& settings)
{
    return !settings.enabled || !(settings.intensity > 0.0F);
}

} // namespace

QRandomGenerator Humanizer::generatorFor(quint32 seed)
{
    return QRandomGenerator(&seed, &seed + 1);
}

QList<NoteEvent> Humanizer::apply(const QList<NoteEvent>& notes, const HumanizeSettings& settings,
                                  const GrooveTemplate* groove, double beatsPerBar)
{
    if (leavesUntouched(settings))
        return notes;
    return apply(notes, settings, groove, beatsPerBar, generatorFor(settings.seed));
}

QList<NoteEvent> Humanizer::apply(const QList<NoteEvent>& notes, const HumanizeSettings& settings,
                                  const GrooveTemplate* groove, double beatsPerBar,
                                  const QRandomGenerator& start)
{
    if (leavesUntouched(settings))
        return notes;
    const double intensity = std::min(static_cast<double>(settings.intensity), 1.0);
    const bool hasGroove = groove && beatsPerBar > 0.0;

    QRandomGenerator generator = start;
    QList<NoteEvent> humanized = notes;
    for (NoteEvent& note : humanized) {
        double timing = 0.0;
        double velocity = note.velocity;
        const GrooveOffset* offset =
            hasGroove ? groove->nearest(positionInBar(note.startBeat, beatsPerBar)) : nullptr;
        if (offset) {
            timing = offset->timingOffsetBeats * intensity;
            velocity += offset->velocityOffset * intensity;
        }
        // Both numbers are drawn for every note, so that the n-th note always gets the n-th pair.
        const double r1 = generator.generateDouble();
        const double r2 = generator.generateDouble();
        const double moved =
            ((2 * r1 - 1) * kTimingJitterBeats) * intensity + timing + note.startBeat;
        note.startBeat = moved > 0.0 ? moved : 0.0;
        const auto loudness = std::llround(((2 * r2 - 1) * kVelocityJitter) * intensity + velocity);
        note.velocity = static_cast<qint32>(std::clamp(loudness, 1LL, 127LL));
    }
    return humanized;
}
