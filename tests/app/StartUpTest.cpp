#include "support/Installation.h"
#include "support/Nobody.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

/// The program with its window, on Qt's offscreen platform.
class WindowedRun {
public:
    enum class User { Own, Nobody };

    WindowedRun(const Installation& velta, const QString& workingDir,
                const QStringList& arguments = {}, const QMap<QString, QString>& variables = {},
                User user = User::Own)
    {
        if (user == User::Nobody)
            process_.setChildProcessModifier([] { Nobody::become(); });
        QProcessEnvironment environment = velta.bareEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        for (auto variable = variables.cbegin(); variable != variables.cend(); ++variable)
            environment.insert(variable.key(), variable.value());
        process_.setProcessEnvironment(environment);
        process_.setWorkingDirectory(workingDir);
        process_.start(velta.filePath("velta"), arguments);
    }

    ~WindowedRun()
    {
        process_.kill();
        process_.waitForFinished();
    }

    WindowedRun(const WindowedRun&) = delete;
    WindowedRun& operator=(const WindowedRun&) = delete;

    /// Whether the program goes on for some time.
    bool staysUp()
    {
        return !process_.waitForFinished(1200) && process_.state() == QProcess::Running;
    }

    QByteArray streams()
    {
        return process_.readAllStandardOutput() + process_.readAllStandardError();
    }

private:
    QProcess process_;
};

QString manifestIn(const QString& dir)
{
    return dir + "/resources/loops/manifest.json";
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(content);
}

/// An installation whose user has two works, a theme and a session of the suite.
class UsedInstallation : public Installation {
public:
    UsedInstallation()
    {
        for (const char* id : {"vals", "zamba"})
            write(filePath(QStringLiteral("Documents/Velta/%1/project.json").arg(id)), "{}");
        const QString now = QDateTime::currentDateTime().toString(Qt::ISODate);
        write(dataFolder() + "/sesion.json",
              QStringLiteral(R"({"inicio_sesion":"%1","ultima_actividad":"%1",)"
                             R"("integrantes":[{"id":"ana"}]})")
                  .arg(now)
                  .toUtf8());
    }

    QString dataFolder() const { return filePath("data/Ovelin"); }

    QString settingsFile() const { return filePath(".config/Ovelin/Velta.conf"); }

    QString heightsFile() const { return filePath("heights.txt"); }

    QMap<QString, QString> variables(const QMap<QString, QString>& further = {}) const
    {
        QMap<QString, QString> all{{"ProgramData", filePath("data")},
                                   {"XDG_CONFIG_HOME", filePath(".config")},
                                   {"XDG_DATA_HOME", filePath(".local/share")}};
        all.insert(further);
        return all;
    }

    /// The works that were opened, as the session's member finds them among recent files.
    QStringList openedWorks() const
    {
        QStringList works;
        const auto entries =
            QJsonDocument::fromJson(contentOf(dataFolder() + "/recientes/ana.json")).array();
        for (const QJsonValue& entry : entries)
            works.append(QFileInfo(entry["ruta"].toString()).fileName());
        return works;
    }
};

} // namespace

class StartUpTest : public QObject {
    Q_OBJECT

private slots:
    void theWindowStaysUpAndTheStreamsStaySilent();
    void resourcesBesideTheExecutableWinOverTheCurrentFolder();
    void resourcesOfTheCurrentFolderServeWhereThereAreNoOthers();
    void withoutAnyResourcesTheWindowOpensAllTheSame();
    void whereNoWindowCanOpenTheReasonIsTold();
    void helpAndVersionArePrintedWithoutADisplay();
    void whatIsWrittenForManyUsersIsTheUsersOwn();
    void unknownArgumentsAreIgnored();
    void theWorkOfTheCommandLineIsOpened_data();
    void theWorkOfTheCommandLineIsOpened();
    void aWorkThatIsNotThereIsToldInABoxOverTheBlankWork();
    void theSelfTestWinsOverOpening();
    void aFirstStartStoresTheLightTheme();
    void theStoredThemeIsKept();
    void heightsAreWrittenTwoSecondsAfterTheStart();
    void anEmptyNameAsksForNoHeights();
    void symbolsAreReportedUnderAnEmptyVariableToo();
};

