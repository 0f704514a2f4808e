#include "views/TimelineRuler.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "shell/theme/CanvasColors.h"

#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kHeight = 34;
constexpr int kTickHeight = 12;

/// A meter with more bars and pulses than this on one screen comes from a damaged file.
constexpr double kMostMarks = 20'000.0;

/// Farther away than any screen, and still a number for the painter.
constexpr double kFarPixels = 1e6;

QFont barFont(QFont font)
{
    font.setWeight(QFont::Bold);
    return font;
}

QFont beatFont(QFont font)
{
    font.setPointSizeF(std::max(font.pointSizeF() - 1.5, 6.0));
    return font;
}

QPen linePen(const QColor& color, double width)
{
    QPen pen(color);
    pen.setWidthF(width);
    return pen;
}

} // namespace

double RulerViewport::beatAtX(int x) const
{
    return std::max(0.0, (x - leftMargin + scrollPixels) / pixelsPerBeat);
}

long RulerViewport::xOfBeat(double beat) const
{
    const double x = beat * pixelsPerBeat + leftMargin - scrollPixels;
    return std::lround(std::clamp(x, -kFarPixels, kFarPixels));
}

TimelineRuler::TimelineRuler(QWidget* parent) : QWidget(parent)
{
    setFixedHeight(kHeight);
    setAutoFillBackground(true);
}

void TimelineRuler::setProject(Project* project)
{
    project_ = project;
    update();
}

void TimelineRuler::setPlayheadBeat(double beat)
{
    playheadBeat_ = beat;
    update();
}

void TimelineRuler::setRecording(bool recording)
{
    recording_ = recording;
    update();
}

void TimelineRuler::setViewport(double scrollPixels, double pixelsPerBeat, int leftMargin)
{
    viewport_ = {scrollPixels, pixelsPerBeat, leftMargin};
    update();
}

void TimelineRuler::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !showsTime())
        return;
    const double pulse = project_->timeSignature.pulseBeats();
    const double beat = std::round(beatAtX(event->position().toPoint().x()) / pulse) * pulse;
    emit seekRequested(std::max(0.0, beat));
}

void TimelineRuler::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), canvasColors().headerBackground);
    if (!showsTime())
        return;
    paintBars(painter);
    paintPlayhead(painter);
}

void TimelineRuler::paintBars(QPainter& painter) const
{
    const double bar = project_->beatsPerBar();
    if (!isBarLength(bar))
        return;
    const double pixelsPerBar = viewport_.pixelsPerBeat * bar;
    const double first = std::floor(std::max(0.0, viewport_.scrollPixels) / pixelsPerBar);
    const double last = std::ceil((width() + viewport_.scrollPixels) / pixelsPerBar);
    const double pulsesInSight =
        width() / (viewport_.pixelsPerBeat * project_->timeSignature.pulseBeats());
    const double pulses = std::min<double>(project_->timeSignature.pulsesPerBar(), pulsesInSight);
    if ((last - first) * (1.0 + pulses) > kMostMarks)
        return;
    for (double k = first; k <= last; ++k)
        paintBar(painter, k);
}

void TimelineRuler::paintBar(QPainter& painter, double bar) const
{
    const double start = bar * project_->beatsPerBar();
    const long x = viewport_.xOfBeat(start);
    if (isShown(x)) {
        painter.setPen(linePen(canvasColors().headerText, 2.0));
        painter.drawLine(static_cast<int>(x), 0, static_cast<int>(x), height());
        painter.setFont(barFont(font()));
        painter.drawText(static_cast<int>(x) + 4, 13, QString::number(bar + 1.0, 'f', 0));
    }
    painter.setFont(beatFont(font()));
    paintPulses(painter, start);
}

void TimelineRuler::paintPulses(QPainter& painter, double barStart) const
{
    const double pulse = project_->timeSignature.pulseBeats();
    const int count = project_->timeSignature.pulsesPerBar();
    // A bar may be far longer than the ruler: only what is near it is looked at.
    const double hidden = (viewport_.scrollPixels / viewport_.pixelsPerBeat - barStart) / pulse;
    const int first = static_cast<int>(std::clamp<double>(std::floor(hidden) - 1.0, 0.0, count));
    for (int i = first; i < count; ++i) {
        const auto x = static_cast<int>(viewport_.xOfBeat(i * pulse + barStart));
        if (x > width())
            return;
        if (!isShown(x))
            continue;
        if (i > 0) {
            painter.setPen(linePen(canvasColors().rulerTick, 1.0));
            painter.drawLine(x, height() - kTickHeight, x, height());
        }
        painter.setPen(canvasColors().headerText);
        painter.drawText(x + 3, height() - 3, QString::number(i + 1));
    }
}

void TimelineRuler::paintPlayhead(QPainter& painter) const
{
    const auto x = static_cast<int>(viewport_.xOfBeat(playheadBeat_));
    if (x < viewport_.leftMargin || !std::isfinite(playheadBeat_))
        return;
    painter.setPen(linePen(recording_ ? kRecordingPlayhead : canvasColors().playhead, 2.0));
    painter.drawLine(x, 0, x, height());
}
