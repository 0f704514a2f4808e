#include "shell/theme/ThemeManager.h"

#include "shell/theme/CanvasColors.h"
#include "support/StyleChanges.h"
#include "support/TestProgram.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QScrollArea>
#include <QSettings>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

#include <memory>

namespace ThemeManagerTests {

namespace {

QSettings settingsOfTheUser()
{
    return QSettings("Ovelin", "Velta");
}

/// A window with something of everything that the sheets dress.
std::unique_ptr<QMainWindow> busyWindow()
{
    auto window = std::make_unique<QMainWindow>();
    window->menuBar()->addMenu("Archivo")->addAction("Salir");
    window->statusBar()->addWidget(new QLabel("a"));
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    auto* combo = new QComboBox;
    combo->addItems({"Mayor", "Menor"});
    auto* list = new QListWidget;
    list->addItems({"a", "b"});
    auto* button = new QToolButton;
    button->setObjectName("btn_toolbar");
    auto* scrolled = new QScrollArea;
    scrolled->setWidget(new QLabel("b"));
    for (QWidget* widget :
         {static_cast<QWidget*>(combo), static_cast<QWidget*>(list), static_cast<QWidget*>(button),
          static_cast<QWidget*>(scrolled), static_cast<QWidget*>(new QSpinBox()),
          static_cast<QWidget*>(new QTabWidget()), static_cast<QWidget*>(new QCheckBox("c"))})
        layout->addWidget(widget);
    window->setCentralWidget(page);
    return window;
}

qsizetype objectCount(const QMainWindow& window)
{
    return window.findChildren<QObject*>().size() + qApp->findChildren<QObject*>().size() +
           QAbstractEventDispatcher::instance()->findChildren<QObject*>().size() +
           QApplication::allWidgets().size();
}

} // namespace

class ThemeManagerTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void isLightBeforeAnythingIsApplied();
    void thereIsOneInstance();
    void hasTheColorsOfTheIdentity();
    void aFirstStartIsLightAndStoresThat();
    void aSavedThemeIsPutOnAndStoredAgain_data();
    void aSavedThemeIsPutOnAndStoredAgain();
    void aChangeIsStoredAndAnnouncedOnce();
    void theAnnouncementComesLast();
    void theSameThemeAgainIsAnnouncedAgain();
    void theSameThemeAgainDressesNobodyAnew();
    void theSheetOfTheApplicationFollows();
    void aSheetFromElsewhereIsReplaced();
    void aHundredChangesLeaveNothingBehind();

private:
    std::unique_ptr<QTemporaryDir> dir_;
};

void ThemeManagerTest::initTestCase()
{
    // QSettings reads its paths once.
    dir_ = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_HOME", dir_->path().toUtf8());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir_->path());
}

void ThemeManagerTest::init()
{
    QVERIFY(settingsOfTheUser().fileName().startsWith(dir_->path()));
    settingsOfTheUser().clear();
}

void ThemeManagerTest::isLightBeforeAnythingIsApplied()
{
    QCOMPARE(ThemeManager::instance()->isDark(), false);
    QVERIFY(!settingsOfTheUser().contains("modoOscuro"));
}

void ThemeManagerTest::thereIsOneInstance()
{
    QVERIFY(ThemeManager::instance());
    QCOMPARE(ThemeManager::instance(), ThemeManager::instance());
}

void ThemeManagerTest::hasTheColorsOfTheIdentity()
{
    QCOMPARE(ThemeManager::kAccent, QColor("#7cb342"));
    QCOMPARE(ThemeManager::kAccentDeep, QColor("#4a7325"));
    QCOMPARE(ThemeManager::kAccentHover, QColor("#9ccc65"));
}

void ThemeManagerTest::aFirstStartIsLightAndStoresThat()
{
    ThemeManager::instance()->setDark(true);
    settingsOfTheUser().clear();
    ThemeManager::instance()->applySavedTheme();
    QCOMPARE(ThemeManager::instance()->isDark(), false);
    QVERIFY(settingsOfTheUser().contains("modoOscuro"));
    QCOMPARE(settingsOfTheUser().value("modoOscuro").toString(), "false");
    QCOMPARE(settingsOfTheUser().allKeys(), QStringList{"modoOscuro"});
}

void ThemeManagerTest::aSavedThemeIsPutOnAndStoredAgain_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("dark");
    QTest::newRow("true") << QVariant(true) << true;
    QTest::newRow("false") << QVariant(false) << false;
    QTest::newRow("the word true") << QVariant("true") << true;
    QTest::newRow("the number 1") << QVariant(1) << true;
    QTest::newRow("the number 0") << QVariant(0) << false;
    QTest::newRow("no text") << QVariant("") << false;
    QTest::newRow("a list") << QVariant(QStringList{"true", "true"}) << false;
}

