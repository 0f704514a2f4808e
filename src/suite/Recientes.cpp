#include "suite/Recientes.h"

#include "suite/ArchivoJson.h"
#include "suite/Sesion.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <functional>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace brusel {

namespace {

bool isKept(char32_t character)
{
    return (character >= U'A' && character <= U'Z') || (character >= U'a' && character <= U'z') ||
           (character >= U'0' && character <= U'9') || character == U'_' || character == U'.' ||
           character == U'-';
}

/// Looks at one code point after the other: a regular expression matches nothing at all in text
/// with half a surrogate pair, and would let a path through.
QString safeFileName(const QString& id)
{
    QString safe;
    for (const char32_t character : id.toUcs4())
        safe += isKept(character) ? QChar(static_cast<char16_t>(character)) : u'_';
    return safe;
}

ArchivoReciente readEntry(const QJsonValue& json)
{
    return {.ruta = json["ruta"_L1].toString(),
            .app = json["app"_L1].toString(),
            .ultimo_uso = QDateTime::fromString(json["ultimo_uso"_L1].toString(), Qt::ISODate),
            .temporal = json["temporal"_L1].toBool()};
}

QJsonObject writeEntry(const ArchivoReciente& entry)
{
    return {{"app"_L1, entry.app},
            {"ruta"_L1, entry.ruta},
            {"temporal"_L1, entry.temporal},
            {"ultimo_uso"_L1, entry.ultimo_uso.toString(Qt::ISODate)}};
}

QList<Integrante> membersOf(const Sesion& session)
{
    return session.integrantes.first(
        std::min(session.integrantes.size(), Recientes::kMaxIntegrantes));
}

bool isTooLarge(const QJsonArray& json)
{
    return QJsonDocument(json).toJson().size() > Recientes::kMaxBytes;
}

} // namespace

QString Recientes::rutaArchivo(const QString& integranteId)
{
    const QDir folder(Sesion::dirDatos() + "/recientes"_L1);
    folder.mkpath(u"."_s);
    return folder.filePath(safeFileName(integranteId) + ".json"_L1);
}

QList<ArchivoReciente> Recientes::listar(const QString& integranteId)
{
    const QJsonArray json = leerJson(rutaArchivo(integranteId), kMaxBytes).array();
    QList<ArchivoReciente> list;
    list.reserve(json.size());
    for (const QJsonValue& entry : json)
        list.append(readEntry(entry));
    return list;
}

void Recientes::registrar(const QString& integranteId, const ArchivoReciente& archivo)
{
    QList<ArchivoReciente> list = listar(integranteId);
    list.removeIf([&](const ArchivoReciente& entry) {
        return entry.ruta.compare(archivo.ruta, Qt::CaseInsensitive) == 0;
    });
    list.prepend(archivo);
    list.resize(std::min(list.size(), kMaxEntradas));

    QJsonArray json;
    for (const ArchivoReciente& entry : list)
        json.append(writeEntry(entry));
    while (isTooLarge(json))
        json.removeLast();
    escribirJson(rutaArchivo(integranteId), QJsonDocument(json), kMaxBytes);
}

QStringList Recientes::rutasDeSesionActiva(const QString& app)
{
    const std::unique_ptr<Sesion> session(Sesion::cargar(nullptr));
    if (!session)
        return {};
    QList<ArchivoReciente> uses;
    for (const Integrante& member : membersOf(*session))
        uses.append(listar(member.id));
    uses.removeIf([&](const ArchivoReciente& use) { return use.app != app || use.temporal; });
    std::ranges::stable_sort(uses, std::ranges::greater(), &ArchivoReciente::ultimo_uso);
    QStringList paths;
    for (const ArchivoReciente& use : uses)
        paths.append(use.ruta);
    paths.removeDuplicates();
    return paths;
}

void Recientes::registrarEnSesionActiva(const QString& ruta, const QString& app, bool temporal)
{
    const std::unique_ptr<Sesion> session(Sesion::cargar(nullptr));
    if (!session)
        return;
    const ArchivoReciente use{ruta, app, QDateTime::currentDateTime(), temporal};
    for (const Integrante& member : membersOf(*session))
        registrar(member.id, use);
    session->registrarActividad();
}

} // namespace brusel
