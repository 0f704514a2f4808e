#include "shell/theme/StyleSheet.h"
#include "shell/theme/ThemeManager.h"
#include "support/Contrast.h"
#include "support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGraphicsView>
#include <QHoverEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QSplitter>
#include <QStatusBar>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <QVBoxLayout>

#include <cstdlib>
#include <memory>

namespace StyledWidgetsTests {

namespace {

/// What a widget paints, a pixel for each of its units whatever the scale of the screen.
QImage painted(QWidget* widget)
{
    widget->ensurePolished();
    QImage image(widget->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget->render(&image);
    return image;
}

QColor colorAt(QWidget* widget, const QPoint& point)
{
    return painted(widget).pixelColor(point);
}

/// Equal but for the rounding of blends and for the first steps of a gradient.
bool isNear(const QColor& left, const QColor& right, int tolerance)
{
    return std::abs(left.red() - right.red()) <= tolerance &&
           std::abs(left.green() - right.green()) <= tolerance &&
           std::abs(left.blue() - right.blue()) <= tolerance;
}

/// Brings the mouse over a widget, or takes it away.
void setHovered(QWidget* widget, bool hovered)
{
    widget->setAttribute(Qt::WA_UnderMouse, hovered);
    QMouseEvent move(QEvent::MouseMove, widget->rect().center(),
                     widget->mapToGlobal(widget->rect().center()), Qt::NoButton, {}, {});
    QApplication::sendEvent(widget, &move);
}

int pixelsOf(const QImage& image, const QColor& color, const QRect& area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += image.pixelColor(x, y) == color;
    return count;
}

QColor textColor(QWidget* widget)
{
    widget->ensurePolished();
    return widget->palette().color(widget->foregroundRole());
}

/// A card of the ribbon: a header, and empty space below it.
std::unique_ptr<QFrame> cardOf(const QVariant& alt)
{
    auto card = std::make_unique<QFrame>();
    card->setObjectName("grupo_ribbon");
    card->setProperty("alt", alt);
    auto* header = new QLabel("X");
    header->setObjectName("header_grupo");
    header->setAlignment(Qt::AlignCenter);
    auto* layout = new QVBoxLayout(card.get());
    layout->setContentsMargins(0, 0, 0, 4);
    layout->addWidget(header);
    layout->addStretch();
    card->resize(120, 80);
    card->layout()->activate();
    return card;
}

std::unique_ptr<QToolButton> squareButton(const QString& face = QString())
{
    auto button = std::make_unique<QToolButton>();
    button->setObjectName("btn_toolbar");
    button->setText(face);
    button->ensurePolished();
    button->resize(button->sizeHint());
    return button;
}

/// Tells where its arrows are.
class SpinBox : public QSpinBox {
public:
    QRect arrow(QStyle::SubControl which) const
    {
        QStyleOptionSpinBox option;
        initStyleOption(&option);
        return style()->subControlRect(QStyle::CC_SpinBox, &option, which, this);
    }
};

QWidget* shownTip()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->inherits("QTipLabel") && widget->isVisible())
            return widget;
    }
    return nullptr;
}

} // namespace

/// The sheets on real widgets: both themes, each over two styles that have nothing in common.
class StyledWidgetsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase_data();
    void init();
    void cleanup();

    void windowsAndTheirBars();
    void menus();
    void theRibbon();
    void cardsHaveThreeShades_data();
    void cardsHaveThreeShades();
    void headersAreRoundAboveOnly();
    void otherFramesAreNoCards();
    void squareButtonsAreThirtyByThirty_data();
    void squareButtonsAreThirtyByThirty();
    void squareButtonsStandInRelief_data();
    void squareButtonsStandInRelief();
    void aSizeOfItsOwnStandsAboveTheSheet();
    void captionsAndLabels();
    void theSwitchOfTheTheme();
    void labelsOfTheStatusBar();
    void fieldsAreAtLeastTwentyTwoHighInside();
    void fieldsShowWhereTheFocusIs();
    void fieldsUnderTheMouse();
    void disabledTextsAreFaint();
    void comboBoxesHaveAnArrow();
    void listsOfComboBoxes();
    void spinBoxesHaveTwoArrows();
    void arrowsOfSpinBoxesCanBeClicked();
    void aNarrowSpinBoxHasRoomForThreeDigits();
    void checkBoxesAreTicked();
    void toolButtons();
    void pushButtons();
    void sliders();
    void progressBars();
    void lists();
    void tabs();
    void dialogs();
    void signsOfMessagesAreInTheColoursOfTheProgram_data();
    void signsOfMessagesAreInTheColoursOfTheProgram();
    void tipsAreLegible();
    void viewsHaveNoFrame();
    void scrollAreasAreTransparent();
    void splittersAreTwoWide();
    void scrollBarsAreBareHandles();

