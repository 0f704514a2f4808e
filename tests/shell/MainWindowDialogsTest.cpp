#include "model/Project.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "support/Widgets.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QInputDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>
#include <QTest>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>

namespace MainWindowDialogsTests {

using namespace ProjectBuilder;

namespace {

/// Uses the dialogs that open, one after the other, each as soon as it stands on the screen. A step
/// may open the next dialog over its own.
class Steps : public QObject {
public:
    explicit Steps(std::deque<std::function<void(QDialog&)>> steps) : steps_(std::move(steps))
    {
        next();
    }

    bool allDone() const { return steps_.empty(); }

private:
    void next()
    {
        QTimer::singleShot(0, this, [this] {
            auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            if (!dialog || steps_.empty())
                return;
            const auto step = std::move(steps_.front());
            steps_.pop_front();
            if (!steps_.empty())
                next();
            step(*dialog);
            // A step that ends nothing would hold the test for ever.
            if (dialog->isVisible())
                dialog->reject();
        });
    }

    std::deque<std::function<void(QDialog&)>> steps_;
};

std::function<void(QDialog&)> press(QMessageBox::StandardButton button)
{
    return [button](QDialog& dialog) {
        if (auto* box = qobject_cast<QMessageBox*>(&dialog))
            Widgets::click(box->button(button));
    };
}

std::function<void(QDialog&)> enter(const QString& text)
{
    return [text](QDialog& dialog) {
        auto* line = dialog.findChild<QLineEdit*>();
        line->selectAll();
        QTest::keyClicks(line, text);
        QTest::keyClick(line, Qt::Key_Enter);
    };
}

} // namespace

/// The window with the dialogs that a user sees.
class MainWindowDialogsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aNewWorkIsFilledInAndOpened();
    void aWorkIsNamedAndSaved();
    void aWorkIsChosenAndOpened();
    void aWorkIsDeletedInTheList();
    void unsavedWorksAreAskedForAtClosing_data();
    void unsavedWorksAreAskedForAtClosing();
    void anUnwritableFolderIsTold();
    void spaceInADialogPlaysNothing();

private:
    void addNote() { window_->project()->tracks[0].melodyBlocks = {melody({note(60, 0.0)})}; }

    void choose(const QString& entry) { Widgets::entry(*window_, entry)->trigger(); }

    std::unique_ptr<UserHome> home_;
    std::unique_ptr<MainWindow> window_;
};

void MainWindowDialogsTest::init()
{
    FluidSpy::reset();
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    home_ = std::make_unique<UserHome>();
    window_ = std::make_unique<MainWindow>();
    window_->show();
    QVERIFY(QTest::qWaitForWindowActive(window_.get()));
}

void MainWindowDialogsTest::cleanup()
{
    window_.reset();
    home_.reset();
}

void MainWindowDialogsTest::aNewWorkIsFilledInAndOpened()
{
    const Steps steps({[this](QDialog& dialog) {
        QCOMPARE(dialog.windowTitle(), "Nuevo proyecto");
        QCOMPARE(dialog.parentWidget(), window_.get());
        QVERIFY(dialog.isModal());
        QTest::keyClick(dialog.findChild<QComboBox*>(), Qt::Key_End);
        enter("Chacarera")(dialog);
    }});
    choose("Obra nueva…");
    QVERIFY(steps.allDone());
    QCOMPARE(window_->windowTitle(), "Velta — Chacarera[*]");
    QCOMPARE(window_->project()->timeSignature,
             (TimeSignature{.numerator = 6, .denominator = 8, .isCompound = true}));
    QVERIFY(QFile::exists(home_->projectFile("chacarera")));
}

