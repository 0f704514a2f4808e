#include "views/pianoroll/PianoRollGridView.h"

#include "PianoRollStage.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"

#include <QDialog>

#include <cmath>
#include <limits>
#include <memory>

namespace PianoRollGridViewTests {

using namespace ProjectBuilder;

namespace {

constexpr Qt::KeyboardModifiers kCtrlShift = Qt::ControlModifier | Qt::ShiftModifier;

/// Every note of a scene by its index, with its place.
QList<std::pair<int, QRectF>> notesOf(const PianoRollScene& scene)
{
    QList<std::pair<int, QRectF>> notes;
    for (QGraphicsItem* item : scene.items(Qt::AscendingOrder)) {
        if (const auto* note = qgraphicsitem_cast<NoteItem*>(item))
            notes.append({note->index(), note->rect()});
    }
    return notes;
}

/// Whether the piano roll shows its block as it is now, and, unless the mouse holds notes, in a
/// scene of the size of the song.
bool isInStep(PianoRollStage& stage)
{
    const MelodyBlock* block = stage.canvas.notes()->activeBlock();
    PianoRollScene fresh;
    fresh.rebuild(stage.song, block, {});
    const PianoRollScene& shown = *stage.canvas.scene();
    const bool fits = stage.canvas.notes()->isDragging() ? shown.width() >= fresh.width()
                                                         : shown.sceneRect() == fresh.sceneRect();
    return fits && notesOf(shown) == notesOf(fresh);
}

} // namespace

class PianoRollGridViewTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void pressOnEmptySpaceDrawsANote_data();
    void pressOnEmptySpaceDrawsANote();
    void drawnNoteHasTheLengthOfAStep();
    void dragMakesADrawnNoteLonger_data();
    void dragMakesADrawnNoteLonger();
    void drawnNoteIsOneEdit();
    void drawingLeavesNothingSelected();
    void drawingInALaterBlock_data();
    void drawingInALaterBlock();
    void drawingMakesTheBlockGrow();
    void drawnNotesAreInOrderAfterTheRelease();
    void nothingIsDrawnOutsideTheRows();

    void clickSelectsANote();
    void ctrlClickSelectsFurtherNotes();
    void clickOnASelectedNoteKeepsTheSelection();
    void clickIsNoEdit();

    void dragMovesANote_data();
    void dragMovesANote();
    void onlyTheWayIsSnapped();
    void noteDraggedPastTheRowsStaysInThem_data();
    void noteDraggedPastTheRowsStaysInThem();
    void noteDraggedBeforeTheBlockStaysAtItsStart();
    void groupBunchesAtTheEdge();
    void dragMovesTheWholeSelection();
    void dragBackRestores();
    void moveIsOneEdit();
    void projectIsNotAnnouncedDuringADrag();
    void draggedNoteIsNotSelected();
    void dragAcrossOthersKeepsItsNote();

    void gripResizes_data();
    void gripResizes();
    void resizeRoundsTheLength();
    void resizingGroupsGoesNoteByNote();
    void gripIsOfTheScreen();

    void rightClickDeletes();
    void rightClickDeletesTheWholeSelection();
    void rightClickBesideNotesDoesNothing();
    void deletingAllNotesKeepsTheLength();
    void middleButtonEditsNothing();

    void rubberBandSelects();
    void rubberBandIsNoEdit();
    void rubberBandEndsWithTheRelease();

    void cursorTellsTheGrip();
    void doubleClickIsSurvived();

    void noteItemAtFindsNotesOnly();

    void clickOfAShakingHandSelects();
    void lastNoteStaysUnderTheMouse();
    void releaseElsewhereEndsADrag();
    void releaseOfAnotherButtonLeavesADrag();
    void releaseElsewhereEndsARubberBand();
    void dialogEndsADrag();
    void undoEndsADrag_data();
    void undoEndsADrag();
    void changeThatKeepsTheNotesLeavesADrag();
    void liveNoteEndsADrag();
    void deletingDuringADragEndsIt();
    void anotherTrackEndsADrag();
    void anotherProjectEndsADrag();
    void noProjectEndsADrag();
    void vanishedTrackEndsADrag();
    void pressWithoutAReleaseIsEnded();

    void withoutAProjectNothingHappens();
    void accompanimentIsNotEdited();
    void firstNoteOfAnEmptyTrack();

    void wheelScrollsWholeRows();
    void smallTurnsAddUp();
    void ctrlWheelZooms();
    void zoomKeepsWhatIsUnderTheMouse_data();
    void zoomKeepsWhatIsUnderTheMouse();
    void ctrlShiftWheelZoomsRows();
    void zoomOfRowsStaysAtItsTime();
    void shiftWheelScrollsToTheSide_data();
    void shiftWheelScrollsToTheSide();
    void sidewaysWheelScrollsToTheSide();
    void wheelIsAlwaysTaken();

    void withoutAListenerTheSceneIsFresh();
    void damagedBlocksAreEdited_data();
    void damagedBlocksAreEdited();
    void anyGesturesAreSurvived();

private:
    PianoRollCanvas& canvas() const { return stage_->canvas; }

    QString note(int index) const { return stage_->tune().value(index); }

    UserHome home_;
    std::unique_ptr<PianoRollStage> stage_;
    std::unique_ptr<Editor> editor_;
};

void PianoRollGridViewTest::init()
{
    stage_ = std::make_unique<PianoRollStage>();
    editor_ = std::make_unique<Editor>(*stage_);
}