private:
    /// The colour of the theme under test.
    QColor theme(const char* light, const char* dark) const { return {dark_ ? dark : light}; }

    bool dark_ = false;
};

void StyledWidgetsTest::initTestCase_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<bool>("dark");
    for (const char* style : {"Fusion", "Windows"}) {
        QTest::addRow("light, %s", style) << style << false;
        QTest::addRow("dark, %s", style) << style << true;
    }
}

void StyledWidgetsTest::init()
{
    QFETCH_GLOBAL(QString, style);
    QFETCH_GLOBAL(bool, dark);
    dark_ = dark;
    qApp->setStyleSheet(QString());
    QApplication::setStyle(QStyleFactory::create(style));
    qApp->setStyleSheet(styleSheet(dark));
}

void StyledWidgetsTest::cleanup()
{
    QToolTip::hideText();
}

void StyledWidgetsTest::windowsAndTheirBars()
{
    QMainWindow window;
    window.resize(200, 150);
    window.menuBar()->addMenu("A");
    window.statusBar()->setSizeGripEnabled(false);
    const QImage image = painted(&window);
    QCOMPARE(image.pixelColor(100, 75), theme("#E5EDDD", "#0F1208"));

    const QRect menuBar = window.menuBar()->geometry();
    QCOMPARE(image.pixelColor(150, menuBar.center().y()), theme("#45701F", "#181B0D"));
    QCOMPARE(image.pixelColor(150, menuBar.bottom()), theme("#3C6019", "#405123"));
    QCOMPARE(window.menuBar()->font().pixelSize(), 13);
    QCOMPARE(window.menuBar()->font().weight(), QFont::Medium);

    const QRect statusBar = window.statusBar()->geometry();
    QCOMPARE(image.pixelColor(100, statusBar.bottom()), theme("#45701F", "#181B0D"));
    QCOMPARE(image.pixelColor(100, statusBar.top()), theme("#3C6019", "#405123"));
    QCOMPARE(window.statusBar()->font().pixelSize(), 11);
}

void StyledWidgetsTest::menus()
{
    QMenu menu;
    QAction* plain = menu.addAction("A");
    QAction* chosen = menu.addAction("B");
    menu.ensurePolished();
    menu.resize(menu.sizeHint());
    menu.setActiveAction(chosen);
    const QImage image = painted(&menu);
    const auto besideText = [&](QAction* action) {
        return menu.actionGeometry(action).center() -
               QPoint(menu.actionGeometry(action).width() / 2 - 4, 0);
    };
    QCOMPARE(image.pixelColor(besideText(plain)), theme("#F5F9F2", "#242B15"));
    QCOMPARE(image.pixelColor(besideText(chosen)), QColor("#4A7325"));
    QCOMPARE(image.pixelColor(image.width() / 2, 0), theme("#BBCCA7", "#405123"));
    QVERIFY(menu.actionGeometry(plain).height() >= menu.fontMetrics().height() + 8);
}

void StyledWidgetsTest::theRibbon()
{
    QWidget ribbon;
    ribbon.setObjectName("ribbon");
    ribbon.resize(100, 60);
    auto* row = new QWidget(&ribbon);
    row->setObjectName("fila_btns");
    row->setGeometry(10, 10, 40, 30);
    const QImage image = painted(&ribbon);
    QCOMPARE(image.pixelColor(80, 30), theme("#DDE6D0", "#181B0D"));
    QCOMPARE(image.pixelColor(20, 20), theme("#DDE6D0", "#181B0D"));
    QCOMPARE(image.pixelColor(80, 58), theme("#DDE6D0", "#181B0D"));
    QCOMPARE(image.pixelColor(80, 59), theme("#BBCCA7", "#405123"));
}

void StyledWidgetsTest::cardsHaveThreeShades_data()
{
    QTest::addColumn<QVariant>("alt");
    QTest::addColumn<QColor>("lightCard");
    QTest::addColumn<QColor>("darkCard");
    QTest::addColumn<QColor>("lightHeader");
    QTest::addColumn<QColor>("darkHeader");
    const auto row = [](const char* name, const QVariant& alt, const char* lightCard,
                        const char* darkCard, const char* lightHeader, const char* darkHeader) {
        QTest::newRow(name) << alt << QColor(lightCard) << QColor(darkCard) << QColor(lightHeader)
                            << QColor(darkHeader);
    };
    row("0", "0", "#E5EDDD", "#232814", "#45701F", "#353D1D");
    row("1", "1", "#E0E8D4", "#272D17", "#3C6019", "#3C4521");
    row("2", "2", "#E9F1E0", "#202412", "#4A7325", "#323919");
    row("none", QVariant(), "#E5EDDD", "#232814", "#45701F", "#353D1D");
}

