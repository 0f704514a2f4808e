#include "content/ContentPackage.h"

#include "music/MusicFields.h"
#include "records/RecordJson.h"
#include "records/RecordText.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>
#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double kDefaultNoteBeats = 0.25;
constexpr qint32 kDefaultTempoSpread = 20;

NoteEvent shortNote()
{
    return {.durationBeats = kDefaultNoteBeats};
}

/// The index of a whole library.
struct Manifest {
    QList<MusicalStyle> styles;
    QList<Rhythm> rhythms;
    QList<LoopLayer> layers;
    QList<LoopVariant> variants;
};

} // namespace

namespace Records {

template <>
constexpr auto kFields<MusicalStyle> = FieldList{
    Field{"displayName"_L1, &MusicalStyle::displayName},
    Field{"id"_L1, &MusicalStyle::id},
};

template <>
constexpr auto kFields<Rhythm> = FieldList{
    Field{"bpmMax"_L1, &Rhythm::bpmMax},
    Field{"bpmMin"_L1, &Rhythm::bpmMin},
    Field{"displayName"_L1, &Rhythm::displayName},
    Field{"grooveTemplateId"_L1, &Rhythm::grooveTemplateId},
    Field{"id"_L1, &Rhythm::id},
    Field{"referenceBpm"_L1, &Rhythm::referenceBpm},
    Field{"styleId"_L1, &Rhythm::styleId},
    Field{"timeSignature"_L1, &Rhythm::timeSignature},
};

template <>
constexpr auto kFields<Instrument> = FieldList{
    WordField{"category"_L1, &Instrument::category, instrumentCategoryToString,
              instrumentCategoryFromString},
    Field{"generalMidiProgram"_L1, &Instrument::generalMidiProgram},
    Field{"id"_L1, &Instrument::id},
    Field{"name"_L1, &Instrument::name},
    Field{"soundfontBankPath"_L1, &Instrument::soundfontBankPath},
    WordField{"source"_L1, &Instrument::source, instrumentSourceToString,
              instrumentSourceFromString},
};

template <>
constexpr auto kFields<LoopLayer> = FieldList{
    Field{"id"_L1, &LoopLayer::id},
    Field{"instrumentId"_L1, &LoopLayer::instrumentId},
    Field{"label"_L1, &LoopLayer::label},
    Field{"pitched"_L1, &LoopLayer::pitched},
    Field{"rhythmId"_L1, &LoopLayer::rhythmId},
};

template <>
constexpr auto kFields<LoopVariant> = FieldList{
    Field{"durationBars"_L1, &LoopVariant::durationBars},
    Field{"layerId"_L1, &LoopVariant::layerId},
    ListField{"notes"_L1, &LoopVariant::notes, shortNote},
    WordField{"section"_L1, &LoopVariant::section, loopSectionToString, loopSectionFromString},
    Field{"variantIndex"_L1, &LoopVariant::variantIndex},
};

template <>
constexpr auto kFields<Manifest> = FieldList{
    ListField{"loopLayers"_L1, &Manifest::layers},
    ListField{"loopVariants"_L1, &Manifest::variants},
    ListField{"musicalStyles"_L1, &Manifest::styles},
    ListField{"rhythms"_L1, &Manifest::rhythms},
};

template <>
constexpr auto kFields<GrooveOffset> = FieldList{
    Field{"position"_L1, &GrooveOffset::position},
    Field{"timingOffsetBeats"_L1, &GrooveOffset::timingOffsetBeats},
    Field{"velocityOffset"_L1, &GrooveOffset::velocityOffset},
};

template <>
constexpr auto kFields<GrooveTemplate> = FieldList{
    ListField{"offsets"_L1, &GrooveTemplate::offsets},
    Field{"rhythmId"_L1, &GrooveTemplate::rhythmId},
};

} // namespace Records

