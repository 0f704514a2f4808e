#include "storage/WorkArchive.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QAbstractScrollArea>
#include <QApplication>
#include <QDialog>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QUrl>

namespace MainWindowWorkFileTests {

using namespace ProjectBuilder;

namespace {

constexpr auto kCannotOpen = "warn | Abrir obra | No pude abrir la obra.";
constexpr auto kAskFile = "askOpenFile | Abrir obra | Obra de Velta (*.velta)";

std::unique_ptr<Project> zamba(const QStringList& rhythms = {})
{
    QList<LoopBlock> blocks;
    for (const QString& rhythm : rhythms)
        blocks.append(
            loop(rhythm, rhythm + "_bajo", 4.0 * static_cast<double>(blocks.size()), 4.0));
    auto song = project({melodyTrack({melody({note(60, 0.0)})}, "gm_flauta"), loopTrack(blocks)},
                        harmony({1, 5}));
    song->name = "Zamba de la siesta";
    AudioTrack voice;
    AudioClip take;
    take.audioFilePath = "toma.wav";
    voice.clips.append(take);
    song->audioTracks.append(voice);
    return song;
}

} // namespace

/// Works that are carried from one computer to another as one file.
class MainWindowWorkFileTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theWorkIsExportedAsItStands();
    void aFailedExportIsTold();
    void aFileBecomesANewWorkAndIsOpened();
    void aFileThatIsNoneLeavesThePresentWork();
    void theListOfWorksLeadsToAFile();
    void withoutSavedWorksAFileMayBeOpened();
    void unsavedWorkIsAskedAboutFirst();
    void aFileIsDroppedOnTheWindow();
    void aFileIsDroppedOnAView_data();
    void aFileIsDroppedOnAView();
    void otherDropsAreNotTaken_data();
    void otherDropsAreNotTaken();
    void missingRhythmsAreNamed();
    void manyMissingRhythmsAreCounted();
    void theSearchIsOneClickAway();

private:
    QString file() const { return stage_->home().filePath("carried.velta"); }

