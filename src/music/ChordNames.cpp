#include "music/ChordNames.h"

namespace {

/// What follows the root of a chord whose tones lie so many semitones above it.
QString qualityOfPitches(const QList<int>& pitches)
{
    // Where the root is held in range by whole octaves, a tone may lie below it, by less than one.
    const auto above = [&](qsizetype tone) { return (pitches[tone] - pitches[0] + 12) % 12; };
    const bool minor = above(1) == 3;
    const bool diminished = above(2) == 6;
    if (pitches.size() == 3)
        return diminished ? QStringLiteral("°") : minor ? QStringLiteral("m") : QString();
    const bool ninth = pitches.size() > 4;
    const bool flatNinth = ninth && above(4) == 1;
    return (minor ? QStringLiteral("m") : QString()) +
           (above(3) == 11 ? QStringLiteral("maj") : QString()) +
           (ninth && !flatNinth ? QStringLiteral("9") : QStringLiteral("7")) +
           (diminished ? QStringLiteral("♭5") : QString()) +
           (flatNinth ? QStringLiteral("♭9") : QString());
}

} // namespace

QString ChordNames::nameOf(const KeySignature& key, int degree, ChordExtension extension)
{
    const QList<int> pitches = ChordVoicer::chordPitches(key, degree, extension);
    if (pitches.isEmpty())
        return {};
    return KeySignature::solfegeName(pitches.first()) + qualityOfPitches(pitches);
}

QString ChordNames::qualityOf(const KeySignature& key, int degree, ChordExtension extension)
{
    const QList<int> pitches = ChordVoicer::chordPitches(key, degree, extension);
    return pitches.isEmpty() ? QString() : qualityOfPitches(pitches);
}

QString ChordNames::labelOf(const KeySignature& key, int degree, ChordExtension extension)
{
    const QString name = nameOf(key, degree, extension);
    if (name.isEmpty())
        return {};
    return ChordVoicer::degreeLabel(key, degree, extension) + QStringLiteral(" · ") + name;
}
