#include "shell/ProjectGallery.h"

#include "shell/NewProjectDialog.h"
#include "support/SavedWorks.h"
#include "support/ScriptedPrompts.h"
#include "support/TestProgram.h"
#include "support/Widgets.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

namespace ProjectGalleryTests {

namespace {

/// Fills the form of a new work: 6/8 in B minor at 84.
void fillForm(QDialog& dialog)
{
    auto* name = dialog.findChild<QLineEdit*>();
    name->setText("  Zamba ");
    const auto boxes = dialog.findChildren<QComboBox*>();
    boxes.at(0)->setCurrentIndex(3);
    boxes.at(1)->setCurrentIndex(11);
    boxes.at(2)->setCurrentIndex(1);
    dialog.findChild<QSpinBox*>()->setValue(84);
}

void acceptForm(QDialog& dialog)
{
    Widgets::click(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok));
}

void cancelForm(QDialog& dialog)
{
    fillForm(dialog);
    Widgets::click(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Cancel));
}

/// The settings of a new work, as a caller has them before it asks.
struct Settings {
    QString name = "antes";
    TimeSignature meter{.numerator = 5, .denominator = 4};
    KeySignature key{.rootPitchClass = 3, .mode = KeyMode::Lydian};
    int bpm = 77;

    bool ask(ScriptedPrompts& prompts)
    {
        return ProjectGallery::askNewProject(nullptr, &name, &meter, &key, &bpm, prompts);
    }
};

} // namespace

class ProjectGalleryTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // What it shows
    void theColumnHasItsMarginsAndOrder();
    void theTitleIsLargeAndGreen();
    void theListIsOfBigIcons();
    void theListTakesTheSpace();
    void theButtonsStandOnTheLeft();
    void itemsTellNameAndDay();
    void everyItemHoldsItsId();
    void itemsStandCentredUnderTheirIcon();
    void theIconIsANoteOnNothing();
    void tooltipsNameTheWork();
    void anEmptyStorageIsAnEmptyList();
    void refreshingReadsAnew();

    // Opening
    void openingTellsTheCurrentWork();
    void openingWithoutACurrentWorkTellsNothing();
    void aDoubleClickOpens();
    void aClickDoesNotOpen();

    // Deleting
    void deletingAsksWithTheWholeText();
    void declinedNothingIsDeleted_data();
    void declinedNothingIsDeleted();
    void aDeletedWorkLeavesDiskAndList();
    void withoutACurrentWorkDeletingAsksNothing();
    void aWorkThatResistsIsReadAgain();

    // A new work
    void anAcceptedFormGivesAllFour();
    void aCancelledFormWritesNothing();
    void theFormStartsAnewEachTime();
    void aNameOfBlanksComesBackEmpty();
    void newWorksAreAskedForBySignal();
    void aCancelledFormAsksForNothing();
    void theGalleryOnlyTells();

private:
    QListWidget* list() const { return gallery_->findChild<QListWidget*>(); }

    void click(const QString& text)
    {
        Widgets::click(Widgets::withText<QPushButton>(*gallery_, text));
    }

    QPoint placeOf(int row) const { return list()->visualItemRect(list()->item(row)).center(); }

    QStringList texts() const
    {
        QStringList all;
        for (int row = 0; row < list()->count(); ++row)
            all.append(list()->item(row)->text());
        return all;
    }

    std::unique_ptr<SavedWorks> works_;
    std::unique_ptr<ScriptedPrompts> prompts_;
    std::unique_ptr<ProjectGallery> gallery_;
};

void ProjectGalleryTest::init()
{
    works_ = std::make_unique<SavedWorks>();
    works_->saveThree();
    prompts_ = std::make_unique<ScriptedPrompts>();
    gallery_ = std::make_unique<ProjectGallery>(&works_->storage(), nullptr, *prompts_);
    gallery_->resize(700, 500);
    gallery_->show();
}

void ProjectGalleryTest::cleanup()
{
    QVERIFY(prompts_->allAnswersUsed());
    gallery_.reset();
    prompts_.reset();
    works_.reset();
}

// ---- What it shows -------------------------------------------------------------------------

