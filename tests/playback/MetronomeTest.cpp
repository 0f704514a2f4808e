#include "playback/Metronome.h"

#include "music/TimeSignature.h"
#include "support/Exact.h"
#include "support/TestProgram.h"

#include <QTest>

#include <algorithm>
#include <limits>

namespace MetronomeTests {

namespace {

using Events = QList<ScheduledEvent>;

constexpr int kMinInt = std::numeric_limits<int>::min();
constexpr int kMaxInt = std::numeric_limits<int>::max();

Events clicks(const TimeSignature& meter, double end = 0.0)
{
    Events events;
    Metronome::appendClicks(events, meter, end);
    return events;
}

/// The clicks as text, a beat each, accents with a mark: "0! 1 2 3".
QString written(const Events& events)
{
    QStringList words;
    for (const ScheduledEvent& event : events) {
        if (event.noteOn)
            words.append(QString::number(event.beat) + (event.pitch == 76 ? "!" : ""));
    }
    return words.join(' ');
}

QList<double> beatsOf(const Events& events)
{
    QList<double> beats;
    for (const ScheduledEvent& event : events) {
        if (event.noteOn)
            beats.append(event.beat);
    }
    return beats;
}

} // namespace

class MetronomeTest : public QObject {
    Q_OBJECT

private slots:
    void clicksFallOnThePulse_data();
    void clicksFallOnThePulse();
    void clickIsANoteOnAndATenthOfABeatLaterItsNoteOff();
    void clicksGoOnToTheEndOfTheSong_data();
    void clicksGoOnToTheEndOfTheSong();
    void eventsAreAppended();
    void everyClickIsReleased();
    void damagedMeterIsSurvived_data();
    void damagedMeterIsSurvived();
    void barOfNoClicksHasAccentsOnly_data();
    void barOfNoClicksHasAccentsOnly();
    void endWithoutEndIsBounded_data();
    void endWithoutEndIsBounded();
    void endThatIsNoPlaceLeavesFourBars_data();
    void endThatIsNoPlaceLeavesFourBars();
};

void MetronomeTest::clicksFallOnThePulse_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<bool>("compound");
    QTest::addColumn<QString>("fourBars");
    QTest::newRow("4/4: four to a bar")
        << 4 << 4 << false << "0! 1 2 3 4! 5 6 7 8! 9 10 11 12! 13 14 15 16!";
    QTest::newRow("3/4: three to a bar") << 3 << 4 << false << "0! 1 2 3! 4 5 6! 7 8 9! 10 11 12!";
    QTest::newRow("2/4: two to a bar") << 2 << 4 << false << "0! 1 2! 3 4! 5 6! 7 8!";
    QTest::newRow("6/8: two to a bar, each of three eighths")
        << 6 << 8 << true << "0! 1.5 3! 4.5 6! 7.5 9! 10.5 12!";
    QTest::newRow("9/8: three to a bar, each of three eighths")
        << 9 << 8 << true << "0! 1.5 3 4.5! 6 7.5 9! 10.5 12 13.5! 15 16.5 18!";
    QTest::newRow("12/8: four to a bar, each of three eighths")
        << 12 << 8 << true << "0! 1.5 3 4.5 6! 7.5 9 10.5 12! 13.5 15 16.5 18! 19.5 21 22.5 24!";
    QTest::newRow("2/2: an accent every second quarter note")
        << 2 << 2 << false << "0! 1 2! 3 4! 5 6! 7 8! 9 10! 11 12! 13 14! 15 16!";
    QTest::newRow("3/8 that is not compound: an accent every third quarter note")
        << 3 << 8 << false << "0! 1 2 3! 4 5 6!";
    QTest::newRow("3/8 that is compound: one to a bar") << 3 << 8 << true << "0! 1.5! 3! 4.5! 6!";
    QTest::newRow("6/8 that is not compound: an accent every sixth quarter note")
        << 6 << 8 << false << "0! 1 2 3 4 5 6! 7 8 9 10 11 12!";
    QTest::newRow("7/8: an accent every seventh quarter note")
        << 7 << 8 << false << "0! 1 2 3 4 5 6 7! 8 9 10 11 12 13 14!";
    QTest::newRow("5/4 that is compound: one to a bar, whatever its length")
        << 5 << 4 << true << "0! 1.5! 3! 4.5! 6! 7.5! 9! 10.5! 12! 13.5! 15! 16.5! 18! 19.5!";
}

void MetronomeTest::clicksFallOnThePulse()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    QFETCH(bool, compound);
    QTEST(written(clicks({numerator, denominator, compound})), "fourBars");
}

