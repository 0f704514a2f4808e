#include "model/Project.h"
#include "playback/ChannelPlan.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "shell/TransportControls.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/Widgets.h"

#include <QLabel>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <limits>

namespace TransportPlaybackTests {

using namespace ProjectBuilder;

namespace {

constexpr TimeSignature kFourFour;
constexpr TimeSignature kThreeFour{.numerator = 3, .denominator = 4};
constexpr TimeSignature kSixEight{.numerator = 6, .denominator = 8, .isCompound = true};

/// A song of 16 bars in a meter, so that playback does not end by itself.
std::unique_ptr<Project> longSong(const TimeSignature& meter = {}, int bpm = 120)
{
    return project({melodyTrack({melody({note(60, 60.0)}, 0.0, 64.0)})}, {}, meter, {}, bpm);
}

/// A ribbon over an engine that plays to nobody.
class Desk {
public:
    explicit Desk(Project* song) { show(song); }

    void show(Project* song)
    {
        engine.setProject(song);
        ribbon.setProject(song);
    }

    void click(const QString& caption)
    {
        Widgets::click(Widgets::over<QToolButton>(ribbon, caption));
    }

    void setBars(int from, int to)
    {
        Widgets::over<QSpinBox>(ribbon, "Del compás")->setValue(from);
        Widgets::over<QSpinBox>(ribbon, "al compás")->setValue(to);
    }

    QString face() const { return Widgets::over<QToolButton>(ribbon, "Reproducir")->text(); }

    QString position() const { return Widgets::over<QLabel>(ribbon, "Posición")->text(); }

    /// Where the playhead rests after a stop: the start of the range, or 0 where there is none.
    double restingBeat()
    {
        engine.setPlayheadBeat(0.5);
        engine.stop();
        return engine.playheadBeat();
    }

    /// Plays from a little before a beat until the playhead has jumped back, and tells where to; a
    /// negative number if it passed the beat.
    double wrapsTo(double end)
    {
        double last = end - 0.05;
        double landed = -2.0;
        const auto watch =
            QObject::connect(&engine, &PlaybackEngine::playheadChanged, &ribbon, [&](double beat) {
                if (landed == -2.0 && (beat < last || beat > end + 0.2))
                    landed = beat < last ? beat : -1.0;
            });
        engine.play(last);
        const bool decided = QTest::qWaitFor([&] { return landed != -2.0; });
        QObject::disconnect(watch);
        engine.pause();
        return decided ? landed : -3.0;
    }

    SoundfontPlayer player{SoundfontPlayer::Mode::Offline};
    PlaybackEngine engine{&player, nullptr, nullptr};
    TransportControls ribbon{&engine};
};

} // namespace

class TransportPlaybackTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    // Playing
    void playStartsAtThePlayhead();
    void playAgainPausesAndKeepsThePlace();
    void stopGoesBackToTheStart();
    void theFaceFollowsTheEngine();
    void theFaceTurnsBackWhenTheSongEnds();
    void theFaceTurnsBackWhenTheProjectGoes();
    void withoutASynthesiserPlayDoesNothing();
    void withoutAProjectPlayDoesNothing();

    // Metronome
    void theMetronomeClicksWhileItIsOn();
    void theMetronomeComesInDuringPlayback();

    // Repeat range
    void theRangeIsOffAtFirst();
    void theRangeHoldsWholeBars_data();
    void theRangeHoldsWholeBars();
    void theRangeIsSwitchedOff();
    void aBoxChangesTheRangeWhileItIsOn();
    void aBoxSwitchesTheRangeOffWhileTheButtonIsUp();
    void theRangeComesFromNoProject();
    void aBarWithoutALengthKeepsTheFormerRange_data();
    void aBarWithoutALengthKeepsTheFormerRange();
    void theRangeIsNoPartOfTheProject();
    void theRangeFollowsTheWork();
    void aChangeOfMeterTakesTheBarsAnew();
    void anotherChangeLeavesTheRange();
    void typingIsTakenWhenItIsDone_data();
    void typingIsTakenWhenItIsDone();

    // Readout
    void theReadoutCountsBarsAndPulses_data();
    void theReadoutCountsBarsAndPulses();
    void theReadoutFollowsPlayback();
    void theReadoutStaysWhereBarsHaveNoLength_data();
    void theReadoutStaysWhereBarsHaveNoLength();
    void withoutAProjectTheReadoutStays();
    void aBeatOutOfReachLeavesTheReadout_data();
    void aBeatOutOfReachLeavesTheReadout();
    void aNewProjectIsReadFromItsStart();

