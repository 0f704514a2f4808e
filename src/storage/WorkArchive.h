#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

class Project;

/// A whole work in one file, to be carried to another computer: a ZIP of project.json and of the
/// files that its clips name, side by side, and of nothing else.
///
/// Such a file may come from anywhere. What is read of it are plain names in one folder, within
/// bounds that are told before anything is unpacked.
namespace WorkArchive {

/// With its dot.
inline constexpr auto kSuffix = ".velta";

/// Files beside project.json beyond which an archive is no work. One is neither read nor written.
constexpr qsizetype kMaxFiles = 512;

/// Bytes, unpacked, beyond which an archive is no work.
constexpr qint64 kMaxBytes = qint64{4} * 1024 * 1024 * 1024;

/// Bytes up to which an archive may unpack to any multiple of its own size, and the multiple that
/// is allowed beyond. Takes are stored as they are, so no work comes near it.
constexpr qint64 kFreelyUnpacked = qint64{64} * 1024 * 1024;
constexpr qint64 kMaxGrowth = 200;

/// Writes a work as it stands. Its clips lie in `clipsFolder`, or where their path leads; those
/// whose file is not there stay without one. False, with whatever stood at `path` untouched, if it
/// cannot be written, or is beyond the bounds.
bool write(const Project& project, const QString& clipsFolder, const QString& path);

/// Unpacks an archive into a folder, which is made, and returns its project.json, which stands in
/// the folder too. Nothing, with whatever has been written left to the caller, for a file that is
/// no archive of a work, or is damaged, or goes beyond the bounds.
std::optional<QByteArray> unpack(const QString& path, const QString& folder);

} // namespace WorkArchive
