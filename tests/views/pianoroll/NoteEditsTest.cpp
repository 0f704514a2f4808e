#include "views/pianoroll/NoteEdits.h"

#include "model/Track.h"
#include "support/ProjectBuilder.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"

#include <QTest>

#include <cmath>
#include <limits>

namespace NoteEditsTests {

using namespace ProjectBuilder;

namespace {

using Limits = std::numeric_limits<double>;

constexpr int kMostInt = std::numeric_limits<int>::max();
constexpr int kLeastInt = std::numeric_limits<int>::min();

/// Four notes of a block that starts at beat 8, in order.
MelodyBlock tune()
{
    return melody({note(60, 0.0, 1.0, 90), note(64, 1.0, 0.5, 80), note(67, 1.5, 0.5, 70),
                   note(72, 2.0, 2.0, 60)},
                  8.0, 16.0);
}

QList<int> everyIndex(const MelodyBlock& block)
{
    QList<int> indices;
    for (int i = 0; i < block.notes.size(); ++i)
        indices.append(i);
    return indices;
}

/// The only note of a block after a drag that began on it.
template <typename Drag>
NoteEvent afterDrag(const NoteEvent& original, Drag drag)
{
    MelodyBlock block = melody({original});
    drag(block, NoteEdits::dragged(block, {0}));
    return block.notes.value(0);
}

} // namespace

class NoteEditsTest : public QObject {
    Q_OBJECT

private slots:
    void snapping_data();
    void snapping();

    void finishingSortsAndGrows();
    void finishingNeverShortens();
    void finishingLeavesAtLeastABeat();

    void adding_data();
    void adding();
    void addingAppendsWithoutSorting();
    void addingGrowsTheBlock();
    void drawing_data();
    void drawing();

    void dragTakesTheNotesAsTheyAre();
    void moving_data();
    void moving();
    void notesAtTheEdgeBunchTogether();
    void movingGoesByWhereTheNotesWereTaken();
    void movingKeepsLengthVelocityAndOrder();
    void resizing_data();
    void resizing();
    void resizingIsPerNote();

    void nudging_data();
    void nudging();

    void theNextInTimeIsFound_data();
    void theNextInTimeIsFound();
    void endsAreThoseOfTheSong();
    void asManyPlacesAsNotesOfAValue();

    void removing_data();
    void removing();
    void deletingAllNotesLeavesTheBlockWithItsLength();
    void removingThousandsLeavesTheOthersInOrder();

    void copying_data();
    void copying();
    void copyingLeavesTheBlockAlone();
    void pasting_data();
    void pasting();
    void pastingNothingDoesNothing();
    void pastingSortsAndGrows();
    void pastingInAnotherBlock();

    void duplicating_data();
    void duplicating();
    void duplicatingNothingDoesNothing();
    void duplicateOfAWholeNumberOfStepsFollowsAtOnce();
    void duplicateNeverGoesBack_data();
    void duplicateNeverGoesBack();

    void recording_data();
    void recording();
    void recordingSortsAndGrows();

    void letters_data();
    void letters();

    void staleIndicesDoNothing_data();
    void staleIndicesDoNothing();
    void absurdNumbersStayHarmless();
    void hostileBlocksStayHarmless();
};

// ---- The grid and the end of an edit --------------------------------------------------------

void NoteEditsTest::snapping_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("step");
    QTest::addColumn<double>("expected");

    QTest::newRow("on the grid") << 3.5 << 0.5 << 3.5;
    QTest::newRow("below half a step") << 3.7 << 0.5 << 3.5;
    QTest::newRow("half a step") << 3.75 << 0.5 << 4.0;
    QTest::newRow("quarter steps") << 3.7 << 0.25 << 3.75;
    QTest::newRow("compound pulse") << 4.0 << 1.5 << 4.5;
    QTest::newRow("before the song") << -0.3 << 0.5 << -0.5;
}

void NoteEditsTest::snapping()
{
    QFETCH(double, beat);
    QFETCH(double, step);
    QTEST(NoteEdits::snapped(beat, step), "expected");
}

void NoteEditsTest::finishingSortsAndGrows()
{
    MelodyBlock block = melody({note(72, 6.0, 1.5), note(64, 1.0), note(60, 1.0), note(48, 0.5)});
    NoteEdits::finish(block);
    const QList<NoteEvent> expected{note(48, 0.5), note(60, 1.0), note(64, 1.0),
                                    note(72, 6.0, 1.5)};
    QCOMPARE(block.notes, expected);
    QCOMPARE(block.durationBeats, 7.5);
}

