#include "suite/ArchivoJson.h"

#include "files/JsonFile.h"

namespace brusel {

QJsonDocument leerJson(const QString& ruta, qint64 maxBytes)
{
    return JsonFile::read(ruta, maxBytes, WholeFile::Links::Refuse);
}

bool escribirJson(const QString& ruta, const QJsonDocument& documento, qint64 maxBytes)
{
    const QByteArray texto = documento.toJson(QJsonDocument::Indented);
    return texto.size() <= maxBytes && WholeFile::replace(ruta, texto);
}

} // namespace brusel
