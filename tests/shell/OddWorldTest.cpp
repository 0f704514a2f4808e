#include "shell/OpenProjectDialog.h"
#include "shell/RecoveryBar.h"
#include "storage/RecoveryCopy.h"
#include "support/FalseClock.h"
#include "support/OwnProcess.h"
#include "support/ProjectBuilder.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "support/WindowStage.h"

#include <QListWidget>
#include <QPushButton>
#include <QTest>

#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
using namespace ProjectBuilder;

namespace {

constexpr time_t kTenYears = 10 * 365 * 24 * 3600;

/// A name that is no UTF-8, and that Qt has no text for.
constexpr auto kOddName = "canci\xF3n";

QByteArray pathOf(const QString& folder, const char* name)
{
    return folder.toUtf8() + '/' + name;
}

bool writeOdd(const QByteArray& path, const QByteArray& bytes)
{
    std::FILE* file = std::fopen(path.constData(), "wb");
    const bool whole = file && std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()),
                                           file) == static_cast<size_t>(bytes.size());
    return file && std::fclose(file) == 0 && whole;
}

bool existsOdd(const QByteArray& path)
{
    struct stat ignored {};

    return stat(path.constData(), &ignored) == 0;
}

QStringList recentNames(MainWindow& window)
{
    QMenu* menu = Widgets::menu(window, "Obras recientes");
    emit menu->aboutToShow();
    QStringList names;
    for (const QAction* action : menu->actions())
        names.append(action->text().section("  ·  ", 0, 0));
    return names;
}

/// Edits, keeps, saves and plays while the clock of the wall goes back by ten years.
int workWhileTheClockGoesBack()
{
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    OwnProcess::say("offered: " + window.findChild<RecoveryBar*>()->offered()->name());
    window.findChild<RecoveryBar*>()->dropOffered();
    OwnProcess::say("recent: " + recentNames(window).join(", "));
    window.openProjectById("zamba");
    window.engine()->play();
    FalseClock::setBy(-kTenYears);
    window.project()->tracks = {melodyTrack({melody({note(60, 30.0)}, 0.0, 32.0)})};
    window.snapshotAndRefresh();
    const QDir copies(RecoveryCopy::standardFolder());
    OwnProcess::say(QTest::qWaitFor([&] { return !copies.entryList({"*.json"}).isEmpty(); }, 20000)
                        ? "kept"
                        : "not kept");
    const double beat = window.engine()->playheadBeat();
    OwnProcess::say(QTest::qWaitFor([&] { return window.engine()->playheadBeat() > beat + 0.5; })
                        ? "plays on"
                        : "stands still");
    OwnProcess::say(window.saveCurrentProject() ? "saved" : "not saved");
    OwnProcess::say(copies.entryList({"*.json"}).isEmpty() ? "no copy left" : "a copy is left");
    window.show();
    OwnProcess::say(window.close() ? "closed" : "not closed");
    OwnProcess::say(prompts.calls().join('\n'));
    return 0;
}

/// Looks at folders with such names, imports, opens and deletes.
int meetOddNames()
{
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    OwnProcess::say("recent: " + recentNames(window).join(", "));
    const QString name = QFile::decodeName(kOddName);
    window.openProjectById(name);
    prompts.answerPath(QDir::current().filePath(name + ".wav"));
    Widgets::entry(window, "Importar audio de voz…")->trigger();
    prompts.inDialog([&](QDialog& dialog) {
        OwnProcess::say("listed: " + QString::number(dialog.findChild<QListWidget*>()->count()));
        prompts.answer(QMessageBox::Yes);
        Widgets::click(Widgets::withText<QPushButton>(dialog, "Borrar"));
        dialog.reject();
    });
    window.openProjectDialog();
    OwnProcess::say(prompts.calls().join('\n'));
    return 0;
}

} // namespace

/// The real window in a world that is wrong about the time, or about names, each time in a process
/// of its own.
class OddWorldTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void aClockThatGoesBackLosesNothing();
    void namesThatAreNoTextAreLeftAlone();

private:
    const UserHome& home() { return *home_; }

    std::unique_ptr<UserHome> home_;
    Project work_;
};

