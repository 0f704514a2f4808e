#pragma once

#include "music/LoopSection.h"

#include <QString>

/// The word of a section on the screen, in the user's language; that of Normal for any value that
/// is no section. Files have words of their own: loopSectionToString().
QString sectionName(LoopSection section);
