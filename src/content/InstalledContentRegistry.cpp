#include "content/InstalledContentRegistry.h"

#include "content/ContentFiles.h"
#include "content/ShippedRhythms.h"
#include "files/JsonFile.h"
#include "records/RecordJson.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <iterator>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace {

/// What the registry's file holds.
struct Listed {
    QStringList rhythms;
    QList<InstalledInstrumentRecord> instruments;
};

} // namespace

namespace Records {

template <>
constexpr auto kFields<InstalledInstrumentRecord> = FieldList{
    Field{"instrumentId"_L1, &InstalledInstrumentRecord::instrumentId},
    Field{"localFilePath"_L1, &InstalledInstrumentRecord::localFilePath},
    Field{"referenceCount"_L1, &InstalledInstrumentRecord::referenceCount},
};

template <>
constexpr auto kFields<Listed> = FieldList{
    ListField{"installedInstruments"_L1, &Listed::instruments},
    Field{"installedRhythms"_L1, &Listed::rhythms},
};

} // namespace Records

namespace {

/// Whether a bank stands where the downloads put that of its instrument: no other file is theirs to
/// delete.
bool isInItsPlace(const InstalledInstrumentRecord& record)
{
    return ContentFiles::isPlainFileName(record.instrumentId) &&
           record.localFilePath == ContentFiles::bankFile(record.instrumentId);
}

/// A count one higher or lower, held in its range, which a damaged file may have exhausted.
qint32 stepped(qint32 count, qint32 step)
{
    return static_cast<qint32>(std::clamp<qint64>(qint64(count) + step,
                                                  std::numeric_limits<qint32>::min(),
                                                  std::numeric_limits<qint32>::max()));
}

} // namespace

InstalledContentRegistry::InstalledContentRegistry(const QString& filePath,
                                                   const QString& soundfontsDir, QObject* parent)
    : QObject(parent), filePath_(filePath), soundfontsDir_(soundfontsDir)
{}

InstalledContentRegistry::InstalledContentRegistry(const ContentRoots& roots, QObject* parent)
    : QObject(parent), filePath_(roots.registryFile()),
      soundfontsDir_(roots.soundfonts().written()), ownRhythms_(roots.ownPackages())
{}

void InstalledContentRegistry::load()
{
    installedRhythms_.clear();
    installedInstruments_.clear();
    if (!QFileInfo::exists(filePath_))
        return;
    const auto listed = RecordJson::read<Listed>(
        JsonFile::readObject(filePath_, kMaxFileBytes).value_or(QJsonObject()));
    std::ranges::copy_if(
        listed.rhythms, std::back_inserter(installedRhythms_), [this](const QString& id) {
            return !ShippedRhythms::contains(id) && !ownRhythms_.contains(id.toCaseFolded());
        });
    std::ranges::copy_if(listed.instruments, std::back_inserter(installedInstruments_),
                         isInItsPlace);
    emit registryChanged();
}

bool InstalledContentRegistry::save() const
{
    const QJsonObject json = RecordJson::write(Listed{installedRhythms_, installedInstruments_});
    return WholeFile::rewrite(filePath_, QJsonDocument(json).toJson(QJsonDocument::Indented));
}

bool InstalledContentRegistry::isRhythmInstalled(const QString& rhythmId) const
{
    return installedRhythms_.contains(rhythmId);
}

bool InstalledContentRegistry::isInstrumentInstalled(const QString& instrumentId) const
{
    return std::ranges::find(installedInstruments_, instrumentId,
                             &InstalledInstrumentRecord::instrumentId) !=
           installedInstruments_.end();
}

InstalledInstrumentRecord* InstalledContentRegistry::findInstrument(const QString& instrumentId)
{
    const auto found = std::ranges::find(installedInstruments_, instrumentId,
                                         &InstalledInstrumentRecord::instrumentId);
    return found == installedInstruments_.end() ? nullptr : &*found;
}

bool InstalledContentRegistry::registerRhythm(const QString& rhythmId,
                                              const QList<InstalledInstrumentRecord>& instruments)
{
    if (!isRhythmInstalled(rhythmId))
        installedRhythms_.append(rhythmId);
    for (const InstalledInstrumentRecord& given : instruments) {
        if (!isInItsPlace(given))
            continue;
        if (InstalledInstrumentRecord* known = findInstrument(given.instrumentId))
            known->referenceCount = stepped(known->referenceCount, 1);
        else
            installedInstruments_.append({given.instrumentId, given.localFilePath, 1});
    }
    const bool saved = save();
    emit registryChanged();
    return saved;
}

QStringList InstalledContentRegistry::unregisterRhythm(const QString& rhythmId,
                                                       const QStringList& instrumentIds)
{
    if (!installedRhythms_.removeOne(rhythmId))
        return {};
    QList<InstalledInstrumentRecord> kept;
    QStringList deleted;
    for (InstalledInstrumentRecord record : installedInstruments_) {
        if (instrumentIds.contains(record.instrumentId))
            record.referenceCount = stepped(record.referenceCount, -1);
        if (record.referenceCount >= 1)
            kept.append(record);
        else if (removeBank(record.localFilePath))
            deleted.append(bankPath(record.localFilePath));
    }
    installedInstruments_ = kept;
    save();
    emit registryChanged();
    return deleted;
}

bool InstalledContentRegistry::removeBank(const QString& localFilePath) const
{
    const QString path = bankPath(localFilePath);
    return ContentFiles::staysInside(soundfontsDir_, localFilePath) && QFileInfo(path).isFile() &&
           QFile::remove(path);
}

QString InstalledContentRegistry::bankPath(const QString& localFilePath) const
{
    return soundfontsDir_ + u'/' + localFilePath;
}
