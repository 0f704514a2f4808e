#include "playback/Transport.h"

#include "music/Beats.h"
#include "playback/Metronome.h"
#include "support/Exact.h"
#include "support/ProjectBuilder.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>

namespace TransportTests {

using namespace ProjectBuilder;

namespace {

using Events = QList<ScheduledEvent>;
using Limits = std::numeric_limits<double>;

constexpr double kNan = Limits::quiet_NaN();
constexpr double kInfinity = Limits::infinity();
constexpr double kBar = 4.0;

/// Note-ons at some beats, told apart by their pitch: the place in the list.
Events eventsAt(const QList<double>& beats)
{
    Events events;
    for (const double beat : beats)
        events.append({.beat = beat, .noteOn = true, .pitch = static_cast<int>(events.size())});
    return events;
}

Score scoreAt(const QList<double>& beats, double end = 1000.0)
{
    return {.events = eventsAt(beats), .end = end};
}

RepeatRange range(double start, double end)
{
    return {.enabled = true, .start = start, .end = end};
}

/// A step through a song without a repeat range.
TransportStep straightStep(const Score& score, int cursor, double beat)
{
    return Transport::step(score, cursor, beat, {}, kBar);
}

/// Events at random sixths of a beat, many of them at one beat.
Events randomEvents(SeededRandom& random, int count, double beats)
{
    QList<double> places;
    for (int i = 0; i < count; ++i)
        places.append(std::floor(random.between(0.0, beats) * 6.0) / 6.0);
    std::sort(places.begin(), places.end());
    return eventsAt(places);
}

/// The transport as it is told in words, event by event, with a mark on each that has sounded.
class PlainTransport {
public:
    explicit PlainTransport(const Events& events) : events_(events), passed_(events.size(), false)
    {}

    /// Goes to a beat: what lies before it will not sound.
    void jump(double beat)
    {
        for (qsizetype i = 0; i < events_.size(); ++i)
            passed_[i] = events_[i].beat < beat - 1e-9;
    }

    /// The pitches that sound when the clock has come to a beat.
    QList<int> soundUpTo(double beat)
    {
        QList<int> pitches;
        for (qsizetype i = 0; i < events_.size(); ++i) {
            if (passed_[i] || events_[i].beat > beat + 1e-9)
                continue;
            passed_[i] = true;
            pitches.append(events_[i].pitch);
        }
        return pitches;
    }

private:
    Events events_;
    QList<bool> passed_;
};

QList<int> pitchesOf(const Events& events, const TransportStep& step)
{
    QList<int> pitches;
    for (int i = step.first; i < step.next; ++i)
        pitches.append(events.at(i).pitch);
    return pitches;
}

} // namespace

class TransportTest : public QObject {
    Q_OBJECT

private slots:
    void cursorStandsAtTheFirstEventThatIsNotBefore_data();
    void cursorStandsAtTheFirstEventThatIsNotBefore();
    void cursorOfNoEventsIsZero();

    void playheadFollowsTempoAndTime_data();
    void playheadFollowsTempoAndTime();
    void playheadOfADayIsExactToAMillionth();

    void eventsAreDueUpToTheBeat_data();
    void eventsAreDueUpToTheBeat();
    void nothingIsDueTwice();
    void cursorNeverGoesBack();
    void cursorBehindTheLastEventStays();

    void rangeIsLeftAloneBeforeItsEnd_data();
    void rangeIsLeftAloneBeforeItsEnd();
    void endOfTheRangeWraps_data();
    void endOfTheRangeWraps();
    void eventsFromTheNewPositionAreDueInTheSameStep();
    void eventsBetweenStartAndOvershootAreDue_data();
    void eventsBetweenStartAndOvershootAreDue();
    void wrapThatComesFarTooLateStartsWhereItIs();
    void startReachesBackATwentiethOfABeat();
    void eventsThatTheRangeEndsOnAreNotDue();
    void disabledRangeDoesNotWrap();
    void rangeThatEndsBeforeItStartsStaysThere();

    void songEndsABarBehindItsLastNote_data();
    void songEndsABarBehindItsLastNote();
    void songDoesNotEndBeforeItsLastEvent();
    void songWithoutNotesEndsAfterABar();
    void repeatedSongNeverEnds();
    void barWithoutLengthHasNoEnd_data();
    void barWithoutLengthHasNoEnd();