void NoteEditsTest::finishingNeverShortens()
{
    MelodyBlock block = melody({note(60, 0.0)}, 0.0, 32.0);
    NoteEdits::finish(block);
    QCOMPARE(block.durationBeats, 32.0);
}

void NoteEditsTest::finishingLeavesAtLeastABeat()
{
    MelodyBlock block = melody({note(60, 0.0, 0.25)}, 0.0, 0.0);
    NoteEdits::finish(block);
    QCOMPARE(block.durationBeats, 1.0);
}

// ---- Adding and drawing ---------------------------------------------------------------------

void NoteEditsTest::adding_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<double>("duration");
    QTest::addColumn<NoteEvent>("expected");

    QTest::newRow("counts from the block") << 10.5 << 60 << 0.5 << note(60, 2.5, 0.5);
    QTest::newRow("at the block's start") << 8.0 << 60 << 0.5 << note(60, 0.0, 0.5);
    QTest::newRow("before the block") << 3.0 << 60 << 0.5 << note(60, 0.0, 0.5);
    QTest::newRow("far behind the block") << 100.0 << 72 << 0.25 << note(72, 92.0, 0.25);
    QTest::newRow("pitch outside the rows stays") << 9.0 << 120 << 1.0 << note(120, 1.0);
}

void NoteEditsTest::adding()
{
    QFETCH(double, beat);
    QFETCH(int, pitch);
    QFETCH(double, duration);
    MelodyBlock block = melody({}, 8.0);
    NoteEdits::add(block, beat, pitch, duration);
    QCOMPARE(block.notes.size(), 1);
    QTEST(block.notes.constFirst(), "expected");
}

void NoteEditsTest::addingAppendsWithoutSorting()
{
    MelodyBlock block = tune();
    NoteEdits::add(block, 8.0, 48, 0.5);
    QCOMPARE(block.notes.first(4), tune().notes);
    QCOMPARE(block.notes.constLast(), note(48, 0.0, 0.5));
}

void NoteEditsTest::addingGrowsTheBlock()
{
    MelodyBlock block = tune();
    NoteEdits::add(block, 23.5, 48, 1.0);
    QCOMPARE(block.durationBeats, 16.5);
    NoteEdits::add(block, 8.0, 48, 1.0);
    QCOMPARE(block.durationBeats, 16.5);
    MelodyBlock bare = melody({}, 0.0, 0.0);
    NoteEdits::add(bare, 0.0, 48, 0.25);
    QCOMPARE(bare.durationBeats, 1.0);
}

void NoteEditsTest::drawing_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("step");
    QTest::addColumn<double>("expected");

    QTest::newRow("within the first step") << 2.0 << 2.1 << 0.5 << 0.5;
    QTest::newRow("at the start") << 2.0 << 2.0 << 0.5 << 0.5;
    QTest::newRow("at the end of a step") << 2.0 << 3.0 << 0.5 << 1.0;
    QTest::newRow("just into the next step") << 2.0 << 3.01 << 0.5 << 1.5;
    QTest::newRow("left of the start") << 2.0 << 0.3 << 0.5 << 0.5;
    QTest::newRow("compound pulse") << 3.0 << 5.0 << 1.5 << 3.0;
}

void NoteEditsTest::drawing()
{
    QFETCH(double, start);
    QFETCH(double, beat);
    QFETCH(double, step);
    QTEST(NoteEdits::drawnLength(start, beat, step), "expected");
}

// ---- Drags ----------------------------------------------------------------------------------

void NoteEditsTest::dragTakesTheNotesAsTheyAre()
{
    const QList<DraggedNote> expected{{2, 67, 1.5, 0.5, 70}, {0, 60, 0.0, 1.0, 90}};
    QCOMPARE(NoteEdits::dragged(tune(), {2, 0}), expected);
    QVERIFY(NoteEdits::dragged(tune(), {}).isEmpty());
}

