#include "shell/OpenProjectDialog.h"

#include "support/SavedWorks.h"
#include "support/ScriptedPrompts.h"
#include "support/Widgets.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

class OpenProjectDialogTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void itListsWorksInTheirOrder();
    void everyItemHoldsItsId();
    void theFirstWorkIsCurrent();
    void theListTakesTheSpace();
    void theButtonsHaveTheirRoles();
    void theListHasItsLabel();
    void namesAreNoMarkup();

    void openAccepts();
    void cancelRejects();
    void aDoubleClickAccepts();
    void theEnterKeyOpensTheChosenWork();
    void theEscapeKeyRejects();

    void deletingAsksWithTheWholeLine();
    void declinedNothingIsDeleted_data();
    void declinedNothingIsDeleted();
    void aDeletedWorkLeavesDiskAndList();
    void withoutACurrentWorkDeletingAsksNothing();
    void aWorkThatResistsLeavesTheListAllTheSame();
    void whenAllAreGoneNoneIsCurrent();

private:
    QListWidget* list() const { return dialog_->findChild<QListWidget*>(); }

    QDialogButtonBox* box() const { return dialog_->findChild<QDialogButtonBox*>(); }

    QStringList texts() const
    {
        QStringList all;
        for (int row = 0; row < list()->count(); ++row)
            all.append(list()->item(row)->text());
        return all;
    }

    void remove() { Widgets::click(Widgets::withText<QPushButton>(*dialog_, "Borrar")); }

    std::unique_ptr<SavedWorks> works_;
    std::unique_ptr<ScriptedPrompts> prompts_;
    std::unique_ptr<OpenProjectDialog> dialog_;
};

void OpenProjectDialogTest::init()
{
    works_ = std::make_unique<SavedWorks>();
    works_->saveThree();
    prompts_ = std::make_unique<ScriptedPrompts>();
    dialog_ = std::make_unique<OpenProjectDialog>(works_->storage().listProjects(),
                                                  &works_->storage(), *prompts_);
    dialog_->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog_.get()));
}

void OpenProjectDialogTest::cleanup()
{
    QVERIFY(prompts_->allAnswersUsed());
    dialog_.reset();
    prompts_.reset();
    works_.reset();
}

// ---- What it shows -------------------------------------------------------------------------

void OpenProjectDialogTest::itListsWorksInTheirOrder()
{
    QCOMPARE(dialog_->windowTitle(), "Abrir obra");
    QCOMPARE(texts(), (QStringList{"Zamba de mi pueblo  ·  20/11/2026",
                                   "Canción de cuna  ·  03/02/2026", "Mi canción  ·  29/02/2024"}));
}

void OpenProjectDialogTest::everyItemHoldsItsId()
{
    const QStringList ids{"zamba", "cuna", "proyecto"};
    for (int row = 0; row < 3; ++row) {
        QCOMPARE(list()->item(row)->data(Qt::UserRole).toString(), ids.at(row));
        list()->setCurrentRow(row);
        QCOMPARE(dialog_->currentId(), std::optional(ids.at(row)));
    }
}

void OpenProjectDialogTest::theFirstWorkIsCurrent()
{
    QCOMPARE(list()->currentRow(), 0);
    QCOMPARE(dialog_->currentId(), std::optional<QString>("zamba"));
}

void OpenProjectDialogTest::theListTakesTheSpace()
{
    const auto* layout = qobject_cast<QVBoxLayout*>(dialog_->layout());
    QVERIFY(layout);
    QCOMPARE(layout->count(), 3);
    QCOMPARE(layout->itemAt(0)->widget(), Widgets::withText<QLabel>(*dialog_, "Obras guardadas:"));
    QCOMPARE(layout->itemAt(1)->widget(), list());
    QCOMPARE(layout->itemAt(2)->widget(), box());
    QCOMPARE(layout->stretch(1), 1);
    const int others = dialog_->height() - list()->height();
    dialog_->resize(900, 900);
    QCOMPARE(dialog_->height() - list()->height(), others);
}

void OpenProjectDialogTest::theButtonsHaveTheirRoles()
{
    QCOMPARE(box()->standardButtons(), QDialogButtonBox::Open | QDialogButtonBox::Cancel);
    QCOMPARE(box()->buttons().size(), 3);
    QCOMPARE(box()->buttonRole(Widgets::withText<QPushButton>(*dialog_, "Borrar")),
             QDialogButtonBox::DestructiveRole);
}

void OpenProjectDialogTest::theListHasItsLabel()
{
    QCOMPARE(Widgets::withText<QLabel>(*dialog_, "Obras guardadas:")->buddy(), list());
}

