#pragma once

#include "views/arranger/BlockEdits.h"

/// Blocks of the song of the stage.
inline constexpr BlockRef kFirstMelody{BlockKind::Melody, 0, 0};
inline constexpr BlockRef kSecondMelody{BlockKind::Melody, 0, 1};
inline constexpr BlockRef kFlute{BlockKind::Melody, 2, 0};
inline constexpr BlockRef kAna{BlockKind::Audio, 0, 0};
inline constexpr BlockRef kFirstBombo{BlockKind::Loop, 1, 0};
inline constexpr BlockRef kSecondBombo{BlockKind::Loop, 1, 1};
inline constexpr BlockRef kBajo{BlockKind::Loop, 3, 0};
inline constexpr BlockRef kSeventh{BlockKind::Chord, 1, 1};
