#include "model/ProjectJson.h"

#include "model/Song.h"

#include <QJsonArray>

#include <algorithm>
#include <array>

// Every reader starts from a default record and passes its fields as the fallbacks of Qt's typed
// getters: that alone gives the tolerance toward missing and mistyped keys. Writers insert keys
// in sorted order, the order in which QJsonObject keeps them.

namespace {

using namespace Qt::Literals::StringLiterals;

constexpr int kFormatVersion = 1;

// ---- Enumerators as text -------------------------------------------------------------------

constexpr std::array kModes{"Major"_L1, "Minor"_L1, "Dorian"_L1, "Lydian"_L1};
constexpr std::array kExtensions{"Triad"_L1, "Seventh"_L1, "Ninth"_L1};

/// The text at the value's place; the first text for a value that has none.
template <typename Enum, std::size_t Count>
QString enumText(const std::array<QLatin1StringView, Count>& texts, Enum value)
{
    const auto index = static_cast<qint32>(value);
    const bool known = index >= 0 && index < static_cast<qint32>(Count);
    return texts[known ? static_cast<std::size_t>(index) : 0];
}

/// The value whose text equals the string exactly; the first value for any other string.
template <typename Enum, std::size_t Count>
Enum enumValue(const std::array<QLatin1StringView, Count>& texts, const QJsonValue& json)
{
    const auto found = std::ranges::find(texts, json.toString());
    return static_cast<Enum>(found == texts.end() ? 0 : found - texts.begin());
}

// ---- Lists ---------------------------------------------------------------------------------

template <typename Record>
QJsonArray writeList(const QList<Record>& records, QJsonObject (*writeRecord)(const Record&))
{
    QJsonArray array;
    for (const Record& record : records)
        array.append(writeRecord(record));
    return array;
}

/// An element that is no object still gives a record, with all its defaults.
template <typename Record>
QList<Record> readList(const QJsonValue& json, Record (*readRecord)(const QJsonObject&))
{
    const QJsonArray array = json.toArray();
    QList<Record> records;
    records.reserve(array.size());
    for (const QJsonValue& element : array)
        records.append(readRecord(element.toObject()));
    return records;
}

float toFloat(const QJsonValue& json, float fallback)
{
    return static_cast<float>(json.toDouble(static_cast<double>(fallback)));
}

// ---- Meter and key -------------------------------------------------------------------------

QJsonObject writeTimeSignature(const TimeSignature& meter)
{
    return {{"denominator"_L1, meter.denominator},
            {"isCompound"_L1, meter.isCompound},
            {"numerator"_L1, meter.numerator}};
}

TimeSignature readTimeSignature(const QJsonObject& json)
{
    TimeSignature meter;
    meter.numerator = json["numerator"_L1].toInt(meter.numerator);
    meter.denominator = json["denominator"_L1].toInt(meter.denominator);
    meter.isCompound = json["isCompound"_L1].toBool(meter.isCompound);
    return meter;
}

QJsonObject writeKeySignature(const KeySignature& key)
{
    return {{"mode"_L1, enumText(kModes, key.mode)}, {"rootPitchClass"_L1, key.rootPitchClass}};
}

KeySignature readKeySignature(const QJsonObject& json)
{
    KeySignature key;
    key.rootPitchClass = json["rootPitchClass"_L1].toInt(key.rootPitchClass);
    key.mode = enumValue<KeyMode>(kModes, json["mode"_L1]);
    return key;
}

// ---- Note tracks ---------------------------------------------------------------------------

QJsonObject writeNote(const NoteEvent& note)
{
    return {{"durationBeats"_L1, note.durationBeats},
            {"pitch"_L1, note.pitch},
            {"startBeat"_L1, note.startBeat},
            {"velocity"_L1, note.velocity}};
}

NoteEvent readNote(const QJsonObject& json)
{
    NoteEvent note;
    note.pitch = json["pitch"_L1].toInt(note.pitch);
    note.startBeat = json["startBeat"_L1].toDouble(note.startBeat);
    note.durationBeats = json["durationBeats"_L1].toDouble(note.durationBeats);
    note.velocity = json["velocity"_L1].toInt(note.velocity);
    return note;
}

QJsonObject writeMelodyBlock(const MelodyBlock& block)
{
    return {{"durationBeats"_L1, block.durationBeats},
            {"notes"_L1, writeList(block.notes, writeNote)},
            {"startBeat"_L1, block.startBeat}};
}

MelodyBlock readMelodyBlock(const QJsonObject& json)
{
    MelodyBlock block;
    block.startBeat = json["startBeat"_L1].toDouble(block.startBeat);
    block.durationBeats = json["durationBeats"_L1].toDouble(block.durationBeats);
    block.notes = readList(json["notes"_L1], readNote);
    return block;
}

QJsonObject writeLoopBlock(const LoopBlock& block)
{
    return {{"durationBeats"_L1, block.durationBeats},
            {"layerId"_L1, block.layerId},
            {"rhythmId"_L1, block.rhythmId},
            {"section"_L1, loopSectionToString(block.section)},
            {"startBeat"_L1, block.startBeat},
            {"variantIndex"_L1, block.variantIndex}};
}

LoopBlock readLoopBlock(const QJsonObject& json)
{
    LoopBlock block;
    block.startBeat = json["startBeat"_L1].toDouble(block.startBeat);
    block.durationBeats = json["durationBeats"_L1].toDouble(block.durationBeats);
    block.rhythmId = json["rhythmId"_L1].toString();
    block.layerId = json["layerId"_L1].toString();
    block.section = loopSectionFromString(json["section"_L1].toString());
    block.variantIndex = json["variantIndex"_L1].toInt(block.variantIndex);
    return block;
}

QJsonObject writeHumanize(const HumanizeSettings& settings)
{
    return {{"enabled"_L1, settings.enabled},
            {"intensity"_L1, static_cast<double>(settings.intensity)},
            {"seed"_L1, static_cast<qint64>(settings.seed)}};
}

HumanizeSettings readHumanize(const QJsonObject& json)
{
    HumanizeSettings settings;
    settings.enabled = json["enabled"_L1].toBool(settings.enabled);
    settings.intensity = toFloat(json["intensity"_L1], settings.intensity);
    settings.seed = static_cast<quint32>(json["seed"_L1].toInteger(settings.seed));
    return settings;
}

QJsonObject writeTrack(const Track& track)
{
    return {{"humanize"_L1, writeHumanize(track.humanize)},
            {"instrumentId"_L1, track.instrumentId},
            {"isAccompaniment"_L1, track.isAccompaniment},
            {"layerId"_L1, track.layerId},
            {"loopBlocks"_L1, writeList(track.loopBlocks, writeLoopBlock)},
            {"melodyBlocks"_L1, writeList(track.melodyBlocks, writeMelodyBlock)},
            {"muted"_L1, track.muted},
            {"name"_L1, track.name},
            {"solo"_L1, track.solo},
            {"volume"_L1, static_cast<double>(track.volume)}};
}

Track readTrack(const QJsonObject& json)
{
    Track track;
    track.name = json["name"_L1].toString();
    track.instrumentId = json["instrumentId"_L1].toString();
    track.volume = toFloat(json["volume"_L1], track.volume);
    track.muted = json["muted"_L1].toBool(track.muted);
    track.solo = json["solo"_L1].toBool(track.solo);
    track.isAccompaniment = json["isAccompaniment"_L1].toBool(track.isAccompaniment);
    track.layerId = json["layerId"_L1].toString();
    track.humanize = readHumanize(json["humanize"_L1].toObject());
    track.melodyBlocks = readList(json["melodyBlocks"_L1], readMelodyBlock);
    track.loopBlocks = readList(json["loopBlocks"_L1], readLoopBlock);
    return track;
}

// ---- Voice tracks --------------------------------------------------------------------------

QJsonObject writeTune(const VoiceTuneSettings& settings)
{
    return {{"enabled"_L1, settings.enabled},
            {"intensity"_L1, static_cast<double>(settings.intensity)}};
}

VoiceTuneSettings readTune(const QJsonObject& json)
{
    VoiceTuneSettings settings;
    settings.enabled = json["enabled"_L1].toBool(settings.enabled);
    settings.intensity = toFloat(json["intensity"_L1], settings.intensity);
    return settings;
}

QJsonObject writeClip(const AudioClip& clip)
{
    return {{"audioFilePath"_L1, clip.audioFilePath},
            {"durationBeats"_L1, clip.durationBeats},
            {"fadeInSeconds"_L1, static_cast<double>(clip.fadeInSeconds)},
            {"fadeOutSeconds"_L1, static_cast<double>(clip.fadeOutSeconds)},
            {"gain"_L1, static_cast<double>(clip.gain)},
            {"offsetBeats"_L1, clip.offsetBeats},
            {"tune"_L1, writeTune(clip.tune)}};
}

AudioClip readClip(const QJsonObject& json)
{
    AudioClip clip;
    clip.audioFilePath = json["audioFilePath"_L1].toString();
    clip.offsetBeats = json["offsetBeats"_L1].toDouble(clip.offsetBeats);
    clip.durationBeats = json["durationBeats"_L1].toDouble(clip.durationBeats);
    clip.gain = toFloat(json["gain"_L1], clip.gain);
    clip.fadeInSeconds = toFloat(json["fadeInSeconds"_L1], clip.fadeInSeconds);
    clip.fadeOutSeconds = toFloat(json["fadeOutSeconds"_L1], clip.fadeOutSeconds);
    clip.tune = readTune(json["tune"_L1].toObject());
    return clip;
}

QJsonObject writeAudioTrack(const AudioTrack& track)
{
    return {{"clips"_L1, writeList(track.clips, writeClip)},
            {"muted"_L1, track.muted},
            {"name"_L1, track.name},
            {"solo"_L1, track.solo},
            {"volume"_L1, static_cast<double>(track.volume)}};
}

AudioTrack readAudioTrack(const QJsonObject& json)
{
    AudioTrack track;
    track.name = json["name"_L1].toString();
    track.volume = toFloat(json["volume"_L1], track.volume);
    track.muted = json["muted"_L1].toBool(track.muted);
    track.solo = json["solo"_L1].toBool(track.solo);
    track.clips = readList(json["clips"_L1], readClip);
    return track;
}

// ---- Harmony -------------------------------------------------------------------------------

QJsonObject writeChord(const HarmonyDegreeEvent& event)
{
    return {{"degree"_L1, event.degree},
            {"durationBeats"_L1, event.durationBeats},
            {"extension"_L1, enumText(kExtensions, event.extension)},
            {"startBeat"_L1, event.startBeat}};
}

HarmonyDegreeEvent readChord(const QJsonObject& json)
{
    HarmonyDegreeEvent event;
    event.degree = json["degree"_L1].toInt(event.degree);
    event.extension = enumValue<ChordExtension>(kExtensions, json["extension"_L1]);
    event.startBeat = json["startBeat"_L1].toDouble(event.startBeat);
    event.durationBeats = json["durationBeats"_L1].toDouble(event.durationBeats);
    return event;
}

QJsonObject writeHarmonyBlock(const HarmonyBlock& block)
{
    return {{"barIndex"_L1, block.barIndex}, {"events"_L1, writeList(block.events, writeChord)}};
}

HarmonyBlock readHarmonyBlock(const QJsonObject& json)
{
    HarmonyBlock block;
    block.barIndex = json["barIndex"_L1].toInt(block.barIndex);
    block.events = readList(json["events"_L1], readChord);
    return block;
}

QJsonObject writeHarmonyTrack(const HarmonyTrack& track)
{
    return {{"blocks"_L1, writeList(track.blocks, writeHarmonyBlock)},
            {"muted"_L1, track.muted},
            {"volume"_L1, static_cast<double>(track.volume)}};
}

HarmonyTrack readHarmonyTrack(const QJsonObject& json)
{
    HarmonyTrack track;
    track.muted = json["muted"_L1].toBool(track.muted);
    track.volume = toFloat(json["volume"_L1], track.volume);
    track.blocks = readList(json["blocks"_L1], readHarmonyBlock);
    return track;
}

QStringList readStrings(const QJsonValue& json)
{
    QStringList strings;
    const QJsonArray array = json.toArray();
    for (const QJsonValue& element : array)
        strings.append(element.toString());
    return strings;
}

} // namespace

