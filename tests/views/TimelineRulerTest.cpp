#include "views/TimelineRuler.h"

#include "model/Project.h"
#include "shell/theme/ThemeManager.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"

#include <QApplication>
#include <QPainter>
#include <QSignalSpy>

#include <limits>
#include <memory>

namespace TimelineRulerTests {

using namespace ProjectBuilder;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

constexpr TimeSignature simple(int numerator, int denominator)
{
    return {.numerator = numerator, .denominator = denominator, .isCompound = false};
}

constexpr TimeSignature compound(int numerator, int denominator)
{
    return {.numerator = numerator, .denominator = denominator, .isCompound = true};
}

/// The columns of a row that are of a color, or as good as.
QList<int> columnsOf(const QImage& image, int y, const QColor& color)
{
    QList<int> columns;
    for (int x = 0; x < image.width(); ++x) {
        if (isNear(image.pixelColor(x, y), color))
            columns.append(x);
    }
    return columns;
}

/// The widest runs of columns, told by their middles in order: a line of two pixels at x covers
/// the columns left and right of it.
QList<int> linesOf(const QList<int>& columns)
{
    QList<int> lines;
    for (qsizetype i = 0; i + 1 < columns.size(); ++i) {
        if (columns[i + 1] == columns[i] + 1)
            lines.append(columns[i + 1]);
    }
    return lines;
}

constexpr QColor kPaper(0xe0, 0xe8, 0xd4);
constexpr QColor kBarColor(0x2e, 0x52, 0x14);
constexpr QColor kTickColor(0x4a, 0x73, 0x25, 90);
constexpr QColor kPlayheadColor(0x4a, 0x73, 0x25);

/// A row between the numbers of the bars and those of the beats, which lines of bars cross.
constexpr int kBarRow = 18;
/// The first row that ticks reach.
constexpr int kTickTop = 22;

} // namespace

class TimelineRulerTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void startsWithoutAProject();
    void isThirtyFourPixelsHigh();
    void beatAtAPixel_data();
    void beatAtAPixel();
    void pixelOfABeat_data();
    void pixelOfABeat();

    void clicksSeek_data();
    void clicksSeek();
    void onlyTheLeftButtonSeeks();
    void withoutAProjectNothingIsSought();
    void seekingWithoutAScaleIsHarmless();
    void seekingInADamagedMeter_data();
    void seekingInADamagedMeter();

    void withoutAProjectIsAnEmptyStrip();
    void withoutAScaleIsAnEmptyStrip();
    void barsStandWhereTheyBelong_data();
    void barsStandWhereTheyBelong();
    void barLinesRunFromTopToBottom();
    void ticksAreTwelvePixelsHigh();
    void pulsesStandWhereTheyBelong_data();
    void pulsesStandWhereTheyBelong();
    void barNumbersCountFromOne_data();
    void barNumbersCountFromOne();
    void pulseNumbersCountFromOne_data();
    void pulseNumbersCountFromOne();
    void marginHidesWhatIsLeftOfIt();
    void numbersRunIntoEachOtherFarOut();
    void colorsFollowTheTheme();

    void playheadIsALineOfTwoPixels();
    void playheadMovesAndScrolls_data();
    void playheadMovesAndScrolls();
    void playheadWithoutAPlaceIsNotDrawn_data();
    void playheadWithoutAPlaceIsNotDrawn();

    void damagedMetersArePaintedInTime_data();
    void damagedMetersArePaintedInTime();
    void everyMeterIsPainted();

private:
    QImage image() { return painted(ruler_.get()); }

    /// The picture of a number as the ruler ought to write it.
    QImage number(const QString& text, const QPoint& place, bool bold) const;

    UserHome home_;
    std::unique_ptr<Project> song_;
    std::unique_ptr<TimelineRuler> ruler_;
};

