#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/arranger/ArrangerStage.h"

#include <memory>

namespace ArrangerKeysTests {

using namespace ProjectBuilder;

namespace {

const BlockRef kFirstMelody{BlockKind::Melody, 0, 0};
const BlockRef kSecondMelody{BlockKind::Melody, 0, 1};
const BlockRef kFlute{BlockKind::Melody, 2, 0};
const BlockRef kVoice{BlockKind::Audio, 0, 0};
const BlockRef kBombo{BlockKind::Loop, 1, 0};
const BlockRef kChord{BlockKind::Chord, 1, 1};

} // namespace

/// A song without a mouse: the arrows, Return and Escape of the arranger.
class ArrangerKeysTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void arrowsMoveTheBlock_data();
    void arrowsMoveTheBlock();
    void shiftAndArrowsStretchTheBlock_data();
    void shiftAndArrowsStretchTheBlock();
    void aCompoundMeterStepsByItsPulse();
    void aChordThatIsMovedOnLeavesThoseOnItsWay();
    void shiftAndArrowsStretchAChord();
    void blocksStayOnTheirLane();
    void aKeyThatIsHeldIsOneEdit();
    void anotherKeyIsAnotherEdit();
    void theFocusTakesTheRunAlong();
    void aRunThatChangesNothingIsNoEdit();
    void aBlockThatGoesEndsTheRun();

    void ctrlAndArrowsGoAlongTheLane();
    void ctrlAndArrowsGoToTheLaneBeside();
    void aTrackOnTheWayIsSelected();
    void whatIsSelectedComesIntoSight();
    void theMouseTakesTheKeysAlong();
    void escapeSelectsNothing();

    void withoutASelectionArrowsMoveThePlayhead();
    void pagesMoveThePlayheadByBars();
    void thePlayheadComesIntoSight();

    void returnOnTheChordLaneOpensTheMenu();
    void returnBeginsAtTheFirstTriad();
    void returnFoldsAGroup();
    void returnOpensAMelody();
    void returnOnAnythingElseIsPassedOn();
    void theLaneOfTheKeysIsMarked();
    void withoutAProjectArrowsArePassedOn();

private:
    TrackArranger& arranger() const { return stage_->arranger; }

    Project& song() const { return stage_->song; }

    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        stage_->key(key, modifiers);
    }

    void go(Qt::Key key) const { stage_->key(key, Qt::ControlModifier); }

    void press(Qt::Key key, bool repeated = false) const
    {
        QKeyEvent event(QEvent::KeyPress, key, {}, QString(), repeated);
        QApplication::sendEvent(&arranger(), &event);
    }

    void release(Qt::Key key) const
    {
        QKeyEvent event(QEvent::KeyRelease, key, {});
        QApplication::sendEvent(&arranger(), &event);
    }

    BlockSpan spanOf(const BlockRef& block) const
    {
        return BlockOrder::placeOf(song(), block).value_or(BlockSpan{-1.0, -1.0});
    }

    UserHome home_;
    std::unique_ptr<SoundfontPlayer> player_;
    std::unique_ptr<PlaybackEngine> engine_;
    std::unique_ptr<ArrangerStage> stage_;
    int edits_ = 0;
};

void ArrangerKeysTest::init()
{
    edits_ = 0;
    player_ = std::make_unique<SoundfontPlayer>(SoundfontPlayer::Mode::Offline);
    engine_ = std::make_unique<PlaybackEngine>(player_.get(), nullptr, nullptr);
    stage_ = std::make_unique<ArrangerStage>();
    engine_->setProject(&song());
    arranger().setContext(&song(), engine_.get(), stage_->content.library());
    connect(&arranger(), &TrackArranger::edited, this, [this] {
        ++edits_;
        emit song().changed();
    });
}

void ArrangerKeysTest::cleanup()
{
    stage_.reset();
    engine_.reset();
    player_.reset();
}

