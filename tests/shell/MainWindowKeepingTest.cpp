#include "shell/RecoveryBar.h"
#include "storage/RecoveryCopy.h"
#include "support/FullDisk.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QJsonArray>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

namespace MainWindowKeepingTests {

using namespace ProjectBuilder;

namespace {

constexpr auto kCannotSave = "warn | Guardar | No pude guardar la obra.";
constexpr auto kUnsaved =
    "ask | Obra sin guardar | «Zamba» todavía no está guardada. ¿Querés guardarla antes? | Save "
    "Discard Cancel";
constexpr auto kCloseUnsaved =
    "ask | Obra sin guardar | ¿Cerrar sin guardar? | Yes No | default No";
constexpr auto kChangedByOthers =
    "ask | Guardar | Otra persona cambió esta obra. ¿Guardar como copia? | Cancel Yes No | default "
    "Yes";

/// What a name of another width costs a project file that was full before.
QString longName()
{
    return QString(20000, 'x');
}

} // namespace

/// That nothing of a work is lost: not to another work, not to another program, not to a crash.
class MainWindowKeepingTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Works that give way
    void aChangedWorkIsSavedBeforeAnother_data();
    void aChangedWorkIsSavedBeforeAnother();
    void aChangedMixIsSavedToo();
    void whereThatSaveFailsTheUserIsAsked_data();
    void whereThatSaveFailsTheUserIsAsked();
    void anUnchangedWorkIsNotWrittenAgain_data();
    void anUnchangedWorkIsNotWrittenAgain();
    void lookingAtAnotherTrackIsNoChange();
    void somebodyElsesChordsOutliveAWindowThatCloses();

    void theTitleMarksWhatIsNotSaved();

    // Works without a file
    void afterAFailedFirstSaveTheUserIsAsked_data();
    void afterAFailedFirstSaveTheUserIsAsked();
    void aDeletedWorkIsNotWrittenBack();
    void aDeletedWorkMayBeSavedAgain();
    void aFailedSaveAtClosingAsksOnceMore_data();
    void aFailedSaveAtClosingAsksOnceMore();

    // Two programs
    void aChangedFileAsksBeforeItIsOverwritten_data();
    void aChangedFileAsksBeforeItIsOverwritten();
    void aCopyTakesItsClipsAlong();

    // The recovery copy
    void anEditIsKeptWithinTwoSeconds();
    void manyEditsDoNotPutItOff();
    void aSavedWorkNeedsNoCopy();
    void whoClosesNeedsNoCopy_data();
    void whoClosesNeedsNoCopy();
    void anotherWorkEndsTheCopy();
    void whatCouldNotBeSavedIsKept();
    void aRunningProgramKeepsItsCopyToItself();

    // At the next start
    void aWorkThatWasLostIsOffered();
    void theWorkComesBackAsItWas();
    void aWorkWithAFolderComesBackIntoIt();
    void clipsOfAnUnsavedWorkAreFoundAgain();
    void whatIsDiscardedIsGone();
    void severalWorksAreOfferedOneByOne();
    void whatIsSavedAlreadyIsNotOffered();
    void aDamagedWorkIsOfferedWhenItIsOpened();
    void theWorkInHandIsAskedForBeforeARecovery();
    void anOlderCopyDoesNotOverwriteANewerFile();
    void damagedCopiesAreNotOffered();
    void markupAndLongNamesAreText();

private:
    RecoveryBar& bar() { return *stage_->window().findChild<RecoveryBar*>(); }

    void press(const QString& caption)
    {
        for (QPushButton* button : bar().findChildren<QPushButton*>()) {
            if (button->text() == caption)
                button->click();
        }
    }

    /// Gives the present work a note, as an edit does.
    void edit()
    {
        stage_->song().tracks[0].melodyBlocks = {melody({note(60, 0.0)})};
        stage_->window().snapshotAndRefresh();
    }