void TimelineRulerTest::init()
{
    ThemeManager::instance()->setDark(false);
    song_ = project();
    ruler_ = std::make_unique<TimelineRuler>();
    ruler_->resize(400, 34);
    ruler_->setProject(song_.get());
    ruler_->setViewport(0.0, 32.0, 0);
    // Out of the way.
    ruler_->setPlayheadBeat(1000.0);
}

// ---- Geometry ------------------------------------------------------------------------------

void TimelineRulerTest::startsWithoutAProject()
{
    TimelineRuler ruler;
    QCOMPARE(ruler.viewport(), (RulerViewport{0.0, 48.0, 0}));
    QVERIFY(ruler.autoFillBackground());
}

void TimelineRulerTest::isThirtyFourPixelsHigh()
{
    QCOMPARE(ruler_->minimumHeight(), 34);
    QCOMPARE(ruler_->maximumHeight(), 34);
}

void TimelineRulerTest::beatAtAPixel_data()
{
    QTest::addColumn<double>("scroll");
    QTest::addColumn<double>("scale");
    QTest::addColumn<int>("margin");
    QTest::addColumn<int>("x");
    QTest::addColumn<double>("beat");

    QTest::newRow("left edge") << 0.0 << 32.0 << 0 << 0 << 0.0;
    QTest::newRow("one beat") << 0.0 << 32.0 << 0 << 32 << 1.0;
    QTest::newRow("between beats") << 0.0 << 32.0 << 0 << 80 << 2.5;
    QTest::newRow("scrolled") << 320.0 << 32.0 << 0 << 16 << 10.5;
    QTest::newRow("far out") << 0.0 << 6.4 << 0 << 64 << 10.0;
    QTest::newRow("close up, scrolled") << 96.0 << 192.0 << 0 << 96 << 1.0;
    QTest::newRow("right of a margin") << 0.0 << 32.0 << 64 << 96 << 1.0;
    QTest::newRow("left of the first beat") << 0.0 << 32.0 << 64 << 10 << 0.0;
    QTest::newRow("left of the ruler") << 0.0 << 32.0 << 0 << -500 << 0.0;
    QTest::newRow("left of the ruler, scrolled") << 320.0 << 32.0 << 0 << -32 << 9.0;
}

void TimelineRulerTest::beatAtAPixel()
{
    QFETCH(double, scroll);
    QFETCH(double, scale);
    QFETCH(int, margin);
    QFETCH(int, x);
    ruler_->setViewport(scroll, scale, margin);
    QTEST(ruler_->beatAtX(x), "beat");
}

void TimelineRulerTest::pixelOfABeat_data()
{
    QTest::addColumn<RulerViewport>("viewport");
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("x");

    QTest::newRow("first") << RulerViewport{0.0, 32.0, 0} << 0.0 << 0;
    QTest::newRow("third") << RulerViewport{0.0, 32.0, 0} << 2.0 << 64;
    QTest::newRow("rounded up") << RulerViewport{0.0, 36.8, 0} << 1.0 << 37;
    QTest::newRow("rounded down") << RulerViewport{0.0, 36.8, 0} << 3.0 << 110;
    QTest::newRow("half a pixel goes away from 0") << RulerViewport{0.0, 1.5, 0} << 1.0 << 2;
    QTest::newRow("scrolled") << RulerViewport{100.25, 32.0, 0} << 4.0 << 28;
    QTest::newRow("margin") << RulerViewport{0.0, 32.0, 50} << 1.0 << 82;
    QTest::newRow("left of the ruler") << RulerViewport{100.0, 32.0, 0} << 0.0 << -100;
}

void TimelineRulerTest::pixelOfABeat()
{
    QFETCH(RulerViewport, viewport);
    QFETCH(double, beat);
    QFETCH(int, x);
    QCOMPARE(viewport.xOfBeat(beat), x);
}

// ---- Clicks --------------------------------------------------------------------------------

