#include "content/LoopLibrary.h"

#include "content/InstrumentLibrary.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>

#include <algorithm>
#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace {

std::optional<QJsonObject> readJsonObject(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    return document.isObject() ? std::optional(document.object()) : std::nullopt;
}

QStringList sortedFiles(const QString& dirPath, const QString& nameFilter)
{
    const QDir dir(dirPath);
    QStringList paths;
    for (const QString& name : dir.entryList({nameFilter}, QDir::Files, QDir::Name))
        paths.append(dir.filePath(name));
    return paths;
}

template <typename Record, typename Matches>
const Record* firstMatch(const QList<Record>& records, Matches matches)
{
    const auto found = std::ranges::find_if(records, matches);
    return found == records.end() ? nullptr : &*found;
}

template <typename Record, typename Matches>
QList<Record> allMatches(const QList<Record>& records, Matches matches)
{
    QList<Record> found;
    std::ranges::copy_if(records, std::back_inserter(found), matches);
    return found;
}

} // namespace

LoopLibrary::LoopLibrary(const QString& rootDir, InstrumentLibrary* instruments, QObject* parent)
    : QObject(parent), rootDir_(rootDir), instrumentLibrary_(instruments)
{}

QString LoopLibrary::installedDir() const
{
    return rootDir_ + "/installed"_L1;
}

QString LoopLibrary::groovesDir() const
{
    return rootDir_ + "/grooves"_L1;
}

const Rhythm* LoopLibrary::findRhythm(const QString& id) const
{
    return firstMatch(rhythms_, [&](const Rhythm& rhythm) { return rhythm.id == id; });
}

const LoopLayer* LoopLibrary::findLayer(const QString& id) const
{
    return firstMatch(layers_, [&](const LoopLayer& layer) { return layer.id == id; });
}

const LoopVariant* LoopLibrary::findVariant(const QString& layerId, LoopSection section,
                                            int variantIndex) const
{
    return firstMatch(variants_, [&](const LoopVariant& variant) {
        return variant.variantIndex == variantIndex && variant.section == section &&
               variant.layerId == layerId;
    });
}

QList<Rhythm> LoopLibrary::rhythmsForStyle(const QString& styleId) const
{
    return allMatches(rhythms_, [&](const Rhythm& rhythm) { return rhythm.styleId == styleId; });
}

QList<LoopLayer> LoopLibrary::layersForRhythm(const QString& rhythmId) const
{
    return allMatches(layers_, [&](const LoopLayer& layer) { return layer.rhythmId == rhythmId; });
}

QList<LoopVariant> LoopLibrary::variantsFor(const QString& layerId, LoopSection section) const
{
    QList<LoopVariant> variants = allMatches(variants_, [&](const LoopVariant& variant) {
        return variant.layerId == layerId && variant.section == section;
    });
    std::ranges::stable_sort(variants, {}, &LoopVariant::variantIndex);
    return variants;
}

const GrooveTemplate* LoopLibrary::grooveForRhythm(const QString& rhythmId) const
{
    const auto found = grooves_.constFind(rhythmId);
    return found == grooves_.cend() ? nullptr : &*found;
}

void LoopLibrary::reload()
{
    styles_.clear();
    rhythms_.clear();
    layers_.clear();
    variants_.clear();
    grooves_.clear();
    for (const QString& path : sortedFiles(installedDir(), u"*.content.json"_s))
        loadContentFile(path);
    for (const QString& path : sortedFiles(groovesDir(), u"*.groove.json"_s))
        loadGrooveFile(path);
    writeManifest();
    emit libraryChanged();
}

void LoopLibrary::loadContentFile(const QString& path)
{
    const auto json = readJsonObject(path);
    MusicalStyle style;
    Rhythm rhythm;
    QList<Instrument> instruments;
    QList<LoopLayer> layers;
    QList<LoopVariant> variants;
    if (!json ||
        !parseContentPackage(*json, &style, &rhythm, &instruments, &layers, &variants, nullptr))
        return;

    const bool styleKnown =
        std::ranges::find(styles_, style.id, &MusicalStyle::id) != styles_.end();
    if (!style.id.isEmpty() && !styleKnown)
        styles_.append(style);
    rhythms_.append(rhythm);
    layers_.append(layers);
    variants_.append(variants);
    if (instrumentLibrary_) {
        for (const Instrument& instrument : instruments)
            instrumentLibrary_->registerInstrument(instrument);
    }
}

void LoopLibrary::loadGrooveFile(const QString& path)
{
    const auto json = readJsonObject(path);
    if (!json)
        return;
    const GrooveTemplate groove = ContentPackage::parseGroove(*json);
    if (!groove.rhythmId.isEmpty())
        grooves_.insert(groove.rhythmId, groove);
}

bool LoopLibrary::writeManifest() const
{
    QFile file(rootDir_ + "/manifest.json"_L1);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    file.write(QJsonDocument(ContentPackage::writeManifest(styles_, rhythms_, layers_, variants_))
                   .toJson());
    return true;
}

bool LoopLibrary::parseContentPackage(const QJsonObject& json, MusicalStyle* style, Rhythm* rhythm,
                                      QList<Instrument>* instruments, QList<LoopLayer>* layers,
                                      QList<LoopVariant>* variants, QString* error)
{
    return ContentPackage::parse(json, style, rhythm, instruments, layers, variants, error);
}
