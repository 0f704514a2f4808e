#pragma once

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "playback/ChannelPlan.h"

#include <QCoreApplication>

#include <algorithm>
#include <memory>

/// The content that the build stages beside the benchmarks.
class StagedContent {
public:
    StagedContent()
        : resources_(QCoreApplication::applicationDirPath() + "/resources"),
          instruments_(resources_ + "/soundfonts"), library_(resources_ + "/loops", &instruments_)
    {
        instruments_.loadBuiltinGmInstruments();
        library_.reload();
    }

    static StagedContent& instance()
    {
        static StagedContent content;
        return content;
    }

    QString bank() const { return resources_ + "/soundfonts/velta_bank_gm.sf2"; }

    InstrumentLibrary& instruments() { return instruments_; }

    const LoopLibrary& library() const { return library_; }

private:
    QString resources_;
    InstrumentLibrary instruments_;
    LoopLibrary library_;
};

/// A song on one installed rhythm: a chord in every bar and on every track a loop block for every
/// four bars, its densest variant, the layers taken in turn.
inline std::unique_ptr<Project> accompaniedSong(int tracks, int bars)
{
    const LoopLibrary& library = StagedContent::instance().library();
    const Rhythm& rhythm = *library.findRhythm(QStringLiteral("folklore_carnavalito"));
    const QList<LoopLayer> layers = library.layersForRhythm(rhythm.id);

    auto project = std::make_unique<Project>();
    project->bpm = rhythm.referenceBpm;
    project->timeSignature = rhythm.timeSignature;
    const double bar = project->beatsPerBar();
    for (int index = 0; index < tracks; ++index) {
        const LoopLayer& layer = layers[index % layers.size()];
        Track track;
        track.name = layer.label;
        track.instrumentId = layer.instrumentId;
        for (int start = 0; start < bars; start += 4)
            track.loopBlocks.append({.startBeat = start * bar,
                                     .durationBeats = std::min(4, bars - start) * bar,
                                     .rhythmId = rhythm.id,
                                     .layerId = layer.id,
                                     .section = LoopSection::Normal,
                                     .variantIndex = 3});
        project->tracks.append(track);
    }
    for (int index = 0; index < bars; ++index) {
        HarmonyBlock block;
        block.barIndex = index;
        block.events.append({.degree = 1 + (index * 3) % 7,
                             .extension = ChordExtension::Triad,
                             .startBeat = 0.0,
                             .durationBeats = bar});
        project->harmonyTrack.blocks.append(block);
    }
    return project;
}

/// A track of hand-written notes, half a beat each.
inline Track melodyTrack(int notes)
{
    Track track;
    track.instrumentId = QStringLiteral("gm_flauta");
    MelodyBlock block;
    block.durationBeats = 0.5 * notes;
    for (int i = 0; i < notes; ++i)
        block.notes.append({.pitch = 60 + (i * 7) % 24,
                            .startBeat = 0.5 * i,
                            .durationBeats = 0.37,
                            .velocity = 70 + i % 50});
    track.melodyBlocks.append(block);
    return track;
}
