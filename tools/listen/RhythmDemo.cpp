#include "listen/RhythmDemo.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array kSongOrder{LoopSection::Intro, LoopSection::Normal, LoopSection::Intermedio,
                                LoopSection::Final};

/// Joins the variants of one layer to what is known of their section.
void join(QList<RhythmDemo::Loop>& loops, const QList<LoopVariant>& variants)
{
    for (const LoopVariant& variant : variants) {
        const auto known =
            std::ranges::find(loops, variant.variantIndex, &RhythmDemo::Loop::variantIndex);
        if (known != loops.end())
            known->bars = std::max(known->bars, variant.durationBars);
        else
            loops.append({variant.section, variant.variantIndex, variant.durationBars});
    }
}

QList<RhythmDemo::Loop> loopsOfSection(const LoopLibrary& library, const QList<LoopLayer>& layers,
                                       LoopSection section)
{
    QList<RhythmDemo::Loop> loops;
    for (const LoopLayer& layer : layers)
        join(loops, library.variantsFor(layer.id, section));
    std::ranges::sort(loops, {}, &RhythmDemo::Loop::variantIndex);
    return loops;
}

HarmonyTrack chords(const QList<int>& degrees, int barsEach, double beatsPerBar)
{
    HarmonyTrack harmony;
    harmony.muted = true;
    int bar = 0;
    for (const int degree : degrees) {
        for (int i = 0; i < barsEach; ++i, ++bar)
            harmony.insertEvent(bar * beatsPerBar, beatsPerBar, degree, ChordExtension::Triad,
                                beatsPerBar);
    }
    return harmony;
}

} // namespace

QList<RhythmDemo::Loop> RhythmDemo::loopsOf(const LoopLibrary& library, const QString& rhythmId)
{
    QList<Loop> loops;
    for (const LoopSection section : kSongOrder)
        loops += loopsOfSection(library, library.layersForRhythm(rhythmId), section);
    return loops;
}

std::unique_ptr<Project> RhythmDemo::chordsOf(const Rhythm& rhythm, const Setting& setting,
                                              const QList<int>& degrees, int barsEach)
{
    auto project = std::make_unique<Project>();
    project->name = rhythm.displayName;
    project->bpm = setting.bpm > 0 ? setting.bpm : rhythm.referenceBpm;
    project->timeSignature = rhythm.timeSignature;
    project->keySignature = setting.key;
    project->harmonyTrack = chords(degrees, barsEach, project->beatsPerBar());
    return project;
}

Track RhythmDemo::trackOf(const LoopLayer& layer)
{
    Track track;
    track.name = layer.label;
    track.instrumentId = layer.instrumentId;
    track.isAccompaniment = true;
    track.layerId = layer.id;
    return track;
}

LoopBlock RhythmDemo::blockOf(const LoopLayer& layer, const Loop& loop, double startBeat,
                              double beats)
{
    return {.startBeat = startBeat,
            .durationBeats = beats,
            .rhythmId = layer.rhythmId,
            .layerId = layer.id,
            .section = loop.section,
            .variantIndex = loop.variantIndex};
}

std::unique_ptr<Project> RhythmDemo::song(const LoopLibrary& library, const Rhythm& rhythm,
                                          const Loop& loop, const Setting& setting)
{
    auto project = chordsOf(rhythm, setting, setting.degrees, loop.bars);
    const double beats =
        project->beatsPerBar() * loop.bars * static_cast<double>(setting.degrees.size());
    for (const LoopLayer& layer : library.layersForRhythm(rhythm.id)) {
        if (!library.findVariant(layer.id, loop.section, loop.variantIndex))
            continue;
        Track track = trackOf(layer);
        track.loopBlocks.append(blockOf(layer, loop, 0.0, beats));
        project->tracks.append(track);
    }
    return project;
}

std::unique_ptr<Project> RhythmDemo::alone(const Project& song, qsizetype track)
{
    std::unique_ptr<Project> project(Project::fromJson(song.toJson(), nullptr));
    project->tracks = {project->tracks.at(track)};
    return project;
}

void RhythmDemo::keepLayers(Project& song, const QStringList& layers)
{
    song.tracks.removeIf([&layers](const Track& track) {
        const auto names = [&track](const QString& layer) {
            return track.layerId == layer || track.layerId.endsWith(u'_' + layer);
        };
        return !layers.isEmpty() && std::ranges::none_of(layers, names);
    });
}
