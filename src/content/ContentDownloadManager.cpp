#include "content/ContentDownloadManager.h"

#include "content/ContentCatalog.h"
#include "content/ContentFiles.h"
#include "content/ContentServer.h"
#include "content/InstallPlan.h"
#include "content/InstalledContentRegistry.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "files/WholeFile.h"

#include <QFile>
#include <QFileInfo>
#include <QNetworkReply>

using namespace Qt::Literals::StringLiterals;

// Ids come by reference and may stand in a list that a slot changes, so what is told is a copy; and
// telling the outcome is the last thing done, since a slot may start another install.

ContentDownloadManager::ContentDownloadManager(ContentCatalog* catalog,
                                               InstalledContentRegistry* registry,
                                               LoopLibrary* library, InstrumentLibrary* instruments,
                                               QObject* parent)
    : QObject(parent), catalog_(catalog), registry_(registry), library_(library),
      instruments_(instruments)
{}

ContentDownloadManager::~ContentDownloadManager()
{
    if (reply_)
        reply_->deleteLater();
}

// ---- Installing ----------------------------------------------------------------------------

void ContentDownloadManager::installRhythm(const QString& rhythmId)
{
    const QString id = rhythmId;
    if (busy_) {
        emit installFailed(id, tr("Ya hay una descarga en curso."));
        return;
    }
    if (InstallPlan::isProgramsOwn(id, *library_, *registry_)) {
        emit installFailed(id, tr("El ritmo %1 ya vino con el programa.").arg(id));
        return;
    }
    if (registry_->isRhythmInstalled(id)) {
        emit rhythmInstalled(id);
        return;
    }
    busy_ = true;
    currentRhythmId_ = id;
    contentBytes_.clear();
    grooveBytes_.clear();
    pendingInstruments_.clear();
    writtenBanks_.clear();
    if (!ContentFiles::isPlainFileName(id))
        return fail(
            tr("Paquete inválido: %1").arg(tr("el id del ritmo no sirve como nombre de archivo")));
    emit progress(tr("Descargando %1...").arg(id));
    get("content/"_L1 + id + ".content.json"_L1, ContentServer::kMaxJsonBytes,
        &ContentDownloadManager::takeContent);
}

void ContentDownloadManager::get(const QString& relativePath, qint64 maxBytes, Step next)
{
    const QUrl url = ContentServer::urlOf(catalog_->baseUrl(), relativePath);
    const int request = ++lastRequest_;
    const auto ended = [this, next, request](const ContentServer::Answer& answer) {
        if (request != lastRequest_)
            return;
        if (answer.error.isEmpty())
            (this->*next)(answer.body);
        else
            fail(answer.error);
    };
    reply_ = ContentServer::get(*catalog_->networkManager(), url, maxBytes, catalog_->patience(),
                                this, ended);
}

void ContentDownloadManager::takeContent(const QByteArray& body)
{
    contentBytes_ = body;
    get("grooves/"_L1 + currentRhythmId_ + ".groove.json"_L1, ContentServer::kMaxJsonBytes,
        &ContentDownloadManager::takeGroove);
}

void ContentDownloadManager::takeGroove(const QByteArray& body)
{
    grooveBytes_ = body;
    checkPackage();
}

void ContentDownloadManager::checkPackage()
{
    QString error;
    QList<Instrument> recorded;
    if (!InstallPlan::readRecorded(contentBytes_, &recorded, &error) ||
        !InstallPlan::isOfRhythm(currentRhythmId_, contentBytes_, grooveBytes_, *library_,
                                 &error) ||
        !InstallPlan::keepToBankRoot(recorded, instruments_->bankRoot(), &error))
        return fail(tr("Paquete inválido: %1").arg(error));
    pendingInstruments_ = InstallPlan::banksToFetch(recorded, *instruments_);
    fetchNextInstrument();
}

