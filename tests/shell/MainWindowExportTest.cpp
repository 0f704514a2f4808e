#include "support/FluidSpy.h"
#include "support/MidiReader.h"
#include "support/Mp3Frames.h"
#include "support/ProjectBuilder.h"
#include "support/SoundFile.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "support/WindowStage.h"

#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace MainWindowExportTests {

using namespace ProjectBuilder;

namespace {

int overrideCursor()
{
    const QCursor* cursor = QGuiApplication::overrideCursor();
    return cursor ? int(cursor->shape()) : -1;
}

enum class Kind { Midi, Wav, Mp3 };

void addKinds()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("MIDI") << int(Kind::Midi);
    QTest::newRow("WAV") << int(Kind::Wav);
    QTest::newRow("MP3") << int(Kind::Mp3);
}

/// The menu entry of a kind.
QString entryOf(int kind)
{
    static const QStringList kEntries{"Exportar MIDI…", "Exportar WAV…", "Exportar MP3…"};
    return kEntries.at(kind);
}

QString suffixOf(int kind)
{
    static const QStringList kSuffixes{".mid", ".wav", ".mp3"};
    return kSuffixes.at(kind);
}

/// The warning of a failed export, up to the error.
QString failureOf(int kind)
{
    return kind == int(Kind::Midi) ? "warn | Exportar MIDI | Falló la exportación: "
                                   : "warn | Exportar | Falló la exportación: ";
}

bool isSong(const QByteArray& bytes, int kind)
{
    switch (static_cast<Kind>(kind)) {
    case Kind::Midi:
        return bytes.startsWith("MThd") && MidiReader::read(bytes).error.isEmpty();
    case Kind::Wav:
        return bytes.startsWith("RIFF") && WavFile::read(bytes).ok;
    default:
        return Mp3Frames::over(bytes).ok;
    }
}

int loudest(const QString& wavPath)
{
    int most = 0;
    for (const int sample : WavFile::read(bytesOf(wavPath)).samples)
        most = std::max(most, std::abs(sample));
    return most;
}

/// Presses the button of the file dialog that stands open, with a name in its line.
void saveInDialog(const QString& name)
{
    QTimer::singleShot(0, [name] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        if (!name.isEmpty())
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(name);
        Widgets::click(dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save));
    });
}

} // namespace

class MainWindowExportTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void aSongIsWritten_data();
    void aSongIsWritten();
    void theMidiFileHoldsTheNotes();
    void theSoundIsHeard();
    void theFileIsNamedAfterTheWork_data();
    void theFileIsNamedAfterTheWork();
    void aCancelledExportWritesNothing_data();
    void aCancelledExportWritesNothing();
    void theMessageStaysItsTime();
    void anUnwritablePathIsTold_data();
    void anUnwritablePathIsTold();
    void aSongWithoutEndIsTold_data();
    void aSongWithoutEndIsTold();
    void damagedWorksAreWritten_data();
    void damagedWorksAreWritten();
    void aLongExportIsShownInFrontOfTheWindow_data();
    void aLongExportIsShownInFrontOfTheWindow();
    void anExportThatIsCalledOffLeavesTheFormerFile_data();
    void anExportThatIsCalledOffLeavesTheFormerFile();
    void clipsComeFromTheFolderOfTheWork_data();
    void clipsComeFromTheFolderOfTheWork();
    void anExportChangesNothing_data();
    void anExportChangesNothing();
    void withoutABankTheExportIsSilent();
    void theRealDialogsWriteFiles_data();
    void theRealDialogsWriteFiles();

private:
    /// A note, the shortest song that there is something to hear of.
    void addNote()
    {
        stage_->song().bpm = 240;
        stage_->song().tracks[0].melodyBlocks = {melody({note(60, 0.0)}, 0.0, 1.0)};
    }

    /// Ten minutes.
    void makeLong()
    {
        stage_->song().bpm = 120;
        stage_->song().tracks[0].melodyBlocks = {melody({note(60, 0.0, 1200.0)}, 0.0, 1200.0)};
    }

    void addLongExports()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("title");
        QTest::newRow("WAV") << int(Kind::Wav) << "Exportar WAV";
        QTest::newRow("MP3") << int(Kind::Mp3) << "Exportar MP3";
    }

    /// Once, as soon as an export shows itself.
    static void duringExport(const std::function<void(QProgressDialog&)>& use)
    {
        auto* watch = new QTimer(qApp);
        connect(watch, &QTimer::timeout, watch, [watch, use] {
            auto* dialog = qobject_cast<QProgressDialog*>(QApplication::activeModalWidget());
            if (!dialog || dialog->value() < 1)
                return;
            watch->deleteLater();
            watch->stop();
            use(*dialog);
        });
        watch->start(0);
    }

    QString exportTo(int kind, const QString& path)
    {
        stage_->prompts().answerPath(path);
        stage_->choose(entryOf(kind));
        return path;
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowExportTest::initTestCase()
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void MainWindowExportTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowExportTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    QVERIFY(!QGuiApplication::overrideCursor());
    stage_.reset();
}