QJsonObject ProjectJson::write(const Song& song)
{
    return {{"app"_L1, "velta"_L1},
            {"audioTracks"_L1, writeList(song.audioTracks, writeAudioTrack)},
            {"bpm"_L1, song.bpm},
            {"collapsedGroups"_L1, QJsonArray::fromStringList(song.collapsedGroups)},
            {"formatVersion"_L1, kFormatVersion},
            {"harmonyTrack"_L1, writeHarmonyTrack(song.harmonyTrack)},
            {"keySignature"_L1, writeKeySignature(song.keySignature)},
            {"name"_L1, song.name},
            {"timeSignature"_L1, writeTimeSignature(song.timeSignature)},
            {"tracks"_L1, writeList(song.tracks, writeTrack)}};
}

void ProjectJson::read(const QJsonObject& json, Song* song)
{
    song->name = json["name"_L1].toString();
    song->bpm = json["bpm"_L1].toInt(Song::kDefaultBpm);
    song->timeSignature = readTimeSignature(json["timeSignature"_L1].toObject());
    song->keySignature = readKeySignature(json["keySignature"_L1].toObject());
    song->tracks = readList(json["tracks"_L1], readTrack);
    song->audioTracks = readList(json["audioTracks"_L1], readAudioTrack);
    song->harmonyTrack = readHarmonyTrack(json["harmonyTrack"_L1].toObject());
    song->collapsedGroups = readStrings(json["collapsedGroups"_L1]);
}

QJsonObject ProjectJson::write(const Track& track)
{
    return writeTrack(track);
}

QJsonObject ProjectJson::write(const AudioTrack& track)
{
    return writeAudioTrack(track);
}

QJsonObject ProjectJson::write(const HarmonyTrack& track)
{
    return writeHarmonyTrack(track);
}

void ProjectJson::read(const QJsonObject& json, Track* track)
{
    *track = readTrack(json);
}

void ProjectJson::read(const QJsonObject& json, AudioTrack* track)
{
    *track = readAudioTrack(json);
}

void ProjectJson::read(const QJsonObject& json, HarmonyTrack* track)
{
    *track = readHarmonyTrack(json);
}
