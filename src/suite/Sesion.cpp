#include "suite/Sesion.h"

#include "records/RecordJson.h"
#include "suite/ArchivoJson.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace brusel {

namespace {

QString wordOf(ModoSesion modo)
{
    return modo == ModoSesion::Mirasel ? u"mirasel"_s : u"standalone"_s;
}

ModoSesion modoOf(const QString& word)
{
    return word == "mirasel"_L1 ? ModoSesion::Mirasel : ModoSesion::Standalone;
}

} // namespace

} // namespace brusel

namespace Records {

using brusel::Integrante;
using brusel::Sesion;

template <>
constexpr auto kFields<Integrante> = FieldList{
    Field{"color"_L1, &Integrante::color},
    Field{"id"_L1, &Integrante::id},
    Field{"nombre"_L1, &Integrante::nombre},
};

template <>
constexpr auto kFields<Sesion> = FieldList{
    Field{"duracion_estimada_min"_L1, &Sesion::duracion_estimada_min},
    Field{"grupo"_L1, &Sesion::grupo},
    Field{"inicio_sesion"_L1, &Sesion::inicio_sesion},
    ListField{"integrantes"_L1, &Sesion::integrantes},
    WordField{"modo"_L1, &Sesion::modo, brusel::wordOf, brusel::modoOf},
    Field{"token"_L1, &Sesion::token},
    Field{"ultima_actividad"_L1, &Sesion::ultima_actividad},
};

} // namespace Records

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
    RecordJson::read(document.object(), session.get());
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
    Sesion filed;
    RecordJson::read(leerJson(rutaArchivo()).object(), &filed);
    return filed.inicio_sesion.isValid() && filed.ultima_actividad.isValid() &&
           evaluarReglas(filed.inicio_sesion, filed.ultima_actividad, filed.duracion_estimada_min,
                         QDateTime::currentDateTime());
}

bool Sesion::guardar() const
{
    if (!escribirJson(rutaArchivo(), QJsonDocument(RecordJson::write(*this))))
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
