#include "playback/SoundfontPlayer.h"

#include "support/ContentFixture.h"
#include "support/FluidSpy.h"
#include "support/TestProgram.h"
#include "support/TinyBank.h"
#include "support/Tones.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace SoundfontPlayerTests {

namespace {

using Mode = SoundfontPlayer::Mode;

constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr int kMaxInt = std::numeric_limits<int>::max();

/// What the synthesiser leaves of its effects where nothing sounds.
constexpr double kSilence = 1e-6;

QString realBank()
{
    return QCoreApplication::applicationDirPath() + "/resources/soundfonts/velta_bank_gm.sf2";
}

QList<float> rendered(SoundfontPlayer& player, int frames)
{
    QList<float> samples(2 * frames);
    if (!player.renderFloat(samples.data(), frames))
        samples.clear();
    return samples;
}

/// What a sound may lie beside another and be taken for the same: 60 dB below it. The last samples
/// of a recording are read on into what lies behind it in memory.
constexpr double kInaudible = 0.001;

QList<float> difference(QList<float> samples, const QList<float>& subtracted)
{
    std::ranges::transform(samples, subtracted, samples.begin(), std::minus());
    return samples;
}

/// The left side of interleaved samples.
QList<float> left(const QList<float>& stereo)
{
    QList<float> samples;
    for (qsizetype i = 0; i < stereo.size(); i += 2)
        samples.append(stereo.at(i));
    return samples;
}

double peak(const QList<float>& samples)
{
    float most = 0.0F;
    for (const float sample : samples)
        most = std::max(most, std::abs(sample));
    return static_cast<double>(most);
}

/// What is written to the error stream meanwhile, by whomever.
QByteArray errorsWhile(const QString& file, const std::function<void()>& work)
{
    std::fflush(stderr);
    const int stream = dup(STDERR_FILENO);
    FILE* const into = std::fopen(qPrintable(file), "w");
    dup2(fileno(into), STDERR_FILENO);
    work();
    std::fflush(stderr);
    dup2(stream, STDERR_FILENO);
    close(stream);
    std::fclose(into);
    return ContentFixture::read(file);
}

/// A few notes on a melodic and a drum channel, rendered in runs of `block` frames.
QList<float> shortPiece(const QString& bank, int block)
{
    SoundfontPlayer player(Mode::Offline);
    player.loadGmBank(bank);
    player.selectGmProgram(0, 40);
    player.selectGmDrums(9);
    player.setChannelVolume(0, 0.5F);
    QList<float> samples;
    for (const int pitch : {60, 64, 67, 72}) {
        player.noteOn(0, pitch, 90);
        player.noteOn(9, 38, 100);
        for (int left = 3000; left > 0; left -= block)
            samples += rendered(player, std::min(left, block));
        player.noteOff(0, pitch);
    }
    return samples;
}

} // namespace

class SoundfontPlayerTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void settingsAreMadeBeforeTheSynthesiser();
    void onlyRealtimeAsksForADriver();
    void driverGoesFirstAndSettingsLast();
    void modesHaveTheirNumbers();

    void withoutASynthesiserNothingIsDone();
    void withoutASynthesiserTheGeneralBankFailsAloud();
    void withoutASynthesiserAnInstrumentBankFailsInSilence();
    void withoutASynthesiserNoDriverIsMade();
    void withoutASynthesiserTheBufferStaysAsItWas();

    void generalBankIsLoadedOnceAndKeepsPresets();
    void bankThatCannotBeLoadedIsTold_data();
    void bankThatCannotBeLoadedIsTold();
    void failedLoadKeepsTheFormerBank();
    void laterBankTakesOver();
    void instrumentBankIsLoadedOnce();
    void instrumentBankThatCannotBeLoadedIsTold();
    void everyInstrumentHasItsOwnBank();
    void liveSamplesAreReadAsTheyAreChosen();
    void everyProgramSoundsLiveAsInTheWholeBank();
    void soundingNoteOutlivesItsProgram();
    void instrumentBankOutlivesItsFile();

    void withoutABankNoProgramIsSelected();
    void programIsHeldInRange_data();
    void programIsHeldInRange();
    void drumsAreBank128();
    void bankWithoutDrumsPlaysPiano();
    void instrumentBankIsItsFirstPreset();
    void instrumentBankWithoutAFirstPresetIsRefused();
    void unknownInstrumentLeavesTheChannelAlone();

    void volumeBecomesAController_data();
    void volumeBecomesAController();
    void noteOnIsHeldInRange_data();
    void noteOnIsHeldInRange();
    void noteOffIsHeldInRange_data();
    void noteOffIsHeldInRange();
    void notesOfOneChannelAreReleased();
    void negativeChannelReleasesAllSixteen();
    void soundIsCutOnAllSixteen();
    void channelOutOfRangeIsSurvived();

    void soundComesInterleavedFromOneBuffer();
    void noFramesRenderNothing();
    void pitchIsHeard_data();
    void pitchIsHeard();
    void programChangesTheSound();
    void volumeChangesTheSound();
    void releasedNoteFallsSilent();
    void cutNoteFallsSilentAtOnce();
    void missingBankIsSilent();
    void realBankSounds();
    void equalCallsSoundEqual();
    void blocksDoNotChangeTheSound_data();
    void blocksDoNotChangeTheSound();

    void offlineNotesRenderNothingBeforeTheyAreAsked();
    void driverIsNotRobbedOfItsSound();
    void notesWithoutADriverDoNotPileUp_data();
    void notesWithoutADriverDoNotPileUp();
    void brokenBankLeavesTheErrorStreamAlone();

