#include "shell/NewProjectDialog.h"
#include "shell/OpenProjectDialog.h"
#include "shell/ProjectGallery.h"
#include "shell/theme/ThemeManager.h"
#include "support/Contrast.h"
#include "support/LayoutFaults.h"
#include "support/SavedWorks.h"
#include "support/ScriptedPrompts.h"
#include "support/Widgets.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

#include <functional>
#include <memory>

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
    void questionsAreWhole();
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

void StyledDialogsTest::questionsAreWhole()
{
    QMessageBox box(QMessageBox::Question, "Obra sin guardar",
                    "«Zamba de mi pueblo» todavía no está guardada. ¿Querés guardarla antes?",
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QVERIFY(LayoutFaults::controlsOf(box).size() >= 4);
    QCOMPARE(LayoutFaults::of(box).join("; "), QString());
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

QTEST_MAIN(StyledDialogsTest)
#include "StyledDialogsTest.moc"
