#include "views/pianoroll/PianoRollScene.h"

#include "model/Project.h"
#include "shell/theme/CanvasColors.h"
#include "views/pianoroll/PianoRollLayout.h"

#include <QGraphicsTextItem>
#include <QPen>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kGhostAlpha = 170;
constexpr int kGhostOutlineDarkness = 140;
constexpr qreal kGhostZ = -1.0;

constexpr int kMessagePointSize = 11;
constexpr QPointF kMessagePlace(32.0, 288.0);
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
    // Once for all: item by item, views would take longer to learn of the change than to paint it.
    update();
    clear();
    playhead_ = nullptr;
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
    QGraphicsTextItem* message = addText(text, font);
    message->setDefaultTextColor(canvasColors().headerText);
    message->setPos(kMessagePlace);
    message->setZValue(kMessageZ);
    // Rows are much taller than beats are wide, which would stretch the letters.
    message->setFlag(QGraphicsItem::ItemIgnoresTransformations);
}

void PianoRollScene::addPlayhead()
{
    QPen pen(canvasColors().playhead, kPlayheadWidth);
    pen.setCosmetic(true);
    playhead_ = addLine(0, 0, 0, PianoRollLayout::kSceneHeight, pen);
    playhead_->setZValue(kPlayheadZ);
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
