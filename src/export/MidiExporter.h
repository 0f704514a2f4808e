#pragma once

#include "export/ExportProgress.h"

#include <QCoreApplication>
#include <QString>

class InstrumentLibrary;
class LoopLibrary;
class Project;

/// Writes a project as a Standard MIDI File of format 1, 480 ticks per quarter note: a conductor
/// track, a track for each note track whether it is muted or not, and one for the chords. Drums
/// go to channel 9 (counted from 0), as General MIDI has it.
class MidiExporter {
    Q_DECLARE_TR_FUNCTIONS(MidiExporter)

public:
    /// `library`, `instruments` and `error` may be null. False, with the reason in `error`, when
    /// the file cannot be written or the song is beyond any length that can be written.
    static bool exportProject(const Project& project, const LoopLibrary* library,
                              const InstrumentLibrary* instruments, const QString& path,
                              QString* error, const ExportProgress& progress = {});
};
