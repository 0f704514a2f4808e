#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WavFile.h"
#include "support/WindowStage.h"
#include "views/TimelineRuler.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/BlockEditor.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QJsonDocument>
#include <QScrollBar>
#include <QSlider>
#include <QTest>

namespace MainWindowArrangerTests {

using namespace ProjectBuilder;

/// The arranger as the window ties it in.
class MainWindowArrangerTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theArrangerShowsTheWork();
    void anotherWorkIsShownFromItsFirstTrack();
    void aChordIsOneStepOfUndo();
    void undoReachesTheArranger();
    void anAddedTrackIsTheSelectedOne();
    void theSelectedTrackIsRemoved();
    void aSelectedVoiceTrackIsRemoved();
    void removingTheOnlyTrackSelectsNone();
    void aStaleSelectionRemovesNothing();
    void undoAndRedoKeepTheTrackThatIsSelected();
    void zoomGoesInSteps();
    void aMelodyBlockSelectsItsTrack();
    void changingTheThemePaintsTheBlocksAnew();
    void aWorkExchangedDuringADragIsLeftAlone();
    void everyCommandIsOneStepOfUndo_data();
    void everyCommandIsOneStepOfUndo();
    void aDragOfSeveralBlocksIsOneStepOfUndo();
    void theMenuServesTheEditorWithTheKeys();
    void blocksThatLieThereAlreadyAreToldOf();
    void theChordsHaveTheirVolumeInThePanel();
    void aNewLaneComesIntoSight_data();
    void aNewLaneComesIntoSight();
    void whatIsInSightStaysWhereItIs();
    void whatIsThereAlreadyComesIntoSight();
    void withTheChordsSelectedNoTrackIsRemoved();

private:
    QByteArray bytes() { return QJsonDocument(stage_->song().toJson()).toJson(); }

    /// Undo and redo give the very bytes.
    void compareUndo(const QByteArray& before)
    {
        const QByteArray after = bytes();
        QVERIFY(after != before);
        stage_->choose("Deshacer");
        QCOMPARE(bytes(), before);
        stage_->choose("Rehacer");
        QCOMPARE(bytes(), after);
    }

    void openSong()
    {
        Project work;
        work.tracks = {melodyTrack({melody({note(60, 0)}), melody({note(64, 0)}, 6.0)}),
                       loopTrack({loop("r", "bombo", 0.0, 8.0)})};
        work.audioTracks = {voiceTrack({clip("a.wav", 1.25, 3.0)})};
        work.harmonyTrack = harmony({1, 4, 0, 5});
        QVERIFY(stage_->saveWork("vals", work));
        stage_->window().openProject("vals");
    }

    /// Opens a song with more lanes than the arranger shows, at its upper end.
    void openHighSong()
    {
        Project work;
        for (int i = 0; i < 10; ++i)
            work.tracks.append(melodyTrack({melody({note(60, 0)})}));
        work.tracks.append(loopTrack({loop("r", "bombo", 0.0, 8.0)}));
        work.audioTracks = {voiceTrack({clip("a.wav", 1.25, 3.0)})};
        QVERIFY(stage_->saveWork("alta", work));
        stage_->window().openProject("alta");
        QVERIFY(stage_->showWindow());
        QVERIFY(scroll().maximum() > 0);
        QCOMPARE(scroll().value(), 0);
    }

    QScrollBar& scroll() { return *arranger().view()->verticalScrollBar(); }

    /// Whether a lane is seen from top to bottom.
    bool isSeen(int top)
    {
        const QRect shown = arranger().view()->viewport()->rect();
        const int seen = arranger().view()->mapFromScene(0, top).y();
        return top >= 0 && seen >= 0 && seen + 42 <= shown.height();
    }

    TrackArranger& arranger() { return *stage_->window().findChild<TrackArranger*>(); }

