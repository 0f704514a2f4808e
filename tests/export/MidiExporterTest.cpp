#include "export/MidiExporter.h"

#include "playback/NoteRenderer.h"
#include "playback/PlaybackEngine.h"
#include "support/ContentFixture.h"
#include "support/ContextTranslator.h"
#include "support/FullDisk.h"
#include "support/MidiReader.h"
#include "support/ProjectBuilder.h"

#include <QTest>

#include <fluidsynth.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <tuple>

using namespace ProjectBuilder;

namespace {

constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr int kMaxInt = std::numeric_limits<int>::max();

/// Largest time that a four-byte quantity holds.
constexpr qint64 kMaxTick = 268435455;

const QString kTooLong = "La obra es demasiado larga para exportarla.";

Track named(const QString& name, const QString& instrumentId, const QList<NoteEvent>& notes = {})
{
    Track track = straight(melodyTrack({melody(notes, 0.0, 1e9)}, instrumentId));
    track.name = name;
    return track;
}

/// A track of one note, which tells its channel.
Track oneNote(const QString& instrumentId)
{
    return named("t", instrumentId, {note(60, 0.0)});
}

/// Note-ons of a track as (tick, channel, pitch, velocity), in one order.
QList<std::tuple<qint64, int, int, int>> noteOns(const MidiReader::MidiTrack& track)
{
    QList<std::tuple<qint64, int, int, int>> notes;
    for (const MidiReader::Event& event : track.ofKind(0x90))
        notes.append({event.tick, event.channel(), event.dataByte(0), event.dataByte(1)});
    std::sort(notes.begin(), notes.end());
    return notes;
}

using NoteRow = std::tuple<qint64, int, int, int>;

/// Note-ons and note-offs of a track as (tick, status, pitch, velocity), in their order.
QList<NoteRow> notesIn(const MidiReader::MidiTrack& track)
{
    QList<NoteRow> rows;
    for (const MidiReader::Event& event : track.events) {
        if (event.kind() == 0x90 || event.kind() == 0x80)
            rows.append(
                {event.tick, event.kind() | event.channel(), event.dataByte(0), event.dataByte(1)});
    }
    return rows;
}

/// The same as the rule has them: each note struck at its start, and released at its end or where
/// the next on its pitch starts, in the order of their ticks.
QList<NoteRow> plainEvents(const QList<NoteEvent>& notes, int channel)
{
    QList<NoteRow> rows;
    for (const NoteEvent& note : notes) {
        double release = note.startBeat + std::max(note.durationBeats, 0.05);
        for (const NoteEvent& other : notes) {
            if (other.pitch == note.pitch && other.startBeat > note.startBeat)
                release = std::min(release, other.startBeat);
        }
        rows.append({std::llround(note.startBeat * 480.0), 0x90 | channel, note.pitch,
                     std::clamp(note.velocity, 1, 127)});
        rows.append({std::llround(release * 480.0), 0x80 | channel, note.pitch, 0});
    }
    std::stable_sort(rows.begin(), rows.end(), [](const NoteRow& a, const NoteRow& b) {
        return std::get<0>(a) < std::get<0>(b);
    });
    return rows;
}

/// The channels on which the tracks of a file play, conductor left out; -1 for none.
QList<int> channels(const MidiReader::File& file)
{
    QList<int> result;
    for (const MidiReader::MidiTrack& track : file.tracks.mid(1)) {
        const auto notes = track.ofKind(0x90);
        result.append(notes.isEmpty() ? -1 : notes.first().channel());
    }
    return result;
}

/// What FluidSynth's own player finds in a file.
int noteOnsHeardByFluidSynth(const QByteArray& midi)
{
    fluid_settings_t* const settings = new_fluid_settings();
    fluid_settings_setstr(settings, "player.timing-source", "sample");
    fluid_synth_t* const synth = new_fluid_synth(settings);
    fluid_player_t* const player = new_fluid_player(synth);
    int heard = 0;
    fluid_player_set_playback_callback(
        player,
        [](void* data, fluid_midi_event_t* event) {
            if (fluid_midi_event_get_type(event) == 0x90 &&
                fluid_midi_event_get_velocity(event) > 0)
                ++*static_cast<int*>(data);
            return static_cast<int>(FLUID_OK);
        },
        &heard);
    fluid_player_add_mem(player, midi.constData(), static_cast<std::size_t>(midi.size()));
    fluid_player_play(player);
    QList<float> unheard(2 * 4096);
    for (int block = 0; block < 5000 && fluid_player_get_status(player) == FLUID_PLAYER_PLAYING;
         ++block)
        fluid_synth_write_float(synth, 4096, unheard.data(), 0, 2, unheard.data(), 1, 2);
    delete_fluid_player(player);
    delete_fluid_synth(synth);
    delete_fluid_settings(settings);
    return heard;
}

} // namespace

class MidiExporterTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void readerRefusesWhatIsMalformed_data();
    void readerRefusesWhatIsMalformed();

    void smallSongIsWrittenByteForByte();
    void headerCountsTheChunks_data();
    void headerCountsTheChunks();
    void conductorBearsTheNameOfTheWork_data();
    void conductorBearsTheNameOfTheWork();
    void tempoIsThreeBytesOfMicroseconds_data();
    void tempoIsThreeBytesOfMicroseconds();
    void meterIsNumeratorAndExponent_data();
    void meterIsNumeratorAndExponent();
    void meterThatIsNoneIsStillAFile_data();
    void meterThatIsNoneIsStillAFile();
    void conductorHoldsThreeEventsAndNoKey();

    void trackNameIsUtf8_data();
    void trackNameIsUtf8();
    void programComesBehindTheName();
    void programOfAnInstrument_data();
    void programOfAnInstrument();
    void withoutInstrumentsThereIsNoProgram();
    void recordedInstrumentIsWrittenAsItsStandIn();

    void channelsAreDealtInOrder_data();
    void channelsAreDealtInOrder();
    void channelsOfTwentyMelodicTracks();
    void harmonyTakesTheNextChannel_data();
    void harmonyTakesTheNextChannel();

    void noteIsAnOnAndAnOff();
    void noteLastsAtLeastTwentyFourTicks_data();
    void noteLastsAtLeastTwentyFourTicks();
    void tickIsRoundedToTheNearest_data();
    void tickIsRoundedToTheNearest();
    void velocityIsHeldInRange_data();
    void velocityIsHeldInRange();
    void pitchIsMasked_data();
    void pitchIsMasked();
    void offComesBeforeOnAtOneTick();
    void noteEndsWhereTheNextOnItsPitchStarts();
    void humanizedRepeatedNotesAllSound();
    void manyEventsOfOneTickKeepTheirOrder();
    void notesAreThoseOfTheRenderer();
    void loopsFollowTheChordsInTheFile();

    void muteAndSoloAreNotConsulted();
    void tracksBeyondTheThirteenthAreWritten();
    void harmonyHoldsItsChords();
    void harmonyWithoutEventsIsLeftOut();
    void equalProjectsGiveEqualFiles();

    void unwritablePathIsReportedInTheWordsOfQFile_data();
    void unwritablePathIsReportedInTheWordsOfQFile();
    void diskThatIsFullIsReportedAndLeavesTheFormerFile();
    void deviceThatIsFullIsReported();
    void stoppedExportLeavesEverythingAsItWas();
    void progressGrowsToTheEnd();
    void errorNeedsNobodyToListen();
    void formerFileIsReplacedWhole();
    void successLeavesTheErrorAlone();

    void timesPastFourBytesAreHeld_data();
    void timesPastFourBytesAreHeld();
    void tooLongASongIsRefused();
    void refusedSongLeavesTheFormerFile();
    void songOfManyTracksIsBoundAsAWhole();
    void moreChunksThanAHeaderTellsAreRefused();
    void hostileProjectsGiveReadableFiles();
    void fluidSynthReadsTheSameNotes();

private:
    QString path(const QString& name = "song.mid") const { return files_.filePath(name); }

    /// Exports and reads back.
    MidiReader::File exported(const Project& song);

    QByteArray exportedBytes(const Project& song);

    ContentFixture files_;
};

void MidiExporterTest::initTestCase()
{
    for (const int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
        fluid_set_log_function(level, nullptr, nullptr);
    files_.instruments().loadBuiltinGmInstruments();
    files_.addPackage("a", R"({"rhythm": {"id": "r"}, "loopLayers": [{"id": "l"}],
        "loopVariants": [{"layerId": "l", "notes": [
            {"pitch": 60, "durationBeats": 1}, {"pitch": 64, "startBeat": 1.5}]}]})");
    files_.library().reload();
}

QByteArray MidiExporterTest::exportedBytes(const Project& song)
{
    QFile::remove(path());
    QString error;
    if (!MidiExporter::exportProject(song, &files_.library(), &files_.instruments(), path(),
                                     &error))
        return "failed: " + error.toUtf8();
    return ContentFixture::read(path());
}

MidiReader::File MidiExporterTest::exported(const Project& song)
{
    return MidiReader::read(exportedBytes(song));
}

// ---- The reader that judges ----------------------------------------------------------------

void MidiExporterTest::readerRefusesWhatIsMalformed_data()
{
    QTest::addColumn<QByteArray>("track");
    QTest::addColumn<bool>("readable");

    QTest::newRow("an end of track alone") << QByteArray("00ff2f00") << true;
    QTest::newRow("a note and its end") << QByteArray("00903c408360803c0000ff2f00") << true;
    QTest::newRow("a running status") << QByteArray("00903c40103c0000ff2f00") << true;
    QTest::newRow("no end of track") << QByteArray("00903c40") << false;
    QTest::newRow("bytes behind the end of track") << QByteArray("00ff2f0000") << false;
    QTest::newRow("a quantity of five bytes") << QByteArray("8180808000ff2f00") << false;
    QTest::newRow("a data byte where a status should be") << QByteArray("003c4000ff2f00") << false;
    QTest::newRow("a running status behind a meta event")
        << QByteArray("00903c4000ff030001413c4000ff2f00") << false;
    QTest::newRow("a status byte among the data") << QByteArray("00903c8000ff2f00") << false;
    QTest::newRow("a name longer than the track") << QByteArray("00ff037f4100ff2f00") << false;
    QTest::newRow("a tempo of two bytes") << QByteArray("00ff510207a100ff2f00") << false;
    QTest::newRow("a status that no file holds") << QByteArray("00f100ff2f00") << false;
}

void MidiExporterTest::readerRefusesWhatIsMalformed()
{
    QFETCH(QByteArray, track);
    const QByteArray data = QByteArray::fromHex(track);
    const QByteArray size(1, static_cast<char>(data.size()));
    const QByteArray file =
        QByteArray::fromHex("4d546864000000060001000101e04d54726b000000") + size + data;
    QTEST(MidiReader::read(file).error.isEmpty(), "readable");
    QVERIFY(!MidiReader::read(file + '\0').error.isEmpty());
    QVERIFY(!MidiReader::read(file.chopped(1)).error.isEmpty());
}

// ---- The file as a whole -------------------------------------------------------------------

void MidiExporterTest::smallSongIsWrittenByteForByte()
{
    const auto song = project({named("A", "gm_flauta", {note(64, 1.0, 0.5, 90)}),
                               named("ñ", "gm_bateria", {note(36, 0.0, 300.0, 127)})});
    const QByteArray header("4d546864 00000006 0001 0003 01e0");
    const QByteArray conductor("4d54726b 0000001c"
                               "00 ff03 05 56656c7461"
                               "00 ff51 03 07a120"
                               "00 ff58 04 04021808"
                               "00 ff2f 00");
    const QByteArray flute("4d54726b 00000016"
                           "00 ff03 01 41"
                           "00 c0 49"
                           "8360 90 40 5a"
                           "8170 80 40 00"
                           "00 ff2f 00");
    // 300 beats are 144000 ticks: 08 65 00 in groups of seven bits.
    const QByteArray drums("4d54726b 00000014"
                           "00 ff03 02 c3b1"
                           "00 99 24 7f"
                           "88e500 89 24 00"
                           "00 ff2f 00");
    QCOMPARE(exportedBytes(*song).toHex(),
             QByteArray::fromHex(header + conductor + flute + drums).toHex());
}

