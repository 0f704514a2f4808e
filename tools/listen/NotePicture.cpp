#include "listen/NotePicture.h"

#include "content/LoopLibrary.h"
#include "listen/NoteRows.h"
#include "model/Project.h"
#include "music/ChordVoicer.h"
#include "playback/PlaybackEngine.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kBeatWidth = 44;
constexpr int kRowHeight = 6;
constexpr int kDrumRowHeight = 11;
constexpr int kLabelWidth = 190;
constexpr int kNameWidth = 84;
constexpr int kNameHeight = 11;
constexpr int kStripMargin = 8;
constexpr int kLeastRows = 5;
constexpr int kTitleHeight = 24;
constexpr int kChordHeight = 18;
constexpr int kHeadHeight = kTitleHeight + kChordHeight;
/// Wider songs are cut: an image has its bounds.
constexpr int kMostBeats = 512;

struct Strip {
    QString label;
    QList<NoteEvent> notes;
    NoteRows rows;
    int rowHeight = kRowHeight;
    int height = 0;
};

Strip stripOf(const Project& project, const Track& track, const LoopLibrary& library,
              const PictureWords& words)
{
    Strip strip{.label = track.name,
                .notes =
                    drawnNotes(track, PlaybackEngine::renderTrackNotes(project, track, &library)),
                .rows = {}};
    strip.rows = NoteRows::of(track, strip.notes, library, words.drums);
    const LoopLayer* layer = library.findLayer(track.layerId);
    strip.rowHeight = layer && !layer->pitched ? kDrumRowHeight : kRowHeight;
    const auto rows = static_cast<int>(strip.rows.pitches.size());
    strip.height = std::max(rows * strip.rowHeight, kLeastRows * kRowHeight) + 2 * kStripMargin;
    return strip;
}

int xOf(double beat)
{
    return kLabelWidth + static_cast<int>(std::lround(beat * kBeatWidth));
}

bool isBarLine(double beat, double bar)
{
    return std::fmod(beat + 1e-9, bar) < 1e-6;
}

void drawLines(QPainter& painter, const Project& project, int beats, int height)
{
    for (int beat = 0; beat <= beats; ++beat) {
        painter.setPen(isBarLine(beat, project.beatsPerBar()) ? Qt::darkGray : QColor(0xdddddd));
        painter.drawLine(xOf(beat), kHeadHeight, xOf(beat), height);
    }
}

QString chordName(const Project& project, const HarmonyDegreeEvent& chord)
{
    const QList<int> scale = project.keySignature.scalePitchClasses();
    const QString degree =
        ChordVoicer::degreeLabel(project.keySignature, chord.degree, chord.extension);
    if (degree.isEmpty() || chord.degree > scale.size())
        return {};
    return u"%1 (%2)"_s.arg(degree, KeySignature::letterName(scale.at(chord.degree - 1)));
}

/// The number of each bar, and its chord where it is another than before.
void drawHead(QPainter& painter, const Project& project, int beats, const QString& title)
{
    painter.setPen(Qt::black);
    painter.drawText(QRect(6, 0, xOf(beats) - 6, kTitleHeight), Qt::AlignVCenter, title);
    const double bar = project.beatsPerBar();
    if (!(bar > 0.0))
        return;
    QString before;
    for (int number = 0; number * bar < beats; ++number) {
        const HarmonyDegreeEvent* chord = project.harmonyTrack.eventAt(number * bar, bar);
        const QString name = chord ? chordName(project, *chord) : QString();
        const QString text = u"%1  %2"_s.arg(number + 1).arg(name == before ? QString() : name);
        before = name;
        painter.drawText(QRect(xOf(number * bar) + 3, kTitleHeight, xOf(bar), kChordHeight),
                         Qt::AlignVCenter, text);
    }
}

/// Names at the rows that have room for one: each clear of the one above it.
void drawNames(QPainter& painter, const Strip& strip, int top)
{
    int free = top;
    for (qsizetype row = 0; row < strip.rows.names.size(); ++row) {
        const int middle =
            top + kStripMargin + static_cast<int>(row) * strip.rowHeight + strip.rowHeight / 2;
        const bool sounds = std::ranges::find(strip.notes, strip.rows.pitches.at(row),
                                              &NoteEvent::pitch) != strip.notes.end();
        if (!sounds || middle - kNameHeight / 2 < free)
            continue;
        painter.drawText(
            QRect(kLabelWidth - kNameWidth - 4, middle - kNameHeight / 2, kNameWidth, kNameHeight),
            Qt::AlignVCenter | Qt::AlignRight, strip.rows.names.at(row));
        free = middle + kNameHeight / 2;
    }
}

void drawNote(QPainter& painter, const Strip& strip, const NoteEvent& note, int top)
{
    const double x = kLabelWidth + note.startBeat * kBeatWidth;
    const auto row = static_cast<int>(strip.rows.pitches.indexOf(note.pitch));
    const int y = top + kStripMargin + row * strip.rowHeight;
    const QColor colour = QColor::fromHsv(210, 80 + note.velocity, 225 - note.velocity);
    painter.fillRect(
        QRectF(x, y, std::max(2.0, note.durationBeats * kBeatWidth), strip.rowHeight - 1), colour);
}

void drawStrip(QPainter& painter, const Strip& strip, int top, int width)
{
    painter.setPen(Qt::lightGray);
    painter.drawLine(0, top, width, top);
    painter.setPen(Qt::black);
    painter.drawText(QRect(6, top, kLabelWidth - kNameWidth - 12, strip.height),
                     Qt::AlignVCenter | Qt::TextWordWrap, strip.label);
    QFont small = painter.font();
    small.setPixelSize(kNameHeight - 2);
    painter.save();
    painter.setFont(small);
    drawNames(painter, strip, top);
    painter.restore();
    for (const NoteEvent& note : strip.notes)
        drawNote(painter, strip, note, top);
}

} // namespace

QImage notePicture(const Project& project, const LoopLibrary& library, const PictureWords& words)
{
    QList<Strip> strips;
    int height = kHeadHeight + 1;
    for (const Track& track : project.tracks) {
        strips.append(stripOf(project, track, library, words));
        height += strips.last().height;
    }
    const int beats = static_cast<int>(std::clamp(project.endBeat(), 1.0, double{kMostBeats}));
    const int width = xOf(beats) + 1;
    QImage picture(width, height, QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    drawLines(painter, project, beats, height);
    drawHead(painter, project, beats, words.title);
    int top = kHeadHeight;
    for (const Strip& strip : strips) {
        drawStrip(painter, strip, top, width);
        top += strip.height;
    }
    return picture;
}
