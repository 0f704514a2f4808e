#include "export/AudioExporter.h"

#include "playback/PlaybackEngine.h"
#include "support/ContentFixture.h"
#include "support/ContextTranslator.h"
#include "support/FluidSpy.h"
#include "support/FullDisk.h"
#include "support/HeldNote.h"
#include "support/LameSpy.h"
#include "support/Mp3Frames.h"
#include "support/ProjectBuilder.h"
#include "support/TinyBank.h"
#include "support/Tones.h"
#include "support/WavFile.h"

#include <QTest>

#include <fluidsynth.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <sched.h>
#include <sys/resource.h>
#include <utility>

using namespace ProjectBuilder;

namespace {

constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr double kMaxDouble = std::numeric_limits<double>::max();
constexpr qint64 kTail = 88200;

/// At this tempo a beat is exactly 1000 frames.
constexpr int kBpmOfThousandFrames = 2646;

/// What the synthesiser leaves of its effects where nothing sounds.
constexpr float kSilence = 1e-6F;

const QString kTooLong = "La obra es demasiado larga para exportarla.";

std::unique_ptr<Project> quickSong(const QList<Track>& tracks, const HarmonyTrack& harmony = {})
{
    return project(tracks, harmony, {}, {}, kBpmOfThousandFrames);
}

/// A straight track whose block has the length of a bar, whatever its notes do.
Track notesTrack(const QList<NoteEvent>& notes, const QString& instrumentId = "gm_piano")
{
    return straight(melodyTrack({melody(notes)}, instrumentId));
}

/// Four tracks of so many notes each, four to the beat.
std::unique_ptr<Project> denseSong(int notes)
{
    QList<Track> tracks;
    for (int track = 0; track < 4; ++track) {
        QList<NoteEvent> line;
        for (int i = 0; i < notes; ++i)
            line.append(note(48 + 7 * track + i % 5, 0.25 * i, 0.2, 60 + i % 40));
        tracks.append(notesTrack(line));
        tracks.last().melodyBlocks[0].durationBeats = 0.25 * notes;
    }
    return quickSong(tracks);
}

float peak(const QList<float>& samples)
{
    float most = 0.0F;
    for (const float sample : samples)
        most = std::max(most, std::abs(sample));
    return most;
}

QList<float> left(const QList<float>& stereo)
{
    QList<float> samples;
    for (qsizetype i = 0; i < stereo.size(); i += 2)
        samples.append(stereo.at(i));
    return samples;
}

/// Notes and renderings, in order, with the frames at which they came.
QList<FluidSpy::Call> performance()
{
    QList<FluidSpy::Call> calls;
    for (const FluidSpy::Call& call : FluidSpy::timeline()) {
        if (call.text.startsWith("noteo") || call.text.startsWith("write_float"))
            calls.append(
                {call.text.section(' ', 0, call.text.startsWith('w') ? 1 : 3), call.frame});
    }
    return calls;
}

QList<FluidSpy::Call> notesPlayed()
{
    QList<FluidSpy::Call> calls = performance();
    calls.removeIf([](const FluidSpy::Call& call) { return call.text.startsWith('w'); });
    return calls;
}

/// Frames at which notes start or end.
QList<qint64> framesOf(const QString& function)
{
    QList<qint64> frames;
    for (const FluidSpy::Call& call : notesPlayed()) {
        if (call.text.startsWith(function + ' '))
            frames.append(call.frame);
    }
    return frames;
}

QList<int> channelsThatSound()
{
    QList<int> channels;
    for (const QString& call : FluidSpy::calls({"noteon"})) {
        const int channel = call.section(' ', 1, 1).toInt();
        if (!channels.contains(channel))
            channels.append(channel);
    }
    std::ranges::sort(channels);
    return channels;
}

// ---- The mix in its plainest form ----------------------------------------------------------

struct PlainEvent {
    double beat;
    bool on;
    int channel;
    NoteEvent note;
};

void addPlainEvents(QList<PlainEvent>& events, const QList<NoteEvent>& notes, int channel,
                    double& end)
{
    for (const NoteEvent& note : notes) {
        double release = note.startBeat + std::max(note.durationBeats, 0.05);
        for (const NoteEvent& other : notes) {
            if (other.pitch == note.pitch && other.startBeat > note.startBeat)
                release = std::min(release, other.startBeat);
        }
        events.append({note.startBeat, true, channel, note});
        events.append({release, false, channel, note});
        end = std::max(end, note.startBeat + note.durationBeats);
    }
}

/// The events of up to 13 tracks, none muted or soloed, and of the chords, in order.
QList<PlainEvent> plainEvents(const Project& song, const LoopLibrary* library, double& end)
{
    QList<PlainEvent> events;
    int channel = 0;
    for (const Track& track : song.tracks)
        addPlainEvents(events, PlaybackEngine::renderTrackNotes(song, track, library), channel++,
                       end);
    addPlainEvents(events, PlaybackEngine::renderHarmonyNotes(song), 15, end);
    std::ranges::stable_sort(events, [](const PlainEvent& a, const PlainEvent& b) {
        return a.beat < b.beat || (a.beat == b.beat && !a.on && b.on);
    });
    return events;
}

/// Bare FluidSynth, all of whose channels play preset 0 of a bank.
class BareSynth {
public:
    BareSynth(const Project& song, const QByteArray& bank)
    {
        fluid_settings_setnum(settings_, "synth.gain", 0.6);
        synth_ = new_fluid_synth(settings_);
        font_ = fluid_synth_sfload(synth_, bank.constData(), 0);
        for (int channel = 0; channel < song.tracks.size(); ++channel)
            setUp(channel, song.tracks[channel].volume);
        setUp(15, song.harmonyTrack.volume);
    }

    ~BareSynth()
    {
        delete_fluid_synth(synth_);
        delete_fluid_settings(settings_);
    }

    BareSynth(const BareSynth&) = delete;
    BareSynth& operator=(const BareSynth&) = delete;

    void play(const PlainEvent& event)
    {
        if (event.on)
            fluid_synth_noteon(synth_, event.channel, event.note.pitch, event.note.velocity);
        else
            fluid_synth_noteoff(synth_, event.channel, event.note.pitch);
    }

    void render(QList<float>& mix, int from, int to)
    {
        fluid_synth_write_float(synth_, to - from, mix.data(), 2 * from, 2, mix.data(),
                                2 * from + 1, 2);
    }

private:
    void setUp(int channel, float volume)
    {
        fluid_synth_program_select(synth_, channel, font_, 0, 0);
        fluid_synth_cc(synth_, channel, 7, static_cast<int>(volume * 127.0F));
    }

    fluid_settings_t* settings_ = new_fluid_settings();
    fluid_synth_t* synth_ = nullptr;
    int font_ = -1;
};

/// The bar line behind the last block that holds something.
double plainEnd(const Project& song)
{
    Project filled;
    filled.loadJson(song.toJson());
    for (Track& track : filled.tracks)
        track.melodyBlocks.removeIf([](const auto& block) { return block.notes.isEmpty(); });
    return filled.endBeat();
}

QList<float> bareMix(const Project& song, const LoopLibrary* library, const QByteArray& bank)
{
    double end = plainEnd(song);
    const QList<PlainEvent> events = plainEvents(song, library, end);
    const double beatFrames = 2646000.0 / std::max(song.bpm, 1);
    const auto total = static_cast<int>(end * beatFrames) + 88200;
    QList<float> mix(2 * qsizetype(total));
    BareSynth synth(song, bank);
    int done = 0;
    for (const PlainEvent& event : events) {
        const auto frame = static_cast<int>(event.beat * beatFrames);
        if (frame > done)
            synth.render(mix, std::exchange(done, frame), frame);
        synth.play(event);
    }
    synth.render(mix, done, total);
    for (float& sample : mix)
        sample = std::clamp(sample, -1.0F, 1.0F);
    return mix;
}

/// While it lives, the process gets little more memory than it has.
class ScarceMemory {
public:
    ScarceMemory()
    {
        getrlimit(RLIMIT_AS, &before_);
#ifndef __SANITIZE_ADDRESS__
        constexpr rlim_t kMore = rlim_t(1) << 30;
        QFile pages("/proc/self/statm");
        if (pages.open(QIODevice::ReadOnly)) {
            const auto held = pages.readAll().split(' ').value(0).toULongLong() * 4096;
            const rlimit scarce{held + kMore, before_.rlim_max};
            setrlimit(RLIMIT_AS, &scarce);
        }
#endif
    }

