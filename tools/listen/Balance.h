#pragma once

#include "content/Rhythm.h"

#include <QList>
#include <QString>

#include <memory>
#include <optional>

class InstrumentLibrary;
class LoopLibrary;
class Project;

/// How loud each layer of a rhythm is in the mix, against its bass.
namespace Balance {

/// A layer, or those strokes of a drum kit that play one role.
struct Stem {
    QString rhythmId;
    QString layerId;
    /// What it does in the mix, in the words of the sources; "bajo" is what all are measured
    /// against.
    QString role;
    /// Decibels above the bass that it shall come to.
    double targetDb = 0.0;
    /// Drums are as loud as their strokes; everything else as its integrated loudness.
    bool byStrokes = false;
};

struct Stems {
    /// In the order of the sources: all of a rhythm together.
    QList<Stem> stems;
    /// How far a stem may lie from its target.
    double toleranceDb = 0.0;
};

struct Level {
    /// Integrated loudness in LUFS.
    double loudness = 0.0;
    /// Level of the strokes in dB: 50 milliseconds, weighted as for loudness.
    double strokes = 0.0;
};

/// A stem of a rhythm, measured.
struct Measured {
    Stem stem;
    Level level;
    /// Decibels above the bass.
    double aboveBassDb = 0.0;

    double missesTargetBy() const { return aboveBassDb - stem.targetDb; }
};

/// Reads `stems.json` as `velta-stems` writes it; nothing if it is no such file.
std::optional<Stems> readStems(const QString& path);

/// The level of a mix, interleaved stereo at kSampleRate.
Level levelOf(const QList<float>& mix);

/// The song that a stem is measured in: its second Normal loop over I IV V I in C Major.
std::unique_ptr<Project> song(const LoopLibrary& library, const Rhythm& rhythm);

/// Renders all stems of a rhythm, each alone. Stems that the song does not hold are left out; where
/// no bass sounds there is nothing to measure against, and the list is empty.
QList<Measured> measure(const QList<Stem>& stems, const Rhythm& rhythm, const LoopLibrary& library,
                        InstrumentLibrary& instruments, const QString& gmBank);

} // namespace Balance
