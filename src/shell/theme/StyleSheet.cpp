#include "shell/theme/StyleSheet.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

// Outside of any namespace, as the macro asks.
static void registerResources()
{
    Q_INIT_RESOURCE(theme);
}

namespace {

/// A word of velta.qss and what it stands for in each theme.
struct NamedColor {
    const char* name;
    const char* light;
    const char* dark;
};

constexpr NamedColor kColors[] = {
    // Window and bars
    {"window", "#E5EDDD", "#0F1208"},
    {"bar", "#45701F", "#181B0D"},
    {"barText", "#FFFFFF", "#E7F3D9"},
    {"barEdge", "#3C6019", "#405123"},
    {"barSelected", "#33540F", "#4A7325"},
    {"statusText", "#FFFFFF", "#C9E0B0"},
    {"statusLabel", "rgba(255, 255, 255, 0.22)", "transparent"},
    {"statusLabelText", "#0B1405", "#C9E0B0"},

    // Menus and dialogs
    {"panel", "#F5F9F2", "#242B15"},
    {"panelEdge", "#BBCCA7", "#405123"},
    {"text", "#2E5214", "#E7F3D9"},
    {"caption", "#2E5214", "#C9E0B0"},
    {"recordingText", "#B71C1C", "#FF8A80"},
    {"menuDisabledText", "#A6B686", "#89976D"},

    // What asks for a decision above the ribbon
    {"notice", "#FFF1C2", "#3B3313"},
    {"noticeText", "#4D3B00", "#F5E6B0"},
    {"noticeEdge", "#D9BE6A", "#6B5C22"},

    // Cards of the ribbon
    {"ribbon", "#DDE6D0", "#181B0D"},
    {"card0", "#E5EDDD", "#232814"},
    {"card1", "#E0E8D4", "#272D17"},
    {"card2", "#E9F1E0", "#202412"},
    {"cardTitle0", "#45701F", "#353D1D"},
    {"cardTitle1", "#3C6019", "#3C4521"},
    {"cardTitle2", "#4A7325", "#323919"},

    // Square buttons of the ribbon
    {"squareFrom", "#45701F", "#476024"},
    {"squareTo", "#4A7325", "#353D1D"},
    {"squareTop", "#6FA53A", "#3F6B1E"},
    {"squareLeft", "#5A8E2C", "#476024"},
    {"squareRight", "#33540F", "#1C230D"},
    {"squareBottom", "#2B4A12", "#141908"},
    {"squareHoverFrom", "#55842A", "#55842A"},
    {"squareHoverTo", "#45701F", "#4A7325"},
    {"squareCheckedFrom", "#24400E", "#4A7325"},
    {"squareCheckedTo", "#33540F", "#3C6019"},
    {"squarePressedFrom", "#4A7325", "#353D1D"},
    {"squarePressedTo", "#45701F", "#476024"},
    {"squareDisabledFrom", "rgba(69, 112, 31, 0.4)", "#476024"},
    {"squareDisabledTo", "rgba(74, 115, 37, 0.4)", "#353D1D"},
    {"squareDisabledText", "rgba(255, 255, 255, 0.4)", "rgba(255, 255, 255, 0.25)"},

    // The switch of the theme
    {"toggle", "#FFFFFF", "#353D1D"},
    {"toggleText", "#33540F", "#E7F3D9"},
    {"toggleEdge", "#45701F", "#4A7325"},

    // Fields, buttons and sliders
    {"selected", "#4A7325", "#4A7325"},
    {"selectedEdge", "#4A7325", "#66863E"},
    {"field", "#FFFFFF", "#242B15"},
    {"fieldEdge", "#6F8454", "#66863E"},
    {"fieldActiveEdge", "#4A7325", "#9CCC65"},
    {"disabledText", "#A6B686", "#626A4E"},
    {"buttonText", "#33540F", "#E7F3D9"},
    {"defaultButton", "#4A7325", "#9CCC65"},
    {"defaultButtonText", "#FFFFFF", "#0B1405"},
    {"veil", "rgba(124, 179, 66, 0.15)", "rgba(124, 179, 66, 0.3)"},
    {"rail", "#BBCCA7", "#405123"},
    {"progress", "#9CCC65", "#4A7325"},
    {"progressEdge", "#4A7325", "#9CCC65"},

    // Who has the keys: told from the faces of buttons and from what lies around them
    {"focus", "#0B1405", "#DCEDC8"},

    // Lists and tabs
    {"list", "#FFFFFF", "#202412"},
    {"tab", "#DDE6D0", "#232814"},
    {"tabText", "#33540F", "#C9E0B0"},
    {"tabHover", "#E9F1E0", "#323919"},
};

QLatin1StringView valueOf(QStringView name, bool dark)
{
    const auto* color = std::ranges::find_if(
        kColors, [&](const NamedColor& named) { return name == QLatin1StringView(named.name); });
    Q_ASSERT(color != std::end(kColors));
    return QLatin1StringView(dark ? color->dark : color->light);
}

QString rules()
{
    registerResources();
    QFile file(u":/theme/velta.qss"_s);
    const bool opened = file.open(QIODevice::ReadOnly);
    Q_ASSERT(opened);
    return QString::fromUtf8(file.readAll());
}

QString rulesWithColors(bool dark)
{
    static const QRegularExpression name(u"@(\\w+)"_s);
    const QString named = rules();
    QString sheet;
    qsizetype copied = 0;
    for (const QRegularExpressionMatch& match : name.globalMatch(named)) {
        sheet += QStringView(named).sliced(copied, match.capturedStart() - copied);
        sheet += valueOf(match.capturedView(1), dark);
        copied = match.capturedEnd();
    }
    return sheet.append(QStringView(named).sliced(copied));
}

} // namespace

const QString& styleSheet(bool dark)
{
    static const QString lightSheet = rulesWithColors(false);
    static const QString darkSheet = rulesWithColors(true);
    return dark ? darkSheet : lightSheet;
}
