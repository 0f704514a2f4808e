#include "shell/LevelMeter.h"
#include "shell/controls/ClockText.h"
#include "support/FullDisk.h"
#include "support/HeardSound.h"
#include "support/ProjectBuilder.h"
#include "support/PulseDaemon.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "support/WindowStage.h"
#include "voice/AudioRecorder.h"

#include <QAudioDevice>
#include <QGraphicsLineItem>
#include <QGraphicsView>
#include <QLabel>
#include <QMediaDevices>
#include <QPen>
#include <QProcess>
#include <QSignalSpy>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace {

/// Of an ordinary take.
constexpr double kTakeSeconds = 1.0;

const QString kCountIn = QStringLiteral("Contar un compás antes de grabar");

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
    void aTakeThatFindsNoRoomIsKeptElsewhere();
    void aTakeThatIsGivenUpLeavesNothing();

    // A take and what shows of it
    void aRunningTakeIsSeen();
    void theClockCounts();
    void nothingWipesTheWordsAway();
    void theHintComesBackAfterATake();
    void stoppingEndsTheTakeToo_data();
    void stoppingEndsTheTakeToo();
    void aTakeIsDroppedAfterAQuestion_data();
    void aTakeIsDroppedAfterAQuestion();
    void aTakeThatIsNotDroppedGoesOn();
    void withoutATakeEscapeAsksNothing();

    // The bar before a take, and its level
    void aTakeBeginsAtOnceUnlessABarIsToBeCounted();
    void aBarIsCountedBeforeTheTake();
    void aCountThatIsCalledOffLeavesNothing_data();
    void aCountThatIsCalledOffLeavesNothing();
    void aSongThatPlaysIsNotCountedIn();
    void aTakeLeavesASongThatPlaysAlone();
    void theLevelOfTheMicrophoneIsSeen();

    // A take and its place
    void aTakeThatOutlastsPlaybackLiesWhereItBegan_data();
    void aTakeThatOutlastsPlaybackLiesWhereItBegan();

    // A take and its work
    void anotherWorkEndsTheTakeFirst_data();
    void anotherWorkEndsTheTakeFirst();
    void anUnsavedWorkIsAskedForOnceItHoldsTheTake_data();
    void anUnsavedWorkIsAskedForOnceItHoldsTheTake();
    void closingEndsTheTakeFirst();
    void aTakeThatCannotBeginDisturbsNothing();
    void aRecorderThatFailsKeepsWhatCame();
    void aTakeOfAnUnsavedWorkIsHeardAndKept();
    void aFirstSaveDuringATakeKeepsIt();

private:
    /// The one clip of a work on the disk, with its file there.
    AudioClip savedClip(const QString& id);

    QStringList voicesIn(const QString& id);

    AudioRecorder& recorder() { return *stage_->window().findChild<AudioRecorder*>(); }

    /// Until so much sound has come, if any is to come.
    void beginTake(double seconds);

    const QLabel* clock() { return stage_->card("Grabar")->parentWidget()->findChild<QLabel*>(); }

    bool isRecording() { return recorder().isRecording(); }

    /// Whether the status bar says that a voice is recorded.
    bool showsTake();

    /// Whether the playhead shows in red in both editors.
    bool playheadIsRed();

    /// Records so much sound and ends the take.
    void take(double seconds);

    PulseDaemon& daemon_;
    std::unique_ptr<WindowStage> stage_;
};