    QStringList copies() const
    {
        return QDir(RecoveryCopy::standardFolder()).entryList({"*.json"}, QDir::Files);
    }

    /// Leaves a copy as a program does that is killed.
    void leaveCopy(const QString& id, const Song& song, const QString& clipsFolder = {},
                   const QString& lastSeen = {})
    {
        RecoveryCopy copy(RecoveryCopy::standardFolder());
        QVERIFY(copy.keepNow({id, lastSeen, clipsFolder, song}));
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowKeepingTest::init()
{
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowKeepingTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

// ---- Works that give way -------------------------------------------------------------------

void MainWindowKeepingTest::aChangedWorkIsSavedBeforeAnother_data()
{
    QTest::addColumn<bool>("opens");
    QTest::newRow("a new one") << false;
    QTest::newRow("one of the list") << true;
}

void MainWindowKeepingTest::aChangedWorkIsSavedBeforeAnother()
{
    QFETCH(bool, opens);
    QVERIFY(stage_->saveAs("Zamba"));
    edit();
    stage_->prompts().inDialog([](QDialog& dialog) { dialog.reject(); });
    if (opens)
        stage_->window().openProjectDialog();
    else
        stage_->window().newProject();
    QCOMPARE(stage_->savedWork("zamba"), stage_->song().toJson());
    QCOMPARE(stage_->prompts().calls().size(), 1);
}

void MainWindowKeepingTest::aChangedMixIsSavedToo()
{
    QVERIFY(stage_->saveAs("Zamba"));
    stage_->song().tracks[0].volume = 0.25F;
    QVERIFY(stage_->window().confirmDiscardChanges());
    QCOMPARE(stage_->savedWork("zamba")["tracks"][0]["volume"].toDouble(), 0.25);
}

void MainWindowKeepingTest::whereThatSaveFailsTheUserIsAsked_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("goesOn");
    QTest::newRow("Discard") << int(QMessageBox::Discard) << true;
    QTest::newRow("Cancel") << int(QMessageBox::Cancel) << false;
    QTest::newRow("Save") << int(QMessageBox::Save) << false;
}

void MainWindowKeepingTest::whereThatSaveFailsTheUserIsAsked()
{
    QFETCH(int, answer);
    QVERIFY(stage_->saveAs("Zamba"));
    const QByteArray former = bytesOf(stage_->home().projectFile("zamba"));
    edit();
    stage_->song().tracks[0].name = longName();
    stage_->prompts().answer(static_cast<QMessageBox::StandardButton>(answer));
    {
        const FullDisk disk(3000);
        QTEST(stage_->window().confirmDiscardChanges(), "goesOn");
    }
    QStringList expected{kCannotSave, kUnsaved};
    if (answer == QMessageBox::Save)
        expected.append(kCannotSave);
    QCOMPARE(stage_->prompts().calls(), expected);
    QCOMPARE(bytesOf(stage_->home().projectFile("zamba")), former);
}

void MainWindowKeepingTest::anUnchangedWorkIsNotWrittenAgain_data()
{
    QTest::addColumn<bool>("closes");
    QTest::newRow("closing") << true;
    QTest::newRow("another work") << false;
}

void MainWindowKeepingTest::anUnchangedWorkIsNotWrittenAgain()
{
    QFETCH(bool, closes);
    Project theirs;
    theirs.name = "Gato";
    theirs.tracks = {melodyTrack({melody({note(60, 0.0)})})};
    QVERIFY(stage_->saveWork("gato", theirs));
    stage_->window().openProject("gato");
    edit();
    stage_->window().undo();
    theirs.harmonyTrack = harmony({1, 4, 5});
    QVERIFY(stage_->saveWork("gato", theirs));
    QVERIFY(closes ? stage_->close() : stage_->window().confirmDiscardChanges());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->savedWork("gato"), theirs.toJson());
}

/// The melody that is shown is given an empty block to write in.
void MainWindowKeepingTest::lookingAtAnotherTrackIsNoChange()
{
    Project work;
    work.tracks = {melodyTrack({melody({note(60, 0.0)})}), melodyTrack({})};
    QVERIFY(stage_->saveWork("gato", work));
    stage_->window().openProject("gato");
    const QByteArray before = bytesOf(stage_->home().projectFile("gato"));
    stage_->song().tracks[1].melodyBlocks = {melody({})};
    QVERIFY(stage_->close());
    QCOMPARE(bytesOf(stage_->home().projectFile("gato")), before);
}

void MainWindowKeepingTest::somebodyElsesChordsOutliveAWindowThatCloses()
{
    QVERIFY(stage_->saveAs("Zamba"));
    ScriptedPrompts theirPrompts;
    MainWindow theirs(nullptr, theirPrompts);
    theirs.openProject("zamba");
    theirs.project()->harmonyTrack = harmony({1, 4, 5});
    theirs.snapshotAndRefresh();
    QVERIFY(theirs.saveCurrentProject());
    QVERIFY(stage_->close());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->savedWork("zamba"), theirs.project()->toJson());
    theirs.close();
}