private:
    QString gm() const { return files_.filePath("gm.sf2"); }

    QString noDrums() const { return files_.filePath("sin batería.sf2"); }

    QString broken() const { return files_.filePath("broken.sf2"); }

    QString missing() const { return files_.filePath("missing.sf2"); }

    ContentFixture files_;
    /// The library shares the samples of a bank that someone has loaded.
    SoundfontPlayer keepsRealBank_{Mode::Offline};
};

void SoundfontPlayerTest::initTestCase()
{
    const QByteArray whole = TinyBank::bytes({{0, 0, 100}, {0, 5, 50}, {0, 127, 80}, {128, 0, 25}});
    ContentFixture::write(gm(), whole);
    ContentFixture::write(noDrums(), TinyBank::bytes({{0, 0, 100}}));
    ContentFixture::write(broken(), whole.left(whole.size() / 2));
    QVERIFY2(keepsRealBank_.loadGmBank(realBank()), qPrintable(realBank()));
}

void SoundfontPlayerTest::init()
{
    FluidSpy::reset();
}

// ---- Life ----------------------------------------------------------------------------------

void SoundfontPlayerTest::settingsAreMadeBeforeTheSynthesiser()
{
    const SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.hasSynth());
    QStringList calls = FluidSpy::calls();
    QCOMPARE(calls.first(), "new_settings");
    QCOMPARE(calls.last(), "new_synth");
    QStringList settings = calls.mid(1, calls.size() - 2);
    settings.sort();
    QCOMPARE(settings, QStringList({"setint audio.periods 24", "setint audio.realtime-prio 0",
                                    "setint synth.midi-channels 16", "setnum synth.gain 0.6",
                                    "setnum synth.sample-rate 44100"}));
}

void SoundfontPlayerTest::onlyRealtimeAsksForADriver()
{
    {
        const SoundfontPlayer offline(Mode::Offline);
        QVERIFY(FluidSpy::calls({"new_driver"}).isEmpty());
    }
    const SoundfontPlayer realtime(Mode::Realtime);
    QVERIFY(realtime.hasSynth());
    QCOMPARE(FluidSpy::calls({"new_driver"}).size(), 1);
    QCOMPARE(FluidSpy::calls().last(), "new_driver");
}

void SoundfontPlayerTest::driverGoesFirstAndSettingsLast()
{
    FluidSpy::setDriver(FluidSpy::Driver::Stands);
    {
        const SoundfontPlayer player(Mode::Realtime);
    }
    QCOMPARE(FluidSpy::calls({"delete_driver", "delete_synth", "delete_settings"}),
             QStringList({"delete_driver", "delete_synth", "delete_settings"}));
}

void SoundfontPlayerTest::modesHaveTheirNumbers()
{
    QCOMPARE(static_cast<int>(Mode::Realtime), 0);
    QCOMPARE(static_cast<int>(Mode::Offline), 1);
}

// ---- Without a synthesiser -----------------------------------------------------------------