void TimelineRulerTest::clicksSeek_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("x");
    QTest::addColumn<double>("beat");

    QTest::newRow("on a beat") << simple(4, 4) << 96 << 3.0;
    QTest::newRow("left edge") << simple(4, 4) << 0 << 0.0;
    QTest::newRow("back to the nearest beat") << simple(4, 4) << 79 << 2.0;
    QTest::newRow("half way goes on") << simple(4, 4) << 80 << 3.0;
    QTest::newRow("on to the nearest beat") << simple(4, 4) << 90 << 3.0;
    QTest::newRow("3/4") << simple(3, 4) << 115 << 4.0;
    QTest::newRow("6/8 on a pulse") << compound(6, 8) << 48 << 1.5;
    QTest::newRow("6/8 back to the pulse") << compound(6, 8) << 71 << 1.5;
    QTest::newRow("6/8 half way goes on") << compound(6, 8) << 72 << 3.0;
    QTest::newRow("6/8 near the start") << compound(6, 8) << 23 << 0.0;
    QTest::newRow("6/8 that is not marked as compound") << simple(6, 8) << 64 << 2.0;
}

void TimelineRulerTest::clicksSeek()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, x);
    QFETCH(double, beat);
    song_->timeSignature = meter;
    const QSignalSpy sought(ruler_.get(), &TimelineRuler::seekRequested);
    QTest::mouseClick(ruler_.get(), Qt::LeftButton, {}, QPoint(x, 20));
    QCOMPARE(sought.size(), 1);
    QCOMPARE(sought[0][0].toDouble(), beat);
}

void TimelineRulerTest::onlyTheLeftButtonSeeks()
{
    const QSignalSpy sought(ruler_.get(), &TimelineRuler::seekRequested);
    QTest::mouseClick(ruler_.get(), Qt::RightButton, {}, QPoint(96, 20));
    QTest::mouseClick(ruler_.get(), Qt::MiddleButton, {}, QPoint(96, 20));
    QTest::mouseMove(ruler_.get(), QPoint(50, 10));
    QCOMPARE(sought.size(), 0);
}

void TimelineRulerTest::withoutAProjectNothingIsSought()
{
    ruler_->setProject(nullptr);
    const QSignalSpy sought(ruler_.get(), &TimelineRuler::seekRequested);
    QTest::mouseClick(ruler_.get(), Qt::LeftButton, {}, QPoint(96, 20));
    QCOMPARE(sought.size(), 0);
}

void TimelineRulerTest::seekingWithoutAScaleIsHarmless()
{
    const QSignalSpy sought(ruler_.get(), &TimelineRuler::seekRequested);
    for (const double scale : {0.0, -0.0, kNaN}) {
        ruler_->setViewport(0.0, scale, 0);
        for (const int x : {0, 96})
            QTest::mouseClick(ruler_.get(), Qt::LeftButton, {}, QPoint(x, 20));
    }
    QCOMPARE(sought.size(), 0);
    // The clicks were heard.
    ruler_->setViewport(0.0, 32.0, 0);
    QTest::mouseClick(ruler_.get(), Qt::LeftButton, {}, QPoint(96, 20));
    QCOMPARE(sought.size(), 1);
    QCOMPARE(sought[0][0].toDouble(), 3.0);
}

void TimelineRulerTest::seekingInADamagedMeter_data()
{
    QTest::addColumn<TimeSignature>("meter");

    QTest::newRow("bar without length") << simple(0, 4);
    QTest::newRow("bar of infinite length") << simple(4, 0);
    QTest::newRow("bar of negative length") << simple(-3, 4);
}

void TimelineRulerTest::seekingInADamagedMeter()
{
    QFETCH(TimeSignature, meter);
    song_->timeSignature = meter;
    const QSignalSpy sought(ruler_.get(), &TimelineRuler::seekRequested);
    QTest::mouseClick(ruler_.get(), Qt::LeftButton, {}, QPoint(96, 20));
    QCOMPARE(sought.size(), 1);
    QCOMPARE(sought[0][0].toDouble(), 3.0);
}

// ---- Bars and pulses -----------------------------------------------------------------------

