#include "playback/PlaybackEngine.h"

#include "playback/ChannelPlan.h"
#include "playback/NoteRenderer.h"
#include "playback/SoundfontPlayer.h"
#include "support/ContentFixture.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/TinyBank.h"
#include "support/Tones.h"
#include "support/WavFile.h"

#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <limits>
#include <memory>
#include <utility>

namespace PlaybackEngineTests {

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

/// What the synthesiser is told to play, in order. The release of all sixteen channels reads
/// "silence".
QStringList played()
{
    QStringList everyChannel;
    for (int channel = 0; channel < 16; ++channel)
        everyChannel.append(QStringLiteral("all_notes_off %1").arg(channel));
    return FluidSpy::calls({"noteon", "noteoff", "all_notes_off"})
        .join('\n')
        .replace(everyChannel.join('\n'), "silence")
        .split('\n', Qt::SkipEmptyParts);
}

/// Channels on which notes were started.
QSet<int> soundingChannels()
{
    QSet<int> channels;
    for (const QString& call : FluidSpy::calls({"noteon"}))
        channels.insert(call.section(' ', 1, 1).toInt());
    return channels;
}

QString beatText(double beat)
{
    return QString::number(beat, 'g', 12);
}

/// An engine that is watched while it plays on a synthesiser without a sound card.
///
/// The playhead follows the project's present tempo over all the time since it was set going, so
/// a song at a tempo of 0 stands still where playback was started, for as many ticks as one likes.
class Player {
public:
    explicit Player(std::unique_ptr<Project> song = project({}, {}, {}, {}, 0))
        : song_(std::move(song))
    {
        files_.instruments().loadBuiltinGmInstruments();
        ContentFixture::write(files_.filePath("gm.sf2"),
                              TinyBank::bytes({{0, 0, 100}, {128, 0, 50}}));
        player_.loadGmBank(files_.filePath("gm.sf2"));
        engine_ =
            std::make_unique<PlaybackEngine>(&player_, &files_.library(), &files_.instruments());
        engine_->setProject(song_.get());
        QObject::connect(engine_.get(), &PlaybackEngine::playingChanged, engine_.get(),
                         [this](bool on) { told_.append(on ? "playing" : "not playing"); });
        QObject::connect(engine_.get(), &PlaybackEngine::playheadChanged, engine_.get(),
                         [this](double beat) { told_.append(beatText(beat)); });
        FluidSpy::reset();
    }

    PlaybackEngine& engine() { return *engine_; }

    ContentFixture& files() { return files_; }

    Project& song() { return *song_; }

    /// Signals since the last call: "playing", "not playing", or the beat of the playhead.
    QStringList told() { return std::exchange(told_, {}); }

    /// What was played since the last call.
    QStringList heard()
    {
        const QStringList calls = played();
        FluidSpy::reset();
        return calls;
    }

    /// Runs the event loop until the engine has ticked; false if it does not.
    bool tick() { return QSignalSpy(engine_.get(), &PlaybackEngine::playheadChanged).wait(); }

    /// What the first tick from a beat on plays.
    QStringList heardFrom(double beat)
    {
        engine_->play(beat);
        FluidSpy::reset();
        tick();
        return heard();
    }

    /// Deletes the engine before everything that it uses.
    void destroyEngine() { engine_.reset(); }

private:
    ContentFixture files_;
    SoundfontPlayer player_{SoundfontPlayer::Mode::Realtime};
    std::unique_ptr<Project> song_;
    std::unique_ptr<PlaybackEngine> engine_;
    QStringList told_;
};

/// A song that stands still.
std::unique_ptr<Project> stillSong(const QList<Track>& tracks, const HarmonyTrack& harmony = {},
                                   const TimeSignature& meter = {})
{
    return project(tracks, harmony, meter, {}, 0);
}

/// A track without humanizing, in one long block.
Track trackOf(const QList<NoteEvent>& notes, const QString& instrumentId = {})
{
    return straight(melodyTrack({melody(notes, 0.0, 1000.0)}, instrumentId));
}

/// So many tracks with one note at the start each, its pitch being 60 and the number of the track.
QList<Track> choir(int count)
{
    QList<Track> tracks;
    for (int i = 0; i < count; ++i)
        tracks.append(trackOf({note(60 + i, 0.0)}));
    return tracks;
}

} // namespace

class PlaybackEngineTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
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
    void withoutAPlayerNoChannelIsSet();

    void startsIdleOnTheFirstBeat();
    void playSetsOutFromItsBeat();
    void negativeBeatMeansWherePlaybackWasLeft();
    void pauseKeepsThePosition();
    void pauseWhileIdleDoesNothing();
    void stopGoesBackToTheStart();
    void stopWhileIdleMovesThePlayhead();
    void stopGoesBackToTheStartOfTheRange();
    void playWhilePlayingStartsAgain();
    void playheadIsSetWhileIdle();
    void playheadIsSetWhilePlaying();
    void beatThatIsNoNumberIsNoPlace();
    void everyTickTellsThePlayhead();
    void changeOfTempoKeepsTheBeat();
    void rescheduleFollowsTheTempoAtOnce();

    void newProjectStartsAtItsFirstBeat();
    void newProjectStopsTheOldOne();
    void withoutAProjectNothingPlays();
    void withoutAPlayerNothingPlays();
    void withoutASynthesiserNothingPlays();

    void notesAreHeardFromTheBeatOn();
    void noteThatStraddlesTheStartIsNotHeard();
    void noteMovedAheadOfTheStartIsHeard();
    void tiedNoteIsReleasedBeforeItStartsAgain();
    void wholeSongIsPlayedOnceInOrder();
    void tracksPlayOnTheirChannels();
    void onlyThirteenTracksPlay();
    void mutedAndSoloedTracks_data();
    void mutedAndSoloedTracks();
    void soloOfAVoiceSilencesNoNotes();
    void soloBeyondTheThirteenthLeavesTheHarmony();
    void mutedHarmonyIsSilent();
    void loopsPlayThroughTheLibrary();

    void songStopsABarBehindItsLastNote();
    void songPlaysToTheEndOfItsVoices_data();
    void songPlaysToTheEndOfItsVoices();
    void emptySongPlaysItsEightBars();
    void songWithNothingToHearPlaysItsBlocks();
    void clicksPlayOnInAnEmptySong();
    void repeatedSongPlaysOn();

    void wrapGoesBackIntoTheRange();
    void wrapKeepsTheOvershootOfAnyTick();
    void invalidRangeKeepsTheFormerOne_data();
    void invalidRangeKeepsTheFormerOne();
    void rangeBeforeTheFirstBeatIsCut();
    void rangeMayComeWhilePlaying();
    void clearedRangeIsLeft();
    void rangeReachesTheScheduleWithTheNextOne();

    void clicksFallOnTheirChannel();
    void clicksOfCompoundMeter();
    void metronomeWhileIdleTellsNothing();
    void metronomeWhilePlayingStartsAgain();
    void metronomeAsItIsChangesNothing();

    void rescheduleTakesTheNotesAnew();
    void rescheduleKeepsTheClock();
    void rescheduleWhileIdleDoesNothing();
    void channelsAreSetInOrder();
    void channelsAreSetAtEveryStart();
    void channelsOfThirteenTracksAreSet();
    void channelsMayChangeWhileTheyPlay();
    void cursorIsZeroBeforeTheFirstSchedule();

    void voiceWithoutADeviceIsSilent();
    void voicesStopWithoutHavingStarted();
    void firstStartWaitsForItsVoicesAndLaterOnesDoNot();
    void whoIsToldOfAWaitMayEndPlayback_data();
    void whoIsToldOfAWaitMayEndPlayback();
    void preparedVoicesAreNotWaitedFor();
    void voicesBeyondAnHourAreNotMixedAhead_data();
    void voicesBeyondAnHourAreNotMixedAhead();
    void changedVoicesAreWaitedForAtTheNextStart_data();
    void changedVoicesAreWaitedForAtTheNextStart();

    void slotMayStopAtATick();
    void slotMayMoveThePlayhead();
    void slotMayTakeTheProjectAway();
    void engineMayGoWhileItPlays();
    void engineMayGoWhilePreviewsArePending();
    void previewLeavesTheSongAlone();
    void transportEndsPreviews();
    void stopEndsARunningPreview();
    void hostileProjectsAreSurvived();
};