void SoundfontPlayerTest::withoutASynthesiserNothingIsDone()
{
    FluidSpy::letSynthFail();
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(!player.hasSynth());
    const QStringList before = FluidSpy::calls();
    player.loadGmBank(gm());
    player.loadInstrumentBank("erke", gm());
    player.selectGmProgram(0, 5);
    player.selectGmDrums(9);
    QVERIFY(!player.selectInstrumentBank(0, "erke"));
    QVERIFY(!player.instrumentBankLoaded("erke"));
    player.setChannelVolume(0, 1.0F);
    player.noteOn(0, 60, 100);
    player.noteOff(0, 60);
    player.allNotesOff(3);
    player.allNotesOff(-1);
    player.allSoundOff();
    QCOMPARE(FluidSpy::calls(), before);
}

void SoundfontPlayerTest::withoutASynthesiserTheGeneralBankFailsAloud()
{
    FluidSpy::letSynthFail();
    SoundfontPlayer player(Mode::Realtime);
    const QSignalSpy failed(&player, &SoundfontPlayer::bankLoadFailed);
    QVERIFY(!player.loadGmBank(gm()));
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(), gm());
}

void SoundfontPlayerTest::withoutASynthesiserAnInstrumentBankFailsInSilence()
{
    FluidSpy::letSynthFail();
    SoundfontPlayer player(Mode::Offline);
    const QSignalSpy failed(&player, &SoundfontPlayer::bankLoadFailed);
    QVERIFY(!player.loadInstrumentBank("erke", gm()));
    QVERIFY(!player.loadInstrumentBank("erke", missing()));
    QCOMPARE(failed.count(), 0);
}

void SoundfontPlayerTest::withoutASynthesiserNoDriverIsMade()
{
    FluidSpy::letSynthFail();
    FluidSpy::setDriver(FluidSpy::Driver::Stands);
    {
        const SoundfontPlayer player(Mode::Realtime);
    }
    QCOMPARE(FluidSpy::calls({"new_driver", "delete_driver", "delete_synth", "delete_settings"}),
             QStringList({"delete_settings"}));
}

void SoundfontPlayerTest::withoutASynthesiserTheBufferStaysAsItWas()
{
    FluidSpy::letSynthFail();
    SoundfontPlayer player(Mode::Offline);
    QList<float> buffer(128, 0.25F);
    QVERIFY(!player.renderFloat(buffer.data(), 64));
    QCOMPARE(buffer, QList<float>(128, 0.25F));
}

// ---- Banks ---------------------------------------------------------------------------------

void SoundfontPlayerTest::generalBankIsLoadedOnceAndKeepsPresets()
{
    SoundfontPlayer player(Mode::Offline);
    const QSignalSpy failed(&player, &SoundfontPlayer::bankLoadFailed);
    QVERIFY(player.loadGmBank(noDrums()));
    QCOMPARE(FluidSpy::calls({"sfload"}), QStringList{"sfload " + noDrums() + " 0"});
    QCOMPARE(failed.count(), 0);
}

void SoundfontPlayerTest::bankThatCannotBeLoadedIsTold_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("no file") << missing();
    QTest::newRow("half a file") << broken();
    QTest::newRow("no path") << "";
    QTest::newRow("a folder") << files_.root();
    QTest::newRow("an endless device") << "/dev/zero";
    QTest::newRow("a pipe that nobody fills") << files_.filePath("pipe");
    QTest::newRow("an empty file") << files_.filePath("empty.sf2");
}

void SoundfontPlayerTest::bankThatCannotBeLoadedIsTold()
{
    QFETCH(QString, path);
    mkfifo(qPrintable(files_.filePath("pipe")), 0600);
    ContentFixture::write(files_.filePath("empty.sf2"), "");
    SoundfontPlayer player(Mode::Offline);
    const QSignalSpy failed(&player, &SoundfontPlayer::bankLoadFailed);
    QVERIFY(!player.loadGmBank(path));
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(), path);
}

void SoundfontPlayerTest::failedLoadKeepsTheFormerBank()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    QVERIFY(!player.loadGmBank(broken()));
    QVERIFY(!player.loadGmBank(missing()));
    player.selectGmProgram(0, 5);
    QCOMPARE(FluidSpy::calls().last(), "program_select 0 1 0 5");
}

void SoundfontPlayerTest::laterBankTakesOver()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    QVERIFY(player.loadGmBank(noDrums()));
    player.selectGmProgram(0, 0);
    QCOMPARE(FluidSpy::calls().last(), "program_select 0 2 0 0");
}