void MetronomeTest::clickIsANoteOnAndATenthOfABeatLaterItsNoteOff()
{
    const Events events = clicks({2, 4, false});
    const Events first{{.beat = 0.0, .noteOn = true, .channel = 14, .pitch = 76, .velocity = 110},
                       {.beat = 0.1, .noteOn = false, .channel = 14, .pitch = 76, .velocity = 0},
                       {.beat = 1.0, .noteOn = true, .channel = 14, .pitch = 77, .velocity = 80},
                       {.beat = 1.1, .noteOn = false, .channel = 14, .pitch = 77, .velocity = 0}};
    QCOMPARE(events.first(4), first);
    QCOMPARE(events[4].velocity, 110);
}

void MetronomeTest::clicksGoOnToTheEndOfTheSong_data()
{
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("last");
    QTest::newRow("no song: four bars") << 0.0 << 16.0;
    QTest::newRow("a song of four bars") << 16.0 << 16.0;
    QTest::newRow("a song up to a click") << 20.0 << 20.0;
    QTest::newRow("a song up to just before a click") << 19.999 << 19.0;
    QTest::newRow("a song up to just behind a click") << 20.001 << 20.0;
    QTest::newRow("a song before the first beat") << -40.0 << 16.0;
}

void MetronomeTest::clicksGoOnToTheEndOfTheSong()
{
    QFETCH(double, end);
    QTEST(beatsOf(clicks({4, 4, false}, end)).last(), "last");
}

void MetronomeTest::eventsAreAppended()
{
    const ScheduledEvent before{.beat = 9.0, .noteOn = true, .channel = 2, .pitch = 50};
    Events events{before};
    Metronome::appendClicks(events, {3, 4, false}, 0.0);
    QCOMPARE(events.first(), before);
    QCOMPARE(events.size(), 1 + 2 * 13);
}

void MetronomeTest::everyClickIsReleased()
{
    const Events events = clicks({6, 8, true}, 3000.0);
    QCOMPARE(events.size(), 2 * 2001);
    for (qsizetype i = 0; i < events.size(); i += 2) {
        QVERIFY(events[i].noteOn && !events[i + 1].noteOn);
        QCOMPARE(events[i].pitch, events[i + 1].pitch);
        QCOMPARE(exact(events[i].beat), exact(1.5 * static_cast<double>(i / 2)));
        QVERIFY(std::abs(events[i + 1].beat - events[i].beat - 0.1) < 1e-9);
    }
}

// ---- Damaged works -------------------------------------------------------------------------

void MetronomeTest::damagedMeterIsSurvived_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    for (const int numerator : {kMinInt, -6, -1, 0, 1, 2, 3, 1000000, kMaxInt}) {
        for (const int denominator : {kMinInt, -4, 0, 1, 3, kMaxInt})
            QTest::addRow("%d/%d", numerator, denominator) << numerator << denominator;
    }
}

void MetronomeTest::damagedMeterIsSurvived()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    for (const bool compound : {false, true}) {
        const Events events = clicks({numerator, denominator, compound}, 8.0);
        const QList<double> beats = beatsOf(events);
        QCOMPARE(events.size(), 2 * beats.size());
        QVERIFY(beats.size() <= 100'000);
        QVERIFY(beats.size() >= (compound ? 6 : 9));
        QVERIFY(std::is_sorted(beats.cbegin(), beats.cend()));
        QCOMPARE(events.first().pitch, 76);
    }
}

void MetronomeTest::barOfNoClicksHasAccentsOnly_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<bool>("compound");
    QTest::addColumn<QString>("accents");
    QTest::newRow("a numerator of 0") << 0 << false << "0! 1! 2! 3! 4!";
    QTest::newRow("a numerator of -1") << -1 << false << "0! 1! 2! 3! 4!";
    QTest::newRow("a compound numerator of 0") << 0 << true << "0! 1.5! 3!";
    QTest::newRow("a compound numerator of 2, where the minimum counts")
        << 2 << true << "0! 1.5! 3! 4.5! 6! 7.5!";
}

void MetronomeTest::barOfNoClicksHasAccentsOnly()
{
    QFETCH(int, numerator);
    QFETCH(bool, compound);
    QTEST(written(clicks({numerator, 4, compound}, 4.0)), "accents");
}

void MetronomeTest::endWithoutEndIsBounded_data()
{
    QTest::addColumn<double>("end");
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity();
    QTest::newRow("the largest number") << std::numeric_limits<double>::max();
    QTest::newRow("1e9 beats") << 1e9;
}

void MetronomeTest::endWithoutEndIsBounded()
{
    QFETCH(double, end);
    QCOMPARE(beatsOf(clicks({4, 4, false}, end)).size(), 100'000);
}

void MetronomeTest::endThatIsNoPlaceLeavesFourBars_data()
{
    QTest::addColumn<double>("end");
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("infinitely early") << -std::numeric_limits<double>::infinity();
}

void MetronomeTest::endThatIsNoPlaceLeavesFourBars()
{
    QFETCH(double, end);
    QCOMPARE(beatsOf(clicks({4, 4, false}, end)).last(), 16.0);
}

VELTA_GUILESS_TEST(MetronomeTest)

} // namespace MetronomeTests

#include "MetronomeTest.moc"
