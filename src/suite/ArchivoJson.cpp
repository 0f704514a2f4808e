#include "suite/ArchivoJson.h"

#include "files/JsonFile.h"

namespace brusel {

QJsonDocument leerJson(const QString& ruta)
{
    return JsonFile::read(ruta, kMaxArchivoJson, WholeFile::Links::Refuse);
}

bool escribirJson(const QString& ruta, const QJsonDocument& documento)
{
    const QByteArray texto = documento.toJson(QJsonDocument::Indented);
    return texto.size() <= kMaxArchivoJson && WholeFile::replace(ruta, texto);
}

} // namespace brusel
