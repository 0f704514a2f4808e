#include "music/LoopSection.h"

#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace LoopSectionTests {

class LoopSectionTest : public QObject {
    Q_OBJECT

private slots:
    void sectionAndWord_data();
    void sectionAndWord();
    void unknownNumberIsWrittenAsNormal_data();
    void unknownNumberIsWrittenAsNormal();
    void anyOtherTextIsNormal_data();
    void anyOtherTextIsNormal();
    void sectionsStandInTheOrderOfTheForm();
};

void LoopSectionTest::sectionAndWord_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("word");

    QTest::newRow("0 is Intro") << 0 << "Intro";
    QTest::newRow("1 is Intermedio") << 1 << "Intermedio";
    QTest::newRow("2 is Normal") << 2 << "Normal";
    QTest::newRow("3 is Final") << 3 << "Final";
}

void LoopSectionTest::sectionAndWord()
{
    QFETCH(int, number);
    QFETCH(QString, word);
    QCOMPARE(loopSectionToString(static_cast<LoopSection>(number)), word);
    QCOMPARE(static_cast<int>(loopSectionFromString(word)), number);
}

void LoopSectionTest::unknownNumberIsWrittenAsNormal_data()
{
    QTest::addColumn<int>("number");

    QTest::newRow("4") << 4;
    QTest::newRow("-1") << -1;
    QTest::newRow("the largest integer") << std::numeric_limits<int>::max();
    QTest::newRow("the least integer") << std::numeric_limits<int>::min();
}

void LoopSectionTest::unknownNumberIsWrittenAsNormal()
{
    QFETCH(int, number);
    QCOMPARE(loopSectionToString(static_cast<LoopSection>(number)), QString("Normal"));
}

void LoopSectionTest::anyOtherTextIsNormal_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("a longer word") << "Introducción";
    QTest::newRow("lower case") << "intro";
    QTest::newRow("upper case") << "FINAL";
    QTest::newRow("a leading space") << " Intro";
    QTest::newRow("a trailing space") << "Final ";
    QTest::newRow("the English word") << "Ending";
    QTest::newRow("a number") << "0";
    QTest::newRow("empty") << "";
    QTest::newRow("null") << QString();
    QTest::newRow("a trailing null character") << QString("Intro") + QChar(0);
}

void LoopSectionTest::anyOtherTextIsNormal()
{
    QFETCH(QString, text);
    QCOMPARE(loopSectionFromString(text), LoopSection::Normal);
}

void LoopSectionTest::sectionsStandInTheOrderOfTheForm()
{
    QVERIFY(LoopSection::Intro < LoopSection::Intermedio);
    QVERIFY(LoopSection::Intermedio < LoopSection::Normal);
    QVERIFY(LoopSection::Normal < LoopSection::Final);
}

VELTA_GUILESS_TEST(LoopSectionTest)

} // namespace LoopSectionTests

#include "LoopSectionTest.moc"
