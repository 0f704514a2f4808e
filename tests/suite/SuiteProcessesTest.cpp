#include "suite/Recientes.h"
#include "suite/Sesion.h"
#include "suite/SuiteFolder.h"
#include "support/JsonEdit.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTest>

#include <cstdio>
#include <memory>

using namespace brusel;

namespace {

// ---- What this executable does as another program of the suite --------------------------------

/// Says where the data folder is, and once more after a change of the environment.
int sayDataFolder()
{
    std::puts(Sesion::dirDatos().toUtf8().constData());
    qunsetenv("ProgramData");
    qputenv("HOME", "/nowhere");
    std::puts(Sesion::dirDatos().toUtf8().constData());
    return 0;
}

int useFiles(const QString& name, int count)
{
    for (int number = 0; number < count; ++number)
        Recientes::registrarEnSesionActiva(QString("/%1/%2").arg(name).arg(number), name, false);
    return 0;
}

int endSession()
{
    Sesion::cerrar();
    return 0;
}

int runAsProgram(const QStringList& arguments)
{
    const QString task = arguments.value(1);
    if (task == "--use")
        return useFiles(arguments.value(2), arguments.value(3).toInt());
    return task == "--end" ? endSession() : sayDataFolder();
}

// ---- Running it ----------------------------------------------------------------------------

/// Starts this executable as another program of the suite.
std::unique_ptr<QProcess> started(const QStringList& arguments,
                                  const QProcessEnvironment& environment)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->start(QCoreApplication::applicationFilePath(), arguments);
    return process;
}

bool endsWell(QProcess& process)
{
    const bool ended = process.state() == QProcess::NotRunning || process.waitForFinished();
    return ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 &&
           process.readAllStandardError().isEmpty();
}

void makePipe(const QString& path)
{
#ifdef Q_OS_UNIX
    mkfifo(path.toUtf8().constData(), 0600);
#else
    QDir().mkpath(path);
#endif
}

} // namespace

/// What the programs of the suite, each a process of its own, see of one another.
class SuiteProcessesTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void theDataFolderIsUnderProgramData();
    void theDataFolderIsMadeWithItsParents();
    void aFolderThatIsThereKeepsItsContent();
    void programDataMayEndInASlash();
    void aRelativeProgramDataGivesAnAbsoluteFolder();
    void withoutProgramDataTheFolderIsTheUsers_data();
    void withoutProgramDataTheFolderIsTheUsers();
    void anUnwritableProgramDataFallsBackOnTheUsersFolder_data();
    void anUnwritableProgramDataFallsBackOnTheUsersFolder();
    void theTrialOfWritingFollowsNoLink();
    void aSessionOfOneProgramIsSeenByAnother();
    void aSessionEndedByOneProgramIsOverForAll();
    void programsThatWriteAtOnceLeaveEveryFileWhole();

private:
    QString filePath(const QString& name) const { return dir_->filePath(name); }

    QString usersFolder() const { return filePath("home/.local/share/Ovelin"); }

    /// The data folder as another program finds it with a ProgramData, which is not set if null;
    /// a sentence if the program fails or gives another answer when it asks again.
    QString dataFolder(const QString& programData) const
    {
        QProcessEnvironment environment = environment_;
        if (!programData.isNull())
            environment.insert("ProgramData", programData);
        const auto process = started({"--folder"}, environment);
        if (!endsWell(*process))
            return "the program fails";
        const QStringList lines = QString::fromUtf8(process->readAllStandardOutput()).split('\n');
        return lines.value(0) == lines.value(1) ? lines.value(0) : "the second answer differs";
    }

    SuiteFolder suite_;
    std::unique_ptr<QTemporaryDir> dir_;
    /// Without a ProgramData, and with a home folder inside of the temporary one.
    QProcessEnvironment environment_;
};

void SuiteProcessesTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
    suite_.clear();
    dir_ = std::make_unique<QTemporaryDir>();
    environment_ = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"ProgramData", "XDG_DATA_HOME"})
        environment_.remove(name);
    environment_.insert("HOME", filePath("home"));
}

// ---- The data folder -----------------------------------------------------------------------

void SuiteProcessesTest::theDataFolderIsUnderProgramData()
{
    QCOMPARE(dataFolder(dir_->path()), filePath("Ovelin"));
    QVERIFY2(
        QDir(filePath("Ovelin")).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        "the trial of writing leaves nothing behind");
    QVERIFY(!QFile::exists(usersFolder()));
}

void SuiteProcessesTest::theDataFolderIsMadeWithItsParents()
{
    QCOMPARE(dataFolder(filePath("a/b")), filePath("a/b/Ovelin"));
    QVERIFY(QDir(filePath("a/b/Ovelin")).exists());
}

void SuiteProcessesTest::aFolderThatIsThereKeepsItsContent()
{
    writeBytes(filePath("Ovelin/sesion.json"), "{}");
    writeBytes(filePath("Ovelin/.prueba_escritura"), "left behind");
    QCOMPARE(dataFolder(dir_->path()), filePath("Ovelin"));
    QCOMPARE(bytesOf(filePath("Ovelin/sesion.json")), "{}");
    QVERIFY(!QFile::exists(filePath("Ovelin/.prueba_escritura")));
}

void SuiteProcessesTest::programDataMayEndInASlash()
{
    QCOMPARE(dataFolder(dir_->path() + '/'), filePath("Ovelin"));
}

