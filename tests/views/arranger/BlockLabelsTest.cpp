#include "views/arranger/BlockLabels.h"

#include "support/TestProgram.h"

#include <QFontMetricsF>
#include <QTest>

namespace BlockLabelsTests {

class BlockLabelsTest : public QObject {
    Q_OBJECT

private slots:
    void theFullWordsStandWhereTheyFit();
    void theShortWordsStandWhereTheFullDoNot();
    void wordsWithoutRoomAreCutAtTheirEnd();
    void aNameIsNoMarkup();
    void everyFontHasItsOwnShape();

private:
    static double widthOf(const QString& words, const QFont& font = QFont())
    {
        return QFontMetricsF(font).horizontalAdvance(words);
    }

    BlockLabels labels_;
};

void BlockLabelsTest::theFullWordsStandWhereTheyFit()
{
    const QStaticText text = labels_.of("IV", "IV · Fa", widthOf("IV · Fa") + 2, QFont());
    QCOMPARE(text.text(), "IV · Fa");
    QCOMPARE(labels_.of("IV", "IV · Fa", widthOf("IV · Fa") + 2, QFont()), text);
}

void BlockLabelsTest::theShortWordsStandWhereTheFullDoNot()
{
    QCOMPARE(labels_.of("IV", "IV · Fa", widthOf("IV · Fa") - 3, QFont()).text(), "IV");
    QCOMPARE(labels_.of("IV", QString(), 200, QFont()).text(), "IV");
}

void BlockLabelsTest::wordsWithoutRoomAreCutAtTheirEnd()
{
    const QString cut =
        labels_.of("Melodía (16 notas)", QString(), widthOf("Melodía…"), QFont()).text();
    QVERIFY2(cut.startsWith("Melod") && cut.endsWith(u'…'), qPrintable(cut));
    QVERIFY(labels_.of("IV", "IV · Fa", 0, QFont()).size().width() < widthOf("IV"));
}

void BlockLabelsTest::aNameIsNoMarkup()
{
    const QString name = "<b>Voz</b>";
    const QStaticText text = labels_.of(name, QString(), 1000, QFont());
    QCOMPARE(text.textFormat(), Qt::PlainText);
    QVERIFY(text.size().width() >= widthOf(name) - 1);
}

void BlockLabelsTest::everyFontHasItsOwnShape()
{
    QFont large;
    large.setPointSizeF(3 * large.pointSizeF());
    const double width = widthOf("IV · Fa") + 2;
    QCOMPARE(labels_.of("IV", "IV · Fa", width, QFont()).text(), "IV · Fa");
    QCOMPARE(labels_.of("IV", "IV · Fa", width, large).text(), "IV");
    QCOMPARE(labels_.of("IV", "IV · Fa", width, QFont()).text(), "IV · Fa");
}

VELTA_TEST(BlockLabelsTest)

} // namespace BlockLabelsTests

#include "BlockLabelsTest.moc"
