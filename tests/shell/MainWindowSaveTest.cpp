#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QJsonArray>
#include <QTest>
#include <QTimer>

namespace MainWindowSaveTests {

using namespace ProjectBuilder;

namespace {

constexpr auto kName = "askText | Guardar obra | ¿Cómo se llama esta obra? | Obra sin título";
constexpr auto kCannotSave = "warn | Guardar | No pude guardar la obra.";
constexpr auto kUnsaved =
    "ask | Obra sin guardar | «Obra sin título» todavía no está guardada. ¿Querés guardarla "
    "antes? | Save Discard Cancel";

} // namespace

/// How works leave the window: saved, given up, or with the window itself.
class MainWindowSaveTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // The first save
    void theFirstSaveGivesAWorkItsFolder();
    void theNameIsTrimmed();
    void theFolderIsNamedAfterTheWork_data();
    void theFolderIsNamedAfterTheWork();
    void withoutANameNothingHappens_data();
    void withoutANameNothingHappens();
    void theFirstSaveKeepsWhatCanBeUndone();
    void undoingBehindTheFirstSaveKeepsTheName();
    void theNewNameKeepsWhatCanBeRedone();

    // Saving again
    void aWorkWithAFolderIsSavedWithoutAWord();
    void aWorkKeepsItsFolderWhateverItsName();
    void savingIsNoStepOfUndo();
    void theMessageStaysItsTime();

    // Saving that fails
    void whereNoFolderCanBeTheUserIsTold();
    void afterAFailureTheNameIsNotAskedAgain();
    void aFileThatCannotBeOpenedIsTold();

    // Giving up
    void onlyContentIsAskedFor_data();
    void onlyContentIsAskedFor();
    void theAnswerDecides_data();
    void theAnswerDecides();
    void savingInTheQuestionMayFail_data();
    void savingInTheQuestionMayFail();
    void aWorkWithAFolderIsSavedAndNotAskedFor();
    void theQuestionNamesTheWork();

    // Closing
    void aBlankWindowClosesWithoutAWord();
    void anEmptyMelodyBlockIsNoReasonToAsk();
    void oneNoteIsAReasonToAsk();
    void cancelKeepsTheWindowOpen();
    void discardClosesWithoutAFile();
    void saveSavesAndCloses();
    void withoutANameTheWindowStaysOpen();
    void whereNothingCanBeSavedTheWindowStaysOpen();
    void aWorkWithAFolderIsSavedAtClosing();
    void aWorkWhoseFolderIsGoneIsAskedForAtClosing();
    void closingEndsPlayback_data();
    void closingEndsPlayback();

private:
    /// Gives the present work a note.
    void addNote() { stage_->song().tracks[0].melodyBlocks = {melody({note(60, 0.0)})}; }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowSaveTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowSaveTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

// ---- The first save ------------------------------------------------------------------------

void MainWindowSaveTest::theFirstSaveGivesAWorkItsFolder()
{
    addNote();
    const Project* present = &stage_->song();
    stage_->prompts().answerText("Zamba de mi pueblo");
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), QStringList{kName});
    QCOMPARE(&stage_->song(), present);
    QCOMPARE(stage_->song().name, "Zamba de mi pueblo");
    QCOMPARE(stage_->window().currentProjectId(), "zamba_de_mi_pueblo");
    QCOMPARE(stage_->window().windowTitle(), "Velta — Zamba de mi pueblo[*]");
    QCOMPARE(stage_->engine().projectDir, stage_->home().works() + "/zamba_de_mi_pueblo");
    QCOMPARE(stage_->message(), "Obra guardada.");
    QCOMPARE(stage_->savedIds(), QStringList{"zamba_de_mi_pueblo"});
    QCOMPARE(stage_->savedWork("zamba_de_mi_pueblo"), stage_->song().toJson());
}

void MainWindowSaveTest::theNameIsTrimmed()
{
    QVERIFY(stage_->saveAs(" \t Zamba  "));
    QCOMPARE(stage_->song().name, "Zamba");
    QCOMPARE(stage_->savedIds(), QStringList{"zamba"});
}

