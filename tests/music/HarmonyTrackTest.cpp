#include "music/HarmonyTrack.h"

#include "ChordLane.h"
#include "support/Exact.h"
#include "support/TestProgram.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace HarmonyTrackTests {

using namespace ChordLane;

namespace {

using Doubles = std::numeric_limits<double>;

/// What an edited track promises, as the first promise that it breaks. Ends of chords are sums
/// and may lie a rounding behind what they were cut at.
QString brokenPromise(const HarmonyTrack& track, double beatsPerBar)
{
    const double rounding = 1e-15 * beatsPerBar;
    for (qsizetype i = 0; i < track.blocks.size(); ++i) {
        if (i > 0 && track.blocks[i - 1].barIndex >= track.blocks[i].barIndex)
            return "bars ascend and do not repeat";
        double end = 0.0;
        for (const HarmonyDegreeEvent& event : track.blocks[i].events) {
            if (event.startBeat < end - rounding)
                return "chords stand in order and apart";
            end = event.startBeat + event.durationBeats;
            if (end > beatsPerBar + rounding)
                return "chords end at the bar line at the latest";
        }
    }
    return {};
}

const QList<double> kBadBarLengths{
    0.0, -0.0, -4.0, Doubles::infinity(), -Doubles::infinity(), Doubles::quiet_NaN()};

} // namespace

class HarmonyTrackTest : public QObject {
    Q_OBJECT

private slots:
    void startsEmptyAndAudible();
    void emptyWhenNoBlockHoldsAChord();
    void firstBlockOfARepeatedBarIsFound();
    void chordInForce_data();
    void chordInForce();
    void firstMatchWinsInAnUnorderedTrack();
    void chordsDoNotCarryIntoTheNextBar();
    void storedBarsAreReadAtTheGivenLength();
    void badBarLengthHasNoChords();
    void beatThatIsNoPlaceHasNoChord();
    void blockIsMadeInItsPlace();
    void ensuredBlockIsFoundAgain();
    void chordIsCutAtTheBarLine();
    void newChordCutsTheOneItStartsIn();
    void newChordRemovesThoseThatStartUnderIt();
    void chordAtTheSameStartIsReplaced();
    void chordBehindTheNewOneStays();
    void remainderBelowAMillionthDisappears_data();
    void remainderBelowAMillionthDisappears();
    void negativeBeatMakesANegativeBar();
    void degreeIsStoredUnchecked();
    void insertionThatDoesNothing_data();
    void insertionThatDoesNothing();
    void endlessChordFillsTheRestOfTheBar();
    void insertionChangesOnlyWhatItCoversAndCuts();
    void editingKeepsItsPromises_data();
    void editingKeepsItsPromises();
    void removalTakesTheChordInForce();
    void removalSweepsRepeatedBarsAndOverlaps();
    void removalAtABoundaryTakesTheLaterChord();
    void removalOfTheLastChordRemovesTheBlock();
    void removalSweepsEmptyBlocksEvenWhereNothingWas();
    void removalWithABadBarLengthDoesNothing();
    void emptyBlocksGoAndTheOthersKeepTheirOrder();
    void anOverlaidChordCutsWhatLiesThere_data();
    void anOverlaidChordCutsWhatLiesThere();
    void anOverlaidChordGoesOnOverBarLines();
    void aChordOfADamagedFileDoesNotFillTheMemory();
    void aMillionthIsNeitherLeftNorLaid();
    void withoutABarNothingIsOverlaid_data();
    void withoutABarNothingIsOverlaid();
};

void HarmonyTrackTest::startsEmptyAndAudible()
{
    const HarmonyTrack track;
    QVERIFY(track.isEmpty());
    QVERIFY(!track.muted);
    QCOMPARE(track.volume, 0.7F);
    QCOMPARE(track.eventAt(0.0, kBar), nullptr);
    QCOMPARE(track.blockForBar(0), nullptr);
}

