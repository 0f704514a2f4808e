#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

/// Files that are read at one go and written at one go. Only regular files are touched: opening a
/// pipe may block for ever, and a device may have no end.
namespace WholeFile {

/// Whether a path that is a symbolic link stands for what it leads to. In a folder where anybody
/// may write, a link may lead anywhere.
enum class Links { Follow, Refuse };

/// The bytes of a regular file; nothing if there is none, if it cannot be read, or if it holds more
/// than `maxBytes`.
std::optional<QByteArray> read(const QString& path, qint64 maxBytes, Links links = Links::Follow);

/// Puts a file of these bytes in the place of the one with this path. Who reads at the same time
/// sees the former content or the new one, whole. False, with the former file untouched, if not
/// every byte reached the disk; a link is refused. `agree`, if it is given, is asked when all bytes
/// have been written and the former file still stands; where it says false that file stays.
bool replace(const QString& path, const QByteArray& bytes, const std::function<bool()>& agree = {});

/// Writes the bytes into the file with this path, which keeps its identity: links to it, its owner
/// and its rights stay, and who holds it open sees the new bytes. Room is made sure of before the
/// former content is touched, and the first byte is 0 until all others are there. False if not
/// every byte reached the disk; a file without room for the bytes keeps its content, and one that
/// did not exist is not left behind.
bool rewrite(const QString& path, const QByteArray& bytes);

} // namespace WholeFile
