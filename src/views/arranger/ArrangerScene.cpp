#include "views/arranger/ArrangerScene.h"

#include "model/Project.h"
#include "music/Beats.h"
#include "music/ChordNames.h"
#include "music/ChordVoicer.h"
#include "playback/NoteRenderer.h"
#include "shell/theme/CanvasColors.h"
#include "views/EmptyScene.h"
#include "views/SectionWords.h"
#include "views/arranger/AudioClipItem.h"
#include "voice/WaveOutlines.h"

#include <QCoreApplication>
#include <QPen>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <tuple>

using namespace Qt::Literals::StringLiterals;
using namespace ArrangerLayout;

namespace {

constexpr qreal kPlayheadWidth = 2.0;
constexpr qreal kPlayheadZ = 100.0;

/// A stretch of the scene, wide enough to be seen; nothing for one that cannot be drawn.
std::optional<QRectF> rectOf(const BlockSpan& span, double top, double height)
{
    if (!std::isfinite(span.start) || !std::isfinite(span.length) ||
        std::abs(span.start) > kMostBeats)
        return std::nullopt;
    const double width = std::clamp(span.length, 0.0, kMostBeats) * kBeatPixels;
    return QRectF(span.start * kBeatPixels, top, std::max<double>(width, kLeastBlockWidth), height);
}

QColor degreeColor(int degree)
{
    constexpr int kDegrees = static_cast<int>(kDegreeColors.size());
    // Any number may stand in a file, so nothing is taken from it before the remainder.
    const int index = (degree % kDegrees + kDegrees - 1) % kDegrees;
    return kDegreeColors.at(static_cast<std::size_t>(index));
}

QString melodyLabel(qsizetype notes)
{
    if (notes == 1)
        return QCoreApplication::translate("TrackArranger", "Melodía (1 nota)");
    return QCoreApplication::translate("TrackArranger", "Melodía (%1 notas)").arg(notes);
}

QString textOf(const LoopBlock& block)
{
    return variantWords(block.section, block.variantIndex);
}

/// The file of a clip as it is on the disk, whatever is done to its sound; of no path without a
/// folder.
ClipSource fileOf(const AudioClip& clip, const QString& folder)
{
    if (folder.isEmpty())
        return {};
    AudioClip untuned = clip;
    untuned.tune = {};
    return ClipSource::of(untuned, folder, {});
}

/// Lengths of loops in beats, each looked up once.
class LoopLengths {
public:
    /// The library may be null.
    LoopLengths(const LoopLibrary* library, double projectBar)
        : library_(library), projectBar_(projectBar)
    {}

    /// 0 where nobody knows.
    double of(const LoopBlock& loop)
    {
        if (!library_)
            return 0.0;
        const Key key(loop.rhythmId, loop.layerId, loop.section, loop.variantIndex);
        const auto known = lengths_.find(key);
        if (known != lengths_.end())
            return known->second;
        const double length = NoteRenderer::loopBeats(loop, *library_, projectBar_).value_or(0.0);
        lengths_.emplace(key, length);
        return length;
    }

private:
    using Key = std::tuple<QString, QString, LoopSection, qint32>;

    const LoopLibrary* library_;
    double projectBar_;
    std::map<Key, double> lengths_;
};

QList<BlockRef> refsOf(const QList<QGraphicsItem*>& items)
{
    QList<BlockRef> blocks;
    for (const QGraphicsItem* item : items) {
        if (const auto* block = qgraphicsitem_cast<const BlockItem*>(item))
            blocks.append(block->block());
    }
    std::ranges::sort(blocks);
    // A damaged file may have two bars of one number.
    blocks.erase(std::ranges::unique(blocks).begin(), blocks.end());
    return blocks;
}

} // namespace

ArrangerScene::ArrangerScene(QObject* parent)
    : QGraphicsScene(parent), outlines_(new WaveOutlines(this))
{
    connect(outlines_, &WaveOutlines::arrived, this, [this] { update(); });
    // All items are made anew at each edit: an index of them would cost more than it saves.
    setItemIndexMethod(NoIndex);
}

void ArrangerScene::rebuild(const Project& project, const QList<LaneInfo>& lanes, SceneWidth width)
{
    ++revision_;
    emptyScene(*this);
    fit(project, lanes, width);
    addChords(project);
    addTracks(project, lanes);
    addAudioTracks(project, lanes);
    addPlayhead();
}

void ArrangerScene::fit(const Project& project, const QList<LaneInfo>& lanes, SceneWidth width)
{
    setSceneRect(sceneRectFor(sceneSize(project, lanes), sceneRect(), width));
}

void ArrangerScene::addBlock(BlockItem* item)
{
    item->setLabels(&labels_);
    addItem(item);
}

void ArrangerScene::addChords(const Project& project)
{
    struct Names {
        QString degree;
        QString full;
    };

    // A song has hundreds of chords, and few that differ.
    std::map<std::pair<int, ChordExtension>, Names> known;
    const auto namesOf = [&](const HarmonyDegreeEvent& event) -> const Names& {
        const auto [degree, extension] = std::pair(event.degree, event.extension);
        Names& names = known[{degree, extension}];
        if (names.degree.isEmpty())
            names = {ChordVoicer::degreeLabel(project.keySignature, degree, extension),
                     ChordNames::labelOf(project.keySignature, degree, extension)};
        return names;
    };
    const double bar = project.beatsPerBar();
    for (const HarmonyBlock& block : project.harmonyTrack.blocks) {
        for (int i = 0; i < block.events.size(); ++i) {
            const HarmonyDegreeEvent& event = block.events.at(i);
            const auto rect = rectOf({block.barIndex * bar + event.startBeat, event.durationBeats},
                                     kChordTop, kChordHeight);
            if (!rect)
                continue;
            const Names& names = namesOf(event);
            auto* item = new BlockItem({BlockKind::Chord, block.barIndex, i}, *rect, names.degree,
                                       degreeColor(event.degree));
            item->setFullLabel(names.full);
            addBlock(item);
        }
    }
}