void SoundfontPlayerTest::instrumentBankIsLoadedOnce()
{
    SoundfontPlayer player(Mode::Offline);
    const QSignalSpy failed(&player, &SoundfontPlayer::bankLoadFailed);
    QVERIFY(!player.instrumentBankLoaded("erke"));
    QVERIFY(player.loadInstrumentBank("erke", gm()));
    QVERIFY(player.instrumentBankLoaded("erke"));
    QVERIFY(player.loadInstrumentBank("erke", gm()));
    QVERIFY(player.loadInstrumentBank("erke", missing()));
    QCOMPARE(FluidSpy::calls({"sfload"}), QStringList{"sfload " + gm() + " 0"});
    QCOMPARE(failed.count(), 0);
}

void SoundfontPlayerTest::instrumentBankThatCannotBeLoadedIsTold()
{
    SoundfontPlayer player(Mode::Offline);
    const QSignalSpy failed(&player, &SoundfontPlayer::bankLoadFailed);
    QVERIFY(!player.loadInstrumentBank("erke", broken()));
    QVERIFY(!player.loadInstrumentBank("erke", missing()));
    QVERIFY(!player.instrumentBankLoaded("erke"));
    QCOMPARE(failed.count(), 2);
    QCOMPARE(failed.at(0).first().toString(), broken());
    QCOMPARE(failed.at(1).first().toString(), missing());
    QVERIFY(player.loadInstrumentBank("erke", gm()));
}

void SoundfontPlayerTest::everyInstrumentHasItsOwnBank()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadInstrumentBank("erke", gm()));
    QVERIFY(player.loadInstrumentBank("quena", noDrums()));
    QVERIFY(!player.instrumentBankLoaded("Erke"));
    QVERIFY(player.selectInstrumentBank(0, "quena"));
    QVERIFY(player.selectInstrumentBank(1, "erke"));
    QCOMPARE(FluidSpy::calls({"program_select"}),
             QStringList({"program_select 0 2 0 0", "program_select 1 1 0 0"}));
}

void SoundfontPlayerTest::liveSamplesAreReadAsTheyAreChosen()
{
    for (const Mode mode : {Mode::Realtime, Mode::Offline}) {
        FluidSpy::reset();
        SoundfontPlayer player(mode);
        QVERIFY(player.loadGmBank(gm()));
        QVERIFY(player.loadInstrumentBank("erke", noDrums()));
        const QString chosen = QString::number(mode == Mode::Realtime ? 1 : 0);
        QCOMPARE(
            FluidSpy::calls({"setint", "sfload"}).mid(3),
            QStringList({"setint synth.dynamic-sample-loading " + chosen, "sfload " + gm() + " 0",
                         "setint synth.dynamic-sample-loading 0", "sfload " + noDrums() + " 0"}));
    }
}

void SoundfontPlayerTest::everyProgramSoundsLiveAsInTheWholeBank()
{
    SoundfontPlayer live(Mode::Realtime);
    SoundfontPlayer whole(Mode::Offline);
    QVERIFY(live.loadGmBank(realBank()) && whole.loadGmBank(realBank()));
    constexpr int kDrums = 128;
    for (int program = 0; program <= kDrums; ++program) {
        for (SoundfontPlayer* player : {&live, &whole}) {
            if (program == kDrums)
                player->selectGmDrums(3);
            else
                player->selectGmProgram(3, program);
        }
        for (const int pitch : {38, 50, 62, 74}) {
            live.noteOn(3, pitch, 40 + pitch);
            whole.noteOn(3, pitch, 40 + pitch);
            // The note itself lets so much pass by where no driver asks for sound.
            rendered(whole, 64);
            const QList<float> expected = rendered(whole, 4410);
            const double off = Tones::rms(difference(rendered(live, 4410), expected));
            QVERIFY2(Tones::rms(expected) > 0.0002, qPrintable(QString::number(program)));
            QVERIFY2(off < kInaudible * Tones::rms(expected), qPrintable(QString::number(program)));
        }
        live.allSoundOff();
        whole.allSoundOff();
        rendered(whole, 64);
    }
}

void SoundfontPlayerTest::soundingNoteOutlivesItsProgram()
{
    SoundfontPlayer live(Mode::Realtime);
    SoundfontPlayer whole(Mode::Offline);
    QVERIFY(live.loadGmBank(gm()) && whole.loadGmBank(gm()));
    for (SoundfontPlayer* player : {&live, &whole}) {
        player->selectGmProgram(0, 5);
        player->noteOn(0, 60, 100);
    }
    rendered(whole, 64);
    for (const int program : {127, 5, 0, 127}) {
        live.selectGmProgram(0, program);
        whole.selectGmProgram(0, program);
        const QList<float> expected = rendered(whole, 4410);
        QVERIFY(Tones::strengthAt(left(expected), 44100, 882.0) > 0.01);
        QVERIFY(rendered(live, 4410) == expected);
    }
}

