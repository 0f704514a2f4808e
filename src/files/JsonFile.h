#pragma once

#include "files/WholeFile.h"

#include <QJsonDocument>
#include <QJsonObject>

/// JSON documents as regular files.
namespace JsonFile {

/// The object or array in a file; a null document if the file cannot be read up to `maxBytes`, or
/// is no JSON.
QJsonDocument read(const QString& path, qint64 maxBytes,
                   WholeFile::Links links = WholeFile::Links::Follow);

/// The object in a file; nothing for any other content.
std::optional<QJsonObject> readObject(const QString& path, qint64 maxBytes,
                                      WholeFile::Links links = WholeFile::Links::Follow);

} // namespace JsonFile
