#include "views/arranger/BlockItem.h"

#include "shell/theme/CanvasColors.h"
#include "shell/theme/Ink.h"
#include "views/arranger/BlockLabels.h"

#include <QPainter>
#include <QStyleOptionGraphicsItem>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kSelectedLightness = 118;
constexpr int kOutlineDarkness = 150;
constexpr qreal kSelectedOutline = 2.0;
constexpr qreal kRadius = 3.0;
constexpr qreal kInset = 0.5;

/// Closer together, in pixels of the screen, repetitions are no longer told apart.
constexpr double kLeastRepeat = 4.0;
constexpr qreal kRepeatInset = 2.0;
constexpr qreal kRepeatWidth = 2.0;
constexpr int kRepeatAlpha = 140;

/// Around a label that is to be read whatever is painted behind it.
constexpr qreal kPlateMargin = 2.0;

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

void BlockItem::setFullLabel(const QString& label)
{
    fullLabel_ = label;
    setToolTip(label);
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

void BlockItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option,
                      QWidget* /*widget*/)
{
    const QColor color = isSelected() ? fill().lighter(kSelectedLightness) : fill();
    painter->setBrush(color);
    painter->setPen(isSelected() ? QPen(kVeltaAccent, kSelectedOutline)
                                 : QPen(color.darker(kOutlineDarkness), 0));
    painter->drawRoundedRect(rect().adjusted(kInset, kInset, -kInset, -kInset), kRadius, kRadius);
    paintContent(*painter, option ? option->exposedRect : rect(), color);
    paintRepeats(*painter, inkOn(color));
    paintLabel(*painter, color);
}

void BlockItem::paintRepeats(QPainter& painter, QColor ink) const
{
    const QTransform toScreen = painter.worldTransform();
    const double way = repeat_ * toScreen.m11();
    if (way < kLeastRepeat)
        return;
    const QRectF block = toScreen.mapRect(rect());
    const QRectF seen = QRectF(painter.viewport()).adjusted(-way, 0, way, 0);
    const double first = std::max(1.0, std::floor((seen.left() - block.left()) / way));
    const double end = std::min(block.right() - kInset, seen.right());
    ink.setAlpha(kRepeatAlpha);
    painter.save();
    painter.resetTransform();
    for (double x = block.left() + first * way; x < end; x += way)
        painter.fillRect(QRectF(std::round(x), block.top() + kRepeatInset, kRepeatWidth,
                                block.height() - 2 * kRepeatInset),
                         ink);
    painter.restore();
}

void BlockItem::paintLabel(QPainter& painter, const QColor& color) const
{
    const QRectF room = painter.worldTransform().mapRect(rect()).adjusted(4, 1, -2, -1);
    const QFont font = labelFont(painter.font());
    BlockLabels own;
    const QStaticText label =
        (labels_ ? *labels_ : own).of(label_, fullLabel_, std::max(room.width(), 0.0), font);
    if (label.text().isEmpty())
        return;
    const QRectF place({room.left(), room.center().y() - label.size().height() / 2.0},
                       label.size());
    painter.save();
    // The letters keep their shape whatever the zoom.
    painter.resetTransform();
    painter.setFont(font);
    if (hasContent())
        painter.fillRect(place.adjusted(-kPlateMargin, 0.0, kPlateMargin, 0.0), color);
    painter.setPen(inkOn(color));
    painter.drawStaticText(place.topLeft(), label);
    painter.restore();
}