void TimelineRulerTest::withoutAProjectIsAnEmptyStrip()
{
    ruler_->setPlayheadBeat(1.0);
    ruler_->setProject(nullptr);
    QImage paper(400, 34, QImage::Format_RGB32);
    paper.fill(kPaper);
    QCOMPARE(image(), paper);
}

void TimelineRulerTest::withoutAScaleIsAnEmptyStrip()
{
    QImage paper(400, 34, QImage::Format_RGB32);
    paper.fill(kPaper);
    ruler_->setPlayheadBeat(1.0);
    for (const double scale : {0.0, -32.0, kNaN}) {
        ruler_->setViewport(0.0, scale, 0);
        QCOMPARE(image(), paper);
    }
}

void TimelineRulerTest::barsStandWhereTheyBelong_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("scroll");
    QTest::addColumn<double>("scale");
    QTest::addColumn<QList<int>>("lines");

    QTest::newRow("4/4") << simple(4, 4) << 0.0 << 32.0 << QList<int>{128, 256, 384};
    QTest::newRow("3/4") << simple(3, 4) << 0.0 << 32.0 << QList<int>{96, 192, 288, 384};
    QTest::newRow("2/4") << simple(2, 4) << 0.0 << 32.0 << QList<int>{64, 128, 192, 256, 320, 384};
    QTest::newRow("6/8") << compound(6, 8) << 0.0 << 32.0 << QList<int>{96, 192, 288, 384};
    QTest::newRow("5/4") << simple(5, 4) << 0.0 << 32.0 << QList<int>{160, 320};
    QTest::newRow("12/8") << compound(12, 8) << 0.0 << 32.0 << QList<int>{192, 384};
    QTest::newRow("scrolled") << simple(4, 4) << 100.0 << 32.0 << QList<int>{28, 156, 284};
    QTest::newRow("scrolled by a fraction")
        << simple(4, 4) << 100.6 << 32.0 << QList<int>{27, 155, 283};
    QTest::newRow("zoomed in") << simple(4, 4) << 0.0 << 36.8 << QList<int>{147, 294};
    QTest::newRow("far along") << simple(4, 4) << 128000.0 << 32.0 << QList<int>{128, 256, 384};
}

void TimelineRulerTest::barsStandWhereTheyBelong()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, scroll);
    QFETCH(double, scale);
    song_->timeSignature = meter;
    ruler_->setViewport(scroll, scale, 0);
    QTEST(linesOf(columnsOf(image(), kBarRow, kBarColor)), "lines");
}

void TimelineRulerTest::barLinesRunFromTopToBottom()
{
    const QImage strip = image();
    for (int y = 0; y < 34; ++y) {
        COMPARE_COLOR(strip.pixelColor(127, y), kBarColor);
        COMPARE_COLOR(strip.pixelColor(128, y), kBarColor);
        // The first bar's line is half outside.
        COMPARE_COLOR(strip.pixelColor(0, y), kBarColor);
    }
    COMPARE_COLOR(strip.pixelColor(126, kBarRow), kPaper);
    COMPARE_COLOR(strip.pixelColor(129, kBarRow), kPaper);
}

void TimelineRulerTest::ticksAreTwelvePixelsHigh()
{
    const QImage strip = image();
    for (int y = kTickTop; y < 34; ++y)
        COMPARE_COLOR(strip.pixelColor(32, y), over(kTickColor, kPaper));
    COMPARE_COLOR(strip.pixelColor(32, kTickTop - 1), kPaper);
    COMPARE_COLOR(strip.pixelColor(31, kTickTop), kPaper);
    COMPARE_COLOR(strip.pixelColor(33, kTickTop), kPaper);
}

