#pragma once

#include <functional>

/// Hears how much of an export is done, from 0 to 1, and says whether it is to go on. An export
/// that is to stop fails without an error and leaves everything as it was. May be empty.
using ExportProgress = std::function<bool(double done)>;

inline bool goesOn(const ExportProgress& progress, double done)
{
    return !progress || progress(done);
}

/// The progress of a part of an export, which begins at `from` and ends at `to`.
inline ExportProgress partOf(const ExportProgress& progress, double from, double to)
{
    if (!progress)
        return {};
    return [progress, from, to](double done) { return progress(from + (to - from) * done); };
}
