#include "views/StepKeys.h"

#include "support/TestProgram.h"
#include "views/ScrollIntoView.h"

#include <QGraphicsScene>
#include <QGraphicsView>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTest>

#include <limits>

namespace StepKeysTests {

/// How editors read the arrows, and what they scroll to.
class StepKeysTest : public QObject {
    Q_OBJECT

private slots:
    void arrowsAreReadWithTheirModifiers_data();
    void arrowsAreReadWithTheirModifiers();
    void otherKeysAreNoArrows_data();
    void otherKeysAreNoArrows();
    void pagesGoOnAndBack_data();
    void pagesGoOnAndBack();
    void eitherEnterIsOne_data();
    void eitherEnterIsOne();
    void stepsGoFromLineToLine_data();
    void stepsGoFromLineToLine();
    void whatIsSeenStaysWhereItIs();
    void whatIsOutOfSightComesIntoIt();
    void whatIsTooLongShowsItsStart();
};

void StepKeysTest::arrowsAreReadWithTheirModifiers_data()
{
    using Act = ArrowKey::Act;
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("act");
    QTest::addColumn<int>("right");
    QTest::addColumn<int>("up");

    QTest::newRow("right") << Qt::Key_Right << 0 << int(Act::Move) << 1 << 0;
    QTest::newRow("left") << Qt::Key_Left << 0 << int(Act::Move) << -1 << 0;
    QTest::newRow("up") << Qt::Key_Up << 0 << int(Act::Move) << 0 << 1;
    QTest::newRow("down of the number pad")
        << Qt::Key_Down << int(Qt::KeypadModifier) << int(Act::Move) << 0 << -1;
    QTest::newRow("Shift") << Qt::Key_Left << int(Qt::ShiftModifier) << int(Act::Stretch) << -1
                           << 0;
    QTest::newRow("Ctrl") << Qt::Key_Down << int(Qt::ControlModifier) << int(Act::Go) << 0 << -1;
    QTest::newRow("Ctrl and Shift") << Qt::Key_Right << int(Qt::ControlModifier | Qt::ShiftModifier)
                                    << int(Act::Extend) << 1 << 0;
}

void StepKeysTest::arrowsAreReadWithTheirModifiers()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, modifiers);
    const auto arrow = StepKeys::arrowOf(
        QKeyEvent(QEvent::KeyPress, key, Qt::KeyboardModifiers::fromInt(modifiers)));
    QVERIFY(arrow);
    QTEST(int(arrow->act), "act");
    QTEST(arrow->right, "right");
    QTEST(arrow->up, "up");
}

void StepKeysTest::otherKeysAreNoArrows_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("modifiers");

    QTest::newRow("a letter") << Qt::Key_A << 0;
    QTest::newRow("a page") << Qt::Key_PageUp << 0;
    QTest::newRow("Alt") << Qt::Key_Left << int(Qt::AltModifier);
    QTest::newRow("Ctrl and Alt") << Qt::Key_Right << int(Qt::ControlModifier | Qt::AltModifier);
}

void StepKeysTest::otherKeysAreNoArrows()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, modifiers);
    QVERIFY(!StepKeys::arrowOf(
        QKeyEvent(QEvent::KeyPress, key, Qt::KeyboardModifiers::fromInt(modifiers))));
}

void StepKeysTest::pagesGoOnAndBack_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("pages");

    QTest::newRow("a page on") << Qt::Key_PageDown << 0 << 1;
    QTest::newRow("a page back") << Qt::Key_PageUp << 0 << -1;
    QTest::newRow("of the number pad") << Qt::Key_PageDown << int(Qt::KeypadModifier) << 1;
    QTest::newRow("an arrow") << Qt::Key_Down << 0 << 0;
    QTest::newRow("Shift") << Qt::Key_PageDown << int(Qt::ShiftModifier) << 0;
    QTest::newRow("Ctrl") << Qt::Key_PageUp << int(Qt::ControlModifier) << 0;
}

void StepKeysTest::pagesGoOnAndBack()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, modifiers);
    const QKeyEvent event(QEvent::KeyPress, key, Qt::KeyboardModifiers::fromInt(modifiers));
    QTEST(StepKeys::pageOf(event), "pages");
}