    ~ScarceMemory()
    {
        setrlimit(RLIMIT_AS, &before_);
    }

    ScarceMemory(const ScarceMemory&) = delete;
    ScarceMemory& operator=(const ScarceMemory&) = delete;

private:
    rlimit before_{};
};

/// While it lives, all that starts runs on one core.
class OneCore {
public:
    OneCore()
    {
        sched_getaffinity(0, sizeof(before_), &before_);
        int core = 0;
        while (!CPU_ISSET(core, &before_))
            ++core;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(core, &one);
        sched_setaffinity(0, sizeof(one), &one);
    }

    ~OneCore() { sched_setaffinity(0, sizeof(before_), &before_); }

    OneCore(const OneCore&) = delete;
    OneCore& operator=(const OneCore&) = delete;

private:
    cpu_set_t before_;
};

/// How a file is exported: AudioExporter::exportWav() or exportMp3().
using Export = bool (*)(const Project&, const QString&, const LoopLibrary*, InstrumentLibrary*,
                        const QString&, const QString&, QString*, const ExportProgress&);

} // namespace

/// AddressSanitizer claims address space by the terabyte: it is told itself how much there is.
extern "C" const char* __asan_default_options();

extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=1024";
}

Q_DECLARE_METATYPE(Export)

class AudioExporterTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void lengthIsTheSongAndTwoSeconds_data();
    void lengthIsTheSongAndTwoSeconds();
    void lengthIsCutToWholeFrames();
    void releaseBehindTheTailIsNotPlayed();

    void eventsFallExactlyOnTheirFrames();
    void framesOfBeatsAreCutOff();
    void eventsOfOneFrameComeBeforeAnySound();
    void releaseComesBeforeStartAtOneBeat();
    void longRunsAreRenderedInBlocks();
    void notesBeforeTheStartSoundAtTheStart();
    void mixAgreesWithItsPlainForm();

    void channelsAreSetBeforeAnythingSounds();
    void tracksPastTheThirteenthAreLeftOut();
    void mutedHarmonyIsNotSetUp();
    void recordedBankIsPlayed();
    void withoutInstrumentsEverythingIsAPiano();
    void tracksThatAreHeard_data();
    void tracksThatAreHeard();
    void withoutALibraryLoopsAreSilent();

    void emptySongIsTwoSecondsOfSilence();
    void missingBankGivesSilenceOfTheRightLength();
    void loneNoteIsNotScaled();
    void repeatedNotesAreAllHeard_data();
    void repeatedNotesAreAllHeard();
    void sumAboveFullScaleIsClipped();
    void whatIsNoNumberIsSilent();
    void equalSongsGiveEqualMixes();
    void fewNotesArePlayedByOneSynthesiser();
    void manyNotesAreSharedByTwo();
    void sharedNotesDoNotDependOnTheMachine();
    void stoppedExportOfManyNotesEnds();
    void synthesiserEndsWithTheExport();

    void voiceIsAddedToTheNotes();
    void voicesAreClippedAtFullScale();
    void voiceMixIsTheVoicesAlone();
    void clipOf48000HzKeepsItsPitch();
    void heldNoteIsExportedInTune();
    void clipIsCutAndFadesBeforeTheCut();
    void clipCountsOnlyInsideTheMix();
    void noteSoloSilencesVoices();
    void soloPastTheThirteenthLeavesTheHarmonyAlone();
    void fileThatIsNoSoundIsSkipped();

    void wavHoldsTheMix();
    void mp3HoldsTheMix();
    void exportReplacesTheFormerFile_data();
    void exportReplacesTheFormerFile();

    void progressGrowsAndChangesNothing_data();
    void progressGrowsAndChangesNothing();
    void stoppedExportLeavesEverythingAsItWas_data();
    void stoppedExportLeavesEverythingAsItWas();

    void withoutASynthesiserNothingIsExported();
    void errorsNeedNobodyToListen();
    void errorsAreTranslated();
    void unwritableWavIsReported_data();
    void unwritableWavIsReported();
    void unwritableMp3IsReportedInTheWordsOfQFile_data();
    void unwritableMp3IsReportedInTheWordsOfQFile();
    void refusingLameIsReported();
    void missingLameIsReported();
    void deviceThatIsFullIsNoSuccess_data();
    void deviceThatIsFullIsNoSuccess();

    void tooLongASongIsRefusedBeforeItIsRendered_data();
    void tooLongASongIsRefusedBeforeItIsRendered();
    void songThatMemoryCannotHoldIsRefused();
    void hostileNumbersStillGiveAMix_data();
    void hostileNumbersStillGiveAMix();
    void hostileLevelsStayFinite();

private:
    QList<float> mixed(const Project& song, QString* error = nullptr);

    /// Frames of the mix of a song.
    qint64 lengthOf(const Project& song) { return mixed(song).size() / 2; }

    bool exported(Export save, const Project& song, const QString& path, QString* error,
                  const ExportProgress& progress = {});

    void addExports();

    QString bank() const { return files_.filePath("gm.sf2"); }

    /// A song of one voice clip, whose file holds these samples.
    std::unique_ptr<Project> voiceSong(const QList<float>& samples, int sampleRate = 44100);

    ContentFixture files_;
};

void AudioExporterTest::initTestCase()
{
    files_.instruments().loadBuiltinGmInstruments();
    ContentFixture::write(bank(),
                          TinyBank::bytes({{0, 0, 100}, {0, 73, 80}, {0, 40, 60}, {128, 0, 50}}));
    ContentFixture::write(files_.filePath("piano.sf2"), TinyBank::bytes({{0, 0, 100}}));
    files_.addPackage("a", R"({"rhythm": {"id": "r"}, "loopLayers": [{"id": "l"}],
        "loopVariants": [{"layerId": "l", "notes": [
            {"pitch": 60, "durationBeats": 1}, {"pitch": 64, "startBeat": 1.5}]}]})");
    files_.library().reload();
}

void AudioExporterTest::init()
{
    FluidSpy::reset();
    LameSpy::reset();
}

QList<float> AudioExporterTest::mixed(const Project& song, QString* error)
{
    return AudioExporter::renderFullMix(song, files_.root(), &files_.library(),
                                        &files_.instruments(), bank(), error);
}

bool AudioExporterTest::exported(Export save, const Project& song, const QString& path,
                                 QString* error, const ExportProgress& progress)
{
    return save(song, files_.root(), &files_.library(), &files_.instruments(), bank(), path, error,
                progress);
}

void AudioExporterTest::addExports()
{
    QTest::addColumn<Export>("save");
    QTest::newRow("WAV") << &AudioExporter::exportWav;
    QTest::newRow("MP3") << &AudioExporter::exportMp3;
}

std::unique_ptr<Project> AudioExporterTest::voiceSong(const QList<float>& samples, int sampleRate)
{
    ContentFixture::write(files_.root() + "/voz.wav", WavFile::bytes(samples, sampleRate));
    auto song = quickSong({});
    song->audioTracks = {voiceTrack({clip("voz.wav")})};
    song->audioTracks[0].volume = 1.0F;
    return song;
}

// ---- Length --------------------------------------------------------------------------------