void StartUpTest::theWindowStaysUpAndTheStreamsStaySilent()
{
    const Installation velta;
    WindowedRun run(velta, velta.filePath(""));
    QVERIFY(run.staysUp());
    QCOMPARE(run.streams(), QByteArray());
}

void StartUpTest::resourcesBesideTheExecutableWinOverTheCurrentFolder()
{
    const Installation velta;
    const Installation elsewhere;
    QFile::remove(manifestIn(velta.filePath("")));
    QFile::remove(manifestIn(elsewhere.filePath("")));
    WindowedRun run(velta, elsewhere.filePath(""));
    QVERIFY(run.staysUp());
    QVERIFY(QFile::exists(manifestIn(velta.filePath(""))));
    QVERIFY(!QFile::exists(manifestIn(elsewhere.filePath(""))));
}

void StartUpTest::resourcesOfTheCurrentFolderServeWhereThereAreNoOthers()
{
    const Installation velta(Installation::Resources::None);
    const Installation elsewhere;
    QFile::remove(manifestIn(elsewhere.filePath("")));
    WindowedRun run(velta, elsewhere.filePath(""));
    QVERIFY(run.staysUp());
    QVERIFY(QFile::exists(manifestIn(elsewhere.filePath(""))));
}

void StartUpTest::withoutAnyResourcesTheWindowOpensAllTheSame()
{
    const Installation velta(Installation::Resources::None);
    WindowedRun run(velta, velta.filePath(""));
    QVERIFY(run.staysUp());
    QCOMPARE(run.streams(), QByteArray());
}

void StartUpTest::whereNoWindowCanOpenTheReasonIsTold()
{
    const Installation velta;
    const Installation::Run run = velta.run({}, {{"DISPLAY", ":9999"}, {"QT_QPA_PLATFORM", "xcb"}});
    QVERIFY(run.exitCode != 0);
    QVERIFY2(run.errors.contains("could not connect to display :9999"), qPrintable(run.errors));
}

void StartUpTest::helpAndVersionArePrintedWithoutADisplay()
{
    const Installation velta;
    const QStringList before = QDir(velta.filePath("")).entryList(QDir::AllEntries | QDir::Hidden);
    const Installation::Run help = velta.run({"obra", "--help"}, {{"QT_QPA_PLATFORM", "xcb"}});
    QCOMPARE(help.exitCode, 0);
    QCOMPARE(help.errors, QString());
    QVERIFY(help.output.startsWith("Velta: para componer canciones en la escuela.\n"));
    for (const char* option : {"--open", "--proyecto", "--selftest", "--help", "--version"})
        QVERIFY2(help.output.contains(option), option);

    const Installation::Run version = velta.run({"--version"}, {{"QT_QPA_PLATFORM", "xcb"}});
    QCOMPARE(version.exitCode, 0);
    QCOMPARE(version.errors, QString());
    QCOMPARE(version.output, "Velta " VELTA_VERSION "\n");
    const auto after = QDir(velta.filePath("")).entryList(QDir::AllEntries | QDir::Hidden);
    QCOMPARE(after, before);
}

void StartUpTest::whatIsWrittenForManyUsersIsTheUsersOwn()
{
    const Installation velta;
    QFile::remove(manifestIn(velta.filePath("")));
    QVERIFY(velta.closeResources());
    QVERIFY(Nobody::open(velta.filePath("")));
    WindowedRun run(velta, velta.filePath(""), {}, {{"LANG", "C.UTF-8"}},
                    WindowedRun::User::Nobody);
    const QString content = velta.filePath(".local/share/Ovelin/Velta/contenido");
    QTRY_VERIFY_WITH_TIMEOUT(
        contentOf(content + "/loops/manifest.json").contains("folklore_carnavalito"), 20000);
    QVERIFY(run.staysUp());
    QCOMPARE(run.streams(), QByteArray());
    QVERIFY(!QFile::exists(manifestIn(velta.filePath(""))));
    QVERIFY(velta.openResources());
}

void StartUpTest::unknownArgumentsAreIgnored()
{
    const Installation velta;
    WindowedRun run(velta, velta.filePath(""), {"--ayuda", "-v", "obra"});
    QVERIFY(run.staysUp());
    QCOMPARE(run.streams(), QByteArray());
}

