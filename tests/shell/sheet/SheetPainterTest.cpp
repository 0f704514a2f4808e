#include "shell/sheet/SheetPainter.h"

#include "shell/sheet/SheetPreview.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QPdfWriter>
#include <QPrinter>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// A song of some bars, each with one chord and some notes of one melody.
SongSheet sheetOf(int bars, int notes = 4, int melodies = 1)
{
    SongSheet sheet;
    sheet.title = QStringLiteral("Canción de la señal");
    sheet.heading = QStringLiteral("Do mayor · ♩ = 120 · 4/4");
    for (int i = 0; i < melodies; ++i)
        sheet.melodies.append(QStringLiteral("Melodía %1").arg(i + 1));
    for (int bar = 0; bar < bars; ++bar) {
        SheetBar written;
        written.chords = {{0.0, QStringLiteral("IV · Fa")}};
        for (int i = 0; i < melodies; ++i) {
            QList<SheetWord> words;
            for (int n = 0; n < notes; ++n)
                words.append(
                    {double(n) / notes, n % 2 ? QStringLiteral("Sol#") : QStringLiteral("Mi")});
            written.melodies.append(words);
        }
        sheet.bars.append(written);
    }
    return sheet;
}

} // namespace

/// What is on the paper, read by a program that reads PDF files.
class SheetPainterTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void theWholeSongIsOnThePaper();
    void wordsStandInTheirOrder();
    void aSongOfALittleMoreThanAPageIsWrittenSmaller();
    void aLongSongGoesOnToFurtherPages_data();
    void aLongSongGoesOnToFurtherPages();
    void fullBarsGetMoreRoom();
    void severalMelodiesAreNamed();
    void nothingIsWrittenBesideThePaper_data();
    void nothingIsWrittenBesideThePaper();
    void anEmptySongHasAPage();
    void theSamePagesComeFromAPrinter();
    void aDeviceThatTakesNothingIsTold();

private:
    /// The text of a file as it is laid out, page by page.
    QStringList pagesOf(const QString& path);
    QStringList pagesOf(const SongSheet& sheet);

    QTemporaryDir dir_;
};

void SheetPainterTest::initTestCase()
{
    QVERIFY2(!QStandardPaths::findExecutable("pdftotext").isEmpty(),
             "The package poppler-utils is needed.");
}

QStringList SheetPainterTest::pagesOf(const QString& path)
{
    QProcess reader;
    reader.start("pdftotext", {"-layout", "-enc", "UTF-8", path, "-"});
    if (!reader.waitForFinished() || reader.exitCode() != 0)
        return {};
    QStringList pages = QString::fromUtf8(reader.readAllStandardOutput()).split('\f');
    // Each page ends with a form feed.
    pages.removeLast();
    return pages;
}

QStringList SheetPainterTest::pagesOf(const SongSheet& sheet)
{
    QFile file(dir_.filePath("hoja.pdf"));
    if (!file.open(QIODevice::WriteOnly) || !SheetPreview::writePdf(sheet, file))
        return {};
    file.close();
    return pagesOf(file.fileName());
}

void SheetPainterTest::theWholeSongIsOnThePaper()
{
    const QStringList pages = pagesOf(sheetOf(16));
    QCOMPARE(pages.size(), 1);
    const QString& page = pages.first();
    QVERIFY(page.contains(QStringLiteral("Canción de la señal")));
    QVERIFY(page.contains(QStringLiteral("Do mayor · ♩ = 120 · 4/4")));
    QCOMPARE(page.count(QStringLiteral("IV · Fa")), 16);
    QCOMPARE(page.count("Mi"), 32);
    QCOMPARE(page.count("Sol#"), 32);
    // No other page to go on to.
    QVERIFY(!page.contains(QStringLiteral("Página")));
}

void SheetPainterTest::wordsStandInTheirOrder()
{
    SongSheet sheet = sheetOf(2, 0);
    sheet.bars[0].chords = {{0.0, "Uno"}, {0.5, "Dos"}};
    sheet.bars[1].chords = {{0.0, "Tres"}, {0.1, "Cuatro"}, {0.11, "Cinco"}};
    const QString page = pagesOf(sheet).value(0);
    static const QRegularExpression order("Uno +Dos +Tres +Cuatro +Cinco");
    QVERIFY2(order.match(page).hasMatch(), qPrintable(page));
}

