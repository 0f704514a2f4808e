#pragma once

#include "music/GrooveTemplate.h"
#include "music/HumanizeSettings.h"
#include "music/NoteEvent.h"

#include <QList>
#include <QRandomGenerator>

/// Loosens notes in time and loudness as a player would: a seeded jitter, and the groove of the
/// rhythm where one is given. Equal input gives equal output, bit for bit.
namespace Humanizer {

/// A copy of the notes in the same order, moved in time and loudness. Starts are in beats and
/// stay at or above 0, velocities in 1..127; pitches and durations do not change. The groove may
/// be null; `beatsPerBar` places the notes in its bar, and one that is not positive leaves the
/// groove out. Settings that are off, or of no intensity, give the notes back untouched.
QList<NoteEvent> apply(const QList<NoteEvent>& notes, const HumanizeSettings& settings,
                       const GrooveTemplate* groove, double beatsPerBar);

/// The generator that apply() starts from for a seed. Seeding costs far more than copying, so
/// whoever humanizes many lists with one seed makes it once and passes it to the other apply().
QRandomGenerator generatorFor(quint32 seed);

/// As apply(), drawing from a copy of `start`, which is generatorFor(settings.seed).
QList<NoteEvent> apply(const QList<NoteEvent>& notes, const HumanizeSettings& settings,
                       const GrooveTemplate* groove, double beatsPerBar,
                       const QRandomGenerator& start);

} // namespace Humanizer
