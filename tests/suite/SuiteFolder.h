#pragma once

#include "support/Files.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <functional>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

/// A data folder of the suite for one test program. It has to be there before anybody asks for the
/// folder, since the first answer holds for the life of the process.
class SuiteFolder {
public:
    SuiteFolder() { qputenv("ProgramData", dir_.path().toUtf8()); }

    /// The folder that holds the data folder, and nothing else.
    QString outside() const { return dir_.path(); }

    QString path() const { return dir_.filePath("Ovelin"); }

    QString sessionFile() const { return path() + "/sesion.json"; }

    QString listsFolder() const { return path() + "/recientes"; }

    QString listFile(const QString& name) const { return listsFolder() + '/' + name + ".json"; }

    /// Leaves an empty data folder.
    void clear() const
    {
        QDir(path()).removeRecursively();
        QDir().mkpath(path());
    }

    /// Every file and folder, relative to the data folder and sorted.
    QStringList everything() const
    {
        QStringList found;
        QDirIterator entries(outside(),
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext())
            found.append(QDir(path()).relativeFilePath(entries.next()));
        found.removeOne(QStringLiteral("."));
        found.sort();
        return found;
    }

private:
    /// In memory, where a system keeps a folder there: all that the suite writes waits for the
    /// disk.
    static QString nameTemplate()
    {
        const QString memory = QStringLiteral("/dev/shm");
        return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) +
               QStringLiteral("/velta-suite-XXXXXX");
    }

    QTemporaryDir dir_{nameTemplate()};
};

/// A moment as the suite's files write it, so many seconds ago.
inline QByteArray secondsAgo(qint64 seconds)
{
    return QDateTime::currentDateTimeUtc().addSecs(-seconds).toString(Qt::ISODate).toUtf8();
}

/// A session that began two minutes ago, with a group of these members: JSON objects, separated by
/// commas.
inline QByteArray sessionWith(const QByteArray& members)
{
    return R"({"token": "abc", "grupo": "Los Zorzales", "modo": "mirasel", "inicio_sesion": ")" +
           secondsAgo(120) + R"(", "ultima_actividad": ")" + secondsAgo(60) +
           R"(", "duracion_estimada_min": 45, "integrantes": [)" + members + "]}";
}

/// Something in the place of a file that gives no document, whoever looks.
struct Obstacle {
    const char* name;
    std::function<void(const QString& path)> place;
};

inline QList<Obstacle> obstacles()
{
    const auto bytes = [](const QByteArray& content) {
        return [content](const QString& path) { writeBytes(path, content); };
    };
    // The rest of the file is zeros that take no place.
    const auto fiftyMegabytes = [](const QByteArray& beginning) {
        return [beginning](const QString& path) {
            writeBytes(path, beginning);
            QFile::resize(path, 50 * 1024 * 1024);
        };
    };
    QList<Obstacle> list{
        {"an empty file", bytes({})},
        {"no JSON", bytes("sesion")},
        {"half a document", bytes(R"({"integrantes": [{"id": "a)")},
        {"binary", bytes(QByteArray("\x00\xFF\xFE{\xC3", 5))},
        {"a number", bytes("17")},
        {"lists nested five thousand deep", bytes(QByteArray(5000, '[') + QByteArray(5000, ']'))},
        {"objects nested five thousand deep",
         bytes(QByteArray(R"({"integrantes":)").repeated(5000))},
        {"fifty megabytes of garbage", fiftyMegabytes("garbage")},
        {"fifty megabytes behind a document", fiftyMegabytes("[{}]")},
        {"a folder", [](const QString& path) { QDir().mkpath(path + "/inside"); }},
        {"a link to a document",
         [](const QString& path) {
             writeBytes(path + ".target", "[{}]");
             QFile::link(path + ".target", path);
         }},
        {"a link to nothing", [](const QString& path) { QFile::link(path + ".gone", path); }}};
#ifdef Q_OS_UNIX
    list.append({"a pipe", [](const QString& path) { mkfifo(path.toUtf8().constData(), 0600); }});
#endif
    return list;
}
