#pragma once

#include "listen/RhythmDemo.h"

/// A short whole song of a rhythm, as a pupil would build it.
namespace DemoSong {

/// Bars of every song.
inline constexpr int kBars = 16;

/// A loop and for how many bars it is heard.
struct Part {
    RhythmDemo::Loop loop;
    int bars = 1;

    friend bool operator==(const Part&, const Part&) = default;
};

/// The parts of a song of kBars bars: Intro, Normal 1 and 2, Intermedio, Normal 3 and 4, Final, of
/// those loops that there are. Intro, Intermedio and Final come once and in full, but last no more
/// than four bars; the Normal loops share what is left. Without a Normal loop there is no song.
QList<Part> partsOf(const QList<RhythmDemo::Loop>& loops);

/// The song of a rhythm over sixteen chords that go out from the first degree and come home to it,
/// in key and tempo of the setting; a track for each layer. Its chords are silent. Null where the
/// rhythm has no Normal loop.
std::unique_ptr<Project> of(const LoopLibrary& library, const Rhythm& rhythm,
                            const RhythmDemo::Setting& setting = {});

} // namespace DemoSong
