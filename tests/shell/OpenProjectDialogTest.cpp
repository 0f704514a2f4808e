#include "shell/OpenProjectDialog.h"

#include "support/SavedWorks.h"
#include "support/ScriptedPrompts.h"
#include "support/TestProgram.h"
#include "support/Widgets.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace OpenProjectDialogTests {

namespace {

const QStringList kSevenWorks{"Zamba de mi pueblo", "Canción de cuna", "Chacarera", "Tarea",
                              "La zamba",           "Milonga",         "Huayno"};

} // namespace

class OpenProjectDialogTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theWorkThatWasWrittenLastIsFirst();
    void aWorkSaysWhatTellsItFromOthers_data();
    void aWorkSaysWhatTellsItFromOthers();
    void aWorkSaysItsRhythm();
    void aLargeWorkSaysItsTimeAlone();
    void everyItemHoldsItsId();
    void theFirstWorkIsCurrent();
    void theListTakesTheSpace();
    void theButtonsHaveTheirRoles();
    void theListHasItsLabel();
    void namesAreNoMarkup();

    void fewWorksNeedNoSearch();
    void aSearchLeavesWhatItNames_data();
    void aSearchLeavesWhatItNames();
    void whatIsFoundIsChosenFromTheField();

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

    /// The first lines.
    QStringList titles() const
    {
        QStringList all;
        for (int row = 0; row < list()->count(); ++row) {
            if (!list()->item(row)->isHidden())
                all.append(list()->item(row)->text().section('\n', 0, 0));
        }
        return all;
    }

    /// Works of these names, each a day older than the one before.
    std::unique_ptr<OpenProjectDialog> dialogOf(const QStringList& names)
    {
        QList<ProjectInfo> infos;
        for (const QString& name : names)
            infos.append(
                {.id = name,
                 .name = name,
                 .modifiedAt = QDateTime(QDate(2026, 11, 20), QTime(9, 5)).addDays(-infos.size()),
                 .folderPath = QString()});
        return std::make_unique<OpenProjectDialog>(infos, &works_->storage(), *prompts_);
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

void OpenProjectDialogTest::theWorkThatWasWrittenLastIsFirst()
{
    QCOMPARE(dialog_->windowTitle(), "Abrir obra");
    QCOMPARE(titles(), (QStringList{"Zamba de mi pueblo", "Canción de cuna", "Mi canción"}));
}

void OpenProjectDialogTest::aWorkSaysWhatTellsItFromOthers_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("root");
    QTest::addColumn<int>("mode");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("line");
    const TimeSignature four;
    const TimeSignature sixEight{.numerator = 6, .denominator = 8, .isCompound = true};
    QTest::newRow("major") << four << 0 << 0 << 24.4 << "0:24  ·  4/4  ·  Do mayor";
    QTest::newRow("minor") << sixEight << 9 << 1 << 192.0 << "3:12  ·  6/8  ·  La menor";
    QTest::newRow("dorian") << four << 2 << 2 << 59.6 << "1:00  ·  4/4  ·  Re dórico";
    QTest::newRow("lydian") << four << 6 << 3 << 0.0 << "0:00  ·  4/4  ·  Fa# lidio";
    QTest::newRow("no mode") << four << -1 << 9 << 4500.0 << "75:00  ·  4/4  ·  Si mayor";
}

void OpenProjectDialogTest::aWorkSaysWhatTellsItFromOthers()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, root);
    QFETCH(int, mode);
    QFETCH(double, seconds);
    QFETCH(QString, line);
    const SongFacts song{.timeSignature = meter,
                         .key = {.rootPitchClass = root, .mode = static_cast<KeyMode>(mode)},
                         .seconds = seconds};
    const ProjectInfo info{.id = "x",
                           .name = "Tarea",
                           .modifiedAt = QDateTime(QDate(2026, 11, 22), QTime(8, 5)),
                           .folderPath = QString(),
                           .song = song};
    const OpenProjectDialog dialog({info}, &works_->storage(), *prompts_);
    QCOMPARE(dialog.findChild<QListWidget*>()->item(0)->text(),
             "Tarea\n22/11/2026 08:05  ·  " + line);
}

