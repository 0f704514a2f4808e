#include "FuzzLaws.h"
#include "FuzzTargets.h"
#include "content/ContentCatalog.h"
#include "content/ContentFiles.h"
#include "content/ContentPackage.h"
#include "content/InstallPlan.h"
#include "content/InstalledContentRegistry.h"
#include "music/Humanizer.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cmath>

using FuzzLaws::require;
using namespace Qt::Literals::StringLiterals;

namespace {

/// A package as its manifest would have it, which holds all that sounds.
QJsonObject written(const MusicalStyle& style, const Rhythm& rhythm, const QList<LoopLayer>& layers,
                    const QList<LoopVariant>& variants)
{
    QJsonObject json =
        QJsonDocument::fromJson(ContentPackage::writeManifest({style}, {rhythm}, layers, variants))
            .object();
    json["rhythm"_L1] = json["rhythms"_L1].toArray().first();
    json["musicalStyle"_L1] = json["musicalStyles"_L1].toArray().first();
    return json;
}

void requireBanksInTheirPlace(const QByteArray& input)
{
    QList<Instrument> recorded;
    const QString root = FuzzLaws::scratch().filePath(u"banks"_s);
    if (!InstallPlan::readRecorded(input, &recorded, nullptr) ||
        !InstallPlan::keepToBankRoot(recorded, root, nullptr))
        return;
    for (const Instrument& instrument : std::as_const(recorded)) {
        require(!instrument.id.contains(u'/') && !instrument.id.startsWith(u'.'),
                "an instrument is called as a file may be");
        require(instrument.soundfontBankPath == ContentFiles::bankFile(instrument.id),
                "a bank stands in its place");
    }
}

QStringList filesIn(const QDir& dir)
{
    return dir.entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

} // namespace

void FuzzTargets::package(const QByteArray& input)
{
    const QJsonDocument document = QJsonDocument::fromJson(input);
    if (!document.isObject())
        return;
    MusicalStyle style;
    Rhythm rhythm;
    QList<Instrument> instruments;
    QList<LoopLayer> layers;
    QList<LoopVariant> variants;
    QString error;
    const bool taken = ContentPackage::parse(document.object(), &style, &rhythm, &instruments,
                                             &layers, &variants, &error);
    require(taken == error.isEmpty(), "what is refused has a reason");
    if (!taken) {
        require(instruments.isEmpty() && layers.isEmpty() && variants.isEmpty(),
                "what is refused leaves nothing");
        return;
    }
    qsizetype notes = 0;
    for (const LoopVariant& variant : std::as_const(variants))
        notes += variant.notes.size();
    require(instruments.size() <= ContentPackage::kMaxInstruments &&
                layers.size() <= ContentPackage::kMaxLayers &&
                variants.size() <= ContentPackage::kMaxVariants &&
                notes <= ContentPackage::kMaxNotes,
            "a package keeps to its bounds");
    Rhythm rhythmAgain;
    QList<LoopLayer> layersAgain;
    QList<LoopVariant> variantsAgain;
    require(ContentPackage::parse(written(style, rhythm, layers, variants), nullptr, &rhythmAgain,
                                  nullptr, &layersAgain, &variantsAgain, nullptr) &&
                rhythmAgain == rhythm && layersAgain == layers && variantsAgain == variants,
            "the index tells what was read");
    requireBanksInTheirPlace(input);
}

void FuzzTargets::groove(const QByteArray& input)
{
    const QJsonDocument document = QJsonDocument::fromJson(input);
    if (!document.isObject() || !ContentPackage::isGrooveWithinBounds(document.object()))
        return;
    const GrooveTemplate groove = ContentPackage::parseGroove(document.object());
    require(groove.offsets.size() <= ContentPackage::kMaxGrooveOffsets,
            "a groove keeps to its bounds");
    QList<NoteEvent> notes;
    for (int eighth = 0; eighth < 16; ++eighth)
        notes.append({.pitch = 60, .startBeat = eighth * 0.5, .velocity = 90});
    const HumanizeSettings settings{.enabled = true, .intensity = 1.0f, .seed = 7};
    for (const double beatsPerBar : {4.0, 3.0, 0.0}) {
        for (const NoteEvent& note : Humanizer::apply(notes, settings, &groove, beatsPerBar)) {
            require(note.startBeat >= 0.0, "a loosened note starts in the song");
            require(note.velocity >= 1 && note.velocity <= 127, "a loosened note sounds");
        }
    }
}

void FuzzTargets::registry(const QByteArray& input)
{
    const QDir& dir = FuzzLaws::scratch();
    dir.mkpath(u"soundfonts/instruments"_s);
    const QString own = FuzzLaws::file(u"soundfonts/velta_bank_gm.sf2"_s, "bank");
    FuzzLaws::file(u"soundfonts/instruments/quena.sf2"_s, "bank");
    const QString path = FuzzLaws::file(u"registry.json"_s, input);
    const QStringList before = filesIn(dir);

    InstalledContentRegistry registry(path, dir.filePath(u"soundfonts"_s));
    registry.load();
    require(!registry.isRhythmInstalled(u"folklore_carnavalito"_s),
            "what came with the program was not downloaded");
    registry.registerRhythm(u"x"_s, {{u"quena"_s, u"instruments/quena.sf2"_s, 1}});
    const QStringList rhythms = registry.installedRhythms();
    InstalledContentRegistry again(path, dir.filePath(u"soundfonts"_s));
    again.load();
    require(again.installedRhythms() == rhythms &&
                again.installedInstruments() == registry.installedInstruments(),
            "a registry that is read again is the same");
    registry.unregisterRhythm(u"x"_s, {u"quena"_s, u"charango"_s, QString()});
    require(QFile::exists(own) && filesIn(dir) == before, "no file goes but counted banks");
}

void FuzzTargets::catalogue(const QByteArray& input)
{
    const QJsonDocument document = QJsonDocument::fromJson(input);
    for (const CatalogEntry& entry : ContentCatalog::parse(document.object())) {
        require(!entry.rhythmId.isEmpty(), "an offer has an id");
        require(entry.displayName.size() <= ContentCatalog::kMaxNameLength &&
                    entry.styleDisplayName.size() <= ContentCatalog::kMaxNameLength,
                "names have a bounded length");
        require(!ContentFiles::isPlainFileName(entry.rhythmId) ||
                    ContentFiles::staysInside(FuzzLaws::scratch().path(), entry.rhythmId),
                "a plain name stays in its folder");
    }
}