void HarmonyTrackTest::emptyWhenNoBlockHoldsAChord()
{
    QVERIFY(trackOf({{.barIndex = 0, .events = {}}, {.barIndex = 3, .events = {}}}).isEmpty());
    QVERIFY(!trackOf({{.barIndex = 0, .events = {}}, {.barIndex = 3, .events = {chord(1, 0, 0)}}})
                 .isEmpty());
}

void HarmonyTrackTest::firstBlockOfARepeatedBarIsFound()
{
    const HarmonyTrack track = trackOf({{.barIndex = 5, .events = {}},
                                        {.barIndex = 2, .events = {}},
                                        {.barIndex = 5, .events = {chord(4, 0, 4)}}});
    QCOMPARE(track.blockForBar(5), &track.blocks[0]);
    QCOMPARE(track.blockForBar(2), &track.blocks[1]);
    QCOMPARE(track.blockForBar(3), nullptr);
    QCOMPARE(track.eventAt(20.0, kBar), nullptr);
}

void HarmonyTrackTest::chordInForce_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("expected");

    // Bar 0: I from 0 to 2, V from 2 to 3, nothing from 3 on. Bar 1: IV all through.
    QTest::newRow("at its start") << 0.0 << 1;
    QTest::newRow("inside") << 1.5 << 1;
    QTest::newRow("at a shared boundary the later chord") << 2.0 << 5;
    QTest::newRow("half a tolerance before it the later chord") << 2.0 - 5e-10 << 5;
    QTest::newRow("two tolerances before it the earlier chord") << 2.0 - 2e-9 << 1;
    QTest::newRow("two tolerances before an end that leads to nothing") << 3.0 - 2e-9 << 5;
    QTest::newRow("half a tolerance before it no chord") << 3.0 - 5e-10 << 0;
    QTest::newRow("at an end that leads to nothing") << 3.0 << 0;
    QTest::newRow("in the gap") << 3.5 << 0;
    QTest::newRow("just before the bar line still bar 0") << 4.0 - 5e-10 << 0;
    QTest::newRow("at the bar line bar 1") << 4.0 << 4;
    QTest::newRow("in the middle of bar 1") << 6.0 << 4;
    QTest::newRow("just before the end of bar 1") << 8.0 - 5e-10 << 0;
    QTest::newRow("in a bar without a block") << 9.0 << 0;
    QTest::newRow("before the start") << -0.5 << 0;
}

void HarmonyTrackTest::chordInForce()
{
    QFETCH(double, beat);
    const HarmonyTrack track = trackOf({{.barIndex = 0, .events = {chord(1, 0, 2), chord(5, 2, 1)}},
                                        {.barIndex = 1, .events = {chord(4, 0, 4)}}});
    QTEST(degreeAt(track, beat), "expected");
}

void HarmonyTrackTest::firstMatchWinsInAnUnorderedTrack()
{
    const HarmonyTrack track =
        trackOf({{.barIndex = 1, .events = {chord(6, 2, 2), chord(2, 0, 4)}},
                 {.barIndex = 0, .events = {chord(7, 3, 1), chord(3, 1, 9), chord(4, 0, 4)}}});
    QCOMPARE(degreeAt(track, 0.5), 4);
    QCOMPARE(degreeAt(track, 2.0), 3);
    QCOMPARE(degreeAt(track, 3.5), 7);
    QCOMPARE(degreeAt(track, 5.0), 2);
    QCOMPARE(degreeAt(track, 7.0), 6);
}

void HarmonyTrackTest::chordsDoNotCarryIntoTheNextBar()
{
    QCOMPARE(degreeAt(barOf({chord(1, 0, 100)}), 3.5), 1);
    QCOMPARE(degreeAt(barOf({chord(1, 0, 100)}), 4.0), 0);
}

