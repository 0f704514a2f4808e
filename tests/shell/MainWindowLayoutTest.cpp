#include "support/FluidSpy.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QScrollArea>
#include <QSettings>
#include <QSplitter>
#include <QTest>
#include <QVBoxLayout>

namespace MainWindowLayoutTests {

/// How the window is put together.
class MainWindowLayoutTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theWindowHasASizeToReturnTo();
    void theEditorIsTheOnlyPage();
    void theRibbonStandsOverTheEditors();
    void theEditorsStandLeftOfThePanel();
    void theEditorsShareSpareHeightThreeToTwo();
    void thePanelScrollsDownOnly();
    void thePanelKeepsItsWidths();
    void theEditorsTakeAllSpareWidth();
    void theEditorsTakeAllSpareHeight();
    void thePanelMayBeFoldedAway();
    void theNextWindowLooksLikeTheLast();
    void withoutAFormerWindowNothingIsRestored();
    void aDamagedLayoutIsNone();
    void theRibbonFitsTheWindow();
    void theTabKeyGoesThroughTheRibbon();

private:
    QSplitter* columns() { return stage_->window().findChild<QSplitter*>(); }

    QSplitter* editors() { return qobject_cast<QSplitter*>(columns()->widget(0)); }

    QScrollArea* panel() { return qobject_cast<QScrollArea*>(columns()->widget(1)); }

