#include "support/ForbiddenWriting.h"
#include "support/FullDisk.h"
#include "support/OwnProcess.h"
#include "support/ProjectBuilder.h"
#include "support/WindowStage.h"

#include <QTest>

#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using namespace ProjectBuilder;

namespace {

/// Opens the work "obra", meets with a fault, changes the work and saves it; then closes. Tells
/// what was said to the user.
int saveAfter(const std::function<void(const QString& folder)>& strike)
{
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    window.openProjectById("obra");
    strike(LocalStorageProvider(QString()).projectFolder("obra"));
    window.project()->tracks = {melodyTrack({melody({note(60, 0.0)})})};
    window.snapshotAndRefresh();
    OwnProcess::say(window.saveCurrentProject() ? "saved" : "not saved");
    OwnProcess::say(prompts.calls().join('\n'));
    return 0;
}

int saveOnAFullDisk()
{
    std::unique_ptr<FullDisk> disk;
    return saveAfter([&](const QString&) { disk = std::make_unique<FullDisk>(100); });
}

int saveWhereNothingMayBeWritten()
{
    std::unique_ptr<ForbiddenWriting> forbidden;
    return saveAfter([&](const QString&) {
        forbidden = std::make_unique<ForbiddenWriting>(qEnvironmentVariable("HOME"));
    });
}

int saveWithoutTheFolder()
{
    return saveAfter([](const QString& folder) { QDir(folder).removeRecursively(); });
}

int saveIntoAFile()
{
    return saveAfter([](const QString& folder) {
        QDir(folder).removeRecursively();
        writeBytes(folder, "in the way");
    });
}

int saveIntoAPipe()
{
    return saveAfter([](const QString& folder) {
        QDir(folder).removeRecursively();
        mkfifo(folder.toUtf8().constData(), 0600);
    });
}

int saveThroughAPipe()
{
    return saveAfter([](const QString& folder) {
        QFile::remove(folder + "/project.json");
        mkfifo((folder + "/project.json").toUtf8().constData(), 0600);
    });
}

/// Composes and saves a work, where there may be no place for it.
int composeAndSave()
{
    if (geteuid() == 0 && qEnvironmentVariableIsSet("VELTA_AS_NOBODY") && setuid(65534) != 0)
        return 2;
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    Project& song = *window.project();
    Generator(5).fill(song);
    song.name = "İstanbul'da I ŞARKI";
    window.snapshotAndRefresh();
    prompts.answerText(song.name);
    OwnProcess::say(window.saveCurrentProject() ? "saved" : "not saved");
    OwnProcess::say(prompts.calls().join('\n'));
    OwnProcess::say(window.currentProjectId());
    return 0;
}

/// Composes a work and exports it in every form.
int composeAndExport()
{
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    Generator(5).fill(*window.project());
    window.snapshotAndRefresh();
    for (const auto& [entry, name] :
         {std::pair{"Exportar MIDI…", "obra.mid"}, std::pair{"Exportar WAV…", "obra.wav"},
          std::pair{"Exportar MP3…", "obra.mp3"}}) {
        prompts.answerPath(QDir::current().filePath(name));
        Widgets::entry(window, entry)->trigger();
    }
    return 0;
}

const OwnProcess::Tasks kTasks{{"a full disk", saveOnAFullDisk},
                               {"nothing may be written", saveWhereNothingMayBeWritten},
                               {"the folder is gone", saveWithoutTheFolder},
                               {"a file stands in place of the folder", saveIntoAFile},
                               {"a pipe stands in place of the folder", saveIntoAPipe},
                               {"a pipe stands in place of the file", saveThroughAPipe},
                               {"compose", composeAndSave},
                               {"export", composeAndExport}};

/// Locales that differ in their numbers, their letters or their text, as variables of a process.
QList<QMap<QString, QString>> locales()
{
    return {{{"LC_ALL", "C"}},
            {{"LC_ALL", "POSIX"}},
            {{"LC_ALL", "C.UTF-8"}},
            {{"LC_ALL", "tr_TR.UTF-8"}, {"LOCPATH", VELTA_TEST_LOCALES}},
            {{"LC_ALL", "es_AR.UTF-8"}, {"LOCPATH", VELTA_TEST_LOCALES}}};
}

constexpr auto kCannotSave = "warn | Guardar | No pude guardar la obra.";

} // namespace