void NoteEditsTest::moving_data()
{
    QTest::addColumn<NoteEvent>("original");
    QTest::addColumn<double>("beats");
    QTest::addColumn<int>("pitches");
    QTest::addColumn<NoteEvent>("expected");

    QTest::newRow("not at all") << note(60, 2.0) << 0.0 << 0 << note(60, 2.0);
    QTest::newRow("later and higher") << note(60, 2.0) << 1.5 << 3 << note(63, 3.5);
    QTest::newRow("earlier and lower") << note(60, 2.0) << -0.5 << -12 << note(48, 1.5);
    QTest::newRow("past pitch 96 stays at 96") << note(94, 2.0) << 0.0 << 5 << note(96, 2.0);
    QTest::newRow("past pitch 24 stays at 24") << note(26, 2.0) << 0.0 << -5 << note(24, 2.0);
    QTest::newRow("past beat 0 stays at 0") << note(60, 2.0) << -3.0 << 0 << note(60, 0.0);
    QTest::newRow("offset from the grid stays") << note(60, 2.3) << 0.5 << 0 << note(60, 2.8);
    QTest::newRow("pitch outside the rows comes in") << note(120, 2.0) << 1.0 << 0 << note(96, 3.0);
    QTest::newRow("start before the block comes in") << note(60, -4.0) << 1.0 << 0 << note(60, 0.0);
    QTest::newRow("as far up as there is")
        << note(kMostInt, 1.0) << 0.0 << kMostInt << note(96, 1.0);
    QTest::newRow("as far down as there is")
        << note(kLeastInt, 1.0) << 0.0 << kLeastInt << note(24, 1.0);
}

void NoteEditsTest::moving()
{
    QFETCH(NoteEvent, original);
    QFETCH(double, beats);
    QFETCH(int, pitches);
    const NoteEvent moved = afterDrag(original, [&](MelodyBlock& block, const auto& notes) {
        NoteEdits::move(block, notes, beats, pitches);
    });
    QTEST(moved, "expected");
}

void NoteEditsTest::notesAtTheEdgeBunchTogether()
{
    MelodyBlock block = melody({note(90, 0.5), note(95, 1.0), note(96, 3.0)});
    NoteEdits::move(block, NoteEdits::dragged(block, {0, 1, 2}), -2.0, 4);
    const QList<NoteEvent> expected{note(94, 0.0), note(96, 0.0), note(96, 1.0)};
    QCOMPARE(block.notes, expected);
}

void NoteEditsTest::movingGoesByWhereTheNotesWereTaken()
{
    MelodyBlock block = tune();
    const QList<DraggedNote> taken = NoteEdits::dragged(block, {0, 3});
    NoteEdits::move(block, taken, -40.0, 90);
    NoteEdits::move(block, taken, 2.0, -1);
    NoteEdits::move(block, taken, 0.0, 0);
    QCOMPARE(block, tune());
}

void NoteEditsTest::movingKeepsLengthVelocityAndOrder()
{
    MelodyBlock block = tune();
    NoteEdits::move(block, NoteEdits::dragged(block, {0}), 5.0, 2);
    QList<NoteEvent> expected = tune().notes;
    expected[0] = note(62, 5.0, 1.0, 90);
    QCOMPARE(block.notes, expected);
    QCOMPARE(block.durationBeats, 16.0);
}

void NoteEditsTest::resizing_data()
{
    QTest::addColumn<double>("length");
    QTest::addColumn<double>("beats");
    QTest::addColumn<double>("step");
    QTest::addColumn<double>("expected");

    QTest::newRow("longer") << 1.0 << 0.5 << 0.5 << 1.5;
    QTest::newRow("shorter") << 2.0 << -0.5 << 0.5 << 1.5;
    QTest::newRow("not shorter than a step") << 2.0 << -5.0 << 0.5 << 0.5;
    QTest::newRow("less than half a step rounds all the same") << 0.3 << 0.0 << 0.25 << 0.25;
    QTest::newRow("onto the grid upward") << 0.9 << 0.5 << 0.5 << 1.5;
    QTest::newRow("compound pulse") << 1.0 << 1.5 << 1.5 << 3.0;
    QTest::newRow("length of 0 becomes a step") << 0.0 << 0.0 << 0.5 << 0.5;
}

void NoteEditsTest::resizing()
{
    QFETCH(double, length);
    QFETCH(double, beats);
    QFETCH(double, step);
    QFETCH(double, expected);
    const NoteEvent original = note(60, 1.3, length, 77);
    const NoteEvent resized = afterDrag(original, [&](MelodyBlock& block, const auto& notes) {
        NoteEdits::resize(block, notes, beats, step);
    });
    QCOMPARE(resized, note(60, 1.3, expected, 77));
}