void MainWindowTakeTest::initTestCase()
{
    QVERIFY2(daemon_.problem().isEmpty(), qPrintable(daemon_.problem()));
    daemon_.loadMicrophone();
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

void MainWindowTakeTest::beginTake(double seconds)
{
    stage_->clickRibbon("Grabar");
    QVERIFY(showsTake());
    QVERIFY(seconds == 0.0 || hearMore(recorder(), seconds));
}

bool MainWindowTakeTest::showsTake()
{
    const auto* words = Widgets::withText<QLabel>(
        stage_->window(), "Grabando voz… tocá «Grabar voz» de nuevo para terminar.");
    return words && words->isVisibleTo(&stage_->window());
}

bool MainWindowTakeTest::playheadIsRed()
{
    const auto views = stage_->window().findChildren<QGraphicsView*>();
    int heads = 0;
    for (const QGraphicsView* view : views) {
        const auto items = view->scene()->items();
        heads += static_cast<int>(std::ranges::count_if(items, [](const QGraphicsItem* item) {
            const auto* line = qgraphicsitem_cast<const QGraphicsLineItem*>(item);
            return line && line->pen().color() == QColor("#e53935");
        }));
    }
    return heads == 2;
}

void MainWindowTakeTest::take(double seconds)
{
    beginTake(seconds);
    stage_->clickRibbon("Grabar");
}

AudioClip MainWindowTakeTest::savedClip(const QString& id)
{
    const QJsonObject work = stage_->savedWork(id);
    const std::unique_ptr<Project> saved(Project::fromJson(work, nullptr));
    const QList<AudioClip> clips = saved->audioTracks.value(0).clips;
    const AudioClip clip = clips.value(0);
    const QString file = stage_->home().works() + '/' + id + '/' + clip.audioFilePath;
    return clips.size() == 1 && WavFile::read(bytesOf(file)).ok ? clip : AudioClip();
}

QStringList MainWindowTakeTest::voicesIn(const QString& id)
{
    return QDir(stage_->home().works() + '/' + id).entryList({"*.wav"}, QDir::Files);
}

void MainWindowTakeTest::aTakeBecomesANumberedClipThatEndsAtThePlayhead()
{
    // The song is long enough for playback to go on.
    stage_->song().tracks[0].melodyBlocks.append(
        ProjectBuilder::melody({ProjectBuilder::note(60, 199.0)}, 0.0, 200.0));
    stage_->engine().setPlayheadBeat(100.0);
    writeBytes(stage_->home().works() + "/coplas/voz_1.wav", "a former take");
    take(kTakeSeconds);
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
    take(kTakeSeconds);
    QVERIFY2(stage_->song().audioTracks.size() == 1, qPrintable(stage_->message()));
    QCOMPARE(stage_->song().audioTracks[0].clips.value(0).offsetBeats, 0.0);
}

void MainWindowTakeTest::aTakeThatFindsNoRoomIsKeptElsewhere()
{
    const QString place = stage_->home().filePath("stick/mi voz.wav");
    QVERIFY(QDir().mkpath(stage_->home().filePath("stick")));
    beginTake(kTakeSeconds);
    stage_->prompts().answerOffer(true);
    stage_->prompts().giveUpPath();
    stage_->prompts().answerOffer(true);
    stage_->prompts().answerPath("/nowhere/voz.wav");
    stage_->prompts().answerOffer(true);
    stage_->prompts().answerPath(place);
    stage_->blockWorks();
    stage_->clickRibbon("Grabar");
    QCOMPARE(stage_->prompts().calls().value(0),
             "offer | Grabación | No pude guardar la grabación. | Guardar en otro lugar…");
    QVERIFY(stage_->prompts().allAnswersUsed());
    QVERIFY(WavFile::read(bytesOf(place)).ok);
    QCOMPARE(stage_->song().audioTracks.value(0).clips.value(0).audioFilePath, place);
    QVERIFY(stage_->message().startsWith("Voz grabada"));
    stage_->unblockWorks();

    // The work is saved as soon as there is room for it, and the voice joins it as soon as there is
    // room for that too.
    {
        const FullDisk disk(20000);
        QVERIFY(stage_->window().saveCurrentProject());
    }
    const std::unique_ptr<Project> saved(Project::fromJson(stage_->savedWork("coplas"), nullptr));
    QCOMPARE(saved->audioTracks.value(0).clips.value(0).audioFilePath, place);
    QCOMPARE(voicesIn("coplas"), QStringList());
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(savedClip("coplas").audioFilePath, "mi voz.wav");
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(voicesIn("coplas"), QStringList{"mi voz.wav"});
    QCOMPARE(bytesOf(stage_->home().works() + "/coplas/mi voz.wav"), bytesOf(place));
}

void MainWindowTakeTest::aTakeThatIsGivenUpLeavesNothing()
{
    beginTake(kTakeSeconds);
    stage_->prompts().answerOffer(false);
    {
        const FullDisk disk(1000);
        stage_->clickRibbon("Grabar");
    }
    QVERIFY(stage_->prompts().allAnswersUsed());
    QVERIFY(stage_->song().audioTracks.isEmpty());
    QVERIFY(!stage_->canUndo());
    QCOMPARE(QDir(stage_->home().works() + "/coplas").entryList(QDir::Files),
             QStringList{"project.json"});
}

// ---- A take and what shows of it -----------------------------------------------------------

void MainWindowTakeTest::aRunningTakeIsSeen()
{
    QVERIFY(stage_->showWindow());
    const QToolButton* record = stage_->card("Grabar");
    const QToolButton* cancel = stage_->card("Cancelar");
    const auto* clock = record->parentWidget()->findChild<QLabel*>();
    QVERIFY(!cancel->isVisible());
    QVERIFY(!playheadIsRed());
    QCOMPARE(clock->text(), "Grabar");

    beginTake(0.0);
    QVERIFY(record->property("recording").toBool());
    QVERIFY(cancel->isVisible());
    QVERIFY(playheadIsRed());
    QCOMPARE(clock->text(), "0:00");
    // An edit makes the scenes anew.
    stage_->window().snapshotAndRefresh();
    QVERIFY(playheadIsRed());

    stage_->clickRibbon("Grabar");
    QVERIFY(!record->property("recording").toBool());
    QVERIFY(!cancel->isVisible());
    QVERIFY(!playheadIsRed());
    QCOMPARE(clock->text(), "Grabar");
    QVERIFY(!showsTake());
}

void MainWindowTakeTest::theClockCounts()
{
    QCOMPARE(clockText(0), "0:00");
    QCOMPARE(clockText(59), "0:59");
    QCOMPARE(clockText(60), "1:00");
    QCOMPARE(clockText(754), "12:34");
    beginTake(0.0);
    const auto* clock = stage_->card("Grabar")->parentWidget()->findChild<QLabel*>();
    QTRY_COMPARE(clock->text(), "0:01");
    QTRY_COMPARE(clock->text(), "0:02");
}

void MainWindowTakeTest::nothingWipesTheWordsAway()
{
    QVERIFY(stage_->showWindow());
    beginTake(0.0);
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->message(), "Obra guardada.");
    QVERIFY(showsTake());
    // As menus do when the mouse passes over their entries.
    QStatusTipEvent tip{QString()};
    QCoreApplication::sendEvent(&stage_->window(), &tip);
    QCOMPARE(stage_->message(), QString());
    QVERIFY(showsTake());
}

