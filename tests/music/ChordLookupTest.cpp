#include "music/ChordLookup.h"

#include "support/TestProgram.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>

namespace ChordLookupTests {

namespace {

using Doubles = std::numeric_limits<double>;
using Ints = std::numeric_limits<qint32>;

/// Positions and lengths that no work has, beside a few that it may have.
constexpr std::array kOddBeats{0.0,
                               -0.0,
                               1.0,
                               -1.0,
                               1e-9,
                               2e-9,
                               -1e-9,
                               5e-10,
                               1e-12,
                               0.1,
                               1e9,
                               -1e9,
                               1e300,
                               -1e300,
                               Doubles::max(),
                               -Doubles::max(),
                               Doubles::denorm_min(),
                               Doubles::infinity(),
                               -Doubles::infinity(),
                               Doubles::quiet_NaN()};

constexpr std::array kOddBars{0, 0, 1, 2, 3, -1, -2, 1000000, Ints::min(), Ints::max()};

constexpr std::array kBarLengths{4.0,       3.0,  3.5,    4.5, 6.0,   0.25,          0.1,
                                 4.0 / 3.0, 1e-9, 1e-300, 1e9, 1e300, Doubles::max()};

enum class Disorder { None, Overlaps, Anything };

class HarmonyGenerator {
public:
    HarmonyGenerator(quint32 seed, Disorder disorder) : random_(seed), disorder_(disorder) {}

    HarmonyTrack track(double beatsPerBar)
    {
        HarmonyTrack track;
        const int blocks = random_.bounded(8);
        for (int i = 0; i < blocks; ++i) {
            const qint32 bar =
                disorder_ == Disorder::None ? i * (1 + random_.bounded(2)) : oddBar();
            track.blocks.append({.barIndex = bar, .events = events(beatsPerBar)});
        }
        return track;
    }

    double barLength() { return kBarLengths[pick(kBarLengths.size())]; }

    /// A beat anywhere near the first bars.
    double beat(double beatsPerBar)
    {
        return (random_.generateDouble() * 20.0 - 4.0) * beatsPerBar;
    }

private:
    QList<HarmonyDegreeEvent> events(double beatsPerBar)
    {
        QList<HarmonyDegreeEvent> events;
        const int count = random_.bounded(8);
        double end = 0.0;
        for (int i = 0; i < count; ++i) {
            HarmonyDegreeEvent event;
            event.degree = random_.bounded(-1, 9);
            event.startBeat = disorder_ == Disorder::None ? end : position(beatsPerBar);
            event.durationBeats = length(beatsPerBar);
            end = event.startBeat + event.durationBeats;
            events.append(event);
        }
        return events;
    }

    double position(double beatsPerBar)
    {
        if (disorder_ == Disorder::Anything && random_.bounded(2) == 0)
            return kOddBeats[pick(kOddBeats.size())];
        return random_.bounded(-2, 20) / 16.0 * beatsPerBar;
    }

    double length(double beatsPerBar)
    {
        if (disorder_ == Disorder::Anything && random_.bounded(2) == 0)
            return kOddBeats[pick(kOddBeats.size())];
        const int least = disorder_ == Disorder::None ? 1 : -2;
        return random_.bounded(least, 9) / 16.0 * beatsPerBar;
    }

    qint32 oddBar()
    {
        if (disorder_ == Disorder::Anything)
            return kOddBars[pick(kOddBars.size())];
        return random_.bounded(-2, 6);
    }

    std::size_t pick(std::size_t count)
    {
        return static_cast<std::size_t>(random_.bounded(static_cast<quint32>(count)));
    }