    // Life
    void theEngineMayGoFirst();
    void theRibbonMayGoFirst();
};

void TransportPlaybackTest::init()
{
    FluidSpy::reset();
}

// ---- Playing -------------------------------------------------------------------------------

void TransportPlaybackTest::playStartsAtThePlayhead()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.engine.setPlayheadBeat(6.0);
    const QSignalSpy moved(&desk.engine, &PlaybackEngine::playheadChanged);
    desk.click("Reproducir");
    QVERIFY(desk.engine.isPlaying());
    QCOMPARE(moved.at(0).at(0).toDouble(), 6.0);
    QVERIFY(desk.engine.playheadBeat() >= 6.0);
}

void TransportPlaybackTest::playAgainPausesAndKeepsThePlace()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.engine.setPlayheadBeat(9.0);
    desk.click("Reproducir");
    QTest::qWait(20);
    desk.click("Reproducir");
    QVERIFY(!desk.engine.isPlaying());
    QVERIFY(desk.engine.playheadBeat() > 9.0);
}

void TransportPlaybackTest::stopGoesBackToTheStart()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.engine.play(9.0);
    desk.click("Detener");
    QVERIFY(!desk.engine.isPlaying());
    QCOMPARE(desk.engine.playheadBeat(), 0.0);
    desk.engine.setPlayheadBeat(9.0);
    desk.click("Detener");
    QCOMPARE(desk.engine.playheadBeat(), 0.0);
    QCOMPARE(desk.position(), "1.1");
}

void TransportPlaybackTest::theFaceFollowsTheEngine()
{
    const auto song = longSong();
    Desk desk(song.get());
    QCOMPARE(desk.face(), "▶");
    desk.click("Reproducir");
    QCOMPARE(desk.face(), "⏸");
    desk.click("Reproducir");
    QCOMPARE(desk.face(), "▶");
    desk.engine.play();
    QCOMPARE(desk.face(), "⏸");
    desk.engine.play(4.0);
    QCOMPARE(desk.face(), "⏸");
    desk.engine.pause();
    QCOMPARE(desk.face(), "▶");
    desk.engine.play();
    desk.click("Detener");
    QCOMPARE(desk.face(), "▶");
}

void TransportPlaybackTest::theFaceTurnsBackWhenTheSongEnds()
{
    const auto song = project({}, {}, {}, {}, 240);
    Desk desk(song.get());
    // The eight bars that an empty work plays through.
    desk.engine.play(31.9);
    QCOMPARE(desk.face(), "⏸");
    QTRY_COMPARE(desk.face(), "▶");
    QCOMPARE(desk.position(), "1.1");
}

void TransportPlaybackTest::theFaceTurnsBackWhenTheProjectGoes()
{
    const auto song = longSong();
    const auto other = longSong();
    Desk desk(song.get());
    desk.click("Reproducir");
    desk.show(other.get());
    QCOMPARE(desk.face(), "▶");
    QCOMPARE(desk.position(), "1.1");
}

void TransportPlaybackTest::withoutASynthesiserPlayDoesNothing()
{
    FluidSpy::letSynthFail();
    const auto song = longSong();
    Desk desk(song.get());
    desk.click("Reproducir");
    QVERIFY(!desk.engine.isPlaying());
    QCOMPARE(desk.face(), "▶");
}

void TransportPlaybackTest::withoutAProjectPlayDoesNothing()
{
    Desk desk(nullptr);
    for (const char* caption : {"Reproducir", "Metrónomo", "Repetir", "Detener", "Reproducir"})
        desk.click(caption);
    QVERIFY(!desk.engine.isPlaying());
    QCOMPARE(desk.face(), "▶");
    QCOMPARE(desk.position(), "1.1");
}

// ---- Metronome -----------------------------------------------------------------------------

void TransportPlaybackTest::theMetronomeClicksWhileItIsOn()
{
    const auto song = longSong();
    Desk desk(song.get());
    const auto clicks = [] {
        return FluidSpy::calls({"noteon"}).filter(QString("noteon %1 ").arg(kMetronomeChannel));
    };
    const auto firstBeat = [&] {
        FluidSpy::reset();
        desk.engine.play(0.0);
        const bool ticked = QTest::qWaitFor([&] { return desk.engine.playheadBeat() > 0.05; }) &&
                            QTest::qWaitFor([&] { return desk.position() == "1.1"; });
        QTest::qWait(20);
        desk.engine.stop();
        return ticked ? clicks() : QStringList{"no tick"};
    };
    QCOMPARE(firstBeat(), QStringList());
    desk.click("Metrónomo");
    QCOMPARE(firstBeat(), QStringList{"noteon 14 76 110"});
    desk.click("Metrónomo");
    QCOMPARE(firstBeat(), QStringList());
}