void MainWindowTakeTest::theHintComesBackAfterATake()
{
    QVERIFY(stage_->showWindow());
    const auto labels = stage_->window().statusBar()->findChildren<QLabel*>();
    const auto hint = std::ranges::find_if(
        labels, [](const QLabel* label) { return label->text().startsWith("Espacio"); });
    QVERIFY(hint != labels.end() && (*hint)->isVisible());
    beginTake(0.5);
    QVERIFY(!(*hint)->isVisible());
    stage_->clickRibbon("Grabar");
    QVERIFY(!stage_->message().isEmpty());
    QVERIFY(!(*hint)->isVisible());
    stage_->window().statusBar()->clearMessage();
    QVERIFY((*hint)->isVisible());
}

void MainWindowTakeTest::stoppingEndsTheTakeToo_data()
{
    QTest::addColumn<bool>("byMenu");
    QTest::newRow("the button") << false;
    QTest::newRow("the menu") << true;
}

void MainWindowTakeTest::stoppingEndsTheTakeToo()
{
    QFETCH(bool, byMenu);
    stage_->song().tracks[0].melodyBlocks.append(
        ProjectBuilder::melody({ProjectBuilder::note(60, 199.0)}, 0.0, 200.0));
    stage_->engine().setPlayheadBeat(100.0);
    beginTake(kTakeSeconds);
    if (byMenu)
        stage_->choose("Detener");
    else
        stage_->clickRibbon("Detener");
    QVERIFY2(stage_->song().audioTracks.size() == 1, qPrintable(stage_->message()));
    const AudioClip clip = stage_->song().audioTracks[0].clips.value(0);
    // It lies where it was sung, although the playhead is back at the start.
    QVERIFY2(clip.offsetBeats > 90.0, qPrintable(QString::number(clip.offsetBeats)));
    QCOMPARE(stage_->engine().playheadBeat(), 0.0);
    QVERIFY(!stage_->window().findChild<AudioRecorder*>()->isRecording());
    QVERIFY(!showsTake());
}

void MainWindowTakeTest::aTakeIsDroppedAfterAQuestion_data()
{
    QTest::addColumn<bool>("byKey");
    QTest::newRow("the button") << false;
    QTest::newRow("the key") << true;
}