void PianoRollGridViewTest::cleanup()
{
    editor_.reset();
    stage_.reset();
}

// ---- Drawing -------------------------------------------------------------------------------

void PianoRollGridViewTest::pressOnEmptySpaceDrawsANote_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QString>("drawn");

    QTest::newRow("on a step") << 6.0 << 66 << "66@6+0.5";
    QTest::newRow("inside a step") << 6.4 << 66 << "66@6+0.5";
    QTest::newRow("in the next step") << 6.6 << 66 << "66@6.5+0.5";
    QTest::newRow("in the top row") << 1.0 << 72 << "72@1+0.5";
    QTest::newRow("in the lowest row") << 5.0 << 60 << "60@5+0.5";
}

void PianoRollGridViewTest::pressOnEmptySpaceDrawsANote()
{
    QFETCH(double, beat);
    QFETCH(int, pitch);
    QFETCH(QString, drawn);
    stage_->press(stage_->at(beat, pitch));
    QCOMPARE(stage_->tune().size(), 5);
    QCOMPARE(stage_->tune().last(), drawn);
    QCOMPARE(stage_->notes().last().velocity, 100);
    QCOMPARE(editor_->edits(), 0);
    stage_->release(stage_->at(beat, pitch));
    QVERIFY(stage_->tune().contains(drawn));
}

void PianoRollGridViewTest::drawnNoteHasTheLengthOfAStep()
{
    canvas().setSubdivisionLevel(GridSubdivisionLevel::Subdivision);
    stage_->click(stage_->at(6.3, 66));
    QCOMPARE(note(4), "66@6.25+0.25");
    canvas().setSubdivisionLevel(GridSubdivisionLevel::Pulse);
    stage_->click(stage_->at(7.9, 66));
    QCOMPARE(note(5), "66@7+1");
}

void PianoRollGridViewTest::dragMakesADrawnNoteLonger_data()
{
    QTest::addColumn<double>("to");
    QTest::addColumn<QString>("drawn");

    QTest::newRow("inside the step") << 6.3 << "66@6+0.5";
    QTest::newRow("into the next step") << 6.55 << "66@6+1";
    QTest::newRow("far") << 9.1 << "66@6+3.5";
    QTest::newRow("before its start") << 3.0 << "66@6+0.5";
}

void PianoRollGridViewTest::dragMakesADrawnNoteLonger()
{
    QFETCH(double, to);
    QFETCH(QString, drawn);
    stage_->drag(stage_->at(6.1, 66), stage_->at(to, 70));
    QCOMPARE(note(4), drawn);
}

void PianoRollGridViewTest::drawnNoteIsOneEdit()
{
    stage_->click(stage_->at(6.0, 66));
    QCOMPARE(editor_->edits(), 1);
    stage_->drag(stage_->at(10.0, 66), stage_->at(12.0, 66));
    QCOMPARE(editor_->edits(), 2);
}

void PianoRollGridViewTest::drawingLeavesNothingSelected()
{
    stage_->click(stage_->at(0.5, 60));
    QCOMPARE(stage_->selected(), QList<int>{0});
    stage_->click(stage_->at(6.0, 66));
    QCOMPARE(stage_->selected(), QList<int>());
}

void PianoRollGridViewTest::drawingInALaterBlock_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<QString>("drawn");

    QTest::newRow("inside") << 6.1 << "70@2+0.5";
    QTest::newRow("before its start: at its start") << 2.1 << "70@0+0.5";
}

void PianoRollGridViewTest::drawingInALaterBlock()
{
    QFETCH(double, beat);
    QFETCH(QString, drawn);
    canvas().setActiveTrack(2);
    stage_->click(stage_->at(beat, 70));
    QVERIFY(stage_->tune(2).contains(drawn));
}

void PianoRollGridViewTest::drawingMakesTheBlockGrow()
{
    stage_->click(stage_->at(10.0, 66));
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].durationBeats, 10.5);
}

void PianoRollGridViewTest::drawnNotesAreInOrderAfterTheRelease()
{
    stage_->click(stage_->at(1.5, 66));
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "62@1+1", "66@1.5+0.5", "64@2+1", "72@4+0.5"}));
    stage_->click(stage_->at(1.0, 60));
    QCOMPARE(note(1), "60@1+0.5");
    QCOMPARE(note(2), "62@1+1");
}

void PianoRollGridViewTest::nothingIsDrawnOutsideTheRows()
{
    canvas().rows()->scrollToTopPitch(36, false);
    // A drag of the mouse can begin nowhere else, but an event may.
    stage_->click(QPoint(500, PianoRollStage::kGridHeight + 3));
    canvas().rows()->scrollToTopPitch(96, false);
    stage_->click(QPoint(500, -3));
    stage_->click(QPoint(-3, 100));
    QCOMPARE(stage_->tune().size(), 4);
    QCOMPARE(editor_->edits(), 0);
}

// ---- Selecting -----------------------------------------------------------------------------

void PianoRollGridViewTest::clickSelectsANote()
{
    stage_->click(stage_->at(0.5, 60));
    QCOMPARE(stage_->selected(), QList<int>{0});
    stage_->click(stage_->at(1.5, 62));
    QCOMPARE(stage_->selected(), QList<int>{1});
}

