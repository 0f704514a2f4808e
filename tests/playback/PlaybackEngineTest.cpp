#include "playback/PlaybackEngine.h"

#include "playback/ChannelPlan.h"
#include "playback/NoteRenderer.h"
#include "playback/SoundfontPlayer.h"
#include "support/ContentFixture.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TinyBank.h"

#include <QSignalSpy>
#include <QTest>

using namespace ProjectBuilder;

namespace {

/// The calls that give channels their sound.
QStringList settingCalls()
{
    return FluidSpy::calls({"sfload", "program_select", "cc"});
}

/// A General MIDI bank of three programs and a drum kit, as sound font 1 of a player, and an
/// instrument library beside it.
class Stage {
public:
    Stage()
    {
        files_.instruments().loadBuiltinGmInstruments();
        ContentFixture::write(files_.filePath("gm.sf2"),
                              TinyBank::bytes({{0, 0, 100}, {0, 75, 80}, {128, 0, 50}}));
        player_.loadGmBank(files_.filePath("gm.sf2"));
        FluidSpy::reset();
    }

    SoundfontPlayer& player() { return player_; }

    ContentFixture& files() { return files_; }

    InstrumentLibrary& instruments() { return files_.instruments(); }

    QString bankPath(const QString& id) const { return files_.bankRoot() + "/" + id + ".sf2"; }

    /// A recorded instrument whose bank is <id>.sf2, with that content if there is any.
    void record(const QString& id, InstrumentCategory category, const QByteArray& bank = {})
    {
        files_.instruments().registerInstrument({.id = id,
                                                 .name = id,
                                                 .category = category,
                                                 .source = InstrumentSource::CustomRecordedBank,
                                                 .generalMidiProgram = 3,
                                                 .soundfontBankPath = id + ".sf2"});
        if (!bank.isEmpty())
            ContentFixture::write(bankPath(id), bank);
    }

    QStringList configured(const QString& id, int channel = 2)
    {
        FluidSpy::reset();
        PlaybackEngine::configureChannel(&player_, &files_.instruments(), channel, id);
        return settingCalls();
    }

private:
    ContentFixture files_;
    SoundfontPlayer player_{SoundfontPlayer::Mode::Offline};
};

QByteArray oneSine()
{
    return TinyBank::bytes({{0, 0, 60}});
}

} // namespace

class PlaybackEngineTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void channelsHaveTheirUses();
    void doorsGiveWhatTheRendererGives();
    void doorsTakeNoLibrary();

    void withoutALibraryEveryChannelIsAPiano();
    void unknownInstrumentIsAPiano_data();
    void unknownInstrumentIsAPiano();
    void builtinInstrumentPlaysItsProgram_data();
    void builtinInstrumentPlaysItsProgram();
    void programOutOfRangeIsHeld();
    void recordedInstrumentPlaysItsBank();
    void bankIsLoadedOnceForAllChannels();
    void recordedPercussionPlaysItsBank();
    void recordedInstrumentWithoutItsBankPlaysItsStandIn();
    void recordedPercussionWithoutItsBankPlaysTheDrumKit();
    void brokenBankFallsBackWithASignal();
    void brokenBankIsTriedAgain();
    void bankWithoutAFirstPresetFallsBack();
    void bankThatIsNoFileFallsBack();
    void bankThatWentAwayIsNotUsed();
    void instrumentThatIsNotRecordedIgnoresItsBank();
    void percussionInABankWithoutDrumsPlaysPiano();
    void withoutAGeneralBankOnlyRecordedInstrumentsAreSet();
    void withoutASynthesiserNothingHappens();

    void engineUsesItsOwnServices();
    void engineWithoutInstrumentsPlaysPiano();
    void trackChannelGetsInstrumentAndVolume_data();
    void trackChannelGetsInstrumentAndVolume();
};

void PlaybackEngineTest::init()
{
    FluidSpy::reset();
}

void PlaybackEngineTest::channelsHaveTheirUses()
{
    QCOMPARE(kMaxNoteTracks, 13);
    QCOMPARE(kPreviewChannel, 13);
    QCOMPARE(kMetronomeChannel, 14);
    QCOMPARE(kHarmonyChannel, 15);
}

