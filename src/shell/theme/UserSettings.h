#pragma once

#include <QSettings>

/// What this user has set, from one start of the program to the next: the look, the window and its
/// switches.
inline QSettings userSettings()
{
    return QSettings(QStringLiteral("Ovelin"), QStringLiteral("Velta"));
}
