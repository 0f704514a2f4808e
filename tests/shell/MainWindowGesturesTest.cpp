#include "content/LoopLibrary.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"

#include <QDialog>
#include <QLineEdit>
#include <QTest>

#include <functional>

namespace MainWindowGesturesTests {

using namespace ProjectBuilder;

namespace {

using Act = std::function<void(WindowStage&)>;

QList<double> startsOf(const QList<MelodyBlock>& blocks)
{
    QList<double> starts;
    for (const MelodyBlock& block : blocks)
        starts.append(block.startBeat);
    return starts;
}

QList<double> lengthsOf(const QList<MelodyBlock>& blocks)
{
    QList<double> lengths;
    for (const MelodyBlock& block : blocks)
        lengths.append(block.durationBeats);
    return lengths;
}

QStringList notesOf(const MelodyBlock& block)
{
    QStringList notes;
    for (const NoteEvent& note : block.notes)
        notes.append(QStringLiteral("%1@%2").arg(note.pitch).arg(note.startBeat));
    return notes;
}

} // namespace

/// What is under way, a drag or a name that is being typed, when something else comes.
class MainWindowGesturesTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Drags
    void undoInADragOfABlockTakesBackTheDrag();
    void undoInADragMovesNoOtherBlock();
    void redoInADragOfABlockIsNoMore();
    void undoInADragOfNotesComesBackWhole();
    void whateverComesEndsADrag_data();
    void whateverComesEndsADrag();
    void aSaveInADragHoldsTheFinishedEdit();
    void theLevelsOfAVoiceAreAStepEach();

    // Names
    void aTypedNameIsTaken_data();
    void aTypedNameIsTaken();
    void aTypedNameAndAnAddedTrackAreTwoSteps();
    void aTypedNameGoesToItsTrackWhereAnotherIsRemoved();
    void savingLeavesTheCaretInTheName();
    void undoTakesBackATypedName();

    // New tracks
    void aNewTrackIsOneStep();
    void aReportOfNothingKeepsTheFutureOfANewTrack();
    void deletingTheLastBlockIsOneStep();

private:
    TrackArranger& arranger() { return *stage_->window().findChild<TrackArranger*>(); }

    PianoRollCanvas& roll() { return *stage_->window().findChild<PianoRollCanvas*>(); }

    QWidget* lanes() { return arranger().view()->viewport(); }

    QLineEdit* name()
    {
        return stage_->window().findChild<TrackHeaderPanel*>()->findChild<QLineEdit*>();
    }

    QList<MelodyBlock>& blocks() { return stage_->song().tracks[0].melodyBlocks; }

    QPoint onFirstTrack(double beat)
    {
        return arranger().view()->mapFromScene(beat * 32, arranger().laneTopForNoteTrack(0) + 20);
    }

    QPoint onNotes(double beat, int pitch)
    {
        return roll().view()->mapFromScene(beat * 64, (96 - pitch) * 16 + 8);
    }

    QPoint onFirstVoice(double beat, int below)
    {
        return arranger().view()->mapFromScene(beat * 32,
                                               arranger().laneTopForAudioTrack(0) + below);
    }

    void drag(QWidget* view, const QPoint& place, const QPoint& way)
    {
        QTest::mousePress(view, Qt::LeftButton, {}, place);
        QTest::mouseMove(view, place + way / 2);
        QTest::mouseMove(view, place + way);
        QTest::mouseRelease(view, Qt::LeftButton, {}, place + way);
    }

    /// The work as it is on the disk after a save.
    QByteArray savedBytes()
    {
        return stage_->window().saveCurrentProject() ? bytesOf(stage_->home().projectFile("work"))
                                                     : QByteArray();
    }

    /// Opens a work on the screen.
    void openWith(const QList<Track>& tracks)
    {
        QVERIFY(stage_->saveWork("work", *project(tracks)));
        stage_->window().openProject("work");
        QVERIFY(stage_->showWindow());
    }