void NoteEditsTest::resizingIsPerNote()
{
    MelodyBlock block = tune();
    NoteEdits::resize(block, NoteEdits::dragged(block, {3, 1}), -1.0, 0.5);
    QList<NoteEvent> expected = tune().notes;
    expected[1].durationBeats = 0.5;
    expected[3].durationBeats = 1.0;
    QCOMPARE(block.notes, expected);
}

// ---- Nudges ---------------------------------------------------------------------------------

void NoteEditsTest::nudging_data()
{
    QTest::addColumn<QList<NoteEvent>>("notes");
    QTest::addColumn<double>("beats");
    QTest::addColumn<int>("pitches");
    QTest::addColumn<QList<NoteEvent>>("moved");
    using Notes = QList<NoteEvent>;
    const Notes pair{note(60, 0.5), note(90, 2.0)};
    QTest::newRow("by what is asked")
        << pair << 0.25 << -2 << Notes{note(58, 0.75), note(88, 2.25)};
    QTest::newRow("to the start of the block, together")
        << pair << -1.0 << 0 << Notes{note(60, 0.0), note(90, 1.5)};
    QTest::newRow("to the highest row, together")
        << pair << 0.0 << 12 << Notes{note(66, 0.5), note(96, 2.0)};
    QTest::newRow("to the lowest row, together")
        << pair << 0.0 << -50 << Notes{note(24, 0.5), note(54, 2.0)};
    QTest::newRow("from edge to edge")
        << Notes{note(24, 0.0)} << 0.0 << 100 << Notes{note(96, 0.0)};
    QTest::newRow("no further out than it is")
        << Notes{note(60, -1.0), note(60, 1.0)} << -0.5 << 0 << Notes{note(60, 0.0), note(60, 1.0)};
}

void NoteEditsTest::nudging()
{
    QFETCH(QList<NoteEvent>, notes);
    QFETCH(double, beats);
    QFETCH(int, pitches);
    MelodyBlock block = melody(notes + QList{note(50, 3.0)}, 8.0, 16.0);
    NoteEdits::nudge(block, {0, int(notes.size()) - 1, 99}, beats, pitches);
    QFETCH(QList<NoteEvent>, moved);
    QCOMPARE(block.notes, moved + QList{note(50, 3.0)});
}

// ---- Places ---------------------------------------------------------------------------------

void NoteEditsTest::theNextInTimeIsFound_data()
{
    QTest::addColumn<QList<int>>("of");
    QTest::addColumn<int>("direction");
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("found");
    using Indices = QList<int>;
    QTest::newRow("behind a note") << Indices{0} << 1 << 0.0 << 3;
    QTest::newRow("before a note") << Indices{0} << -1 << 0.0 << 2;
    QTest::newRow("the higher of one start") << Indices{1} << 1 << 0.0 << 2;
    QTest::newRow("the last itself") << Indices{3} << 1 << 0.0 << 3;
    QTest::newRow("the first itself") << Indices{1} << -1 << 0.0 << 1;
    QTest::newRow("behind the last of some") << Indices{0, 1} << 1 << 0.0 << 3;
    QTest::newRow("before the first of some") << Indices{0, 2} << -1 << 0.0 << 1;
    QTest::newRow("the one nearest to a beat") << Indices{} << 1 << 2.9 << 0;
    QTest::newRow("the earlier of two equally near") << Indices{} << 1 << 3.0 << 0;
    QTest::newRow("the nearest, for notes that are not there") << Indices{99, -1} << 1 << 3.5 << 3;
    QTest::newRow("not one without a place") << Indices{3} << -1 << 0.0 << 0;
}

void NoteEditsTest::theNextInTimeIsFound()
{
    QFETCH(QList<int>, of);
    QFETCH(int, direction);
    QFETCH(double, beat);
    const MelodyBlock block = melody(
        {note(64, 2.0), note(60, 0.0), note(67, 0.0), note(60, 4.0), note(60, Limits::infinity())});
    QTEST(NoteEdits::neighbour(block, of, direction, beat), "found");
    QCOMPARE(NoteEdits::neighbour(melody({}), of, direction, beat), -1);
}

