#include "shell/Prompts.h"

#include "support/Files.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "support/Widgets.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

Q_DECLARE_METATYPE(QMessageBox::StandardButton)
Q_DECLARE_METATYPE(QMessageBox::StandardButtons)

namespace PromptsTests {

namespace {

/// What a message box showed.
struct Box {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    Qt::TextFormat format = Qt::AutoText;
    QMessageBox::StandardButtons buttons;
    bool modal = false;
    QWidget* parent = nullptr;
};

template <typename Dialog>
Dialog* openDialog()
{
    return qobject_cast<Dialog*>(QApplication::activeModalWidget());
}

/// Runs something that opens a dialog, and uses that dialog as soon as it stands.
template <typename Dialog>
void withDialog(const std::function<void()>& open, const std::function<void(Dialog&)>& use)
{
    bool used = false;
    QTimer::singleShot(0, [&] {
        auto* dialog = openDialog<Dialog>();
        if (!dialog)
            return;
        used = true;
        use(*dialog);
        if (dialog->isVisible())
            dialog->reject();
    });
    open();
    QVERIFY2(used, "the dialog did not open");
}

Box boxOf(const QMessageBox& box)
{
    return {.icon = box.icon(),
            .title = box.windowTitle(),
            .text = box.text(),
            .format = box.textFormat(),
            .buttons = box.standardButtons(),
            .modal = box.isModal(),
            .parent = box.parentWidget()};
}

constexpr auto kSaveQuestion = QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel;
constexpr auto kYesNo = QMessageBox::Yes | QMessageBox::No;

} // namespace

class PromptsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void thereIsOneSetOfDialogs();
    void aWarningHasOneButton();
    void anInformationHasOneButton();
    void aQuestionShowsItsButtons();
    void theSaveQuestionHasNoChosenButton();
    void aQuestionMayHaveAButtonForEnter();
    void textsAreNoMarkup_data();
    void textsAreNoMarkup();
    void aQuestionGivesTheButton_data();
    void aQuestionGivesTheButton();
    void aClosedQuestionIsGivenUp_data();
    void aClosedQuestionIsGivenUp();

    void aTextStartsWithTheProposal();
    void aTextIsGivenAsTyped_data();
    void aTextIsGivenAsTyped();
    void anEmptyTextIsAnAnswer();
    void aCancelledTextIsNone();

    void anOfferIsTakenOrNot();
    void aFileIsProposedInTheCurrentFolder();
    void aFileIsProposedWhereItCanBeWritten();
    void aFileIsGivenAsChosen();
    void aNameWithoutAnEndingGetsOne_data();
    void aNameWithoutAnEndingGetsOne();
    void aFileOfTheWholeNameIsNotReplacedUnasked();
    void theFolderOfTheLastFileIsProposed();
    void aCancelledFileIsNone();
    void aFileToOpenIsGivenAsChosen();
    void noFileToOpenIsNone();
    void aNameWithSlashesStaysInTheFolder_data();
    void aNameWithSlashesStaysInTheFolder();

    void aDialogIsAcceptedOrNot_data();
    void aDialogIsAcceptedOrNot();

private:
    /// The answer to a file dialog in whose line a name is typed.
    std::optional<QString> chosen(const QString& typed)
    {
        std::optional<QString> answer;
        withDialog<QFileDialog>(
            [&] {
                answer = prompts_.askSaveFile(window_.get(), "Exportar MIDI", "Zamba.mid",
                                              "MIDI (*.mid)");
            },
            [&](QFileDialog& dialog) {
                dialog.findChild<QLineEdit*>("fileNameEdit")->setText(typed);
                Widgets::click(
                    dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save));
            });
        return answer;
    }

    std::unique_ptr<UserHome> home_;
    std::unique_ptr<QWidget> window_;
    Prompts& prompts_ = Prompts::dialogs();
};

void PromptsTest::initTestCase()
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
}

void PromptsTest::init()
{
    home_ = std::make_unique<UserHome>();
    window_ = std::make_unique<QWidget>();
    window_->show();
}

void PromptsTest::cleanup()
{
    window_.reset();
    home_.reset();
}

// ---- Boxes ---------------------------------------------------------------------------------

void PromptsTest::thereIsOneSetOfDialogs()
{
    QCOMPARE(&Prompts::dialogs(), &prompts_);
}

