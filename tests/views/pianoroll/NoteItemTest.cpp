#include "views/pianoroll/NoteItem.h"

#include "shell/theme/CanvasColors.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"

#include <QGraphicsScene>
#include <QPainter>

#include <limits>

namespace NoteItemTests {

namespace {

const QRectF kRect(0.0, 1.0, 64.0, 14.0);

/// A note of a beat as a view paints it at a scale, on white.
QImage picture(NoteItem& item, double horizontal = 1.0, double vertical = 2.0)
{
    QImage image(300, 120, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setWorldTransform(QTransform::fromScale(horizontal, vertical));
    item.paint(&painter, nullptr, nullptr);
    return image;
}

const QColor kInk(0x22, 0x22, 0x22);

/// Columns in which something of a colour is painted, inside the outline of the note.
QList<int> columnsOf(const QImage& image, const QColor& color, const QRect& inside)
{
    QList<int> columns;
    for (int x = inside.left(); x <= inside.right(); ++x) {
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            if (isNear(image.pixelColor(x, y), color, 40)) {
                columns.append(x);
                break;
            }
        }
    }
    return columns;
}

/// Whether a name is written in a note of a beat at a scale.
bool isNamed(int pitch, double horizontal, double vertical)
{
    NoteItem item(0, pitch, kRect);
    const QRect inside =
        QTransform::fromScale(horizontal, vertical).mapRect(kRect).toRect().adjusted(3, 3, -3, -3);
    return !columnsOf(picture(item, horizontal, vertical), kInk, inside).isEmpty();
}

} // namespace

class NoteItemTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void knowsItsNote();
    void fillsItsColor_data();
    void fillsItsColor();
    void isNoLargerThanItsRectangle();
    void namesAreDark_data();
    void namesAreDark();
    void lowRowsLoseTheirNames_data();
    void lowRowsLoseTheirNames();
    void narrowNotesLoseTheirNames_data();
    void narrowNotesLoseTheirNames();
    void lettersAreNotStretched();
    void lettersGrowWithTheRow_data();
    void lettersGrowWithTheRow();
    void nothingIsPaintedOutsideTheNote();
    void absurdNotesArePainted_data();
    void absurdNotesArePainted();

private:
    UserHome home_;
};

void NoteItemTest::init()
{
    ThemeManager::instance()->setDark(false);
}

void NoteItemTest::knowsItsNote()
{
    const NoteItem item(7, 60, kRect);
    QCOMPARE(item.type(), 65537);
    QCOMPARE(item.data(0).toInt(), 7);
    QCOMPARE(item.index(), 7);
    QCOMPARE(item.pitch(), 60);
    QVERIFY(item.flags() & QGraphicsItem::ItemIsSelectable);
    QVERIFY(!(item.flags() & QGraphicsItem::ItemIsMovable));
}

void NoteItemTest::fillsItsColor_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<QColor>("fill");
    QTest::addColumn<QColor>("outline");

    QTest::newRow("light") << false << false << QColor(0x7c, 0xb3, 0x42)
                           << QColor(0x2e, 0x52, 0x14);
    QTest::newRow("light, selected")
        << false << true << QColor(0x9c, 0xcc, 0x65) << QColor(0x2e, 0x52, 0x14);
    QTest::newRow("dark") << true << false << QColor(0x7c, 0xb3, 0x42) << QColor(0xdc, 0xed, 0xc8);
    QTest::newRow("dark, selected")
        << true << true << QColor(0xdc, 0xed, 0xc8) << QColor(0xdc, 0xed, 0xc8);
}

void NoteItemTest::fillsItsColor()
{
    QFETCH(bool, dark);
    QFETCH(bool, selected);
    QFETCH(QColor, fill);
    QFETCH(QColor, outline);
    ThemeManager::instance()->setDark(dark);
    QGraphicsScene scene;
    auto* item = new NoteItem(0, 60, kRect);
    scene.addItem(item);
    item->setSelected(selected);
    const QImage image = picture(*item);
    COMPARE_COLOR(image.pixelColor(60, 16), fill);
    COMPARE_COLOR(image.pixelColor(0, 16), outline);
    COMPARE_COLOR(image.pixelColor(63, 16), outline);
}

void NoteItemTest::isNoLargerThanItsRectangle()
{
    const NoteItem item(0, 60, kRect);
    QCOMPARE(item.boundingRect(), kRect);
    QVERIFY(item.contains({63.9, 8.0}));
    QVERIFY(!item.contains({64.2, 8.0}));
    QVERIFY(!item.contains({10.0, 0.5}));
}

void NoteItemTest::namesAreDark_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<QColor>("letters");

    const QColor ink = kInk;
    QTest::newRow("on a note") << false << false << ink;
    QTest::newRow("on a selected one") << false << true << ink;
    QTest::newRow("on a note in the dark") << true << false << ink;
    QTest::newRow("on a selected one in the dark") << true << true << ink;
}

