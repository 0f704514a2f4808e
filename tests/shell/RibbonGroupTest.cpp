#include "shell/RibbonGroup.h"

#include "shell/theme/ThemeManager.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "support/Widgets.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>

namespace RibbonGroupTests {

namespace {

QLabel* header(const RibbonGroup& group)
{
    return group.findChild<QLabel*>("header_grupo");
}

/// The row of columns.
QWidget* row(const RibbonGroup& group)
{
    return group.findChild<QWidget*>("fila_btns", Qt::FindDirectChildrenOnly);
}

QList<QWidget*> columns(const RibbonGroup& group)
{
    return row(group)->findChildren<QWidget*>("fila_btns", Qt::FindDirectChildrenOnly);
}

template <typename Layout = QBoxLayout>
Layout* layoutOf(const QWidget* widget)
{
    return qobject_cast<Layout*>(widget->layout());
}

/// Where a widget stands in a window, all of it.
QRect placeOf(const QWidget* widget)
{
    return {widget->mapTo(widget->window(), QPoint()), widget->size()};
}

int middleOf(const QWidget* widget)
{
    return placeOf(widget).center().x();
}

/// The colour of the card itself, which its lower edge shows.
QRgb shadeOf(int index)
{
    RibbonGroup group("Voz", index);
    group.addCard("●", "Grabar", QString(), false);
    const QImage image = group.grab().toImage();
    return image.pixel(image.width() / 2, image.height() - 2);
}

} // namespace

class RibbonGroupTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theIndexChoosesOneOfThreeShades_data();
    void theIndexChoosesOneOfThreeShades();
    void theThreeShadesDifferInBothThemes_data();
    void theThreeShadesDifferInBothThemes();
    void theGroupIsAFrameWithAName();
    void theTitleIsInUpperCase_data();
    void theTitleIsInUpperCase();
    void theHeaderStandsCentredOverTheRow();
    void theCardLeavesRoomAtTheBottomOnly();
    void theRowLeavesRoomAtBothSides();

    void aCardIsAButton();
    void aCardMayBeCheckable();
    void aCardIsClicked();
    void aCardTakesNoFocus();
    void theCaptionStandsCentredUnderTheButton();
    void columnsAreTransparentByNameAndDense();
    void columnsStandInTheOrderOfAdding();
    void aScreenReaderSaysTheCaption();

    void aControlStandsBetweenStretches();
    void theCaptionIsTheBuddyOfItsControl();
    void aControlBelongsToTheGroup();
    void aControlKeepsItsFocus();
    void spacingMovesTheNextColumn();

private:
    std::unique_ptr<UserHome> home_;
};

void RibbonGroupTest::init()
{
    home_ = std::make_unique<UserHome>();
}

void RibbonGroupTest::cleanup()
{
    qApp->setStyleSheet(QString());
    home_.reset();
}

// ---- The card ------------------------------------------------------------------------------

void RibbonGroupTest::theIndexChoosesOneOfThreeShades_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("alt");
    QTest::newRow("the first") << 0 << "0";
    QTest::newRow("the second") << 1 << "1";
    QTest::newRow("the third") << 2 << "2";
    QTest::newRow("the fourth as the first") << 3 << "0";
    QTest::newRow("the eighth as the second") << 7 << "1";
}

void RibbonGroupTest::theIndexChoosesOneOfThreeShades()
{
    QFETCH(int, index);
    const RibbonGroup group("Voz", index);
    QCOMPARE(group.property("alt").typeId(), int(QMetaType::QString));
    QTEST(group.property("alt").toString(), "alt");
}

void RibbonGroupTest::theThreeShadesDifferInBothThemes_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void RibbonGroupTest::theThreeShadesDifferInBothThemes()
{
    QFETCH(bool, dark);
    ThemeManager::instance()->setDark(dark);
    QVERIFY(shadeOf(0) != shadeOf(1));
    QVERIFY(shadeOf(1) != shadeOf(2));
    QVERIFY(shadeOf(2) != shadeOf(0));
    QCOMPARE(shadeOf(3), shadeOf(0));
}

void RibbonGroupTest::theGroupIsAFrameWithAName()
{
    QWidget parent;
    const auto* group = new RibbonGroup("Voz", 0, &parent);
    QCOMPARE(group->parentWidget(), &parent);
    QCOMPARE(group->objectName(), "grupo_ribbon");
    QVERIFY(qobject_cast<const QFrame*>(group));
}