void StyledWidgetsTest::cardsHaveThreeShades()
{
    QFETCH(QVariant, alt);
    QFETCH(QColor, lightCard);
    QFETCH(QColor, darkCard);
    QFETCH(QColor, lightHeader);
    QFETCH(QColor, darkHeader);
    const std::unique_ptr<QFrame> card = cardOf(alt);
    const auto* header = card->findChild<QLabel*>();
    const QImage image = painted(card.get());
    QCOMPARE(image.pixelColor(60, 70), dark_ ? darkCard : lightCard);
    QCOMPARE(image.pixelColor(10, header->height() / 2), dark_ ? darkHeader : lightHeader);
    QCOMPARE(header->font().pixelSize(), 10);
    QCOMPARE(header->font().weight(), QFont::Bold);
    QCOMPARE(header->font().letterSpacing(), 1.0);
    QCOMPARE(textColor(card->findChild<QLabel*>()), theme("#FFFFFF", "#E7F3D9"));
}

void StyledWidgetsTest::headersAreRoundAboveOnly()
{
    QWidget ribbon;
    ribbon.setObjectName("ribbon");
    ribbon.resize(120, 90);
    QFrame* card = cardOf("0").release();
    card->setParent(&ribbon);
    card->setGeometry(0, 0, 120, 80);
    const QImage image = painted(&ribbon);
    const int bottom = card->findChild<QLabel*>()->geometry().bottom();
    const QColor behind = theme("#DDE6D0", "#181B0D");
    QCOMPARE(image.pixelColor(0, 0), behind);
    QCOMPARE(image.pixelColor(119, 0), behind);
    QCOMPARE(image.pixelColor(0, bottom), theme("#45701F", "#353D1D"));
    QCOMPARE(image.pixelColor(119, bottom), theme("#45701F", "#353D1D"));
    QCOMPARE(image.pixelColor(0, bottom + 5), theme("#E5EDDD", "#232814"));
    QCOMPARE(image.pixelColor(0, 79), behind);
}

void StyledWidgetsTest::otherFramesAreNoCards()
{
    QWidget ribbon;
    ribbon.setObjectName("ribbon");
    ribbon.resize(100, 60);
    auto* frame = new QFrame(&ribbon);
    frame->setProperty("alt", "1");
    frame->setGeometry(0, 0, 50, 50);
    QCOMPARE(colorAt(&ribbon, {25, 25}), theme("#DDE6D0", "#181B0D"));
}

void StyledWidgetsTest::squareButtonsAreThirtyByThirty_data()
{
    QTest::addColumn<QString>("face");
    QTest::newRow("a symbol") << "▶";
    QTest::newRow("a word") << "MIDI";
    QTest::newRow("a long text") << "una cara larguísima";
    QTest::newRow("no face") << "";
}

void StyledWidgetsTest::squareButtonsAreThirtyByThirty()
{
    QFETCH(QString, face);
    for (const char* sheet : {"", "font-size: 13px; font-weight: 800;", " font-size: 40px;"}) {
        const std::unique_ptr<QToolButton> button = squareButton(face);
        button->setStyleSheet(sheet);
        button->ensurePolished();
        QCOMPARE(button->minimumSize(), QSize(30, 30));
        QCOMPARE(button->maximumSize(), QSize(30, 30));
        button->resize(500, 500);
        QCOMPARE(button->size(), QSize(30, 30));
    }
}

void StyledWidgetsTest::squareButtonsStandInRelief_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QStringList>("light");
    QTest::addColumn<QStringList>("dark");
    // Top of the face, its bottom, then the borders: top, right, bottom, left.
    QTest::newRow("at rest") << "" << QStringList{"#45701F", "#4A7325", "#6FA53A",
                                                  "#33540F", "#2B4A12", "#5A8E2C"}
                             << QStringList{"#476024", "#353D1D", "#3F6B1E",
                                            "#1C230D", "#141908", "#476024"};
    QTest::newRow("under the mouse")
        << "hover" << QStringList{"#55842A", "#45701F", "#8CC152", "#33540F", "#33540F", "#5A8E2C"}
        << QStringList{"#55842A", "#4A7325", "#8CC152", "#1C230D", "#33540F", "#476024"};
    // A ring of two pixels around the face.
    for (const char* state : {"checked", "checked hover"})
        QTest::newRow(state) << state << QStringList{"#24400E", "#33540F", "#9CCC65",
                                                     "#9CCC65", "#9CCC65", "#9CCC65"}
                             << QStringList{"#4A7325", "#3C6019", "#9CCC65",
                                            "#9CCC65", "#9CCC65", "#9CCC65"};
    QTest::newRow("pressed") << "pressed" << QStringList{"#4A7325", "#45701F", "#6FA53A",
                                                         "#33540F", "#2B4A12", "#5A8E2C"}
                             << QStringList{"#353D1D", "#476024", "#3F6B1E",
                                            "#1C230D", "#141908", "#476024"};
    // In the light theme, 0.4 of the face on white.
    QTest::newRow("disabled") << "disabled" << QStringList{"#B5C6A5", "#B7C7A8", "#6FA53A",
                                                           "#33540F", "#2B4A12", "#5A8E2C"}
                              << QStringList{"#476024", "#353D1D", "#3F6B1E",
                                             "#1C230D", "#141908", "#476024"};
}

