#include "views/arranger/ArrangerLayout.h"

#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "music/Beats.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kHarmonyHeight = 26;
constexpr int kSectionHeight = 18;
constexpr int kGroupHeight = 22;
constexpr int kTrackHeight = 42;

constexpr int kBottomMargin = 4;
constexpr double kExtraBars = 8.0;

constexpr double kGripPixels = 7.0;

constexpr int kMuteSize = 16;
constexpr int kMuteFromRight = 22;

/// Tracks that fold together.
struct Group {
    QLatin1StringView key;
    QString label;
    QString icon;
    bool pitched;
};

std::array<Group, 2> groups()
{
    return {{{kGroupPercusion, QCoreApplication::translate("TrackArranger", "Percusión"), u"🥁"_s,
              false},
             {kGroupInstrumental, QCoreApplication::translate("TrackArranger", "Instrumental"),
              u"🎸"_s, true}}};
}

/// Stacks lanes from the top.
class LaneStack {
public:
    void add(LaneInfo lane, int height)
    {
        lane.top = y_;
        lane.height = height;
        y_ += height;
        lanes_.append(lane);
    }

    void addTrack(LaneKind kind, qsizetype index, const QString& icon, const QString& name)
    {
        add({.kind = kind, .trackIndex = static_cast<int>(index), .label = icon + u' ' + name},
            kTrackHeight);
    }

    QList<LaneInfo> take() { return std::move(lanes_); }

private:
    QList<LaneInfo> lanes_;
    int y_ = 0;
};

QList<qsizetype> tracksOf(const Group& group, const Project& project, const LoopLibrary* library)
{
    QList<qsizetype> indices;
    for (qsizetype i = 0; i < project.tracks.size(); ++i) {
        const Track& track = project.tracks.at(i);
        if (track.isAccompaniment &&
            ArrangerLayout::isPitchedTrack(track, library) == group.pitched)
            indices.append(i);
    }
    return indices;
}

void addGroup(LaneStack& stack, const Group& group, const Project& project,
              const LoopLibrary* library)
{
    const QList<qsizetype> indices = tracksOf(group, project, library);
    if (indices.isEmpty())
        return;
    const bool collapsed = project.collapsedGroups.contains(group.key);
    stack.add({.kind = LaneKind::Group,
               .label = group.label,
               .groupKey = group.key,
               .collapsed = collapsed,
               .childCount = static_cast<int>(indices.size())},
              kGroupHeight);
    if (collapsed)
        return;
    for (const qsizetype index : indices)
        stack.addTrack(LaneKind::NoteTrack, index, group.icon, project.tracks.at(index).name);
}

bool isBarLine(double beat, double beatsPerBar)
{
    return std::fmod(beat + 1e-9, beatsPerBar) < 1e-6;
}

} // namespace

bool ArrangerLayout::isPitchedTrack(const Track& track, const LoopLibrary* library)
{
    QString layerId = track.layerId;
    if (layerId.isEmpty() && !track.loopBlocks.isEmpty())
        layerId = track.loopBlocks.first().layerId;
    const LoopLayer* layer = library && !layerId.isEmpty() ? library->findLayer(layerId) : nullptr;
    return !layer || layer->pitched;
}

QList<LaneInfo> ArrangerLayout::lanes(const Project& project, const LoopLibrary* library)
{
    LaneStack stack;
    stack.add({.kind = LaneKind::Harmony,
               .label = QCoreApplication::translate("TrackArranger", "♫ Acordes")},
              kHarmonyHeight);
    stack.add({.kind = LaneKind::Section,
               .label = QCoreApplication::translate("TrackArranger", "VELTAS")},
              kSectionHeight);
    for (qsizetype i = 0; i < project.tracks.size(); ++i) {
        if (!project.tracks.at(i).isAccompaniment)
            stack.addTrack(LaneKind::NoteTrack, i, u"🎹"_s, project.tracks.at(i).name);
    }
    for (qsizetype i = 0; i < project.audioTracks.size(); ++i)
        stack.addTrack(LaneKind::AudioTrack, i, u"🎤"_s, project.audioTracks.at(i).name);
    stack.add({.kind = LaneKind::Section,
               .label = QCoreApplication::translate("TrackArranger", "ACOMPAÑAMIENTO")},
              kSectionHeight);
    for (const Group& group : groups())
        addGroup(stack, group, project, library);
    return stack.take();
}

const LaneInfo* ArrangerLayout::laneAtY(const QList<LaneInfo>& lanes, double y)
{
    const auto found = std::ranges::find_if(
        lanes, [y](const LaneInfo& lane) { return lane.top <= y && y < lane.bottom(); });
    return found == lanes.cend() ? nullptr : &*found;
}

const LaneInfo* ArrangerLayout::laneOfTrack(const QList<LaneInfo>& lanes, LaneKind kind,
                                            int trackIndex)
{
    const auto found = std::ranges::find_if(lanes, [&](const LaneInfo& lane) {
        return lane.kind == kind && lane.trackIndex == trackIndex;
    });
    return found == lanes.cend() ? nullptr : &*found;
}

QSizeF ArrangerLayout::sceneSize(const Project& project, const QList<LaneInfo>& lanes)
{
    const double bar = project.beatsPerBar();
    const double bars = project.barCount(Project::kLeastBars) + kExtraBars;
    const double beats = isBarLength(bar) ? std::min(bar * bars, kMostBeats) : 0.0;
    const int bottom = lanes.isEmpty() ? 0 : lanes.last().bottom();
    return {beats * kBeatPixels, static_cast<double>(bottom + kBottomMargin)};
}

double ArrangerLayout::snapBeats(const TimeSignature& meter)
{
    return meter.pulseBeats();
}

double ArrangerLayout::stepAt(double sceneX, double step)
{
    return std::floor(sceneX / kBeatPixels / step) * step;
}

double ArrangerLayout::barAt(double sceneX, double beatsPerBar)
{
    if (!isBarLength(beatsPerBar))
        return 0.0;
    return std::max(0.0, stepAt(sceneX, beatsPerBar));
}

QList<GridLine> ArrangerLayout::gridLines(double left, double right, const TimeSignature& meter)
{
    const double step = snapBeats(meter);
    const double bar = meter.beatsPerBar();
    const double last = std::min(right / kBeatPixels + step, kMostBeats);
    QList<GridLine> lines;
    for (double beat = std::floor(std::max(0.0, left / kBeatPixels - step) / step) * step;
         beat <= last; beat += step)
        lines.append({.beat = beat, .isBar = isBarLine(beat, bar)});
    return lines;
}

QRect ArrangerLayout::muteSquare(const QRect& row)
{
    const int middle = (row.top() + row.bottom()) / 2;
    return {row.right() - kMuteFromRight, middle - kMuteSize / 2, kMuteSize, kMuteSize};
}

bool ArrangerLayout::isOnGrip(double sceneX, const QRectF& block, double horizontalScale)
{
    return sceneX > block.right() - std::min(kGripPixels / horizontalScale, block.width() / 3.0);
}
