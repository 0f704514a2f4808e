#include "content/ContentServer.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>

#include <memory>

namespace {

bool isTooLong(const QNetworkReply& reply, qint64 maxBytes)
{
    const qint64 announced = reply.header(QNetworkRequest::ContentLengthHeader).toLongLong();
    return announced > maxBytes || reply.bytesAvailable() > maxBytes;
}

ContentServer::Answer answerOf(QNetworkReply& reply, qint64 maxBytes)
{
    if (reply.error() != QNetworkReply::NoError)
        return {{}, reply.errorString()};
    if (!reply.isFinished() || isTooLong(reply, maxBytes))
        return {{}, QCoreApplication::translate("QNetworkReply", "Operation canceled")};
    return {reply.readAll(), {}};
}

/// Bytes come in on a thread of Qt's, even while this one is busy: they stop not far above a bound.
void boundBuffer(QNetworkReply* reply, qint64 maxBytes)
{
    // Qt may stop for good up to a block short of a full buffer, which must be beyond the bound.
    constexpr qint64 kSlackBytes = 1024 * 1024;
    // A request starts from the event loop, and a size that is set before that goes unheard.
    QMetaObject::invokeMethod(
        reply, [reply, maxBytes] { reply->setReadBufferSize(maxBytes + kSlackBytes); },
        Qt::QueuedConnection);
}

} // namespace

QUrl ContentServer::urlOf(const QUrl& base, const QString& relativePath)
{
    QUrl url = base;
    url.setPath(base.path(QUrl::FullyDecoded) + u'/' + relativePath, QUrl::DecodedMode);
    return url;
}

QNetworkReply* ContentServer::get(QNetworkAccessManager& network, const QUrl& url, qint64 maxBytes,
                                  const QObject* context,
                                  const std::function<void(const Answer&)>& ended)
{
    QNetworkReply* reply = network.get(QNetworkRequest(url));
    // Null once the request has ended, which later events find out.
    const auto running = std::make_shared<QPointer<QNetworkReply>>(reply);
    const auto end = [running, maxBytes, ended] {
        if (QNetworkReply* ending = running->data()) {
            running->clear();
            // A reply that is aborted instead may warn on the error stream if it fails as well.
            ending->deleteLater();
            ended(answerOf(*ending, maxBytes));
        }
    };
    const auto endIfTooLong = [running, maxBytes, end] {
        if (*running && isTooLong(**running, maxBytes))
            end();
    };
    // Queued, so that whoever hears of it may delete everything.
    QObject::connect(reply, &QNetworkReply::metaDataChanged, context, endIfTooLong,
                     Qt::QueuedConnection);
    QObject::connect(reply, &QNetworkReply::readyRead, context, endIfTooLong, Qt::QueuedConnection);
    QObject::connect(reply, &QNetworkReply::finished, context, end, Qt::QueuedConnection);
    boundBuffer(reply, maxBytes);
    return reply;
}