    /// Writes a work in one file, with a take of three bytes.
    bool carry(const QStringList& rhythms = {})
    {
        return writeBytes(stage_->home().filePath("takes/toma.wav"), "voz") &&
               WorkArchive::write(*zamba(rhythms), stage_->home().filePath("takes"), file());
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowWorkFileTest::init()
{
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowWorkFileTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

void MainWindowWorkFileTest::theWorkIsExportedAsItStands()
{
    QVERIFY(stage_->saveWork("zamba", *zamba()));
    QVERIFY(writeBytes(stage_->home().works() + "/zamba/toma.wav", "voz"));
    stage_->window().openProject("zamba");
    stage_->prompts().answerPath(file());
    stage_->choose("Exportar obra completa…");
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"askSaveFile | Exportar obra completa | Zamba de la siesta.velta | Obra "
                         "de Velta (*.velta)"});
    QCOMPARE(stage_->message(), "Exportado a " + file());
    stage_->window().openWorkFile(file());
    QCOMPARE(bytesOf(stage_->home().projectFile("zamba_de_la_siesta")),
             bytesOf(stage_->home().projectFile("zamba")));
}

void MainWindowWorkFileTest::aFailedExportIsTold()
{
    stage_->prompts().answerPath(stage_->home().filePath("no/such/folder/obra.velta"));
    stage_->choose("Exportar obra completa…");
    QCOMPARE(stage_->prompts().calls().last(),
             "warn | Exportar obra completa | Falló la exportación: No pude escribir el archivo.");
}

void MainWindowWorkFileTest::aFileBecomesANewWorkAndIsOpened()
{
    QVERIFY(carry());
    stage_->window().openWorkFile(file());
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QCOMPARE(stage_->window().currentProjectId(), "zamba_de_la_siesta");
    QCOMPARE(stage_->window().windowTitle(), "Velta — Zamba de la siesta[*]");
    QCOMPARE(stage_->song().toJson(), zamba()->toJson());
    QCOMPARE(bytesOf(stage_->home().works() + "/zamba_de_la_siesta/toma.wav"), "voz");
    stage_->window().openWorkFile(file());
    QCOMPARE(stage_->savedIds(), QStringList({"zamba_de_la_siesta", "zamba_de_la_siesta_2"}));
}

void MainWindowWorkFileTest::aFileThatIsNoneLeavesThePresentWork()
{
    QVERIFY(writeBytes(file(), "PK, but no more"));
    const Project* before = &stage_->song();
    stage_->window().openWorkFile(file());
    stage_->window().openWorkFile(stage_->home().filePath("no such file.velta"));
    QCOMPARE(stage_->prompts().calls(), QStringList({kCannotOpen, kCannotOpen}));
    QCOMPARE(&stage_->song(), before);
    QCOMPARE(stage_->savedIds(), QStringList());
}

void MainWindowWorkFileTest::theListOfWorksLeadsToAFile()
{
    QVERIFY(carry());
    QVERIFY(stage_->saveWork("otra", Project()));
    stage_->prompts().inDialog([](QDialog& dialog) {
        Widgets::click(Widgets::withText<QPushButton>(dialog, "Desde un archivo…"));
    });
    stage_->prompts().answerPath(file());
    stage_->choose("Abrir obra…");
    QCOMPARE(stage_->prompts().calls(), QStringList({"run | Abrir obra", kAskFile}));
    QCOMPARE(stage_->window().currentProjectId(), "zamba_de_la_siesta");

    stage_->prompts().inDialog([](QDialog& dialog) {
        Widgets::click(Widgets::withText<QPushButton>(dialog, "Desde un archivo…"));
    });
    stage_->prompts().giveUpPath();
    stage_->choose("Abrir obra…");
    QCOMPARE(stage_->window().currentProjectId(), "zamba_de_la_siesta");
}

void MainWindowWorkFileTest::withoutSavedWorksAFileMayBeOpened()
{
    QVERIFY(carry());
    stage_->prompts().answerOffer(true);
    stage_->prompts().answerPath(file());
    stage_->choose("Abrir obra…");
    QCOMPARE(stage_->prompts().calls().last(), kAskFile);
    QCOMPARE(stage_->window().currentProjectId(), "zamba_de_la_siesta");
}

void MainWindowWorkFileTest::unsavedWorkIsAskedAboutFirst()
{
    QVERIFY(carry());
    stage_->song().harmonyTrack = harmony({1});
    stage_->prompts().answer(QMessageBox::Cancel);
    stage_->window().openWorkFile(file());
    QVERIFY(stage_->prompts().calls().first().startsWith("ask | Obra sin guardar"));
    QCOMPARE(stage_->savedIds(), QStringList());
}

void MainWindowWorkFileTest::aFileIsDroppedOnTheWindow()
{
    QVERIFY(carry());
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(file())});
    const QPoint place(400, 300);
    QDragEnterEvent enter(place, Qt::CopyAction, &mime, Qt::LeftButton, {});
    enter.ignore();
    QVERIFY(QCoreApplication::sendEvent(&stage_->window(), &enter) && enter.isAccepted());
    QDropEvent drop(place, Qt::CopyAction, &mime, Qt::LeftButton, {});
    drop.ignore();
    QVERIFY(QCoreApplication::sendEvent(&stage_->window(), &drop) && drop.isAccepted());
    QCOMPARE(stage_->window().currentProjectId(), "");
    QTRY_COMPARE(stage_->window().currentProjectId(), "zamba_de_la_siesta");
}

void MainWindowWorkFileTest::aFileIsDroppedOnAView_data()
{
    QTest::addColumn<QByteArray>("view");
    QTest::newRow("the piano roll") << QByteArray("PianoRollGridView");
    QTest::newRow("the arranger") << QByteArray("ArrangerGridView");
}

