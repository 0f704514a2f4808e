#pragma once

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

/// A copy of the program in a folder of its own, whose resources a test may damage.
class Installation {
public:
    enum class Resources { Staged, None };

    explicit Installation(Resources resources = Resources::Staged)
    {
        const QString program = QStringLiteral(VELTA_PROGRAM);
        QFile::copy(program, filePath("velta"));
        if (resources == Resources::Staged)
            copyTree(QFileInfo(program).path() + "/resources", filePath("resources"));
    }

    QString filePath(const QString& name) const { return dir_.filePath(name); }

    QString rhythmPath(const QString& rhythmId) const
    {
        return filePath("resources/loops/installed/" + rhythmId + ".content.json");
    }

    /// Replaces a text that a file of the resources holds.
    bool edit(const QString& path, const QByteArray& before, const QByteArray& after) const
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadWrite))
            return false;
        const QByteArray content = file.readAll();
        if (!content.contains(before))
            return false;
        file.resize(0);
        file.seek(0);
        return file.write(QByteArray(content).replace(before, after)) > 0;
    }

    static void copyTree(const QString& from, const QString& to)
    {
        QDir().mkpath(to);
        const auto entries = QDir(from).entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
        for (const QFileInfo& entry : entries) {
            const QString target = to + '/' + entry.fileName();
            if (entry.isSymLink())
                QFile::link(entry.symLinkTarget(), target);
            else if (entry.isDir())
                copyTree(entry.filePath(), target);
            else
                QFile::copy(entry.filePath(), target);
        }
    }

    /// Has nobody but root write into the resources, as where a program is installed for all.
    bool closeResources() const { return allowWriting(false); }

    /// Undoes that, so that the folder can go.
    bool openResources() const { return allowWriting(true); }

    struct Run {
        int exitCode = -1;
        QString output;
        QString errors;

        QStringList lines() const { return output.split('\n', Qt::SkipEmptyParts); }
    };

    /// An environment without display, locale or user of its own.
    QProcessEnvironment bareEnvironment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* name :
             {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "XDG_RUNTIME_DIR"})
            environment.remove(name);
        environment.insert("HOME", dir_.path());
        environment.insert("TMPDIR", dir_.path());
        return environment;
    }

    /// Runs the program to its end, from the folder that it is installed in.
    Run run(const QStringList& arguments, const QMap<QString, QString>& variables = {}) const
    {
        QProcess process;
        QProcessEnvironment environment = bareEnvironment();
        for (auto variable = variables.cbegin(); variable != variables.cend(); ++variable)
            environment.insert(variable.key(), variable.value());
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(dir_.path());
        process.start(filePath("velta"), arguments);
        Run run;
        if (process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit)
            run.exitCode = process.exitCode();
        run.output = QString::fromUtf8(process.readAllStandardOutput());
        run.errors = QString::fromUtf8(process.readAllStandardError());
        return run;
    }

private:
    bool allowWriting(bool allowed) const
    {
        const auto rights = QFile::Permissions(allowed ? 0x7755 : 0x5555);
        QDirIterator all(filePath("resources"), QDir::Dirs | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        bool done = QFile::setPermissions(filePath("resources"), rights);
        while (all.hasNext())
            done = QFile::setPermissions(all.next(), rights) && done;
        return done;
    }

    QTemporaryDir dir_;
};