void NoteItemTest::namesAreDark()
{
    QFETCH(bool, dark);
    QFETCH(bool, selected);
    QFETCH(QColor, letters);
    ThemeManager::instance()->setDark(dark);
    QGraphicsScene scene;
    auto* item = new NoteItem(0, 60, kRect);
    scene.addItem(item);
    item->setSelected(selected);
    const QRect inside(3, 5, 58, 22);
    QVERIFY(!columnsOf(picture(*item), letters, inside).isEmpty());
}

void NoteItemTest::lowRowsLoseTheirNames_data()
{
    QTest::addColumn<double>("vertical");
    QTest::addColumn<bool>("named");

    QTest::newRow("11 pixels") << 11.0 / 14.0 << true;
    QTest::newRow("just below") << 10.9 / 14.0 << false;
    QTest::newRow("as low as rows get") << 0.3 << false;
}

void NoteItemTest::lowRowsLoseTheirNames()
{
    QFETCH(double, vertical);
    QTEST(isNamed(60, 2.0, vertical), "named");
}

void NoteItemTest::narrowNotesLoseTheirNames_data()
{
    QTest::addColumn<int>("pitch");

    QTest::newRow("Do") << 60;
    QTest::newRow("Sol#") << 68;
}

void NoteItemTest::narrowNotesLoseTheirNames()
{
    QFETCH(int, pitch);
    // Rows of 28 pixels have letters of 15.
    QImage device(1, 1, QImage::Format_RGB32);
    const QPainter painter(&device);
    QFont font = painter.font();
    font.setPixelSize(15);
    const QString name = pitch == 60 ? "Do" : "Sol#";
    const double least = QFontMetrics(font).horizontalAdvance(name) + 6.0;
    QVERIFY(isNamed(pitch, least / 64.0, 2.0));
    QVERIFY(!isNamed(pitch, (least - 0.5) / 64.0, 2.0));
}

void NoteItemTest::lettersAreNotStretched()
{
    NoteItem item(0, 60, kRect);
    const QList<int> narrow = columnsOf(picture(item, 1.0), kInk, QRect(3, 5, 58, 22));
    const QList<int> wide = columnsOf(picture(item, 4.0), kInk, QRect(3, 5, 240, 22));
    QVERIFY(!narrow.isEmpty());
    QCOMPARE(wide, narrow);
    QVERIFY(narrow.first() >= 4);
}

void NoteItemTest::lettersGrowWithTheRow_data()
{
    QTest::addColumn<double>("height");
    QTest::addColumn<int>("pixels");

    QTest::newRow("not below 9") << 12.0 << 9;
    QTest::newRow("0.55 of the height") << 20.0 << 11;
    QTest::newRow("cut, not rounded") << 23.5 << 12;
    QTest::newRow("not above 15") << 80.0 << 15;
}

void NoteItemTest::lettersGrowWithTheRow()
{
    QFETCH(double, height);
    QFETCH(int, pixels);
    NoteItem item(0, 60, kRect);
    const QImage image = picture(item, 1.0, height / 14.0);
    QImage expected(300, 120, QImage::Format_RGB32);
    expected.fill(QColor(0x7c, 0xb3, 0x42));
    QPainter painter(&expected);
    QFont font = painter.font();
    font.setPixelSize(pixels);
    painter.setFont(font);
    painter.setPen(kInk);
    painter.drawText(QRectF(4.0, height / 14.0, 58.0, height), Qt::AlignLeft | Qt::AlignVCenter,
                     "Do");
    painter.end();
    // Without the outline, which is stretched with the row.
    const int margin = 2 + qRound(height / 14.0);
    const QRect inside(3, qRound(height / 14.0) + margin, 57, qRound(height) - 2 * margin);
    QCOMPARE(image.copy(inside), expected.copy(inside));
}

void NoteItemTest::nothingIsPaintedOutsideTheNote()
{
    NoteItem item(0, 68, kRect);
    const QImage image = picture(item);
    for (const QPoint& place : {QPoint(30, 0), QPoint(30, 1), QPoint(30, 31), QPoint(65, 16)})
        COMPARE_COLOR(image.pixelColor(place), QColor(Qt::white));
}

void NoteItemTest::absurdNotesArePainted_data()
{
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<int>("pitch");

    QTest::newRow("without length") << QRectF(10, 1, 0, 14) << 60;
    QTest::newRow("endless") << QRectF(0, 1, 64e6, 14) << 60;
    QTest::newRow("absurdly high") << kRect << std::numeric_limits<int>::max();
    QTest::newRow("absurdly low") << kRect << std::numeric_limits<int>::min();
}

void NoteItemTest::absurdNotesArePainted()
{
    QFETCH(QRectF, rect);
    QFETCH(int, pitch);
    NoteItem item(0, pitch, rect);
    QVERIFY(!picture(item, 6.0, 6.0).isNull());
}

VELTA_TEST(NoteItemTest)

} // namespace NoteItemTests

#include "NoteItemTest.moc"