void PromptsTest::aWarningHasOneButton()
{
    Box shown;
    withDialog<QMessageBox>([&] { prompts_.warn(window_.get(), "Guardar", "No pude."); },
                            [&](QMessageBox& box) {
                                shown = boxOf(box);
                                Widgets::click(box.button(QMessageBox::Ok));
                            });
    QCOMPARE(shown.icon, QMessageBox::Warning);
    QCOMPARE(shown.title, "Guardar");
    QCOMPARE(shown.text, "No pude.");
    QCOMPARE(shown.buttons, QMessageBox::Ok);
    QVERIFY(shown.modal);
    QCOMPARE(shown.parent, window_.get());
}

void PromptsTest::anInformationHasOneButton()
{
    Box shown;
    withDialog<QMessageBox>([&] { prompts_.inform(window_.get(), "Abrir obra", "Nada.\n\nAún."); },
                            [&](QMessageBox& box) {
                                shown = boxOf(box);
                                QTest::keyClick(&box, Qt::Key_Enter);
                            });
    QCOMPARE(shown.icon, QMessageBox::Information);
    QCOMPARE(shown.title, "Abrir obra");
    QCOMPARE(shown.text, "Nada.\n\nAún.");
    QCOMPARE(shown.buttons, QMessageBox::Ok);
    QCOMPARE(shown.parent, window_.get());
}

void PromptsTest::aQuestionShowsItsButtons()
{
    Box shown;
    withDialog<QMessageBox>([&] { prompts_.ask(window_.get(), "Obra", "¿Sí?", kSaveQuestion); },
                            [&](QMessageBox& box) { shown = boxOf(box); });
    QCOMPARE(shown.icon, QMessageBox::Question);
    QCOMPARE(shown.title, "Obra");
    QCOMPARE(shown.text, "¿Sí?");
    QCOMPARE(shown.buttons, kSaveQuestion);
    QVERIFY(shown.modal);
    QCOMPARE(shown.parent, window_.get());
}

void PromptsTest::theSaveQuestionHasNoChosenButton()
{
    QPushButton* chosen = window_->findChild<QPushButton*>();
    withDialog<QMessageBox>([&] { prompts_.ask(window_.get(), "Obra", "¿Sí?", kSaveQuestion); },
                            [&](QMessageBox& box) { chosen = box.defaultButton(); });
    QVERIFY(!chosen);
}

void PromptsTest::aQuestionMayHaveAButtonForEnter()
{
    QMessageBox::StandardButton chosen = QMessageBox::NoButton;
    withDialog<QMessageBox>(
        [&] { prompts_.ask(window_.get(), "Obra", "¿Sí?", kYesNo, QMessageBox::No); },
        [&](QMessageBox& box) { chosen = box.standardButton(box.defaultButton()); });
    QCOMPARE(chosen, QMessageBox::No);
}

void PromptsTest::textsAreNoMarkup_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("bold") << "«<b>x</b>» todavía no está guardada.";
    QTest::newRow("an image") << "<img src=\"/etc/passwd\">";
    QTest::newRow("an entity") << "Truenos &amp; relámpagos";
    QTest::newRow("a document") << "<html><body><h1>Hola</h1></body></html>";
}

void PromptsTest::textsAreNoMarkup()
{
    QFETCH(QString, text);
    QList<Box> shown;
    const auto note = [&](QMessageBox& box) { shown.append(boxOf(box)); };
    withDialog<QMessageBox>([&] { prompts_.warn(window_.get(), "Obra", text); }, note);
    withDialog<QMessageBox>([&] { prompts_.inform(window_.get(), "Obra", text); }, note);
    withDialog<QMessageBox>([&] { prompts_.ask(window_.get(), "Obra", text, kYesNo); }, note);
    QCOMPARE(shown.size(), 3);
    for (const Box& box : shown) {
        QCOMPARE(box.text, text);
        QCOMPARE(box.format, Qt::PlainText);
    }
}

void PromptsTest::aQuestionGivesTheButton_data()
{
    QTest::addColumn<QMessageBox::StandardButton>("button");
    QTest::newRow("Save") << QMessageBox::Save;
    QTest::newRow("Discard") << QMessageBox::Discard;
    QTest::newRow("Cancel") << QMessageBox::Cancel;
}

