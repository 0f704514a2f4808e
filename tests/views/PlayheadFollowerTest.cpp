#include "views/PlayheadFollower.h"

#include "support/TestProgram.h"

#include <QGraphicsView>
#include <QMenu>
#include <QScrollBar>
#include <QTest>

#include <memory>

namespace PlayheadFollowerTests {

/// Pages of a view 400 pixels wide, turned by the playhead of a scene of 4000.
class PlayheadFollowerTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void aPageTurnsWhereThePlayheadIsOutOfSight_data();
    void aPageTurnsWhereThePlayheadIsOutOfSight();
    void thePageFollowsThePlayheadInAnyScale();
    void whoHasScrolledIsLeftAloneForThreeSeconds();
    void aTurnedPageIsNoScrolling();
    void whoHoldsTheMouseIsLeftAlone();
    void whoHasAMenuOpenIsLeftAlone();
    void switchedOffItLeavesThePage();
    void theStartIsShownWithoutARest();

private:
    int scroll() const { return view_->horizontalScrollBar()->value(); }

    QGraphicsScene scene_{0.0, 0.0, 4000.0, 100.0};
    std::unique_ptr<QGraphicsView> view_;
    PlayheadFollower* follower_ = nullptr;
    qint64 now_ = 0;
};

void PlayheadFollowerTest::init()
{
    now_ = 50000;
    view_ = std::make_unique<QGraphicsView>(&scene_);
    view_->setFrameShape(QFrame::NoFrame);
    view_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    view_->resize(400, 150);
    view_->show();
    QVERIFY(QTest::qWaitForWindowExposed(view_.get()));
    view_->horizontalScrollBar()->setValue(0);
    follower_ = new PlayheadFollower(view_.get());
    follower_->setClock([this] { return now_; });
    QCOMPARE(scroll(), 0);
}

void PlayheadFollowerTest::aPageTurnsWhereThePlayheadIsOutOfSight_data()
{
    QTest::addColumn<double>("playhead");
    QTest::addColumn<int>("scroll");
    QTest::addColumn<std::optional<int>>("page");

    const std::optional<int> stays;
    QTest::newRow("at the left edge") << 0.0 << 100 << stays;
    QTest::newRow("in the middle") << 200.0 << 100 << stays;
    QTest::newRow("on the last pixel") << 399.5 << 100 << stays;
    QTest::newRow("at the right edge") << 400.0 << 100 << std::optional(476);
    QTest::newRow("far behind the right edge") << 1000.0 << 100 << std::optional(1076);
    QTest::newRow("before the left edge") << -50.0 << 300 << std::optional(226);
}

void PlayheadFollowerTest::aPageTurnsWhereThePlayheadIsOutOfSight()
{
    QFETCH(double, playhead);
    QFETCH(int, scroll);
    QTEST(PlayheadFollower::turnedPage(playhead, 400, scroll), "page");
    QVERIFY(!PlayheadFollower::turnedPage(playhead, 0, scroll));
}

void PlayheadFollowerTest::thePageFollowsThePlayheadInAnyScale()
{
    follower_->follow(399.0);
    QCOMPARE(scroll(), 0);
    follower_->follow(400.0);
    QCOMPARE(scroll(), 376);
    follower_->follow(10.0);
    QCOMPARE(scroll(), 0);
    view_->setTransform(QTransform::fromScale(2.0, 1.0));
    view_->horizontalScrollBar()->setValue(0);
    now_ += PlayheadFollower::kRestMs;
    follower_->follow(199.0);
    QCOMPARE(scroll(), 0);
    follower_->follow(200.0);
    QCOMPARE(scroll(), 376);
}

void PlayheadFollowerTest::whoHasScrolledIsLeftAloneForThreeSeconds()
{
    view_->horizontalScrollBar()->triggerAction(QAbstractSlider::SliderPageStepAdd);
    const int page = scroll();
    QVERIFY(page > 100);
    follower_->follow(20.0);
    now_ += 2999;
    follower_->follow(20.0);
    QCOMPARE(scroll(), page);
    now_ += 1;
    follower_->follow(20.0);
    QCOMPARE(scroll(), 0);
}

void PlayheadFollowerTest::aTurnedPageIsNoScrolling()
{
    follower_->follow(800.0);
    follower_->follow(1600.0);
    QCOMPARE(scroll(), 1576);
}

void PlayheadFollowerTest::whoHoldsTheMouseIsLeftAlone()
{
    QTest::mousePress(view_->viewport(), Qt::LeftButton, {}, QPoint(50, 50));
    follower_->follow(800.0);
    QCOMPARE(scroll(), 0);
    QTest::mouseRelease(view_->viewport(), Qt::LeftButton, {}, QPoint(50, 50));
    follower_->follow(800.0);
    QCOMPARE(scroll(), 776);
}

void PlayheadFollowerTest::whoHasAMenuOpenIsLeftAlone()
{
    QMenu menu;
    menu.addAction("IV");
    menu.popup(QPoint(10, 10));
    QTRY_VERIFY(QApplication::activePopupWidget());
    follower_->follow(800.0);
    QCOMPARE(scroll(), 0);
    menu.close();
    follower_->follow(800.0);
    QCOMPARE(scroll(), 776);
}

void PlayheadFollowerTest::switchedOffItLeavesThePage()
{
    QVERIFY(follower_->isOn());
    follower_->setOn(false);
    follower_->follow(800.0);
    QCOMPARE(scroll(), 0);
    follower_->setOn(true);
    follower_->follow(800.0);
    QCOMPARE(scroll(), 776);
}

void PlayheadFollowerTest::theStartIsShownWithoutARest()
{
    view_->horizontalScrollBar()->setValue(900);
    follower_->showStart();
    QCOMPARE(scroll(), 0);
    follower_->follow(800.0);
    QCOMPARE(scroll(), 776);
}

VELTA_TEST(PlayheadFollowerTest)

} // namespace PlayheadFollowerTests

#include "PlayheadFollowerTest.moc"
