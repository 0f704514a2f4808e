#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "shell/MainWindow.h"
#include "support/TestProgram.h"
#include "support/Widgets.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QStandardPaths>
#include <QStatusBar>
#include <QStatusTipEvent>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>

namespace BareMainWindowTests {

namespace {

/// Keeps what the user was told last.
class HeardWords : public Prompts {
public:
    QString words;

    void inform(QWidget* /*parent*/, const QString& title, const QString& text) override
    {
        words = title + " | " + text;
    }
};

} // namespace

/// The window of a program that has no resources beside it.
class BareMainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theFolderOfTheCurrentFolderIsTakenUnchecked();
    void aMissingBankIsMarkedInTheStatusBar();
    void noMenuWipesTheMarkAway();
    void theHintComesBackBehindAMessage();
    void withoutContentTheWindowOpensOnABlankWork();
    void rhythmsOfTheCurrentFolderAreLoaded();

private:
    QString before_;
    std::unique_ptr<QTemporaryDir> dir_;
};

void BareMainWindowTest::init()
{
    dir_ = std::make_unique<QTemporaryDir>();
    before_ = QDir::currentPath();
    qputenv("HOME", dir_->path().toUtf8());
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(QDir::setCurrent(dir_->path()));
}

void BareMainWindowTest::cleanup()
{
    QDir::setCurrent(before_);
    dir_.reset();
}

void BareMainWindowTest::theFolderOfTheCurrentFolderIsTakenUnchecked()
{
    QVERIFY(!QFile::exists(QCoreApplication::applicationDirPath() + "/resources"));
    QVERIFY(!QFile::exists("resources"));
    QCOMPARE(MainWindow::resourcesDir(), QDir::currentPath() + "/resources");
}

void BareMainWindowTest::aMissingBankIsMarkedInTheStatusBar()
{
    HeardWords prompts;
    MainWindow window(nullptr, prompts);
    window.show();
    const QString sentence = "Falta el banco de sonidos " + QDir::currentPath() +
                             "/resources/soundfonts/velta_bank_gm.sf2 — la app funciona sin "
                             "sonido.";
    const auto* mark = Widgets::withText<QLabel>(*window.statusBar(), "Falta el banco de sonidos");
    QVERIFY(mark && mark->isVisible());
    QVERIFY(mark->toolTip().contains("velta_bank_gm.sf2"));
    Widgets::click(Widgets::withText<QPushButton>(*window.statusBar(), "¿Qué hago?"));
    QVERIFY(prompts.words.startsWith("Sin sonido | " + sentence + "\n\nCopiá"));
}

void BareMainWindowTest::noMenuWipesTheMarkAway()
{
    MainWindow window;
    window.show();
    const auto* mark = Widgets::withText<QLabel>(*window.statusBar(), "Falta el banco de sonidos");
    // As menus do when the mouse passes over their entries.
    QStatusTipEvent tip{QString()};
    QCoreApplication::sendEvent(&window, &tip);
    QVERIFY(mark->isVisible());
    window.statusBar()->showMessage("Obra guardada.");
    QVERIFY(mark->isVisible());
}

void BareMainWindowTest::theHintComesBackBehindAMessage()
{
    MainWindow window;
    const QStatusBar* bar = window.statusBar();
    window.statusBar()->showMessage("Obra guardada.");
    window.show();
    const auto labels = bar->findChildren<QLabel*>();
    const auto hint = std::ranges::find_if(
        labels, [](const QLabel* label) { return label->text().startsWith("Espacio reproduce"); });
    QVERIFY(hint != labels.end());
    QVERIFY((*hint)->isHidden());
    window.statusBar()->clearMessage();
    QVERIFY((*hint)->isVisible());
    window.statusBar()->showMessage("Obra guardada.");
    QVERIFY((*hint)->isHidden());
    window.statusBar()->clearMessage();
    QVERIFY((*hint)->isVisible());
}

void BareMainWindowTest::withoutContentTheWindowOpensOnABlankWork()
{
    const MainWindow window;
    QCOMPARE(window.project()->name, "Obra sin título");
    QVERIFY(window.loopLibrary()->rhythms().isEmpty());
    QCOMPARE(window.instruments()->instruments().size(), 16);
}

void BareMainWindowTest::rhythmsOfTheCurrentFolderAreLoaded()
{
    const QString name = "/installed/folklore_carnavalito.content.json";
    QVERIFY(QDir().mkpath("resources/loops/installed"));
    QVERIFY(QFile::copy(VELTA_LOOPS_DIR + name, "resources/loops" + name));
    const MainWindow window;
    QVERIFY(window.loopLibrary()->findRhythm("folklore_carnavalito"));
    QVERIFY(QFile::exists("resources/loops/manifest.json"));
}

VELTA_TEST(BareMainWindowTest)

} // namespace BareMainWindowTests

#include "BareMainWindowTest.moc"
