#pragma once

#include "music/NoteEvent.h"

#include <QList>
#include <QObject>
#include <QString>

class InstrumentLibrary;
class LoopLibrary;
class Project;
class SoundfontPlayer;
struct Track;

/// Playback of a project: how it becomes notes, and how channels are given their instruments.
class PlaybackEngine : public QObject {
    Q_OBJECT

public:
    /// None of the services is owned.
    PlaybackEngine(SoundfontPlayer* player, LoopLibrary* library, InstrumentLibrary* instruments,
                   QObject* parent = nullptr);

    /// All notes of a track; see NoteRenderer::trackNotes(). `library` may be null.
    static QList<NoteEvent> renderTrackNotes(const Project& project, const Track& track,
                                             const LoopLibrary* library);

    /// The chord notes of the harmony track; see NoteRenderer::harmonyNotes().
    static QList<NoteEvent> renderHarmonyNotes(const Project& project);

    /// Gives a channel an instrument: its own bank where there is one, else the drum kit for
    /// percussion and a General MIDI program for the rest. An unknown instrument is a piano.
    /// `instruments` may be null.
    static void configureChannel(SoundfontPlayer* player, InstrumentLibrary* instruments,
                                 int channel, const QString& instrumentId);

    /// configureChannel() with the engine's own services.
    void configureChannelForInstrument(int channel, const QString& instrumentId);

    /// Gives a channel the instrument and the volume of a track.
    void setupTrackChannel(int channel, const Track& track);

private:
    SoundfontPlayer* player_;
    LoopLibrary* library_;
    InstrumentLibrary* instruments_;
};
