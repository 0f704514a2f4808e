#include "views/arranger/ArrangerAccessible.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "music/ChordVoicer.h"
#include "views/AccessibleItems.h"
#include "views/AccessibleRuler.h"
#include "views/MusicWords.h"
#include "views/SectionWords.h"
#include "views/TimelineRuler.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerHeaderColumn.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/TrackArranger.h"

#include <QFileInfo>

namespace {

// ---- Words ---------------------------------------------------------------------------------

QString chordWords(const Project& project, const BlockRef& block)
{
    const HarmonyDegreeEvent& chord =
        project.harmonyTrack.blockForBar(block.trackIndex)->events.at(block.blockIndex);
    return TrackArranger::tr("Acorde %1")
        .arg(ChordVoicer::degreeLabel(project.keySignature, chord.degree, chord.extension));
}

QString melodyWords(const MelodyBlock& melody)
{
    return melody.notes.size() == 1
               ? TrackArranger::tr("Melodía (1 nota)")
               : TrackArranger::tr("Melodía (%1 notas)").arg(melody.notes.size());
}

QString loopWords(const LoopBlock& loop, const LoopLibrary* library)
{
    const Rhythm* rhythm = library ? library->findRhythm(loop.rhythmId) : nullptr;
    const LoopLayer* layer = library ? library->findLayer(loop.layerId) : nullptr;
    return MusicWords::list(
        {rhythm ? rhythm->displayName : loop.rhythmId, layer ? layer->label : loop.layerId,
         TrackArranger::tr(sectionWord(loop.section)) + u' ' + QString::number(loop.variantIndex)});
}

QString recordWords(const Project& project, const LoopLibrary* library, const BlockRef& block)
{
    switch (block.kind) {
    case BlockKind::Chord:
        return chordWords(project, block);
    case BlockKind::Melody:
        return melodyWords(project.tracks.at(block.trackIndex).melodyBlocks.at(block.blockIndex));
    case BlockKind::Loop:
        return loopWords(project.tracks.at(block.trackIndex).loopBlocks.at(block.blockIndex),
                         library);
    case BlockKind::Audio:
        break;
    }
    const AudioClip& clip = project.audioTracks.at(block.trackIndex).clips.at(block.blockIndex);
    return MusicWords::list({TrackArranger::tr("Voz"), QFileInfo(clip.audioFilePath).fileName()});
}

template <typename List>
QString trackWords(const List& tracks, int index)
{
    if (index < 0 || index >= tracks.size())
        return {};
    const auto& track = tracks.at(index);
    return MusicWords::list(
        {track.name, track.muted ? TrackArranger::tr("silenciado") : QString()});
}

// ---- Blocks --------------------------------------------------------------------------------

/// Every block that is drawn, lane by lane from above, and in a lane by its start.
class Blocks : public ItemSource {
public:
    explicit Blocks(TrackArranger* arranger) : arranger_(arranger) {}

    int count() const override { return static_cast<int>(blocks().size()); }

    QString nameOf(int place) const override
    {
        return ArrangerAccessible::nameOf(*arranger_->project(), arranger_->library(),
                                          blocks().at(place));
    }

    QRect rectOf(int place) const override
    {
        const BlockItem* item = arranger_->scene()->itemOf(blocks().at(place));
        return item ? arranger_->view()->mapFromScene(item->rect()).boundingRect() : QRect();
    }

    bool isSelected(int place) const override
    {
        return arranger_->selectedBlock() == blocks().at(place);
    }

    int current() const override
    {
        const auto block = arranger_->selectedBlock();
        return block ? static_cast<int>(blocks().indexOf(*block)) : -1;
    }

    void select(int place) override { arranger_->goToBlock(blocks().at(place)); }

private:
    /// Found once after each rebuild of the scene.
    const QList<BlockRef>& blocks() const
    {
        const int revision = arranger_->scene()->revision();
        if (revision_ == revision)
            return blocks_;
        revision_ = revision;
        blocks_.clear();
        for (const LaneInfo& lane : arranger_->lanes()) {
            for (const PlacedBlock& placed :
                 BlockOrder::blocksOf(*arranger_->project(), BlockOrder::refOf(lane)))
                blocks_.append(placed.block);
        }
        return blocks_;
    }

    TrackArranger* arranger_;
    mutable int revision_ = -1;
    mutable QList<BlockRef> blocks_;
};

// ---- Lanes ---------------------------------------------------------------------------------

class Lanes : public ItemSource {
public:
    explicit Lanes(TrackArranger* arranger) : arranger_(arranger) {}

