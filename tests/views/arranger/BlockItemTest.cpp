#include "views/arranger/BlockItem.h"

#include "shell/theme/CanvasColors.h"
#include "shell/theme/Ink.h"
#include "shell/theme/ThemeManager.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <cstdlib>

namespace BlockItemTests {

namespace {

constexpr QRectF kRect(10.0, 6.0, 120.0, 36.0);

/// What shows behind the items.
constexpr QColor kPaper(0xff, 0xff, 0x00);

QFont fontOf(qreal points)
{
    QFont font = QApplication::font();
    font.setPointSizeF(points);
    return font;
}

QImage paintedItem(BlockItem& item, const QFont& font = QApplication::font(), double zoom = 1.0)
{
    QImage image(400, 60, QImage::Format_RGB32);
    image.fill(kPaper);
    QPainter painter(&image);
    painter.setFont(font);
    painter.scale(zoom, 1.0);
    item.paint(&painter, nullptr, nullptr);
    return image;
}

BlockItem blockOf(BlockKind kind, const QString& label = {})
{
    return BlockItem({kind, 0, 0}, kRect, label);
}

/// Every channel of a color times a factor. A factor above 1 must not overflow the largest one.
QColor times(const QColor& color, double factor)
{
    return QColor(qRound(color.red() * factor), qRound(color.green() * factor),
                  qRound(color.blue() * factor));
}

/// The smallest rectangle around what is as good as white.
QRect inkOf(const QImage& image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color.red() > 200 && color.green() > 200 && color.blue() > 200)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

} // namespace

class BlockItemTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void typeIsItsOwn();
    void canBeSelectedAndNothingElse();
    void chordIsRedUnlessSaidOtherwise();

    void fillGoesByKindInBothThemes_data();
    void fillGoesByKindInBothThemes();
    void chordIsFilledWithItsOwnColor();
    void otherKindsIgnoreTheColorOfChords();
    void outlineIsADarkerHairline();
    void hairlineStaysOnePixelWideUnderZoom();
    void selectedBlockIsLighter_data();
    void selectedBlockIsLighter();
    void selectedBlockHasAnOutlineOfTwoPixelsInBothThemes();
    void cornersAreRound();

    void labelIsWhiteInItsPlace();
    void fullLabelTakesThePlaceOfTheShortOneWhereItFits();
    void labelIsSmallerThanTheFont_data();
    void labelIsSmallerThanTheFont();
    void longLabelIsElided();
    void labelIsNotStretched();
    void labelsAreReadOnEveryGround();
    void blockWithoutALabelHasNoInk();
    void paintsIntoTinyAndHugeRectangles_data();
    void paintsIntoTinyAndHugeRectangles();

private:
    UserHome home_;
    void aLoopShowsWhereItRepeats();
    void repetitionsTooCloseToTellApartAreNotShown();
};

void BlockItemTest::init()
{
    ThemeManager::instance()->setDark(false);
}

void BlockItemTest::typeIsItsOwn()
{
    QCOMPARE(blockOf(BlockKind::Melody).type(), 65546);
    BlockItem item = blockOf(BlockKind::Chord);
    QCOMPARE(qgraphicsitem_cast<BlockItem*>(static_cast<QGraphicsItem*>(&item)), &item);
    QGraphicsRectItem plain;
    QVERIFY(!qgraphicsitem_cast<BlockItem*>(static_cast<QGraphicsItem*>(&plain)));
}

void BlockItemTest::canBeSelectedAndNothingElse()
{
    QCOMPARE(blockOf(BlockKind::Loop).flags(), QGraphicsItem::ItemIsSelectable);
}

void BlockItemTest::chordIsRedUnlessSaidOtherwise()
{
    QCOMPARE(blockOf(BlockKind::Chord).fill(), QColor("#e53935"));
}

// ---- Fill and outline ----------------------------------------------------------------------

void BlockItemTest::fillGoesByKindInBothThemes_data()
{
    QTest::addColumn<BlockKind>("kind");
    QTest::addColumn<QColor>("color");

    QTest::newRow("melody") << BlockKind::Melody << QColor("#4a7325");
    QTest::newRow("loop") << BlockKind::Loop << QColor("#00695c");
    QTest::newRow("voice") << BlockKind::Audio << QColor("#c2185b");
    QTest::newRow("chord") << BlockKind::Chord << QColor("#e53935");
}

