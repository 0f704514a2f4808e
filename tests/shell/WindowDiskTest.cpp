#include "content/ContentDownloadManager.h"
#include "content/ContentHost.h"
#include "content/DownloadStage.h"
#include "content/InstalledContentRegistry.h"
#include "content/LoopLibrary.h"
#include "shell/OnlineSearchDialog.h"
#include "support/ForbiddenWriting.h"
#include "support/FullDisk.h"
#include "support/OwnProcess.h"
#include "support/ProjectBuilder.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "support/WindowStage.h"

#include <QListView>
#include <QPushButton>
#include <QTest>

#include <functional>

using namespace ProjectBuilder;

namespace {

/// What is done while a fault lasts.
using Deed = std::function<void()>;

/// No file grows beyond so many bytes.
void onAFullDisk(rlim_t bytes, const Deed& deed)
{
    const FullDisk disk(bytes);
    deed();
}

void whereNothingMayBeWritten(const Deed& deed)
{
    const ForbiddenWriting forbidden(qEnvironmentVariable("HOME"));
    deed();
}

// ---- What a pupil does ---------------------------------------------------------------------

/// Chooses an entry of the menus that asks for a file.
int chooseEntry(const QString& entry, const QString& file,
                const std::function<void(const Deed&)>& fault)
{
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    window.openProjectById("obra");
    prompts.answerPath(QDir(qEnvironmentVariable("HOME")).filePath(file));
    fault([&] { Widgets::entry(window, entry)->trigger(); });
    OwnProcess::say(prompts.calls().mid(1).join('\n'));
    OwnProcess::say(window.statusBar()->currentMessage());
    OwnProcess::say("clips: " + QString::number(window.project()->audioTracks.size()));
    return 0;
}

/// Installs a rhythm whose package has so many bytes more than it needs.
int install(int padding, const std::function<void(const Deed&)>& fault)
{
    ContentHost host;
    host.put("/catalog.json", R"({"rhythms": [{"rhythmId": "vidala"}]})");
    host.put("/content/vidala.content.json", packageWith("vidala", {}) + QByteArray(padding, ' '));
    host.put("/grooves/vidala.groove.json", grooveOf("vidala"));
    qputenv("VELTA_CONTENT_URL", host.url().toEncoded());
    ScriptedPrompts prompts;
    MainWindow window(nullptr, prompts);
    OnlineSearchDialog dialog(*window.loopLibrary(), *window.findChild<ContentCatalog*>(),
                              *window.findChild<ContentDownloadManager*>(),
                              *window.findChild<InstalledContentRegistry*>());
    dialog.show();
    auto& list = *dialog.findChild<QListView*>();
    // What is offered stands behind what is installed.
    const auto last = [&] { return list.model()->index(list.model()->rowCount() - 1, 0); };
    static_cast<void>(QTest::qWaitFor(
        [&] { return last().data().toString().endsWith("para descargar"); }, 20000));
    list.setCurrentIndex(last());
    const QLabel& status = *dialog.findChild<QLabel*>();
    fault([&] {
        Widgets::click(Widgets::withText<QPushButton>(dialog, "Instalar ritmo"));
        static_cast<void>(QTest::qWaitFor([&] {
            return status.text().startsWith("Error") || status.text().endsWith(" instalado.");
        }));
    });
    OwnProcess::say(status.text());
    return 0;
}

constexpr auto kFull = "a full disk";
constexpr auto kForbidden = "nothing may be written";

OwnProcess::Tasks tasks()
{
    OwnProcess::Tasks tasks;
    const auto full = [](rlim_t bytes) {
        return [bytes](const Deed& deed) { onAFullDisk(bytes, deed); };
    };
    const auto add = [&](const QString& entry, const QString& file, rlim_t room) {
        tasks[entry + ", " + kFull] = [=] { return chooseEntry(entry, file, full(room)); };
        tasks[entry + ", " + kForbidden] = [=] {
            return chooseEntry(entry, file, whereNothingMayBeWritten);
        };
    };
    add("Importar audio de voz…", "canto.wav", 20000);
    add("Exportar WAV…", "out/obra.wav", 50);
    add("Exportar MP3…", "out/obra.mp3", 50);
    add("Exportar MIDI…", "out/obra.mid", 50);
    tasks["install, no room for the package"] = [=] { return install(5000, full(4000)); };
    tasks["install, no room for the registry"] = [=] { return install(0, full(4000)); };
    tasks["install, no room for the index"] = [=] { return install(0, full(4000)); };
    tasks["install, nothing may be written"] = [=] { return install(0, whereNothingMayBeWritten); };
    return tasks;
}

} // namespace

/// What becomes of a pupil's audio, exports and rhythms on a full disk and where nothing may be
/// written, each time in a process of its own.
class WindowDiskTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void anImportIsWholeOrSaysSo_data();
    void anImportIsWholeOrSaysSo();
    void anExportIsWholeOrSaysSo_data();
    void anExportIsWholeOrSaysSo();
    void anInstallIsWholeOrSaysSo_data();
    void anInstallIsWholeOrSaysSo();

private:
    /// Every file below a folder of the home, by its path there.
    QMap<QString, QByteArray> filesIn(const QString& folder) const
    {
        QMap<QString, QByteArray> files;
        const QDir root(home_->filePath(folder));
        QDirIterator all(root.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString path = all.next();
            files[root.relativeFilePath(path)] = bytesOf(path);
        }
        return files;
    }

    std::unique_ptr<UserHome> home_;
};

