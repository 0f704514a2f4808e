#pragma once

#include "content/ContentServer.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QLatin1StringView>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QUrl>

class QNetworkAccessManager;

/// A rhythm that the content server offers.
struct CatalogEntry {
    QString rhythmId;
    QString displayName;
    QString styleId;
    QString styleDisplayName;
    qint64 estimatedDownloadBytes = 0;
    QStringList instrumentIds;

    friend bool operator==(const CatalogEntry&, const CatalogEntry&) = default;
};

/// The list of the rhythms that the content server offers. It also holds the network access of
/// everything that comes from that server.
class ContentCatalog : public QObject {
    Q_OBJECT

public:
    /// The most entries of a catalogue. One of more is no catalogue of rhythms.
    static constexpr qsizetype kMaxEntries = 10000;

    /// Names that are longer are cut.
    static constexpr qsizetype kMaxNameLength = 200;

    /// Starts without entries and fetches nothing. The catalogue is `baseUrl`/catalog.json. The
    /// server is given up when it keeps silent for longer than `patience`.
    explicit ContentCatalog(const QUrl& baseUrl, QObject* parent = nullptr,
                            std::chrono::milliseconds patience = ContentServer::kPatience);

    /// What an administrator sets for everybody on a computer: lines of NAME=value, ";" opens a
    /// comment.
    static constexpr QLatin1StringView kSettingsPath{"/etc/velta/velta.conf"};

    /// The address that the environment variable VELTA_CONTENT_URL names, or if it is not set the
    /// settings under that name; invalid if it is empty there. A server on this computer if neither
    /// says any.
    static QUrl urlFromEnvironment(const QString& settingsPath = kSettingsPath);

    /// The entries of a catalogue in the order of the file. Those without a rhythm id are dropped.
    static QList<CatalogEntry> parse(const QJsonObject& json);

    /// Fetches the catalogue; a signal tells the outcome. A failure leaves everything as it was.
    void refresh();

    /// The first entry of this rhythm, or null. Lives until the next catalogLoaded().
    const CatalogEntry* findEntry(const QString& rhythmId) const;

    /// In the order of the file.
    const QList<CatalogEntry>& entries() const { return entries_; }

    /// Whether any fetch has succeeded.
    bool isLoaded() const { return loaded_; }

    const QUrl& baseUrl() const { return baseUrl_; }

    std::chrono::milliseconds patience() const { return patience_; }

    /// Owned by the catalogue.
    QNetworkAccessManager* networkManager() const { return network_; }

signals:
    void catalogLoaded();

    /// `message` is a sentence for the user.
    void catalogFailed(const QString& message);

private:
    void take(const ContentServer::Answer& answer);

    /// Reads the elements from an index on, over as many turns of the event loop as it takes, and
    /// then tells that the catalogue has come.
    void readOn(const QJsonArray& elements, qsizetype from, QList<CatalogEntry> entries);

    QUrl baseUrl_;
    std::chrono::milliseconds patience_;
    QNetworkAccessManager* network_;
    QList<CatalogEntry> entries_;
    bool loaded_ = false;
};