void MainWindowSaveTest::theFolderIsNamedAfterTheWork_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("id");
    QTest::newRow("an accent") << "Mi canción"
                               << "mi_canci_n";
    QTest::newRow("signs only") << "¡!"
                                << "_";
    QTest::newRow("a way out") << "../../fuera"
                               << "_fuera";
    QTest::newRow("a meter") << "Vals 3/4"
                             << "vals_3_4";
    QTest::newRow("placeholders") << "%1 %2"
                                  << "_1_2";
    QTest::newRow("markup") << "<b>x</b>"
                            << "_b_x_b_";
    QTest::newRow("a taken name") << "Tarea"
                                  << "tarea_2";
    QTest::newRow("an endless name") << QString(3000, 'a') << QString(40, 'a');
}

void MainWindowSaveTest::theFolderIsNamedAfterTheWork()
{
    QFETCH(QString, name);
    QFETCH(QString, id);
    QVERIFY(stage_->saveWork("tarea", Project()));
    QVERIFY(stage_->saveAs(name));
    QCOMPARE(stage_->window().currentProjectId(), id);
    QCOMPARE(stage_->window().windowTitle(), "Velta — " + name + "[*]");
    QCOMPARE(stage_->savedWork(id)["name"].toString(), name);
}

void MainWindowSaveTest::withoutANameNothingHappens_data()
{
    QTest::addColumn<bool>("cancelled");
    QTest::addColumn<QString>("name");
    QTest::newRow("cancelled") << true << "";
    QTest::newRow("no name") << false << "";
    QTest::newRow("blanks") << false << "    ";
    QTest::newRow("other spaces") << false << QString(" \t\u00A0\u3000");
}

void MainWindowSaveTest::withoutANameNothingHappens()
{
    QFETCH(bool, cancelled);
    QFETCH(QString, name);
    addNote();
    const QJsonObject before = stage_->song().toJson();
    QStringList calls{kName};
    if (!cancelled) {
        stage_->prompts().answerText(name);
        calls += {"inform | Guardar obra | Para guardarla, la obra necesita un nombre.", kName};
    }
    stage_->prompts().giveUpText();
    QVERIFY(!stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), calls);
    QCOMPARE(stage_->song().toJson(), before);
    QCOMPARE(stage_->window().currentProjectId(), QString());
    QCOMPARE(stage_->engine().projectDir, QString());
    QCOMPARE(stage_->window().windowTitle(), "Velta — Obra sin título[*]");
    QCOMPARE(stage_->message(), QString());
    QCOMPARE(stage_->savedIds(), QStringList());
}

void MainWindowSaveTest::theFirstSaveKeepsWhatCanBeUndone()
{
    stage_->window().addTrack();
    stage_->window().addTrack();
    stage_->window().undo();
    QVERIFY(stage_->saveAs("Zamba"));
    QVERIFY(stage_->canUndo() && stage_->canRedo());
    stage_->window().redo();
    QCOMPARE(stage_->song().tracks.size(), 3);
}

void MainWindowSaveTest::undoingBehindTheFirstSaveKeepsTheName()
{
    stage_->window().addTrack();
    QVERIFY(stage_->saveAs("Zamba"));
    stage_->window().undo();
    QCOMPARE(stage_->song().name, "Zamba");
    QCOMPARE(stage_->song().tracks.size(), 1);
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->savedWork("zamba")["name"].toString(), "Zamba");
    stage_->window().redo();
    QCOMPARE(stage_->song().name, "Zamba");
    QCOMPARE(stage_->window().windowTitle(), "Velta — Zamba[*]");
}

/// The name is no part of what undo takes back, and so no reason to give up what can be redone.
void MainWindowSaveTest::theNewNameKeepsWhatCanBeRedone()
{
    stage_->window().addTrack();
    stage_->window().undo();
    QVERIFY(stage_->saveAs("Zamba"));
    stage_->window().snapshotAndRefresh();
    QVERIFY(stage_->canRedo());
    stage_->window().redo();
    QCOMPARE(stage_->song().tracks.size(), 2);
    QCOMPARE(stage_->song().name, "Zamba");
}

// ---- Saving again --------------------------------------------------------------------------

