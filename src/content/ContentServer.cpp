#include "content/ContentServer.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QTimer>

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

/// Calls `giveUp` when nothing has come for as long as `patience`.
void watchSilence(QNetworkReply* reply, std::chrono::milliseconds patience, const QObject* context,
                  const std::function<void()>& giveUp)
{
    auto* silence = new QTimer(reply);
    silence->setSingleShot(true);
    silence->setInterval(patience);
    const auto heard = qOverload<>(&QTimer::start);
    QObject::connect(reply, &QNetworkReply::metaDataChanged, silence, heard);
    QObject::connect(reply, &QNetworkReply::readyRead, silence, heard);
    QObject::connect(silence, &QTimer::timeout, context, [silence, giveUp] {
        // While the window stood still, what has come was not heard either: it is heard first.
        QTimer::singleShot(0, silence, [silence, giveUp] {
            if (!silence->isActive())
                giveUp();
        });
    });
    silence->start();
}

} // namespace

QUrl ContentServer::urlOf(const QUrl& base, const QString& relativePath)
{
    QUrl url = base;
    url.setPath(base.path(QUrl::FullyDecoded) + u'/' + relativePath, QUrl::DecodedMode);
    return url;
}

QNetworkReply* ContentServer::get(QNetworkAccessManager& network, const QUrl& url, qint64 maxBytes,
                                  std::chrono::milliseconds patience, const QObject* context,
                                  const std::function<void(const Answer&)>& ended)
{
    QNetworkReply* reply = network.get(QNetworkRequest(url));
    // Null once the request has ended, which later events find out.
    const auto running = std::make_shared<QPointer<QNetworkReply>>(reply);
    const auto endWith = [running, ended](const Answer& answer) {
        // A reply that is aborted instead may warn on the error stream if it fails as well.
        (*running)->deleteLater();
        running->clear();
        ended(answer);
    };
    const auto end = [running, maxBytes, endWith] {
        if (*running)
            endWith(answerOf(**running, maxBytes));
    };
    const auto giveUp = [running, endWith] {
        if (*running)
            endWith({{}, QCoreApplication::translate("ContentServer", "El servidor no responde.")});
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
    watchSilence(reply, patience, context, giveUp);
    boundBuffer(reply, maxBytes);
    return reply;
}
