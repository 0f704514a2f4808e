#pragma once

#include "shell/sheet/SongSheet.h"

class QPagedPaintDevice;

/// Puts a sheet on paper.
namespace SheetPainter {

/// The bars of a line of paper: half as many where they hold many notes.
int barsPerLine(const SongSheet& sheet);

/// On as many pages as it takes, black on white. A song that is a little too long for one page is
/// written smaller. The number of pages; 0 where the device takes none.
int paint(const SongSheet& sheet, QPagedPaintDevice& device);

} // namespace SheetPainter
