#pragma once

#include "support/LocalServer.h"

#include <QMap>
#include <QStringList>

/// A content server of a test's own: files by their path, each of which may misbehave instead of
/// being sent.
class ContentHost {
public:
    ContentHost()
        : server_(LocalServer::Service([this](QTcpSocket& connection, const QByteArray& request) {
              answer(connection, pathOf(request));
          }))
    {}

    ContentHost(const ContentHost&) = delete;
    ContentHost& operator=(const ContentHost&) = delete;

    QUrl url(const QString& path = {}) const { return server_.url(QStringLiteral("http"), path); }

    void put(const QString& path, const QByteArray& body) { files_[path] = body; }

    /// Has requests of this path end so, until heal().
    void misbehave(const QString& path, const LocalServer::Behaviour& behaviour)
    {
        behaviours_[path] = behaviour;
    }

    void heal() { behaviours_.clear(); }

    /// The paths that were asked for, as they stood in the requests.
    QStringList asked() const
    {
        QStringList paths;
        for (const QByteArray& request : server_.requests())
            paths.append(pathOf(request));
        return paths;
    }

    const LocalServer& server() const { return server_; }

private:
    static QString pathOf(const QByteArray& request)
    {
        return QString::fromLatin1(request.split(' ').value(1));
    }

    void answer(QTcpSocket& connection, const QString& path)
    {
        if (behaviours_.contains(path))
            behaviours_[path](connection);
        else if (files_.contains(path))
            sends(httpAnswer("200 OK", files_[path]))(connection);
        else
            sends(httpAnswer("404 Not Found", "not here"))(connection);
    }

    QMap<QString, QByteArray> files_;
    QMap<QString, LocalServer::Behaviour> behaviours_;
    LocalServer server_;
};