void TransportPlaybackTest::theMetronomeComesInDuringPlayback()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.engine.play(5.0);
    const QSignalSpy started(&desk.engine, &PlaybackEngine::playingChanged);
    desk.click("Metrónomo");
    QCOMPARE(started.count(), 1);
    QVERIFY(desk.engine.isPlaying());
    QVERIFY(desk.engine.playheadBeat() >= 5.0);
}

// ---- Repeat range --------------------------------------------------------------------------

void TransportPlaybackTest::theRangeIsOffAtFirst()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.setBars(3, 8);
    QCOMPARE(desk.restingBeat(), 0.0);
    QCOMPARE(desk.wrapsTo(32.0), -1.0);
}

void TransportPlaybackTest::theRangeHoldsWholeBars_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::newRow("as it stands at first") << kFourFour << 1 << 4 << 0.0 << 16.0;
    QTest::newRow("bars 3 to 8") << kFourFour << 3 << 8 << 8.0 << 32.0;
    QTest::newRow("8 and 3 are bars 3 to 8") << kFourFour << 8 << 3 << 8.0 << 32.0;
    QTest::newRow("one bar") << kFourFour << 5 << 5 << 16.0 << 20.0;
    QTest::newRow("bars of 3/4") << kThreeFour << 2 << 3 << 3.0 << 9.0;
    QTest::newRow("bars of 6/8 are as long") << kSixEight << 2 << 3 << 3.0 << 9.0;
    QTest::newRow("the last bar") << kFourFour << 999 << 999 << 3992.0 << 3996.0;
}

void TransportPlaybackTest::theRangeHoldsWholeBars()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(double, start);
    QFETCH(double, end);
    const auto song = longSong(meter, 240);
    Desk desk(song.get());
    desk.setBars(from, to);
    desk.click("Repetir");
    QCOMPARE(desk.restingBeat(), start);
    const double landed = desk.wrapsTo(end);
    QVERIFY2(landed >= start && landed < start + 2.0, qPrintable(QString::number(landed)));
}

void TransportPlaybackTest::theRangeIsSwitchedOff()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.setBars(2, 2);
    desk.click("Repetir");
    QCOMPARE(desk.restingBeat(), 4.0);
    desk.click("Repetir");
    QCOMPARE(desk.restingBeat(), 0.0);
    QCOMPARE(desk.wrapsTo(8.0), -1.0);
}

void TransportPlaybackTest::aBoxChangesTheRangeWhileItIsOn()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.click("Repetir");
    QTest::keyClick(Widgets::over<QSpinBox>(desk.ribbon, "Del compás"), Qt::Key_Up);
    QCOMPARE(desk.restingBeat(), 4.0);
    Widgets::over<QSpinBox>(desk.ribbon, "al compás")->setValue(1);
    QCOMPARE(desk.restingBeat(), 0.0);
    QVERIFY(desk.wrapsTo(8.0) >= 0.0);
}

void TransportPlaybackTest::aBoxSwitchesTheRangeOffWhileTheButtonIsUp()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.engine.setLoopRange(20.0, 24.0);
    desk.setBars(3, 3);
    QCOMPARE(desk.restingBeat(), 0.0);
}

void TransportPlaybackTest::theRangeComesFromNoProject()
{
    Desk desk(nullptr);
    desk.engine.setLoopRange(20.0, 24.0);
    desk.click("Repetir");
    desk.setBars(3, 3);
    desk.click("Repetir");
    QCOMPARE(desk.restingBeat(), 20.0);
}

void TransportPlaybackTest::aBarWithoutALengthKeepsTheFormerRange_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::newRow("a denominator of 0") << TimeSignature{.numerator = 4, .denominator = 0};
    QTest::newRow("zeros") << TimeSignature{.numerator = 0, .denominator = 0};
    QTest::newRow("no beats") << TimeSignature{.numerator = 0, .denominator = 4};
    QTest::newRow("a negative bar") << TimeSignature{.numerator = -4, .denominator = 4};
}

