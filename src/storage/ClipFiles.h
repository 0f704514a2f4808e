#pragma once

#include <QString>

class Project;

/// The audio files that the clips of a work name.
namespace ClipFiles {

/// The first path in a folder that does not exist: of the name itself, or with a number from 2 on.
/// `suffix` comes without a dot.
QString freePath(const QString& folder, const QString& baseName, const QString& suffix);

/// Copies the files that the clips of a work name from one folder into another, which is made.
/// Files that are there already stay as they are, and the clips get the next free names. A clip
/// whose file is not there, or lies in another folder, is left alone. False if a file cannot be
/// copied: the work is then as it was, and no copy is left.
bool copyInto(Project& project, const QString& from, const QString& to);

/// Copies the files that the clips of a work name by a whole path, since its own place had no room
/// for them, into its folder, and has the clips name them there as they name all others: only what
/// lies in the folder goes with the work to another computer. A clip whose file cannot be copied,
/// or is not there, keeps its path.
void gather(Project& project, const QString& folder);

} // namespace ClipFiles