void OddWorldTest::init()
{
    home_ = std::make_unique<UserHome>();
    home_->installBank();
    work_.name = "Zamba";
    QVERIFY(LocalStorageProvider(QString()).saveProject("zamba", work_));
}

void OddWorldTest::cleanup()
{
    home_.reset();
}

void OddWorldTest::aClockThatGoesBackLosesNothing()
{
    LocalStorageProvider storage{QString()};
    work_.name = "Gato";
    QVERIFY(storage.saveProject("gato", work_));
    // The files of a computer whose clock was ahead.
    const QDateTime ahead = QDateTime::currentDateTime().addYears(30);
    const auto date = [&](const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadWrite) &&
               file.setFileTime(ahead, QFileDevice::FileModificationTime);
    };
    QVERIFY(date(home().projectFile("zamba")));
    {
        work_.name = "Cueca";
        RecoveryCopy copy(RecoveryCopy::standardFolder());
        QVERIFY(copy.keepNow({{}, {}, {}, work_}));
        QVERIFY(date(copy.path()));
    }
    QCOMPARE(OwnProcess::linesOf("the clock goes back"),
             (QStringList{"offered: Cueca", "recent: Zamba, Gato", "kept", "plays on", "saved",
                          "no copy left", "closed"}));
    const auto saved = storage.readProject("zamba");
    QVERIFY(saved);
    const std::unique_ptr<Project> again(Project::fromJson(*saved, nullptr));
    QCOMPARE(again->tracks.value(0).melodyBlocks.value(0).notes.size(), 1);
}

void OddWorldTest::namesThatAreNoTextAreLeftAlone()
{
    const QByteArray text = bytesOf(home().projectFile("zamba"));
    const QByteArray workOfOthers = pathOf(home().works(), kOddName);
    QCOMPARE(mkdir(workOfOthers.constData(), 0700), 0);
    QVERIFY(writeOdd(workOfOthers + "/project.json", text));
    const QByteArray voice = pathOf(home().filePath("."), kOddName) + ".wav";
    QVERIFY(writeOdd(voice, WavFile::bytes(Tones::sine(440.0, 44100, 4410))));
    const QByteArray inTheWork = pathOf(home().works() + "/zamba", kOddName);
    QVERIFY(writeOdd(inTheWork, "notes"));
    QVERIFY(QDir().mkpath(home().filePath("resources/loops/installed")));
    const QByteArray rhythm =
        pathOf(home().filePath("resources/loops/installed"), kOddName) + ".content.json";
    QVERIFY(writeOdd(rhythm, R"({"rhythm": {"id": "x"}})"));
    QVERIFY(QDir().mkpath(RecoveryCopy::standardFolder()));
    const QByteArray copy = pathOf(RecoveryCopy::standardFolder(), kOddName) + ".json";
    QVERIFY(writeOdd(copy, R"({"project": {}})"));

    // The system's own words are those of the user's language.
    const QString noSuchFile = QString::fromLocal8Bit(std::strerror(ENOENT));
    // The last line, the question whether to delete, holds the date of the work.
    QCOMPARE(
        OwnProcess::linesOf("odd names").mid(0, 6),
        (QStringList{
            "recent: Zamba", "listed: 1", "warn | Abrir proyecto | No pude abrir el proyecto.",
            "askOpenFile | Importar audio | Audio (*.wav *.mp3 *.ogg *.opus)",
            "warn | Importar audio | No pude leer el archivo: System error : " + noSuchFile + '.',
            "run | Abrir obra"}));
    for (const QByteArray& path : {workOfOthers + "/project.json", voice, rhythm, copy})
        QVERIFY2(existsOdd(path), path.constData());
    QVERIFY2(!existsOdd(pathOf(home().works(), "zamba")), "a work goes with all that is in it");
}

int main(int argc, char** argv)
{
    return OwnProcess::main<OddWorldTest>(
        argc, argv,
        {{"the clock goes back", workWhileTheClockGoesBack}, {"odd names", meetOddNames}});
}

#include "OddWorldTest.moc"