void MainWindowTakeTest::aTakeIsDroppedAfterAQuestion()
{
    QFETCH(bool, byKey);
    QVERIFY(stage_->showWindow());
    beginTake(kTakeSeconds);
    stage_->prompts().answer(QMessageBox::Yes);
    if (byKey)
        QTest::keyClick(stage_->window().focusWidget(), Qt::Key_Escape);
    else
        stage_->clickRibbon("Cancelar");
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"ask | Grabación | ¿Descartar lo que se está grabando? | Yes No | "
                         "default No"});
    QVERIFY(stage_->song().audioTracks.isEmpty());
    QVERIFY(!stage_->canUndo());
    QVERIFY(!stage_->engine().isPlaying());
    QVERIFY(!stage_->window().findChild<AudioRecorder*>()->isRecording());
    QCOMPARE(QDir(stage_->home().works() + "/coplas").entryList(QDir::Files),
             QStringList{"project.json"});
    QVERIFY(!showsTake());
    QCOMPARE(stage_->message(), "Grabación descartada.");
}

void MainWindowTakeTest::aTakeThatIsNotDroppedGoesOn()
{
    QVERIFY(stage_->showWindow());
    beginTake(kTakeSeconds);
    stage_->prompts().answer(QMessageBox::No);
    stage_->clickRibbon("Cancelar");
    QVERIFY(showsTake());
    QVERIFY(stage_->window().findChild<AudioRecorder*>()->isRecording());
    stage_->clickRibbon("Grabar");
    QCOMPARE(stage_->song().audioTracks.size(), 1);
}

void MainWindowTakeTest::withoutATakeEscapeAsksNothing()
{
    QVERIFY(stage_->showWindow());
    QTest::keyClick(stage_->window().focusWidget(), Qt::Key_Escape);
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QVERIFY(stage_->window().isVisible());
}

// ---- The bar before a take, and its level --------------------------------------------------

void MainWindowTakeTest::aTakeBeginsAtOnceUnlessABarIsToBeCounted()
{
    const QAction* setting = Widgets::entry(stage_->window(), kCountIn);
    QVERIFY(setting && !setting->isChecked());
    QCOMPARE(stage_->card("Grabar")->contextMenuPolicy(), Qt::CustomContextMenu);
    beginTake(0.0);
    QVERIFY(stage_->engine().isPlaying());
    stage_->clickRibbon("Grabar");

    // The next window remembers.
    stage_->choose(kCountIn);
    const MainWindow next(nullptr, stage_->prompts());
    QVERIFY(Widgets::entry(next, kCountIn)->isChecked());
}

void MainWindowTakeTest::aBarIsCountedBeforeTheTake()
{
    // A beat in half a second.
    stage_->engine().setPlayheadBeat(8.0);
    stage_->choose(kCountIn);
    QVERIFY(stage_->showWindow());
    stage_->clickRibbon("Grabar");
    QVERIFY(isRecording());
    QVERIFY(!stage_->engine().isPlaying());
    QVERIFY(!showsTake());
    QVERIFY(Widgets::withText<QLabel>(stage_->window(),
                                      QStringLiteral("Un compás y grabamos… Esc cancela.")));
    for (const char* click : {"1", "2", "3", "4"})
        QTRY_COMPARE(clock()->text(), click);
    QCOMPARE(stage_->engine().playheadBeat(), 8.0);
    QTRY_VERIFY(stage_->engine().isPlaying());
    QCOMPARE(clock()->text(), "0:00");
    QVERIFY(showsTake());
    QVERIFY(hearMore(recorder(), kTakeSeconds));
    stage_->clickRibbon("Grabar");
    QVERIFY2(stage_->song().audioTracks.size() == 1, qPrintable(stage_->message()));
    const AudioClip clip = stage_->song().audioTracks[0].clips.value(0);
    QVERIFY(clip.durationBeats > 0.0);
}

void MainWindowTakeTest::aCountThatIsCalledOffLeavesNothing_data()
{
    QTest::addColumn<QString>("by");
    for (const char* by : {"Escape", "Cancelar", "Grabar", "Detener", "Reproducir", "Abrir"})
        QTest::newRow(by) << by;
}

void MainWindowTakeTest::aCountThatIsCalledOffLeavesNothing()
{
    QFETCH(QString, by);
    stage_->choose(kCountIn);
    QVERIFY(stage_->showWindow());
    stage_->clickRibbon("Grabar");
    QTRY_COMPARE(clock()->text(), "2");
    if (by == "Escape")
        QTest::keyClick(stage_->window().focusWidget(), Qt::Key_Escape);
    else if (by == "Abrir")
        stage_->window().openProject("coplas");
    else
        stage_->clickRibbon(by);
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QVERIFY(!isRecording());
    QVERIFY(!showsTake());
    QCOMPARE(clock()->text(), "Grabar");
    QCOMPARE(stage_->engine().isPlaying(), by == "Reproducir");
    QTest::qWait(2500);
    QVERIFY(!isRecording());
    QVERIFY(stage_->song().audioTracks.isEmpty());
    QVERIFY(!stage_->canUndo());
    QCOMPARE(QDir(stage_->home().works() + "/coplas").entryList(QDir::Files),
             QStringList{"project.json"});
}

