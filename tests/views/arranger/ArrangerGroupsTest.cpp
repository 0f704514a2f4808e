#include "ArrangerStage.h"
#include "StageBlocks.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/arranger/BlockEditor.h"

namespace ArrangerGroupsTests {

using namespace ProjectBuilder;

/// Several blocks of the arranger at once, by mouse and by keys.
class ArrangerGroupsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aRectangleSelectsBlocksOfAllLanes();
    void aRectangleWithCtrlTakesFurtherBlocksAlong();
    void shiftDrawsARectangleFromTheLaneOfChords();
    void ctrlAndAClickTakeABlockAlongAndLeaveItOut();
    void aClickOnOneOfSeveralSelectsItAlone();

    void severalBlocksAreDraggedTogether();
    void severalBlocksStopTogetherAtTheStart();
    void severalBlocksAreStretchedTogether();
    void severalChordsAreDraggedTogether();
    void altCopiesWhatIsDragged();
    void aCopyIsDraggedOnAndBack();
    void altThatIsLetGoMoves();
    void copiesOfChordsLieOverOthers();
    void deleteTakesAllThatAreSelected();
    void arrowsMoveAllThatAreSelected();
    void somebodyElseTakingACopyEndsTheDrag();

private:
    Project& song() const { return stage_->song; }

    void select(const QList<BlockRef>& blocks) const
    {
        stage_->arranger.blocks()->selectAll(blocks);
    }

    BlockSpan spanOf(const BlockRef& block) const
    {
        return BlockEdits::spanOf(song(), block).value_or(BlockSpan{-1.0, -1.0});
    }

    /// A drag in three moves with a key held at each of them.
    void drag(const QPoint& from, int pixels, Qt::KeyboardModifiers modifiers = {}) const
    {
        stage_->press(from, Qt::LeftButton, modifiers);
        for (const int way : {pixels / 2, pixels * 2 / 3, pixels})
            moveWith(from + QPoint(way, 0), modifiers);
        stage_->release(from + QPoint(pixels, 0));
    }

    void moveWith(const QPoint& place, Qt::KeyboardModifiers modifiers) const
    {
        QMouseEvent event(QEvent::MouseMove, place, stage_->grid()->mapToGlobal(place),
                          Qt::NoButton, Qt::LeftButton, modifiers);
        QApplication::sendEvent(stage_->grid(), &event);
    }

    /// With the left button from one place to another.
    void drawRectangle(const QPoint& from, const QPoint& to,
                       Qt::KeyboardModifiers modifiers = {}) const
    {
        stage_->press(from, Qt::LeftButton, modifiers);
        moveWith((from + to) / 2, modifiers);
        moveWith(to, modifiers);
        stage_->release(to);
    }

    UserHome home_;
    std::unique_ptr<ArrangerStage> stage_;
    int edits_ = 0;
};

void ArrangerGroupsTest::init()
{
    edits_ = 0;
    stage_ = std::make_unique<ArrangerStage>();
    connect(&stage_->arranger, &TrackArranger::edited, this, [this] {
        ++edits_;
        emit song().changed();
    });
}

void ArrangerGroupsTest::cleanup()
{
    stage_.reset();
}

// ---- Selecting -----------------------------------------------------------------------------

void ArrangerGroupsTest::aRectangleSelectsBlocksOfAllLanes()
{
    // From behind everything up to beat 6, across the lanes from the voice to the bass.
    drawRectangle(stage_->at(20.0, kBajoY), stage_->at(6.0, kFlautaY));
    QCOMPARE(stage_->arranger.blocks()->selected(),
             (QList<BlockRef>{kFlute, kFirstBombo, kSecondBombo, kBajo, {BlockKind::Audio, 1, 0}}));
    QCOMPARE(stage_->arranger.view()->dragMode(), QGraphicsView::NoDrag);
    QCOMPARE(edits_, 0);
}

void ArrangerGroupsTest::aRectangleWithCtrlTakesFurtherBlocksAlong()
{
    stage_->click(stage_->at(9.0, kQuenaY));
    drawRectangle(stage_->at(0.5, kAnaY), stage_->at(3.0, kFlautaY), Qt::ControlModifier);
    QCOMPARE(stage_->arranger.blocks()->selected(), (QList<BlockRef>{kSecondMelody, kFlute, kAna}));
}

