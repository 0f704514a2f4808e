#pragma once

#include "content/Rhythm.h"

#include <QList>
#include <QString>

#include <memory>

class LoopLibrary;
class Project;

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

/// Everything that the layers of a rhythm hold, in the order of a song: Intro, Normal, Intermedio,
/// Final.
QList<Loop> loopsOf(const LoopLibrary& library, const QString& rhythmId);

/// A song of i iv v i in A minor, in the tempo and meter of the rhythm, with one loop of every
/// layer on each chord and a track for each layer. The chords themselves are silent.
std::unique_ptr<Project> song(const LoopLibrary& library, const Rhythm& rhythm, const Loop& loop);

/// The same song with one of its tracks alone.
std::unique_ptr<Project> alone(const Project& song, qsizetype track);

} // namespace RhythmDemo
