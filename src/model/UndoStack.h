#pragma once

#include <QJsonObject>
#include <QList>
#include <QObject>

class Project;

/// States that the undo stack holds, the present one among them.
inline constexpr qsizetype kUndoDepth = 100;

/// Undo by snapshots of the whole project. The stack holds states, not edits: it never touches a
/// project, and whoever undoes loads the state that it returns.
class UndoStack : public QObject {
    Q_OBJECT

public:
    explicit UndoStack(QObject* parent = nullptr);

    /// Forgets everything and takes the project as the first state.
    void reset(const Project& project);

    /// Records the project as a new state and drops what could be redone. A project that equals
    /// the present state changes nothing and is not announced.
    void snapshot(const Project& project);

    bool canUndo() const { return index_ >= 1; }

    bool canRedo() const { return index_ < states_.size() - 1; }

    /// The state to load, one step back; an empty object at the end of the road. The project as it
    /// is now takes the place of the present state, so that redo() finds what has changed in it
    /// without a snapshot of its own.
    QJsonObject undo(const Project& project);

    /// The state to load, one step forward; an empty object where there is none.
    QJsonObject redo();

    /// Announces what can be done now.
    void notify();

signals:
    void availabilityChanged(bool canUndo, bool canRedo);

private:
    /// Oldest first.
    QList<QJsonObject> states_;
    /// Of the present state; -1 while there is none.
    qsizetype index_ = -1;
};