void NoteEditsTest::endsAreThoseOfTheSong()
{
    const MelodyBlock block = tune();
    QCOMPARE(NoteEdits::endOf(block, {0}), 9.0);
    QCOMPARE(NoteEdits::endOf(block, {3, 0}), 12.0);
    QCOMPARE(NoteEdits::endOf(block, {99}), std::nullopt);
}

void NoteEditsTest::asManyPlacesAsNotesOfAValue()
{
    const NoteEvent twice = note(60, 1.0);
    const NoteEvent once = note(64, 1.0);
    const MelodyBlock block = melody({twice, once, twice});
    QCOMPARE(NoteEdits::placesOf(block, {twice}), QList{0});
    QCOMPARE(NoteEdits::placesOf(block, {twice, twice}), (QList{0, 2}));
    QCOMPARE(NoteEdits::placesOf(block, {once, twice}), (QList{0, 1}));
    QCOMPARE(NoteEdits::placesOf(block, {note(62, 1.0)}), QList<int>());
}

// ---- Removing -------------------------------------------------------------------------------

void NoteEditsTest::removing_data()
{
    QTest::addColumn<QList<int>>("indices");
    QTest::addColumn<QList<int>>("left");

    QTest::newRow("none") << QList<int>{} << QList<int>{60, 64, 67, 72};
    QTest::newRow("one") << QList<int>{1} << QList<int>{60, 67, 72};
    QTest::newRow("first and last") << QList<int>{0, 3} << QList<int>{64, 67};
    QTest::newRow("in any order") << QList<int>{2, 0, 3} << QList<int>{64};
    QTest::newRow("one named twice") << QList<int>{1, 1} << QList<int>{60, 67, 72};
    QTest::newRow("with stale ones between")
        << QList<int>{-1, 2, 4, kMostInt, kLeastInt} << QList<int>{60, 64, 72};
    QTest::newRow("all") << QList<int>{3, 2, 1, 0} << QList<int>{};
}

void NoteEditsTest::removing()
{
    QFETCH(QList<int>, indices);
    MelodyBlock block = tune();
    NoteEdits::remove(block, indices);
    QList<int> left;
    for (const NoteEvent& note : block.notes)
        left.append(note.pitch);
    QTEST(left, "left");
}

void NoteEditsTest::deletingAllNotesLeavesTheBlockWithItsLength()
{
    MelodyBlock block = tune();
    NoteEdits::remove(block, everyIndex(block));
    QCOMPARE(block, melody({}, 8.0, 16.0));
}

void NoteEditsTest::removingThousandsLeavesTheOthersInOrder()
{
    MelodyBlock block = melody({});
    QList<NoteEvent> expected;
    QList<int> even;
    for (int i = 0; i < 60000; ++i) {
        block.notes.append(note(60 + i % 12, i * 0.25));
        if (i % 2 == 0)
            even.append(i);
        else
            expected.append(block.notes.constLast());
    }
    NoteEdits::remove(block, even);
    QCOMPARE(block.notes, expected);
}

// ---- Copying and pasting --------------------------------------------------------------------

void NoteEditsTest::copying_data()
{
    QTest::addColumn<QList<int>>("indices");
    QTest::addColumn<QList<NoteEvent>>("expected");

    QTest::newRow("none") << QList<int>{} << QList<NoteEvent>{};
    QTest::newRow("one starts at 0") << QList<int>{2} << QList<NoteEvent>{note(67, 0.0, 0.5, 70)};
    QTest::newRow("the earliest starts at 0")
        << QList<int>{1, 3} << QList<NoteEvent>{note(64, 0.0, 0.5, 80), note(72, 1.0, 2.0, 60)};
    QTest::newRow("in the order of the selection")
        << QList<int>{3, 1} << QList<NoteEvent>{note(72, 1.0, 2.0, 60), note(64, 0.0, 0.5, 80)};
}

void NoteEditsTest::copying()
{
    QFETCH(QList<int>, indices);
    QTEST(NoteEdits::copied(tune(), indices), "expected");
}

void NoteEditsTest::copyingLeavesTheBlockAlone()
{
    const MelodyBlock block = tune();
    NoteEdits::copied(block, everyIndex(block));
    QCOMPARE(block, tune());
}

