#include "support/FullDisk.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "support/WindowStage.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace MainWindowVoiceTests {

using namespace ProjectBuilder;

namespace {

constexpr auto kAskAudio = "askOpenFile | Importar audio | Audio (*.wav *.mp3 *.ogg *.opus)";
constexpr int kRate = 48000;

} // namespace

/// How a voice comes into a work: from a file of the user's or from the microphone.
class MainWindowVoiceTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Importing
    void anImportedFileBecomesAClipOnAVoiceTrack();
    void theWorkKeepsACopyOfItsOwn();
    void aNameThatIsTakenGetsANumber();
    void theClipLiesOnTheBeatOfThePlayhead();
    void aClipGoesToTheLastVoiceTrack();
    void anUnsavedWorkKeepsItsFilesAmongTheWorks();
    void givingUpImportsNothing();
    void aFileThatIsNoneIsTold_data();
    void aFileThatIsNoneIsTold();
    void anImportIsOneStepOfUndo();

    // Works that were never saved
    void aVoiceOfAnUnsavedWorkIsHeard();
    void theFirstSaveKeepsTheVoices();
    void aFileThatIsThereAlreadyStays();
    void whatUndoBringsBackIsHeardBehindTheFirstSave();
    void aFileThatIsNotThereIsNoReasonToFail();
    void aVoiceThatCannotBeCopiedFailsTheSave();

    // Mixing ahead
    void anEditedVoiceIsMixedBeforeItIsPlayed();
    void anOpenedVoiceIsMixedBeforeItIsPlayed();
    void aPlayThatComesTooEarlyWaitsWithTheBusyCursor();

    // Recording, without a sound server
    void withoutAMicrophoneTheUserIsTold();
    void afterAFailureTheNextClickStartsAnew();

private:
    QString voiceFile(const QString& name, double seconds, int channels = 1);
    bool import(const QString& path);
    AudioClip lastClip();

    /// The loudest sample of the song as a WAV.
    int exportedPeak();

    /// Saves under a name while the disk has room for small files only.
    void failFirstSave(const QString& name);

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowVoiceTest::init()
{
    // There is no sound server behind this address.
    qputenv("PULSE_SERVER", "unix:/nowhere/socket");
    stage_ = std::make_unique<WindowStage>();
    Project work;
    work.bpm = 120;
    work.tracks.append(melodyTrack({}));
    QVERIFY(stage_->saveWork("coplas", work));
    stage_->window().openProject("coplas");
}

void MainWindowVoiceTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

QString MainWindowVoiceTest::voiceFile(const QString& name, double seconds, int channels)
{
    const QString path = stage_->home().filePath(name);
    const auto frames = static_cast<qsizetype>(seconds * kRate);
    writeBytes(path, WavFile::bytes(Tones::sine(440.0, kRate, frames * channels), kRate, channels));
    return path;
}

bool MainWindowVoiceTest::import(const QString& path)
{
    const auto before = stage_->song().audioTracks;
    stage_->prompts().answerPath(path);
    stage_->choose("Importar audio de voz…");
    return stage_->song().audioTracks != before;
}

int MainWindowVoiceTest::exportedPeak()
{
    const QString path = stage_->home().filePath("song.wav");
    stage_->prompts().answerPath(path);
    stage_->choose("Exportar WAV…");
    int peak = 0;
    for (const int sample : WavFile::read(bytesOf(path)).samples)
        peak = std::max(peak, std::abs(sample));
    return peak;
}

void MainWindowVoiceTest::failFirstSave(const QString& name)
{
    stage_->prompts().takeCalls();
    stage_->prompts().answerText(name);
    const FullDisk disk(20000);
    QVERIFY(!stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().takeCalls().value(1), "warn | Guardar | No pude guardar la obra.");
}

AudioClip MainWindowVoiceTest::lastClip()
{
    return stage_->song().audioTracks.last().clips.last();
}

// ---- Importing -----------------------------------------------------------------------------

