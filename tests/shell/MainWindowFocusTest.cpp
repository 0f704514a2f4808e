#include "BrowserStage.h"
#include "shell/theme/ThemeManager.h"
#include "support/Contrast.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"
#include "views/pianoroll/PianoRollCanvas.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>

namespace MainWindowFocusTests {

using namespace ProjectBuilder;

namespace {

/// Pixels that have come and are bluer than the greens of the program.
int newBluePixels(const QImage& before, const QImage& after)
{
    int count = 0;
    for (int y = 0; y < after.height(); ++y) {
        for (int x = 0; x < after.width(); ++x) {
            const QColor color = after.pixelColor(x, y);
            count += color != before.pixelColor(x, y) && color.blue() > color.green() + 8;
        }
    }
    return count;
}

} // namespace

/// Who has the keys, what the keys that press a control do, and whether it shows: in both looks.
class MainWindowFocusTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase_data();
    void init();
    void cleanup();

    void theRollHasTheKeysAtTheStart();
    void theRollHasTheKeysOfANewWork();

    void spacePlaysAndPauses();
    void spaceHeldDownIsOneSpace();
    void spaceIsTypedWhereAFieldIsTypedIn();
    void spaceAndReturnPressButtons();
    void spaceAndReturnTickBoxes();
    void spaceAndReturnOpenLists();
    void spaceInAnOpenListPlaysNothing();
    void spaceOnASliderPlays();

    void afterAChoiceTheEditorHasTheKeys_data();
    void afterAChoiceTheEditorHasTheKeys();
    void afterALookTheEditorHasTheKeys();
    void afterATypedNumberTheEditorHasTheKeys();
    void theEditorThatHadTheKeysGetsThem();

    void everyStopIsAControl();
    void theTabKeyFollowsTheEye();
    void theTabKeyFollowsTheEyeAfterAnotherChoice();
    void everyStopShowsThatItHasTheKeys();
    void theEditorsShowWhichOfThemHasTheKeys();

private:
    PianoRollCanvas& roll() { return *stage_->window().findChild<PianoRollCanvas*>(); }

    TrackArranger& arranger() { return *stage_->window().findChild<TrackArranger*>(); }

    LoopBrowser& browser() { return *stage_->window().findChild<LoopBrowser*>(); }

    TrackHeaderPanel& panel() { return *stage_->window().findChild<TrackHeaderPanel*>(); }

    QComboBox& keyBox() { return *Widgets::over<QComboBox>(stage_->ribbon(), "Tonalidad"); }

    bool isPlaying() { return stage_->engine().isPlaying(); }

    void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }

    /// What the Tab key comes to, in its order, from the piano roll on.
    QList<QWidget*> stops();

    /// Pixels of the window that change by at least a contrast when a widget gets the keys; -1 if
    /// blue ones come among them.
    int markOf(QWidget& widget, double least);

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowFocusTest::initTestCase_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void MainWindowFocusTest::init()
{
    QFETCH_GLOBAL(bool, dark);
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
    const TestRhythm rock = rockWithABass();
    TestRhythm pop = rock;
    pop.id = "pop";
    pop.name = "Pop";
    pop.layers = {layerOf("guitarra", "pop", "Guitarra")};
    pop.variants = {variantOf("guitarra", LoopSection::Normal, 1)};
    for (const TestRhythm& rhythm : {rock, pop})
        writeBytes(
            stage_->home().filePath("resources/loops/installed/" + rhythm.id + ".content.json"),
            rhythm.package());
    ThemeManager::instance()->setDark(dark);
    stage_->window().resize(1360, 860);
    QVERIFY(stage_->showWindow());
}

void MainWindowFocusTest::cleanup()
{
    stage_.reset();
    qApp->setStyleSheet(QString());
}

QList<QWidget*> MainWindowFocusTest::stops()
{
    QList<QWidget*> found;
    QWidget* widget = &roll();
    do {
        if ((widget->focusPolicy() & Qt::TabFocus) && widget->isVisible() && widget->isEnabled() &&
            !widget->focusProxy())
            found.append(widget);
        widget = widget->nextInFocusChain();
    } while (widget != &roll());
    return found;
}