void MidiExporterTest::headerCountsTheChunks_data()
{
    QTest::addColumn<int>("tracks");
    QTest::addColumn<HarmonyTrack>("harmony");
    QTest::addColumn<int>("count");
    HarmonyTrack emptyBlocks;
    emptyBlocks.blocks = {{.barIndex = 0, .events = {}}, {.barIndex = 3, .events = {}}};
    HarmonyTrack noChord;
    noChord.blocks = {{.barIndex = 0, .events = {chord(0, 0.0, 4.0)}}};
    QTest::newRow("neither tracks nor harmony") << 0 << HarmonyTrack() << 1;
    QTest::newRow("two tracks") << 2 << HarmonyTrack() << 3;
    QTest::newRow("harmony alone") << 0 << harmony({1}) << 2;
    QTest::newRow("two tracks and harmony") << 2 << harmony({1, 4}) << 4;
    QTest::newRow("blocks without events are no harmony") << 1 << emptyBlocks << 2;
    QTest::newRow("an event without a chord is harmony") << 1 << noChord << 3;
}

void MidiExporterTest::headerCountsTheChunks()
{
    QFETCH(int, tracks);
    QFETCH(HarmonyTrack, harmony);
    QFETCH(int, count);
    const auto song = project(QList<Track>(tracks, named("t", "gm_piano")), harmony);
    const QByteArray bytes = exportedBytes(*song);
    QCOMPARE(bytes.first(14).toHex(), "4d54686400000006"
                                      "0001" +
                                          QByteArray::number(count).rightJustified(4, '0') +
                                          "01e0");
    const MidiReader::File file = MidiReader::read(bytes);
    QCOMPARE(file.error, "");
    QCOMPARE(file.tracks.size(), count);
}

void MidiExporterTest::conductorBearsTheNameOfTheWork_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("written");
    QTest::newRow("a name") << "Zamba de abril"
                            << "Zamba de abril";
    QTest::newRow("an empty name is Velta") << ""
                                            << "Velta";
    QTest::newRow("a blank is a name") << " "
                                       << " ";
    QTest::newRow("accents") << "Canción ñandú \U0001F3B5"
                             << "Canción ñandú \U0001F3B5";
}

void MidiExporterTest::conductorBearsTheNameOfTheWork()
{
    QFETCH(QString, name);
    const auto song = project();
    song->name = name;
    QTEST(exported(*song).tracks.value(0).name(), "written");
}

void MidiExporterTest::tempoIsThreeBytesOfMicroseconds_data()
{
    QTest::addColumn<int>("bpm");
    QTest::addColumn<QByteArray>("hex");
    QTest::newRow("120") << 120 << QByteArray("07a120");
    QTest::newRow("60") << 60 << QByteArray("0f4240");
    QTest::newRow("240") << 240 << QByteArray("03d090");
    QTest::newRow("90 is cut to 666666") << 90 << QByteArray("0a2c2a");
    QTest::newRow("7 is cut to 8571428") << 7 << QByteArray("82ca24");
    QTest::newRow("4 is the slowest that fits") << 4 << QByteArray("e4e1c0");
    QTest::newRow("3 keeps its low 24 bits") << 3 << QByteArray("312d00");
    QTest::newRow("1 keeps its low 24 bits") << 1 << QByteArray("938700");
    QTest::newRow("0 counts as 1") << 0 << QByteArray("938700");
    QTest::newRow("negative counts as 1") << -120 << QByteArray("938700");
    QTest::newRow("the most negative counts as 1") << kMinInt << QByteArray("938700");
    QTest::newRow("60 millions are one microsecond") << 60000000 << QByteArray("000001");
    QTest::newRow("the fastest is none") << kMaxInt << QByteArray("000000");
}

void MidiExporterTest::tempoIsThreeBytesOfMicroseconds()
{
    QFETCH(int, bpm);
    QFETCH(QByteArray, hex);
    const auto song = project({}, {}, {}, {}, bpm);
    const MidiReader::Event tempo = exported(*song).tracks.value(0).events.value(1);
    QVERIFY(tempo.isMeta(0x51));
    QCOMPARE(tempo.data.toHex(), hex);
}

void MidiExporterTest::meterIsNumeratorAndExponent_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<QByteArray>("hex");
    QTest::newRow("4/4") << TimeSignature{4, 4, false} << QByteArray("04021808");
    QTest::newRow("3/4") << TimeSignature{3, 4, false} << QByteArray("03021808");
    QTest::newRow("2/2") << TimeSignature{2, 2, false} << QByteArray("02011808");
    QTest::newRow("6/8 compound") << TimeSignature{6, 8, true} << QByteArray("06031808");
    QTest::newRow("6/8 simple") << TimeSignature{6, 8, false} << QByteArray("06031808");
    QTest::newRow("12/8") << TimeSignature{12, 8, true} << QByteArray("0c031808");
    QTest::newRow("7/16") << TimeSignature{7, 16, false} << QByteArray("07041808");
    QTest::newRow("1/1") << TimeSignature{1, 1, false} << QByteArray("01001808");
    QTest::newRow("the exponent of 3 is cut to 1")
        << TimeSignature{5, 3, false} << QByteArray("05011808");
    QTest::newRow("the exponent of 7 is cut to 2")
        << TimeSignature{5, 7, false} << QByteArray("05021808");
    QTest::newRow("a denominator that is none has the exponent 0")
        << TimeSignature{4, 0, false} << QByteArray("04001808");
    QTest::newRow("and so has a negative one")
        << TimeSignature{4, -4, false} << QByteArray("04001808");
    QTest::newRow("the largest denominator")
        << TimeSignature{4, kMaxInt, false} << QByteArray("041e1808");
    QTest::newRow("a numerator is cut to a byte")
        << TimeSignature{300, 4, false} << QByteArray("2c021808");
    QTest::newRow("a negative numerator is cut to a byte")
        << TimeSignature{-1, 4, false} << QByteArray("ff021808");
}

void MidiExporterTest::meterIsNumeratorAndExponent()
{
    QFETCH(TimeSignature, meter);
    QFETCH(QByteArray, hex);
    const MidiReader::Event event =
        exported(*project({}, {}, meter)).tracks.value(0).events.value(2);
    QVERIFY(event.isMeta(0x58));
    QCOMPARE(event.data.toHex(), hex);
}