void MainWindowVoiceTest::anImportedFileBecomesAClipOnAVoiceTrack()
{
    QVERIFY(import(voiceFile("copla de mi abuela.wav", 3.0, 2)));
    QCOMPARE(stage_->prompts().calls(), QStringList{kAskAudio});
    QCOMPARE(stage_->song().audioTracks.size(), 1);
    QCOMPARE(stage_->song().audioTracks[0].name, "Voz");
    // Three seconds at 120 to the minute.
    QCOMPARE(lastClip(), clip("copla de mi abuela.wav", 0.0, 6.0));
}

void MainWindowVoiceTest::theWorkKeepsACopyOfItsOwn()
{
    const QString source = voiceFile("Zamba ñandú.wav", 0.5, 2);
    QVERIFY(import(source));
    const auto kept = WavFile::read(bytesOf(stage_->home().works() + "/coplas/Zamba ñandú.wav"));
    const auto original = WavFile::read(bytesOf(source));
    QVERIFY(kept.ok);
    QCOMPARE(kept.sampleRate, kRate);
    QCOMPARE(kept.channels, 2);
    QCOMPARE(kept.samples.size(), original.samples.size());
    // Reading and writing scale by one step more or less.
    for (qsizetype i = 0; i < kept.samples.size(); ++i)
        QVERIFY(std::abs(kept.samples[i] - original.samples[i]) <= 1);
}

void MainWindowVoiceTest::aNameThatIsTakenGetsANumber()
{
    const QString source = voiceFile("toma.final.wav", 0.1);
    for (const char* expected : {"toma.final.wav", "toma.final_2.wav", "toma.final_3.wav"}) {
        QVERIFY(import(source));
        QCOMPARE(lastClip().audioFilePath, QString(expected));
        QVERIFY(QFile::exists(stage_->home().works() + "/coplas/" + QString(expected)));
    }
    const QString marked = voiceFile("a%1b%2.wav", 0.1);
    for (const char* expected : {"a%1b%2.wav", "a%1b%2_2.wav"}) {
        QVERIFY(import(marked));
        QCOMPARE(lastClip().audioFilePath, QString(expected));
    }
}

void MainWindowVoiceTest::theClipLiesOnTheBeatOfThePlayhead()
{
    stage_->engine().setPlayheadBeat(5.75);
    QVERIFY(import(voiceFile("voz.wav", 1.0)));
    QCOMPARE(lastClip().offsetBeats, 5.0);
}

void MainWindowVoiceTest::aClipGoesToTheLastVoiceTrack()
{
    stage_->song().audioTracks = {voiceTrack({}), voiceTrack({})};
    QVERIFY(import(voiceFile("voz.wav", 1.0)));
    QVERIFY(stage_->song().audioTracks[0].clips.isEmpty());
    QCOMPARE(stage_->song().audioTracks[1].clips.size(), 1);
}

void MainWindowVoiceTest::anUnsavedWorkKeepsItsFilesAmongTheWorks()
{
    stage_->window().startBlankProject();
    QVERIFY(import(voiceFile("voz.wav", 1.0)));
    QVERIFY(QFile::exists(stage_->home().works() + "/voz.wav"));
}

void MainWindowVoiceTest::givingUpImportsNothing()
{
    stage_->prompts().giveUpPath();
    stage_->clickRibbon("Importar");
    QCOMPARE(stage_->prompts().calls(), QStringList{kAskAudio});
    QVERIFY(stage_->song().audioTracks.isEmpty());
}

void MainWindowVoiceTest::aFileThatIsNoneIsTold_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("text") << QByteArray("no audio at all");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a header cut short") << WavFile::bytes(Tones::silence(100)).left(20);
}

void MainWindowVoiceTest::aFileThatIsNoneIsTold()
{
    QFETCH(QByteArray, content);
    const QString path = stage_->home().filePath("roto.wav");
    writeBytes(path, content);
    QVERIFY(!import(path));
    const QString said = stage_->prompts().calls().value(1);
    QVERIFY2(said.startsWith("warn | Importar audio | No pude leer el archivo: "),
             qPrintable(said));
    QVERIFY(!stage_->canUndo());
    QCOMPARE(QDir(stage_->home().works() + "/coplas").entryList(QDir::Files),
             QStringList{"project.json"});
}

