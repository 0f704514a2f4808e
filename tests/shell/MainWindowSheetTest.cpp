#include "support/FluidSpy.h"
#include "support/FullDisk.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QDialog>
#include <QGraphicsView>
#include <QProcess>
#include <QPushButton>
#include <QTest>

namespace MainWindowSheetTests {

using namespace ProjectBuilder;

namespace {

const QString kEntry = QStringLiteral("Imprimir o guardar hoja…");

} // namespace

/// The sheet of a song, from the menu to the file.
class MainWindowSheetTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theSheetIsShownAndSaved();
    void aSheetThatIsNotSavedIsStillShown();
    void aFullDiskIsTold();
    void withoutAPrinterOneCanSave();
    void theSongStaysAsItIs();

private:
    /// Has the sheet be used while it is shown, and the path asked for be answered.
    void use(const std::function<void(QDialog&)>& act, const QString& path = {})
    {
        stage_->prompts().inDialog(act);
        if (!path.isEmpty())
            stage_->prompts().answerPath(path);
        stage_->choose(kEntry);
    }

    static QPushButton* button(const QDialog& sheet, const QString& text)
    {
        return Widgets::withText<QPushButton>(sheet, text);
    }

    static void save(const QDialog& sheet)
    {
        button(sheet, QStringLiteral("Guardar PDF…"))->click();
    }

    QString path() { return stage_->home().filePath("hoja.pdf"); }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowSheetTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
    stage_->song().name = "Huella";
    stage_->song().harmonyTrack = harmony({1, 4, 5});
    stage_->song().tracks[0].melodyBlocks = {melody({note(60, 0.0), note(64, 1.0)})};
}

void MainWindowSheetTest::cleanup()
{
    stage_.reset();
}

void MainWindowSheetTest::theSheetIsShownAndSaved()
{
    bool accepted = false;
    use(
        [&](QDialog& sheet) {
            const auto* pages = sheet.findChild<QGraphicsView*>();
            QVERIFY(pages && pages->isVisible());
            QTRY_VERIFY(!pages->scene()->items().isEmpty());
            save(sheet);
            accepted = sheet.result() == QDialog::Accepted;
        },
        path());
    QVERIFY(accepted);
    QCOMPARE(stage_->message(), "Hoja guardada en " + path());
    QProcess reader;
    reader.start("pdftotext", {"-layout", "-enc", "UTF-8", path(), "-"});
    QVERIFY2(reader.waitForFinished(), "The package poppler-utils is needed.");
    const QString text = QString::fromUtf8(reader.readAllStandardOutput());
    for (const QString& word :
         {QStringLiteral("Huella"), QStringLiteral("Do mayor"), QStringLiteral("I · Do"),
          QStringLiteral("IV · Fa"), QStringLiteral("V · Sol"), QStringLiteral("Mi")})
        QVERIFY2(text.contains(word), qPrintable(text));
}

void MainWindowSheetTest::aSheetThatIsNotSavedIsStillShown()
{
    stage_->prompts().inDialog([](QDialog& sheet) {
        save(sheet);
        QVERIFY(sheet.isVisible());
    });
    stage_->prompts().giveUpPath();
    stage_->choose(kEntry);
    QVERIFY(!QFile::exists(path()));
}

void MainWindowSheetTest::aFullDiskIsTold()
{
    writeBytes(path(), "a former sheet");
    use(
        [](QDialog& sheet) {
            const FullDisk disk(1000);
            save(sheet);
            QVERIFY(sheet.isVisible());
        },
        path());
    const QStringList calls = stage_->prompts().takeCalls();
    QVERIFY2(calls.constLast().startsWith("warn | Guardar hoja | No pude guardar la hoja: "),
             qPrintable(calls.join('\n')));
    QCOMPARE(bytesOf(path()), QByteArray("a former sheet"));
}

void MainWindowSheetTest::withoutAPrinterOneCanSave()
{
    use([](QDialog& sheet) {
        const QPushButton* print = button(sheet, QStringLiteral("Imprimir…"));
        // Tests run where nothing is printed.
        QVERIFY(!print->isEnabled());
        QVERIFY(print->toolTip().contains(QStringLiteral("impresora")));
        QVERIFY(button(sheet, QStringLiteral("Guardar PDF…"))->isDefault());
    });
}

void MainWindowSheetTest::theSongStaysAsItIs()
{
    const QJsonObject before = stage_->song().toJson();
    use([](QDialog& sheet) { save(sheet); }, path());
    QCOMPARE(stage_->song().toJson(), before);
    QVERIFY(!stage_->canUndo());
}

VELTA_TEST(MainWindowSheetTest)

} // namespace MainWindowSheetTests

#include "MainWindowSheetTest.moc"
