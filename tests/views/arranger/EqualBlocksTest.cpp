#include "ArrangerStage.h"
#include "StageBlocks.h"
#include "support/TestProgram.h"
#include "views/arranger/BlockEditor.h"

namespace EqualBlocksTests {

using namespace ProjectBuilder;

/// Blocks that come to lie exactly on equal ones: nobody could see that there are two.
class EqualBlocksTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void aBlockDroppedOnAnEqualOneGoesBack_data();
    void aBlockDroppedOnAnEqualOneGoesBack();
    void aBlockStretchedOverAnEqualOneGoesBack();
    void aLoopInsideALongerOneGoesBack();
    void blocksDroppedTogetherGoBackTogether();
    void blocksThatMoveOnToOneAnotherArriveTogether();
    void whatDiffersMayLieThere_data();
    void whatDiffersMayLieThere();
    void aChordOnAnEqualOneGoesBack();
    void chordsThatBringOneThingNewReplaceTheRest();

    void aCopyOnAnEqualOneIsNotLaid();
    void ofCopiesThoseAreLaidThatAreNew();
    void aCopyOfAChordOnAnEqualOneIsNotLaid();

    void whatEndsADragRefusesToo();
    void anArrowGoesOnBehindAnEqualBlock();
    void anArrowThatHasNoPlaceLeftStays();
    void aKeyThatIsHeldPassesEqualBlocks();

private:
    TrackArranger& arranger() const { return stage_->arranger; }

    BlockEditor& editor() const { return *arranger().blocks(); }

    Project& song() const { return stage_->song; }

    QList<LoopBlock>& bombo() const { return song().tracks[1].loopBlocks; }

    /// Gives the lane of the bombo equal loops of a bar at some beats.
    void layEqualLoops(const QList<double>& starts);

    QList<double> startsOfLoops() const;

    void dragBy(const BlockRef& block, double beats, bool copying = false, bool byTheEnd = false);
    void compareRefused(const QJsonObject& before, const QString& told);

    std::unique_ptr<ArrangerStage> stage_;
    std::unique_ptr<QSignalSpy> told_;
    int edits_ = 0;
};

void EqualBlocksTest::init()
{
    edits_ = 0;
    stage_ = std::make_unique<ArrangerStage>();
    told_ = std::make_unique<QSignalSpy>(&arranger(), &TrackArranger::alreadyThere);
    connect(&arranger(), &TrackArranger::edited, this, [this] {
        ++edits_;
        emit song().changed();
    });
}

void EqualBlocksTest::layEqualLoops(const QList<double>& starts)
{
    bombo().clear();
    for (const double start : starts)
        bombo().append(loop("r", "bombo", start, 4.0));
    emit song().changed();
}

QList<double> EqualBlocksTest::startsOfLoops() const
{
    QList<double> starts;
    for (const LoopBlock& block : std::as_const(bombo()))
        starts.append(block.startBeat);
    return starts;
}

void EqualBlocksTest::dragBy(const BlockRef& block, double beats, bool copying, bool byTheEnd)
{
    editor().take(block, BlockEditor::Press::Plain, byTheEnd, 0.0);
    for (const double part : {0.25, 0.5, 1.0})
        editor().dragTo(part * beats * 32.0, Qt::LeftButton, copying);
    editor().release();
}

void EqualBlocksTest::compareRefused(const QJsonObject& before, const QString& told)
{
    QCOMPARE(song().toJson(), before);
    QCOMPARE(edits_, 0);
    QCOMPARE(told_->size(), 1);
    QCOMPARE(told_->first().first().toString(), told);
}

void EqualBlocksTest::aBlockDroppedOnAnEqualOneGoesBack_data()
{
    QTest::addColumn<BlockRef>("block");
    QTest::addColumn<QString>("told");

    QTest::newRow("a loop") << kFirstBombo << "r, bombo, Normal 1, compás 3, 2 compases";
    QTest::newRow("a melody") << kFirstMelody << "Melodía (2 notas), compás 3, 1 compás";
    QTest::newRow("a voice") << kAna << "Voz, a.wav, compás 3, blanca con puntillo";
}