void MidiExporterTest::meterThatIsNoneIsStillAFile_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::newRow("4 over 0") << 4 << 0;
    QTest::newRow("0 over 0") << 0 << 0;
    QTest::newRow("0 over 4") << 0 << 4;
    QTest::newRow("4 over -4") << 4 << -4;
    QTest::newRow("the smallest numbers") << kMinInt << kMinInt;
}

void MidiExporterTest::meterThatIsNoneIsStillAFile()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    Track track = named("t", "gm_piano", {note(60, 1.0)});
    track.loopBlocks = {loop("r", "l", 4.0, 4.0), loop("otro", "l", 4.0, 4.0)};
    const MidiReader::File file = exported(
        *project({track}, harmony({1}), {.numerator = numerator, .denominator = denominator}));
    QCOMPARE(file.error, "");
    QCOMPARE(file.tracks.size(), 3);
    QVERIFY(file.tracks[1].ofKind(0x90).size() >= 3);
}

void MidiExporterTest::conductorHoldsThreeEventsAndNoKey()
{
    const auto song = project({oneNote("gm_piano")}, harmony({1}), {},
                              {.rootPitchClass = 9, .mode = KeyMode::Minor});
    const MidiReader::File file = exported(*song);
    QCOMPARE(file.tracks.value(0).events.size(), 3);
    for (const MidiReader::MidiTrack& track : file.tracks) {
        for (const MidiReader::Event& event : track.events)
            QVERIFY(!event.isMeta(0x59));
    }
}

// ---- Names and programs --------------------------------------------------------------------

void MidiExporterTest::trackNameIsUtf8_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("empty") << "" << QByteArray("ff0300");
    QTest::newRow("one byte") << "A" << QByteArray("ff030141");
    QTest::newRow("two bytes a letter") << "ñ" << QByteArray("ff0302c3b1");
    QTest::newRow("four bytes a sign") << "\U0001F941" << QByteArray("ff0304f09fa581");
    QTest::newRow("127 bytes") << QString(127, 'x') << QByteArray("ff037f78");
    QTest::newRow("128 bytes take two of length") << QString(128, 'x') << QByteArray("ff03810078");
    QTest::newRow("64 letters of two bytes") << QString(64, u'ñ') << QByteArray("ff038100c3b1");
    QTest::newRow("16384 bytes take three of length")
        << QString(16384, 'x') << QByteArray("ff0381800078");
    QTest::newRow("two million bytes take four of length")
        << QString(2097152, 'x') << QByteArray("ff038180800078");
}

void MidiExporterTest::trackNameIsUtf8()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, start);
    const QByteArray bytes = exportedBytes(*project({named(name, "gm_piano")}));
    const QByteArray chunk = bytes.mid(bytes.lastIndexOf("MTrk"));
    QCOMPARE(chunk.mid(9, start.size() / 2).toHex(), start);
    QCOMPARE(MidiReader::read(bytes).tracks.value(1).name(), name.isEmpty() ? QString("") : name);
}

void MidiExporterTest::programComesBehindTheName()
{
    const auto song = project({named("t", "gm_violin", {note(60, 0.0), note(62, -1.0)})});
    const QList<MidiReader::Event> events = exported(*song).tracks.value(1).events;
    QCOMPARE(events.size(), 6);
    QVERIFY(events[0].isMeta(0x03));
    QCOMPARE(events[1], (MidiReader::Event{0, 0xC0, -1, QByteArray(1, 40)}));
    QVERIFY(events[2].kind() == 0x90 && events[2].tick == 0);
}

void MidiExporterTest::programOfAnInstrument_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<int>("program");
    QTest::newRow("a piano") << "gm_piano" << 0;
    QTest::newRow("a flute") << "gm_flauta" << 73;
    QTest::newRow("a pad") << "gm_pad" << 89;
    QTest::newRow("drums have none") << "gm_bateria" << -1;
    QTest::newRow("nobody has none") << "theremin" << -1;
    QTest::newRow("no id has none") << "" << -1;
    QTest::newRow("a program of 500 is masked") << "alto" << 116;
    QTest::newRow("a program of -1 is masked") << "bajo" << 127;
}

void MidiExporterTest::programOfAnInstrument()
{
    QFETCH(QString, id);
    QFETCH(int, program);
    Instrument odd;
    odd.id = "alto";
    odd.generalMidiProgram = 500;
    files_.instruments().registerInstrument(odd);
    odd.id = "bajo";
    odd.generalMidiProgram = -1;
    files_.instruments().registerInstrument(odd);
    const auto changes = exported(*project({oneNote(id)})).tracks.value(1).ofKind(0xC0);
    QCOMPARE(changes.size(), program < 0 ? 0 : 1);
    if (program >= 0)
        QCOMPARE(changes.first().dataByte(0), program);
}

void MidiExporterTest::withoutInstrumentsThereIsNoProgram()
{
    const auto song = project({oneNote("gm_bateria"), oneNote("gm_flauta")});
    QVERIFY(MidiExporter::exportProject(*song, nullptr, nullptr, path(), nullptr));
    const MidiReader::File file = MidiReader::read(ContentFixture::read(path()));
    QCOMPARE(file.error, "");
    QCOMPARE(channels(file), QList<int>({0, 1}));
    QVERIFY(file.tracks[1].ofKind(0xC0).isEmpty() && file.tracks[2].ofKind(0xC0).isEmpty());
}

void MidiExporterTest::recordedInstrumentIsWrittenAsItsStandIn()
{
    files_.instruments().registerInstrument({.id = "quena",
                                             .name = "Quena",
                                             .category = InstrumentCategory::Winds,
                                             .source = InstrumentSource::CustomRecordedBank,
                                             .generalMidiProgram = 3,
                                             .soundfontBankPath = "quena.sf2"});
    const auto song = project({oneNote("quena")});
    for (const bool bankIsThere : {false, true}) {
        if (bankIsThere)
            ContentFixture::write(files_.bankRoot() + "/quena.sf2", "any content");
        const auto changes = exported(*song).tracks.value(1).ofKind(0xC0);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.first().dataByte(0), 75);
    }
}

// ---- Channels ------------------------------------------------------------------------------