void MainWindowDialogsTest::aWorkIsNamedAndSaved()
{
    QString label;
    const Steps steps({[&](QDialog& dialog) {
        label = qobject_cast<QInputDialog*>(&dialog)->labelText();
        enter("  Zamba ")(dialog);
    }});
    choose("Guardar");
    QVERIFY(steps.allDone());
    QCOMPARE(label, "¿Cómo se llama esta obra?");
    QCOMPARE(window_->windowTitle(), "Velta — Zamba[*]");
    QCOMPARE(window_->statusBar()->currentMessage(), "Obra guardada.");
    QVERIFY(QFile::exists(home_->projectFile("zamba")));
}

void MainWindowDialogsTest::aWorkIsChosenAndOpened()
{
    window_->createProject("Zamba", {}, {}, 84);
    window_->startBlankProject();
    const Steps steps({[](QDialog& dialog) {
        Widgets::click(dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open));
    }});
    choose("Abrir obra…");
    QVERIFY(steps.allDone());
    QCOMPARE(window_->currentProjectId(), "zamba");
    QCOMPARE(window_->project()->bpm, 84);
}

void MainWindowDialogsTest::aWorkIsDeletedInTheList()
{
    window_->createProject("Zamba", {}, {}, 84);
    int left = -1;
    QWidget* over = nullptr;
    const Steps steps({[&](QDialog& dialog) {
                           Widgets::click(Widgets::withText<QPushButton>(dialog, "Borrar"));
                           left = dialog.findChild<QListWidget*>()->count();
                           QVERIFY(dialog.isVisible());
                       },
                       [&](QDialog& question) {
                           over = question.parentWidget();
                           press(QMessageBox::Yes)(question);
                       }});
    choose("Abrir obra…");
    QVERIFY(steps.allDone());
    QCOMPARE(left, 0);
    QVERIFY(over && over != window_.get());
    QVERIFY(!QFile::exists(home_->works() + "/zamba"));
    QCOMPARE(window_->currentProjectId(), "zamba");
}

void MainWindowDialogsTest::unsavedWorksAreAskedForAtClosing_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<bool>("closes");
    QTest::newRow("Save") << int(QMessageBox::Save) << true;
    QTest::newRow("Discard") << int(QMessageBox::Discard) << true;
    QTest::newRow("Cancel") << int(QMessageBox::Cancel) << false;
}

void MainWindowDialogsTest::unsavedWorksAreAskedForAtClosing()
{
    QFETCH(int, button);
    QFETCH(bool, closes);
    addNote();
    std::deque<std::function<void(QDialog&)>> uses{
        press(static_cast<QMessageBox::StandardButton>(button))};
    if (button == QMessageBox::Save)
        uses.push_back(enter("Zamba"));
    const Steps steps(uses);
    QCOMPARE(window_->close(), closes);
    QVERIFY(steps.allDone());
    QCOMPARE(window_->isVisible(), !closes);
    QCOMPARE(QFile::exists(home_->projectFile("zamba")), button == QMessageBox::Save);
}

void MainWindowDialogsTest::anUnwritableFolderIsTold()
{
    QVERIFY(QDir().rmdir(home_->works()));
    QVERIFY(writeBytes(home_->works(), "in the way"));
    QString told;
    const Steps steps({enter("Zamba"), [&](QDialog& dialog) {
                           told = qobject_cast<QMessageBox*>(&dialog)->text();
                           press(QMessageBox::Ok)(dialog);
                       }});
    choose("Guardar");
    QVERIFY(steps.allDone());
    QCOMPARE(told, "No pude guardar la obra.");
}

void MainWindowDialogsTest::spaceInADialogPlaysNothing()
{
    QString typed;
    const Steps steps({[&](QDialog& dialog) {
        auto* line = dialog.findChild<QLineEdit*>();
        QTest::keyClicks(line, "a b");
        typed = line->text();
    }});
    choose("Guardar");
    QVERIFY(steps.allDone());
    QCOMPARE(typed, "a b");
    QVERIFY(!window_->engine()->isPlaying());
}

VELTA_TEST(MainWindowDialogsTest)

} // namespace MainWindowDialogsTests

#include "MainWindowDialogsTest.moc"
