#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/pianoroll/PianoRollStage.h"

#include <memory>

namespace PianoRollKeysTests {

using namespace ProjectBuilder;

namespace {

/// Of the tune: three notes of a beat in a row, and half a beat of 72 at beat 4.
const QStringList kTune{"60@0+1", "62@1+1", "64@2+1", "72@4+0.5"};

} // namespace

/// A melody without a mouse: the arrows, Return and Escape of the piano roll.
class PianoRollKeysTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void arrowsMoveWhatIsSelected_data();
    void arrowsMoveWhatIsSelected();
    void shiftAndArrowsStretch_data();
    void shiftAndArrowsStretch();
    void aStepIsThatOfTheGrid();
    void aGroupStopsAsAWholeAtTheEdges();
    void whatIsMovedStaysSelected();
    void whatIsMovedPastAnotherStaysSelected();
    void aPressIsAnEdit();
    void aKeyThatIsHeldIsOneEdit();
    void anotherKeyIsAnotherEdit();
    void theFocusTakesTheRunAlong();
    void whoReadsTheWorkEndsTheRun();
    void aRunThatChangesNothingIsNoEdit();

    void ctrlAndArrowsGoThroughTheNotes();
    void withoutASelectionTheNearestIsTaken();
    void inAnEmptyBlockThereIsNowhereToGo();
    void whatIsSelectedComesIntoSight();
    void escapeSelectsNothing();

    void withoutASelectionArrowsMoveThePlayhead();
    void pagesMoveThePlayheadByBars();
    void thePlayheadComesIntoSight();
    void withoutASelectionUprightArrowsScroll();
    void arrowsScroll();
    void repeatedArrowsScroll();

    void returnWritesWhatWasPlayedLast();
    void returnWritesOnBehind();
    void aStretchedNoteTakesThePlayheadAlong();
    void returnSoundsWhileItIsHeld();
    void returnWhilePlayingLeavesThePlayhead();
    void beforeTheBlockReturnWritesAtItsStart();
    void outOfTheRowsReturnWritesAtTheirEdge();
    void returnNeedsABlock();
    void fourBarsAreWrittenWithoutAMouse();

private:
    PianoRollCanvas& canvas() const { return stage_->canvas; }

    PlaybackEngine& engine() const { return band_->engine(); }

    void select(const QList<int>& indices) const { canvas().scene()->selectNotes(indices); }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        stage_->key(key, modifiers);
    }

    void press(Qt::Key key, bool repeated = false) const
    {
        QKeyEvent event(QEvent::KeyPress, key, {}, QString(), repeated);
        QApplication::sendEvent(&canvas(), &event);
    }

    void release(Qt::Key key) const
    {
        QKeyEvent event(QEvent::KeyRelease, key, {});
        QApplication::sendEvent(&canvas(), &event);
    }

    QStringList tune() const { return stage_->tune(); }

    UserHome home_;
    std::unique_ptr<SilentBand> band_;
    std::unique_ptr<PianoRollStage> stage_;
    std::unique_ptr<Editor> editor_;
};

void PianoRollKeysTest::init()
{
    band_ = std::make_unique<SilentBand>();
    stage_ = std::make_unique<PianoRollStage>(&band_->engine());
    editor_ = std::make_unique<Editor>(*stage_);
}

void PianoRollKeysTest::cleanup()
{
    editor_.reset();
    stage_.reset();
    band_.reset();
}

// ---- Moving and stretching -----------------------------------------------------------------

void PianoRollKeysTest::arrowsMoveWhatIsSelected_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<QString>("moved");

    QTest::newRow("later") << Qt::Key_Right << "62@1.5+1";
    QTest::newRow("earlier") << Qt::Key_Left << "62@0.5+1";
    QTest::newRow("higher") << Qt::Key_Up << "63@1+1";
    QTest::newRow("lower") << Qt::Key_Down << "61@1+1";
}

