#pragma once

#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/ContentHost.h"
#include "content/InstalledContentRegistry.h"
#include "support/Await.h"
#include "support/ContentFixture.h"
#include "support/TinyBank.h"

#include <QDirIterator>
#include <QMap>
#include <QSignalSpy>
#include <QTest>

#include <memory>

/// A library in a temporary folder, among files that are not its own, and the downloads into it.
class DownloadStage {
public:
    explicit DownloadStage(const QUrl& server)
        : registry(content.root() + QStringLiteral("/installed_registry.json"), content.bankRoot()),
          catalog(server), downloads(std::make_unique<ContentDownloadManager>(
                               &catalog, &registry, &content.library(), &content.instruments())),
          progress(downloads.get(), &ContentDownloadManager::progress),
          installed(downloads.get(), &ContentDownloadManager::rhythmInstalled),
          failed(downloads.get(), &ContentDownloadManager::installFailed),
          uninstalled(downloads.get(), &ContentDownloadManager::rhythmUninstalled)
    {
        ContentFixture::write(content.filePath(QStringLiteral("victim.txt")), "precious");
        ContentFixture::write(content.bankRoot() + QStringLiteral("/velta_bank_gm.sf2"), "bank");
        content.addPackage(QStringLiteral("carnavalito"), R"({"rhythm": {"id": "carnavalito"}})");
        content.library().reload();
    }

    /// Every file of the temporary folder, by its path in it.
    QMap<QString, QByteArray> files() const
    {
        QMap<QString, QByteArray> files;
        const QDir dir(content.filePath(QStringLiteral(".")));
        QDirIterator all(dir.path(), QDir::Files | QDir::Hidden | QDir::System,
                         QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString path = all.next();
            files[QDir::cleanPath(dir.relativeFilePath(path))] = ContentFixture::read(path);
        }
        return files;
    }

    /// "installed", or the message of the failure; another sentence if not just one of them comes.
    QString install(const QString& id)
    {
        installed.clear();
        failed.clear();
        downloads->installRhythm(id);
        const auto outcomes = [this] { return installed.size() + failed.size(); };
        if (!await([&] { return outcomes() > 0; }))
            return QStringLiteral("no signal");
        QTest::qWait(10);
        if (outcomes() > 1)
            return QStringLiteral("more than one signal");
        const QList<QVariant> told = installed.isEmpty() ? failed[0] : installed[0];
        if (told[0].toString() != id)
            return QStringLiteral("a signal for another rhythm");
        return installed.isEmpty() ? told[1].toString() : QStringLiteral("installed");
    }

    QString bank(const QString& id) const
    {
        return content.bankRoot() + QStringLiteral("/instruments/%1.sf2").arg(id);
    }

    ContentFixture content;
    InstalledContentRegistry registry;
    ContentCatalog catalog;
    std::unique_ptr<ContentDownloadManager> downloads;
    QSignalSpy progress;
    QSignalSpy installed;
    QSignalSpy failed;
    QSignalSpy uninstalled;
};

/// A package with one layer for each of its recorded instruments.
inline QByteArray packageWith(const QString& rhythmId, const QStringList& recordedIds)
{
    QJsonArray instruments;
    QJsonArray layers;
    for (const QString& id : recordedIds) {
        instruments.append(QJsonObject{
            {QStringLiteral("id"), id},
            {QStringLiteral("source"), QStringLiteral("CustomRecordedBank")},
            {QStringLiteral("soundfontBankPath"), QStringLiteral("instruments/%1.sf2").arg(id)}});
        layers.append(QJsonObject{{QStringLiteral("id"), QString(rhythmId + u'_' + id)},
                                  {QStringLiteral("rhythmId"), rhythmId},
                                  {QStringLiteral("instrumentId"), id}});
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("rhythm"),
                                      QJsonObject{{QStringLiteral("id"), rhythmId}}},
                                     {QStringLiteral("instruments"), instruments},
                                     {QStringLiteral("loopLayers"), layers}})
        .toJson();
}

inline QByteArray grooveOf(const QString& rhythmId)
{
    return QStringLiteral(R"({"rhythmId": "%1", "offsets": [{"position": 1}]})")
        .arg(rhythmId)
        .toUtf8();
}

/// A whole SoundFont.
inline QByteArray someBank()
{
    return TinyBank::bytes({{0, 0, 100}});
}

/// Offers a rhythm with its groove and banks.
inline void offer(ContentHost& host, const QString& id, const QStringList& recordedIds,
                  const QString& base = {})
{
    host.put(base + QStringLiteral("/content/") + id + QStringLiteral(".content.json"),
             packageWith(id, recordedIds));
    host.put(base + QStringLiteral("/grooves/") + id + QStringLiteral(".groove.json"),
             grooveOf(id));
    for (const QString& instrument : recordedIds)
        host.put(base + QStringLiteral("/instruments/") + instrument + QStringLiteral(".sf2"),
                 someBank());
}
