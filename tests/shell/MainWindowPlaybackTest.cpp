#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/SoundFile.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "support/WindowStage.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerHeaderColumn.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"

#include <QEvent>
#include <QLabel>
#include <QPointer>
#include <QScrollBar>
#include <QSpinBox>
#include <QTest>

#include <algorithm>

namespace MainWindowPlaybackTests {

using namespace ProjectBuilder;

namespace {

/// A song of 16 bars, so that playback does not end by itself.
std::unique_ptr<Project> longSong()
{
    return project({melodyTrack({melody({note(60, 0.0, 60.0), note(64, 60.0)}, 0.0, 64.0)})});
}

/// Counts how often a widget is painted.
class PaintCounter : public QObject {
public:
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
};

} // namespace

/// Playback while the window does something else.
class MainWindowPlaybackTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void openingAnotherWorkStopsPlayback();
    void aBlankWorkStopsPlayback();
    void aNewWorkStopsPlayback();
    void savingLeavesPlaybackAlone();
    void theFormerWorkIsHeardNoMore();
    void worksAreExchangedOverAndOver();
    void everyTrackMayGoDuringPlayback();
    void undoAndRedoAreHeard();
    void muteAndSoloOfThePanelAreHeardAtOnce();
    void panelAndLaneAgreeOnMute();
    void changeOfTempoKeepsTheBeat();
    void hostileWorksAreExchangedDuringPlayback();
    void voicesOfAWorkWithoutAFolderAreLeftOut();
    void theWindowMayGoDuringPlayback();
    void theWindowMayGoWithAVoice();
    void theEditorsFollowThePlayheadWhileItPlays();
    void theEditorsFollowNoMoreWhenThatIsSwitchedOff();
    void windowsPlayApart();
    void withoutASynthesiserTheWindowWorks();

private:
    void openLongSong()
    {
        QVERIFY(stage_->saveWork("long", *longSong()));
        stage_->window().openProject("long");
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowPlaybackTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowPlaybackTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

void MainWindowPlaybackTest::openingAnotherWorkStopsPlayback()
{
    openLongSong();
    stage_->engine().play(9.0);
    openLongSong();
    QVERIFY(!stage_->engine().isPlaying());
    QCOMPARE(stage_->engine().playheadBeat(), 0.0);
    QCOMPARE(Widgets::over<QToolButton>(stage_->ribbon(), "Reproducir")->text(), "▶");
    QCOMPARE(Widgets::over<QLabel>(stage_->ribbon(), "Posición")->text(), "1.1");
}

void MainWindowPlaybackTest::aBlankWorkStopsPlayback()
{
    stage_->engine().play();
    stage_->window().startBlankProject();
    QVERIFY(!stage_->engine().isPlaying());
}

void MainWindowPlaybackTest::aNewWorkStopsPlayback()
{
    stage_->engine().play();
    stage_->window().createProject("Zamba", {}, {}, 120);
    QVERIFY(!stage_->engine().isPlaying());
    stage_->clickRibbon("Reproducir");
    QVERIFY(stage_->engine().isPlaying());
}

void MainWindowPlaybackTest::savingLeavesPlaybackAlone()
{
    openLongSong();
    stage_->engine().play(9.0);
    QVERIFY(stage_->window().saveCurrentProject());
    QVERIFY(stage_->engine().isPlaying());
    QVERIFY(stage_->engine().playheadBeat() >= 9.0);
}

void MainWindowPlaybackTest::theFormerWorkIsHeardNoMore()
{
    openLongSong();
    stage_->clickRibbon("Reproducir");
    QTRY_COMPARE(FluidSpy::calls({"noteon"}).size(), 1);
    stage_->window().startBlankProject();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    FluidSpy::reset();
    stage_->clickRibbon("Reproducir");
    QTest::qWait(50);
    QVERIFY(stage_->engine().isPlaying());
    QCOMPARE(FluidSpy::calls({"noteon"}), QStringList());
}

void MainWindowPlaybackTest::worksAreExchangedOverAndOver()
{
    openLongSong();
    for (int round = 0; round < 60; ++round) {
        stage_->engine().play(round);
        QCoreApplication::processEvents();
        if (round % 3 == 0)
            stage_->window().startBlankProject();
        else
            stage_->window().openProject("long");
        stage_->window().undo();
        stage_->window().addTrack();
    }
    QCOMPARE(stage_->keptProjects(), 1);
    QCOMPARE(stage_->prompts().calls(), QStringList());
}

void MainWindowPlaybackTest::everyTrackMayGoDuringPlayback()
{
    openLongSong();
    for (int added = 0; added < 12; ++added)
        stage_->window().addTrack();
    stage_->engine().play();
    for (int left = 13; left > 0; --left) {
        stage_->clickRibbon("Quitar");
        QTest::qWait(5);
    }
    QVERIFY(stage_->song().tracks.isEmpty());
    QVERIFY(stage_->engine().isPlaying());
    for (int undone = 0; undone < 13; ++undone) {
        stage_->window().undo();
        QCoreApplication::processEvents();
    }
    QCOMPARE(stage_->song().tracks.size(), 13);
    QVERIFY(stage_->engine().isPlaying());
}

void MainWindowPlaybackTest::undoAndRedoAreHeard()
{
    openLongSong();
    stage_->engine().play(59.9);
    stage_->song().bpm = 1;
    stage_->song().tracks[0].melodyBlocks[0].notes.append(note(72, 59.95));
    stage_->song().tracks[0].instrumentId = "gm_flauta_pan";
    stage_->window().snapshotAndRefresh();
    const int written = stage_->engine().cursorForBeat(1000.0);
    FluidSpy::reset();
    stage_->window().undo();
    QCOMPARE(stage_->engine().cursorForBeat(1000.0), written - 2);
    QVERIFY(FluidSpy::calls().contains("program_select 0 1 0 0"));
    FluidSpy::reset();
    stage_->window().redo();
    QCOMPARE(stage_->engine().cursorForBeat(1000.0), written);
    QVERIFY(FluidSpy::calls().contains("program_select 0 1 0 75"));
    QVERIFY(stage_->engine().isPlaying());
}

void MainWindowPlaybackTest::muteAndSoloOfThePanelAreHeardAtOnce()
{
    openLongSong();
    stage_->window().addTrack();
    auto* panel = stage_->window().findChild<TrackHeaderPanel*>();
    panel->showTrack(0);
    stage_->engine().play(0.0);
    const int heard = stage_->engine().cursorForBeat(1000.0);
    QVERIFY(heard > 0);
    Widgets::click(Widgets::withText<QToolButton>(*panel, "Mute"));
    QCOMPARE(stage_->engine().cursorForBeat(1000.0), 0);
    Widgets::click(Widgets::withText<QToolButton>(*panel, "Mute"));
    QCOMPARE(stage_->engine().cursorForBeat(1000.0), heard);
    panel->showTrack(1);
    Widgets::click(Widgets::withText<QToolButton>(*panel, "Solo"));
    QCOMPARE(stage_->engine().cursorForBeat(1000.0), 0);
    Widgets::click(Widgets::withText<QToolButton>(*panel, "Solo"));
    QCOMPARE(stage_->engine().cursorForBeat(1000.0), heard);
    QVERIFY(stage_->engine().isPlaying());
}

void MainWindowPlaybackTest::panelAndLaneAgreeOnMute()
{
    openLongSong();
    QVERIFY(stage_->showWindow());
    auto* panel = stage_->window().findChild<TrackHeaderPanel*>();
    auto* arranger = stage_->window().findChild<TrackArranger*>();
    auto* header = arranger->findChild<ArrangerHeaderColumn*>();
    auto* mute = Widgets::withText<QToolButton>(*panel, "Mute");
    const LaneInfo lane = *std::ranges::find_if(
        arranger->lanes(), [](const LaneInfo& each) { return each.trackIndex == 0; });
    const QImage sounding = header->grab().toImage();
    arranger->toggleLaneMute(lane);
    QVERIFY(mute->isChecked());
    QTRY_VERIFY(header->grab().toImage() != sounding);
    QVERIFY(stage_->canUndo());
    PaintCounter paints;
    header->installEventFilter(&paints);
    Widgets::click(mute);
    QVERIFY(!stage_->song().tracks[0].muted);
    QTRY_VERIFY(paints.count > 0);
    QCOMPARE(header->grab().toImage(), sounding);
    stage_->window().undo();
    panel->showTrack(0);
    QCOMPARE(mute->isChecked(), stage_->song().tracks[0].muted);
}

void MainWindowPlaybackTest::changeOfTempoKeepsTheBeat()
{
    openLongSong();
    stage_->song().bpm = 1;
    stage_->engine().play(40.0);
    QTest::qWait(60);
    Widgets::over<QSpinBox>(stage_->ribbon(), "Velocidad")->setValue(200);
    // In the new tempo the time since the start would be worth a fifth of a beat.
    QVERIFY(stage_->engine().playheadBeat() < 40.1);
    QVERIFY(stage_->engine().isPlaying());
}

void MainWindowPlaybackTest::hostileWorksAreExchangedDuringPlayback()
{
    int played = 0;
    for (quint32 seed = 0; seed < 60; ++seed) {
        QVERIFY(stage_->saveWork("hostile", *Generator(seed, Numbers::Hostile).project(3)));
        stage_->window().openProject("hostile");
        QCOMPARE(stage_->window().currentProjectId(), "hostile");
        stage_->clickRibbon("Repetir");
        stage_->clickRibbon("Metrónomo");
        stage_->engine().play(seed % 7);
        played += stage_->engine().isPlaying() ? 1 : 0;
        QTest::qWait(2);
        stage_->window().addTrack();
        stage_->window().undo();
        stage_->window().removeSelectedTrack();
    }
    QCOMPARE(played, 60);
    stage_->window().startBlankProject();
    QCOMPARE(stage_->keptProjects(), 1);
}

void MainWindowPlaybackTest::voicesOfAWorkWithoutAFolderAreLeftOut()
{
    QVERIFY(SoundFile::writeExact(stage_->home().filePath("voz.wav"),
                                  Tones::sine(440.0, 44100, 44100)));
    stage_->song().audioTracks = {voiceTrack({clip(stage_->home().filePath("voz.wav"))})};
    stage_->engine().play();
    QVERIFY(stage_->engine().isPlaying());
    QCOMPARE(stage_->engine().projectDir, QString());
}

void MainWindowPlaybackTest::theWindowMayGoDuringPlayback()
{
    openLongSong();
    QVERIFY(stage_->showWindow());
    const QPointer<Project> song = &stage_->song();
    const QPointer<PlaybackEngine> engine = &stage_->engine();
    stage_->clickRibbon("Metrónomo");
    stage_->clickRibbon("Reproducir");
    QTest::qWait(20);
    FluidSpy::reset();
    bool engineFirst = false;
    connect(engine, &QObject::destroyed, this,
            [&] { engineFirst = !song.isNull() && FluidSpy::calls({"delete_synth"}).isEmpty(); });
    stage_->destroyWindow();
    QVERIFY(engineFirst);
    QVERIFY(song.isNull());
    QVERIFY(engine.isNull());
    QTest::qWait(20);
    QCOMPARE(FluidSpy::calls({"noteon"}), QStringList());
    QCOMPARE(FluidSpy::calls({"delete_synth"}).size(), 1);
}

void MainWindowPlaybackTest::theWindowMayGoWithAVoice()
{
    Project song;
    song.audioTracks = {voiceTrack({clip("voz.wav")})};
    QVERIFY(stage_->saveWork("voz", song));
    QVERIFY(SoundFile::writeExact(stage_->home().works() + "/voz/voz.wav",
                                  Tones::sine(440.0, 44100, 44100)));
    stage_->window().openProject("voz");
    stage_->clickRibbon("Reproducir");
    QVERIFY(stage_->engine().isPlaying());
    QTest::qWait(20);
    stage_->destroyWindow();
    QTest::qWait(5);
    QVERIFY(!stage_->window().projectHasContent());
}

void MainWindowPlaybackTest::theEditorsFollowThePlayheadWhileItPlays()
{
    QVERIFY(stage_->showWindow());
    openLongSong();
    auto* roll = stage_->window().findChild<PianoRollCanvas*>()->view()->horizontalScrollBar();
    auto* arranger = stage_->window().findChild<TrackArranger*>()->view()->horizontalScrollBar();
    stage_->engine().setPlayheadBeat(50.0);
    QCOMPARE(roll->value(), 0);
    QCOMPARE(arranger->value(), 0);
    stage_->engine().play(50.0);
    // The playhead stands 24 pixels from the left edge.
    QCOMPARE(roll->value(), 50 * 64 - 24);
    QCOMPARE(arranger->value(), 50 * 32 - 24);
    stage_->engine().stop();
    QCOMPARE(roll->value(), 50 * 64 - 24);
    stage_->window().openProject("long");
    QCOMPARE(roll->value(), 0);
    QCOMPARE(arranger->value(), 0);
}

void MainWindowPlaybackTest::theEditorsFollowNoMoreWhenThatIsSwitchedOff()
{
    QVERIFY(stage_->showWindow());
    openLongSong();
    stage_->clickRibbon("Seguir");
    QVERIFY(!Widgets::entry(stage_->window(), "Seguir el cabezal")->isChecked());
    stage_->engine().play(50.0);
    const auto views = stage_->window().findChildren<QGraphicsView*>();
    QCOMPARE(views.size(), 2);
    for (const QGraphicsView* view : views)
        QCOMPARE(view->horizontalScrollBar()->value(), 0);
    stage_->destroyWindow();
    QVERIFY(!stage_->card("Seguir")->isChecked());
    stage_->choose("Seguir el cabezal");
    QVERIFY(stage_->card("Seguir")->isChecked());
    stage_->destroyWindow();
    QVERIFY(stage_->card("Seguir")->isChecked());
}

void MainWindowPlaybackTest::windowsPlayApart()
{
    openLongSong();
    auto other = std::make_unique<MainWindow>(nullptr, stage_->prompts());
    stage_->engine().play(4.0);
    QVERIFY(!other->engine()->isPlaying());
    other->engine()->play();
    stage_->window().startBlankProject();
    QVERIFY(other->engine()->isPlaying());
    other.reset();
    stage_->engine().play();
    QVERIFY(stage_->engine().isPlaying());
}

void MainWindowPlaybackTest::withoutASynthesiserTheWindowWorks()
{
    FluidSpy::letSynthFail();
    QVERIFY(Widgets::withText<QLabel>(stage_->window(), "Falta el banco de sonidos"));
    stage_->clickRibbon("Reproducir");
    QVERIFY(!stage_->engine().isPlaying());
    stage_->window().addTrack();
    stage_->window().undo();
    QVERIFY(stage_->canRedo());
    QVERIFY(stage_->window().close());
}

VELTA_TEST(MainWindowPlaybackTest)

} // namespace MainWindowPlaybackTests

#include "MainWindowPlaybackTest.moc"
