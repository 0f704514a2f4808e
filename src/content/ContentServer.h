#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <chrono>
#include <functional>

class QNetworkAccessManager;
class QNetworkReply;
class QObject;

/// The server of more rhythms: static files below a base address.
namespace ContentServer {

/// Far above any real file of each kind. A longer body ends its request as a network failure.
constexpr qint64 kMaxJsonBytes = 16 * 1024 * 1024;
constexpr qint64 kMaxBankBytes = 256 * 1024 * 1024;

/// How long a server may keep silent: well beyond what a slow school network takes between two
/// pieces of a file.
constexpr std::chrono::milliseconds kPatience = std::chrono::seconds(15);

/// The address of a file below the base: a slash and the path are added to the path of the base,
/// to which neither may be escaped.
QUrl urlOf(const QUrl& base, const QString& relativePath);

/// How a request ended: with a body, or with the network's own words for what went wrong.
struct Answer {
    QByteArray body;
    /// Empty if all went well.
    QString error;
};

/// Asks for a file once, following redirects within HTTP that are no less safe. The whole body is
/// held until `ended` is called from the event loop, once, and never after `context` is gone. A
/// server from which nothing has come for as long as `patience` ends the request as a failure. The
/// reply belongs to `network` and lives no longer than that; deleting it ends the request unheard.
QNetworkReply* get(QNetworkAccessManager& network, const QUrl& url, qint64 maxBytes,
                   std::chrono::milliseconds patience, const QObject* context,
                   const std::function<void(const Answer&)>& ended);

} // namespace ContentServer
