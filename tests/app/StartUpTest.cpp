#include "support/Installation.h"

namespace {

/// The program with its window, on Qt's offscreen platform.
class WindowedRun {
public:
    WindowedRun(const Installation& velta, const QString& workingDir,
                const QStringList& arguments = {})
    {
        QProcessEnvironment environment = velta.bareEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
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
        return !process_.waitForFinished(2000) && process_.state() == QProcess::Running;
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

} // namespace

class StartUpTest : public QObject {
    Q_OBJECT

private slots:
    void theWindowStaysUpAndTheStreamsStaySilent();
    void resourcesBesideTheExecutableWinOverTheCurrentFolder();
    void resourcesOfTheCurrentFolderServeWhereThereAreNoOthers();
    void withoutAnyResourcesTheWindowOpensAllTheSame();
    void unknownArgumentsAreIgnored();
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

void StartUpTest::unknownArgumentsAreIgnored()
{
    const Installation velta;
    WindowedRun run(velta, velta.filePath(""), {"--help", "--version", "obra"});
    QVERIFY(run.staysUp());
    QCOMPARE(run.streams(), QByteArray());
}

QTEST_GUILESS_MAIN(StartUpTest)
#include "StartUpTest.moc"