    void absurdNumbersAreSurvived();
    void wrappedPositionIsANumber_data();
    void wrappedPositionIsANumber();

    void everyEventFiresOnceInOrderAndNotEarly();
    void everyPassOfTheRangeFiresWhatAPlainOneDoes();
    void everyDownbeatOfARepeatedBarIsHeard();
    void pulseDoesNotSlip();
};

// ---- Cursor --------------------------------------------------------------------------------

void TransportTest::cursorStandsAtTheFirstEventThatIsNotBefore_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("cursor");
    QTest::newRow("before all") << -3.0 << 0;
    QTest::newRow("on the first") << 0.0 << 0;
    QTest::newRow("behind the first") << 0.1 << 1;
    QTest::newRow("on two at once") << 1.0 << 1;
    QTest::newRow("a billionth behind them") << 1.0 + 1e-9 << 1;
    QTest::newRow("two billionths behind them") << 1.0 + 2e-9 << 3;
    QTest::newRow("on the last") << 7.5 << 3;
    QTest::newRow("behind all") << 7.6 << 4;
    QTest::newRow("far behind all") << 1e300 << 4;
    QTest::newRow("infinitely far before") << -kInfinity << 0;
    QTest::newRow("infinitely far behind") << kInfinity << 4;
    QTest::newRow("nowhere") << kNan << 4;
}

void TransportTest::cursorStandsAtTheFirstEventThatIsNotBefore()
{
    QFETCH(double, beat);
    QTEST(Transport::cursorForBeat(eventsAt({0.0, 1.0, 1.0, 7.5}), beat), "cursor");
}

void TransportTest::cursorOfNoEventsIsZero()
{
    for (const double beat : {-1.0, 0.0, 5.0, 1e300, kInfinity, kNan})
        QCOMPARE(Transport::cursorForBeat({}, beat), 0);
}

// ---- Playhead ------------------------------------------------------------------------------

