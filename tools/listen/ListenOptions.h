#pragma once

#include "listen/RhythmDemo.h"

#include <QString>
#include <QStringList>

#include <optional>

/// What of a library is to be heard, and over what.
struct ListenOptions {
    RhythmDemo::Setting setting;
    /// Sections, with or without a number, as "Normal" or "Normal 2"; empty for all.
    QStringList sections;
    /// Layers by id, with the rhythm's or without it; empty for all.
    QStringList layers;
    /// Each layer is wanted alone, too.
    bool eachLayer = false;

    /// Whether the whole rhythm is asked for, and so its song.
    bool whole() const { return sections.isEmpty() && layers.isEmpty(); }

    bool wants(const RhythmDemo::Loop& loop) const;

    /// "Do", "La menor", "Re dórico", "F# lidio": a bare note is its major key.
    static std::optional<KeySignature> keyOf(const QString& text);

    /// "1,4,5,1": degrees from 1 to 7, at most 16.
    static std::optional<QList<int>> degreesOf(const QString& text);

    /// A tempo from 20 to 400.
    static std::optional<int> tempoOf(const QString& text);
};
