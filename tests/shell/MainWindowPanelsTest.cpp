#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollViewport.h"

#include <QJsonArray>
#include <QLineEdit>
#include <QPointer>
#include <QSlider>
#include <QTest>

namespace MainWindowPanelsTests {

using namespace ProjectBuilder;

/// The piano roll and the panel of the track as the window ties them in.
class MainWindowPanelsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void everyViewShowsTheSameWork();
    void theSelectionReachesPanelAndPianoRoll();
    void aVoiceTrackLeavesThePianoRollWithNothingToEdit();
    void aMelodyBlockOpensInThePianoRoll();
    void theGridMarksWhatTheMenuSays();
    void theGridMarksWhatTheRibbonSays();
    void zoomActsOnBothEditors();
    void aNameIsOneStepOfUndo();
    void theMixIsNoStepOfUndo();
    void undoAndRedoLeaveThePanelItsTrack();
    void undoAndRedoLeaveThePanelItsVoice();
    void aNameThatIsBeingTypedIsSaved();
    void theWindowMayGoWhileANameIsTyped();

private:
    TrackArranger& arranger() { return *stage_->window().findChild<TrackArranger*>(); }

    PianoRollCanvas& roll() { return *stage_->window().findChild<PianoRollCanvas*>(); }

    TrackHeaderPanel& panel() { return *stage_->window().findChild<TrackHeaderPanel*>(); }

    QLineEdit& nameField() { return *panel().findChild<QLineEdit*>(); }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowPanelsTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
    stage_->window();
}

void MainWindowPanelsTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

void MainWindowPanelsTest::everyViewShowsTheSameWork()
{
    Project work;
    work.tracks = {melodyTrack({melody({note(60, 0.0)})}), melodyTrack({})};
    work.tracks[0].name = "Quena";
    QVERIFY(stage_->saveWork("vals", work));
    stage_->window().openProject("vals");
    QCOMPARE(arranger().project(), &stage_->song());
    QCOMPARE(roll().notes()->project(), &stage_->song());
    QCOMPARE(roll().notes()->activeTrack(), 0);
    QVERIFY(panel().isEnabled());
    QCOMPARE(nameField().text(), "Quena");
}

void MainWindowPanelsTest::theSelectionReachesPanelAndPianoRoll()
{
    stage_->clickRibbon("Agregar");
    QCOMPARE(roll().notes()->activeTrack(), 1);
    QCOMPARE(nameField().text(), "Velta 2");
    arranger().selectNoteTrack(0, false);
    QCOMPARE(roll().notes()->activeTrack(), 0);
    QCOMPARE(nameField().text(), "Melodía");
}

void MainWindowPanelsTest::aVoiceTrackLeavesThePianoRollWithNothingToEdit()
{
    stage_->song().audioTracks = {voiceTrack({clip("a.wav", 0, 4)})};
    stage_->song().audioTracks[0].name = "Voz";
    stage_->window().snapshotAndRefresh();
    arranger().selectAudioTrack(0);
    QVERIFY(!roll().notes()->hasEditableBlock());
    QCOMPARE(roll().notes()->activeTrack(), -1);
    QCOMPARE(nameField().text(), "Voz");
}

void MainWindowPanelsTest::aMelodyBlockOpensInThePianoRoll()
{
    Project work;
    work.tracks = {melodyTrack({}),
                   melodyTrack({melody({note(60, 0.0)}), melody({note(72, 0.0)}, 8.0)})};
    QVERIFY(stage_->saveWork("vals", work));
    stage_->window().openProject("vals");
    emit arranger().openMelodyBlock(1, 1);
    QCOMPARE(arranger().activeTrack(), 1);
    QCOMPARE(roll().notes()->activeTrack(), 1);
    QVERIFY(roll().notes()->activeBlock());
    QCOMPARE(roll().notes()->activeBlock()->startBeat, 8.0);
}

void MainWindowPanelsTest::theGridMarksWhatTheMenuSays()
{
    stage_->choose("Pulso (el pie)");
    QCOMPARE(roll().notes()->snapBeats(), 1.0);
    stage_->choose("Subdivisión (de a 4)");
    QCOMPARE(roll().notes()->snapBeats(), 0.25);
    stage_->choose("División binaria (de a 2)");
    QCOMPARE(roll().notes()->snapBeats(), 0.5);
}