void OpenProjectDialogTest::namesAreNoMarkup()
{
    works_->save("marca", "<b>%1</b> & %2", QDate(2026, 1, 2));
    const OpenProjectDialog dialog(works_->storage().listProjects(), &works_->storage(), *prompts_);
    QCOMPARE(dialog.findChild<QListWidget*>()->item(3)->text(), "<b>%1</b> & %2  ·  02/01/2026");
}

// ---- How it ends ---------------------------------------------------------------------------

void OpenProjectDialogTest::openAccepts()
{
    list()->setCurrentRow(1);
    Widgets::click(box()->button(QDialogButtonBox::Open));
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Accepted));
    QCOMPARE(dialog_->currentId(), std::optional<QString>("cuna"));
}

void OpenProjectDialogTest::cancelRejects()
{
    Widgets::click(box()->button(QDialogButtonBox::Cancel));
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Rejected));
}

void OpenProjectDialogTest::aDoubleClickAccepts()
{
    const QPoint place = list()->visualItemRect(list()->item(2)).center();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, place);
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Accepted));
    QCOMPARE(dialog_->currentId(), std::optional<QString>("proyecto"));
}

void OpenProjectDialogTest::theEnterKeyOpensTheChosenWork()
{
    list()->setFocus();
    QTest::keyClick(list(), Qt::Key_Down);
    QTest::keyClick(list(), Qt::Key_Return);
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Accepted));
    QCOMPARE(dialog_->currentId(), std::optional<QString>("cuna"));
}

void OpenProjectDialogTest::theEscapeKeyRejects()
{
    QTest::keyClick(list(), Qt::Key_Escape);
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Rejected));
}

// ---- Deleting ------------------------------------------------------------------------------

void OpenProjectDialogTest::deletingAsksWithTheWholeLine()
{
    list()->setCurrentRow(1);
    prompts_->answer(QMessageBox::No);
    remove();
    QCOMPARE(prompts_->calls(),
             QStringList{"ask | Borrar obra | ¿Borrar «Canción de cuna  ·  03/02/2026»? No se "
                         "puede deshacer. | Yes No | default No"});
}

void OpenProjectDialogTest::declinedNothingIsDeleted_data()
{
    QTest::addColumn<int>("answer");
    QTest::newRow("No") << int(QMessageBox::No);
    QTest::newRow("closed") << int(QMessageBox::Cancel);
}

void OpenProjectDialogTest::declinedNothingIsDeleted()
{
    QFETCH(int, answer);
    prompts_->answer(static_cast<QMessageBox::StandardButton>(answer));
    remove();
    QVERIFY(works_->exists("zamba"));
    QCOMPARE(list()->count(), 3);
    QVERIFY(dialog_->isVisible());
}

void OpenProjectDialogTest::aDeletedWorkLeavesDiskAndList()
{
    list()->setCurrentRow(1);
    prompts_->answer(QMessageBox::Yes);
    remove();
    QVERIFY(!QFile::exists(works_->folder("cuna")));
    QVERIFY(works_->exists("zamba") && works_->exists("proyecto"));
    QCOMPARE(texts(),
             (QStringList{"Zamba de mi pueblo  ·  20/11/2026", "Mi canción  ·  29/02/2024"}));
    QVERIFY(dialog_->isVisible());
    QVERIFY(dialog_->currentId() != std::optional<QString>("cuna"));
}

void OpenProjectDialogTest::withoutACurrentWorkDeletingAsksNothing()
{
    list()->setCurrentRow(-1);
    remove();
    QCOMPARE(prompts_->calls(), QStringList());
    QCOMPARE(list()->count(), 3);
    QVERIFY(!dialog_->currentId());
}

void OpenProjectDialogTest::aWorkThatResistsLeavesTheListAllTheSame()
{
    QVERIFY(QDir(works_->folder("zamba")).removeRecursively());
    prompts_->answer(QMessageBox::Yes);
    remove();
    QCOMPARE(list()->count(), 2);
    QCOMPARE(prompts_->calls().size(), 1);
}

void OpenProjectDialogTest::whenAllAreGoneNoneIsCurrent()
{
    for (int work = 0; work < 3; ++work) {
        prompts_->answer(QMessageBox::Yes);
        remove();
    }
    QVERIFY(works_->storage().listProjects().isEmpty());
    remove();
    QCOMPARE(prompts_->calls().size(), 3);
    Widgets::click(box()->button(QDialogButtonBox::Open));
    QCOMPARE(dialog_->result(), int(QDialog::Accepted));
    QVERIFY(!dialog_->currentId());
}

QTEST_MAIN(OpenProjectDialogTest)
#include "OpenProjectDialogTest.moc"
