#include "model/Track.h"

#include "model/AudioTrack.h"
#include "support/Exact.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

#include <algorithm>
#include <limits>
#include <tuple>

namespace TrackTests {

using ProjectBuilder::melody;
using ProjectBuilder::note;

namespace {

using Doubles = std::numeric_limits<double>;

/// A block of 4.0 beats whose notes end at these beats.
MelodyBlock blockWithEnds(const QList<double>& ends)
{
    MelodyBlock block;
    for (const double end : ends)
        block.notes.append(note(60, end - 0.5, 0.5));
    return block;
}

} // namespace

class TrackTest : public QObject {
    Q_OBJECT

private slots:
    void newNoteTrack();
    void newBlocks();
    void newVoiceTrack();
    void equalWhenEveryFieldIs();
    void blockFitsItsNotes_data();
    void blockFitsItsNotes();
    void fittingNeverShortens();
    void fittingTouchesNothingElse();
    void fittingPassesOverWhatIsNoNumber();
    void notesSortByStartThenPitch_data();
    void notesSortByStartThenPitch();
    void sortingComparesExactly();
    void equalNotesKeepTheirOrder();
    void sortingOrdersAnyNotes();
    void sortingSurvivesWhatIsNoNumber();
};

void TrackTest::newNoteTrack()
{
    const Track track;
    QVERIFY(track.name.isEmpty() && track.instrumentId.isEmpty() && track.layerId.isEmpty());
    QCOMPARE(track.volume, 0.8F);
    QVERIFY(!track.muted && !track.solo && !track.isAccompaniment);
    QVERIFY(track.humanize.enabled);
    QCOMPARE(track.humanize.intensity, 0.4F);
    QCOMPARE(track.humanize.seed, 1U);
    QVERIFY(track.melodyBlocks.isEmpty() && track.loopBlocks.isEmpty());
}

void TrackTest::newBlocks()
{
    const NoteEvent tone;
    QCOMPARE(tone.pitch, 60);
    QCOMPARE(exact(tone.startBeat), exact(0.0));
    QCOMPARE(exact(tone.durationBeats), exact(1.0));
    QCOMPARE(tone.velocity, 100);

    const MelodyBlock melodyBlock;
    QCOMPARE(exact(melodyBlock.startBeat), exact(0.0));
    QCOMPARE(exact(melodyBlock.durationBeats), exact(4.0));
    QVERIFY(melodyBlock.notes.isEmpty());

    const LoopBlock loopBlock;
    QCOMPARE(exact(loopBlock.startBeat), exact(0.0));
    QCOMPARE(exact(loopBlock.durationBeats), exact(0.0));
    QVERIFY(loopBlock.rhythmId.isEmpty() && loopBlock.layerId.isEmpty());
    QCOMPARE(loopBlock.section, LoopSection::Normal);
    QCOMPARE(loopBlock.variantIndex, 1);
}

void TrackTest::newVoiceTrack()
{
    const AudioTrack track;
    QVERIFY(track.name.isEmpty() && track.clips.isEmpty());
    QCOMPARE(track.volume, 0.8F);
    QVERIFY(!track.muted && !track.solo);

    const AudioClip clip;
    QVERIFY(clip.audioFilePath.isEmpty());
    QCOMPARE(exact(clip.offsetBeats), exact(0.0));
    QCOMPARE(exact(clip.durationBeats), exact(0.0));
    QCOMPARE(clip.gain, 1.0F);
    QVERIFY(clip.fadeInSeconds == 0.0F && clip.fadeOutSeconds == 0.0F);
    QVERIFY(!clip.tune.enabled);
    QCOMPARE(clip.tune.intensity, 0.5F);
}

void TrackTest::equalWhenEveryFieldIs()
{
    Track track;
    QVERIFY(track == Track());
    track.humanize.seed = 2;
    QVERIFY(track != Track());

    AudioClip clip;
    QVERIFY(clip == AudioClip());
    clip.tune.enabled = true;
    QVERIFY(clip != AudioClip());

    MelodyBlock block = melody({note(60, 0.0)});
    QVERIFY(block == melody({note(60, 0.0)}));
    block.notes[0].velocity = 99;
    QVERIFY(block != melody({note(60, 0.0)}));
}

void TrackTest::blockFitsItsNotes_data()
{
    QTest::addColumn<QList<double>>("ends");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("expected");

    QTest::newRow("a note inside changes nothing") << QList<double>{2.5} << 0.0 << 4.0;
    QTest::newRow("a note beyond the end grows the block") << QList<double>{5.25} << 0.0 << 5.25;
    QTest::newRow("the last end counts, not the last note")
        << QList<double>{7.5, 1.0, 6.0} << 0.0 << 7.5;
    QTest::newRow("the minimum counts without notes") << QList<double>{} << 8.0 << 8.0;
    QTest::newRow("the minimum counts beside notes") << QList<double>{5.25} << 8.0 << 8.0;
    QTest::newRow("a minimum below the length changes nothing") << QList<double>{} << 2.0 << 4.0;
    QTest::newRow("a negative minimum changes nothing") << QList<double>{} << -9.0 << 4.0;
    QTest::newRow("a note before the block changes nothing") << QList<double>{-3.0} << 0.0 << 4.0;
}

void TrackTest::blockFitsItsNotes()
{
    QFETCH(QList<double>, ends);
    QFETCH(double, minimum);
    QFETCH(double, expected);
    MelodyBlock block = blockWithEnds(ends);
    block.fitDurationToNotes(minimum);
    QCOMPARE(exact(block.durationBeats), exact(expected));
}

void TrackTest::fittingNeverShortens()
{
    MelodyBlock block = blockWithEnds({9.5});
    block.fitDurationToNotes(0.0);
    block.notes.clear();
    block.fitDurationToNotes(0.0);
    QCOMPARE(exact(block.durationBeats), exact(9.5));
}

void TrackTest::fittingTouchesNothingElse()
{
    MelodyBlock block = melody({note(72, 9.0), note(50, 1.0)}, 16.0);
    const QList<NoteEvent> notes = block.notes;
    block.fitDurationToNotes(0.0);
    QVERIFY(block.notes == notes);
    QCOMPARE(exact(block.startBeat), exact(16.0));
    QCOMPARE(exact(block.durationBeats), exact(10.0));
}

void TrackTest::fittingPassesOverWhatIsNoNumber()
{
    MelodyBlock block = blockWithEnds({Doubles::quiet_NaN(), 6.0, Doubles::quiet_NaN()});
    block.notes.append(note(60, 1.0, Doubles::quiet_NaN()));
    block.fitDurationToNotes(0.0);
    QCOMPARE(exact(block.durationBeats), exact(6.0));
    block.fitDurationToNotes(Doubles::quiet_NaN());
    QCOMPARE(exact(block.durationBeats), exact(6.0));
}

void TrackTest::notesSortByStartThenPitch_data()
{
    QTest::addColumn<QList<double>>("starts");
    QTest::addColumn<QList<int>>("pitches");
    QTest::addColumn<QList<int>>("order");

    const auto row = [](const char* name, const QList<double>& starts, const QList<int>& pitches,
                        const QList<int>& order) {
        QTest::newRow(name) << starts << pitches << order;
    };
    row("no notes", {}, {}, {});
    row("by start", {2.0, 0.0, 1.0}, {50, 60, 70}, {1, 2, 0});
    row("the lower of two at one start first", {1.0, 1.0}, {64, 60}, {1, 0});
    row("start before pitch", {1.0, 0.5}, {10, 120}, {1, 0});
    row("notes before the block", {0.0, -1.0, -0.5}, {60, 60, 60}, {1, 2, 0});
    row("pitches out of range", {0.0, 0.0, 0.0}, {200, -5, 60}, {1, 2, 0});
}

void TrackTest::notesSortByStartThenPitch()
{
    QFETCH(QList<double>, starts);
    QFETCH(QList<int>, pitches);
    QFETCH(QList<int>, order);
    MelodyBlock block;
    for (qsizetype i = 0; i < starts.size(); ++i)
        block.notes.append(note(pitches[i], starts[i], 1.0, static_cast<int>(i)));
    block.sortNotes();
    QList<int> sorted;
    for (const NoteEvent& event : block.notes)
        sorted.append(event.velocity);
    QCOMPARE(sorted, order);
}

void TrackTest::sortingComparesExactly()
{
    // Less than the tolerance of other comparisons apart, and still the earlier goes first.
    MelodyBlock block = melody({note(40, 1.0 + 1e-12), note(80, 1.0)});
    block.sortNotes();
    QCOMPARE(block.notes[0].pitch, 80);
    QCOMPARE(block.notes[1].pitch, 40);
}

void TrackTest::equalNotesKeepTheirOrder()
{
    MelodyBlock block;
    for (int i = 0; i < 200; ++i)
        block.notes.append(note(60 - i % 2, 1.0, 1.0, i));
    block.sortNotes();
    for (int i = 0; i < 200; ++i)
        QCOMPARE(block.notes[i].velocity, i < 100 ? 2 * i + 1 : 2 * (i - 100));
}

void TrackTest::sortingOrdersAnyNotes()
{
    ProjectBuilder::Generator generator(12, ProjectBuilder::Numbers::AnyFinite);
    for (int round = 0; round < 500; ++round) {
        MelodyBlock block;
        for (int i = 0; i < 20; ++i)
            block.notes.append(generator.note());
        const QList<NoteEvent> before = block.notes;
        block.sortNotes();
        QVERIFY(std::is_permutation(before.begin(), before.end(), block.notes.begin(),
                                    block.notes.end()));
        for (int i = 1; i < 20; ++i) {
            const NoteEvent& a = block.notes[i - 1];
            const NoteEvent& b = block.notes[i];
            QVERIFY(a.startBeat < b.startBeat ||
                    (!(b.startBeat < a.startBeat) && a.pitch <= b.pitch));
        }
        const QList<NoteEvent> once = block.notes;
        block.sortNotes();
        QVERIFY(block.notes == once);
    }
}

void TrackTest::sortingSurvivesWhatIsNoNumber()
{
    ProjectBuilder::Generator generator(14, ProjectBuilder::Numbers::Hostile);
    for (int round = 0; round < 500; ++round) {
        MelodyBlock block;
        for (int i = 0; i < 60; ++i) {
            block.notes.append(generator.note());
            block.notes.last().velocity = i;
        }
        block.sortNotes();
        block.fitDurationToNotes(0.0);
        QVERIFY(block.durationBeats >= 4.0);
        QSet<int> kept;
        for (const NoteEvent& event : block.notes)
            kept.insert(event.velocity);
        QCOMPARE(kept.size(), 60);
    }
}

VELTA_GUILESS_TEST(TrackTest)

} // namespace TrackTests

#include "TrackTest.moc"
