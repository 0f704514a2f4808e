#include "listen/HeardGroove.h"

#include "music/GrooveTemplate.h"
#include "support/TestProgram.h"

#include <QTest>

namespace HeardGrooveTests {

class HeardGrooveTest : public QObject {
    Q_OBJECT

private slots:
    void fourTenthsOfALeanAreHeard();
    void whatNobodyHearsIsLeftOut();
    void aStraightGrooveSaysSo();
};

void HeardGrooveTest::fourTenthsOfALeanAreHeard()
{
    // 0.05 beats at 84 are 35.7 ms, and four tenths of that are 14.3.
    const GrooveTemplate groove{.rhythmId = "zamba",
                                .offsets = {{.position = 2.0, .timingOffsetBeats = 0.05},
                                            {.position = 2.5, .timingOffsetBeats = -0.03}}};
    QCOMPARE(heardGroove(groove, 84), QString("2: +14 ms · 2.5: −9 ms"));
}

void HeardGrooveTest::whatNobodyHearsIsLeftOut()
{
    const GrooveTemplate groove{.rhythmId = "gato",
                                .offsets = {{.position = 0.0, .timingOffsetBeats = 0.001},
                                            {.position = 0.75, .timingOffsetBeats = 0.05}}};
    QCOMPARE(heardGroove(groove, 92), QString("0.75: +13 ms"));
}

void HeardGrooveTest::aStraightGrooveSaysSo()
{
    const GrooveTemplate groove{.rhythmId = "saya",
                                .offsets = {{.position = 0.0, .velocityOffset = 8}}};
    QCOMPARE(heardGroove(groove, 108), QString("sin desvíos"));
}

VELTA_GUILESS_TEST(HeardGrooveTest)

} // namespace HeardGrooveTests

#include "HeardGrooveTest.moc"
