#include "views/pianoroll/NoteItem.h"

#include "music/KeySignature.h"
#include "shell/theme/CanvasColors.h"
#include "shell/theme/Ink.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace {

constexpr qreal kRadius = 2.0;
constexpr qreal kInset = 0.5;

// On screen, in pixels.
constexpr qreal kLeastHeightOfNames = 11.0;
constexpr double kLettersOfHeight = 0.55;
constexpr double kSmallestLetters = 9.0;
constexpr double kLargestLetters = 15.0;
constexpr int kNameMargin = 6;
constexpr int kNameLeft = 4;
constexpr int kNameRight = 2;

QFont nameFont(QFont font, qreal height)
{
    font.setPixelSize(
        static_cast<int>(std::clamp(kLettersOfHeight * height, kSmallestLetters, kLargestLetters)));
    return font;
}

} // namespace

NoteItem::NoteItem(int index, int pitch, const QRectF& rect)
    : QGraphicsRectItem(rect), pitch_(pitch)
{
    setData(kIndexKey, index);
    setFlag(ItemIsSelectable);
    // The outline is painted inside; a pen would make the note larger for the mouse.
    setPen(Qt::NoPen);
}

void NoteItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* /*option*/,
                     QWidget* /*widget*/)
{
    const CanvasColors& colors = canvasColors();
    const QColor& fill = isSelected() ? colors.noteSelected : colors.noteFill;
    painter->setBrush(fill);
    painter->setPen(QPen(colors.noteOutline, 0));
    painter->drawRoundedRect(rect().adjusted(kInset, kInset, -kInset, -kInset), kRadius, kRadius);
    paintName(*painter, fill);
}

void NoteItem::paintName(QPainter& painter, const QColor& fill) const
{
    const QRectF onScreen = painter.worldTransform().mapRect(rect());
    if (onScreen.height() < kLeastHeightOfNames)
        return;
    const QFont font = nameFont(painter.font(), onScreen.height());
    const QString name = KeySignature::solfegeName(pitch_);
    if (QFontMetrics(font).horizontalAdvance(name) + kNameMargin > onScreen.width())
        return;
    painter.save();
    // The letters keep their shape whatever the zoom.
    painter.resetTransform();
    painter.setFont(font);
    painter.setPen(inkOn(fill));
    painter.drawText(onScreen.adjusted(kNameLeft, 0, -kNameRight, 0),
                     Qt::AlignLeft | Qt::AlignVCenter, name);
    painter.restore();
}
