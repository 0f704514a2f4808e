#pragma once

#include "model/Project.h"
#include "storage/LocalStorageProvider.h"
#include "support/UserHome.h"

#include <QDateTime>
#include <QFile>

#include <chrono>
#include <filesystem>

/// Works in a folder of a test's own, each with the days that a test gives it.
class SavedWorks {
public:
    LocalStorageProvider& storage() { return storage_; }

    /// Saves a work that was written on a day. The one saved last is listed last.
    void save(const QString& id, const QString& name, const QDate& day)
    {
        Project work;
        work.name = name;
        if (!storage_.saveProject(id, work))
            qFatal("Cannot save %s", qPrintable(id));
        QFile file(folder(id) + "/project.json");
        if (!file.open(QIODevice::ReadWrite) ||
            !file.setFileTime(QDateTime(day, QTime(12, 0)), QFileDevice::FileModificationTime))
            qFatal("Cannot date %s", qPrintable(id));
        using Clock = std::filesystem::file_time_type::clock;
        std::filesystem::last_write_time(folder(id).toStdString(),
                                         Clock::now() - std::chrono::hours(++count_));
    }

    /// Three works of three days.
    void saveThree()
    {
        save("zamba", "Zamba de mi pueblo", QDate(2026, 11, 20));
        save("cuna", "Canción de cuna", QDate(2026, 2, 3));
        save("proyecto", "Mi canción", QDate(2024, 2, 29));
    }

    QString folder(const QString& id) const { return storage_.projectFolder(id); }

    bool exists(const QString& id) const { return QFile::exists(folder(id) + "/project.json"); }

private:
    // Saving tells the programs of the suite, whose folder is the user's.
    UserHome home_;
    LocalStorageProvider storage_{home_.filePath("obras")};
    int count_ = 0;
};