void MainWindowVoiceTest::anImportIsOneStepOfUndo()
{
    const QJsonObject before = stage_->song().toJson();
    QVERIFY(import(voiceFile("voz.wav", 1.0)));
    QVERIFY(stage_->canUndo());
    stage_->choose("Deshacer");
    QCOMPARE(stage_->song().toJson(), before);
    QVERIFY(!stage_->canUndo());
}

// ---- Works that were never saved -----------------------------------------------------------

void MainWindowVoiceTest::aVoiceOfAnUnsavedWorkIsHeard()
{
    stage_->window().startBlankProject();
    QCOMPARE(stage_->engine().projectDir, QString());
    QVERIFY(import(voiceFile("voz.wav", 1.0)));
    QCOMPARE(QDir(stage_->engine().projectDir), QDir(stage_->home().works()));
    QVERIFY(QFile::exists(QDir(stage_->engine().projectDir).filePath(lastClip().audioFilePath)));
    QVERIFY(exportedPeak() > 1000);
}

void MainWindowVoiceTest::theFirstSaveKeepsTheVoices()
{
    stage_->window().startBlankProject();
    QVERIFY(import(voiceFile("voz.wav", 0.5)));
    QVERIFY(import(voiceFile("coro.wav", 0.5)));
    stage_->song().audioTracks[0].clips.append(clip("voz.wav", 8.0, 1.0));
    const int before = exportedPeak();
    QVERIFY(before > 1000);
    stage_->prompts().answerText("Mi zamba");
    QVERIFY(stage_->window().saveCurrentProject());
    const QString folder = stage_->home().works() + "/mi_zamba";
    QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name),
             (QStringList{"coro.wav", "project.json", "voz.wav"}));
    for (const char* name : {"/voz.wav", "/coro.wav"})
        QCOMPARE(bytesOf(folder + name), bytesOf(stage_->home().works() + name));
    QCOMPARE(stage_->engine().projectDir, folder);
    QCOMPARE(exportedPeak(), before);
    stage_->window().openProject("mi_zamba");
    QCOMPARE(exportedPeak(), before);
}

void MainWindowVoiceTest::aFileThatIsThereAlreadyStays()
{
    stage_->window().startBlankProject();
    QVERIFY(import(voiceFile("voz.wav", 0.5)));
    QVERIFY(import(voiceFile("coro.wav", 0.5)));
    failFirstSave("Mi zamba");
    writeBytes(stage_->home().works() + "/mi_zamba/voz.wav", "of somebody else");
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(bytesOf(stage_->home().works() + "/mi_zamba/voz.wav"), "of somebody else");
    QCOMPARE(stage_->song().audioTracks[0].clips[0].audioFilePath, "voz_2.wav");
    QCOMPARE(stage_->song().audioTracks[0].clips[1].audioFilePath, "coro.wav");
    QCOMPARE(stage_->savedWork("mi_zamba"), stage_->song().toJson());
    QCOMPARE(bytesOf(stage_->home().works() + "/mi_zamba/voz_2.wav"),
             bytesOf(stage_->home().works() + "/voz.wav"));
}

void MainWindowVoiceTest::whatUndoBringsBackIsHeardBehindTheFirstSave()
{
    stage_->window().startBlankProject();
    QVERIFY(import(voiceFile("voz.wav", 0.5)));
    const int before = exportedPeak();
    QVERIFY(before > 1000);
    stage_->song().audioTracks[0].clips.clear();
    stage_->window().snapshotAndRefresh();
    failFirstSave("Mi zamba");
    writeBytes(stage_->home().works() + "/mi_zamba/voz.wav", "of somebody else");
    QVERIFY(stage_->window().saveCurrentProject());
    stage_->window().undo();
    QCOMPARE(lastClip().audioFilePath, "voz_2.wav");
    QCOMPARE(exportedPeak(), before);
    stage_->window().redo();
    stage_->window().undo();
    QCOMPARE(exportedPeak(), before);
    QVERIFY(stage_->window().saveCurrentProject());
    stage_->window().openProject("mi_zamba");
    QCOMPARE(exportedPeak(), before);
}