void AudioExporterTest::lengthIsTheSongAndTwoSeconds_data()
{
    QTest::addColumn<Track>("track");
    QTest::addColumn<HarmonyTrack>("harmony");
    QTest::addColumn<qint64>("frames");

    const Track ringing = notesTrack({note(60, 3.0, 7.5)});
    Track muted = ringing;
    muted.muted = true;
    HarmonyTrack ringingChord;
    ringingChord.blocks = {{.barIndex = 0, .events = {chord(1, 0.0, 9.25)}}};
    HarmonyTrack mutedChord = ringingChord;
    mutedChord.muted = true;
    const HarmonyTrack none;
    QTest::newRow("nothing") << Track() << none << kTail;
    QTest::newRow("a note inside a bar counts the bar")
        << notesTrack({note(60, 0.0, 1.0)}) << none << 4000 + kTail;
    QTest::newRow("a block that holds nothing does not count")
        << straight(melodyTrack({melody({note(60, 0.0, 1.0)}), melody({}, 4.0, 32.0)})) << none
        << 4000 + kTail;
    QTest::newRow("a note that rings past the end counts itself")
        << ringing << none << 10500 + kTail;
    QTest::newRow("a muted track counts its blocks but not its ringing")
        << muted << none << 4000 + kTail;
    QTest::newRow("a note of length 0 counts its start")
        << straight(melodyTrack({melody({note(60, 4.5, 0.0)}, 0.0, 8.0)})) << none << 8000 + kTail;
    QTest::newRow("a loop counts its block")
        << straight(loopTrack({loop("r", "l", 1.0, 6.0)})) << none << 8000 + kTail;
    QTest::newRow("a loop that is not there counts its block")
        << straight(loopTrack({loop("nada", "nada", 1.0, 6.0)})) << none << 8000 + kTail;
    QTest::newRow("a chord counts its bar") << Track() << harmony({0, 1}) << 8000 + kTail;
    QTest::newRow("a chord that rings past its bar counts itself")
        << Track() << ringingChord << 9250 + kTail;
    QTest::newRow("muted chords count their bar but not their ringing")
        << Track() << mutedChord << 4000 + kTail;
}

void AudioExporterTest::lengthIsTheSongAndTwoSeconds()
{
    QFETCH(Track, track);
    QFETCH(HarmonyTrack, harmony);
    QFETCH(qint64, frames);
    QCOMPARE(lengthOf(*quickSong({track}, harmony)), frames);
}

void AudioExporterTest::lengthIsCutToWholeFrames()
{
    const Track track = notesTrack({note(60, 0.0, 1.0)});
    QCOMPARE(lengthOf(*project({track}, {}, {}, {}, 120)), 176400);
    // 4 beats of 24054.54 frames.
    QCOMPARE(lengthOf(*project({track}, {}, {}, {}, 110)), 96218 + kTail);
    // A tempo of 0 counts as 1: a bar of 1/16 of a beat is 165375 frames.
    const TimeSignature tiny{.numerator = 1, .denominator = 64};
    const Track shortest = straight(melodyTrack({melody({note(60, 0.0, 0.01)}, 0.0, 0.01)}));
    QCOMPARE(lengthOf(*project({shortest}, {}, tiny, {}, 0)), 165375 + kTail);
    QCOMPARE(lengthOf(*project({shortest}, {}, tiny, {}, kMinInt)), 165375 + kTail);
}

void AudioExporterTest::releaseBehindTheTailIsNotPlayed()
{
    // At tempo 1 the shortest note takes 132300 frames, more than this bar and the tail.
    const TimeSignature tiny{.numerator = 1, .denominator = 256};
    const Track track = straight(melodyTrack({melody({note(60, 0.0, 0.0)}, 0.0, 0.01)}));
    QCOMPARE(lengthOf(*project({track}, {}, tiny, {}, 1)), 41343 + kTail);
    QCOMPARE(FluidSpy::calls({"noteon"}).size(), 1);
    QVERIFY(FluidSpy::calls({"noteoff"}).isEmpty());
}

// ---- Time ----------------------------------------------------------------------------------

void AudioExporterTest::eventsFallExactlyOnTheirFrames()
{
    mixed(*quickSong({notesTrack({note(60, 0.0, 1.0), note(60, 1.0, 0.5)})}));
    QList<FluidSpy::Call> expected{{"noteon 0 60 100", 0},    {"write_float 1000", 0},
                                   {"noteoff 0 60", 1000},    {"noteon 0 60 100", 1000},
                                   {"write_float 500", 1000}, {"noteoff 0 60", 1500}};
    for (int block = 0; block < 22; ++block)
        expected.append({"write_float 4096", 1500 + 4096 * block});
    expected.append({"write_float 588", 91612});
    QCOMPARE(performance(), expected);
}

void AudioExporterTest::framesOfBeatsAreCutOff()
{
    // 24054.54 frames a beat.
    const QList<NoteEvent> notes{note(60, 1.0, 0.5), note(62, 2.0, 0.5), note(64, 3.0, 0.5)};
    mixed(*project({notesTrack(notes)}, {}, {}, {}, 110));
    QCOMPARE(framesOf("noteon"), QList<qint64>({24054, 48109, 72163}));
    QCOMPARE(framesOf("noteoff"), QList<qint64>({36081, 60136, 84190}));
}

void AudioExporterTest::eventsOfOneFrameComeBeforeAnySound()
{
    const QList<NoteEvent> notes{note(60, 1.0), note(64, 1.0), note(67, 1.0 + 1e-6)};
    mixed(*quickSong({notesTrack(notes), notesTrack({note(40, 1.0)})}, harmony({1})));
    QCOMPARE(framesOf("noteon"), QList<qint64>({0, 0, 0, 1000, 1000, 1000, 1000}));
    // The third note of the melody comes last, as its beat does.
    QCOMPARE(FluidSpy::calls({"noteon"}).last(), "noteon 0 67 100");
}

void AudioExporterTest::releaseComesBeforeStartAtOneBeat()
{
    const Track first = notesTrack({note(60, 1.0), note(60, 0.0)});
    const Track second = notesTrack({note(72, 1.0), note(50, 0.0)});
    mixed(*quickSong({first, second}));
    QList<bool> starts;
    for (const FluidSpy::Call& call : notesPlayed()) {
        if (call.frame == 1000)
            starts.append(call.text.startsWith("noteon"));
    }
    QCOMPARE(starts, QList<bool>({false, false, true, true}));
}

void AudioExporterTest::longRunsAreRenderedInBlocks()
{
    mixed(*quickSong({notesTrack({note(60, 0.5, 9.0)})}));
    qint64 done = 0;
    for (const QString& call : FluidSpy::calls({"write_float"})) {
        const int frames = call.section(' ', 1, 1).toInt();
        QVERIFY(frames > 0 && frames <= 4096);
        QCOMPARE(call.section(' ', 2), "0 2 1 2 together");
        done += frames;
    }
    QCOMPARE(done, 9500 + kTail);
    QCOMPARE(AudioExporter::kTailFrames, kTail);
}

void AudioExporterTest::notesBeforeTheStartSoundAtTheStart()
{
    mixed(*quickSong({notesTrack({note(60, -8.0, 1.0), note(62, -1.0, 2.5)})}));
    QCOMPARE(framesOf("noteon"), QList<qint64>({0, 0}));
    QCOMPARE(framesOf("noteoff"), QList<qint64>({0, 1500}));
}

void AudioExporterTest::mixAgreesWithItsPlainForm()
{
    Generator generator(21);
    const QString piano = files_.filePath("piano.sf2");
    for (int round = 0; round < 10; ++round) {
        Project song;
        generator.fill(song);
        song.bpm = 3000 + 37 * round;
        song.audioTracks.clear();
        song.harmonyTrack.muted = false;
        for (Track& track : song.tracks) {
            track.muted = track.solo = false;
            track.loopBlocks.append(loop("r", "l", round / 8.0, 15.5));
        }
        const QList<float> mix =
            AudioExporter::renderFullMix(song, {}, &files_.library(), nullptr, piano, nullptr);
        QVERIFY(mix == bareMix(song, &files_.library(), piano.toUtf8()));
        QVERIFY(song.tracks.isEmpty() || peak(mix) > 0.01F);
    }
}

