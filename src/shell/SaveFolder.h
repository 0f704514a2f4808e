#pragma once

#include <QString>

/// Where files go that the user has written.
namespace SaveFolder {

/// The folder to propose after a file was written into `last`, which is empty at first: that one,
/// or the current one, or the user's own for music, for documents, for everything, whichever is the
/// first that takes files. A program may be started anywhere, in the root of the system too. The
/// current one if there is none.
QString after(const QString& last);

} // namespace SaveFolder
