#pragma once

#include "views/arranger/BlockOrder.h"

#include <QList>

/// Which lanes of the arranger are selected.
struct LaneSelection {
    /// The track on which edits by other means act; -1 for none.
    int activeTrack = 0;
    /// Into the tracks of the project.
    QList<int> tracks;
    /// -1 for none.
    int audioTrack = -1;
    /// Whether it is the lane of chords: no track is, then.
    bool chords = false;
    /// The lane that the keys are on, which is that of the last block or track to be selected.
    LaneRef keyLane;
    /// Whether keys have brought the keys there: then it is to be seen which lane that is.
    bool keyLaneShows = false;
};