void StyledWidgetsTest::squareButtonsStandInRelief()
{
    QFETCH(QString, state);
    QFETCH(QStringList, light);
    QFETCH(QStringList, dark);
    const std::unique_ptr<QToolButton> button = squareButton();
    button->setCheckable(true);
    button->setChecked(state.contains("checked"));
    button->setDown(state.contains("pressed"));
    button->setEnabled(!state.contains("disabled"));
    setHovered(button.get(), state.contains("hover"));

    QImage image(30, 30, QImage::Format_RGB32);
    image.fill(Qt::white);
    button->render(&image, {}, {}, QWidget::DrawChildren);
    const QStringList expected = dark_ ? dark : light;
    const int edge = state.contains("checked") ? 2 : 1;
    const QPoint points[] = {{15, edge}, {15, 29 - edge}, {15, 0}, {29, 15}, {15, 29}, {0, 15}};
    for (int i = 0; i < expected.size(); ++i) {
        const QColor found = image.pixelColor(points[i]);
        QVERIFY2(isNear(found, QColor(expected[i]), 2),
                 qPrintable(QString("%1 at %2, %3").arg(found.name()).arg(i).arg(expected[i])));
    }
}

void StyledWidgetsTest::aSizeOfItsOwnStandsAboveTheSheet()
{
    const std::unique_ptr<QToolButton> button = squareButton("▶");
    QCOMPARE(button->font().pixelSize(), 17);
    button->setStyleSheet(" font-size: 28px;");
    button->ensurePolished();
    QCOMPARE(button->font().pixelSize(), 28);
    const QImage image = painted(button.get());
    QCOMPARE(image.pixelColor(15, 0), theme("#6FA53A", "#3F6B1E"));
}

void StyledWidgetsTest::captionsAndLabels()
{
    QLabel label("a");
    QCOMPARE(textColor(&label), theme("#2E5214", "#C9E0B0"));
    QCOMPARE(label.font().pixelSize(), 11);

    QLabel caption("b");
    caption.setObjectName("lbl_toolbar");
    QCOMPARE(textColor(&caption), theme("#2E5214", "#C9E0B0"));
    QCOMPARE(caption.font().pixelSize(), 11);

    QCheckBox box("c");
    QCOMPARE(textColor(&box), theme("#2E5214", "#C9E0B0"));
    QCOMPARE(box.font().pixelSize(), 11);
}

void StyledWidgetsTest::theSwitchOfTheTheme()
{
    QPushButton button("Modo");
    button.setObjectName("toggle_modo");
    button.ensurePolished();
    button.resize(button.sizeHint());
    const int middle = button.height() / 2;
    QCOMPARE(colorAt(&button, {5, middle}), theme("#FFFFFF", "#353D1D"));
    QCOMPARE(colorAt(&button, {0, middle}), theme("#45701F", "#4A7325"));
    QCOMPARE(colorAt(&button, {1, middle}), theme("#45701F", "#4A7325"));
    QCOMPARE(textColor(&button), theme("#33540F", "#E7F3D9"));
    QCOMPARE(button.font().pixelSize(), 11);
    QCOMPARE(button.font().weight(), QFont::DemiBold);
    setHovered(&button, true);
    QCOMPARE(colorAt(&button, {5, middle}), theme("#45701F", "#4A7325"));
}

void StyledWidgetsTest::labelsOfTheStatusBar()
{
    QMainWindow window;
    window.resize(300, 100);
    auto* label = new QLabel("una indicación");
    window.statusBar()->addWidget(label);
    const QImage image = painted(&window);
    const QPoint inside = label->mapTo(&window, QPoint(4, label->height() / 2));
    // White at 0.22 over the green of the bar.
    QVERIFY(isNear(image.pixelColor(inside), theme("#6E8F50", "#181B0D"), 2));
    QCOMPARE(textColor(label), theme("#0B1405", "#C9E0B0"));
    QCOMPARE(label->font().pixelSize(), 11);
}