void ProjectGalleryTest::theColumnHasItsMarginsAndOrder()
{
    const auto* layout = qobject_cast<QVBoxLayout*>(gallery_->layout());
    QVERIFY(layout);
    QCOMPARE(layout->contentsMargins(), QMargins(40, 30, 40, 30));
    QCOMPARE(layout->count(), 5);
    QCOMPARE(layout->itemAt(0)->widget(), Widgets::withText<QLabel>(*gallery_, "Velta"));
    QCOMPARE(layout->itemAt(1)->widget(),
             Widgets::withText<QLabel>(*gallery_, "Editor de música de la suite Fulgra"));
    QCOMPARE(layout->itemAt(2)->spacerItem()->sizeHint().height(), 12);
    QCOMPARE(layout->itemAt(3)->widget(), list());
    QVERIFY(layout->itemAt(4)->layout());
}

void ProjectGalleryTest::theTitleIsLargeAndGreen()
{
    const auto* title = Widgets::withText<QLabel>(*gallery_, "Velta");
    QCOMPARE(title->font().pointSize(), 26);
    QCOMPARE(title->font().weight(), QFont::Bold);
    QCOMPARE(title->font().family(), gallery_->font().family());
    QCOMPARE(title->styleSheet(), "color: #4A7325;");
}

void ProjectGalleryTest::theListIsOfBigIcons()
{
    QCOMPARE(list()->viewMode(), QListView::IconMode);
    QCOMPARE(list()->iconSize(), QSize(56, 56));
    QCOMPARE(list()->gridSize(), QSize(150, 122));
    QCOMPARE(list()->resizeMode(), QListView::Adjust);
    QCOMPARE(list()->movement(), QListView::Static);
    QVERIFY(list()->wordWrap());
}

void ProjectGalleryTest::theListTakesTheSpace()
{
    QCOMPARE(qobject_cast<QVBoxLayout*>(gallery_->layout())->stretch(3), 1);
    const int others = gallery_->height() - list()->height();
    gallery_->resize(900, 900);
    QCOMPARE(gallery_->height() - list()->height(), others);
}

void ProjectGalleryTest::theButtonsStandOnTheLeft()
{
    const QLayout* row = gallery_->layout()->itemAt(4)->layout();
    QStringList texts;
    for (int i = 0; i < 3; ++i)
        texts.append(qobject_cast<QPushButton*>(row->itemAt(i)->widget())->text());
    QCOMPARE(texts, (QStringList{"Nuevo proyecto", "Abrir", "Borrar"}));
    QCOMPARE(row->count(), 4);
    QVERIFY(row->itemAt(3)->spacerItem());
    QCOMPARE(Widgets::withText<QPushButton>(*gallery_, "Nuevo proyecto")->styleSheet(),
             "QPushButton { background-color: #4A7325; color: white; padding: 6px 16px; "
             "border-radius: 4px; }");
    QVERIFY(Widgets::withText<QPushButton>(*gallery_, "Borrar")->geometry().right() < 500);
}

void ProjectGalleryTest::itemsTellNameAndDay()
{
    QCOMPARE(texts(), (QStringList{"Zamba de mi pueblo\n20/11/2026", "Canción de cuna\n03/02/2026",
                                   "Mi canción\n29/02/2024"}));
}

void ProjectGalleryTest::everyItemHoldsItsId()
{
    const QStringList ids{"zamba", "cuna", "proyecto"};
    for (int row = 0; row < 3; ++row)
        QCOMPARE(list()->item(row)->data(Qt::UserRole).toString(), ids.at(row));
}

void ProjectGalleryTest::itemsStandCentredUnderTheirIcon()
{
    for (int row = 0; row < 3; ++row)
        QCOMPARE(list()->item(row)->textAlignment(), int(Qt::AlignHCenter | Qt::AlignTop));
}

void ProjectGalleryTest::theIconIsANoteOnNothing()
{
    const QIcon icon = list()->item(0)->icon();
    QCOMPARE(icon.availableSizes(), QList{QSize(56, 56)});
    const QImage image = icon.pixmap(56, 56).toImage();
    QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
    QCOMPARE(image.pixelColor(image.width() - 1, image.height() - 1).alpha(), 0);
    int painted = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            painted += image.pixelColor(x, y).alpha() > 0 ? 1 : 0;
    }
    QVERIFY(painted > 50);
}

