#include "views/pianoroll/PianoRollBackdrop.h"

#include "model/Project.h"
#include "music/ChordVoicer.h"
#include "shell/theme/CanvasColors.h"
#include "views/ScreenPixels.h"
#include "views/pianoroll/PianoRollLayout.h"

#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <cmath>

using namespace PianoRollLayout;

namespace {

constexpr int kBarLinePixels = 2;

constexpr double kHatchPixels = 10.0;
constexpr int kHatchExtraAlpha = 60;

constexpr int kChordAlphaDark = 70;
constexpr int kChordAlphaLight = 38;

QRectF rowOf(int pitch, double left, double right)
{
    return {left, pitchToSceneY(pitch), right - left, kRowPixels};
}

QColor hatchColor()
{
    QColor color = canvasColors().rowLine;
    color.setAlpha(std::min(color.alpha() + kHatchExtraAlpha, 255));
    return color;
}

/// Hatches rows of one height: lines at 45 degrees from the bottom of a row up to the right.
///
/// All rows share a picture of one line, since a painter takes much longer over a thousand lines
/// than over a picture that repeats itself.
class Hatching {
public:
    explicit Hatching(const QPainter& painter);

    /// Fills a row, given in scene coordinates.
    void paint(QPainter& painter, const QRectF& row) const;

private:
    QPixmap tile_;
};

Hatching::Hatching(const QPainter& painter)
{
    const double scale = painter.deviceTransform().m11() / painter.worldTransform().m11();
    const int period = qRound(kHatchPixels * scale);
    const int height = qCeil(painter.deviceTransform().m22() * kRowPixels);
    tile_ = QPixmap(period, height);
    tile_.fill(Qt::transparent);
    QPainter pen(&tile_);
    pen.setPen(hatchColor());
    for (int x = -period * (height / period + 1); x < period; x += period)
        pen.drawLine(x, height, x + height, 0);
}

void Hatching::paint(QPainter& painter, const QRectF& row) const
{
    ScreenPixels screen(painter);
    const QRect area = screen.rect(row);
    // Counted from the start of the song, the pattern travels with it.
    painter.drawTiledPixmap(area, tile_, QPoint(area.left() - screen.origin(), 0));
}

void paintScale(QPainter& painter, const QRectF& exposed, const KeySignature& key)
{
    const Hatching hatching(painter);
    const PitchSpan span = pitchesBetween(exposed.top(), exposed.bottom());
    for (int pitch = span.lowest; pitch <= span.highest; ++pitch) {
        if (isInScale(key, pitch))
            continue;
        const QRectF row = rowOf(pitch, exposed.left(), exposed.right());
        painter.fillRect(row, canvasColors().outOfScaleFill);
        hatching.paint(painter, row);
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

void paintRowLines(LinePainter& lines, const QRectF& exposed)
{
    const PitchSpan span = pitchesBetween(exposed.top(), exposed.bottom());
    // The last of them closes the lowest row.
    for (int pitch = span.lowest - 1; pitch <= span.highest; ++pitch)
        lines.horizontal(pitchToSceneY(pitch), canvasColors().rowLine);
}

void paintTimeLine(LinePainter& lines, const PianoRollLine& line)
{
    const double x = line.beat * kBeatPixels;
    switch (line.kind) {
    case PianoRollLine::Kind::Bar:
        lines.vertical(x, kBarLinePixels, canvasColors().barLine);
        break;
    case PianoRollLine::Kind::Beat:
        lines.vertical(x, 1, canvasColors().beatLine);
        break;
    case PianoRollLine::Kind::Subdivision:
        lines.vertical(x, 1, canvasColors().subdivisionLine);
        break;
    }
}

} // namespace

void PianoRollBackdrop::paint(QPainter& painter, const QRectF& exposed, const Project& project,
                              GridSubdivisionLevel level)
{
    painter.fillRect(exposed, canvasColors().canvasBackground);
    paintScale(painter, exposed, project.keySignature);
    paintHarmony(painter, exposed, project);
    LinePainter lines(painter, exposed);
    paintRowLines(lines, exposed);
    for (const PianoRollLine& line :
         gridLines(exposed.left(), exposed.right(), project.timeSignature, level))
        paintTimeLine(lines, line);
}
