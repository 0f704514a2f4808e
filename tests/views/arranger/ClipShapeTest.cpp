#include "views/arranger/ClipShape.h"

#include "support/TestProgram.h"

#include <QTest>

#include <cmath>

namespace ClipShapeTests {

namespace {

using Handle = std::optional<ClipHandle>;

/// A block of 400 by 46 at (100, 50), in which a second takes 60: its middle is at 73, half of what
/// a gain may be lies 20 above and below, and its five seconds end at 400.
ClipShape shape(const ClipLevels& levels = {.gain = 0.5F, .fadeIn = 1.0F, .fadeOut = 2.0F})
{
    return {.rect = {100.0, 50.0, 400.0, 46.0},
            .secondWidth = 60.0,
            .playedSeconds = 5.0,
            .levels = levels};
}

} // namespace

/// Where the line and the handles of a clip lie, by hand.
class ClipShapeTest : public QObject {
    Q_OBJECT

private slots:
    void gainsLieBetweenTheMargins();
    void whatIsPlayedEndsInsideTheBlock();
    void fadesLieInWhatIsPlayed();
    void fadesAreAsLongAsTheirHandlesLieInside();
    void aClipIsHeardByItsGainAndFades();
    void handlesTakeTheirRoom();
    void aHandleStaysInsideItsBlock();
    void theMouseTakesWhatItIsNear_data();
    void theMouseTakesWhatItIsNear();
    void whereBothHandlesLieEachIsTakenFromItsSide();
    void handlesThatHaveCrossedAreTakenWhereTheyLie();
    void reachIsMeasuredOnTheScreen();
};

void ClipShapeTest::gainsLieBetweenTheMargins()
{
    QCOMPARE(shape().gainY(1.0), 73.0);
    QCOMPARE(shape().gainY(0.0), 93.0);
    QCOMPARE(shape().gainY(0.5), 83.0);
    QCOMPARE(shape().gainY(2.0), 53.0);
    QCOMPARE(shape().gainY(9.0), 53.0);
    QCOMPARE(shape().gainY(-1.0), 93.0);
    QCOMPARE(shape().gainY(std::nan("")), 93.0);
    for (const double gain : {0.0, 0.35, 1.0, 1.75, 2.0})
        QCOMPARE(shape().gainAt(shape().gainY(gain)), gain);
    QCOMPARE(shape().gainAt(33.0), 3.0);
}

void ClipShapeTest::whatIsPlayedEndsInsideTheBlock()
{
    ClipShape clip = shape();
    QCOMPARE(clip.playedRight(), 400.0);
    clip.playedSeconds = 100.0;
    QCOMPARE(clip.playedRight(), 500.0);
    clip.playedSeconds = 0.0;
    QCOMPARE(clip.playedRight(), 100.0);
    clip.playedSeconds = std::nan("");
    QCOMPARE(clip.playedRight(), 100.0);
}

void ClipShapeTest::fadesLieInWhatIsPlayed()
{
    QCOMPARE(shape().fadeInX(), 160.0);
    QCOMPARE(shape().fadeOutX(), 280.0);
    const ClipShape none = shape({});
    QCOMPARE(none.fadeInX(), 100.0);
    QCOMPARE(none.fadeOutX(), 400.0);
    const ClipShape endless = shape({.gain = 1.0F, .fadeIn = 90.0F, .fadeOut = 90.0F});
    QCOMPARE(endless.fadeInX(), 400.0);
    QCOMPARE(endless.fadeOutX(), 100.0);
}

void ClipShapeTest::fadesAreAsLongAsTheirHandlesLieInside()
{
    QCOMPARE(shape().fadeInAt(190.0), 1.5);
    QCOMPARE(shape().fadeInAt(70.0), -0.5);
    QCOMPARE(shape().fadeOutAt(310.0), 1.5);
    QCOMPARE(shape().fadeOutAt(430.0), -0.5);
}

void ClipShapeTest::aClipIsHeardByItsGainAndFades()
{
    const ClipShape faded = shape();
    QCOMPARE(faded.levelAt(0.0), 0.0);
    QCOMPARE(faded.levelAt(0.5), 0.25);
    QCOMPARE(faded.levelAt(1.0), 0.5);
    QCOMPARE(faded.levelAt(3.0), 0.5);
    QCOMPARE(faded.levelAt(4.0), 0.25);
    QCOMPARE(faded.levelAt(5.0), 0.0);
    const ClipShape plain = shape({.gain = 1.5F, .fadeIn = 0.0F, .fadeOut = 0.0F});
    for (const double seconds : {0.0, 2.0, 5.0, 6.0})
        QCOMPARE(plain.levelAt(seconds), 1.5);
    const ClipShape brief = shape({.gain = 1.0F, .fadeIn = 0.5F, .fadeOut = 0.5F});
    QCOMPARE(brief.levelAt(0.25), 0.5);
    QCOMPARE(brief.levelAt(4.75), 0.5);
    const ClipShape crossed = shape({.gain = 1.0F, .fadeIn = 5.0F, .fadeOut = 5.0F});
    QCOMPARE(crossed.levelAt(2.5), 0.25);
}

void ClipShapeTest::handlesTakeTheirRoom()
{
    QVERIFY(shape().hasHandles(0.1));
    QVERIFY(!shape().hasHandles(0.0999));
    ClipShape clip = shape();
    clip.secondWidth = 0.5;
    QVERIFY(clip.hasHandles(1.0));
    clip.secondWidth = 0.0;
    QVERIFY(!clip.hasHandles(1.0));
}

void ClipShapeTest::aHandleStaysInsideItsBlock()
{
    QCOMPARE(shape().fadeHandle(ClipHandle::FadeIn, 1.0), QRectF(156.0, 50.0, 8.0, 8.0));
    QCOMPARE(shape().fadeHandle(ClipHandle::FadeOut, 1.0), QRectF(276.0, 50.0, 8.0, 8.0));
    QCOMPARE(shape().fadeHandle(ClipHandle::FadeIn, 2.0), QRectF(158.0, 50.0, 4.0, 8.0));
    ClipShape plain = shape({});
    plain.playedSeconds = 100.0;
    QCOMPARE(plain.fadeHandle(ClipHandle::FadeIn, 0.5), QRectF(100.0, 50.0, 16.0, 8.0));
    QCOMPARE(plain.fadeHandle(ClipHandle::FadeOut, 0.5), QRectF(484.0, 50.0, 16.0, 8.0));
}

void ClipShapeTest::theMouseTakesWhatItIsNear_data()
{
    QTest::addColumn<QPointF>("place");
    QTest::addColumn<Handle>("handle");
    const Handle none;
    QTest::newRow("the fade in") << QPointF(160.0, 54.0) << Handle(ClipHandle::FadeIn);
    QTest::newRow("just left of it") << QPointF(153.5, 54.0) << Handle(ClipHandle::FadeIn);
    QTest::newRow("too far left of it") << QPointF(152.5, 54.0) << none;
    QTest::newRow("just right of it") << QPointF(166.5, 54.0) << Handle(ClipHandle::FadeIn);
    QTest::newRow("too far right of it") << QPointF(167.5, 54.0) << none;
    QTest::newRow("just below it") << QPointF(160.0, 60.5) << Handle(ClipHandle::FadeIn);
    QTest::newRow("too far below it") << QPointF(160.0, 61.5) << none;
    QTest::newRow("above the block") << QPointF(160.0, 49.0) << none;
    QTest::newRow("the fade out") << QPointF(280.0, 54.0) << Handle(ClipHandle::FadeOut);
    QTest::newRow("just left of the fade out")
        << QPointF(273.5, 54.0) << Handle(ClipHandle::FadeOut);
    QTest::newRow("the line") << QPointF(300.0, 83.0) << Handle(ClipHandle::Gain);
    QTest::newRow("just above the line") << QPointF(300.0, 80.0) << Handle(ClipHandle::Gain);
    QTest::newRow("too far above the line") << QPointF(300.0, 79.5) << none;
    QTest::newRow("just below the line") << QPointF(300.0, 86.0) << Handle(ClipHandle::Gain);
    QTest::newRow("too far below the line") << QPointF(300.0, 86.5) << none;
    QTest::newRow("the line beside the block") << QPointF(99.0, 83.0) << none;
}

void ClipShapeTest::theMouseTakesWhatItIsNear()
{
    QFETCH(QPointF, place);
    QFETCH(Handle, handle);
    QCOMPARE(shape().handleAt(place, 1.0), handle);
    QCOMPARE(shape().handleAt(place, 0.09), std::nullopt);
}

void ClipShapeTest::whereBothHandlesLieEachIsTakenFromItsSide()
{
    // Both lie at 250, and the line of the gain behind them.
    const ClipShape meeting = shape({.gain = 2.0F, .fadeIn = 2.5F, .fadeOut = 2.5F});
    QCOMPARE(meeting.handleAt({248.0, 54.0}, 1.0), ClipHandle::FadeIn);
    QCOMPARE(meeting.handleAt({252.0, 54.0}, 1.0), ClipHandle::FadeOut);
    QCOMPARE(meeting.handleAt({300.0, 54.0}, 1.0), ClipHandle::Gain);
    // At 244 and at 250: what both reach parts at 247.
    const ClipShape beside = shape({.gain = 1.0F, .fadeIn = 2.4F, .fadeOut = 2.5F});
    QCOMPARE(beside.handleAt({246.5, 54.0}, 1.0), ClipHandle::FadeIn);
    QCOMPARE(beside.handleAt({247.5, 54.0}, 1.0), ClipHandle::FadeOut);
}

void ClipShapeTest::handlesThatHaveCrossedAreTakenWhereTheyLie()
{
    const ClipShape crossed = shape({.gain = 1.0F, .fadeIn = 4.0F, .fadeOut = 4.0F});
    QCOMPARE(crossed.handleAt({340.0, 54.0}, 1.0), ClipHandle::FadeIn);
    QCOMPARE(crossed.handleAt({160.0, 54.0}, 1.0), ClipHandle::FadeOut);
}

void ClipShapeTest::reachIsMeasuredOnTheScreen()
{
    // From 158 to 162, and one and a half pixels of the scene more on either side.
    QCOMPARE(shape().handleAt({156.6, 54.0}, 2.0), ClipHandle::FadeIn);
    QCOMPARE(shape().handleAt({156.4, 54.0}, 2.0), std::nullopt);
    QCOMPARE(shape().handleAt({146.5, 54.0}, 0.5), ClipHandle::FadeIn);
    QCOMPARE(shape().handleAt({145.5, 54.0}, 0.5), std::nullopt);
}

VELTA_GUILESS_TEST(ClipShapeTest)

} // namespace ClipShapeTests

#include "ClipShapeTest.moc"
