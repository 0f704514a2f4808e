#include "music/CountedBars.h"

#include "ChordLane.h"
#include "support/TestProgram.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <limits>

namespace CountedBarsTests {

using namespace ChordLane;

namespace {

using Doubles = std::numeric_limits<double>;

} // namespace

/// The chord lane of a work that gets another meter.
class CountedBarsTest : public QObject {
    Q_OBJECT

private slots:
    void barsAreCountedAnew_data();
    void barsAreCountedAnew();
    void chordsStayAtTheirBeatsInAnyMeter();
    void barsCountedThereAndBackAreAsBefore();
    void barsThatCannotBeCountedStay();
    void barsTooFarAwayToBeToldApartEndTheChord();
};

void CountedBarsTest::barsAreCountedAnew_data()
{
    QTest::addColumn<HarmonyTrack>("track");
    QTest::addColumn<double>("beatsPerBar");
    QTest::addColumn<HarmonyTrack>("counted");

    const HarmonyTrack two = trackOf({{.barIndex = 0, .events = {chord(1, 0.0, 4.0)}},
                                      {.barIndex = 1, .events = {chord(5, 0.0, 4.0)}}});
    QTest::newRow("cut at the new bar lines")
        << two << 3.0
        << trackOf({{.barIndex = 0, .events = {chord(1, 0.0, 3.0)}},
                    {.barIndex = 1, .events = {chord(1, 0.0, 1.0), chord(5, 1.0, 2.0)}},
                    {.barIndex = 2, .events = {chord(5, 0.0, 2.0)}}});
    QTest::newRow("apart in shorter bars, together in longer ones")
        << trackOf({{.barIndex = 2, .events = {chord(4, 0.0, 4.0)}},
                    {.barIndex = 3, .events = {chord(4, 0.0, 4.0)}}})
        << 8.0 << trackOf({{.barIndex = 1, .events = {chord(4, 0.0, 8.0)}}});
    QTest::newRow("what is struck anew within a bar stays so")
        << barOf({chord(4, 0.0, 2.0), chord(4, 2.0, 2.0)}) << 8.0
        << barOf({chord(4, 0.0, 2.0), chord(4, 2.0, 2.0)});
    QTest::newRow("a rest stays a rest")
        << trackOf({{.barIndex = 1, .events = {chord(2, 1.0, 1.0)}}}) << 3.0
        << trackOf({{.barIndex = 1, .events = {chord(2, 2.0, 1.0)}}});
    QTest::newRow("no chord outlasts its former bar")
        << barOf({chord(2, 3.0, 100.0)}) << 2.0
        << trackOf({{.barIndex = 1, .events = {chord(2, 1.0, 1.0)}}});
    QTest::newRow("bars that a file holds in disorder, in the order of time")
        << trackOf({{.barIndex = 1, .events = {chord(4, 0.0, 4.0)}},
                    {.barIndex = 0, .events = {chord(4, 0.0, 4.0)}}})
        << 8.0 << barOf({chord(4, 0.0, 8.0)});
    QTest::newRow("in bars as long as a song")
        << trackOf({{.barIndex = 100, .events = {chord(4, 0.0, 4.0)}}}) << 300.0
        << trackOf({{.barIndex = 1, .events = {chord(4, 100.0, 4.0)}}});
}

void CountedBarsTest::barsAreCountedAnew()
{
    QFETCH(HarmonyTrack, track);
    QFETCH(double, beatsPerBar);
    track.muted = true;
    track.volume = 0.25F;
    track = withBarsCountedAnew(track, kBar, beatsPerBar);
    QFETCH(HarmonyTrack, counted);
    QCOMPARE(track.blocks, counted.blocks);
    QVERIFY(track.muted);
    QCOMPARE(track.volume, 0.25F);
}

/// Chords of random lengths on quarters of beats, never outside of their bars.
void CountedBarsTest::chordsStayAtTheirBeatsInAnyMeter()
{
    QRandomGenerator random(7);
    for (int round = 0; round < 200; ++round) {
        HarmonyTrack track;
        for (int i = 0; i < 12; ++i)
            insert(track, random.bounded(96) / 4.0, (1 + random.bounded(16)) / 4.0,
                   1 + random.bounded(7));
        const HarmonyTrack before = track;
        for (const double bar : {3.0, 2.0, 3.5, 4.0}) {
            const HarmonyTrack counted = withBarsCountedAnew(before, kBar, bar);
            for (double beat = 0.125; beat < 32.0; beat += 0.25)
                QCOMPARE(degreeAt(counted, beat, bar), degreeAt(before, beat));
            QVERIFY(std::ranges::is_sorted(barsOf(counted)));
        }
    }
}

void CountedBarsTest::barsCountedThereAndBackAreAsBefore()
{
    HarmonyTrack track;
    for (int bar = 0; bar < 32; ++bar)
        insert(track, bar * kBar, kBar, 1 + bar % 3 % 2);
    for (const double other : {3.0, 2.0}) {
        const HarmonyTrack counted =
            withBarsCountedAnew(withBarsCountedAnew(track, kBar, other), other, kBar);
        for (double beat = 0.5; beat < 130.0; beat += 1.0)
            QCOMPARE(degreeAt(counted, beat), degreeAt(track, beat));
        QCOMPARE(counted.blocks, track.blocks);
    }
}

void CountedBarsTest::barsThatCannotBeCountedStay()
{
    const HarmonyTrack before = barOf({chord(2, 1.0, 2.0)});
    const auto counted = [&](double former, double bar) {
        return withBarsCountedAnew(before, former, bar);
    };
    QCOMPARE(counted(0.0, 4.0), before);
    QCOMPARE(counted(4.0, 0.0), before);
    QCOMPARE(counted(4.0, -3.0), before);
    QCOMPARE(counted(Doubles::infinity(), 4.0), before);
    QCOMPARE(counted(4.0, Doubles::quiet_NaN()), before);
    QCOMPARE(counted(1e9, 1.0), before);
}

/// At beat 4,402,218,298 the next number is a millionth of a beat further, which is more than what
/// a bar of four thirds of a whole note has left there.
void CountedBarsTest::barsTooFarAwayToBeToldApartEndTheChord()
{
    const HarmonyTrack far =
        trackOf({{.barIndex = 1100554574, .events = {chord(4, 2.666666030883789, 1.0)}}});
    qsizetype chords = 0;
    for (const HarmonyBlock& block : withBarsCountedAnew(far, kBar, 16.0 / 3.0).blocks)
        chords += block.events.size();
    QVERIFY(chords <= 1);
}

VELTA_GUILESS_TEST(CountedBarsTest)

} // namespace CountedBarsTests

#include "CountedBarsTest.moc"