void StyledWidgetsTest::fieldsAreAtLeastTwentyTwoHighInside()
{
    QComboBox combo;
    SpinBox spin;
    QLineEdit line;
    for (QWidget* field : {static_cast<QWidget*>(&combo), static_cast<QWidget*>(&spin),
                           static_cast<QWidget*>(&line)}) {
        field->ensurePolished();
        // With a border and a padding of one pixel on both sides.
        QCOMPARE(field->minimumHeight(), 26);
        field->resize(120, 26);
        const QImage image = painted(field);
        QCOMPARE(image.pixelColor(60, 0), theme("#6F8454", "#66863E"));
        QCOMPARE(image.pixelColor(0, 13), theme("#6F8454", "#66863E"));
        QCOMPARE(image.pixelColor(60, 2), theme("#FFFFFF", "#242B15"));
        QCOMPARE(image.pixelColor(3, 13), theme("#FFFFFF", "#242B15"));
        QVERIFY(image.pixelColor(0, 0) != theme("#6F8454", "#66863E"));
        QCOMPARE(field->palette().color(QPalette::Text), theme("#2E5214", "#E7F3D9"));
    }
}

void StyledWidgetsTest::fieldsShowWhereTheFocusIs()
{
    QWidget window;
    window.resize(300, 200);
    const QList<QWidget*> fields = {new QComboBox(&window), new QSpinBox(&window),
                                    new QLineEdit(&window)};
    for (int i = 0; i < fields.size(); ++i)
        fields[i]->setGeometry(10, 10 + 40 * i, 120, 26);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    for (QWidget* focused : fields) {
        focused->setFocus();
        for (QWidget* field : fields) {
            QCOMPARE(colorAt(field, {60, 0}),
                     field == focused ? theme("#4A7325", "#9CCC65") : theme("#6F8454", "#66863E"));
            QCOMPARE(colorAt(field, {60, 1}),
                     field == focused ? theme("#4A7325", "#9CCC65") : theme("#FFFFFF", "#242B15"));
        }
    }
}

void StyledWidgetsTest::fieldsUnderTheMouse()
{
    QLineEdit line;
    line.resize(120, 26);
    setHovered(&line, true);
    QCOMPARE(colorAt(&line, {60, 0}), theme("#4A7325", "#9CCC65"));
}

void StyledWidgetsTest::disabledTextsAreFaint()
{
    QLabel label("a");
    QLineEdit line("b");
    QSpinBox spin;
    QComboBox combo;
    QCheckBox check("c");
    QPushButton push("d");
    QToolButton tool;
    for (QWidget* widget :
         {static_cast<QWidget*>(&label), static_cast<QWidget*>(&line), static_cast<QWidget*>(&spin),
          static_cast<QWidget*>(&combo), static_cast<QWidget*>(&check),
          static_cast<QWidget*>(&push), static_cast<QWidget*>(&tool)}) {
        widget->setEnabled(false);
        QCOMPARE(textColor(widget), theme("#A6B686", "#626A4E"));
    }
}

void StyledWidgetsTest::comboBoxesHaveAnArrow()
{
    QComboBox combo;
    combo.ensurePolished();
    combo.resize(100, 26);
    const QRect right(80, 2, 18, 22);
    QVERIFY(pixelsOf(painted(&combo), theme("#2E5214", "#E7F3D9"), right) >= 12);
    combo.setEnabled(false);
    QCOMPARE(pixelsOf(painted(&combo), theme("#2E5214", "#E7F3D9"), right), 0);
    QVERIFY(pixelsOf(painted(&combo), theme("#A6B686", "#626A4E"), right) >= 12);
}

void StyledWidgetsTest::listsOfComboBoxes()
{
    QComboBox combo;
    combo.addItems({"Mayor", "Menor"});
    combo.ensurePolished();
    QWidget* list = combo.view();
    list->ensurePolished();
    QCOMPARE(list->palette().color(QPalette::Base), theme("#FFFFFF", "#242B15"));
    QCOMPARE(list->palette().color(QPalette::Text), theme("#2E5214", "#E7F3D9"));
    QCOMPARE(list->palette().color(QPalette::Disabled, QPalette::Text),
             theme("#A6B686", "#626A4E"));
    QCOMPARE(list->palette().color(QPalette::Highlight), QColor("#4A7325"));
    QCOMPARE(list->palette().color(QPalette::HighlightedText), QColor(Qt::white));
}

void StyledWidgetsTest::spinBoxesHaveTwoArrows()
{
    SpinBox spin;
    spin.setRange(1, 9);
    spin.setValue(5);
    spin.ensurePolished();
    spin.resize(56, 26);
    const QColor bright = theme("#2E5214", "#E7F3D9");
    const QColor faint = theme("#A6B686", "#626A4E");
    const auto arrow = [&](QStyle::SubControl which, const QColor& color) {
        return pixelsOf(painted(&spin), color, spin.arrow(which));
    };
    QVERIFY(arrow(QStyle::SC_SpinBoxUp, bright) >= 8);
    QVERIFY(arrow(QStyle::SC_SpinBoxDown, bright) >= 8);
    spin.setValue(9);
    QCOMPARE(arrow(QStyle::SC_SpinBoxUp, bright), 0);
    QVERIFY(arrow(QStyle::SC_SpinBoxUp, faint) >= 8);
    QVERIFY(arrow(QStyle::SC_SpinBoxDown, bright) >= 8);
}

