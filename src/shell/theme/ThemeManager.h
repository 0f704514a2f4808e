#pragma once

#include <QColor>
#include <QObject>
#include <QString>

/// The theme of the application, light or dark, as the user last chose it. There is one instance.
class ThemeManager : public QObject {
    Q_OBJECT

public:
    static constexpr QColor kAccent{0x7c, 0xb3, 0x42};
    static constexpr QColor kAccentDeep{0x4a, 0x73, 0x25};
    static constexpr QColor kAccentHover{0x9c, 0xcc, 0x65};

    /// The one instance, made on first use; it outlives the application object.
    static ThemeManager* instance();

    bool isDark() const { return dark_; }

    /// The style sheet of the theme in force.
    QString styleSheet() const;

    /// Gives the application the sheet of a theme, keeps the choice in the user's settings and
    /// announces it, even if that theme is in force already. Needs the application object.
    void setDark(bool dark);

    /// Puts on the theme of the user's settings: the light one, if nothing is stored yet.
    void applySavedTheme();

signals:
    /// The sheet is in force and the choice is stored.
    void themeChanged(bool dark);

private:
    ThemeManager() = default;

    bool dark_ = false;
};