// ---- Moving and stretching -----------------------------------------------------------------

void ArrangerKeysTest::arrowsMoveTheBlock_data()
{
    QTest::addColumn<BlockRef>("block");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<double>("start");

    QTest::newRow("a melody later") << kFirstMelody << Qt::Key_Right << 1.0;
    QTest::newRow("a melody earlier") << kSecondMelody << Qt::Key_Left << 7.0;
    QTest::newRow("not before the song") << kFirstMelody << Qt::Key_Left << 0.0;
    QTest::newRow("off the grid it stays off it") << kFlute << Qt::Key_Right << 3.5;
    QTest::newRow("a loop") << kBombo << Qt::Key_Right << 1.0;
    QTest::newRow("a voice") << kVoice << Qt::Key_Left << 0.25;
}

void ArrangerKeysTest::arrowsMoveTheBlock()
{
    QFETCH(BlockRef, block);
    QFETCH(Qt::Key, key);
    const double length = spanOf(block).length;
    arranger().goToBlock(block);
    this->key(key);
    QTEST(spanOf(block).start, "start");
    QCOMPARE(spanOf(block).length, length);
    QCOMPARE(stage_->selected(), QList<BlockRef>({block}));
}

void ArrangerKeysTest::shiftAndArrowsStretchTheBlock_data()
{
    QTest::addColumn<BlockRef>("block");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("times");
    QTest::addColumn<double>("length");

    QTest::newRow("longer") << kSecondMelody << Qt::Key_Right << 2 << 6.0;
    QTest::newRow("shorter") << kBombo << Qt::Key_Left << 3 << 5.0;
    QTest::newRow("not shorter than a step") << kVoice << Qt::Key_Left << 9 << 1.0;
}

void ArrangerKeysTest::shiftAndArrowsStretchTheBlock()
{
    QFETCH(BlockRef, block);
    QFETCH(Qt::Key, key);
    QFETCH(int, times);
    const double start = spanOf(block).start;
    arranger().goToBlock(block);
    for (int i = 0; i < times; ++i)
        this->key(key, Qt::ShiftModifier);
    QTEST(spanOf(block).length, "length");
    QCOMPARE(spanOf(block).start, start);
    QCOMPARE(stage_->selected(), QList<BlockRef>({block}));
}

void ArrangerKeysTest::aCompoundMeterStepsByItsPulse()
{
    song().timeSignature = {.numerator = 6, .denominator = 8, .isCompound = true};
    arranger().goToBlock(kSecondMelody);
    key(Qt::Key_Right);
    key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(spanOf(kSecondMelody), (BlockSpan{9.5, 5.5}));
}

void ArrangerKeysTest::aChordThatIsMovedOnLeavesThoseOnItsWay()
{
    const HarmonyTrack before = song().harmonyTrack;
    arranger().goToBlock(kChord);
    press(Qt::Key_Right);
    for (int i = 0; i < 7; ++i)
        press(Qt::Key_Right, true);
    release(Qt::Key_Right);
    QCOMPARE(edits_, 1);
    QList<HarmonyBlock> expected = before.blocks;
    expected.append({.barIndex = 3, .events = {expected[1].events.takeLast()}});
    QCOMPARE(song().harmonyTrack.blocks, expected);
    QCOMPARE(engine_->playheadBeat(), 0.0);
    QCOMPARE(stage_->selected(), (QList<BlockRef>{{BlockKind::Chord, 3, 0}}));
}