void MainWindowSaveTest::aWorkWithAFolderIsSavedWithoutAWord()
{
    QVERIFY(stage_->saveAs("Zamba"));
    stage_->window().statusBar()->clearMessage();
    stage_->window().addTrack();
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->message(), "Obra guardada.");
    QCOMPARE(stage_->savedIds(), QStringList{"zamba"});
    QCOMPARE(stage_->savedWork("zamba")["tracks"].toArray().size(), 2);
}

void MainWindowSaveTest::aWorkKeepsItsFolderWhateverItsName()
{
    QVERIFY(stage_->saveAs("Zamba"));
    stage_->song().name = "Chacarera";
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->savedIds(), QStringList{"zamba"});
    QCOMPARE(stage_->savedWork("zamba")["name"].toString(), "Chacarera");
    QCOMPARE(stage_->window().currentProjectId(), "zamba");
}

void MainWindowSaveTest::savingIsNoStepOfUndo()
{
    QVERIFY(stage_->saveAs("Zamba"));
    QVERIFY(stage_->window().saveCurrentProject());
    QVERIFY(!stage_->canUndo());
}

void MainWindowSaveTest::theMessageStaysItsTime()
{
    QVERIFY(stage_->saveAs("Zamba"));
    const auto timers = stage_->window().statusBar()->findChildren<QTimer*>();
    QCOMPARE(timers.size(), 1);
    QVERIFY(timers.first()->isActive());
    QCOMPARE(timers.first()->interval(), 2000);
}

// ---- Saving that fails ---------------------------------------------------------------------

void MainWindowSaveTest::whereNoFolderCanBeTheUserIsTold()
{
    addNote();
    QVERIFY(stage_->window().projectHasContent());
    stage_->blockWorks();
    stage_->prompts().answerText("Zamba");
    QVERIFY(!stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), (QStringList{kName, kCannotSave}));
    QCOMPARE(stage_->message(), QString());
    QCOMPARE(bytesOf(stage_->home().works()), "in the way");
}

void MainWindowSaveTest::afterAFailureTheNameIsNotAskedAgain()
{
    QVERIFY(!stage_->window().projectHasContent());
    stage_->blockWorks();
    stage_->prompts().answerText("Zamba");
    QVERIFY(!stage_->window().saveCurrentProject());
    QCOMPARE(stage_->window().currentProjectId(), "zamba");
    QCOMPARE(stage_->window().windowTitle(), "Velta — Zamba[*]");
    stage_->prompts().takeCalls();
    QVERIFY(!stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().takeCalls(), QStringList{kCannotSave});
    stage_->unblockWorks();
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->savedIds(), QStringList{"zamba"});
}

void MainWindowSaveTest::aFileThatCannotBeOpenedIsTold()
{
    QVERIFY(stage_->saveAs("Zamba"));
    QVERIFY(QFile::remove(stage_->home().projectFile("zamba")));
    QVERIFY(QDir().mkpath(stage_->home().projectFile("zamba")));
    stage_->window().statusBar()->clearMessage();
    QVERIFY(!stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().calls(), QStringList{kCannotSave});
    QCOMPARE(stage_->message(), QString());
}

// ---- Giving up -----------------------------------------------------------------------------

void MainWindowSaveTest::onlyContentIsAskedFor_data()
{
    QTest::addColumn<QList<Track>>("tracks");
    QTest::addColumn<QList<AudioTrack>>("voices");
    QTest::addColumn<HarmonyTrack>("harmony");
    QTest::addColumn<bool>("asked");
    const QList<Track> none;
    const QList<AudioTrack> silent;
    const HarmonyTrack noChords;
    QTest::newRow("nothing") << none << silent << noChords << false;
    QTest::newRow("tracks") << QList<Track>(3) << silent << noChords << false;
    QTest::newRow("an empty melody block")
        << QList{melodyTrack({melody({})})} << silent << noChords << false;
    QTest::newRow("a note") << QList{melodyTrack({melody({note(60, 0.0)})})} << silent << noChords
                            << true;
    QTest::newRow("a loop") << QList{loopTrack({loop("zamba", "bombo", 0.0, 4.0)})} << silent
                            << noChords << true;
    QTest::newRow("a voice track") << none << QList{voiceTrack({})} << noChords << false;
    QTest::newRow("a clip") << none << QList{voiceTrack({clip("voz.wav")})} << noChords << true;
    QTest::newRow("a chord") << none << silent << harmony({1}) << true;
}

