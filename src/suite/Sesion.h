#pragma once

#include "suite/Integrante.h"

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

namespace brusel {

/// How a session was opened.
enum class ModoSesion : qint32 {
    /// Through the login of AuthMirasel.
    Mirasel = 0,
    /// Without a login.
    Standalone = 1
};

/// Who works at this computer now, since when and for how long. The session lives in one file in
/// a folder that the programs of the suite share; an object is a short-lived handle of what the
/// file held, and no session at all is an ordinary case.
///
/// There is no lock. Every write is whole, and the last writer wins.
class Sesion : public QObject {
    Q_OBJECT

public:
    explicit Sesion(QObject* parent = nullptr);

    /// The suite's data folder, common to all users where the computer lets them share one, and
    /// the user's own otherwise. Made when first asked for, and the same for the life of the
    /// process.
    static QString dirDatos();

    /// Path of the session's file, which need not exist.
    static QString rutaArchivo();

    /// Whether a session is alive at `ahora`. One with a planned length of at least 1 minute lasts
    /// that long, and up to 15 minutes more while it is in use. Any other lasts 90 minutes, and up
    /// to four hours while it is in use. It is in use up to 15 minutes after the last activity.
    /// Minutes are whole ones, so that every bound holds to the end of its last minute.
    static bool evaluarReglas(const QDateTime& inicio, const QDateTime& ultimaActividad,
                              int duracionMin, const QDateTime& ahora);

    /// The current session, owned by the caller and parented to `parent`; null if there is none.
    /// A session that has expired is removed on the way.
    static Sesion* cargar(QObject* parent);

    /// Begins a session in place of any other: saved, owned by the caller and parented to
    /// `parent`. Null if it cannot be saved. A `duracionMin` of 0 plans no length.
    static Sesion* iniciar(ModoSesion modo, const QString& token, const QString& grupo,
                           const QList<Integrante>& integrantes, int duracionMin, QObject* parent);

    /// Whether the file holds a session that is alive now, whatever this object holds.
    bool esValida() const;

    /// Writes the file. False if that fails.
    bool guardar() const;

    /// Notes a use of the session, and writes the file unless this object has done so within the
    /// last 29 seconds.
    void registrarActividad();

    /// Ends the session, if there is one, by removing the file.
    static void cerrar();

    ModoSesion modo = ModoSesion::Standalone;
    /// What the login gave access with.
    QString token;
    QString grupo;
    QList<Integrante> integrantes;
    QDateTime inicio_sesion;
    QDateTime ultima_actividad;
    /// Planned length in minutes; 0 for none.
    qint32 duracion_estimada_min = 0;
    /// When this object last wrote the file; invalid until then.
    mutable QDateTime ultimo_guardado;
};

} // namespace brusel
