#include "content/ContentServer.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace {

bool isTooLong(const QNetworkReply& reply, qint64 maxBytes)
{
    const qint64 announced = reply.header(QNetworkRequest::ContentLengthHeader).toLongLong();
    return announced > maxBytes || reply.bytesAvailable() > maxBytes;
}

} // namespace

QUrl ContentServer::urlOf(const QUrl& base, const QString& relativePath)
{
    QUrl url = base;
    url.setPath(base.path(QUrl::FullyDecoded) + u'/' + relativePath, QUrl::DecodedMode);
    return url;
}

QNetworkReply* ContentServer::get(QNetworkAccessManager& network, const QUrl& url, qint64 maxBytes)
{
    QNetworkReply* reply = network.get(QNetworkRequest(url));
    const auto stopIfTooLong = [reply, maxBytes] {
        // Qt warns on the error stream about a failed reply that is aborted too.
        if (reply->error() == QNetworkReply::NoError && isTooLong(*reply, maxBytes))
            reply->abort();
    };
    QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, stopIfTooLong);
    QObject::connect(reply, &QNetworkReply::readyRead, reply, stopIfTooLong);
    // Bytes come in on a thread of Qt's, even while this one is busy. A request starts from the
    // event loop, and a size that is set before that goes unheard.
    QMetaObject::invokeMethod(
        reply, [reply, maxBytes] { reply->setReadBufferSize(maxBytes + 1); }, Qt::QueuedConnection);
    return reply;
}
