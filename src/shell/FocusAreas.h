#pragma once

#include <QList>

class QWidget;

/// The parts of a window that F6 goes through.
namespace FocusAreas {

/// Gives the keys to the area that lies `step` places, 1 or -1, behind the one that has them, the
/// last and the first being neighbours; to the first where none has them. Within an area it is the
/// first stop of the Tab key that gets them; an area without a stop is passed over.
void go(const QList<QWidget*>& areas, int step);

} // namespace FocusAreas
