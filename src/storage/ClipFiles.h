#pragma once

#include "model/AudioTrack.h"

#include <QHash>
#include <QList>
#include <QStringList>

#include <optional>

/// The audio files that the clips of a work name.
namespace ClipFiles {

/// The first path in a folder that does not exist: of the name itself, or with a number from 2 on.
/// `suffix` comes without a dot.
QString freePath(const QString& folder, const QString& baseName, const QString& suffix);

/// Files as clips name them, with the names of their copies.
using Copies = QHash<QString, QString>;

/// Copies files from one folder into another, which is made. Files that are there already stay as
/// they are, and the copies get the next free names. A name whose file is not there, or that leads
/// into another folder, is left out. Nothing if a file cannot be copied: no copy is left then.
std::optional<Copies> copyInto(const QStringList& names, const QString& from, const QString& to);

/// Has clips name the copies of their files.
void rename(QList<AudioTrack>& tracks, const Copies& copies);

/// The files that clips name, each once.
QStringList namesIn(const QList<AudioTrack>& tracks);

/// Copies files that clips name by a whole path, since their own place had no room for them, into
/// the folder of the work, where all others are named: only what lies there goes with the work to
/// another computer. A file that cannot be copied, or is not there, is left out.
Copies gather(const QStringList& names, const QString& folder);

/// All files that the clips of a work name, whether by a whole path or in its own folder, copied
/// into the folder of another. Nothing if one that is there cannot be copied: no copy is left then.
std::optional<Copies> copyAll(const QStringList& names, const QString& from, const QString& to);

/// Removes copies from a folder, and the folder itself if nothing else is in it.
void discard(const Copies& copies, const QString& folder);

} // namespace ClipFiles