int MainWindowFocusTest::markOf(QWidget& widget, double least)
{
    MainWindow& window = stage_->window();
    const QRect area = QRect(widget.mapTo(&window, QPoint()), widget.size()).adjusted(-3, -3, 3, 3);
    QLineEdit elsewhere(&window);
    elsewhere.setGeometry(-50, -50, 10, 10);
    elsewhere.show();
    elsewhere.setFocus();
    const QImage before = Contrast::pictureOf(window, area);
    widget.setFocus(Qt::TabFocusReason);
    QApplication::processEvents();
    const QImage after = Contrast::pictureOf(window, area);
    // A caret stands over a selection in the colour opposite to it.
    constexpr int kCaretPixels = 30;
    if (newBluePixels(before, after) > kCaretPixels)
        return -1;
    return Contrast::pixelsThatDiffer(before, after, least);
}

// ---- The start -----------------------------------------------------------------------------

void MainWindowFocusTest::theRollHasTheKeysAtTheStart()
{
    QCOMPARE(QApplication::focusWidget(), &roll());
}

void MainWindowFocusTest::theRollHasTheKeysOfANewWork()
{
    arranger().setFocus();
    stage_->window().startBlankProject();
    QCOMPARE(QApplication::focusWidget(), &roll());
}

// ---- Keys that press -----------------------------------------------------------------------

void MainWindowFocusTest::spacePlaysAndPauses()
{
    for (QWidget* editor : {static_cast<QWidget*>(&roll()), static_cast<QWidget*>(&arranger())}) {
        editor->setFocus();
        press(Qt::Key_Space);
        QVERIFY(isPlaying());
        press(Qt::Key_Space);
        QVERIFY(!isPlaying());
    }
}

void MainWindowFocusTest::spaceHeldDownIsOneSpace()
{
    const auto actions = stage_->window().actions();
    const auto space = std::ranges::find_if(
        actions, [](const QAction* action) { return action->shortcut() == Qt::Key_Space; });
    QVERIFY(space != actions.end());
    QVERIFY(!(*space)->autoRepeat());
}

void MainWindowFocusTest::spaceIsTypedWhereAFieldIsTypedIn()
{
    auto* name = panel().findChild<QLineEdit*>();
    name->setFocus();
    name->setText("la");
    press(Qt::Key_Space);
    QCOMPARE(name->text(), "la ");
    QVERIFY(!isPlaying());
}

void MainWindowFocusTest::spaceAndReturnPressButtons()
{
    auto* mute = Widgets::withText<QToolButton>(panel(), "Mute");
    mute->setFocus();
    press(Qt::Key_Space);
    QVERIFY(mute->isChecked());
    press(Qt::Key_Return);
    QTRY_VERIFY(!mute->isChecked());
    QVERIFY(!isPlaying());

    auto* variation = browser().findChild<VariationButton*>();
    variation->setFocus();
    press(Qt::Key_Space);
    QCOMPARE(stage_->song().tracks.size(), 2);
}

void MainWindowFocusTest::spaceAndReturnTickBoxes()
{
    auto* box = panel().findChild<QCheckBox*>();
    const bool before = box->isChecked();
    box->setFocus();
    press(Qt::Key_Space);
    QCOMPARE(box->isChecked(), !before);
    press(Qt::Key_Return);
    QTRY_COMPARE(box->isChecked(), before);
    QVERIFY(!isPlaying());
}

void MainWindowFocusTest::spaceAndReturnOpenLists()
{
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return}) {
        keyBox().setFocus();
        press(key);
        QTRY_VERIFY(keyBox().view()->isVisible());
        keyBox().hidePopup();
        QTRY_VERIFY(!keyBox().view()->isVisible());
    }
    QVERIFY(!isPlaying());
}

void MainWindowFocusTest::spaceInAnOpenListPlaysNothing()
{
    keyBox().showPopup();
    QTRY_VERIFY(keyBox().view()->isVisible());
    QTest::keyClick(keyBox().view(), Qt::Key_Space);
    QVERIFY(!isPlaying());
    keyBox().hidePopup();
}

void MainWindowFocusTest::spaceOnASliderPlays()
{
    panel().findChild<QSlider*>()->setFocus();
    press(Qt::Key_Space);
    QVERIFY(isPlaying());
}

// ---- The way back --------------------------------------------------------------------------

void MainWindowFocusTest::afterAChoiceTheEditorHasTheKeys_data()
{
    QTest::addColumn<bool>("inTheRibbon");
    QTest::newRow("the key of the song") << true;
    QTest::newRow("the rhythm of the browser") << false;
}

