#include "shell/theme/ThemeManager.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace MainWindowThemeTests {

using namespace ProjectBuilder;

namespace {

constexpr auto kToLight = "☀ Modo claro";
constexpr auto kToDark = "🌙 Modo oscuro";

} // namespace

/// The status bar, and the theme that is chosen there.
class MainWindowThemeTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theHintStandsOnTheLeft();
    void theThemeButtonStandsOnTheRight();
    void theButtonNamesTheOtherTheme_data();
    void theButtonNamesTheOtherTheme();
    void aClickChangesTheTheme();
    void theChoiceIsKept();
    void theButtonFollowsOtherHands();
    void everyWindowFollows();
    void theViewsAreToldOnce();
    void theProjectStaysAsItIs();
    void aMessageLeavesTheButton();
    void aHundredSwitchesDuringPlaybackLeaveNothing();
    void aWindowThatIsGoneFollowsNoMore();

private:
    QPushButton* button() { return stage_->window().findChild<QPushButton*>("toggle_modo"); }

    QString settings() const
    {
        return QString::fromUtf8(bytesOf(stage_->home().filePath("settings/Ovelin/Velta.conf")));
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowThemeTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
    ThemeManager::instance()->setDark(false);
}

void MainWindowThemeTest::cleanup()
{
    stage_.reset();
    qApp->setStyleSheet(QString());
}

void MainWindowThemeTest::theHintStandsOnTheLeft()
{
    QVERIFY(stage_->showWindow());
    const auto* hint = Widgets::withText<QLabel>(
        *stage_->window().statusBar(),
        "Espacio reproduce · A-G tocan notas (Shift = sostenido, Z/X cambian de octava) · "
        "Shift+arrastre selecciona");
    QVERIFY(hint);
    QVERIFY(hint->isVisible());
    QVERIFY(hint->geometry().right() < button()->geometry().left());
    QVERIFY(hint->geometry().left() < 20);
}

void MainWindowThemeTest::theThemeButtonStandsOnTheRight()
{
    QVERIFY(stage_->showWindow());
    QCOMPARE(button()->parentWidget(), stage_->window().statusBar());
    QCOMPARE(button()->cursor().shape(), Qt::PointingHandCursor);
    QVERIFY(stage_->window().width() - button()->geometry().right() < 60);
}

void MainWindowThemeTest::theButtonNamesTheOtherTheme_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QString>("text");
    QTest::newRow("in the light") << false << kToDark;
    QTest::newRow("in the dark") << true << kToLight;
}

void MainWindowThemeTest::theButtonNamesTheOtherTheme()
{
    QFETCH(bool, dark);
    ThemeManager::instance()->setDark(dark);
    QTEST(button()->text(), "text");
}

void MainWindowThemeTest::aClickChangesTheTheme()
{
    QVERIFY(stage_->showWindow());
    Widgets::click(button());
    QVERIFY(ThemeManager::instance()->isDark());
    QCOMPARE(button()->text(), kToLight);
    Widgets::click(button());
    QVERIFY(!ThemeManager::instance()->isDark());
    QCOMPARE(button()->text(), kToDark);
    QVERIFY(!button()->isCheckable());
}

void MainWindowThemeTest::theChoiceIsKept()
{
    Widgets::click(button());
    QVERIFY2(settings().contains("modoOscuro=true"), qPrintable(settings()));
    Widgets::click(button());
    QVERIFY2(settings().contains("modoOscuro=false"), qPrintable(settings()));
}

void MainWindowThemeTest::theButtonFollowsOtherHands()
{
    QCOMPARE(button()->text(), kToDark);
    ThemeManager::instance()->setDark(true);
    QCOMPARE(button()->text(), kToLight);
    ThemeManager::instance()->setDark(true);
    QCOMPARE(button()->text(), kToLight);
    ThemeManager::instance()->setDark(false);
    QCOMPARE(button()->text(), kToDark);
}

void MainWindowThemeTest::everyWindowFollows()
{
    const MainWindow other(nullptr, stage_->prompts());
    Widgets::click(button());
    QCOMPARE(other.findChild<QPushButton*>("toggle_modo")->text(), kToLight);
}

void MainWindowThemeTest::theViewsAreToldOnce()
{
    const QSignalSpy changed(&stage_->song(), &Project::changed);
    Widgets::click(button());
    QCOMPARE(changed.count(), 1);
    Widgets::click(button());
    QCOMPARE(changed.count(), 2);
}

void MainWindowThemeTest::theProjectStaysAsItIs()
{
    const QJsonObject before = stage_->song().toJson();
    Widgets::click(button());
    QCOMPARE(stage_->song().toJson(), before);
    QVERIFY(!stage_->canUndo());
    QCOMPARE(stage_->window().windowTitle(), "Velta — Obra sin título[*]");
    QCOMPARE(stage_->prompts().calls(), QStringList());
}

void MainWindowThemeTest::aMessageLeavesTheButton()
{
    QVERIFY(stage_->showWindow());
    stage_->prompts().answerText("Zamba");
    stage_->choose("Guardar");
    QCOMPARE(stage_->message(), "Obra guardada.");
    QVERIFY(button()->isVisible());
}

void MainWindowThemeTest::aHundredSwitchesDuringPlaybackLeaveNothing()
{
    stage_->song().tracks[0].melodyBlocks = {melody({note(60, 396.0)}, 0.0, 400.0)};
    stage_->engine().play();
    Widgets::click(button());
    Widgets::click(button());
    const auto objects = [this] { return stage_->window().findChildren<QObject*>().size(); };
    const qsizetype before = objects();
    const qsizetype windows = QApplication::topLevelWidgets().size();
    for (int time = 0; time < 100; ++time) {
        Widgets::click(button());
        QCoreApplication::processEvents();
    }
    QCOMPARE(objects(), before);
    QCOMPARE(QApplication::topLevelWidgets().size(), windows);
    QCOMPARE(button()->text(), kToDark);
    QVERIFY(stage_->engine().isPlaying());
    QVERIFY(!stage_->canUndo());
}

void MainWindowThemeTest::aWindowThatIsGoneFollowsNoMore()
{
    QVERIFY(button());
    stage_->destroyWindow();
    ThemeManager::instance()->setDark(true);
    QCOMPARE(button()->text(), kToLight);
}

VELTA_TEST(MainWindowThemeTest)

} // namespace MainWindowThemeTests

#include "MainWindowThemeTest.moc"
