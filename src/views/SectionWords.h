#pragma once

#include "music/LoopSection.h"

#include <QString>

#include <array>

/// All sections, in the order in which a pupil meets them in a song. It is not that of the numbers.
inline constexpr std::array kSectionOrder{LoopSection::Intro, LoopSection::Normal,
                                          LoopSection::Intermedio, LoopSection::Final};

/// The word of a section on the screen. It differs from the word in files. "Normal" for any value
/// that names no section.
QString sectionWord(LoopSection section);

/// "Introducción 2": a variant of a section.
QString variantWords(LoopSection section, int variantIndex);