void NoteEditsTest::pasting_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("step");
    QTest::addColumn<double>("start");

    QTest::newRow("counts from the block") << 12.0 << 0.5 << 4.0;
    QTest::newRow("at the nearest step") << 12.3 << 0.5 << 4.5;
    QTest::newRow("at the nearest quarter step") << 12.3 << 0.25 << 4.25;
    QTest::newRow("before the block") << 2.0 << 0.5 << 0.0;
    QTest::newRow("compound pulse") << 13.0 << 1.5 << 4.5;
}

void NoteEditsTest::pasting()
{
    QFETCH(double, beat);
    QFETCH(double, step);
    QFETCH(double, start);
    MelodyBlock block = melody({}, 8.0, 16.0);
    NoteEdits::paste(block, {note(60, 0.0, 1.0, 90), note(64, 0.75, 0.5, 80)}, beat, step);
    const QList<NoteEvent> expected{note(60, start, 1.0, 90), note(64, start + 0.75, 0.5, 80)};
    QCOMPARE(block, melody(expected, 8.0, 16.0));
}

void NoteEditsTest::pastingNothingDoesNothing()
{
    const MelodyBlock original = melody({note(64, 3.0), note(60, 0.0)}, 8.0, 0.5);
    MelodyBlock block = original;
    NoteEdits::paste(block, {}, 12.0, 0.5);
    QCOMPARE(block, original);
}

void NoteEditsTest::pastingSortsAndGrows()
{
    MelodyBlock block = tune();
    NoteEdits::paste(block, {note(50, 0.0), note(51, 15.5)}, 9.0, 0.5);
    QCOMPARE(block.notes.size(), 6);
    QCOMPARE(block.notes[1], note(50, 1.0));
    QCOMPARE(block.notes[5], note(51, 16.5));
    QCOMPARE(block.durationBeats, 17.5);
}

void NoteEditsTest::pastingInAnotherBlock()
{
    MelodyBlock other = melody({note(40, 0.0)}, 100.0);
    NoteEdits::paste(other, NoteEdits::copied(tune(), {1, 2}), 102.0, 0.5);
    const QList<NoteEvent> expected{note(40, 0.0), note(64, 2.0, 0.5, 80), note(67, 2.5, 0.5, 70)};
    QCOMPARE(other.notes, expected);
}

// ---- Duplicating ----------------------------------------------------------------------------

void NoteEditsTest::duplicating_data()
{
    QTest::addColumn<QList<NoteEvent>>("notes");
    QTest::addColumn<double>("step");
    QTest::addColumn<double>("shift");

    QTest::newRow("a note of a step") << QList{note(60, 1.0, 0.5)} << 0.5 << 0.5;
    QTest::newRow("on the next multiple of the step")
        << QList{note(60, 1.0, 0.5), note(64, 1.5, 0.3)} << 0.5 << 1.0;
    QTest::newRow("a long note that begins first reaches furthest")
        << QList{note(60, 1.0, 3.0), note(64, 2.0, 0.5)} << 0.5 << 3.0;
    QTest::newRow("counts from the start of the selection")
        << QList{note(60, 1.2, 0.6)} << 0.5 << 1.0;
    QTest::newRow("compound pulse") << QList{note(60, 0.0, 2.0)} << 1.5 << 3.0;
}

void NoteEditsTest::duplicating()
{
    QFETCH(QList<NoteEvent>, notes);
    QFETCH(double, step);
    QFETCH(double, shift);
    MelodyBlock block = melody(notes, 8.0, 1.0);
    MelodyBlock expected = block;
    for (NoteEvent copy : notes) {
        copy.startBeat += shift;
        expected.notes.append(copy);
    }
    expected.sortNotes();
    expected.fitDurationToNotes(1.0);
    NoteEdits::duplicate(block, everyIndex(block), step);
    QCOMPARE(block, expected);
}

void NoteEditsTest::duplicatingNothingDoesNothing()
{
    const MelodyBlock original = melody({note(64, 3.0), note(60, 0.0)}, 8.0, 0.5);
    MelodyBlock block = original;
    NoteEdits::duplicate(block, {}, 0.5);
    QCOMPARE(block, original);
}