void MainWindowExportTest::aSongIsWritten_data()
{
    addKinds();
}

void MainWindowExportTest::aSongIsWritten()
{
    QFETCH(int, kind);
    addNote();
    const QString path = exportTo(kind, stage_->home().filePath("canción" + suffixOf(kind)));
    QCOMPARE(stage_->prompts().calls().size(), 1);
    QCOMPARE(stage_->message(), "Exportado a " + path);
    QVERIFY(isSong(bytesOf(path), kind));
}

void MainWindowExportTest::theMidiFileHoldsTheNotes()
{
    stage_->song().tracks[0] = straight(melodyTrack({melody({note(62, 0.0), note(65, 1.0)})}));
    const QString path = exportTo(int(Kind::Midi), stage_->home().filePath("song.mid"));
    QList<int> pitches;
    for (const auto& track : MidiReader::read(bytesOf(path)).tracks) {
        for (const auto& event : track.ofKind(0x90)) {
            if (event.dataByte(1) > 0)
                pitches.append(event.dataByte(0));
        }
    }
    QCOMPARE(pitches, (QList{62, 65}));
}

void MainWindowExportTest::theSoundIsHeard()
{
    addNote();
    const QString path = exportTo(int(Kind::Wav), stage_->home().filePath("song.wav"));
    const auto content = WavFile::read(bytesOf(path));
    QCOMPARE(content.sampleRate, 44100);
    QCOMPARE(content.channels, 2);
    QVERIFY(loudest(path) > 300);
}

void MainWindowExportTest::theFileIsNamedAfterTheWork_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a name") << "Zamba de mi pueblo";
    QTest::newRow("no name") << "";
    QTest::newRow("placeholders") << "%1 %2";
    QTest::newRow("a meter") << "Vals 3/4";
}

void MainWindowExportTest::theFileIsNamedAfterTheWork()
{
    QFETCH(QString, name);
    stage_->song().name = name;
    for (int kind = 0; kind < 3; ++kind) {
        stage_->prompts().giveUpPath();
        stage_->choose(entryOf(kind));
    }
    QCOMPARE(stage_->prompts().calls(),
             (QStringList{"askSaveFile | Exportar MIDI | " + name + ".mid | MIDI (*.mid)",
                          "askSaveFile | Exportar WAV | " + name + ".wav | WAV (*.wav)",
                          "askSaveFile | Exportar MP3 | " + name + ".mp3 | MP3 (*.mp3)"}));
}

void MainWindowExportTest::aCancelledExportWritesNothing_data()
{
    addKinds();
}

void MainWindowExportTest::aCancelledExportWritesNothing()
{
    QFETCH(int, kind);
    addNote();
    QVERIFY(stage_->window().projectHasContent());
    const QStringList before = QDir(stage_->home().filePath(".")).entryList();
    FluidSpy::reset();
    stage_->prompts().giveUpPath();
    stage_->choose(entryOf(kind));
    QCOMPARE(stage_->prompts().calls().size(), 1);
    QCOMPARE(stage_->message(), QString());
    QCOMPARE(QDir(stage_->home().filePath(".")).entryList(), before);
    QCOMPARE(FluidSpy::calls({"new_synth"}), QStringList());
}

void MainWindowExportTest::theMessageStaysItsTime()
{
    exportTo(int(Kind::Midi), stage_->home().filePath("song.mid"));
    const auto timers = stage_->window().statusBar()->findChildren<QTimer*>();
    QCOMPARE(timers.size(), 1);
    QVERIFY(timers.first()->isActive());
    QCOMPARE(timers.first()->interval(), 4000);
}

void MainWindowExportTest::anUnwritablePathIsTold_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("path");
    for (int kind = 0; kind < 3; ++kind) {
        const QByteArray suffix = suffixOf(kind).toUtf8();
        const auto add = [&](const QByteArray& name, const QString& path) {
            QTest::newRow(name + ", " + suffix) << kind << path;
        };
        add("a missing folder", "none/song" + suffixOf(kind));
        add("a folder", "folder");
        add("below a file", "file/song" + suffixOf(kind));
    }
}