void ArrangerScene::addTracks(const Project& project, const QList<LaneInfo>& lanes)
{
    for (int t = 0; t < project.tracks.size(); ++t) {
        const LaneInfo* lane = laneOfTrack(lanes, LaneKind::NoteTrack, t);
        if (!lane)
            continue;
        const Track& track = project.tracks.at(t);
        for (int i = 0; i < track.melodyBlocks.size(); ++i) {
            const MelodyBlock& block = track.melodyBlocks.at(i);
            addTrackBlock({BlockKind::Melody, t, i}, *lane, {block.startBeat, block.durationBeats},
                          melodyLabel(block.notes.size()));
        }
        addLoops(project, t, *lane);
    }
}

void ArrangerScene::addLoops(const Project& project, int track, const LaneInfo& lane)
{
    LoopLengths lengths(library_, project.beatsPerBar());
    const QList<LoopBlock>& loops = project.tracks.at(track).loopBlocks;
    for (int i = 0; i < loops.size(); ++i) {
        const LoopBlock& loop = loops.at(i);
        BlockItem* item = addTrackBlock({BlockKind::Loop, track, i}, lane,
                                        {loop.startBeat, loop.durationBeats}, textOf(loop));
        if (item)
            item->setRepeat(lengths.of(loop) * kBeatPixels);
    }
}

void ArrangerScene::addAudioTracks(const Project& project, const QList<LaneInfo>& lanes)
{
    for (int t = 0; t < project.audioTracks.size(); ++t) {
        const LaneInfo* lane = laneOfTrack(lanes, LaneKind::AudioTrack, t);
        if (!lane)
            continue;
        const QList<AudioClip>& clips = project.audioTracks.at(t).clips;
        for (int i = 0; i < clips.size(); ++i)
            addClip(project, {BlockKind::Audio, t, i}, *lane, clips.at(i));
    }
}

void ArrangerScene::addClip(const Project& project, const BlockRef& block, const LaneInfo& lane,
                            const AudioClip& clip)
{
    const auto rect =
        rectOf({clip.offsetBeats, clip.durationBeats}, lane.top + kBlockInset, kBlockHeight);
    if (!rect)
        return;
    const ClipShape shape{.rect = *rect,
                          .secondWidth = kBeatPixels * kSampleRate / framesPerBeat(project.bpm),
                          .playedSeconds = ClipEdits::secondsOf(project, clip),
                          .levels = ClipEdits::levelsOf(clip)};
    addBlock(new AudioClipItem(block, shape, QCoreApplication::translate("TrackArranger", "Voz"),
                               fileOf(clip, clipFolder_), outlines_));
}

void ArrangerScene::forgetVoices()
{
    outlines_->forget();
}

BlockItem* ArrangerScene::addTrackBlock(const BlockRef& block, const LaneInfo& lane,
                                        const BlockSpan& span, const QString& label)
{
    const auto rect = rectOf(span, lane.top + kBlockInset, kBlockHeight);
    if (!rect)
        return nullptr;
    auto* item = new BlockItem(block, *rect, label);
    addBlock(item);
    return item;
}

void ArrangerScene::addPlayhead()
{
    playhead_ = addLine(0, 0, 0, height(), playheadPen());
    playhead_->setZValue(kPlayheadZ);
}

QPen ArrangerScene::playheadPen() const
{
    QPen pen(recording_ ? kRecordingPlayhead : canvasColors().playhead, kPlayheadWidth);
    pen.setCosmetic(true);
    return pen;
}

void ArrangerScene::setRecording(bool recording)
{
    recording_ = recording;
    if (playhead_)
        playhead_->setPen(playheadPen());
}

void ArrangerScene::setPlayheadBeat(double beat)
{
    if (playhead_ && std::isfinite(beat))
        playhead_->setX(std::clamp(beat, -kMostBeats, kMostBeats) * kBeatPixels);
}

BlockItem* ArrangerScene::itemOf(const BlockRef& block) const
{
    for (QGraphicsItem* item : items()) {
        auto* candidate = qgraphicsitem_cast<BlockItem*>(item);
        if (candidate && candidate->block() == block)
            return candidate;
    }
    return nullptr;
}

QList<BlockRef> ArrangerScene::blocks() const
{
    return refsOf(items());
}

QList<BlockRef> ArrangerScene::selectedBlocks() const
{
    return refsOf(selectedItems());
}

void ArrangerScene::selectBlocks(const QList<BlockRef>& blocks)
{
    QList<BlockRef> wanted = blocks;
    std::ranges::sort(wanted);
    for (QGraphicsItem* item : items()) {
        if (auto* block = qgraphicsitem_cast<BlockItem*>(item))
            block->setSelected(std::ranges::binary_search(wanted, block->block()));
    }
}

BlockItem* ArrangerScene::blockAt(const QPointF& place) const
{
    for (QGraphicsItem* item : items(place)) {
        if (auto* block = qgraphicsitem_cast<BlockItem*>(item))
            return block;
    }
    return nullptr;
}