// 0.1 + 0.2 ends at a little more than 0.3, and there are many such starts off the grid.
void NoteEditsTest::duplicateOfAWholeNumberOfStepsFollowsAtOnce()
{
    SeededRandom random(11);
    for (int i = 0; i < 20000; ++i) {
        const double start = random.between(0.0, 2000.0) / 7.0;
        const int steps = random.between(1, 40);
        MelodyBlock block = melody({note(60, start, steps * 0.25)});
        NoteEdits::duplicate(block, {0}, 0.25);
        QCOMPARE(block.notes.size(), 2);
        QVERIFY(std::abs(block.notes[1].startBeat - start - steps * 0.25) < 1e-9);
    }
}

void NoteEditsTest::duplicateNeverGoesBack_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("length");
    QTest::newRow("no length") << 3.0 << 0.0;
    QTest::newRow("less than none") << 3.0 << -2.0;
    QTest::newRow("no end") << 3.0 << Limits::quiet_NaN();
    QTest::newRow("start beyond all bounds") << Limits::infinity() << 1.0;
}

void NoteEditsTest::duplicateNeverGoesBack()
{
    QFETCH(double, start);
    QFETCH(double, length);
    MelodyBlock block = melody({note(60, start, length)});
    NoteEdits::duplicate(block, {0}, 0.5);
    QCOMPARE(block.notes.size(), 2);
    QCOMPARE(block.notes[0].startBeat, start);
    QCOMPARE(block.notes[1].startBeat, start);
}

// ---- Live notes -----------------------------------------------------------------------------

void NoteEditsTest::recording_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("step");
    QTest::addColumn<NoteEvent>("expected");

    QTest::newRow("counts from the block") << 10.0 << 11.0 << 0.5 << note(60, 2.0, 1.0);
    QTest::newRow("nearest whole steps") << 10.0 << 11.3 << 0.5 << note(60, 2.0, 1.5);
    QTest::newRow("at least a step") << 10.0 << 10.1 << 0.5 << note(60, 2.0, 0.5);
    QTest::newRow("released after a jump back") << 10.0 << 4.0 << 0.5 << note(60, 2.0, 0.5);
    QTest::newRow("before the block lands at its start") << 5.0 << 6.0 << 0.5 << note(60, 0.0, 1.0);
    QTest::newRow("compound pulse") << 9.0 << 12.5 << 1.5 << note(60, 1.0, 3.0);
}

void NoteEditsTest::recording()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(double, step);
    QFETCH(NoteEvent, expected);
    MelodyBlock block = melody({}, 8.0);
    NoteEdits::record(block, 60, start, end, step);
    QCOMPARE(block.notes, QList{expected});
}

void NoteEditsTest::recordingSortsAndGrows()
{
    MelodyBlock block = tune();
    NoteEdits::record(block, 50, 9.0, 10.0, 0.5);
    NoteEdits::record(block, 51, 23.0, 26.0, 0.5);
    QCOMPARE(block.notes.size(), 6);
    QCOMPARE(block.notes[1], note(50, 1.0));
    QCOMPARE(block.notes[5], note(51, 15.0, 3.0));
    QCOMPARE(block.durationBeats, 18.0);
}

// ---- Letters --------------------------------------------------------------------------------

void NoteEditsTest::letters_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("sharp");
    QTest::addColumn<int>("octave");
    QTest::addColumn<int>("pitch");

    const QList<std::pair<Qt::Key, int>> fourth{{Qt::Key_C, 60}, {Qt::Key_D, 62}, {Qt::Key_E, 64},
                                                {Qt::Key_F, 65}, {Qt::Key_G, 67}, {Qt::Key_A, 69},
                                                {Qt::Key_B, 71}};
    for (const auto& [key, pitch] : fourth) {
        const char letter = static_cast<char>(key);
        QTest::addRow("%c", letter) << int{key} << false << 4 << pitch;
        QTest::addRow("%c sharp", letter) << int{key} << true << 4 << pitch + 1;
        QTest::addRow("%c of octave 1", letter) << int{key} << false << 1 << pitch - 36;
        QTest::addRow("%c of octave 7", letter) << int{key} << false << 7 << pitch + 36;
    }
    QTest::newRow("H is none") << int{Qt::Key_H} << false << 4 << -1;
    QTest::newRow("X is none") << int{Qt::Key_X} << true << 4 << -1;
    QTest::newRow("the key before A") << Qt::Key_A - 1 << false << 4 << -1;
    QTest::newRow("unknown key") << int{Qt::Key_unknown} << false << 4 << -1;
    QTest::newRow("no key") << kLeastInt << false << 4 << -1;
    QTest::newRow("far above") << int{Qt::Key_C} << true << kMostInt << 127;
    QTest::newRow("far below") << int{Qt::Key_C} << true << kLeastInt << 0;
    QTest::newRow("the highest note") << int{Qt::Key_G} << false << 9 << 127;
    QTest::newRow("above the highest note") << int{Qt::Key_G} << true << 9 << 127;
}