void PlaybackEngineTest::initTestCase()
{
    // No sound server is looked for, and none is started.
    qputenv("PULSE_SERVER", "unix:/nonexistent");
}

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

void PlaybackEngineTest::withoutAPlayerNoChannelIsSet()
{
    PlaybackEngine engine(nullptr, nullptr, nullptr);
    engine.configureChannelForInstrument(3, "gm_bateria");
    engine.setupTrackChannel(3, melodyTrack({}));
    engine.refreshChannels();
    QVERIFY(FluidSpy::calls().isEmpty());
}

// ---- Playing and stopping ------------------------------------------------------------------

void PlaybackEngineTest::startsIdleOnTheFirstBeat()
{
    const PlaybackEngine engine(nullptr, nullptr, nullptr);
    QVERIFY(!engine.isPlaying());
    QCOMPARE(engine.playheadBeat(), 0.0);
    QVERIFY(engine.projectDir.isEmpty());
    QVERIFY(engine.previewHeld().isEmpty());
}

void PlaybackEngineTest::playSetsOutFromItsBeat()
{
    Player player;
    player.engine().play(3.0);
    QVERIFY(player.engine().isPlaying());
    QCOMPARE(player.told(), QStringList({"playing", "3"}));
    QCOMPARE(player.engine().playheadBeat(), 3.0);
    player.engine().play(0.0);
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

void PlaybackEngineTest::negativeBeatMeansWherePlaybackWasLeft()
{
    Player player;
    player.engine().setPlayheadBeat(7.25);
    player.told();
    player.engine().play();
    QCOMPARE(player.told(), QStringList({"playing", "7.25"}));
    player.engine().pause();
    player.told();
    player.engine().play(-0.001);
    QCOMPARE(player.told(), QStringList({"playing", "7.25"}));
}

void PlaybackEngineTest::pauseKeepsThePosition()
{
    Player player;
    player.engine().play(7.25);
    player.told();
    player.heard();
    player.engine().pause();
    QVERIFY(!player.engine().isPlaying());
    QCOMPARE(player.told(), QStringList{"not playing"});
    QCOMPARE(player.heard(), QStringList{"silence"});
    QCOMPARE(player.engine().playheadBeat(), 7.25);
    player.engine().play();
    QCOMPARE(player.engine().playheadBeat(), 7.25);
    player.engine().play(0.0);
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

void PlaybackEngineTest::pauseWhileIdleDoesNothing()
{
    Player player;
    player.engine().setPlayheadBeat(2.0);
    player.told();
    player.engine().pause();
    QVERIFY(player.told().isEmpty());
    QVERIFY(player.heard().isEmpty());
    QCOMPARE(player.engine().playheadBeat(), 2.0);
}

void PlaybackEngineTest::stopGoesBackToTheStart()
{
    Player player;
    player.engine().play(5.0);
    player.told();
    player.heard();
    player.engine().stop();
    QVERIFY(!player.engine().isPlaying());
    QCOMPARE(player.told(), QStringList({"not playing", "0"}));
    QCOMPARE(player.heard(), QStringList{"silence"});
    QCOMPARE(player.engine().playheadBeat(), 0.0);
    QTest::qWait(30);
    QVERIFY(player.told().isEmpty());
}

void PlaybackEngineTest::stopWhileIdleMovesThePlayhead()
{
    Player player;
    player.engine().setPlayheadBeat(5.0);
    player.told();
    player.engine().stop();
    QCOMPARE(player.told(), QStringList{"0"});
    QVERIFY(player.heard().isEmpty());
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

void PlaybackEngineTest::stopGoesBackToTheStartOfTheRange()
{
    Player player;
    player.engine().setLoopRange(8.0, 16.0);
    player.engine().stop();
    QCOMPARE(player.told(), QStringList{"8"});
    player.engine().play(9.0);
    player.told();
    player.engine().stop();
    QCOMPARE(player.told(), QStringList({"not playing", "8"}));
    QCOMPARE(player.engine().playheadBeat(), 8.0);
    player.engine().clearLoopRange();
    player.engine().stop();
    QCOMPARE(player.told(), QStringList{"0"});
}

void PlaybackEngineTest::playWhilePlayingStartsAgain()
{
    Player player(stillSong({trackOf({note(60, 2.0)})}));
    player.engine().play(1.0);
    player.told();
    player.heard();
    player.engine().play(2.0);
    QCOMPARE(player.told(), QStringList({"playing", "2"}));
    QCOMPARE(player.heard(), QStringList{"silence"});
    QVERIFY(player.tick());
    QCOMPARE(player.heard(), QStringList{"noteon 0 60 100"});
}

void PlaybackEngineTest::playheadIsSetWhileIdle()
{
    Player player;
    player.engine().setPlayheadBeat(5.5);
    player.engine().setPlayheadBeat(-3.0);
    QCOMPARE(player.told(), QStringList({"5.5", "0"}));
    QCOMPARE(player.engine().playheadBeat(), 0.0);
    QVERIFY(!player.engine().isPlaying());
    QVERIFY(player.heard().isEmpty());
}

void PlaybackEngineTest::playheadIsSetWhilePlaying()
{
    Player player;
    player.engine().play(1.0);
    player.told();
    player.heard();
    player.engine().setPlayheadBeat(6.0);
    QCOMPARE(player.told(), QStringList({"playing", "6"}));
    QCOMPARE(player.heard(), QStringList{"silence"});
    player.engine().setPlayheadBeat(-6.0);
    QCOMPARE(player.told(), QStringList({"playing", "0"}));
}

void PlaybackEngineTest::beatThatIsNoNumberIsNoPlace()
{
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    Player player;
    player.engine().setPlayheadBeat(4.0);
    player.engine().play(kNan);
    QCOMPARE(player.engine().playheadBeat(), 4.0);
    player.engine().setPlayheadBeat(kNan);
    QCOMPARE(player.engine().playheadBeat(), 0.0);
    player.engine().stop();
    player.engine().setPlayheadBeat(kNan);
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

void PlaybackEngineTest::everyTickTellsThePlayhead()
{
    Player player;
    player.engine().play(2.5);
    player.told();
    for (int i = 0; i < 5; ++i)
        QVERIFY(player.tick());
    QCOMPARE(player.told(), QStringList(5, "2.5"));
}

void PlaybackEngineTest::changeOfTempoKeepsTheBeat()
{
    Player player;
    player.engine().play(4.0);
    QVERIFY(player.tick());
    // All the time since the start would be worth more than a year of it.
    player.song().bpm = 6'000;
    QCOMPARE(player.engine().playheadBeat(), 4.0);
    QVERIFY(player.tick());
    QCOMPARE(player.engine().playheadBeat() < 4.0, false);
    QTRY_VERIFY(player.engine().playheadBeat() > 5.0);
    player.song().bpm = 0;
    QVERIFY(player.tick());
    player.told();
    const double kept = player.engine().playheadBeat();
    QVERIFY(kept > 5.0);
    for (int i = 0; i < 3; ++i)
        QVERIFY(player.tick());
    QCOMPARE(player.told(), QStringList(3, beatText(kept)));
}

void PlaybackEngineTest::rescheduleFollowsTheTempoAtOnce()
{
    Player player(stillSong({trackOf({note(60, 4.0, 1.0), note(62, 6.0, 100.0)})}));
    player.engine().play(4.0);
    QVERIFY(player.tick());
    player.heard();
    QTest::qWait(50);
    // A beat takes ten seconds: what the note before it was worth counts for nothing.
    player.song().bpm = 6;
    player.engine().rescheduleIfPlaying();
    QVERIFY(player.engine().playheadBeat() >= 4.0);
    QVERIFY(player.tick());
    QVERIFY(!player.heard().contains("noteon 0 62 100"));
    player.song().bpm = 100000;
    player.engine().rescheduleIfPlaying();
    QTRY_VERIFY(FluidSpy::calls().contains("noteon 0 62 100"));
}

// ---- Projects and services -----------------------------------------------------------------

void PlaybackEngineTest::newProjectStartsAtItsFirstBeat()
{
    Player player;
    player.engine().setLoopRange(8.0, 16.0);
    player.engine().setPlayheadBeat(5.0);
    player.told();
    Project other;
    player.engine().setProject(&other);
    QCOMPARE(player.told(), QStringList({"8", "0"}));
    QCOMPARE(player.engine().playheadBeat(), 0.0);
    player.engine().setProject(nullptr);
}

void PlaybackEngineTest::newProjectStopsTheOldOne()
{
    Player player(stillSong({trackOf({note(60, 0.0)})}));
    const auto other = stillSong({trackOf({note(72, 0.0)})});
    player.engine().play(3.0);
    player.told();
    player.heard();
    player.engine().setProject(other.get());
    QCOMPARE(player.told(), QStringList({"not playing", "0", "0"}));
    QCOMPARE(player.heard(), QStringList{"silence"});
    QVERIFY(!player.engine().isPlaying());
    QCOMPARE(player.heardFrom(0.0), QStringList{"noteon 0 72 100"});
    player.engine().setProject(nullptr);
}

void PlaybackEngineTest::withoutAProjectNothingPlays()
{
    Player player;
    player.engine().setProject(nullptr);
    player.told();
    FluidSpy::reset();
    player.engine().play(2.0);
    player.engine().rescheduleIfPlaying();
    player.engine().refreshChannels();
    player.engine().setMetronomeEnabled(true);
    player.engine().startVoicePlayback(0.0);
    QVERIFY(!player.engine().isPlaying());
    QVERIFY(player.told().isEmpty());
    QVERIFY(FluidSpy::calls().isEmpty());
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

void PlaybackEngineTest::withoutAPlayerNothingPlays()
{
    Project song;
    PlaybackEngine engine(nullptr, nullptr, nullptr);
    const QSignalSpy playing(&engine, &PlaybackEngine::playingChanged);
    const QSignalSpy playhead(&engine, &PlaybackEngine::playheadChanged);
    engine.setProject(&song);
    QCOMPARE(playhead.count(), 2);
    engine.play(2.0);
    engine.rescheduleIfPlaying();
    engine.setMetronomeEnabled(true);
    engine.pause();
    QVERIFY(!engine.isPlaying());
    QCOMPARE(playing.count(), 0);
    QCOMPARE(playhead.count(), 2);
    engine.setPlayheadBeat(3.0);
    QCOMPARE(engine.playheadBeat(), 3.0);
    engine.stop();
    QCOMPARE(engine.playheadBeat(), 0.0);
}

void PlaybackEngineTest::withoutASynthesiserNothingPlays()
{
    FluidSpy::letSynthFail();
    SoundfontPlayer dead(SoundfontPlayer::Mode::Realtime);
    Project song;
    PlaybackEngine engine(&dead, nullptr, nullptr);
    engine.setProject(&song);
    const QSignalSpy playing(&engine, &PlaybackEngine::playingChanged);
    const QSignalSpy playhead(&engine, &PlaybackEngine::playheadChanged);
    engine.play(2.0);
    engine.refreshChannels();
    QVERIFY(!engine.isPlaying());
    QCOMPARE(playing.count() + playhead.count(), 0);
    QVERIFY(settingCalls().isEmpty());
}

// ---- Notes ---------------------------------------------------------------------------------

void PlaybackEngineTest::notesAreHeardFromTheBeatOn()
{
    Player player(stillSong({trackOf({note(60, 0.0), note(62, 2.0, 1.0, 90), note(64, 2.001)})}));
    QCOMPARE(player.heardFrom(2.0), QStringList{"noteon 0 62 90"});
    QVERIFY(player.tick());
    QVERIFY(player.heard().isEmpty());
}

void PlaybackEngineTest::noteThatStraddlesTheStartIsNotHeard()
{
    Player player(stillSong({trackOf({note(60, 0.0, 4.0), note(62, 3.0, 1.0)})}));
    QVERIFY(player.heardFrom(2.0).isEmpty());
    QCOMPARE(player.engine().cursorForBeat(2.0), 1);
    QCOMPARE(player.heardFrom(3.0), QStringList{"noteon 0 62 100"});
    QStringList ends = player.heardFrom(4.0);
    ends.sort();
    QCOMPARE(ends, QStringList({"noteoff 0 60", "noteoff 0 62"}));
}

void PlaybackEngineTest::noteMovedAheadOfTheStartIsHeard()
{
    Player player(stillSong({trackOf({note(60, 3.96875), note(62, 4.0), note(64, 3.9375)})}));
    QCOMPARE(player.heardFrom(4.0), QStringList({"noteon 0 60 100", "noteon 0 62 100"}));
    player.engine().setPlayheadBeat(4.0);
    QVERIFY(player.tick());
    QCOMPARE(player.heard(), QStringList({"silence", "noteon 0 60 100", "noteon 0 62 100"}));
    // An edit sounds no note twice.
    player.engine().rescheduleIfPlaying();
    QVERIFY(player.tick());
    QCOMPARE(player.heard(), QStringList({"silence", "noteon 0 62 100"}));
}

void PlaybackEngineTest::tiedNoteIsReleasedBeforeItStartsAgain()
{
    Player player(stillSong({trackOf({note(60, 1.0), note(60, 0.0)})}));
    QCOMPARE(player.heardFrom(1.0), QStringList({"noteoff 0 60", "noteon 0 60 100"}));
}

void PlaybackEngineTest::wholeSongIsPlayedOnceInOrder()
{
    QList<NoteEvent> notes;
    QStringList expected;
    for (int i = 0; i < 40; ++i) {
        notes.append(note(40 + i, 0.25 * i, 0.25));
        if (i > 0)
            expected.append(QStringLiteral("noteoff 0 %1").arg(39 + i));
        expected.append(QStringLiteral("noteon 0 %1 100").arg(40 + i));
    }
    expected.append("noteoff 0 79");
    expected.append("silence");
    Player player(project({trackOf(notes)}, {}, {}, {}, 6000));
    player.engine().play(0.0);
    QTRY_VERIFY(!player.engine().isPlaying());
    QCOMPARE(player.heard(), expected);
    const QStringList told = player.told();
    QCOMPARE(told.first(2), QStringList({"playing", "0"}));
    QCOMPARE(told.last(2), QStringList({"not playing", "0"}));
    for (qsizetype i = 3; i < told.size() - 2; ++i)
        QVERIFY(told[i].toDouble() > told[i - 1].toDouble());
}

void PlaybackEngineTest::tracksPlayOnTheirChannels()
{
    Player player(stillSong(choir(3), harmony({1})));
    QStringList heard = player.heardFrom(0.0);
    heard.sort();
    QCOMPARE(heard, QStringList({"noteon 0 60 100", "noteon 1 61 100", "noteon 15 48 72",
                                 "noteon 15 52 72", "noteon 15 55 72", "noteon 2 62 100"}));
}

void PlaybackEngineTest::onlyThirteenTracksPlay()
{
    Player player(stillSong(choir(20), harmony({1})));
    player.engine().setMetronomeEnabled(true);
    const QStringList heard = player.heardFrom(0.0);
    QCOMPARE(heard.size(), 13 + 3 + 1);
    QVERIFY(heard.contains("noteon 12 72 100"));
    QVERIFY(heard.contains("noteon 14 76 110"));
    QVERIFY(!heard.join('\n').contains(" 73 "));
}

void PlaybackEngineTest::mutedAndSoloedTracks_data()
{
    QTest::addColumn<QString>("tracks");
    QTest::addColumn<QList<int>>("sounding");
    QTest::newRow("all sound") << "..." << QList<int>{0, 1, 2};
    QTest::newRow("muted ones do not") << ".m." << QList<int>{0, 2};
    QTest::newRow("only soloed ones do") << ".ss" << QList<int>{1, 2};
    QTest::newRow("mute beats solo") << ".sb" << QList<int>{1};
    QTest::newRow("a muted solo silences the others too") << ".b." << QList<int>{};
}

void PlaybackEngineTest::mutedAndSoloedTracks()
{
    QFETCH(QString, tracks);
    QFETCH(QList<int>, sounding);
    QList<Track> voices = choir(3);
    for (int i = 0; i < 3; ++i) {
        voices[i].muted = tracks[i] == 'm' || tracks[i] == 'b';
        voices[i].solo = tracks[i] == 's' || tracks[i] == 'b';
    }
    Player player(stillSong(voices));
    player.engine().play(0.0);
    QVERIFY(player.tick());
    QCOMPARE(soundingChannels(), QSet<int>(sounding.cbegin(), sounding.cend()));
}

void PlaybackEngineTest::soloOfAVoiceSilencesNoNotes()
{
    Player player(stillSong(choir(1)));
    player.song().audioTracks = {voiceTrack({})};
    player.song().audioTracks[0].solo = true;
    QCOMPARE(player.heardFrom(0.0), QStringList{"noteon 0 60 100"});
}

void PlaybackEngineTest::soloBeyondTheThirteenthLeavesTheHarmony()
{
    Player player(stillSong(choir(14), harmony({1})));
    player.song().tracks[13].solo = true;
    player.engine().play(0.0);
    QVERIFY(player.tick());
    QCOMPARE(soundingChannels(), QSet<int>{15});
}

void PlaybackEngineTest::mutedHarmonyIsSilent()
{
    Player player(stillSong(choir(1), harmony({1})));
    player.song().harmonyTrack.muted = true;
    QCOMPARE(player.heardFrom(0.0), QStringList{"noteon 0 60 100"});
}

void PlaybackEngineTest::loopsPlayThroughTheLibrary()
{
    Player player(stillSong({straight(loopTrack({loop("r", "l", 2.0, 8.0)}))}));
    player.files().addPackage("a", R"({"rhythm": {"id": "r"}, "loopLayers": [{"id": "l"}],
        "loopVariants": [{"layerId": "l", "section": "Normal", "variantIndex": 1,
                          "durationBars": 1, "notes": [{"pitch": 64, "velocity": 77}]}]})");
    QVERIFY(player.heardFrom(2.0).isEmpty());
    player.files().library().reload();
    QCOMPARE(player.heardFrom(2.0), QStringList{"noteon 0 64 77"});
}

// ---- The end of the song -------------------------------------------------------------------

void PlaybackEngineTest::songStopsABarBehindItsLastNote()
{
    Player player(stillSong({trackOf({note(60, 0.0, 8.0)})}));
    player.engine().play(12.0);
    QVERIFY(player.tick());
    QVERIFY(player.engine().isPlaying());
    player.engine().play(12.001);
    player.told();
    player.heard();
    QVERIFY(player.tick());
    QVERIFY(!player.engine().isPlaying());
    QCOMPARE(player.told(), QStringList({"12.001", "not playing", "0"}));
    QCOMPARE(player.heard(), QStringList{"silence"});
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

void PlaybackEngineTest::songPlaysToTheEndOfItsVoices_data()
{
    QTest::addColumn<QList<Track>>("tracks");
    QTest::addColumn<QString>("voice");
    QTest::addColumn<double>("end");
    const QList<Track> notes{trackOf({note(60, 0.0, 8.0)})};
    QList<Track> soloed = notes;
    soloed[0].solo = true;
    QTest::newRow("behind the notes") << notes << "." << 34.0;
    QTest::newRow("alone") << QList<Track>() << "." << 34.0;
    QTest::newRow("a muted voice does not count") << notes << "m" << 12.0;
    QTest::newRow("a voice behind a soloed track does not count") << soloed << "." << 12.0;
    QTest::newRow("a soloed voice beside a soloed track counts") << soloed << "s" << 34.0;
    QTest::newRow("a muted voice alone is nothing to hear") << QList<Track>() << "m" << 32.0;
}

void PlaybackEngineTest::songPlaysToTheEndOfItsVoices()
{
    QFETCH(QList<Track>, tracks);
    QFETCH(QString, voice);
    QFETCH(double, end);
    Player player(stillSong(tracks));
    player.song().audioTracks = {
        voiceTrack({clip("a.wav", 20.0, 10.0), clip("b.wav", 1.0, 4.0),
                    clip("c.wav", std::numeric_limits<double>::infinity(), 1.0)})};
    player.song().audioTracks[0].muted = voice == "m";
    player.song().audioTracks[0].solo = voice == "s";
    player.engine().play(end);
    QVERIFY(player.tick());
    QVERIFY(player.engine().isPlaying());
    player.engine().play(end + 0.001);
    QVERIFY(player.tick());
    QVERIFY(!player.engine().isPlaying());
}

void PlaybackEngineTest::emptySongPlaysItsEightBars()
{
    for (const auto& [meter, bar] :
         {std::pair(TimeSignature{4, 4, false}, 4.0), std::pair(TimeSignature{6, 8, true}, 3.0)}) {
        Player player(stillSong({}, {}, meter));
        player.engine().play(8.0 * bar);
        QVERIFY(player.tick());
        QVERIFY(player.engine().isPlaying());
        player.engine().play(8.0 * bar + 0.01);
        QVERIFY(player.tick());
        QVERIFY(!player.engine().isPlaying());
    }
}

void PlaybackEngineTest::songWithNothingToHearPlaysItsBlocks()
{
    Player player(stillSong({melodyTrack({melody({}, 36.0, 4.0)})}));
    player.engine().play(40.0);
    QVERIFY(player.tick());
    QVERIFY(player.engine().isPlaying());
    player.engine().play(40.01);
    QVERIFY(player.tick());
    QVERIFY(!player.engine().isPlaying());
}

void PlaybackEngineTest::clicksPlayOnInAnEmptySong()
{
    Player player;
    player.engine().setMetronomeEnabled(true);
    QCOMPARE(player.heardFrom(32.0), QStringList{"noteon 14 76 110"});
    QVERIFY(player.engine().isPlaying());
    QVERIFY(player.heardFrom(32.0625).isEmpty());
    QVERIFY(player.engine().isPlaying());
    player.engine().play(32.2);
    QVERIFY(player.tick());
    QVERIFY(!player.engine().isPlaying());
}

void PlaybackEngineTest::repeatedSongPlaysOn()
{
    Player player;
    player.engine().setLoopRange(40.0, 48.0);
    player.engine().play(1000.0);
    for (int i = 0; i < 3; ++i)
        QVERIFY(player.tick());
    QVERIFY(player.engine().isPlaying());
    QCOMPARE(player.engine().playheadBeat(), 40.0);
    player.engine().clearLoopRange();
    QVERIFY(player.tick());
    QVERIFY(!player.engine().isPlaying());
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

// ---- The repeat range ----------------------------------------------------------------------

void PlaybackEngineTest::wrapGoesBackIntoTheRange()
{
    Player player(stillSong({trackOf({note(60, 8.0), note(62, 8.03125), note(64, 16.0)})}));
    player.engine().setLoopRange(8.0, 16.0);
    player.engine().play(16.03125);
    player.told();
    player.heard();
    QVERIFY(player.tick());
    QCOMPARE(player.told(), QStringList{"8.03125"});
    QCOMPARE(player.heard(), QStringList({"silence", "noteon 0 60 100", "noteon 0 62 100"}));
    QCOMPARE(player.engine().playheadBeat(), 8.03125);
    QVERIFY(player.tick());
    QCOMPARE(player.told(), QStringList{"8.03125"});
    QVERIFY(player.heard().isEmpty());
    player.engine().play(16.0);
    player.heard();
    QVERIFY(player.tick());
    QCOMPARE(player.heard(), QStringList({"silence", "noteon 0 60 100"}));
}

void PlaybackEngineTest::wrapKeepsTheOvershootOfAnyTick()
{
    // At this tempo every tick wraps, many passes at once.
    Player player(project({trackOf({note(60, 1.0, 0.5)})}, {}, {}, {}, 600000));
    player.engine().setLoopRange(0.5, 2.0);
    player.engine().play(0.5);
    player.told();
    for (int i = 0; i < 20; ++i)
        QVERIFY(player.tick());
    player.song().bpm = 0;
    for (const QString& beat : player.told())
        QVERIFY2(beat.toDouble() >= 0.5 && beat.toDouble() < 2.0, qPrintable(beat));
    QVERIFY(player.engine().isPlaying());
}

void PlaybackEngineTest::invalidRangeKeepsTheFormerOne_data()
{
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::newRow("an end before its start") << 9.0 << 3.0;
    QTest::newRow("an end on its start") << 5.0 << 5.0;
    QTest::newRow("no start") << kNan << 5.0;
    QTest::newRow("no end") << 5.0 << kNan;
}

void PlaybackEngineTest::invalidRangeKeepsTheFormerOne()
{
    QFETCH(double, start);
    QFETCH(double, end);
    Player player;
    player.engine().setLoopRange(start, end);
    player.engine().stop();
    QCOMPARE(player.told(), QStringList{"0"});
    player.engine().setLoopRange(8.0, 16.0);
    player.engine().setLoopRange(start, end);
    player.engine().play(17.5);
    QVERIFY(player.tick());
    QCOMPARE(player.engine().playheadBeat(), 9.5);
    player.engine().stop();
    QCOMPARE(player.engine().playheadBeat(), 8.0);
}

void PlaybackEngineTest::rangeBeforeTheFirstBeatIsCut()
{
    Player player;
    player.engine().setLoopRange(-2.0, 4.0);
    player.engine().stop();
    QCOMPARE(player.told(), QStringList{"0"});
    player.engine().play(5.0);
    QVERIFY(player.tick());
    QCOMPARE(player.engine().playheadBeat(), 1.0);
}

void PlaybackEngineTest::rangeMayComeWhilePlaying()
{
    Player player(stillSong({trackOf({note(60, 0.0, 100.0)})}));
    player.engine().play(20.0);
    player.told();
    player.heard();
    player.engine().setLoopRange(8.0, 16.0);
    QVERIFY(player.told().isEmpty());
    QVERIFY(player.heard().isEmpty());
    QVERIFY(player.tick());
    QCOMPARE(player.told(), QStringList{"12"});
}

void PlaybackEngineTest::clearedRangeIsLeft()
{
    Player player(stillSong({trackOf({note(60, 0.0, 100.0)})}));
    player.engine().setLoopRange(8.0, 16.0);
    player.engine().play(10.0);
    player.engine().clearLoopRange();
    player.engine().play(20.0);
    QVERIFY(player.tick());
    QCOMPARE(player.engine().playheadBeat(), 20.0);
}

void PlaybackEngineTest::rangeReachesTheScheduleWithTheNextOne()
{
    Player player;
    player.engine().setMetronomeEnabled(true);
    player.engine().play(0.0);
    const int clicks = player.engine().cursorForBeat(1000.0);
    player.engine().setLoopRange(0.0, 100.0);
    QCOMPARE(player.engine().cursorForBeat(1000.0), clicks);
    player.engine().rescheduleIfPlaying();
    QCOMPARE(player.engine().cursorForBeat(1000.0), 2 * 101);
}

// ---- The metronome -------------------------------------------------------------------------

void PlaybackEngineTest::clicksFallOnTheirChannel()
{
    Player player;
    player.engine().setMetronomeEnabled(true);
    QCOMPARE(player.heardFrom(0.0), QStringList{"noteon 14 76 110"});
    QCOMPARE(player.heardFrom(0.1), QStringList{"noteoff 14 76"});
    QCOMPARE(player.heardFrom(1.0), QStringList{"noteon 14 77 80"});
    QCOMPARE(player.heardFrom(4.0), QStringList{"noteon 14 76 110"});
    player.engine().setMetronomeEnabled(false);
    QVERIFY(player.heardFrom(0.0).isEmpty());
}

void PlaybackEngineTest::clicksOfCompoundMeter()
{
    Player player(stillSong({}, {}, {6, 8, true}));
    player.engine().setMetronomeEnabled(true);
    QCOMPARE(player.heardFrom(0.0), QStringList{"noteon 14 76 110"});
    QVERIFY(player.heardFrom(1.0).isEmpty());
    QCOMPARE(player.heardFrom(1.5), QStringList{"noteon 14 77 80"});
    QCOMPARE(player.heardFrom(3.0), QStringList{"noteon 14 76 110"});
}

void PlaybackEngineTest::metronomeWhileIdleTellsNothing()
{
    Player player;
    player.engine().setPlayheadBeat(3.0);
    player.told();
    player.engine().setMetronomeEnabled(true);
    QVERIFY(player.told().isEmpty());
    QVERIFY(FluidSpy::calls().isEmpty());
    QCOMPARE(player.engine().playheadBeat(), 3.0);
}

void PlaybackEngineTest::metronomeWhilePlayingStartsAgain()
{
    Player player;
    player.engine().play(3.0);
    player.told();
    player.heard();
    player.engine().setMetronomeEnabled(true);
    QCOMPARE(player.told(), QStringList({"playing", "3"}));
    QCOMPARE(player.heard(), QStringList{"silence"});
    QVERIFY(player.tick());
    QCOMPARE(player.heard(), QStringList{"noteon 14 77 80"});
    player.engine().setMetronomeEnabled(false);
    QCOMPARE(player.engine().cursorForBeat(1000.0), 0);
}

void PlaybackEngineTest::metronomeAsItIsChangesNothing()
{
    Player player;
    player.engine().play(3.0);
    player.told();
    FluidSpy::reset();
    player.engine().setMetronomeEnabled(false);
    QVERIFY(player.told().isEmpty());
    QVERIFY(FluidSpy::calls().isEmpty());
}

// ---- Edits while it plays ------------------------------------------------------------------

void PlaybackEngineTest::rescheduleTakesTheNotesAnew()
{
    Player player(stillSong({trackOf({note(60, 2.0)})}));
    player.engine().play(2.0);
    QVERIFY(player.tick());
    player.told();
    player.heard();
    player.song().tracks.append(trackOf({note(72, 1.0), note(74, 2.0)}));
    QVERIFY(player.tick());
    QVERIFY(player.heard().isEmpty());
    player.told();
    player.engine().rescheduleIfPlaying();
    QVERIFY(player.told().isEmpty());
    QCOMPARE(player.heard(), QStringList{"silence"});
    QVERIFY(player.tick());
    QStringList heard = player.heard();
    heard.removeAll("noteoff 1 72");
    heard.sort();
    QCOMPARE(heard, QStringList({"noteon 0 60 100", "noteon 1 74 100"}));
}

void PlaybackEngineTest::rescheduleKeepsTheClock()
{
    Player player(project({}, {}, {}, {}, 600));
    player.engine().setLoopRange(0.0, 1e9);
    player.engine().play(2.0);
    double before = 2.0;
    // An anchor that moved back would lose what has passed since the start.
    for (int i = 0; i < 10; ++i) {
        QVERIFY(player.tick());
        const double now = player.engine().playheadBeat();
        player.engine().rescheduleIfPlaying();
        QVERIFY(player.engine().playheadBeat() >= now);
        QVERIFY(now > before);
        before = now;
    }
    QVERIFY(player.told().filter("playing").size() == 1);
}

void PlaybackEngineTest::rescheduleWhileIdleDoesNothing()
{
    Player player(stillSong({trackOf({note(60, 2.0)})}));
    player.engine().play(0.0);
    player.engine().pause();
    player.told();
    FluidSpy::reset();
    player.song().tracks.clear();
    player.engine().rescheduleIfPlaying();
    QVERIFY(player.told().isEmpty());
    QVERIFY(FluidSpy::calls().isEmpty());
    QCOMPARE(player.engine().cursorForBeat(1000.0), 2);
}

void PlaybackEngineTest::channelsAreSetInOrder()
{
    Player player(stillSong({trackOf({}, "gm_bateria"), trackOf({}, "nadie")}));
    player.song().tracks[0].volume = 0.5F;
    player.song().tracks[1].volume = 1.0F;
    player.song().tracks[1].muted = true;
    player.song().harmonyTrack.volume = 0.25F;
    player.engine().refreshChannels();
    QCOMPARE(settingCalls(),
             QStringList({"program_select 0 1 128 0", "cc 0 7 63", "program_select 1 1 0 0",
                          "cc 1 7 127", "program_select 15 1 0 0", "cc 15 7 31",
                          "program_select 14 1 128 0", "cc 14 7 114"}));
    QVERIFY(player.told().isEmpty());
}

void PlaybackEngineTest::channelsAreSetAtEveryStart()
{
    Player player(stillSong({trackOf({note(60, 0.0)})}));
    player.engine().refreshChannels();
    const QStringList channels = settingCalls();
    FluidSpy::reset();
    player.engine().play(0.0);
    QCOMPARE(settingCalls(), channels);
    QVERIFY(player.tick());
    FluidSpy::reset();
    player.engine().play(0.0);
    const QStringList calls = FluidSpy::calls({"all_notes_off", "program_select", "cc"});
    QCOMPARE(calls.first(), "all_notes_off 0");
    QCOMPARE(calls.mid(16), channels);
}

void PlaybackEngineTest::channelsOfThirteenTracksAreSet()
{
    Player player(stillSong(choir(20)));
    player.engine().refreshChannels();
    QStringList channels;
    for (const QString& call : FluidSpy::calls({"program_select"}))
        channels.append(call.section(' ', 1, 1));
    QCOMPARE(channels, QString("0 1 2 3 4 5 6 7 8 9 10 11 12 15 14").split(' '));
}

void PlaybackEngineTest::channelsMayChangeWhileTheyPlay()
{
    Player player(stillSong(choir(1)));
    player.engine().play(0.0);
    QVERIFY(player.tick());
    player.told();
    player.heard();
    player.song().tracks[0].volume = 0.0F;
    player.engine().refreshChannels();
    QVERIFY(FluidSpy::calls().contains("cc 0 7 0"));
    QVERIFY(player.heard().isEmpty());
    QVERIFY(player.told().isEmpty());
    QVERIFY(player.engine().isPlaying());
}

void PlaybackEngineTest::cursorIsZeroBeforeTheFirstSchedule()
{
    Player player(stillSong(choir(2)));
    QCOMPARE(player.engine().cursorForBeat(0.0), 0);
    QCOMPARE(player.engine().cursorForBeat(5.0), 0);
    player.engine().play(0.0);
    QCOMPARE(player.engine().cursorForBeat(0.0), 0);
    QCOMPARE(player.engine().cursorForBeat(0.5), 2);
    QCOMPARE(player.engine().cursorForBeat(5.0), 4);
}

// ---- Voices --------------------------------------------------------------------------------

void PlaybackEngineTest::voiceWithoutADeviceIsSilent()
{
    Player player(project({}, {}, {}, {}, 6000));
    player.song().audioTracks = {voiceTrack({clip("nadie.wav", 0.0, 8.0)})};
    player.engine().projectDir = player.files().root();
    player.engine().setLoopRange(0.0, 4.0);
    player.engine().play(0.0);
    for (int i = 0; i < 10; ++i)
        QVERIFY(player.tick());
    QVERIFY(player.engine().isPlaying());
    player.engine().startVoicePlayback(2.0);
    player.engine().projectDir.clear();
    player.engine().startVoicePlayback(2.0);
    QVERIFY(player.tick());
    QVERIFY(player.engine().isPlaying());
}

void PlaybackEngineTest::voicesStopWithoutHavingStarted()
{
    Player player;
    player.engine().stopVoicePlayback();
    player.engine().stopVoicePlayback();
    QVERIFY(player.told().isEmpty());
}

namespace {

/// A song of one tuned voice that has a file, on a player, and the waits for it.
struct VoicePlayer {
    VoicePlayer()
    {
        ContentFixture::write(player.files().root() + "/voz.wav",
                              WavFile::bytes(Tones::sine(450.0, 44100, 20000)));
        AudioClip sung = clip("voz.wav", 0.0, 8.0);
        sung.tune = {.enabled = true, .intensity = 1.0F};
        player.song().audioTracks = {voiceTrack({sung})};
        player.engine().projectDir = player.files().root();
        QObject::connect(&player.engine(), &PlaybackEngine::waitingForVoices, &player.engine(),
                         [this](bool waiting) { waits.append(waiting); });
    }

    /// The waits since the last call: true where one began, false where it ended.
    QList<bool> waited() { return std::exchange(waits, {}); }

    Player player{project({}, {}, {}, {}, 6000)};
    QList<bool> waits;
};

const QList<bool> kOneWait{true, false};

} // namespace

void PlaybackEngineTest::whoIsToldOfAWaitMayEndPlayback_data()
{
    QTest::addColumn<bool>("atTheStart");
    QTest::newRow("at the start") << true;
    QTest::newRow("on the way") << false;
}

void PlaybackEngineTest::whoIsToldOfAWaitMayEndPlayback()
{
    QFETCH(bool, atTheStart);
    VoicePlayer voice;
    PlaybackEngine& engine = voice.player.engine();
    if (!atTheStart) {
        engine.play(0.0);
        QVERIFY(engine.isPlaying());
    }
    connect(&engine, &PlaybackEngine::waitingForVoices, &engine,
            [&engine] { engine.setProject(nullptr); });
    voice.player.song().bpm = 60;
    if (atTheStart)
        engine.play(0.0);
    else
        engine.rescheduleIfPlaying();
    QVERIFY(!engine.isPlaying());
    voice.player.heard();
    QTest::qWait(50);
    QCOMPARE(voice.player.heard(), QStringList());
}

void PlaybackEngineTest::firstStartWaitsForItsVoicesAndLaterOnesDoNot()
{
    VoicePlayer voice;
    PlaybackEngine& engine = voice.player.engine();
    engine.startVoicePlayback(0.0);
    QCOMPARE(voice.waited(), kOneWait);
    engine.setLoopRange(0.0, 4.0);
    engine.play(0.0);
    engine.setPlayheadBeat(3.0);
    for (int i = 0; i < 10; ++i)
        QVERIFY(voice.player.tick());
    engine.pause();
    engine.play();
    QCOMPARE(voice.waited(), QList<bool>());
}

void PlaybackEngineTest::preparedVoicesAreNotWaitedFor()
{
    VoicePlayer voice;
    PlaybackEngine& engine = voice.player.engine();
    QVERIFY(!engine.voicesReady());
    engine.prepareVoices();
    QTRY_VERIFY(engine.voicesReady());
    engine.startVoicePlayback(0.0);
    QCOMPARE(voice.waited(), QList<bool>());

    // Every edit and every change of the mix sets the channels.
    voice.player.song().audioTracks[0].clips[0].tune.intensity = 0.5F;
    QVERIFY(!engine.voicesReady());
    engine.refreshChannels();
    QTRY_VERIFY(engine.voicesReady());
    engine.play(0.0);
    QCOMPARE(voice.waited(), QList<bool>());
}

void PlaybackEngineTest::voicesBeyondAnHourAreNotMixedAhead_data()
{
    QTest::addColumn<double>("offset");
    QTest::addColumn<double>("duration");
    // An hour has 360,000 beats at this tempo.
    QTest::newRow("far behind") << 360001.0 << 0.0;
    QTest::newRow("said to be long") << 0.0 << 360001.0;
    QTest::newRow("neither, but both together") << 359990.0 << 20.0;
}

void PlaybackEngineTest::voicesBeyondAnHourAreNotMixedAhead()
{
    QFETCH(double, offset);
    QFETCH(double, duration);
    VoicePlayer voice;
    PlaybackEngine& engine = voice.player.engine();
    Project& song = voice.player.song();
    AudioClip& sung = song.audioTracks[0].clips[0];
    sung.offsetBeats = offset;
    sung.durationBeats = duration;
    // A damaged file may have a meter without bars too, in which the song has no end.
    for (const int denominator : {4, 0}) {
        song.timeSignature.denominator = denominator;
        engine.prepareVoices();
        QTest::qWait(100);
        QVERIFY(!engine.voicesReady());
    }
}

void PlaybackEngineTest::changedVoicesAreWaitedForAtTheNextStart_data()
{
    QTest::addColumn<int>("change");
    QTest::newRow("the volume") << 0;
    QTest::newRow("the tempo") << 1;
    QTest::newRow("the key") << 2;
    QTest::newRow("the file") << 3;
    QTest::newRow("the folder") << 4;
}

void PlaybackEngineTest::changedVoicesAreWaitedForAtTheNextStart()
{
    QFETCH(int, change);
    VoicePlayer voice;
    voice.player.engine().startVoicePlayback(0.0);
    voice.waited();
    Project& song = voice.player.song();
    if (change == 0)
        song.audioTracks[0].volume *= 0.5F;
    if (change == 1)
        song.bpm /= 2;
    if (change == 2)
        song.keySignature.rootPitchClass = 1;
    if (change == 3)
        ContentFixture::write(voice.player.files().root() + "/voz.wav",
                              WavFile::bytes(Tones::sine(450.0, 44100, 10000)));
    if (change == 4)
        voice.player.engine().projectDir += "/otra";
    voice.player.engine().startVoicePlayback(0.0);
    QCOMPARE(voice.waited(), kOneWait);
}

// ---- Life ----------------------------------------------------------------------------------

void PlaybackEngineTest::slotMayStopAtATick()
{
    Player player(stillSong(choir(1)));
    player.engine().play(0.0);
    player.told();
    connect(&player.engine(), &PlaybackEngine::playheadChanged, &player.engine(), [&] {
        if (player.engine().isPlaying())
            player.engine().stop();
    });
    QVERIFY(player.tick());
    QVERIFY(!player.engine().isPlaying());
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

void PlaybackEngineTest::slotMayMoveThePlayhead()
{
    Player player(stillSong({trackOf({note(60, 0.0), note(62, 5.0)})}));
    player.engine().play(0.0);
    bool moved = false;
    connect(&player.engine(), &PlaybackEngine::playheadChanged, &player.engine(), [&] {
        if (!std::exchange(moved, true))
            player.engine().setPlayheadBeat(5.0);
    });
    player.heard();
    QVERIFY(player.tick());
    QVERIFY(player.tick());
    QCOMPARE(player.heard(), QStringList({"noteon 0 60 100", "silence", "noteon 0 62 100"}));
}

void PlaybackEngineTest::slotMayTakeTheProjectAway()
{
    Player player(stillSong(choir(1)));
    player.engine().play(100.0);
    bool taken = false;
    connect(&player.engine(), &PlaybackEngine::playheadChanged, &player.engine(), [&] {
        if (!std::exchange(taken, true))
            player.engine().setProject(nullptr);
    });
    QVERIFY(player.tick());
    QVERIFY(!player.engine().isPlaying());
    QCOMPARE(player.engine().playheadBeat(), 0.0);
}

void PlaybackEngineTest::engineMayGoWhileItPlays()
{
    Player player(project(choir(3), harmony({1, 2, 3}), {}, {}, 600));
    player.engine().setMetronomeEnabled(true);
    player.engine().play(0.0);
    QVERIFY(player.tick());
    player.destroyEngine();
    FluidSpy::reset();
    QTest::qWait(50);
    QVERIFY(FluidSpy::calls().isEmpty());
}

void PlaybackEngineTest::engineMayGoWhilePreviewsArePending()
{
    Player player;
    LoopVariant variant;
    variant.notes = {note(60, 0.0), note(62, 0.05), note(64, 0.1, 3000.0)};
    player.engine().previewChord({60, 64, 67}, 80);
    player.engine().previewVariant(variant, "gm_piano", 120, 4.0);
    player.destroyEngine();
    FluidSpy::reset();
    QTest::qWait(700);
    QVERIFY(FluidSpy::calls().isEmpty());
}

void PlaybackEngineTest::previewLeavesTheSongAlone()
{
    Player player(stillSong(choir(2), harmony({1})));
    player.engine().play(0.0);
    QVERIFY(player.tick());
    FluidSpy::reset();
    player.engine().previewNoteOn(50, "gm_bateria", 100);
    player.engine().previewChord({60, 64}, 80);
    LoopVariant variant;
    variant.notes = {note(60, 0.0, 0.1)};
    player.engine().previewVariant(variant, "gm_piano", 6000, 4.0);
    QTRY_VERIFY(FluidSpy::calls().contains("noteoff 13 60"));
    player.engine().previewNoteOff(50);
    player.engine().stopPreview();
    for (const QString& call :
         FluidSpy::calls({"noteon", "noteoff", "all_notes_off", "program_select", "cc"}))
        QCOMPARE(call.section(' ', 1, 1), "13");
    QVERIFY(player.engine().isPlaying());
}

void PlaybackEngineTest::transportEndsPreviews()
{
    Player player;
    player.engine().previewNoteOn(50, "gm_piano", 100);
    QCOMPARE(player.engine().previewHeld(), QSet<int>{50});
    player.engine().play(0.0);
    player.heard();
    player.engine().stop();
    QCOMPARE(player.heard(), QStringList{"silence"});
}

void PlaybackEngineTest::stopEndsARunningPreview()
{
    Player player;
    LoopVariant variant;
    variant.notes = {note(60, 0.0, 1000.0), note(62, 0.5)};
    player.engine().previewVariant(variant, "gm_piano", 600, 4.0);
    QTRY_VERIFY(FluidSpy::calls().contains("noteon 13 60 100"));
    FluidSpy::reset();
    player.engine().stop();
    QCOMPARE(player.heard(), QStringList{"all_notes_off 13"});
    QTest::qWait(100);
    QVERIFY(player.heard().isEmpty());
}

void PlaybackEngineTest::hostileProjectsAreSurvived()
{
    Player player;
    player.files().addPackage("a", R"({"rhythm": {"id": "Chacarera"},
        "loopLayers": [{"id": "bombo"}], "loopVariants": [{"layerId": "bombo",
        "section": "Normal", "variantIndex": 1, "durationBars": 1,
        "notes": [{"pitch": 64}, {"pitch": 999, "startBeat": -1e300}]}]})");
    player.files().library().reload();
    player.engine().projectDir = player.files().root();
    Generator generator(31, Numbers::Hostile);
    for (int round = 0; round < 25; ++round) {
        const auto song = generator.project();
        const NoteEvent drawn = generator.note();
        player.engine().setProject(song.get());
        player.engine().setMetronomeEnabled(round % 2 == 0);
        player.engine().setLoopRange(drawn.startBeat, drawn.durationBeats);
        player.engine().play(generator.note().startBeat);
        QVERIFY(player.tick());
        player.engine().clearLoopRange();
        player.engine().rescheduleIfPlaying();
        player.engine().setPlayheadBeat(generator.note().startBeat);
        QVERIFY(!player.engine().isPlaying() || player.tick());
        player.engine().refreshChannels();
        player.engine().setProject(nullptr);
        FluidSpy::reset();
    }
}

VELTA_GUILESS_TEST(PlaybackEngineTest)

} // namespace PlaybackEngineTests

#include "PlaybackEngineTest.moc"