void PromptsTest::aQuestionGivesTheButton()
{
    QFETCH(QMessageBox::StandardButton, button);
    auto answer = QMessageBox::NoButton;
    withDialog<QMessageBox>(
        [&] { answer = prompts_.ask(window_.get(), "Obra", "¿Sí?", kSaveQuestion); },
        [&](QMessageBox& box) { Widgets::click(box.button(button)); });
    QCOMPARE(answer, button);
}

void PromptsTest::aClosedQuestionIsGivenUp_data()
{
    QTest::addColumn<QMessageBox::StandardButtons>("buttons");
    QTest::addColumn<bool>("byKey");
    QTest::addColumn<QMessageBox::StandardButton>("answer");
    const QMessageBox::StandardButtons save = kSaveQuestion;
    const QMessageBox::StandardButtons yesNo = kYesNo;
    QTest::newRow("Save, Discard, Cancel by Escape") << save << true << QMessageBox::Cancel;
    QTest::newRow("Save, Discard, Cancel by the frame") << save << false << QMessageBox::Cancel;
    QTest::newRow("Yes, No by Escape") << yesNo << true << QMessageBox::No;
    QTest::newRow("Yes, No by the frame") << yesNo << false << QMessageBox::No;
}

void PromptsTest::aClosedQuestionIsGivenUp()
{
    QFETCH(QMessageBox::StandardButtons, buttons);
    QFETCH(bool, byKey);
    auto answer = QMessageBox::NoButton;
    withDialog<QMessageBox>([&] { answer = prompts_.ask(window_.get(), "Obra", "¿Sí?", buttons); },
                            [&](QMessageBox& box) {
                                if (byKey)
                                    QTest::keyClick(&box, Qt::Key_Escape);
                                else
                                    box.close();
                            });
    QTEST(answer, "answer");
}

// ---- Text ----------------------------------------------------------------------------------

void PromptsTest::aTextStartsWithTheProposal()
{
    QString title;
    QString label;
    QString proposal;
    withDialog<QInputDialog>(
        [&] { prompts_.askText(window_.get(), "Guardar obra", "¿Cómo?", "Zamba <b>x</b>"); },
        [&](QInputDialog& dialog) {
            title = dialog.windowTitle();
            label = dialog.labelText();
            proposal = dialog.findChild<QLineEdit*>()->text();
        });
    QCOMPARE(title, "Guardar obra");
    QCOMPARE(label, "¿Cómo?");
    QCOMPARE(proposal, "Zamba <b>x</b>");
}

void PromptsTest::aTextIsGivenAsTyped_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("a name") << "Zamba de mi pueblo";
    QTest::newRow("blanks around it") << "  Zamba ";
    QTest::newRow("only blanks") << "   ";
}

void PromptsTest::aTextIsGivenAsTyped()
{
    QFETCH(QString, typed);
    std::optional<QString> answer;
    withDialog<QInputDialog>(
        [&] { answer = prompts_.askText(window_.get(), "Guardar obra", "¿Cómo?", "Zamba"); },
        [&](QInputDialog& dialog) {
            auto* line = dialog.findChild<QLineEdit*>();
            line->selectAll();
            QTest::keyClicks(line, typed);
            QTest::keyClick(line, Qt::Key_Enter);
        });
    QCOMPARE(answer, std::optional(typed));
}

void PromptsTest::anEmptyTextIsAnAnswer()
{
    std::optional<QString> answer;
    withDialog<QInputDialog>(
        [&] { answer = prompts_.askText(window_.get(), "Guardar obra", "¿Cómo?", QString()); },
        [&](QInputDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Enter); });
    QVERIFY(answer);
    QCOMPARE(*answer, QString());
}