void MainWindowSaveTest::onlyContentIsAskedFor()
{
    QFETCH(bool, asked);
    QFETCH(QList<Track>, tracks);
    QFETCH(QList<AudioTrack>, voices);
    QFETCH(HarmonyTrack, harmony);
    stage_->song().tracks = tracks;
    stage_->song().audioTracks = voices;
    stage_->song().harmonyTrack = harmony;
    QCOMPARE(stage_->window().projectHasContent(), asked);
    if (asked)
        stage_->prompts().answer(QMessageBox::Discard);
    QVERIFY(stage_->window().confirmDiscardChanges());
    QCOMPARE(stage_->prompts().calls(), asked ? QStringList{kUnsaved} : QStringList());
}

void MainWindowSaveTest::theAnswerDecides_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("goesOn");
    QTest::newRow("Cancel") << int(QMessageBox::Cancel) << false;
    QTest::newRow("Discard") << int(QMessageBox::Discard) << true;
    QTest::newRow("none of the buttons") << int(QMessageBox::NoButton) << true;
}

void MainWindowSaveTest::theAnswerDecides()
{
    QFETCH(int, answer);
    addNote();
    stage_->prompts().answer(static_cast<QMessageBox::StandardButton>(answer));
    QTEST(stage_->window().confirmDiscardChanges(), "goesOn");
    QCOMPARE(stage_->prompts().calls(), QStringList{kUnsaved});
    QCOMPARE(stage_->savedIds(), QStringList());
    QVERIFY(stage_->window().projectHasContent());
}

void MainWindowSaveTest::savingInTheQuestionMayFail_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("blocked");
    QTest::addColumn<bool>("goesOn");
    QTest::newRow("saved") << "Zamba" << false << true;
    QTest::newRow("no name") << "  " << false << false;
    QTest::newRow("no place") << "Zamba" << true << false;
}

void MainWindowSaveTest::savingInTheQuestionMayFail()
{
    QFETCH(QString, name);
    QFETCH(bool, blocked);
    addNote();
    if (blocked)
        stage_->blockWorks();
    stage_->prompts().answer(QMessageBox::Save);
    stage_->prompts().answerText(name);
    // Who gave no name is asked again.
    if (name.trimmed().isEmpty())
        stage_->prompts().giveUpText();
    QTEST(stage_->window().confirmDiscardChanges(), "goesOn");
    QCOMPARE(stage_->prompts().calls().first(2), (QStringList{kUnsaved, kName}));
}

void MainWindowSaveTest::aWorkWithAFolderIsSavedAndNotAskedFor()
{
    QVERIFY(stage_->saveAs("Zamba"));
    addNote();
    QVERIFY(stage_->window().projectHasContent());
    QVERIFY(stage_->window().confirmDiscardChanges());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->savedWork("zamba"), stage_->song().toJson());
}

void MainWindowSaveTest::theQuestionNamesTheWork()
{
    addNote();
    stage_->song().name = "<b>%1</b>";
    stage_->prompts().answer(QMessageBox::Cancel);
    QVERIFY(!stage_->window().confirmDiscardChanges());
    QCOMPARE(stage_->prompts().calls(),
             QStringList{"ask | Obra sin guardar | «<b>%1</b>» todavía no está guardada. ¿Querés "
                         "guardarla antes? | Save Discard Cancel"});
}

// ---- Closing -------------------------------------------------------------------------------

void MainWindowSaveTest::aBlankWindowClosesWithoutAWord()
{
    QVERIFY(stage_->close());
    QVERIFY(!stage_->window().isVisible());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->savedIds(), QStringList());
}

void MainWindowSaveTest::anEmptyMelodyBlockIsNoReasonToAsk()
{
    stage_->song().tracks[0].melodyBlocks = {melody({})};
    QVERIFY(stage_->close());
    QCOMPARE(stage_->prompts().calls(), QStringList());
}

void MainWindowSaveTest::oneNoteIsAReasonToAsk()
{
    addNote();
    stage_->prompts().answer(QMessageBox::Discard);
    QVERIFY(stage_->close());
    QCOMPARE(stage_->prompts().calls(), QStringList{kUnsaved});
}

