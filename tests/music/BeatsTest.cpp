#include "music/Beats.h"

#include "music/TimeSignature.h"
#include "support/Exact.h"
#include "support/TestProgram.h"

#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <limits>

namespace BeatsTests {

namespace {

using Doubles = std::numeric_limits<double>;
using Ints = std::numeric_limits<qint32>;

constexpr qint64 kTwoToThe53 = 9007199254740992;

/// A number that no bar has, for rows in which there is no bar.
constexpr qint64 kNoBar = std::numeric_limits<qint64>::min();

} // namespace

class BeatsTest : public QObject {
    Q_OBJECT

private slots:
    void barOfMeter_data();
    void barOfMeter();
    void compoundPulseDoesNotChangeTheBar();
    void meterWithoutABarLength_data();
    void meterWithoutABarLength();
    void barLength_data();
    void barLength();
    void barOfBeat_data();
    void barOfBeat();
    void badBarLengthHasNoBars();
    void everyBeatLiesInItsBar();
    void framesOfABeat_data();
    void framesOfABeat();
    void framesAreCutTowardZero_data();
    void framesAreCutTowardZero();
};

void BeatsTest::barOfMeter_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<double>("beats");

    QTest::newRow("4/4 has four beats") << 4 << 4 << 4.0;
    QTest::newRow("3/4 has three beats") << 3 << 4 << 3.0;
    QTest::newRow("2/4 has two beats") << 2 << 4 << 2.0;
    QTest::newRow("2/2 has four beats") << 2 << 2 << 4.0;
    QTest::newRow("6/8 has three beats") << 6 << 8 << 3.0;
    QTest::newRow("9/8 has four and a half") << 9 << 8 << 4.5;
    QTest::newRow("12/8 has six beats") << 12 << 8 << 6.0;
    QTest::newRow("7/8 has three and a half") << 7 << 8 << 3.5;
    QTest::newRow("1/1 has four beats") << 1 << 1 << 4.0;
    QTest::newRow("1/16 has a quarter") << 1 << 16 << 0.25;
    QTest::newRow("0/4 has none") << 0 << 4 << 0.0;
    QTest::newRow("a negative numerator is negative") << -3 << 4 << -3.0;
    QTest::newRow("two negative numbers cancel out") << -3 << -4 << 3.0;
    QTest::newRow("the largest numerator does not overflow") << Ints::max() << 1 << 8589934588.0;
    QTest::newRow("the least numerator does not overflow") << Ints::min() << 1 << -8589934592.0;
}

void BeatsTest::barOfMeter()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    QFETCH(double, beats);
    const TimeSignature meter{.numerator = numerator, .denominator = denominator};
    QCOMPARE(exact(meter.beatsPerBar()), exact(beats));
}

void BeatsTest::compoundPulseDoesNotChangeTheBar()
{
    const TimeSignature simple{.numerator = 6, .denominator = 8, .isCompound = false};
    const TimeSignature compound{.numerator = 6, .denominator = 8, .isCompound = true};
    QCOMPARE(exact(simple.beatsPerBar()), exact(3.0));
    QCOMPARE(exact(compound.beatsPerBar()), exact(3.0));
    QVERIFY(simple != compound);
}

void BeatsTest::meterWithoutABarLength_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");

    QTest::newRow("4/0") << 4 << 0;
    QTest::newRow("-4/0") << -4 << 0;
    QTest::newRow("0/0") << 0 << 0;
    QTest::newRow("0/4") << 0 << 4;
    QTest::newRow("-4/4") << -4 << 4;
    QTest::newRow("4/-4") << 4 << -4;
    QTest::newRow("the ends of the range") << Ints::min() << Ints::max();
}

void BeatsTest::meterWithoutABarLength()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    const TimeSignature meter{.numerator = numerator, .denominator = denominator};
    QVERIFY(!isBarLength(meter.beatsPerBar()));
}

void BeatsTest::barLength_data()
{
    QTest::addColumn<double>("beats");
    QTest::addColumn<bool>("expected");

    QTest::newRow("four beats") << 4.0 << true;
    QTest::newRow("the smallest positive number") << Doubles::denorm_min() << true;
    QTest::newRow("the largest number") << Doubles::max() << true;
    QTest::newRow("zero") << 0.0 << false;
    QTest::newRow("negative zero") << -0.0 << false;
    QTest::newRow("a negative number") << -4.0 << false;
    QTest::newRow("infinity") << Doubles::infinity() << false;
    QTest::newRow("negative infinity") << -Doubles::infinity() << false;
    QTest::newRow("not a number") << Doubles::quiet_NaN() << false;
}

void BeatsTest::barLength()
{
    QFETCH(double, beats);
    QTEST(isBarLength(beats), "expected");
}