void ArrangerGroupsTest::shiftDrawsARectangleFromTheLaneOfChords()
{
    drawRectangle(stage_->at(10.0, kChordsY), stage_->at(7.0, kQuenaY), Qt::ShiftModifier);
    QCOMPARE(stage_->arranger.blocks()->selected(),
             (QList<BlockRef>{kSecondMelody, {BlockKind::Chord, 1, 1}}));
    QVERIFY(!QApplication::activePopupWidget());
}

void ArrangerGroupsTest::ctrlAndAClickTakeABlockAlongAndLeaveItOut()
{
    stage_->click(stage_->at(1.0, kQuenaY));
    stage_->click(stage_->at(9.0, kQuenaY), Qt::LeftButton, Qt::ControlModifier);
    stage_->click(stage_->at(5.0, kBajoY), Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.blocks()->selected(),
             (QList<BlockRef>{kFirstMelody, kSecondMelody, kBajo}));
    stage_->click(stage_->at(9.0, kQuenaY), Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.blocks()->selected(), (QList<BlockRef>{kFirstMelody, kBajo}));
    QCOMPARE(edits_, 0);
}

void ArrangerGroupsTest::aClickOnOneOfSeveralSelectsItAlone()
{
    select({kFirstMelody, kBajo});
    stage_->click(stage_->at(5.0, kBajoY));
    QCOMPARE(stage_->arranger.blocks()->selected(), QList<BlockRef>{kBajo});
}

// ---- Dragging ------------------------------------------------------------------------------

void ArrangerGroupsTest::severalBlocksAreDraggedTogether()
{
    select({kSecondMelody, kAna, kSecondBombo});
    drag(stage_->at(9.0, kQuenaY), 64);
    QCOMPARE(spanOf(kSecondMelody), (BlockSpan{10.0, 4.0}));
    QCOMPARE(spanOf(kAna), (BlockSpan{3.25, 3.0}));
    QCOMPARE(spanOf(kSecondBombo), (BlockSpan{10.0, 8.0}));
    QCOMPARE(spanOf(kFirstBombo), (BlockSpan{0.0, 8.0}));
    QCOMPARE(edits_, 1);
    QCOMPARE(stage_->arranger.blocks()->selected(),
             (QList<BlockRef>{kSecondMelody, kSecondBombo, kAna}));
}

void ArrangerGroupsTest::severalBlocksStopTogetherAtTheStart()
{
    select({kSecondMelody, kAna});
    drag(stage_->at(9.0, kQuenaY), -200);
    QCOMPARE(spanOf(kAna), (BlockSpan{0.0, 3.0}));
    QCOMPARE(spanOf(kSecondMelody), (BlockSpan{6.75, 4.0}));
}

void ArrangerGroupsTest::severalBlocksAreStretchedTogether()
{
    select({kSecondMelody, kBajo});
    drag(stage_->at(12.0, kQuenaY) - QPoint(3, 0), -96);
    QCOMPARE(spanOf(kSecondMelody), (BlockSpan{8.0, 1.0}));
    QCOMPARE(spanOf(kBajo), (BlockSpan{4.0, 1.0}));
    QCOMPARE(edits_, 1);
}

void ArrangerGroupsTest::severalChordsAreDraggedTogether()
{
    select({{BlockKind::Chord, 0, 0}, {BlockKind::Chord, 1, 0}, kBajo});
    drag(stage_->at(1.0, kChordsY), 64);
    const QList<HarmonyBlock> expected{{0, {chord(1, 2.0, 2.0)}},
                                       {1, {chord(1, 0.0, 2.0), chord(4, 2.0, 2.0)}}};
    QCOMPARE(song().harmonyTrack.blocks, expected);
    QCOMPARE(spanOf(kBajo), (BlockSpan{6.0, 4.0}));
    QCOMPARE(edits_, 1);
}

void ArrangerGroupsTest::altCopiesWhatIsDragged()
{
    select({kSecondMelody, kBajo, {BlockKind::Audio, 0, 0}});
    drag(stage_->at(9.0, kQuenaY), 160, Qt::AltModifier);
    QCOMPARE(
        song().tracks[0].melodyBlocks,
        (QList<MelodyBlock>{melody(notesInARow({60, 62})), melody({}, 8.0), melody({}, 13.0)}));
    QCOMPARE(song().tracks[3].loopBlocks,
             (QList<LoopBlock>{loop("r", "bajo", 4.0, 4.0, LoopSection::Final, 3),
                               loop("r", "bajo", 9.0, 4.0, LoopSection::Final, 3)}));
    QCOMPARE(song().audioTracks[0].clips,
             (QList<AudioClip>{clip("a.wav", 1.25, 3.0), clip("a.wav", 6.25, 3.0)}));
    QCOMPARE(edits_, 1);
    QCOMPARE(stage_->arranger.blocks()->selected(),
             (QList<BlockRef>{
                 {BlockKind::Melody, 0, 2}, {BlockKind::Loop, 3, 1}, {BlockKind::Audio, 0, 1}}));
}

