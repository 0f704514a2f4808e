#include "model/GridSubdivision.h"
#include "model/Project.h"
#include "support/TestProgram.h"

#include <QMetaType>
#include <QTest>
#include <QVariant>

namespace MetaTypesTests {

class MetaTypesTest : public QObject {
    Q_OBJECT

private slots:
    void recordsAreKnownByNameOnceAProjectExists_data();
    void recordsAreKnownByNameOnceAProjectExists();
    void namesBelongToTheRecords();
    void recordsTravelInVariants();
    void gridLevelsAreNumberedFromCoarseToFine();
};

void MetaTypesTest::recordsAreKnownByNameOnceAProjectExists_data()
{
    QTest::addColumn<QByteArray>("name");

    QTest::newRow("TimeSignature") << QByteArray("TimeSignature");
    QTest::newRow("KeySignature") << QByteArray("KeySignature");
    QTest::newRow("LoopSection") << QByteArray("LoopSection");
    QTest::newRow("GridSubdivisionLevel") << QByteArray("GridSubdivisionLevel");
}

void MetaTypesTest::recordsAreKnownByNameOnceAProjectExists()
{
    QFETCH(QByteArray, name);
    const Project project;
    QVERIFY(QMetaType::fromName(name).isValid());
    QCOMPARE(QByteArray(QMetaType::fromName(name).name()), name);
}

void MetaTypesTest::namesBelongToTheRecords()
{
    const Project project;
    QVERIFY(QMetaType::fromName("TimeSignature") == QMetaType::fromType<TimeSignature>());
    QVERIFY(QMetaType::fromName("KeySignature") == QMetaType::fromType<KeySignature>());
    QVERIFY(QMetaType::fromName("LoopSection") == QMetaType::fromType<LoopSection>());
    QVERIFY(QMetaType::fromName("GridSubdivisionLevel") ==
            QMetaType::fromType<GridSubdivisionLevel>());
}

void MetaTypesTest::recordsTravelInVariants()
{
    const TimeSignature meter{.numerator = 6, .denominator = 8, .isCompound = true};
    const KeySignature key{.rootPitchClass = 9, .mode = KeyMode::Minor};
    QVERIFY(QVariant::fromValue(meter).value<TimeSignature>() == meter);
    QVERIFY(QVariant::fromValue(key).value<KeySignature>() == key);
    QVERIFY(QVariant::fromValue(meter) == QVariant::fromValue(meter));
    QVERIFY(QVariant::fromValue(meter) != QVariant::fromValue(TimeSignature()));
    QVERIFY(QVariant::fromValue(key) != QVariant::fromValue(KeySignature()));
    QCOMPARE(QVariant::fromValue(LoopSection::Final).value<LoopSection>(), LoopSection::Final);
}

void MetaTypesTest::gridLevelsAreNumberedFromCoarseToFine()
{
    QCOMPARE(static_cast<int>(GridSubdivisionLevel::Pulse), 0);
    QCOMPARE(static_cast<int>(GridSubdivisionLevel::Division), 1);
    QCOMPARE(static_cast<int>(GridSubdivisionLevel::Subdivision), 2);
    QVERIFY(GridSubdivisionLevel::Pulse < GridSubdivisionLevel::Subdivision);
}

VELTA_GUILESS_TEST(MetaTypesTest)

} // namespace MetaTypesTests

#include "MetaTypesTest.moc"
