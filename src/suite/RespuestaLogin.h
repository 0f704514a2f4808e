#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace brusel {

/// What the login service says of somebody whom it lets in.
struct RespuestaLogin {
    QString token;
    QString id;
    QString nombre;

    /// Reads the service's answer, a JSON object with three strings under the names of the fields.
    /// Nothing if one of them is missing or empty.
    static std::optional<RespuestaLogin> leer(const QByteArray& cuerpo);
};

} // namespace brusel
