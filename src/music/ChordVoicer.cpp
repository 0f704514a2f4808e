#include "music/ChordVoicer.h"

#include "music/PitchRange.h"

namespace {

const std::array<QString, 7> kRoman{
    QStringLiteral("i"), QStringLiteral("ii"), QStringLiteral("iii"), QStringLiteral("iv"),
    QStringLiteral("v"), QStringLiteral("vi"), QStringLiteral("vii")};

bool isDegree(int degree)
{
    return degree >= 1 && degree <= 7;
}

int toneCount(ChordExtension extension)
{
    switch (extension) {
    case ChordExtension::Seventh:
        return 4;
    case ChordExtension::Ninth:
        return 5;
    case ChordExtension::Triad:
        break;
    }
    return 3;
}

QString extensionSuffix(ChordExtension extension)
{
    switch (extension) {
    case ChordExtension::Seventh:
        return QStringLiteral("7");
    case ChordExtension::Ninth:
        return QStringLiteral("9");
    case ChordExtension::Triad:
        break;
    }
    return {};
}

} // namespace

QList<int> ChordVoicer::chordPitches(const KeySignature& key, int degree, ChordExtension extension,
                                     int octave)
{
    if (!isDegree(degree))
        return {};
    const ScaleRow& row = scaleRow(key.mode);
    const qint64 base = 12 * qint64(octave) + key.rootPitchClass;
    QList<int> pitches;
    for (int tone = 0; tone < toneCount(extension); ++tone) {
        const int step = degree - 1 + 2 * tone;
        pitches.append(
            foldIntoMidiRange(row[static_cast<std::size_t>(step % 7)] + 12 * (step / 7) + base));
    }
    return pitches;
}

QList<int> ChordVoicer::chordPitchClasses(const KeySignature& key, int degree,
                                          ChordExtension extension)
{
    QList<int> pitchClasses;
    for (const int pitch : chordPitches(key, degree, extension))
        pitchClasses.append(pitch % 12);
    return pitchClasses;
}

QString ChordVoicer::degreeLabel(const KeySignature& key, int degree, ChordExtension extension)
{
    if (!isDegree(degree))
        return {};
    const QList<int> triad = chordPitches(key, degree, ChordExtension::Triad);
    const bool majorThird = triad[1] - triad[0] == 4;
    const bool diminishedFifth = triad[2] - triad[0] == 6;

    QString label = kRoman[static_cast<std::size_t>(degree - 1)];
    if (majorThird)
        label = label.toUpper();
    if (diminishedFifth)
        label += QChar(0x00B0);
    return label + extensionSuffix(extension);
}
