#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

/// What the targets have in common.
namespace FuzzLaws {

/// Ends the process, and so tells the fuzzer, where a law does not hold.
inline void require(bool holds, const char* law)
{
    if (!holds)
        qFatal("Broken: %s", law);
}

/// A folder for the readers that read files, for as long as the process lives. The suite's data
/// folder stands in it too.
inline const QDir& scratch()
{
    static const QTemporaryDir folder;
    static const QDir dir = [] {
        qputenv("ProgramData", QFile::encodeName(folder.path()));
        return QDir(folder.path());
    }();
    return dir;
}

/// Puts the bytes into a file, whose path it returns.
inline QString file(const QString& name, const QByteArray& bytes)
{
    const QString path = scratch().filePath(name);
    QFile target(path);
    require(target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size(),
            "the scratch folder takes a file");
    return path;
}

} // namespace FuzzLaws