void PianoRollGridViewTest::ctrlClickSelectsFurtherNotes()
{
    stage_->click(stage_->at(0.5, 60));
    stage_->click(stage_->at(1.5, 62), Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(stage_->selected(), (QList<int>{0, 1}));
}

void PianoRollGridViewTest::clickOnASelectedNoteKeepsTheSelection()
{
    stage_->click(stage_->at(0.5, 60));
    stage_->click(stage_->at(1.5, 62), Qt::LeftButton, Qt::ControlModifier);
    stage_->click(stage_->at(0.5, 60));
    QCOMPARE(stage_->selected(), (QList<int>{0, 1}));
    stage_->click(stage_->at(0.5, 60), Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(stage_->selected(), (QList<int>{0, 1}));
}

void PianoRollGridViewTest::clickIsNoEdit()
{
    stage_->click(stage_->at(0.5, 60));
    stage_->click(stage_->at(0.97, 60));
    QCOMPARE(editor_->edits(), 0);
}

// ---- Moving --------------------------------------------------------------------------------

void PianoRollGridViewTest::dragMovesANote_data()
{
    QTest::addColumn<double>("beats");
    QTest::addColumn<int>("pitches");
    QTest::addColumn<QString>("moved");

    QTest::newRow("a step to the right") << 0.5 << 0 << "62@1.5+1";
    QTest::newRow("less than half a step") << 0.2 << 0 << "62@1+1";
    QTest::newRow("more than half a step") << 0.3 << 0 << "62@1.5+1";
    QTest::newRow("to the left") << -0.8 << 0 << "62@0+1";
    QTest::newRow("up") << 0.0 << 3 << "65@1+1";
    QTest::newRow("down and far") << 4.0 << -2 << "60@5+1";
}

void PianoRollGridViewTest::dragMovesANote()
{
    QFETCH(double, beats);
    QFETCH(int, pitches);
    QFETCH(QString, moved);
    stage_->drag(stage_->at(1.5, 62), stage_->at(1.5 + beats, 62 + pitches));
    QCOMPARE(stage_->tune().size(), 4);
    QVERIFY2(stage_->tune().contains(moved), qPrintable(stage_->tune().join(' ')));
}

void PianoRollGridViewTest::onlyTheWayIsSnapped()
{
    stage_->notes() = {ProjectBuilder::note(60, 1.1)};
    emit stage_->song.changed();
    stage_->drag(stage_->at(1.5, 60), stage_->at(2.4, 60));
    QCOMPARE(note(0), "60@2.1+1");
}

void PianoRollGridViewTest::noteDraggedPastTheRowsStaysInThem_data()
{
    QTest::addColumn<int>("top");
    QTest::addColumn<int>("pitch");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("stays");

    QTest::newRow("past pitch 96") << 96 << 94 << -2000 << 96;
    QTest::newRow("past pitch 24") << 36 << 30 << 2000 << 24;
}

void PianoRollGridViewTest::noteDraggedPastTheRowsStaysInThem()
{
    QFETCH(int, top);
    QFETCH(int, pitch);
    QFETCH(int, y);
    QFETCH(int, stays);
    stage_->notes() = {ProjectBuilder::note(pitch, 1.0)};
    emit stage_->song.changed();
    canvas().rows()->scrollToTopPitch(top, false);
    const QPoint place = stage_->at(1.5, pitch);
    stage_->drag(place, QPoint(place.x(), y));
    QCOMPARE(stage_->notes()[0].pitch, stays);
}

void PianoRollGridViewTest::noteDraggedBeforeTheBlockStaysAtItsStart()
{
    stage_->drag(stage_->at(1.5, 62), stage_->at(-3.0, 62));
    QCOMPARE(stage_->tune().value(1), "62@0+1");
    canvas().setActiveTrack(2);
    stage_->drag(stage_->at(4.5, 67), stage_->at(1.0, 67));
    QCOMPARE(stage_->tune(2), QStringList{"67@0+1"});
}

void PianoRollGridViewTest::groupBunchesAtTheEdge()
{
    stage_->click(stage_->at(0.5, 60));
    stage_->click(stage_->at(1.5, 62), Qt::LeftButton, Qt::ControlModifier);
    stage_->drag(stage_->at(1.5, 62), stage_->at(0.0, 62));
    QCOMPARE(note(0), "60@0+1");
    QCOMPARE(note(1), "62@0+1");
}

void PianoRollGridViewTest::dragMovesTheWholeSelection()
{
    stage_->click(stage_->at(0.5, 60));
    stage_->click(stage_->at(2.5, 64), Qt::LeftButton, Qt::ControlModifier);
    stage_->drag(stage_->at(2.5, 64), stage_->at(8.5, 65));
    QCOMPARE(stage_->tune(), QStringList({"62@1+1", "72@4+0.5", "61@6+1", "65@8+1"}));
}

void PianoRollGridViewTest::dragBackRestores()
{
    const QStringList before = stage_->tune();
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(6.5, 70));
    stage_->move(stage_->at(1.5, 62));
    stage_->release(stage_->at(1.5, 62));
    QCOMPARE(stage_->tune(), before);
}

void PianoRollGridViewTest::moveIsOneEdit()
{
    stage_->drag(stage_->at(1.5, 62), stage_->at(3.5, 66));
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::projectIsNotAnnouncedDuringADrag()
{
    const QSignalSpy changed(&stage_->song, &Project::changed);
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    QCOMPARE(changed.size(), 0);
    QCOMPARE(editor_->edits(), 0);
    // The scene shows it all the same.
    QCOMPARE(stage_->noteItems()[1]->rect(), QRectF(3 * 64, 30 * 16 + 1, 64, 14));
    stage_->release(stage_->at(3.5, 66));
    QCOMPARE(changed.size(), 1);
}

void PianoRollGridViewTest::draggedNoteIsNotSelected()
{
    stage_->press(stage_->at(1.5, 62));
    QCOMPARE(stage_->selected(), QList<int>{1});
    stage_->move(stage_->at(3.5, 66));
    QCOMPARE(stage_->selected(), QList<int>());
    stage_->release(stage_->at(3.5, 66));
}

void PianoRollGridViewTest::dragAcrossOthersKeepsItsNote()
{
    stage_->press(stage_->at(0.5, 60));
    stage_->move(stage_->at(1.5, 62));
    stage_->move(stage_->at(2.5, 64));
    stage_->move(stage_->at(6.5, 60));
    stage_->release(stage_->at(6.5, 60));
    QCOMPARE(stage_->tune(), QStringList({"62@1+1", "64@2+1", "72@4+0.5", "60@6+1"}));
}

// ---- Resizing ------------------------------------------------------------------------------

void PianoRollGridViewTest::gripResizes_data()
{
    QTest::addColumn<double>("to");
    QTest::addColumn<QString>("resized");
    QTest::addColumn<int>("edits");

    QTest::newRow("longer") << 3.0 << "62@1+2" << 1;
    QTest::newRow("shorter") << 1.5 << "62@1+0.5" << 1;
    QTest::newRow("not below a step") << -4.0 << "62@1+0.5" << 1;
    QTest::newRow("less than half a step") << 2.1 << "62@1+1" << 0;
}

void PianoRollGridViewTest::gripResizes()
{
    QFETCH(double, to);
    QFETCH(QString, resized);
    // Three pixels left of its right edge.
    stage_->drag(stage_->at(2.0, 62) - QPoint(3, 0), stage_->at(to, 69) - QPoint(3, 0));
    QCOMPARE(note(1), resized);
    QTEST(editor_->edits(), "edits");
}

void PianoRollGridViewTest::resizeRoundsTheLength()
{
    canvas().setSubdivisionLevel(GridSubdivisionLevel::Subdivision);
    stage_->notes() = {ProjectBuilder::note(60, 1.0, 0.3)};
    emit stage_->song.changed();
    const QPoint grip = stage_->at(1.3, 60) - QPoint(3, 0);
    stage_->press(grip);
    QCOMPARE(note(0), "60@1+0.3");
    stage_->move(grip + QPoint(1, 0));
    QCOMPARE(note(0), "60@1+0.25");
    stage_->release(grip + QPoint(1, 0));
    QCOMPARE(note(0), "60@1+0.25");
}

void PianoRollGridViewTest::resizingGroupsGoesNoteByNote()
{
    stage_->click(stage_->at(4.2, 72));
    stage_->click(stage_->at(2.5, 64), Qt::LeftButton, Qt::ControlModifier);
    stage_->drag(stage_->at(3.0, 64) - QPoint(3, 0), stage_->at(4.0, 64) - QPoint(3, 0));
    QCOMPARE(note(2), "64@2+2");
    QCOMPARE(note(3), "72@4+1.5");
}

void PianoRollGridViewTest::gripIsOfTheScreen()
{
    canvas().zoomHorizontal(4.0);
    stage_->drag(stage_->at(2.0, 62) - QPoint(10, 0), stage_->at(2.0, 62) + QPoint(246, 0));
    QCOMPARE(note(1), "62@2+1");
    QCOMPARE(note(2), "64@2+1");
}

// ---- Deleting ------------------------------------------------------------------------------

void PianoRollGridViewTest::rightClickDeletes()
{
    stage_->click(stage_->at(1.5, 62), Qt::RightButton);
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "64@2+1", "72@4+0.5"}));
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::rightClickDeletesTheWholeSelection()
{
    stage_->notes() = notesInARow({60, 61, 62, 63, 64, 65, 66});
    emit stage_->song.changed();
    stage_->band(QPoint(3, 2), stage_->at(4.9, 60) + QPoint(0, 14));
    QCOMPARE(stage_->selected(), (QList<int>{0, 1, 2, 3, 4}));
    stage_->click(stage_->at(6.5, 66), Qt::RightButton);
    QCOMPARE(stage_->tune(), QStringList{"65@5+1"});
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::rightClickBesideNotesDoesNothing()
{
    stage_->click(stage_->at(1.5, 62));
    stage_->click(stage_->at(6.0, 66), Qt::RightButton);
    QCOMPARE(stage_->tune().size(), 4);
    QCOMPARE(stage_->selected(), QList<int>{1});
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollGridViewTest::deletingAllNotesKeepsTheLength()
{
    stage_->band(QPoint(1, 1), QPoint(600, PianoRollStage::kGridHeight - 1));
    QCOMPARE(stage_->selected().size(), 4);
    stage_->click(stage_->at(1.5, 62), Qt::RightButton);
    QVERIFY(stage_->notes().isEmpty());
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].durationBeats, 8.0);
}

