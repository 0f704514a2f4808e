#include "views/pianoroll/PianoKeyboardWidget.h"

#include "PianoRollStage.h"
#include "shell/theme/CanvasColors.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"

#include <QPainter>

namespace PianoKeyboardWidgetTests {

using namespace ProjectBuilder;

namespace {

const QList<int> kBlackPitchClasses{1, 3, 6, 8, 10};

bool isBlack(int pitch)
{
    return kBlackPitchClasses.contains(pitch % 12);
}

/// What the keys say while the mouse is on them: "on 60" and "off 60".
class Listener {
public:
    explicit Listener(PianoKeyboardWidget* keyboard)
    {
        QObject::connect(keyboard, &PianoKeyboardWidget::keyPressed, &context_,
                         [this](int pitch) { said_.append("on " + QString::number(pitch)); });
        QObject::connect(keyboard, &PianoKeyboardWidget::keyReleased, &context_,
                         [this](int pitch) { said_.append("off " + QString::number(pitch)); });
    }

    const QStringList& said() const { return said_; }

private:
    QObject context_;
    QStringList said_;
};

/// Whether a row of a picture holds ink inside an area.
bool hasInk(const QImage& image, const QRect& area, const QColor& ground)
{
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            if (!isNear(image.pixelColor(x, y), ground, 30))
                return true;
        }
    }
    return false;
}

} // namespace

class PianoKeyboardWidgetTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void widthHoldsTheWidestName();
    void pitchesFollowTheView_data();
    void pitchesFollowTheView();
    void stripBelowTheLowestRowHasNoPitch();
    void keysStandInLineWithTheRows_data();
    void keysStandInLineWithTheRows();

    void pressAndReleasePlayAKey();
    void everyKeyPlaysItsPitch();
    void otherButtonsPlayNothing_data();
    void otherButtonsPlayNothing();
    void dragPlaysAGlissando();
    void dragInsideAKeyPlaysItOnce();
    void noteOutsideTheKeysStaysHeld();
    void releaseOutsideTheWidgetEndsTheNote();
    void secondClickOfADoubleClickPlays();
    void pressBelowTheLowestRowPlaysNothing();
    void anotherProjectEndsTheNote();

    void wheelScrollsRows();
    void wheelDoesNotZoom();

    void keysHaveTheirColors_data();
    void keysHaveTheirColors();
    void blackKeysAreShorter();
    void whiteKeysMeetInTheMiddleOfABlackOne();
    void rightEdgeIsALine();
    void namesAreLettersAndSolfege_data();
    void namesAreLettersAndSolfege();
    void namesOfFewRowsAreFourteenPixels();
    void seventyThreeRowsHaveNoNames();
    void wideNamesFallBackToSolfege();

private:
    PianoKeyboardWidget& keyboard() const { return *stage_->canvas.keyboard(); }

    /// In the middle of a key, in the widget.
    QPoint key(int pitch) const { return {10, stage_->at(0.0, pitch).y()}; }

    /// The picture of a name as the keys ought to write it, on a ground.
    QImage nameOn(const QColor& ground, const QRect& area, const QRectF& place, const QString& name,
                  const QColor& ink, int pixels) const;

    UserHome home_;
    std::unique_ptr<PianoRollStage> stage_;
};

void PianoKeyboardWidgetTest::init()
{
    ThemeManager::instance()->setDark(false);
    qApp->setStyleSheet(QString());
    stage_ = std::make_unique<PianoRollStage>();
}

void PianoKeyboardWidgetTest::cleanup()
{
    stage_.reset();
}

// ---- Geometry ------------------------------------------------------------------------------

void PianoKeyboardWidgetTest::widthHoldsTheWidestName()
{
    QFont font = keyboard().font();
    font.setPixelSize(14);
    const int widest = QFontMetrics(font).horizontalAdvance("G# / Sol#");
    QCOMPARE(keyboard().blackKeyWidth(), widest + 9);
    QCOMPARE(keyboard().width(), widest + 39);
    QCOMPARE(keyboard().minimumWidth(), keyboard().maximumWidth());
    QVERIFY(keyboard().autoFillBackground());
}

