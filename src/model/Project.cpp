#include "model/Project.h"

#include "model/GridSubdivision.h"
#include "model/ProjectJson.h"
#include "music/Beats.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// Makes the records known by name, so that signals may carry them through any connection.
void registerMetaTypes()
{
    qRegisterMetaType<TimeSignature>();
    qRegisterMetaType<KeySignature>();
    qRegisterMetaType<LoopSection>();
    qRegisterMetaType<GridSubdivisionLevel>();
}

/// Raises `end` to a position that is a finite number.
void raiseTo(double& end, double position)
{
    if (std::isfinite(position))
        end = std::max(end, position);
}

/// Where the last of all that holds something ends, in beats.
double endOfFilled(const Project& project)
{
    double end = 0.0;
    for (const Track& track : project.tracks) {
        for (const MelodyBlock& block : track.melodyBlocks) {
            if (!block.notes.isEmpty())
                raiseTo(end, block.endBeat());
        }
        for (const LoopBlock& block : track.loopBlocks)
            raiseTo(end, block.endBeat());
    }
    for (const AudioTrack& track : project.audioTracks) {
        for (const AudioClip& clip : track.clips)
            raiseTo(end, clip.endBeat());
    }
    for (const HarmonyBlock& block : project.harmonyTrack.blocks) {
        if (!block.events.isEmpty())
            raiseTo(end, project.beatsPerBar() * (block.barIndex + 1.0));
    }
    return end;
}

/// The bar line at a beat or behind it; 0.0 where a bar has no length.
double onWholeBar(double beat, double bar)
{
    return isBarLength(bar) ? std::ceil(beat / bar) * bar : 0.0;
}

} // namespace

Project::Project(QObject* parent) : QObject(parent)
{
    registerMetaTypes();
}

QJsonObject Project::toJson() const
{
    return ProjectJson::write(*this);
}

void Project::loadJson(const QJsonObject& json)
{
    ProjectJson::read(json, this);
}

Project* Project::fromJson(const QJsonObject& json, QObject* parent)
{
    auto* project = new Project(parent);
    project->loadJson(json);
    return project;
}

double Project::endBeat() const
{
    double end = endOfFilled(*this);
    for (const Track& track : tracks) {
        for (const MelodyBlock& block : track.melodyBlocks)
            raiseTo(end, block.endBeat());
    }
    return onWholeBar(end, beatsPerBar());
}

double Project::filledEndBeat() const
{
    return onWholeBar(endOfFilled(*this), beatsPerBar());
}

int Project::barCount(int minimum) const
{
    const double bar = beatsPerBar();
    if (!isBarLength(bar))
        return minimum;
    const double bars = std::ceil(endBeat() / bar);
    constexpr double kMost = std::numeric_limits<int>::max();
    return std::max(minimum, static_cast<int>(std::min(bars, kMost)));
}