void SoundfontPlayerTest::instrumentBankOutlivesItsFile()
{
    const QString path = files_.filePath("erke.sf2");
    ContentFixture::write(path, TinyBank::bytes({{0, 0, 100}}));
    SoundfontPlayer player(Mode::Realtime);
    QVERIFY(player.loadGmBank(gm()));
    QVERIFY(player.loadInstrumentBank("erke", path));
    QVERIFY(QFile::remove(path));
    QVERIFY(player.selectInstrumentBank(0, "erke"));
    player.noteOn(0, 60, 100);
    QVERIFY(Tones::strengthAt(left(rendered(player, 4410)), 44100, 441.0) > 0.01);
}

// ---- Programs ------------------------------------------------------------------------------

void SoundfontPlayerTest::withoutABankNoProgramIsSelected()
{
    SoundfontPlayer player(Mode::Offline);
    player.selectGmProgram(0, 5);
    player.selectGmDrums(9);
    QVERIFY(!player.loadGmBank(broken()));
    player.selectGmProgram(0, 5);
    player.selectGmDrums(9);
    QVERIFY(FluidSpy::calls({"program_select"}).isEmpty());
}

void SoundfontPlayerTest::programIsHeldInRange_data()
{
    QTest::addColumn<int>("program");
    QTest::addColumn<int>("selected");
    QTest::newRow("0") << 0 << 0;
    QTest::newRow("5") << 5 << 5;
    QTest::newRow("127") << 127 << 127;
    QTest::newRow("128 is 127") << 128 << 127;
    QTest::newRow("-1 is 0") << -1 << 0;
    QTest::newRow("the largest is 127") << kMaxInt << 127;
    QTest::newRow("the smallest is 0") << kMinInt << 0;
}

void SoundfontPlayerTest::programIsHeldInRange()
{
    QFETCH(int, program);
    QFETCH(int, selected);
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    player.selectGmProgram(7, program);
    QCOMPARE(FluidSpy::calls({"program_select"}),
             QStringList{QStringLiteral("program_select 7 1 0 %1").arg(selected)});
}

void SoundfontPlayerTest::drumsAreBank128()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    player.selectGmDrums(3);
    QCOMPARE(FluidSpy::calls({"program_select"}), QStringList{"program_select 3 1 128 0"});
}

void SoundfontPlayerTest::bankWithoutDrumsPlaysPiano()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(noDrums()));
    player.selectGmDrums(3);
    QCOMPARE(FluidSpy::calls({"program_select"}),
             QStringList({"program_select 3 1 128 0", "program_select 3 1 0 0"}));
    player.noteOn(3, 60, 100);
    QVERIFY(peak(rendered(player, 4410)) > 0.01);
}

void SoundfontPlayerTest::instrumentBankIsItsFirstPreset()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    QVERIFY(player.loadInstrumentBank("erke", noDrums()));
    QVERIFY(player.selectInstrumentBank(4, "erke"));
    QCOMPARE(FluidSpy::calls({"program_select"}), QStringList{"program_select 4 2 0 0"});
}

void SoundfontPlayerTest::instrumentBankWithoutAFirstPresetIsRefused()
{
    const QString path = files_.filePath("program5.sf2");
    ContentFixture::write(path, TinyBank::bytes({{0, 5, 100}}));
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadInstrumentBank("erke", path));
    QVERIFY(!player.selectInstrumentBank(4, "erke"));
}

void SoundfontPlayerTest::unknownInstrumentLeavesTheChannelAlone()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    QVERIFY(!player.selectInstrumentBank(0, "nunca"));
    QVERIFY(!player.selectInstrumentBank(0, ""));
    QVERIFY(FluidSpy::calls({"program_select"}).isEmpty());
}

// ---- Messages ------------------------------------------------------------------------------

