#pragma once

#include "support/Files.h"
#include "support/TinyBank.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>

/// A home, settings and a current folder of a test's own, empty and in one temporary folder.
/// Windows of a program without resources beside it take those of the current folder.
class UserHome {
public:
    UserHome() : before_(QDir::currentPath())
    {
        for (const char* name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME",
                                 "XDG_DOCUMENTS_DIR", "ProgramData"})
            qunsetenv(name);
        qputenv("HOME", dir_.path().toUtf8());
        QStandardPaths::setTestModeEnabled(true);
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, filePath("settings"));
        QDir::setCurrent(dir_.path());
    }

    ~UserHome() { QDir::setCurrent(before_); }

    UserHome(const UserHome&) = delete;
    UserHome& operator=(const UserHome&) = delete;

    QString filePath(const QString& name) const { return dir_.filePath(name); }

    /// Where the works are kept.
    QString works() const
    {
        return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/Velta";
    }

    QString projectFile(const QString& id) const { return works() + '/' + id + "/project.json"; }

    /// Gives the current folder a General MIDI bank of sines, which loads at once.
    void installBank() const
    {
        writeBytes(filePath("resources/soundfonts/velta_bank_gm.sf2"),
                   TinyBank::bytes({{0, 0, 100}, {128, 0, 50}}));
    }

private:
    QString before_;
    QTemporaryDir dir_;
};
