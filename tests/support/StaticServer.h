#pragma once

#include "support/ChildProcess.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QUrl>

/// An ordinary web server for the files of a folder, on a port of this computer: python3's own.
class StaticServer {
public:
    /// Serves what is in the folder at the time of each request.
    explicit StaticServer(const QString& folder) : folder_(folder) { start(); }

    ~StaticServer() { stop(); }

    StaticServer(const StaticServer&) = delete;
    StaticServer& operator=(const StaticServer&) = delete;

    /// Returns once the server answers, on the port of its former life if it had one.
    void start()
    {
        endWithTest(process_);
        process_.setStandardErrorFile(QProcess::nullDevice());
        process_.start(QStringLiteral("python3"),
                       {QStringLiteral("-u"), QStringLiteral("-m"), QStringLiteral("http.server"),
                        QString::number(port_), QStringLiteral("--bind"),
                        QStringLiteral("127.0.0.1"), QStringLiteral("-d"), folder_});
        if (!process_.waitForStarted()) {
            problem_ = QStringLiteral("The package python3 is needed: ") + process_.errorString();
            return;
        }
        port_ = announcedPort();
        if (port_ == 0)
            problem_ = QStringLiteral("The web server did not start.");
    }

    /// From here on nobody answers.
    void stop()
    {
        process_.kill();
        process_.waitForFinished();
    }

    /// Why nothing is served; empty if all is well.
    QString problem() const { return problem_; }

    /// The address of the folder, without a slash at its end.
    QUrl url() const { return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(port_)); }

private:
    /// The port of the line that is printed when the server listens; 0 if none is.
    int announcedPort()
    {
        static const QRegularExpression announcement(QStringLiteral("port (\\d+) "));
        const QDeadlineTimer patience(15000);
        QString said;
        while (!patience.hasExpired() && process_.state() == QProcess::Running) {
            process_.waitForReadyRead(100);
            said += QString::fromUtf8(process_.readAllStandardOutput());
            if (const auto match = announcement.match(said); match.hasMatch())
                return match.captured(1).toInt();
        }
        return 0;
    }

    QString folder_;
    QProcess process_;
    int port_ = 0;
    QString problem_;
};