void TimelineRulerTest::pulsesStandWhereTheyBelong_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("scroll");
    QTest::addColumn<QList<int>>("ticks");

    QTest::newRow("4/4") << simple(4, 4) << 0.0
                         << QList<int>{32, 64, 96, 160, 192, 224, 288, 320, 352};
    QTest::newRow("3/4") << simple(3, 4) << 0.0 << QList<int>{32, 64, 128, 160, 224, 256, 320, 352};
    QTest::newRow("6/8") << compound(6, 8) << 0.0 << QList<int>{48, 144, 240, 336};
    QTest::newRow("9/8") << compound(9, 8) << 0.0 << QList<int>{48, 96, 192, 240, 336, 384};
    QTest::newRow("12/8") << compound(12, 8) << 0.0 << QList<int>{48, 96, 144, 240, 288, 336};
    QTest::newRow("scrolled into a bar")
        << simple(4, 4) << 40.0 << QList<int>{24, 56, 120, 152, 184, 248, 280, 312, 376};
    QTest::newRow("scrolled onto a pulse")
        << simple(4, 4) << 64.0 << QList<int>{0, 32, 96, 128, 160, 224, 256, 288, 352, 384};
    // Eighths are counted, but each of them a quarter apart: they run into the next bar.
    QTest::newRow("3/8 that is not marked as compound")
        << simple(3, 8) << 0.0
        << QList<int>{32, 64, 80, 112, 128, 160, 176, 208, 224, 256, 272, 304, 320, 352, 368};
}

void TimelineRulerTest::pulsesStandWhereTheyBelong()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, scroll);
    song_->timeSignature = meter;
    ruler_->setViewport(scroll, 32.0, 0);
    QTEST(columnsOf(image(), kTickTop, over(kTickColor, kPaper)), "ticks");
}

QImage TimelineRulerTest::number(const QString& text, const QPoint& place, bool bold) const
{
    QImage strip(400, 34, QImage::Format_RGB32);
    strip.fill(kPaper);
    QPainter painter(&strip);
    QFont font = ruler_->font();
    if (bold)
        font.setWeight(QFont::Weight(700));
    else
        font.setPointSizeF(font.pointSizeF() - 1.5 < 6.0 ? 6.0 : font.pointSizeF() - 1.5);
    painter.setFont(font);
    painter.setPen(kBarColor);
    painter.drawText(place, text);
    return strip;
}

void TimelineRulerTest::barNumbersCountFromOne_data()
{
    QTest::addColumn<double>("scroll");
    QTest::addColumn<int>("x");
    QTest::addColumn<QString>("text");

    QTest::newRow("first") << 0.0 << 0 << "1";
    QTest::newRow("second") << 0.0 << 128 << "2";
    QTest::newRow("tenth") << 1100.0 << 52 << "10";
    QTest::newRow("thousandth") << 127800.0 << 72 << "1000";
}

void TimelineRulerTest::barNumbersCountFromOne()
{
    QFETCH(double, scroll);
    QFETCH(int, x);
    QFETCH(QString, text);
    ruler_->setViewport(scroll, 32.0, 0);
    const QRect area(x + 2, 0, 40, 16);
    QCOMPARE(image().copy(area), number(text, QPoint(x + 4, 13), true).copy(area));
}

void TimelineRulerTest::pulseNumbersCountFromOne_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("x");
    QTest::addColumn<QString>("text");

    QTest::newRow("first of 4/4 has a number too") << simple(4, 4) << 0 << "1";
    QTest::newRow("third of 4/4") << simple(4, 4) << 64 << "3";
    QTest::newRow("fourth of 4/4") << simple(4, 4) << 96 << "4";
    QTest::newRow("first of the next bar") << simple(4, 4) << 128 << "1";
    QTest::newRow("second of 6/8") << compound(6, 8) << 48 << "2";
    QTest::newRow("first of the next bar of 6/8") << compound(6, 8) << 96 << "1";
    QTest::newRow("fourth of 12/8") << compound(12, 8) << 144 << "4";
}

void TimelineRulerTest::pulseNumbersCountFromOne()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, x);
    QFETCH(QString, text);
    song_->timeSignature = meter;
    // Behind the tick and short of the next one.
    const QRect area(x + 2, 22, 20, 12);
    QCOMPARE(image().copy(area), number(text, QPoint(x + 3, 31), false).copy(area));
}