namespace {

// ---- Reading -------------------------------------------------------------------------------

// A field that is left out follows from others, so a record is read once more when they are known.

MusicalStyle readStyle(const QJsonObject& json)
{
    auto style = RecordJson::read<MusicalStyle>(json);
    style.displayName = style.id;
    RecordJson::read(json, &style);
    return style;
}

/// A tempo `spread` away from another, held in the range of a tempo.
qint32 tempoAwayFrom(qint32 bpm, qint32 spread)
{
    return static_cast<qint32>(std::clamp<qint64>(qint64(bpm) + spread,
                                                  std::numeric_limits<qint32>::min(),
                                                  std::numeric_limits<qint32>::max()));
}

Rhythm readRhythm(const QJsonObject& json)
{
    auto rhythm = RecordJson::read<Rhythm>(json);
    rhythm.displayName = rhythm.id;
    rhythm.bpmMin = tempoAwayFrom(rhythm.referenceBpm, -kDefaultTempoSpread);
    rhythm.bpmMax = tempoAwayFrom(rhythm.referenceBpm, kDefaultTempoSpread);
    rhythm.grooveTemplateId = rhythm.id;
    RecordJson::read(json, &rhythm);
    return rhythm;
}

Instrument readInstrument(const QJsonObject& json)
{
    auto instrument = RecordJson::read<Instrument>(json);
    instrument.name = instrument.id;
    RecordJson::read(json, &instrument);
    return instrument;
}

/// Whether a layer that does not say so is percussion. Packages older than the key "pitched" tell
/// it by their own instruments, or by how the layer is called.
bool looksLikePercussion(const LoopLayer& layer, const QList<Instrument>* instruments)
{
    if (instruments) {
        const auto named = std::ranges::find(*instruments, layer.instrumentId, &Instrument::id);
        if (named != instruments->end() && named->category == InstrumentCategory::Percussion)
            return true;
    }
    return layer.label.startsWith("Percusi"_L1, Qt::CaseInsensitive) ||
           layer.id.contains("percusion"_L1, Qt::CaseInsensitive);
}

LoopLayer readLayer(const QJsonObject& json, const QList<Instrument>* instruments)
{
    auto layer = RecordJson::read<LoopLayer>(json);
    layer.label = layer.id;
    RecordJson::read(json, &layer);
    layer.pitched = !looksLikePercussion(layer, instruments);
    RecordJson::read(json, &layer);
    return layer;
}

// ---- Bounds --------------------------------------------------------------------------------

bool hasLongText(const QJsonObject& json)
{
    return std::ranges::any_of(json, [](const QJsonValue& value) {
        return value.toString().size() > ContentPackage::kMaxTextLength;
    });
}

bool anyHasLongText(const QJsonArray& objects)
{
    return std::ranges::any_of(
        objects, [](const QJsonValue& element) { return hasLongText(element.toObject()); });
}

bool hasTooManyNotes(const QJsonArray& variants)
{
    qsizetype all = 0;
    for (const QJsonValue& variant : variants) {
        const qsizetype notes = variant.toObject()["notes"_L1].toArray().size();
        all += notes;
        if (notes > ContentPackage::kMaxNotesOfVariant || all > ContentPackage::kMaxNotes)
            return true;
    }
    return false;
}

/// A package taken apart, with nothing in it read yet.
struct Parts {
    QJsonObject style;
    QJsonObject rhythm;
    QJsonArray instruments;
    QJsonArray layers;
    QJsonArray variants;
};

Parts partsOf(const QJsonObject& json)
{
    return {json["musicalStyle"_L1].toObject(), json["rhythm"_L1].toObject(),
            json["instruments"_L1].toArray(), json["loopLayers"_L1].toArray(),
            json["loopVariants"_L1].toArray()};
}

/// What is wrong with a package, as the end of a sentence for the user; empty if nothing is. Looks
/// at sizes alone, ahead of every text that it looks into.
QString flawOf(const Parts& parts)
{
    if (RecordJson::read<Rhythm>(parts.rhythm).id.isEmpty())
        return u"falta rhythm.id"_s;
    if (parts.instruments.size() > ContentPackage::kMaxInstruments)
        return QCoreApplication::translate("ContentPackage", "tiene demasiados instrumentos");
    if (parts.layers.size() > ContentPackage::kMaxLayers)
        return QCoreApplication::translate("ContentPackage", "tiene demasiadas capas");
    if (parts.variants.size() > ContentPackage::kMaxVariants)
        return QCoreApplication::translate("ContentPackage", "tiene demasiadas variaciones");
    if (hasTooManyNotes(parts.variants))
        return QCoreApplication::translate("ContentPackage", "tiene demasiadas notas");
    if (hasLongText(parts.style) || hasLongText(parts.rhythm) ||
        anyHasLongText(parts.instruments) || anyHasLongText(parts.layers) ||
        anyHasLongText(parts.variants))
        return QCoreApplication::translate("ContentPackage", "tiene un texto demasiado largo");
    return {};
}

} // namespace

bool ContentPackage::parse(const QJsonObject& json, MusicalStyle* style, Rhythm* rhythm,
                           QList<Instrument>* instruments, QList<LoopLayer>* layers,
                           QList<LoopVariant>* variants, QString* error)
{
    const Parts parts = partsOf(json);
    if (const QString flaw = flawOf(parts); !flaw.isEmpty()) {
        if (error)
            *error = flaw;
        return false;
    }
    if (style)
        *style = readStyle(parts.style);
    if (rhythm)
        *rhythm = readRhythm(parts.rhythm);
    if (instruments) {
        for (const QJsonValue& element : parts.instruments)
            instruments->append(readInstrument(element.toObject()));
    }
    if (layers) {
        for (const QJsonValue& element : parts.layers)
            layers->append(readLayer(element.toObject(), instruments));
    }
    if (variants)
        variants->append(RecordJson::readList<LoopVariant>(parts.variants));
    return true;
}

GrooveTemplate ContentPackage::parseGroove(const QJsonObject& json)
{
    return RecordJson::read<GrooveTemplate>(json);
}

bool ContentPackage::isGrooveWithinBounds(const QJsonObject& json)
{
    return !hasLongText(json) && json["offsets"_L1].toArray().size() <= kMaxGrooveOffsets;
}

QByteArray ContentPackage::writeManifest(const QList<MusicalStyle>& styles,
                                         const QList<Rhythm>& rhythms,
                                         const QList<LoopLayer>& layers,
                                         const QList<LoopVariant>& variants)
{
    JsonText json;
    RecordText::write(Manifest{styles, rhythms, layers, variants}, &json);
    return json.text();
}
