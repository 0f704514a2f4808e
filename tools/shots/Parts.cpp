#include "shots/Parts.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QGraphicsView>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSlider>
#include <QStringList>
#include <QWidget>

#include <algorithm>
#include <cstdlib>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kPixelsApart = 6;
constexpr int kLevelsApart = 36;
constexpr qsizetype kNameLetters = 32;
constexpr auto kSeparator = u'\t';

bool isView(const QWidget& widget)
{
    const QString kind = QLatin1StringView(widget.metaObject()->className());
    return qobject_cast<const QGraphicsView*>(widget.parentWidget()) ||
           kind == "ArrangerHeaderColumn"_L1 || kind == "TimelineRuler"_L1 ||
           kind == "PianoKeyboardWidget"_L1;
}

bool isControl(const QWidget& widget)
{
    return qobject_cast<const QLabel*>(&widget) || qobject_cast<const QAbstractButton*>(&widget) ||
           qobject_cast<const QComboBox*>(&widget) ||
           qobject_cast<const QAbstractSpinBox*>(&widget) ||
           qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QSlider*>(&widget) ||
           qobject_cast<const QAbstractItemView*>(&widget) ||
           qobject_cast<const QMenuBar*>(&widget) || qobject_cast<const QMenu*>(&widget);
}

QString titleOf(const QWidget& widget)
{
    const QString text = widget.property("text").toString();
    const QString title = text.isEmpty() ? widget.accessibleName() : text;
    return title.simplified().left(kNameLetters);
}

/// Where what is seen of it lies in a window around it.
QRect placeIn(const QWidget& shown, const QWidget& widget)
{
    QRect place(widget.mapTo(&shown, QPoint()), widget.size());
    for (const QWidget* around = widget.parentWidget(); around && around != &shown;
         around = around->parentWidget()) {
        const auto* area = qobject_cast<const QAbstractScrollArea*>(around->parentWidget());
        if (area && area->viewport() == around)
            place &= QRect(around->mapTo(&shown, QPoint()), around->size());
    }
    return place;
}

QRgb groundOf(const QImage& picture)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ++counts[picture.pixel(x, y)];
    const auto most = std::max_element(counts.cbegin(), counts.cend());
    return most == counts.cend() ? qRgb(0, 0, 0) : most.key();
}

QRgb meanOf(const QImage& picture, const QRect& cell)
{
    qint64 red = 0;
    qint64 green = 0;
    qint64 blue = 0;
    for (int y = cell.top(); y <= cell.bottom(); ++y) {
        for (int x = cell.left(); x <= cell.right(); ++x) {
            const QRgb pixel = picture.pixel(x, y);
            red += qRed(pixel);
            green += qGreen(pixel);
            blue += qBlue(pixel);
        }
    }
    const qint64 pixels = std::max<qint64>(1, qint64{cell.width()} * cell.height());
    return qRgb(static_cast<int>(red / pixels), static_cast<int>(green / pixels),
                static_cast<int>(blue / pixels));
}

QList<QRgb> meansOf(const QImage& view)
{
    QList<QRgb> means;
    for (int row = 0; row < PictureParts::kRows; ++row) {
        for (int column = 0; column < PictureParts::kColumns; ++column) {
            const int left = view.width() * column / PictureParts::kColumns;
            const int right = view.width() * (column + 1) / PictureParts::kColumns;
            const int top = view.height() * row / PictureParts::kRows;
            const int bottom = view.height() * (row + 1) / PictureParts::kRows;
            means.append(meanOf(view, QRect(left, top, right - left, bottom - top)));
        }
    }
    return means;
}

bool areClose(QRgb left, QRgb right)
{
    return std::abs(qRed(left) - qRed(right)) <= kLevelsApart &&
           std::abs(qGreen(left) - qGreen(right)) <= kLevelsApart &&
           std::abs(qBlue(left) - qBlue(right)) <= kLevelsApart;
}

bool areClose(const QRect& left, const QRect& right)
{
    return std::abs(left.x() - right.x()) <= kPixelsApart &&
           std::abs(left.y() - right.y()) <= kPixelsApart &&
           std::abs(left.width() - right.width()) <= kPixelsApart &&
           std::abs(left.height() - right.height()) <= kPixelsApart;
}

} // namespace

QList<PicturePart> PictureParts::of(const QWidget& shown, const QImage& picture)
{
    QList<PicturePart> parts;
    QHash<QString, int> seen;
    QList<const QWidget*> widgets{&shown};
    for (const QWidget* widget : shown.findChildren<QWidget*>())
        widgets.append(widget);
    for (const QWidget* widget : widgets) {
        const bool view = isView(*widget);
        const QRect place = placeIn(shown, *widget) & picture.rect();
        if ((!view && !isControl(*widget)) || !widget->isVisibleTo(&shown) || place.isEmpty())
            continue;
        const QString name = u"%1 '%2'"_s.arg(QLatin1StringView(widget->metaObject()->className()),
                                              titleOf(*widget));
        const QImage cut = picture.copy(place);
        parts.append({.name = u"%1 %2"_s.arg(name).arg(++seen[name]),
                      .place = place,
                      .colors = view ? meansOf(cut) : QList<QRgb>{groundOf(cut)}});
    }
    return parts;
}

QString PictureParts::lineOf(const PicturePart& part)
{
    QStringList colors;
    for (const QRgb color : part.colors)
        colors.append(QString::number(color & 0xffffffU, 16).rightJustified(6, u'0'));
    return QStringList{part.name,
                       u"%1 %2 %3 %4"_s.arg(part.place.x())
                           .arg(part.place.y())
                           .arg(part.place.width())
                           .arg(part.place.height()),
                       colors.join(u' ')}
        .join(kSeparator);
}

PicturePart PictureParts::partOf(const QString& line)
{
    const QStringList fields = line.split(kSeparator);
    const QStringList place = fields.value(1).split(u' ');
    if (fields.size() != 3 || place.size() != 4)
        return {};
    PicturePart part{
        .name = fields[0],
        .place = QRect(place[0].toInt(), place[1].toInt(), place[2].toInt(), place[3].toInt()),
        .colors = {}};
    for (const QString& color : fields[2].split(u' '))
        part.colors.append(color.toUInt(nullptr, 16) | 0xff000000U);
    return part;
}

QString PictureParts::difference(const PicturePart& is, const PicturePart& shouldBe)
{
    const bool colorsAreClose = std::equal(
        is.colors.cbegin(), is.colors.cend(), shouldBe.colors.cbegin(), shouldBe.colors.cend(),
        [](QRgb left, QRgb right) { return areClose(left, right); });
    if (areClose(is.place, shouldBe.place) && colorsAreClose)
        return {};
    return u"%1\n  instead of\n%2"_s.arg(lineOf(is), lineOf(shouldBe));
}
