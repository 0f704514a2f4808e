#pragma once

#include <QDateTime>
#include <QString>

namespace brusel {

/// One entry of a member's recent files.
struct ArchivoReciente {
    /// Path of a file, or of the folder of a work.
    QString ruta;
    /// Short key of the program that used it.
    QString app;
    /// Invalid where a file says none that can be read.
    QDateTime ultimo_uso;
    /// Whether it is a temporary file.
    bool temporal = false;

    bool operator==(const ArchivoReciente&) const = default;
};

} // namespace brusel