void PianoRollGridViewTest::middleButtonEditsNothing()
{
    for (const QPoint& place : {stage_->at(1.5, 62), stage_->at(6.0, 66)}) {
        stage_->press(place, Qt::MiddleButton);
        stage_->move(place + QPoint(100, 0));
        stage_->release(place + QPoint(100, 0), Qt::MiddleButton);
    }
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "62@1+1", "64@2+1", "72@4+0.5"}));
    QCOMPARE(editor_->edits(), 0);
}

// ---- Rubber band ---------------------------------------------------------------------------

void PianoRollGridViewTest::rubberBandSelects()
{
    stage_->band(stage_->at(0.2, 63), stage_->at(1.5, 60));
    QCOMPARE(stage_->selected(), (QList<int>{0, 1}));
    stage_->drag(stage_->at(0.5, 60), stage_->at(5.5, 60));
    QCOMPARE(stage_->tune(), QStringList({"64@2+1", "72@4+0.5", "60@5+1", "62@6+1"}));
}

void PianoRollGridViewTest::rubberBandIsNoEdit()
{
    stage_->band(stage_->at(0.2, 63), stage_->at(1.5, 60));
    QCOMPARE(stage_->tune().size(), 4);
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollGridViewTest::rubberBandEndsWithTheRelease()
{
    stage_->press(stage_->at(6.0, 66), Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(canvas().view()->dragMode(), QGraphicsView::RubberBandDrag);
    stage_->release(stage_->at(6.0, 66));
    QCOMPARE(canvas().view()->dragMode(), QGraphicsView::NoDrag);
    stage_->click(stage_->at(6.0, 66));
    QCOMPARE(stage_->tune().size(), 5);
}

// ---- Mouse without a button ----------------------------------------------------------------

void PianoRollGridViewTest::cursorTellsTheGrip()
{
    const auto shape = [this] { return stage_->grid()->cursor().shape(); };
    stage_->move(stage_->at(2.0, 62) - QPoint(3, 0));
    QCOMPARE(shape(), Qt::SizeHorCursor);
    stage_->move(stage_->at(1.5, 62));
    QCOMPARE(shape(), Qt::ArrowCursor);
    stage_->move(stage_->at(4.5, 72) - QPoint(1, 0));
    QCOMPARE(shape(), Qt::SizeHorCursor);
    stage_->move(stage_->at(6.0, 66));
    QCOMPARE(shape(), Qt::ArrowCursor);
}

void PianoRollGridViewTest::doubleClickIsSurvived()
{
    const QPoint place = stage_->at(6.0, 66);
    stage_->click(place);
    QTest::mouseDClick(stage_->grid(), Qt::LeftButton, {}, place);
    stage_->release(place);
    stage_->move(place + QPoint(50, 50));
    QCOMPARE(stage_->tune().count("66@6+0.5"), 1);
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::noteItemAtFindsNotesOnly()
{
    canvas().setVisibleTracks({0, 2}, 0);
    QCOMPARE(canvas().view()->noteItemAt(QPointF(32, 584))->index(), 0);
    QVERIFY(!canvas().view()->noteItemAt(QPointF(270, 470)));
    QVERIFY(!canvas().view()->noteItemAt(QPointF(0, 0)));
}

// ---- Drags and buttons ---------------------------------------------------------------------

void PianoRollGridViewTest::clickOfAShakingHandSelects()
{
    const QPoint place = stage_->at(1.5, 62);
    stage_->press(place);
    for (const int tremor : {1, 0, -2, 1})
        stage_->move(place + QPoint(tremor, tremor));
    stage_->release(place + QPoint(1, 0));
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(stage_->selected(), QList<int>{1});
    stage_->key(Qt::Key_Delete);
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "64@2+1", "72@4+0.5"}));
    QCOMPARE(editor_->edits(), 1);
}

