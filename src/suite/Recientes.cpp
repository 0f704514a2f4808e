#include "suite/Recientes.h"

#include "records/RecordJson.h"
#include "suite/ArchivoJson.h"
#include "suite/Sesion.h"

#include <QDir>

#include <algorithm>
#include <functional>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace Records {

using brusel::ArchivoReciente;

template <>
constexpr auto kFields<ArchivoReciente> = FieldList{
    Field{"app"_L1, &ArchivoReciente::app},
    Field{"ruta"_L1, &ArchivoReciente::ruta},
    Field{"temporal"_L1, &ArchivoReciente::temporal},
    Field{"ultimo_uso"_L1, &ArchivoReciente::ultimo_uso},
};

} // namespace Records

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
    return RecordJson::readList<ArchivoReciente>(
        leerJson(rutaArchivo(integranteId), kMaxBytes).array());
}

void Recientes::registrar(const QString& integranteId, const ArchivoReciente& archivo)
{
    QList<ArchivoReciente> list = listar(integranteId);
    list.removeIf([&](const ArchivoReciente& entry) {
        return entry.ruta.compare(archivo.ruta, Qt::CaseInsensitive) == 0;
    });
    list.prepend(archivo);
    list.resize(std::min(list.size(), kMaxEntradas));

    QJsonArray json = RecordJson::writeList(list);
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