void TimelineRulerTest::marginHidesWhatIsLeftOfIt()
{
    ruler_->setViewport(64.0, 32.0, 100);
    // Beat 0 lies at 36 and beat 2 at 100.
    const QImage strip = image();
    QCOMPARE(linesOf(columnsOf(strip, kBarRow, kBarColor)), QList<int>({164, 292}));
    QCOMPARE(columnsOf(strip, kTickTop, over(kTickColor, kPaper)),
             QList<int>({100, 132, 196, 228, 260, 324, 356, 388}));
    // A line one pixel left of the margin still shows.
    ruler_->setViewport(65.0, 32.0, 100);
    QCOMPARE(columnsOf(image(), kTickTop, over(kTickColor, kPaper)).first(), 99);
    ruler_->setViewport(66.0, 32.0, 100);
    QCOMPARE(columnsOf(image(), kTickTop, over(kTickColor, kPaper)).first(), 130);
}

// There is no thinning of labels: a beat is 6.4 pixels wide.
void TimelineRulerTest::numbersRunIntoEachOtherFarOut()
{
    ruler_->setViewport(0.0, 6.4, 0);
    const QImage strip = image();
    const QList<int> lines = linesOf(columnsOf(strip, kBarRow, kBarColor));
    QCOMPARE(lines.mid(0, 5), QList<int>({26, 51, 77, 102, 128}));
    QCOMPARE(lines.size(), 15);
    for (const int tick : {6, 13, 19, 32, 38, 45})
        COMPARE_COLOR(strip.pixelColor(tick, kTickTop), over(kTickColor, kPaper));
    // Each of the numbers is there: four in every bar leave ink between the ticks.
    for (int beat = 0; beat < 60; ++beat) {
        const QRect area(static_cast<int>(beat * 6.4) + 2, 25, 6, 7);
        bool ink = false;
        for (int x = area.left(); x <= area.right(); ++x) {
            for (int y = area.top(); y <= area.bottom(); ++y)
                ink = ink || strip.pixelColor(x, y).lightness() < 120;
        }
        QVERIFY2(ink, qPrintable(QString::number(beat)));
    }
}

void TimelineRulerTest::colorsFollowTheTheme()
{
    ThemeManager::instance()->setDark(true);
    ruler_->setPlayheadBeat(2.5);
    const QImage strip = image();
    const QColor paper(0x14, 0x19, 0x0c);
    COMPARE_COLOR(strip.pixelColor(60, kBarRow), paper);
    COMPARE_COLOR(strip.pixelColor(128, kBarRow), QColor(0xc9, 0xe0, 0xb0));
    COMPARE_COLOR(strip.pixelColor(32, kTickTop), over(QColor(0x9c, 0xcc, 0x65, 120), paper));
    COMPARE_COLOR(strip.pixelColor(80, kBarRow), QColor(0x9c, 0xcc, 0x65));
}

// ---- Playhead ------------------------------------------------------------------------------

void TimelineRulerTest::playheadIsALineOfTwoPixels()
{
    ruler_->setPlayheadBeat(1.5);
    const QImage strip = image();
    for (int y = 0; y < 34; ++y) {
        COMPARE_COLOR(strip.pixelColor(47, y), kPlayheadColor);
        COMPARE_COLOR(strip.pixelColor(48, y), kPlayheadColor);
    }
    COMPARE_COLOR(strip.pixelColor(46, kBarRow), kPaper);
    COMPARE_COLOR(strip.pixelColor(49, kBarRow), kPaper);
}