void SuiteProcessesTest::aRelativeProgramDataGivesAnAbsoluteFolder()
{
    const QString relative = QDir::current().relativeFilePath(dir_->path());
    QVERIFY(QDir::isRelativePath(relative));
    QCOMPARE(dataFolder(relative), filePath("Ovelin"));
}

void SuiteProcessesTest::withoutProgramDataTheFolderIsTheUsers_data()
{
    QTest::addColumn<QString>("programData");
    QTest::newRow("not set") << QString();
    QTest::newRow("empty") << QString("");
}

void SuiteProcessesTest::withoutProgramDataTheFolderIsTheUsers()
{
    QFETCH(QString, programData);
    QCOMPARE(dataFolder(programData), usersFolder());
    QVERIFY(QDir(usersFolder()).exists());
    environment_.insert("XDG_DATA_HOME", filePath("data"));
    QCOMPARE(dataFolder(programData), filePath("data/Ovelin"));
}

void SuiteProcessesTest::anUnwritableProgramDataFallsBackOnTheUsersFolder_data()
{
    QTest::addColumn<QString>("programData");
    QTest::newRow("a file") << "file";
    QTest::newRow("below a file") << "file/below";
    QTest::newRow("a file in the place of the folder") << "taken";
    QTest::newRow("a folder in the place of the trial file") << "folder";
    QTest::newRow("a pipe in the place of the trial file") << "pipe";
#ifdef Q_OS_LINUX
    QTest::newRow("where nobody writes") << "/proc/velta";
#endif
}

void SuiteProcessesTest::anUnwritableProgramDataFallsBackOnTheUsersFolder()
{
    QFETCH(QString, programData);
    writeBytes(filePath("file"), "file");
    writeBytes(filePath("taken/Ovelin"), "file");
    for (const char* name : {"folder/Ovelin/.prueba_escritura", "pipe/Ovelin"})
        QDir().mkpath(filePath(name));
    makePipe(filePath("pipe/Ovelin/.prueba_escritura"));
    QCOMPARE(dataFolder(QDir(dir_->path()).filePath(programData)), usersFolder());
    QVERIFY(QDir(usersFolder()).exists());
}

void SuiteProcessesTest::theTrialOfWritingFollowsNoLink()
{
    const QString target = filePath("target.txt");
    QDir().mkpath(filePath("Ovelin"));
    QVERIFY(QFile::link(target, filePath("Ovelin/.prueba_escritura")));
    QCOMPARE(dataFolder(dir_->path()), usersFolder());
    QVERIFY(!QFile::exists(target));
    writeBytes(target, "somebody's");
    QCOMPARE(dataFolder(dir_->path()), usersFolder());
    QCOMPARE(bytesOf(target), "somebody's");
}

// ---- Several programs ----------------------------------------------------------------------

void SuiteProcessesTest::aSessionOfOneProgramIsSeenByAnother()
{
    const std::unique_ptr<Sesion> session(Sesion::iniciar(
        ModoSesion::Standalone, {}, "g", {{.id = "ana", .nombre = {}, .color = {}}}, 0, nullptr));
    const auto program = started({"--use", "otra", "2"}, QProcessEnvironment::systemEnvironment());
    QVERIFY(endsWell(*program));
    const QList<ArchivoReciente> list = Recientes::listar("ana");
    QCOMPARE(list.size(), 2);
    QCOMPARE(list[0].ruta, "/otra/1");
    QCOMPARE(list[0].app, "otra");
}

void SuiteProcessesTest::aSessionEndedByOneProgramIsOverForAll()
{
    const std::unique_ptr<Sesion> session(
        Sesion::iniciar(ModoSesion::Standalone, {}, "g", {}, 0, nullptr));
    QVERIFY(session->esValida());
    const auto program = started({"--end"}, QProcessEnvironment::systemEnvironment());
    QVERIFY(endsWell(*program));
    QVERIFY(!session->esValida());
    QVERIFY(!Sesion::cargar(nullptr));
}

void SuiteProcessesTest::programsThatWriteAtOnceLeaveEveryFileWhole()
{
    writeBytes(suite_.sessionFile(), sessionWith(R"({"id": "ana"}, {"id": "beto"})"));
    const auto environment = QProcessEnvironment::systemEnvironment();
    const auto one = started({"--use", "una", "120"}, environment);
    const auto other = started({"--use", "otra", "120"}, environment);
    int looks = 0;
    while (one->state() != QProcess::NotRunning || other->state() != QProcess::NotRunning) {
        one->waitForFinished(1);
        other->waitForFinished(1);
        const QByteArray session = bytesOf(suite_.sessionFile());
        const QByteArray list = bytesOf(suite_.listFile("ana"));
        QCOMPARE(JsonEdit::parsed(session)["integrantes"].toArray().size(), 2);
        QVERIFY2(list.isEmpty() || !QJsonDocument::fromJson(list).array().isEmpty(), list);
        ++looks;
    }
    QVERIFY(endsWell(*one) && endsWell(*other));
    QVERIFY(looks > 1);
    for (const char* id : {"ana", "beto"})
        QCOMPARE(Recientes::listar(id).size(), 30);
    QCOMPARE(suite_.everything(), (QStringList{"recientes", "recientes/ana.json",
                                               "recientes/beto.json", "sesion.json"}));
}

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (QStringList{"--folder", "--use", "--end"}.contains(arguments.value(1)))
        return runAsProgram(arguments);
    SuiteProcessesTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "SuiteProcessesTest.moc"