void StyledWidgetsTest::arrowsOfSpinBoxesCanBeClicked()
{
    SpinBox spin;
    spin.setRange(1, 999);
    spin.setValue(10);
    spin.setFixedWidth(46);
    spin.ensurePolished();
    spin.resize(46, 26);
    QTest::mouseClick(&spin, Qt::LeftButton, {}, spin.arrow(QStyle::SC_SpinBoxUp).center());
    QCOMPARE(spin.value(), 11);
    QTest::mouseClick(&spin, Qt::LeftButton, {}, spin.arrow(QStyle::SC_SpinBoxDown).center());
    QTest::mouseClick(&spin, Qt::LeftButton, {}, spin.arrow(QStyle::SC_SpinBoxDown).center());
    QCOMPARE(spin.value(), 9);
    QVERIFY(!spin.arrow(QStyle::SC_SpinBoxUp).intersects(spin.arrow(QStyle::SC_SpinBoxDown)));
}

void StyledWidgetsTest::aNarrowSpinBoxHasRoomForThreeDigits()
{
    QSpinBox spin;
    spin.setRange(1, 999);
    spin.setFixedWidth(46);
    spin.ensurePolished();
    spin.resize(46, 26);
    painted(&spin);
    QVERIFY(spin.findChild<QLineEdit*>()->width() >= 23);
}

void StyledWidgetsTest::checkBoxesAreTicked()
{
    QCheckBox box("");
    box.ensurePolished();
    box.resize(40, 20);
    const QColor field = theme("#FFFFFF", "#242B15");
    QVERIFY(pixelsOf(painted(&box), field, box.rect()) > 100);
    QCOMPARE(pixelsOf(painted(&box), QColor("#4A7325"), box.rect()), 0);
    box.setChecked(true);
    const QImage ticked = painted(&box);
    QVERIFY(pixelsOf(ticked, QColor("#4A7325"), box.rect()) > 60);
    QVERIFY(pixelsOf(ticked, QColor(Qt::white), box.rect()) >= 5);
}

void StyledWidgetsTest::toolButtons()
{
    QMainWindow window;
    window.resize(100, 60);
    auto* plain = new QToolButton(&window);
    plain->setGeometry(55, 10, 40, 30);
    auto* button = new QToolButton(&window);
    button->setCheckable(true);
    button->setGeometry(10, 10, 40, 30);
    const QPoint face(14, 25);
    const QPoint edge(30, 10);
    QCOMPARE(colorAt(&window, face), theme("#E5EDDD", "#0F1208"));
    // What can be switched has a frame at rest.
    QCOMPARE(colorAt(&window, edge), theme("#6F8454", "#66863E"));
    QCOMPARE(colorAt(&window, {75, 10}), theme("#E5EDDD", "#0F1208"));
    QCOMPARE(textColor(button), theme("#2E5214", "#E7F3D9"));
    QCOMPARE(button->minimumHeight(), 26);

    // Lime at 0.15 and at 0.3 over the window.
    setHovered(button, true);
    QVERIFY(isNear(colorAt(&window, face), theme("#D5E4C6", "#304219"), 2));
    QCOMPARE(colorAt(&window, edge), theme("#4A7325", "#9CCC65"));

    for (const bool hovered : {false, true}) {
        setHovered(button, hovered);
        button->setChecked(true);
        QCOMPARE(colorAt(&window, face), QColor("#4A7325"));
    }
}

void StyledWidgetsTest::pushButtons()
{
    QDialog dialog;
    dialog.resize(200, 80);
    auto* button = new QPushButton("a", &dialog);
    button->setAutoDefault(false);
    button->setGeometry(10, 10, 80, 30);
    const QPoint face(14, 25);
    const QPoint edge(50, 10);
    QCOMPARE(colorAt(&dialog, face), theme("#FFFFFF", "#242B15"));
    QCOMPARE(colorAt(&dialog, edge), theme("#6F8454", "#66863E"));
    QCOMPARE(textColor(button), theme("#33540F", "#E7F3D9"));
    button->setDefault(true);
    QCOMPARE(colorAt(&dialog, edge), QColor("#4A7325"));
    QCOMPARE(colorAt(&dialog, face), theme("#4A7325", "#9CCC65"));
    button->setText("■");
    QVERIFY(pixelsOf(painted(&dialog), theme("#FFFFFF", "#0B1405"), button->geometry()) >= 4);
    setHovered(button, true);
    QCOMPARE(colorAt(&dialog, face), QColor("#4A7325"));
}

