#include "views/pianoroll/PianoRollScene.h"

#include "model/Project.h"
#include "shell/theme/CanvasColors.h"
#include "views/EmptyScene.h"
#include "views/pianoroll/PianoRollLayout.h"

#include <QGraphicsTextItem>
#include <QGraphicsView>
#include <QPen>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kGhostAlpha = 170;
constexpr int kGhostOutlineDarkness = 140;
constexpr qreal kGhostZ = -1.0;

constexpr int kMessagePointSize = 11;
/// Free pixels beside a message that is wider than the view.
constexpr int kMessageMargin = 16;
constexpr qreal kMessageZ = 50.0;

constexpr qreal kPlayheadWidth = 2.0;
constexpr qreal kPlayheadZ = 100.0;

} // namespace

PianoRollScene::PianoRollScene(QObject* parent) : QGraphicsScene(parent)
{
    // All items are made anew at each edit: an index of them would cost more than it saves.
    setItemIndexMethod(NoIndex);
}

void PianoRollScene::rebuild(const Project& project, const MelodyBlock* block,
                             const QList<int>& ghostTracks, SceneWidth width)
{
    empty();
    fit(project, width);
    addGhosts(project, ghostTracks);
    if (block)
        addNotes(*block);
    addPlayhead();
}

void PianoRollScene::fit(const Project& project, SceneWidth width)
{
    setSceneRect(sceneRectFor(PianoRollLayout::sceneSize(project), sceneRect(), width));
}

void PianoRollScene::empty()
{
    emptyScene(*this);
    playhead_ = nullptr;
    message_ = nullptr;
}

void PianoRollScene::addGhosts(const Project& project, const QList<int>& tracks)
{
    std::size_t count = 0;
    for (const int track : tracks) {
        if (track < 0 || track >= project.tracks.size())
            continue;
        addGhostsOf(project.tracks.at(track), kTrackColors[count % kTrackColors.size()]);
        ++count;
    }
}

void PianoRollScene::addGhostsOf(const Track& track, const QColor& color)
{
    QColor fill = color;
    fill.setAlpha(kGhostAlpha);
    const QPen outline(color.darker(kGhostOutlineDarkness), 0);
    for (const MelodyBlock& block : track.melodyBlocks) {
        for (const NoteEvent& note : block.notes) {
            if (const auto rect = PianoRollLayout::noteRect(block, note))
                addRect(*rect, outline, fill)->setZValue(kGhostZ);
        }
    }
}

void PianoRollScene::addNotes(const MelodyBlock& block)
{
    for (int i = 0; i < block.notes.size(); ++i) {
        const NoteEvent& note = block.notes.at(i);
        if (const auto rect = PianoRollLayout::noteRect(block, note))
            addItem(new NoteItem(i, note.pitch, *rect));
    }
}

void PianoRollScene::showMessage(const QString& text)
{
    QFont font;
    font.setPointSize(kMessagePointSize);
    message_ = addText(text, font);
    message_->setDefaultTextColor(canvasColors().headerText);
    message_->setZValue(kMessageZ);
    // Rows are much taller than beats are wide, which would stretch the letters.
    message_->setFlag(QGraphicsItem::ItemIgnoresTransformations);
}

void PianoRollScene::placeMessage(const QGraphicsView& view)
{
    if (!message_)
        return;
    const QSize room = view.viewport()->size();
    message_->setTextWidth(-1.0);
    const double width = message_->boundingRect().width();
    if (width > room.width() - 2 * kMessageMargin)
        message_->setTextWidth(room.width() - 2 * kMessageMargin);
    const QSizeF size = message_->boundingRect().size();
    const QPoint corner(qRound((room.width() - size.width()) / 2.0),
                        qRound((room.height() - size.height()) / 2.0));
    message_->setPos(view.mapToScene(corner));
}

void PianoRollScene::addPlayhead()
{
    playhead_ = addLine(0, 0, 0, PianoRollLayout::kSceneHeight, playheadPen());
    playhead_->setZValue(kPlayheadZ);
}

QPen PianoRollScene::playheadPen() const
{
    QPen pen(recording_ ? kRecordingPlayhead : canvasColors().playhead, kPlayheadWidth);
    pen.setCosmetic(true);
    return pen;
}

void PianoRollScene::setRecording(bool recording)
{
    recording_ = recording;
    if (playhead_)
        playhead_->setPen(playheadPen());
}

void PianoRollScene::setPlayheadBeat(double beat)
{
    using namespace PianoRollLayout;
    if (playhead_ && std::isfinite(beat))
        playhead_->setX(std::clamp(beat, -kMostBeats, kMostBeats) * kBeatPixels);
}

NoteItem* PianoRollScene::noteAt(const QPointF& place) const
{
    for (QGraphicsItem* item : items(place)) {
        if (auto* note = qgraphicsitem_cast<NoteItem*>(item))
            return note;
    }
    return nullptr;
}

QList<int> PianoRollScene::selectedNotes() const
{
    QList<int> indices;
    for (const QGraphicsItem* item : selectedItems()) {
        if (const auto* note = qgraphicsitem_cast<const NoteItem*>(item))
            indices.append(note->index());
    }
    std::ranges::sort(indices);
    return indices;
}

void PianoRollScene::selectNotes(const QList<int>& indices)
{
    const QSet<int> wanted(indices.begin(), indices.end());
    for (QGraphicsItem* item : items()) {
        if (auto* note = qgraphicsitem_cast<NoteItem*>(item))
            note->setSelected(wanted.contains(note->index()));
    }
}