// Whatever makes the song shorter meanwhile does not move the ground under the mouse.
void PianoRollGridViewTest::lastNoteStaysUnderTheMouse()
{
    canvas().resize(1800, canvas().height());
    stage_->song.tracks[2].melodyBlocks[0].startBeat = 156.0;
    stage_->notes().append(ProjectBuilder::note(66, 150.0));
    emit stage_->song.changed();
    QScrollBar* bar = canvas().view()->horizontalScrollBar();
    bar->setValue(bar->maximum());
    const QPoint place = stage_->at(150.5, 66);
    stage_->press(place);
    stage_->move(place - QPoint(64, 0));
    stage_->song.tracks[2].melodyBlocks[0].startBeat = 4.0;
    emit stage_->song.changed();
    for (const int way : {65, 64, 65, 64})
        stage_->move(place - QPoint(way, 0));
    QCOMPARE(stage_->tune().last(), "66@149+1");
    stage_->release(place - QPoint(64, 0));
    QCOMPARE(stage_->tune().last(), "66@149+1");
    QCOMPARE(editor_->edits(), 1);
    // 38 bars, as the block ends with the note, and eight more.
    QCOMPARE(canvas().scene()->width(), 46.0 * 256.0);
}

void PianoRollGridViewTest::releaseElsewhereEndsADrag()
{
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    stage_->moveWithoutButtons(stage_->at(8.5, 60));
    QCOMPARE(editor_->edits(), 1);
    stage_->moveWithoutButtons(stage_->at(9.5, 60));
    stage_->release(stage_->at(9.5, 60));
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "64@2+1", "66@3+1", "72@4+0.5"}));
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::releaseOfAnotherButtonLeavesADrag()
{
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    stage_->click(stage_->at(9.5, 66), Qt::MiddleButton);
    stage_->click(stage_->at(9.5, 66), Qt::RightButton);
    QCOMPARE(editor_->edits(), 0);
    stage_->move(stage_->at(6.5, 66));
    stage_->release(stage_->at(6.5, 66));
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "64@2+1", "72@4+0.5", "66@6+1"}));
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::releaseElsewhereEndsARubberBand()
{
    stage_->press(QPoint(5, 5), Qt::LeftButton, Qt::ShiftModifier);
    stage_->move(QPoint(150, 150));
    stage_->click(QPoint(150, 150), Qt::MiddleButton);
    QCOMPARE(canvas().view()->dragMode(), QGraphicsView::RubberBandDrag);
    stage_->moveWithoutButtons(QPoint(200, 200));
    stage_->press(stage_->at(9.0, 66));
    QCOMPARE(canvas().view()->dragMode(), QGraphicsView::NoDrag);
    stage_->release(stage_->at(9.0, 66));
    QVERIFY(stage_->tune().contains("66@9+0.5"));
}

