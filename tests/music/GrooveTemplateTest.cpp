#include "music/GrooveTemplate.h"

#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace GrooveTemplateTests {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

GrooveTemplate at(const QList<double>& positions)
{
    GrooveTemplate groove;
    for (const double position : positions)
        groove.offsets.append(GrooveOffset{.position = position});
    return groove;
}

} // namespace

class GrooveTemplateTest : public QObject {
    Q_OBJECT

private slots:
    void nearestOffset_data();
    void nearestOffset();
};

void GrooveTemplateTest::nearestOffset_data()
{
    QTest::addColumn<QList<double>>("positions");
    QTest::addColumn<double>("asked");
    QTest::addColumn<int>("found");

    using Positions = QList<double>;
    QTest::newRow("no offsets") << Positions{} << 0.0 << -1;
    QTest::newRow("an offset on the note") << Positions{0.0, 1.0} << 1.0 << 1;
    QTest::newRow("the nearer of two") << Positions{1.0, 1.2} << 1.11 << 1;
    QTest::newRow("a tie goes to the earlier in the list") << Positions{1.25, 1.0} << 1.125 << 0;
    QTest::newRow("a tie goes to the earlier in the list, on the other side")
        << Positions{1.0, 1.25} << 1.125 << 0;
    QTest::newRow("of equal positions the first") << Positions{2.0, 1.0, 1.0, 1.0} << 1.0 << 1;
    QTest::newRow("an eighth of a beat away is in reach") << Positions{1.0} << 1.125 << 0;
    QTest::newRow("the slack for rounding is in reach") << Positions{0.0} << 0.125000001 << 0;
    QTest::newRow("farther is out of reach") << Positions{1.0} << 1.13 << -1;
    QTest::newRow("a position that is no number is nowhere") << Positions{kNaN, 1.0} << 1.0 << 1;
    QTest::newRow("a question that is no number finds nothing") << Positions{0.0} << kNaN << -1;
    QTest::newRow("nothing is near infinity") << Positions{kInfinity} << kInfinity << -1;
}

void GrooveTemplateTest::nearestOffset()
{
    QFETCH(QList<double>, positions);
    QFETCH(double, asked);
    const GrooveTemplate groove = at(positions);
    const GrooveOffset* nearest = groove.nearest(asked);
    QTEST(nearest ? static_cast<int>(nearest - groove.offsets.constData()) : -1, "found");
}

VELTA_GUILESS_TEST(GrooveTemplateTest)

} // namespace GrooveTemplateTests

#include "GrooveTemplateTest.moc"
