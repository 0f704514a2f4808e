#include "views/pianoroll/PianoRollViewport.h"

#include "PianoRollStage.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"

#include <cmath>
#include <limits>
#include <memory>

namespace PianoRollViewportTests {

using namespace ProjectBuilder;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kMostInt = std::numeric_limits<int>::max();
constexpr int kLeastInt = std::numeric_limits<int>::min();

} // namespace

class PianoRollViewportTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void rowsStayWhenTheRollIsHiddenAndShown_data();
    void rowsStayWhenTheRollIsHiddenAndShown();
    void zoomAtTheStartKeepsTheStart();
    void rowsFillTheView_data();
    void rowsFillTheView();
    void sameRowsAtAnyHeight();
    void topPitchStaysInTheRows();
    void scrollMovesInTime();
    void scrollAtOnceEndsTheMove();
    void scrollingByAbsurdDeltasIsHeld();
    void horizontalZoomIsHeld();
    void horizontalZoomKeepsTheRows();
    void absurdZoomsAreSurvived_data();
    void absurdZoomsAreSurvived();
    void verticalZoomIsByRows();

private:
    PianoRollCanvas& canvas() const { return stage_->canvas; }

    PianoRollViewport& shown() const { return *canvas().rows(); }

    UserHome home_;
    std::unique_ptr<SilentBand> band_;
    std::unique_ptr<PianoRollStage> stage_;
};

void PianoRollViewportTest::init()
{
    band_ = std::make_unique<SilentBand>();
    stage_ = std::make_unique<PianoRollStage>(&band_->engine());
}

void PianoRollViewportTest::cleanup()
{
    stage_.reset();
    band_.reset();
}

void PianoRollViewportTest::rowsStayWhenTheRollIsHiddenAndShown_data()
{
    QTest::addColumn<int>("height");

    for (const int height : {333, 400, 457, 500, 611})
        QTest::addRow("%d", height) << height;
}

void PianoRollViewportTest::rowsStayWhenTheRollIsHiddenAndShown()
{
    QFETCH(int, height);
    canvas().resize(1000, height);
    shown().scrollToTopPitch(83, false);
    canvas().view()->horizontalScrollBar()->setValue(321);
    QCoreApplication::processEvents();
    const int y = qRound((96 - 83) * 16 * shown().zoomY());
    QCOMPARE(canvas().view()->verticalScrollBar()->value(), y);
    for (int i = 0; i < 3; ++i) {
        QCursor::setPos(stage_->grid()->mapToGlobal(QPoint(300 + 7 * i, 50 + 60 * i)));
        canvas().hide();
        QCoreApplication::processEvents();
        canvas().show();
        QCoreApplication::processEvents();
        QCOMPARE(shown().topPitch(), 83);
        QCOMPARE(canvas().view()->verticalScrollBar()->value(), y);
        QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 321);
    }
}

void PianoRollViewportTest::zoomAtTheStartKeepsTheStart()
{
    for (const double factor : {1.25, 1.25, 1.25, 0.8}) {
        canvas().zoomHorizontal(factor);
        QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 0);
    }
}

void PianoRollViewportTest::rowsFillTheView_data()
{
    QTest::addColumn<int>("rows");

    QTest::newRow("fewest") << 8;
    QTest::newRow("usual") << 13;
    QTest::newRow("many") << 40;
    QTest::newRow("all") << 73;
}

void PianoRollViewportTest::rowsFillTheView()
{
    QFETCH(int, rows);
    while (shown().visibleRows() != rows)
        shown().zoomVertical(shown().visibleRows() > rows ? 2.0 : 0.5);
    const int height = stage_->grid()->height();
    const auto y = [this](int row) {
        return canvas().view()->viewportTransform().map(QPointF(0.0, row * 16.0)).y();
    };
    for (int top = 96; top >= rows + 23; --top) {
        shown().scrollToTopPitch(top, false);
        QVERIFY(std::abs(y(96 - top)) <= 0.51);
        QVERIFY(std::abs(y(96 - top + rows) - height) <= 0.51);
    }
}

void PianoRollViewportTest::sameRowsAtAnyHeight()
{
    shown().scrollToTopPitch(80, false);
    for (const int height : {300, 471, 900, 150}) {
        canvas().resize(1000, height);
        QCoreApplication::processEvents();
        QCOMPARE(shown().visibleRows(), 13);
        QCOMPARE(shown().topPitch(), 80);
        QCOMPARE(shown().zoomY(), stage_->grid()->height() / (13.0 * 16.0));
        QCOMPARE(canvas().keyboard()->pitchAtY(1), 80);
        QCOMPARE(canvas().keyboard()->pitchAtY(stage_->grid()->height() - 2), 68);
    }
}