void PianoRollGridViewTest::dialogEndsADrag()
{
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    QDialog dialog(&canvas());
    dialog.open();
    QTRY_COMPARE(editor_->edits(), 1);
    dialog.close();
    stage_->release(stage_->at(3.5, 66));
    QCOMPARE(editor_->edits(), 1);
}

// ---- Drags that lose their notes -----------------------------------------------------------

void PianoRollGridViewTest::undoEndsADrag_data()
{
    QTest::addColumn<QList<NoteEvent>>("undone");

    QTest::newRow("the note is gone") << QList<NoteEvent>();
    QTest::newRow("other notes stand in its place")
        << QList{ProjectBuilder::note(65, 3.0), ProjectBuilder::note(66, 3.0)};
}

void PianoRollGridViewTest::undoEndsADrag()
{
    QFETCH(QList<NoteEvent>, undone);
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    stage_->notes() = undone;
    emit stage_->song.changed();
    stage_->move(stage_->at(5.5, 70));
    stage_->release(stage_->at(5.5, 70));
    QCOMPARE(stage_->notes(), undone);
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollGridViewTest::changeThatKeepsTheNotesLeavesADrag()
{
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    stage_->song.bpm = 90;
    emit stage_->song.changed();
    stage_->move(stage_->at(5.5, 66));
    stage_->release(stage_->at(5.5, 66));
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "64@2+1", "72@4+0.5", "66@5+1"}));
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::liveNoteEndsADrag()
{
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    canvas().notes()->addNoteAt(0.0, 50, 1.0);
    canvas().notes()->commitEdit();
    stage_->move(stage_->at(6.5, 70));
    stage_->release(stage_->at(6.5, 70));
    QCOMPARE(stage_->tune(), QStringList({"50@0+1", "60@0+1", "64@2+1", "66@3+1", "72@4+0.5"}));
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::deletingDuringADragEndsIt()
{
    stage_->press(stage_->at(1.5, 62));
    stage_->key(Qt::Key_Delete);
    stage_->move(stage_->at(6.5, 70));
    stage_->release(stage_->at(6.5, 70));
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "64@2+1", "72@4+0.5"}));
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::anotherTrackEndsADrag()
{
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    canvas().setActiveTrack(2);
    // What the mouse had done is an edit of the track that it was done to.
    QCOMPARE(editor_->edits(), 1);
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "64@2+1", "66@3+1", "72@4+0.5"}));
    stage_->move(stage_->at(6.5, 70));
    stage_->release(stage_->at(6.5, 70));
    QCOMPARE(stage_->tune(2), QStringList{"67@0+1"});
    QCOMPARE(editor_->edits(), 1);
}

void PianoRollGridViewTest::anotherProjectEndsADrag()
{
    Project other;
    writeTune(other);
    stage_->press(stage_->at(1.5, 62));
    stage_->move(stage_->at(3.5, 66));
    canvas().setContext(&other, nullptr);
    stage_->move(stage_->at(6.5, 70));
    stage_->release(stage_->at(6.5, 70));
    QCOMPARE(written(other.tracks[0].melodyBlocks[0].notes),
             QStringList({"60@0+1", "62@1+1", "64@2+1", "72@4+0.5"}));
    QCOMPARE(editor_->edits(), 0);
    canvas().setContext(nullptr, nullptr);
}

void PianoRollGridViewTest::noProjectEndsADrag()
{
    stage_->press(stage_->at(6.5, 62));
    canvas().setContext(nullptr, nullptr);
    stage_->move(stage_->at(8.5, 70));
    stage_->release(stage_->at(8.5, 70));
    QCOMPARE(note(4), "62@6.5+0.5");
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollGridViewTest::vanishedTrackEndsADrag()
{
    stage_->press(stage_->at(1.5, 62));
    stage_->song.tracks.clear();
    stage_->move(stage_->at(6.5, 70));
    stage_->release(stage_->at(6.5, 70));
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollGridViewTest::pressWithoutAReleaseIsEnded()
{
    stage_->press(stage_->at(6.1, 66));
    stage_->press(stage_->at(10.1, 66));
    QCOMPARE(editor_->edits(), 1);
    stage_->release(stage_->at(10.1, 66));
    QCOMPARE(editor_->edits(), 2);
    QCOMPARE(stage_->tune().size(), 6);
}

// ---- Nothing to edit -----------------------------------------------------------------------

void PianoRollGridViewTest::withoutAProjectNothingHappens()
{
    canvas().setContext(nullptr, nullptr);
    stage_->drag(QPoint(100, 100), QPoint(200, 200));
    stage_->click(QPoint(100, 100), Qt::RightButton);
    stage_->band(QPoint(10, 10), QPoint(300, 300));
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, 120));
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(canvas().view()->dragMode(), QGraphicsView::NoDrag);
}

