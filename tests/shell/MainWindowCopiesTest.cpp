#include "support/FullDisk.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QTest>

namespace MainWindowCopiesTests {

using namespace ProjectBuilder;

/// A work that goes on as a copy, or under another name.
class MainWindowCopiesTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void savedAsAnotherTheWorkGoesOnThere();
    void savedAsAnotherAWorkWithoutAFolderGetsOne();
    void whoGivesTheNameUpStays();
    void aCopyTakesAllClipsAlong();
    void whatUndoBringsBackIsInTheCopyToo();
    void aDuplicateLeavesTheWorkSaved();
    void duplicatesAreCounted();
    void aCopyThatCannotBeSavedChangesNothing();
    void aNewNameStandsInTheFileAndInTheTitle();
    void aNewNameOfAWorkWithoutAFileWaitsForTheFirstSave();
    void aNewNameIsNoStepOfUndo();

private:
    QString folder(const QString& id) { return stage_->home().works() + '/' + id; }

    QString nameOf(const QString& id) { return stage_->savedWork(id)["name"].toString(); }

    void editTempo(int bpm)
    {
        stage_->song().bpm = bpm;
        stage_->window().snapshotAndRefresh();
    }

    void layClip(const QString& name)
    {
        writeBytes(folder("zamba") + '/' + name, name.toUtf8());
        stage_->song().audioTracks = {voiceTrack({clip(name, 0.0, 4.0)})};
        stage_->window().snapshotAndRefresh();
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowCopiesTest::init()
{
    stage_ = std::make_unique<WindowStage>();
    QVERIFY(stage_->saveAs("Zamba"));
}

void MainWindowCopiesTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

void MainWindowCopiesTest::savedAsAnotherTheWorkGoesOnThere()
{
    const QByteArray former = bytesOf(stage_->home().projectFile("zamba"));
    editTempo(90);
    stage_->prompts().answerText("  Zamba lenta ");
    stage_->choose("Guardar como…");
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"askText | Guardar como | ¿Cómo se llama esta obra? | Zamba"});
    QCOMPARE(stage_->window().currentProjectId(), "zamba_lenta");
    QCOMPARE(stage_->window().windowTitle(), "Velta — Zamba lenta[*]");
    QVERIFY(!stage_->window().isWindowModified());
    QCOMPARE(stage_->message(), "Obra guardada.");
    QCOMPARE(bytesOf(stage_->home().projectFile("zamba")), former);
    QCOMPARE(stage_->savedWork("zamba_lenta")["bpm"].toInt(), 90);
    QCOMPARE(nameOf("zamba_lenta"), "Zamba lenta");
    stage_->window().undo();
    QCOMPARE(stage_->song().bpm, 120);
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->savedWork("zamba_lenta")["bpm"].toInt(), 120);
    QCOMPARE(bytesOf(stage_->home().projectFile("zamba")), former);
}

void MainWindowCopiesTest::savedAsAnotherAWorkWithoutAFolderGetsOne()
{
    stage_->window().startBlankProject();
    stage_->prompts().answerText("Zamba");
    stage_->choose("Guardar como…");
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"askText | Guardar obra | ¿Cómo se llama esta obra? | Obra sin título"});
    QCOMPARE(stage_->savedIds(), (QStringList{"zamba", "zamba_2"}));
}

void MainWindowCopiesTest::whoGivesTheNameUpStays()
{
    for (const char* entry : {"Guardar como…", "Cambiar nombre…"}) {
        stage_->prompts().answerText("   ");
        stage_->prompts().giveUpText();
        stage_->choose(entry);
        QCOMPARE(stage_->prompts().takeCalls().size(), 3);
        QCOMPARE(stage_->savedIds(), QStringList{"zamba"});
        QCOMPARE(stage_->window().windowTitle(), "Velta — Zamba[*]");
    }
}

void MainWindowCopiesTest::aCopyTakesAllClipsAlong()
{
    layClip("voz_1.wav");
    const QString elsewhere = stage_->home().filePath("tomas/voz_1.wav");
    QDir().mkpath(stage_->home().filePath("tomas"));
    QVERIFY(writeBytes(elsewhere, "elsewhere"));
    stage_->song().audioTracks[0].clips.append(clip(elsewhere, 4.0, 4.0));
    stage_->song().audioTracks[0].clips.append(clip("gone.wav", 8.0, 4.0));
    stage_->window().snapshotAndRefresh();
    stage_->prompts().answerText("Otra");
    stage_->choose("Guardar como…");
    QCOMPARE(bytesOf(folder("otra") + "/voz_1.wav"), "voz_1.wav");
    QCOMPARE(bytesOf(folder("otra") + "/voz_1_2.wav"), "elsewhere");
    QStringList names;
    for (const AudioClip& clip : stage_->song().audioTracks.at(0).clips)
        names.append(clip.audioFilePath);
    QCOMPARE(names, (QStringList{"voz_1.wav", "voz_1_2.wav", "gone.wav"}));
    QCOMPARE(stage_->engine().projectDir, folder("otra"));
    QCOMPARE(bytesOf(folder("zamba") + "/voz_1.wav"), "voz_1.wav");
    std::unique_ptr<Project> saved(Project::fromJson(stage_->savedWork("otra"), nullptr));
    QCOMPARE(firstDifference(*saved, stage_->song()), QString());
}

