#pragma once

#include "model/Song.h"

#include <QJsonObject>
#include <QObject>

/// Note tracks that a project may hold, as each sounds on a channel of its own.
inline constexpr int kMaxNoteTracks = 13;

/// The document: one song. Its records are plain values that views change directly, addressed
/// by index; references into the content library are strings that may point to nothing.
class Project : public QObject, public Song {
    Q_OBJECT

public:
    explicit Project(QObject* parent = nullptr);

    /// The whole project as the object that a project file holds.
    QJsonObject toJson() const;

    /// Replaces the whole content. Missing and mistyped keys take their defaults, ranges are not
    /// checked, and changed() is not emitted.
    void loadJson(const QJsonObject& json);

    /// A new project with the content of `json`, owned by the caller. Never null.
    static Project* fromJson(const QJsonObject& json, QObject* parent);

    /// Beats in a bar of the project's meter.
    double beatsPerBar() const { return timeSignature.beatsPerBar(); }

    /// End of the material in beats, on a whole bar; 0.0 for an empty project and for a meter
    /// whose bar has no length.
    double endBeat() const;

    /// endBeat() without the melody blocks that hold no note.
    double filledEndBeat() const;

    /// Bars up to endBeat(), at least `minimum`.
    int barCount(int minimum) const;

    /// Bars that even an empty project shows and plays.
    static constexpr int kLeastBars = 8;

signals:
    /// Anything may be different. Emitted by the window after a finished edit, never from here.
    void changed();
};
