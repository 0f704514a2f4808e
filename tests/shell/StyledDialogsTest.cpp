#include "shell/NewProjectDialog.h"
#include "shell/OpenProjectDialog.h"
#include "shell/ProjectGallery.h"
#include "shell/theme/ThemeManager.h"
#include "support/Contrast.h"
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

namespace {

QString nameOf(const QWidget& widget)
{
    return QString("%1 '%2'").arg(widget.metaObject()->className(),
                                  widget.property("text").toString());
}

/// What a user reads or presses in a dialog. Parts of other controls are theirs to lay out.
QList<QWidget*> controlsOf(const QDialog& dialog)
{
    QList<QWidget*> found;
    for (QWidget* widget : dialog.findChildren<QWidget*>()) {
        const bool isControl =
            qobject_cast<QLabel*>(widget) || qobject_cast<QAbstractButton*>(widget) ||
            qobject_cast<QComboBox*>(widget) || qobject_cast<QAbstractSpinBox*>(widget) ||
            qobject_cast<QLineEdit*>(widget) || qobject_cast<QAbstractItemView*>(widget);
        if (isControl && widget->isVisible() &&
            !qobject_cast<QAbstractSpinBox*>(widget->parentWidget()) && widget->window() == &dialog)
            found.append(widget);
    }
    return found;
}

QRect placeOf(const QWidget& widget)
{
    return {widget.mapTo(widget.window(), QPoint()), widget.size()};
}

/// What the picture of a dialog shows to be wrong; empty where nothing is.
QStringList faultsOf(const QDialog& dialog)
{
    QStringList faults;
    const QList<QWidget*> controls = controlsOf(dialog);
    for (qsizetype i = 0; i < controls.size(); ++i) {
        const QWidget& control = *controls[i];
        if (!dialog.rect().contains(placeOf(control)))
            faults.append(nameOf(control) + " sticks out");
        for (qsizetype j = i + 1; j < controls.size(); ++j) {
            if (placeOf(control).intersects(placeOf(*controls[j])) &&
                !control.isAncestorOf(controls[j]) && !controls[j]->isAncestorOf(&control))
                faults.append(nameOf(control) + " lies over " + nameOf(*controls[j]));
        }
        if (qobject_cast<const QAbstractItemView*>(&control))
            continue;
        const QSize needed = control.minimumSizeHint();
        if (control.width() < needed.width() || control.height() < needed.height())
            faults.append(nameOf(control) + " is cut");
    }
    return faults;
}

/// As faultsOf(), for the rows of a list that stand below one another.
QStringList faultsOfRows(const QAbstractItemView& view)
{
    QStringList faults;
    int bottom = -1;
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        const QRect rect = view.visualRect(view.model()->index(row, 0));
        if (rect.top() <= bottom)
            faults.append(
                QString("row %1 begins at %2, over %3").arg(row).arg(rect.top()).arg(bottom));
        if (rect.height() < view.fontMetrics().height())
            faults.append(QString("row %1 is %2 high").arg(row).arg(rect.height()));
        bottom = rect.bottom();
    }
    return faults;
}

} // namespace

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
    QCOMPARE(faultsOfRows(*view).join("; "), QString());
    QTest::keyClick(view, Qt::Key_Down);
    QCOMPARE(faultsOfRows(*view).join("; "), QString());
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
    QVERIFY(controlsOf(dialog).size() >= 4);
    QCOMPARE(faultsOf(dialog).join("; "), QString());
}

void StyledDialogsTest::theDialogOfANewWorkIsWhole()
{
    NewProjectDialog dialog;
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QVERIFY(controlsOf(dialog).size() >= 10);
    QCOMPARE(faultsOf(dialog).join("; "), QString());
    for (const auto* box : dialog.findChildren<QComboBox*>())
        QCOMPARE(faultsOfRows(*box->view()).join("; "), QString());
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
                 qPrintable(nameOf(*control)));
}

void StyledDialogsTest::questionsAreWhole()
{
    QMessageBox box(QMessageBox::Question, "Obra sin guardar",
                    "«Zamba de mi pueblo» todavía no está guardada. ¿Querés guardarla antes?",
                    QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QVERIFY(controlsOf(box).size() >= 4);
    QCOMPARE(faultsOf(box).join("; "), QString());
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
