#pragma once

#include <QHostAddress>
#include <QList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <memory>

/// A server on a free port of this computer that notes whole HTTP requests and answers with
/// whatever a test has it do to the connection.
class LocalServer {
public:
    using Behaviour = std::function<void(QTcpSocket& connection)>;
    /// A behaviour that depends on the request, its head and body.
    using Service = std::function<void(QTcpSocket& connection, const QByteArray& request)>;

    explicit LocalServer(const Behaviour& behaviour)
        : LocalServer(
              [behaviour](QTcpSocket& connection, const QByteArray&) { behaviour(connection); })
    {}

    explicit LocalServer(Service service) : service_(std::move(service))
    {
        server_.listen(QHostAddress::LocalHost);
        QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] { accept(); });
    }

    QUrl url(const QString& scheme = QStringLiteral("http"),
             const QString& path = QStringLiteral("/ingreso")) const
    {
        return QUrl(
            QStringLiteral("%1://127.0.0.1:%2%3").arg(scheme).arg(server_.serverPort()).arg(path));
    }

    /// The requests so far, each with its head and body.
    const QList<QByteArray>& requests() const { return requests_; }

    /// Every byte that ever came in, whether it was a request or not.
    const QByteArray& received() const { return received_; }

    int connections() const { return connections_; }

    /// Connections that are still open.
    qsizetype openConnections() const
    {
        qsizetype open = 0;
        for (const QTcpSocket* socket : server_.findChildren<QTcpSocket*>())
            open += socket->state() == QAbstractSocket::ConnectedState ? 1 : 0;
        return open;
    }

private:
    void accept()
    {
        while (QTcpSocket* socket = server_.nextPendingConnection()) {
            ++connections_;
            auto request = std::make_shared<QByteArray>();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, request] {
                const QByteArray bytes = socket->readAll();
                received_ += bytes;
                *request += bytes;
                if (isComplete(*request)) {
                    requests_.append(std::exchange(*request, {}));
                    service_(*socket, QByteArray(requests_.last()));
                }
            });
        }
    }

    static bool isComplete(const QByteArray& request)
    {
        const qsizetype head = request.indexOf("\r\n\r\n");
        if (head < 0)
            return false;
        const QByteArray key = "content-length:";
        const qsizetype length = request.toLower().indexOf(key);
        if (length < 0 || length > head)
            return true;
        const qsizetype value = length + key.size();
        const QByteArray number = request.mid(value, request.indexOf('\r', value) - value);
        return request.size() - head - 4 >= number.trimmed().toInt();
    }

    Service service_;
    QTcpServer server_;
    QList<QByteArray> requests_;
    QByteArray received_;
    int connections_ = 0;
};

/// Sends these bytes and ends the connection.
inline LocalServer::Behaviour sends(const QByteArray& bytes)
{
    return [bytes](QTcpSocket& connection) {
        connection.write(bytes);
        connection.disconnectFromHost();
    };
}

/// An answer as HTTP knows it. `status` is a code and its phrase.
inline QByteArray httpAnswer(const QByteArray& status, const QByteArray& body,
                             const QByteArray& moreHeaders = {})
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\n" + moreHeaders + "\r\n" + body;
}

/// Never answers.
inline LocalServer::Behaviour keepsSilent()
{
    return [](QTcpSocket&) {};
}

/// Ends the connection without an answer.
inline LocalServer::Behaviour hangsUp()
{
    return [](QTcpSocket& connection) { connection.abort(); };
}

/// Sends a beginning, and then a piece again and again as long as anybody takes it.
inline LocalServer::Behaviour floods(const QByteArray& beginning, const QByteArray& piece)
{
    return [=](QTcpSocket& connection) {
        QObject::connect(&connection, &QTcpSocket::bytesWritten, &connection, [&connection, piece] {
            if (connection.bytesToWrite() == 0)
                connection.write(piece);
        });
        connection.write(beginning);
    };
}

/// Sends a beginning, and then a piece every millisecond.
inline LocalServer::Behaviour drips(const QByteArray& beginning, const QByteArray& piece)
{
    return [=](QTcpSocket& connection) {
        auto* timer = new QTimer(&connection);
        QObject::connect(timer, &QTimer::timeout, &connection,
                         [&connection, piece] { connection.write(piece); });
        connection.write(beginning);
        timer->start(1);
    };
}