void MainWindowPanelsTest::theGridMarksWhatTheRibbonSays()
{
    emit stage_->ribbon().subdivisionChanged(GridSubdivisionLevel::Pulse);
    QCOMPARE(roll().notes()->subdivisionLevel(), GridSubdivisionLevel::Pulse);
}

void MainWindowPanelsTest::zoomActsOnBothEditors()
{
    stage_->clickRibbon("Acercar");
    QCOMPARE(roll().rows()->zoomX(), 1.25);
    QCOMPARE(arranger().zoomX(), 1.25);
    stage_->choose("Alejar (tiempo)");
    QCOMPARE(roll().rows()->zoomX(), 1.0);
    QCOMPARE(arranger().zoomX(), 1.0);
}

void MainWindowPanelsTest::aNameIsOneStepOfUndo()
{
    nameField().setFocus();
    QTest::keyClicks(&nameField(), " alta");
    QTest::keyClick(&nameField(), Qt::Key_Return);
    QCOMPARE(stage_->song().tracks[0].name, "Melodía alta");
    QCOMPARE(arranger().lanes()[2].label, "🎹 Melodía alta");
    stage_->choose("Deshacer");
    QCOMPARE(stage_->song().tracks[0].name, "Melodía");
    QVERIFY(!stage_->canUndo());
}

void MainWindowPanelsTest::theMixIsNoStepOfUndo()
{
    FluidSpy::reset();
    panel().findChild<QSlider*>()->setValue(25);
    QCOMPARE(stage_->song().tracks[0].volume, 0.25F);
    QVERIFY(!FluidSpy::calls({"cc"}).isEmpty());
    QVERIFY(!stage_->canUndo());
}

void MainWindowPanelsTest::undoAndRedoLeaveThePanelItsTrack()
{
    nameField().setText("Quena");
    emit nameField().editingFinished();
    stage_->clickRibbon("Agregar");
    QCOMPARE(nameField().text(), "Velta 2");
    // The track is gone, and with it what the panel could show.
    stage_->choose("Deshacer");
    QVERIFY(!panel().isEnabled());
    arranger().selectNoteTrack(0, false);
    QCOMPARE(nameField().text(), "Quena");
    stage_->choose("Rehacer");
    QVERIFY(panel().isEnabled());
    QCOMPARE(nameField().text(), "Quena");
    stage_->choose("Deshacer");
    stage_->choose("Deshacer");
    QVERIFY(panel().isEnabled());
    QCOMPARE(nameField().text(), "Melodía");
    stage_->choose("Rehacer");
    QCOMPARE(nameField().text(), "Quena");
}

void MainWindowPanelsTest::undoAndRedoLeaveThePanelItsVoice()
{
    stage_->song().audioTracks = {voiceTrack({clip("a.wav", 0, 4)})};
    stage_->song().audioTracks[0].name = "Coro";
    stage_->window().snapshotAndRefresh();
    arranger().selectAudioTrack(0);
    stage_->song().audioTracks[0].name = "Solista";
    stage_->window().snapshotAndRefresh();
    stage_->choose("Deshacer");
    QCOMPARE(nameField().text(), "Coro");
    stage_->choose("Rehacer");
    QCOMPARE(nameField().text(), "Solista");
    QVERIFY(panel().isEnabled());
}

void MainWindowPanelsTest::aNameThatIsBeingTypedIsSaved()
{
    QVERIFY(stage_->saveWork("vals", stage_->song()));
    stage_->window().openProject("vals");
    QVERIFY(stage_->showWindow());
    nameField().setFocus();
    QTest::keyClicks(&nameField(), " alta");
    QVERIFY(stage_->window().close());
    const QJsonArray tracks = stage_->savedWork("vals")["tracks"].toArray();
    QCOMPARE(tracks[0].toObject()["name"].toString(), "Melodía alta");
}

void MainWindowPanelsTest::theWindowMayGoWhileANameIsTyped()
{
    QVERIFY(stage_->showWindow());
    nameField().setFocus();
    QTest::keyClicks(&nameField(), " alta");
    const QPointer<TrackHeaderPanel> gone = &panel();
    stage_->destroyWindow();
    QVERIFY(gone.isNull());
}

VELTA_TEST(MainWindowPanelsTest)

} // namespace MainWindowPanelsTests

#include "MainWindowPanelsTest.moc"