void HarmonyTrackTest::storedBarsAreReadAtTheGivenLength()
{
    const HarmonyTrack track = trackOf({{.barIndex = 0, .events = {chord(1, 0, 3), chord(5, 3, 1)}},
                                        {.barIndex = 1, .events = {chord(4, 0, 4)}}});
    QCOMPARE(degreeAt(track, 3.0, 4.0), 5);
    QCOMPARE(degreeAt(track, 3.0, 3.0), 4);
    for (double beat = 0.0; beat < 12.0; beat += 0.25)
        QVERIFY(degreeAt(track, beat, 3.0) != 5);
}

void HarmonyTrackTest::badBarLengthHasNoChords()
{
    const HarmonyTrack track = barOf({chord(1, -1e9, 2e9)});
    for (const double beatsPerBar : kBadBarLengths) {
        for (const double beat : {0.0, 1.0, -1.0, 1e300})
            QCOMPARE(track.eventAt(beat, beatsPerBar), nullptr);
    }
}

void HarmonyTrackTest::beatThatIsNoPlaceHasNoChord()
{
    const HarmonyTrack track = trackOf(
        {{.barIndex = 0, .events = {chord(1, -1e9, 2e9)}},
         {.barIndex = std::numeric_limits<qint32>::max(), .events = {chord(2, -1e9, 2e9)}},
         {.barIndex = std::numeric_limits<qint32>::min(), .events = {chord(3, -1e9, 2e9)}}});
    for (const double beat : {1e300, -1e300, 1e10, -1e10, Doubles::infinity(), -Doubles::infinity(),
                              Doubles::quiet_NaN()})
        QCOMPARE(track.eventAt(beat, kBar), nullptr);
    QCOMPARE(degreeAt(track, 8589934590.0), 2);
    QCOMPARE(degreeAt(track, -8589934591.0), 3);
}

void HarmonyTrackTest::blockIsMadeInItsPlace()
{
    HarmonyTrack track;
    for (const qint32 bar : {7, 0, 3, -2, 5})
        QCOMPARE(track.ensureBlockForBar(bar).barIndex, bar);
    QCOMPARE(barsOf(track), (QList<qint32>{-2, 0, 3, 5, 7}));
    QVERIFY(track.isEmpty());
}

void HarmonyTrackTest::ensuredBlockIsFoundAgain()
{
    HarmonyTrack track = trackOf({{.barIndex = 4, .events = {chord(1, 0, 4)}},
                                  {.barIndex = 2, .events = {}},
                                  {.barIndex = 4, .events = {}}});
    track.ensureBlockForBar(4).events.append(chord(5, 2, 2));
    QCOMPARE(barsOf(track), (QList<qint32>{4, 2, 4}));
    QCOMPARE(track.blocks[0].events.size(), 2);
    QVERIFY(track.blocks[2].events.isEmpty());
}

void HarmonyTrackTest::chordIsCutAtTheBarLine()
{
    HarmonyTrack track;
    track.insertEvent(2.0, 4.0, 5, ChordExtension::Ninth, kBar);
    const HarmonyTrack expected = barOf({{.degree = 5,
                                          .extension = ChordExtension::Ninth,
                                          .startBeat = 2.0,
                                          .durationBeats = 2.0}});
    QVERIFY(track == expected);
}

void HarmonyTrackTest::newChordCutsTheOneItStartsIn()
{
    HarmonyTrack track = barOf({chord(1, 0, 4)});
    insert(track, 1.0, 1.0, 5);
    QVERIFY(track == barOf({chord(1, 0, 1), chord(5, 1, 1)}));
    QCOMPARE(degreeAt(track, 2.0), 0);
    QCOMPARE(degreeAt(track, 3.9), 0);
}

void HarmonyTrackTest::newChordRemovesThoseThatStartUnderIt()
{
    HarmonyTrack track = barOf({chord(1, 0.5, 3)});
    insert(track, 0.0, 1.0, 5);
    QVERIFY(track == barOf({chord(5, 0, 1)}));
}

