#include "playback/CountIn.h"

#include "music/TimeSignature.h"
#include "playback/SoundfontPlayer.h"
#include "support/FluidSpy.h"
#include "support/TestProgram.h"

#include <QSignalSpy>
#include <QTest>

namespace CountInTests {

namespace {

/// A beat in 25 milliseconds.
constexpr int kFast = 2400;

} // namespace

class CountInTest : public QObject {
    Q_OBJECT

private slots:
    void aBarIsCountedFromOne_data();
    void aBarIsCountedFromOne();
    void itLastsABar();
    void clicksAreThoseOfTheMetronome();
    void whatHasNoLengthIsOverAtOnce_data();
    void whatHasNoLengthIsOverAtOnce();
    void whatIsStoppedDoesNotEnd();
    void whoHearsAClickMayStopIt();
    void itCanBeCountedAgain();
};

void CountInTest::aBarIsCountedFromOne_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("clicks");
    QTest::newRow("4/4") << TimeSignature{4, 4, false} << 4;
    QTest::newRow("3/4") << TimeSignature{3, 4, false} << 3;
    QTest::newRow("6/8 counts its pulse") << TimeSignature{6, 8, true} << 2;
    QTest::newRow("7/8 is three and a half beats long") << TimeSignature{7, 8, false} << 4;
}

void CountInTest::aBarIsCountedFromOne()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, clicks);
    CountIn countIn(nullptr);
    QSignalSpy counted(&countIn, &CountIn::counted);
    QSignalSpy ended(&countIn, &CountIn::ended);
    countIn.start(meter, kFast);
    QVERIFY(countIn.isCounting());
    QVERIFY(ended.wait());
    QVERIFY(!countIn.isCounting());
    QCOMPARE(counted.count(), clicks);
    for (int i = 0; i < clicks; ++i)
        QCOMPARE(counted.at(i).first().toInt(), i + 1);
    QVERIFY(!ended.wait(100));
}

void CountInTest::itLastsABar()
{
    CountIn countIn(nullptr);
    QSignalSpy ended(&countIn, &CountIn::ended);
    QElapsedTimer clock;
    clock.start();
    countIn.start({4, 4, false}, 600);
    QVERIFY(ended.wait());
    // No sooner, however busy the machine is.
    QVERIFY(clock.elapsed() >= 399);
}

void CountInTest::clicksAreThoseOfTheMetronome()
{
    FluidSpy::reset();
    SoundfontPlayer player(SoundfontPlayer::Mode::Realtime);
    CountIn countIn(&player);
    QSignalSpy ended(&countIn, &CountIn::ended);
    countIn.start({3, 4, false}, kFast);
    QVERIFY(ended.wait());
    QCOMPARE(FluidSpy::calls({"noteon"}),
             (QStringList{"noteon 14 76 110", "noteon 14 77 80", "noteon 14 77 80"}));
}

void CountInTest::whatHasNoLengthIsOverAtOnce_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("bpm");
    QTest::newRow("a meter without bars") << TimeSignature{4, 0, false} << 120;
    QTest::newRow("no meter") << TimeSignature{0, 4, false} << 120;
    QTest::newRow("a tempo that stands still") << TimeSignature{4, 4, false} << 0;
}

void CountInTest::whatHasNoLengthIsOverAtOnce()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, bpm);
    CountIn countIn(nullptr);
    QSignalSpy counted(&countIn, &CountIn::counted);
    QSignalSpy ended(&countIn, &CountIn::ended);
    countIn.start(meter, bpm);
    QVERIFY(ended.wait());
    QCOMPARE(counted.count(), 0);
}

void CountInTest::whatIsStoppedDoesNotEnd()
{
    CountIn countIn(nullptr);
    QSignalSpy counted(&countIn, &CountIn::counted);
    QSignalSpy ended(&countIn, &CountIn::ended);
    countIn.start({4, 4, false}, kFast);
    countIn.stop();
    QVERIFY(!countIn.isCounting());
    QVERIFY(!ended.wait(200));
    QCOMPARE(counted.count(), 0);
}

void CountInTest::whoHearsAClickMayStopIt()
{
    CountIn countIn(nullptr);
    QSignalSpy counted(&countIn, &CountIn::counted);
    QSignalSpy ended(&countIn, &CountIn::ended);
    connect(&countIn, &CountIn::counted, &countIn, [&countIn](int click) {
        if (click == 2)
            countIn.stop();
    });
    countIn.start({4, 4, false}, kFast);
    QTRY_COMPARE(counted.count(), 2);
    QVERIFY(!ended.wait(200));
    QCOMPARE(counted.count(), 2);
}

void CountInTest::itCanBeCountedAgain()
{
    CountIn countIn(nullptr);
    QSignalSpy counted(&countIn, &CountIn::counted);
    QSignalSpy ended(&countIn, &CountIn::ended);
    for (int i = 1; i <= 2; ++i) {
        countIn.start({3, 4, false}, kFast);
        QVERIFY(ended.wait());
        QCOMPARE(counted.count(), 3 * i);
    }
}

VELTA_GUILESS_TEST(CountInTest)

} // namespace CountInTests

#include "CountInTest.moc"
