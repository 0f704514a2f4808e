#pragma once

#include "model/UndoStack.h"
#include "storage/RecoveryCopy.h"

#include <QHash>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>

class PlaybackEngine;
class Project;
class ProjectStorageProvider;

/// The work that is open: where it and its voices are kept, what its user can take back, and
/// whether anything would be lost with it.
class OpenWork : public QObject {
    Q_OBJECT

public:
    /// The engine, which plays the work and finds its voices, is not owned.
    OpenWork(PlaybackEngine& engine, QObject* parent);
    ~OpenWork() override;

    ProjectStorageProvider& storage() const { return *storage_; }

    /// Null before the first work.
    Project* project() const { return project_; }

    /// Storage id of the work; empty until it is saved for the first time.
    const QString& id() const { return id_; }

    void setId(const QString& id) { id_ = id; }

    UndoStack& undoStack() { return undoStack_; }

    /// Puts a work in the place of the former, which goes. What is done to it until accept() is no
    /// change of its user's.
    void open(Project* project, const QString& id);
    void accept();

    /// Says where the work that is open now comes from: a program has left it unsaved. True when
    /// this one keeps it, and the copy may go.
    bool takeOver(const AbandonedCopy& copy);

    /// Whether there is anything in the work that would be missed.
    bool hasContent() const;

    /// Whether the work has a file on disk, as far as anybody can see.
    bool hasFile() const;

    /// Whether anything would be lost with the work as it stands here.
    bool isUnsaved() const;

    /// Looks whether it is, and tells.
    void look();

    /// Takes the work as it is now for a step of undo.
    void snapshot();

    /// Puts a state that undo has kept in the place of the present one, but for the name, which
    /// comes from saving and is not taken back.
    void restore(const Song& state);

    /// Has the work kept outside its folder within two seconds.
    void keepSoon();

    /// Nobody wants what is kept outside the folder any more.
    void forgetKept();

    /// Saves the work and its voices under its id. What could not be saved is kept outside the
    /// folder.
    bool save();

    /// Saves the work under a name and an id of its own, with copies of its voices, and goes on
    /// with that. False, with nothing changed and nothing left behind, where it cannot be saved.
    bool goOnInCopy(const QString& name);

    /// Where the clips of the work lie: in its folder, or among the works until its first save.
    QString clipsFolder() const;

    /// Adds a clip that lies there.
    void addClip(const QString& trackName, const AudioClip& clip);

signals:
    void looked(bool unsaved);

    /// The clips lie in this folder from now on.
    void movedTo(const QString& folder);

private:
    void markSaved();
    void keep();
    KeptWork present() const;

    /// Has the voices be heard from a folder of the work's own; an empty one for none.
    void hearFrom(const QString& folder);

    /// Has the clips lie in the work's folder, which it may have got since they came. False if that
    /// takes a copy that cannot be made.
    bool bringClipsHome();
    QStringList namesOfClips() const;
    void renameClips(const QHash<QString, QString>& names);

    PlaybackEngine& engine_;
    std::unique_ptr<ProjectStorageProvider> storage_;
    Project* project_ = nullptr;
    QString id_;
    UndoStack undoStack_;
    /// The work as it was read or saved; nothing for one that its file does not hold.
    std::optional<Song> saved_;
    RecoveryCopy copy_;
    QTimer keepTimer_;
};