void SoundfontPlayerTest::volumeBecomesAController_data()
{
    using Limits = std::numeric_limits<float>;
    QTest::addColumn<float>("volume");
    QTest::addColumn<int>("value");
    QTest::newRow("1.0 is 127") << 1.0F << 127;
    QTest::newRow("0.999 is cut to 126") << 0.999F << 126;
    QTest::newRow("0.8 is cut to 101") << 0.8F << 101;
    QTest::newRow("0.5 is cut to 63") << 0.5F << 63;
    QTest::newRow("0.007 is cut to 0") << 0.007F << 0;
    QTest::newRow("0.0 is 0") << 0.0F << 0;
    QTest::newRow("negative is 0") << -0.5F << 0;
    QTest::newRow("above 1 is 127") << 1.5F << 127;
    QTest::newRow("enormous is 127") << 1e30F << 127;
    QTest::newRow("the most negative is 0") << Limits::lowest() << 0;
    QTest::newRow("infinite is 127") << Limits::infinity() << 127;
    QTest::newRow("infinitely negative is 0") << -Limits::infinity() << 0;
    QTest::newRow("no number is 0") << Limits::quiet_NaN() << 0;
}

void SoundfontPlayerTest::volumeBecomesAController()
{
    QFETCH(float, volume);
    QFETCH(int, value);
    SoundfontPlayer player(Mode::Offline);
    player.setChannelVolume(11, volume);
    QCOMPARE(FluidSpy::calls({"cc"}), QStringList{QStringLiteral("cc 11 7 %1").arg(value)});
}

void SoundfontPlayerTest::noteOnIsHeldInRange_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<int>("velocity");
    QTest::addColumn<QString>("call");
    QTest::newRow("in range") << 60 << 100 << "noteon 2 60 100";
    QTest::newRow("pitch 128 plays as 127") << 128 << 100 << "noteon 2 127 100";
    QTest::newRow("pitch -1 plays as 0") << -1 << 100 << "noteon 2 0 100";
    QTest::newRow("velocity 0 sounds at 1") << 60 << 0 << "noteon 2 60 1";
    QTest::newRow("velocity -5 sounds at 1") << 60 << -5 << "noteon 2 60 1";
    QTest::newRow("velocity 128 sounds at 127") << 60 << 128 << "noteon 2 60 127";
    QTest::newRow("the largest numbers") << kMaxInt << kMaxInt << "noteon 2 127 127";
    QTest::newRow("the smallest numbers") << kMinInt << kMinInt << "noteon 2 0 1";
}

void SoundfontPlayerTest::noteOnIsHeldInRange()
{
    QFETCH(int, pitch);
    QFETCH(int, velocity);
    QFETCH(QString, call);
    SoundfontPlayer player(Mode::Offline);
    player.noteOn(2, pitch, velocity);
    QCOMPARE(FluidSpy::calls({"noteon", "noteoff"}), QStringList{call});
}

void SoundfontPlayerTest::noteOffIsHeldInRange_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QString>("call");
    QTest::newRow("in range") << 60 << "noteoff 2 60";
    QTest::newRow("pitch 128 is 127") << 128 << "noteoff 2 127";
    QTest::newRow("pitch -1 is 0") << -1 << "noteoff 2 0";
    QTest::newRow("the largest") << kMaxInt << "noteoff 2 127";
    QTest::newRow("the smallest") << kMinInt << "noteoff 2 0";
}

void SoundfontPlayerTest::noteOffIsHeldInRange()
{
    QFETCH(int, pitch);
    QFETCH(QString, call);
    SoundfontPlayer player(Mode::Offline);
    player.noteOff(2, pitch);
    QCOMPARE(FluidSpy::calls({"noteon", "noteoff"}), QStringList{call});
}

void SoundfontPlayerTest::notesOfOneChannelAreReleased()
{
    SoundfontPlayer player(Mode::Offline);
    player.allNotesOff(0);
    player.allNotesOff(15);
    QCOMPARE(FluidSpy::calls({"all_notes_off", "all_sounds_off"}),
             QStringList({"all_notes_off 0", "all_notes_off 15"}));
}

void SoundfontPlayerTest::negativeChannelReleasesAllSixteen()
{
    QStringList expected;
    for (int channel = 0; channel < 16; ++channel)
        expected.append(QStringLiteral("all_notes_off %1").arg(channel));
    for (const int negative : {-1, kMinInt}) {
        FluidSpy::reset();
        SoundfontPlayer player(Mode::Offline);
        player.allNotesOff(negative);
        QCOMPARE(FluidSpy::calls({"all_notes_off", "all_sounds_off"}), expected);
    }
}

void SoundfontPlayerTest::soundIsCutOnAllSixteen()
{
    QStringList expected;
    for (int channel = 0; channel < 16; ++channel)
        expected.append(QStringLiteral("all_sounds_off %1").arg(channel));
    SoundfontPlayer player(Mode::Offline);
    player.allSoundOff();
    QCOMPARE(FluidSpy::calls({"all_notes_off", "all_sounds_off"}), expected);
}

