#include "listen/NotePicture.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "playback/PlaybackEngine.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kBeatWidth = 44;
constexpr int kRowHeight = 5;
constexpr int kLabelWidth = 190;
constexpr int kStripMargin = 8;
constexpr int kHighestPitch = 127;
/// Wider songs are cut: an image has its bounds.
constexpr int kMostBeats = 512;

struct Strip {
    QString label;
    QList<NoteEvent> notes;
    int lowest = 60;
    int highest = 60;
    int height = 0;
};

Strip stripOf(const Project& project, const Track& track, const LoopLibrary& library)
{
    Strip strip{.label = track.name,
                .notes = PlaybackEngine::renderTrackNotes(project, track, &library)};
    for (NoteEvent& note : strip.notes)
        note.pitch = std::clamp(note.pitch, 0, kHighestPitch);
    if (!strip.notes.isEmpty()) {
        const auto [low, high] = std::ranges::minmax(strip.notes, {}, &NoteEvent::pitch);
        strip.lowest = low.pitch;
        strip.highest = high.pitch;
    }
    const int rows = std::max(strip.highest - strip.lowest + 1, 5);
    strip.height = rows * kRowHeight + 2 * kStripMargin;
    return strip;
}

void drawLines(QPainter& painter, const Project& project, int beats, int height)
{
    const double bar = project.beatsPerBar();
    for (int beat = 0; beat <= beats; ++beat) {
        const bool barLine = std::fmod(beat + 1e-9, bar) < 1e-6;
        painter.setPen(barLine ? Qt::darkGray : QColor(0xdddddd));
        const int x = kLabelWidth + beat * kBeatWidth;
        painter.drawLine(x, 0, x, height);
    }
}

void drawNote(QPainter& painter, const Strip& strip, const NoteEvent& note, int top)
{
    const double x = kLabelWidth + note.startBeat * kBeatWidth;
    const int y = top + kStripMargin + (strip.highest - note.pitch) * kRowHeight;
    const QColor colour = QColor::fromHsv(210, 80 + note.velocity, 225 - note.velocity);
    painter.fillRect(QRectF(x, y, std::max(2.0, note.durationBeats * kBeatWidth), kRowHeight - 1),
                     colour);
}

void drawStrip(QPainter& painter, const Strip& strip, int top, int width)
{
    painter.setPen(Qt::lightGray);
    painter.drawLine(0, top, width, top);
    painter.setPen(Qt::black);
    painter.drawText(QRect(6, top, kLabelWidth - 12, strip.height), Qt::AlignVCenter, strip.label);
    for (const NoteEvent& note : strip.notes)
        drawNote(painter, strip, note, top);
}

} // namespace

QImage notePicture(const Project& project, const LoopLibrary& library)
{
    QList<Strip> strips;
    int height = 1;
    for (const Track& track : project.tracks) {
        strips.append(stripOf(project, track, library));
        height += strips.last().height;
    }
    const int beats = static_cast<int>(std::clamp(project.endBeat(), 1.0, double{kMostBeats}));
    const int width = kLabelWidth + beats * kBeatWidth + 1;
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    drawLines(painter, project, beats, height);
    int top = 0;
    for (const Strip& strip : strips) {
        drawStrip(painter, strip, top, width);
        top += strip.height;
    }
    return picture;
}
