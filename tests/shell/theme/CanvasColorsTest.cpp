#include "shell/theme/CanvasColors.h"

#include "support/TestProgram.h"

#include <QApplication>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace CanvasColorsTests {

namespace {

QColor faint(const char* name, int alpha)
{
    QColor color(name);
    color.setAlpha(alpha);
    return color;
}

/// A view as the arranger is one: it asks for the colours of the lanes each time that it paints,
/// and its blocks have a colour of their own.
class Lanes : public QGraphicsView {
public:
    Lanes() : QGraphicsView(new QGraphicsScene(0, 0, 100, 100))
    {
        scene()->setParent(this);
        scene()->addRect(0, 0, 40, 40, Qt::NoPen, kDegreeColors[4]);
        setFrameShape(QFrame::NoFrame);
        resize(100, 100);
    }

    QColor painted(const QPoint& point)
    {
        QImage image(size(), QImage::Format_RGB32);
        QWidget::render(&image);
        return image.pixelColor(point);
    }

protected:
    void drawBackground(QPainter* painter, const QRectF& rect) override
    {
        painter->fillRect(rect, canvasColors().laneOdd);
    }
};

} // namespace

class CanvasColorsTest : public QObject {
    Q_OBJECT

private slots:
    void areThereBeforeAnythingElse();
    void everyColorOfTheRecord_data();
    void everyColorOfTheRecord();
    void theRecordHasTwentyTwoColors();
    void followTheTheme();
    void colorsOfBlocks_data();
    void colorsOfBlocks();
    void colorsOfDegreesFollowTheirNumbers();
    void colorsOfTracksFollowTheirOrder();
    void aChordKeepsItsColorAndTheLanesBehindItChange();

private:
    QTemporaryDir dir_;
};

// The first of all, in a process that has not asked for the theme yet.
void CanvasColorsTest::areThereBeforeAnythingElse()
{
    QCOMPARE(canvasColors().laneOdd, QColor("#ebf0e4"));
    qputenv("XDG_CONFIG_HOME", dir_.path().toUtf8());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir_.path());
}

void CanvasColorsTest::everyColorOfTheRecord_data()
{
    using Field = QColor CanvasColors::*;
    QTest::addColumn<Field>("field");
    QTest::addColumn<QColor>("light");
    QTest::addColumn<QColor>("dark");
    const auto row = [](const char* name, Field field, const QColor& light, const QColor& dark) {
        QTest::newRow(name) << field << light << dark;
    };
    using C = CanvasColors;
    row("canvasBackground", &C::canvasBackground, "#fafbf7", "#151a0f");
    row("outOfScaleFill", &C::outOfScaleFill, faint("#000000", 14), faint("#000000", 70));
    row("rowLine", &C::rowLine, faint("#000000", 24), faint("#ffffff", 22));
    row("subdivisionLine", &C::subdivisionLine, faint("#000000", 26), faint("#ffffff", 24));
    row("beatLine", &C::beatLine, faint("#000000", 70), faint("#ffffff", 60));
    row("barLine", &C::barLine, faint("#000000", 150), faint("#ffffff", 130));
    row("noteFill", &C::noteFill, "#7cb342", "#7cb342");
    row("noteOutline", &C::noteOutline, "#2e5214", "#dcedc8");
    row("noteSelected", &C::noteSelected, "#9ccc65", "#dcedc8");
    row("playhead", &C::playhead, "#4a7325", "#9ccc65");
    row("keyWhite", &C::keyWhite, "#ffffff", "#e6eae0");
    row("keyBlack", &C::keyBlack, "#303030", "#1a1a1a");
    row("keyLine", &C::keyLine, "#c0c0c0", "#969e8c");
    row("keyText", &C::keyText, "#606060", "#4c5244");
    row("arrangerBackground", &C::arrangerBackground, "#eff3e9", "#11160b");
    row("laneOdd", &C::laneOdd, "#ebf0e4", "#1b2113");
    row("laneEven", &C::laneEven, "#f5f8f1", "#14190e");
    row("laneHarmony", &C::laneHarmony, "#e4ecd7", "#253016");
    row("laneSeparator", &C::laneSeparator, faint("#000000", 40), faint("#ffffff", 36));
    row("headerBackground", &C::headerBackground, "#e0e8d4", "#14190c");
    row("headerText", &C::headerText, "#2e5214", "#c9e0b0");
    row("rulerTick", &C::rulerTick, faint("#4a7325", 90), faint("#9ccc65", 120));
}

void CanvasColorsTest::everyColorOfTheRecord()
{
    using Field = QColor CanvasColors::*;
    QFETCH(Field, field);
    QTEST(kLightCanvas.*field, "light");
    QTEST(kDarkCanvas.*field, "dark");
}

void CanvasColorsTest::theRecordHasTwentyTwoColors()
{
    QCOMPARE(sizeof(CanvasColors), 22 * sizeof(QColor));
}

void CanvasColorsTest::followTheTheme()
{
    ThemeManager::instance()->setDark(true);
    QCOMPARE(canvasColors(), kDarkCanvas);
    ThemeManager::instance()->setDark(false);
    QCOMPARE(canvasColors(), kLightCanvas);
}

void CanvasColorsTest::colorsOfBlocks_data()
{
    QTest::addColumn<QColor>("color");
    QTest::addColumn<QColor>("expected");
    QTest::newRow("kLaneSelected") << kLaneSelected << QColor("#4a7325");
    QTest::newRow("kLaneSelectedAlt") << kLaneSelectedAlt << QColor("#55842a");
    QTest::newRow("kVeltaAccent") << kVeltaAccent << QColor("#7cb342");
    QTest::newRow("kMelodyBlock") << kMelodyBlock << QColor("#4a7325");
    QTest::newRow("kLoopBlock") << kLoopBlock << QColor("#00695c");
    QTest::newRow("kAudioBlock") << kAudioBlock << QColor("#c2185b");
}

void CanvasColorsTest::colorsOfBlocks()
{
    QFETCH(QColor, color);
    QTEST(color, "expected");
}

void CanvasColorsTest::colorsOfDegreesFollowTheirNumbers()
{
    const QList<QColor> expected = {"#e53935", "#f9a825", "#fdd835", "#43a047",
                                    "#1e88e5", "#5e35b1", "#8d6e63"};
    QCOMPARE(QList<QColor>(kDegreeColors.begin(), kDegreeColors.end()), expected);
}

void CanvasColorsTest::colorsOfTracksFollowTheirOrder()
{
    const QList<QColor> expected = {"#1e88e5", "#43a047", "#f9a825",
                                    "#e53935", "#00897b", "#8d6e63"};
    QCOMPARE(QList<QColor>(kTrackColors.begin(), kTrackColors.end()), expected);
}

void CanvasColorsTest::aChordKeepsItsColorAndTheLanesBehindItChange()
{
    Lanes lanes;
    const QPoint chord(10, 10);
    const QPoint lane(70, 70);
    ThemeManager::instance()->setDark(false);
    QCOMPARE(lanes.painted(chord), QColor("#1e88e5"));
    QCOMPARE(lanes.painted(lane), QColor("#ebf0e4"));
    ThemeManager::instance()->setDark(true);
    QCOMPARE(lanes.painted(chord), QColor("#1e88e5"));
    QCOMPARE(lanes.painted(lane), QColor("#1b2113"));
}

VELTA_TEST(CanvasColorsTest)

} // namespace CanvasColorsTests

#include "CanvasColorsTest.moc"
