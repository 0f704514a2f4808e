#include "music/GrooveIndex.h"

#include <QRandomGenerator>
#include <QTest>

#include <array>
#include <cmath>
#include <limits>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// The plain search: every offset in the order of the list, and only a strictly nearer one wins.
const GrooveOffset* plainNearest(const QList<GrooveOffset>& offsets, double position)
{
    const GrooveOffset* nearest = nullptr;
    double best = 1e9;
    for (const GrooveOffset& offset : offsets) {
        if (std::abs(offset.position - position) < best) {
            best = std::abs(offset.position - position);
            nearest = &offset;
        }
    }
    return best <= 0.125000001 ? nearest : nullptr;
}

double anyPosition(QRandomGenerator& random)
{
    constexpr std::array kOdd{kNaN, kInfinity, -kInfinity, 1e300, -1.0, 5e-324, 0.0, -0.0, 1e-17};
    switch (random.bounded(4)) {
    case 0:
        return random.bounded(32) / 8.0;
    case 1:
        return random.bounded(4.0);
    case 2:
        return 1.0 + random.bounded(8) * std::numeric_limits<double>::epsilon();
    default:
        return kOdd[static_cast<std::size_t>(random.bounded(static_cast<int>(kOdd.size())))];
    }
}

QList<GrooveOffset> anyOffsets(QRandomGenerator& random)
{
    QList<GrooveOffset> offsets(random.bounded(24));
    for (GrooveOffset& offset : offsets)
        offset.position = anyPosition(random);
    return offsets;
}

QList<GrooveOffset> at(const QList<double>& positions)
{
    QList<GrooveOffset> offsets;
    for (const double position : positions)
        offsets.append(GrooveOffset{.position = position});
    return offsets;
}

} // namespace

class GrooveIndexTest : public QObject {
    Q_OBJECT

private slots:
    void nearestOffset_data();
    void nearestOffset();
    void findsWhatThePlainSearchFinds();
    void thousandsOfOffsetsAreFoundToo();
};

void GrooveIndexTest::nearestOffset_data()
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

void GrooveIndexTest::nearestOffset()
{
    QFETCH(QList<double>, positions);
    QFETCH(double, asked);
    const QList<GrooveOffset> offsets = at(positions);
    const GrooveOffset* nearest = GrooveIndex(offsets).nearest(asked);
    QTEST(nearest ? static_cast<int>(nearest - offsets.constData()) : -1, "found");
}

void GrooveIndexTest::findsWhatThePlainSearchFinds()
{
    QRandomGenerator random(20);
    int found = 0;
    for (int round = 0; round < 20000; ++round) {
        const QList<GrooveOffset> offsets = anyOffsets(random);
        const GrooveIndex index(offsets);
        for (int question = 0; question < 10; ++question) {
            const double position = anyPosition(random);
            QCOMPARE(index.nearest(position), plainNearest(offsets, position));
            found += index.nearest(position) != nullptr;
        }
    }
    QVERIFY(found > 10000);
}

void GrooveIndexTest::thousandsOfOffsetsAreFoundToo()
{
    QRandomGenerator random(21);
    QList<GrooveOffset> offsets(5000);
    for (GrooveOffset& offset : offsets)
        offset.position = random.bounded(4.0);
    const GrooveIndex index(offsets);
    for (int question = 0; question < 1000; ++question) {
        const double position = random.bounded(4.0);
        QCOMPARE(index.nearest(position), plainNearest(offsets, position));
    }
}

QTEST_GUILESS_MAIN(GrooveIndexTest)
#include "GrooveIndexTest.moc"
