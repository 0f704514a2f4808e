#include "shell/theme/ThemeManager.h"

#include "shell/theme/StyleSheet.h"
#include "shell/theme/UserSettings.h"

#include <QApplication>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto kDarkKey = "modoOscuro"_L1;

} // namespace

ThemeManager* ThemeManager::instance()
{
    static ThemeManager manager;
    return &manager;
}

QString ThemeManager::styleSheet() const
{
    return ::styleSheet(dark_);
}

void ThemeManager::setDark(bool dark)
{
    dark_ = dark;
    // Even the same sheet once more would polish every widget of the application anew.
    if (qApp->styleSheet() != styleSheet())
        qApp->setStyleSheet(styleSheet());
    userSettings().setValue(kDarkKey, dark);
    emit themeChanged(dark);
}

void ThemeManager::applySavedTheme()
{
    setDark(userSettings().value(kDarkKey, false).toBool());
}