    int count() const override { return static_cast<int>(arranger_->lanes().size()); }

    QString nameOf(int place) const override
    {
        return ArrangerAccessible::nameOf(*arranger_->project(), lane(place));
    }

    QRect rectOf(int place) const override
    {
        return {0, lane(place).top - arranger_->verticalScroll(),
                arranger_->headerColumn()->width(), lane(place).height};
    }

    bool isSelected(int place) const override
    {
        const LaneInfo& info = lane(place);
        if (info.kind == LaneKind::NoteTrack)
            return arranger_->selectedTracks().contains(info.trackIndex);
        return info.kind == LaneKind::AudioTrack &&
               info.trackIndex == arranger_->selectedAudioTrack();
    }

    int current() const override
    {
        const LaneInfo* present = BlockOrder::laneOf(arranger_->lanes(), arranger_->keyLane());
        return present ? static_cast<int>(present - arranger_->lanes().data()) : -1;
    }

    void select(int place) override
    {
        if (lane(place).kind != LaneKind::Section)
            arranger_->goToLane(BlockOrder::refOf(lane(place)));
    }

    void press(int place) override
    {
        if (lane(place).kind == LaneKind::Group)
            arranger_->toggleGroup(QString(lane(place).groupKey));
        else
            select(place);
    }

private:
    const LaneInfo& lane(int place) const { return arranger_->lanes().at(place); }

    TrackArranger* arranger_;
};

QString stateOf(const TrackArranger& arranger)
{
    const LaneInfo* lane = BlockOrder::laneOf(arranger.lanes(), arranger.keyLane());
    const QString place =
        QAccessible::queryAccessibleInterface(arranger.ruler())->text(QAccessible::Value);
    return MusicWords::list(
        {lane ? ArrangerAccessible::nameOf(*arranger.project(), *lane) : QString(), place});
}

QAccessibleInterface* partWithTheKeys(const TrackArranger& arranger)
{
    QAccessibleInterface* blocks = QAccessible::queryAccessibleInterface(arranger.view());
    QAccessibleInterface* block = blocks ? blocks->focusChild() : nullptr;
    return block ? block : QAccessible::queryAccessibleInterface(arranger.ruler());
}

QAccessibleInterface* partOf(const QString& className, QObject* object)
{
    if (className == QLatin1StringView("TrackArranger")) {
        auto* arranger = static_cast<TrackArranger*>(object);
        return new AccessibleTeller(
            arranger, QAccessible::Grouping, [arranger] { return stateOf(*arranger); },
            [arranger] { return partWithTheKeys(*arranger); });
    }
    if (className == QLatin1StringView("ArrangerGridView")) {
        auto* view = static_cast<ArrangerGridView*>(object);
        return new AccessibleItems(view, view->viewport(),
                                   std::make_unique<Blocks>(view->arranger()));
    }
    if (className == QLatin1StringView("ArrangerHeaderColumn")) {
        auto* column = static_cast<ArrangerHeaderColumn*>(object);
        return new AccessibleItems(column, column, std::make_unique<Lanes>(column->arranger()));
    }
    return nullptr;
}

} // namespace

void ArrangerAccessible::install()
{
    AccessibleRuler::install();
    QAccessible::installFactory(partOf);
}

QString ArrangerAccessible::nameOf(const Project& project, const LoopLibrary* library,
                                   const BlockRef& block)
{
    const auto span = BlockOrder::placeOf(project, block);
    if (!span)
        return {};
    const double bar = project.beatsPerBar();
    return MusicWords::list({recordWords(project, library, block),
                             MusicWords::bar(span->start, bar),
                             MusicWords::length(span->length, bar)});
}

QString ArrangerAccessible::nameOf(const Project& project, const LaneInfo& lane)
{
    switch (lane.kind) {
    case LaneKind::NoteTrack:
        return trackWords(project.tracks, lane.trackIndex);
    case LaneKind::AudioTrack:
        return trackWords(project.audioTracks, lane.trackIndex);
    case LaneKind::Harmony:
        return MusicWords::list({TrackArranger::tr("Acordes"), project.harmonyTrack.muted
                                                                   ? TrackArranger::tr("silenciado")
                                                                   : QString()});
    case LaneKind::Group:
        return MusicWords::list(
            {lane.label, QString::number(lane.childCount),
             lane.collapsed ? TrackArranger::tr("plegado") : TrackArranger::tr("desplegado")});
    case LaneKind::Section:
        break;
    }
    return lane.label;
}
