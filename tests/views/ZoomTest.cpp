#include "views/Zoom.h"

#include "support/TestProgram.h"
#include "support/UserHome.h"

#include <QGraphicsView>
#include <QScrollBar>
#include <QTest>

#include <cmath>
#include <limits>
#include <memory>

namespace ZoomTests {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

} // namespace

class ZoomTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void aZoomStaysWithinItsLimits_data();
    void aZoomStaysWithinItsLimits();
    void aTurnOfTheWheelIsANotch_data();
    void aTurnOfTheWheelIsANotch();
    void stepsInAndOutUndoEachOther();

    void theStartOfTheSongStays();
    void whatLiesUnderTheMouseStays();
    void aPlayheadInSightStays();
    void elseTheMiddleStays_data();
    void elseTheMiddleStays();
    void whatLiesAtTheAnchorStaysThere_data();
    void whatLiesAtTheAnchorStaysThere();
    void theHeightInTheViewStays();

private:
    void scrollTo(int x, int y) const
    {
        view_->horizontalScrollBar()->setValue(x);
        view_->verticalScrollBar()->setValue(y);
    }

    UserHome home_;
    QGraphicsScene scene_{0.0, 0.0, 4000.0, 2000.0};
    std::unique_ptr<QGraphicsView> view_;
};

/// A view of 400 pixels of a scene of 4000.
void ZoomTest::init()
{
    view_ = std::make_unique<QGraphicsView>(&scene_);
    view_->setFrameShape(QFrame::NoFrame);
    view_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    view_->setTransformationAnchor(QGraphicsView::AnchorUnderMouse);
    view_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view_->resize(400, 300);
    view_->show();
    scrollTo(0, 0);
}

void ZoomTest::aZoomStaysWithinItsLimits_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<double>("factor");
    QTest::addColumn<double>("zoomed");
    QTest::newRow("larger") << 2.0 << 1.25 << 2.5;
    QTest::newRow("smaller") << 2.0 << 0.5 << 1.0;
    QTest::newRow("up to the largest") << 5.0 << 1.25 << 6.0;
    QTest::newRow("down to the smallest") << 0.25 << 0.5 << 0.2;
    QTest::newRow("by nothing") << 1.0 << 0.0 << 0.2;
    QTest::newRow("by less than nothing") << 1.0 << -3.0 << 0.2;
    QTest::newRow("by all") << 1.0 << kInfinity << 6.0;
    QTest::newRow("by no number") << 1.5 << kNaN << 1.5;
    QTest::newRow("nothing by all") << 0.0 << kInfinity << 0.0;
}

void ZoomTest::aZoomStaysWithinItsLimits()
{
    QFETCH(double, zoom);
    QFETCH(double, factor);
    QFETCH(double, zoomed);
    QCOMPARE(Zoom::zoomed(zoom, factor), zoomed);
}

void ZoomTest::aTurnOfTheWheelIsANotch_data()
{
    QTest::addColumn<int>("angle");
    QTest::addColumn<double>("factor");
    QTest::newRow("a notch up") << 120 << 1.15;
    QTest::newRow("the least turn up") << 1 << 1.15;
    QTest::newRow("a notch down") << -120 << 1.0 / 1.15;
    QTest::newRow("sideways alone") << 0 << 1.0 / 1.15;
    QTest::newRow("two notches down") << -240 << 1.0 / 1.15;
}

void ZoomTest::aTurnOfTheWheelIsANotch()
{
    QFETCH(int, angle);
    QFETCH(double, factor);
    QCOMPARE(Zoom::wheelFactor(angle), factor);
}

void ZoomTest::stepsInAndOutUndoEachOther()
{
    QCOMPARE(Zoom::zoomed(Zoom::zoomed(1.0, Zoom::kCommandStep), 1.0 / Zoom::kCommandStep), 1.0);
    QCOMPARE(1.0 / Zoom::kCommandStep, 0.8);
}

void ZoomTest::theStartOfTheSongStays()
{
    QCOMPARE(Zoom::anchor(*view_, 200.0, Zoom::By::Command), 0.0);
    QCOMPARE(Zoom::anchor(*view_, 200.0, Zoom::By::Wheel), 0.0);
}

void ZoomTest::whatLiesUnderTheMouseStays()
{
    QWidget* viewport = view_->viewport();
    QCursor::setPos(viewport->mapToGlobal(QPoint(130, 50)));
    viewport->setAttribute(Qt::WA_UnderMouse);
    QCOMPARE(Zoom::anchor(*view_, 200.0, Zoom::By::Wheel), 130.0);
    QCOMPARE(Zoom::anchor(*view_, 200.0, Zoom::By::Command), 0.0);
    scrollTo(1000, 0);
    viewport->setAttribute(Qt::WA_UnderMouse);
    QCOMPARE(Zoom::anchor(*view_, 1200.0, Zoom::By::Wheel), 130.0);
    QCOMPARE(Zoom::anchor(*view_, 1200.0, Zoom::By::Command), 130.0);
}

void ZoomTest::aPlayheadInSightStays()
{
    scrollTo(1000, 0);
    for (const double x : {0.0, 130.0, 400.0})
        QCOMPARE(Zoom::anchor(*view_, 1000.0 + x, Zoom::By::Command), x);
}

void ZoomTest::elseTheMiddleStays_data()
{
    QTest::addColumn<double>("playhead");
    QTest::newRow("left of what is seen") << 999.0;
    QTest::newRow("right of what is seen") << 1401.0;
}

void ZoomTest::elseTheMiddleStays()
{
    QFETCH(double, playhead);
    scrollTo(1000, 0);
    QCOMPARE(Zoom::anchor(*view_, playhead, Zoom::By::Command), 200.0);
}

void ZoomTest::whatLiesAtTheAnchorStaysThere_data()
{
    QTest::addColumn<double>("anchor");
    QTest::addColumn<double>("zoom");
    for (const double anchor : {0.0, 130.0, 399.0}) {
        for (const double zoom : {0.8, 1.0, 1.15, 2.5})
            QTest::addRow("at %.0f by %.2f", anchor, zoom) << anchor << zoom;
    }
}

void ZoomTest::whatLiesAtTheAnchorStaysThere()
{
    QFETCH(double, anchor);
    QFETCH(double, zoom);
    scrollTo(1000, 0);
    const double sceneX = 1000.0 + anchor;
    Zoom::set(*view_, QTransform::fromScale(zoom, 1.0), anchor);
    QCOMPARE(view_->transform().m11(), zoom);
    const double place = sceneX * zoom - view_->horizontalScrollBar()->value();
    QVERIFY2(std::abs(place - anchor) <= 0.5, qPrintable(QString::number(place)));
}

void ZoomTest::theHeightInTheViewStays()
{
    scrollTo(1000, 700);
    Zoom::set(*view_, QTransform::fromScale(1.25, 1.5), 130.0);
    QCOMPARE(view_->verticalScrollBar()->value(), 700);
}

VELTA_TEST(ZoomTest)

} // namespace ZoomTests

#include "ZoomTest.moc"
