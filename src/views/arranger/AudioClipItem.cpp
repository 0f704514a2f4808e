#include "views/arranger/AudioClipItem.h"

#include "views/arranger/ClipWords.h"
#include "voice/WaveOutlines.h"

#include <QGraphicsSceneHoverEvent>
#include <QGraphicsView>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

/// Both are told from the block, selected or not, and from one another.
constexpr QColor kWave(0x26, 0x04, 0x13);
constexpr QColor kLine(0xff, 0xff, 0xff);
constexpr QColor kFadedOut(0, 0, 0, 70);
constexpr double kWaveMargin = 2.0;

/// Columns of the screen between two edges; none outside of what a screen may show.
struct Columns {
    int first;
    int end;
};

Columns columnsOf(const QRectF& area)
{
    constexpr double kMost = 100'000.0;
    return {static_cast<int>(std::floor(std::clamp(area.left(), -kMost, kMost))),
            static_cast<int>(std::ceil(std::clamp(area.right(), -kMost, kMost)))};
}

/// A column of the outline around a middle, at least a pixel high.
QRect columnOf(int x, double middle, double half, const WaveSwing& swing, double level)
{
    const auto heightOf = [&](float sample) {
        return std::clamp(static_cast<double>(sample) * level, -1.0, 1.0) * half;
    };
    const int top = qRound(middle - heightOf(swing.greatest));
    const int bottom = qRound(middle - heightOf(swing.least));
    return {x, top, 1, std::max(1, bottom - top)};
}

/// `area` is on the screen, as is the painter.
void paintWave(QPainter& painter, const QRectF& area, const WavePeaks& peaks,
               const ClipShape& shape, const QTransform& toScreen)
{
    const double left = toScreen.map(shape.rect.topLeft()).x();
    const double perPixel = 1.0 / (shape.secondWidth * toScreen.m11());
    const double middle = toScreen.map(shape.rect.center()).y();
    const double half = shape.rect.height() / 2.0 - kWaveMargin;
    const Columns columns = columnsOf(area);
    QList<QRect> outline;
    outline.reserve(std::max(0, columns.end - columns.first));
    for (int x = columns.first; x < columns.end; ++x) {
        const double from = (x - left) * perPixel;
        outline.append(
            columnOf(x, middle, half, peaks.between(from, from + perPixel), shape.levelAt(from)));
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(kWave);
    painter.drawRects(outline);
}

/// The corners that the fades take from the block, darker than the rest.
void paintFades(QPainter& painter, const ClipShape& shape, const QTransform& toScreen)
{
    const QRectF& rect = shape.rect;
    const auto triangle = [&](double outer, double inner) {
        const QPolygonF corner({{outer, rect.bottom()}, {outer, rect.top()}, {inner, rect.top()}});
        painter.drawPolygon(toScreen.map(corner));
    };
    painter.setPen(Qt::NoPen);
    painter.setBrush(kFadedOut);
    triangle(rect.left(), shape.fadeInX());
    triangle(shape.playedRight(), shape.fadeOutX());
}

void paintLines(QPainter& painter, const ClipShape& shape, const QTransform& toScreen)
{
    const QRectF& rect = shape.rect;
    const double gainY = shape.gainY(shape.levels.gain);
    const auto line = [&](const QPointF& from, const QPointF& to) {
        painter.drawLine(toScreen.map(from), toScreen.map(to));
    };
    painter.setPen(QPen(kLine, 1.0));
    line({rect.left() + 1.0, gainY}, {shape.playedRight() - 1.0, gainY});
    if (shape.fadeInX() > rect.left())
        line({rect.left(), rect.bottom() - 1.0}, {shape.fadeInX(), rect.top()});
    if (shape.fadeOutX() < shape.playedRight())
        line({shape.fadeOutX(), rect.top()}, {shape.playedRight(), rect.bottom() - 1.0});
}

void paintHandles(QPainter& painter, const ClipShape& shape, const QTransform& toScreen,
                  const QColor& ground)
{
    painter.setPen(QPen(ground, 1.0));
    painter.setBrush(kLine);
    for (const ClipHandle fade : {ClipHandle::FadeIn, ClipHandle::FadeOut}) {
        const QRectF handle = toScreen.mapRect(shape.fadeHandle(fade, toScreen.m11()));
        painter.drawRect(handle.adjusted(1.0, 1.0, -1.0, -1.0));
    }
}

} // namespace

AudioClipItem::AudioClipItem(const BlockRef& block, const ClipShape& shape, const QString& label,
                             const ClipSource& file, WaveOutlines* outlines)
    : BlockItem(block, shape.rect, label), shape_(shape), file_(file), outlines_(outlines)
{
    setAcceptHoverEvents(true);
    // Without it the whole block counts as exposed.
    setFlag(ItemUsesExtendedStyleOption);
}

std::shared_ptr<const WavePeaks> AudioClipItem::outline() const
{
    return outlines_ && !file_.path.isEmpty() ? outlines_->of(file_) : nullptr;
}

ClipShape AudioClipItem::clip() const
{
    ClipShape shape = shape_;
    if (const auto peaks = outline(); peaks && peaks->seconds() > 0.0)
        shape.playedSeconds = shape.playedSeconds > 0.0
                                  ? std::min(shape.playedSeconds, peaks->seconds())
                                  : peaks->seconds();
    return shape;
}

void AudioClipItem::paintContent(QPainter& painter, const QRectF& exposed, const QColor& color)
{
    const ClipShape present = clip();
    if (rect().isEmpty() || !(present.secondWidth > 0.0))
        return;
    const QTransform toScreen = painter.worldTransform();
    painter.save();
    // Columns, lines and handles are as wide on every scale.
    painter.resetTransform();
    const QRectF played(rect().topLeft(), QPointF(present.playedRight(), rect().bottom()));
    if (const auto peaks = outline())
        paintWave(painter, toScreen.mapRect(played & exposed), *peaks, present, toScreen);
    paintFades(painter, present, toScreen);
    paintLines(painter, present, toScreen);
    if (present.hasHandles(toScreen.m11()))
        paintHandles(painter, present, toScreen, color);
    painter.restore();
}

void AudioClipItem::hoverMoveEvent(QGraphicsSceneHoverEvent* event)
{
    // A tip is asked for by its item, which knows nothing of the place.
    const auto* view =
        qobject_cast<QGraphicsView*>(event->widget() ? event->widget()->parent() : nullptr);
    const auto handle =
        view ? clip().handleAt(event->scenePos(), view->transform().m11()) : std::nullopt;
    setToolTip(handle ? ClipWords::tip(shape_.levels, *handle) : QString());
}