void ArrangerKeysTest::shiftAndArrowsStretchAChord()
{
    arranger().goToBlock(kChord);
    key(Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(spanOf(kChord), (BlockSpan{6.0, 1.0}));
    QCOMPARE(stage_->selected(), QList<BlockRef>({kChord}));
}

void ArrangerKeysTest::blocksStayOnTheirLane()
{
    const QJsonObject before = song().toJson();
    arranger().goToBlock(kFirstMelody);
    key(Qt::Key_Down);
    key(Qt::Key_Up);
    key(Qt::Key_Down, Qt::ShiftModifier);
    QCOMPARE(song().toJson(), before);
}

void ArrangerKeysTest::aKeyThatIsHeldIsOneEdit()
{
    arranger().goToBlock(kBombo);
    press(Qt::Key_Right);
    for (int i = 0; i < 4; ++i)
        press(Qt::Key_Right, true);
    QCOMPARE(spanOf(kBombo).start, 5.0);
    QCOMPARE(edits_, 0);
    release(Qt::Key_Right);
    QCOMPARE(edits_, 1);
    QCOMPARE(stage_->selected(), QList<BlockRef>({kBombo}));
    key(Qt::Key_Right);
    QCOMPARE(edits_, 2);
}

void ArrangerKeysTest::anotherKeyIsAnotherEdit()
{
    arranger().goToBlock(kBombo);
    press(Qt::Key_Right);
    press(Qt::Key_Left);
    QCOMPARE(edits_, 1);
    release(Qt::Key_Right);
    release(Qt::Key_Left);
    QCOMPARE(edits_, 2);
    QCOMPARE(spanOf(kBombo).start, 0.0);
}

void ArrangerKeysTest::theFocusTakesTheRunAlong()
{
    arranger().goToBlock(kBombo);
    press(Qt::Key_Right);
    QFocusEvent out(QEvent::FocusOut);
    QApplication::sendEvent(&arranger(), &out);
    QCOMPARE(edits_, 1);
    release(Qt::Key_Right);
    QCOMPARE(edits_, 1);
}

void ArrangerKeysTest::aRunThatChangesNothingIsNoEdit()
{
    arranger().goToBlock(kFirstMelody);
    key(Qt::Key_Left);
    QCOMPARE(edits_, 0);
}

void ArrangerKeysTest::aBlockThatGoesEndsTheRun()
{
    arranger().goToBlock(kFirstMelody);
    press(Qt::Key_Right);
    song().tracks[0].melodyBlocks.removeFirst();
    emit song().changed();
    press(Qt::Key_Right, true);
    release(Qt::Key_Right);
    QCOMPARE(song().tracks[0].melodyBlocks.size(), 1);
    arranger().goToBlock(kBombo);
    press(Qt::Key_Right);
    key(Qt::Key_Delete);
    release(Qt::Key_Right);
    QCOMPARE(song().tracks[1].loopBlocks.size(), 1);
}

// ---- Selecting -----------------------------------------------------------------------------

void ArrangerKeysTest::ctrlAndArrowsGoAlongTheLane()
{
    engine_->setPlayheadBeat(4.6);
    go(Qt::Key_Right);
    QCOMPARE(stage_->selected(), QList<BlockRef>({{BlockKind::Chord, 1, 0}}));
    go(Qt::Key_Right);
    go(Qt::Key_Right);
    QCOMPARE(stage_->selected(), QList<BlockRef>({kChord}));
    for (int i = 0; i < 4; ++i)
        go(Qt::Key_Left);
    QCOMPARE(stage_->selected(), QList<BlockRef>({{BlockKind::Chord, 0, 0}}));
    QCOMPARE(edits_, 0);
}

void ArrangerKeysTest::ctrlAndArrowsGoToTheLaneBeside()
{
    go(Qt::Key_Right);
    for (int i = 0; i < 2; ++i)
        go(Qt::Key_Down);
    QCOMPARE(stage_->selected(), QList<BlockRef>({kFlute}));
    // From beat 2.5 the nearest are these.
    go(Qt::Key_Down);
    QCOMPARE(stage_->selected(), QList<BlockRef>({kVoice}));
    go(Qt::Key_Up);
    go(Qt::Key_Up);
    QCOMPARE(stage_->selected(), QList<BlockRef>({kFirstMelody}));
    go(Qt::Key_Up);
    go(Qt::Key_Up);
    QCOMPARE(arranger().keyLane(), LaneRef());
}

void ArrangerKeysTest::aTrackOnTheWayIsSelected()
{
    song().tracks[2].melodyBlocks.clear();
    emit song().changed();
    go(Qt::Key_Down);
    go(Qt::Key_Down);
    QCOMPARE(arranger().activeTrack(), 2);
    QCOMPARE(arranger().selectedTracks(), QList<int>({2}));
    QCOMPARE(stage_->selected(), QList<BlockRef>());
    go(Qt::Key_Down);
    QCOMPARE(arranger().selectedAudioTrack(), 0);
}

void ArrangerKeysTest::whatIsSelectedComesIntoSight()
{
    arranger().resize(400, 200);
    QCoreApplication::processEvents();
    song().tracks[3].loopBlocks.append(loop("r", "bajo", 60.0, 2.0));
    emit song().changed();
    for (int i = 0; i < 8; ++i)
        go(Qt::Key_Down);
    go(Qt::Key_Right);
    QCOMPARE(stage_->selected(), QList<BlockRef>({{BlockKind::Loop, 3, 1}}));
    const QRect seen = stage_->grid()->rect();
    QVERIFY(seen.contains(stage_->at(60.0, kBajoY)));
    QVERIFY(seen.contains(stage_->at(62.0, kBajoY)));
}

void ArrangerKeysTest::theMouseTakesTheKeysAlong()
{
    stage_->click(stage_->at(9.0, kQuenaY));
    QCOMPARE(arranger().keyLane(), (LaneRef{LaneKind::NoteTrack, 0}));
    go(Qt::Key_Left);
    QCOMPARE(stage_->selected(), QList<BlockRef>({kFirstMelody}));
    stage_->click(stage_->at(17.0, kBetoY));
    QCOMPARE(arranger().keyLane(), (LaneRef{LaneKind::AudioTrack, 1}));
    stage_->click(stage_->at(1.0, kChordsY));
    QCOMPARE(arranger().keyLane(), LaneRef());
}

void ArrangerKeysTest::escapeSelectsNothing()
{
    arranger().goToBlock(kBombo);
    key(Qt::Key_Escape);
    QCOMPARE(stage_->selected(), QList<BlockRef>());
    arranger().setRecording(true);
    arranger().goToBlock(kBombo);
    key(Qt::Key_Escape);
    QCOMPARE(stage_->selected(), QList<BlockRef>({kBombo}));
}

// ---- The playhead --------------------------------------------------------------------------

void ArrangerKeysTest::withoutASelectionArrowsMoveThePlayhead()
{
    key(Qt::Key_Right);
    key(Qt::Key_Right);
    QCOMPARE(engine_->playheadBeat(), 2.0);
    key(Qt::Key_Left);
    QCOMPARE(engine_->playheadBeat(), 1.0);
    key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(engine_->playheadBeat(), 1.0);
    QVERIFY(!engine_->isPlaying());
    QCOMPARE(edits_, 0);
}

void ArrangerKeysTest::pagesMoveThePlayheadByBars()
{
    arranger().goToBlock(kBombo);
    key(Qt::Key_PageDown);
    key(Qt::Key_PageDown);
    QCOMPARE(engine_->playheadBeat(), 8.0);
    key(Qt::Key_PageUp);
    QCOMPARE(engine_->playheadBeat(), 4.0);
}

void ArrangerKeysTest::thePlayheadComesIntoSight()
{
    for (int i = 0; i < 40; ++i)
        key(Qt::Key_PageDown);
    const double end = arranger().scene()->width() / 32.0;
    QCOMPARE(engine_->playheadBeat(), end);
    QVERIFY(stage_->grid()->rect().contains(stage_->at(end - 0.1, kChordsY)));
}

// ---- Return --------------------------------------------------------------------------------

void ArrangerKeysTest::returnOnTheChordLaneOpensTheMenu()
{
    engine_->setPlayheadBeat(5.7);
    const MenuAnswer answer({"ii · Rem"});
    key(Qt::Key_Return);
    QVERIFY(answer.wasAsked());
    const QPoint playhead = stage_->grid()->mapToGlobal(stage_->at(5.0, kChordsY));
    QVERIFY((answer.place() - playhead).manhattanLength() < 40);
    const HarmonyDegreeEvent* laid = song().harmonyTrack.eventAt(5.5, 4.0);
    QVERIFY(laid);
    QCOMPARE(*laid, chord(2, 1.0, 3.0));
    QCOMPARE(edits_, 1);
}

void ArrangerKeysTest::returnBeginsAtTheFirstTriad()
{
    QTimer::singleShot(0, this, [] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        QVERIFY(menu);
        QVERIFY(menu->activeAction());
        QCOMPARE(menu->activeAction()->text(), "I · Do");
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    engine_->setPlayheadBeat(8.0);
    key(Qt::Key_Enter);
    QVERIFY(song().harmonyTrack.eventAt(8.0, 4.0));
    QCOMPARE(*song().harmonyTrack.eventAt(8.0, 4.0), chord(2, 0.0, 4.0));
}

void ArrangerKeysTest::returnFoldsAGroup()
{
    arranger().goToLane({LaneKind::Group, -1, kGroupPercusion});
    key(Qt::Key_Return);
    QVERIFY(arranger().isGroupCollapsed(kGroupPercusion));
    key(Qt::Key_Return);
    QVERIFY(!arranger().isGroupCollapsed(kGroupPercusion));
    QCOMPARE(edits_, 2);
}

void ArrangerKeysTest::returnOpensAMelody()
{
    const QSignalSpy opened(&arranger(), &TrackArranger::openMelodyBlock);
    arranger().goToBlock(kSecondMelody);
    key(Qt::Key_Return);
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened.first(), QVariantList({0, 1}));
}

void ArrangerKeysTest::returnOnAnythingElseIsPassedOn()
{
    for (const BlockRef& block : {kBombo, kVoice}) {
        arranger().goToBlock(block);
        QKeyEvent event(QEvent::KeyPress, Qt::Key_Return, {});
        QApplication::sendEvent(&arranger(), &event);
        QVERIFY(!event.isAccepted());
    }
    QCOMPARE(edits_, 0);
}

void ArrangerKeysTest::theLaneOfTheKeysIsMarked()
{
    QWidget& column = *arranger().headerColumn();
    const QRect chords(0, 0, 170, 26);
    const QRect percussion(0, 230, 170, 22);
    arranger().activateWindow();
    arranger().clearFocus();
    const auto picture = [&](const QRect& row) { return column.grab(row).toImage(); };
    const QImage without = picture(chords);
    const QImage groupWithout = picture(percussion);
    arranger().setFocus();
    QTRY_VERIFY(arranger().hasFocus());
    QCOMPARE(picture(chords), without);
    go(Qt::Key_Down);
    go(Qt::Key_Up);
    // They are selected then, as a track would be.
    QVERIFY(picture(chords) != without);
    QCOMPARE(picture(percussion), groupWithout);
    arranger().goToLane({LaneKind::Group, -1, kGroupPercusion});
    QVERIFY(picture(percussion) != groupWithout);
}

void ArrangerKeysTest::withoutAProjectArrowsArePassedOn()
{
    TrackArranger empty;
    for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_PageDown, Qt::Key_Return}) {
        for (const Qt::KeyboardModifier modifier :
             {Qt::NoModifier, Qt::ShiftModifier, Qt::ControlModifier}) {
            QKeyEvent event(QEvent::KeyPress, key, modifier);
            QApplication::sendEvent(&empty, &event);
            QVERIFY(!event.isAccepted());
        }
    }
}

VELTA_TEST(ArrangerKeysTest)

} // namespace ArrangerKeysTests

#include "ArrangerKeysTest.moc"