void MainWindowCopiesTest::whatUndoBringsBackIsInTheCopyToo()
{
    layClip("voz_1.wav");
    stage_->song().audioTracks.clear();
    stage_->window().snapshotAndRefresh();
    stage_->choose("Duplicar obra");
    stage_->window().undo();
    QCOMPARE(stage_->song().audioTracks.at(0).clips.at(0).audioFilePath, "voz_1.wav");
    QCOMPARE(bytesOf(stage_->engine().projectDir + "/voz_1.wav"), "voz_1.wav");
    QCOMPARE(stage_->engine().projectDir, folder("zamba_copia_"));
}

void MainWindowCopiesTest::aDuplicateLeavesTheWorkSaved()
{
    editTempo(90);
    stage_->choose("Duplicar obra");
    QCOMPARE(stage_->prompts().takeCalls(), QStringList());
    QCOMPARE(stage_->message(), "Ahora estás en «Zamba (copia)». «Zamba» queda como estaba.");
    QCOMPARE(stage_->savedWork("zamba")["bpm"].toInt(), 90);
    QCOMPARE(stage_->savedWork("zamba_copia_")["bpm"].toInt(), 90);
    QCOMPARE(nameOf("zamba"), "Zamba");
    QCOMPARE(nameOf("zamba_copia_"), "Zamba (copia)");
    QCOMPARE(stage_->window().windowTitle(), "Velta — Zamba (copia)[*]");
}

void MainWindowCopiesTest::duplicatesAreCounted()
{
    stage_->choose("Duplicar obra");
    stage_->choose("Duplicar obra");
    QCOMPARE(stage_->song().name, "Zamba (copia 2)");
    QCOMPARE(stage_->savedIds(), (QStringList{"zamba", "zamba_copia_", "zamba_copia_2_"}));
}

void MainWindowCopiesTest::aCopyThatCannotBeSavedChangesNothing()
{
    layClip("voz_1.wav");
    QVERIFY(stage_->window().saveCurrentProject());
    const QJsonObject before = stage_->song().toJson();
    stage_->prompts().answerText("Otra");
    {
        const FullDisk full(64);
        stage_->choose("Guardar como…");
    }
    QCOMPARE(stage_->prompts().takeCalls().last(), "warn | Guardar | No pude guardar la obra.");
    QCOMPARE(stage_->song().toJson(), before);
    QCOMPARE(stage_->window().currentProjectId(), "zamba");
    QCOMPARE(stage_->engine().projectDir, folder("zamba"));
    QCOMPARE(stage_->window().windowTitle(), "Velta — Zamba[*]");
    QCOMPARE(stage_->savedIds(), QStringList{"zamba"});
}

void MainWindowCopiesTest::aNewNameStandsInTheFileAndInTheTitle()
{
    stage_->prompts().answerText("Cueca");
    stage_->choose("Cambiar nombre…");
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"askText | Cambiar nombre | ¿Cómo se llama esta obra? | Zamba"});
    QCOMPARE(stage_->window().windowTitle(), "Velta — Cueca[*]");
    QVERIFY(!stage_->window().isWindowModified());
    QCOMPARE(nameOf("zamba"), "Cueca");
    QCOMPARE(stage_->savedIds(), QStringList{"zamba"});
    QCOMPARE(stage_->window().currentProjectId(), "zamba");
}

void MainWindowCopiesTest::aNewNameOfAWorkWithoutAFileWaitsForTheFirstSave()
{
    stage_->window().startBlankProject();
    stage_->prompts().answerText("Cueca");
    stage_->choose("Cambiar nombre…");
    stage_->prompts().takeCalls();
    QCOMPARE(stage_->window().windowTitle(), "Velta — Cueca[*]");
    QCOMPARE(stage_->savedIds(), QStringList{"zamba"});
    stage_->prompts().answerText("Cueca");
    QVERIFY(stage_->window().saveCurrentProject());
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"askText | Guardar obra | ¿Cómo se llama esta obra? | Cueca"});
    QCOMPARE(stage_->savedIds(), (QStringList{"cueca", "zamba"}));
}

void MainWindowCopiesTest::aNewNameIsNoStepOfUndo()
{
    editTempo(90);
    stage_->prompts().answerText("Cueca");
    stage_->choose("Cambiar nombre…");
    stage_->window().undo();
    QCOMPARE(stage_->song().bpm, 120);
    QCOMPARE(stage_->song().name, "Cueca");
    QVERIFY(!stage_->canUndo());
}

VELTA_TEST(MainWindowCopiesTest)

} // namespace MainWindowCopiesTests

#include "MainWindowCopiesTest.moc"
