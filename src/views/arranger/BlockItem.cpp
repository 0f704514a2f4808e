#include "views/arranger/BlockItem.h"

#include "shell/theme/CanvasColors.h"
#include "shell/theme/Ink.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace {

constexpr int kSelectedLightness = 118;
constexpr int kOutlineDarkness = 150;
constexpr qreal kSelectedOutline = 2.0;
constexpr qreal kRadius = 3.0;
constexpr qreal kInset = 0.5;

QFont labelFont(QFont font)
{
    font.setPointSizeF(std::max(font.pointSizeF() - 1.5, 6.5));
    return font;
}

} // namespace

BlockItem::BlockItem(const BlockRef& block, const QRectF& rect, const QString& label,
                     const QColor& chordColor)
    : QGraphicsRectItem(rect), block_(block), label_(label), chordColor_(chordColor)
{
    setFlag(ItemIsSelectable);
}

QColor BlockItem::fill() const
{
    switch (block_.kind) {
    case BlockKind::Melody:
        return kMelodyBlock;
    case BlockKind::Loop:
        return kLoopBlock;
    case BlockKind::Audio:
        return kAudioBlock;
    case BlockKind::Chord:
        break;
    }
    return chordColor_;
}

void BlockItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* /*option*/,
                      QWidget* /*widget*/)
{
    const QColor color = isSelected() ? fill().lighter(kSelectedLightness) : fill();
    painter->setBrush(color);
    painter->setPen(isSelected() ? QPen(kVeltaAccent, kSelectedOutline)
                                 : QPen(color.darker(kOutlineDarkness), 0));
    painter->drawRoundedRect(rect().adjusted(kInset, kInset, -kInset, -kInset), kRadius, kRadius);
    paintLabel(*painter, inkOn(color));
}

void BlockItem::paintLabel(QPainter& painter, const QColor& ink) const
{
    const QRectF room = painter.worldTransform().mapRect(rect()).adjusted(4, 1, -2, -1);
    const QFont font = labelFont(painter.font());
    const QString label =
        QFontMetricsF(font).elidedText(label_, Qt::ElideRight, std::max(room.width(), 0.0));
    if (label.isEmpty())
        return;
    painter.save();
    // The letters keep their shape whatever the zoom.
    painter.resetTransform();
    painter.setFont(font);
    painter.setPen(ink);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter, label);
    painter.restore();
}