void HarmonyTrackTest::chordAtTheSameStartIsReplaced()
{
    HarmonyTrack track = barOf({chord(1, 0, 2), chord(4, 2, 2)});
    insert(track, 2.0, 1.0, 6);
    QVERIFY(track == barOf({chord(1, 0, 2), chord(6, 2, 1)}));
}

void HarmonyTrackTest::chordBehindTheNewOneStays()
{
    HarmonyTrack track = barOf({chord(1, 0, 1), chord(4, 2, 2)});
    insert(track, 1.0, 1.0, 6);
    QVERIFY(track == barOf({chord(1, 0, 1), chord(6, 1, 1), chord(4, 2, 2)}));
}

void HarmonyTrackTest::remainderBelowAMillionthDisappears_data()
{
    QTest::addColumn<double>("remainder");
    QTest::addColumn<int>("chords");

    QTest::newRow("nothing to speak of") << 5e-7 << 1;
    QTest::newRow("exactly a millionth") << 1e-6 << 1;
    QTest::newRow("two millionths stay") << 2e-6 << 2;
    QTest::newRow("a sixteenth stays") << 0.0625 << 2;
}

void HarmonyTrackTest::remainderBelowAMillionthDisappears()
{
    QFETCH(double, remainder);
    HarmonyTrack track = barOf({chord(1, 0, 4)});
    insert(track, remainder, 1.0, 5);
    QTEST(static_cast<int>(track.blocks[0].events.size()), "chords");
    QCOMPARE(track.blocks[0].events.last().degree, 5);
}

void HarmonyTrackTest::negativeBeatMakesANegativeBar()
{
    HarmonyTrack track;
    insert(track, 0.0, 4.0, 1);
    insert(track, -1.5, 4.0, 6);
    QVERIFY(track == trackOf({{.barIndex = -1, .events = {chord(6, 2.5, 1.5)}},
                              {.barIndex = 0, .events = {chord(1, 0, 4)}}}));
    QCOMPARE(degreeAt(track, -1.0), 6);
}

void HarmonyTrackTest::degreeIsStoredUnchecked()
{
    HarmonyTrack track;
    track.insertEvent(0.0, 1.0, 99, static_cast<ChordExtension>(9), kBar);
    QCOMPARE(track.blocks[0].events[0].degree, 99);
    QCOMPARE(static_cast<int>(track.blocks[0].events[0].extension), 9);
}

void HarmonyTrackTest::insertionThatDoesNothing_data()
{
    QTest::addColumn<double>("startBeat");
    QTest::addColumn<double>("durationBeats");
    QTest::addColumn<double>("beatsPerBar");

    QTest::newRow("no duration") << 1.0 << 0.0 << kBar;
    QTest::newRow("a negative duration") << 1.0 << -1.0 << kBar;
    QTest::newRow("a duration that is no number") << 1.0 << Doubles::quiet_NaN() << kBar;
    QTest::newRow("a start that is no number") << Doubles::quiet_NaN() << 1.0 << kBar;
    QTest::newRow("an endless start") << Doubles::infinity() << 1.0 << kBar;
    QTest::newRow("a start beyond all bars") << 1e300 << 1.0 << kBar;
    QTest::newRow("a start before all bars") << -1e300 << 1.0 << kBar;
    for (const double beatsPerBar : kBadBarLengths)
        QTest::addRow("a bar of %g beats", beatsPerBar) << 1.0 << 1.0 << beatsPerBar;
}

void HarmonyTrackTest::insertionThatDoesNothing()
{
    QFETCH(double, startBeat);
    QFETCH(double, durationBeats);
    QFETCH(double, beatsPerBar);
    const HarmonyTrack before = barOf({chord(1, 0, 4)});
    HarmonyTrack track = before;
    insert(track, startBeat, durationBeats, 5, beatsPerBar);
    QVERIFY(track == before);
}