    /// Without the playhead, and the block that the piano roll gives to the first track.
    qsizetype blocks() { return arranger().scene()->items().size() - 2; }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowArrangerTest::init()
{
    stage_ = std::make_unique<WindowStage>();
    stage_->window();
}

void MainWindowArrangerTest::cleanup()
{
    stage_.reset();
}

void MainWindowArrangerTest::theArrangerShowsTheWork()
{
    QCOMPARE(arranger().project(), &stage_->song());
    // Chords, VELTAS, Melodía, ACOMPAÑAMIENTO
    QCOMPARE(arranger().lanes().size(), 4);
    QCOMPARE(arranger().lanes()[2].label, "🎹 Melodía");
}

void MainWindowArrangerTest::anotherWorkIsShownFromItsFirstTrack()
{
    Project work;
    work.tracks = {melodyTrack({melody({note(60, 0)})}), melodyTrack({})};
    QVERIFY(stage_->saveWork("vals", work));
    stage_->window().openProject("vals");
    QCOMPARE(arranger().project(), &stage_->song());
    QCOMPARE(arranger().activeTrack(), 0);
    QCOMPARE(arranger().selectedTracks(), QList<int>{0});
    QCOMPARE(arranger().scene()->items().size(), 2);
}

void MainWindowArrangerTest::aChordIsOneStepOfUndo()
{
    QTest::keyClick(&arranger(), Qt::Key_C);
    QCOMPARE(stage_->song().harmonyTrack, harmony({1}));
    QVERIFY(stage_->canUndo());
    QCOMPARE(blocks(), 1);
}

void MainWindowArrangerTest::undoReachesTheArranger()
{
    const QJsonObject first = stage_->song().toJson();
    QTest::keyClick(&arranger(), Qt::Key_C);
    stage_->engine().setPlayheadBeat(4.0);
    QTest::keyClick(&arranger(), Qt::Key_G);
    QCOMPARE(blocks(), 2);
    stage_->choose("Deshacer");
    QCOMPARE(blocks(), 1);
    stage_->choose("Deshacer");
    QCOMPARE(blocks(), 0);
    QCOMPARE(stage_->song().toJson(), first);
    stage_->choose("Rehacer");
    QCOMPARE(blocks(), 1);
}

void MainWindowArrangerTest::anAddedTrackIsTheSelectedOne()
{
    stage_->song().tracks.append(loopTrack({}));
    stage_->clickRibbon("Agregar");
    QCOMPARE(arranger().activeTrack(), 1);
    QCOMPARE(arranger().selectedTracks(), QList<int>{1});
    QCOMPARE(arranger().lanes()[3].label, "🎹 Velta 3");
}

void MainWindowArrangerTest::theSelectedTrackIsRemoved()
{
    stage_->clickRibbon("Agregar");
    stage_->clickRibbon("Agregar");
    arranger().selectNoteTrack(1, false);
    stage_->clickRibbon("Quitar");
    QCOMPARE(stage_->song().tracks.size(), 2);
    QCOMPARE(stage_->song().tracks[1].name, "Velta 3");
    QCOMPARE(arranger().activeTrack(), 0);
}

void MainWindowArrangerTest::aSelectedVoiceTrackIsRemoved()
{
    stage_->song().audioTracks = {voiceTrack({clip("a.wav", 0, 4)}), voiceTrack({})};
    stage_->window().snapshotAndRefresh();
    arranger().selectAudioTrack(0);
    stage_->clickRibbon("Quitar");
    QCOMPARE(stage_->song().audioTracks, QList<AudioTrack>{voiceTrack({})});
    QCOMPARE(stage_->song().tracks.size(), 1);
    QCOMPARE(arranger().selectedAudioTrack(), -1);
    QCOMPARE(arranger().activeTrack(), 0);
}

void MainWindowArrangerTest::removingTheOnlyTrackSelectsNone()
{
    stage_->clickRibbon("Quitar");
    QVERIFY(stage_->song().tracks.isEmpty());
    QCOMPARE(arranger().activeTrack(), -1);
    stage_->clickRibbon("Quitar");
    QVERIFY(stage_->song().tracks.isEmpty());
}

void MainWindowArrangerTest::aStaleSelectionRemovesNothing()
{
    stage_->clickRibbon("Agregar");
    stage_->choose("Deshacer");
    const QJsonObject before = stage_->song().toJson();
    QCOMPARE(arranger().activeTrack(), -1);
    stage_->clickRibbon("Quitar");
    QCOMPARE(stage_->song().toJson(), before);
}

// Tracks are numbered anew where one comes or goes before them.
void MainWindowArrangerTest::undoAndRedoKeepTheTrackThatIsSelected()
{
    openSong();
    arranger().selectNoteTrack(1, false);
    const QString bombo = stage_->song().tracks.at(1).layerId;
    stage_->clickRibbon("Agregar");
    stage_->choose("Deshacer");
    QCOMPARE(arranger().activeTrack(), -1);
    arranger().selectNoteTrack(1, false);
    stage_->choose("Rehacer");
    QCOMPARE(arranger().activeTrack(), 2);
    QCOMPARE(arranger().selectedTracks(), QList<int>{2});
    QCOMPARE(stage_->song().tracks.at(2).layerId, bombo);
    stage_->choose("Deshacer");
    QCOMPARE(arranger().activeTrack(), 1);
    // The chords stay selected as well.
    arranger().selectChords();
    stage_->choose("Rehacer");
    QVERIFY(arranger().areChordsSelected());
}

void MainWindowArrangerTest::zoomGoesInSteps()
{
    stage_->clickRibbon("Acercar");
    QCOMPARE(arranger().zoomX(), 1.25);
    stage_->choose("Alejar (tiempo)");
    QCOMPARE(arranger().zoomX(), 1.0);
    QCOMPARE(arranger().ruler()->viewport().pixelsPerBeat, 32.0);
}

void MainWindowArrangerTest::aMelodyBlockSelectsItsTrack()
{
    stage_->clickRibbon("Agregar");
    arranger().selectNoteTrack(0, false);
    emit arranger().openMelodyBlock(1, 0);
    QCOMPARE(arranger().activeTrack(), 1);
}

void MainWindowArrangerTest::changingTheThemePaintsTheBlocksAnew()
{
    QTest::keyClick(&arranger(), Qt::Key_C);
    QCOMPARE(blocks(), 1);
    Widgets::click(stage_->window().findChild<QWidget*>("toggle_modo"));
    QCOMPARE(blocks(), 1);
    Widgets::click(stage_->window().findChild<QWidget*>("toggle_modo"));
}

void MainWindowArrangerTest::aWorkExchangedDuringADragIsLeftAlone()
{
    Project work;
    work.tracks = {melodyTrack({melody({}, 2.0)})};
    QVERIFY(stage_->saveWork("vals", work));
    stage_->window().openProject("vals");
    QVERIFY(stage_->showWindow());
    QWidget* canvas = arranger().view()->viewport();
    const QPoint onBlock =
        arranger().view()->mapFromScene(3.0 * 32, arranger().laneTopForNoteTrack(0) + 20);
    QTest::mousePress(canvas, Qt::LeftButton, {}, onBlock);
    stage_->window().openProject("vals");
    QTest::mouseMove(canvas, onBlock + QPoint(64, 0));
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, onBlock + QPoint(64, 0));
    QCOMPARE(stage_->song().tracks[0].melodyBlocks[0].startBeat, 2.0);
    QVERIFY(!stage_->canUndo());
}