void MainWindowExportTest::anUnwritablePathIsTold()
{
    QFETCH(int, kind);
    QFETCH(QString, path);
    addNote();
    QVERIFY(QDir().mkpath(stage_->home().filePath("folder")));
    QVERIFY(writeBytes(stage_->home().filePath("file"), "in the way"));
    exportTo(kind, stage_->home().filePath(path));
    QFile same(stage_->home().filePath(path));
    QVERIFY(!same.open(QIODevice::WriteOnly));
    const QString error =
        kind == int(Kind::Wav) ? QString("No pude escribir el WAV.") : same.errorString();
    QCOMPARE(stage_->prompts().calls().mid(1), QStringList{failureOf(kind) + error});
    QCOMPARE(stage_->message(), QString());
    QCOMPARE(bytesOf(stage_->home().filePath("file")), "in the way");
}

void MainWindowExportTest::aSongWithoutEndIsTold_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("WAV") << int(Kind::Wav);
    QTest::newRow("MP3") << int(Kind::Mp3);
}

void MainWindowExportTest::aSongWithoutEndIsTold()
{
    QFETCH(int, kind);
    stage_->song().tracks[0].melodyBlocks = {melody({note(60, 0.0, 1e12)}, 0.0, 1e12)};
    const QString path = exportTo(kind, stage_->home().filePath("song" + suffixOf(kind)));
    QCOMPARE(stage_->prompts().calls().mid(1),
             QStringList{failureOf(kind) + "La obra es demasiado larga para exportarla."});
    QVERIFY(!QFile::exists(path));
}

void MainWindowExportTest::damagedWorksAreWritten_data()
{
    addKinds();
}

void MainWindowExportTest::damagedWorksAreWritten()
{
    QFETCH(int, kind);
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    Project& song = stage_->song();
    song.timeSignature = {.numerator = 4, .denominator = 0};
    song.keySignature = {.rootPitchClass = 99, .mode = static_cast<KeyMode>(-7)};
    song.bpm = -5;
    song.tracks[0].melodyBlocks = {melody({note(600, kNan), note(-1, 0.0, 0.01)}, 0.0, 1.0),
                                   melody({note(60, 0.0, 0.01)}, kNan, kNan)};
    song.harmonyTrack.blocks = {{.barIndex = -1, .events = {chord(9, kNan, 1e300)}}};
    const QString path = exportTo(kind, stage_->home().filePath("song" + suffixOf(kind)));
    QCOMPARE(stage_->message(), "Exportado a " + path);
    QVERIFY(isSong(bytesOf(path), kind));
}

void MainWindowExportTest::aLongExportIsShownInFrontOfTheWindow_data()
{
    addLongExports();
}

void MainWindowExportTest::aLongExportIsShownInFrontOfTheWindow()
{
    QFETCH(int, kind);
    QFETCH(QString, title);
    makeLong();
    QVERIFY(stage_->showWindow());
    QStringList seen;
    int most = -1;
    bool busy = false;
    duringExport([&](QProgressDialog& dialog) {
        seen = {dialog.windowTitle(), dialog.labelText(), dialog.findChild<QPushButton*>()->text()};
        most = dialog.maximum();
        busy = overrideCursor() != -1;
        // Neither a key nor a press reaches the window behind it.
        const QString name = stage_->song().name;
        QTest::keyClick(stage_->window().windowHandle(), Qt::Key_N, Qt::ControlModifier);
        QTest::mouseClick(stage_->window().windowHandle(), Qt::LeftButton);
        QCOMPARE(stage_->song().name, name);
        dialog.cancel();
    });
    exportTo(kind, stage_->home().filePath("song"));
    QCOMPARE(seen, (QStringList{title, "Exportando…", "Cancelar"}));
    QVERIFY(most > 100);
    QVERIFY(!busy);
}

void MainWindowExportTest::anExportThatIsCalledOffLeavesTheFormerFile_data()
{
    addLongExports();
}