void PianoRollGridViewTest::accompanimentIsNotEdited()
{
    canvas().setActiveTrack(1);
    const Track before = stage_->song.tracks[1];
    stage_->drag(stage_->at(1.0, 66), stage_->at(3.0, 66));
    stage_->click(stage_->at(1.0, 66), Qt::RightButton);
    QCOMPARE(stage_->song.tracks[1], before);
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollGridViewTest::firstNoteOfAnEmptyTrack()
{
    canvas().setActiveTrack(3);
    stage_->click(stage_->at(2.0, 66));
    QCOMPARE(stage_->tune(3), QStringList{"66@2+0.5"});
    QCOMPARE(stage_->song.tracks[3].melodyBlocks[0].durationBeats, 32.0);
}

// ---- Wheel ---------------------------------------------------------------------------------

void PianoRollGridViewTest::wheelScrollsWholeRows()
{
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, 120));
    QCOMPARE(canvas().rows()->topPitch(), 73);
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, -360));
    QCOMPARE(canvas().rows()->topPitch(), 70);
    QTRY_COMPARE(canvas().view()->verticalScrollBar()->value(), 26 * 32);
}

void PianoRollGridViewTest::smallTurnsAddUp()
{
    for (int i = 0; i < 7; ++i)
        PianoRollStage::turnWheel(stage_->grid(), QPoint(0, 16));
    QCOMPARE(canvas().rows()->topPitch(), 72);
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, 16));
    QCOMPARE(canvas().rows()->topPitch(), 73);
    // Back again starts anew, in place of the eight that are left.
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, -119));
    QCOMPARE(canvas().rows()->topPitch(), 73);
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, -1));
    QCOMPARE(canvas().rows()->topPitch(), 72);
}

void PianoRollGridViewTest::ctrlWheelZooms()
{
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, 120), Qt::ControlModifier);
    QCOMPARE(canvas().rows()->zoomX(), 1.15);
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, -120), Qt::ControlModifier);
    QCOMPARE(canvas().rows()->zoomX(), 1.0);
    PianoRollStage::turnWheel(stage_->grid(), QPoint(120, 0), Qt::ControlModifier);
    QCOMPARE(canvas().rows()->zoomX(), 1.0 / 1.15);
    QCOMPARE(canvas().rows()->topPitch(), 72);
}

void PianoRollGridViewTest::zoomKeepsWhatIsUnderTheMouse_data()
{
    QTest::addColumn<bool>("scrolledMeanwhile");

    QTest::newRow("after a move") << false;
    QTest::newRow("after a scroll under the mouse") << true;
}

void PianoRollGridViewTest::zoomKeepsWhatIsUnderTheMouse()
{
    QFETCH(bool, scrolledMeanwhile);
    QVERIFY(QTest::qWaitForWindowExposed(&canvas()));
    canvas().view()->horizontalScrollBar()->setValue(400);
    const QPoint place(300, 200);
    stage_->move(QPoint(299, 200));
    stage_->move(place);
    if (scrolledMeanwhile)
        PianoRollStage::turnWheel(stage_->grid(), QPoint(0, -480), Qt::ShiftModifier);
    const double before = canvas().view()->mapToScene(place).x();
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, 120), Qt::ControlModifier);
    const double after = canvas().view()->mapToScene(place).x();
    // The scroll bar takes whole pixels.
    QVERIFY2(std::abs(after - before) <= 3.0, qPrintable(QString::number(after - before)));
}

void PianoRollGridViewTest::ctrlShiftWheelZoomsRows()
{
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, 120), kCtrlShift);
    QCOMPARE(canvas().rows()->visibleRows(), 12);
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, -120), kCtrlShift);
    QCOMPARE(canvas().rows()->visibleRows(), 13);
    PianoRollStage::turnWheel(stage_->grid(), QPoint(0, 0), kCtrlShift);
    QCOMPARE(canvas().rows()->visibleRows(), 14);
    QCOMPARE(canvas().rows()->zoomX(), 1.0);
}

void PianoRollGridViewTest::zoomOfRowsStaysAtItsTime()
{
    QVERIFY(QTest::qWaitForWindowExposed(&canvas()));
    canvas().zoomHorizontal(1.37);
    canvas().view()->horizontalScrollBar()->setValue(401);
    stage_->move(QPoint(298, 200));
    stage_->move(QPoint(299, 201));
    for (int i = 0; i < 60; ++i) {
        PianoRollStage::turnWheel(stage_->grid(), QPoint(0, i < 30 ? -120 : 120), kCtrlShift);
        QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 401);
    }
}

void PianoRollGridViewTest::shiftWheelScrollsToTheSide_data()
{
    QTest::addColumn<QPoint>("angle");
    QTest::addColumn<int>("value");

    QTest::newRow("down is to the right") << QPoint(0, -120) << 420;
    QTest::newRow("up is to the left") << QPoint(0, 120) << 180;
    QTest::newRow("sideways comes first") << QPoint(-50, 120) << 350;
}

void PianoRollGridViewTest::shiftWheelScrollsToTheSide()
{
    QFETCH(QPoint, angle);
    QFETCH(int, value);
    canvas().view()->horizontalScrollBar()->setValue(300);
    PianoRollStage::turnWheel(stage_->grid(), angle, Qt::ShiftModifier);
    QCOMPARE(canvas().view()->horizontalScrollBar()->value(), value);
    QCOMPARE(canvas().rows()->topPitch(), 72);
}

