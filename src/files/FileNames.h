#pragma once

#include <QString>

/// Names of files that come from somewhere else, and are looked at before they become paths.
namespace FileNames {

/// Whether a text can be the name of a file, on every system, and of nothing else: no path, no
/// hidden file, no device, no stream.
bool isPlain(const QString& name);

} // namespace FileNames
