#include "support/ProjectBuilder.h"
#include "support/PulseDaemon.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "support/WindowStage.h"

#include <QAudioDevice>
#include <QMediaDevices>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

/// The server makes its tone in stretches of up to two seconds.
constexpr int kTakeMs = 4500;

} // namespace

/// Takes through the real microphone path: a sound server of the test's own, whose microphone hears
/// a steady tone.
class MainWindowTakeTest : public QObject {
    Q_OBJECT

public:
    explicit MainWindowTakeTest(PulseDaemon& daemon) : daemon_(daemon) {}

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void aTakeBecomesANumberedClipThatEndsAtThePlayhead();
    void aTakeBeginsPlayback();
    void aTakeThatBeganBeforeTheSongStartsAtBeatZero();
    void aTakeThatCannotBeWrittenIsEmpty();

private:
    /// Records for some time and ends the take.
    void take(int ms);

    PulseDaemon& daemon_;
    std::unique_ptr<WindowStage> stage_;
};

void MainWindowTakeTest::initTestCase()
{
    QVERIFY2(daemon_.problem().isEmpty(), qPrintable(daemon_.problem()));
    QCOMPARE(QProcess::execute("pactl", {"load-module", "module-sine-source", "source_name=mic",
                                         "rate=44100", "frequency=450"}),
             0);
    QCOMPARE(QProcess::execute("pactl", {"set-default-source", "mic"}), 0);
    QTRY_COMPARE(QMediaDevices::defaultAudioInput().id(), QByteArray("mic"));
}

void MainWindowTakeTest::init()
{
    stage_ = std::make_unique<WindowStage>();
    Project work;
    work.bpm = 120;
    work.tracks.append(ProjectBuilder::melodyTrack({}));
    QVERIFY(stage_->saveWork("coplas", work));
    stage_->window().openProject("coplas");
}

void MainWindowTakeTest::cleanup()
{
    stage_.reset();
}

void MainWindowTakeTest::take(int ms)
{
    stage_->clickRibbon("Grabar");
    QCOMPARE(stage_->message(), "Grabando voz… tocá «Grabar voz» de nuevo para terminar.");
    QTest::qWait(ms);
    stage_->clickRibbon("Grabar");
}

void MainWindowTakeTest::aTakeBecomesANumberedClipThatEndsAtThePlayhead()
{
    // The song is long enough for playback to go on.
    stage_->song().tracks[0].melodyBlocks.append(
        ProjectBuilder::melody({ProjectBuilder::note(60, 199.0)}, 0.0, 200.0));
    stage_->engine().setPlayheadBeat(100.0);
    writeBytes(stage_->home().works() + "/coplas/voz_1.wav", "a former take");
    take(kTakeMs);
    QVERIFY2(stage_->song().audioTracks.size() == 1, qPrintable(stage_->message()));
    QCOMPARE(stage_->song().audioTracks[0].name, "Voz");
    const AudioClip clip = stage_->song().audioTracks[0].clips.value(0);
    QCOMPARE(clip.audioFilePath, "voz_2.wav");

    const auto wav = WavFile::read(bytesOf(stage_->home().works() + "/coplas/voz_2.wav"));
    QVERIFY(wav.ok);
    QCOMPARE(wav.channels, 1);
    QVERIFY(*std::ranges::max_element(wav.samples) > 1000);
    const double seconds = static_cast<double>(wav.samples.size()) / wav.sampleRate;
    QCOMPARE(clip.durationBeats, 2.0 * seconds);
    // Playback stops some microseconds after the place is read.
    const double start = stage_->engine().playheadBeat() - clip.durationBeats;
    QVERIFY(std::abs(clip.offsetBeats - start) < 0.05);
    QCOMPARE(stage_->message(), QStringLiteral("Voz grabada (%1 s).").arg(seconds, 0, 'f', 1));
    QVERIFY(stage_->canUndo());
}

void MainWindowTakeTest::aTakeBeginsPlayback()
{
    stage_->clickRibbon("Grabar");
    QVERIFY(stage_->engine().isPlaying());
    stage_->clickRibbon("Grabar");
    QVERIFY(!stage_->engine().isPlaying());
}

void MainWindowTakeTest::aTakeThatBeganBeforeTheSongStartsAtBeatZero()
{
    // The playhead stands still at this tempo, and a second is a sixtieth of a beat.
    stage_->song().bpm = 0;
    take(kTakeMs);
    QVERIFY2(stage_->song().audioTracks.size() == 1, qPrintable(stage_->message()));
    QCOMPARE(stage_->song().audioTracks[0].clips.value(0).offsetBeats, 0.0);
}

void MainWindowTakeTest::aTakeThatCannotBeWrittenIsEmpty()
{
    stage_->clickRibbon("Grabar");
    QTest::qWait(1500);
    stage_->blockWorks();
    stage_->clickRibbon("Grabar");
    QCOMPARE(stage_->message(), "La grabación quedó vacía.");
    QVERIFY(stage_->song().audioTracks.isEmpty());
    QVERIFY(!stage_->canUndo());
    stage_->unblockWorks();
}

int main(int argc, char** argv)
{
    PulseDaemon daemon;
    QApplication application(argc, argv);
    MainWindowTakeTest test(daemon);
    return QTest::qExec(&test, argc, argv);
}

#include "MainWindowTakeTest.moc"
