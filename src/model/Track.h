#pragma once

#include "music/HumanizeSettings.h"
#include "music/LoopSection.h"
#include "music/NoteEvent.h"

#include <QList>
#include <QString>

/// A stretch of hand-written notes.
struct MelodyBlock {
    /// Absolute beats.
    double startBeat = 0.0;
    /// Beats. Notes that start at or behind the end do not sound.
    double durationBeats = 4.0;
    /// Starts count from the block's start.
    QList<NoteEvent> notes;

    double endBeat() const { return startBeat + durationBeats; }

    /// Grows the block to hold all its notes and at least `minimum` beats; never shortens it.
    void fitDurationToNotes(double minimum);

    /// Orders the notes by start, then by pitch.
    void sortNotes();

    friend bool operator==(const MelodyBlock&, const MelodyBlock&) = default;
};

/// A placed loop: a reference into the content library, turned into notes when it is rendered.
struct LoopBlock {
    /// Absolute beats.
    double startBeat = 0.0;
    /// Beats. The variant repeats, or is cut, to fill it.
    double durationBeats = 0.0;
    QString rhythmId;
    QString layerId;
    LoopSection section = LoopSection::Normal;
    /// Number of the variant within its section, as the content package counts them.
    qint32 variantIndex = 1;

    double endBeat() const { return startBeat + durationBeats; }

    friend bool operator==(const LoopBlock&, const LoopBlock&) = default;
};

/// A track of notes. Its blocks need not be sorted and may overlap.
struct Track {
    QString name;
    QString instrumentId;
    /// Linear gain, 0 to 1.
    float volume = 0.8F;
    bool muted = false;
    bool solo = false;
    /// The track was made for a loop layer.
    bool isAccompaniment = false;
    /// The layer that an accompaniment track serves.
    QString layerId;
    HumanizeSettings humanize;
    QList<MelodyBlock> melodyBlocks;
    QList<LoopBlock> loopBlocks;

    friend bool operator==(const Track&, const Track&) = default;
};