void ContentDownloadManager::fetchNextInstrument()
{
    if (pendingInstruments_.isEmpty())
        return finishInstall();
    currentInstrumentId_ = pendingInstruments_.takeFirst();
    emit progress(tr("Descargando instrumento %1...").arg(currentInstrumentId_));
    get(ContentFiles::bankFile(currentInstrumentId_), ContentServer::kMaxBankBytes,
        &ContentDownloadManager::takeBank);
}

void ContentDownloadManager::takeBank(const QByteArray& body)
{
    // A bank that is there is never fetched again, and one that is none would stay silent for ever.
    if (!ContentFiles::isSoundFont(body))
        return fail(tr("Paquete inválido: %1")
                        .arg(tr("el banco de %1 no es un SoundFont").arg(currentInstrumentId_)));
    const QString path =
        instruments_->bankRoot() + u'/' + ContentFiles::bankFile(currentInstrumentId_);
    if (!ContentFiles::replaceFile(path, body))
        return fail(tr("No pude guardar %1").arg(QFileInfo(path).fileName()));
    writtenBanks_.append(path);
    fetchNextInstrument();
}

void ContentDownloadManager::finishInstall()
{
    if (!enlistAndPlace())
        return fail(tr("No pude guardar el contenido del ritmo."));
    // A rhythm without its groove is still of use.
    ContentFiles::replaceFile(groovePath(currentRhythmId_), grooveBytes_);
    library_->reload();
    busy_ = false;
    const QString id = currentRhythmId_;
    emit rhythmInstalled(id);
}

/// A package that is nowhere listed could never be uninstalled: it is listed while its bytes are on
/// the disk and it does not stand in its place yet.
bool ContentDownloadManager::enlistAndPlace()
{
    QList<Instrument> recorded;
    InstallPlan::readRecorded(contentBytes_, &recorded, nullptr);
    bool enlisted = false;
    const auto enlist = [&] {
        enlisted = true;
        return registry_->registerRhythm(currentRhythmId_, InstallPlan::records(recorded));
    };
    if (ContentFiles::replaceFile(contentPath(currentRhythmId_), contentBytes_, enlist))
        return true;
    if (enlisted)
        registry_->load();
    return false;
}

void ContentDownloadManager::fail(const QString& message)
{
    busy_ = false;
    const QString id = currentRhythmId_;
    emit installFailed(id, message);
}

void ContentDownloadManager::cancelInstall()
{
    if (!busy_)
        return;
    ++lastRequest_;
    if (reply_)
        reply_->deleteLater();
    // Package and groove are written when nothing is left to wait for.
    for (const QString& bank : std::as_const(writtenBanks_))
        QFile::remove(bank);
    busy_ = false;
    const QString id = currentRhythmId_;
    emit installCancelled(id);
}

// ---- Uninstalling --------------------------------------------------------------------------

bool ContentDownloadManager::uninstallRhythm(const QString& rhythmId)
{
    const QString id = rhythmId;
    if (!registry_->isRhythmInstalled(id))
        return false;
    QList<Instrument> recorded;
    // A damaged registry may list anything, and no file is named by it.
    if (ContentFiles::isPlainFileName(id)) {
        if (const auto package = WholeFile::read(contentPath(id), ContentServer::kMaxJsonBytes))
            InstallPlan::readRecorded(*package, &recorded, nullptr);
        QFile::remove(contentPath(id));
        QFile::remove(groovePath(id));
    }
    registry_->unregisterRhythm(id, InstallPlan::ids(recorded));
    library_->reload();
    emit rhythmUninstalled(id);
    return true;
}

QString ContentDownloadManager::contentPath(const QString& rhythmId) const
{
    return library_->installedDir() + u'/' + rhythmId + ".content.json"_L1;
}

QString ContentDownloadManager::groovePath(const QString& rhythmId) const
{
    return library_->groovesDir() + u'/' + rhythmId + ".groove.json"_L1;
}