void PianoKeyboardWidgetTest::pitchesFollowTheView_data()
{
    QTest::addColumn<int>("top");
    QTest::addColumn<int>("rows");

    QTest::newRow("usual") << 72 << 13;
    QTest::newRow("scrolled") << 90 << 13;
    QTest::newRow("few rows") << 60 << 8;
    QTest::newRow("all rows") << 96 << 73;
}

void PianoKeyboardWidgetTest::pitchesFollowTheView()
{
    QFETCH(int, top);
    QFETCH(int, rows);
    while (stage_->canvas.rows()->visibleRows() != rows)
        stage_->canvas.rows()->zoomVertical(stage_->canvas.rows()->visibleRows() > rows ? 2.0
                                                                                        : 0.5);
    stage_->canvas.rows()->scrollToTopPitch(top, false);
    for (int pitch = top; pitch > top - rows; --pitch)
        QCOMPARE(keyboard().pitchAtY(key(pitch).y()), pitch);
}

void PianoKeyboardWidgetTest::stripBelowTheLowestRowHasNoPitch()
{
    stage_->canvas.rows()->scrollToTopPitch(36, false);
    QCOMPARE(keyboard().pitchAtY(PianoRollStage::kGridHeight - 1), 24);
    QCOMPARE(keyboard().pitchAtY(PianoRollStage::kGridHeight), -1);
    stage_->canvas.rows()->scrollToTopPitch(96, false);
    QCOMPARE(keyboard().pitchAtY(-1), -1);
}

void PianoKeyboardWidgetTest::keysStandInLineWithTheRows_data()
{
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("height");

    QTest::newRow("rows of whole pixels") << 13 << 600;
    QTest::newRow("rows of parts of pixels") << 17 << 643;
    QTest::newRow("low rows") << 73 << 571;
}

void PianoKeyboardWidgetTest::keysStandInLineWithTheRows()
{
    QFETCH(int, rows);
    QFETCH(int, height);
    stage_->canvas.resize(900, height);
    while (stage_->canvas.rows()->visibleRows() < rows)
        stage_->canvas.rows()->zoomVertical(0.5);
    QCoreApplication::processEvents();
    const QImage keys = painted(&keyboard());
    const QImage grid = painted(stage_->grid());
    // Behind the notes, and beside all lines of time.
    const int x = qRound(64.0 * 6.1);
    const QColor rowOfTheKey = canvasColors().canvasBackground;
    int blackRows = 0;
    for (int y = 0; y < grid.height(); ++y) {
        const bool black = isNear(keys.pixelColor(1, y), canvasColors().keyBlack);
        // In C major what is out of the key is a black key.
        const QColor behind = grid.pixelColor(x, y);
        const bool lineOfTheRow =
            isNear(behind, over(canvasColors().rowLine, rowOfTheKey), 3) && !black;
        QVERIFY2(black != (isNear(behind, rowOfTheKey) || lineOfTheRow),
                 qPrintable(QString::number(y)));
        blackRows += black ? 1 : 0;
    }
    QVERIFY(blackRows > 100);
}

// ---- Mouse ---------------------------------------------------------------------------------

void PianoKeyboardWidgetTest::pressAndReleasePlayAKey()
{
    const Listener listener(&keyboard());
    QCOMPARE(keyboard().pressedPitch(), -1);
    QTest::mousePress(&keyboard(), Qt::LeftButton, {}, key(64));
    QCOMPARE(keyboard().pressedPitch(), 64);
    QTest::mouseRelease(&keyboard(), Qt::LeftButton, {}, key(64));
    QCOMPARE(keyboard().pressedPitch(), -1);
    QCOMPARE(listener.said(), QStringList({"on 64", "off 64"}));
}

void PianoKeyboardWidgetTest::everyKeyPlaysItsPitch()
{
    const Listener listener(&keyboard());
    QStringList expected;
    for (int pitch = 60; pitch <= 72; ++pitch) {
        QTest::mouseClick(&keyboard(), Qt::LeftButton, {}, key(pitch));
        expected += {"on " + QString::number(pitch), "off " + QString::number(pitch)};
    }
    QCOMPARE(listener.said(), expected);
}