void PromptsTest::aCancelledTextIsNone()
{
    std::optional<QString> answer("former");
    withDialog<QInputDialog>(
        [&] { answer = prompts_.askText(window_.get(), "Guardar obra", "¿Cómo?", "Zamba"); },
        [&](QInputDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    QVERIFY(!answer);
}

void PromptsTest::anOfferIsTakenOrNot()
{
    for (const bool take : {true, false}) {
        bool taken = !take;
        bool stays = false;
        withDialog<QMessageBox>(
            [&] {
                taken = prompts_.offer(window_.get(), "Grabación", "No pude.", "A otro lugar…");
            },
            [&](QMessageBox& box) {
                QTest::keyClick(&box, Qt::Key_Escape);
                stays = box.isVisible();
                Widgets::click(take ? Widgets::withText<QPushButton>(box, "A otro lugar…")
                                    : box.button(QMessageBox::Discard));
            });
        QVERIFY(stays);
        QCOMPARE(taken, take);
    }
}

// ---- Files ---------------------------------------------------------------------------------

void PromptsTest::aFileIsProposedInTheCurrentFolder()
{
    QString title;
    QString folder;
    QString name;
    QStringList filters;
    withDialog<QFileDialog>(
        [&] { prompts_.askSaveFile(window_.get(), "Exportar MIDI", "Zamba.mid", "MIDI (*.mid)"); },
        [&](QFileDialog& dialog) {
            title = dialog.windowTitle();
            folder = dialog.directory().path();
            name = dialog.findChild<QLineEdit*>("fileNameEdit")->text();
            filters = dialog.nameFilters();
            QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptSave);
        });
    QCOMPARE(title, "Exportar MIDI");
    QCOMPARE(QDir(folder).canonicalPath(), QDir::current().canonicalPath());
    QCOMPARE(name, "Zamba.mid");
    QCOMPARE(filters, QStringList{"MIDI (*.mid)"});
}

void PromptsTest::aFileIsProposedWhereItCanBeWritten()
{
    QVERIFY(QDir::current().mkpath("Music"));
    QVERIFY(QDir::current().mkdir("gone") && QDir::setCurrent("gone"));
    QVERIFY(QDir(home_->filePath("gone")).removeRecursively());
    QString folder;
    withDialog<QFileDialog>(
        [&] { prompts_.askSaveFile(window_.get(), "Exportar MIDI", "Zamba.mid", "MIDI (*.mid)"); },
        [&](QFileDialog& dialog) { folder = dialog.directory().path(); });
    QCOMPARE(folder, home_->filePath("Music"));
}

void PromptsTest::aFileIsGivenAsChosen()
{
    const QString wanted = QDir::current().canonicalPath() + "/otra.mid";
    const std::optional<QString> answer = chosen(wanted);
    QCOMPARE(answer, std::optional(wanted));
    QVERIFY(!QFile::exists(wanted));
}

void PromptsTest::aNameWithoutAnEndingGetsOne_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("name");
    QTest::newRow("none") << "otra"
                          << "otra.mid";
    QTest::newRow("its own") << "otra.mid"
                             << "otra.mid";
    QTest::newRow("another") << "otra.midi"
                             << "otra.midi";
}

void PromptsTest::aNameWithoutAnEndingGetsOne()
{
    QFETCH(QString, typed);
    QFETCH(QString, name);
    QCOMPARE(QFileInfo(chosen(typed).value_or(QString())).fileName(), name);
}

void PromptsTest::aFileOfTheWholeNameIsNotReplacedUnasked()
{
    QVERIFY(writeBytes(QDir::current().filePath("otra.mid"), "a former song"));
    QString question;
    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [&] {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            question = box->text();
            Widgets::click(box->button(QMessageBox::No));
        } else if (auto* dialog = openDialog<QFileDialog>(); dialog && !question.isEmpty()) {
            dialog->reject();
        }
    });
    answer.start(50);
    QVERIFY(!chosen("otra"));
    QVERIFY2(question.startsWith("otra.mid "), qPrintable(question));
}

void PromptsTest::theFolderOfTheLastFileIsProposed()
{
    const QTemporaryDir elsewhere;
    QVERIFY(chosen(elsewhere.filePath("otra.mid")));
    QString folder;
    QString name;
    withDialog<QFileDialog>(
        [&] { prompts_.askSaveFile(window_.get(), "Exportar WAV", "Vals.wav", "WAV (*.wav)"); },
        [&](QFileDialog& dialog) {
            folder = dialog.directory().path();
            name = dialog.findChild<QLineEdit*>("fileNameEdit")->text();
            QTest::keyClick(&dialog, Qt::Key_Escape);
        });
    QCOMPARE(QDir(folder).canonicalPath(), QDir(elsewhere.path()).canonicalPath());
    QCOMPARE(name, "Vals.wav");
    // Another program's memory is none of this one's.
    Prompts others;
    withDialog<QFileDialog>(
        [&] { others.askSaveFile(window_.get(), "Exportar WAV", "Vals.wav", "WAV (*.wav)"); },
        [&](QFileDialog& dialog) {
            folder = dialog.directory().path();
            QTest::keyClick(&dialog, Qt::Key_Escape);
        });
    QCOMPARE(QDir(folder).canonicalPath(), QDir::current().canonicalPath());
}

