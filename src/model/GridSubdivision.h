#pragma once

#include <QMetaType>

/// How finely the editors divide a bar. A setting of the editors, not part of a project.
enum class GridSubdivisionLevel : qint32 { Pulse = 0, Division = 1, Subdivision = 2 };

Q_DECLARE_METATYPE(GridSubdivisionLevel)
