#pragma once

#include <QString>

class QWidget;

namespace ovelin {

/// One line for each visible widget of a tree that stands less than three levels deep or needs a
/// height of 40 pixels or more: its class and name, the size that it needs (the larger of its hint
/// and its minimum, in each direction) and the size that it has. Shows what holds up the minimum
/// height of a window. `depth` is the level of the root.
QString alturasDelArbol(const QWidget* root, int depth = 0);

/// If the environment variable MEDIR_ALTURAS names a file, writes the lines of all top-level
/// widgets to it, once, two seconds from now. Needs the application object; a file that cannot be
/// opened is let be.
void medirAlturasSiHaceFalta();

} // namespace ovelin
