#include "model/ProjectJson.h"

#include "model/Song.h"
#include "music/MusicFields.h"
#include "records/RecordJson.h"

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kFormatVersion = 1;

constexpr std::array kModes{"Major"_L1, "Minor"_L1, "Dorian"_L1, "Lydian"_L1};
constexpr std::array kExtensions{"Triad"_L1, "Seventh"_L1, "Ninth"_L1};

/// The word at the value's place; the first word for a value that has none.
template <const auto& words, typename Enum>
QString wordOf(Enum value)
{
    const auto index = static_cast<std::size_t>(value);
    return words[index < words.size() ? index : 0];
}

/// The value whose word equals the text exactly; the first value for any other text.
template <const auto& words, typename Enum>
Enum valueOf(const QString& text)
{
    const auto found = std::ranges::find(words, text);
    return static_cast<Enum>(found == words.end() ? 0 : found - words.begin());
}

} // namespace

namespace Records {

template <>
constexpr auto kFields<KeySignature> = FieldList{
    WordField{"mode"_L1, &KeySignature::mode, wordOf<kModes, KeyMode>, valueOf<kModes, KeyMode>},
    Field{"rootPitchClass"_L1, &KeySignature::rootPitchClass},
};

// ---- Note tracks ---------------------------------------------------------------------------

template <>
constexpr auto kFields<MelodyBlock> = FieldList{
    Field{"durationBeats"_L1, &MelodyBlock::durationBeats},
    ListField{"notes"_L1, &MelodyBlock::notes},
    Field{"startBeat"_L1, &MelodyBlock::startBeat},
};

template <>
constexpr auto kFields<LoopBlock> = FieldList{
    Field{"durationBeats"_L1, &LoopBlock::durationBeats},
    Field{"layerId"_L1, &LoopBlock::layerId},
    Field{"rhythmId"_L1, &LoopBlock::rhythmId},
    WordField{"section"_L1, &LoopBlock::section, loopSectionToString, loopSectionFromString},
    Field{"startBeat"_L1, &LoopBlock::startBeat},
    Field{"variantIndex"_L1, &LoopBlock::variantIndex},
};

template <>
constexpr auto kFields<HumanizeSettings> = FieldList{
    Field{"enabled"_L1, &HumanizeSettings::enabled},
    Field{"intensity"_L1, &HumanizeSettings::intensity},
    Field{"seed"_L1, &HumanizeSettings::seed},
};

template <>
constexpr auto kFields<Track> = FieldList{
    Field{"humanize"_L1, &Track::humanize},
    Field{"instrumentId"_L1, &Track::instrumentId},
    Field{"isAccompaniment"_L1, &Track::isAccompaniment},
    Field{"layerId"_L1, &Track::layerId},
    ListField{"loopBlocks"_L1, &Track::loopBlocks},
    ListField{"melodyBlocks"_L1, &Track::melodyBlocks},
    Field{"muted"_L1, &Track::muted},
    Field{"name"_L1, &Track::name},
    Field{"solo"_L1, &Track::solo},
    Field{"volume"_L1, &Track::volume},
};

// ---- Voice tracks --------------------------------------------------------------------------

template <>
constexpr auto kFields<VoiceTuneSettings> = FieldList{
    Field{"enabled"_L1, &VoiceTuneSettings::enabled},
    Field{"intensity"_L1, &VoiceTuneSettings::intensity},
};

template <>
constexpr auto kFields<AudioClip> = FieldList{
    Field{"audioFilePath"_L1, &AudioClip::audioFilePath},
    Field{"durationBeats"_L1, &AudioClip::durationBeats},
    Field{"fadeInSeconds"_L1, &AudioClip::fadeInSeconds},
    Field{"fadeOutSeconds"_L1, &AudioClip::fadeOutSeconds},
    Field{"gain"_L1, &AudioClip::gain},
    Field{"offsetBeats"_L1, &AudioClip::offsetBeats},
    Field{"tune"_L1, &AudioClip::tune},
};

template <>
constexpr auto kFields<AudioTrack> = FieldList{
    ListField{"clips"_L1, &AudioTrack::clips}, Field{"muted"_L1, &AudioTrack::muted},
    Field{"name"_L1, &AudioTrack::name},       Field{"solo"_L1, &AudioTrack::solo},
    Field{"volume"_L1, &AudioTrack::volume},
};

// ---- Harmony -------------------------------------------------------------------------------

template <>
constexpr auto kFields<HarmonyDegreeEvent> = FieldList{
    Field{"degree"_L1, &HarmonyDegreeEvent::degree},
    Field{"durationBeats"_L1, &HarmonyDegreeEvent::durationBeats},
    WordField{"extension"_L1, &HarmonyDegreeEvent::extension, wordOf<kExtensions, ChordExtension>,
              valueOf<kExtensions, ChordExtension>},
    Field{"startBeat"_L1, &HarmonyDegreeEvent::startBeat},
};

template <>
constexpr auto kFields<HarmonyBlock> = FieldList{
    Field{"barIndex"_L1, &HarmonyBlock::barIndex},
    ListField{"events"_L1, &HarmonyBlock::events},
};

template <>
constexpr auto kFields<HarmonyTrack> = FieldList{
    ListField{"blocks"_L1, &HarmonyTrack::blocks},
    Field{"muted"_L1, &HarmonyTrack::muted},
    Field{"volume"_L1, &HarmonyTrack::volume},
};

// ---- The song ------------------------------------------------------------------------------

template <>
constexpr auto kFields<Song> = FieldList{
    ListField{"audioTracks"_L1, &Song::audioTracks},
    Field{"bpm"_L1, &Song::bpm},
    Field{"collapsedGroups"_L1, &Song::collapsedGroups},
    Field{"harmonyTrack"_L1, &Song::harmonyTrack},
    Field{"keySignature"_L1, &Song::keySignature},
    Field{"name"_L1, &Song::name},
    Field{"timeSignature"_L1, &Song::timeSignature},
    ListField{"tracks"_L1, &Song::tracks},
};

} // namespace Records

QJsonObject ProjectJson::write(const Song& song)
{
    QJsonObject json = RecordJson::write(song);
    json["app"_L1] = "velta"_L1;
    json["formatVersion"_L1] = kFormatVersion;
    return json;
}

void ProjectJson::read(const QJsonObject& json, Song* song)
{
    *song = RecordJson::read<Song>(json);
}

QJsonObject ProjectJson::write(const Track& track)
{
    return RecordJson::write(track);
}

QJsonObject ProjectJson::write(const AudioTrack& track)
{
    return RecordJson::write(track);
}

QJsonObject ProjectJson::write(const HarmonyTrack& track)
{
    return RecordJson::write(track);
}

void ProjectJson::read(const QJsonObject& json, Track* track)
{
    *track = RecordJson::read<Track>(json);
}

void ProjectJson::read(const QJsonObject& json, AudioTrack* track)
{
    *track = RecordJson::read<AudioTrack>(json);
}

void ProjectJson::read(const QJsonObject& json, HarmonyTrack* track)
{
    *track = RecordJson::read<HarmonyTrack>(json);
}