void StartUpTest::theWorkOfTheCommandLineIsOpened_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("opened");
    using Args = QStringList;
    QTest::newRow("--open opens a work") << Args{"--open", "vals"} << Args{"vals"};
    QTest::newRow("--proyecto opens a work") << Args{"--proyecto", "zamba"} << Args{"zamba"};
    QTest::newRow("beside --open, --proyecto is not looked at")
        << Args{"--proyecto", "zamba", "--open", "vals"} << Args{"vals"};
    QTest::newRow("--proyecto as the last argument opens nothing") << Args{"--proyecto"} << Args{};
    QTest::newRow("--open as the last argument opens nothing")
        << Args{"--proyecto", "zamba", "--open"} << Args{};
}

void StartUpTest::theWorkOfTheCommandLineIsOpened()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, opened);
    const UsedInstallation velta;
    WindowedRun run(velta, velta.filePath(""), arguments, velta.variables());
    if (opened.isEmpty())
        QVERIFY(run.staysUp());
    QTRY_COMPARE_WITH_TIMEOUT(velta.openedWorks(), opened, 20000);
    QCOMPARE(run.streams(), QByteArray());
}

void StartUpTest::aWorkThatIsNotThereIsToldInABoxOverTheBlankWork()
{
    const UsedInstallation velta;
    WindowedRun run(velta, velta.filePath(""), {"--open", "no_such_work"},
                    velta.variables({{"MEDIR_ALTURAS", velta.heightsFile()}}));
    QTRY_VERIFY_WITH_TIMEOUT(contentOf(velta.heightsFile()).contains("MainWindow"), 20000);
    QVERIFY(contentOf(velta.heightsFile()).contains("QMessageBox"));
    QCOMPARE(velta.openedWorks(), QStringList());
}

void StartUpTest::theSelfTestWinsOverOpening()
{
    const UsedInstallation velta;
    const Installation::Run run =
        velta.run({"--open", "vals", "--selftest", velta.filePath("out")});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(QFile::exists(velta.filePath("out/selftest.mid")));
    QCOMPARE(velta.openedWorks(), QStringList());
}

void StartUpTest::aFirstStartStoresTheLightTheme()
{
    const UsedInstallation velta;
    WindowedRun run(velta, velta.filePath(""), {}, velta.variables());
    QTRY_VERIFY_WITH_TIMEOUT(contentOf(velta.settingsFile()).contains("modoOscuro=false"), 20000);
}

void StartUpTest::theStoredThemeIsKept()
{
    const UsedInstallation velta;
    write(velta.settingsFile(), "[General]\nmodoOscuro=true\n");
    WindowedRun run(velta, velta.filePath(""), {}, velta.variables());
    QVERIFY(run.staysUp());
    QVERIFY(contentOf(velta.settingsFile()).contains("modoOscuro=true"));
}

void StartUpTest::heightsAreWrittenTwoSecondsAfterTheStart()
{
    const UsedInstallation velta;
    WindowedRun run(velta, velta.filePath(""), {},
                    velta.variables({{"MEDIR_ALTURAS", velta.heightsFile()}}));
    QTRY_VERIFY_WITH_TIMEOUT(
        contentOf(velta.heightsFile()).contains("    TransportControls #ribbon  min="), 20000);
    QVERIFY(contentOf(velta.heightsFile()).startsWith("MainWindow  min="));
    QCOMPARE(run.streams(), QByteArray());
}

void StartUpTest::anEmptyNameAsksForNoHeights()
{
    const UsedInstallation velta;
    const auto before = QDir(velta.filePath("")).entryList(QDir::Files);
    WindowedRun run(velta, velta.filePath(""), {}, velta.variables({{"MEDIR_ALTURAS", ""}}));
    QVERIFY(run.staysUp());
    QCOMPARE(QDir(velta.filePath("")).entryList(QDir::Files), before);
    QCOMPARE(run.streams(), QByteArray());
}

void StartUpTest::symbolsAreReportedUnderAnEmptyVariableToo()
{
    const UsedInstallation velta;
    WindowedRun run(velta, velta.filePath(""), {}, velta.variables({{"OVELIN_SIMBOLOS", ""}}));
    QByteArray streams;
    QTRY_VERIFY_WITH_TIMEOUT((streams += run.streams()).contains("simbolo \"MP3\" tinta "), 20000);
}

QTEST_GUILESS_MAIN(StartUpTest)
#include "StartUpTest.moc"