void PianoKeyboardWidgetTest::otherButtonsPlayNothing_data()
{
    QTest::addColumn<Qt::MouseButton>("button");

    QTest::newRow("right") << Qt::RightButton;
    QTest::newRow("middle") << Qt::MiddleButton;
}

void PianoKeyboardWidgetTest::otherButtonsPlayNothing()
{
    QFETCH(Qt::MouseButton, button);
    const Listener listener(&keyboard());
    QTest::mouseClick(&keyboard(), button, {}, key(64));
    QVERIFY(listener.said().isEmpty());
}

void PianoKeyboardWidgetTest::dragPlaysAGlissando()
{
    const Listener listener(&keyboard());
    QTest::mousePress(&keyboard(), Qt::LeftButton, {}, key(60));
    QTest::mouseMove(&keyboard(), key(61));
    QTest::mouseMove(&keyboard(), key(63));
    QTest::mouseRelease(&keyboard(), Qt::LeftButton, {}, key(63));
    QCOMPARE(listener.said(),
             QStringList({"on 60", "off 60", "on 61", "off 61", "on 63", "off 63"}));
}

void PianoKeyboardWidgetTest::dragInsideAKeyPlaysItOnce()
{
    const Listener listener(&keyboard());
    QTest::mousePress(&keyboard(), Qt::LeftButton, {}, key(60));
    QTest::mouseMove(&keyboard(), key(60) + QPoint(40, 5));
    QTest::mouseRelease(&keyboard(), Qt::LeftButton, {}, key(60));
    QCOMPARE(listener.said(), QStringList({"on 60", "off 60"}));
}

void PianoKeyboardWidgetTest::noteOutsideTheKeysStaysHeld()
{
    stage_->canvas.rows()->scrollToTopPitch(96, false);
    const Listener listener(&keyboard());
    QTest::mousePress(&keyboard(), Qt::LeftButton, {}, key(96));
    QTest::mouseMove(&keyboard(), QPoint(10, -20));
    QCOMPARE(keyboard().pressedPitch(), 96);
    QCOMPARE(listener.said(), QStringList({"on 96"}));
    QTest::mouseMove(&keyboard(), key(95));
    QCOMPARE(listener.said(), QStringList({"on 96", "off 96", "on 95"}));
}

void PianoKeyboardWidgetTest::releaseOutsideTheWidgetEndsTheNote()
{
    const Listener listener(&keyboard());
    QTest::mousePress(&keyboard(), Qt::LeftButton, {}, key(60));
    QTest::mouseRelease(&keyboard(), Qt::LeftButton, {}, QPoint(700, 5000));
    QCOMPARE(listener.said(), QStringList({"on 60", "off 60"}));
}

void PianoKeyboardWidgetTest::secondClickOfADoubleClickPlays()
{
    const Listener listener(&keyboard());
    QTest::mouseClick(&keyboard(), Qt::LeftButton, {}, key(60));
    QTest::mouseDClick(&keyboard(), Qt::LeftButton, {}, key(60));
    QTest::mouseRelease(&keyboard(), Qt::LeftButton, {}, key(60));
    QCOMPARE(listener.said(), QStringList({"on 60", "off 60", "on 60", "off 60"}));
}

void PianoKeyboardWidgetTest::pressBelowTheLowestRowPlaysNothing()
{
    stage_->canvas.rows()->scrollToTopPitch(36, false);
    const Listener listener(&keyboard());
    QTest::mouseClick(&keyboard(), Qt::LeftButton, {}, QPoint(10, PianoRollStage::kGridHeight + 2));
    QVERIFY(listener.said().isEmpty());
}

void PianoKeyboardWidgetTest::anotherProjectEndsTheNote()
{
    const Listener listener(&keyboard());
    QTest::mousePress(&keyboard(), Qt::LeftButton, {}, key(60));
    Project other;
    stage_->canvas.setContext(&other, nullptr);
    QCOMPARE(listener.said(), QStringList({"on 60", "off 60"}));
    QTest::mouseRelease(&keyboard(), Qt::LeftButton, {}, key(60));
    QCOMPARE(listener.said(), QStringList({"on 60", "off 60"}));
    stage_->canvas.setContext(nullptr, nullptr);
}

