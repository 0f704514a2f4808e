#include "shell/MainWindow.h"

#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "storage/LocalStorageProvider.h"
#include "support/TestProgram.h"

#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

namespace MainWindowTests {

class MainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void opensOnABlankWork();
    void aFreshWorkReplacesTheFormerOne();
    void knowsTheInstalledContent();
    void resourcesStandBesideTheExecutable();
    void opensASavedWorkById();
    void aWorkThatCannotBeOpenedLeavesThePresentOne();

private:
    std::unique_ptr<QTemporaryDir> home_;
};

void MainWindowTest::init()
{
    home_ = std::make_unique<QTemporaryDir>();
    qputenv("HOME", home_->path().toUtf8());
    QStandardPaths::setTestModeEnabled(true);
}

void MainWindowTest::cleanup()
{
    home_.reset();
}

void MainWindowTest::opensOnABlankWork()
{
    const MainWindow window;
    QCOMPARE(window.windowTitle(), "Velta — Obra sin título[*]");
    QCOMPARE(window.size(), QSize(1360, 860));

    const Project* project = window.project();
    QVERIFY(project);
    QCOMPARE(project->name, "Obra sin título");
    QCOMPARE(project->bpm, 120);
    QCOMPARE(project->timeSignature, TimeSignature());
    QCOMPARE(project->keySignature, KeySignature());
    QVERIFY(project->audioTracks.isEmpty());
    QVERIFY(project->harmonyTrack.isEmpty());
    QCOMPARE(project->tracks.size(), 1);
    Track expected;
    expected.name = "Melodía";
    expected.instrumentId = "gm_piano";
    // The piano roll gives the track that it shows a block to write in.
    expected.melodyBlocks = {{.startBeat = 0.0, .durationBeats = 32.0, .notes = {}}};
    QCOMPARE(project->tracks[0], expected);
}

void MainWindowTest::aFreshWorkReplacesTheFormerOne()
{
    MainWindow window;
    const QPointer<const Project> former = window.project();
    window.startBlankProject();
    QVERIFY(window.project() != former);
    QCOMPARE(window.project()->parent(), &window);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(former.isNull());
    QCOMPARE(window.windowTitle(), "Velta — Obra sin título[*]");
}

void MainWindowTest::knowsTheInstalledContent()
{
    const MainWindow window;
    QCOMPARE(window.statusBar()->currentMessage(), QString());
    QVERIFY(window.loopLibrary()->findRhythm("folklore_carnavalito"));
    QVERIFY(window.instruments()->find("gm_piano"));
}

void MainWindowTest::resourcesStandBesideTheExecutable()
{
    QCOMPARE(MainWindow::resourcesDir(), QCoreApplication::applicationDirPath() + "/resources");
}

void MainWindowTest::opensASavedWorkById()
{
    Project saved;
    saved.name = "Zamba de mi pueblo";
    saved.bpm = 84;
    QVERIFY(LocalStorageProvider(QString()).saveProject("zamba", saved));

    MainWindow window;
    window.openProjectById("zamba");
    QCOMPARE(window.windowTitle(), "Velta — Zamba de mi pueblo[*]");
    QCOMPARE(window.project()->toJson(), saved.toJson());
}

void MainWindowTest::aWorkThatCannotBeOpenedLeavesThePresentOne()
{
    MainWindow window;
    const Project* present = window.project();
    QString title;
    QString text;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        title = box->windowTitle();
        text = box->text();
        box->accept();
    });
    window.openProjectById("no_such_work");
    QCOMPARE(title, "Abrir proyecto");
    QCOMPARE(text, "No pude abrir el proyecto.");
    QCOMPARE(window.project(), present);
    QCOMPARE(window.windowTitle(), "Velta — Obra sin título[*]");
}

VELTA_TEST(MainWindowTest)

} // namespace MainWindowTests

#include "MainWindowTest.moc"
