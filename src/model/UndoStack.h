#pragma once

#include "model/KeptState.h"

#include <QJsonObject>
#include <QList>
#include <QObject>

#include <functional>
#include <optional>

class Project;

/// States that the undo stack holds, the present one among them.
inline constexpr qsizetype kUndoDepth = 100;

/// Bytes that the states may take as they are. What is beyond is packed, the farthest from the
/// present state first.
inline constexpr qint64 kUndoBytes = 128 * 1024 * 1024;

/// Undo by snapshots of the whole project. The stack holds states, not edits: it never touches a
/// project, and whoever undoes loads the state that it returns.
class UndoStack : public QObject {
    Q_OBJECT

public:
    /// The present state is held as it is, whatever `mostPlainBytes` says.
    explicit UndoStack(QObject* parent = nullptr, qint64 mostPlainBytes = kUndoBytes);

    /// Forgets everything and takes the project as the first state.
    void reset(const Project& project);

    /// Records the project as a new state and drops what could be redone. A project that equals
    /// the present state, but for its name, changes nothing and is not announced.
    void snapshot(const Project& project);

    bool canUndo() const { return index_ >= 1; }

    bool canRedo() const { return index_ < states_.size() - 1; }

    /// The state to load, one step back; an empty object at the end of the road. The project as it
    /// is now takes the place of the present state, so that redo() finds what has changed in it
    /// without a snapshot of its own.
    QJsonObject undo(const Project& project);

    /// The state to load, one step forward; an empty object where there is none.
    QJsonObject redo();

    /// undo() and redo() without the detour over JSON. Nothing at the end of the road.
    std::optional<Song> undoSong(const Project& project);
    std::optional<Song> redoSong();

    /// The voice tracks of all states.
    QList<AudioTrack> audioTracks() const;

    /// Changes the voice tracks of every state, as where their files have got other names.
    void changeAudioTracks(const std::function<void(QList<AudioTrack>&)>& change);

    /// Announces what can be done now.
    void notify();

    /// Bytes that the states take now, as they are. States share the tracks that they have in
    /// common, and what is packed does not count.
    qint64 plainBytes() const { return plainBytes_; }

signals:
    void availabilityChanged(bool canUndo, bool canRedo);

private:
    KeptState stateOf(const Song& song, const KeptState* former)
    {
        return KeptState(song, former, &plainBytes_);
    }

    Song presentState();
    void packDistantStates();

    qint64 mostPlainBytes_;
    /// The parts of the states count themselves in here.
    qint64 plainBytes_ = 0;
    /// Oldest first. Of the present one every part is plain.
    QList<KeptState> states_;
    /// Of the present state; -1 while there is none.
    qsizetype index_ = -1;
};
