#include "shell/theme/Ink.h"

#include "shell/theme/CanvasColors.h"
#include "support/TestProgram.h"

#include <QTest>

namespace InkTests {

class InkTest : public QObject {
    Q_OBJECT

private slots:
    void contrastIsTheRatioOfLuminances_data();
    void contrastIsTheRatioOfLuminances();
    void inkIsReadOnEveryGround();
    void inkIsWhiteWhereThatWillDo_data();
    void inkIsWhiteWhereThatWillDo();
};

void InkTest::contrastIsTheRatioOfLuminances_data()
{
    QTest::addColumn<QColor>("ground");
    QTest::addColumn<double>("white");

    QTest::newRow("white") << QColor(Qt::white) << 1.0;
    QTest::newRow("black") << QColor(Qt::black) << 21.0;
    QTest::newRow("grey, the lightest that white is read on") << QColor("#767676") << 4.54;
    QTest::newRow("a note") << QColor("#7cb342") << 2.50;
    QTest::newRow("chord II") << QColor("#f9a825") << 1.97;
    QTest::newRow("chord III") << QColor("#fdd835") << 1.40;
}

void InkTest::contrastIsTheRatioOfLuminances()
{
    QFETCH(QColor, ground);
    QFETCH(double, white);
    QVERIFY2(std::abs(contrast(Qt::white, ground) - white) < 0.005,
             qPrintable(QString::number(contrast(Qt::white, ground))));
    QCOMPARE(contrast(ground, Qt::white), contrast(Qt::white, ground));
}

void InkTest::inkIsReadOnEveryGround()
{
    for (int red = 0; red < 256; red += 5) {
        for (int green = 0; green < 256; green += 5) {
            for (int blue = 0; blue < 256; blue += 15) {
                const QColor ground(red, green, blue);
                QVERIFY2(contrast(inkOn(ground), ground) >= 4.5, qPrintable(ground.name()));
            }
        }
    }
}

void InkTest::inkIsWhiteWhereThatWillDo_data()
{
    QTest::addColumn<QColor>("ground");
    QTest::addColumn<QColor>("ink");

    const QColor grey(0x22, 0x22, 0x22);
    QTest::newRow("a loop") << QColor("#00695c") << QColor(Qt::white);
    QTest::newRow("a melody") << QColor("#4a7325") << QColor(Qt::white);
    QTest::newRow("a voice") << QColor("#c2185b") << QColor(Qt::white);
    QTest::newRow("a note") << QColor("#7cb342") << grey;
    QTest::newRow("chord III") << QColor("#fdd835") << grey;
    QTest::newRow("chord I, too dark for grey and too light for white")
        << QColor("#e53935") << QColor(Qt::black);
}

void InkTest::inkIsWhiteWhereThatWillDo()
{
    QFETCH(QColor, ground);
    QTEST(inkOn(ground), "ink");
}

VELTA_GUILESS_TEST(InkTest)

} // namespace InkTests

#include "InkTest.moc"