// ---- Wheel ---------------------------------------------------------------------------------

void PianoKeyboardWidgetTest::wheelScrollsRows()
{
    PianoRollStage::turnWheel(&keyboard(), QPoint(0, 240));
    QCOMPARE(stage_->canvas.rows()->topPitch(), 74);
    PianoRollStage::turnWheel(&keyboard(), QPoint(0, -120));
    QCOMPARE(stage_->canvas.rows()->topPitch(), 73);
}

void PianoKeyboardWidgetTest::wheelDoesNotZoom()
{
    PianoRollStage::turnWheel(&keyboard(), QPoint(0, 120), Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(stage_->canvas.rows()->visibleRows(), 13);
    QCOMPARE(stage_->canvas.rows()->zoomX(), 1.0);
    QCOMPARE(stage_->canvas.rows()->topPitch(), 73);
}

// ---- Painting ------------------------------------------------------------------------------

void PianoKeyboardWidgetTest::keysHaveTheirColors_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QColor>("white");
    QTest::addColumn<QColor>("black");

    QTest::newRow("light") << false << QColor(0xff, 0xff, 0xff) << QColor(0x30, 0x30, 0x30);
    QTest::newRow("dark") << true << QColor(0xe6, 0xea, 0xe0) << QColor(0x1a, 0x1a, 0x1a);
}

void PianoKeyboardWidgetTest::keysHaveTheirColors()
{
    QFETCH(bool, dark);
    QFETCH(QColor, white);
    QFETCH(QColor, black);
    ThemeManager::instance()->setDark(dark);
    const QImage image = painted(&keyboard());
    for (int pitch = 60; pitch <= 72; ++pitch)
        COMPARE_COLOR(image.pixelColor(1, key(pitch).y()), isBlack(pitch) ? black : white);
}

void PianoKeyboardWidgetTest::blackKeysAreShorter()
{
    const QImage image = painted(&keyboard());
    const int end = keyboard().blackKeyWidth();
    const int y = key(61).y() - 6;
    COMPARE_COLOR(image.pixelColor(end - 1, y), QColor(0x30, 0x30, 0x30));
    COMPARE_COLOR(image.pixelColor(end, y), QColor(0xff, 0xff, 0xff));
    const int top = key(61).y() - 16;
    COMPARE_COLOR(image.pixelColor(5, top), QColor(0x30, 0x30, 0x30));
    COMPARE_COLOR(image.pixelColor(5, top + 31), QColor(0x30, 0x30, 0x30));
    COMPARE_COLOR(image.pixelColor(5, top - 1), QColor(0xff, 0xff, 0xff));
    COMPARE_COLOR(image.pixelColor(5, top + 32), QColor(0xff, 0xff, 0xff));
}

void PianoKeyboardWidgetTest::whiteKeysMeetInTheMiddleOfABlackOne()
{
    const QImage image = painted(&keyboard());
    const QColor line(0xc0, 0xc0, 0xc0);
    // Right of the names.
    const int beside = keyboard().width() - 4;
    QList<int> lines;
    for (int y = 1; y < PianoRollStage::kGridHeight; ++y) {
        if (isNear(image.pixelColor(beside, y), line))
            lines.append(y);
    }
    // Rows of 32 pixels from C5 down: C5|B, then the middles of A#, G# and F#, F|E, D# and C#.
    QCOMPARE(lines, QList<int>({32, 80, 144, 208, 256, 304, 368}));
}

void PianoKeyboardWidgetTest::rightEdgeIsALine()
{
    const QImage image = painted(&keyboard());
    for (int y = 0; y < image.height(); y += 7)
        COMPARE_COLOR(image.pixelColor(image.width() - 1, y), QColor(0xc0, 0xc0, 0xc0));
    COMPARE_COLOR(image.pixelColor(image.width() - 2, 3), QColor(0xff, 0xff, 0xff));
}