// ---- Several blocks ------------------------------------------------------------------------

void MainWindowArrangerTest::everyCommandIsOneStepOfUndo_data()
{
    QTest::addColumn<QList<QKeyCombination>>("keys");

    using Keys = QList<QKeyCombination>;
    QTest::newRow("cut") << Keys{Qt::CTRL | Qt::Key_X};
    QTest::newRow("paste") << Keys{Qt::CTRL | Qt::Key_C, Qt::CTRL | Qt::Key_V};
    QTest::newRow("duplicate") << Keys{Qt::CTRL | Qt::Key_D};
    QTest::newRow("delete") << Keys{Qt::Key_Delete};
    QTest::newRow("move") << Keys{Qt::Key_Right};
    QTest::newRow("stretch") << Keys{Qt::SHIFT | Qt::Key_Right};
}

void MainWindowArrangerTest::everyCommandIsOneStepOfUndo()
{
    QFETCH(QList<QKeyCombination>, keys);
    openSong();
    stage_->engine().setPlayheadBeat(20.0);
    const QByteArray before = bytes();
    arranger().blocks()->selectAll(arranger().scene()->blocks());
    for (const QKeyCombination& key : keys)
        QTest::keyClick(&arranger(), key.key(), key.keyboardModifiers());
    compareUndo(before);
}

void MainWindowArrangerTest::aDragOfSeveralBlocksIsOneStepOfUndo()
{
    openSong();
    const QByteArray before = bytes();
    BlockEditor& editor = *arranger().blocks();
    for (const bool copying : {false, true}) {
        editor.selectAll(arranger().scene()->blocks());
        editor.take({BlockKind::Melody, 0, 0}, BlockEditor::Press::Plain, false, 0.0);
        for (const double x : {40.0, 130.0, 70.0})
            editor.dragTo(x, Qt::LeftButton, copying);
        editor.release();
        compareUndo(before);
        stage_->choose("Deshacer");
    }
}

void MainWindowArrangerTest::theMenuServesTheEditorWithTheKeys()
{
    QVERIFY(stage_->showWindow());
    openSong();
    auto& roll = *stage_->window().findChild<PianoRollCanvas*>();
    roll.setFocus();
    stage_->choose("Seleccionar todo");
    QCOMPARE(roll.scene()->selectedNotes(), QList<int>{0});
    QVERIFY(arranger().blocks()->selected().isEmpty());
    arranger().setFocus();
    stage_->choose("Seleccionar todo");
    QCOMPARE(arranger().blocks()->selected().size(), 7);
    stage_->choose("Duplicar");
    QCOMPARE(stage_->song().tracks[1].loopBlocks.size(), 2);
    roll.setFocus();
    QMenu* menu = Widgets::menu(stage_->window(), "&Edición");
    emit menu->aboutToShow();
    QVERIFY(!Widgets::entry(stage_->window(), "Pegar")->isEnabled());
    QVERIFY(Widgets::entry(stage_->window(), "Seleccionar todo")->isEnabled());
    emit menu->aboutToHide();
    QVERIFY(Widgets::entry(stage_->window(), "Pegar")->isEnabled());
}

