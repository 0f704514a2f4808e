#pragma once

#include <QString>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkReply;

/// The server of more rhythms: static files below a base address.
namespace ContentServer {

/// Far above any real file of each kind. A longer body ends its request as a network failure.
constexpr qint64 kMaxJsonBytes = 16 * 1024 * 1024;
constexpr qint64 kMaxBankBytes = 256 * 1024 * 1024;

/// The address of a file below the base: a slash and the path are added to the path of the base,
/// to which neither may be escaped.
QUrl urlOf(const QUrl& base, const QString& relativePath);

/// Asks for a file once, following redirects within HTTP that are no less safe. The reply belongs
/// to `network`; its whole body is held until it is read.
QNetworkReply* get(QNetworkAccessManager& network, const QUrl& url, qint64 maxBytes);

} // namespace ContentServer
