#include "shell/WrappingRow.h"

#include <algorithm>

namespace {

/// Where the widgets of a row stand in a width, from the top left corner of its contents on.
QList<QRect> placesOf(const QLayout& row, int width)
{
    QList<QRect> places;
    QPoint next(0, 0);
    int lineHeight = 0;
    for (int i = 0; i < row.count(); ++i) {
        if (row.itemAt(i)->isEmpty()) {
            places.append(QRect(next, QSize(0, 0)));
            continue;
        }
        const QSize size = row.itemAt(i)->sizeHint();
        if (next.x() > 0 && next.x() + size.width() > width) {
            next = QPoint(0, next.y() + lineHeight + row.spacing());
            lineHeight = 0;
        }
        places.append(QRect(next, size));
        next.rx() += size.width() + row.spacing();
        lineHeight = std::max(lineHeight, size.height());
    }
    return places;
}

} // namespace

QSize WrappingRow::minimumSize() const
{
    QSize widest(0, 0);
    for (int i = 0; i < count(); ++i)
        widest = widest.expandedTo(itemAt(i)->sizeHint());
    return widest.grownBy(contentsMargins());
}

int WrappingRow::heightForWidth(int width) const
{
    const QMargins margins = contentsMargins();
    int height = 0;
    for (const QRect& place : placesOf(*this, width - margins.left() - margins.right()))
        height = std::max(height, place.y() + place.height());
    return height + margins.top() + margins.bottom();
}

void WrappingRow::setGeometry(const QRect& rect)
{
    QLayout::setGeometry(rect);
    const QRect contents = contentsRect();
    const QList<QRect> places = placesOf(*this, contents.width());
    for (int i = 0; i < count(); ++i)
        itemAt(i)->setGeometry(places.at(i).translated(contents.topLeft()));
}
