#include "shell/WrappingRow.h"

#include "support/TestProgram.h"

#include <QApplication>
#include <QTest>
#include <QVBoxLayout>
#include <QWidget>

#include <limits>
#include <memory>

namespace WrappingRowTests {

namespace {

/// A row of squares of this size that ends in a stretch, without margins, ten pixels apart.
std::unique_ptr<QWidget> rowOf(int squares, int size = 30)
{
    auto widget = std::make_unique<QWidget>();
    auto* row = new WrappingRow(widget.get());
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(10);
    for (int i = 0; i < squares; ++i) {
        auto* square = new QWidget;
        square->setFixedSize(size, size);
        row->addWidget(square);
    }
    row->addStretch();
    return widget;
}

/// The places of the squares in a row of this width.
QList<QPoint> placesIn(QWidget& widget, int width)
{
    widget.resize(width, 500);
    widget.layout()->activate();
    QList<QPoint> places;
    for (const QWidget* square :
         widget.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        places.append(square->pos());
    return places;
}

} // namespace

class WrappingRowTest : public QObject {
    Q_OBJECT

private slots:
    void whatFitsStandsInOneLine();
    void whatDoesNotFitGoesOnBelow_data();
    void whatDoesNotFitGoesOnBelow();
    void theHeightFollowsTheWidth_data();
    void theHeightFollowsTheWidth();
    void marginsCount();
    void aLineIsAsHighAsItsHighest();
    void theWidestFitsAlways();
    void anEmptyRowTakesNoRoom();
    void aColumnGivesItTheHeightThatItNeeds();
};

void WrappingRowTest::whatFitsStandsInOneLine()
{
    const auto row = rowOf(3);
    QCOMPARE(placesIn(*row, 110), (QList<QPoint>{{0, 0}, {40, 0}, {80, 0}}));
    QCOMPARE(placesIn(*row, 400), (QList<QPoint>{{0, 0}, {40, 0}, {80, 0}}));
    QCOMPARE(row->sizeHint().width(), 110);
}

void WrappingRowTest::whatDoesNotFitGoesOnBelow_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QList<QPoint>>("places");
    QTest::newRow("a pixel too narrow for three")
        << 109 << QList<QPoint>{{0, 0}, {40, 0}, {0, 40}, {40, 40}};
    QTest::newRow("two and two") << 70 << QList<QPoint>{{0, 0}, {40, 0}, {0, 40}, {40, 40}};
    QTest::newRow("one by one") << 69 << QList<QPoint>{{0, 0}, {0, 40}, {0, 80}, {0, 120}};
}

void WrappingRowTest::whatDoesNotFitGoesOnBelow()
{
    QFETCH(int, width);
    const auto row = rowOf(4);
    QTEST(placesIn(*row, width), "places");
}

void WrappingRowTest::theHeightFollowsTheWidth_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("all in a line") << 150 << 30;
    QTest::newRow("any wider") << 100000 << 30;
    QTest::newRow("two lines") << 149 << 70;
    QTest::newRow("four lines") << 30 << 150;
    QTest::newRow("too narrow for any") << 1 << 150;
    QTest::newRow("no width") << 0 << 150;
    QTest::newRow("negative width") << -7 << 150;
    QTest::newRow("as wide as can be") << std::numeric_limits<int>::max() << 30;
}

void WrappingRowTest::theHeightFollowsTheWidth()
{
    QFETCH(int, width);
    const auto row = rowOf(4);
    QVERIFY(row->layout()->hasHeightForWidth());
    QTEST(row->layout()->heightForWidth(width), "height");
    QTEST(row->layout()->minimumHeightForWidth(width), "height");
}

void WrappingRowTest::marginsCount()
{
    const auto row = rowOf(2);
    row->layout()->setContentsMargins(6, 1, 5, 2);
    QCOMPARE(row->layout()->heightForWidth(81), 33);
    QCOMPARE(row->layout()->heightForWidth(80), 73);
    QCOMPARE(placesIn(*row, 80), (QList<QPoint>{{6, 1}, {6, 41}}));
    QCOMPARE(row->layout()->minimumSize(), QSize(41, 33));
}

void WrappingRowTest::aLineIsAsHighAsItsHighest()
{
    const auto row = rowOf(3);
    row->findChildren<QWidget*>().at(0)->setFixedHeight(50);
    QCOMPARE(row->layout()->heightForWidth(70), 90);
    QCOMPARE(placesIn(*row, 70), (QList<QPoint>{{0, 0}, {40, 0}, {0, 60}}));
}

void WrappingRowTest::theWidestFitsAlways()
{
    const auto row = rowOf(3);
    row->findChildren<QWidget*>().at(1)->setFixedWidth(77);
    QCOMPARE(row->layout()->minimumSize().width(), 77);
}

void WrappingRowTest::anEmptyRowTakesNoRoom()
{
    const auto row = rowOf(0);
    QCOMPARE(row->layout()->heightForWidth(100), 0);
    QCOMPARE(row->layout()->minimumSize(), QSize(0, 0));
}

void WrappingRowTest::aColumnGivesItTheHeightThatItNeeds()
{
    QWidget column;
    auto* layout = new QVBoxLayout(&column);
    layout->setContentsMargins(0, 0, 0, 0);
    QWidget* row = rowOf(4).release();
    layout->addWidget(row);
    layout->addStretch();
    column.resize(150, 300);
    column.show();
    QApplication::processEvents();
    QCOMPARE(row->height(), 30);
    column.resize(70, 300);
    QApplication::processEvents();
    QCOMPARE(row->height(), 70);
}

VELTA_TEST(WrappingRowTest)

} // namespace WrappingRowTests

#include "WrappingRowTest.moc"