void MainWindowTakeTest::aSongThatPlaysIsNotCountedIn()
{
    stage_->choose(kCountIn);
    stage_->engine().play(0.0);
    beginTake(0.0);
    QVERIFY(isRecording());
    QVERIFY(stage_->engine().isPlaying());
}

void MainWindowTakeTest::aTakeLeavesASongThatPlaysAlone()
{
    stage_->engine().play(6.0);
    const QSignalSpy playing(&stage_->engine(), &PlaybackEngine::playingChanged);
    beginTake(0.0);
    QVERIFY(isRecording());
    QCOMPARE(playing.size(), 0);
    QVERIFY(stage_->engine().playheadBeat() >= 6.0);
}

void MainWindowTakeTest::theLevelOfTheMicrophoneIsSeen()
{
    QVERIFY(stage_->showWindow());
    const auto* meter = stage_->window().findChild<LevelMeter*>();
    QVERIFY(!meter->isVisible());
    beginTake(0.0);
    QVERIFY(meter->isVisible());
    // The microphone hears a tone.
    QTRY_VERIFY(meter->decibels() > -30.0);
    stage_->clickRibbon("Grabar");
    QVERIFY(!meter->isVisible());
    QCOMPARE(meter->decibels(), LevelMeter::kLeast);
}

// ---- A take and its place ------------------------------------------------------------------

void MainWindowTakeTest::aTakeThatOutlastsPlaybackLiesWhereItBegan_data()
{
    QTest::addColumn<double>("songBeats");
    QTest::addColumn<QString>("button");
    QTest::newRow("a song that ends by itself") << 3.0 << "";
    QTest::newRow("a song that is paused") << 200.0 << "Reproducir";
}

void MainWindowTakeTest::aTakeThatOutlastsPlaybackLiesWhereItBegan()
{
    QFETCH(double, songBeats);
    QFETCH(QString, button);
    stage_->song().tracks[0].melodyBlocks = {
        ProjectBuilder::melody({ProjectBuilder::note(60, 0.0, songBeats)}, 0.0, songBeats)};
    stage_->engine().setPlayheadBeat(2.5);
    beginTake(0.5);
    if (!button.isEmpty())
        stage_->clickRibbon(button);
    QTRY_VERIFY(!stage_->engine().isPlaying());
    QVERIFY(hearMore(recorder(), kTakeSeconds));
    stage_->clickRibbon("Grabar");
    QVERIFY2(stage_->song().audioTracks.size() == 1, qPrintable(stage_->message()));
    // Between the two lies the time that playback takes to set out.
    const double offset = stage_->song().audioTracks[0].clips.value(0).offsetBeats;
    QVERIFY2(offset >= 2.5 && offset < 2.75, qPrintable(QString::number(offset)));
}

// ---- A take and its work -------------------------------------------------------------------

void MainWindowTakeTest::anotherWorkEndsTheTakeFirst_data()
{
    QTest::addColumn<QString>("entry");
    QTest::newRow("opened") << "Abrir obra…";
    QTest::newRow("new") << "Obra nueva…";
}

void MainWindowTakeTest::anotherWorkEndsTheTakeFirst()
{
    QFETCH(QString, entry);
    QVERIFY(stage_->saveWork("otra", Project()));
    beginTake(kTakeSeconds);
    bool tookPlace = false;
    stage_->prompts().inDialog([&](QDialog& dialog) {
        tookPlace = stage_->song().audioTracks.size() == 1 &&
                    QFile::exists(stage_->home().works() + "/coplas/voz_1.wav");
        dialog.reject();
    });
    stage_->choose(entry);
    QVERIFY(tookPlace);
    QVERIFY(!stage_->engine().isPlaying());
    stage_->window().openProject("otra");
    QVERIFY(stage_->song().audioTracks.isEmpty());
    QVERIFY(!QFile::exists(stage_->home().works() + "/otra/voz_1.wav"));
    // The next click begins a take of the other work.
    stage_->clickRibbon("Grabar");
    QVERIFY(showsTake());
}