// ---- Channels and tracks -------------------------------------------------------------------

void AudioExporterTest::channelsAreSetBeforeAnythingSounds()
{
    Track flute = notesTrack({note(60, 0.0)}, "gm_flauta");
    flute.volume = 1.0F;
    Track drums = notesTrack({note(36, 0.0)}, "gm_bateria");
    drums.muted = true;
    drums.volume = 0.5F;
    const Track nobody = notesTrack({note(60, 0.0)}, "nadie");
    mixed(*quickSong({flute, drums, nobody}, harmony({1})));
    QCOMPARE(FluidSpy::calls({"program_select", "cc"}),
             QStringList({"program_select 0 1 0 73", "cc 0 7 127", "program_select 1 1 128 0",
                          "cc 1 7 63", "program_select 2 1 0 0", "cc 2 7 101",
                          "program_select 15 1 0 0", "cc 15 7 88"}));
    const QStringList calls = FluidSpy::calls();
    QVERIFY(calls.indexOf("cc 15 7 88") < calls.indexOf("noteon 0 60 100"));
}

void AudioExporterTest::tracksPastTheThirteenthAreLeftOut()
{
    mixed(*quickSong(QList<Track>(20, notesTrack({note(60, 0.0)}))));
    QCOMPARE(FluidSpy::calls({"noteon"}).size(), 13);
    QCOMPARE(channelsThatSound(), QList<int>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    // Thirteen tracks and the harmony.
    QCOMPARE(FluidSpy::calls({"cc"}).size(), 14);
}

void AudioExporterTest::mutedHarmonyIsNotSetUp()
{
    HarmonyTrack chords = harmony({1});
    chords.muted = true;
    mixed(*quickSong({}, chords));
    QVERIFY(FluidSpy::calls({"program_select", "cc", "noteon"}).isEmpty());
}

void AudioExporterTest::recordedBankIsPlayed()
{
    const QString path = files_.bankRoot() + "/quena.sf2";
    ContentFixture::write(path, TinyBank::bytes({{0, 0, 50}}));
    files_.instruments().registerInstrument({.id = "quena",
                                             .name = "Quena",
                                             .category = InstrumentCategory::Winds,
                                             .source = InstrumentSource::CustomRecordedBank,
                                             .generalMidiProgram = 0,
                                             .soundfontBankPath = "quena.sf2"});
    const QList<float> mix = mixed(*quickSong({notesTrack({note(60, 0.0, 8.0)}, "quena")}));
    QVERIFY(FluidSpy::calls({"sfload"}).contains("sfload " + path + " 0"));
    // A period of 50 samples, not the piano's 100.
    const QList<float> heard = left(mix).first(8000);
    QVERIFY(Tones::strengthAt(heard, 44100, 882.0) > 10 * Tones::strengthAt(heard, 44100, 441.0));
}

void AudioExporterTest::withoutInstrumentsEverythingIsAPiano()
{
    const auto song = quickSong({notesTrack({note(36, 0.0)}, "gm_bateria")});
    AudioExporter::renderFullMix(*song, {}, nullptr, nullptr, bank(), nullptr);
    QCOMPARE(FluidSpy::calls({"program_select"}).first(), "program_select 0 1 0 0");
    QCOMPARE(channelsThatSound(), QList<int>{0});
}

void AudioExporterTest::tracksThatAreHeard_data()
{
    // One letter a track: m muted, s soloed, x both, - neither.
    QTest::addColumn<QString>("notes");
    QTest::addColumn<QString>("voices");
    QTest::addColumn<bool>("harmonyMuted");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("all of them") << "---"
                                 << "" << false << QList<int>{0, 1, 2, 15};
    QTest::newRow("a muted track is not") << "-m-"
                                          << "" << false << QList<int>{0, 2, 15};
    QTest::newRow("a soloed track alone") << "-s-"
                                          << "" << false << QList<int>{1, 15};
    QTest::newRow("two soloed tracks") << "s-s"
                                       << "" << false << QList<int>{0, 2, 15};
    QTest::newRow("mute beats solo") << "-x-"
                                     << "" << false << QList<int>{15};
    QTest::newRow("muted harmony is not") << "--"
                                          << "" << true << QList<int>{0, 1};
    QTest::newRow("harmony goes on under a solo") << "s-"
                                                  << "" << false << QList<int>{0, 15};
    QTest::newRow("muted harmony stays so under a solo") << "s-"
                                                         << "" << true << QList<int>{0};
    QTest::newRow("a soloed voice silences the notes") << "--"
                                                       << "-s" << false << QList<int>{15};
    QTest::newRow("a voice both soloed and muted too") << "--"
                                                       << "x" << false << QList<int>{15};
    QTest::newRow("a soloed voice leaves a soloed track") << "-s"
                                                          << "s" << false << QList<int>{1, 15};
    QTest::newRow("a muted voice changes nothing") << "--"
                                                   << "m" << false << QList<int>{0, 1, 15};
    QTest::newRow("a solo past the thirteenth silences all") << "-------------s"
                                                             << "" << false << QList<int>{15};
}

void AudioExporterTest::tracksThatAreHeard()
{
    QFETCH(QString, notes);
    QFETCH(QString, voices);
    QFETCH(bool, harmonyMuted);
    const auto song = quickSong({}, harmony({1}));
    song->harmonyTrack.muted = harmonyMuted;
    const auto flag = [](auto track, QChar letter) {
        track.muted = letter == 'm' || letter == 'x';
        track.solo = letter == 's' || letter == 'x';
        return track;
    };
    for (const QChar letter : notes)
        song->tracks.append(flag(notesTrack({note(60, 0.0)}), letter));
    for (const QChar letter : voices)
        song->audioTracks.append(flag(AudioTrack(), letter));
    mixed(*song);
    QTEST(channelsThatSound(), "expected");
}

void AudioExporterTest::withoutALibraryLoopsAreSilent()
{
    const auto song = quickSong({straight(loopTrack({loop("r", "l", 0.0, 4.0)}))});
    const QList<float> mix =
        AudioExporter::renderFullMix(*song, {}, nullptr, &files_.instruments(), bank(), nullptr);
    QCOMPARE(mix.size(), 2 * (4000 + kTail));
    QVERIFY(FluidSpy::calls({"noteon"}).isEmpty());
    mixed(*song);
    QCOMPARE(FluidSpy::calls({"noteon"}).size(), 2);
}

// ---- Sound ---------------------------------------------------------------------------------

void AudioExporterTest::emptySongIsTwoSecondsOfSilence()
{
    QString error = "lo anterior";
    const QList<float> mix = mixed(*project(), &error);
    QCOMPARE(mix.size(), 176400);
    QVERIFY(peak(mix) < kSilence);
    QCOMPARE(error, "lo anterior");
}

void AudioExporterTest::missingBankGivesSilenceOfTheRightLength()
{
    const auto song = quickSong({notesTrack({note(60, 0.0, 4.0)})}, harmony({1}));
    QString error;
    const QList<float> mix =
        AudioExporter::renderFullMix(*song, files_.root(), &files_.library(), &files_.instruments(),
                                     files_.filePath("no.sf2"), &error);
    QCOMPARE(mix.size(), 2 * (4000 + kTail));
    QVERIFY(peak(mix) < kSilence);
    QVERIFY(error.isEmpty());
    QVERIFY(exported(&AudioExporter::exportWav, *song, files_.filePath("silence.wav"), &error));
}

void AudioExporterTest::loneNoteIsNotScaled()
{
    const auto song = quickSong({notesTrack({note(60, 0.0, 4.0)})});
    const QList<float> mix = mixed(*song);
    QVERIFY(peak(mix) > 0.01F && peak(mix) < 0.5F);
    QVERIFY(mix == bareMix(*song, nullptr, bank().toUtf8()));
}

void AudioExporterTest::repeatedNotesAreAllHeard_data()
{
    QTest::addColumn<QString>("instrument");
    for (const char* instrument : {"gm_flauta", "gm_violin", "gm_piano", "gm_guitarra_nylon"})
        QTest::newRow(instrument) << instrument;
}

void AudioExporterTest::repeatedNotesAreAllHeard()
{
    QFETCH(QString, instrument);
    constexpr int kNotes = 16;
    const QString real =
        QCoreApplication::applicationDirPath() + "/resources/soundfonts/velta_bank_gm.sf2";
    // As loose as every new track is.
    const auto song = project(
        {melodyTrack({melody(notesInARow(QList<int>(kNotes, 60)), 0.0, kNotes)}, instrument)}, {},
        {}, {}, 120);
    const QList<float> mix = left(
        AudioExporter::renderFullMix(*song, {}, nullptr, &files_.instruments(), real, nullptr));
    QList<double> levels;
    for (const NoteEvent& note :
         PlaybackEngine::renderTrackNotes(*song, song->tracks.first(), nullptr)) {
        const auto frame = static_cast<qsizetype>(22050 * note.startBeat);
        const double level = Tones::rms(mix.mid(frame + 4410, 13230));
        // A SoundFont takes the velocity, which differs as well, by its square.
        levels.append(20.0 * std::log10(level) - 40.0 * std::log10(note.velocity));
    }
    QCOMPARE(levels.size(), kNotes);
    const auto [softest, loudest] = std::ranges::minmax(levels);
    qInfo("%.2f dB lie between the softest and the loudest", loudest - softest);
    // A plucked string rings on into the next note, with it or against it.
    QVERIFY(loudest - softest < 1.5);
}

void AudioExporterTest::sumAboveFullScaleIsClipped()
{
    QList<NoteEvent> notes;
    for (int i = 0; i < 60; ++i)
        notes.append(note(60 + i % 2, 0.0, 8.0, 127));
    const QList<float> mix = mixed(*quickSong(QList<Track>(4, notesTrack(notes))));
    QCOMPARE(*std::ranges::max_element(mix), 1.0F);
    QCOMPARE(*std::ranges::min_element(mix), -1.0F);
}

void AudioExporterTest::whatIsNoNumberIsSilent()
{
    const auto song = quickSong({notesTrack({note(60, 0.0), note(64, 0.5)})});
    QList<float> expected = mixed(*song);
    expected[0] = 0.0F;
    FluidSpy::spoilSound();
    QVERIFY(mixed(*song) == expected);
}

void AudioExporterTest::equalSongsGiveEqualMixes()
{
    const auto song = quickSong({notesTrack({note(60, 0.0), note(64, 0.5)}, "gm_flauta"),
                                 straight(loopTrack({loop("r", "l", 0.0, 8.0)}))},
                                harmony({1, 5}));
    const QList<float> first = mixed(*song);
    QVERIFY(peak(first) > 0.01F);
    QVERIFY(mixed(*song) == first);
}

void AudioExporterTest::fewNotesArePlayedByOneSynthesiser()
{
    QVERIFY(!mixed(*denseSong(300)).isEmpty());
    QCOMPARE(FluidSpy::calls({"new_synth"}).size(), 1);
}

void AudioExporterTest::manyNotesAreSharedByTwo()
{
    // Long enough for its notes to go on far into the last third of the mix.
    const auto song = denseSong(900);
    const QList<float> mix = mixed(*song);
    QCOMPARE(FluidSpy::calls({"new_synth"}).size(), 2);
    QCOMPARE(FluidSpy::calls({"noteon"}).size(), 4 * 900);
    QCOMPARE(FluidSpy::calls({"delete_synth"}).size(), 2);

    QList<float> off = bareMix(*song, &files_.library(), bank().toUtf8());
    QCOMPARE(mix.size(), off.size());
    std::ranges::transform(off, mix, off.begin(), std::minus());
    // What a voice of the library played before leaves a trace in what it plays next.
    QVERIFY(Tones::rms(mix) > 0.01);
    QVERIFY(Tones::rms(off) < 0.003 * Tones::rms(mix));
}

void AudioExporterTest::sharedNotesDoNotDependOnTheMachine()
{
    const auto song = denseSong(600);
    const QList<float> first = mixed(*song);
    for (int i = 0; i < 3; ++i)
        QVERIFY(mixed(*song) == first);
    const OneCore pinned;
    for (int i = 0; i < 3; ++i)
        QVERIFY(mixed(*song) == first);
}

void AudioExporterTest::stoppedExportOfManyNotesEnds()
{
    for (const double end : {0.0, 0.3, 0.9}) {
        QVERIFY(AudioExporter::renderFullMix(*denseSong(600), {}, nullptr, &files_.instruments(),
                                             bank(), nullptr,
                                             [end](double done) { return done < end; })
                    .isEmpty());
        QCOMPARE(FluidSpy::calls({"new_synth"}).size(), FluidSpy::calls({"delete_synth"}).size());
    }
}

void AudioExporterTest::synthesiserEndsWithTheExport()
{
    mixed(*quickSong({notesTrack({note(60, 0.0)})}));
    const QStringList ends{"new_synth", "new_driver", "delete_driver", "delete_synth",
                           "delete_settings"};
    QCOMPARE(FluidSpy::calls(ends), QStringList({"new_synth", "delete_synth", "delete_settings"}));
}

// ---- Voices --------------------------------------------------------------------------------

void AudioExporterTest::voiceIsAddedToTheNotes()
{
    const auto song = voiceSong(Tones::sine(700.0, 44100, 6000, 0.5));
    const QList<float> voice = AudioExporter::renderVoiceMix(*song, files_.root(), 4000 + kTail);
    song->tracks = {notesTrack({note(60, 0.0, 4.0)})};
    song->audioTracks[0].muted = true;
    const QList<float> notes = mixed(*song);
    song->audioTracks[0].muted = false;
    const QList<float> both = mixed(*song);
    QVERIFY(peak(voice) > 0.4F && peak(notes) > 0.01F);
    QCOMPARE(both.size(), notes.size());
    for (qsizetype i = 0; i < both.size(); ++i)
        QVERIFY(both[i] == notes[i] + voice[i]);
}

void AudioExporterTest::voicesAreClippedAtFullScale()
{
    const auto song = voiceSong(Tones::square(100, 4000, 0.9F));
    song->audioTracks[0].clips.append(clip("voz.wav"));
    song->tracks = {straight(melodyTrack({melody({}, 0.0, 4.0)}))};
    const QList<float> voice = AudioExporter::renderVoiceMix(*song, files_.root(), 4000);
    QVERIFY(peak(voice) > 1.79F);
    const QList<float> mix = mixed(*song);
    for (qsizetype i = 0; i < voice.size(); ++i)
        QCOMPARE(mix[i], voice[i] > 0.0F ? 1.0F : -1.0F);
}

void AudioExporterTest::voiceMixIsTheVoicesAlone()
{
    const auto song = voiceSong(Tones::sine(700.0, 44100, 3000, 0.5));
    song->tracks = {notesTrack({note(60, 0.0)})};
    const QList<float> voice = AudioExporter::renderVoiceMix(*song, files_.root(), 5000);
    QCOMPARE(voice.size(), 10000);
    for (qsizetype i = 0; i < voice.size(); i += 2)
        QVERIFY(voice[i] == voice[i + 1]);
    QVERIFY(peak(voice.first(6000)) > 0.4F);
    QCOMPARE(peak(voice.mid(6000)), 0.0F);
    QVERIFY(FluidSpy::calls().isEmpty());

    song->audioTracks.clear();
    QCOMPARE(AudioExporter::renderVoiceMix(*song, files_.root(), 100), QList<float>(200, 0.0F));
}

void AudioExporterTest::clipOf48000HzKeepsItsPitch()
{
    const auto song = voiceSong(Tones::sine(500.0, 48000, 24000, 0.5), 48000);
    const QList<float> voice = left(AudioExporter::renderVoiceMix(*song, files_.root(), 30000));
    // Half a second, short of one sample.
    QVERIFY(voice[22040] != 0.0F);
    QCOMPARE(peak(voice.mid(22049)), 0.0F);
    const double heard = Tones::strongestHz(voice.first(22000), 44100, 450.0, 550.0);
    QVERIFY(std::abs(Tones::cents(heard, 500.0)) < 1.0);
}

void AudioExporterTest::heldNoteIsExportedInTune()
{
    constexpr double kSeconds = 3.0;
    const auto song = voiceSong(Tones::sine(450.0, 48000, 3 * 48000), 48000);
    AudioClip& take = song->audioTracks[0].clips[0];
    take.durationBeats = kSeconds * song->bpm / 60.0;
    take.tune = {.enabled = true, .intensity = 1.0F};
    const QString path = files_.filePath("afinada.wav");
    QString error;
    QVERIFY2(exported(&AudioExporter::exportWav, *song, path, &error), qPrintable(error));

    QList<float> heard;
    const QList<int> written = WavFile::read(ContentFixture::read(path)).samples;
    for (qsizetype i = 2 * 4096; i < 2 * 2 * 44100; i += 2)
        heard.append(static_cast<float>(written.at(i)) / 32768.0F);
    const double off = HeldNote::median(HeldNote::centsOff(heard, 440.0, 44100));
    QVERIFY2(std::abs(off) < 1.0, qPrintable(QString::number(off)));
    const double fallen = 20.0 * std::log10(Tones::strengthAt(heard, 44100, 450.0) /
                                            Tones::strengthAt(heard, 44100, 440.0));
    QVERIFY2(fallen < -40.0, qPrintable(QString::number(fallen)));
    qInfo("%.3f cents off, %.1f dB at the pitch that was sung", off, fallen);
}

void AudioExporterTest::clipIsCutAndFadesBeforeTheCut()
{
    const auto song = voiceSong(QList<float>(44100, 0.5F));
    AudioClip& cut = song->audioTracks[0].clips[0];
    cut.durationBeats = 10.0;
    cut.fadeOutSeconds = 0.1F;
    const QList<float> voice = left(AudioExporter::renderVoiceMix(*song, files_.root(), 20000));
    // 10000 frames are played; the last 4410 of them fade.
    const float full = voice[5000];
    QVERIFY(std::abs(full - 0.5F) < 1e-3F);
    QCOMPARE(voice[5589], full);
    QVERIFY(std::abs(voice[10000 - 2205] - full / 2) < 1e-3F);
    QVERIFY(voice[9999] > 0.0F && voice[9999] < 1e-3F);
    QCOMPARE(peak(voice.mid(10000)), 0.0F);
}

void AudioExporterTest::clipCountsOnlyInsideTheMix()
{
    QList<float> ramp;
    for (int i = 0; i < 3000; ++i)
        ramp.append(static_cast<float>(i) / 6000.0F);
    const auto song = voiceSong(ramp);
    song->audioTracks[0].clips[0].offsetBeats = -1.0;
    song->audioTracks[0].clips.append(clip("voz.wav", 2.5));
    const QList<float> voice = left(AudioExporter::renderVoiceMix(*song, files_.root(), 3000));
    QVERIFY(std::abs(voice[0] - ramp[1000]) < 1e-3F);
    QVERIFY(std::abs(voice[1999] - ramp[2999]) < 1e-3F);
    QCOMPARE(voice[2100], 0.0F);
    QVERIFY(std::abs(voice[2999] - ramp[499]) < 1e-3F);
}

void AudioExporterTest::noteSoloSilencesVoices()
{
    const auto song = voiceSong(Tones::sine(700.0, 44100, 3000, 0.5));
    song->tracks = {notesTrack({note(60, 0.0)})};
    QVERIFY(peak(AudioExporter::renderVoiceMix(*song, files_.root(), 3000)) > 0.4F);
    song->tracks[0].solo = true;
    QCOMPARE(peak(AudioExporter::renderVoiceMix(*song, files_.root(), 3000)), 0.0F);
    song->audioTracks[0].solo = true;
    QVERIFY(peak(AudioExporter::renderVoiceMix(*song, files_.root(), 3000)) > 0.4F);
}

void AudioExporterTest::soloPastTheThirteenthLeavesTheHarmonyAlone()
{
    const auto song = voiceSong(Tones::sine(700.0, 44100, 3000, 0.5));
    song->tracks = QList<Track>(14, notesTrack({note(60, 0.0)}));
    song->tracks[13].solo = true;
    const QList<float> withoutHarmony = mixed(*song);
    QCOMPARE(withoutHarmony.size(), 2 * (4000 + kTail));
    QVERIFY(peak(withoutHarmony) < kSilence);
    song->harmonyTrack = harmony({1});
    QVERIFY(peak(mixed(*song)) > 0.01F);
    QCOMPARE(channelsThatSound(), QList<int>{15});
}

void AudioExporterTest::fileThatIsNoSoundIsSkipped()
{
    const auto song = voiceSong(Tones::sine(700.0, 44100, 3000, 0.5));
    const QList<float> alone = AudioExporter::renderVoiceMix(*song, files_.root(), 3000);
    ContentFixture::write(files_.root() + "/texto.wav", "esto no es sonido");
    for (const char* other : {"texto.wav", "falta.wav", "", ".", "manifest.json", "../gm.sf2"})
        song->audioTracks[0].clips.prepend(clip(other));
    QVERIFY(AudioExporter::renderVoiceMix(*song, files_.root(), 3000) == alone);
}

// ---- Files ---------------------------------------------------------------------------------

void AudioExporterTest::wavHoldsTheMix()
{
    const auto song = quickSong({notesTrack({note(60, 0.0, 4.0)})}, harmony({1}));
    const QString path = files_.filePath("canción.wav");
    QString error = "lo anterior";
    QVERIFY(exported(&AudioExporter::exportWav, *song, path, &error));
    QCOMPARE(error, "lo anterior");

    const QList<float> mix = mixed(*song);
    const WavFile::Content wav = WavFile::read(ContentFixture::read(path));
    QVERIFY(wav.ok);
    QCOMPARE(wav.sampleRate, 44100);
    QCOMPARE(wav.channels, 2);
    QCOMPARE(wav.samples.size(), mix.size());
    for (qsizetype i = 0; i < mix.size(); ++i)
        QVERIFY(std::abs(static_cast<float>(wav.samples[i]) - mix[i] * 32767.0F) <= 1.0F);
}

void AudioExporterTest::mp3HoldsTheMix()
{
    const auto song = quickSong({notesTrack({note(60, 0.0, 20.0, 127)})});
    const QString path = files_.filePath("canción.mp3");
    QString error = "lo anterior";
    QVERIFY(exported(&AudioExporter::exportMp3, *song, path, &error));
    QCOMPARE(error, "lo anterior");
    const Mp3Frames::Walk walk = Mp3Frames::over(ContentFixture::read(path));
    QVERIFY(walk.ok);
    QCOMPARE(walk.kilobits, 192);

    // What was handed to the encoder is the mix itself.
    const QList<float> mix = mixed(*song);
    QCOMPARE(LameSpy::samples().size(), mix.size());
    for (qsizetype i = 0; i < mix.size(); ++i)
        QCOMPARE(static_cast<int>(LameSpy::samples().at(i)), static_cast<int>(mix[i] * 32767.0F));
}

void AudioExporterTest::exportReplacesTheFormerFile_data()
{
    addExports();
}

void AudioExporterTest::exportReplacesTheFormerFile()
{
    QFETCH(Export, save);
    const QString path = files_.filePath("former");
    QVERIFY(exported(save, *project(), path, nullptr));
    const QByteArray fresh = ContentFixture::read(path);
    ContentFixture::write(path, QByteArray(2000000, 'x'));
    QVERIFY(exported(save, *project(), path, nullptr));
    QCOMPARE(ContentFixture::read(path).size(), fresh.size());
    QVERIFY(ContentFixture::read(path) == fresh);
}

void AudioExporterTest::progressGrowsAndChangesNothing_data()
{
    addExports();
}

void AudioExporterTest::progressGrowsAndChangesNothing()
{
    QFETCH(Export, save);
    const auto song = project({straight(melodyTrack({melody({note(60, 0.0, 4.0)})}))});
    QList<double> heard;
    QVERIFY(exported(save, *song, files_.filePath("heard"), nullptr, [&](double done) {
        heard.append(done);
        return true;
    }));
    QVERIFY(heard.size() > 20);
    QVERIFY(std::ranges::is_sorted(heard));
    QVERIFY(heard.first() >= 0.0 && heard.first() < 0.1);
    QVERIFY(heard.last() > 0.9 && heard.last() <= 1.0);
    QVERIFY(exported(save, *song, files_.filePath("unheard"), nullptr));
    QVERIFY(ContentFixture::read(files_.filePath("heard")) ==
            ContentFixture::read(files_.filePath("unheard")));
}

void AudioExporterTest::stoppedExportLeavesEverythingAsItWas_data()
{
    QTest::addColumn<Export>("save");
    QTest::addColumn<double>("stop");
    QTest::newRow("WAV, at once") << Export(&AudioExporter::exportWav) << 0.0;
    QTest::newRow("WAV, half way") << Export(&AudioExporter::exportWav) << 0.5;
    QTest::newRow("WAV, late") << Export(&AudioExporter::exportWav) << 0.94;
    QTest::newRow("MP3, half way") << Export(&AudioExporter::exportMp3) << 0.5;
    QTest::newRow("MP3, while it is encoded") << Export(&AudioExporter::exportMp3) << 0.9;
}

void AudioExporterTest::stoppedExportLeavesEverythingAsItWas()
{
    QFETCH(Export, save);
    QFETCH(double, stop);
    const auto song = project({straight(melodyTrack({melody({note(60, 0.0, 4.0)})}))});
    const QString path = files_.filePath("exports/song");
    ContentFixture::write(path, "a former song");
    double last = -1.0;
    int afterwards = -1;
    QString error = "lo anterior";
    QVERIFY(!exported(save, *song, path, &error, [&](double done) {
        last = done;
        afterwards += last >= stop ? 1 : 0;
        return last < stop;
    }));
    QVERIFY(last >= stop);
    QCOMPARE(afterwards, 0);
    QVERIFY2(error == "lo anterior" || error.isEmpty(), qPrintable(error));
    QCOMPARE(ContentFixture::read(path), QByteArray("a former song"));
    QCOMPARE(QDir(files_.filePath("exports")).entryList(QDir::Files), QStringList{"song"});
}

// ---- Failures ------------------------------------------------------------------------------

void AudioExporterTest::withoutASynthesiserNothingIsExported()
{
    FluidSpy::letSynthFail();
    const QString words = "No pude inicializar FluidSynth.";
    QString error;
    QVERIFY(mixed(*project(), &error).isEmpty());
    QCOMPARE(error, words);
    for (const Export save : {&AudioExporter::exportWav, &AudioExporter::exportMp3}) {
        error.clear();
        QVERIFY(!exported(save, *project(), files_.filePath("mute"), &error));
        QCOMPARE(error, words);
        QVERIFY(!QFile::exists(files_.filePath("mute")));
    }
}

void AudioExporterTest::errorsNeedNobodyToListen()
{
    QVERIFY(!exported(&AudioExporter::exportWav, *project(), files_.root(), nullptr));
    QVERIFY(!exported(&AudioExporter::exportMp3, *project(), files_.root(), nullptr));
    LameSpy::refuseParameters();
    QVERIFY(!exported(&AudioExporter::exportMp3, *project(), files_.filePath("x.mp3"), nullptr));
    FluidSpy::letSynthFail();
    QVERIFY(mixed(*project(), nullptr).isEmpty());
    QVERIFY(!exported(&AudioExporter::exportWav, *project(), files_.filePath("x.wav"), nullptr));
}

void AudioExporterTest::errorsAreTranslated()
{
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    QStringList errors;
    const auto fail = [&](Export save, const Project& song) {
        QString error;
        QVERIFY(!exported(save, song, files_.filePath("no/such/song"), &error));
        errors.append(error);
    };
    fail(&AudioExporter::exportWav, *project());
    fail(&AudioExporter::exportWav,
         *project({straight(melodyTrack({melody({note(60, 0.0)}, 0.0, 1e12)}))}));
    LameSpy::refuseParameters();
    fail(&AudioExporter::exportMp3, *project());
    FluidSpy::letSynthFail();
    fail(&AudioExporter::exportWav, *project());
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(errors,
             (QStringList{"AudioExporter: No pude escribir el WAV.", "AudioExporter: " + kTooLong,
                          "AudioExporter: No pude inicializar LAME.",
                          "AudioExporter: No pude inicializar FluidSynth."}));
}

void AudioExporterTest::unwritableWavIsReported_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("a folder that is not there") << files_.filePath("no/such/song.wav");
    QTest::newRow("a folder") << files_.root();
    QTest::newRow("no path") << "";
    QTest::newRow("a full device") << "/dev/full";
}