void SheetPainterTest::aSongOfALittleMoreThanAPageIsWrittenSmaller()
{
    // 12 lines of 4 bars are as many as fit in full size.
    for (const int bars : {48, 60, 64}) {
        const QStringList pages = pagesOf(sheetOf(bars));
        QCOMPARE(pages.size(), 1);
        QCOMPARE(pages.first().count(QStringLiteral("IV · Fa")), bars);
    }
}

void SheetPainterTest::aLongSongGoesOnToFurtherPages_data()
{
    QTest::addColumn<int>("bars");
    QTest::newRow("96 bars") << 96;
    QTest::newRow("400 bars") << 400;
}

void SheetPainterTest::aLongSongGoesOnToFurtherPages()
{
    QFETCH(int, bars);
    const QStringList pages = pagesOf(sheetOf(bars));
    QVERIFY(pages.size() > 1);
    qsizetype chords = 0;
    for (qsizetype i = 0; i < pages.size(); ++i) {
        chords += pages.at(i).count(QStringLiteral("IV · Fa"));
        QVERIFY(
            pages.at(i).contains(QStringLiteral("Página %1 de %2").arg(i + 1).arg(pages.size())));
        QVERIFY(pages.at(i).contains(QStringLiteral("IV · Fa")));
    }
    QCOMPARE(chords, qsizetype(bars));
}

void SheetPainterTest::fullBarsGetMoreRoom()
{
    QCOMPARE(SheetPainter::barsPerLine(sheetOf(8, 8)), 4);
    QCOMPARE(SheetPainter::barsPerLine(sheetOf(8, 9)), 2);
    QCOMPARE(pagesOf(sheetOf(8, 16)).value(0).count("Sol#"), 64);
}

void SheetPainterTest::severalMelodiesAreNamed()
{
    QVERIFY(!pagesOf(sheetOf(8)).value(0).contains(QStringLiteral("Melodía 1")));
    const QString page = pagesOf(sheetOf(8, 4, 2)).value(0);
    QVERIFY(page.contains(QStringLiteral("Melodía 1 / Melodía 2")));
    QCOMPARE(page.count("Sol#"), 32);
}

void SheetPainterTest::nothingIsWrittenBesideThePaper_data()
{
    QTest::addColumn<SongSheet>("sheet");
    SongSheet loud = sheetOf(8, 40, 3);
    loud.title = QString(300, 'W');
    for (SheetBar& bar : loud.bars)
        bar.chords = QList<SheetWord>(12, {0.9, QStringLiteral("vii°9 · Si°9")});
    QTest::newRow("full") << loud;
    QTest::newRow("long") << sheetOf(64);
}

void SheetPainterTest::nothingIsWrittenBesideThePaper()
{
    QFETCH(SongSheet, sheet);
    QVERIFY(!pagesOf(sheet).isEmpty());
    QProcess painter;
    const QString name = dir_.filePath("pagina");
    painter.start("pdftoppm", {"-r", "50", "-png", "-singlefile", dir_.filePath("hoja.pdf"), name});
    QVERIFY(painter.waitForFinished());
    const QImage page(name + ".png");
    QVERIFY(!page.isNull());
    const int margin = page.width() / 20;
    for (int y = 0; y < page.height(); ++y) {
        for (int x = 0; x < page.width(); ++x) {
            const bool inside = x > margin && x < page.width() - margin && y > margin / 2 &&
                                y < page.height() - margin;
            QVERIFY2(inside || page.pixelColor(x, y).lightness() > 200,
                     qPrintable(QStringLiteral("at %1, %2").arg(x).arg(y)));
        }
    }
}

void SheetPainterTest::anEmptySongHasAPage()
{
    const QStringList pages = pagesOf(sheetOf(0));
    QCOMPARE(pages.size(), 1);
    QVERIFY(pages.first().contains(QStringLiteral("Canción de la señal")));
}

void SheetPainterTest::theSamePagesComeFromAPrinter()
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageSize(QPageSize(QPageSize::A4));
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(dir_.filePath("impresa.pdf"));
    const SongSheet sheet = sheetOf(100);
    const QStringList saved = pagesOf(sheet);
    QCOMPARE(SheetPainter::paint(sheet, printer), saved.size());
    QCOMPARE(pagesOf(dir_.filePath("impresa.pdf")), saved);
}

void SheetPainterTest::aDeviceThatTakesNothingIsTold()
{
    QBuffer closed;
    QVERIFY(closed.open(QIODevice::ReadOnly));
    QVERIFY(!SheetPreview::writePdf(sheetOf(4), closed));
}

QTEST_MAIN(SheetPainterTest)
#include "SheetPainterTest.moc"
