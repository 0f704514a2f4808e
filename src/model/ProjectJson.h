#pragma once

#include <QJsonObject>

struct AudioTrack;
struct HarmonyTrack;
struct Song;
struct Track;

/// The keys, defaults and texts of the project file.
namespace ProjectJson {

/// Every field of the song.
QJsonObject write(const Song& song);

/// One part of the song, as it stands in the whole.
QJsonObject write(const Track& track);
QJsonObject write(const AudioTrack& track);
QJsonObject write(const HarmonyTrack& track);

/// Replaces every field of a song or of a part. Takes anything: what is missing or of another type
/// becomes its default, unknown keys are dropped, ranges are not checked.
void read(const QJsonObject& json, Song* song);
void read(const QJsonObject& json, Track* track);
void read(const QJsonObject& json, AudioTrack* track);
void read(const QJsonObject& json, HarmonyTrack* track);

} // namespace ProjectJson
