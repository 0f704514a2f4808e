#include "shell/theme/StyleSheet.h"

#include "shell/theme/PlainSheet.h"
#include "support/TestProgram.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QSpinBox>
#include <QTest>
#include <QTextEdit>

namespace StyleSheetTests {

namespace {

/// What the sheets say under one selector. Where only one value stands, both themes have it.
struct Fact {
    const char* selector;
    const char* property;
    QString light;
    QString dark = QString();
};

QString fall(const char* top, const char* bottom)
{
    return QString("qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 %1, stop: 1 %2)")
        .arg(top, bottom);
}

const QList<Fact> kWindowFacts = {
    {"QMainWindow", "background", "#E5EDDD", "#0F1208"},

    {"QMenuBar", "background", "#45701F", "#181B0D"},
    {"QMenuBar", "color", "#FFFFFF", "#E7F3D9"},
    {"QMenuBar", "border-bottom", "1px solid #3C6019", "1px solid #405123"},
    {"QMenuBar", "font-size", "13px"},
    {"QMenuBar", "font-weight", "500"},
    {"QMenuBar", "padding", "3px 0"},
    {"QMenuBar::item", "padding", "4px 12px"},
    {"QMenuBar::item", "border-radius", "4px"},
    {"QMenuBar::item:selected", "background", "#33540F", "#4A7325"},

    {"QMenu", "background", "#F5F9F2", "#242B15"},
    {"QMenu", "color", "#2E5214", "#E7F3D9"},
    {"QMenu", "border", "1px solid #BBCCA7", "1px solid #405123"},
    {"QMenu::item", "padding", "4px 24px"},
    {"QMenu::item:selected", "background", "#4A7325"},
    {"QMenu::item:selected", "color", "white"},
    {"QMenu::item:disabled", "color", "#A6B686", "#89976D"},
    {"QMenu::separator", "height", "1px"},
    {"QMenu::separator", "margin", "3px 8px"},
};

const QList<Fact> kRibbonFacts = {
    {"QWidget#ribbon", "background", "#DDE6D0", "#181B0D"},
    {"QWidget#ribbon", "border-bottom", "1px solid #BBCCA7", "1px solid #405123"},

    {"QFrame#grupo_ribbon", "border-radius", "8px"},
    {"QFrame#grupo_ribbon", "background", "#E5EDDD", "#232814"},
    {"QFrame#grupo_ribbon[alt=\"1\"]", "background", "#E0E8D4", "#272D17"},
    {"QFrame#grupo_ribbon[alt=\"2\"]", "background", "#E9F1E0", "#202412"},

    {"QLabel#header_grupo", "color", "#FFFFFF", "#E7F3D9"},
    {"QLabel#header_grupo", "font-size", "10px"},
    {"QLabel#header_grupo", "font-weight", "700"},
    {"QLabel#header_grupo", "letter-spacing", "1px"},
    {"QLabel#header_grupo", "padding", "3px 4px 2px 4px"},
    {"QLabel#header_grupo", "border-top-left-radius", "8px"},
    {"QLabel#header_grupo", "border-top-right-radius", "8px"},
    {"QLabel#header_grupo", "background", "#45701F", "#353D1D"},
    {"QFrame#grupo_ribbon[alt=\"1\"] QLabel#header_grupo", "background", "#3C6019", "#3C4521"},
    {"QFrame#grupo_ribbon[alt=\"2\"] QLabel#header_grupo", "background", "#4A7325", "#323919"},

    {"QToolButton#btn_toolbar", "border-radius", "6px"},
    {"QToolButton#btn_toolbar", "padding", "4px"},
    {"QToolButton#btn_toolbar", "font-size", "17px"},
    {"QToolButton#btn_toolbar", "color", "white"},
    {"QToolButton#btn_toolbar", "background", fall("#45701F", "#4A7325"),
     fall("#476024", "#353D1D")},
    {"QToolButton#btn_toolbar", "border-width", "1px"},
    {"QToolButton#btn_toolbar", "border-style", "solid"},
    {"QToolButton#btn_toolbar", "border-top-color", "#6FA53A", "#3F6B1E"},
    {"QToolButton#btn_toolbar", "border-left-color", "#5A8E2C", "#476024"},
    {"QToolButton#btn_toolbar", "border-right-color", "#33540F", "#1C230D"},
    {"QToolButton#btn_toolbar", "border-bottom-color", "#2B4A12", "#141908"},
    {"QToolButton#btn_toolbar::menu-indicator", "image", "none"},

    {"QToolButton#btn_toolbar:hover", "background", fall("#55842A", "#45701F"),
     fall("#55842A", "#4A7325")},
    {"QToolButton#btn_toolbar:hover", "border-top-color", "#8CC152"},
    {"QToolButton#btn_toolbar:hover", "border-bottom-color", "#33540F"},
    {"QToolButton#btn_toolbar:checked", "background", fall("#24400E", "#33540F"),
     fall("#4A7325", "#3C6019")},
    {"QToolButton#btn_toolbar:checked", "border", "2px solid #9CCC65"},
    {"QToolButton#btn_toolbar:checked", "padding", "3px"},
    {"QToolButton#btn_toolbar:focus", "border", "2px solid #0B1405", "2px solid #DCEDC8"},
    {"QToolButton#btn_toolbar:focus", "padding", "3px"},
    {"QToolButton#btn_toolbar:pressed", "background", fall("#4A7325", "#45701F"),
     fall("#353D1D", "#476024")},
    {"QToolButton#btn_toolbar:pressed", "padding-top", "2px"},
    {"QToolButton#btn_toolbar:disabled", "background",
     fall("rgba(69, 112, 31, 0.4)", "rgba(74, 115, 37, 0.4)"), fall("#476024", "#353D1D")},
    {"QToolButton#btn_toolbar:disabled", "color", "rgba(255, 255, 255, 0.4)",
     "rgba(255, 255, 255, 0.25)"},

    {"QLabel#lbl_toolbar", "color", "#2E5214", "#C9E0B0"},
    {"QLabel#lbl_toolbar", "font-size", "11px"},
    {"QLabel#lbl_toolbar", "background", "transparent"},
    {"QWidget#fila_btns", "background", "transparent"},
};

const QList<Fact> kStatusBarFacts = {
    {"QPushButton#toggle_modo", "background", "#FFFFFF", "#353D1D"},
    {"QPushButton#toggle_modo", "color", "#33540F", "#E7F3D9"},
    {"QPushButton#toggle_modo", "border", "2px solid #45701F", "2px solid #4A7325"},
    {"QPushButton#toggle_modo", "border-radius", "8px"},
    {"QPushButton#toggle_modo", "padding", "3px 10px"},
    {"QPushButton#toggle_modo", "font-size", "11px"},
    {"QPushButton#toggle_modo", "font-weight", "600"},
    {"QPushButton#toggle_modo:hover", "background", "#45701F", "#4A7325"},
    {"QPushButton#toggle_modo:hover", "color", "#FFFFFF", "#E7F3D9"},

    {"QStatusBar", "background", "#45701F", "#181B0D"},
    {"QStatusBar", "color", "#FFFFFF", "#C9E0B0"},
    {"QStatusBar", "border-top", "1px solid #3C6019", "1px solid #405123"},
    {"QStatusBar", "font-size", "11px"},
    {"QStatusBar::item", "border", "none"},
    {"QStatusBar QLabel", "background", "rgba(255, 255, 255, 0.22)", "transparent"},
    {"QStatusBar QLabel", "color", "#0B1405", "#C9E0B0"},
    {"QStatusBar QLabel", "border-radius", "4px"},
    {"QStatusBar QLabel", "padding", "2px 7px"},
};

const QList<Fact> kControlFacts = {
    {"QLabel", "color", "#2E5214", "#C9E0B0"},
    {"QLabel", "font-size", "11px"},
    {"QCheckBox", "color", "#2E5214", "#C9E0B0"},
    {"QCheckBox", "font-size", "11px"},

    {"QComboBox QAbstractItemView", "selection-background-color", "#4A7325"},
    {"QComboBox QAbstractItemView", "selection-color", "white"},

    {"QToolButton", "background", "transparent"},
    {"QToolButton", "color", "#2E5214", "#E7F3D9"},
    {"QToolButton", "border", "1px solid transparent"},
    {"QToolButton", "border-radius", "4px"},
    {"QToolButton", "padding", "2px 6px"},
    {"QToolButton", "min-height", "20px"},
    {"QToolButton:hover", "background", "rgba(124, 179, 66, 0.15)", "rgba(124, 179, 66, 0.3)"},
    {"QToolButton:hover", "border-color", "#4A7325", "#9CCC65"},
    {"QToolButton:focus", "border", "2px solid #0B1405", "2px solid #DCEDC8"},
    {"QToolButton:checked", "background", "#4A7325"},
    {"QToolButton:checked", "color", "white"},

    {"QPushButton", "background", "#FFFFFF", "#242B15"},
    {"QPushButton", "color", "#33540F", "#E7F3D9"},
    {"QPushButton", "border", "1px solid #6F8454", "1px solid #66863E"},
    {"QPushButton", "border-radius", "4px"},
    {"QPushButton", "padding", "4px 12px"},
    {"QPushButton:hover", "background", "#4A7325"},
    {"QPushButton:hover", "color", "white"},
    {"QPushButton:default", "border-color", "#4A7325"},
    {"QPushButton:default", "background", "#4A7325", "#9CCC65"},
    {"QPushButton:default", "color", "#FFFFFF", "#0B1405"},
    {"QPushButton:focus", "border", "2px solid #0B1405", "2px solid #DCEDC8"},

    {"QSlider::groove:horizontal", "height", "4px"},
    {"QSlider::groove:horizontal", "background", "#BBCCA7", "#405123"},
    {"QSlider::groove:horizontal", "border-radius", "2px"},
    {"QSlider::handle:horizontal", "width", "12px"},
    {"QSlider::handle:horizontal", "height", "12px"},
    {"QSlider::handle:horizontal", "border-radius", "6px"},
    {"QSlider::handle:horizontal", "background", "#4A7325"},
    {"QSlider::handle:horizontal:hover", "background", "#55842A"},
};

const QList<Fact> kListFacts = {
    {"QListWidget", "background", "#FFFFFF", "#202412"},
    {"QListWidget", "color", "#2E5214", "#E7F3D9"},
    {"QListWidget", "border", "1px solid #BBCCA7", "1px solid #405123"},
    {"QListWidget", "border-radius", "6px"},
    {"QListWidget::item", "border-radius", "6px"},
    {"QListWidget::item", "padding", "4px"},
    {"QListWidget::item:selected", "background", "#4A7325"},
    {"QListWidget::item:selected", "color", "white"},
    {"QListWidget::item:hover", "background", "rgba(124, 179, 66, 0.15)",
     "rgba(124, 179, 66, 0.3)"},

    {"QTabBar::tab", "background", "#DDE6D0", "#232814"},
    {"QTabBar::tab", "color", "#33540F", "#C9E0B0"},
    {"QTabBar::tab", "border-top-left-radius", "6px"},
    {"QTabBar::tab", "border-top-right-radius", "6px"},
    {"QTabBar::tab", "padding", "5px 18px"},
    {"QTabBar::tab", "font-size", "12px"},
    {"QTabBar::tab", "font-weight", "600"},
    {"QTabBar::tab", "margin-right", "2px"},
    {"QTabBar::tab:selected", "background", "#4A7325"},
    {"QTabBar::tab:selected", "color", "white"},
    {"QTabBar::tab:hover", "background", "#E9F1E0", "#323919"},
    {"QTabWidget::pane", "border", "none"},
    {"QTabWidget::pane", "background", "#E5EDDD", "#0F1208"},
};

const QList<Fact> kDialogAndFrameFacts = {
    {"QDialog", "background", "#F5F9F2", "#242B15"},
    {"QDialog", "color", "#2E5214", "#E7F3D9"},
    {"QMessageBox", "background", "#F5F9F2", "#242B15"},
    {"QMessageBox", "color", "#2E5214", "#E7F3D9"},
    {"QMessageBox QLabel", "font-size", "12px"},

    {"QGraphicsView", "border", "none"},
    {"QScrollArea", "border", "none"},
    {"QScrollArea", "background", "transparent"},
    {"QScrollArea > QWidget > QWidget", "background", "transparent"},
    {"QSplitter::handle", "background", "#BBCCA7", "#405123"},
    {"QSplitter::handle", "width", "2px"},

    {"QScrollBar", "background", "transparent"},
    {"QScrollBar:vertical", "width", "11px"},
    {"QScrollBar:horizontal", "height", "11px"},
    {"QScrollBar::handle", "background", "#BBCCA7", "#405123"},
    {"QScrollBar::handle", "border-radius", "5px"},
    {"QScrollBar::handle:vertical", "min-height", "24px"},
    {"QScrollBar::handle:horizontal", "min-width", "24px"},
    {"QScrollBar::handle:hover", "background", "#4A7325"},
    {"QScrollBar::add-line", "width", "0"},
    {"QScrollBar::sub-line", "height", "0"},
    {"QScrollBar::add-page", "background", "transparent"},
    {"QScrollBar::sub-page", "background", "transparent"},
};

/// The three kinds of fields have everything in common.
QList<Fact> fieldFacts()
{
    QList<Fact> facts;
    for (const char* field : {"QComboBox", "QSpinBox", "QLineEdit"}) {
        facts.append({field, "background", "#FFFFFF", "#242B15"});
        facts.append({field, "color", "#2E5214", "#E7F3D9"});
        facts.append({field, "border", "1px solid #6F8454", "1px solid #66863E"});
        facts.append({field, "border-radius", "4px"});
        facts.append({field, "padding", "1px 6px"});
        facts.append({field, "min-height", "22px"});
    }
    for (const char* field : {"QComboBox:hover", "QSpinBox:hover", "QLineEdit:hover"})
        facts.append({field, "border-color", "#4A7325", "#9CCC65"});
    for (const char* field : {"QComboBox:focus", "QSpinBox:focus", "QLineEdit:focus"}) {
        facts.append({field, "border", "2px solid #4A7325", "2px solid #9CCC65"});
        facts.append({field, "padding", "0 5px"});
    }
    for (const char* field : {"QComboBox:disabled", "QSpinBox:disabled", "QLineEdit:disabled"})
        facts.append({field, "color", "#A6B686", "#626A4E"});
    return facts;
}

QStringList caught;

void catchMessage(QtMsgType, const QMessageLogContext&, const QString& text)
{
    caught.append(text);
}

/// What Qt says of a sheet while it dresses some widgets in it.
QStringList complaintsAbout(const QString& sheet)
{
    caught.clear();
    const QtMessageHandler former = qInstallMessageHandler(catchMessage);
    qApp->setStyleSheet(sheet);
    QWidget window;
    window.setObjectName("ribbon");
    for (QWidget* child :
         {static_cast<QWidget*>(new QLabel("a")), static_cast<QWidget*>(new QComboBox()),
          static_cast<QWidget*>(new QSpinBox()), static_cast<QWidget*>(new QTextEdit())})
        child->setParent(&window);
    window.grab();
    qApp->setStyleSheet(QString());
    qInstallMessageHandler(former);
    return caught;
}

/// The selectors and properties of a sheet, without the values.
QStringList skeletonOf(const QString& sheet)
{
    QStringList lines;
    for (const SheetRule& rule : rulesOf(sheet)) {
        lines.append(rule.selectors.join(", "));
        for (const SheetRule::Declaration& declaration : rule.declarations)
            lines.append("    " + declaration.property);
    }
    return lines;
}

} // namespace

class StyleSheetTest : public QObject {
    Q_OBJECT

private slots:
    void givesEveryValueInBothThemes_data();
    void givesEveryValueInBothThemes();
    void bothThemesHaveTheSameRules();
    void theThemesDifferInColorsOnly();
    void everyNameHasBecomeAColor_data();
    void everyNameHasBecomeAColor();
    void qtTakesItWithoutAWord_data();
    void qtTakesItWithoutAWord();
    void aFaultySheetWouldBeHeardOf();
    void itsPicturesAreInTheProgram();
    void isMadeOnce();
};

void StyleSheetTest::givesEveryValueInBothThemes_data()
{
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("light");
    QTest::addColumn<QString>("dark");
    const QList<Fact> facts = kWindowFacts + kRibbonFacts + kStatusBarFacts + kControlFacts +
                              fieldFacts() + kListFacts + kDialogAndFrameFacts;
    for (const Fact& fact : facts)
        QTest::addRow("%s, %s", fact.selector, fact.property)
            << fact.selector << fact.property << fact.light
            << (fact.dark.isEmpty() ? fact.light : fact.dark);
}

void StyleSheetTest::givesEveryValueInBothThemes()
{
    QFETCH(QString, selector);
    QFETCH(QString, property);
    static const QList<SheetRule> lightRules = rulesOf(styleSheet(false));
    static const QList<SheetRule> darkRules = rulesOf(styleSheet(true));
    QTEST(valueIn(lightRules, selector, property), "light");
    QTEST(valueIn(darkRules, selector, property), "dark");
}

void StyleSheetTest::bothThemesHaveTheSameRules()
{
    QCOMPARE(skeletonOf(styleSheet(false)), skeletonOf(styleSheet(true)));
    QVERIFY(skeletonOf(styleSheet(false)).size() > 200);
}

void StyleSheetTest::theThemesDifferInColorsOnly()
{
    static const QRegularExpression color(R"(#[0-9A-F]{6}\b|rgba\([^)]*\)|\btransparent\b)");
    const QString light = QString(styleSheet(false)).replace(color, "color");
    const QString dark = QString(styleSheet(true)).replace(color, "color");
    QCOMPARE(light, dark);
    QVERIFY(styleSheet(false) != styleSheet(true));
}

void StyleSheetTest::everyNameHasBecomeAColor_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void StyleSheetTest::everyNameHasBecomeAColor()
{
    QFETCH(bool, dark);
    for (const SheetRule& rule : rulesOf(styleSheet(dark))) {
        QVERIFY(!rule.declarations.isEmpty());
        for (const SheetRule::Declaration& declaration : rule.declarations)
            QVERIFY2(!declaration.value.contains('@'), qPrintable(declaration.value));
    }
}

void StyleSheetTest::qtTakesItWithoutAWord_data()
{
    everyNameHasBecomeAColor_data();
}

void StyleSheetTest::qtTakesItWithoutAWord()
{
    QFETCH(bool, dark);
    QCOMPARE(complaintsAbout(styleSheet(dark)), QStringList());
}

void StyleSheetTest::aFaultySheetWouldBeHeardOf()
{
    QVERIFY(!complaintsAbout("QLabel { color: ").isEmpty());
    QVERIFY(!complaintsAbout("QLabel { qproperty-noSuchThing: 1; }").isEmpty());
}

void StyleSheetTest::itsPicturesAreInTheProgram()
{
    static const QRegularExpression picture(R"(url\(([^)]+)\))");
    QStringList paths;
    for (const QRegularExpressionMatch& match : picture.globalMatch(styleSheet(false)))
        paths.append(match.captured(1));
    QVERIFY(!paths.isEmpty());
    for (const QString& path : paths)
        QVERIFY2(!QImage(path).isNull(), qPrintable(path));
}

void StyleSheetTest::isMadeOnce()
{
    QCOMPARE(styleSheet(true).constData(), styleSheet(true).constData());
    QCOMPARE(styleSheet(false).constData(), styleSheet(false).constData());
}

VELTA_TEST(StyleSheetTest)

} // namespace StyleSheetTests

#include "StyleSheetTest.moc"
