#pragma once

#include "model/GridSubdivision.h"

#include <QRectF>

class Project;
class QPainter;

/// What lies behind the notes of the piano roll: the rows outside the key, tinted and hatched, the
/// rows of the chord that is in force at each moment, and the lines of pitch and time.
namespace PianoRollBackdrop {

/// Paints a stretch of the scene, and nothing of what is not `exposed`. The painter stands in
/// scene coordinates.
void paint(QPainter& painter, const QRectF& exposed, const Project& project,
           GridSubdivisionLevel level);

} // namespace PianoRollBackdrop