void StyledWidgetsTest::sliders()
{
    QMainWindow window;
    window.resize(220, 60);
    auto* slider = new QSlider(Qt::Horizontal, &window);
    slider->setGeometry(10, 20, 200, 20);
    slider->setValue(0);
    const QImage image = painted(&window);
    const QColor rail = theme("#BBCCA7", "#405123");
    QCOMPARE(pixelsOf(image, rail, QRect(150, 20, 1, 20)), 4);
    // A disc, whose outermost pixels are blends.
    const QColor handle("#4A7325");
    QVERIFY(pixelsOf(image, handle, slider->geometry()) >= 80);
    for (const QRect& line : {QRect(16, 20, 1, 20), QRect(10, 30, 20, 1)}) {
        const int across = pixelsOf(image, handle, line);
        QVERIFY(across >= 10 && across <= 12);
    }
    QCOMPARE(image.pixelColor(150, 22), theme("#E5EDDD", "#0F1208"));
}

void StyledWidgetsTest::progressBars()
{
    QWidget panel;
    panel.resize(320, 60);
    auto* bar = new QProgressBar(&panel);
    bar->setGeometry(10, 15, 300, 24);
    bar->setRange(0, 100);
    bar->setValue(70);
    const QImage image = painted(&panel);
    const int middle = bar->geometry().center().y();
    const QColor done = image.pixelColor(40, middle);
    const QColor todo = image.pixelColor(290, middle);
    QCOMPARE(done, theme("#9CCC65", "#4A7325"));
    QCOMPARE(todo, theme("#FFFFFF", "#242B15"));
    const QColor text = theme("#2E5214", "#E7F3D9");
    QCOMPARE(textColor(bar), text);
    QVERIFY(Contrast::ratio(text, done) >= 4.5);
    QVERIFY(Contrast::ratio(text, todo) >= 4.5);
    // How far it has come is a line of its own.
    double edge = 1.0;
    for (int x = 210; x < 230; ++x)
        edge = std::max(edge, Contrast::ratio(image.pixelColor(x, bar->y() + 4), todo));
    QVERIFY2(edge >= 3.0, qPrintable(QString::number(edge)));
}

void StyledWidgetsTest::lists()
{
    QListWidget list;
    list.addItems({"a", "b", "c"});
    list.resize(200, 150);
    list.setCurrentRow(1);
    painted(&list);
    const auto row = [&](int number) {
        const QRect rect = list.visualItemRect(list.item(number));
        return list.viewport()->mapTo(&list, QPoint(rect.right() - 20, rect.center().y()));
    };
    const QColor base = theme("#FFFFFF", "#202412");
    QCOMPARE(colorAt(&list, row(0)), base);
    QCOMPARE(colorAt(&list, row(1)), QColor("#4A7325"));
    QCOMPARE(colorAt(&list, {100, 149}), theme("#BBCCA7", "#405123"));
    QCOMPARE(list.palette().color(QPalette::Text), theme("#2E5214", "#E7F3D9"));

    const QPointF over = list.visualItemRect(list.item(2)).center();
    QHoverEvent hover(QEvent::HoverMove, over, over, QPointF(-1, -1));
    QApplication::sendEvent(list.viewport(), &hover);
    // Lime at 0.15 and at 0.3 over the list.
    QVERIFY(isNear(colorAt(&list, row(2)), theme("#EBF4E3", "#3C4F20"), 2));
}

void StyledWidgetsTest::tabs()
{
    QTabWidget tabs;
    tabs.addTab(new QWidget, "Ritmos");
    tabs.addTab(new QWidget, "Obras");
    tabs.resize(300, 120);
    tabs.show();
    const QImage image = painted(&tabs);
    const auto edgeOf = [&](int tab) {
        const QRect rect = tabs.tabBar()->tabRect(tab);
        return tabs.tabBar()->mapTo(&tabs, QPoint(rect.left() + 8, rect.center().y()));
    };
    QCOMPARE(image.pixelColor(edgeOf(0)), QColor("#4A7325"));
    QCOMPARE(image.pixelColor(edgeOf(1)), theme("#DDE6D0", "#232814"));
    QCOMPARE(image.pixelColor(150, 110), theme("#E5EDDD", "#0F1208"));
}

void StyledWidgetsTest::dialogs()
{
    QDialog dialog;
    dialog.resize(100, 60);
    QCOMPARE(colorAt(&dialog, {50, 30}), theme("#F5F9F2", "#242B15"));
    auto* label = new QLabel("a", &dialog);
    QCOMPARE(textColor(label), theme("#2E5214", "#C9E0B0"));

    QMessageBox box(QMessageBox::NoIcon, "Obra sin guardar", "¿Querés guardarla antes?");
    box.ensurePolished();
    for (QLabel* text : box.findChildren<QLabel*>()) {
        text->ensurePolished();
        QCOMPARE(text->font().pixelSize(), 12);
        QCOMPARE(textColor(text), theme("#2E5214", "#E7F3D9"));
    }
    QCOMPARE(colorAt(&box, {2, 2}), theme("#F5F9F2", "#242B15"));
}

