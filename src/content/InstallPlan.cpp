#include "content/InstallPlan.h"

#include "content/ContentDownloadManager.h"
#include "content/ContentFiles.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"

#include <QDir>
#include <QJsonDocument>

#include <algorithm>
#include <iterator>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Uninstalling deletes the banks of a package, and every General MIDI sound comes from this one.
bool isOwnBank(const QString& bankPath)
{
    return QDir::cleanPath(bankPath).compare("velta_bank_gm.sf2"_L1, Qt::CaseInsensitive) == 0;
}

/// What is wrong, in words that complete a message of the download manager.
QString flawOf(const Instrument& instrument, const QString& bankRoot)
{
    if (!ContentFiles::isPlainFileName(instrument.id))
        return ContentDownloadManager::tr(
            "el id de un instrumento no sirve como nombre de archivo");
    const QStringList paths{instrument.soundfontBankPath, InstallPlan::bankFile(instrument.id)};
    const bool stays = std::ranges::all_of(
        paths, [&](const QString& path) { return ContentFiles::staysInside(bankRoot, path); });
    if (!stays || isOwnBank(instrument.soundfontBankPath))
        return ContentDownloadManager::tr("el banco de %1 no está en su carpeta")
            .arg(instrument.id);
    return {};
}

} // namespace

bool InstallPlan::readRecorded(const QByteArray& package, QList<Instrument>* recorded,
                               QString* error)
{
    QList<Instrument> instruments;
    const QJsonDocument document = QJsonDocument::fromJson(package);
    if (!document.isObject() ||
        !LoopLibrary::parseContentPackage(document.object(), nullptr, nullptr, &instruments,
                                          nullptr, nullptr, error))
        return false;
    std::ranges::copy_if(instruments, std::back_inserter(*recorded), [](const Instrument& each) {
        return each.source == InstrumentSource::CustomRecordedBank;
    });
    return true;
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

QString InstallPlan::bankFile(const QString& instrumentId)
{
    return "instruments/"_L1 + instrumentId + ".sf2"_L1;
}
