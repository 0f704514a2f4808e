#pragma once

#include "suite/ArchivoReciente.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace brusel {

/// The files that each member of the suite used last, in whatever program of it: one short list
/// per member in the suite's data folder. Every write is whole; of two programs that register for
/// one member at once, one may lose its entry. Failures are silent.
class Recientes {
public:
    /// The most entries of a list.
    static constexpr qsizetype kMaxEntradas = 30;

    /// Larger lists are damaged: thirty of the longest paths of a disk take half of it.
    static constexpr qint64 kMaxBytes = 256 * 1024;

    /// The most members that one use is noted for: more than a whole class around one computer. A
    /// damaged session could name so many that a save would not come to its end.
    static constexpr qsizetype kMaxIntegrantes = 64;

    /// Path of a member's list, whose folder is made. The id keeps its ASCII letters and digits,
    /// "_", "." and "-"; every other character becomes "_".
    static QString rutaArchivo(const QString& integranteId);

    /// A member's list, latest use first; empty if there is none that can be read.
    static QList<ArchivoReciente> listar(const QString& integranteId);

    /// Puts an entry at the front of a member's list, in place of one with the same path in
    /// whatever case. The oldest entries go when the list would grow beyond its bounds.
    static void registrar(const QString& integranteId, const ArchivoReciente& archivo);

    /// Paths that the members of the current session used last in a program, latest use first and
    /// each once; temporary files are left out. Empty without a session.
    static QStringList rutasDeSesionActiva(const QString& app);

    /// Notes that a program uses a file now, for every member of the current session, and keeps
    /// the session alive. Does nothing without a session.
    static void registrarEnSesionActiva(const QString& ruta, const QString& app, bool temporal);
};

} // namespace brusel
