#include "BrowserStage.h"
#include "shell/IgualadorSimbolos.h"
#include "shell/LoopBrowser.h"
#include "shell/theme/ThemeManager.h"
#include "support/FluidSpy.h"
#include "support/LayoutFaults.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/TrackHeaderPanel.h"
#include "views/arranger/TrackArranger.h"

#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QTest>

namespace MainWindowSizesTests {

using namespace ProjectBuilder;

namespace {

/// The frame that a window manager puts around a window takes some of the screen.
constexpr QSize kFrame(8, 30);

QString longName(const QString& word)
{
    return (word + " que no termina nunca ").repeated(6).trimmed();
}

} // namespace

/// How the window fits screens from 1024 by 700 pixels on, in both looks.
class MainWindowSizesTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase_data();
    void init();
    void cleanup();

    void nothingIsCutAndNothingLiesOverAnother_data();
    void nothingIsCutAndNothingLiesOverAnother();
    void theSectionThatIsUsedMostIsInSight_data();
    void theSectionThatIsUsedMostIsInSight();
    void everySectionCanBeScrolledTo();
    void thePanelOfTheTrackScrollsOnALowScreen();
    void thePanelOfTheTrackIsNoHigherThanItsRows();
    void aVariantInTheWayTakesNoMoreThanItsShare();
    void longNamesMakeNothingWider();
    void aLongCaptionTellsTrackAndKey();

private:
    TrackHeaderPanel& panel() { return *stage_->window().findChild<TrackHeaderPanel*>(); }

    LoopBrowser& browser() { return *stage_->window().findChild<LoopBrowser*>(); }

    QScrollArea& areaOf(const QWidget& widget)
    {
        return *qobject_cast<QScrollArea*>(widget.parentWidget()->parentWidget());
    }

    /// The cards of the browser, from the top.
    QList<QFrame*> cards() { return browser().findChildren<QFrame*>("grupo_ribbon"); }

    bool isWhole(const QWidget& widget)
    {
        return LayoutFaults::seenOf(widget) == LayoutFaults::placeOf(widget);
    }