void SoundfontPlayerTest::channelOutOfRangeIsSurvived()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    QVERIFY(player.loadInstrumentBank("erke", noDrums()));
    for (const int channel : {-1, 16, kMinInt, kMaxInt}) {
        player.selectGmProgram(channel, 0);
        player.selectGmDrums(channel);
        QVERIFY(!player.selectInstrumentBank(channel, "erke"));
        player.setChannelVolume(channel, 0.5F);
        player.noteOn(channel, 60, 100);
        player.noteOff(channel, 60);
        player.allNotesOff(channel);
    }
    QVERIFY(peak(rendered(player, 4410)) < kSilence);
}

// ---- Sound ---------------------------------------------------------------------------------

void SoundfontPlayerTest::soundComesInterleavedFromOneBuffer()
{
    SoundfontPlayer player(Mode::Offline);
    QCOMPARE(rendered(player, 300).size(), 600);
    QCOMPARE(FluidSpy::calls({"write_float"}), QStringList{"write_float 300 0 2 1 2 together"});
}

void SoundfontPlayerTest::noFramesRenderNothing()
{
    SoundfontPlayer player(Mode::Offline);
    QList<float> buffer(2, 0.25F);
    player.renderFloat(buffer.data(), 0);
    QCOMPARE(buffer, QList<float>(2, 0.25F));
}

void SoundfontPlayerTest::pitchIsHeard_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<double>("hz");
    // A period of 100 samples at 44100 Hz, written for pitch 60.
    QTest::newRow("60 is the written pitch") << 60 << 441.0;
    QTest::newRow("72 is an octave above") << 72 << 882.0;
    QTest::newRow("48 is an octave below") << 48 << 220.5;
    QTest::newRow("67 is a fifth above") << 67 << 660.7659;
}

void SoundfontPlayerTest::pitchIsHeard()
{
    QFETCH(int, pitch);
    QFETCH(double, hz);
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    player.selectGmProgram(0, 0);
    player.noteOn(0, pitch, 100);
    const double heard =
        Tones::strongestHz(left(rendered(player, 8820)), 44100, 0.9 * hz, 1.1 * hz);
    QVERIFY2(std::abs(Tones::cents(heard, hz)) < 2.0, qPrintable(QString::number(heard)));
}

void SoundfontPlayerTest::programChangesTheSound()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    player.selectGmProgram(0, 5);
    player.noteOn(0, 60, 100);
    const QList<float> samples = left(rendered(player, 8820));
    QVERIFY(Tones::strengthAt(samples, 44100, 882.0) >
            10 * Tones::strengthAt(samples, 44100, 441.0));
}

void SoundfontPlayerTest::volumeChangesTheSound()
{
    QList<double> peaks;
    for (const float volume : {0.0F, 0.25F, 0.5F, 1.0F}) {
        SoundfontPlayer player(Mode::Offline);
        QVERIFY(player.loadGmBank(gm()));
        player.selectGmProgram(0, 0);
        player.setChannelVolume(0, volume);
        player.noteOn(0, 60, 100);
        peaks.append(peak(rendered(player, 4410)));
    }
    QVERIFY(peaks[0] < 1e-4);
    QVERIFY(peaks[1] > peaks[0] && peaks[2] > 2 * peaks[1] && peaks[3] > 2 * peaks[2]);
}

void SoundfontPlayerTest::releasedNoteFallsSilent()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    player.selectGmProgram(15, 0);
    player.noteOn(15, 60, 100);
    QVERIFY(peak(rendered(player, 44100)) > 0.01);
    player.allNotesOff(-1);
    rendered(player, 8820);
    QVERIFY(peak(rendered(player, 4410)) < kSilence);
}

void SoundfontPlayerTest::cutNoteFallsSilentAtOnce()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    player.selectGmProgram(13, 0);
    player.noteOn(13, 60, 100);
    QVERIFY(peak(rendered(player, 44100)) > 0.01);
    player.allSoundOff();
    rendered(player, 128);
    QCOMPARE(FluidSpy::activeVoices(), 0);
}

void SoundfontPlayerTest::missingBankIsSilent()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(!player.loadGmBank(missing()));
    player.selectGmProgram(0, 0);
    player.setChannelVolume(0, 1.0F);
    player.noteOn(0, 60, 127);
    const QList<float> samples = rendered(player, 22050);
    QCOMPARE(samples.size(), 44100);
    QVERIFY(peak(samples) < kSilence);
}