// ---- Notes ---------------------------------------------------------------------------------

void PlaybackEngineTest::doorsGiveWhatTheRendererGives()
{
    ContentFixture content;
    content.addPackage("a", R"({"rhythm": {"id": "r"}, "loopLayers": [{"id": "l"}],
        "loopVariants": [{"layerId": "l", "notes": [{"pitch": 60}, {"startBeat": 1.5}]}]})");
    content.library().reload();
    qsizetype heard = 0;
    for (quint32 seed = 0; seed < 100; ++seed) {
        Project song;
        Generator(seed).fill(song);
        for (Track& track : song.tracks) {
            track.loopBlocks.append(loop("r", "l", 2.0, 9.5));
            const auto notes = PlaybackEngine::renderTrackNotes(song, track, &content.library());
            QCOMPARE(notes, NoteRenderer::trackNotes(song, track, &content.library()));
            heard += notes.size();
        }
        QCOMPARE(PlaybackEngine::renderHarmonyNotes(song), NoteRenderer::harmonyNotes(song));
        heard += PlaybackEngine::renderHarmonyNotes(song).size();
    }
    QVERIFY(heard > 1000);
}

void PlaybackEngineTest::doorsTakeNoLibrary()
{
    Track track = straight(loopTrack({loop("r", "l", 0.0, 8.0)}));
    track.melodyBlocks = {melody({note(70, 1.0)})};
    QCOMPARE(PlaybackEngine::renderTrackNotes(*project({track}), track, nullptr),
             QList<NoteEvent>{note(70, 1.0)});
}

// ---- Instruments of channels ---------------------------------------------------------------

void PlaybackEngineTest::withoutALibraryEveryChannelIsAPiano()
{
    Stage stage;
    PlaybackEngine::configureChannel(&stage.player(), nullptr, 4, "gm_bateria");
    QCOMPARE(settingCalls(), QStringList{"program_select 4 1 0 0"});
}

void PlaybackEngineTest::unknownInstrumentIsAPiano_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("no id") << "";
    QTest::newRow("an id of nobody") << "theremin";
    QTest::newRow("an id in another case") << "GM_FLAUTA";
}

void PlaybackEngineTest::unknownInstrumentIsAPiano()
{
    QFETCH(QString, id);
    QCOMPARE(Stage().configured(id), QStringList{"program_select 2 1 0 0"});
}

void PlaybackEngineTest::builtinInstrumentPlaysItsProgram_data()
{
    QTest::addColumn<QString>("call");
    QTest::newRow("gm_piano") << "program_select 2 1 0 0";
    QTest::newRow("gm_flauta_pan") << "program_select 2 1 0 75";
    QTest::newRow("gm_pad") << "program_select 2 1 0 89";
    QTest::newRow("gm_bateria") << "program_select 2 1 128 0";
}

void PlaybackEngineTest::builtinInstrumentPlaysItsProgram()
{
    QFETCH(QString, call);
    QCOMPARE(Stage().configured(QTest::currentDataTag()), QStringList{call});
}

void PlaybackEngineTest::programOutOfRangeIsHeld()
{
    Stage stage;
    Instrument instrument;
    instrument.id = "alto";
    instrument.generalMidiProgram = 500;
    stage.instruments().registerInstrument(instrument);
    instrument.id = "bajo";
    instrument.generalMidiProgram = -500;
    stage.instruments().registerInstrument(instrument);
    QCOMPARE(stage.configured("alto"), QStringList{"program_select 2 1 0 127"});
    QCOMPARE(stage.configured("bajo"), QStringList{"program_select 2 1 0 0"});
}

void PlaybackEngineTest::recordedInstrumentPlaysItsBank()
{
    Stage stage;
    stage.record("erke", InstrumentCategory::Winds, oneSine());
    QCOMPARE(stage.configured("erke"),
             QStringList({"sfload " + stage.bankPath("erke") + " 0", "program_select 2 2 0 0"}));
}

