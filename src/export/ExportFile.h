#pragma once

#include <QFileDevice>
#include <QString>

#include <memory>

/// A file that is written beside its place and put there when it is complete. Until then, and for
/// good if anything fails, what was there before stays as it was. Devices and pipes, which nothing
/// can take the place of, are written directly.
class ExportFile {
public:
    explicit ExportFile(const QString& path);

    bool open();

    /// What to write to, once it is open.
    QFileDevice& device() { return *file_; }

    /// Puts a file of which every byte has been written in its place.
    bool commit();

    /// What went wrong, of a file that is given up; empty if nothing did.
    QString errorString();

private:
    bool flush();

    std::unique_ptr<QFileDevice> file_;
};