// ---- Works without a file ------------------------------------------------------------------

void MainWindowKeepingTest::afterAFailedFirstSaveTheUserIsAsked_data()
{
    QTest::addColumn<bool>("closes");
    QTest::newRow("closing") << true;
    QTest::newRow("another work") << false;
}

void MainWindowKeepingTest::afterAFailedFirstSaveTheUserIsAsked()
{
    QFETCH(bool, closes);
    edit();
    stage_->blockWorks();
    QVERIFY(!stage_->saveAs("Zamba"));
    QCOMPARE(stage_->window().currentProjectId(), "zamba");
    stage_->prompts().answer(QMessageBox::Cancel);
    QVERIFY(!(closes ? stage_->close() : stage_->window().confirmDiscardChanges()));
    QCOMPARE(stage_->prompts().takeCalls(), QStringList{kUnsaved});
    stage_->unblockWorks();
    stage_->prompts().answer(QMessageBox::Save);
    QVERIFY(closes ? stage_->close() : stage_->window().confirmDiscardChanges());
    QCOMPARE(stage_->prompts().calls(), QStringList{kUnsaved});
    QCOMPARE(stage_->savedWork("zamba"), stage_->song().toJson());
}

void MainWindowKeepingTest::aDeletedWorkIsNotWrittenBack()
{
    edit();
    QVERIFY(stage_->saveAs("Zamba"));
    stage_->prompts().inDialog([this](QDialog& dialog) {
        stage_->prompts().answer(QMessageBox::Yes);
        Widgets::click(Widgets::withText<QPushButton>(dialog, "Borrar"));
        dialog.reject();
    });
    stage_->window().openProjectDialog();
    stage_->prompts().takeCalls();
    QCOMPARE(stage_->savedIds(), QStringList());
    stage_->prompts().answer(QMessageBox::Discard);
    QVERIFY(stage_->close());
    QCOMPARE(stage_->prompts().calls(), QStringList{kUnsaved});
    QCOMPARE(stage_->savedIds(), QStringList());
}

void MainWindowKeepingTest::aDeletedWorkMayBeSavedAgain()
{
    edit();
    QVERIFY(stage_->saveAs("Zamba"));
    QVERIFY(QDir(stage_->home().works() + "/zamba").removeRecursively());
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->savedWork("zamba"), stage_->song().toJson());
}

void MainWindowKeepingTest::aFailedSaveAtClosingAsksOnceMore_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("closed");
    QTest::newRow("Yes") << int(QMessageBox::Yes) << true;
    QTest::newRow("No") << int(QMessageBox::No) << false;
    QTest::newRow("the question was closed") << int(QMessageBox::Cancel) << false;
}