void ThemeManagerTest::aSavedThemeIsPutOnAndStoredAgain()
{
    QFETCH(QVariant, stored);
    QFETCH(bool, dark);
    ThemeManager::instance()->setDark(!dark);
    settingsOfTheUser().setValue("modoOscuro", stored);
    QSignalSpy changes(ThemeManager::instance(), &ThemeManager::themeChanged);
    ThemeManager::instance()->applySavedTheme();
    QCOMPARE(ThemeManager::instance()->isDark(), dark);
    QCOMPARE(changes, QList<QVariantList>{{dark}});
    QCOMPARE(settingsOfTheUser().value("modoOscuro").toString(), dark ? "true" : "false");
}

void ThemeManagerTest::aChangeIsStoredAndAnnouncedOnce()
{
    ThemeManager::instance()->setDark(false);
    for (const bool dark : {true, false}) {
        QSignalSpy changes(ThemeManager::instance(), &ThemeManager::themeChanged);
        ThemeManager::instance()->setDark(dark);
        QCOMPARE(ThemeManager::instance()->isDark(), dark);
        QCOMPARE(changes, QList<QVariantList>{{dark}});
        QCOMPARE(settingsOfTheUser().value("modoOscuro").toString(), dark ? "true" : "false");
    }
}

void ThemeManagerTest::theAnnouncementComesLast()
{
    ThemeManager* theme = ThemeManager::instance();
    theme->setDark(false);
    bool heard = false;
    QObject listener;
    connect(theme, &ThemeManager::themeChanged, &listener, [&](bool dark) {
        heard = true;
        QCOMPARE(dark, true);
        QCOMPARE(theme->isDark(), true);
        QCOMPARE(qApp->styleSheet(), theme->styleSheet());
        QCOMPARE(settingsOfTheUser().value("modoOscuro").toString(), "true");
        QCOMPARE(&canvasColors(), &kDarkCanvas);
    });
    theme->setDark(true);
    QVERIFY(heard);
}

void ThemeManagerTest::theSameThemeAgainIsAnnouncedAgain()
{
    ThemeManager::instance()->setDark(true);
    settingsOfTheUser().clear();
    QSignalSpy changes(ThemeManager::instance(), &ThemeManager::themeChanged);
    ThemeManager::instance()->setDark(true);
    QCOMPARE(changes, QList<QVariantList>{{true}});
    QCOMPARE(settingsOfTheUser().value("modoOscuro").toString(), "true");
}

void ThemeManagerTest::theSameThemeAgainDressesNobodyAnew()
{
    ThemeManager::instance()->setDark(false);
    QLabel label;
    label.ensurePolished();
    const StyleChanges changes(&label);
    ThemeManager::instance()->setDark(false);
    QCOMPARE(changes.count, 0);
    ThemeManager::instance()->setDark(true);
    QCOMPARE(changes.count, 1);
}

void ThemeManagerTest::theSheetOfTheApplicationFollows()
{
    ThemeManager* theme = ThemeManager::instance();
    theme->setDark(false);
    const QString light = theme->styleSheet();
    QCOMPARE(qApp->styleSheet(), light);
    theme->setDark(true);
    const QString dark = theme->styleSheet();
    QCOMPARE(qApp->styleSheet(), dark);
    QVERIFY(light != dark);
    QVERIFY(light.contains("#E5EDDD") && dark.contains("#0F1208"));
}

void ThemeManagerTest::aSheetFromElsewhereIsReplaced()
{
    ThemeManager::instance()->setDark(true);
    qApp->setStyleSheet("QLabel { color: red; }");
    ThemeManager::instance()->setDark(true);
    QCOMPARE(qApp->styleSheet(), ThemeManager::instance()->styleSheet());
}

void ThemeManagerTest::aHundredChangesLeaveNothingBehind()
{
    const std::unique_ptr<QMainWindow> window = busyWindow();
    window->show();
    for (const bool dark : {true, false})
        ThemeManager::instance()->setDark(dark);
    QApplication::processEvents();
    const qsizetype before = objectCount(*window);
    for (int change = 0; change < 100; ++change)
        ThemeManager::instance()->setDark(change % 2 == 0);
    QApplication::processEvents();
    QCOMPARE(objectCount(*window), before);
}

VELTA_TEST(ThemeManagerTest)

} // namespace ThemeManagerTests

#include "ThemeManagerTest.moc"