void MainWindowFocusTest::afterAChoiceTheEditorHasTheKeys()
{
    QFETCH(bool, inTheRibbon);
    QComboBox& box = inTheRibbon ? keyBox() : *browser().findChildren<QComboBox*>().at(1);
    box.setFocus(Qt::MouseFocusReason);
    box.showPopup();
    QTRY_VERIFY(box.view()->isVisible());
    QTest::keyClick(box.view(), Qt::Key_Down);
    QTest::keyClick(box.view(), Qt::Key_Return);
    QTRY_COMPARE(stage_->window().focusWidget(), &roll());
    QCOMPARE(box.currentIndex(), 1);
    QTest::keyClick(stage_->window().focusWidget(), Qt::Key_G);
    QCOMPARE(box.currentIndex(), 1);
}

void MainWindowFocusTest::afterALookTheEditorHasTheKeys()
{
    keyBox().setFocus(Qt::MouseFocusReason);
    keyBox().showPopup();
    QTRY_VERIFY(keyBox().view()->isVisible());
    keyBox().hidePopup();
    QTRY_COMPARE(stage_->window().focusWidget(), &roll());
}

void MainWindowFocusTest::afterATypedNumberTheEditorHasTheKeys()
{
    auto* tempo = Widgets::over<QSpinBox>(stage_->ribbon(), "Velocidad");
    tempo->setFocus();
    tempo->selectAll();
    QTest::keyClicks(tempo, "96");
    press(Qt::Key_Return);
    QTRY_COMPARE(stage_->window().focusWidget(), &roll());
    QCOMPARE(stage_->song().bpm, 96);
}

void MainWindowFocusTest::theEditorThatHadTheKeysGetsThem()
{
    arranger().setFocus();
    keyBox().setFocus(Qt::MouseFocusReason);
    keyBox().showPopup();
    QTRY_VERIFY(keyBox().view()->isVisible());
    keyBox().hidePopup();
    QTRY_COMPARE(stage_->window().focusWidget(), &arranger());
}

// ---- What shows ----------------------------------------------------------------------------

void MainWindowFocusTest::everyStopIsAControl()
{
    const QList<QWidget*> all = stops();
    QVERIFY(all.size() > 25);
    for (const QWidget* stop : all)
        QVERIFY2(!qobject_cast<const QScrollArea*>(stop), stop->metaObject()->className());
}

void MainWindowFocusTest::theTabKeyFollowsTheEye()
{
    const QList<QWidget*> all = stops();
    const auto boxes = browser().findChildren<QComboBox*>();
    const auto cards = browser().findChildren<VariationButton*>();
    qsizetype last = all.indexOf(boxes.last());
    QVERIFY(last >= 0);
    for (const VariationButton* card : cards) {
        QCOMPARE(all.at(last + 1), card);
        QCOMPARE(all.at(last + 2)->objectName(), "btn_escuchar");
        last += 2;
    }
    QCOMPARE(all.at(last + 1), Widgets::withText<QPushButton>(browser(), "Buscar más ritmos…"));
}

void MainWindowFocusTest::theTabKeyFollowsTheEyeAfterAnotherChoice()
{
    browser().findChildren<QComboBox*>().at(1)->setCurrentIndex(1);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
    theTabKeyFollowsTheEye();
}

void MainWindowFocusTest::everyStopShowsThatItHasTheKeys()
{
    constexpr double kLeastContrast = 3.0;
    for (QWidget* stop : stops()) {
        const int pixels = markOf(*stop, kLeastContrast);
        const QString who =
            QString("%1 '%2' '%3'")
                .arg(stop->metaObject()->className(), stop->accessibleName(), stop->toolTip());
        QVERIFY2(pixels >= 0, qPrintable(who + " is marked in blue"));
        QVERIFY2(pixels >= 20, qPrintable(who + QString(": %1 pixels").arg(pixels)));
    }
}

void MainWindowFocusTest::theEditorsShowWhichOfThemHasTheKeys()
{
    for (QWidget* editor : {static_cast<QWidget*>(&roll()), static_cast<QWidget*>(&arranger())})
        QVERIFY(markOf(*editor, 3.0) >= 2 * editor->width());
}

VELTA_TEST(MainWindowFocusTest)

} // namespace MainWindowFocusTests

#include "MainWindowFocusTest.moc"
