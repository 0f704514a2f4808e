#include "suite/AuthMirasel.h"

#include "suite/RespuestaLogin.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;

// A request ends with the first of several events: enough of an answer, too much of it, a failure,
// or the end of the time for all of it (a transfer timeout would begin anew with every byte). An
// event that comes later finds another request, or none, in the place of its own. Events of a reply
// are queued, so that a slot of ours may delete this object and the reply with it. An unfinished
// reply is deleted and not aborted: Qt warns on the error stream if it has just failed by itself.

namespace brusel {

namespace {

/// Status of the HTTP answer; 0 if there was none.
int statusOf(const QNetworkReply& reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

/// A service may well refuse a plain GET. Who sends elsewhere, or wants a login of its own, is the
/// gate of a school's network, and a server error tells of a service that is not there.
bool isReached(int status)
{
    constexpr int kProxyWantsLogin = 407;
    return status / 100 == 2 || (status / 100 == 4 && status != kProxyWantsLogin);
}

QByteArray credentials(const QString& user, const QString& password)
{
    const QJsonObject json{{"clave"_L1, password}, {"usuario"_L1, user}};
    return QJsonDocument(json).toJson(QJsonDocument::Compact);
}

std::optional<RespuestaLogin> readLogin(QNetworkReply& reply)
{
    const bool whole = reply.isFinished() && reply.error() == QNetworkReply::NoError;
    if (!whole || statusOf(reply) / 100 != 2)
        return std::nullopt;
    const QByteArray body = reply.readAll();
    return body.size() <= AuthMirasel::kMaxRespuesta ? RespuestaLogin::leer(body) : std::nullopt;
}

QString reasonOf(int status)
{
    if (status == 0)
        return AuthMirasel::tr(
            "No pude conectarme con Mirasel. Fijate si hay internet y probá de nuevo.");
    if (status == 401 || status == 403)
        return AuthMirasel::tr("No pude entrar: revisá tu usuario y tu clave.");
    return AuthMirasel::tr("No entendí la respuesta de Mirasel. Probá de nuevo en un rato.");
}

QNetworkRequest requestTo(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    // Whoever asks for no compression gets no small answer that unpacks into an endless one.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

QNetworkRequest jsonRequestTo(const QUrl& url)
{
    QNetworkRequest request = requestTo(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    return request;
}

/// Bytes come in on a thread of Qt's, even while this one is busy: they stop at one too many.
void boundBuffer(QNetworkReply* reply)
{
    // A request starts from the event loop, and a size that is set before that goes unheard.
    QMetaObject::invokeMethod(
        reply, [reply] { reply->setReadBufferSize(AuthMirasel::kMaxRespuesta + 1); },
        Qt::QueuedConnection);
}

} // namespace

AuthMirasel::AuthMirasel(const QUrl& servicio, std::chrono::milliseconds espera, QObject* parent)
    : QObject(parent), servicio_(servicio), espera_(espera)
{}

void AuthMirasel::comprobar()
{
    if (comprobacion_)
        return;
    QNetworkReply* reply = red_.get(requestTo(servicio_));
    comprobacion_ = reply;
    const auto end = [this, reply] {
        if (reply == comprobacion_)
            terminarComprobacion();
    };
    // The head of an answer says it all.
    connect(reply, &QNetworkReply::metaDataChanged, this, end, Qt::QueuedConnection);
    connect(reply, &QNetworkReply::finished, this, end, Qt::QueuedConnection);
    QTimer::singleShot(espera_, reply, end);
}

void AuthMirasel::terminarComprobacion()
{
    QNetworkReply* reply = std::exchange(comprobacion_, nullptr);
    reply->deleteLater();
    emit disponible(isReached(statusOf(*reply)));
}

void AuthMirasel::entrar(const QString& usuario, const QString& clave)
{
    if (login_)
        login_->deleteLater();
    QNetworkReply* reply = red_.post(jsonRequestTo(servicio_), credentials(usuario, clave));
    login_ = reply;
    const auto end = [this, reply] {
        if (reply == login_)
            terminarLogin();
    };
    const auto endIfTooLong = [end, this, reply] {
        if (reply == login_ && reply->bytesAvailable() > kMaxRespuesta)
            end();
    };
    boundBuffer(reply);
    connect(reply, &QNetworkReply::readyRead, this, endIfTooLong, Qt::QueuedConnection);
    connect(reply, &QNetworkReply::finished, this, end, Qt::QueuedConnection);
    QTimer::singleShot(espera_, reply, end);
}

void AuthMirasel::terminarLogin()
{
    QNetworkReply* reply = std::exchange(login_, nullptr);
    reply->deleteLater();
    if (const auto answer = readLogin(*reply))
        emit loginExitoso(answer->token, answer->id, answer->nombre);
    else
        emit loginFallido(reasonOf(statusOf(*reply)));
}

} // namespace brusel