void TransportPlaybackTest::aBarWithoutALengthKeepsTheFormerRange()
{
    QFETCH(TimeSignature, meter);
    const auto song = longSong(meter);
    Desk desk(song.get());
    desk.engine.setLoopRange(20.0, 24.0);
    desk.click("Repetir");
    desk.setBars(3, 8);
    QCOMPARE(desk.restingBeat(), 20.0);
}

void TransportPlaybackTest::theRangeIsNoPartOfTheProject()
{
    const auto song = longSong();
    Desk desk(song.get());
    const QJsonObject before = song->toJson();
    desk.setBars(3, 8);
    desk.click("Repetir");
    QCOMPARE(song->toJson(), before);
}

void TransportPlaybackTest::theRangeFollowsTheWork()
{
    const auto song = longSong();
    const auto waltz = longSong(kThreeFour, 240);
    Desk desk(song.get());
    desk.setBars(3, 4);
    desk.click("Repetir");
    QCOMPARE(desk.restingBeat(), 8.0);
    desk.show(waltz.get());
    QCOMPARE(desk.restingBeat(), 6.0);
    const double landed = desk.wrapsTo(12.0);
    QVERIFY2(landed >= 6.0 && landed < 8.0, qPrintable(QString::number(landed)));
    desk.show(song.get());
    QCOMPARE(desk.restingBeat(), 8.0);
}

void TransportPlaybackTest::aChangeOfMeterTakesTheBarsAnew()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.setBars(3, 4);
    desk.click("Repetir");
    song->timeSignature = kSixEight;
    emit song->changed();
    QCOMPARE(desk.restingBeat(), 6.0);
}

void TransportPlaybackTest::anotherChangeLeavesTheRange()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.setBars(3, 4);
    desk.click("Repetir");
    desk.engine.setLoopRange(20.0, 24.0);
    song->bpm = 90;
    emit song->changed();
    QCOMPARE(desk.restingBeat(), 20.0);
}

void TransportPlaybackTest::typingIsTakenWhenItIsDone_data()
{
    QTest::addColumn<QString>("end");
    QTest::newRow("by the enter key") << "";
    QTest::newRow("by a press that starts playback") << "Reproducir";
    QTest::newRow("by a press that repeats anew") << "Repetir";
}

void TransportPlaybackTest::typingIsTakenWhenItIsDone()
{
    QFETCH(QString, end);
    const auto song = longSong();
    Desk desk(song.get());
    desk.setBars(5, 16);
    desk.click("Repetir");
    auto* box = Widgets::over<QSpinBox>(desk.ribbon, "Del compás");
    box->selectAll();
    for (const char digit : {'1', '2'}) {
        QTest::keyClick(box, digit);
        QCOMPARE(desk.restingBeat(), 16.0);
    }
    if (end.isEmpty())
        QTest::keyClick(box, Qt::Key_Return);
    else
        desk.click(end);
    if (end == "Repetir")
        desk.click(end);
    QCOMPARE(box->value(), 12);
    QCOMPARE(desk.restingBeat(), 44.0);
}

// ---- Readout -------------------------------------------------------------------------------

void TransportPlaybackTest::theReadoutCountsBarsAndPulses_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("beat");
    QTest::addColumn<QString>("readout");
    constexpr TimeSignature kSevenEight{.numerator = 7, .denominator = 8};
    constexpr TimeSignature kTwoTwo{.numerator = 2, .denominator = 2};
    constexpr TimeSignature kTwelveEight{.numerator = 12, .denominator = 8, .isCompound = true};
    constexpr TimeSignature kPlainSixEight{.numerator = 6, .denominator = 8};
    QTest::newRow("4/4 at 0") << kFourFour << 0.0 << "1.1";
    QTest::newRow("4/4 before the second pulse") << kFourFour << 0.999 << "1.1";
    QTest::newRow("4/4 at 3.5") << kFourFour << 3.5 << "1.4";
    QTest::newRow("4/4 at 5.5") << kFourFour << 5.5 << "2.2";
    QTest::newRow("4/4 at 3999") << kFourFour << 3999.0 << "1000.4";
    QTest::newRow("4/4 at 40000") << kFourFour << 40000.0 << "10001.1";
    QTest::newRow("3/4 at 3") << kThreeFour << 3.0 << "2.1";
    QTest::newRow("6/8 before the second pulse") << kSixEight << 1.49 << "1.1";
    QTest::newRow("6/8 at 1.5") << kSixEight << 1.5 << "1.2";
    QTest::newRow("6/8 at 4.5") << kSixEight << 4.5 << "2.2";
    QTest::newRow("6/8 at 6") << kSixEight << 6.0 << "3.1";
    QTest::newRow("6/8 that is not compound") << kPlainSixEight << 2.5 << "1.3";
    QTest::newRow("12/8 at 4.5") << kTwelveEight << 4.5 << "1.4";
    QTest::newRow("7/8 in its half pulse") << kSevenEight << 3.25 << "1.4";
    QTest::newRow("7/8 at 3.5") << kSevenEight << 3.5 << "2.1";
    QTest::newRow("2/2 counts quarters") << kTwoTwo << 2.0 << "1.3";
}