void BlockItemTest::fillGoesByKindInBothThemes()
{
    QFETCH(BlockKind, kind);
    QFETCH(QColor, color);
    for (const bool dark : {false, true}) {
        ThemeManager::instance()->setDark(dark);
        BlockItem item = blockOf(kind);
        const QImage image = paintedItem(item);
        for (const QPoint& place : {QPoint(12, 24), QPoint(70, 8), QPoint(70, 39), QPoint(127, 24)})
            QCOMPARE(image.pixelColor(place), color);
        for (const QPoint& place : {QPoint(8, 24), QPoint(70, 4), QPoint(70, 43), QPoint(131, 24)})
            QCOMPARE(image.pixelColor(place), kPaper);
    }
}

void BlockItemTest::chordIsFilledWithItsOwnColor()
{
    BlockItem item({BlockKind::Chord, 0, 0}, kRect, {}, QColor("#5e35b1"));
    QCOMPARE(paintedItem(item).pixelColor(70, 24), QColor("#5e35b1"));
    QCOMPARE(item.fill(), QColor("#5e35b1"));
}

void BlockItemTest::otherKindsIgnoreTheColorOfChords()
{
    BlockItem item({BlockKind::Loop, 0, 0}, kRect, {}, QColor("#5e35b1"));
    QCOMPARE(paintedItem(item).pixelColor(70, 24), QColor("#00695c"));
}

void BlockItemTest::outlineIsADarkerHairline()
{
    BlockItem item = blockOf(BlockKind::Audio);
    const QImage image = paintedItem(item);
    const QColor darker = times(QColor("#c2185b"), 2.0 / 3.0);
    COMPARE_COLOR(image.pixelColor(10, 24), darker);
    COMPARE_COLOR(image.pixelColor(70, 6), darker);
    COMPARE_COLOR(image.pixelColor(129, 24), darker);
    COMPARE_COLOR(image.pixelColor(70, 41), darker);
    QCOMPARE(image.pixelColor(11, 24), QColor("#c2185b"));
    QCOMPARE(image.pixelColor(70, 7), QColor("#c2185b"));
}

void BlockItemTest::hairlineStaysOnePixelWideUnderZoom()
{
    BlockItem item = blockOf(BlockKind::Audio);
    const QColor darker = times(QColor("#c2185b"), 2.0 / 3.0);
    for (const double zoom : {0.2, 2.5}) {
        const QImage image = paintedItem(item, QApplication::font(), zoom);
        int columns = 0;
        for (int x = 0; x < image.width(); ++x)
            columns += isNear(image.pixelColor(x, 24), darker);
        QCOMPARE(columns, 2);
    }
}

void BlockItemTest::selectedBlockIsLighter_data()
{
    QTest::addColumn<BlockKind>("kind");
    QTest::addColumn<QColor>("color");

    QTest::newRow("melody") << BlockKind::Melody << QColor("#4a7325");
    QTest::newRow("loop") << BlockKind::Loop << QColor("#00695c");
    QTest::newRow("voice") << BlockKind::Audio << QColor("#c2185b");
    QTest::newRow("chord of the brown degree") << BlockKind::Chord << QColor("#8d6e63");
}

void BlockItemTest::selectedBlockIsLighter()
{
    QFETCH(BlockKind, kind);
    QFETCH(QColor, color);
    BlockItem item({kind, 0, 0}, kRect, {}, color);
    item.setSelected(true);
    COMPARE_COLOR(paintedItem(item).pixelColor(70, 24), times(color, 1.18));
    item.setSelected(false);
    QCOMPARE(paintedItem(item).pixelColor(70, 24), color);
}