void SoundfontPlayerTest::realBankSounds()
{
    const QList<float> samples = shortPiece(realBank(), 4096);
    QCOMPARE(samples.size(), 2 * 12000);
    QVERIFY(Tones::rms(samples) > 0.005);
    QVERIFY(peak(samples) < 1.0);
}

void SoundfontPlayerTest::equalCallsSoundEqual()
{
    const QList<float> first = shortPiece(realBank(), 3000);
    QVERIFY(!first.isEmpty());
    QVERIFY(shortPiece(realBank(), 3000) == first);
}

void SoundfontPlayerTest::blocksDoNotChangeTheSound_data()
{
    QTest::addColumn<int>("block");
    for (const int block : {1, 7, 63, 64, 65, 1000, 2999})
        QTest::addRow("%d frames at a time", block) << block;
}

void SoundfontPlayerTest::blocksDoNotChangeTheSound()
{
    QFETCH(int, block);
    QVERIFY(shortPiece(realBank(), block) == shortPiece(realBank(), 3000));
}

// ---- Drivers and streams -------------------------------------------------------------------

void SoundfontPlayerTest::offlineNotesRenderNothingBeforeTheyAreAsked()
{
    SoundfontPlayer player(Mode::Offline);
    QVERIFY(player.loadGmBank(gm()));
    player.selectGmProgram(0, 0);
    player.setChannelVolume(0, 0.5F);
    player.noteOn(0, 60, 100);
    player.noteOff(0, 60);
    player.allNotesOff(-1);
    player.allSoundOff();
    QVERIFY(FluidSpy::calls({"write_float"}).isEmpty());
}

void SoundfontPlayerTest::driverIsNotRobbedOfItsSound()
{
    FluidSpy::setDriver(FluidSpy::Driver::Stands);
    SoundfontPlayer player(Mode::Realtime);
    QVERIFY(player.loadGmBank(gm()));
    player.setChannelVolume(0, 0.5F);
    player.noteOn(0, 60, 100);
    player.noteOff(0, 60);
    player.allNotesOff(-1);
    player.allSoundOff();
    QVERIFY(FluidSpy::calls({"write_float"}).isEmpty());
}

void SoundfontPlayerTest::notesWithoutADriverDoNotPileUp_data()
{
    QTest::addColumn<QString>("flood");
    QTest::addColumn<int>("count");
    QTest::newRow("notes that are never released") << "on" << 15000;
    QTest::newRow("notes that are released at once") << "on off" << 20000;
    QTest::newRow("volumes under a held note") << "volume" << 40000;
}

void SoundfontPlayerTest::notesWithoutADriverDoNotPileUp()
{
    QFETCH(QString, flood);
    QFETCH(int, count);
    SoundfontPlayer player(Mode::Realtime);
    QVERIFY(player.loadGmBank(gm()));
    player.selectGmProgram(0, 0);
    player.noteOn(0, 60, 100);
    for (int i = 0; i < count; ++i) {
        if (flood.contains("on"))
            player.noteOn(0, i % 128, 100);
        if (flood.contains("off"))
            player.noteOff(0, i % 128);
        if (flood == "volume")
            player.setChannelVolume(0, static_cast<float>(i % 100) / 100.0F);
    }
    QVERIFY(FluidSpy::activeVoices() <= 256);

    // A queue that had run over would have lost these.
    player.allSoundOff();
    rendered(player, 256);
    QCOMPARE(FluidSpy::activeVoices(), 0);
    player.setChannelVolume(0, 1.0F);
    player.noteOn(0, 60, 100);
    QVERIFY(peak(rendered(player, 4410)) > 0.01);
}

void SoundfontPlayerTest::brokenBankLeavesTheErrorStreamAlone()
{
    const QByteArray errors = errorsWhile(files_.filePath("stderr"), [this] {
        SoundfontPlayer player(Mode::Offline);
        player.loadGmBank(broken());
        player.loadGmBank(missing());
        player.loadInstrumentBank("erke", "/dev/zero");
        player.noteOn(0, 60, 100);
        player.selectGmProgram(20, 5);
    });
    QCOMPARE(errors, QByteArray());
}

VELTA_GUILESS_TEST(SoundfontPlayerTest)

} // namespace SoundfontPlayerTests

#include "SoundfontPlayerTest.moc"
