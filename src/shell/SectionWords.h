#pragma once

#include "music/LoopSection.h"

#include <array>

/// All sections, in the order in which a pupil meets them in a song. It is not that of the numbers.
inline constexpr std::array kSectionOrder{LoopSection::Intro, LoopSection::Normal,
                                          LoopSection::Intermedio, LoopSection::Final};

/// The word of a section on the screen, to be passed through the tr() of the class that shows it.
/// It differs from the word in files. "Normal" for any value that names no section.
constexpr const char* sectionWord(LoopSection section)
{
    switch (section) {
    case LoopSection::Intro:
        return "Introducción";
    case LoopSection::Intermedio:
        return "Intermedio";
    case LoopSection::Final:
        return "Final";
    case LoopSection::Normal:
        break;
    }
    return "Normal";
}
