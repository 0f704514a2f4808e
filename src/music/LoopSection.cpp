#include "music/LoopSection.h"

#include <array>

namespace {

struct SectionWord {
    LoopSection section;
    QLatin1StringView word;
};

constexpr std::array<SectionWord, 4> kSectionWords{{
    {LoopSection::Intro, QLatin1StringView("Intro")},
    {LoopSection::Intermedio, QLatin1StringView("Intermedio")},
    {LoopSection::Normal, QLatin1StringView("Normal")},
    {LoopSection::Final, QLatin1StringView("Final")},
}};

} // namespace

QString loopSectionToString(LoopSection section)
{
    for (const SectionWord& entry : kSectionWords) {
        if (entry.section == section)
            return entry.word;
    }
    return loopSectionToString(LoopSection::Normal);
}

LoopSection loopSectionFromString(const QString& text)
{
    for (const SectionWord& entry : kSectionWords) {
        if (entry.word == text)
            return entry.section;
    }
    return LoopSection::Normal;
}