void HarmonyTrackTest::endlessChordFillsTheRestOfTheBar()
{
    for (const double duration : {Doubles::infinity(), Doubles::max(), 1e300}) {
        HarmonyTrack track;
        insert(track, 1.0, duration, 2);
        QVERIFY(track == barOf({chord(2, 1, 3)}));
    }
}

void HarmonyTrackTest::insertionChangesOnlyWhatItCoversAndCuts()
{
    QRandomGenerator random(7);
    HarmonyTrack track;
    for (int round = 0; round < 2000; ++round) {
        const double start = random.bounded(0, 64) / 4.0;
        const double end =
            std::min(start + random.bounded(1, 24) / 4.0, (std::floor(start / kBar) + 1) * kBar);
        const HarmonyTrack before = track;
        const int degree = random.bounded(1, 8);
        insert(track, start, end - start, degree);
        // In the middle of every quarter of a beat: the new chord; silence where a chord of the
        // bar that began before the new one's end went on; else what was there before.
        for (double beat = 0.125; beat < 18.0; beat += 0.25) {
            const HarmonyDegreeEvent* old = before.eventAt(beat, kBar);
            const double bar = std::floor(beat / kBar) * kBar;
            const bool lost = old && beat > start && bar <= start && bar + old->startBeat < end;
            const bool covered = beat > start && beat < end;
            const int kept = old && !lost ? old->degree : 0;
            QCOMPARE(degreeAt(track, beat), covered ? degree : kept);
        }
    }
}

void HarmonyTrackTest::editingKeepsItsPromises_data()
{
    QTest::addColumn<double>("beatsPerBar");

    for (const double beatsPerBar : {4.0, 3.0, 3.5, 0.1, 4.0 / 3.0, 1e-6, 12345.678, 1e12})
        QTest::addRow("bars of %g beats", beatsPerBar) << beatsPerBar;
}

void HarmonyTrackTest::editingKeepsItsPromises()
{
    QFETCH(double, beatsPerBar);
    QRandomGenerator random(11);
    HarmonyTrack track;
    for (int round = 0; round < 1500; ++round) {
        const double beat = (random.generateDouble() * 12.0 - 4.0) * beatsPerBar;
        const double snapped = std::round(beat / beatsPerBar * 8.0) * beatsPerBar / 8.0;
        const double start = random.bounded(2) == 0 ? beat : snapped;
        if (random.bounded(3) == 0) {
            track.removeEventAt(start, beatsPerBar);
            QCOMPARE(track.eventAt(start, beatsPerBar), nullptr);
        } else {
            const double duration = random.generateDouble() * 2.0 * beatsPerBar;
            insert(track, start, duration, random.bounded(1, 8), beatsPerBar);
        }
        QCOMPARE(brokenPromise(track, beatsPerBar), QString());
    }
    QVERIFY(!track.isEmpty());
}

void HarmonyTrackTest::removalTakesTheChordInForce()
{
    HarmonyTrack track = barOf({chord(1, 0, 1), chord(4, 1, 1), chord(5, 2, 2)});
    track.removeEventAt(1.5, kBar);
    QVERIFY(track == barOf({chord(1, 0, 1), chord(5, 2, 2)}));
    track.removeEventAt(1.5, kBar);
    QVERIFY(track == barOf({chord(1, 0, 1), chord(5, 2, 2)}));
}

void HarmonyTrackTest::removalSweepsRepeatedBarsAndOverlaps()
{
    HarmonyTrack track =
        trackOf({{.barIndex = 2, .events = {chord(1, 0, 4), chord(2, 3, 1), chord(3, 1, 2)}},
                 {.barIndex = 0, .events = {chord(4, 0, 4)}},
                 {.barIndex = 2, .events = {chord(5, 0, 2)}}});
    track.removeEventAt(9.5, kBar);
    QVERIFY(track == trackOf({{.barIndex = 2, .events = {chord(2, 3, 1)}},
                              {.barIndex = 0, .events = {chord(4, 0, 4)}}}));
}

