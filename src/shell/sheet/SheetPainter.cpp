#include "shell/sheet/SheetPainter.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPagedPaintDevice>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

// In points, of a sheet that is written as large as it may be.
constexpr double kMargin = 42.0;
constexpr double kTitleSize = 20.0;
constexpr double kHeadingSize = 11.0;
constexpr double kChordSize = 12.0;
constexpr double kNoteSize = 10.0;
constexpr double kSmallSize = 7.5;
constexpr double kHeadHeight = 66.0;
constexpr double kNumberHeight = 11.0;
constexpr double kChordHeight = 18.0;
constexpr double kNoteHeight = 15.0;
constexpr double kLineGap = 12.0;
constexpr double kFootHeight = 20.0;
constexpr double kBarInset = 4.0;

/// Smaller than this one does not read from a stand.
constexpr double kLeastScale = 0.7;

constexpr int kBarsPerLine = 4;
/// Words in a bar of which no more than half the bars fit.
constexpr qsizetype kManyWords = 8;

double lineHeight(const SongSheet& sheet)
{
    return kNumberHeight + kChordHeight + kNoteHeight * static_cast<double>(sheet.melodies.size()) +
           kLineGap;
}

/// How lines of paper share the pages.
struct Pages {
    double scale;
    int linesOnFirst;
    int linesOnNext;
    int lines;

    int count() const
    {
        const int rest = std::max(0, lines - linesOnFirst);
        return 1 + (rest + linesOnNext - 1) / linesOnNext;
    }
};

int linesIn(double height, double line)
{
    return std::max(1, static_cast<int>(std::floor(height / line)));
}

/// `height` is what a page holds, in points.
Pages pagesOf(const SongSheet& sheet, double height)
{
    const int perLine = SheetPainter::barsPerLine(sheet);
    const int lines = (static_cast<int>(sheet.bars.size()) + perLine - 1) / perLine;
    const double needed = lines * lineHeight(sheet);
    const double room = height - kHeadHeight - kFootHeight;
    const double scale = needed > 0.0 ? std::min(1.0, room / needed) : 1.0;
    if (scale >= kLeastScale)
        return {scale, std::max(1, lines), 1, lines};
    return {1.0, linesIn(room, lineHeight(sheet)), linesIn(height - kFootHeight, lineHeight(sheet)),
            lines};
}

/// Writes a sheet with a painter whose unit is a point.
class Writer {
public:
    Writer(const SongSheet& sheet, QPainter& painter, double width, double height)
        : sheet_(sheet), painter_(painter), width_(width), height_(height),
          pages_(pagesOf(sheet, height))
    {}

    const Pages& pages() const { return pages_; }

    void writePage(int page)
    {
        double y = 0.0;
        if (page == 0) {
            writeHead();
            y = kHeadHeight;
        }
        const int before = page == 0 ? 0 : pages_.linesOnFirst + (page - 1) * pages_.linesOnNext;
        const int lines = page == 0 ? pages_.linesOnFirst : pages_.linesOnNext;
        for (int line = before; line < std::min(before + lines, pages_.lines); ++line) {
            writeLine(line, y);
            y += lineHeight(sheet_) * pages_.scale;
        }
        if (pages_.count() > 1)
            writeFoot(page);
    }

private:
    void setSize(double points, bool bold = false)
    {
        QFont font = painter_.font();
        font.setPixelSize(kMeasured);
        font.setBold(bold);
        painter_.setFont(font);
        fontSize_ = points;
    }

    QFontMetricsF metrics() const { return QFontMetricsF(painter_.font()); }

    /// A font has a whole number of pixels, so it is measured and written large and scaled down.
    double widthOf(const QString& text) const
    {
        return metrics().horizontalAdvance(text) * fontSize_ / kMeasured;
    }

    void write(const QString& text, double x, double baseline, double squeeze = 1.0)
    {
        painter_.save();
        painter_.translate(x, baseline);
        const double scale = fontSize_ * squeeze / kMeasured;
        painter_.scale(scale, scale);
        painter_.drawText(QPointF(0.0, 0.0), text);
        painter_.restore();
    }

    QString elided(const QString& text, double room) const
    {
        return metrics().elidedText(text, Qt::ElideRight, room * kMeasured / fontSize_);
    }

    void writeHead()
    {
        setSize(kTitleSize, true);
        const QString title = elided(sheet_.title, width_);
        write(title, (width_ - widthOf(title)) / 2.0, kTitleSize);
        setSize(kHeadingSize);
        write(sheet_.heading, (width_ - widthOf(sheet_.heading)) / 2.0,
              kTitleSize + 1.7 * kHeadingSize);
    }

