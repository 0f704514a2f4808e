#include "shell/NewProjectDialog.h"

#include "support/TestProgram.h"
#include "support/Widgets.h"

#include <QAccessible>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

#include <memory>

namespace NewProjectDialogTests {

namespace {

QFormLayout* form(const NewProjectDialog& dialog)
{
    return qobject_cast<QFormLayout*>(dialog.layout());
}

/// The field beside a label.
template <typename Field>
Field* field(const NewProjectDialog& dialog, const QString& label)
{
    const QFormLayout* layout = form(dialog);
    for (int row = 0; row < layout->rowCount(); ++row) {
        const QLayoutItem* item = layout->itemAt(row, QFormLayout::LabelRole);
        const auto* words = item ? qobject_cast<QLabel*>(item->widget()) : nullptr;
        if (words && words->text() == label)
            return qobject_cast<Field*>(layout->itemAt(row, QFormLayout::FieldRole)->widget());
    }
    return nullptr;
}

QStringList entriesOf(const QComboBox* box)
{
    QStringList entries;
    for (int i = 0; i < box->count(); ++i)
        entries.append(box->itemText(i));
    return entries;
}

QPushButton* button(const NewProjectDialog& dialog, QDialogButtonBox::StandardButton which)
{
    return dialog.findChild<QDialogButtonBox*>()->button(which);
}

/// Chooses the entry at an index with the keyboard.
void choose(QComboBox* box, int index)
{
    QTest::keyClick(box, Qt::Key_Home);
    for (int step = 0; step < index; ++step)
        QTest::keyClick(box, Qt::Key_Down);
}

} // namespace

class NewProjectDialogTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theFormHasFiveRows();
    void labelsNameTheirFields_data();
    void labelsNameTheirFields();
    void itStartsWithAPlainWork();
    void theNameIsReplacedByTyping();
    void theMetersAreFour();
    void theKeysStandInPitchClassOrder();
    void theModesAreTwo();
    void theTempoHasARange();

    void aNameIsTrimmed_data();
    void aNameIsTrimmed();
    void everyMeterIsGiven_data();
    void everyMeterIsGiven();
    void everyMeterIsTheDataOfItsEntry();
    void everyKeyIsGiven();
    void bothModesAreGiven();
    void theTempoIsGiven_data();
    void theTempoIsGiven();

    void okAccepts();
    void theEnterKeyAccepts();
    void cancelRejects();
    void theEscapeKeyRejects();

private:
    std::unique_ptr<NewProjectDialog> dialog_;
};

void NewProjectDialogTest::init()
{
    dialog_ = std::make_unique<NewProjectDialog>();
    dialog_->show();
    QVERIFY(QTest::qWaitForWindowActive(dialog_.get()));
}

void NewProjectDialogTest::cleanup()
{
    dialog_.reset();
}

// ---- The form ------------------------------------------------------------------------------

void NewProjectDialogTest::theFormHasFiveRows()
{
    QCOMPARE(dialog_->windowTitle(), "Nuevo proyecto");
    QVERIFY(form(*dialog_));
    QStringList labels;
    for (int row = 0; row < form(*dialog_)->rowCount(); ++row) {
        if (const QLayoutItem* item = form(*dialog_)->itemAt(row, QFormLayout::LabelRole))
            labels.append(qobject_cast<QLabel*>(item->widget())->text());
    }
    QCOMPARE(labels, (QStringList{"Nombre", "Compás", "Tonalidad", "Modo", "BPM"}));
    QCOMPARE(dialog_->findChild<QDialogButtonBox*>()->standardButtons(),
             QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
}

void NewProjectDialogTest::labelsNameTheirFields_data()
{
    QTest::addColumn<QString>("label");
    for (const char* label : {"Nombre", "Compás", "Tonalidad", "Modo", "BPM"})
        QTest::newRow(label) << QString(label);
}

void NewProjectDialogTest::labelsNameTheirFields()
{
    QFETCH(QString, label);
    auto* widget = field<QWidget>(*dialog_, label);
    QVERIFY(widget);
    QCOMPARE(Widgets::withText<QLabel>(*dialog_, label)->buddy(), widget);
    QVERIFY(
        !QAccessible::queryAccessibleInterface(widget)->relations(QAccessible::Label).isEmpty());
}

void NewProjectDialogTest::itStartsWithAPlainWork()
{
    QCOMPARE(field<QLineEdit>(*dialog_, "Nombre")->text(), "Mi canción");
    QCOMPARE(dialog_->name(), "Mi canción");
    QCOMPARE(dialog_->timeSignature(), TimeSignature());
    QCOMPARE(dialog_->key(), KeySignature());
    QCOMPARE(dialog_->bpm(), 120);
}

void NewProjectDialogTest::theNameIsReplacedByTyping()
{
    QCOMPARE(QApplication::focusWidget(), field<QLineEdit>(*dialog_, "Nombre"));
    QTest::keyClicks(QApplication::focusWidget(), "Zamba");
    QCOMPARE(dialog_->name(), "Zamba");
}

void NewProjectDialogTest::theMetersAreFour()
{
    QCOMPARE(entriesOf(field<QComboBox>(*dialog_, "Compás")),
             (QStringList{"4/4", "3/4", "2/4", "6/8"}));
}

void NewProjectDialogTest::theKeysStandInPitchClassOrder()
{
    QCOMPARE(entriesOf(field<QComboBox>(*dialog_, "Tonalidad")),
             (QStringList{"Do / C", "Do# / C#", "Re / D", "Re# / D#", "Mi / E", "Fa / F",
                          "Fa# / F#", "Sol / G", "Sol# / G#", "La / A", "La# / A#", "Si / B"}));
}

void NewProjectDialogTest::theModesAreTwo()
{
    QCOMPARE(entriesOf(field<QComboBox>(*dialog_, "Modo")), (QStringList{"Mayor", "Menor"}));
}

void NewProjectDialogTest::theTempoHasARange()
{
    const auto* bpm = field<QSpinBox>(*dialog_, "BPM");
    QCOMPARE(bpm->minimum(), 40);
    QCOMPARE(bpm->maximum(), 240);
    QCOMPARE(bpm->value(), 120);
}

// ---- What it gives -------------------------------------------------------------------------

void NewProjectDialogTest::aNameIsTrimmed_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("name");
    QTest::newRow("as it is") << "Zamba de mi pueblo"
                              << "Zamba de mi pueblo";
    QTest::newRow("blanks around it") << "  Zamba de mi pueblo "
                                      << "Zamba de mi pueblo";
    QTest::newRow("only blanks") << "   "
                                 << "";
    QTest::newRow("markup") << "<b>x</b>"
                            << "<b>x</b>";
}