    void addScreens();
    void showOn(const QSize& screen);

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowSizesTest::initTestCase_data()
{
    // As the program does when it starts.
    qApp->installEventFilter(new ovelin::IgualadorSimbolos(qApp));
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void MainWindowSizesTest::init()
{
    QFETCH_GLOBAL(bool, dark);
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
    TestRhythm rock{.id = "rock",
                    .name = "Rock",
                    .style = "popular",
                    .layers = {layerOf("bajo", "rock", "Bajo")}};
    for (const LoopSection section :
         {LoopSection::Intro, LoopSection::Normal, LoopSection::Intermedio, LoopSection::Final})
        for (int variant = 1; variant <= 4; ++variant)
            rock.variants.append(variantOf("bajo", section, variant));
    writeBytes(stage_->home().filePath("resources/loops/installed/rock.content.json"),
               rock.package());
    ThemeManager::instance()->setDark(dark);
}

void MainWindowSizesTest::cleanup()
{
    stage_.reset();
    qApp->setStyleSheet(QString());
}

void MainWindowSizesTest::addScreens()
{
    QTest::addColumn<QSize>("screen");
    QTest::newRow("1024x700") << QSize(1024, 700);
    QTest::newRow("1366x768") << QSize(1366, 768);
    QTest::newRow("1920x1080") << QSize(1920, 1080);
    QTest::newRow("1920x1080 at 150 %") << QSize(1280, 720);
}

void MainWindowSizesTest::showOn(const QSize& screen)
{
    stage_->window().resize(screen - kFrame);
    QVERIFY(stage_->showWindow());
    QTRY_COMPARE(stage_->window().size(), screen - kFrame);
    QApplication::processEvents();
}

void MainWindowSizesTest::nothingIsCutAndNothingLiesOverAnother_data()
{
    addScreens();
}

void MainWindowSizesTest::nothingIsCutAndNothingLiesOverAnother()
{
    QFETCH(QSize, screen);
    showOn(screen);
    QVERIFY(LayoutFaults::controlsOf(stage_->window()).size() > 60);
    QCOMPARE(LayoutFaults::of(stage_->window()).join("; "), QString());
}

void MainWindowSizesTest::theSectionThatIsUsedMostIsInSight_data()
{
    addScreens();
}

void MainWindowSizesTest::theSectionThatIsUsedMostIsInSight()
{
    QFETCH(QSize, screen);
    showOn(screen);
    QCOMPARE(cards().size(), 4);
    QVERIFY(isWhole(*cards().at(0)));
    QVERIFY(isWhole(*cards().at(1)));
    QVERIFY(isWhole(*panel().findChild<QSlider*>()));
}

void MainWindowSizesTest::everySectionCanBeScrolledTo()
{
    showOn(QSize(1024, 700));
    QScrollArea& area = areaOf(*cards().first()->parentWidget());
    for (QFrame* card : cards()) {
        area.ensureWidgetVisible(card, 0, 0);
        QVERIFY(isWhole(*card));
    }
}

void MainWindowSizesTest::thePanelOfTheTrackScrollsOnALowScreen()
{
    showOn(QSize(1024, 700));
    QScrollBar& bar = *areaOf(panel()).verticalScrollBar();
    QVERIFY(bar.maximum() > 0);
    bar.setValue(bar.maximum());
    QVERIFY(isWhole(*Widgets::withText<QPushButton>(panel(), "Probar otra variación")));
    // The column around both does not scroll as well.
    QCOMPARE(areaOf(*browser().parentWidget()).verticalScrollBar()->maximum(), 0);
}

void MainWindowSizesTest::thePanelOfTheTrackIsNoHigherThanItsRows()
{
    showOn(QSize(1920, 1080));
    QCOMPARE(areaOf(panel()).verticalScrollBar()->maximum(), 0);
    QCOMPARE(areaOf(panel()).height(), panel().sizeHint().height());
    const int before = areaOf(panel()).height();
    stage_->song().audioTracks = {voiceTrack({clip("a.wav", 0, 4)})};
    stage_->window().snapshotAndRefresh();
    stage_->window().findChild<TrackArranger*>()->selectAudioTrack(0);
    QTRY_VERIFY(areaOf(panel()).height() < before);
    QCOMPARE(areaOf(panel()).height(), panel().sizeHint().height());
}

void MainWindowSizesTest::aVariantInTheWayTakesNoMoreThanItsShare()
{
    TestRhythm many{.id = "many",
                    .name = "Many",
                    .style = "popular",
                    .layers = {layerOf("flauta", "many", "Flauta")}};
    for (int variant = 1; variant <= 60; ++variant)
        many.variants.append(variantOf("flauta", LoopSection::Normal, variant));
    writeBytes(stage_->home().filePath("resources/loops/installed/many.content.json"),
               many.package());
    showOn(QSize(1024, 700));
    auto* rhythms = browser().findChildren<QComboBox*>().at(1);
    rhythms->setCurrentIndex(rhythms->findData("many"));
    QApplication::processEvents();
    QCOMPARE(cards().size(), 1);
    QVERIFY(isWhole(*panel().findChild<QSlider*>()));
    QCOMPARE(LayoutFaults::of(stage_->window()).join("; "), QString());
}

void MainWindowSizesTest::longNamesMakeNothingWider()
{
    const QString rhythm = longName("Ritmo");
    TestRhythm wide{.id = "wide",
                    .name = rhythm,
                    .style = "ancho",
                    .layers = {layerOf("flauta", "wide", longName("Capa"))},
                    .variants = {variantOf("flauta", LoopSection::Normal, 1)}};
    writeBytes(stage_->home().filePath("resources/loops/installed/wide.content.json"),
               wide.package().replace("\"ANCHO\"", '"' + longName("Estilo").toUtf8() + '"'));
    showOn(QSize(1024, 700));
    const int before = stage_->window().minimumSizeHint().width();
    Project work;
    work.name = longName("Obra");
    work.tracks = {melodyTrack({melody({note(60, 0.0)})}),
                   loopTrack({loop("wide", "flauta", 0, 4)})};
    for (Track& track : work.tracks)
        track.name = longName("Velta");
    work.audioTracks = {voiceTrack({clip("a.wav", 0, 4)})};
    work.audioTracks[0].name = longName("Voz");
    QVERIFY(stage_->saveWork("larga", work));
    stage_->window().openProject("larga");
    QCOMPARE(stage_->song().name, work.name);
    auto boxes = browser().findChildren<QComboBox*>();
    boxes.first()->setCurrentIndex(boxes.first()->findText(longName("Estilo")));
    QCOMPARE(boxes.at(1)->currentText(), rhythm + " (4/4)");
    stage_->window().statusBar()->showMessage(longName("Mensaje"));
    stage_->engine().setPlayheadBeat(4.0 * 100000);
    QApplication::processEvents();
    QCOMPARE(stage_->window().size(), QSize(1024, 700) - kFrame);
    QTRY_COMPARE(LayoutFaults::of(stage_->window()).join("; "), QString());
    // Only the place of the playhead may grow, for whole digits.
    QVERIFY(stage_->window().minimumSizeHint().width() <= before + 60);

    stage_->window().findChild<TrackArranger*>()->selectAudioTrack(0);
    QApplication::processEvents();
    QCOMPARE(stage_->window().size(), QSize(1024, 700) - kFrame);
    QTRY_COMPARE(LayoutFaults::of(stage_->window()).join("; "), QString());
}

void MainWindowSizesTest::aLongCaptionTellsTrackAndKey()
{
    showOn(QSize(1024, 700));
    stage_->song().tracks[0].name = longName("Velta");
    stage_->window().snapshotAndRefresh();
    const auto labels = stage_->window().findChildren<QLabel*>();
    const auto caption = std::ranges::find_if(
        labels, [](const QLabel* label) { return label->text().contains("Do mayor"); });
    QVERIFY(caption != labels.end());
    QVERIFY((*caption)->width() < (*caption)->sizeHint().width());
    const QImage before = (*caption)->grab().toImage();
    stage_->song().keySignature.mode = KeyMode::Minor;
    stage_->window().snapshotAndRefresh();
    QVERIFY((*caption)->grab().toImage() != before);
}

VELTA_TEST(MainWindowSizesTest)

} // namespace MainWindowSizesTests

#include "MainWindowSizesTest.moc"
