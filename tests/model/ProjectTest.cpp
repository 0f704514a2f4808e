#include "model/Project.h"

#include "music/Beats.h"
#include "support/Exact.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>

namespace ProjectTests {

using namespace ProjectBuilder;

namespace {

using Doubles = std::numeric_limits<double>;
using Ints = std::numeric_limits<int>;

/// A project with one empty melody block of this place and length.
std::unique_ptr<Project> projectWithBlock(double startBeat, double durationBeats,
                                          const TimeSignature& meter = {})
{
    return project({melodyTrack({melody({}, startBeat, durationBeats)})}, {}, meter);
}

/// Where the last block, clip or bar with chords ends, the parts of a project being finite.
double lastEnd(const Project& project)
{
    QList<double> ends{0.0};
    for (const Track& track : project.tracks) {
        for (const MelodyBlock& block : track.melodyBlocks)
            ends.append(block.startBeat + block.durationBeats);
        for (const LoopBlock& block : track.loopBlocks)
            ends.append(block.startBeat + block.durationBeats);
    }
    for (const AudioTrack& track : project.audioTracks) {
        for (const AudioClip& clip : track.clips)
            ends.append(clip.offsetBeats + clip.durationBeats);
    }
    for (const HarmonyBlock& block : project.harmonyTrack.blocks) {
        if (!block.events.isEmpty())
            ends.append((block.barIndex + 1) * project.beatsPerBar());
    }
    return *std::ranges::max_element(ends);
}

} // namespace

class ProjectTest : public QObject {
    Q_OBJECT

private slots:
    void startsBlank();
    void holdsAtMostThirteenNoteTracks();
    void barFollowsTheMeter();
    void emptyProjectHasNoEnd();
    void endOfMaterial_data();
    void endOfMaterial();
    void latestMaterialOfAnyKindCounts_data();
    void latestMaterialOfAnyKindCounts();
    void blocksThatHoldNothingAreNoEndOfWhatIsFilled();
    void barWithAChordCountsWhole();
    void barWithoutChordsCountsForNothing();
    void barsUpToTheEnd_data();
    void barsUpToTheEnd();
    void endIsTheFirstBarLineBehindAllMaterial();
    void meterWithoutABarHasNoEnd_data();
    void meterWithoutABarHasNoEnd();
    void numbersThatAreNoPlaceCountForNothing_data();
    void numbersThatAreNoPlaceCountForNothing();
    void enormousNumbersAreHeldInBars_data();
    void enormousNumbersAreHeldInBars();
    void hostileProjectsHaveAnEnd();
    void readingSignalsNothing();
    void generatorRepeatsItself();
};

void ProjectTest::startsBlank()
{
    QObject parent;
    const auto* blank = new Project(&parent);
    QCOMPARE(blank->parent(), &parent);
    QVERIFY(blank->name.isEmpty());
    QCOMPARE(blank->bpm, 120);
    QVERIFY(blank->timeSignature == TimeSignature({4, 4, false}));
    QVERIFY(blank->keySignature == KeySignature({0, KeyMode::Major}));
    QVERIFY(blank->tracks.isEmpty());
    QVERIFY(blank->audioTracks.isEmpty());
    QVERIFY(!blank->harmonyTrack.muted);
    QCOMPARE(blank->harmonyTrack.volume, 0.7F);
    QVERIFY(blank->harmonyTrack.blocks.isEmpty());
    QVERIFY(blank->collapsedGroups.isEmpty());
}

void ProjectTest::holdsAtMostThirteenNoteTracks()
{
    QCOMPARE(kMaxNoteTracks, 13);
}

void ProjectTest::barFollowsTheMeter()
{
    Project song;
    QCOMPARE(exact(song.beatsPerBar()), exact(4.0));
    song.timeSignature = {.numerator = 6, .denominator = 8, .isCompound = true};
    QCOMPARE(exact(song.beatsPerBar()), exact(3.0));
}

void ProjectTest::emptyProjectHasNoEnd()
{
    const Project blank;
    QCOMPARE(exact(blank.endBeat()), exact(0.0));
    QCOMPARE(blank.barCount(8), 8);
    QCOMPARE(blank.barCount(0), 0);

    const auto bare = project({melodyTrack({}), loopTrack({})});
    QCOMPARE(exact(bare->endBeat()), exact(0.0));
}

void ProjectTest::endOfMaterial_data()
{
    QTest::addColumn<double>("startBeat");
    QTest::addColumn<double>("durationBeats");
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<double>("expected");

    QTest::newRow("on the bar line") << 4.0 << 4.0 << 4 << 4 << 8.0;
    QTest::newRow("just behind it counts the next bar") << 4.0 << 4.001 << 4 << 4 << 12.0;
    QTest::newRow("3.5 beats of 6/8 are two bars") << 0.0 << 3.5 << 6 << 8 << 6.0;
    QTest::newRow("3.5 beats of 7/8 are one bar") << 0.0 << 3.5 << 7 << 8 << 3.5;
    QTest::newRow("7 beats of 12/8 are two bars") << 1.0 << 6.0 << 12 << 8 << 12.0;
    QTest::newRow("2/2 counts as 4/4") << 0.0 << 5.0 << 2 << 2 << 8.0;
    QTest::newRow("an empty block at beat 0") << 0.0 << 0.0 << 4 << 4 << 0.0;
    QTest::newRow("a block before the start") << -8.0 << 4.0 << 4 << 4 << 0.0;
    QTest::newRow("a block across the start") << -2.0 << 4.0 << 4 << 4 << 4.0;
    QTest::newRow("a negative length ends before its start") << 8.0 << -3.0 << 4 << 4 << 8.0;
    QTest::newRow("two negative numbers make a bar") << 0.0 << 1.0 << -4 << -4 << 4.0;
}

void ProjectTest::endOfMaterial()
{
    QFETCH(double, startBeat);
    QFETCH(double, durationBeats);
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    QFETCH(double, expected);
    const auto song = projectWithBlock(startBeat, durationBeats,
                                       {.numerator = numerator, .denominator = denominator});
    QCOMPARE(exact(song->endBeat()), exact(expected));
}

void ProjectTest::latestMaterialOfAnyKindCounts_data()
{
    QTest::addColumn<double>("melodyEnd");
    QTest::addColumn<double>("loopEnd");
    QTest::addColumn<double>("clipEnd");
    QTest::addColumn<int>("chordBars");
    QTest::addColumn<double>("expected");

    QTest::newRow("a melody") << 18.0 << 8.0 << 8.0 << 2 << 20.0;
    QTest::newRow("a loop") << 8.0 << 18.0 << 8.0 << 2 << 20.0;
    QTest::newRow("a voice clip") << 8.0 << 8.0 << 18.0 << 2 << 20.0;
    QTest::newRow("a chord") << 8.0 << 8.0 << 8.0 << 5 << 20.0;
}

void ProjectTest::latestMaterialOfAnyKindCounts()
{
    QFETCH(double, melodyEnd);
    QFETCH(double, loopEnd);
    QFETCH(double, clipEnd);
    QFETCH(int, chordBars);
    QFETCH(double, expected);
    const auto song = project({melodyTrack({melody({}, 1.0, melodyEnd - 1.0), melody({})}),
                               loopTrack({loop("zamba", "bombo", 2.0, loopEnd - 2.0)})},
                              harmony(QList<int>(chordBars, 1)));
    song->audioTracks = {voiceTrack({}),
                         voiceTrack({clip("voz.wav", 3.0, clipEnd - 3.0), clip("voz.wav")})};
    QCOMPARE(exact(song->endBeat()), exact(expected));
    // Of these the melody blocks alone hold nothing.
    song->tracks[0].melodyBlocks[0].notes = {note(60, 0.0)};
    QCOMPARE(exact(song->filledEndBeat()), exact(expected));
}

void ProjectTest::blocksThatHoldNothingAreNoEndOfWhatIsFilled()
{
    const auto song = project({melodyTrack({melody({note(60, 0.0)}, 1.0), melody({}, 8.0, 30.0)}),
                               melodyTrack({melody({}, 100.0)})});
    QCOMPARE(exact(song->filledEndBeat()), exact(8.0));
    QCOMPARE(exact(song->endBeat()), exact(104.0));
    song->tracks[0].melodyBlocks[0].notes.clear();
    QCOMPARE(exact(song->filledEndBeat()), exact(0.0));
    song->timeSignature.numerator = 0;
    QCOMPARE(exact(song->filledEndBeat()), exact(0.0));
}

void ProjectTest::barWithAChordCountsWhole()
{
    Project song;
    song.harmonyTrack.blocks = {{.barIndex = 9, .events = {chord(1, 0.0, 0.001)}}};
    QCOMPARE(exact(song.endBeat()), exact(40.0));
    QCOMPARE(song.barCount(8), 10);
    song.harmonyTrack.blocks[0].events[0].durationBeats = 1000.0;
    QCOMPARE(exact(song.endBeat()), exact(40.0));
}

void ProjectTest::barWithoutChordsCountsForNothing()
{
    Project song;
    song.harmonyTrack.blocks = {{.barIndex = 1, .events = {chord(1, 0, 4)}},
                                {.barIndex = 9, .events = {}}};
    QCOMPARE(exact(song.endBeat()), exact(8.0));
}

void ProjectTest::barsUpToTheEnd_data()
{
    QTest::addColumn<double>("end");
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("expected");

    QTest::newRow("3.5 beats of 6/8") << 3.5 << 6 << 8 << 1 << 2;
    QTest::newRow("8 bars are shown at least") << 3.5 << 6 << 8 << 8 << 8;
    QTest::newRow("longer works are not cut") << 41.0 << 4 << 4 << 8 << 11;
    QTest::newRow("nothing") << 0.0 << 4 << 4 << 0 << 0;
    QTest::newRow("a negative minimum") << 0.0 << 4 << 4 << -5 << 0;
    QTest::newRow("a bar of 7/8") << 7.0 << 7 << 8 << 0 << 2;
}

void ProjectTest::barsUpToTheEnd()
{
    QFETCH(double, end);
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    QFETCH(int, minimum);
    const auto song =
        projectWithBlock(0.0, end, {.numerator = numerator, .denominator = denominator});
    QTEST(song->barCount(minimum), "expected");
}

void ProjectTest::endIsTheFirstBarLineBehindAllMaterial()
{
    Generator generator(6);
    for (int round = 0; round < 2000; ++round) {
        const auto song = generator.project(3);
        const double bar = song->beatsPerBar();
        const double needed = lastEnd(*song);
        int bars = 0;
        while (bars * bar < needed)
            ++bars;
        QCOMPARE(exact(song->endBeat()), exact(bars * bar));
        QCOMPARE(song->barCount(0), bars);
        QCOMPARE(song->barCount(1000), 1000);
    }
}

void ProjectTest::meterWithoutABarHasNoEnd_data()
{
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");

    QTest::newRow("0/4") << 0 << 4;
    QTest::newRow("4/0") << 4 << 0;
    QTest::newRow("0/0") << 0 << 0;
    QTest::newRow("-4/4") << -4 << 4;
    QTest::newRow("4/-4") << 4 << -4;
    QTest::newRow("-4/0") << -4 << 0;
}

void ProjectTest::meterWithoutABarHasNoEnd()
{
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    const auto song =
        projectWithBlock(0.0, 100.0, {.numerator = numerator, .denominator = denominator});
    song->harmonyTrack = harmony({1, 4, 5});
    QCOMPARE(exact(song->endBeat()), exact(0.0));
    QCOMPARE(song->barCount(8), 8);
}

void ProjectTest::numbersThatAreNoPlaceCountForNothing_data()
{
    QTest::addColumn<double>("startBeat");
    QTest::addColumn<double>("durationBeats");

    QTest::newRow("a start that is no number") << Doubles::quiet_NaN() << 4.0;
    QTest::newRow("a length that is no number") << 4.0 << Doubles::quiet_NaN();
    QTest::newRow("an endless start") << Doubles::infinity() << 4.0;
    QTest::newRow("an endless length") << 4.0 << Doubles::infinity();
    QTest::newRow("a start before all time") << -Doubles::infinity() << 4.0;
    QTest::newRow("endless both ways") << -Doubles::infinity() << Doubles::infinity();
    QTest::newRow("an end beyond all numbers") << Doubles::max() << Doubles::max();
    QTest::newRow("an enormous length before the start") << -1e300 << 4.0;
}

void ProjectTest::numbersThatAreNoPlaceCountForNothing()
{
    QFETCH(double, startBeat);
    QFETCH(double, durationBeats);
    Project song;
    song.tracks = {melodyTrack({melody({}, startBeat, durationBeats), melody({}, 0.0, 6.0),
                                melody({}, startBeat, durationBeats)}),
                   loopTrack({loop("zamba", "bombo", startBeat, durationBeats)})};
    song.audioTracks = {voiceTrack({clip("voz.wav", startBeat, durationBeats)})};
    QCOMPARE(exact(song.endBeat()), exact(8.0));
    QCOMPARE(song.barCount(1), 2);
}

void ProjectTest::enormousNumbersAreHeldInBars_data()
{
    QTest::addColumn<double>("end");
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");

    QTest::newRow("a block of 1e300 beats") << 1e300 << 4 << 4;
    QTest::newRow("the longest block") << Doubles::max() << 3 << 4;
    QTest::newRow("tiny bars") << 100.0 << 1 << Ints::max();
    QTest::newRow("a block of 1e300 beats in tiny bars") << 1e300 << 1 << Ints::max();
}

void ProjectTest::enormousNumbersAreHeldInBars()
{
    QFETCH(double, end);
    QFETCH(int, numerator);
    QFETCH(int, denominator);
    const auto song =
        projectWithBlock(0.0, end, {.numerator = numerator, .denominator = denominator});
    QVERIFY(song->endBeat() >= end * 0.999);
    QCOMPARE(song->barCount(8), Ints::max());
}

void ProjectTest::hostileProjectsHaveAnEnd()
{
    Generator generator(8, Numbers::Hostile);
    for (int round = 0; round < 4000; ++round) {
        const auto song = generator.project(3);
        const double end = song->endBeat();
        QVERIFY2(end >= 0.0, exact(end).constData());
        QVERIFY(isBarLength(song->beatsPerBar()) || !(end > 0.0));
        QVERIFY(song->barCount(8) >= 8);
        QVERIFY(song->barCount(Ints::max()) == Ints::max());
        QVERIFY(song->barCount(Ints::min()) >=
                (isBarLength(song->beatsPerBar()) ? 0 : Ints::min()));
    }
}

void ProjectTest::readingSignalsNothing()
{
    const auto song = Generator(9).project();
    const QSignalSpy changed(song.get(), &Project::changed);
    song->endBeat();
    song->barCount(8);
    song->toJson();
    QCOMPARE(changed.count(), 0);
    emit song->changed();
    QCOMPARE(changed.count(), 1);
}

void ProjectTest::generatorRepeatsItself()
{
    for (const Numbers numbers : {Numbers::Musical, Numbers::AnyFinite}) {
        const auto once = Generator(10, numbers).project();
        const auto again = Generator(10, numbers).project();
        const auto other = Generator(11, numbers).project();
        QCOMPARE(firstDifference(*once, *again), QString());
        QVERIFY(!firstDifference(*once, *other).isEmpty());
    }
}

VELTA_GUILESS_TEST(ProjectTest)

} // namespace ProjectTests

#include "ProjectTest.moc"