void AudioExporterTest::unwritableWavIsReported()
{
    QFETCH(QString, path);
    QString error;
    QVERIFY(!exported(&AudioExporter::exportWav, *project(), path, &error));
    QCOMPARE(error, "No pude escribir el WAV.");
}

void AudioExporterTest::unwritableMp3IsReportedInTheWordsOfQFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("a folder that is not there") << files_.filePath("no/such/song.mp3");
    QTest::newRow("a folder") << files_.root();
    QTest::newRow("a file in the place of a folder") << bank() + "/song.mp3";
}

void AudioExporterTest::unwritableMp3IsReportedInTheWordsOfQFile()
{
    QFETCH(QString, path);
    QFile same(path);
    QVERIFY(!same.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QString error;
    QVERIFY(!exported(&AudioExporter::exportMp3, *project(), path, &error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(error, same.errorString());
    QCOMPARE(LameSpy::calls().count("close"), 1);
}

void AudioExporterTest::refusingLameIsReported()
{
    LameSpy::refuseParameters();
    QString error;
    QVERIFY(!exported(&AudioExporter::exportMp3, *project(), files_.filePath("never.mp3"), &error));
    QCOMPARE(error, "No pude inicializar LAME.");
    QVERIFY(!QFile::exists(files_.filePath("never.mp3")));
    QCOMPARE(LameSpy::calls().count("close"), 1);
}

void AudioExporterTest::missingLameIsReported()
{
    LameSpy::letInitFail();
    QString error;
    QVERIFY(!exported(&AudioExporter::exportMp3, *project(), files_.filePath("never.mp3"), &error));
    QCOMPARE(error, "No pude inicializar LAME.");
}

void AudioExporterTest::deviceThatIsFullIsNoSuccess_data()
{
    addExports();
}

void AudioExporterTest::deviceThatIsFullIsNoSuccess()
{
    QFETCH(Export, save);
    QString error;
    QVERIFY(!exported(save, *project(), "/dev/full", &error));
    QVERIFY(!error.isEmpty());

    const auto song = quickSong({notesTrack({note(60, 0.0, 20.0, 127)})});
    QVERIFY(exported(save, *song, files_.filePath("whole"), nullptr));
    const auto whole = static_cast<rlim_t>(QFileInfo(files_.filePath("whole")).size());
    const QString path = files_.filePath("exports/song");
    ContentFixture::write(path, "a former song");
    for (const rlim_t room : {rlim_t(20), rlim_t(5000), whole / 2, whole - 1}) {
        error.clear();
        const FullDisk disk(room);
        QVERIFY(!exported(save, *song, path, &error));
        QCOMPARE(error, save == &AudioExporter::exportMp3 ? QString::fromUtf8(std::strerror(EFBIG))
                                                          : QString("No pude escribir el WAV."));
        QCOMPARE(ContentFixture::read(path), QByteArray("a former song"));
        QCOMPARE(QDir(files_.filePath("exports")).entryList(QDir::Files), QStringList{"song"});
    }
}

// ---- Hostile songs -------------------------------------------------------------------------

void AudioExporterTest::tooLongASongIsRefusedBeforeItIsRendered_data()
{
    QTest::addColumn<Track>("track");
    QTest::addColumn<qint32>("lastBar");
    QTest::addColumn<double>("clipStart");
    QTest::addColumn<int>("bpm");
    const Track none;
    QTest::newRow("a thousand million repetitions")
        << straight(loopTrack({loop("r", "l", 0.0, 4e9)})) << -1 << 0.0 << kMaxInt;
    QTest::newRow("repetitions past all counting")
        << straight(loopTrack({loop("r", "l", 0.0, 1e300)})) << -1 << 0.0 << 120;
    QTest::newRow("a block past all frames")
        << straight(melodyTrack({melody({note(60, 0.0)}, 1e300)})) << -1 << 0.0 << 120;
    QTest::newRow("a block at the end of the numbers")
        << straight(melodyTrack({melody({note(60, 0.0)}, kMaxDouble)})) << -1 << 0.0 << 120;
    QTest::newRow("a note without end") << notesTrack({note(60, 0.0, 1e300)}) << -1 << 0.0 << 120;
    QTest::newRow("a note that ends past all numbers")
        << straight(melodyTrack({melody({note(60, 1.7e308, 1.7e308)}, 0.0, kMaxDouble)})) << -1
        << 0.0 << 120;
    QTest::newRow("a chord in the last bar of all") << none << kMaxInt << 0.0 << 120;
    QTest::newRow("a clip at the end of the numbers") << none << -1 << 1e300 << 120;
    // 408 beats at 60 seconds a beat: six hours and 48 minutes.
    QTest::newRow("the length that two thousand million samples just miss")
        << straight(melodyTrack({melody({note(60, 0.0)}, 0.0, 408.0)})) << -1 << 0.0 << 1;
    QTest::newRow("tempo 0 counts as 1")
        << straight(melodyTrack({melody({note(60, 0.0)}, 0.0, 408.0)})) << -1 << 0.0 << 0;
}

void AudioExporterTest::tooLongASongIsRefusedBeforeItIsRendered()
{
    QFETCH(Track, track);
    QFETCH(qint32, lastBar);
    QFETCH(double, clipStart);
    QFETCH(int, bpm);
    const auto song = project({track}, {}, {}, {}, bpm);
    if (lastBar >= 0)
        song->harmonyTrack.blocks = {{.barIndex = lastBar, .events = {chord(1, 0.0, 1.0)}}};
    song->audioTracks = {voiceTrack({clip("voz.wav", clipStart)})};

    QString error;
    QVERIFY(mixed(*song, &error).isEmpty());
    QCOMPARE(error, kTooLong);
    for (const Export save : {&AudioExporter::exportWav, &AudioExporter::exportMp3}) {
        error.clear();
        QVERIFY(!exported(save, *song, files_.filePath("endless"), &error));
        QCOMPARE(error, kTooLong);
        QVERIFY(!QFile::exists(files_.filePath("endless")));
    }
    QVERIFY(FluidSpy::calls({"write_float"}).isEmpty());
}

void AudioExporterTest::songThatMemoryCannotHoldIsRefused()
{
    // Two hours: within all bounds, and more than 2 GiB of samples.
    const auto song =
        project({straight(melodyTrack({melody({note(60, 0.0)}, 0.0, 14400.0)}))}, {}, {}, {}, 120);
    QString error;
    const ScarceMemory memory;
    QVERIFY(mixed(*song, &error).isEmpty());
    QCOMPARE(error, kTooLong);
}

void AudioExporterTest::hostileNumbersStillGiveAMix_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("length");
    QTest::addColumn<int>("bpm");
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const TimeSignature four{4, 4, false};
    QTest::newRow("a denominator of 0") << TimeSignature{4, 0, false} << 0.0 << 4.0 << 2646;
    QTest::newRow("a numerator of 0") << TimeSignature{0, 4, false} << 0.0 << 4.0 << 2646;
    QTest::newRow("a negative meter") << TimeSignature{-4, 4, true} << 0.0 << 4.0 << 2646;
    QTest::newRow("blocks far before the start") << four << -1e300 << 4.0 << 2646;
    QTest::newRow("blocks that are nowhere") << four << kNaN << 4.0 << 2646;
    QTest::newRow("blocks at infinity") << four << kInfinity << 4.0 << 2646;
    QTest::newRow("blocks of no length") << four << 0.0 << kNaN << 2646;
    QTest::newRow("blocks of infinite length") << four << 0.0 << kInfinity << 2646;
    QTest::newRow("blocks of negative length") << four << 0.0 << -1e300 << 2646;
    QTest::newRow("the fastest tempo") << four << 1000.0 << 4.0 << kMaxInt;
}

void AudioExporterTest::hostileNumbersStillGiveAMix()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, start);
    QFETCH(double, length);
    QFETCH(int, bpm);
    ContentFixture::write(files_.root() + "/voz.wav", WavFile::bytes(Tones::silence(500)));
    Track track = loopTrack({loop("r", "l", start, length)});
    track.melodyBlocks = {
        melody({note(60, 0.0), note(kMaxInt, 1.0, -5.0, kMinInt)}, start, length)};
    const auto song = project({track}, harmony({1, 4}), meter, {}, bpm);
    song->audioTracks = {voiceTrack({clip("voz.wav", start, length)})};
    QString error;
    const QList<float> mix = mixed(*song, &error);
    QCOMPARE(error, "");
    QVERIFY(mix.size() >= 2 * kTail && mix.size() < 2 * (20000 + kTail));
    for (const float sample : mix)
        QVERIFY(sample >= -1.0F && sample <= 1.0F);
}