void MainWindowKeepingTest::aFailedSaveAtClosingAsksOnceMore()
{
    QFETCH(int, answer);
    QVERIFY(stage_->saveAs("Zamba"));
    edit();
    stage_->song().tracks[0].name = longName();
    stage_->window().show();
    stage_->prompts().answer(static_cast<QMessageBox::StandardButton>(answer));
    {
        const FullDisk disk(3000);
        QTEST(stage_->window().close(), "closed");
    }
    QCOMPARE(stage_->prompts().calls(), (QStringList{kCannotSave, kCloseUnsaved}));
}

// ---- Two programs --------------------------------------------------------------------------

void MainWindowKeepingTest::aChangedFileAsksBeforeItIsOverwritten_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<QString>("id");
    QTest::addColumn<bool>("saved");
    QTest::newRow("a copy") << int(QMessageBox::Yes) << "zamba_2" << true;
    QTest::newRow("no copy") << int(QMessageBox::No) << "zamba" << true;
    QTest::newRow("neither") << int(QMessageBox::Cancel) << "zamba" << false;
}

void MainWindowKeepingTest::aChangedFileAsksBeforeItIsOverwritten()
{
    QFETCH(int, answer);
    QFETCH(QString, id);
    QFETCH(bool, saved);
    QVERIFY(stage_->saveAs("Zamba"));
    Project theirs;
    theirs.bpm = 77;
    QVERIFY(stage_->saveWork("zamba", theirs));
    edit();
    stage_->prompts().answer(static_cast<QMessageBox::StandardButton>(answer));
    QCOMPARE(stage_->window().saveCurrentProject(), saved);
    QCOMPARE(stage_->prompts().takeCalls(), QStringList{kChangedByOthers});
    QCOMPARE(stage_->window().currentProjectId(), id);
    QCOMPARE(stage_->savedWork(id) == stage_->song().toJson(), saved);
    if (id != "zamba" || !saved)
        QCOMPARE(stage_->savedWork("zamba"), theirs.toJson());
    if (!saved)
        return;
    stage_->window().addTrack();
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->savedWork(id), stage_->song().toJson());
}

void MainWindowKeepingTest::theTitleMarksWhatIsNotSaved()
{
    MainWindow& window = stage_->window();
    const auto addChord = [&](int degree) {
        stage_->song().harmonyTrack.insertEvent(0.0, 4.0, degree, ChordExtension::Triad, 4.0);
        window.snapshotAndRefresh();
    };
    QVERIFY(window.windowTitle().endsWith("[*]"));
    QVERIFY(!window.isWindowModified());
    addChord(1);
    QVERIFY(window.isWindowModified());
    window.undo();
    QVERIFY(!window.isWindowModified());
    window.redo();
    QVERIFY(stage_->saveAs("Zamba"));
    QVERIFY(!window.isWindowModified());
    addChord(4);
    QVERIFY(window.isWindowModified());
    window.undo();
    QVERIFY(!window.isWindowModified());
    window.undo();
    QVERIFY(window.isWindowModified());
    QVERIFY(window.saveCurrentProject());
    QVERIFY(!window.isWindowModified());
    stage_->blockWorks();
    window.redo();
    QVERIFY(!window.saveCurrentProject());
    QVERIFY(window.isWindowModified());
    stage_->prompts().takeCalls();
    stage_->unblockWorks();
    window.startBlankProject();
    QVERIFY(!window.isWindowModified());
}

void MainWindowKeepingTest::aCopyTakesItsClipsAlong()
{
    QVERIFY(stage_->saveAs("Zamba"));
    writeBytes(stage_->home().works() + "/zamba/voz_1.wav", "RIFF");
    stage_->song().audioTracks = {voiceTrack({clip("voz_1.wav")})};
    stage_->window().snapshotAndRefresh();
    QVERIFY(stage_->saveWork("zamba", Project()));
    stage_->prompts().answer(QMessageBox::Yes);
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(bytesOf(stage_->home().works() + "/zamba_2/voz_1.wav"), "RIFF");
    QCOMPARE(stage_->engine().projectDir, stage_->home().works() + "/zamba_2");
}

