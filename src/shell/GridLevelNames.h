#pragma once

#include "model/GridSubdivision.h"

#include <QString>

#include <array>

/// All levels, from the coarsest.
inline constexpr std::array kGridLevels{GridSubdivisionLevel::Pulse, GridSubdivisionLevel::Division,
                                        GridSubdivisionLevel::Subdivision};

/// What the grid shows at a level, in words. A compound meter divides its pulse in three.
QString gridLevelName(GridSubdivisionLevel level, bool compound);