void StyledWidgetsTest::signsOfMessagesAreInTheColoursOfTheProgram_data()
{
    QTest::addColumn<int>("icon");
    QTest::newRow("question") << int(QMessageBox::Question);
    QTest::newRow("information") << int(QMessageBox::Information);
}

void StyledWidgetsTest::signsOfMessagesAreInTheColoursOfTheProgram()
{
    QFETCH(int, icon);
    QMessageBox box;
    box.ensurePolished();
    box.setIcon(static_cast<QMessageBox::Icon>(icon));
    const QImage sign = box.iconPixmap().toImage().convertToFormat(QImage::Format_ARGB32);
    QVERIFY(!sign.isNull());
    int green = 0;
    for (int y = 0; y < sign.height(); ++y) {
        for (int x = 0; x < sign.width(); ++x) {
            const QColor pixel = sign.pixelColor(x, y);
            if (pixel.alpha() < 128)
                continue;
            QVERIFY2(pixel.blue() <= pixel.green() + 2, qPrintable(pixel.name()));
            green += pixel == ThemeManager::kAccentDeep;
        }
    }
    QVERIFY(green > sign.width() * sign.height() / 4);
}

void StyledWidgetsTest::tipsAreLegible()
{
    // A style sheet without selectors reaches the tips of its widget too.
    const std::unique_ptr<QToolButton> large = squareButton("−");
    large->setStyleSheet("font-weight: 800; font-size: 28px;");
    const std::unique_ptr<QToolButton> plain = squareButton("▶");
    for (QToolButton* button : {large.get(), plain.get(), large.get()}) {
        QToolTip::showText({50, 50}, "Quitar la velta " + button->text(), button);
        QWidget* tip = shownTip();
        QVERIFY(tip);
        QCOMPARE(tip->font().pixelSize(), 12);
        QCOMPARE(tip->font().weight(), QFont::Normal);
        QCOMPARE(textColor(tip), theme("#2E5214", "#E7F3D9"));
        QCOMPARE(colorAt(tip, {3, 3}), theme("#F5F9F2", "#242B15"));
    }
}

void StyledWidgetsTest::viewsHaveNoFrame()
{
    QGraphicsView view;
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.resize(100, 80);
    painted(&view);
    QCOMPARE(view.viewport()->geometry(), view.rect());
}

void StyledWidgetsTest::scrollAreasAreTransparent()
{
    QMainWindow window;
    window.resize(200, 150);
    auto* area = new QScrollArea;
    auto* content = new QWidget;
    content->setMinimumSize(50, 500);
    content->setAutoFillBackground(true);
    area->setWidget(content);
    area->setWidgetResizable(true);
    window.setCentralWidget(area);
    const QColor behind = theme("#E5EDDD", "#0F1208");
    QCOMPARE(colorAt(&window, {20, 75}), behind);
    content->hide();
    QCOMPARE(colorAt(&window, {20, 75}), behind);
}

void StyledWidgetsTest::splittersAreTwoWide()
{
    for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical}) {
        QSplitter splitter(orientation);
        splitter.addWidget(new QWidget);
        splitter.addWidget(new QWidget);
        splitter.resize(100, 100);
        splitter.show();
        QCOMPARE(splitter.handleWidth(), 2);
        const QRect across =
            orientation == Qt::Horizontal ? QRect(0, 50, 100, 1) : QRect(50, 0, 1, 100);
        QCOMPARE(pixelsOf(painted(&splitter), theme("#BBCCA7", "#405123"), across), 2);
    }
}

void StyledWidgetsTest::scrollBarsAreBareHandles()
{
    for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical}) {
        QMainWindow window;
        window.resize(300, 300);
        auto* bar = new QScrollBar(orientation, &window);
        bar->setRange(0, 100000);
        bar->ensurePolished();
        const bool wide = orientation == Qt::Horizontal;
        const int thickness = wide ? bar->sizeHint().height() : bar->sizeHint().width();
        QCOMPARE(thickness, 11);
        bar->setGeometry(0, 0, wide ? 300 : 11, wide ? 11 : 300);
        const QImage image = painted(&window);
        const auto along = [&](int at) { return wide ? QPoint(at, 5) : QPoint(5, at); };
        // The handle is as short as it may be, and stands right at the end.
        const QColor handle = theme("#BBCCA7", "#405123");
        QCOMPARE(image.pixelColor(along(1)), handle);
        QCOMPARE(image.pixelColor(along(22)), handle);
        QCOMPARE(image.pixelColor(along(25)), theme("#E5EDDD", "#0F1208"));
        QCOMPARE(image.pixelColor(along(298)), theme("#E5EDDD", "#0F1208"));
    }
}

VELTA_TEST(StyledWidgetsTest)

} // namespace StyledWidgetsTests

#include "StyledWidgetsTest.moc"