void OpenProjectDialogTest::aWorkSaysItsRhythm()
{
    const auto textOf = [this](const QString& rhythmId) {
        SongFacts song;
        song.seconds = 24.0;
        song.rhythmId = rhythmId;
        const ProjectInfo info{.id = "x",
                               .name = "Tarea",
                               .modifiedAt = QDateTime(QDate(2026, 11, 22), QTime(8, 5)),
                               .folderPath = QString(),
                               .song = song};
        const auto nameOf = [](const QString& id) { return id == "z" ? "Zamba" : QString(); };
        const OpenProjectDialog dialog({info}, &works_->storage(), *prompts_, nullptr, nameOf);
        return dialog.findChild<QListWidget*>()->item(0)->text();
    };
    const QString line = "Tarea\n22/11/2026 08:05  ·  0:24  ·  4/4  ·  Do mayor";
    QCOMPARE(textOf("z"), line + "  ·  Zamba");
    QCOMPARE(textOf(QString()), line);
}

void OpenProjectDialogTest::aLargeWorkSaysItsTimeAlone()
{
    const auto dialog = dialogOf({"Tarea"});
    QCOMPARE(dialog->findChild<QListWidget*>()->item(0)->text(), "Tarea\n20/11/2026 09:05");
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
    QCOMPARE(box()->buttons().size(), 4);
    QCOMPARE(box()->buttonRole(Widgets::withText<QPushButton>(*dialog_, "Borrar")),
             QDialogButtonBox::DestructiveRole);
    QCOMPARE(box()->buttonRole(Widgets::withText<QPushButton>(*dialog_, "Desde un archivo…")),
             QDialogButtonBox::ActionRole);
}

void OpenProjectDialogTest::theListHasItsLabel()
{
    QCOMPARE(Widgets::withText<QLabel>(*dialog_, "Obras guardadas:")->buddy(), list());
}

void OpenProjectDialogTest::namesAreNoMarkup()
{
    works_->save("marca", "<b>%1</b> & %2", QDate(2026, 1, 2));
    const OpenProjectDialog dialog(works_->storage().listProjects(), &works_->storage(), *prompts_);
    const auto* list = dialog.findChild<QListWidget*>();
    QVERIFY(list->item(2)->text().startsWith("<b>%1</b> & %2\n02/01/2026 12:00"));
}

// ---- Searching -----------------------------------------------------------------------------

void OpenProjectDialogTest::fewWorksNeedNoSearch()
{
    QVERIFY(!dialog_->findChild<QLineEdit*>());
    QVERIFY(!dialogOf(kSevenWorks)->findChild<QLineEdit*>());
    QVERIFY(dialogOf(kSevenWorks + QStringList{"Gato"})->findChild<QLineEdit*>());
}

void OpenProjectDialogTest::aSearchLeavesWhatItNames_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("found");
    const QStringList all = kSevenWorks + QStringList{"Gato"};
    QTest::newRow("nothing") << "" << all;
    QTest::newRow("a part") << "amb" << QStringList{"Zamba de mi pueblo", "La zamba"};
    QTest::newRow("without accents") << "cancion" << QStringList{"Canción de cuna"};
    QTest::newRow("with accents") << "GÁTO" << QStringList{"Gato"};
    QTest::newRow("words in any order") << "pueblo  zamba" << QStringList{"Zamba de mi pueblo"};
    QTest::newRow("blanks") << "  " << all;
    QTest::newRow("no pattern") << ".*" << QStringList{};
}

void OpenProjectDialogTest::aSearchLeavesWhatItNames()
{
    QFETCH(QString, typed);
    QFETCH(QStringList, found);
    dialog_ = dialogOf(kSevenWorks + QStringList{"Gato"});
    QTest::keyClicks(dialog_->findChild<QLineEdit*>(), typed);
    QCOMPARE(titles(), found);
    const auto first = found.isEmpty() ? std::nullopt : std::optional(found.first());
    QCOMPARE(dialog_->currentId(), first);
}

void OpenProjectDialogTest::whatIsFoundIsChosenFromTheField()
{
    dialog_ = dialogOf(kSevenWorks + QStringList{"Gato"});
    dialog_->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog_.get()));
    auto* field = dialog_->findChild<QLineEdit*>();
    field->setFocus();
    QTest::keyClicks(field, "zamba");
    QTest::keyClick(field, Qt::Key_Down);
    QCOMPARE(dialog_->currentId(), std::optional<QString>("La zamba"));
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(dialog_->result(), int(QDialog::Accepted));
    QCOMPARE(dialog_->currentId(), std::optional<QString>("La zamba"));
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
             QStringList{"ask | Borrar obra | ¿Borrar «Canción de cuna  ·  03/02/2026 12:00»? No "
                         "se puede deshacer. | Yes No | default No"});
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
    QCOMPARE(titles(), (QStringList{"Zamba de mi pueblo", "Mi canción"}));
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

VELTA_TEST(OpenProjectDialogTest)

} // namespace OpenProjectDialogTests

#include "OpenProjectDialogTest.moc"
