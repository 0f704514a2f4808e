#include "shell/MissingRhythms.h"

#include "content/LoopLibrary.h"
#include "model/Song.h"

#include <QSet>

QStringList missingRhythms(const Song& work, const LoopLibrary& library)
{
    QStringList missing;
    QSet<QString> seen;
    for (const Track& track : work.tracks) {
        for (const LoopBlock& block : track.loopBlocks) {
            if (block.rhythmId.isEmpty() || seen.contains(block.rhythmId))
                continue;
            seen.insert(block.rhythmId);
            if (!library.findRhythm(block.rhythmId))
                missing.append(block.rhythmId);
        }
    }
    return missing;
}