QImage PianoKeyboardWidgetTest::nameOn(const QColor& ground, const QRect& area, const QRectF& place,
                                       const QString& name, const QColor& ink, int pixels) const
{
    QImage image(keyboard().size(), QImage::Format_RGB32);
    image.fill(ground);
    QPainter painter(&image);
    QFont font = keyboard().font();
    font.setPixelSize(pixels);
    painter.setFont(font);
    painter.setPen(ink);
    painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, name);
    return image.copy(area);
}

void PianoKeyboardWidgetTest::namesAreLettersAndSolfege_data()
{
    QTest::addColumn<int>("pitch");
    QTest::addColumn<QString>("name");

    QTest::newRow("C has its octave") << 60 << "C / Do4";
    QTest::newRow("the next one too") << 72 << "C / Do5";
    QTest::newRow("D") << 62 << "D / Re";
    QTest::newRow("A") << 69 << "A / La";
    QTest::newRow("C#") << 61 << "C# / Do#";
    QTest::newRow("A#") << 70 << "A# / La#";
}

void PianoKeyboardWidgetTest::namesAreLettersAndSolfege()
{
    QFETCH(int, pitch);
    QFETCH(QString, name);
    const double top = key(pitch).y() - 16;
    const int end = keyboard().blackKeyWidth();
    const QRectF place =
        isBlack(pitch) ? QRectF(3, top, end - 9, 32) : QRectF(4, top, keyboard().width() - 10, 32);
    const QRect area(2, qRound(top) + 4, isBlack(pitch) ? end - 4 : keyboard().width() - 4, 24);
    const QImage expected =
        isBlack(pitch) ? nameOn(QColor(0x30, 0x30, 0x30), area, place, name, Qt::white, 14)
                       : nameOn(Qt::white, area, place, name, QColor(0x60, 0x60, 0x60), 14);
    QCOMPARE(painted(&keyboard()).copy(area), expected);
}

void PianoKeyboardWidgetTest::namesOfFewRowsAreFourteenPixels()
{
    for (int i = 0; i < 10; ++i)
        stage_->canvas.rows()->zoomVertical(2.0);
    QCOMPARE(stage_->canvas.rows()->visibleRows(), 8);
    const double top = key(69).y() - 26;
    const QRect area(2, qRound(top) + 8, keyboard().width() - 4, 36);
    QCOMPARE(painted(&keyboard()).copy(area),
             nameOn(Qt::white, area, QRectF(4, top, keyboard().width() - 10, 52), "A / La",
                    QColor(0x60, 0x60, 0x60), 14));
}

void PianoKeyboardWidgetTest::seventyThreeRowsHaveNoNames()
{
    for (int i = 0; i < 70; ++i)
        stage_->canvas.rows()->zoomVertical(0.5);
    QCOMPARE(stage_->canvas.rows()->visibleRows(), 73);
    const QImage image = painted(&keyboard());
    const int end = keyboard().blackKeyWidth();
    QSet<QRgb> colors;
    for (int y = 0; y < PianoRollStage::kGridHeight; ++y) {
        for (int x = 0; x < image.width(); ++x)
            colors.insert(image.pixel(x, y));
    }
    // The keys still stand.
    QCOMPARE(colors, (QSet<QRgb>{QColor(0xff, 0xff, 0xff).rgb(), QColor(0x30, 0x30, 0x30).rgb(),
                                 QColor(0xc0, 0xc0, 0xc0).rgb()}));
    QVERIFY(hasInk(image, QRect(1, 0, end - 2, PianoRollStage::kGridHeight), Qt::white));
}

void PianoKeyboardWidgetTest::wideNamesFallBackToSolfege()
{
    // Wide letters that the widget was not measured with.
    QFont font = keyboard().font();
    font.setStretch(200);
    keyboard().setFont(font);
    const double top = key(68).y() - 16;
    const int end = keyboard().blackKeyWidth();
    const QRect area(2, qRound(top) + 4, end - 4, 24);
    QCOMPARE(
        painted(&keyboard()).copy(area),
        nameOn(QColor(0x30, 0x30, 0x30), area, QRectF(3, top, end - 9, 32), "Sol#", Qt::white, 14));
}

VELTA_TEST(PianoKeyboardWidgetTest)

} // namespace PianoKeyboardWidgetTests

#include "PianoKeyboardWidgetTest.moc"