void HarmonyTrackTest::removalAtABoundaryTakesTheLaterChord()
{
    for (const double beat : {2.0, 2.0 - 5e-10}) {
        HarmonyTrack track = barOf({chord(1, 0, 2), chord(5, 2, 2)});
        track.removeEventAt(beat, kBar);
        QVERIFY(track == barOf({chord(1, 0, 2)}));
    }
    HarmonyTrack track = barOf({chord(1, 0, 2), chord(5, 2, 2)});
    track.removeEventAt(2.0 - 2e-9, kBar);
    QVERIFY(track == barOf({chord(5, 2, 2)}));
}

void HarmonyTrackTest::removalOfTheLastChordRemovesTheBlock()
{
    HarmonyTrack track;
    insert(track, 0.0, 4.0, 1);
    insert(track, 4.0, 4.0, 5);
    track.removeEventAt(0.0, kBar);
    QCOMPARE(barsOf(track), (QList<qint32>{1}));
    QVERIFY(!track.isEmpty());
    track.removeEventAt(7.5, kBar);
    QVERIFY(track.blocks.isEmpty());
    QVERIFY(track.isEmpty());
}

void HarmonyTrackTest::removalSweepsEmptyBlocksEvenWhereNothingWas()
{
    const HarmonyTrack before = trackOf({{.barIndex = 3, .events = {}},
                                         {.barIndex = 1, .events = {chord(1, 0, 4)}},
                                         {.barIndex = 0, .events = {}}});
    for (const double beat : {100.0, 1e300, Doubles::quiet_NaN()}) {
        HarmonyTrack track = before;
        track.removeEventAt(beat, kBar);
        QCOMPARE(barsOf(track), (QList<qint32>{1}));
    }
}

void HarmonyTrackTest::removalWithABadBarLengthDoesNothing()
{
    const HarmonyTrack before =
        trackOf({{.barIndex = 0, .events = {chord(1, 0, 4)}}, {.barIndex = 1, .events = {}}});
    for (const double beatsPerBar : kBadBarLengths) {
        HarmonyTrack track = before;
        track.removeEventAt(1.0, beatsPerBar);
        QVERIFY(track == before);
    }
}

void HarmonyTrackTest::emptyBlocksGoAndTheOthersKeepTheirOrder()
{
    HarmonyTrack track = trackOf({{.barIndex = 5, .events = {chord(1, 0, 1)}},
                                  {.barIndex = 9, .events = {}},
                                  {.barIndex = 2, .events = {chord(2, 0, 1)}},
                                  {.barIndex = 2, .events = {}},
                                  {.barIndex = -1, .events = {chord(3, 0, 0)}}});
    track.removeEmptyBlocks();
    QCOMPARE(barsOf(track), (QList<qint32>{5, 2, -1}));
}

// ---- Laying over others --------------------------------------------------------------------

void HarmonyTrackTest::anOverlaidChordCutsWhatLiesThere_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("duration");
    QTest::addColumn<QList<HarmonyDegreeEvent>>("left");

    // II from 0 to 2, V from 2 to 4.
    using Chords = QList<HarmonyDegreeEvent>;
    QTest::newRow("in the middle of one")
        << 0.5 << 1.0
        << Chords{chord(2, 0.0, 0.5), chord(7, 0.5, 1.0), chord(2, 1.5, 0.5), chord(5, 2.0, 2.0)};
    QTest::newRow("over the border of two")
        << 1.0 << 2.0 << Chords{chord(2, 0.0, 1.0), chord(7, 1.0, 2.0), chord(5, 3.0, 1.0)};
    QTest::newRow("instead of one") << 2.0 << 2.0 << Chords{chord(2, 0.0, 2.0), chord(7, 2.0, 2.0)};
    QTest::newRow("instead of both") << 0.0 << 4.0 << Chords{chord(7, 0.0, 4.0)};
}