void PianoRollGridViewTest::sidewaysWheelScrollsToTheSide()
{
    canvas().view()->horizontalScrollBar()->setValue(300);
    PianoRollStage::turnWheel(stage_->grid(), QPoint(-121, 120));
    QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 421);
    QCOMPARE(canvas().rows()->topPitch(), 72);
    // As much of both is a turn of rows.
    PianoRollStage::turnWheel(stage_->grid(), QPoint(-120, 120));
    QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 421);
    QCOMPARE(canvas().rows()->topPitch(), 73);
}

void PianoRollGridViewTest::wheelIsAlwaysTaken()
{
    for (const Qt::KeyboardModifiers modifiers :
         {Qt::KeyboardModifiers(), Qt::KeyboardModifiers(Qt::ShiftModifier),
          Qt::KeyboardModifiers(Qt::ControlModifier), kCtrlShift}) {
        QWheelEvent event(QPointF(10, 10), QPointF(10, 10), QPoint(), QPoint(0, 120), Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        event.ignore();
        QApplication::sendEvent(stage_->grid(), &event);
        QVERIFY(event.isAccepted());
    }
}

// ---- Damage --------------------------------------------------------------------------------

void PianoRollGridViewTest::withoutAListenerTheSceneIsFresh()
{
    editor_.reset();
    stage_->click(stage_->at(1.5, 66));
    // The drawn note has moved before others in the block.
    stage_->drag(stage_->at(2.5, 64), stage_->at(8.5, 64));
    QCOMPARE(stage_->tune(), QStringList({"60@0+1", "62@1+1", "66@1.5+0.5", "72@4+0.5", "64@8+1"}));
    editor_ = std::make_unique<Editor>(*stage_);
}

void PianoRollGridViewTest::damagedBlocksAreEdited_data()
{
    QTest::addColumn<MelodyBlock>("block");

    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr int kMost = std::numeric_limits<int>::max();
    const auto with = [](const QList<NoteEvent>& notes, double start, double length) {
        return melody(notes, start, length);
    };
    const QList<NoteEvent> tune{ProjectBuilder::note(66, 0.0), ProjectBuilder::note(68, 1.0)};
    QTest::newRow("without length") << with(tune, 0.0, 0.0);
    QTest::newRow("before the song") << with(tune, -100.0, 4.0);
    QTest::newRow("nowhere") << with(tune, kNaN, kNaN);
    QTest::newRow("at the end of time") << with(tune, 1e300, 4.0);
    QTest::newRow("notes of no number") << with(
        {ProjectBuilder::note(66, kNaN, kNaN), ProjectBuilder::note(66, 0.0, kNaN)}, 0.0, 4.0);
    QTest::newRow("absurd pitches and lengths")
        << with({ProjectBuilder::note(kMost, 0.0), ProjectBuilder::note(-kMost, 0.0),
                 ProjectBuilder::note(66, 0.0, 1e300), ProjectBuilder::note(66, 0.0, -1e300)},
                0.0, 4.0);
}

void PianoRollGridViewTest::damagedBlocksAreEdited()
{
    QFETCH(MelodyBlock, block);
    stage_->song.tracks[0].melodyBlocks = {block};
    emit stage_->song.changed();
    stage_->band(QPoint(1, 1), QPoint(600, PianoRollStage::kGridHeight - 1));
    stage_->drag(stage_->at(0.5, 66), stage_->at(5.0, 70));
    stage_->drag(stage_->at(5.45, 70), stage_->at(7.0, 70));
    const qsizetype before = stage_->notes().size();
    stage_->click(stage_->at(9.0, 62));
    QCOMPARE(stage_->notes().size(), before + 1);
}

void PianoRollGridViewTest::anyGesturesAreSurvived()
{
    SeededRandom random(78);
    Generator songs(6, Numbers::Hostile);
    const QList<Qt::MouseButton> buttons{Qt::LeftButton, Qt::LeftButton, Qt::LeftButton,
                                         Qt::RightButton, Qt::MiddleButton};
    const QList<Qt::KeyboardModifier> modifiers{Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier,
                                                Qt::ControlModifier};
    const QList<Qt::Key> keys{Qt::Key_Delete, Qt::Key_C,    Qt::Key_V, Qt::Key_D,
                              Qt::Key_X,      Qt::Key_Down, Qt::Key_Up};
    for (int i = 0; i < 2000; ++i) {
        if (i % 200 == 0) {
            songs.fill(stage_->song, 5);
            emit stage_->song.changed();
        }
        const QPoint place(random.between(-50, 800), random.between(-10, 460));
        switch (random.between(0, 11)) {
        case 0:
        case 1:
            stage_->press(place, random.pick(buttons), random.pick(modifiers));
            break;
        case 2:
            stage_->release(place, random.pick(buttons));
            break;
        case 3:
            PianoRollStage::turnWheel(stage_->grid(), QPoint(0, random.oneIn(2) ? 120 : -120),
                                      random.pick(modifiers));
            break;
        case 4:
            stage_->key(random.pick(keys), random.pick(modifiers));
            break;
        case 5:
            canvas().setActiveBlock(random.between(-1, 5), random.between(-1, 3));
            break;
        case 6:
            stage_->moveWithoutButtons(place);
            break;
        default:
            stage_->move(place);
        }
        QVERIFY2(isInStep(*stage_), qPrintable(QString::number(i)));
    }
    QVERIFY(editor_->edits() > 0);
}

VELTA_TEST(PianoRollGridViewTest)

} // namespace PianoRollGridViewTests

#include "PianoRollGridViewTest.moc"