void NewProjectDialogTest::aNameIsTrimmed()
{
    QFETCH(QString, typed);
    QTest::keyClicks(field<QLineEdit>(*dialog_, "Nombre"), typed);
    QTEST(dialog_->name(), "name");
}

void NewProjectDialogTest::everyMeterIsGiven_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("numerator");
    QTest::addColumn<int>("denominator");
    QTest::addColumn<bool>("compound");
    QTest::newRow("4/4") << 0 << 4 << 4 << false;
    QTest::newRow("3/4") << 1 << 3 << 4 << false;
    QTest::newRow("2/4") << 2 << 2 << 4 << false;
    QTest::newRow("6/8") << 3 << 6 << 8 << true;
}

void NewProjectDialogTest::everyMeterIsGiven()
{
    QFETCH(int, index);
    auto* meters = field<QComboBox>(*dialog_, "Compás");
    choose(meters, index);
    QCOMPARE(meters->currentText(), QTest::currentDataTag());
    QTEST(dialog_->timeSignature().numerator, "numerator");
    QTEST(dialog_->timeSignature().denominator, "denominator");
    QTEST(dialog_->timeSignature().isCompound, "compound");
}

void NewProjectDialogTest::everyMeterIsTheDataOfItsEntry()
{
    auto* meters = field<QComboBox>(*dialog_, "Compás");
    for (int index = 0; index < meters->count(); ++index) {
        choose(meters, index);
        QCOMPARE(meters->itemData(index).value<TimeSignature>(), dialog_->timeSignature());
    }
}

void NewProjectDialogTest::everyKeyIsGiven()
{
    auto* keys = field<QComboBox>(*dialog_, "Tonalidad");
    for (int root = 0; root < 12; ++root) {
        choose(keys, root);
        QCOMPARE(dialog_->key(), KeySignature{.rootPitchClass = root});
    }
    QCOMPARE(keys->currentText(), "Si / B");
}

void NewProjectDialogTest::bothModesAreGiven()
{
    auto* modes = field<QComboBox>(*dialog_, "Modo");
    choose(modes, 1);
    QCOMPARE(dialog_->key().mode, KeyMode::Minor);
    choose(modes, 0);
    QCOMPARE(dialog_->key().mode, KeyMode::Major);
}

void NewProjectDialogTest::theTempoIsGiven_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("bpm");
    QTest::newRow("the least") << "40" << 40;
    QTest::newRow("the most") << "240" << 240;
    QTest::newRow("below the least") << "39" << 120;
    QTest::newRow("beyond the most") << "241" << 120;
}

void NewProjectDialogTest::theTempoIsGiven()
{
    QFETCH(QString, typed);
    auto* box = field<QSpinBox>(*dialog_, "BPM");
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, typed);
    Widgets::click(button(*dialog_, QDialogButtonBox::Ok));
    QTEST(dialog_->bpm(), "bpm");
}

// ---- How it ends ---------------------------------------------------------------------------

void NewProjectDialogTest::okAccepts()
{
    Widgets::click(button(*dialog_, QDialogButtonBox::Ok));
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Accepted));
}

void NewProjectDialogTest::theEnterKeyAccepts()
{
    QTest::keyClicks(QApplication::focusWidget(), "Zamba");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Enter);
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Accepted));
    QCOMPARE(dialog_->name(), "Zamba");
}

void NewProjectDialogTest::cancelRejects()
{
    Widgets::click(button(*dialog_, QDialogButtonBox::Cancel));
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Rejected));
}

void NewProjectDialogTest::theEscapeKeyRejects()
{
    QTest::keyClick(dialog_.get(), Qt::Key_Escape);
    QVERIFY(!dialog_->isVisible());
    QCOMPARE(dialog_->result(), int(QDialog::Rejected));
}

VELTA_TEST(NewProjectDialogTest)

} // namespace NewProjectDialogTests

#include "NewProjectDialogTest.moc"