void ProjectGalleryTest::tooltipsNameTheWork()
{
    QCOMPARE(list()->item(0)->toolTip(), "Abrir «Zamba de mi pueblo»");
    QCOMPARE(list()->item(2)->toolTip(), "Abrir «Mi canción»");
}

void ProjectGalleryTest::anEmptyStorageIsAnEmptyList()
{
    SavedWorks none;
    const ProjectGallery gallery(&none.storage(), nullptr, *prompts_);
    QCOMPARE(gallery.findChild<QListWidget*>()->count(), 0);
}

void ProjectGalleryTest::refreshingReadsAnew()
{
    works_->save("huayno", "Huayno", QDate(2025, 12, 31));
    QVERIFY(works_->storage().deleteProject("cuna"));
    QCOMPARE(list()->count(), 3);
    gallery_->refresh();
    QCOMPARE(texts(), (QStringList{"Zamba de mi pueblo\n20/11/2026", "Mi canción\n29/02/2024",
                                   "Huayno\n31/12/2025"}));
    gallery_->refresh();
    QCOMPARE(list()->count(), 3);
}

// ---- Opening -------------------------------------------------------------------------------

void ProjectGalleryTest::openingTellsTheCurrentWork()
{
    const QSignalSpy opened(gallery_.get(), &ProjectGallery::openRequested);
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, placeOf(1));
    click("Abrir");
    QCOMPARE(opened.count(), 1);
    QCOMPARE(opened.at(0).at(0).toString(), "cuna");
}

void ProjectGalleryTest::openingWithoutACurrentWorkTellsNothing()
{
    const QSignalSpy opened(gallery_.get(), &ProjectGallery::openRequested);
    list()->setCurrentRow(-1);
    click("Abrir");
    QCOMPARE(opened.count(), 0);
}

void ProjectGalleryTest::aDoubleClickOpens()
{
    const QSignalSpy opened(gallery_.get(), &ProjectGallery::openRequested);
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, placeOf(2));
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, placeOf(2));
    QCOMPARE(opened.count(), 1);
    QCOMPARE(opened.at(0).at(0).toString(), "proyecto");
}

void ProjectGalleryTest::aClickDoesNotOpen()
{
    const QSignalSpy opened(gallery_.get(), &ProjectGallery::openRequested);
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, placeOf(0));
    QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {},
                       list()->viewport()->rect().bottomRight() - QPoint(2, 2));
    QCOMPARE(opened.count(), 0);
}

// ---- Deleting ------------------------------------------------------------------------------

void ProjectGalleryTest::deletingAsksWithTheWholeText()
{
    list()->setCurrentRow(2);
    prompts_->answer(QMessageBox::No);
    click("Borrar");
    QCOMPARE(prompts_->calls(),
             QStringList{"ask | Borrar proyecto | ¿Borrar «Mi canción\n29/02/2024»? No se puede "
                         "deshacer. | Yes No | default No"});
}

void ProjectGalleryTest::declinedNothingIsDeleted_data()
{
    QTest::addColumn<int>("answer");
    QTest::newRow("No") << int(QMessageBox::No);
    QTest::newRow("closed") << int(QMessageBox::Cancel);
}

void ProjectGalleryTest::declinedNothingIsDeleted()
{
    QFETCH(int, answer);
    list()->setCurrentRow(0);
    const QStringList before = texts();
    prompts_->answer(static_cast<QMessageBox::StandardButton>(answer));
    click("Borrar");
    QVERIFY(works_->exists("zamba"));
    QCOMPARE(texts(), before);
}

void ProjectGalleryTest::aDeletedWorkLeavesDiskAndList()
{
    list()->setCurrentRow(1);
    prompts_->answer(QMessageBox::Yes);
    click("Borrar");
    QVERIFY(!QFile::exists(works_->folder("cuna")));
    QVERIFY(works_->exists("zamba") && works_->exists("proyecto"));
    QCOMPARE(texts(), (QStringList{"Zamba de mi pueblo\n20/11/2026", "Mi canción\n29/02/2024"}));
}

void ProjectGalleryTest::withoutACurrentWorkDeletingAsksNothing()
{
    list()->setCurrentRow(-1);
    click("Borrar");
    QCOMPARE(prompts_->calls(), QStringList());
    QCOMPARE(list()->count(), 3);
}

