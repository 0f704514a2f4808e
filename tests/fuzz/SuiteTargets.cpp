#include "FuzzLaws.h"
#include "FuzzTargets.h"
#include "suite/Recientes.h"
#include "suite/RespuestaLogin.h"
#include "suite/Sesion.h"

#include <memory>

using FuzzLaws::require;
using namespace Qt::Literals::StringLiterals;

void FuzzTargets::session(const QByteArray& input)
{
    FuzzLaws::scratch().mkpath(u"Ovelin"_s);
    const QString path = FuzzLaws::file(u"Ovelin/sesion.json"_s, input);
    require(brusel::Sesion::rutaArchivo() == path, "the session stands in the scratch folder");
    const std::unique_ptr<brusel::Sesion> session(brusel::Sesion::cargar(nullptr));
    if (!session)
        return;
    require(session->inicio_sesion.isValid() && session->esValida(), "a session is alive");
    if (!session->guardar())
        return;
    const std::unique_ptr<brusel::Sesion> again(brusel::Sesion::cargar(nullptr));
    require(again && again->grupo == session->grupo && again->token == session->token &&
                again->integrantes.size() == session->integrantes.size() &&
                again->duracion_estimada_min == session->duracion_estimada_min,
            "a session that is read again is the same");
}

void FuzzTargets::recents(const QByteArray& input)
{
    FuzzLaws::scratch().mkpath(u"Ovelin/recientes"_s);
    FuzzLaws::file(u"Ovelin/recientes/ana.json"_s, input);
    require(brusel::Recientes::rutaArchivo(u"ana"_s).startsWith(FuzzLaws::scratch().path()),
            "the list stands in the scratch folder");
    const qsizetype listed = brusel::Recientes::listar(u"ana"_s).size();
    const brusel::ArchivoReciente used{u"/obra/ñandú"_s, u"velta"_s,
                                       QDateTime(QDate(2024, 5, 6), QTime(8, 30, 15)), false};
    brusel::Recientes::registrar(u"ana"_s, used);
    const QList<brusel::ArchivoReciente> list = brusel::Recientes::listar(u"ana"_s);
    require(!list.isEmpty() && list.first().ruta == used.ruta, "the latest use stands first");
    require(list.size() <= brusel::Recientes::kMaxEntradas && list.size() <= listed + 1,
            "a list keeps to its length");
}

void FuzzTargets::login(const QByteArray& input)
{
    const auto answer = brusel::RespuestaLogin::leer(input);
    require(!answer ||
                (!answer->token.isEmpty() && !answer->id.isEmpty() && !answer->nombre.isEmpty()),
            "an answer is whole");
}
