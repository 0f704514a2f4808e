#pragma once

#include "model/Song.h"

#include <QJsonObject>
#include <QLockFile>
#include <QThreadPool>

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

/// A work as it was being edited when it was last kept.
struct KeptWork {
    /// Storage id of the work; empty for one that was never saved.
    QString id;
    /// What the storage had last seen of its file; empty for a work without a file.
    QString lastSeen;
    /// Where the files of its clips lie; empty for a work without clips or folder.
    QString clipsFolder;
    Song song;

    friend bool operator==(const KeptWork&, const KeptWork&) = default;
};

/// The present state of the work that a running program edits, in a file outside the work's own
/// folder. The file is there only while the work on disk is older, is exchanged as a whole, and is
/// locked for as long as the program lives.
class RecoveryCopy {
public:
    /// Where the copies of a user's programs stand.
    static QString standardFolder();

    /// Nothing is written yet.
    explicit RecoveryCopy(const QString& folder);

    /// What was kept and not removed stays for the next start.
    ~RecoveryCopy();
    RecoveryCopy(const RecoveryCopy&) = delete;
    RecoveryCopy& operator=(const RecoveryCopy&) = delete;

    QString path() const { return path_; }

    /// Keeps a work in the background, behind what is being written.
    void keep(const KeptWork& work);

    /// Keeps a work at once, unless it is kept already. False if it cannot be written; what was
    /// kept before stays.
    bool keepNow(const KeptWork& work);

    /// Removes what was kept: it is saved, or its user does not want it.
    void remove();

private:
    bool lock();
    void write(const KeptWork& work);

    QString path_;
    QLockFile lock_;
    /// What was given to keep last, in lists of its own; nothing behind a removal.
    std::optional<KeptWork> kept_;
    /// That is on disk.
    std::atomic<bool> written_ = false;
    /// One thread, so that states are written in their order.
    QThreadPool writer_;
};

/// What the file of a copy holds.
struct CopyFile {
    QString clipsFolder;
    QString id;
    QString lastSeen;
    /// The work, as an object like that of a project file.
    QJsonValue project;
};

/// The copy of a program that is gone without removing it. It belongs, for as long as this lives,
/// to the program that found it.
class AbandonedCopy {
public:
    /// The copies that no running program holds, the newest first. What else such programs have
    /// left in the folder is cleared away.
    static std::vector<AbandonedCopy> findAll(const QString& folder);

    const QString& id() const { return file_.id; }

    const QString& lastSeen() const { return file_.lastSeen; }

    const QString& clipsFolder() const { return file_.clipsFolder; }

    /// The work, as a project file holds it.
    QJsonObject project() const { return file_.project.toObject(); }

    QString name() const;

    void remove();

private:
    AbandonedCopy(const QString& path, std::unique_ptr<QLockFile> lock, const CopyFile& file);

    QString path_;
    std::unique_ptr<QLockFile> lock_;
    CopyFile file_;
};