void BlockItemTest::selectedBlockHasAnOutlineOfTwoPixelsInBothThemes()
{
    for (const bool dark : {false, true}) {
        ThemeManager::instance()->setDark(dark);
        BlockItem item = blockOf(BlockKind::Loop);
        item.setSelected(true);
        const QImage image = paintedItem(item);
        int rows = 0;
        for (int y = 0; y < 24; ++y)
            rows += image.pixelColor(70, y) == QColor("#7cb342");
        QCOMPARE(rows, 2);
        int columns = 0;
        for (int x = 0; x < 70; ++x)
            columns += image.pixelColor(x, 24) == QColor("#7cb342");
        QCOMPARE(columns, 2);
    }
}

void BlockItemTest::cornersAreRound()
{
    BlockItem item = blockOf(BlockKind::Loop);
    const QImage image = paintedItem(item);
    for (const QPoint& corner : {QPoint(10, 6), QPoint(129, 6), QPoint(10, 41), QPoint(129, 41)})
        QCOMPARE(image.pixelColor(corner), kPaper);
    QCOMPARE(image.pixelColor(14, 10), QColor("#00695c"));
}

// ---- Label ---------------------------------------------------------------------------------

void BlockItemTest::fullLabelTakesThePlaceOfTheShortOneWhereItFits()
{
    BlockItem plain = blockOf(BlockKind::Chord, "HH");
    BlockItem named = blockOf(BlockKind::Chord, "HH");
    named.setFullLabel("HH · HHH");
    BlockItem whole = blockOf(BlockKind::Chord, "HH · HHH");
    QCOMPARE(named.toolTip(), "HH · HHH");
    QCOMPARE(named.label(), "HH");
    QCOMPARE(paintedItem(named), paintedItem(whole));
    constexpr double kNarrow = 0.35;
    QCOMPARE(paintedItem(named, QApplication::font(), kNarrow),
             paintedItem(plain, QApplication::font(), kNarrow));
}

void BlockItemTest::labelIsWhiteInItsPlace()
{
    BlockItem item = blockOf(BlockKind::Loop, "HHHH");
    const QRect ink = inkOf(paintedItem(item));
    QVERIFY(ink.isValid());
    // From 4 pixels inside the left edge on, and as much above as below the middle.
    QVERIFY2(ink.left() >= 14 && ink.left() <= 16, qPrintable(QString::number(ink.left())));
    QVERIFY(ink.right() < 80);
    QVERIFY2(std::abs(ink.top() + ink.bottom() - 2 * 24) <= 4,
             qPrintable(QString::number(ink.top()) + ' ' + QString::number(ink.bottom())));
}

void BlockItemTest::labelIsSmallerThanTheFont_data()
{
    QTest::addColumn<qreal>("points");
    QTest::addColumn<qreal>("shown");

    QTest::newRow("large font") << 20.0 << 18.5;
    QTest::newRow("usual font") << 10.0 << 8.5;
    QTest::newRow("small font is held at 6.5") << 7.0 << 6.5;
    QTest::newRow("tiny font is held at 6.5") << 3.0 << 6.5;
}

void BlockItemTest::labelIsSmallerThanTheFont()
{
    QFETCH(qreal, points);
    QFETCH(qreal, shown);
    BlockItem item = blockOf(BlockKind::Loop, "HHHH");
    QImage expected(200, 60, QImage::Format_RGB32);
    expected.fill(QColor("#00695c"));
    QPainter painter(&expected);
    painter.setFont(fontOf(shown));
    painter.setPen(Qt::white);
    painter.drawText(14, 40, "HHHH");
    painter.end();
    QCOMPARE(inkOf(paintedItem(item, fontOf(points))).size(), inkOf(expected).size());
}

void BlockItemTest::longLabelIsElided()
{
    BlockItem item = blockOf(BlockKind::Loop, QString(300, 'H'));
    const QImage image = paintedItem(item);
    const QRect ink = inkOf(image);
    QVERIFY(ink.right() > 110);
    QVERIFY(ink.right() <= 127);
    // What stands at the end is low: the dots that stand for the rest.
    const QRect end = inkOf(image.copy(QRect(ink.right() - 3, 0, 4, image.height())));
    QVERIFY2(end.height() < ink.height() / 2, qPrintable(QString::number(end.height())));
}

