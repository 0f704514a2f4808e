#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/BlockEditor.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QTest>

namespace MainWindowKeysTests {

using namespace ProjectBuilder;

/// A song by keys alone, in the whole window: each gesture is one step of undo.
class MainWindowKeysTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aMoveByKeyIsOneStepBack();
    void aHeldKeyIsOneStepBack();
    void undoInAHeldKeyTakesTheRunBack();
    void aBlockMovedByKeyComesBack();
    void savingInAHeldKeySavesIt();
    void whatIsSelectedOutlivesTheEdit();
    void returnOpensTheMelodyInTheRoll();
    void aSongOfFourBarsByKeys();

private:
    PianoRollCanvas& roll() { return *stage_->window().findChild<PianoRollCanvas*>(); }

    TrackArranger& arranger() { return *stage_->window().findChild<TrackArranger*>(); }

    MelodyBlock& melodyOf(int track) { return stage_->song().tracks[track].melodyBlocks[0]; }

    void press(QWidget& editor, Qt::Key key, bool repeated = false)
    {
        QKeyEvent event(QEvent::KeyPress, key, {}, QString(), repeated);
        QApplication::sendEvent(&editor, &event);
    }

    void undo() { stage_->choose("Deshacer"); }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowKeysTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
    QVERIFY(stage_->showWindow());
    // The first note of the work that the window starts with: 60 at its start, half a beat.
    QTest::keyClick(&roll(), Qt::Key_Return);
    QCOMPARE(melodyOf(0).notes, QList<NoteEvent>({note(60, 0.0, 0.5)}));
}

void MainWindowKeysTest::cleanup()
{
    stage_.reset();
}

void MainWindowKeysTest::aMoveByKeyIsOneStepBack()
{
    const QJsonObject before = stage_->song().toJson();
    QTest::keyClick(&roll(), Qt::Key_Up);
    const QJsonObject after = stage_->song().toJson();
    QVERIFY(after != before);
    undo();
    QCOMPARE(stage_->song().toJson(), before);
    stage_->choose("Rehacer");
    QCOMPARE(stage_->song().toJson(), after);
}

void MainWindowKeysTest::aHeldKeyIsOneStepBack()
{
    const QJsonObject before = stage_->song().toJson();
    press(roll(), Qt::Key_Right);
    for (int i = 0; i < 20; ++i)
        press(roll(), Qt::Key_Right, true);
    QTest::keyRelease(&roll(), Qt::Key_Right);
    QCOMPARE(melodyOf(0).notes.first().startBeat, 10.5);
    undo();
    QCOMPARE(stage_->song().toJson(), before);
}

void MainWindowKeysTest::undoInAHeldKeyTakesTheRunBack()
{
    const QJsonObject before = stage_->song().toJson();
    press(roll(), Qt::Key_Right);
    press(roll(), Qt::Key_Right, true);
    undo();
    QCOMPARE(stage_->song().toJson(), before);
    press(roll(), Qt::Key_Right, true);
    QTest::keyRelease(&roll(), Qt::Key_Right);
    QCOMPARE(stage_->song().toJson(), before);
}

void MainWindowKeysTest::aBlockMovedByKeyComesBack()
{
    const QJsonObject before = stage_->song().toJson();
    arranger().goToBlock({BlockKind::Melody, 0, 0});
    QTest::keyClick(&arranger(), Qt::Key_Right);
    QTest::keyClick(&arranger(), Qt::Key_Left, Qt::ShiftModifier);
    QCOMPARE(melodyOf(0).startBeat, 1.0);
    QCOMPARE(melodyOf(0).durationBeats, 31.0);
    undo();
    undo();
    QCOMPARE(stage_->song().toJson(), before);
}

void MainWindowKeysTest::savingInAHeldKeySavesIt()
{
    stage_->prompts().answerText("Mi obra");
    press(roll(), Qt::Key_Up);
    QVERIFY(stage_->window().saveCurrentProject());
    QVERIFY(stage_->canUndo());
    QCOMPARE(melodyOf(0).notes.first().pitch, 61);
    undo();
    QCOMPARE(melodyOf(0).notes.first().pitch, 60);
}

void MainWindowKeysTest::whatIsSelectedOutlivesTheEdit()
{
    QTest::keyClick(&roll(), Qt::Key_Up);
    QCOMPARE(roll().scene()->selectedNotes(), QList<int>({0}));
    arranger().goToBlock({BlockKind::Melody, 0, 0});
    QTest::keyClick(&arranger(), Qt::Key_Right);
    QCOMPARE(arranger().blocks()->current(), (BlockRef{BlockKind::Melody, 0, 0}));
}

void MainWindowKeysTest::returnOpensTheMelodyInTheRoll()
{
    stage_->choose("Agregar velta");
    QCOMPARE(roll().notes()->activeTrack(), 1);
    arranger().setFocus();
    arranger().goToLane({LaneKind::NoteTrack, 0});
    QTest::keyClick(&arranger(), Qt::Key_Right, Qt::ControlModifier);
    QTest::keyClick(&arranger(), Qt::Key_Return);
    QCOMPARE(roll().notes()->activeTrack(), 0);
    QVERIFY(roll().hasFocus());
}

void MainWindowKeysTest::aSongOfFourBarsByKeys()
{
    for (int i = 0; i < 31; ++i)
        QTest::keyClick(&roll(), Qt::Key_Return);
    QCOMPARE(melodyOf(0).notes.size(), 32);
    QCOMPARE(stage_->engine().playheadBeat(), 16.0);
    arranger().setFocus();
    for (int bar = 0; bar < 4; ++bar)
        QTest::keyClick(&arranger(), Qt::Key_PageUp);
    for (const Qt::Key letter : {Qt::Key_C, Qt::Key_F, Qt::Key_G, Qt::Key_C}) {
        QTest::keyClick(&arranger(), letter);
        QTest::keyClick(&arranger(), Qt::Key_PageDown);
    }
    QStringList chords;
    for (const double beat : {0.0, 4.0, 8.0, 12.0})
        chords.append(QString::number(stage_->song().harmonyTrack.eventAt(beat, 4.0)->degree));
    QCOMPARE(chords, QStringList({"1", "4", "5", "1"}));
    QVERIFY(!stage_->engine().isPlaying());
}

VELTA_TEST(MainWindowKeysTest)

} // namespace MainWindowKeysTests

#include "MainWindowKeysTest.moc"
