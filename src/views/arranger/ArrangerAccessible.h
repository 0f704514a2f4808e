#pragma once

#include "views/arranger/BlockEdits.h"

class LoopLibrary;
class Project;
class QString;
struct LaneInfo;

/// What those hear of the arranger who cannot see it: each block as a child of the grid, and each
/// lane as one of the column beside it.
namespace ArrangerAccessible {

/// Has the widgets of arrangers be asked for from now on. May be called again.
void install();

/// "Acorde IV, Fa mayor, compás 3, 1 compás"; for a loop its rhythm, layer and section, which the
/// library, which may be null, has the names of; for a voice its file. Empty for a stale reference.
QString nameOf(const Project& project, const LoopLibrary* library, const BlockRef& block);

/// "Quena, silenciado"; for a group how many tracks it has, and whether it is folded.
QString nameOf(const Project& project, const LaneInfo& lane);

} // namespace ArrangerAccessible