    QRandomGenerator random_;
    Disorder disorder_;
};

/// A beat with its neighbours on both sides of the tolerance.
void appendAround(QList<double>& beats, double beat)
{
    for (const double nudge : {-2e-9, -1e-9, -5e-10, 0.0, 5e-10, 1e-9, 2e-9})
        beats.append(beat + nudge);
    for (const double edge : {beat, beat - 1e-9}) {
        beats.append(std::nextafter(edge, Doubles::infinity()));
        beats.append(std::nextafter(edge, -Doubles::infinity()));
    }
}

QList<double> beatsToAsk(const HarmonyTrack& track, double beatsPerBar)
{
    QList<double> beats(kOddBeats.begin(), kOddBeats.end());
    for (const HarmonyBlock& block : track.blocks) {
        const double bar = block.barIndex * beatsPerBar;
        appendAround(beats, bar);
        for (const HarmonyDegreeEvent& event : block.events) {
            appendAround(beats, bar + event.startBeat);
            appendAround(beats, bar + (event.startBeat + event.durationBeats));
        }
    }
    return beats;
}

/// The beats at which the look-up and the plain search find different chords.
QList<double> disagreements(const HarmonyTrack& track, double beatsPerBar,
                            const QList<double>& beats)
{
    const ChordLookup lookup(track, beatsPerBar);
    QList<double> wrong;
    for (const double beat : beats) {
        if (lookup.at(beat) != track.eventAt(beat, beatsPerBar))
            wrong.append(beat);
    }
    return wrong;
}

} // namespace

class ChordLookupTest : public QObject {
    Q_OBJECT

private slots:
    void findsWhatThePlainSearchFinds_data();
    void findsWhatThePlainSearchFinds();
    void chordInForce_data();
    void chordInForce();
    void earlierInTheListWinsWhereChordsOverlap();
    void repeatedBarCountsOnce();
    void emptyTrackHasNoChords();
    void badBarLengthHasNoChords();
    void manyChordsInOneBar();
    void chordsOfNoLengthAreNeverInForce();
};

void ChordLookupTest::findsWhatThePlainSearchFinds_data()
{
    QTest::addColumn<int>("disorder");
    QTest::addColumn<int>("rounds");

    QTest::newRow("in ordered harmonies") << static_cast<int>(Disorder::None) << 1500;
    QTest::newRow("among overlapping chords and repeated bars")
        << static_cast<int>(Disorder::Overlaps) << 1500;
    QTest::newRow("in harmonies of any numbers") << static_cast<int>(Disorder::Anything) << 3000;
}

void ChordLookupTest::findsWhatThePlainSearchFinds()
{
    QFETCH(int, disorder);
    QFETCH(int, rounds);
    HarmonyGenerator generator(2024, static_cast<Disorder>(disorder));
    int found = 0;
    for (int round = 0; round < rounds; ++round) {
        const double beatsPerBar = generator.barLength();
        const HarmonyTrack track = generator.track(beatsPerBar);
        QList<double> beats = beatsToAsk(track, beatsPerBar);
        for (int i = 0; i < 20; ++i)
            beats.append(generator.beat(beatsPerBar));
        QCOMPARE(disagreements(track, beatsPerBar, beats), QList<double>());
        found += static_cast<int>(std::ranges::count_if(
            beats, [&](double beat) { return track.eventAt(beat, beatsPerBar) != nullptr; }));
    }
    QVERIFY2(found > rounds, "the harmonies ask for chords that are there");
}

void ChordLookupTest::chordInForce_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("expected");

    // Bar 0: I from 0 to 2, V from 2 to 3. Bar 2: IV all through.
    QTest::newRow("at its start") << 0.0 << 1;
    QTest::newRow("at a shared boundary the later chord") << 2.0 << 5;
    QTest::newRow("half a tolerance before it the later chord") << 2.0 - 5e-10 << 5;
    QTest::newRow("two tolerances before it the earlier chord") << 2.0 - 2e-9 << 1;
    QTest::newRow("half a tolerance before an end no chord") << 3.0 - 5e-10 << 0;
    QTest::newRow("in a gap no chord") << 3.5 << 0;
    QTest::newRow("in a bar without chords no chord") << 5.0 << 0;
    QTest::newRow("at a bar line the chord of its bar") << 8.0 << 4;
    QTest::newRow("before the start no chord") << -1.0 << 0;
    QTest::newRow("beyond the last bar no chord") << 1e300 << 0;
    QTest::newRow("nowhere no chord") << Doubles::quiet_NaN() << 0;
}