void PlaybackEngineTest::bankIsLoadedOnceForAllChannels()
{
    Stage stage;
    stage.record("erke", InstrumentCategory::Winds, oneSine());
    stage.configured("erke");
    QCOMPARE(stage.configured("erke", 5), QStringList{"program_select 5 2 0 0"});
    QCOMPARE(stage.configured("erke", 2), QStringList{"program_select 2 2 0 0"});
}

void PlaybackEngineTest::recordedPercussionPlaysItsBank()
{
    Stage stage;
    stage.record("caja", InstrumentCategory::Percussion, oneSine());
    QCOMPARE(stage.configured("caja").last(), "program_select 2 2 0 0");
}

void PlaybackEngineTest::recordedInstrumentWithoutItsBankPlaysItsStandIn()
{
    Stage stage;
    stage.record("quena", InstrumentCategory::Winds);
    stage.record("erke", InstrumentCategory::Winds);
    QCOMPARE(stage.configured("quena"), QStringList{"program_select 2 1 0 75"});
    QCOMPARE(stage.configured("erke"), QStringList{"program_select 2 1 0 73"});
}

void PlaybackEngineTest::recordedPercussionWithoutItsBankPlaysTheDrumKit()
{
    Stage stage;
    stage.record("bombo_leguero", InstrumentCategory::Percussion);
    QCOMPARE(stage.configured("bombo_leguero"), QStringList{"program_select 2 1 128 0"});
}

void PlaybackEngineTest::brokenBankFallsBackWithASignal()
{
    Stage stage;
    stage.record("quena", InstrumentCategory::Winds, "no bank at all");
    stage.record("caja", InstrumentCategory::Percussion, oneSine().left(2000));
    const QSignalSpy failed(&stage.player(), &SoundfontPlayer::bankLoadFailed);
    QCOMPARE(stage.configured("quena").last(), "program_select 2 1 0 75");
    QCOMPARE(stage.configured("caja").last(), "program_select 2 1 128 0");
    QCOMPARE(failed.count(), 2);
    QCOMPARE(failed.first().first().toString(), stage.bankPath("quena"));
    QVERIFY(!stage.player().instrumentBankLoaded("quena"));
}

void PlaybackEngineTest::brokenBankIsTriedAgain()
{
    Stage stage;
    stage.record("quena", InstrumentCategory::Winds, "no bank at all");
    stage.configured("quena");
    ContentFixture::write(stage.bankPath("quena"), oneSine());
    QCOMPARE(stage.configured("quena"),
             QStringList({"sfload " + stage.bankPath("quena") + " 0", "program_select 2 2 0 0"}));
}

void PlaybackEngineTest::bankWithoutAFirstPresetFallsBack()
{
    Stage stage;
    stage.record("quena", InstrumentCategory::Winds, TinyBank::bytes({{0, 9, 60}}));
    QCOMPARE(stage.configured("quena"),
             QStringList({"sfload " + stage.bankPath("quena") + " 0", "program_select 2 2 0 0",
                          "program_select 2 1 0 75"}));
}

void PlaybackEngineTest::bankThatIsNoFileFallsBack()
{
    Stage stage;
    for (const char* path : {".", "..", "../../../../../../../dev/zero"}) {
        stage.instruments().registerInstrument({.id = "quena",
                                                .name = "Quena",
                                                .category = InstrumentCategory::Winds,
                                                .source = InstrumentSource::CustomRecordedBank,
                                                .generalMidiProgram = 3,
                                                .soundfontBankPath = path});
        QCOMPARE(stage.configured("quena"), QStringList{"program_select 2 1 0 75"});
    }
}

void PlaybackEngineTest::bankThatWentAwayIsNotUsed()
{
    Stage stage;
    stage.record("quena", InstrumentCategory::Winds, oneSine());
    stage.configured("quena");
    QVERIFY(QFile::remove(stage.bankPath("quena")));
    QCOMPARE(stage.configured("quena"), QStringList{"program_select 2 1 0 75"});
}

void PlaybackEngineTest::instrumentThatIsNotRecordedIgnoresItsBank()
{
    Stage stage;
    stage.record("quena", InstrumentCategory::Winds, oneSine());
    Instrument ordinary = *stage.instruments().find("quena");
    ordinary.source = InstrumentSource::GeneralMidiBank;
    stage.instruments().registerInstrument(ordinary);
    QCOMPARE(stage.configured("quena"), QStringList{"program_select 2 1 0 3"});
}

