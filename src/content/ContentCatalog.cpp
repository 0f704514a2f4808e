#include "content/ContentCatalog.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QSettings>
#include <QTimer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Cut towards zero, and held where every double is a whole number of 64 bits.
qint64 wholeBytes(double bytes)
{
    constexpr double kMost = 9.0e18;
    return static_cast<qint64>(std::clamp(bytes, -kMost, kMost));
}

/// The address of the server in the settings of a computer, or the usual one.
QString addressIn(const QString& settingsPath)
{
    const QString usual = u"http://127.0.0.1:8765"_s;
    // Opening a pipe may block for ever.
    if (!QFileInfo(settingsPath).isFile())
        return usual;
    const QSettings settings(settingsPath, QSettings::IniFormat);
    // A comma makes a list of what was written.
    return settings.value("VELTA_CONTENT_URL"_L1, usual).toStringList().join(u',');
}

QStringList readStrings(const QJsonArray& array)
{
    QStringList strings;
    for (const QJsonValue& element : array)
        strings.append(element.toString());
    return strings;
}

CatalogEntry readEntry(const QJsonObject& json)
{
    CatalogEntry entry;
    entry.rhythmId = json["rhythmId"_L1].toString();
    entry.displayName =
        json["displayName"_L1].toString(entry.rhythmId).left(ContentCatalog::kMaxNameLength);
    entry.styleId = json["styleId"_L1].toString();
    entry.styleDisplayName =
        json["styleDisplayName"_L1].toString(entry.styleId).left(ContentCatalog::kMaxNameLength);
    entry.estimatedDownloadBytes = wholeBytes(json["estimatedDownloadBytes"_L1].toDouble());
    entry.instrumentIds = readStrings(json["instrumentIds"_L1].toArray());
    return entry;
}

void appendEntries(const QJsonArray& elements, qsizetype from, qsizetype to,
                   QList<CatalogEntry>* entries)
{
    for (qsizetype i = from; i < to; ++i) {
        const CatalogEntry entry = readEntry(elements.at(i).toObject());
        if (!entry.rhythmId.isEmpty())
            entries->append(entry);
    }
}

} // namespace

ContentCatalog::ContentCatalog(const QUrl& baseUrl, QObject* parent,
                               std::chrono::milliseconds patience)
    : QObject(parent), baseUrl_(baseUrl), patience_(patience),
      network_(new QNetworkAccessManager(this))
{}

QUrl ContentCatalog::urlFromEnvironment(const QString& settingsPath)
{
    return QUrl(qEnvironmentVariable("VELTA_CONTENT_URL", addressIn(settingsPath)));
}

QList<CatalogEntry> ContentCatalog::parse(const QJsonObject& json)
{
    QList<CatalogEntry> entries;
    const QJsonArray elements = json["rhythms"_L1].toArray();
    appendEntries(elements, 0, elements.size(), &entries);
    return entries;
}

void ContentCatalog::refresh()
{
    if (!baseUrl_.isValid()) {
        emit catalogFailed(tr("No hay una URL de catálogo configurada."));
        return;
    }
    const QUrl url = ContentServer::urlOf(baseUrl_, u"catalog.json"_s);
    ContentServer::get(*network_, url, ContentServer::kMaxJsonBytes, patience_, this,
                       [this](const ContentServer::Answer& answer) { take(answer); });
}

void ContentCatalog::take(const ContentServer::Answer& answer)
{
    if (!answer.error.isEmpty()) {
        emit catalogFailed(answer.error);
        return;
    }
    const QJsonDocument document = QJsonDocument::fromJson(answer.body);
    if (!document.isObject() || document["rhythms"_L1].toArray().size() > kMaxEntries) {
        emit catalogFailed(tr("catalog.json inválido."));
        return;
    }
    readOn(document["rhythms"_L1].toArray(), 0, {});
}

void ContentCatalog::readOn(const QJsonArray& elements, qsizetype from, QList<CatalogEntry> entries)
{
    // A turn of the event loop reads no more than goes unnoticed.
    constexpr qsizetype kPerTurn = 500;
    const qsizetype to = std::min(from + kPerTurn, elements.size());
    appendEntries(elements, from, to, &entries);
    if (to < elements.size()) {
        QTimer::singleShot(0, this,
                           [this, elements, to, entries] { readOn(elements, to, entries); });
        return;
    }
    entries_ = entries;
    loaded_ = true;
    emit catalogLoaded();
}

const CatalogEntry* ContentCatalog::findEntry(const QString& rhythmId) const
{
    const auto found = std::ranges::find(entries_, rhythmId, &CatalogEntry::rhythmId);
    return found == entries_.end() ? nullptr : &*found;
}