void MainWindowTakeTest::anUnsavedWorkIsAskedForOnceItHoldsTheTake_data()
{
    anotherWorkEndsTheTakeFirst_data();
    QTest::newRow("closed") << "Salir";
}

void MainWindowTakeTest::anUnsavedWorkIsAskedForOnceItHoldsTheTake()
{
    QFETCH(QString, entry);
    stage_->window().startBlankProject();
    QVERIFY(stage_->showWindow());
    beginTake(kTakeSeconds);
    stage_->prompts().answer(QMessageBox::Save);
    stage_->prompts().answerText("Mi zamba");
    if (entry != "Salir")
        stage_->prompts().inDialog([](QDialog& dialog) { dialog.reject(); });
    stage_->choose(entry);
    QVERIFY(stage_->prompts().allAnswersUsed());
    QVERIFY(stage_->prompts().calls().value(0).startsWith("ask | Obra sin guardar"));
    QCOMPARE(stage_->window().isVisible(), entry != "Salir");
    QCOMPARE(savedClip("mi_zamba").audioFilePath, "voz_1.wav");
}

void MainWindowTakeTest::closingEndsTheTakeFirst()
{
    beginTake(kTakeSeconds);
    QVERIFY(stage_->window().close());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(savedClip("coplas").audioFilePath, "voz_1.wav");
}

void MainWindowTakeTest::aTakeThatCannotBeginDisturbsNothing()
{
    auto* recorder = stage_->window().findChild<AudioRecorder*>();
    emit recorder->recordingFailed("No hay micrófono disponible.");
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"warn | Grabación | No hay micrófono disponible."});
    QVERIFY(stage_->song().audioTracks.isEmpty());
    QCOMPARE(stage_->message(), QString());
}

void MainWindowTakeTest::aRecorderThatFailsKeepsWhatCame()
{
    auto* recorder = stage_->window().findChild<AudioRecorder*>();
    beginTake(kTakeSeconds);
    bool keptBefore = false;
    stage_->prompts().whileWarning = [&] { keptBefore = stage_->song().audioTracks.size() == 1; };
    emit recorder->recordingFailed("El micrófono se fue.");
    QCOMPARE(stage_->prompts().calls(), QStringList{"warn | Grabación | El micrófono se fue."});
    QVERIFY(keptBefore);
    QVERIFY(!stage_->engine().isPlaying());
    QVERIFY(!recorder->isRecording());
    const AudioClip first = stage_->song().audioTracks[0].clips.value(0);
    QVERIFY(first.durationBeats > 1.0);
    QVERIFY(WavFile::read(bytesOf(stage_->home().works() + "/coplas/voz_1.wav")).ok);

    take(kTakeSeconds);
    QCOMPARE(stage_->song().audioTracks[0].clips.size(), 2);
    QCOMPARE(stage_->song().audioTracks[0].clips[1].audioFilePath, "voz_2.wav");
}

void MainWindowTakeTest::aTakeOfAnUnsavedWorkIsHeardAndKept()
{
    stage_->window().startBlankProject();
    take(kTakeSeconds);
    const QByteArray recorded = bytesOf(stage_->home().works() + "/voz_1.wav");
    QVERIFY(WavFile::read(recorded).ok);
    QCOMPARE(QDir(stage_->engine().projectDir), QDir(stage_->home().works()));

    stage_->prompts().answerText("Mi zamba");
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->engine().projectDir, stage_->home().works() + "/mi_zamba");
    QCOMPARE(savedClip("mi_zamba").audioFilePath, "voz_1.wav");
    QCOMPARE(bytesOf(stage_->home().works() + "/mi_zamba/voz_1.wav"), recorded);
    QCOMPARE(bytesOf(stage_->home().works() + "/voz_1.wav"), recorded);
}

void MainWindowTakeTest::aFirstSaveDuringATakeKeepsIt()
{
    stage_->window().startBlankProject();
    beginTake(kTakeSeconds);
    stage_->prompts().answerText("Mi zamba");
    QVERIFY(stage_->window().saveCurrentProject());
    QVERIFY(hearMore(recorder(), kTakeSeconds));
    stage_->clickRibbon("Grabar");
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(savedClip("mi_zamba").audioFilePath, "voz_1.wav");
    QVERIFY(!QFile::exists(stage_->home().works() + "/voz_1.wav"));
}

int main(int argc, char** argv)
{
    PulseDaemon daemon;
    QApplication application(argc, argv);
    MainWindowTakeTest test(daemon);
    return QTest::qExec(&test, argc, argv);
}

#include "MainWindowTakeTest.moc"