void ChordLookupTest::chordInForce()
{
    QFETCH(double, beat);
    HarmonyTrack track;
    track.insertEvent(0.0, 2.0, 1, ChordExtension::Triad, 4.0);
    track.insertEvent(2.0, 1.0, 5, ChordExtension::Triad, 4.0);
    track.insertEvent(8.0, 4.0, 4, ChordExtension::Triad, 4.0);
    const ChordLookup lookup(track, 4.0);
    const HarmonyDegreeEvent* event = lookup.at(beat);
    QTEST(event ? event->degree : 0, "expected");
}

void ChordLookupTest::earlierInTheListWinsWhereChordsOverlap()
{
    HarmonyTrack track;
    track.blocks = {{.barIndex = 0,
                     .events = {{.degree = 3, .startBeat = 1.0, .durationBeats = 1.0},
                                {.degree = 2, .startBeat = 0.0, .durationBeats = 4.0},
                                {.degree = 1, .startBeat = 0.0, .durationBeats = 9.0}}}};
    const ChordLookup lookup(track, 8.0);
    const auto& events = std::as_const(track).blocks[0].events;
    QCOMPARE(lookup.at(0.5), &events[1]);
    QCOMPARE(lookup.at(1.5), &events[0]);
    QCOMPARE(lookup.at(2.5), &events[1]);
    QCOMPARE(lookup.at(4.0), &events[2]);
    QCOMPARE(lookup.at(7.9), &events[2]);
    QCOMPARE(lookup.at(8.5), nullptr);
}

void ChordLookupTest::repeatedBarCountsOnce()
{
    HarmonyTrack track;
    track.blocks = {{.barIndex = 1, .events = {}},
                    {.barIndex = 0, .events = {{.degree = 5, .durationBeats = 2.0}}},
                    {.barIndex = 1, .events = {{.degree = 6, .durationBeats = 4.0}}},
                    {.barIndex = 0, .events = {{.degree = 7, .durationBeats = 4.0}}}};
    const ChordLookup lookup(track, 4.0);
    QCOMPARE(lookup.at(1.0), &std::as_const(track).blocks[1].events[0]);
    QCOMPARE(lookup.at(3.0), nullptr);
    QCOMPARE(lookup.at(5.0), nullptr);
}

void ChordLookupTest::emptyTrackHasNoChords()
{
    const HarmonyTrack track;
    const ChordLookup lookup(track, 4.0);
    for (const double beat : kOddBeats)
        QCOMPARE(lookup.at(beat), nullptr);
}

void ChordLookupTest::badBarLengthHasNoChords()
{
    HarmonyTrack track;
    track.blocks = {{.barIndex = 0, .events = {{.startBeat = -1e9, .durationBeats = 2e9}}}};
    for (const double beatsPerBar :
         {0.0, -0.0, -4.0, Doubles::infinity(), -Doubles::infinity(), Doubles::quiet_NaN()}) {
        const ChordLookup lookup(track, beatsPerBar);
        for (const double beat : kOddBeats)
            QCOMPARE(lookup.at(beat), nullptr);
    }
}

void ChordLookupTest::manyChordsInOneBar()
{
    // One bar of 20,000 chords that all overlap their neighbours.
    HarmonyTrack track;
    QList<HarmonyDegreeEvent> events;
    for (int i = 0; i < 20'000; ++i)
        events.append({.degree = i, .startBeat = i * 7919 % 20'000 * 1.0, .durationBeats = 3.0});
    track.blocks = {{.barIndex = 0, .events = events}};
    const ChordLookup lookup(track, 30'000.0);
    for (int beat = 0; beat < 20'010; beat += 97)
        QCOMPARE(lookup.at(beat + 0.5), track.eventAt(beat + 0.5, 30'000.0));
}

void ChordLookupTest::chordsOfNoLengthAreNeverInForce()
{
    const HarmonyTrack track = {
        .blocks = {{.barIndex = 0,
                    .events = QList<HarmonyDegreeEvent>(
                        100, {.degree = 4, .startBeat = 1.0, .durationBeats = 0.0})}}};
    for (const double beat : {0.5, 1.0, 1.5})
        QCOMPARE(ChordLookup(track, 4.0).at(beat), nullptr);
}

VELTA_GUILESS_TEST(ChordLookupTest)

} // namespace ChordLookupTests

#include "ChordLookupTest.moc"
