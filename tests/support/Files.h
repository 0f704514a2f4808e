#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

/// Everything in a file; nothing if it cannot be read.
inline QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Makes a file of these bytes, and the folders that it stands in. False if it does not take all.
inline bool writeBytes(const QString& path, const QByteArray& bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

/// Copies the files of a folder into another, which is made. False if one is there already.
inline bool copyFiles(const QString& from, const QString& to)
{
    if (!QDir().mkpath(to))
        return false;
    for (const QFileInfo& file : QDir(from).entryInfoList(QDir::Files)) {
        if (!QFile::copy(file.filePath(), to + '/' + file.fileName()))
            return false;
    }
    return true;
}
