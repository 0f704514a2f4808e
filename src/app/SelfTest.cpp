#include "app/SelfTest.h"

#include "app/Console.h"
#include "content/ContentRoots.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/AudioExporter.h"
#include "export/MidiExporter.h"
#include "model/Project.h"
#include "playback/PlaybackEngine.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <array>
#include <cstdio>
#include <functional>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString kReferenceRhythm = u"folklore_carnavalito"_s;

/// Tolerance at the bar lines, in beats.
constexpr double kBarTolerance = 1e-6;

// ---- The song ------------------------------------------------------------------------------

constexpr double kSongBeats = 8.0;

Track melodyTrack()
{
    Track track;
    track.name = u"Melodía"_s;
    track.instrumentId = u"gm_flauta"_s;
    MelodyBlock block;
    block.durationBeats = kSongBeats;
    for (const int pitch : {69, 71, 72, 74, 76, 74, 72, 71}) {
        const auto beat = static_cast<double>(block.notes.size());
        block.notes.append(
            {.pitch = pitch, .startBeat = beat, .durationBeats = 1.0, .velocity = 100});
    }
    track.melodyBlocks.append(block);
    return track;
}

Track layerTrack(const LoopLayer& layer)
{
    Track track;
    track.name = layer.label;
    track.instrumentId = layer.instrumentId;
    track.loopBlocks.append({.startBeat = 0.0,
                             .durationBeats = kSongBeats,
                             .rhythmId = layer.rhythmId,
                             .layerId = layer.id,
                             .section = LoopSection::Normal,
                             .variantIndex = 1});
    return track;
}

HarmonyTrack chords()
{
    HarmonyTrack harmony;
    for (const int degree : {1, 4, 5, 1}) {
        HarmonyBlock block;
        block.barIndex = static_cast<qint32>(harmony.blocks.size());
        block.events.append({.degree = degree,
                             .extension = ChordExtension::Triad,
                             .startBeat = 0.0,
                             .durationBeats = 2.0});
        harmony.blocks.append(block);
    }
    return harmony;
}

void compose(const Rhythm& rhythm, const LoopLibrary& library, Project& project)
{
    project.name = u"selftest"_s;
    project.bpm = rhythm.referenceBpm;
    project.timeSignature = rhythm.timeSignature;
    project.keySignature = {.rootPitchClass = 9, .mode = KeyMode::Minor};
    project.tracks.append(melodyTrack());
    for (const LoopLayer& layer : library.layersForRhythm(rhythm.id))
        project.tracks.append(layerTrack(layer));
    project.harmonyTrack = chords();
}

// ---- The checks ----------------------------------------------------------------------------

/// Pitch classes of the notes that start in one bar. The remainder keeps the sign of the pitch.
QSet<int> pitchClassesInBar(const QList<NoteEvent>& notes, int bar, double beatsPerBar)
{
    QSet<int> pitchClasses;
    for (const NoteEvent& note : notes) {
        if (note.startBeat >= bar * beatsPerBar - kBarTolerance &&
            note.startBeat < (bar + 1) * beatsPerBar - kBarTolerance)
            pitchClasses.insert(note.pitch % 12);
    }
    return pitchClasses;
}

bool checkPitchedLayer(const Project& project, const LoopLayer& layer,
                       const QList<NoteEvent>& notes)
{
    bool follows = true;
    const QList<int> scale = project.keySignature.scalePitchClasses();
    const auto outside = std::ranges::find_if(
        notes, [&](const NoteEvent& note) { return !scale.contains(note.pitch % 12); });
    if (outside != notes.end()) {
        std::printf("FALLO armonía: «%s» tocó una nota fuera de la tonalidad (%d)\n",
                    qUtf8Printable(layer.label), outside->pitch);
        follows = false;
    }
    const double bar = project.beatsPerBar();
    if (pitchClassesInBar(notes, 0, bar) == pitchClassesInBar(notes, 1, bar)) {
        std::printf(
            "FALLO armonía: «%s» toca lo mismo en el i que en el iv — no sigue los acordes\n",
            qUtf8Printable(layer.label));
        follows = false;
    }
    return follows;
}

bool checkPercussionLayer(const LoopLibrary& library, const LoopLayer& layer, LoopSection section,
                          const QList<NoteEvent>& notes)
{
    QSet<int> written;
    for (const LoopVariant& variant : library.variantsFor(layer.id, section)) {
        for (const NoteEvent& note : variant.notes)
            written.insert(note.pitch);
    }
    const auto moved = std::ranges::find_if(
        notes, [&](const NoteEvent& note) { return !written.contains(note.pitch); });
    if (moved == notes.end())
        return true;
    std::printf("FALLO percusión: «%s» transportó un golpe (%d)\n", qUtf8Printable(layer.label),
                moved->pitch);
    return false;
}

