#include "suite/ArchivoJson.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace brusel {

QJsonDocument leerJson(const QString& ruta)
{
    // Opening a pipe may block for ever, and a link in a folder for everybody may lead anywhere.
    const QFileInfo info(ruta);
    if (info.isSymLink() || !info.isFile())
        return {};
    QFile archivo(ruta);
    if (!archivo.open(QIODevice::ReadOnly) || archivo.size() > kMaxArchivoJson)
        return {};
    return QJsonDocument::fromJson(archivo.readAll());
}

bool escribirJson(const QString& ruta, const QJsonDocument& documento)
{
    // QSaveFile would follow the link and put the document in place of its target.
    if (QFileInfo(ruta).isSymLink())
        return false;
    const QByteArray texto = documento.toJson(QJsonDocument::Indented);
    QSaveFile archivo(ruta);
    if (texto.size() > kMaxArchivoJson || !archivo.open(QIODevice::WriteOnly))
        return false;
    // Bytes for which there is no room are no error to commit().
    return archivo.write(texto) == texto.size() && archivo.flush() && archivo.commit();
}

} // namespace brusel