void MidiExporterTest::channelsAreDealtInOrder_data()
{
    // One letter a track: m for melodic, d for drums, u for an unknown instrument.
    QTest::addColumn<QString>("tracks");
    QTest::addColumn<QList<int>>("expected");
    QTest::newRow("one melodic track") << "m" << QList<int>{0};
    QTest::newRow("drums alone") << "d" << QList<int>{9};
    QTest::newRow("drums take no turn") << "mdmdm" << QList<int>{0, 9, 1, 9, 2};
    QTest::newRow("nine melodic tracks") << "mmmmmmmmm" << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8};
    QTest::newRow("the tenth skips the drums' channel")
        << "mmmmmmmmmm" << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 10};
    QTest::newRow("nine melodic, drums, a tenth")
        << "mmmmmmmmmdm" << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    QTest::newRow("sixteen melodic tracks")
        << "mmmmmmmmmmmmmmmm" << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15, 15};
    QTest::newRow("drums late and often")
        << "mmmmmmmmmmmmmmmdmdm"
        << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15, 9, 15, 9, 15};
    QTest::newRow("an unknown instrument takes a turn") << "umu" << QList<int>{0, 1, 2};
}

void MidiExporterTest::channelsAreDealtInOrder()
{
    QFETCH(QString, tracks);
    const auto song = project();
    for (const QChar kind : tracks)
        song->tracks.append(oneNote(kind == 'm'   ? "gm_violin"
                                    : kind == 'd' ? "gm_bateria"
                                                  : "nadie"));
    const MidiReader::File file = exported(*song);
    QTEST(channels(file), "expected");
    for (qsizetype i = 0; i < tracks.size(); ++i) {
        const auto changes = file.tracks[i + 1].ofKind(0xC0);
        QCOMPARE(changes.size(), tracks[i] == 'm' ? 1 : 0);
        if (!changes.isEmpty())
            QCOMPARE(changes.first().channel(), channels(file).at(i));
    }
}

void MidiExporterTest::channelsOfTwentyMelodicTracks()
{
    QList<int> expected{0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14};
    expected += QList<int>(6, 15);
    const auto song = project(QList<Track>(20, oneNote("gm_piano")));
    QCOMPARE(channels(exported(*song)), expected);
}

void MidiExporterTest::harmonyTakesTheNextChannel_data()
{
    QTest::addColumn<int>("melodic");
    QTest::addColumn<int>("drums");
    QTest::addColumn<int>("channel");
    QTest::newRow("no tracks") << 0 << 0 << 0;
    QTest::newRow("one melodic track") << 1 << 0 << 1;
    QTest::newRow("drums do not count") << 1 << 5 << 1;
    QTest::newRow("eight melodic tracks") << 8 << 0 << 8;
    QTest::newRow("nine melodic tracks") << 9 << 1 << 10;
    QTest::newRow("ten melodic tracks") << 10 << 0 << 11;
    QTest::newRow("fourteen melodic tracks") << 14 << 0 << 15;
    QTest::newRow("fifteen melodic tracks") << 15 << 0 << 15;
    QTest::newRow("twenty melodic tracks") << 20 << 1 << 15;
}

void MidiExporterTest::harmonyTakesTheNextChannel()
{
    QFETCH(int, melodic);
    QFETCH(int, drums);
    const auto song = project(QList<Track>(melodic, oneNote("gm_piano")) +
                                  QList<Track>(drums, oneNote("gm_bateria")),
                              harmony({1}));
    const MidiReader::MidiTrack chunk = exported(*song).tracks.last();
    QCOMPARE(chunk.name(), "Acordes");
    QTEST(chunk.ofKind(0xC0).value(0).channel(), "channel");
    QTEST(chunk.ofKind(0x90).value(0).channel(), "channel");
    QTEST(chunk.ofKind(0x80).value(0).channel(), "channel");
}

// ---- Notes ---------------------------------------------------------------------------------

void MidiExporterTest::noteIsAnOnAndAnOff()
{
    const auto song = project({named("t", "nadie", {note(64, 2.0, 1.5, 90)})});
    const QList<MidiReader::Event> events = exported(*song).tracks.value(1).events;
    QCOMPARE(events.size(), 3);
    QCOMPARE(events[1], (MidiReader::Event{960, 0x90, -1, QByteArray("\x40\x5a")}));
    QCOMPARE(events[2], (MidiReader::Event{1680, 0x80, -1, QByteArray("\x40\x00", 2)}));
}

void MidiExporterTest::noteLastsAtLeastTwentyFourTicks_data()
{
    QTest::addColumn<double>("duration");
    QTest::addColumn<qint64>("ticks");
    QTest::newRow("a length of 0") << 0.0 << qint64(24);
    QTest::newRow("a length below the floor") << 0.01 << qint64(24);
    QTest::newRow("a length of the floor") << 0.05 << qint64(24);
    QTest::newRow("a length above the floor") << 0.0625 << qint64(30);
    QTest::newRow("a negative length") << -7.0 << qint64(24);
}

void MidiExporterTest::noteLastsAtLeastTwentyFourTicks()
{
    QFETCH(double, duration);
    const auto track =
        exported(*project({named("t", "nadie", {note(60, 3.0, duration)})})).tracks.value(1);
    QTEST(track.ofKind(0x80).value(0).tick - track.ofKind(0x90).value(0).tick, "ticks");
}

void MidiExporterTest::tickIsRoundedToTheNearest_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<qint64>("tick");
    QTest::newRow("0") << 0.0 << qint64(0);
    QTest::newRow("a third of a beat") << 1.0 / 3.0 << qint64(160);
    QTest::newRow("a seventh of a beat is 68.57") << 1.0 / 7.0 << qint64(69);
    // A half of a tick that is a whole number of binary digits.
    QTest::newRow("7.5 goes up") << 0.015625 << qint64(8);
    QTest::newRow("22.5 goes up") << 0.046875 << qint64(23);
    QTest::newRow("0.4 goes down") << 0.4 / 480.0 << qint64(0);
    QTest::newRow("before the start is the start") << -3.0 << qint64(0);
    QTest::newRow("far on") << 100000.0 << qint64(48000000);
}

