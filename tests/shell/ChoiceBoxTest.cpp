#include "shell/ChoiceBox.h"

#include "shell/theme/StyleSheet.h"
#include "support/TestProgram.h"
#include "views/Painted.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QScreen>
#include <QTest>

#include <memory>

namespace ChoiceBoxTests {

namespace {

const QString kLongName = "Carnavalito antiguo de la quebrada, con bombo y charango (2/4)";

/// A choice of these names on the screen, 150 pixels wide.
std::unique_ptr<ChoiceBox> boxOf(const QStringList& names)
{
    auto box = std::make_unique<ChoiceBox>(QString());
    for (const QString& name : names)
        box->addItem(name, "id " + name);
    box->resize(150, 26);
    box->show();
    QApplication::processEvents();
    return box;
}

/// How a box of this kind shows its only item. Nothing is shown on the screen, so that no focus
/// makes a difference.
template <typename Box>
QImage pictureOf(Box&& box, const QString& name)
{
    box.addItem(name);
    box.resize(150, 26);
    return painted(&box);
}

QImage pictureOf(const QString& name)
{
    return pictureOf(ChoiceBox(QString()), name);
}

} // namespace

class ChoiceBoxTest : public QObject {
    Q_OBJECT

private slots:

    void cleanup() { qApp->setStyleSheet(QString()); }

    void itHasItsTooltip();
    void theCurrentItemHasAnId();
    void namesDoNotChangeItsWidth();
    void longNamesEndInAnEllipsis_data();
    void longNamesEndInAnEllipsis();
    void shortNamesArePaintedAsTheyAre();
    void longNamesAreWholeInTheListThatDropsDown();
    void theListThatDropsDownStaysOnTheScreen();

    void aDisabledItemCannotBeChosen();
    void theFirstEnabledItemIsSelected_data();
    void theFirstEnabledItemIsSelected();
};

void ChoiceBoxTest::itHasItsTooltip()
{
    QCOMPARE(ChoiceBox("Estilo musical").toolTip(), "Estilo musical");
}

void ChoiceBoxTest::theCurrentItemHasAnId()
{
    QCOMPARE(ChoiceBox(QString()).currentId(), "");
    const auto box = boxOf({"a", "b"});
    QCOMPARE(box->currentId(), "id a");
    box->setCurrentIndex(1);
    QCOMPARE(box->currentId(), "id b");
}

void ChoiceBoxTest::namesDoNotChangeItsWidth()
{
    const auto shortNames = boxOf({"a"});
    const auto longNames = boxOf({"a", kLongName});
    QCOMPARE(longNames->sizeHint(), shortNames->sizeHint());
    QCOMPARE(longNames->minimumSizeHint(), shortNames->minimumSizeHint());
}

void ChoiceBoxTest::longNamesEndInAnEllipsis_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::newRow("without a theme") << "";
    QTest::newRow("light") << styleSheet(false);
    QTest::newRow("dark") << styleSheet(true);
}

void ChoiceBoxTest::longNamesEndInAnEllipsis()
{
    QFETCH(QString, sheet);
    qApp->setStyleSheet(sheet);
    const QImage whole = pictureOf(kLongName);
    int matches = 0;
    for (int letters = 1; letters < kLongName.size(); ++letters)
        matches += pictureOf(kLongName.left(letters) + "…") == whole ? 1 : 0;
    QVERIFY(matches >= 1);
    QVERIFY(pictureOf(kLongName.left(3) + "…") != whole);
}

void ChoiceBoxTest::shortNamesArePaintedAsTheyAre()
{
    QCOMPARE(pictureOf("Zamba (4/4)"), pictureOf(QComboBox(), "Zamba (4/4)"));
    QVERIFY(pictureOf(kLongName) != pictureOf(QComboBox(), kLongName));
}

void ChoiceBoxTest::longNamesAreWholeInTheListThatDropsDown()
{
    const auto box = boxOf({"a", kLongName});
    const int needed = box->view()->fontMetrics().horizontalAdvance(kLongName);
    QVERIFY(needed > box->width());
    box->showPopup();
    QVERIFY(box->view()->viewport()->width() >= needed);
    box->hidePopup();
}

void ChoiceBoxTest::theListThatDropsDownStaysOnTheScreen()
{
    const auto box = boxOf({QString(20000, 'm')});
    box->showPopup();
    const QWidget* list = box->view()->window();
    QVERIFY(list->width() <= list->screen()->availableGeometry().width() + 2);
    box->hidePopup();
}

void ChoiceBoxTest::aDisabledItemCannotBeChosen()
{
    const auto box = boxOf({"a", "b", "c"});
    box->disableItem(1, "por algo");
    QCOMPARE(box->itemData(1, Qt::ToolTipRole).toString(), "por algo");
    QTest::keyClick(box.get(), Qt::Key_Down);
    QCOMPARE(box->currentText(), "c");
    QTest::keyClick(box.get(), Qt::Key_B);
    QCOMPARE(box->currentText(), "c");
}

void ChoiceBoxTest::theFirstEnabledItemIsSelected_data()
{
    QTest::addColumn<QList<int>>("disabled");
    QTest::addColumn<int>("selected");
    QTest::newRow("all enabled") << QList<int>{} << 0;
    QTest::newRow("the first disabled") << QList<int>{0} << 1;
    QTest::newRow("only the last enabled") << QList<int>{0, 1} << 2;
    QTest::newRow("none enabled, none") << QList<int>{0, 1, 2} << -1;
}

void ChoiceBoxTest::theFirstEnabledItemIsSelected()
{
    QFETCH(QList<int>, disabled);
    const auto box = boxOf({"a", "b", "c"});
    box->setCurrentIndex(2);
    for (const int index : disabled)
        box->disableItem(index, QString());
    box->selectFirstEnabled();
    QTEST(box->currentIndex(), "selected");
    ChoiceBox empty{QString()};
    empty.selectFirstEnabled();
    QCOMPARE(empty.currentIndex(), -1);
}

VELTA_TEST(ChoiceBoxTest)

} // namespace ChoiceBoxTests

#include "ChoiceBoxTest.moc"
