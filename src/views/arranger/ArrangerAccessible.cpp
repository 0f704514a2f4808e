#include "views/arranger/ArrangerAccessible.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "music/Beats.h"
#include "music/ChordVoicer.h"
#include "playback/NoteRenderer.h"
#include "views/AccessibleItems.h"
#include "views/AccessibleRuler.h"
#include "views/MusicWords.h"
#include "views/SectionWords.h"
#include "views/TimelineRuler.h"
#include "views/arranger/ArrangerGridView.h"
#include "views/arranger/ArrangerHeaderColumn.h"
#include "views/arranger/ArrangerScene.h"
#include "views/arranger/BlockEditor.h"
#include "views/arranger/ClipWords.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>

#include <cmath>

namespace {

// ---- Words ---------------------------------------------------------------------------------

QString chordWords(const Project& project, const BlockRef& block)
{
    const HarmonyDegreeEvent& chord =
        project.harmonyTrack.blockForBar(block.trackIndex)->events.at(block.blockIndex);
    const KeySignature& key = project.keySignature;
    return MusicWords::list({QCoreApplication::translate("TrackArranger", "Acorde %1")
                                 .arg(ChordVoicer::degreeLabel(key, chord.degree, chord.extension)),
                             MusicWords::chord(key, chord.degree, chord.extension)});
}

QString melodyWords(const MelodyBlock& melody)
{
    return melody.notes.size() == 1
               ? QCoreApplication::translate("TrackArranger", "Melodía (1 nota)")
               : QCoreApplication::translate("TrackArranger", "Melodía (%1 notas)")
                     .arg(melody.notes.size());
}

QString loopWords(const LoopBlock& loop, const LoopLibrary* library)
{
    const Rhythm* rhythm = library ? library->findRhythm(loop.rhythmId) : nullptr;
    const LoopLayer* layer = library ? library->findLayer(loop.layerId) : nullptr;
    return MusicWords::list({rhythm ? rhythm->displayName : loop.rhythmId,
                             layer ? layer->label : loop.layerId,
                             variantWords(loop.section, loop.variantIndex)});
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
    return MusicWords::list({QCoreApplication::translate("TrackArranger", "Voz"),
                             QFileInfo(clip.audioFilePath).fileName()});
}

/// How often a loop sounds in a block; nothing where that is no more than once.
QString roundsWords(const Project& project, const LoopLibrary* library, const BlockRef& block)
{
    if (!library || block.kind != BlockKind::Loop)
        return {};
    const LoopBlock& loop = project.tracks.at(block.trackIndex).loopBlocks.at(block.blockIndex);
    const auto length = NoteRenderer::loopBeats(loop, *library, project.beatsPerBar());
    const double rounds = length ? loop.durationBeats / *length : 0.0;
    if (!(rounds > 1.0 + kBeatEpsilon))
        return {};
    return QCoreApplication::translate("TrackArranger", "%1 vueltas")
        .arg(QLocale().toString(std::round(rounds * 100.0) / 100.0, 'g',
                                QLocale::FloatingPointShortest));
}

template <typename List>
QString trackWords(const List& tracks, int index)
{
    if (index < 0 || index >= tracks.size())
        return {};
    const auto& track = tracks.at(index);
    return MusicWords::list(
        {track.name,
         track.muted ? QCoreApplication::translate("TrackArranger", "silenciado") : QString()});
}

// ---- Blocks --------------------------------------------------------------------------------

/// Every block that is drawn, lane by lane from above, and in a lane by its start.
class Blocks : public ItemSource {
public:
    explicit Blocks(ArrangerGridView* view) : view_(view) {}

    int count() const override { return static_cast<int>(blocks().size()); }

    QString nameOf(int place) const override
    {
        return ArrangerAccessible::nameOf(*editor().project(), editor().library(),
                                          blocks().at(place));
    }

    QString valueOf(int place) const override
    {
        const auto levels = ClipEdits::levelsOf(*editor().project(), blocks().at(place));
        return levels ? ClipWords::all(*levels) : QString();
    }

    QRect rectOf(int place) const override
    {
        const BlockItem* item = scene().itemOf(blocks().at(place));
        return item ? view_->mapFromScene(item->rect()).boundingRect() : QRect();
    }

    bool isSelected(int place) const override
    {
        return editor().selected().contains(blocks().at(place));
    }

    int current() const override
    {
        const auto block = editor().current();
        return block ? static_cast<int>(blocks().indexOf(*block)) : -1;
    }

    void select(int place) override { view_->requestBlock(blocks().at(place)); }

private:
    const BlockEditor& editor() const { return *view_->blocks(); }

    const ArrangerScene& scene() const { return *static_cast<ArrangerScene*>(view_->scene()); }