void MainWindowArrangerTest::blocksThatLieThereAlreadyAreToldOf()
{
    openSong();
    arranger().blocks()->select({BlockKind::Melody, 0, 0});
    QTest::keyClick(&arranger(), Qt::Key_C, Qt::ControlModifier);
    QTest::keyClick(&arranger(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(stage_->message(), "Ahí ya está Melodía (1 nota), compás 1, 1 compás.");
    QVERIFY(!stage_->canUndo());
}

void MainWindowArrangerTest::theChordsHaveTheirVolumeInThePanel()
{
    openSong();
    arranger().selectChords();
    auto& panel = *stage_->window().findChild<TrackHeaderPanel*>();
    auto* volume = panel.findChildren<QSlider*>().value(0);
    QCOMPARE(volume->value(), 70);
    volume->setValue(30);
    QCOMPARE(stage_->song().harmonyTrack.volume, 0.3F);
    QVERIFY(!stage_->canUndo());
    Widgets::withText<QToolButton>(panel, "Mute")->click();
    QVERIFY(stage_->song().harmonyTrack.muted);
    // The roll still shows the notes that go with the chords.
    QCOMPARE(stage_->window().findChild<PianoRollCanvas*>()->notes()->activeTrack(), 0);
    // A step of undo leaves the panel where it is.
    QTest::keyClick(&arranger(), Qt::Key_G);
    stage_->choose("Deshacer");
    QCOMPARE(volume->value(), qRound(100.0F * stage_->song().harmonyTrack.volume));
    QVERIFY(panel.isEnabled());
    QVERIFY(arranger().areChordsSelected());
}

void MainWindowArrangerTest::aNewLaneComesIntoSight_data()
{
    QTest::addColumn<QString>("way");
    for (const char* way : {"a loop", "a track", "a voice"})
        QTest::newRow(way) << QString(way);
}

void MainWindowArrangerTest::aNewLaneComesIntoSight()
{
    QFETCH(QString, way);
    openHighSong();
    if (way == "a loop") {
        stage_->window().handleLoopChosen(loop("r", "bajo", -1.0, 4.0), "gm_bajo", "Bajo");
        QVERIFY(isSeen(arranger().laneTopForNoteTrack(11)));
    } else if (way == "a track") {
        stage_->clickRibbon("Agregar");
        QVERIFY(isSeen(arranger().laneTopForNoteTrack(arranger().activeTrack())));
    } else {
        const QString file = stage_->home().filePath("voz.wav");
        writeBytes(file, WavFile::bytes(QList<float>(4410, 0.1F)));
        stage_->prompts().answerPath(file);
        stage_->window().importVoiceFile();
        QVERIFY(isSeen(arranger().laneTopForAudioTrack(0)));
    }
    QVERIFY(scroll().value() > 0);
}

// The song plays from its start, and a loop on a lane that is seen scrolls nothing.
void MainWindowArrangerTest::whatIsInSightStaysWhereItIs()
{
    openHighSong();
    scroll().setValue(scroll().maximum());
    const int before = scroll().value();
    stage_->window().handleLoopChosen(loop("r", "bombo", 8.0, 4.0), "gm_bajo", "Bombo");
    QCOMPARE(stage_->song().tracks.last().loopBlocks.size(), 2);
    QCOMPARE(scroll().value(), before);
}

void MainWindowArrangerTest::whatIsThereAlreadyComesIntoSight()
{
    openHighSong();
    arranger().view()->horizontalScrollBar()->setValue(300);
    stage_->window().handleLoopChosen(loop("r", "bombo", -1.0, 4.0), "gm_bajo", "Bombo");
    QCOMPARE(stage_->message(), "Ahí ya está Normal 1.");
    QVERIFY(isSeen(arranger().laneTopForNoteTrack(10)));
    QCOMPARE(arranger().view()->horizontalScrollBar()->value(), 0);
}

// Nothing says otherwise why a track that was selected before stays.
void MainWindowArrangerTest::withTheChordsSelectedNoTrackIsRemoved()
{
    openSong();
    const QByteArray before = bytes();
    arranger().selectChords();
    stage_->choose("Quitar velta");
    QCOMPARE(bytes(), before);
    QVERIFY(!stage_->canUndo());
    QCOMPARE(stage_->message(), "Elegí la velta que querés quitar.");
}

VELTA_TEST(MainWindowArrangerTest)

} // namespace MainWindowArrangerTests

#include "MainWindowArrangerTest.moc"
