#include "BrowserStage.h"
#include "shell/ExportDialog.h"
#include "shell/NewProjectDialog.h"
#include "shell/OnlineSearchDialog.h"
#include "shell/OpenProjectDialog.h"
#include "shell/ProjectGallery.h"
#include "shell/RecoveryBar.h"
#include "shell/ShortcutsDialog.h"
#include "shell/theme/ThemeManager.h"
#include "storage/RecoveryCopy.h"
#include "support/Contrast.h"
#include "support/LayoutFaults.h"
#include "support/SavedWorks.h"
#include "support/ScriptedPrompts.h"
#include "support/TestProgram.h"
#include "support/Widgets.h"
#include "support/WindowStage.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QTreeWidget>

#include <functional>
#include <memory>

namespace StyledDialogsTests {

/// Every dialog in the program's own style sheet, which decides how large its parts are: in both
/// looks.
class StyledDialogsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase_data();
    void init();
    void cleanup();

    void rowsOfSavedWorksStandBelowOneAnother_data();
    void rowsOfSavedWorksStandBelowOneAnother();
    void theOpenDialogIsWhole_data();
    void theOpenDialogIsWhole();
    void theDialogOfANewWorkIsWhole();
    void theDialogOfTheGalleryIsWhole();
    void questionsAreWhole_data();
    void questionsAreWhole();
    void theDialogOfShortcutsIsWhole();
    void theDialogOfRhythmsIsWhole_data();
    void theDialogOfRhythmsIsWhole();
    void theProgressOfAnExportIsWhole();
    void theOfferToRecoverIsWhole_data();
    void theOfferToRecoverIsWhole();
    void theDefaultButtonIsToldFromTheOthers();
};

void StyledDialogsTest::initTestCase_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void StyledDialogsTest::init()
{
    QFETCH_GLOBAL(bool, dark);
    const UserHome home;
    ThemeManager::instance()->setDark(dark);
}

void StyledDialogsTest::cleanup()
{
    qApp->setStyleSheet(QString());
}

void StyledDialogsTest::rowsOfSavedWorksStandBelowOneAnother_data()
{
    QTest::addColumn<int>("works");
    QTest::newRow("one") << 1;
    QTest::newRow("two") << 2;
    QTest::newRow("nine") << 9;
    QTest::newRow("more than fit") << 60;
}

void StyledDialogsTest::rowsOfSavedWorksStandBelowOneAnother()
{
    QFETCH(int, works);
    SavedWorks saved;
    for (int work = 0; work < works; ++work)
        saved.save(QString("obra_%1").arg(work), QString("Canción %1").arg(work),
                   QDate(2026, 11, 1));
    ScriptedPrompts prompts;
    OpenProjectDialog dialog(saved.storage().listProjects(), &saved.storage(), prompts);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    auto* view = dialog.findChild<QAbstractItemView*>();
    QCOMPARE(view->model()->rowCount(), works);
    QCOMPARE(LayoutFaults::ofRows(*view).join("; "), QString());
    QTest::keyClick(view, Qt::Key_Down);
    QCOMPARE(LayoutFaults::ofRows(*view).join("; "), QString());
}

void StyledDialogsTest::theOpenDialogIsWhole_data()
{
    QTest::addColumn<int>("works");
    QTest::newRow("few") << 3;
    QTest::newRow("enough to search") << 8;
}

void StyledDialogsTest::theOpenDialogIsWhole()
{
    QFETCH(int, works);
    SavedWorks saved;
    for (int work = 0; work < works; ++work)
        saved.save(QString("obra_%1").arg(work), "Tarea", QDate(2026, 11, 1));
    ScriptedPrompts prompts;
    OpenProjectDialog dialog(saved.storage().listProjects(), &saved.storage(), prompts);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(LayoutFaults::controlsOf(dialog).size() >= 4);
    QCOMPARE(LayoutFaults::of(dialog).join("; "), QString());
}

void StyledDialogsTest::theDialogOfANewWorkIsWhole()
{
    NewProjectDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(LayoutFaults::controlsOf(dialog).size() >= 10);
    QCOMPARE(LayoutFaults::of(dialog).join("; "), QString());
    for (const auto* box : dialog.findChildren<QComboBox*>())
        QCOMPARE(LayoutFaults::ofRows(*box->view()).join("; "), QString());
}

void StyledDialogsTest::theDialogOfTheGalleryIsWhole()
{
    SavedWorks saved;
    saved.saveThree();
    ScriptedPrompts prompts;
    ProjectGallery gallery(&saved.storage(), nullptr, prompts);
    gallery.resize(700, 500);
    gallery.show();
    QVERIFY(QTest::qWaitForWindowExposed(&gallery));
    for (const QWidget* control : gallery.findChildren<QAbstractButton*>())
        QVERIFY2(control->width() >= control->minimumSizeHint().width(),
                 qPrintable(LayoutFaults::nameOf(*control)));
}