void ProjectGalleryTest::aWorkThatResistsIsReadAgain()
{
    // Gone from the disk behind the list's back: the deletion fails, and the list tells the truth.
    list()->setCurrentRow(0);
    QVERIFY(QDir(works_->folder("zamba")).removeRecursively());
    prompts_->answer(QMessageBox::Yes);
    click("Borrar");
    QCOMPARE(texts(), (QStringList{"Canción de cuna\n03/02/2026", "Mi canción\n29/02/2024"}));
    QCOMPARE(prompts_->calls().size(), 1);
}

// ---- A new work ----------------------------------------------------------------------------

void ProjectGalleryTest::anAcceptedFormGivesAllFour()
{
    prompts_->inDialog([](QDialog& dialog) {
        fillForm(dialog);
        acceptForm(dialog);
    });
    Settings settings;
    QVERIFY(settings.ask(*prompts_));
    QCOMPARE(settings.name, "Zamba");
    QCOMPARE(settings.meter, (TimeSignature{.numerator = 6, .denominator = 8, .isCompound = true}));
    QCOMPARE(settings.key, (KeySignature{.rootPitchClass = 11, .mode = KeyMode::Minor}));
    QCOMPARE(settings.bpm, 84);
    QCOMPARE(prompts_->calls(), QStringList{"run | Nuevo proyecto"});
}

void ProjectGalleryTest::aCancelledFormWritesNothing()
{
    prompts_->inDialog(cancelForm);
    Settings settings;
    QVERIFY(!settings.ask(*prompts_));
    const Settings before;
    QCOMPARE(settings.name, before.name);
    QCOMPARE(settings.meter, before.meter);
    QCOMPARE(settings.key, before.key);
    QCOMPARE(settings.bpm, before.bpm);
}

void ProjectGalleryTest::theFormStartsAnewEachTime()
{
    prompts_->inDialog([](QDialog& dialog) {
        fillForm(dialog);
        acceptForm(dialog);
    });
    prompts_->inDialog(acceptForm);
    Settings settings;
    QVERIFY(settings.ask(*prompts_));
    QVERIFY(settings.ask(*prompts_));
    QCOMPARE(settings.name, "Mi canción");
    QCOMPARE(settings.meter, TimeSignature());
    QCOMPARE(settings.key, KeySignature());
    QCOMPARE(settings.bpm, 120);
}

void ProjectGalleryTest::aNameOfBlanksComesBackEmpty()
{
    prompts_->inDialog([](QDialog& dialog) {
        dialog.findChild<QLineEdit*>()->setText("   ");
        acceptForm(dialog);
    });
    Settings settings;
    QVERIFY(settings.ask(*prompts_));
    QCOMPARE(settings.name, QString(""));
}

void ProjectGalleryTest::newWorksAreAskedForBySignal()
{
    prompts_->inDialog([this](QDialog& dialog) {
        QCOMPARE(dialog.parentWidget(), gallery_.get());
        fillForm(dialog);
        acceptForm(dialog);
    });
    const QSignalSpy created(gallery_.get(), &ProjectGallery::createRequested);
    click("Nuevo proyecto");
    QCOMPARE(created.count(), 1);
    QCOMPARE(created.at(0).at(0).toString(), "Zamba");
    QCOMPARE(created.at(0).at(1).value<TimeSignature>(),
             (TimeSignature{.numerator = 6, .denominator = 8, .isCompound = true}));
    QCOMPARE(created.at(0).at(2).value<KeySignature>(),
             (KeySignature{.rootPitchClass = 11, .mode = KeyMode::Minor}));
    QCOMPARE(created.at(0).at(3).toInt(), 84);
}

void ProjectGalleryTest::aCancelledFormAsksForNothing()
{
    prompts_->inDialog(cancelForm);
    const QSignalSpy created(gallery_.get(), &ProjectGallery::createRequested);
    gallery_->openNewProjectDialog();
    QCOMPARE(created.count(), 0);
}

void ProjectGalleryTest::theGalleryOnlyTells()
{
    prompts_->inDialog(acceptForm);
    click("Nuevo proyecto");
    list()->setCurrentRow(0);
    click("Abrir");
    QCOMPARE(works_->storage().listProjects().size(), 3);
    QCOMPARE(list()->count(), 3);
}

VELTA_TEST(ProjectGalleryTest)

} // namespace ProjectGalleryTests

#include "ProjectGalleryTest.moc"