void PianoRollViewportTest::topPitchStaysInTheRows()
{
    shown().scrollToTopPitch(500, false);
    QCOMPARE(shown().topPitch(), 96);
    shown().scrollToTopPitch(-500, false);
    QCOMPARE(shown().topPitch(), 36);
    shown().zoomVertical(0.5);
    QCOMPARE(shown().visibleRows(), 14);
    QCOMPARE(shown().topPitch(), 37);
}

void PianoRollViewportTest::scrollMovesInTime()
{
    QScrollBar* bar = canvas().view()->verticalScrollBar();
    QCOMPARE(bar->value(), 24 * 32);
    shown().scrollToTopPitch(74, true);
    QCOMPARE(shown().topPitch(), 74);
    QCOMPARE(bar->value(), 24 * 32);
    QTRY_COMPARE(bar->value(), 22 * 32);
}

void PianoRollViewportTest::scrollAtOnceEndsTheMove()
{
    QScrollBar* bar = canvas().view()->verticalScrollBar();
    shown().scrollToTopPitch(90, true);
    shown().scrollToTopPitch(60, false);
    QCOMPARE(bar->value(), 36 * 32);
    QTest::qWait(200);
    QCOMPARE(bar->value(), 36 * 32);
}

void PianoRollViewportTest::scrollingByAbsurdDeltasIsHeld()
{
    shown().scrollNotes(kMostInt);
    QCOMPARE(shown().topPitch(), 96);
    shown().scrollNotes(kLeastInt);
    QCOMPARE(shown().topPitch(), 36);
    shown().wheelNotes(kMostInt);
    QCOMPARE(shown().topPitch(), 96);
    shown().scrollToTopPitch(kLeastInt, false);
    QCOMPARE(shown().topPitch(), 36);
}

void PianoRollViewportTest::horizontalZoomIsHeld()
{
    canvas().zoomHorizontal(1.25);
    QCOMPARE(shown().zoomX(), 1.25);
    QCOMPARE(canvas().view()->transform().m11(), 1.25);
    canvas().zoomHorizontal(100.0);
    QCOMPARE(shown().zoomX(), 6.0);
    canvas().zoomHorizontal(0.0001);
    QCOMPARE(shown().zoomX(), 0.2);
}

void PianoRollViewportTest::horizontalZoomKeepsTheRows()
{
    canvas().resize(1000, 643);
    QCoreApplication::processEvents();
    const int y = canvas().view()->verticalScrollBar()->value();
    // With the mouse over the grid the view keeps what is under it in place.
    QTest::mouseMove(stage_->grid(), QPoint(300, 301));
    for (const double factor : {1.15, 1.15, 0.5, 3.0, 1.0 / 1.15}) {
        canvas().zoomHorizontal(factor);
        QCOMPARE(canvas().view()->verticalScrollBar()->value(), y);
    }
}

void PianoRollViewportTest::absurdZoomsAreSurvived_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<double>("zoom");

    QTest::newRow("no number") << kNaN << 1.0;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << 6.0;
    QTest::newRow("zero") << 0.0 << 0.2;
    QTest::newRow("negative") << -3.0 << 0.2;
}

void PianoRollViewportTest::absurdZoomsAreSurvived()
{
    QFETCH(double, factor);
    canvas().zoomHorizontal(factor);
    shown().zoomVertical(factor);
    QTEST(shown().zoomX(), "zoom");
}

void PianoRollViewportTest::verticalZoomIsByRows()
{
    shown().zoomVertical(1.01);
    QCOMPARE(shown().visibleRows(), 12);
    shown().zoomVertical(1.0);
    QCOMPARE(shown().visibleRows(), 13);
    for (int i = 0; i < 100; ++i)
        shown().zoomVertical(0.8);
    QCOMPARE(shown().visibleRows(), 73);
    QCOMPARE(shown().topPitch(), 96);
    for (int i = 0; i < 100; ++i)
        shown().zoomVertical(1.25);
    QCOMPARE(shown().visibleRows(), 8);
}

VELTA_TEST(PianoRollViewportTest)

} // namespace PianoRollViewportTests

#include "PianoRollViewportTest.moc"