// ---- The recovery copy ---------------------------------------------------------------------

void MainWindowKeepingTest::anEditIsKeptWithinTwoSeconds()
{
    stage_->window();
    QCOMPARE(copies(), QStringList());
    edit();
    QTRY_COMPARE_WITH_TIMEOUT(copies().size(), 1, 10000);
    const QJsonObject json =
        QJsonDocument::fromJson(bytesOf(RecoveryCopy::standardFolder() + '/' + copies().first()))
            .object();
    QCOMPARE(json["project"].toObject(), stage_->song().toJson());
    QCOMPARE(json["id"].toString(), QString());
}

void MainWindowKeepingTest::manyEditsDoNotPutItOff()
{
    edit();
    for (int i = 0; i < 600 && copies().isEmpty(); ++i) {
        stage_->song().bpm = 60 + i % 100;
        stage_->window().snapshotAndRefresh();
        QTest::qWait(20);
    }
    QCOMPARE(copies().size(), 1);
}

void MainWindowKeepingTest::aSavedWorkNeedsNoCopy()
{
    edit();
    QTRY_COMPARE_WITH_TIMEOUT(copies().size(), 1, 10000);
    QVERIFY(stage_->saveAs("Zamba"));
    QCOMPARE(copies(), QStringList());
}

void MainWindowKeepingTest::whoClosesNeedsNoCopy_data()
{
    QTest::addColumn<int>("answer");
    QTest::newRow("discarded") << int(QMessageBox::Discard);
    QTest::newRow("saved") << int(QMessageBox::Save);
}

void MainWindowKeepingTest::whoClosesNeedsNoCopy()
{
    QFETCH(int, answer);
    edit();
    QTRY_COMPARE_WITH_TIMEOUT(copies().size(), 1, 10000);
    stage_->prompts().answer(static_cast<QMessageBox::StandardButton>(answer));
    if (answer == QMessageBox::Save)
        stage_->prompts().answerText("Zamba");
    QVERIFY(stage_->close());
    stage_->destroyWindow();
    QCOMPARE(QDir(RecoveryCopy::standardFolder()).entryList(QDir::Files), QStringList());
}

void MainWindowKeepingTest::anotherWorkEndsTheCopy()
{
    QVERIFY(stage_->saveWork("gato", Project()));
    edit();
    QTRY_COMPARE_WITH_TIMEOUT(copies().size(), 1, 10000);
    stage_->prompts().answer(QMessageBox::Discard);
    stage_->prompts().inDialog([](QDialog& dialog) { dialog.accept(); });
    stage_->window().openProjectDialog();
    QCOMPARE(stage_->window().currentProjectId(), "gato");
    QCOMPARE(copies(), QStringList());
}

void MainWindowKeepingTest::whatCouldNotBeSavedIsKept()
{
    edit();
    stage_->blockWorks();
    QVERIFY(!stage_->saveAs("Zamba"));
    QCOMPARE(copies().size(), 1);
    stage_->destroyWindow();
    QCOMPARE(bar().offered()->id(), "zamba");
    QCOMPARE(bar().offered()->name(), "Zamba");
}

void MainWindowKeepingTest::aRunningProgramKeepsItsCopyToItself()
{
    edit();
    QTRY_COMPARE_WITH_TIMEOUT(copies().size(), 1, 10000);
    ScriptedPrompts prompts;
    const MainWindow second(nullptr, prompts);
    QVERIFY(!second.findChild<RecoveryBar*>()->offered());
}

// ---- At the next start ---------------------------------------------------------------------

