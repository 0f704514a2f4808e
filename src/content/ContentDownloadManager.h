#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QStringList>

class ContentCatalog;
class InstalledContentRegistry;
class InstrumentLibrary;
class LoopLibrary;
class QNetworkReply;

/// Installs rhythms from the content server, one at a time, and uninstalls them again.
///
/// An install fetches the package, the groove and then the banks that are missing, one after the
/// other, and writes package and groove once everything is there. Deleting the object ends it; what
/// was written stays.
class ContentDownloadManager : public QObject {
    Q_OBJECT

public:
    /// Nothing is owned; all four must outlive every install.
    ContentDownloadManager(ContentCatalog* catalog, InstalledContentRegistry* registry,
                           LoopLibrary* library, InstrumentLibrary* instruments,
                           QObject* parent = nullptr);
    ~ContentDownloadManager() override;

    /// Starts an install; rhythmInstalled() or installFailed() tells the outcome. It is refused at
    /// once while another one runs, and done at once for a rhythm that is installed.
    void installRhythm(const QString& rhythmId);

    /// Ends the install that is under way, without a trace of it; installCancelled() tells so. Does
    /// nothing if there is none.
    void cancelInstall();

    /// Deletes what only this rhythm uses. False for a rhythm that was not downloaded.
    bool uninstallRhythm(const QString& rhythmId);

    /// Whether an install is under way.
    bool isBusy() const { return busy_; }

signals:
    /// `message` is for the status line.
    void progress(const QString& message);

    void rhythmInstalled(const QString& rhythmId);

    /// `message` is for the user.
    void installFailed(const QString& rhythmId, const QString& message);

    void installCancelled(const QString& rhythmId);

    void rhythmUninstalled(const QString& rhythmId);

private:
    using Step = void (ContentDownloadManager::*)(const QByteArray& body);

    void get(const QString& relativePath, qint64 maxBytes, Step next);
    void takeContent(const QByteArray& body);
    void takeGroove(const QByteArray& body);
    void checkPackage();
    void fetchNextInstrument();
    void takeBank(const QByteArray& body);
    void finishInstall();
    bool enlistAndPlace();
    void fail(const QString& message);
    QString contentPath(const QString& rhythmId) const;
    QString groovePath(const QString& rhythmId) const;

    ContentCatalog* catalog_;
    InstalledContentRegistry* registry_;
    LoopLibrary* library_;
    InstrumentLibrary* instruments_;
    bool busy_ = false;
    QString currentRhythmId_;
    QByteArray contentBytes_;
    QByteArray grooveBytes_;
    QStringList pendingInstruments_;
    QString currentInstrumentId_;
    /// Paths of the banks that the present install has written.
    QStringList writtenBanks_;
    /// Tells answers that are still awaited from those of an install that was cancelled.
    int lastRequest_ = 0;
    // A child of the network manager; null while nothing is under way.
    QPointer<QNetworkReply> reply_;
};