    /// Found once after each rebuild of the scene.
    const QList<BlockRef>& blocks() const
    {
        if (revision_ == scene().revision())
            return blocks_;
        revision_ = scene().revision();
        blocks_.clear();
        for (const LaneInfo& lane : view_->lanes()) {
            for (const PlacedBlock& placed :
                 BlockOrder::blocksOf(*editor().project(), BlockOrder::refOf(lane)))
                blocks_.append(placed.block);
        }
        return blocks_;
    }

    ArrangerGridView* view_;
    mutable int revision_ = -1;
    mutable QList<BlockRef> blocks_;
};

// ---- Lanes ---------------------------------------------------------------------------------

class Lanes : public ItemSource {
public:
    explicit Lanes(ArrangerHeaderColumn* column) : column_(column) {}

    int count() const override { return static_cast<int>(column_->lanes().size()); }

    QString nameOf(int place) const override
    {
        return ArrangerAccessible::nameOf(*column_->project(), lane(place));
    }

    QRect rectOf(int place) const override { return column_->rowOf(lane(place)); }

    bool isSelected(int place) const override
    {
        const LaneInfo& info = lane(place);
        if (info.kind == LaneKind::Harmony)
            return column_->selection().chords;
        if (info.kind == LaneKind::NoteTrack)
            return column_->selection().tracks.contains(info.trackIndex);
        return info.kind == LaneKind::AudioTrack &&
               info.trackIndex == column_->selection().audioTrack;
    }

    int current() const override
    {
        const LaneInfo* present =
            BlockOrder::laneOf(column_->lanes(), column_->selection().keyLane);
        return present ? static_cast<int>(present - column_->lanes().data()) : -1;
    }

    void select(int place) override
    {
        if (lane(place).kind != LaneKind::Section)
            column_->requestLane(BlockOrder::refOf(lane(place)));
    }

    void press(int place) override
    {
        if (lane(place).kind == LaneKind::Group)
            column_->requestFold(QString(lane(place).groupKey));
        else
            select(place);
    }

private:
    const LaneInfo& lane(int place) const { return column_->lanes().at(place); }

    ArrangerHeaderColumn* column_;
};

QString stateOf(const QWidget& arranger)
{
    const auto* column = arranger.findChild<ArrangerHeaderColumn*>();
    const LaneInfo* lane = BlockOrder::laneOf(column->lanes(), column->selection().keyLane);
    const QString place =
        QAccessible::queryAccessibleInterface(arranger.findChild<TimelineRuler*>())
            ->text(QAccessible::Value);
    return MusicWords::list(
        {lane ? ArrangerAccessible::nameOf(*column->project(), *lane) : QString(), place});
}

QAccessibleInterface* partWithTheKeys(const QWidget& arranger)
{
    QAccessibleInterface* blocks =
        QAccessible::queryAccessibleInterface(arranger.findChild<ArrangerGridView*>());
    QAccessibleInterface* block = blocks ? blocks->focusChild() : nullptr;
    return block ? block
                 : QAccessible::queryAccessibleInterface(arranger.findChild<TimelineRuler*>());
}

QAccessibleInterface* partOf(const QString& className, QObject* object)
{
    if (className == QLatin1StringView("TrackArranger")) {
        auto* arranger = static_cast<QWidget*>(object);
        return new AccessibleTeller(
            arranger, QAccessible::Grouping, [arranger] { return stateOf(*arranger); },
            [arranger] { return partWithTheKeys(*arranger); });
    }
    if (className == QLatin1StringView("ArrangerGridView")) {
        auto* view = static_cast<ArrangerGridView*>(object);
        return new AccessibleItems(view, view->viewport(), std::make_unique<Blocks>(view));
    }
    if (className == QLatin1StringView("ArrangerHeaderColumn")) {
        auto* column = static_cast<ArrangerHeaderColumn*>(object);
        return new AccessibleItems(column, column, std::make_unique<Lanes>(column));
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
    const auto levels = ClipEdits::levelsOf(project, block);
    return MusicWords::list(
        {recordWords(project, library, block), MusicWords::bar(span->start, bar),
         MusicWords::length(span->length, bar), roundsWords(project, library, block),
         levels ? ClipWords::changes(*levels) : QString()});
}

QString ArrangerAccessible::nameOf(const Project& project, const LaneInfo& lane)
{
    switch (lane.kind) {
    case LaneKind::NoteTrack:
        return trackWords(project.tracks, lane.trackIndex);
    case LaneKind::AudioTrack:
        return trackWords(project.audioTracks, lane.trackIndex);
    case LaneKind::Harmony:
        return MusicWords::list({QCoreApplication::translate("TrackArranger", "Acordes"),
                                 project.harmonyTrack.muted
                                     ? QCoreApplication::translate("TrackArranger", "silenciado")
                                     : QString()});
    case LaneKind::Group:
        return MusicWords::list({lane.label, QString::number(lane.childCount),
                                 lane.collapsed
                                     ? QCoreApplication::translate("TrackArranger", "plegado")
                                     : QCoreApplication::translate("TrackArranger", "desplegado")});
    case LaneKind::Section:
        break;
    }
    return lane.label;
}
