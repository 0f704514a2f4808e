#include "listen/RhythmDemo.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array kSongOrder{LoopSection::Intro, LoopSection::Normal, LoopSection::Intermedio,
                                LoopSection::Final};
constexpr std::array kDegrees{1, 4, 5, 1};
constexpr KeySignature kKey{.rootPitchClass = 9, .mode = KeyMode::Minor};

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

HarmonyTrack chords(int barsEach, double beatsPerBar)
{
    HarmonyTrack harmony;
    harmony.muted = true;
    int bar = 0;
    for (const int degree : kDegrees) {
        for (int i = 0; i < barsEach; ++i, ++bar)
            harmony.insertEvent(bar * beatsPerBar, beatsPerBar, degree, ChordExtension::Triad,
                                beatsPerBar);
    }
    return harmony;
}

Track trackOf(const LoopLayer& layer, const RhythmDemo::Loop& loop, double beats)
{
    Track track;
    track.name = layer.label;
    track.instrumentId = layer.instrumentId;
    track.isAccompaniment = true;
    track.layerId = layer.id;
    track.loopBlocks.append({.startBeat = 0.0,
                             .durationBeats = beats,
                             .rhythmId = layer.rhythmId,
                             .layerId = layer.id,
                             .section = loop.section,
                             .variantIndex = loop.variantIndex});
    return track;
}

} // namespace

QList<RhythmDemo::Loop> RhythmDemo::loopsOf(const LoopLibrary& library, const QString& rhythmId)
{
    QList<Loop> loops;
    for (const LoopSection section : kSongOrder)
        loops += loopsOfSection(library, library.layersForRhythm(rhythmId), section);
    return loops;
}

std::unique_ptr<Project> RhythmDemo::song(const LoopLibrary& library, const Rhythm& rhythm,
                                          const Loop& loop)
{
    auto project = std::make_unique<Project>();
    project->name = rhythm.displayName;
    project->bpm = rhythm.referenceBpm;
    project->timeSignature = rhythm.timeSignature;
    project->keySignature = kKey;
    const double bar = project->beatsPerBar();
    project->harmonyTrack = chords(loop.bars, bar);
    const double beats = bar * loop.bars * static_cast<int>(kDegrees.size());
    for (const LoopLayer& layer : library.layersForRhythm(rhythm.id)) {
        if (library.findVariant(layer.id, loop.section, loop.variantIndex))
            project->tracks.append(trackOf(layer, loop, beats));
    }
    return project;
}

std::unique_ptr<Project> RhythmDemo::alone(const Project& song, qsizetype track)
{
    std::unique_ptr<Project> project(Project::fromJson(song.toJson(), nullptr));
    project->tracks = {project->tracks.at(track)};
    return project;
}
