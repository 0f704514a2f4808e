#include "files/JsonFile.h"

QJsonDocument JsonFile::read(const QString& path, qint64 maxBytes, WholeFile::Links links)
{
    const auto bytes = WholeFile::read(path, maxBytes, links);
    return bytes ? QJsonDocument::fromJson(*bytes) : QJsonDocument();
}

std::optional<QJsonObject> JsonFile::readObject(const QString& path, qint64 maxBytes,
                                                WholeFile::Links links)
{
    const QJsonDocument document = JsonFile::read(path, maxBytes, links);
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}