void ArrangerGroupsTest::aCopyIsDraggedOnAndBack()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    for (const int way : {64, 320, 32, 0})
        moveWith(place + QPoint(way, 0), Qt::AltModifier);
    QCOMPARE(song().tracks[0].melodyBlocks.size(), 2);
    stage_->release(place);
    Project expected;
    writeSong(expected);
    QCOMPARE(firstDifference(song(), expected), QString());
}

void ArrangerGroupsTest::altThatIsLetGoMoves()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    moveWith(place + QPoint(64, 0), Qt::AltModifier);
    QCOMPARE(song().tracks[0].melodyBlocks.size(), 3);
    moveWith(place + QPoint(96, 0), {});
    stage_->release(place + QPoint(96, 0));
    QCOMPARE(song().tracks[0].melodyBlocks.size(), 2);
    QCOMPARE(spanOf(kSecondMelody), (BlockSpan{11.0, 4.0}));
}

void ArrangerGroupsTest::copiesOfChordsLieOverOthers()
{
    drag(stage_->at(1.0, kChordsY), 192, Qt::AltModifier);
    const QList<HarmonyBlock> expected{{0, {chord(1, 0.0, 4.0)}},
                                       {1, {chord(4, 0.0, 2.0), chord(1, 2.0, 2.0)}},
                                       {2, {chord(1, 0.0, 2.0)}}};
    QCOMPARE(song().harmonyTrack.blocks, expected);
    QCOMPARE(stage_->arranger.blocks()->selected(),
             (QList<BlockRef>{{BlockKind::Chord, 1, 1}, {BlockKind::Chord, 2, 0}}));
}

// ---- Other edits ---------------------------------------------------------------------------

void ArrangerGroupsTest::deleteTakesAllThatAreSelected()
{
    select({kFirstMelody,
            kSecondMelody,
            kFirstBombo,
            {BlockKind::Chord, 1, 0},
            {BlockKind::Chord, 1, 1}});
    stage_->key(Qt::Key_Delete);
    QVERIFY(song().tracks[0].melodyBlocks.isEmpty());
    QCOMPARE(song().tracks[1].loopBlocks, (QList<LoopBlock>{loop("r", "bombo", 8.0, 8.0)}));
    QCOMPARE(song().harmonyTrack.blocks, (QList<HarmonyBlock>{{0, {chord(1, 0.0, 4.0)}}}));
    QCOMPARE(edits_, 1);
}

void ArrangerGroupsTest::arrowsMoveAllThatAreSelected()
{
    select({kFlute, kSecondBombo, {BlockKind::Chord, 1, 1}});
    stage_->key(Qt::Key_Right);
    QCOMPARE(spanOf(kFlute).start, 3.5);
    QCOMPARE(spanOf(kSecondBombo).start, 9.0);
    QCOMPARE(edits_, 1);
    stage_->key(Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(spanOf(kFlute).length, 3.0);
    QCOMPARE(spanOf(kSecondBombo).length, 7.0);
    QCOMPARE(edits_, 2);
    for (int i = 0; i < 9; ++i)
        stage_->key(Qt::Key_Left);
    QCOMPARE(spanOf(kFlute).start, 0.0);
    QCOMPARE(spanOf(kSecondBombo).start, 5.5);
}

void ArrangerGroupsTest::somebodyElseTakingACopyEndsTheDrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    moveWith(place + QPoint(64, 0), Qt::AltModifier);
    song().tracks[0].melodyBlocks.removeLast();
    emit song().changed();
    moveWith(place + QPoint(96, 0), Qt::AltModifier);
    QVERIFY(!stage_->arranger.view()->isDragging());
    stage_->release(place + QPoint(96, 0));
    QCOMPARE(song().tracks[0].melodyBlocks.size(), 2);
    QCOMPARE(edits_, 0);
}

VELTA_TEST(ArrangerGroupsTest)

} // namespace ArrangerGroupsTests

#include "ArrangerGroupsTest.moc"
