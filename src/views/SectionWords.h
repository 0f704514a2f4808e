#pragma once

#include "music/LoopSection.h"

#include <QtGlobal>

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

/// The same words in the contexts of those classes: what gathers the texts to be translated finds
/// them by their context, which the function above cannot know.
inline constexpr std::array kSectionTexts{
    QT_TRANSLATE_NOOP("LoopBrowser", "Introducción"),
    QT_TRANSLATE_NOOP("LoopBrowser", "Intermedio"),
    QT_TRANSLATE_NOOP("LoopBrowser", "Normal"),
    QT_TRANSLATE_NOOP("LoopBrowser", "Final"),
    QT_TRANSLATE_NOOP("MainWindow", "Introducción"),
    QT_TRANSLATE_NOOP("MainWindow", "Intermedio"),
    QT_TRANSLATE_NOOP("MainWindow", "Normal"),
    QT_TRANSLATE_NOOP("MainWindow", "Final"),
    QT_TRANSLATE_NOOP("TrackArranger", "Introducción"),
    QT_TRANSLATE_NOOP("TrackArranger", "Intermedio"),
    QT_TRANSLATE_NOOP("TrackArranger", "Normal"),
    QT_TRANSLATE_NOOP("TrackArranger", "Final"),
    QT_TRANSLATE_NOOP("VariationButton", "Introducción"),
    QT_TRANSLATE_NOOP("VariationButton", "Intermedio"),
    QT_TRANSLATE_NOOP("VariationButton", "Normal"),
    QT_TRANSLATE_NOOP("VariationButton", "Final"),
};
