#include "views/pianoroll/OpenMelody.h"

#include "model/Project.h"
#include "model/ProjectEdits.h"

#include <algorithm>

OpenMelody OpenMelody::firstOf(Project* project)
{
    const bool any = project && !project->tracks.isEmpty();
    return {.project = project, .trackIndex = any ? 0 : -1};
}

const Track* OpenMelody::track() const
{
    if (!project || trackIndex < 0 || trackIndex >= project->tracks.size())
        return nullptr;
    return &project->tracks.at(trackIndex);
}

const MelodyBlock* OpenMelody::block() const
{
    if (!track() || track()->isAccompaniment || track()->melodyBlocks.isEmpty())
        return nullptr;
    const QList<MelodyBlock>& blocks = track()->melodyBlocks;
    return &blocks.at(std::clamp<qsizetype>(blockIndex, 0, blocks.size() - 1));
}

MelodyBlock* OpenMelody::blockToWriteIn() const
{
    if (!track() || track()->isAccompaniment)
        return nullptr;
    QList<MelodyBlock>& blocks = project->tracks[trackIndex].melodyBlocks;
    if (blocks.isEmpty())
        blocks.append(ProjectEdits::blankMelody(*project));
    return &blocks[std::clamp<qsizetype>(blockIndex, 0, blocks.size() - 1)];
}