void EqualBlocksTest::aBlockDroppedOnAnEqualOneGoesBack()
{
    QFETCH(BlockRef, block);
    QFETCH(QString, told);
    bombo()[0] = loop("r", "bombo", 0.0, 8.0);
    song().tracks[0].melodyBlocks[1] = melody(notesInARow({60, 62}), 8.0);
    song().audioTracks[0].clips.append(clip("a.wav", 9.25, 3.0));
    emit song().changed();
    const QJsonObject before = song().toJson();
    dragBy(block, 8.0);
    compareRefused(before, told);
    QCOMPARE(editor().selected(), QList<BlockRef>{block});
}

void EqualBlocksTest::aBlockStretchedOverAnEqualOneGoesBack()
{
    layEqualLoops({0.0, 0.0});
    bombo()[0].durationBeats = 2.0;
    emit song().changed();
    const QJsonObject before = song().toJson();
    dragBy({BlockKind::Loop, 1, 0}, 2.0, false, true);
    compareRefused(before, "r, bombo, Normal 1, compás 1, 1 compás");
}

void EqualBlocksTest::aLoopInsideALongerOneGoesBack()
{
    layEqualLoops({0.0, 8.0});
    bombo()[1].durationBeats = 12.0;
    emit song().changed();
    const QJsonObject before = song().toJson();
    dragBy({BlockKind::Loop, 1, 0}, 8.0);
    compareRefused(before, "r, bombo, Normal 1, compás 3, 3 compases");
    // The other way round the longer one brings something new.
    dragBy({BlockKind::Loop, 1, 1}, -8.0);
    QCOMPARE(startsOfLoops(), (QList<double>{0.0, 0.0}));
    QCOMPARE(edits_, 1);
}

void EqualBlocksTest::blocksDroppedTogetherGoBackTogether()
{
    layEqualLoops({0.0, 8.0});
    const QJsonObject before = song().toJson();
    editor().selectAll({{BlockKind::Loop, 1, 0}, kFlute, kSeventh});
    dragBy({BlockKind::Loop, 1, 0}, 8.0);
    compareRefused(before, "r, bombo, Normal 1, compás 3, 1 compás");
    QCOMPARE(editor().selected(), (QList<BlockRef>{kFlute, {BlockKind::Loop, 1, 0}, kSeventh}));
}

void EqualBlocksTest::blocksThatMoveOnToOneAnotherArriveTogether()
{
    layEqualLoops({0.0, 4.0, 8.0});
    editor().selectAll({{BlockKind::Loop, 1, 0}, {BlockKind::Loop, 1, 1}, {BlockKind::Loop, 1, 2}});
    dragBy({BlockKind::Loop, 1, 1}, 4.0);
    QCOMPARE(startsOfLoops(), (QList<double>{4.0, 8.0, 12.0}));
    QCOMPARE(edits_, 1);
    QVERIFY(told_->isEmpty());
}

void EqualBlocksTest::whatDiffersMayLieThere_data()
{
    QTest::addColumn<LoopBlock>("other");

    QTest::newRow("another variation") << loop("r", "bombo", 8.0, 4.0, LoopSection::Normal, 2);
    QTest::newRow("another section") << loop("r", "bombo", 8.0, 4.0, LoopSection::Intro);
    QTest::newRow("a shorter one") << loop("r", "bombo", 8.0, 3.0);
    QTest::newRow("a beat beside it") << loop("r", "bombo", 9.0, 4.0);
}

void EqualBlocksTest::whatDiffersMayLieThere()
{
    QFETCH(LoopBlock, other);
    layEqualLoops({0.0});
    bombo().append(other);
    emit song().changed();
    dragBy({BlockKind::Loop, 1, 0}, 8.0);
    QCOMPARE(startsOfLoops().first(), 8.0);
    QCOMPARE(edits_, 1);
    QVERIFY(told_->isEmpty());
}

void EqualBlocksTest::aChordOnAnEqualOneGoesBack()
{
    song().harmonyTrack = harmony({1, 4, 1});
    emit song().changed();
    const QJsonObject before = song().toJson();
    dragBy({BlockKind::Chord, 0, 0}, 8.0);
    QCOMPARE(song().toJson(), before);
    QCOMPARE(edits_, 0);
    QCOMPARE(told_->size(), 1);
    QCOMPARE(editor().selected(), (QList<BlockRef>{{BlockKind::Chord, 0, 0}}));
}