void MidiExporterTest::tickIsRoundedToTheNearest()
{
    QFETCH(double, beat);
    const auto track = exported(*project({named("t", "nadie", {note(60, beat)})})).tracks.value(1);
    QTEST(track.ofKind(0x90).value(0).tick, "tick");
}

void MidiExporterTest::velocityIsHeldInRange_data()
{
    QTest::addColumn<int>("velocity");
    QTest::addColumn<int>("written");
    QTest::newRow("in range") << 64 << 64;
    QTest::newRow("0 is 1") << 0 << 1;
    QTest::newRow("negative is 1") << -20 << 1;
    QTest::newRow("127") << 127 << 127;
    QTest::newRow("200 is 127") << 200 << 127;
    QTest::newRow("the smallest is 1") << kMinInt << 1;
    QTest::newRow("the largest is 127") << kMaxInt << 127;
}

void MidiExporterTest::velocityIsHeldInRange()
{
    QFETCH(int, velocity);
    const auto song = project({named("t", "nadie", {note(60, 0.0, 1.0, velocity)})});
    const auto track = exported(*song).tracks.value(1);
    QTEST(track.ofKind(0x90).value(0).dataByte(1), "written");
    QCOMPARE(track.ofKind(0x80).value(0).dataByte(1), 0);
}

void MidiExporterTest::pitchIsMasked_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<int>("written");
    QTest::newRow("in range") << 127 << 127;
    QTest::newRow("128 is 0") << 128 << 0;
    QTest::newRow("200 is 72") << 200 << 72;
    QTest::newRow("-1 is 127") << -1 << 127;
    QTest::newRow("the smallest is 0") << kMinInt << 0;
    QTest::newRow("the largest is 127") << kMaxInt << 127;
}

void MidiExporterTest::pitchIsMasked()
{
    QFETCH(int, pitch);
    const auto track =
        exported(*project({named("t", "nadie", {note(pitch, 0.0)})})).tracks.value(1);
    QTEST(track.ofKind(0x90).value(0).dataByte(0), "written");
    QTEST(track.ofKind(0x80).value(0).dataByte(0), "written");
}

void MidiExporterTest::offComesBeforeOnAtOneTick()
{
    const auto song = project({named("t", "nadie", {note(60, 0.0), note(60, 1.0), note(60, 2.0)})});
    QList<int> kinds;
    for (const MidiReader::Event& event : exported(*song).tracks.value(1).events.mid(1))
        kinds.append(event.kind());
    QCOMPARE(kinds, QList<int>({0x90, 0x80, 0x90, 0x80, 0x90, 0x80}));
}

void MidiExporterTest::noteEndsWhereTheNextOnItsPitchStarts()
{
    const auto song = project(
        {named("t", "nadie", {note(60, 0.0, 8.0), note(60, 1.0, 1.0), note(62, 0.5, 9.0)})});
    const MidiReader::MidiTrack track = exported(*song).tracks.value(1);
    QList<std::pair<qint64, int>> offs;
    for (const MidiReader::Event& event : track.ofKind(0x80))
        offs.append({event.tick, event.dataByte(0)});
    QCOMPARE(offs, (QList<std::pair<qint64, int>>{{480, 60}, {960, 60}, {4560, 62}}));
}

void MidiExporterTest::humanizedRepeatedNotesAllSound()
{
    Track track = melodyTrack({melody({}, 0.0, 16.0)}, "gm_flauta");
    QVERIFY(track.humanize.enabled);
    for (int i = 0; i < 16; ++i)
        track.melodyBlocks[0].notes.append(note(60, i));
    const QList<MidiReader::Event> events = exported(*project({track})).tracks.value(1).events;
    // Behind the name and the program every note is struck and released before the next.
    QCOMPARE(events.size(), 2 + 32);
    for (qsizetype i = 2; i < events.size(); ++i)
        QCOMPARE(events[i].kind(), i % 2 == 0 ? 0x90 : 0x80);
}

void MidiExporterTest::manyEventsOfOneTickKeepTheirOrder()
{
    // Chords of twenty notes, each struck where the one before ends; the first at tick 0, where
    // the name and the program stand.
    constexpr int kVoices = 20;
    QList<NoteEvent> notes;
    for (int beat = 0; beat < 5; ++beat) {
        for (int voice = 0; voice < kVoices; ++voice)
            notes.append(note(40 + voice, beat));
    }
    const MidiReader::MidiTrack track =
        exported(*project({named("t", "gm_piano", notes)})).tracks.value(1);
    QCOMPARE(track.events.size(), 2 + 10 * kVoices);
    QVERIFY(track.events[0].isMeta(0x03));
    QCOMPARE(track.events[1].kind(), 0xC0);
    QList<std::tuple<qint64, int, int>> order;
    for (const MidiReader::Event& event : track.events.mid(2))
        order.append({event.tick, event.kind(), event.dataByte(0)});
    QList<std::tuple<qint64, int, int>> expected;
    for (int beat = 0; beat <= 5; ++beat) {
        for (const int kind : {0x80, 0x90}) {
            for (int voice = 0; voice < kVoices && beat != (kind == 0x80 ? 0 : 5); ++voice)
                expected.append({480 * beat, kind, 40 + voice});
        }
    }
    QCOMPARE(order, expected);
}

void MidiExporterTest::notesAreThoseOfTheRenderer()
{
    Generator generator(5);
    for (int round = 0; round < 150; ++round) {
        Project song;
        generator.fill(song);
        for (Track& track : song.tracks)
            track.loopBlocks.append(loop("r", "l", round / 8.0, 7.5));
        const MidiReader::File file = exported(song);
        QCOMPARE(file.error, "");
        for (qsizetype i = 0; i < song.tracks.size(); ++i) {
            const auto notes =
                PlaybackEngine::renderTrackNotes(song, song.tracks[i], &files_.library());
            QCOMPARE(notesIn(file.tracks[i + 1]), plainEvents(notes, static_cast<int>(i)));
        }
    }
}

