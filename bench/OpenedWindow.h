#pragma once

#include "shell/MainWindow.h"

#include <QApplication>
#include <QTemporaryDir>

/// A home for one program, which takes the place of the user's.
class OwnHome {
public:
    OwnHome()
    {
        qputenv("HOME", folder_.path().toUtf8());
        qunsetenv("XDG_CONFIG_HOME");
    }

private:
    QTemporaryDir folder_;
};

/// The program with its window on a small screen, in a home of its own.
class OpenedWindow {
public:
    OpenedWindow(int& argc, char** argv) : application_(argc, argv)
    {
        window_.resize(1366, 768);
        window_.show();
    }

    MainWindow* window() { return &window_; }

private:
    OwnHome home_;
    QApplication application_;
    MainWindow window_;
};
