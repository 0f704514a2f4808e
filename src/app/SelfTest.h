#pragma once

#include <QString>

/// Composes a small song on the installed content, checks that its accompaniment follows the
/// chords, exports it into `outputDir` in all three formats, and sends it through the project
/// file. Prints what it finds and returns the exit code: 0 when all is well, 1 at a failure.
int runSelfTest(const QString& outputDir);