bool checkAccompanimentFollowsChords(const Project& project, const LoopLibrary& library)
{
    bool follows = true;
    for (const Track& track : project.tracks) {
        const LoopLayer* layer =
            track.loopBlocks.isEmpty() ? nullptr : library.findLayer(track.loopBlocks[0].layerId);
        if (!layer)
            continue;
        const QList<NoteEvent> notes = PlaybackEngine::renderTrackNotes(project, track, &library);
        if (notes.isEmpty()) {
            std::printf("FALLO acompañamiento: «%s» no sonó ninguna nota\n",
                        qUtf8Printable(layer->label));
            follows = false;
            continue;
        }
        const bool passed =
            layer->pitched
                ? checkPitchedLayer(project, *layer, notes)
                : checkPercussionLayer(library, *layer, track.loopBlocks[0].section, notes);
        follows = follows && passed;
    }
    return follows;
}

QList<QList<int>> renderedPitches(const Project& project, const LoopLibrary& library)
{
    QList<QList<int>> pitches;
    for (const Track& track : project.tracks) {
        QList<int> ofTrack;
        for (const NoteEvent& note : PlaybackEngine::renderTrackNotes(project, track, &library))
            ofTrack.append(note.pitch);
        pitches.append(ofTrack);
    }
    return pitches;
}

/// Muting the chord lane silences the chords; the loops go on following them.
bool mutingKeepsAccompaniment(Project& project, const LoopLibrary& library)
{
    const QList<QList<int>> sounding = renderedPitches(project, library);
    project.harmonyTrack.muted = true;
    const QList<QList<int>> muted = renderedPitches(project, library);
    project.harmonyTrack.muted = false;
    return sounding == muted;
}

bool survivesProjectFile(const Project& project)
{
    const QJsonObject json = project.toJson();
    const std::unique_ptr<Project> copy(Project::fromJson(json, nullptr));
    return copy->toJson() == json;
}

/// Runs one export and prints its verdict under the name of the format.
bool exported(const char* format, const QString& path,
              const std::function<bool(const QString& path, QString* error)>& write)
{
    QString error;
    if (!write(path, &error)) {
        std::printf("FALLO %s: %s\n", format, qUtf8Printable(error));
        return false;
    }
    std::printf("%s OK: %lld bytes\n", format, static_cast<long long>(QFileInfo(path).size()));
    return true;
}

/// The whole run, up to the first failure.
bool allPasses(const QString& outputDir)
{
    // What this user has downloaded says nothing about the installation.
    const ContentRoots roots(QCoreApplication::applicationDirPath() + "/resources"_L1);
    InstrumentLibrary instruments(roots.soundfonts());
    instruments.loadBuiltinGmInstruments();
    LoopLibrary library(roots.loops(), &instruments);
    library.reload();

    std::printf("estilos: %d, ritmos: %d\n", static_cast<int>(library.styles().size()),
                static_cast<int>(library.rhythms().size()));
    if (library.rhythms().size() < 2) {
        std::printf("FALLO: no se cargaron los ritmos preinstalados\n");
        return false;
    }
    const Rhythm* rhythm = library.findRhythm(kReferenceRhythm);
    if (!rhythm || !library.grooveForRhythm(kReferenceRhythm)) {
        std::printf("FALLO: falta el Carnavalito o su groove\n");
        return false;
    }

    Project project(nullptr);
    compose(*rhythm, library, project);
    if (!checkAccompanimentFollowsChords(project, library))
        return false;
    std::printf("acompañamiento sigue los acordes: OK\n");
    if (!mutingKeepsAccompaniment(project, library)) {
        std::printf("FALLO: silenciar los acordes cambió el acompañamiento\n");
        return false;
    }
    std::printf("acordes silenciados sin tocar el arreglo: OK\n");

    QDir().mkpath(outputDir);
    const QString bank = roots.gmBank();
    const bool written =
        exported("MIDI", outputDir + "/selftest.mid"_L1,
                 [&](const QString& path, QString* error) {
                     return MidiExporter::exportProject(project, &library, &instruments, path,
                                                        error);
                 }) &&
        exported("WAV", outputDir + "/selftest.wav"_L1,
                 [&](const QString& path, QString* error) {
                     return AudioExporter::exportWav(project, outputDir, &library, &instruments,
                                                     bank, path, error);
                 }) &&
        exported("MP3", outputDir + "/selftest.mp3"_L1, [&](const QString& path, QString* error) {
            return AudioExporter::exportMp3(project, outputDir, &library, &instruments, bank, path,
                                            error);
        });
    if (!written)
        return false;

    const bool survives = survivesProjectFile(project);
    std::printf("roundtrip JSON: %s\n", survives ? "OK" : "FALLO");
    return survives;
}

} // namespace

int runSelfTest(const QString& outputDir)
{
    attachConsole();
    const bool passed = allPasses(outputDir);
    std::fflush(stdout);
    return passed ? 0 : 1;
}