void StepKeysTest::eitherEnterIsOne_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<bool>("enter");

    QTest::newRow("Return") << Qt::Key_Return << 0 << true;
    QTest::newRow("Enter") << Qt::Key_Enter << 0 << true;
    QTest::newRow("of the number pad") << Qt::Key_Enter << int(Qt::KeypadModifier) << true;
    QTest::newRow("Space") << Qt::Key_Space << 0 << false;
    QTest::newRow("Shift") << Qt::Key_Return << int(Qt::ShiftModifier) << false;
    QTest::newRow("Ctrl") << Qt::Key_Enter << int(Qt::ControlModifier) << false;
    QTest::newRow("another key with Ctrl") << Qt::Key_Space << int(Qt::ControlModifier) << false;
}

void StepKeysTest::eitherEnterIsOne()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, modifiers);
    const QKeyEvent event(QEvent::KeyPress, key, Qt::KeyboardModifiers::fromInt(modifiers));
    QTEST(StepKeys::isEnter(event), "enter");
}

void StepKeysTest::stepsGoFromLineToLine_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("step");
    QTest::addColumn<int>("direction");
    QTest::addColumn<double>("there");

    QTest::newRow("from a line on") << 2.0 << 0.5 << 1 << 2.5;
    QTest::newRow("from a line back") << 2.0 << 0.5 << -1 << 1.5;
    QTest::newRow("from between on") << 2.2 << 0.5 << 1 << 2.5;
    QTest::newRow("from between back") << 2.2 << 0.5 << -1 << 2.0;
    QTest::newRow("not before the song") << 0.2 << 1.0 << -1 << 0.0;
    QTest::newRow("at the start") << 0.0 << 1.0 << -1 << 0.0;
    QTest::newRow("a sum of tenths is a line") << 0.1 + 0.2 << 0.1 << -1 << 0.2;
    QTest::newRow("dotted") << 3.0 << 1.5 << 1 << 4.5;
    QTest::newRow("no step") << 3.0 << 0.0 << 1 << 3.0;
    QTest::newRow("endless step") << 3.0 << std::numeric_limits<double>::infinity() << -1 << 3.0;
    QTest::newRow("no number") << 3.0 << std::numeric_limits<double>::quiet_NaN() << 1 << 3.0;
}

void StepKeysTest::stepsGoFromLineToLine()
{
    QFETCH(double, beat);
    QFETCH(double, step);
    QFETCH(int, direction);
    QTEST(StepKeys::stepped(beat, step, direction), "there");
}

namespace {

/// Shows 200 pixels of a scene of 2,000.
struct Window {
    Window()
    {
        view.setFrameShape(QFrame::NoFrame);
        view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        view.setAlignment(Qt::AlignLeft | Qt::AlignTop);
        view.resize(200, 200);
        view.show();
    }

    int x() const { return view.horizontalScrollBar()->value(); }

    QGraphicsScene scene{0, 0, 2000, 2000};
    QGraphicsView view{&scene};
};

} // namespace

void StepKeysTest::whatIsSeenStaysWhereItIs()
{
    Window window;
    window.view.horizontalScrollBar()->setValue(500);
    ScrollIntoView::horizontally(window.view, 520, 660);
    QCOMPARE(window.x(), 500);
}

void StepKeysTest::whatIsOutOfSightComesIntoIt()
{
    Window window;
    ScrollIntoView::horizontally(window.view, 900, 950);
    QVERIFY(window.x() > 750 && window.x() < 900);
    ScrollIntoView::horizontally(window.view, 100, 150);
    QVERIFY(window.x() > 50 && window.x() < 100);
    ScrollIntoView::vertically(window.view, 1200, 1250);
    QVERIFY(window.view.verticalScrollBar()->value() > 1050);
    QVERIFY(window.x() < 100);
}

void StepKeysTest::whatIsTooLongShowsItsStart()
{
    Window window;
    ScrollIntoView::horizontally(window.view, 700, 1500);
    QVERIFY(window.x() > 650 && window.x() <= 700);
}

VELTA_TEST(StepKeysTest)

} // namespace StepKeysTests

#include "StepKeysTest.moc"