void EqualBlocksTest::chordsThatBringOneThingNewReplaceTheRest()
{
    song().harmonyTrack = harmony({1, 4, 1, 5});
    emit song().changed();
    editor().selectAll({{BlockKind::Chord, 0, 0}, {BlockKind::Chord, 1, 0}});
    dragBy({BlockKind::Chord, 0, 0}, 8.0);
    QCOMPARE(edits_, 1);
    QVERIFY(told_->isEmpty());
    HarmonyTrack left = harmony({1, 1, 1, 4});
    left.blocks.remove(0, 2);
    QCOMPARE(song().harmonyTrack.blocks, left.blocks);
}

void EqualBlocksTest::aCopyOnAnEqualOneIsNotLaid()
{
    layEqualLoops({0.0, 8.0});
    const QJsonObject before = song().toJson();
    dragBy({BlockKind::Loop, 1, 0}, 8.0, true);
    compareRefused(before, "r, bombo, Normal 1, compás 3, 1 compás");
}

void EqualBlocksTest::ofCopiesThoseAreLaidThatAreNew()
{
    layEqualLoops({0.0, 4.0, 8.0});
    editor().selectAll({{BlockKind::Loop, 1, 0}, {BlockKind::Loop, 1, 1}, kFirstMelody});
    dragBy({BlockKind::Loop, 1, 0}, 8.0, true);
    QCOMPARE(startsOfLoops(), (QList<double>{0.0, 4.0, 8.0, 12.0}));
    QCOMPARE(song().tracks[0].melodyBlocks.size(), 3);
    QCOMPARE(edits_, 1);
    QVERIFY(told_->isEmpty());
    QCOMPARE(editor().selected(),
             (QList<BlockRef>{{BlockKind::Melody, 0, 2}, {BlockKind::Loop, 1, 3}}));
}

void EqualBlocksTest::aCopyOfAChordOnAnEqualOneIsNotLaid()
{
    song().harmonyTrack = harmony({1, 4, 1});
    emit song().changed();
    const QJsonObject before = song().toJson();
    dragBy({BlockKind::Chord, 0, 0}, 8.0, true);
    QCOMPARE(song().toJson(), before);
    QCOMPARE(edits_, 0);
    QCOMPARE(told_->size(), 1);
}

void EqualBlocksTest::whatEndsADragRefusesToo()
{
    layEqualLoops({0.0, 8.0});
    const QJsonObject before = song().toJson();
    editor().take({BlockKind::Loop, 1, 0}, BlockEditor::Press::Plain, false, 0.0);
    editor().dragTo(8.0 * 32.0, Qt::LeftButton, false);
    arranger().endDrag();
    compareRefused(before, "r, bombo, Normal 1, compás 3, 1 compás");
}

void EqualBlocksTest::anArrowGoesOnBehindAnEqualBlock()
{
    layEqualLoops({7.0, 8.0, 9.0});
    editor().select({BlockKind::Loop, 1, 0});
    stage_->key(Qt::Key_Right);
    QCOMPARE(startsOfLoops().first(), 10.0);
    QCOMPARE(edits_, 1);
    QCOMPARE(told_->size(), 1);
    stage_->key(Qt::Key_Left);
    QCOMPARE(startsOfLoops().first(), 7.0);
    QCOMPARE(edits_, 2);
}

void EqualBlocksTest::anArrowThatHasNoPlaceLeftStays()
{
    layEqualLoops({1.0, 0.0});
    const QJsonObject before = song().toJson();
    editor().select({BlockKind::Loop, 1, 0});
    stage_->key(Qt::Key_Left);
    compareRefused(before, "r, bombo, Normal 1, compás 1, 1 compás");
}

void EqualBlocksTest::aKeyThatIsHeldPassesEqualBlocks()
{
    layEqualLoops({6.0, 8.0});
    editor().select({BlockKind::Loop, 1, 0});
    for (const bool repeated : {false, true, true}) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Right, {}, QString(), repeated);
        QApplication::sendEvent(&arranger(), &press);
    }
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_Right, {});
    QApplication::sendEvent(&arranger(), &release);
    QCOMPARE(startsOfLoops().first(), 10.0);
    QCOMPARE(edits_, 1);
}

VELTA_TEST(EqualBlocksTest)

} // namespace EqualBlocksTests

#include "EqualBlocksTest.moc"