void AudioExporterTest::hostileLevelsStayFinite()
{
    ContentFixture::write(files_.root() + "/voz.wav", WavFile::bytes(Tones::noise(3000, 1)));
    Generator tame(31);
    Generator hostile(32, Numbers::Hostile);
    for (int round = 0; round < 25; ++round) {
        Project song;
        tame.fill(song);
        song.bpm = 6000;
        for (Track& track : song.tracks) {
            const Track levels = hostile.track(1);
            track.volume = levels.volume;
            track.humanize = levels.humanize;
            track.melodyBlocks.append(
                melody({note(hostile.note().pitch, 0.0, 1.0, hostile.note().velocity)}));
        }
        for (AudioTrack& track : song.audioTracks) {
            track.volume = hostile.audioTrack(1).volume;
            track.clips = hostile.audioTrack(3).clips;
            for (AudioClip& clip : track.clips) {
                clip.audioFilePath = "voz.wav";
                clip.offsetBeats = 1.0;
                clip.durationBeats = 4.0;
                clip.tune.enabled = false;
            }
        }
        song.harmonyTrack.volume = hostile.harmonyTrack(0).volume;
        const QList<float> mix = mixed(song);
        QVERIFY(mix.size() > 2 * kTail);
        for (const float sample : mix)
            QVERIFY(sample >= -1.0F && sample <= 1.0F);
    }
}

QTEST_GUILESS_MAIN(AudioExporterTest)
#include "AudioExporterTest.moc"
