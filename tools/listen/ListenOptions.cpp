#include "listen/ListenOptions.h"

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kMostDegrees = 16;

/// Lower case and without accents, as the sources may be written too.
QString plain(const QString& text)
{
    QString letters;
    for (const QChar letter : text.normalized(QString::NormalizationForm_D).toCaseFolded()) {
        if (letter.category() != QChar::Mark_NonSpacing)
            letters += letter;
    }
    return letters.simplified();
}

std::optional<KeyMode> modeOf(const QString& word)
{
    static const std::array<std::pair<QString, KeyMode>, 4> modes{{
        {u"mayor"_s, KeyMode::Major},
        {u"menor"_s, KeyMode::Minor},
        {u"dorico"_s, KeyMode::Dorian},
        {u"lidio"_s, KeyMode::Lydian},
    }};
    const auto found = std::ranges::find(modes, word, &std::pair<QString, KeyMode>::first);
    return found == modes.end() ? std::nullopt : std::optional(found->second);
}

std::optional<int> pitchClassOf(const QString& word)
{
    for (int pitchClass = 0; pitchClass < 12; ++pitchClass) {
        if (word == plain(KeySignature::solfegeName(pitchClass)) ||
            word == plain(KeySignature::letterName(pitchClass)))
            return pitchClass;
    }
    if (word.size() > 1 && word.endsWith(u'b')) {
        if (const auto natural = pitchClassOf(word.chopped(1)))
            return (*natural + 11) % 12;
    }
    return std::nullopt;
}

} // namespace

bool ListenOptions::wants(const RhythmDemo::Loop& loop) const
{
    const QString section = plain(loopSectionToString(loop.section));
    const QString numbered = u"%1 %2"_s.arg(section).arg(loop.variantIndex);
    return sections.isEmpty() ||
           std::ranges::any_of(sections, [&section, &numbered](const QString& wanted) {
               return plain(wanted) == section || plain(wanted) == numbered;
           });
}

std::optional<KeySignature> ListenOptions::keyOf(const QString& text)
{
    const QStringList words = plain(text).split(u' ');
    const auto root = pitchClassOf(words.first());
    const auto mode = words.size() > 1 ? modeOf(words.at(1)) : std::optional(KeyMode::Major);
    if (!root || !mode || words.size() > 2)
        return std::nullopt;
    return KeySignature{.rootPitchClass = *root, .mode = *mode};
}

std::optional<QList<int>> ListenOptions::degreesOf(const QString& text)
{
    QList<int> degrees;
    for (const QString& word : text.split(u',')) {
        const int degree = word.trimmed().toInt();
        if (degree < 1 || degree > 7 || degrees.size() == kMostDegrees)
            return std::nullopt;
        degrees.append(degree);
    }
    return degrees;
}

std::optional<int> ListenOptions::tempoOf(const QString& text)
{
    bool number = false;
    const int tempo = text.toInt(&number);
    return number && tempo >= 20 && tempo <= 400 ? std::optional(tempo) : std::nullopt;
}