void TimelineRulerTest::playheadMovesAndScrolls_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<RulerViewport>("viewport");
    QTest::addColumn<QList<int>>("columns");

    const RulerViewport plain{0.0, 32.0, 0};
    QTest::newRow("start is half outside") << 0.0 << plain << QList<int>{0};
    QTest::newRow("over a bar line") << 4.0 << plain << QList<int>{127, 128};
    QTest::newRow("rounded to a pixel") << 1.52 << plain << QList<int>{48, 49};
    QTest::newRow("scrolled") << 4.5 << RulerViewport{100.0, 32.0, 0} << QList<int>{43, 44};
    QTest::newRow("scrolled away") << 2.0 << RulerViewport{100.0, 32.0, 0} << QList<int>{};
    QTest::newRow("right of the ruler") << 13.0 << plain << QList<int>{};
    QTest::newRow("on the margin") << 0.0 << RulerViewport{0.0, 32.0, 60} << QList<int>{59, 60};
    QTest::newRow("one pixel left of the margin")
        << 0.0 << RulerViewport{1.0, 32.0, 60} << QList<int>{};
}

void TimelineRulerTest::playheadMovesAndScrolls()
{
    QFETCH(double, beat);
    QFETCH(RulerViewport, viewport);
    ruler_->setViewport(viewport.scrollPixels, viewport.pixelsPerBeat, viewport.leftMargin);
    ruler_->setPlayheadBeat(beat);
    QTEST(columnsOf(image(), kBarRow, kPlayheadColor), "columns");
}

void TimelineRulerTest::playheadWithoutAPlaceIsNotDrawn_data()
{
    QTest::addColumn<double>("beat");

    QTest::newRow("not a number") << kNaN;
    QTest::newRow("infinity") << kInfinity;
    QTest::newRow("infinitely early") << -kInfinity;
    QTest::newRow("far away") << 1e300;
    QTest::newRow("far before") << -1e300;
}

void TimelineRulerTest::playheadWithoutAPlaceIsNotDrawn()
{
    QFETCH(double, beat);
    const QImage without = image();
    ruler_->setPlayheadBeat(beat);
    QCOMPARE(image(), without);
}

// ---- Damaged meters ------------------------------------------------------------------------

void TimelineRulerTest::damagedMetersArePaintedInTime_data()
{
    QTest::addColumn<TimeSignature>("meter");

    constexpr int kMost = std::numeric_limits<int>::max();
    QTest::newRow("bar without length") << simple(0, 4);
    QTest::newRow("bar of infinite length") << simple(4, 0);
    QTest::newRow("bar that is no number") << simple(0, 0);
    QTest::newRow("bar of negative length") << simple(-4, 4);
    QTest::newRow("negative both") << simple(-4, -4);
    QTest::newRow("numerator 10^9") << simple(1000000000, 4);
    QTest::newRow("compound numerator 2^31 - 1") << compound(kMost, 1);
    QTest::newRow("denominator 2^31 - 1") << simple(1, kMost);
    QTest::newRow("as many pulses as bars have room") << simple(625, 40000);
    QTest::newRow("more pulses than a bar has room for") << simple(1000000000, 1000000000);
    QTest::newRow("millions of pulses in each of many bars") << simple(5000000, 100000000);
}

void TimelineRulerTest::damagedMetersArePaintedInTime()
{
    QFETCH(TimeSignature, meter);
    song_->timeSignature = meter;
    ruler_->resize(4000, 34);
    for (const double scale : {6.4, 32.0, 384.0}) {
        for (const double scroll : {0.0, 32e6}) {
            ruler_->setViewport(scroll, scale, 0);
            QVERIFY(!image().isNull());
        }
    }
}

void TimelineRulerTest::everyMeterIsPainted()
{
    Generator random(11, Numbers::Hostile);
    for (int i = 0; i < 300; ++i) {
        Project song;
        random.fill(song, 0);
        ruler_->setProject(&song);
        ruler_->setPlayheadBeat(random.note().startBeat);
        QVERIFY(!image().isNull());
    }
    ruler_->setProject(song_.get());
}

VELTA_TEST(TimelineRulerTest)

} // namespace TimelineRulerTests

#include "TimelineRulerTest.moc"
