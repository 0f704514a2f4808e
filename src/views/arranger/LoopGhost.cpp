#include "views/arranger/LoopGhost.h"

#include "content/LoopLength.h"
#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "music/Beats.h"
#include "shell/theme/CanvasColors.h"
#include "shell/theme/Ink.h"
#include "views/LoopDragPayload.h"
#include "views/SectionWords.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

using namespace ArrangerLayout;

namespace {

constexpr int kBandAlpha = 48;
constexpr qreal kOutline = 2.0;
constexpr qreal kGhostRadius = 3.0;
constexpr qreal kTextMargin = 5.0;

int topOf(const QString& layerId, const Project& project, const QList<LaneInfo>& lanes)
{
    const auto track = ProjectEdits::accompanimentOf(project, layerId);
    const LaneInfo* lane =
        track ? laneOfTrack(lanes, LaneKind::NoteTrack, static_cast<int>(*track)) : nullptr;
    if (lane)
        return lane->top + kBlockInset;
    return (lanes.isEmpty() ? 0 : lanes.last().bottom()) + kBlockInset;
}

QString labelOf(const LoopDragPayload& loop, qint32 bar)
{
    return QCoreApplication::translate("TrackArranger", "%1 %2 · compás %3")
        .arg(sectionWord(loop.section))
        .arg(loop.variantIndex)
        .arg(qint64{bar} + 1);
}

/// Moved no further than it takes to lie in sight.
QRectF broughtInto(const QRectF& room, QRectF rect)
{
    rect.moveBottom(std::min(rect.bottom(), room.bottom()));
    rect.moveTop(std::max(rect.top(), room.top()));
    return rect;
}

} // namespace

std::optional<LoopGhost> LoopGhost::of(const LoopDragPayload& loop, double sceneX,
                                       const Project& project, const QList<LaneInfo>& lanes,
                                       const LoopLibrary& library)
{
    const auto beats =
        loopBeats(library, loop.rhythmId, loop.layerId, loop.section, loop.variantIndex);
    const double start = ArrangerLayout::barAt(sceneX, project.beatsPerBar());
    const auto bar = ::barAt(start, project.beatsPerBar());
    if (!beats || !bar)
        return std::nullopt;
    return LoopGhost{.block = QRectF(start * kBeatPixels, topOf(loop.layerId, project, lanes),
                                     *beats * kBeatPixels, kBlockHeight),
                     .label = labelOf(loop, *bar)};
}

void LoopGhost::paint(QPainter& painter, const QRectF& seen) const
{
    const QTransform toPixels = painter.worldTransform();
    const QRectF room = toPixels.mapRect(seen);
    const QRectF rect = broughtInto(room, toPixels.mapRect(block));
    painter.save();
    // Lines and letters keep their shape whatever the zoom.
    painter.resetTransform();
    QColor band = kVeltaAccent;
    band.setAlpha(kBandAlpha);
    painter.fillRect(QRectF(rect.left(), room.top(), rect.width(), room.height()), band);
    painter.setBrush(kLoopBlock);
    painter.setPen(QPen(kVeltaAccent, kOutline, Qt::DashLine));
    painter.drawRoundedRect(rect, kGhostRadius, kGhostRadius);

    const qreal width = QFontMetricsF(painter.font()).horizontalAdvance(label) + 2 * kTextMargin;
    QRectF chip = rect;
    chip.setWidth(std::max(width, rect.width()));
    chip.moveLeft(std::max(room.left(), std::min(rect.left(), room.right() - width)));
    if (width > rect.width() - kOutline)
        painter.fillRect(chip.adjusted(0, kOutline, 0, -kOutline), kLoopBlock);
    painter.setPen(inkOn(kLoopBlock));
    painter.drawText(chip.adjusted(kTextMargin, 0, -kTextMargin, 0),
                     Qt::AlignLeft | Qt::AlignVCenter, label);
    painter.restore();
}