void PlaybackEngineTest::percussionInABankWithoutDrumsPlaysPiano()
{
    Stage stage;
    const QString plain = stage.files().filePath("plain.sf2");
    ContentFixture::write(plain, oneSine());
    QVERIFY(stage.player().loadGmBank(plain));
    QCOMPARE(stage.configured("gm_bateria"),
             QStringList({"program_select 2 2 128 0", "program_select 2 2 0 0"}));
}

void PlaybackEngineTest::withoutAGeneralBankOnlyRecordedInstrumentsAreSet()
{
    Stage stage;
    stage.record("quena", InstrumentCategory::Winds, oneSine());
    SoundfontPlayer bare(SoundfontPlayer::Mode::Offline);
    FluidSpy::reset();
    for (const char* id : {"gm_flauta", "gm_bateria", "theremin", "quena"})
        PlaybackEngine::configureChannel(&bare, &stage.instruments(), 1, id);
    QCOMPARE(settingCalls(),
             QStringList({"sfload " + stage.bankPath("quena") + " 0", "program_select 1 1 0 0"}));
}

void PlaybackEngineTest::withoutASynthesiserNothingHappens()
{
    Stage stage;
    stage.record("quena", InstrumentCategory::Winds, oneSine());
    FluidSpy::letSynthFail();
    SoundfontPlayer dead(SoundfontPlayer::Mode::Offline);
    PlaybackEngine engine(&dead, nullptr, &stage.instruments());
    for (const char* id : {"gm_flauta", "gm_bateria", "theremin", "quena"})
        engine.setupTrackChannel(0, melodyTrack({}, id));
    QVERIFY(settingCalls().isEmpty());
}

// ---- The engine ----------------------------------------------------------------------------

void PlaybackEngineTest::engineUsesItsOwnServices()
{
    Stage stage;
    stage.record("erke", InstrumentCategory::Winds, oneSine());
    PlaybackEngine engine(&stage.player(), nullptr, &stage.instruments());
    engine.configureChannelForInstrument(13, "gm_flauta_pan");
    engine.configureChannelForInstrument(6, "erke");
    QCOMPARE(settingCalls(),
             QStringList({"program_select 13 1 0 75", "sfload " + stage.bankPath("erke") + " 0",
                          "program_select 6 2 0 0"}));
}

void PlaybackEngineTest::engineWithoutInstrumentsPlaysPiano()
{
    Stage stage;
    PlaybackEngine engine(&stage.player(), nullptr, nullptr);
    engine.configureChannelForInstrument(3, "gm_bateria");
    QCOMPARE(settingCalls(), QStringList{"program_select 3 1 0 0"});
}

void PlaybackEngineTest::trackChannelGetsInstrumentAndVolume_data()
{
    QTest::addColumn<QString>("instrument");
    QTest::addColumn<float>("volume");
    QTest::addColumn<QStringList>("calls");
    QTest::newRow("a flute at 0.8")
        << "gm_flauta_pan" << 0.8F << QStringList{"program_select 9 1 0 75", "cc 9 7 101"};
    QTest::newRow("drums at full volume")
        << "gm_bateria" << 1.0F << QStringList{"program_select 9 1 128 0", "cc 9 7 127"};
    QTest::newRow("nobody in silence")
        << "" << 0.0F << QStringList{"program_select 9 1 0 0", "cc 9 7 0"};
}

void PlaybackEngineTest::trackChannelGetsInstrumentAndVolume()
{
    QFETCH(QString, instrument);
    QFETCH(float, volume);
    Stage stage;
    PlaybackEngine engine(&stage.player(), nullptr, &stage.instruments());
    Track track = melodyTrack({}, instrument);
    track.volume = volume;
    track.muted = true;
    engine.setupTrackChannel(9, track);
    QTEST(settingCalls(), "calls");
}

QTEST_GUILESS_MAIN(PlaybackEngineTest)
#include "PlaybackEngineTest.moc"