void PromptsTest::aCancelledFileIsNone()
{
    std::optional<QString> answer("former");
    withDialog<QFileDialog>(
        [&] {
            answer =
                prompts_.askSaveFile(window_.get(), "Exportar MIDI", "Zamba.mid", "MIDI (*.mid)");
        },
        [&](QFileDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    QVERIFY(!answer);
}

void PromptsTest::aFileToOpenIsGivenAsChosen()
{
    const QString wanted = QDir::current().canonicalPath() + "/voz.wav";
    writeBytes(wanted, "x");
    std::optional<QString> answer;
    QString title;
    QStringList filters;
    withDialog<QFileDialog>(
        [&] {
            answer = prompts_.askOpenFile(window_.get(), "Importar audio", "Audio (*.wav *.mp3)");
        },
        [&](QFileDialog& dialog) {
            title = dialog.windowTitle();
            filters = dialog.nameFilters();
            QCOMPARE(dialog.acceptMode(), QFileDialog::AcceptOpen);
            QCOMPARE(dialog.fileMode(), QFileDialog::ExistingFile);
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(wanted);
            Widgets::click(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open));
        });
    QCOMPARE(answer, std::optional(wanted));
    QCOMPARE(title, "Importar audio");
    QCOMPARE(filters, QStringList{"Audio (*.wav *.mp3)"});
}

void PromptsTest::noFileToOpenIsNone()
{
    std::optional<QString> answer("former");
    withDialog<QFileDialog>(
        [&] { answer = prompts_.askOpenFile(window_.get(), "Importar audio", "Audio (*.wav)"); },
        [&](QFileDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    QVERIFY(!answer);
}

void PromptsTest::aNameWithSlashesStaysInTheFolder_data()
{
    QTest::addColumn<QString>("proposal");
    QTest::addColumn<QString>("name");
    QTest::newRow("a meter") << "Vals 3/4.mid"
                             << "Vals 3_4.mid";
    QTest::newRow("a way up") << "../Vals.mid"
                              << ".._Vals.mid";
    QTest::newRow("a way from the root") << "/tmp/Vals.mid"
                                         << "_tmp_Vals.mid";
    QTest::newRow("a way of another system") << "C:\\Vals.mid"
                                             << "C:_Vals.mid";
}

void PromptsTest::aNameWithSlashesStaysInTheFolder()
{
    QFETCH(QString, proposal);
    QString folder;
    QString name;
    withDialog<QFileDialog>(
        [&] { prompts_.askSaveFile(window_.get(), "Exportar MIDI", proposal, "MIDI (*.mid)"); },
        [&](QFileDialog& dialog) {
            folder = dialog.directory().path();
            name = dialog.findChild<QLineEdit*>("fileNameEdit")->text();
        });
    QCOMPARE(QDir(folder).canonicalPath(), QDir::current().canonicalPath());
    QTEST(name, "name");
}

// ---- Dialogs -------------------------------------------------------------------------------

void PromptsTest::aDialogIsAcceptedOrNot_data()
{
    QTest::addColumn<int>("result");
    QTest::addColumn<bool>("accepted");
    QTest::newRow("accepted") << int(QDialog::Accepted) << true;
    QTest::newRow("rejected") << int(QDialog::Rejected) << false;
    QTest::newRow("another result") << 7 << false;
}

void PromptsTest::aDialogIsAcceptedOrNot()
{
    QFETCH(int, result);
    QDialog dialog;
    bool accepted = false;
    bool modal = false;
    withDialog<QDialog>([&] { accepted = prompts_.run(dialog); },
                        [&](QDialog& open) {
                            modal = open.isModal();
                            open.done(result);
                        });
    QTEST(accepted, "accepted");
    QVERIFY(modal);
}

VELTA_TEST(PromptsTest)

} // namespace PromptsTests

#include "PromptsTest.moc"
