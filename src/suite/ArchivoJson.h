#pragma once

#include <QJsonDocument>
#include <QString>

namespace brusel {

/// Files of more bytes than this are neither read nor written, unless a lower bound is given. Any
/// group of people fits into it.
inline constexpr qint64 kMaxArchivoJson = 4 * 1024 * 1024;

/// The document in a file; a null one if the file is missing, no regular file, a link, too large or
/// no JSON.
QJsonDocument leerJson(const QString& ruta, qint64 maxBytes = kMaxArchivoJson);

/// Puts a document, indented, in place of a file. Who reads at the same time sees the former
/// content or the new one, whole. False if it cannot be written, and the former stays; a link is
/// not followed.
bool escribirJson(const QString& ruta, const QJsonDocument& documento,
                  qint64 maxBytes = kMaxArchivoJson);

} // namespace brusel
