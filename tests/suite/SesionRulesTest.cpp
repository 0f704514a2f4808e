#include "suite/Sesion.h"
#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace SesionRulesTests {

using brusel::Sesion;

namespace {

constexpr int kMinute = 60;

const QDateTime kNow(QDate(2024, 5, 6), QTime(11, 0), Qt::UTC);

/// Whether a session of so many planned minutes is alive, so many seconds after its begin and
/// after its latest activity.
bool isAlive(int plannedMin, qint64 sinceBegin, qint64 sinceActivity)
{
    return Sesion::evaluarReglas(kNow.addSecs(-sinceBegin), kNow.addSecs(-sinceActivity),
                                 plannedMin, kNow);
}

} // namespace

/// How long a session is alive.
class SesionRulesTest : public QObject {
    Q_OBJECT

private slots:
    void theRulesDecideWhoIsAlive_data();
    void theRulesDecideWhoIsAlive();
    void boundsHoldToTheEndOfTheirLastMinute_data();
    void boundsHoldToTheEndOfTheirLastMinute();
    void fractionsOfSecondsDoNotCount();
    void everySecondIsDecidedAsByThePlainBounds();
};

void SesionRulesTest::theRulesDecideWhoIsAlive_data()
{
    QTest::addColumn<int>("plannedMin");
    QTest::addColumn<int>("begunMin");
    QTest::addColumn<int>("activityMin");
    QTest::addColumn<bool>("alive");
    QTest::newRow("over time, in use") << 45 << 50 << 10 << true;
    QTest::newRow("over time, out of use") << 45 << 50 << 20 << false;
    QTest::newRow("past the grace, in use") << 45 << 61 << 0 << false;
    QTest::newRow("within the plan, never used") << 45 << 40 << 40 << true;
    QTest::newRow("the last minute of the grace") << 45 << 60 << 15 << true;
    QTest::newRow("a plan of one minute") << 1 << 16 << 15 << true;
    QTest::newRow("past a plan of one minute") << 1 << 17 << 0 << false;
    QTest::newRow("a plan of a day") << 1440 << 1440 << 1440 << true;
    QTest::newRow("no plan, ninety minutes, never used") << 0 << 90 << 90 << true;
    QTest::newRow("no plan, past ninety minutes, out of use") << 0 << 91 << 16 << false;
    QTest::newRow("no plan, past ninety minutes, in use") << 0 << 91 << 15 << true;
    QTest::newRow("no plan, four hours, in use") << 0 << 240 << 0 << true;
    QTest::newRow("no plan, past four hours, in use") << 0 << 241 << 0 << false;
    QTest::newRow("a negative plan is none") << -45 << 90 << 90 << true;
    QTest::newRow("past a negative plan") << -45 << 241 << 0 << false;
    QTest::newRow("the longest plan")
        << std::numeric_limits<int>::max() << 100'000'000 << 100'000'000 << true;
    QTest::newRow("the shortest plan") << std::numeric_limits<int>::min() << 90 << 90 << true;
    QTest::newRow("a clock set back") << 45 << -600 << -600 << true;
    QTest::newRow("a clock set back, no plan") << 0 << -600 << -600 << true;
    QTest::newRow("activity ahead of the clock") << 45 << 50 << -600 << true;
}

void SesionRulesTest::theRulesDecideWhoIsAlive()
{
    QFETCH(int, plannedMin);
    QFETCH(int, begunMin);
    QFETCH(int, activityMin);
    QTEST(isAlive(plannedMin, qint64(begunMin) * kMinute, qint64(activityMin) * kMinute), "alive");
}

void SesionRulesTest::boundsHoldToTheEndOfTheirLastMinute_data()
{
    QTest::addColumn<int>("plannedMin");
    QTest::addColumn<int>("begunSec");
    QTest::addColumn<int>("activitySec");
    QTest::addColumn<bool>("alive");
    QTest::newRow("45 minutes and 59 seconds, never used") << 45 << 2759 << 2759 << true;
    QTest::newRow("46 minutes, never used") << 45 << 2760 << 2760 << false;
    QTest::newRow("60 minutes and 59 seconds, in use") << 45 << 3659 << 0 << true;
    QTest::newRow("61 minutes, in use") << 45 << 3660 << 0 << false;
    QTest::newRow("used 15 minutes and 59 seconds ago") << 45 << 3000 << 959 << true;
    QTest::newRow("used 16 minutes ago") << 45 << 3000 << 960 << false;
    QTest::newRow("no plan, the last second never used") << 0 << 5459 << 5459 << true;
    QTest::newRow("no plan, a second later") << 0 << 5460 << 5460 << false;
    QTest::newRow("no plan, the last second in use") << 0 << 14459 << 959 << true;
    QTest::newRow("no plan, the last second just out of use") << 0 << 14459 << 960 << false;
    QTest::newRow("no plan, past the last second") << 0 << 14460 << 0 << false;
}

void SesionRulesTest::boundsHoldToTheEndOfTheirLastMinute()
{
    QFETCH(int, plannedMin);
    QFETCH(int, begunSec);
    QFETCH(int, activitySec);
    QTEST(isAlive(plannedMin, begunSec, activitySec), "alive");
}

void SesionRulesTest::fractionsOfSecondsDoNotCount()
{
    const QDateTime latest = kNow.addSecs(-959).addMSecs(-999);
    QVERIFY(Sesion::evaluarReglas(kNow.addSecs(-14459).addMSecs(-999), latest, 0, kNow));
    QVERIFY(!Sesion::evaluarReglas(kNow.addSecs(-14459).addMSecs(-1000), latest, 0, kNow));
    QVERIFY(!Sesion::evaluarReglas(kNow.addSecs(-14459), latest.addMSecs(-1), 0, kNow));
}

/// "At most n minutes, cut" is "less than n + 1 minutes" of seconds, for every n from 0 on.
void SesionRulesTest::everySecondIsDecidedAsByThePlainBounds()
{
    for (const int planned : {0, 1, 45, 90, 240}) {
        const int assured = planned == 0 ? 91 * kMinute : (planned + 1) * kMinute;
        const int longest = planned == 0 ? 241 * kMinute : (planned + 16) * kMinute;
        for (int begun = -70; begun < 16'000; ++begun) {
            const bool inAnyCase = begun < assured;
            QCOMPARE(isAlive(planned, begun, 960), inAnyCase);
            QCOMPARE(isAlive(planned, begun, 959), begun < longest);
        }
    }
}

VELTA_GUILESS_TEST(SesionRulesTest)

} // namespace SesionRulesTests

#include "SesionRulesTest.moc"