void HarmonyTrackTest::anOverlaidChordCutsWhatLiesThere()
{
    QFETCH(double, start);
    QFETCH(double, duration);
    QFETCH(QList<HarmonyDegreeEvent>, left);
    HarmonyTrack track = barOf({chord(2, 0.0, 2.0), chord(5, 2.0, 2.0)});
    QVERIFY(track.overlayEvent(start, duration, 7, ChordExtension::Triad, kBar));
    QVERIFY(track == barOf(left));
    QCOMPARE(brokenPromise(track, kBar), QString());
}

void HarmonyTrackTest::anOverlaidChordGoesOnOverBarLines()
{
    HarmonyTrack track = trackOf({{.barIndex = 2, .events = {chord(5, 0.0, 4.0)}}});
    QVERIFY(track.overlayEvent(3.0, 7.0, 4, ChordExtension::Ninth, kBar));
    QCOMPARE(barsOf(track), (QList<qint32>{0, 1, 2}));
    QList<int> degrees;
    for (const double beat : {2.5, 3.0, 4.0, 7.5, 9.5, 10.0, 11.5})
        degrees.append(degreeAt(track, beat));
    QCOMPARE(degrees, (QList<int>{0, 4, 4, 4, 4, 5, 5}));
    QCOMPARE(track.blocks[1].events.first().extension, ChordExtension::Ninth);
    QCOMPARE(brokenPromise(track, kBar), QString());
}

void HarmonyTrackTest::aChordOfADamagedFileDoesNotFillTheMemory()
{
    HarmonyTrack track;
    QVERIFY(track.overlayEvent(0.0, 4e6, 4, ChordExtension::Triad, kBar));
    QCOMPARE(degreeAt(track, 0.0), 4);
    QVERIFY(track.blocks.size() < 5000);
}

void HarmonyTrackTest::aMillionthIsNeitherLeftNorLaid()
{
    const HarmonyTrack before = barOf({chord(2, 0.0, 2.0)});
    HarmonyTrack track = before;
    QVERIFY(track.overlayEvent(1e-6, 1.0, 7, ChordExtension::Triad, kBar));
    QCOMPARE(degreeAt(track, 0.0), 0);
    track = before;
    QVERIFY(track.overlayEvent(0.0, 1e-6, 7, ChordExtension::Triad, kBar));
    QVERIFY(track == before);
    QVERIFY(track.overlayEvent(1.0, 0.9e-6, 7, ChordExtension::Triad, kBar));
    QVERIFY(track == before);
}

void HarmonyTrackTest::withoutABarNothingIsOverlaid_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("duration");
    QTest::addColumn<double>("bar");

    QTest::newRow("no bars") << 0.0 << 1.0 << 0.0;
    QTest::newRow("before the song") << -1.0 << 1.0 << kBar;
    QTest::newRow("out of reach") << 1e300 << 1.0 << kBar;
    QTest::newRow("an end out of reach") << 0.0 << 1e300 << kBar;
    QTest::newRow("no number") << Doubles::quiet_NaN() << 1.0 << kBar;
    QTest::newRow("no length") << 0.0 << 0.0 << kBar;
    QTest::newRow("no number of beats") << 0.0 << Doubles::quiet_NaN() << kBar;
}

void HarmonyTrackTest::withoutABarNothingIsOverlaid()
{
    QFETCH(double, start);
    QFETCH(double, duration);
    QFETCH(double, bar);
    const HarmonyTrack before = barOf({chord(2, 0.0, 2.0)});
    HarmonyTrack track = before;
    QVERIFY(!track.overlayEvent(start, duration, 4, ChordExtension::Triad, bar));
    QVERIFY(track == before);
}

VELTA_GUILESS_TEST(HarmonyTrackTest)

} // namespace HarmonyTrackTests

#include "HarmonyTrackTest.moc"