void TransportPlaybackTest::theReadoutCountsBarsAndPulses()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, beat);
    const auto song = longSong(meter);
    Desk desk(song.get());
    desk.engine.setPlayheadBeat(beat);
    QTEST(desk.position(), "readout");
}

void TransportPlaybackTest::theReadoutFollowsPlayback()
{
    const auto song = longSong(kFourFour, 240);
    Desk desk(song.get());
    desk.engine.play(7.8);
    QCOMPARE(desk.position(), "2.4");
    QTRY_COMPARE(desk.position(), "3.1");
}

void TransportPlaybackTest::theReadoutStaysWhereBarsHaveNoLength_data()
{
    aBarWithoutALengthKeepsTheFormerRange_data();
}

void TransportPlaybackTest::theReadoutStaysWhereBarsHaveNoLength()
{
    QFETCH(TimeSignature, meter);
    const auto song = longSong(meter);
    Desk desk(song.get());
    desk.engine.setPlayheadBeat(17.0);
    QCOMPARE(desk.position(), "1.1");
}

void TransportPlaybackTest::withoutAProjectTheReadoutStays()
{
    const auto song = longSong();
    Desk desk(song.get());
    desk.ribbon.setProject(nullptr);
    desk.engine.setPlayheadBeat(17.0);
    QCOMPARE(desk.position(), "1.1");
}

void TransportPlaybackTest::aBeatOutOfReachLeavesTheReadout_data()
{
    QTest::addColumn<double>("beat");
    using Limits = std::numeric_limits<double>;
    QTest::newRow("no number") << Limits::quiet_NaN();
    QTest::newRow("infinity") << Limits::infinity();
    QTest::newRow("the largest number") << Limits::max();
    QTest::newRow("1e300") << 1e300;
    QTest::newRow("-1e300") << -1e300;
    QTest::newRow("a bar beyond the last") << 4.0 * 2147483648.0;
}

void TransportPlaybackTest::aBeatOutOfReachLeavesTheReadout()
{
    QFETCH(double, beat);
    const auto song = longSong();
    Desk desk(song.get());
    desk.engine.setPlayheadBeat(5.5);
    emit desk.engine.playheadChanged(beat);
    QCOMPARE(desk.position(), "2.2");
    desk.engine.setPlayheadBeat(4.0 * 2147483647.0);
    QCOMPARE(desk.position(), "2147483648.1");
}

void TransportPlaybackTest::aNewProjectIsReadFromItsStart()
{
    const auto song = longSong();
    const auto damaged = longSong({.numerator = 4, .denominator = 0});
    Desk desk(song.get());
    desk.engine.setPlayheadBeat(17.0);
    desk.show(damaged.get());
    QCOMPARE(desk.position(), "1.1");
}

// ---- Life ----------------------------------------------------------------------------------

void TransportPlaybackTest::theEngineMayGoFirst()
{
    const auto song = longSong();
    auto engine = std::make_unique<PlaybackEngine>(nullptr, nullptr, nullptr);
    auto ribbon = std::make_unique<TransportControls>(engine.get());
    ribbon->setProject(song.get());
    engine.reset();
    ribbon->setProject(nullptr);
    ribbon->updateFromProject();
    QCOMPARE(Widgets::over<QLabel>(*ribbon, "Posición")->text(), "1.1");
}

void TransportPlaybackTest::theRibbonMayGoFirst()
{
    const auto song = longSong();
    PlaybackEngine engine(nullptr, nullptr, nullptr);
    engine.setProject(song.get());
    auto ribbon = std::make_unique<TransportControls>(&engine);
    ribbon->setProject(song.get());
    ribbon.reset();
    engine.setPlayheadBeat(4.0);
    emit song->changed();
    QCOMPARE(engine.playheadBeat(), 4.0);
}

VELTA_TEST(TransportPlaybackTest)

} // namespace TransportPlaybackTests

#include "TransportPlaybackTest.moc"