    void type(const QString& text)
    {
        name()->setFocus();
        name()->selectAll();
        QTest::keyClicks(name(), text);
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowGesturesTest::init()
{
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowGesturesTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

// ---- Drags ---------------------------------------------------------------------------------

void MainWindowGesturesTest::undoInADragOfABlockTakesBackTheDrag()
{
    openWith({melodyTrack({melody({}), melody({}, 8.0)})});
    QTest::mousePress(lanes(), Qt::LeftButton, {}, onFirstTrack(9.0));
    QTest::mouseMove(lanes(), onFirstTrack(11.0));
    stage_->window().undo();
    QCOMPARE(startsOf(blocks()), (QList{0.0, 8.0}));
    QTest::mouseMove(lanes(), onFirstTrack(13.0));
    QTest::mouseRelease(lanes(), Qt::LeftButton, {}, onFirstTrack(13.0));
    QCOMPARE(startsOf(blocks()), (QList{0.0, 8.0}));
    stage_->window().redo();
    QCOMPARE(startsOf(blocks()), (QList{0.0, 10.0}));
    QVERIFY(!stage_->canRedo());
}

// A block is deleted, and the one that moves up to its index is dragged while both steps are
// undone.
void MainWindowGesturesTest::undoInADragMovesNoOtherBlock()
{
    openWith({melodyTrack({melody({}), melody({}, 8.0, 8.0)})});
    QTest::mouseClick(lanes(), Qt::RightButton, {}, onFirstTrack(1.0));
    QCOMPARE(startsOf(blocks()), QList{8.0});
    QCOMPARE(stage_->message(), "Bloque borrado · Ctrl+Z lo trae de vuelta.");
    QTest::mousePress(lanes(), Qt::LeftButton, {}, onFirstTrack(9.0));
    QTest::mouseMove(lanes(), onFirstTrack(11.0));
    stage_->window().undo();
    stage_->window().undo();
    QTest::mouseMove(lanes(), onFirstTrack(13.0));
    QTest::mouseRelease(lanes(), Qt::LeftButton, {}, onFirstTrack(13.0));
    QCOMPARE(startsOf(blocks()), (QList{0.0, 8.0}));
    QCOMPARE(lengthsOf(blocks()), (QList{4.0, 8.0}));
}

// The drag is an edit by itself, which ends the future.
void MainWindowGesturesTest::redoInADragOfABlockIsNoMore()
{
    openWith({melodyTrack({melody({}), melody({}, 8.0)})});
    stage_->window().addTrack();
    stage_->window().undo();
    QVERIFY(stage_->canRedo());
    QTest::mousePress(lanes(), Qt::LeftButton, {}, onFirstTrack(9.0));
    QTest::mouseMove(lanes(), onFirstTrack(11.0));
    stage_->window().redo();
    QCOMPARE(stage_->song().tracks.size(), 1);
    QCOMPARE(startsOf(blocks()), (QList{0.0, 10.0}));
    QTest::mouseRelease(lanes(), Qt::LeftButton, {}, onFirstTrack(11.0));
    stage_->window().undo();
    QCOMPARE(startsOf(blocks()), (QList{0.0, 8.0}));
    QVERIFY(!stage_->canUndo());
}

void MainWindowGesturesTest::undoInADragOfNotesComesBackWhole()
{
    openWith({melodyTrack({melody({note(65, 1.0), note(67, 3.0)})})});
    QTest::mousePress(roll().view()->viewport(), Qt::LeftButton, {}, onNotes(1.5, 65));
    QTest::mouseMove(roll().view()->viewport(), onNotes(9.5, 65));
    stage_->window().undo();
    QCOMPARE(notesOf(blocks()[0]), (QStringList{"65@1", "67@3"}));
    QTest::mouseMove(roll().view()->viewport(), onNotes(5.5, 70));
    QTest::mouseRelease(roll().view()->viewport(), Qt::LeftButton, {}, onNotes(5.5, 70));
    stage_->window().redo();
    // In order, in a block that holds them.
    QCOMPARE(notesOf(blocks()[0]), (QStringList{"67@3", "65@9"}));
    QCOMPARE(blocks()[0].durationBeats, 10.0);
}

void MainWindowGesturesTest::whateverComesEndsADrag_data()
{
    QTest::addColumn<Act>("act");

    QTest::newRow("a new work") << Act([](WindowStage& stage) {
        stage.prompts().inDialog([](QDialog& dialog) { dialog.reject(); });
        stage.window().newProject();
    });
    QTest::newRow("a library read anew") << Act([](WindowStage& stage) {
        QMetaObject::invokeMethod(const_cast<LoopLibrary*>(stage.window().loopLibrary()),
                                  "libraryChanged");
    });
    QTest::newRow("a dialog") << Act([](WindowStage& stage) {
        QDialog dialog(&stage.window());
        dialog.open();
        QTRY_VERIFY(stage.canUndo());
    });
    QTest::newRow("another track") << Act([](WindowStage& stage) { stage.window().addTrack(); });
}

void MainWindowGesturesTest::whateverComesEndsADrag()
{
    QFETCH(Act, act);
    openWith({melodyTrack({melody({}), melody({}, 8.0)})});
    QTest::mousePress(lanes(), Qt::LeftButton, {}, onFirstTrack(9.0));
    QTest::mouseMove(lanes(), onFirstTrack(11.0));
    QVERIFY(!stage_->canUndo());
    act(*stage_);
    QVERIFY(stage_->canUndo());
    QTest::mouseMove(lanes(), onFirstTrack(15.0));
    QTest::mouseRelease(lanes(), Qt::LeftButton, {}, onFirstTrack(15.0));
    QCOMPARE(startsOf(blocks()), (QList{0.0, 10.0}));
}

void MainWindowGesturesTest::aSaveInADragHoldsTheFinishedEdit()
{
    openWith({melodyTrack({melody({note(65, 1.0), note(67, 3.0)})})});
    QTest::mousePress(roll().view()->viewport(), Qt::LeftButton, {}, onNotes(1.5, 65));
    QTest::mouseMove(roll().view()->viewport(), onNotes(9.5, 65));
    QVERIFY(stage_->window().saveCurrentProject());
    Project saved;
    saved.loadJson(stage_->savedWork("work"));
    QCOMPARE(notesOf(saved.tracks[0].melodyBlocks[0]), (QStringList{"67@3", "65@9"}));
    QVERIFY(stage_->canUndo());
    QTest::mouseRelease(roll().view()->viewport(), Qt::LeftButton, {}, onNotes(9.5, 65));
}

void MainWindowGesturesTest::theLevelsOfAVoiceAreAStepEach()
{
    const auto work = project();
    work->audioTracks = {voiceTrack({clip("voz.wav", 0.0, 12.0)})};
    QVERIFY(stage_->saveWork("work", *work));
    stage_->window().openProject("work");
    QVERIFY(stage_->showWindow());
    QList<QByteArray> states{savedBytes()};
    drag(lanes(), onFirstVoice(6.0, 21), {0, -6});
    states.append(savedBytes());
    drag(lanes(), onFirstVoice(0.0, 7) + QPoint(3, 0), {64, 0});
    states.append(savedBytes());
    drag(lanes(), onFirstVoice(12.0, 7) - QPoint(3, 0), {-64, 0});
    states.append(savedBytes());
    QTest::keyClick(&arranger(), Qt::Key_Down);
    states.append(savedBytes());
    for (qsizetype i = 1; i < states.size(); ++i)
        QVERIFY(states.at(i) != states.at(i - 1));
    for (qsizetype i = states.size() - 2; i >= 0; --i) {
        stage_->window().undo();
        QCOMPARE(savedBytes(), states.at(i));
    }
    for (qsizetype i = 1; i < states.size(); ++i) {
        stage_->window().redo();
        QCOMPARE(savedBytes(), states.at(i));
    }
}

// ---- Names ---------------------------------------------------------------------------------

void MainWindowGesturesTest::aTypedNameIsTaken_data()
{
    QTest::addColumn<Act>("act");

    QTest::newRow("by Agregar") << Act([](WindowStage& stage) { stage.clickRibbon("Agregar"); });
    QTest::newRow("by a save") << Act([](WindowStage& stage) { stage.choose("Guardar"); });
    QTest::newRow("by an export") << Act([](WindowStage& stage) {
        stage.prompts().giveUpPath();
        stage.window().exportMidi();
    });
    QTest::newRow("by another lane") << Act([](WindowStage& stage) {
        stage.window().findChild<TrackArranger*>()->selectNoteTrack(1, false);
    });
    QTest::newRow("by no lane") << Act([](WindowStage& stage) {
        stage.window().findChild<TrackArranger*>()->selectNoteTrack(-1, false);
    });
}

void MainWindowGesturesTest::aTypedNameIsTaken()
{
    QFETCH(Act, act);
    openWith({melodyTrack({melody({})}), melodyTrack({melody({})})});
    type("Zamba");
    act(*stage_);
    QCOMPARE(stage_->song().tracks[0].name, "Zamba");
    QCOMPARE(stage_->song().tracks[1].name, "Melodía");
    QVERIFY(stage_->canUndo());
}

void MainWindowGesturesTest::aTypedNameAndAnAddedTrackAreTwoSteps()
{
    openWith({melodyTrack({melody({})})});
    type("Zamba");
    stage_->clickRibbon("Agregar");
    QCOMPARE(stage_->song().tracks.size(), 2);
    stage_->window().undo();
    QCOMPARE(stage_->song().tracks.size(), 1);
    QCOMPARE(stage_->song().tracks[0].name, "Zamba");
    stage_->window().undo();
    QCOMPARE(stage_->song().tracks[0].name, "Melodía");
    QVERIFY(!stage_->canUndo());
}

void MainWindowGesturesTest::aTypedNameGoesToItsTrackWhereAnotherIsRemoved()
{
    openWith({melodyTrack({melody({})}), melodyTrack({melody({}, 4.0)})});
    type("Zamba");
    stage_->window().removeSelectedTrack();
    QCOMPARE(stage_->song().tracks.size(), 1);
    QCOMPARE(stage_->song().tracks[0].name, "Melodía");
    stage_->window().undo();
    QCOMPARE(stage_->song().tracks[0].name, "Zamba");
}

void MainWindowGesturesTest::savingLeavesTheCaretInTheName()
{
    openWith({melodyTrack({melody({})})});
    type("Zaba");
    name()->setCursorPosition(2);
    stage_->choose("Guardar");
    QVERIFY(name()->hasFocus());
    QCOMPARE(name()->cursorPosition(), 2);
    QTest::keyClicks(name(), "m");
    stage_->choose("Guardar");
    Project saved;
    saved.loadJson(stage_->savedWork("work"));
    QCOMPARE(saved.tracks[0].name, "Zamba");
}

void MainWindowGesturesTest::undoTakesBackATypedName()
{
    openWith({melodyTrack({melody({})}), melodyTrack({melody({})})});
    type("Zamba");
    stage_->choose("Guardar");
    stage_->window().undo();
    QCOMPARE(stage_->song().tracks[0].name, "Melodía");
    stage_->window().redo();
    QCOMPARE(stage_->song().tracks[0].name, "Zamba");
}

// ---- New tracks ----------------------------------------------------------------------------

void MainWindowGesturesTest::aNewTrackIsOneStep()
{
    stage_->window().addTrack();
    const QJsonObject added = stage_->song().toJson();
    stage_->window().snapshotAndRefresh();
    QCOMPARE(stage_->song().toJson(), added);
    stage_->window().undo();
    QCOMPARE(stage_->song().tracks.size(), 1);
    QVERIFY(!stage_->canUndo());
}

void MainWindowGesturesTest::aReportOfNothingKeepsTheFutureOfANewTrack()
{
    stage_->window().addTrack();
    stage_->song().bpm = 100;
    stage_->window().snapshotAndRefresh();
    stage_->window().undo();
    arranger().selectNoteTrack(1, false);
    emit stage_->window().findChild<TrackHeaderPanel*>()->trackEdited();
    QVERIFY(stage_->canRedo());
    stage_->window().redo();
    QCOMPARE(stage_->song().bpm, 100);
}

// The roll gives the track a blank block in its place.
void MainWindowGesturesTest::deletingTheLastBlockIsOneStep()
{
    openWith({melodyTrack({melody({note(60, 0.0)})})});
    QTest::mouseClick(lanes(), Qt::RightButton, {}, onFirstTrack(1.0));
    QVERIFY(blocks()[0].notes.isEmpty());
    stage_->window().snapshotAndRefresh();
    stage_->window().undo();
    QCOMPARE(blocks()[0].notes.size(), 1);
    QVERIFY(!stage_->canUndo());
}

VELTA_TEST(MainWindowGesturesTest)

} // namespace MainWindowGesturesTests

#include "MainWindowGesturesTest.moc"