void RibbonGroupTest::theTitleIsInUpperCase_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("shown");
    QTest::newRow("words") << "Tempo y tonalidad"
                           << "TEMPO Y TONALIDAD";
    QTest::newRow("with an accent") << "Reproducción"
                                    << "REPRODUCCIÓN";
    QTest::newRow("no title") << QString() << QString();
}

void RibbonGroupTest::theTitleIsInUpperCase()
{
    QFETCH(QString, title);
    QTEST(header(RibbonGroup(title, 0))->text(), "shown");
}

void RibbonGroupTest::theHeaderStandsCentredOverTheRow()
{
    RibbonGroup group("Voz", 0);
    group.addCard("●", "Grabar", QString(), false);
    group.show();
    QCOMPARE(header(group)->alignment(), Qt::AlignCenter);
    QCOMPARE(layoutOf(&group)->indexOf(header(group)), 0);
    QCOMPARE(layoutOf(&group)->indexOf(row(group)), 1);
    QCOMPARE(placeOf(header(group)).left(), 0);
    QCOMPARE(header(group)->width(), group.width());
    QVERIFY(placeOf(header(group)).bottom() < placeOf(row(group)).top());
}

void RibbonGroupTest::theCardLeavesRoomAtTheBottomOnly()
{
    const RibbonGroup group("Voz", 0);
    QVERIFY(layoutOf<QVBoxLayout>(&group));
    QCOMPARE(group.layout()->contentsMargins(), QMargins(0, 0, 0, 4));
    QCOMPARE(group.layout()->spacing(), 4);
}

void RibbonGroupTest::theRowLeavesRoomAtBothSides()
{
    const RibbonGroup group("Voz", 0);
    QVERIFY(layoutOf<QHBoxLayout>(row(group)));
    QCOMPARE(row(group)->layout()->contentsMargins(), QMargins(5, 0, 5, 0));
    QCOMPARE(row(group)->layout()->spacing(), 4);
}

// ---- Buttons -------------------------------------------------------------------------------

void RibbonGroupTest::aCardIsAButton()
{
    RibbonGroup group("Voz", 0);
    const QToolButton* button = group.addCard("●", "Grabar", "Grabar tu voz", false);
    QCOMPARE(Widgets::over<QToolButton>(group, "Grabar"), button);
    QCOMPARE(button->objectName(), "btn_toolbar");
    QCOMPARE(button->text(), "●");
    QCOMPARE(button->toolTip(), "Grabar tu voz");
    QCOMPARE(button->cursor().shape(), Qt::PointingHandCursor);
    QCOMPARE(button->focusPolicy(), Qt::NoFocus);
    QVERIFY(!button->isCheckable());
}

void RibbonGroupTest::aCardMayBeCheckable()
{
    RibbonGroup group("Voz", 0);
    QToolButton* button = group.addCard("⟳", "Repetir", QString(), true);
    QVERIFY(button->isCheckable() && !button->isChecked());
    Widgets::click(button);
    QVERIFY(button->isChecked());
    Widgets::click(button);
    QVERIFY(!button->isChecked());
}

void RibbonGroupTest::aCardIsClicked()
{
    RibbonGroup group("Voz", 0);
    QToolButton* button = group.addCard("●", "Grabar", QString(), false);
    const QSignalSpy clicked(button, &QToolButton::clicked);
    group.show();
    Widgets::click(button);
    QCOMPARE(clicked.count(), 1);
    QVERIFY(!button->isChecked());
}

void RibbonGroupTest::aCardTakesNoFocus()
{
    QWidget window;
    QVBoxLayout layout(&window);
    auto* editor = new QLineEdit;
    auto* group = new RibbonGroup("Voz", 0);
    layout.addWidget(editor);
    layout.addWidget(group);
    QToolButton* button = group->addCard("⟳", "Repetir", QString(), true);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    editor->setFocus();
    Widgets::click(button);
    QVERIFY(button->isChecked());
    QCOMPARE(QApplication::focusWidget(), editor);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QVERIFY(!button->hasFocus());
}

void RibbonGroupTest::theCaptionStandsCentredUnderTheButton()
{
    RibbonGroup group("Voz", 0);
    const QToolButton* button = group.addCard("●", "Una palabra larga", QString(), false);
    group.show();
    const QLabel* caption = Widgets::withText<QLabel>(group, "Una palabra larga");
    QCOMPARE(caption->objectName(), "lbl_toolbar");
    QCOMPARE(caption->parentWidget(), button->parentWidget());
    QVERIFY(placeOf(caption).top() > placeOf(button).bottom());
    QVERIFY(std::abs(middleOf(caption) - middleOf(button)) <= 1);
    const QLayout* column = button->parentWidget()->layout();
    QCOMPARE(column->itemAt(column->indexOf(button))->alignment(), Qt::AlignHCenter);
    QCOMPARE(column->itemAt(column->indexOf(caption))->alignment(), Qt::AlignHCenter);
}