void NoteEditsTest::letters()
{
    QFETCH(int, key);
    QFETCH(bool, sharp);
    QFETCH(int, octave);
    QTEST(NoteEdits::keyLetterToPitch(key, sharp, octave), "pitch");
}

// ---- Bad input ------------------------------------------------------------------------------

void NoteEditsTest::staleIndicesDoNothing_data()
{
    QTest::addColumn<int>("index");
    for (const int index : {-1, 4, 5, 100000, kMostInt, kLeastInt})
        QTest::addRow("%d", index) << index;
}

void NoteEditsTest::staleIndicesDoNothing()
{
    QFETCH(int, index);
    MelodyBlock block = tune();
    QVERIFY(NoteEdits::dragged(block, {index}).isEmpty());
    QVERIFY(NoteEdits::copied(block, {index}).isEmpty());
    NoteEdits::move(block, {DraggedNote{.index = index}}, 1.0, 1);
    NoteEdits::resize(block, {DraggedNote{.index = index}}, 1.0, 0.5);
    NoteEdits::duplicate(block, {index}, 0.5);
    NoteEdits::remove(block, {index});
    QCOMPARE(block, tune());
}

void NoteEditsTest::absurdNumbersStayHarmless()
{
    const QList<double> absurd{0.0,
                               -0.0,
                               1e300,
                               -1e300,
                               Limits::infinity(),
                               -Limits::infinity(),
                               1e-300,
                               -1.0,
                               1e9,
                               Limits::quiet_NaN()};
    for (const double start : absurd) {
        for (const double way : absurd) {
            MelodyBlock block = melody({note(60, start, way), note(64, way, start)}, start, way);
            NoteEdits::move(block, NoteEdits::dragged(block, {0, 1}), way, 0);
            NoteEdits::resize(block, NoteEdits::dragged(block, {0, 1}), start, 0.5);
            for (const NoteEvent& note : block.notes) {
                QVERIFY(note.startBeat >= 0.0);
                QVERIFY(note.durationBeats >= 0.5);
            }
            block.notes = {note(60, start, way), note(64, way, start)};
            for (const NoteEvent& copy : NoteEdits::copied(block, {0, 1}))
                QVERIFY(copy.startBeat >= 0.0);
            block.notes.clear();
            NoteEdits::add(block, way, 60, 1.0);
            NoteEdits::record(block, 60, start, way, 0.5);
            NoteEdits::paste(block, {note(60, 0.0)}, way, 0.5);
            for (const NoteEvent& note : block.notes) {
                QVERIFY(note.startBeat >= 0.0);
                QVERIFY(note.durationBeats >= 0.5);
            }
            QVERIFY(NoteEdits::drawnLength(start, way, 0.25) >= 0.25);
        }
    }
}

void NoteEditsTest::hostileBlocksStayHarmless()
{
    Generator generator(5, Numbers::Hostile);
    SeededRandom random(6);
    for (int round = 0; round < 40; ++round) {
        MelodyBlock block;
        for (int i = random.between(0, 3000); i > 0; --i)
            block.notes.append(generator.note());
        const auto count = block.notes.size();
        QList<int> some;
        for (int i = 0; i < 200; ++i)
            some.append(random.between(-3, static_cast<int>(count) + 3));
        NoteEdits::move(block, NoteEdits::dragged(block, some), 1.0, kMostInt);
        NoteEdits::resize(block, NoteEdits::dragged(block, some), -1.0, 0.5);
        NoteEdits::paste(block, NoteEdits::copied(block, some), 3.0, 0.5);
        NoteEdits::duplicate(block, some, 0.5);
        NoteEdits::remove(block, some);
        QVERIFY(block.notes.size() >= count - some.size());
        NoteEdits::remove(block, everyIndex(block));
        QVERIFY(block.notes.isEmpty());
    }
}

VELTA_GUILESS_TEST(NoteEditsTest)

} // namespace NoteEditsTests

#include "NoteEditsTest.moc"