void MainWindowExportTest::anExportThatIsCalledOffLeavesTheFormerFile()
{
    QFETCH(int, kind);
    makeLong();
    const QString path = stage_->home().filePath("exports/song" + suffixOf(kind));
    QVERIFY(writeBytes(path, "a former song"));
    const QJsonObject before = stage_->song().toJson();
    duringExport([](QProgressDialog& dialog) {
        Widgets::click(Widgets::withText<QPushButton>(dialog, "Cancelar"));
    });
    exportTo(kind, path);
    QCOMPARE(stage_->prompts().calls().size(), 1);
    QCOMPARE(stage_->message(), QString());
    QCOMPARE(bytesOf(path), "a former song");
    QCOMPARE(QDir(stage_->home().filePath("exports")).entryList(QDir::Files).size(), 1);
    QCOMPARE(stage_->song().toJson(), before);
    QVERIFY(!QApplication::activeModalWidget());
}

void MainWindowExportTest::clipsComeFromTheFolderOfTheWork_data()
{
    QTest::addColumn<QString>("savedAs");
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("heard");
    QTest::newRow("without an id, from the root") << ""
                                                  << "/voz.wav" << true;
    QTest::newRow("without an id, from another folder") << ""
                                                        << "/zamba/voz.wav" << false;
    QTest::newRow("with an id, from its folder") << "Zamba"
                                                 << "/zamba/voz.wav" << true;
    QTest::newRow("with an id, from the root") << "Zamba"
                                               << "/voz.wav" << false;
}

void MainWindowExportTest::clipsComeFromTheFolderOfTheWork()
{
    QFETCH(QString, savedAs);
    QFETCH(QString, file);
    QFETCH(bool, heard);
    stage_->song().audioTracks = {voiceTrack({clip("voz.wav", 0.0, 1.0)})};
    if (!savedAs.isEmpty()) {
        stage_->prompts().answerText(savedAs);
        QVERIFY(stage_->window().saveCurrentProject());
    }
    QVERIFY(QDir().mkpath(stage_->home().works() + "/zamba"));
    QVERIFY(SoundFile::writeExact(stage_->home().works() + file, Tones::sine(440.0, 44100, 22050)));
    const QString path = exportTo(int(Kind::Wav), stage_->home().filePath("song.wav"));
    QVERIFY(WavFile::read(bytesOf(path)).ok);
    QCOMPARE(loudest(path) > 1000, heard);
}

void MainWindowExportTest::anExportChangesNothing_data()
{
    addKinds();
}

void MainWindowExportTest::anExportChangesNothing()
{
    QFETCH(int, kind);
    addNote();
    stage_->window().snapshotAndRefresh();
    stage_->window().addTrack();
    stage_->window().undo();
    stage_->engine().play();
    const QJsonObject before = stage_->song().toJson();
    exportTo(kind, stage_->home().filePath("song" + suffixOf(kind)));
    QCOMPARE(stage_->song().toJson(), before);
    QVERIFY(stage_->canUndo() && stage_->canRedo());
    QCOMPARE(stage_->window().currentProjectId(), QString());
    QVERIFY(!stage_->engine().isPlaying());
    QCOMPARE(stage_->savedIds(), QStringList());
}

void MainWindowExportTest::withoutABankTheExportIsSilent()
{
    QVERIFY(QFile::remove(stage_->home().filePath("resources/soundfonts/velta_bank_gm.sf2")));
    addNote();
    const QString path = exportTo(int(Kind::Wav), stage_->home().filePath("song.wav"));
    QCOMPARE(stage_->message(), "Exportado a " + path);
    QVERIFY(WavFile::read(bytesOf(path)).ok);
    QCOMPARE(loudest(path), 0);
}

void MainWindowExportTest::theRealDialogsWriteFiles_data()
{
    addKinds();
}

void MainWindowExportTest::theRealDialogsWriteFiles()
{
    QFETCH(int, kind);
    MainWindow window;
    window.show();
    saveInDialog(QString());
    Widgets::entry(window, entryOf(kind))->trigger();
    const QString proposed = QDir::current().canonicalPath() + "/Obra sin título" + suffixOf(kind);
    QCOMPARE(window.statusBar()->currentMessage(), "Exportado a " + proposed);
    QVERIFY(isSong(bytesOf(proposed), kind));

    const QString other = stage_->home().filePath("otra" + suffixOf(kind));
    saveInDialog(other);
    Widgets::entry(window, entryOf(kind))->trigger();
    QCOMPARE(window.statusBar()->currentMessage(), "Exportado a " + other);
    QVERIFY(isSong(bytesOf(other), kind));
}

VELTA_TEST(MainWindowExportTest)

} // namespace MainWindowExportTests

#include "MainWindowExportTest.moc"