void MidiExporterTest::loopsFollowTheChordsInTheFile()
{
    Track track = straight(loopTrack({loop("r", "l", 0.0, 8.0)}, "gm_piano"));
    const auto song = project({track}, harmony({1, 4}));
    // C and E over I, F and A over IV.
    QCOMPARE(noteOns(exported(*song).tracks.value(1)),
             (QList<std::tuple<qint64, int, int, int>>{
                 {0, 0, 60, 100}, {720, 0, 64, 100}, {1920, 0, 65, 100}, {2640, 0, 69, 100}}));
    QVERIFY(MidiExporter::exportProject(*song, nullptr, &files_.instruments(), path(), nullptr));
    QVERIFY(noteOns(MidiReader::read(ContentFixture::read(path())).tracks.value(1)).isEmpty());
}

// ---- What is written -----------------------------------------------------------------------

void MidiExporterTest::muteAndSoloAreNotConsulted()
{
    const auto song = project({oneNote("gm_piano"), oneNote("gm_violin")}, harmony({1}));
    const QByteArray plain = exportedBytes(*song);
    song->tracks[0].muted = true;
    song->tracks[1].solo = true;
    song->harmonyTrack.muted = true;
    song->audioTracks.append(voiceTrack({clip("no such file.wav")}));
    song->audioTracks[0].solo = true;
    QCOMPARE(exportedBytes(*song), plain);
}

void MidiExporterTest::tracksBeyondTheThirteenthAreWritten()
{
    const MidiReader::File file = exported(*project(QList<Track>(40, oneNote("gm_piano"))));
    QCOMPARE(file.tracks.size(), 41);
    QCOMPARE(noteOns(file.tracks.last()).size(), 1);
}

void MidiExporterTest::harmonyHoldsItsChords()
{
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 1, .events = {chord(5, 0.0, 2.0, ChordExtension::Seventh)}}};
    const MidiReader::MidiTrack track = exported(*project({}, chords)).tracks.value(1);
    QCOMPARE(noteOns(track),
             (QList<std::tuple<qint64, int, int, int>>{
                 {1920, 0, 55, 72}, {1920, 0, 59, 72}, {1920, 0, 62, 72}, {1920, 0, 65, 72}}));
    for (const MidiReader::Event& off : track.ofKind(0x80))
        QCOMPARE(off.tick, 2880);
    QVERIFY(track.events[0].isMeta(0x03));
    QCOMPARE(track.events[1], (MidiReader::Event{0, 0xC0, -1, QByteArray(1, 0)}));
}

void MidiExporterTest::harmonyWithoutEventsIsLeftOut()
{
    HarmonyTrack chords;
    chords.blocks = {{.barIndex = 0, .events = {}}};
    QCOMPARE(exported(*project({oneNote("gm_piano")}, chords)).tracks.size(), 2);
}

void MidiExporterTest::equalProjectsGiveEqualFiles()
{
    Generator first(8);
    Generator second(8);
    for (int round = 0; round < 30; ++round)
        QCOMPARE(exportedBytes(*first.project()), exportedBytes(*second.project()));
}

// ---- Files ---------------------------------------------------------------------------------

void MidiExporterTest::unwritablePathIsReportedInTheWordsOfQFile_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("a folder that is not there") << files_.filePath("no/such/song.mid");
    QTest::newRow("a folder") << files_.root();
    QTest::newRow("a file in the place of a folder") << files_.filePath("plain.txt/song.mid");
}

void MidiExporterTest::unwritablePathIsReportedInTheWordsOfQFile()
{
    QFETCH(QString, target);
    ContentFixture::write(files_.filePath("plain.txt"), "x");
    QFile same(target);
    QVERIFY(!same.open(QIODevice::WriteOnly | QIODevice::Truncate));
    QString error;
    QVERIFY(!MidiExporter::exportProject(*project(), nullptr, nullptr, target, &error));
    QVERIFY(!error.isEmpty());
    QCOMPARE(error, same.errorString());
}

void MidiExporterTest::diskThatIsFullIsReportedAndLeavesTheFormerFile()
{
    // More than goes to the disk at once, of which a part finds room.
    const auto song = project({melodyTrack({melody(QList<NoteEvent>(4000, note(60, 0.0)))})});
    const qsizetype whole = exportedBytes(*song).size();
    ContentFixture::write(path("exports/song.mid"), "a former song");
    for (const qsizetype room : {qsizetype(10), whole / 2, whole - 1}) {
        QString error;
        {
            const FullDisk disk(static_cast<rlim_t>(room));
            QVERIFY(!MidiExporter::exportProject(*song, nullptr, nullptr, path("exports/song.mid"),
                                                 &error));
        }
        QCOMPARE(error, QString::fromUtf8(std::strerror(EFBIG)));
        QCOMPARE(ContentFixture::read(path("exports/song.mid")), "a former song");
        QCOMPARE(QDir(path("exports")).entryList(QDir::Files), QStringList{"song.mid"});
    }
}

void MidiExporterTest::deviceThatIsFullIsReported()
{
    QString error;
    QVERIFY(!MidiExporter::exportProject(*project(), nullptr, nullptr, "/dev/full", &error));
    QFile same("/dev/full");
    QVERIFY(same.open(QIODevice::WriteOnly) && same.write("x") == 1 && !same.flush());
    QCOMPARE(error, same.errorString());
}

void MidiExporterTest::stoppedExportLeavesEverythingAsItWas()
{
    const auto song =
        project({melodyTrack({melody({note(60, 0.0)})}), melodyTrack({melody({note(62, 0.0)})})});
    ContentFixture::write(path("exports/song.mid"), "a former song");
    QString error = "lo anterior";
    QVERIFY(!MidiExporter::exportProject(*song, nullptr, nullptr, path("exports/song.mid"), &error,
                                         [](double done) { return done < 0.5; }));
    QCOMPARE(error, "lo anterior");
    QCOMPARE(ContentFixture::read(path("exports/song.mid")), "a former song");
    QCOMPARE(QDir(path("exports")).entryList(QDir::Files), QStringList{"song.mid"});
}

void MidiExporterTest::progressGrowsToTheEnd()
{
    const auto song =
        project({melodyTrack({melody({note(60, 0.0)})}), melodyTrack({melody({note(62, 0.0)})})});
    QList<double> heard;
    QVERIFY(MidiExporter::exportProject(*song, nullptr, nullptr, path(), nullptr, [&](double done) {
        heard.append(done);
        return true;
    }));
    // The conductor comes first of three.
    QCOMPARE(heard, (QList<double>{1.0 / 3.0, 2.0 / 3.0}));
}