void WindowDiskTest::init()
{
    home_ = std::make_unique<UserHome>();
    home_->installBank();
    QVERIFY(QDir().mkpath(home_->filePath("resources/loops/installed")));
    QVERIFY(QDir().mkpath(home_->filePath("resources/loops/grooves")));
    Project work;
    work.tracks = {melodyTrack({melody({note(60, 0.0)})})};
    QVERIFY(LocalStorageProvider(QString()).saveProject("obra", work));
}

void WindowDiskTest::cleanup()
{
    home_.reset();
}

void WindowDiskTest::anImportIsWholeOrSaysSo_data()
{
    QTest::addColumn<QString>("task");
    for (const char* fault : {kFull, kForbidden})
        QTest::newRow(fault) << QString("Importar audio de voz…, %1").arg(fault);
}

void WindowDiskTest::anImportIsWholeOrSaysSo()
{
    QFETCH(QString, task);
    QVERIFY(
        writeBytes(home_->filePath("canto.wav"), WavFile::bytes(Tones::sine(440.0, 44100, 44100))));
    const QByteArray work = bytesOf(home_->projectFile("obra"));
    QCOMPARE(OwnProcess::linesOf(task),
             (QStringList{"warn | Importar audio | No pude guardar el audio.", "clips: 0"}));
    QCOMPARE(QDir(home_->works() + "/obra").entryList(QDir::Files), QStringList{"project.json"});
    QCOMPARE(bytesOf(home_->projectFile("obra")), work);
}

void WindowDiskTest::anExportIsWholeOrSaysSo_data()
{
    QTest::addColumn<QString>("task");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("title");
    for (const char* fault : {kFull, kForbidden}) {
        const auto add = [&](const QString& entry, const char* file, const char* title) {
            QTest::addRow("%s, %s", file, fault)
                << QString(entry + ", " + fault) << QString(file) << QString(title);
        };
        add("Exportar WAV…", "obra.wav", "Exportar");
        add("Exportar MP3…", "obra.mp3", "Exportar");
        add("Exportar MIDI…", "obra.mid", "Exportar MIDI");
    }
}

void WindowDiskTest::anExportIsWholeOrSaysSo()
{
    QFETCH(QString, task);
    QFETCH(QString, file);
    QFETCH(QString, title);
    QVERIFY(writeBytes(home_->filePath("out/" + file), "a former export"));
    const QStringList said = OwnProcess::linesOf(task);
    const QString failure = QString("warn | %1 | Falló la exportación: ").arg(title);
    QVERIFY2(said.size() == 2 && said[0].startsWith(failure) && said[0].size() > failure.size(),
             qPrintable(said.join('\n')));
    QCOMPARE(filesIn("out"), (QMap<QString, QByteArray>{{file, "a former export"}}));
}

void WindowDiskTest::anInstallIsWholeOrSaysSo_data()
{
    const QString failed = "Error: No pude guardar el contenido del ritmo.";
    QTest::addColumn<QByteArray>("registry");
    QTest::addColumn<QByteArray>("neighbour");
    QTest::addColumn<QString>("said");
    const QByteArray longRegistry = R"({"installedRhythms": [")" + QByteArray(8000, 'x') + R"("]})";
    // The index holds a line for every variant.
    const QByteArray large = R"({"rhythm": {"id": "vecino"}, "loopVariants": [)" +
                             QByteArray(R"({"layerId": "v"},)").repeated(100) +
                             R"({"layerId": "v"}]})";
    QTest::newRow("no room for the package") << QByteArray() << QByteArray() << failed;
    QTest::newRow("no room for the registry") << longRegistry << QByteArray() << failed;
    QTest::newRow("no room for the index") << QByteArray() << large << "vidala instalado.";
    QTest::newRow("nothing may be written") << QByteArray() << QByteArray() << failed;
}

void WindowDiskTest::anInstallIsWholeOrSaysSo()
{
    QFETCH(QByteArray, registry);
    QFETCH(QByteArray, neighbour);
    QFETCH(QString, said);
    const QString loops = home_->filePath("resources/loops");
    if (!registry.isEmpty())
        QVERIFY(writeBytes(loops + "/installed_registry.json", registry));
    if (!neighbour.isEmpty())
        QVERIFY(writeBytes(loops + "/installed/vecino.content.json", neighbour));
    // A start writes the index.
    LoopLibrary(loops, nullptr).reload();
    const auto before = filesIn("resources");
    const QString task = QString("install, %1").arg(QTest::currentDataTag());
    QCOMPARE(OwnProcess::linesOf(task), QStringList{said});
    auto after = filesIn("resources");
    if (said.startsWith("Error")) {
        QCOMPARE(after, before);
        return;
    }
    QVERIFY(after.remove("loops/installed/vidala.content.json"));
    QVERIFY(after.remove("loops/grooves/vidala.groove.json"));
    QVERIFY(after.remove("loops/installed_registry.json"));
    QCOMPARE(after, before);
    InstalledContentRegistry kept(loops + "/installed_registry.json", QString());
    kept.load();
    QCOMPARE(kept.installedRhythms(), QStringList{"vidala"});
}

int main(int argc, char** argv)
{
    return OwnProcess::main<WindowDiskTest>(argc, argv, tasks());
}

#include "WindowDiskTest.moc"
