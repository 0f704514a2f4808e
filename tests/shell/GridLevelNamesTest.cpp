#include "shell/GridLevelNames.h"

#include "support/ContextTranslator.h"
#include "support/TestProgram.h"

#include <QCoreApplication>
#include <QTest>

namespace GridLevelNamesTests {

class GridLevelNamesTest : public QObject {
    Q_OBJECT

private slots:
    void everyLevelHasWords_data();
    void everyLevelHasWords();
    void aLevelOfNoNameIsThePulse();
    void thereAreThreeLevelsFromTheCoarsest();
    void textsBelongToTheGrid();
};

void GridLevelNamesTest::everyLevelHasWords_data()
{
    using Level = GridSubdivisionLevel;
    QTest::addColumn<Level>("level");
    QTest::addColumn<bool>("compound");
    QTest::addColumn<QString>("words");
    QTest::newRow("pulse, simple") << Level::Pulse << false << "Pulso (el pie)";
    QTest::newRow("pulse, compound") << Level::Pulse << true << "Pulso (el pie)";
    QTest::newRow("division, simple") << Level::Division << false << "División binaria (de a 2)";
    QTest::newRow("division, compound") << Level::Division << true << "División ternaria (de a 3)";
    QTest::newRow("subdivision, simple") << Level::Subdivision << false << "Subdivisión (de a 4)";
    QTest::newRow("subdivision, compound") << Level::Subdivision << true << "Subdivisión (de a 6)";
}

void GridLevelNamesTest::everyLevelHasWords()
{
    QFETCH(GridSubdivisionLevel, level);
    QFETCH(bool, compound);
    QTEST(gridLevelName(level, compound), "words");
}

void GridLevelNamesTest::aLevelOfNoNameIsThePulse()
{
    for (const int number : {-1, 3, 1000}) {
        const auto level = static_cast<GridSubdivisionLevel>(number);
        QCOMPARE(gridLevelName(level, false), "Pulso (el pie)");
        QCOMPARE(gridLevelName(level, true), "Pulso (el pie)");
    }
}

void GridLevelNamesTest::thereAreThreeLevelsFromTheCoarsest()
{
    QList<int> numbers;
    for (const GridSubdivisionLevel level : kGridLevels)
        numbers.append(static_cast<int>(level));
    QCOMPARE(numbers, (QList{0, 1, 2}));
}

void GridLevelNamesTest::textsBelongToTheGrid()
{
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    for (const GridSubdivisionLevel level : kGridLevels) {
        QVERIFY(gridLevelName(level, false).startsWith("Grilla: "));
        QVERIFY(gridLevelName(level, true).startsWith("Grilla: "));
    }
    QCOMPARE(gridLevelName(GridSubdivisionLevel::Pulse, false), "Grilla: Pulso (el pie)");
}

VELTA_GUILESS_TEST(GridLevelNamesTest)

} // namespace GridLevelNamesTests

#include "GridLevelNamesTest.moc"
