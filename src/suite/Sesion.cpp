#include "suite/Sesion.h"

#include "suite/ArchivoJson.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QStandardPaths>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace brusel {

namespace {

constexpr qint64 kGraceMin = 15;
constexpr qint64 kUnplannedMin = 90;
constexpr qint64 kLongestUnplannedMin = 240;
constexpr qint64 kSecondsBetweenSaves = 29;

// ---- The data folder -----------------------------------------------------------------------

bool isWritable(const QDir& folder)
{
    const QString path = folder.filePath(u".prueba_escritura"_s);
    // Opening a pipe may block for ever, and a link in a folder for everybody may lead anywhere.
    const QFileInfo info(path);
    if (info.isSymLink() || (info.exists() && !info.isFile()))
        return false;
    QFile trial(path);
    if (!trial.open(QIODevice::WriteOnly))
        return false;
    trial.close();
    trial.remove();
    return true;
}

/// The folder for all users of the computer; empty where there is none that can be written.
QString commonFolder()
{
    const QString programData = qEnvironmentVariable("ProgramData");
    if (programData.isEmpty())
        return {};
    const QDir folder(programData + "/Ovelin"_L1);
    return folder.mkpath(u"."_s) && isWritable(folder) ? folder.absolutePath() : QString();
}

QString userFolder()
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                      "/Ovelin"_L1);
    folder.mkpath(u"."_s);
    return folder.absolutePath();
}

// ---- The file ------------------------------------------------------------------------------

QDateTime readDate(const QJsonValue& json)
{
    return QDateTime::fromString(json.toString(), Qt::ISODate);
}

QList<Integrante> readMembers(const QJsonArray& json)
{
    QList<Integrante> members;
    members.reserve(json.size());
    for (const QJsonValue& member : json)
        members.append({.id = member["id"_L1].toString(),
                        .nombre = member["nombre"_L1].toString(),
                        .color = member["color"_L1].toString()});
    return members;
}

QJsonArray writeMembers(const QList<Integrante>& members)
{
    QJsonArray json;
    for (const Integrante& member : members)
        json.append(QJsonObject{
            {"color"_L1, member.color}, {"id"_L1, member.id}, {"nombre"_L1, member.nombre}});
    return json;
}

void readSession(Sesion& session, const QJsonObject& json)
{
    const bool loggedIn = json["modo"_L1].toString() == "mirasel"_L1;
    session.modo = loggedIn ? ModoSesion::Mirasel : ModoSesion::Standalone;
    session.token = json["token"_L1].toString();
    session.grupo = json["grupo"_L1].toString();
    session.integrantes = readMembers(json["integrantes"_L1].toArray());
    session.inicio_sesion = readDate(json["inicio_sesion"_L1]);
    session.ultima_actividad = readDate(json["ultima_actividad"_L1]);
    session.duracion_estimada_min = json["duracion_estimada_min"_L1].toInt();
}

QJsonObject writeSession(const Sesion& session)
{
    const bool loggedIn = session.modo == ModoSesion::Mirasel;
    return {{"duracion_estimada_min"_L1, session.duracion_estimada_min},
            {"grupo"_L1, session.grupo},
            {"inicio_sesion"_L1, session.inicio_sesion.toString(Qt::ISODate)},
            {"integrantes"_L1, writeMembers(session.integrantes)},
            {"modo"_L1, loggedIn ? u"mirasel"_s : u"standalone"_s},
            {"token"_L1, session.token},
            {"ultima_actividad"_L1, session.ultima_actividad.toString(Qt::ISODate)}};
}

// ---- Rules ---------------------------------------------------------------------------------

/// Cut toward zero; negative if the clock was set back.
qint64 wholeMinutes(const QDateTime& from, const QDateTime& to)
{
    return from.secsTo(to) / 60;
}

} // namespace

Sesion::Sesion(QObject* parent) : QObject(parent)
{}

QString Sesion::dirDatos()
{
    static const QString folder = [] {
        const QString common = commonFolder();
        return common.isEmpty() ? userFolder() : common;
    }();
    return folder;
}

QString Sesion::rutaArchivo()
{
    return dirDatos() + "/sesion.json"_L1;
}

bool Sesion::evaluarReglas(const QDateTime& inicio, const QDateTime& ultimaActividad,
                           int duracionMin, const QDateTime& ahora)
{
    const bool planned = duracionMin >= 1;
    const qint64 assured = planned ? duracionMin : kUnplannedMin;
    const qint64 longest = planned ? duracionMin + kGraceMin : kLongestUnplannedMin;
    const qint64 elapsed = wholeMinutes(inicio, ahora);
    const bool inUse = wholeMinutes(ultimaActividad, ahora) <= kGraceMin;
    return elapsed <= longest && (elapsed <= assured || inUse);
}

Sesion* Sesion::cargar(QObject* parent)
{
    const QJsonDocument document = leerJson(rutaArchivo());
    if (!document.isObject())
        return nullptr;
    auto session = std::make_unique<Sesion>(parent);
    readSession(*session, document.object());
    if (!session->inicio_sesion.isValid() || !session->esValida()) {
        cerrar();
        return nullptr;
    }
    return session.release();
}

Sesion* Sesion::iniciar(ModoSesion modo, const QString& token, const QString& grupo,
                        const QList<Integrante>& integrantes, int duracionMin, QObject* parent)
{
    auto session = std::make_unique<Sesion>(parent);
    session->modo = modo;
    session->token = token;
    session->grupo = grupo;
    session->integrantes = integrantes;
    session->duracion_estimada_min = duracionMin;
    session->inicio_sesion = QDateTime::currentDateTime();
    session->ultima_actividad = session->inicio_sesion;
    return session->guardar() ? session.release() : nullptr;
}

bool Sesion::esValida() const
{
    const QJsonDocument document = leerJson(rutaArchivo());
    const QDateTime begin = readDate(document["inicio_sesion"_L1]);
    const QDateTime latest = readDate(document["ultima_actividad"_L1]);
    return begin.isValid() && latest.isValid() &&
           evaluarReglas(begin, latest, document["duracion_estimada_min"_L1].toInt(),
                         QDateTime::currentDateTime());
}

bool Sesion::guardar() const
{
    if (!escribirJson(rutaArchivo(), QJsonDocument(writeSession(*this))))
        return false;
    ultimo_guardado = QDateTime::currentDateTime();
    return true;
}

void Sesion::registrarActividad()
{
    ultima_actividad = QDateTime::currentDateTime();
    if (!ultimo_guardado.isValid() ||
        ultimo_guardado.secsTo(ultima_actividad) > kSecondsBetweenSaves)
        guardar();
}

void Sesion::cerrar()
{
    QFile::remove(rutaArchivo());
}

} // namespace brusel
