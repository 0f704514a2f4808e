#include "views/pianoroll/PianoRollBackdrop.h"

#include "model/Project.h"
#include "music/ChordVoicer.h"
#include "shell/theme/CanvasColors.h"
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

/// A pixel of the screen in those of the widget. The device does not tell: it is the widget even
/// while that is painted into something else.
double screenPixel(const QPainter& painter)
{
    return painter.worldTransform().m11() / painter.deviceTransform().m11();
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
    const double pixelRatio = 1.0 / screenPixel(painter);
    // In whole pixels of the screen, or the picture would not join itself.
    const int period = qRound(kHatchPixels * pixelRatio);
    const int height = qCeil(painter.worldTransform().m22() * kRowPixels * pixelRatio);
    tile_ = QPixmap(period, height);
    tile_.fill(Qt::transparent);
    QPainter pen(&tile_);
    pen.setPen(hatchColor());
    for (int x = -period * (height / period + 1); x < period; x += period)
        pen.drawLine(x, height, x + height, 0);
    tile_.setDevicePixelRatio(pixelRatio);
}

void Hatching::paint(QPainter& painter, const QRectF& row) const
{
    const QTransform toScreen = painter.worldTransform();
    const QRectF area = toScreen.mapRect(row);
    painter.save();
    painter.resetTransform();
    // Counted from the start of the song, the pattern travels with it.
    painter.drawTiledPixmap(area, tile_, {area.left() - toScreen.dx(), 0.0});
    painter.restore();
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

/// Paints straight lines as rectangles in pixels of the screen. They are rounded like the rows, so
/// that both meet, and a painter takes much longer over a line than over a rectangle.
class LinePainter {
public:
    LinePainter(QPainter& painter, const QRectF& exposed)
        : painter_(painter), toScreen_(painter.worldTransform()), area_(toScreen_.mapRect(exposed)),
          pixel_(screenPixel(painter))
    {
        painter_.save();
        painter_.resetTransform();
    }

    ~LinePainter() { painter_.restore(); }

    Q_DISABLE_COPY_MOVE(LinePainter)

    void horizontal(double sceneY, const QColor& color)
    {
        const double y = toScreen_.map(QPointF(0.0, sceneY)).y();
        painter_.fillRect(QRectF(area_.left(), y, area_.width(), pixel_), color);
    }

    /// One pixel wide from its place on, or two around it.
    void vertical(double sceneX, int pixels, const QColor& color)
    {
        const double x = toScreen_.map(QPointF(sceneX, 0.0)).x() - pixel_ * (pixels - 1);
        // Taller ones would be shared among threads, which takes longer than painting them.
        constexpr double kTallest = 40.0;
        for (double y = area_.top(); y < area_.bottom(); y += kTallest)
            painter_.fillRect(QRectF(x, y, pixels * pixel_, std::min(kTallest, area_.bottom() - y)),
                              color);
    }

private:
    QPainter& painter_;
    QTransform toScreen_;
    /// What is exposed, on the screen.
    QRectF area_;
    /// Of the screen.
    double pixel_;
};

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