void BlockItemTest::labelIsNotStretched()
{
    BlockItem item = blockOf(BlockKind::Loop, "HHHH");
    const QRect ink = inkOf(paintedItem(item));
    for (const double zoom : {0.6, 2.0, 4.0}) {
        const QRect zoomed = inkOf(paintedItem(item, QApplication::font(), zoom));
        QCOMPARE(zoomed.size(), ink.size());
        // From 4 pixels of the screen inside the left edge on.
        QCOMPARE(zoomed.left() - ink.left(), qRound(10.0 * zoom) - 10);
    }
}

void BlockItemTest::labelsAreReadOnEveryGround()
{
    for (const QColor& ground : kDegreeColors) {
        for (const bool selected : {false, true}) {
            // Thin strokes may have no pixel that is all ink.
            BlockItem item({BlockKind::Chord, 0, 0}, kRect, "████", ground);
            item.setSelected(selected);
            const QImage image = paintedItem(item);
            const QColor fill = image.pixelColor(100, 12);
            double best = 0.0;
            for (int x = 14; x < 60; ++x) {
                for (int y = 12; y < 36; ++y)
                    best = std::max(best, contrast(image.pixelColor(x, y), fill));
            }
            QVERIFY2(best >= 4.5, qPrintable(ground.name() + ' ' + QString::number(best)));
        }
    }
}

void BlockItemTest::blockWithoutALabelHasNoInk()
{
    BlockItem item = blockOf(BlockKind::Loop);
    QVERIFY(!inkOf(paintedItem(item)).isValid());
}

void BlockItemTest::paintsIntoTinyAndHugeRectangles_data()
{
    QTest::addColumn<QRectF>("rect");

    QTest::newRow("no width") << QRectF(10, 6, 0, 36);
    QTest::newRow("a hundredth of a pixel") << QRectF(10, 6, 0.01, 36);
    QTest::newRow("a pixel") << QRectF(10, 6, 1, 36);
    QTest::newRow("as wide as a scene can be") << QRectF(0, 6, 32e6, 36);
    QTest::newRow("from far to the left") << QRectF(-32e6, 6, 64e6, 36);
    QTest::newRow("far to the left") << QRectF(-32e6, 6, 100, 36);
}

void BlockItemTest::paintsIntoTinyAndHugeRectangles()
{
    QFETCH(QRectF, rect);
    for (const bool selected : {false, true}) {
        for (const double zoom : {0.2, 1.0, 6.0}) {
            BlockItem item({BlockKind::Loop, 0, 0}, rect, "Normal 1");
            item.setSelected(selected);
            const QImage image = paintedItem(item, QApplication::font(), zoom);
            QCOMPARE(image.pixelColor(300, 2), kPaper);
            const bool covers = rect.left() * zoom < 300 && rect.right() * zoom > 301;
            QCOMPARE(image.pixelColor(300, 38) != kPaper, covers);
        }
    }
}

/// The columns of the middle of a block that are brighter than its fill.
QList<int> linesOf(BlockItem& block, double zoom = 1.0)
{
    const QImage image = paintedItem(block, QApplication::font(), zoom);
    QList<int> lines;
    for (int x = qRound(14 * zoom); x < qRound(126 * zoom); ++x) {
        if (image.pixelColor(x, 24).red() > block.fill().red() + 40)
            lines.append(x);
    }
    return lines;
}

void BlockItemTest::aLoopShowsWhereItRepeats()
{
    BlockItem block = blockOf(BlockKind::Loop);
    QCOMPARE(linesOf(block), QList<int>());
    block.setRepeat(48.0);
    QCOMPARE(linesOf(block), (QList<int>{58, 59, 106, 107}));
    QCOMPARE(linesOf(block, 2.0), (QList<int>{116, 117, 212, 213}));
    block.setRepeat(120.0);
    QCOMPARE(linesOf(block), QList<int>());
}

void BlockItemTest::repetitionsTooCloseToTellApartAreNotShown()
{
    BlockItem block = blockOf(BlockKind::Loop);
    block.setRepeat(3.0);
    QCOMPARE(linesOf(block), QList<int>());
    QVERIFY(!linesOf(block, 2.0).isEmpty());
}

VELTA_TEST(BlockItemTest)

} // namespace BlockItemTests

#include "BlockItemTest.moc"