void PianoRollKeysTest::arrowsMoveWhatIsSelected()
{
    QFETCH(Qt::Key, key);
    QFETCH(QString, moved);
    select({1});
    this->key(key);
    QStringList expected = kTune;
    expected[1] = moved;
    QCOMPARE(tune(), expected);
}

void PianoRollKeysTest::shiftAndArrowsStretch_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("times");
    QTest::addColumn<QString>("stretched");

    QTest::newRow("longer") << Qt::Key_Right << 1 << "62@1+1.5";
    QTest::newRow("shorter") << Qt::Key_Left << 1 << "62@1+0.5";
    QTest::newRow("not shorter than a step") << Qt::Key_Left << 5 << "62@1+0.5";
    QTest::newRow("upright arrows stretch nothing") << Qt::Key_Up << 1 << "62@1+1";
}

void PianoRollKeysTest::shiftAndArrowsStretch()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, times);
    QFETCH(QString, stretched);
    select({1});
    for (int i = 0; i < times; ++i)
        this->key(key, Qt::ShiftModifier);
    QStringList expected = kTune;
    expected[1] = stretched;
    QCOMPARE(tune(), expected);
}

void PianoRollKeysTest::aStepIsThatOfTheGrid()
{
    select({3});
    canvas().setSubdivisionLevel(GridSubdivisionLevel::Subdivision);
    key(Qt::Key_Right);
    canvas().setSubdivisionLevel(GridSubdivisionLevel::Pulse);
    key(Qt::Key_Right);
    QCOMPARE(tune().last(), "72@5.25+0.5");
}

void PianoRollKeysTest::aGroupStopsAsAWholeAtTheEdges()
{
    stage_->notes() = {note(60, 0.0), note(90, 0.25), note(96, 1.0)};
    canvas().rebuildScene();
    select({1, 2});
    key(Qt::Key_Left);
    QCOMPARE(tune(), QStringList({"60@0+1", "90@0+1", "96@0.75+1"}));
    key(Qt::Key_Left);
    key(Qt::Key_Up);
    QCOMPARE(tune(), QStringList({"60@0+1", "90@0+1", "96@0.75+1"}));
    key(Qt::Key_Down);
    QCOMPARE(tune(), QStringList({"60@0+1", "89@0+1", "95@0.75+1"}));
}

void PianoRollKeysTest::whatIsMovedStaysSelected()
{
    select({0, 3});
    key(Qt::Key_Up);
    key(Qt::Key_Right);
    key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(tune(), QStringList({"61@0.5+1.5", "62@1+1", "64@2+1", "73@4.5+1"}));
    QCOMPARE(stage_->selected(), QList<int>({0, 3}));
}

void PianoRollKeysTest::whatIsMovedPastAnotherStaysSelected()
{
    select({0});
    for (int i = 0; i < 3; ++i)
        key(Qt::Key_Right);
    QCOMPARE(tune(), QStringList({"62@1+1", "60@1.5+1", "64@2+1", "72@4+0.5"}));
    QCOMPARE(stage_->selected(), QList<int>({1}));
}

void PianoRollKeysTest::aPressIsAnEdit()
{
    select({0});
    key(Qt::Key_Right);
    key(Qt::Key_Right);
    QCOMPARE(editor_->edits(), 2);
}

void PianoRollKeysTest::aKeyThatIsHeldIsOneEdit()
{
    select({0});
    press(Qt::Key_Right);
    for (int i = 0; i < 9; ++i)
        press(Qt::Key_Right, true);
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(stage_->notes().first().startBeat, 5.0);
    release(Qt::Key_Right);
    QCOMPARE(editor_->edits(), 1);
    QCOMPARE(tune(), QStringList({"62@1+1", "64@2+1", "72@4+0.5", "60@5+1"}));
    QCOMPARE(stage_->selected(), QList<int>({3}));
}