void MainWindowSaveTest::cancelKeepsTheWindowOpen()
{
    addNote();
    stage_->prompts().answer(QMessageBox::Cancel);
    QVERIFY(!stage_->close());
    QVERIFY(stage_->window().isVisible());
    QVERIFY(stage_->window().projectHasContent());
    stage_->prompts().answer(QMessageBox::Discard);
    QVERIFY(stage_->close());
}

void MainWindowSaveTest::discardClosesWithoutAFile()
{
    addNote();
    stage_->prompts().answer(QMessageBox::Discard);
    QVERIFY(stage_->close());
    QVERIFY(!stage_->window().isVisible());
    QCOMPARE(stage_->savedIds(), QStringList());
}

void MainWindowSaveTest::saveSavesAndCloses()
{
    addNote();
    stage_->prompts().answer(QMessageBox::Save);
    stage_->prompts().answerText("Zamba");
    QVERIFY(stage_->close());
    QCOMPARE(stage_->prompts().calls(), (QStringList{kUnsaved, kName}));
    QCOMPARE(stage_->savedWork("zamba"), stage_->song().toJson());
}

void MainWindowSaveTest::withoutANameTheWindowStaysOpen()
{
    addNote();
    stage_->prompts().answer(QMessageBox::Save);
    stage_->prompts().answerText("  ");
    stage_->prompts().giveUpText();
    QVERIFY(!stage_->close());
    QVERIFY(stage_->window().isVisible());
    QVERIFY(stage_->prompts().allAnswersUsed());
}

void MainWindowSaveTest::whereNothingCanBeSavedTheWindowStaysOpen()
{
    addNote();
    stage_->window().show();
    stage_->blockWorks();
    stage_->prompts().answer(QMessageBox::Save);
    stage_->prompts().answerText("Zamba");
    QVERIFY(!stage_->close());
    QVERIFY(stage_->window().isVisible());
    QCOMPARE(stage_->prompts().calls(), (QStringList{kUnsaved, kName, kCannotSave}));
}

void MainWindowSaveTest::aWorkWithAFolderIsSavedAtClosing()
{
    QVERIFY(stage_->saveAs("Zamba"));
    addNote();
    stage_->song().bpm = 84;
    QVERIFY(stage_->close());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->savedWork("zamba")["bpm"].toInt(), 84);
    QCOMPARE(stage_->savedWork("zamba"), stage_->song().toJson());
}

void MainWindowSaveTest::aWorkWhoseFolderIsGoneIsAskedForAtClosing()
{
    QVERIFY(stage_->saveAs("Zamba"));
    addNote();
    stage_->blockWorks();
    stage_->prompts().answer(QMessageBox::Save);
    QVERIFY(!stage_->close());
    QVERIFY(stage_->window().isVisible());
    const QString question = QString(kUnsaved).replace("Obra sin título", "Zamba");
    QCOMPARE(stage_->prompts().calls(), (QStringList{question, kCannotSave}));
    stage_->prompts().answer(QMessageBox::Discard);
    QVERIFY(stage_->close());
}

void MainWindowSaveTest::closingEndsPlayback_data()
{
    QTest::addColumn<int>("answer");
    QTest::newRow("blank") << -1;
    QTest::newRow("kept open") << int(QMessageBox::Cancel);
    QTest::newRow("discarded") << int(QMessageBox::Discard);
    QTest::newRow("with a folder") << int(QMessageBox::Save);
}

void MainWindowSaveTest::closingEndsPlayback()
{
    QFETCH(int, answer);
    if (answer == QMessageBox::Save) {
        QVERIFY(stage_->saveAs("Zamba"));
    } else if (answer >= 0) {
        addNote();
        stage_->prompts().answer(static_cast<QMessageBox::StandardButton>(answer));
    }
    stage_->engine().play(2.0);
    QVERIFY(stage_->engine().isPlaying());
    QCOMPARE(stage_->close(), answer != QMessageBox::Cancel);
    QVERIFY(!stage_->engine().isPlaying());
    QCOMPARE(stage_->engine().playheadBeat(), 0.0);
}

VELTA_TEST(MainWindowSaveTest)

} // namespace MainWindowSaveTests

#include "MainWindowSaveTest.moc"
