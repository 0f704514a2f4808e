#include "views/pianoroll/PianoRollBackdrop.h"

#include "model/Project.h"
#include "music/ChordVoicer.h"
#include "shell/theme/CanvasColors.h"
#include "views/pianoroll/PianoRollLayout.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace PianoRollLayout;

namespace {

constexpr qreal kBarLineWidth = 2.0;

constexpr double kHatchPixels = 10.0;
constexpr int kHatchExtraAlpha = 60;

constexpr int kChordAlphaDark = 70;
constexpr int kChordAlphaLight = 38;

QRectF rowOf(int pitch, double left, double right)
{
    return {left, pitchToSceneY(pitch), right - left, kRowPixels};
}

QPen cosmeticPen(const QColor& color, qreal width)
{
    QPen pen(color, width);
    pen.setCosmetic(true);
    return pen;
}

QColor hatchColor()
{
    QColor color = canvasColors().rowLine;
    color.setAlpha(std::min(color.alpha() + kHatchExtraAlpha, 255));
    return color;
}

/// Lines at 45 degrees from the bottom of an area up to the right, counted from a place outside.
QList<QLineF> hatching(const QRectF& area, double originX)
{
    const double first = std::floor((area.left() - area.height() - originX) / kHatchPixels);
    QList<QLineF> lines;
    for (double x = originX + first * kHatchPixels; x < area.right(); x += kHatchPixels)
        lines.append(QLineF(x, area.bottom(), x + area.height(), area.top()));
    return lines;
}

void hatch(QPainter& painter, const QRectF& row)
{
    const QTransform toScreen = painter.worldTransform();
    const QRectF area = toScreen.mapRect(row);
    painter.save();
    painter.resetTransform();
    painter.setClipRect(area, Qt::IntersectClip);
    painter.setPen(cosmeticPen(hatchColor(), 1.0));
    // Counted from the start of the song, the pattern travels with it.
    painter.drawLines(hatching(area, toScreen.dx()));
    painter.restore();
}

void paintScale(QPainter& painter, const QRectF& exposed, const KeySignature& key)
{
    const PitchSpan span = pitchesBetween(exposed.top(), exposed.bottom());
    for (int pitch = span.lowest; pitch <= span.highest; ++pitch) {
        if (isInScale(key, pitch))
            continue;
        const QRectF row = rowOf(pitch, exposed.left(), exposed.right());
        painter.fillRect(row, canvasColors().outOfScaleFill);
        hatch(painter, row);
    }
}

QColor chordColor(int degree)
{
    QColor color = kDegreeColors[static_cast<std::size_t>(degree - 1) % kDegreeColors.size()];
    color.setAlpha(ThemeManager::instance()->isDark() ? kChordAlphaDark : kChordAlphaLight);
    return color;
}

/// The rows of a chord's pitches over a stretch of the scene.
void paintChord(QPainter& painter, const QRectF& stretch, const KeySignature& key,
                const HarmonyDegreeEvent& event)
{
    const QList<int> pitchClasses =
        ChordVoicer::chordPitchClasses(key, event.degree, event.extension);
    const PitchSpan span = pitchesBetween(stretch.top(), stretch.bottom());
    for (int pitch = span.lowest; pitch <= span.highest; ++pitch) {
        if (pitchClasses.contains(pitch % 12))
            painter.fillRect(rowOf(pitch, stretch.left(), stretch.right()),
                             chordColor(event.degree));
    }
}

void paintHarmony(QPainter& painter, const QRectF& exposed, const Project& project)
{
    const double bar = project.beatsPerBar();
    for (const HarmonyBlock& block : project.harmonyTrack.blocks) {
        for (const HarmonyDegreeEvent& event : block.events) {
            const double start = block.barIndex * bar + event.startBeat;
            const double left = std::max(start * kBeatPixels, exposed.left());
            const double right =
                std::min((start + event.durationBeats) * kBeatPixels, exposed.right());
            if (left < right && std::isfinite(start))
                paintChord(painter, QRectF(left, exposed.top(), right - left, exposed.height()),
                           project.keySignature, event);
        }
    }
}

void paintRowLines(QPainter& painter, const QRectF& exposed)
{
    const PitchSpan span = pitchesBetween(exposed.top(), exposed.bottom());
    painter.setPen(cosmeticPen(canvasColors().rowLine, 0));
    // The last of them closes the lowest row.
    for (int pitch = span.lowest - 1; pitch <= span.highest; ++pitch) {
        const double y = pitchToSceneY(pitch);
        painter.drawLine(QPointF(exposed.left(), y), QPointF(exposed.right(), y));
    }
}

QPen linePen(PianoRollLine::Kind kind)
{
    switch (kind) {
    case PianoRollLine::Kind::Bar:
        return cosmeticPen(canvasColors().barLine, kBarLineWidth);
    case PianoRollLine::Kind::Beat:
        return cosmeticPen(canvasColors().beatLine, 0);
    case PianoRollLine::Kind::Subdivision:
        break;
    }
    return cosmeticPen(canvasColors().subdivisionLine, 0);
}

void paintTimeLines(QPainter& painter, const QRectF& exposed, const TimeSignature& meter,
                    GridSubdivisionLevel level)
{
    for (const PianoRollLine& line : gridLines(exposed.left(), exposed.right(), meter, level)) {
        const double x = line.beat * kBeatPixels;
        painter.setPen(linePen(line.kind));
        painter.drawLine(QPointF(x, exposed.top()), QPointF(x, exposed.bottom()));
    }
}

} // namespace

void PianoRollBackdrop::paint(QPainter& painter, const QRectF& exposed, const Project& project,
                              GridSubdivisionLevel level)
{
    painter.fillRect(exposed, canvasColors().canvasBackground);
    paintScale(painter, exposed, project.keySignature);
    paintHarmony(painter, exposed, project);
    paintRowLines(painter, exposed);
    paintTimeLines(painter, exposed, project.timeSignature, level);
}