void PianoRollKeysTest::anotherKeyIsAnotherEdit()
{
    select({0});
    press(Qt::Key_Right);
    press(Qt::Key_Up);
    QCOMPARE(editor_->edits(), 1);
    release(Qt::Key_Right);
    QCOMPARE(editor_->edits(), 1);
    release(Qt::Key_Up);
    QCOMPARE(editor_->edits(), 2);
    QCOMPARE(tune().first(), "61@0.5+1");
}

void PianoRollKeysTest::theFocusTakesTheRunAlong()
{
    select({0});
    press(Qt::Key_Right);
    QFocusEvent out(QEvent::FocusOut);
    QApplication::sendEvent(&canvas(), &out);
    QCOMPARE(editor_->edits(), 1);
    release(Qt::Key_Right);
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollKeysTest::whoReadsTheWorkEndsTheRun()
{
    select({0});
    press(Qt::Key_Right);
    canvas().endDrag();
    QCOMPARE(editor_->edits(), 1);
    press(Qt::Key_Right);
    // Another work: what was done stays, and nothing is told of it any more.
    canvas().setContext(nullptr, nullptr);
    release(Qt::Key_Right);
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollKeysTest::aRunThatChangesNothingIsNoEdit()
{
    select({0});
    key(Qt::Key_Left);
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(tune(), kTune);
    QCOMPARE(stage_->selected(), QList<int>({0}));
}

// ---- Selecting -----------------------------------------------------------------------------

void PianoRollKeysTest::ctrlAndArrowsGoThroughTheNotes()
{
    stage_->notes() = {note(64, 1.0), note(60, 1.0), note(72, 0.0)};
    canvas().rebuildScene();
    QList<int> gone;
    key(Qt::Key_Right, Qt::ControlModifier);
    for (int i = 0; i < 4; ++i) {
        gone += stage_->selected();
        key(Qt::Key_Right, Qt::ControlModifier);
    }
    QCOMPARE(gone, QList<int>({2, 1, 0, 0}));
    key(Qt::Key_Left, Qt::ControlModifier);
    QCOMPARE(stage_->selected(), QList<int>({1}));
    select({0, 1});
    key(Qt::Key_Left, Qt::ControlModifier);
    QCOMPARE(stage_->selected(), QList<int>({2}));
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollKeysTest::withoutASelectionTheNearestIsTaken()
{
    engine().setPlayheadBeat(3.4);
    key(Qt::Key_Left, Qt::ControlModifier);
    QCOMPARE(stage_->selected(), QList<int>({3}));
    select({});
    engine().setPlayheadBeat(0.9);
    key(Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(stage_->selected(), QList<int>({1}));
    // The notes of the flute count from beat 4.
    canvas().setActiveTrack(2);
    key(Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(stage_->selected(), QList<int>({0}));
}

void PianoRollKeysTest::inAnEmptyBlockThereIsNowhereToGo()
{
    canvas().setActiveTrack(3);
    key(Qt::Key_Right, Qt::ControlModifier);
    key(Qt::Key_Left, Qt::ControlModifier);
    QCOMPARE(stage_->selected(), QList<int>());
    QCOMPARE(engine().playheadBeat(), 0.0);
}

void PianoRollKeysTest::whatIsSelectedComesIntoSight()
{
    stage_->notes() = {note(60, 0.0), note(30, 30.0), note(95, 31.0)};
    canvas().rebuildScene();
    for (int i = 0; i < 3; ++i) {
        key(Qt::Key_Right, Qt::ControlModifier);
        QCOMPARE(stage_->selected(), QList<int>({i}));
        const NoteEvent& selected = stage_->notes().at(i);
        const QRect seen = stage_->grid()->rect();
        QVERIFY(seen.contains(stage_->at(selected.startBeat, selected.pitch)));
        QVERIFY(seen.contains(stage_->at(selected.startBeat + 1.0, selected.pitch)));
    }
}

void PianoRollKeysTest::escapeSelectsNothing()
{
    select({0, 1});
    key(Qt::Key_Escape);
    QCOMPARE(stage_->selected(), QList<int>());
    // During a take it is the take's.
    canvas().setRecording(true);
    select({0});
    key(Qt::Key_Escape);
    QCOMPARE(stage_->selected(), QList<int>({0}));
    QCOMPARE(editor_->edits(), 0);
}

// ---- The playhead --------------------------------------------------------------------------

void PianoRollKeysTest::withoutASelectionArrowsMoveThePlayhead()
{
    for (const double beat : {0.5, 1.0, 1.5}) {
        key(Qt::Key_Right);
        QCOMPARE(engine().playheadBeat(), beat);
    }
    key(Qt::Key_Left);
    QCOMPARE(engine().playheadBeat(), 1.0);
    canvas().setSubdivisionLevel(GridSubdivisionLevel::Pulse);
    for (int i = 0; i < 3; ++i)
        key(Qt::Key_Left);
    QCOMPARE(engine().playheadBeat(), 0.0);
    QVERIFY(!engine().isPlaying());
    QCOMPARE(tune(), kTune);
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollKeysTest::pagesMoveThePlayheadByBars()
{
    engine().setPlayheadBeat(1.0);
    key(Qt::Key_PageDown);
    QCOMPARE(engine().playheadBeat(), 4.0);
    select({0});
    key(Qt::Key_PageDown);
    QCOMPARE(engine().playheadBeat(), 8.0);
    key(Qt::Key_PageUp);
    QCOMPARE(engine().playheadBeat(), 4.0);
    // Bars without a length are no steps.
    stage_->song.timeSignature.denominator = 0;
    key(Qt::Key_PageDown);
    QCOMPARE(engine().playheadBeat(), 4.0);
}

void PianoRollKeysTest::thePlayheadComesIntoSight()
{
    for (int i = 0; i < 100; ++i)
        key(Qt::Key_PageDown);
    const double end = canvas().scene()->width() / 64.0;
    QCOMPARE(engine().playheadBeat(), end);
    QVERIFY(stage_->grid()->rect().contains(stage_->at(end - 0.1, canvas().rows()->topPitch())));
    for (int i = 0; i < 100; ++i)
        key(Qt::Key_PageUp);
    QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 0);
}

void PianoRollKeysTest::withoutASelectionUprightArrowsScroll()
{
    const int top = canvas().rows()->topPitch();
    key(Qt::Key_Up);
    QCOMPARE(canvas().rows()->topPitch(), top + 1);
    select({0});
    key(Qt::Key_Up, Qt::ControlModifier);
    QCOMPARE(canvas().rows()->topPitch(), top + 2);
    QCOMPARE(tune(), kTune);
}

void PianoRollKeysTest::arrowsScroll()
{
    key(Qt::Key_Up);
    QCOMPARE(canvas().rows()->topPitch(), 73);
    key(Qt::Key_Down);
    key(Qt::Key_Down, Qt::ControlModifier);
    QCOMPARE(canvas().rows()->topPitch(), 71);
    QTRY_COMPARE(canvas().view()->verticalScrollBar()->value(), 25 * 32);
}

void PianoRollKeysTest::repeatedArrowsScroll()
{
    for (int i = 0; i < 4; ++i)
        press(Qt::Key_Up, true);
    QCOMPARE(canvas().rows()->topPitch(), 76);
}

// ---- Writing -------------------------------------------------------------------------------

void PianoRollKeysTest::returnWritesWhatWasPlayedLast()
{
    engine().setPlayheadBeat(5.5);
    key(Qt::Key_A, Qt::ShiftModifier);
    key(Qt::Key_Return);
    QCOMPARE(tune(), kTune + QStringList{"70@5.5+0.5"});
    QCOMPARE(stage_->selected(), QList<int>({4}));
    QCOMPARE(editor_->edits(), 1);
    // The keys of the piano count, too.
    emit canvas().keyboard()->keyPressed(67);
    emit canvas().keyboard()->keyReleased(67);
    key(Qt::Key_Enter);
    QCOMPARE(tune().last(), "67@6+0.5");
}

void PianoRollKeysTest::returnWritesOnBehind()
{
    stage_->notes().clear();
    canvas().rebuildScene();
    for (int i = 0; i < 3; ++i)
        key(Qt::Key_Return);
    QCOMPARE(tune(), QStringList({"60@0+0.5", "60@0.5+0.5", "60@1+0.5"}));
    QCOMPARE(engine().playheadBeat(), 1.5);
    QVERIFY(!engine().isPlaying());
}

void PianoRollKeysTest::aStretchedNoteTakesThePlayheadAlong()
{
    stage_->notes().clear();
    canvas().rebuildScene();
    key(Qt::Key_Return);
    key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(engine().playheadBeat(), 1.0);
    key(Qt::Key_Right);
    QCOMPARE(engine().playheadBeat(), 1.5);
    key(Qt::Key_D);
    key(Qt::Key_Return);
    QCOMPARE(tune(), QStringList({"60@0.5+1", "62@1.5+0.5"}));
    // A playhead elsewhere stays.
    engine().setPlayheadBeat(5.0);
    key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(engine().playheadBeat(), 5.0);
}

void PianoRollKeysTest::returnSoundsWhileItIsHeld()
{
    key(Qt::Key_E);
    press(Qt::Key_Return);
    QCOMPARE(engine().previewHeld(), QSet<int>({64}));
    press(Qt::Key_Return, true);
    release(Qt::Key_Return);
    QVERIFY(engine().previewHeld().isEmpty());
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollKeysTest::returnWhilePlayingLeavesThePlayhead()
{
    engine().play(5.8);
    key(Qt::Key_Return);
    QVERIFY(engine().isPlaying());
    QVERIFY(engine().playheadBeat() < 6.0);
    engine().stop();
    QCOMPARE(tune().last(), "60@6+0.5");
    QCOMPARE(stage_->notes().size(), 5);
}

void PianoRollKeysTest::beforeTheBlockReturnWritesAtItsStart()
{
    canvas().setActiveTrack(2);
    key(Qt::Key_Return);
    key(Qt::Key_Return);
    QCOMPARE(stage_->tune(2), QStringList({"60@0+0.5", "67@0+1", "60@0.5+0.5"}));
    QCOMPARE(engine().playheadBeat(), 5.0);
}

void PianoRollKeysTest::outOfTheRowsReturnWritesAtTheirEdge()
{
    for (int i = 0; i < 5; ++i)
        key(Qt::Key_X);
    key(Qt::Key_B);
    QCOMPARE(canvas().live()->writtenPitch(), 107);
    key(Qt::Key_Return);
    QCOMPARE(stage_->notes().at(stage_->selected().value(0)).pitch, 96);
}

void PianoRollKeysTest::returnNeedsABlock()
{
    canvas().setActiveTrack(1);
    QKeyEvent event(QEvent::KeyPress, Qt::Key_Return, {});
    QApplication::sendEvent(&canvas(), &event);
    QVERIFY(!event.isAccepted());
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollKeysTest::fourBarsAreWrittenWithoutAMouse()
{
    canvas().setActiveTrack(3);
    canvas().setSubdivisionLevel(GridSubdivisionLevel::Pulse);
    for (const Qt::Key letter : {Qt::Key_C, Qt::Key_D, Qt::Key_E, Qt::Key_F}) {
        key(letter);
        key(Qt::Key_Return);
        key(Qt::Key_Return);
        key(Qt::Key_Right, Qt::ShiftModifier);
        key(Qt::Key_Escape);
        key(Qt::Key_Right);
    }
    QCOMPARE(stage_->tune(3), QStringList({"60@0+1", "60@1+2", "62@4+1", "62@5+2", "64@8+1",
                                           "64@9+2", "65@12+1", "65@13+2"}));
    QCOMPARE(engine().playheadBeat(), 16.0);
}

VELTA_TEST(PianoRollKeysTest)

} // namespace PianoRollKeysTests

#include "PianoRollKeysTest.moc"
