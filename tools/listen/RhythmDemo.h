#pragma once

#include "content/Rhythm.h"
#include "music/KeySignature.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

class LoopLibrary;
class Project;
struct LoopBlock;
struct Track;

/// Songs that let an author hear a rhythm: all its layers together, over four chords.
namespace RhythmDemo {

/// One section and variant of a rhythm, as it would be placed in every layer that has it.
struct Loop {
    LoopSection section = LoopSection::Normal;
    /// From 1, within the section.
    int variantIndex = 1;
    /// Length in bars of the rhythm: that of its longest layer.
    int bars = 1;

    friend bool operator==(const Loop&, const Loop&) = default;
};

/// What a rhythm is heard over.
struct Setting {
    KeySignature key{.rootPitchClass = 9, .mode = KeyMode::Minor};
    /// Degrees 1..7, each for the length of the loop.
    QList<int> degrees{1, 4, 5, 1};
    /// Quarter notes a minute; 0 is the usual tempo of the rhythm.
    int bpm = 0;
};

/// Everything that the layers of a rhythm hold, in the order of a song: Intro, Normal, Intermedio,
/// Final.
QList<Loop> loopsOf(const LoopLibrary& library, const QString& rhythmId);

/// A song without tracks in the tempo and meter of the rhythm, in the key of the setting and with
/// silent chords: each degree for so many bars.
std::unique_ptr<Project> chordsOf(const Rhythm& rhythm, const Setting& setting,
                                  const QList<int>& degrees, int barsEach);

/// An empty track that plays a layer.
Track trackOf(const LoopLayer& layer);

/// A loop of a layer from a beat on, repeated for so many beats.
LoopBlock blockOf(const LoopLayer& layer, const Loop& loop, double startBeat, double beats);

/// A song with one loop of every layer on each chord of the setting and a track for each layer.
std::unique_ptr<Project> song(const LoopLibrary& library, const Rhythm& rhythm, const Loop& loop,
                              const Setting& setting = {});

/// The same song with one of its tracks alone.
std::unique_ptr<Project> alone(const Project& song, qsizetype track);

/// Leaves of a song the tracks of the named layers, by id with the rhythm's or without it. Nothing
/// named leaves all.
void keepLayers(Project& song, const QStringList& layers);

} // namespace RhythmDemo
