#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/SoundFile.h"
#include "support/Tones.h"
#include "support/WindowStage.h"

#include <QLabel>
#include <QPointer>
#include <QTest>

using namespace ProjectBuilder;

namespace {

/// A song of 16 bars, so that playback does not end by itself.
std::unique_ptr<Project> longSong()
{
    return project({melodyTrack({melody({note(60, 0.0, 60.0), note(64, 60.0)}, 0.0, 64.0)})});
}

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
    void hostileWorksAreExchangedDuringPlayback();
    void voicesOfAWorkWithoutAFolderAreLeftOut();
    void theWindowMayGoDuringPlayback();
    void theWindowMayGoWithAVoice();
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

QTEST_MAIN(MainWindowPlaybackTest)
#include "MainWindowPlaybackTest.moc"
