#include "content/InstallPlan.h"

#include "content/ContentFiles.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <iterator>

using namespace Qt::Literals::StringLiterals;

namespace {

/// What is wrong, in words that complete a message of the download manager.
QString flawOf(const Instrument& instrument, const QString& bankRoot)
{
    if (!ContentFiles::isPlainFileName(instrument.id))
        return QCoreApplication::translate(
            "ContentDownloadManager", "el id de un instrumento no sirve como nombre de archivo");
    const QString bank = ContentFiles::bankFile(instrument.id);
    if (instrument.soundfontBankPath != bank || !ContentFiles::staysInside(bankRoot, bank))
        return QCoreApplication::translate("ContentDownloadManager",
                                           "el banco de %1 no está en su carpeta")
            .arg(instrument.id);
    return {};
}

QString flawOf(const QString& rhythmId, const QByteArray& package, const QByteArray& groove,
               const LoopLibrary& library)
{
    Rhythm rhythm;
    QList<LoopLayer> layers;
    QList<LoopVariant> variants;
    QString error;
    if (!ContentPackage::parse(QJsonDocument::fromJson(package).object(), nullptr, &rhythm, nullptr,
                               &layers, &variants, &error))
        return error;
    if (rhythm.id != rhythmId)
        return QCoreApplication::translate("ContentDownloadManager", "es de otro ritmo");
    if (library.claimsShippedLayer(layers, variants))
        return QCoreApplication::translate("ContentDownloadManager",
                                           "cambia un ritmo que vino con el programa");
    const QJsonObject offsets = QJsonDocument::fromJson(groove).object();
    if (!ContentPackage::isGrooveWithinBounds(offsets))
        return QCoreApplication::translate("ContentDownloadManager",
                                           "tiene un groove demasiado largo");
    return {};
}

} // namespace

bool InstallPlan::readRecorded(const QByteArray& package, QList<Instrument>* recorded,
                               QString* error)
{
    QList<Instrument> instruments;
    const QJsonDocument document = QJsonDocument::fromJson(package);
    if (!document.isObject() || !ContentPackage::parse(document.object(), nullptr, nullptr,
                                                       &instruments, nullptr, nullptr, error))
        return false;
    std::ranges::copy_if(instruments, std::back_inserter(*recorded), [](const Instrument& each) {
        return each.source == InstrumentSource::CustomRecordedBank;
    });
    return true;
}

bool InstallPlan::isProgramsOwn(const QString& rhythmId, const LoopLibrary& library,
                                const InstalledContentRegistry& registry)
{
    return library.cameWithProgram(rhythmId) ||
           (library.hasPackageFile(rhythmId) && !registry.isRhythmInstalled(rhythmId));
}

bool InstallPlan::isOfRhythm(const QString& rhythmId, const QByteArray& package,
                             const QByteArray& groove, const LoopLibrary& library, QString* error)
{
    const QString flaw = flawOf(rhythmId, package, groove, library);
    if (error && !flaw.isEmpty())
        *error = flaw;
    return flaw.isEmpty();
}

bool InstallPlan::keepToBankRoot(const QList<Instrument>& recorded, const QString& bankRoot,
                                 QString* error)
{
    for (const Instrument& instrument : recorded) {
        const QString flaw = flawOf(instrument, bankRoot);
        if (flaw.isEmpty())
            continue;
        if (error)
            *error = flaw;
        return false;
    }
    return true;
}

QStringList InstallPlan::banksToFetch(const QList<Instrument>& recorded,
                                      const InstrumentLibrary& library)
{
    QStringList missing;
    for (const Instrument& instrument : recorded) {
        if (!library.customBankAvailable(instrument))
            missing.append(instrument.id);
    }
    return missing;
}

QList<InstalledInstrumentRecord> InstallPlan::records(const QList<Instrument>& recorded)
{
    QList<InstalledInstrumentRecord> records;
    for (const Instrument& instrument : recorded)
        records.append({instrument.id, instrument.soundfontBankPath, 1});
    return records;
}

QStringList InstallPlan::ids(const QList<Instrument>& recorded)
{
    QStringList ids;
    for (const Instrument& instrument : recorded)
        ids.append(instrument.id);
    return ids;
}