/// The real window where the world around it goes to pieces, each time in a process of its own.
class WindowFaultsTest : public QObject {
    Q_OBJECT

private slots:
    void aSaveIsWholeOrSaysSo_data();
    void aSaveIsWholeOrSaysSo();
    void withoutAHomeTheProgramRunsAndSaysSo_data();
    void withoutAHomeTheProgramRunsAndSaysSo();
    void everyLocaleWritesTheSameFile();
    void everyLocaleExportsTheSameFiles();
};

void WindowFaultsTest::aSaveIsWholeOrSaysSo_data()
{
    QTest::addColumn<QStringList>("said");
    QTest::addColumn<bool>("former");
    const QStringList failed{"not saved", kCannotSave};
    QTest::newRow("a full disk") << failed << true;
    QTest::newRow("nothing may be written") << failed << true;
    QTest::newRow("the folder is gone") << QStringList{"saved"} << false;
    QTest::newRow("a file stands in place of the folder") << failed << false;
    QTest::newRow("a pipe stands in place of the folder") << failed << false;
    QTest::newRow("a pipe stands in place of the file") << failed << false;
}

void WindowFaultsTest::aSaveIsWholeOrSaysSo()
{
    QFETCH(QStringList, said);
    QFETCH(bool, former);
    const UserHome home;
    home.installBank();
    Project work;
    work.name = "Zamba";
    QVERIFY(LocalStorageProvider(QString()).saveProject("obra", work));
    const QByteArray before = bytesOf(home.projectFile("obra"));
    QCOMPARE(OwnProcess::linesOf(QTest::currentDataTag()), said);
    if (former)
        QCOMPARE(bytesOf(home.projectFile("obra")), before);
    if (said.first() == "saved")
        QVERIFY(LocalStorageProvider(QString()).readProject("obra"));
}

void WindowFaultsTest::withoutAHomeTheProgramRunsAndSaysSo_data()
{
    QTest::addColumn<QString>("place");
    QTest::newRow("no such folder") << "/nonexistent/home";
    QTest::newRow("a file") << "/dev/null";
    QTest::newRow("not set") << "";
}

void WindowFaultsTest::withoutAHomeTheProgramRunsAndSaysSo()
{
    QFETCH(QString, place);
    const UserHome home;
    const QStringList lines = OwnProcess::linesOf(
        "compose", {{"HOME", place}, {"VELTA_AS_NOBODY", "yes"}, {"XDG_RUNTIME_DIR", ""}});
    QCOMPARE(lines.value(0), "not saved");
    QCOMPARE(lines.value(2), kCannotSave);
}

void WindowFaultsTest::everyLocaleWritesTheSameFile()
{
    QMap<QByteArray, QString> files;
    for (const auto& locale : locales()) {
        const UserHome home;
        const QStringList lines = OwnProcess::linesOf("compose", locale);
        QCOMPARE(lines.value(0), "saved");
        QCOMPARE(lines.last(), "i_stanbul_da_i_arki");
        files.insert(bytesOf(home.projectFile(lines.last())), locale["LC_ALL"]);
    }
    QCOMPARE(files.size(), 1);
    QVERIFY(!files.firstKey().isEmpty());
}

void WindowFaultsTest::everyLocaleExportsTheSameFiles()
{
    QMap<QList<QByteArray>, QString> files;
    for (const auto& locale : locales()) {
        const UserHome home;
        home.installBank();
        OwnProcess::linesOf("export", locale);
        files.insert({bytesOf(home.filePath("obra.mid")), bytesOf(home.filePath("obra.wav")),
                      bytesOf(home.filePath("obra.mp3"))},
                     locale["LC_ALL"]);
    }
    QCOMPARE(files.size(), 1);
    QVERIFY(!files.firstKey().contains(QByteArray()));
}

int main(int argc, char** argv)
{
    return OwnProcess::main<WindowFaultsTest>(argc, argv, kTasks);
}

#include "WindowFaultsTest.moc"
