#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QUrl>

#include <chrono>

class QNetworkReply;

namespace brusel {

/// The login at Mirasel, the service of the suite: a client of one URL, which goes nowhere else.
/// A GET of it tells whether the service is there. A POST of {"usuario": ..., "clave": ...} is
/// answered with the three strings of RespuestaLogin.
///
/// Signals come from the event loop, never from within a call, and a slot may delete the object.
/// An object that is deleted emits nothing more.
class AuthMirasel : public QObject {
    Q_OBJECT

public:
    /// Time for a whole request.
    static constexpr std::chrono::milliseconds kEspera{15'000};

    /// Answers to a login with more bytes are refused.
    static constexpr qint64 kMaxRespuesta = 64 * 1024;

    /// `espera`, a positive time, bounds every request from its start to its last byte.
    explicit AuthMirasel(const QUrl& servicio, std::chrono::milliseconds espera = kEspera,
                         QObject* parent = nullptr);

    /// Asks whether the service is there; disponible() tells. A question that is under way answers
    /// for the next ones too.
    void comprobar();

    /// Tries to log in; loginExitoso() or loginFallido() tells. It takes the place of a login that
    /// is under way, of which no more is heard.
    void entrar(const QString& usuario, const QString& clave);

signals:
    /// Whether the login service can be reached.
    void disponible(bool hayConexion);

    void loginExitoso(const QString& token, const QString& id, const QString& nombre);

    /// `motivo` is a sentence for the user.
    void loginFallido(const QString& motivo);

private:
    void terminarComprobacion();
    void terminarLogin();

    QNetworkAccessManager red_;
    QUrl servicio_;
    std::chrono::milliseconds espera_;
    // Children of the network manager; null while nothing is under way.
    QNetworkReply* comprobacion_ = nullptr;
    QNetworkReply* login_ = nullptr;
};

} // namespace brusel
