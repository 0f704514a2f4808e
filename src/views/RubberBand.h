#pragma once

#include "shell/theme/CanvasColors.h"

#include <QGraphicsView>
#include <QPalette>

/// Has the rectangle that selects in a view be drawn in the program's colour, not the platform's.
inline void colorRubberBand(QGraphicsView& view)
{
    QPalette palette = view.palette();
    palette.setColor(QPalette::Highlight, kVeltaAccent);
    view.setPalette(palette);
}
