#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Watches what the program asks of FluidSynth, and makes it fail where a test wants it to.
///
/// An executable that is built with FluidSpy.cpp defines some of the library's functions itself;
/// the linker prefers these, and each writes down its call and passes it on to the library. Only
/// calls from outside the library are written down.
namespace FluidSpy {

struct Call {
    /// The function without its prefix, then its arguments: "noteon 0 60 100". Renderings read
    /// "write_float <frames> <left offset> <left step> <right offset> <right step>", then
    /// "together" for one buffer or "apart" for two.
    QString text;
    /// Frames that had been rendered since reset() when the call came.
    qint64 frame = 0;

    friend bool operator==(const Call&, const Call&) = default;
};

/// How new_fluid_audio_driver() ends.
enum class Driver {
    /// As on a computer without a sound card.
    Fails,
    /// With a driver that never asks for sound.
    Stands
};

/// Forgets all calls; synthesisers can be made again, and audio drivers fail.
void reset();

void letSynthFail();

/// Has the next rendering begin with a sample that is no number.
void spoilSound();

void setDriver(Driver driver);

/// Every call since reset().
const QList<Call>& timeline();

/// The texts of all calls.
QStringList calls();

/// The texts of the calls to some functions.
QStringList calls(const QStringList& functions);

/// Voices that sound in the synthesiser made last.
int activeVoices();

} // namespace FluidSpy