/// Whoever takes a drag when it enters is given the drop too.
void MainWindowWorkFileTest::aFileIsDroppedOnAView()
{
    QFETCH(QByteArray, view);
    QVERIFY(carry());
    QWidget* under = nullptr;
    for (auto* area : stage_->window().findChildren<QAbstractScrollArea*>())
        under = area->inherits(view) ? area->viewport() : under;
    QVERIFY(under);
    // The toolkit looks for the one to ask from the mouse outwards.
    while (!under->acceptDrops())
        under = under->parentWidget();
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(file())});
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(under, &enter);
    QDropEvent drop(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(under, &drop);
    QTRY_COMPARE(stage_->window().currentProjectId(), "zamba_de_la_siesta");
}

void MainWindowWorkFileTest::otherDropsAreNotTaken_data()
{
    QTest::addColumn<QList<QUrl>>("urls");
    QTest::newRow("nothing") << QList<QUrl>{};
    QTest::newRow("another file") << QList<QUrl>{QUrl::fromLocalFile("/a/b.mid")};
    QTest::newRow("two works") << QList<QUrl>{QUrl::fromLocalFile("/a.velta"),
                                              QUrl::fromLocalFile("/b.velta")};
    QTest::newRow("a work on a server") << QList<QUrl>{QUrl("http://127.0.0.1/a.velta")};
}

void MainWindowWorkFileTest::otherDropsAreNotTaken()
{
    QFETCH(QList<QUrl>, urls);
    QMimeData mime;
    mime.setUrls(urls);
    QDragEnterEvent enter(QPoint(400, 300), Qt::CopyAction, &mime, Qt::LeftButton, {});
    enter.ignore();
    QCoreApplication::sendEvent(&stage_->window(), &enter);
    QVERIFY(!enter.isAccepted());
    QDropEvent drop(QPoint(400, 300), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&stage_->window(), &drop);
    QTest::qWait(10);
    QCOMPARE(stage_->prompts().calls(), QStringList());
}

// ---- Rhythms -------------------------------------------------------------------------------

void MainWindowWorkFileTest::missingRhythmsAreNamed()
{
    QVERIFY(carry({"folklore_gato"}));
    stage_->prompts().answerOffer(false);
    stage_->window().openWorkFile(file());
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"suggest | Abrir obra | Esta obra usa un ritmo que esta computadora no "
                         "tiene: folklore_gato. | Buscar más ritmos…"});
    QVERIFY(carry({"folklore_gato", "popular_son", "folklore_gato"}));
    stage_->prompts().answerOffer(false);
    stage_->window().openWorkFile(file());
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"suggest | Abrir obra | Esta obra usa ritmos que esta computadora no "
                         "tiene: folklore_gato, popular_son. | Buscar más ritmos…"});
}

void MainWindowWorkFileTest::manyMissingRhythmsAreCounted()
{
    QStringList rhythms;
    for (int i = 0; i < 1000; ++i)
        rhythms.append("r" + QString::number(i));
    QVERIFY(carry(rhythms));
    stage_->prompts().answerOffer(false);
    stage_->window().openWorkFile(file());
    QVERIFY(
        stage_->prompts().calls().last().contains("no tiene: r0, r1, r2, r3, r4, r5, 994 más. |"));
}

void MainWindowWorkFileTest::theSearchIsOneClickAway()
{
    QVERIFY(carry({"folklore_gato"}));
    QString shown;
    QTimer::singleShot(0, &stage_->window(), [&] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        shown = dialog->windowTitle();
        dialog->reject();
    });
    stage_->prompts().answerOffer(true);
    stage_->window().openWorkFile(file());
    QCOMPARE(shown, "Buscar más ritmos en línea");
}

VELTA_TEST(MainWindowWorkFileTest)

} // namespace MainWindowWorkFileTests

#include "MainWindowWorkFileTest.moc"