void BeatsTest::barOfBeat_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("beatsPerBar");
    QTest::addColumn<qint64>("expected");

    const auto row = [](const char* name, double beat, double beatsPerBar, qint64 bar) {
        QTest::newRow(name) << beat << beatsPerBar << bar;
    };
    row("the first beat opens bar 0", 0.0, 4.0, 0);
    row("negative zero is in bar 0", -0.0, 4.0, 0);
    row("the bar line belongs to the later bar", 4.0, 4.0, 1);
    row("the last number before the line does not", std::nextafter(4.0, 0.0), 4.0, 0);
    row("bars of three and a half beats", 7.0, 3.5, 2);
    row("bars of three beats", 28.999, 3.0, 9);
    row("before the start is bar -1", -1e-9, 4.0, -1);
    row("one bar before the start is bar -1", -4.0, 4.0, -1);
    row("behind it is bar -2", -4.5, 4.0, -2);
    row("the last 32-bit bar", 2147483647.5, 1.0, 2147483647);
    row("a bar too far", 2147483648.0, 1.0, kNoBar);
    row("the first 32-bit bar", -2147483648.0, 1.0, -2147483648LL);
    row("a bar too early", -2147483648.5, 1.0, kNoBar);
    row("1e300 has no bar", 1e300, 4.0, kNoBar);
    row("-1e300 has no bar", -1e300, 4.0, kNoBar);
    row("beats over tiny bars have no bar", 1.0, Doubles::denorm_min(), kNoBar);
    row("bars of 1e300 beats", 1e300, 1e300, 1);
    row("infinity has no bar", Doubles::infinity(), 4.0, kNoBar);
    row("negative infinity has no bar", -Doubles::infinity(), 4.0, kNoBar);
    row("no number has no bar", Doubles::quiet_NaN(), 4.0, kNoBar);
}

void BeatsTest::barOfBeat()
{
    QFETCH(double, beat);
    QFETCH(double, beatsPerBar);
    const auto bar = barAt(beat, beatsPerBar);
    QTEST(bar ? qint64(*bar) : kNoBar, "expected");
}

void BeatsTest::badBarLengthHasNoBars()
{
    for (const double beatsPerBar :
         {0.0, -0.0, -4.0, Doubles::infinity(), -Doubles::infinity(), Doubles::quiet_NaN()}) {
        for (const double beat : {0.0, 4.0, -4.0, 1e300, Doubles::quiet_NaN()})
            QVERIFY(!barAt(beat, beatsPerBar).has_value());
    }
}

void BeatsTest::everyBeatLiesInItsBar()
{
    QRandomGenerator random(20240601);
    // Multiples of 1/1024 and these bar lengths are products without rounding.
    for (const double beatsPerBar : {4.0, 3.0, 3.5, 4.5, 6.0, 0.25}) {
        for (int i = 0; i < 2000; ++i) {
            const double beat = random.bounded(-4'000'000, 4'000'000) / 1024.0;
            const auto bar = barAt(beat, beatsPerBar);
            QVERIFY(bar.has_value());
            QVERIFY(*bar * beatsPerBar <= beat);
            QVERIFY(beat < (*bar + 1) * beatsPerBar);
        }
    }
}

void BeatsTest::framesOfABeat_data()
{
    QTest::addColumn<int>("bpm");
    QTest::addColumn<double>("expected");

    QTest::newRow("60 bpm is a second") << 60 << 44100.0;
    QTest::newRow("120 bpm is half a second") << 120 << 22050.0;
    QTest::newRow("90 bpm") << 90 << 29400.0;
    QTest::newRow("97 bpm keeps the fraction") << 97 << 27278.350515463917;
    QTest::newRow("1 bpm is a minute") << 1 << 2646000.0;
    QTest::newRow("0 counts as 1") << 0 << 2646000.0;
    QTest::newRow("a negative tempo counts as 1") << -120 << 2646000.0;
    QTest::newRow("the least tempo counts as 1") << Ints::min() << 2646000.0;
    QTest::newRow("the largest tempo is more than nothing") << Ints::max() << 0.0012321397667900379;
}

void BeatsTest::framesOfABeat()
{
    QFETCH(int, bpm);
    QFETCH(double, expected);
    QCOMPARE(exact(framesPerBeat(bpm)), exact(expected));
}

void BeatsTest::framesAreCutTowardZero_data()
{
    QTest::addColumn<double>("frames");
    QTest::addColumn<qint64>("expected");

    const auto row = [](const char* name, double frames, qint64 whole) {
        QTest::newRow(name) << frames << whole;
    };
    row("nothing", 0.0, 0);
    row("a whole number stays", 22050.0, 22050);
    row("a fraction goes", 22050.99999, 22050);
    row("just below one is none", std::nextafter(1.0, 0.0), 0);
    row("a negative fraction goes up", -0.75, 0);
    row("a negative number is cut toward zero", -3.5, -3);
    row("the largest exact count", 9007199254740992.0, kTwoToThe53);
    row("its negative", -9007199254740992.0, -kTwoToThe53);
    row("1e300 is held", 1e300, kTwoToThe53);
    row("-1e300 is held", -1e300, -kTwoToThe53);
    row("infinity is held", Doubles::infinity(), kTwoToThe53);
    row("negative infinity is held", -Doubles::infinity(), -kTwoToThe53);
    row("what is no number is none", Doubles::quiet_NaN(), 0);
    row("what is no negative number is none", -Doubles::quiet_NaN(), 0);
}

void BeatsTest::framesAreCutTowardZero()
{
    QFETCH(double, frames);
    QTEST(wholeFrames(frames), "expected");
}

VELTA_GUILESS_TEST(BeatsTest)

} // namespace BeatsTests

#include "BeatsTest.moc"