void TransportTest::playheadFollowsTempoAndTime_data()
{
    QTest::addColumn<double>("anchor");
    QTest::addColumn<int>("bpm");
    QTest::addColumn<qint64>("nanoseconds");
    QTest::addColumn<double>("beat");
    QTest::newRow("no time") << 7.25 << 120 << qint64(0) << 7.25;
    QTest::newRow("a second at 60 is a beat") << 0.0 << 60 << qint64(1'000'000'000) << 1.0;
    QTest::newRow("a second at 120 is two beats") << 4.0 << 120 << qint64(1'000'000'000) << 6.0;
    QTest::newRow("half a minute at 90") << 1.5 << 90 << qint64(30'000'000'000) << 46.5;
    QTest::newRow("8 ms at 125") << 0.0 << 125 << qint64(8'000'000) << 1.0 / 60.0;
    QTest::newRow("no tempo, no way") << 3.0 << 0 << qint64(1) * 3600 * 1'000'000'000 << 3.0;
    QTest::newRow("a negative tempo runs backward") << 3.0 << -60 << qint64(5'000'000'000) << -2.0;
    QTest::newRow("the highest tempo")
        << 0.0 << std::numeric_limits<int>::max() << qint64(60'000'000'000) << 2147483647.0;
    QTest::newRow("the lowest tempo")
        << 0.0 << std::numeric_limits<int>::min() << qint64(60'000'000'000) << -2147483648.0;
}

void TransportTest::playheadFollowsTempoAndTime()
{
    QFETCH(double, anchor);
    QFETCH(int, bpm);
    QFETCH(qint64, nanoseconds);
    QTEST(Transport::beatAfter(anchor, bpm, nanoseconds), "beat");
}

void TransportTest::playheadOfADayIsExactToAMillionth()
{
    const qint64 day = qint64(24) * 3600 * 1'000'000'000;
    QVERIFY(std::abs(Transport::beatAfter(0.5, 137, day + 250'000'000) -
                     (0.5 + 24 * 60 * 137 + 137.0 / 240.0)) < 1e-6);
}

// ---- Due events ----------------------------------------------------------------------------

void TransportTest::eventsAreDueUpToTheBeat_data()
{
    QTest::addColumn<int>("cursor");
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("next");
    QTest::newRow("before the first") << 0 << -0.5 << 0;
    QTest::newRow("on the first") << 0 << 0.0 << 1;
    QTest::newRow("between") << 0 << 0.99 << 1;
    QTest::newRow("a billionth before two") << 1 << 1.0 - 1e-9 << 3;
    QTest::newRow("two billionths before two") << 1 << 1.0 - 2e-9 << 1;
    QTest::newRow("all at once") << 0 << 9.0 << 4;
    QTest::newRow("the rest") << 2 << 9.0 << 4;
    QTest::newRow("a beat before the end of the song") << 0 << 999.0 << 4;
    QTest::newRow("nowhere") << 0 << kNan << 0;
}

void TransportTest::eventsAreDueUpToTheBeat()
{
    QFETCH(int, cursor);
    QFETCH(double, beat);
    const TransportStep step = straightStep(scoreAt({0.0, 1.0, 1.0, 7.5}), cursor, beat);
    QCOMPARE(step.first, cursor);
    QTEST(step.next, "next");
    QCOMPARE(exact(step.beat), exact(beat));
    QVERIFY(!step.wrapped && !step.ended);
}

void TransportTest::nothingIsDueTwice()
{
    const Score score = scoreAt({0.0, 1.0});
    const int next = straightStep(score, 0, 1.0).next;
    QCOMPARE(next, 2);
    const TransportStep again = straightStep(score, next, 1.0);
    QCOMPARE(again.first, 2);
    QCOMPARE(again.next, 2);
}

void TransportTest::cursorNeverGoesBack()
{
    // So it may be after a change of tempo, which moves the playhead back.
    const TransportStep step = straightStep(scoreAt({0.0, 1.0, 2.0}), 2, 0.5);
    QCOMPARE(step.first, 2);
    QCOMPARE(step.next, 2);
}

void TransportTest::cursorBehindTheLastEventStays()
{
    const TransportStep step = straightStep(scoreAt({0.0, 1.0}), 2, 50.0);
    QCOMPARE(step.first, 2);
    QCOMPARE(step.next, 2);
}

// ---- Repeat range --------------------------------------------------------------------------

void TransportTest::rangeIsLeftAloneBeforeItsEnd_data()
{
    QTest::addColumn<double>("beat");
    QTest::newRow("before its start") << 3.0;
    QTest::newRow("inside") << 12.0;
    QTest::newRow("two billionths before its end") << 16.0 - 2e-9;
    QTest::newRow("nowhere") << kNan;
    QTest::newRow("infinitely far before") << -kInfinity;
}

void TransportTest::rangeIsLeftAloneBeforeItsEnd()
{
    QFETCH(double, beat);
    const TransportStep step = Transport::step(scoreAt({}), 0, beat, range(8.0, 16.0), kBar);
    QVERIFY(!step.wrapped);
    QCOMPARE(exact(step.beat), exact(beat));
}

void TransportTest::endOfTheRangeWraps_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("after");
    QTest::newRow("on its end") << 8.0 << 16.0 << 16.0 << 8.0;
    QTest::newRow("a billionth before its end") << 8.0 << 16.0 << 16.0 - 1e-9 << 8.0 - 1e-9;
    QTest::newRow("an overshoot is kept") << 8.0 << 16.0 << 16.03125 << 8.03125;
    QTest::newRow("three passes and a half") << 8.0 << 16.0 << 44.0 << 12.0;
    QTest::newRow("a whole pass") << 8.0 << 16.0 << 24.0 << 8.0;
    QTest::newRow("from the first beat") << 0.0 << 4.0 << 5.0 << 1.0;
    QTest::newRow("a range of odd length") << 1.5 << 2.25 << 2.75 << 2.0;
    QTest::newRow("a range too short to wrap into") << 3.0 << 3.0 + 1e-7 << 5.0 << 3.0;
}

void TransportTest::endOfTheRangeWraps()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(double, beat);
    QFETCH(double, after);
    const TransportStep step = Transport::step(scoreAt({}), 0, beat, range(start, end), kBar);
    QVERIFY(step.wrapped);
    QVERIFY2(std::abs(step.beat - after) <= 1e-6, exact(step.beat));
    if (end - start >= 0.5)
        QVERIFY2(std::abs(step.beat - after) <= 1e-12, exact(step.beat));
}

void TransportTest::eventsFromTheNewPositionAreDueInTheSameStep()
{
    const Score score = scoreAt({0.0, 8.0, 8.0, 8.03125, 8.5, 16.0});
    const TransportStep onTheStart = Transport::step(score, 5, 16.0, range(8.0, 16.0), kBar);
    QCOMPARE(onTheStart.first, 1);
    QCOMPARE(onTheStart.next, 3);
    const TransportStep late = Transport::step(score, 5, 16.03125, range(8.0, 16.0), kBar);
    QCOMPARE(exact(late.beat), exact(8.03125));
    QCOMPARE(late.first, 1);
    QCOMPARE(late.next, 4);
}

void TransportTest::eventsBetweenStartAndOvershootAreDue_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("next");
    QTest::newRow("at once") << 16.0 << 4;
    QTest::newRow("a tick late") << 16.0625 << 5;
    QTest::newRow("a quarter of a beat late") << 16.25 << 6;
}

void TransportTest::eventsBetweenStartAndOvershootAreDue()
{
    QFETCH(double, beat);
    // Notes that the humanizer has moved ahead of the bar line are of the range too.
    const Score score = scoreAt({7.5, 7.9375, 7.96875, 8.0, 8.0625, 8.25, 9.0});
    const TransportStep step = Transport::step(score, 7, beat, range(8.0, 16.0), kBar);
    QCOMPARE(step.first, 2);
    QTEST(step.next, "next");
}

void TransportTest::wrapThatComesFarTooLateStartsWhereItIs()
{
    // So it is when a range is set behind the playhead: bars would sound at once.
    const Score score = scoreAt({8.0, 8.25, 9.0});
    const TransportStep step = Transport::step(score, 3, 16.5, range(8.0, 16.0), kBar);
    QCOMPARE(exact(step.beat), exact(8.5));
    QCOMPARE(step.first, 2);
    QCOMPARE(step.next, 2);
}

void TransportTest::startReachesBackATwentiethOfABeat()
{
    const Events events = eventsAt({0.0, 3.9375, 3.953125, 3.96875, 4.0, 4.5});
    QCOMPARE(Transport::startCursor(events, 4.0), 2);
    QCOMPARE(Transport::startCursor(events, 4.03125), 4);
    QCOMPARE(Transport::startCursor(events, 0.0), 0);
    QCOMPARE(Transport::startCursor(events, 100.0), 6);
}

void TransportTest::eventsThatTheRangeEndsOnAreNotDue()
{
    const Score score = scoreAt({15.0, 15.99, 16.0, 16.5});
    const TransportStep step = Transport::step(score, 1, 16.0, range(12.0, 16.0), kBar);
    QCOMPARE(exact(step.beat), exact(12.0));
    QCOMPARE(step.first, 0);
    QCOMPARE(step.next, 0);
}

void TransportTest::disabledRangeDoesNotWrap()
{
    const RepeatRange off{.enabled = false, .start = 8.0, .end = 16.0};
    const TransportStep step = Transport::step(scoreAt({0.0, 15.5}), 0, 16.03, off, kBar);
    QVERIFY(!step.wrapped);
    QCOMPARE(exact(step.beat), exact(16.03));
    QCOMPARE(step.next, 2);
}

void TransportTest::rangeThatEndsBeforeItStartsStaysThere()
{
    // Bounds of a range below the first beat, whose start alone is raised to it.
    const TransportStep step = Transport::step(scoreAt({0.0}), 0, 3.0, range(0.0, -2.0), kBar);
    QVERIFY(step.wrapped);
    QVERIFY(step.beat >= 0.0 && step.beat < 2e-6);
    QCOMPARE(step.next, 1);
}

// ---- End of the song -----------------------------------------------------------------------

void TransportTest::songEndsABarBehindItsLastNote_data()
{
    QTest::addColumn<double>("bar");
    QTest::addColumn<double>("beat");
    QTest::addColumn<bool>("ended");
    QTest::newRow("on its last note") << 4.0 << 8.0 << false;
    QTest::newRow("in the bar of silence") << 4.0 << 11.9 << false;
    QTest::newRow("at the end of that bar") << 4.0 << 12.0 << false;
    QTest::newRow("past that bar") << 4.0 << 12.001 << true;
    QTest::newRow("past that bar of three beats") << 3.0 << 11.5 << true;
    QTest::newRow("in that bar of six beats") << 6.0 << 13.5 << false;
    QTest::newRow("long after") << 4.0 << 1e300 << true;
    QTest::newRow("infinitely long after") << 4.0 << kInfinity << true;
}

void TransportTest::songEndsABarBehindItsLastNote()
{
    QFETCH(double, bar);
    QFETCH(double, beat);
    const Score score = scoreAt({0.0, 7.0, 8.0}, 8.0);
    QTEST(Transport::step(score, 2, beat, {}, bar).ended, "ended");
}

void TransportTest::songDoesNotEndBeforeItsLastEvent()
{
    // Clicks lie behind the last note and do not raise the end.
    const Score score = scoreAt({0.0, 15.0}, 1.0);
    QVERIFY(!straightStep(score, 1, 14.0).ended);
    QVERIFY(straightStep(score, 1, 15.0).ended);
}

void TransportTest::songWithoutNotesEndsAfterABar()
{
    QVERIFY(!straightStep({}, 0, 0.0).ended);
    QVERIFY(!straightStep({}, 0, 4.0).ended);
    QVERIFY(straightStep({}, 0, 4.01).ended);
}

void TransportTest::repeatedSongNeverEnds()
{
    for (const double beat : {0.0, 15.9, 16.0, 400.0, 1e300})
        QVERIFY(!Transport::step({}, 0, beat, range(8.0, 16.0), kBar).ended);
}

void TransportTest::barWithoutLengthHasNoEnd_data()
{
    QTest::addColumn<double>("bar");
    QTest::newRow("an infinite bar") << kInfinity;
    QTest::newRow("a bar that is no number") << kNan;
}

void TransportTest::barWithoutLengthHasNoEnd()
{
    QFETCH(double, bar);
    QVERIFY(!Transport::step({}, 0, 1e9, {}, bar).ended);
}

// ---- Absurd numbers ------------------------------------------------------------------------

void TransportTest::absurdNumbersAreSurvived()
{
    const QList<double> absurd{kNan,   kInfinity, -kInfinity, 1e300, -1e300, Limits::max(),
                               1e-300, 0.0,       -0.0,       4.0,   -4.0,   1e9};
    const Score score = scoreAt({-1e300, -1.0, 0.0, 3.5, 4.0, 1e9, 1e300}, 1e300);
    const auto count = static_cast<int>(score.events.size());
    for (const double beat : absurd) {
        for (const double start : absurd) {
            for (const double end : absurd) {
                for (const bool enabled : {false, true}) {
                    const RepeatRange bounds{.enabled = enabled, .start = start, .end = end};
                    const TransportStep step = Transport::step(score, 2, beat, bounds, kBar);
                    QVERIFY(0 <= step.first && step.first <= step.next && step.next <= count);
                    QVERIFY(!step.wrapped || enabled);
                    QVERIFY(!step.ended || !enabled);
                }
            }
        }
    }
}

void TransportTest::wrappedPositionIsANumber_data()
{
    QTest::addColumn<double>("beat");
    QTest::newRow("a playhead at the end of numbers") << Limits::max();
    QTest::newRow("a playhead beyond them") << kInfinity;
    QTest::newRow("a playhead far away") << 1e300;
}

void TransportTest::wrappedPositionIsANumber()
{
    QFETCH(double, beat);
    const TransportStep step = Transport::step(scoreAt({8.0}), 1, beat, range(8.0, 16.0), kBar);
    QVERIFY(step.wrapped);
    QVERIFY2(step.beat >= 8.0 && step.beat < 16.0, exact(step.beat));
}

// ---- Laws ----------------------------------------------------------------------------------

void TransportTest::everyEventFiresOnceInOrderAndNotEarly()
{
    SeededRandom random(4);
    for (int song = 0; song < 4000; ++song) {
        const Score score{.events = randomEvents(random, random.between(0, 60), 24.0), .end = 24.0};
        QList<int> fired;
        int cursor = 0;
        double beat = 0.0;
        double before = -1.0;
        bool ended = false;
        while (!ended) {
            const TransportStep step = straightStep(score, cursor, beat);
            for (int i = step.first; i < step.next; ++i) {
                QVERIFY(score.events[i].beat <= beat + 1e-9);
                QVERIFY(score.events[i].beat > before);
            }
            fired += pitchesOf(score.events, step);
            cursor = step.next;
            ended = step.ended;
            before = beat;
            beat += random.oneIn(20) ? random.between(0.0, 5.0) : random.magnitude(1e-4, 1.0);
        }
        QCOMPARE(fired.size(), score.events.size());
        QVERIFY(std::is_sorted(fired.cbegin(), fired.cend()));
        QVERIFY(before > 28.0);
    }
}

void TransportTest::everyPassOfTheRangeFiresWhatAPlainOneDoes()
{
    SeededRandom random(5);
    int wraps = 0;
    for (int song = 0; song < 3000; ++song) {
        const Score score{.events = randomEvents(random, random.between(0, 60), 24.0), .end = 24.0};
        const double start = random.between(0, 60) / 4.0;
        const double length =
            random.oneIn(5) ? random.between(0.01, 0.5) : random.between(1, 40) / 4.0;
        PlainTransport plain(score.events);
        double beat = random.between(0.0, 24.0);
        plain.jump(beat);
        int cursor = Transport::cursorForBeat(score.events, beat);
        for (int tick = 0; tick < 60; ++tick) {
            const TransportStep step =
                Transport::step(score, cursor, beat, range(start, start + length), kBar);
            QCOMPARE(step.wrapped, beat >= start + length - 1e-9);
            if (step.wrapped) {
                ++wraps;
                double over = beat - (start + length);
                while (over >= length)
                    over -= length;
                QVERIFY(std::abs(step.beat - (start + over)) < 1e-9 ||
                        std::abs(step.beat - (start + over)) > length - 1e-9);
                plain.jump(over <= 0.25 ? start - 0.05 : step.beat);
            }
            QCOMPARE(pitchesOf(score.events, step), plain.soundUpTo(step.beat));
            QVERIFY(!step.ended);
            cursor = step.next;
            beat = step.beat + random.magnitude(1e-3, 2.0);
        }
    }
    QVERIFY(wraps > 10000);
}

void TransportTest::everyDownbeatOfARepeatedBarIsHeard()
{
    // A plain track and nine humanized ones strike each bar line; chords and clicks join them.
    QList<Track> tracks{straight(melodyTrack({melody({}, 0.0, 32.0)}))};
    for (quint32 seed = 1; seed < 10; ++seed) {
        tracks.append(melodyTrack({melody({}, 0.0, 32.0)}));
        tracks.last().humanize.seed = seed;
    }
    for (Track& track : tracks) {
        for (int bar = 0; bar < 8; ++bar)
            track.melodyBlocks[0].notes.append(note(60, 4.0 * bar));
    }
    Score score;
    Schedule::appendSong(score, *project(tracks, harmony({1, 4, 5, 1, 1, 4, 5, 1})), nullptr,
                         false);
    Metronome::appendClicks(score.events, {}, 32.0);
    Schedule::sort(score.events);
    // Ten tracks, a chord of three notes and an accent.
    constexpr int kStruck = 14;

    SeededRandom random(6);
    for (int bar = 0; bar < 7; ++bar) {
        const RepeatRange bars = range(4.0 * bar, 4.0 * bar + 4.0);
        double beat = bars.start;
        int cursor = Transport::startCursor(score.events, beat);
        int struck = 0;
        for (int wraps = 0; wraps < 32; beat += random.magnitude(0.004, 0.2)) {
            const TransportStep step = Transport::step(score, cursor, beat, bars, kBar);
            if (step.wrapped) {
                QCOMPARE(struck, kStruck);
                struck = 0;
                ++wraps;
            }
            for (int i = step.first; i < step.next; ++i) {
                const ScheduledEvent& event = score.events.at(i);
                struck += event.noteOn && std::abs(event.beat - bars.start) < 0.1 ? 1 : 0;
            }
            cursor = step.next;
            beat = step.beat;
        }
    }
}

void TransportTest::pulseDoesNotSlip()
{
    // A clock of odd ticks over a thousand passes of three beats: what the wraps leave behind is
    // the clock's own remainder.
    const double tick = 0.0173;
    double beat = 0.0;
    double clock = 0.0;
    int passes = 0;
    while (passes < 1000) {
        const TransportStep step = Transport::step({}, 0, beat, range(0.0, 3.0), kBar);
        passes += step.wrapped ? 1 : 0;
        QVERIFY(std::abs(clock - (3.0 * passes + step.beat)) < 1e-6);
        beat = step.beat + tick;
        clock += tick;
    }
}

VELTA_GUILESS_TEST(TransportTest)

} // namespace TransportTests

#include "TransportTest.moc"
