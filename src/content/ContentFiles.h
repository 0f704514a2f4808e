#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// Where downloaded content may stand on disk. Ids and paths come from a server or from a file that
/// anybody may have changed, so they are looked at before they become paths.
namespace ContentFiles {

/// See FileNames::isPlain().
bool isPlainFileName(const QString& name);

/// Whether a path relative to a folder leads to something inside it, links followed. Neither the
/// folder nor the path need exist; an empty path is the folder itself and stays.
bool staysInside(const QString& folder, const QString& relativePath);

/// Where the bank of an instrument is kept, relative to the folder of all banks. The id is a plain
/// file name.
QString bankFile(const QString& instrumentId);

/// Whether bytes are a SoundFont as far as its outline goes: a RIFF file of the size that it
/// states, but for a byte of padding behind it, with at least one whole list in it.
bool isSoundFont(const QByteArray& bytes);

/// Puts a file of these bytes in the place of whatever file or link has this path, and makes the
/// folders that it stands in. False, with the former file untouched, if not every byte was written.
/// For `agree` see WholeFile::replace().
bool replaceFile(const QString& path, const QByteArray& bytes,
                 const std::function<bool()>& agree = {});

} // namespace ContentFiles