    QVBoxLayout* pageLayout()
    {
        return qobject_cast<QVBoxLayout*>(stage_->pages().widget(0)->layout());
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowLayoutTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
    QVERIFY(stage_->showWindow());
}

void MainWindowLayoutTest::cleanup()
{
    stage_.reset();
}

void MainWindowLayoutTest::theWindowHasASizeToReturnTo()
{
    QCOMPARE(stage_->window().size(), QSize(1360, 860));
    stage_->window().showMaximized();
    stage_->window().showNormal();
    QTRY_COMPARE(stage_->window().size(), QSize(1360, 860));
}

void MainWindowLayoutTest::theEditorIsTheOnlyPage()
{
    QCOMPARE(stage_->window().centralWidget(), &stage_->pages());
    QCOMPARE(stage_->pages().count(), 1);
    QCOMPARE(stage_->pages().currentIndex(), 0);
}

void MainWindowLayoutTest::theRibbonStandsOverTheEditors()
{
    QVERIFY(pageLayout());
    QCOMPARE(pageLayout()->contentsMargins(), QMargins(0, 0, 0, 0));
    QCOMPARE(pageLayout()->spacing(), 0);
    QCOMPARE(pageLayout()->count(), 3);
    // The bar that offers what was not saved stands above all, and is seldom seen.
    QVERIFY(pageLayout()->itemAt(0)->widget()->isHidden());
    QCOMPARE(pageLayout()->itemAt(1)->widget(), &stage_->ribbon());
    QCOMPARE(pageLayout()->itemAt(2)->widget(), columns());
    QCOMPARE(pageLayout()->stretch(0), 0);
    QCOMPARE(pageLayout()->stretch(1), 0);
    QCOMPARE(pageLayout()->stretch(2), 1);
}

void MainWindowLayoutTest::theEditorsStandLeftOfThePanel()
{
    QCOMPARE(columns()->orientation(), Qt::Horizontal);
    QCOMPARE(columns()->count(), 2);
    QVERIFY(editors());
    QCOMPARE(editors()->orientation(), Qt::Vertical);
    QVERIFY(panel());
    QVERIFY(editors()->geometry().right() < panel()->geometry().left());
}

void MainWindowLayoutTest::theEditorsShareSpareHeightThreeToTwo()
{
    QCOMPARE(editors()->count(), 2);
    QCOMPARE(editors()->widget(0)->sizePolicy().verticalStretch(), 3);
    QCOMPARE(editors()->widget(1)->sizePolicy().verticalStretch(), 2);
    const QList<int> before = editors()->sizes();
    stage_->window().resize(1360, 1360);
    QTRY_COMPARE(editors()->sizes().at(0) + editors()->sizes().at(1),
                 before.at(0) + before.at(1) + 500);
    QVERIFY(std::abs(editors()->sizes().at(0) - before.at(0) - 300) <= 2);
}

void MainWindowLayoutTest::thePanelScrollsDownOnly()
{
    QVERIFY(panel()->widgetResizable());
    QCOMPARE(panel()->frameShape(), QFrame::NoFrame);
    QCOMPARE(panel()->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(panel()->verticalScrollBarPolicy(), Qt::ScrollBarAsNeeded);
}

void MainWindowLayoutTest::thePanelKeepsItsWidths()
{
    QCOMPARE(panel()->minimumWidth(), 252);
    QCOMPARE(panel()->maximumWidth(), 352);
    columns()->setSizes({300, 1060});
    QCOMPARE(panel()->width(), 352);
    columns()->setSizes({1200, 160});
    QCOMPARE(panel()->width(), 252);
}

void MainWindowLayoutTest::theEditorsTakeAllSpareWidth()
{
    QCOMPARE(editors()->sizePolicy().horizontalStretch(), 1);
    QCOMPARE(panel()->sizePolicy().horizontalStretch(), 0);
    const int panelWidth = panel()->width();
    const int editorsWidth = editors()->width();
    stage_->window().resize(1760, 860);
    QTRY_COMPARE(editors()->width(), editorsWidth + 400);
    QCOMPARE(panel()->width(), panelWidth);
}

void MainWindowLayoutTest::theEditorsTakeAllSpareHeight()
{
    const int ribbonHeight = stage_->ribbon().height();
    const int editorsHeight = columns()->height();
    stage_->window().resize(1360, 1160);
    QTRY_COMPARE(columns()->height(), editorsHeight + 300);
    QCOMPARE(stage_->ribbon().height(), ribbonHeight);
}

void MainWindowLayoutTest::thePanelMayBeFoldedAway()
{
    QVERIFY(columns()->isCollapsible(1));
    columns()->setSizes({1360, 0});
    QCOMPARE(columns()->sizes().at(1), 0);
    columns()->setSizes({1108, 252});
    QCOMPARE(panel()->width(), 252);
}

void MainWindowLayoutTest::theNextWindowLooksLikeTheLast()
{
    stage_->window().resize(1200, 780);
    columns()->setSizes({900, 300});
    editors()->setSizes({200, 400});
    const QList<int> columnSizes = columns()->sizes();
    const QList<int> editorSizes = editors()->sizes();
    QVERIFY(stage_->window().close());
    stage_->destroyWindow();
    QVERIFY(stage_->window().restoreLayout());
    QVERIFY(stage_->showWindow());
    QTRY_COMPARE(stage_->window().size(), QSize(1200, 780));
    QCOMPARE(columns()->sizes(), columnSizes);
    QCOMPARE(editors()->sizes(), editorSizes);
}

void MainWindowLayoutTest::withoutAFormerWindowNothingIsRestored()
{
    QVERIFY(!stage_->window().restoreLayout());
    QCOMPARE(stage_->window().size(), QSize(1360, 860));
}

void MainWindowLayoutTest::aDamagedLayoutIsNone()
{
    const QList<int> before = columns()->sizes();
    QSettings settings("Ovelin", "Velta");
    for (const char* key : {"ventana/geometria", "ventana/columnas", "ventana/editores"})
        settings.setValue(key, QByteArray("no layout"));
    QVERIFY(!stage_->window().restoreLayout());
    QCOMPARE(stage_->window().size(), QSize(1360, 860));
    QCOMPARE(columns()->sizes(), before);
}

void MainWindowLayoutTest::theRibbonFitsTheWindow()
{
    QVERIFY(stage_->ribbon().minimumSizeHint().width() <= 1360);
    QCOMPARE(stage_->ribbon().width(), 1360);
}

void MainWindowLayoutTest::theTabKeyGoesThroughTheRibbon()
{
    const QStringList captions{"Del compás", "al compás", "Velocidad", "Compás",
                               "Tonalidad",  "Modo",      "Grilla"};
    Widgets::over(stage_->ribbon(), captions.first())->setFocus();
    for (const QString& next : captions.mid(1)) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), Widgets::over(stage_->ribbon(), next));
    }
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ShiftModifier);
    QCOMPARE(QApplication::focusWidget(), Widgets::over(stage_->ribbon(), "Modo"));
}

VELTA_TEST(MainWindowLayoutTest)

} // namespace MainWindowLayoutTests

#include "MainWindowLayoutTest.moc"
