#include "suite/RespuestaLogin.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::Literals::StringLiterals;

namespace brusel {

std::optional<RespuestaLogin> RespuestaLogin::leer(const QByteArray& cuerpo)
{
    const QJsonObject json = QJsonDocument::fromJson(cuerpo).object();
    const RespuestaLogin answer{.token = json["token"_L1].toString(),
                                .id = json["id"_L1].toString(),
                                .nombre = json["nombre"_L1].toString()};
    if (answer.token.isEmpty() || answer.id.isEmpty() || answer.nombre.isEmpty())
        return std::nullopt;
    return answer;
}

} // namespace brusel