void MainWindowKeepingTest::aWorkThatWasLostIsOffered()
{
    const auto lost = project({melodyTrack({melody({note(60, 0.0)})})});
    lost->name = "Mi vals";
    leaveCopy({}, *lost);
    QVERIFY(stage_->showWindow());
    QVERIFY(bar().isVisible());
    QCOMPARE(bar().findChild<QLabel*>()->text(), "Velta se cerró sin guardar «Mi vals».");
    QCOMPARE(stage_->song().name, "Obra sin título");
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QVERIFY2(bar().mapToGlobal(QPoint()).y() < stage_->ribbon().mapToGlobal(QPoint()).y(),
             "the bar stands above the ribbon");
}

void MainWindowKeepingTest::theWorkComesBackAsItWas()
{
    Project lost;
    Generator(7).fill(lost);
    lost.name = "Mi vals";
    lost.tracks.append(melodyTrack({melody({note(60, 0.0)})}));
    leaveCopy({}, lost);
    QVERIFY(stage_->showWindow());
    press("Recuperar");
    QCOMPARE(stage_->song().toJson(), lost.toJson());
    QVERIFY(bar().isHidden());
    QCOMPARE(stage_->window().windowTitle(), "Velta — Mi vals[*]");
    QVERIFY(stage_->window().isWindowModified());
    QCOMPARE(stage_->window().currentProjectId(), QString());
    QCOMPARE(copies().size(), 1);
    QVERIFY(stage_->saveAs("Mi vals"));
    QCOMPARE(stage_->savedWork("mi_vals")["tracks"], stage_->song().toJson()["tracks"]);
    QCOMPARE(copies(), QStringList());
}

void MainWindowKeepingTest::aWorkWithAFolderComesBackIntoIt()
{
    Project work;
    work.name = "Zamba";
    QVERIFY(stage_->saveWork("zamba", work));
    work.bpm = 77;
    leaveCopy("zamba", work);
    press("Recuperar");
    QCOMPARE(stage_->window().currentProjectId(), "zamba");
    QVERIFY(stage_->window().isWindowModified());
    QCOMPARE(stage_->song().bpm, 77);
    QCOMPARE(stage_->engine().projectDir, stage_->home().works() + "/zamba");
    QCOMPARE(stage_->savedWork("zamba")["bpm"].toInt(), 120);
    stage_->prompts().answer(QMessageBox::No);
    QVERIFY2(stage_->close(), "what came back is saved at closing like any change");
    QCOMPARE(stage_->savedWork("zamba")["bpm"].toInt(), 77);
}

void MainWindowKeepingTest::clipsOfAnUnsavedWorkAreFoundAgain()
{
    Song lost;
    lost.audioTracks = {voiceTrack({clip("voz_1.wav")})};
    writeBytes(stage_->home().works() + "/voz_1.wav", "RIFF");
    leaveCopy({}, lost, stage_->home().works() + "/");
    press("Recuperar");
    QCOMPARE(stage_->engine().projectDir, stage_->home().works() + "/");
    QVERIFY(stage_->saveAs("Zamba"));
    QCOMPARE(bytesOf(stage_->home().works() + "/zamba/voz_1.wav"), "RIFF");
}

void MainWindowKeepingTest::whatIsDiscardedIsGone()
{
    leaveCopy({}, *project({melodyTrack({melody({note(60, 0.0)})})}));
    press("Descartar");
    QVERIFY(bar().isHidden());
    QCOMPARE(stage_->song().name, "Obra sin título");
    QCOMPARE(QDir(RecoveryCopy::standardFolder()).entryList(QDir::Files), QStringList());
}

void MainWindowKeepingTest::severalWorksAreOfferedOneByOne()
{
    QStringList names{"Gato", "Vals", "Zamba"};
    for (const QString& name : names) {
        Song song;
        song.name = name;
        leaveCopy({}, song);
    }
    for (int left = 3; left > 0; --left) {
        QVERIFY(bar().offered());
        QVERIFY(names.removeOne(bar().offered()->name()));
        press(left == 2 ? "Recuperar" : "Descartar");
    }
    QVERIFY(!bar().offered());
    QVERIFY(names.isEmpty());
}

