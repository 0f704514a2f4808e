#include "content/ContentPackage.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>
#include <limits>

namespace {

using namespace Qt::Literals::StringLiterals;

constexpr double kDefaultNoteBeats = 0.25;
constexpr qint32 kDefaultTempoSpread = 20;

// ---- Reading -------------------------------------------------------------------------------

TimeSignature readTimeSignature(const QJsonObject& json)
{
    TimeSignature meter;
    meter.numerator = json["numerator"_L1].toInt(meter.numerator);
    meter.denominator = json["denominator"_L1].toInt(meter.denominator);
    meter.isCompound = json["isCompound"_L1].toBool(meter.isCompound);
    return meter;
}

MusicalStyle readStyle(const QJsonObject& json)
{
    MusicalStyle style;
    style.id = json["id"_L1].toString();
    style.displayName = json["displayName"_L1].toString(style.id);
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
    Rhythm rhythm;
    rhythm.id = json["id"_L1].toString();
    rhythm.displayName = json["displayName"_L1].toString(rhythm.id);
    rhythm.styleId = json["styleId"_L1].toString();
    rhythm.timeSignature = readTimeSignature(json["timeSignature"_L1].toObject());
    rhythm.referenceBpm = json["referenceBpm"_L1].toInt(rhythm.referenceBpm);
    rhythm.bpmMin =
        json["bpmMin"_L1].toInt(tempoAwayFrom(rhythm.referenceBpm, -kDefaultTempoSpread));
    rhythm.bpmMax =
        json["bpmMax"_L1].toInt(tempoAwayFrom(rhythm.referenceBpm, kDefaultTempoSpread));
    rhythm.grooveTemplateId = json["grooveTemplateId"_L1].toString(rhythm.id);
    return rhythm;
}

Instrument readInstrument(const QJsonObject& json)
{
    Instrument instrument;
    instrument.id = json["id"_L1].toString();
    instrument.name = json["name"_L1].toString(instrument.id);
    instrument.category = instrumentCategoryFromString(json["category"_L1].toString());
    instrument.source = instrumentSourceFromString(json["source"_L1].toString());
    instrument.generalMidiProgram = json["generalMidiProgram"_L1].toInt();
    instrument.soundfontBankPath = json["soundfontBankPath"_L1].toString();
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
    LoopLayer layer;
    layer.id = json["id"_L1].toString();
    layer.rhythmId = json["rhythmId"_L1].toString();
    layer.label = json["label"_L1].toString(layer.id);
    layer.instrumentId = json["instrumentId"_L1].toString();
    layer.pitched = json["pitched"_L1].toBool(!looksLikePercussion(layer, instruments));
    return layer;
}

NoteEvent readNote(const QJsonObject& json)
{
    NoteEvent note;
    note.pitch = json["pitch"_L1].toInt(note.pitch);
    note.startBeat = json["startBeat"_L1].toDouble(note.startBeat);
    note.durationBeats = json["durationBeats"_L1].toDouble(kDefaultNoteBeats);
    note.velocity = json["velocity"_L1].toInt(note.velocity);
    return note;
}

LoopVariant readVariant(const QJsonObject& json)
{
    LoopVariant variant;
    variant.layerId = json["layerId"_L1].toString();
    variant.section = loopSectionFromString(json["section"_L1].toString());
    variant.variantIndex = json["variantIndex"_L1].toInt(variant.variantIndex);
    variant.durationBars = json["durationBars"_L1].toInt(variant.durationBars);
    const QJsonArray notes = json["notes"_L1].toArray();
    variant.notes.reserve(notes.size());
    for (const QJsonValue& note : notes)
        variant.notes.append(readNote(note.toObject()));
    return variant;
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

/// What is wrong with a package, as the end of a sentence for the user; empty if nothing is. Looks
/// at sizes alone, ahead of every text that it looks into.
QString flawOf(const QJsonObject& json)
{
    const QJsonArray instruments = json["instruments"_L1].toArray();
    const QJsonArray layers = json["loopLayers"_L1].toArray();
    const QJsonArray variants = json["loopVariants"_L1].toArray();
    if (json["rhythm"_L1].toObject()["id"_L1].toString().isEmpty())
        return u"falta rhythm.id"_s;
    if (instruments.size() > ContentPackage::kMaxInstruments)
        return QCoreApplication::translate("ContentPackage", "tiene demasiados instrumentos");
    if (layers.size() > ContentPackage::kMaxLayers)
        return QCoreApplication::translate("ContentPackage", "tiene demasiadas capas");
    if (variants.size() > ContentPackage::kMaxVariants)
        return QCoreApplication::translate("ContentPackage", "tiene demasiadas variaciones");
    if (hasTooManyNotes(variants))
        return QCoreApplication::translate("ContentPackage", "tiene demasiadas notas");
    if (hasLongText(json["musicalStyle"_L1].toObject()) ||
        hasLongText(json["rhythm"_L1].toObject()) || anyHasLongText(instruments) ||
        anyHasLongText(layers) || anyHasLongText(variants))
        return QCoreApplication::translate("ContentPackage", "tiene un texto demasiado largo");
    return {};
}

// ---- Writing -------------------------------------------------------------------------------

QJsonObject writeStyle(const MusicalStyle& style)
{
    return {{"displayName"_L1, style.displayName}, {"id"_L1, style.id}};
}

QJsonObject writeRhythm(const Rhythm& rhythm)
{
    const QJsonObject meter{{"denominator"_L1, rhythm.timeSignature.denominator},
                            {"isCompound"_L1, rhythm.timeSignature.isCompound},
                            {"numerator"_L1, rhythm.timeSignature.numerator}};
    return {{"bpmMax"_L1, rhythm.bpmMax},
            {"bpmMin"_L1, rhythm.bpmMin},
            {"displayName"_L1, rhythm.displayName},
            {"grooveTemplateId"_L1, rhythm.grooveTemplateId},
            {"id"_L1, rhythm.id},
            {"referenceBpm"_L1, rhythm.referenceBpm},
            {"styleId"_L1, rhythm.styleId},
            {"timeSignature"_L1, meter}};
}

QJsonObject writeLayer(const LoopLayer& layer)
{
    return {{"id"_L1, layer.id},
            {"instrumentId"_L1, layer.instrumentId},
            {"label"_L1, layer.label},
            {"pitched"_L1, layer.pitched},
            {"rhythmId"_L1, layer.rhythmId}};
}

QJsonObject writeNote(const NoteEvent& note)
{
    return {{"durationBeats"_L1, note.durationBeats},
            {"pitch"_L1, note.pitch},
            {"startBeat"_L1, note.startBeat},
            {"velocity"_L1, note.velocity}};
}

template <typename Record>
QJsonArray writeList(const QList<Record>& records, QJsonObject (*writeRecord)(const Record&))
{
    QJsonArray array;
    for (const Record& record : records)
        array.append(writeRecord(record));
    return array;
}

QJsonObject writeVariant(const LoopVariant& variant)
{
    return {{"durationBars"_L1, variant.durationBars},
            {"layerId"_L1, variant.layerId},
            {"notes"_L1, writeList(variant.notes, writeNote)},
            {"section"_L1, loopSectionToString(variant.section)},
            {"variantIndex"_L1, variant.variantIndex}};
}

} // namespace

bool ContentPackage::parse(const QJsonObject& json, MusicalStyle* style, Rhythm* rhythm,
                           QList<Instrument>* instruments, QList<LoopLayer>* layers,
                           QList<LoopVariant>* variants, QString* error)
{
    if (const QString flaw = flawOf(json); !flaw.isEmpty()) {
        if (error)
            *error = flaw;
        return false;
    }
    if (style)
        *style = readStyle(json["musicalStyle"_L1].toObject());
    if (rhythm)
        *rhythm = readRhythm(json["rhythm"_L1].toObject());
    if (instruments) {
        const QJsonArray elements = json["instruments"_L1].toArray();
        for (const QJsonValue& element : elements)
            instruments->append(readInstrument(element.toObject()));
    }
    if (layers) {
        const QJsonArray elements = json["loopLayers"_L1].toArray();
        for (const QJsonValue& element : elements)
            layers->append(readLayer(element.toObject(), instruments));
    }
    if (variants) {
        const QJsonArray elements = json["loopVariants"_L1].toArray();
        for (const QJsonValue& element : elements)
            variants->append(readVariant(element.toObject()));
    }
    return true;
}

GrooveTemplate ContentPackage::parseGroove(const QJsonObject& json)
{
    GrooveTemplate groove;
    groove.rhythmId = json["rhythmId"_L1].toString();
    const QJsonArray offsets = json["offsets"_L1].toArray();
    for (const QJsonValue& element : offsets) {
        const QJsonObject offset = element.toObject();
        groove.offsets.append({.position = offset["position"_L1].toDouble(),
                               .timingOffsetBeats = offset["timingOffsetBeats"_L1].toDouble(),
                               .velocityOffset = offset["velocityOffset"_L1].toInt()});
    }
    return groove;
}

bool ContentPackage::isGrooveWithinBounds(const QJsonObject& json)
{
    return !hasLongText(json) && json["offsets"_L1].toArray().size() <= kMaxGrooveOffsets;
}

QJsonObject ContentPackage::writeManifest(const QList<MusicalStyle>& styles,
                                          const QList<Rhythm>& rhythms,
                                          const QList<LoopLayer>& layers,
                                          const QList<LoopVariant>& variants)
{
    return {{"loopLayers"_L1, writeList(layers, writeLayer)},
            {"loopVariants"_L1, writeList(variants, writeVariant)},
            {"musicalStyles"_L1, writeList(styles, writeStyle)},
            {"rhythms"_L1, writeList(rhythms, writeRhythm)}};
}
