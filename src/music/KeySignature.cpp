#include "music/KeySignature.h"

namespace {

constexpr std::array<ScaleRow, 4> kScaleRows{{
    {0, 2, 4, 5, 7, 9, 11}, // Major
    {0, 2, 3, 5, 7, 8, 10}, // Minor
    {0, 2, 3, 5, 7, 9, 10}, // Dorian
    {0, 2, 4, 6, 7, 9, 11}, // Lydian
}};

const std::array<QString, 12> kSolfegeNames{
    QStringLiteral("Do"),   QStringLiteral("Do#"), QStringLiteral("Re"),  QStringLiteral("Re#"),
    QStringLiteral("Mi"),   QStringLiteral("Fa"),  QStringLiteral("Fa#"), QStringLiteral("Sol"),
    QStringLiteral("Sol#"), QStringLiteral("La"),  QStringLiteral("La#"), QStringLiteral("Si")};

const std::array<QString, 12> kLetterNames{
    QStringLiteral("C"),  QStringLiteral("C#"), QStringLiteral("D"),  QStringLiteral("D#"),
    QStringLiteral("E"),  QStringLiteral("F"),  QStringLiteral("F#"), QStringLiteral("G"),
    QStringLiteral("G#"), QStringLiteral("A"),  QStringLiteral("A#"), QStringLiteral("B")};

int floorMod12(int value)
{
    return ((value % 12) + 12) % 12;
}

} // namespace

const ScaleRow& scaleRow(KeyMode mode)
{
    const auto index = static_cast<qint32>(mode);
    const bool known = index >= 0 && index < static_cast<qint32>(kScaleRows.size());
    return kScaleRows[known ? static_cast<std::size_t>(index) : 0];
}

QList<int> KeySignature::scalePitchClasses() const
{
    QList<int> pitchClasses;
    pitchClasses.reserve(7);
    for (const int interval : scaleRow(mode))
        pitchClasses.append(static_cast<int>((qint64(interval) + rootPitchClass) % 12));
    return pitchClasses;
}

int KeySignature::degreeOfPitchClass(int pitchClass) const
{
    return static_cast<int>(scalePitchClasses().indexOf(floorMod12(pitchClass))) + 1;
}

QString KeySignature::solfegeName(int pitchClass)
{
    return kSolfegeNames[static_cast<std::size_t>(floorMod12(pitchClass))];
}

QString KeySignature::letterName(int pitchClass)
{
    return kLetterNames[static_cast<std::size_t>(floorMod12(pitchClass))];
}