void MainWindowKeepingTest::whatIsSavedAlreadyIsNotOffered()
{
    Project work;
    Generator(8, Numbers::AnyFinite).fill(work);
    QVERIFY(stage_->saveWork("zamba", work));
    leaveCopy("zamba", work);
    QVERIFY(!bar().offered());
    QCOMPARE(copies(), QStringList());
}

void MainWindowKeepingTest::aDamagedWorkIsOfferedWhenItIsOpened()
{
    Project work;
    work.name = "Zamba";
    work.bpm = 77;
    stage_->window();
    leaveCopy({}, *project({melodyTrack({melody({note(60, 0.0)})})}));
    leaveCopy("zamba", work);
    writeBytes(stage_->home().projectFile("zamba"), R"({"name": "Zam)");
    stage_->window().openProjectById("zamba");
    QCOMPARE(stage_->prompts().calls(),
             QStringList{"warn | Abrir proyecto | No pude abrir el proyecto."});
    QCOMPARE(bar().offered()->name(), "Zamba");
    press("Recuperar");
    QCOMPARE(stage_->song().toJson(), work.toJson());
    QVERIFY2(stage_->window().saveCurrentProject(), "a broken file is nobody's change");
    QCOMPARE(stage_->savedWork("zamba"), work.toJson());
}

void MainWindowKeepingTest::theWorkInHandIsAskedForBeforeARecovery()
{
    leaveCopy({}, *project({melodyTrack({melody({note(72, 0.0)})})}));
    edit();
    const QJsonObject present = stage_->song().toJson();
    stage_->prompts().answer(QMessageBox::Cancel);
    press("Recuperar");
    QCOMPARE(stage_->song().toJson(), present);
    QVERIFY(bar().offered());
    QCOMPARE(stage_->prompts().calls().size(), 1);
}

void MainWindowKeepingTest::anOlderCopyDoesNotOverwriteANewerFile()
{
    LocalStorageProvider storage{QString()};
    Project work;
    work.name = "Zamba";
    QVERIFY(storage.saveProject("zamba", work));
    const QString seen = storage.lastSeen("zamba");
    work.bpm = 77;
    leaveCopy("zamba", work, {}, seen);
    Project newer;
    newer.bpm = 99;
    QVERIFY(storage.saveProject("zamba", newer));
    press("Recuperar");
    stage_->prompts().answer(QMessageBox::Yes);
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), QStringList{kChangedByOthers});
    QCOMPARE(stage_->savedWork("zamba"), newer.toJson());
    QCOMPARE(stage_->savedWork("zamba_2"), work.toJson());
}

void MainWindowKeepingTest::damagedCopiesAreNotOffered()
{
    const QString folder = RecoveryCopy::standardFolder();
    writeBytes(folder + "/1-a.json", "{\"project\": {\"na");
    writeBytes(folder + "/2-b.json", "[]");
    writeBytes(folder + "/3-c.json", R"({"project": 5})");
    writeBytes(folder + "/4-d.json.XyZabc", "half a file");
    writeBytes(folder + "/otro.txt", "somebody's");
    QVERIFY(!bar().offered());
    QVERIFY(!QFile::exists(folder + "/4-d.json.XyZabc"));
    QVERIFY(QFile::exists(folder + "/otro.txt"));
}

void MainWindowKeepingTest::markupAndLongNamesAreText()
{
    Song lost;
    lost.name = "<b>" + QString(3000, 'x') + "</b>";
    stage_->window();
    const int before = stage_->window().minimumSizeHint().width();
    stage_->destroyWindow();
    leaveCopy({}, lost);
    QVERIFY(stage_->showWindow());
    QCOMPARE(bar().findChild<QLabel*>()->textFormat(), Qt::PlainText);
    QCOMPARE(stage_->window().minimumSizeHint().width(), before);
}

VELTA_TEST(MainWindowKeepingTest)

} // namespace MainWindowKeepingTests

#include "MainWindowKeepingTest.moc"
