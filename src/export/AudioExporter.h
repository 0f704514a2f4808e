#pragma once

#include "export/ExportProgress.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

class InstrumentLibrary;
class LoopLibrary;
class Project;

/// Renders a project to sound without a sound card: interleaved stereo at kSampleRate, from beat
/// 0 to two seconds behind the last note and the last block that holds something. Runs on the
/// calling thread with a synthesiser of its own. `error` may be null everywhere. A file that was
/// there before stays as it was until the new one is complete.
class AudioExporter {
    Q_DECLARE_TR_FUNCTIONS(AudioExporter)

public:
    /// Frames behind the end of the song: 2 seconds.
    static constexpr qint64 kTailFrames = 88200;

    /// The finished mix, every sample finite and within -1.0 to 1.0, or an empty list with the
    /// reason in `error`. Clips are read from `projectDir`. A missing bank gives silent notes.
    static QList<float> renderFullMix(const Project& project, const QString& projectDir,
                                      const LoopLibrary* library, InstrumentLibrary* instruments,
                                      const QString& gmBankPath, QString* error,
                                      const ExportProgress& progress = {});

    /// The voice tracks alone; see VoiceMix::render().
    static QList<float> renderVoiceMix(const Project& project, const QString& projectDir,
                                       long long frames);

    /// Writes the mix as 16-bit PCM WAV.
    static bool exportWav(const Project& project, const QString& projectDir,
                          const LoopLibrary* library, InstrumentLibrary* instruments,
                          const QString& gmBankPath, const QString& path, QString* error,
                          const ExportProgress& progress = {});

    /// Writes the mix as MP3.
    static bool exportMp3(const Project& project, const QString& projectDir,
                          const LoopLibrary* library, InstrumentLibrary* instruments,
                          const QString& gmBankPath, const QString& path, QString* error,
                          const ExportProgress& progress = {});
};