    void writeFoot(int page)
    {
        setSize(kSmallSize);
        const QString number = QCoreApplication::translate("SheetPainter", "Página %1 de %2")
                                   .arg(page + 1)
                                   .arg(pages_.count());
        write(number, width_ - widthOf(number), height_ - 2.0);
        write(elided(sheet_.title, width_ / 2.0), 0.0, height_ - 2.0);
    }

    void writeLine(int line, double y)
    {
        const int perLine = SheetPainter::barsPerLine(sheet_);
        const double barWidth = width_ / perLine;
        const qsizetype first = qsizetype(line) * perLine;
        const qsizetype end = std::min(first + perLine, sheet_.bars.size());
        for (qsizetype bar = first; bar < end; ++bar)
            writeBar(bar, static_cast<double>(bar - first) * barWidth, y, barWidth);
        const double right = static_cast<double>(end - first) * barWidth;
        const double top = y + kNumberHeight * pages_.scale;
        painter_.drawLine(QPointF(right, top), QPointF(right, top + barHeight()));
        if (line == 0 && sheet_.melodies.size() > 1)
            writeNames(y);
    }

    double barHeight() const
    {
        return (lineHeight(sheet_) - kNumberHeight - kLineGap) * pages_.scale;
    }

    void writeBar(qsizetype bar, double x, double y, double width)
    {
        const double scale = pages_.scale;
        setSize(kSmallSize * scale);
        write(QString::number(bar + 1), x + 1.0, y + kSmallSize * scale);
        const double top = y + kNumberHeight * scale;
        painter_.drawLine(QPointF(x, top), QPointF(x, top + barHeight()));
        setSize(kChordSize * scale, true);
        writeWords(sheet_.bars.at(bar).chords, x, top + kChordSize * scale, width);
        setSize(kNoteSize * scale);
        double baseline = top + (kChordHeight + kNoteSize) * scale;
        for (const QList<SheetWord>& notes : sheet_.bars.at(bar).melodies) {
            writeWords(notes, x, baseline, width);
            baseline += kNoteHeight * scale;
        }
    }

    /// Each at its place, or as near to it as the words before let it; smaller where all of them
    /// would not fit.
    void writeWords(const QList<SheetWord>& words, double x, double baseline, double width)
    {
        const double room = width - 2.0 * kBarInset;
        const double gap = 0.35 * fontSize_;
        double all = -gap;
        for (const SheetWord& word : words)
            all += widthOf(word.text) + gap;
        const double squeeze = std::min(1.0, room / std::max(all, 1.0));
        // What is left for a word and all behind it.
        double behind = all * squeeze;
        double from = 0.0;
        for (const SheetWord& word : words) {
            from = std::min(std::max(from, word.place * room), room - behind);
            write(word.text, x + kBarInset + from, baseline, squeeze);
            const double taken = (widthOf(word.text) + gap) * squeeze;
            from += taken;
            behind -= taken;
        }
    }

    /// Of the melodies, where there are several, beside the number of the first bar.
    void writeNames(double y)
    {
        setSize(kSmallSize * pages_.scale);
        write(elided(QStringList(sheet_.melodies).join(QStringLiteral(" / ")), width_ / 2.0), 14.0,
              y + kSmallSize * pages_.scale);
    }

    static constexpr int kMeasured = 100;

    const SongSheet& sheet_;
    QPainter& painter_;
    double width_;
    double height_;
    Pages pages_;
    double fontSize_ = kNoteSize;
};

} // namespace

int SheetPainter::barsPerLine(const SongSheet& sheet)
{
    const auto isFull = [](const SheetBar& bar) {
        return bar.chords.size() * 2 > kManyWords ||
               std::ranges::any_of(bar.melodies, [](const QList<SheetWord>& notes) {
                   return notes.size() > kManyWords;
               });
    };
    return std::ranges::any_of(sheet.bars, isFull) ? kBarsPerLine / 2 : kBarsPerLine;
}

int SheetPainter::paint(const SongSheet& sheet, QPagedPaintDevice& device)
{
    QPainter painter;
    if (!painter.begin(&device))
        return 0;
    const QRectF paper = device.pageLayout().fullRect(QPageLayout::Point);
    const QRectF printable = device.pageLayout().paintRect(QPageLayout::Point);
    const double scale = device.logicalDpiX() / 72.0;
    const double width = paper.width() - 2.0 * kMargin;
    const double height = paper.height() - 2.0 * kMargin;
    painter.scale(scale, scale);
    // The painter begins where the printer can print.
    painter.translate(kMargin - printable.left(), kMargin - printable.top());
    painter.setPen(QPen(Qt::black, 0.7));
    Writer writer(sheet, painter, width, height);
    for (int page = 0; page < writer.pages().count(); ++page) {
        if (page > 0 && !device.newPage())
            return page;
        writer.writePage(page);
    }
    return writer.pages().count();
}