void MainWindowVoiceTest::aFileThatIsNotThereIsNoReasonToFail()
{
    stage_->window().startBlankProject();
    QVERIFY(import(voiceFile("voz.wav", 0.5)));
    stage_->song().audioTracks[0].clips.append(clip("gone.wav"));
    stage_->song().audioTracks[0].clips.append(clip("../voz.wav"));
    stage_->prompts().answerText("Mi zamba");
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->song().audioTracks[0].clips[1].audioFilePath, "gone.wav");
    QCOMPARE(stage_->song().audioTracks[0].clips[2].audioFilePath, "../voz.wav");
}

void MainWindowVoiceTest::aVoiceThatCannotBeCopiedFailsTheSave()
{
    stage_->window().startBlankProject();
    QVERIFY(import(voiceFile("coro.wav", 0.1)));
    QVERIFY(import(voiceFile("voz.wav", 2.0)));
    const QJsonObject before = stage_->song().toJson();
    failFirstSave("Obra sin título");
    QCOMPARE(stage_->song().toJson(), before);
    const QString folder = stage_->home().works() + "/obra_sin_t_tulo";
    QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList());
    // What was heard before is heard still, and kept by the next save.
    QVERIFY(exportedPeak() > 1000);
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name),
             (QStringList{"coro.wav", "project.json", "voz.wav"}));
    QVERIFY(exportedPeak() > 1000);
}

// ---- Recording -----------------------------------------------------------------------------

void MainWindowVoiceTest::anEditedVoiceIsMixedBeforeItIsPlayed()
{
    QVERIFY(import(voiceFile("voz.wav", 1.0)));
    QTRY_VERIFY(stage_->engine().voicesReady());
    QSignalSpy waits(&stage_->engine(), &PlaybackEngine::waitingForVoices);
    stage_->engine().play();
    QVERIFY(stage_->engine().isPlaying());
    QCOMPARE(waits.size(), 0);
}

void MainWindowVoiceTest::anOpenedVoiceIsMixedBeforeItIsPlayed()
{
    QVERIFY(import(voiceFile("voz.wav", 1.0)));
    stage_->window().saveCurrentProject();
    stage_->window().openProject("coplas");
    QVERIFY(!stage_->song().audioTracks.isEmpty());
    QTRY_VERIFY(stage_->engine().voicesReady());
}

void MainWindowVoiceTest::aPlayThatComesTooEarlyWaitsWithTheBusyCursor()
{
    QVERIFY(import(voiceFile("voz.wav", 1.0)));
    QTRY_VERIFY(stage_->engine().voicesReady());
    QList<int> cursors;
    connect(&stage_->engine(), &PlaybackEngine::waitingForVoices, this, [&cursors](bool waiting) {
        const QCursor* cursor = QGuiApplication::overrideCursor();
        cursors.append(cursor ? cursor->shape() : -1);
        QCOMPARE(cursor != nullptr, waiting);
    });
    // The file is another one since it was mixed, and nothing has told the engine.
    const AudioClip clip = lastClip();
    const QString path = QDir(stage_->engine().projectDir).filePath(clip.audioFilePath);
    QVERIFY(writeBytes(path, WavFile::bytes(Tones::sine(440.0, kRate, 100), kRate)));
    stage_->engine().startVoicePlayback(0.0);
    QCOMPARE(cursors, (QList<int>{Qt::BusyCursor, -1}));
}

void MainWindowVoiceTest::withoutAMicrophoneTheUserIsTold()
{
    stage_->clickRibbon("Grabar");
    QCOMPARE(stage_->prompts().calls(),
             QStringList{"warn | Grabación | No hay micrófono disponible."});
    QVERIFY(!stage_->engine().isPlaying());
    QVERIFY(stage_->song().audioTracks.isEmpty());
}

void MainWindowVoiceTest::afterAFailureTheNextClickStartsAnew()
{
    stage_->clickRibbon("Grabar");
    stage_->clickRibbon("Grabar");
    // A second half of a take would have told of an empty one.
    QCOMPARE(stage_->prompts().calls().size(), 2);
    QVERIFY(stage_->message().isEmpty());
}

VELTA_TEST(MainWindowVoiceTest)

} // namespace MainWindowVoiceTests

#include "MainWindowVoiceTest.moc"
