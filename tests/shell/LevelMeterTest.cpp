#include "shell/LevelMeter.h"

#include "support/TestProgram.h"

#include <QAccessible>
#include <QTest>

#include <limits>

namespace LevelMeterTests {

class LevelMeterTest : public QObject {
    Q_OBJECT

private slots:
    void itShowsTheLoudestThatCame_data();
    void itShowsTheLoudestThatCame();
    void itFallsBackToSilence();
    void itsColourTellsWhetherOneIsTooLoud_data();
    void itsColourTellsWhetherOneIsTooLoud();
    void itTellsItsLevelInWords();
};

void LevelMeterTest::itShowsTheLoudestThatCame_data()
{
    QTest::addColumn<QList<float>>("peaks");
    QTest::addColumn<double>("decibels");
    QTest::newRow("nothing") << QList<float>() << -48.0;
    QTest::newRow("silence") << QList<float>{0.0F} << -48.0;
    QTest::newRow("too soft to be seen") << QList<float>{0.001F} << -48.0;
    QTest::newRow("a tenth") << QList<float>{0.1F} << -20.0;
    QTest::newRow("full scale") << QList<float>{1.0F} << 0.0;
    QTest::newRow("the loudest") << QList<float>{0.01F, 0.1F, 0.03F} << -20.0;
    QTest::newRow("not more than full scale") << QList<float>{7.0F} << 0.0;
    QTest::newRow("no number") << QList<float>{std::numeric_limits<float>::quiet_NaN()} << -48.0;
}

void LevelMeterTest::itShowsTheLoudestThatCame()
{
    QFETCH(QList<float>, peaks);
    QFETCH(double, decibels);
    LevelMeter meter;
    for (const float peak : peaks)
        meter.take(peak);
    QVERIFY(std::abs(meter.decibels() - decibels) < 0.01);
}

void LevelMeterTest::itFallsBackToSilence()
{
    LevelMeter meter;
    meter.take(1.0F);
    QTRY_VERIFY(meter.decibels() < -3.0);
    QTRY_COMPARE(meter.decibels(), LevelMeter::kLeast);
    meter.take(0.5F);
    meter.clear();
    QCOMPARE(meter.decibels(), LevelMeter::kLeast);
}

void LevelMeterTest::itsColourTellsWhetherOneIsTooLoud_data()
{
    QTest::addColumn<float>("peak");
    QTest::addColumn<QColor>("color");
    QTest::newRow("well") << 0.3F << QColor("#8bc34a");
    QTest::newRow("nearly too loud") << 0.7F << QColor("#ffca28");
    QTest::newRow("cut") << 1.0F << QColor("#ff6e6a");
}

void LevelMeterTest::itsColourTellsWhetherOneIsTooLoud()
{
    QFETCH(float, peak);
    QFETCH(QColor, color);
    LevelMeter meter;
    meter.take(peak);
    const QImage painted = meter.grab().toImage();
    QCOMPARE(painted.pixelColor(5, painted.height() / 2).rgb(), color.rgb());
    // Full at full scale, and empty on the right below.
    const bool full = painted.pixelColor(painted.width() - 4, painted.height() / 2) == color;
    QCOMPARE(full, peak == 1.0F);
}

void LevelMeterTest::itTellsItsLevelInWords()
{
    LevelMeter meter;
    meter.take(0.1F);
    QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&meter);
    QCOMPARE(told->text(QAccessible::Name), QStringLiteral("Nivel del micrófono"));
    QCOMPARE(told->text(QAccessible::Value), QStringLiteral("-20 dB"));
}

VELTA_TEST(LevelMeterTest)

} // namespace LevelMeterTests

#include "LevelMeterTest.moc"
