#include "content/LoopLibrary.h"

#include "content/InstrumentLibrary.h"
#include "content/ShippedRhythms.h"
#include "files/JsonFile.h"

#include <QDir>
#include <QFileInfo>
#include <QtConcurrentMap>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Far above any package within the bounds.
constexpr qint64 kMaxFileBytes = 16 * 1024 * 1024;

const QString kInstalled = u"installed"_s;
const QString kGrooves = u"grooves"_s;
const QString kPackageSuffix = u".content.json"_s;
const QString kGrooveSuffix = u".groove.json"_s;

/// A file's name without its folder and a suffix of this length.
QString baseName(const QString& path, const QString& suffix)
{
    return QFileInfo(path).fileName().chopped(suffix.size());
}

QStringList sortedFiles(const QString& dirPath, const QString& nameFilter)
{
    const QDir dir(dirPath);
    QStringList paths;
    for (const QString& name : dir.entryList({nameFilter}, QDir::Files, QDir::Name))
        paths.append(dir.filePath(name));
    return paths;
}

template <typename Record>
void addIds(const QList<Record>& records, QString Record::*id, QSet<QString>* ids)
{
    for (const Record& record : records)
        ids->insert(record.*id);
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
    : LoopLibrary(ContentFolder(rootDir), instruments, parent)
{}

LoopLibrary::LoopLibrary(const ContentFolder& root, InstrumentLibrary* instruments, QObject* parent)
    : QObject(parent), root_(root), instrumentLibrary_(instruments)
{}

QString LoopLibrary::installedDir() const
{
    return root_.subfolder(kInstalled).written();
}

QString LoopLibrary::groovesDir() const
{
    return root_.subfolder(kGrooves).written();
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

bool LoopLibrary::hasPackageFile(const QString& rhythmId) const
{
    return foldedFileNames_.contains(rhythmId.toCaseFolded());
}

bool LoopLibrary::cameWithProgram(const QString& rhythmId) const
{
    return ShippedRhythms::contains(rhythmId) || ownRhythms_.contains(rhythmId.toCaseFolded());
}

void LoopLibrary::reload()
{
    clear();
    const QList<Package> packages = readPackages();
    for (const Package& package : packages) {
        if (ShippedRhythms::contains(package.rhythm.id) && !isImpostor(package))
            noteShipped(package);
    }
    QList<Instrument> instruments;
    for (const Package& package : packages) {
        if (isImpostor(package)) {
            refused_.append(package.fileName);
            continue;
        }
        add(package);
        std::ranges::copy_if(package.instruments, std::back_inserter(instruments),
                             [&](const Instrument& instrument) {
                                 return package.own || !ownInstruments_.contains(instrument.id);
                             });
    }
    for (const QString& folder : root_.subfolder(kGrooves).inReadingOrder())
        loadGrooves(folder);
    if (instrumentLibrary_)
        instrumentLibrary_->registerInstruments(instruments);
    writeManifest();
    emit libraryChanged();
}

/// What is its own wherever in the order of the files it stands.
void LoopLibrary::noteShipped(const Package& package)
{
    addIds(package.layers, &LoopLayer::id, &shippedLayers_);
    if (!shippedStyles_.contains(package.style.id))
        shippedStyles_.insert(package.style.id, package.style);
}

void LoopLibrary::clear()
{
    styles_.clear();
    rhythms_.clear();
    layers_.clear();
    variants_.clear();
    grooves_.clear();
    refused_.clear();
    foldedFileNames_.clear();
    ownRhythms_.clear();
    ownInstruments_.clear();
    shippedLayers_.clear();
    shippedStyles_.clear();
}

QList<LoopLibrary::Package> LoopLibrary::readPackages()
{
    readAhead();
    QList<Package> packages;
    for (Package& package : std::exchange(ahead_, {}).results()) {
        foldedFileNames_.insert(package.fileName.toCaseFolded());
        if (package.own)
            ownRhythms_.insert(package.fileName.toCaseFolded());
        if (package.state == Package::State::Kept)
            packages.append(std::move(package));
        else if (package.state == Package::State::Refused)
            refused_.append(package.fileName);
    }
    return packages;
}

void LoopLibrary::readAhead()
{
    if (ahead_.isValid())
        return;

    struct File {
        QString path;
        bool own;
    };

    QList<File> files;
    const ContentFolder installed = root_.subfolder(kInstalled);
    for (const QString& folder : installed.inReadingOrder()) {
        const bool own = installed.isSplit() && folder == installed.own();
        for (const QString& path : sortedFiles(folder, u'*' + kPackageSuffix))
            files.append({path, own});
    }
    ahead_ = QtConcurrent::mapped(
        files, [](const File& file) { return readPackage(file.path, file.own); });
}

LoopLibrary::Package LoopLibrary::readPackage(const QString& path, bool own)
{
    Package package;
    package.fileName = baseName(path, kPackageSuffix);
    package.own = own;
    const auto json = JsonFile::readObject(path, kMaxFileBytes);
    if (!json)
        return package;
    const bool kept =
        ContentPackage::parse(*json, &package.style, &package.rhythm, &package.instruments,
                              &package.layers, &package.variants, nullptr) &&
        !ShippedRhythms::isImpostor(package.fileName, package.rhythm.id);
    package.state = kept ? Package::State::Kept : Package::State::Refused;
    return package;
}

bool LoopLibrary::isImpostor(const Package& package) const
{
    if (ShippedRhythms::contains(package.rhythm.id))
        return !package.own && ownRhythms_.contains(package.rhythm.id.toCaseFolded());
    return claimsShippedLayer(package.layers, package.variants) ||
           (!package.own && (ownRhythms_.contains(package.fileName.toCaseFolded()) ||
                             ownRhythms_.contains(package.rhythm.id.toCaseFolded())));
}

bool LoopLibrary::claimsShippedLayer(const QList<LoopLayer>& layers,
                                     const QList<LoopVariant>& variants) const
{
    const auto isShipped = [this](const QString& id) { return shippedLayers_.contains(id); };
    return std::ranges::any_of(layers, isShipped, &LoopLayer::id) ||
           std::ranges::any_of(variants, isShipped, &LoopVariant::layerId);
}

void LoopLibrary::add(const Package& package)
{
    const MusicalStyle style = shippedStyles_.value(package.style.id, package.style);
    const bool styleKnown =
        std::ranges::find(styles_, style.id, &MusicalStyle::id) != styles_.end();
    if (!style.id.isEmpty() && !styleKnown)
        styles_.append(style);
    rhythms_.append(package.rhythm);
    layers_.append(package.layers);
    variants_.append(package.variants);
    if (!package.own)
        return;
    ownRhythms_.insert(package.rhythm.id.toCaseFolded());
    addIds(package.layers, &LoopLayer::id, &shippedLayers_);
    addIds(package.instruments, &Instrument::id, &ownInstruments_);
}

void LoopLibrary::loadGrooves(const QString& folder)
{
    const QSet<QString> loaded(grooves_.keyBegin(), grooves_.keyEnd());
    for (const QString& path : sortedFiles(folder, u'*' + kGrooveSuffix)) {
        const auto json = JsonFile::readObject(path, kMaxFileBytes);
        if (!json)
            continue;
        const QString fileName = baseName(path, kGrooveSuffix);
        const GrooveTemplate groove = ContentPackage::parseGroove(*json);
        if (!ContentPackage::isGrooveWithinBounds(*json) ||
            ShippedRhythms::isImpostor(fileName, groove.rhythmId))
            refused_.append(fileName);
        else if (!groove.rhythmId.isEmpty() && !loaded.contains(groove.rhythmId))
            grooves_.insert(groove.rhythmId, groove);
    }
}

bool LoopLibrary::writeManifest() const
{
    const QByteArray text = ContentPackage::writeManifest(styles_, rhythms_, layers_, variants_);
    const QString path = root_.written() + "/manifest.json"_L1;
    if (root_.isSplit())
        QDir().mkpath(root_.written());
    // The disk is not made to wait for what it already holds.
    return WholeFile::read(path, text.size()) == text || WholeFile::rewrite(path, text);
}