void MidiExporterTest::errorNeedsNobodyToListen()
{
    QVERIFY(!MidiExporter::exportProject(*project(), nullptr, nullptr, files_.root(), nullptr));
}

void MidiExporterTest::formerFileIsReplacedWhole()
{
    const QByteArray fresh = exportedBytes(*project());
    ContentFixture::write(path("old.mid"), QByteArray(100000, 'x'));
    QVERIFY(MidiExporter::exportProject(*project(), nullptr, nullptr, path("old.mid"), nullptr));
    QCOMPARE(ContentFixture::read(path("old.mid")), fresh);
}

void MidiExporterTest::successLeavesTheErrorAlone()
{
    QString error = "lo anterior";
    QVERIFY(MidiExporter::exportProject(*project(), nullptr, nullptr, path(), &error));
    QCOMPARE(error, "lo anterior");
}

// ---- Hostile projects ----------------------------------------------------------------------

void MidiExporterTest::timesPastFourBytesAreHeld_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("duration");
    QTest::addColumn<qint64>("on");
    QTest::addColumn<qint64>("off");
    QTest::newRow("the last that fits")
        << 559000.0 << 1.0 << qint64(268320000) << qint64(268320480);
    QTest::newRow("an end past the last") << 559000.0 << 1000.0 << qint64(268320000) << kMaxTick;
    QTest::newRow("a start past the last") << 1e6 << 1.0 << kMaxTick << kMaxTick;
    QTest::newRow("past 64 bits") << 1e300 << 1e300 << kMaxTick << kMaxTick;
    QTest::newRow("an end past all numbers") << 1.7e308 << 1.7e308 << kMaxTick << kMaxTick;
    QTest::newRow("far before the start") << -1e300 << 1.0 << qint64(0) << qint64(0);
}

void MidiExporterTest::timesPastFourBytesAreHeld()
{
    QFETCH(double, beat);
    QFETCH(double, duration);
    Track track = named("t", "nadie", {note(60, beat, duration)});
    track.melodyBlocks[0].durationBeats = std::numeric_limits<double>::max();
    const MidiReader::File file = exported(*project({track}));
    QCOMPARE(file.error, "");
    QTEST(file.tracks.value(1).ofKind(0x90).value(0).tick, "on");
    QTEST(file.tracks.value(1).ofKind(0x80).value(0).tick, "off");
}

void MidiExporterTest::tooLongASongIsRefused()
{
    const auto song = project({straight(loopTrack({loop("r", "l", 0.0, 4e9)}))});
    QString error;
    QVERIFY(
        !MidiExporter::exportProject(*song, &files_.library(), nullptr, path("long.mid"), &error));
    QCOMPARE(error, kTooLong);
    QVERIFY(!QFile::exists(path("long.mid")));
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    MidiExporter::exportProject(*song, &files_.library(), nullptr, path("long.mid"), &error);
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(error, "MidiExporter: " + kTooLong);
    QVERIFY(
        !MidiExporter::exportProject(*song, &files_.library(), nullptr, path("long.mid"), nullptr));
}

void MidiExporterTest::refusedSongLeavesTheFormerFile()
{
    ContentFixture::write(path("kept.mid"), "lo anterior");
    const auto song = project({straight(loopTrack({loop("r", "l", 0.0, 1e300)}))});
    QVERIFY(
        !MidiExporter::exportProject(*song, &files_.library(), nullptr, path("kept.mid"), nullptr));
    QCOMPARE(ContentFixture::read(path("kept.mid")), "lo anterior");
}

void MidiExporterTest::songOfManyTracksIsBoundAsAWhole()
{
    // Each track is within its own bound: 900000 notes.
    const Track track = straight(loopTrack({loop("r", "l", 0.0, 4.0 * 450000.0)}));
    const auto song = project(QList<Track>(5, track));
    QString error;
    QVERIFY(!MidiExporter::exportProject(*song, &files_.library(), nullptr, path(), &error));
    QCOMPARE(error, kTooLong);
}

void MidiExporterTest::moreChunksThanAHeaderTellsAreRefused()
{
    const auto song = project(QList<Track>(65534, Track()));
    QVERIFY(MidiExporter::exportProject(*song, nullptr, nullptr, path(), nullptr));
    const MidiReader::File file = MidiReader::read(ContentFixture::read(path()));
    QCOMPARE(file.error, "");
    QCOMPARE(file.tracks.size(), 65535);
    song->tracks.append(Track());
    QString error;
    QVERIFY(!MidiExporter::exportProject(*song, nullptr, nullptr, path(), &error));
    QCOMPARE(error, kTooLong);
}

void MidiExporterTest::hostileProjectsGiveReadableFiles()
{
    Generator generator(6, Numbers::Hostile);
    for (int round = 0; round < 300; ++round) {
        Project song;
        generator.fill(song);
        const bool withLoops = round < 10;
        for (Track& track : song.tracks) {
            for (LoopBlock& block : track.loopBlocks)
                block.layerId = withLoops ? "l" : "";
        }
        const QByteArray bytes = exportedBytes(song);
        if (withLoops && bytes == "failed: " + kTooLong.toUtf8())
            continue;
        const MidiReader::File file = MidiReader::read(bytes);
        QCOMPARE(file.error, "");
        QCOMPARE(file.tracks.size(),
                 1 + song.tracks.size() + (song.harmonyTrack.isEmpty() ? 0 : 1));
    }
}

void MidiExporterTest::fluidSynthReadsTheSameNotes()
{
    Generator generator(12);
    for (int round = 0; round < 8; ++round) {
        Project song;
        generator.fill(song);
        song.bpm = 6000;
        for (Track& track : song.tracks)
            track.loopBlocks.append(loop("r", "l", 2.0, 15.5));
        const QByteArray bytes = exportedBytes(song);
        qsizetype written = 0;
        for (const MidiReader::MidiTrack& track : MidiReader::read(bytes).tracks)
            written += track.ofKind(0x90).size();
        QVERIFY(written > 0);
        QCOMPARE(noteOnsHeardByFluidSynth(bytes), written);
    }
}

QTEST_GUILESS_MAIN(MidiExporterTest)
#include "MidiExporterTest.moc"