void StyledDialogsTest::questionsAreWhole_data()
{
    QTest::addColumn<int>("icon");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("buttons");
    QTest::newRow("to save")
        << int(QMessageBox::Question)
        << "«Zamba de mi pueblo» todavía no está guardada. ¿Querés guardarla antes?"
        << int(QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    QTest::newRow("to delete") << int(QMessageBox::Question)
                               << "¿Borrar «Zamba»? No se puede deshacer."
                               << int(QMessageBox::Yes | QMessageBox::No);
    QTest::newRow("a warning") << int(QMessageBox::Warning) << "No se pudo guardar el audio."
                               << int(QMessageBox::Ok);
    QTest::newRow("a long name")
        << int(QMessageBox::Warning)
        << QString("No se pudo guardar «%1».").arg(QString("Zamba de mi pueblo ").repeated(20))
        << int(QMessageBox::Retry | QMessageBox::Cancel);
}

void StyledDialogsTest::questionsAreWhole()
{
    QFETCH(int, icon);
    QFETCH(QString, text);
    QFETCH(int, buttons);
    QMessageBox box(static_cast<QMessageBox::Icon>(icon), "Velta", text,
                    QMessageBox::StandardButtons(buttons));
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QVERIFY(LayoutFaults::controlsOf(box).size() >= 3);
    QCOMPARE(LayoutFaults::of(box).join("; "), QString());
    QVERIFY(box.width() <= 1024);
}

void StyledDialogsTest::theDialogOfShortcutsIsWhole()
{
    WindowStage stage;
    ShortcutsDialog dialog(*stage.window().menuBar());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(LayoutFaults::of(dialog).join("; "), QString());
    const auto* list = dialog.findChild<QTreeWidget*>();
    for (QTreeWidgetItemIterator row(dialog.findChild<QTreeWidget*>()); *row; ++row) {
        const int indent = (*row)->parent() ? list->indentation() : 0;
        for (int column = 0; column < 2; ++column)
            QVERIFY2(QFontMetrics((*row)->font(column)).horizontalAdvance((*row)->text(column)) +
                             (column == 0 ? indent : 0) <=
                         list->columnWidth(column),
                     qPrintable((*row)->text(column)));
    }
    QCOMPARE(list->horizontalScrollBar()->maximum(), 0);
}

void StyledDialogsTest::theDialogOfRhythmsIsWhole_data()
{
    QTest::addColumn<bool>("offline");
    QTest::newRow("while it asks") << false;
    QTest::newRow("offline") << true;
}

void StyledDialogsTest::theDialogOfRhythmsIsWhole()
{
    QFETCH(bool, offline);
    BrowserStage stage;
    stage.load(TestRhythm{.id = "rock", .name = "Rock", .style = "popular"});
    OnlineSearchDialog dialog(stage.library(), stage.catalog, stage.downloads, stage.registry);
    const QSignalSpy failed(&stage.catalog, &ContentCatalog::catalogFailed);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    if (offline) {
        QTRY_COMPARE(failed.size(), 1);
        QTRY_VERIFY(dialog.findChild<QLabel*>()->text().contains("Sin conexión"));
        QCoreApplication::processEvents();
    }
    QVERIFY(LayoutFaults::controlsOf(dialog).size() >= 4);
    QCOMPARE(LayoutFaults::of(dialog).join("; "), QString());
    QCOMPARE(LayoutFaults::ofRows(*dialog.findChild<QListView*>()).join("; "), QString());
}

void StyledDialogsTest::theProgressOfAnExportIsWhole()
{
    ExportDialog dialog("Exportar WAV", nullptr);
    dialog.setValue(40);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(LayoutFaults::controlsOf(dialog).size() >= 2);
    QCOMPARE(LayoutFaults::of(dialog).join("; "), QString());
}

void StyledDialogsTest::theOfferToRecoverIsWhole_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("name");
    QTest::newRow("a short name") << 1360 << "Zamba";
    QTest::newRow("a long name in a narrow window")
        << 900 << QString("Zamba de mi pueblo ").repeated(10).trimmed();
}

void StyledDialogsTest::theOfferToRecoverIsWhole()
{
    QFETCH(int, width);
    QFETCH(QString, name);
    WindowStage stage;
    KeptWork work;
    work.song.name = name;
    work.song.tracks = {Track()};
    QVERIFY(RecoveryCopy(RecoveryCopy::standardFolder()).keepNow(work));
    stage.window().resize(width, 700);
    QVERIFY(stage.showWindow());
    auto* bar = stage.window().findChild<RecoveryBar*>();
    QVERIFY(bar->isVisible());
    QTRY_COMPARE(LayoutFaults::of(*bar).join("; "), QString());
    auto* sentence = bar->findChild<QLabel*>();
    QVERIFY(sentence->text().contains(name));
    QTRY_VERIFY(sentence->height() >= sentence->heightForWidth(sentence->width()));
    QCOMPARE(stage.window().width(), width);
}

void StyledDialogsTest::theDefaultButtonIsToldFromTheOthers()
{
    QMessageBox box(QMessageBox::Question, "Borrar obra", "¿Borrar «Zamba»?",
                    QMessageBox::Yes | QMessageBox::No);
    box.setDefaultButton(QMessageBox::No);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    const auto face = [&](QMessageBox::StandardButton which) {
        const QWidget* button = box.button(which);
        const QPoint inside = button->mapTo(&box, QPoint(6, button->height() / 2));
        return Contrast::pictureOf(box, QRect(inside, QSize(1, 1))).pixelColor(0, 0);
    };
    QVERIFY(Contrast::ratio(face(QMessageBox::No), face(QMessageBox::Yes)) >= 3.0);
}

VELTA_TEST(StyledDialogsTest)

} // namespace StyledDialogsTests

#include "StyledDialogsTest.moc"
