#pragma once

#include "music/LoopSection.h"
#include "music/NoteEvent.h"
#include "music/TimeSignature.h"

#include <QList>
#include <QString>

/// A group of rhythms.
struct MusicalStyle {
    QString id;
    QString displayName;

    friend bool operator==(const MusicalStyle&, const MusicalStyle&) = default;
};

/// A folk or popular accompaniment pattern.
struct Rhythm {
    QString id;
    QString displayName;
    QString styleId;
    TimeSignature timeSignature;
    /// Tempi in quarter notes per minute.
    qint32 referenceBpm = 120;
    qint32 bpmMin = 100;
    qint32 bpmMax = 140;
    /// Kept with the rhythm; grooves are looked up by the rhythm's own id.
    QString grooveTemplateId;

    friend bool operator==(const Rhythm&, const Rhythm&) = default;
};

/// The part of one instrument in a rhythm.
struct LoopLayer {
    QString id;
    QString rhythmId;
    /// Shown to users.
    QString label;
    QString instrumentId;
    /// False for a layer whose notes are drum keys, which neither key nor chord may move.
    bool pitched = true;

    friend bool operator==(const LoopLayer&, const LoopLayer&) = default;
};

/// One written loop of a layer. Notes of pitched layers are written in C Major over degree I.
struct LoopVariant {
    QString layerId;
    LoopSection section = LoopSection::Normal;
    /// From 1, within the section.
    qint32 variantIndex = 1;
    /// Starts count from the start of the loop, in no particular order.
    QList<NoteEvent> notes;
    /// Length of the loop in bars of the rhythm's own meter.
    qint32 durationBars = 1;

    friend bool operator==(const LoopVariant&, const LoopVariant&) = default;
};