void RibbonGroupTest::columnsAreTransparentByNameAndDense()
{
    RibbonGroup group("Voz", 0);
    group.addCard("●", "Grabar", QString(), false);
    group.addLabeledWidget(new QSpinBox, "Del compás");
    QCOMPARE(columns(group).size(), 2);
    for (const QWidget* column : columns(group)) {
        QVERIFY(layoutOf<QVBoxLayout>(column));
        QCOMPARE(column->layout()->contentsMargins(), QMargins(0, 0, 0, 0));
        QCOMPARE(column->layout()->spacing(), 2);
    }
}

void RibbonGroupTest::columnsStandInTheOrderOfAdding()
{
    RibbonGroup group("Voz", 0);
    const QWidget* first = group.addCard("●", "Grabar", QString(), false);
    auto* second = new QSpinBox;
    group.addLabeledWidget(second, "Del compás");
    const QWidget* third = group.addCard("⇩", "Importar", QString(), false);
    group.show();
    QVERIFY(placeOf(first).right() < placeOf(second).left());
    QVERIFY(placeOf(second).right() < placeOf(third).left());
}

void RibbonGroupTest::aScreenReaderSaysTheCaption()
{
    RibbonGroup group("Voz", 0);
    QToolButton* button = group.addCard("●", "Grabar", "Grabar tu voz", false);
    const QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(button);
    QCOMPARE(accessible->text(QAccessible::Name), "Grabar");
    QCOMPARE(accessible->text(QAccessible::Description), "Grabar tu voz");
}

// ---- Controls ------------------------------------------------------------------------------

void RibbonGroupTest::aControlStandsBetweenStretches()
{
    RibbonGroup group("Voz", 0);
    auto* control = new QSpinBox;
    group.addLabeledWidget(control, "Del compás");
    const QLabel* caption = Widgets::withText<QLabel>(group, "Del compás");
    QCOMPARE(caption->objectName(), "lbl_toolbar");
    const QLayout* column = control->parentWidget()->layout();
    QCOMPARE(column->count(), 4);
    QVERIFY(column->itemAt(0)->spacerItem());
    QCOMPARE(column->itemAt(1)->widget(), control);
    QVERIFY(column->itemAt(2)->spacerItem());
    QCOMPARE(column->itemAt(3)->widget(), caption);
    QCOMPARE(column->itemAt(3)->alignment(), Qt::AlignHCenter);
}

void RibbonGroupTest::theCaptionIsTheBuddyOfItsControl()
{
    RibbonGroup group("Voz", 0);
    auto* control = new QSpinBox;
    group.addLabeledWidget(control, "Del compás");
    QCOMPARE(Widgets::withText<QLabel>(group, "Del compás")->buddy(), control);
    QCOMPARE(QAccessible::queryAccessibleInterface(control)->text(QAccessible::Name), "Del compás");
}

void RibbonGroupTest::aControlBelongsToTheGroup()
{
    const QPointer<QSpinBox> control = new QSpinBox;
    {
        RibbonGroup group("Voz", 0);
        group.addLabeledWidget(control, "Del compás");
        QVERIFY(group.isAncestorOf(control));
    }
    QVERIFY(control.isNull());
}

void RibbonGroupTest::aControlKeepsItsFocus()
{
    RibbonGroup group("Voz", 0);
    auto* control = new QSpinBox;
    const Qt::FocusPolicy policy = control->focusPolicy();
    group.addLabeledWidget(control, "Del compás");
    QVERIFY(policy != Qt::NoFocus);
    QCOMPARE(control->focusPolicy(), policy);
}

void RibbonGroupTest::spacingMovesTheNextColumn()
{
    const auto gapWith = [](int spacing) {
        RibbonGroup group("Voz", 0);
        group.addCard("●", "Grabar", QString(), false);
        if (spacing > 0)
            group.addSpacing(spacing);
        group.addCard("⇩", "Importar", QString(), false);
        group.show();
        const QList<QWidget*> both = columns(group);
        return placeOf(both.at(1)).left() - placeOf(both.at(0)).right() - 1;
    };
    QCOMPARE(gapWith(0), 4);
    QCOMPARE(gapWith(12), 16);
    QCOMPARE(gapWith(30), 34);
}

VELTA_TEST(RibbonGroupTest)

} // namespace RibbonGroupTests

#include "RibbonGroupTest.moc"
