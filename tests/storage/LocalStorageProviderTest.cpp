#include "storage/LocalStorageProvider.h"

#include "model/Project.h"
#include "suite/Recientes.h"
#include "suite/SuiteFolder.h"
#include "support/Files.h"
#include "support/ForbiddenWriting.h"
#include "support/FullDisk.h"
#include "support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <sys/stat.h>

namespace LocalStorageProviderTests {

namespace {

/// Sets how many hours ago a folder was last changed.
void setFolderAge(const QString& path, int hours)
{
    const auto now = std::filesystem::file_time_type::clock::now();
    std::filesystem::last_write_time(path.toStdString(), now - std::chrono::hours(hours));
}

QStringList idsOf(const QList<ProjectInfo>& works)
{
    QStringList ids;
    for (const ProjectInfo& work : works)
        ids.append(work.id);
    return ids;
}

QStringList recentPaths(const QString& memberId)
{
    QStringList paths;
    for (const brusel::ArchivoReciente& recent : brusel::Recientes::listar(memberId))
        paths.append(recent.ruta);
    return paths;
}

} // namespace

class LocalStorageProviderTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void savedWorksComeBack();
    void theFileIsIndentedJson();
    void savingRewritesTheFileInPlace();
    void savingMakesAMissingFolderAgain();
    void savingFailsWhereNoFolderCanBe();
    void aFullDiskKeepsTheFormerWork_data();
    void aFullDiskKeepsTheFormerWork();
    void aFullDiskLeavesNoBeginningOfANewWork();
    void aFolderWithoutWritingKeepsItsWork();
    void loadingWhatIsNoProjectGivesNull_data();
    void loadingWhatIsNoProjectGivesNull();
    void whatIsNoRegularFileIsNoWork_data();
    void whatIsNoRegularFileIsNoWork();
    void listingSkipsWhatIsNoProject();
    void listingNamesAWorkWithoutANameByItsFolder();
    void listingFollowsTheFoldersTimeNewestFirst();
    void deletingTakesTheWholeFolder();
    void whatIsDeletedLiesInTheTrash();
    void aLinkedWorkIsDeletedAsTheLink();
    void aLinkToNothingCanBeDeleted();
    void deletingWhatIsNotThereFails();
    void aWorkIsThereWhileItsFileIs();
    void changesOfSomebodyElseAreSeen();
    void idsAreMadeFromTitles_data();
    void idsAreMadeFromTitles();
    void takenIdsGetANumber();
    void theNumberComesBehindTheFortyCharacters();
    void anIdMakesNoFolder();
    void theFolderOfAnEmptyIdIsTheRootAndASlash();
    void anEmptyRootIsTheDocumentsFolder();
    void worksOfTheOlderLayoutMove();
    void aTakenNameStaysInTheOlderLayout();
    void aGivenRootMovesNothing();
    void openingAWorkIsARecentUseOfEveryMember();
    void savingAWorkIsARecentUseOfEveryMember();
    void aUseCountsOnlyWhenTheWorkIsThere_data();
    void aUseCountsOnlyWhenTheWorkIsThere();
    void listingAndDeletingAreNoUses();
    void recentWorksAreThoseThatMembersUsedLast();
    void withoutASessionRecentWorksAreThoseWrittenLast();
    void withoutASessionNothingIsNoted();
    void aDamagedSessionStopsNeitherOpeningNorSaving_data();
    void aDamagedSessionStopsNeitherOpeningNorSaving();
    void aListThatCannotBeWrittenStopsNoSave();
    void aLinkFromAListToTheWorkDoesNoHarm();

private:
    QString root() const { return dir_->filePath("Velta"); }

    QString older() const
    {
        return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/proyectos";
    }

    void beginSession() const
    {
        writeBytes(suite_.sessionFile(), sessionWith(R"({"id": "ana"}, {"id": "beto"})"));
    }

    SuiteFolder suite_;
    std::unique_ptr<QTemporaryDir> dir_;
    QByteArray home_;
};

void LocalStorageProviderTest::init()
{
    dir_ = std::make_unique<QTemporaryDir>();
    home_ = qgetenv("HOME");
    // The system's trash is looked for where there is a home.
    QDir().mkpath(dir_->filePath("home"));
    qputenv("HOME", dir_->filePath("home").toUtf8());
    QStandardPaths::setTestModeEnabled(true);
    suite_.clear();
}

void LocalStorageProviderTest::cleanup()
{
    qputenv("HOME", home_);
}

void LocalStorageProviderTest::savedWorksComeBack()
{
    LocalStorageProvider storage(root());
    Project project;
    project.name = "Zamba de mi pueblo";
    project.bpm = 84;
    project.tracks.append(Track());
    QVERIFY(storage.saveProject("zamba", project));

    QObject parent;
    const Project* loaded = storage.loadProject("zamba", &parent);
    QVERIFY(loaded);
    QCOMPARE(loaded->parent(), &parent);
    QCOMPARE(loaded->toJson(), project.toJson());
}

void LocalStorageProviderTest::theFileIsIndentedJson()
{
    LocalStorageProvider storage(root());
    const Project project;
    QVERIFY(storage.saveProject("obra", project));
    QCOMPARE(bytesOf(root() + "/obra/project.json"),
             QJsonDocument(project.toJson()).toJson(QJsonDocument::Indented));
}

void LocalStorageProviderTest::savingRewritesTheFileInPlace()
{
    LocalStorageProvider storage(root());
    writeBytes(root() + "/obra/project.json", QByteArray(100000, ' '));
    QFile held(root() + "/obra/project.json");
    QVERIFY(held.open(QIODevice::ReadOnly));
    QVERIFY(storage.saveProject("obra", Project()));
    QVERIFY(held.readAll().startsWith("{\n"));
    QCOMPARE(QDir(root() + "/obra").entryList(QDir::Files), QStringList{"project.json"});
}

void LocalStorageProviderTest::savingMakesAMissingFolderAgain()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("obra", Project()));
    QVERIFY(QDir(root()).removeRecursively());
    QVERIFY(storage.saveProject("obra", Project()));
    QVERIFY(QFile::exists(root() + "/obra/project.json"));
}

void LocalStorageProviderTest::savingFailsWhereNoFolderCanBe()
{
    LocalStorageProvider storage(root());
    writeBytes(root() + "/obra", "a file");
    QVERIFY(!storage.saveProject("obra", Project()));
    QDir().mkpath(root() + "/otra/project.json");
    QVERIFY(!storage.saveProject("otra", Project()));
}

void LocalStorageProviderTest::aFullDiskKeepsTheFormerWork_data()
{
    QTest::addColumn<int>("room");
    QTest::newRow("no room at all") << 0;
    QTest::newRow("room for what was there") << 600;
    QTest::newRow("room for a part of what is new") << 2000;
}

void LocalStorageProviderTest::aFullDiskKeepsTheFormerWork()
{
    QFETCH(int, room);
    LocalStorageProvider storage(root());
    Project project;
    QVERIFY(storage.saveProject("obra", project));
    const QByteArray former = bytesOf(root() + "/obra/project.json");
    project.name = QString(5000, 'x');
    {
        const FullDisk disk(static_cast<rlim_t>(room));
        QVERIFY(!storage.saveProject("obra", project));
    }
    QCOMPARE(bytesOf(root() + "/obra/project.json"), former);
    QVERIFY(storage.saveProject("obra", project));
    const std::unique_ptr<Project> loaded(storage.loadProject("obra", nullptr));
    QCOMPARE(loaded->toJson(), project.toJson());
}

void LocalStorageProviderTest::aFullDiskLeavesNoBeginningOfANewWork()
{
    LocalStorageProvider storage(root());
    {
        const FullDisk disk(100);
        QVERIFY(!storage.saveProject("obra", Project()));
    }
    QVERIFY(!storage.hasProject("obra"));
}

void LocalStorageProviderTest::aFolderWithoutWritingKeepsItsWork()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("obra", Project()));
    const QByteArray former = bytesOf(root() + "/obra/project.json");
    Project project;
    project.bpm = 90;
    {
        const ForbiddenWriting forbidden(dir_->path());
        QVERIFY(storage.hasProject("obra"));
        QVERIFY(!storage.saveProject("obra", project));
        QVERIFY(!storage.saveProject("otra", project));
        QVERIFY(!storage.deleteProject("obra"));
    }
    QCOMPARE(bytesOf(root() + "/obra/project.json"), former);
    QVERIFY(storage.saveProject("obra", project));
}

void LocalStorageProviderTest::loadingWhatIsNoProjectGivesNull_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("no JSON") << QByteArray("obra");
    QTest::newRow("half a document") << QByteArray("{\"name\": \"Zam");
    QTest::newRow("a list") << QByteArray("[]");
    QTest::newRow("binary") << QByteArray("\x00\xFF\xFE{", 4);
}

void LocalStorageProviderTest::loadingWhatIsNoProjectGivesNull()
{
    QFETCH(QByteArray, content);
    LocalStorageProvider storage(root());
    writeBytes(root() + "/obra/project.json", content);
    QVERIFY(!storage.loadProject("obra", this));
    QVERIFY(!storage.loadProject("no_such_work", this));
}

void LocalStorageProviderTest::whatIsNoRegularFileIsNoWork_data()
{
    using Place = std::function<void(const QString&)>;
    QTest::addColumn<Place>("place");
    QTest::newRow("a pipe") << Place(
        [](const QString& path) { mkfifo(path.toUtf8().constData(), 0600); });
    QTest::newRow("a link to a pipe") << Place([](const QString& path) {
        mkfifo((path + ".pipe").toUtf8().constData(), 0600);
        QFile::link(path + ".pipe", path);
    });
    QTest::newRow("a device without an end")
        << Place([](const QString& path) { QFile::link("/dev/zero", path); });
    QTest::newRow("a folder") << Place([](const QString& path) { QDir().mkpath(path); });
    QTest::newRow("a link to itself")
        << Place([](const QString& path) { QFile::link(path, path); });
}

void LocalStorageProviderTest::whatIsNoRegularFileIsNoWork()
{
    QFETCH(std::function<void(const QString&)>, place);
    LocalStorageProvider storage(root());
    QDir().mkpath(root() + "/obra");
    place(root() + "/obra/project.json");
    QVERIFY(storage.listProjects().isEmpty());
    QVERIFY(!storage.loadProject("obra", this));
    QVERIFY(!storage.hasProject("obra"));
    QVERIFY(!storage.changedElsewhere("obra"));
    QVERIFY(!storage.saveProject("obra", Project()));
}

void LocalStorageProviderTest::listingSkipsWhatIsNoProject()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("buena", Project()));
    QDir().mkpath(root() + "/sin_archivo");
    writeBytes(root() + "/rota/project.json", "{");
    writeBytes(root() + "/lista/project.json", "[1]");
    writeBytes(root() + "/suelto.json", "{}");
    const QList<ProjectInfo> projects = storage.listProjects();
    QCOMPARE(projects.size(), 1);
    QCOMPARE(projects[0].id, "buena");
    QCOMPARE(projects[0].folderPath, root() + "/buena");
    QCOMPARE(projects[0].modifiedAt, QFileInfo(root() + "/buena/project.json").lastModified());
}

void LocalStorageProviderTest::listingNamesAWorkWithoutANameByItsFolder()
{
    LocalStorageProvider storage(root());
    writeBytes(root() + "/sin_nombre/project.json", "{}");
    writeBytes(root() + "/numero/project.json", R"({"name": 5})");
    writeBytes(root() + "/vacio/project.json", R"({"name": ""})");
    QMap<QString, QString> names;
    for (const ProjectInfo& info : storage.listProjects())
        names[info.id] = info.name;
    QCOMPARE(names, (QMap<QString, QString>{
                        {"sin_nombre", "sin_nombre"}, {"numero", "numero"}, {"vacio", ""}}));
    const std::unique_ptr<Project> loaded(storage.loadProject("sin_nombre", nullptr));
    QCOMPARE(loaded->name, QString());
}

void LocalStorageProviderTest::listingFollowsTheFoldersTimeNewestFirst()
{
    LocalStorageProvider storage(root());
    for (const char* id : {"a", "b", "c"})
        QVERIFY(storage.saveProject(id, Project()));
    setFolderAge(root() + "/a", 2);
    setFolderAge(root() + "/b", 1);
    setFolderAge(root() + "/c", 3);
    // Rewriting the file does not touch the folder's time, and so not the order.
    QVERIFY(storage.saveProject("c", Project()));
    QStringList ids;
    for (const ProjectInfo& info : storage.listProjects())
        ids.append(info.id);
    QCOMPARE(ids, (QStringList{"b", "a", "c"}));
}

void LocalStorageProviderTest::deletingTakesTheWholeFolder()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("obra", Project()));
    QVERIFY(storage.saveProject("otra", Project()));
    writeBytes(root() + "/obra/toma_1.wav", "RIFF");
    QVERIFY(storage.deleteProject("obra"));
    QVERIFY(!QFile::exists(root() + "/obra"));
    QVERIFY(QFile::exists(root() + "/otra/project.json"));
}

void LocalStorageProviderTest::whatIsDeletedLiesInTheTrash()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("obra", Project()));
    writeBytes(root() + "/obra/toma_1.wav", "RIFF");
    QVERIFY(storage.deleteProject("obra"));
    const QString trash =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Trash/files";
    QVERIFY(QFile::exists(trash + "/obra/project.json"));
    QCOMPARE(bytesOf(trash + "/obra/toma_1.wav"), "RIFF");
}

void LocalStorageProviderTest::aLinkedWorkIsDeletedAsTheLink()
{
    LocalStorageProvider storage(root());
    const QString shared = dir_->filePath("compartida");
    writeBytes(shared + "/project.json", "{}");
    writeBytes(shared + "/voces/precious.txt", "precious");
    QVERIFY(QFile::link(shared, root() + "/enlace"));
    QCOMPARE(storage.listProjects().size(), 1);
    QVERIFY(storage.deleteProject("enlace"));
    QVERIFY(!QFileInfo(root() + "/enlace").isSymLink());
    QCOMPARE(bytesOf(shared + "/project.json"), "{}");
    QCOMPARE(bytesOf(shared + "/voces/precious.txt"), "precious");
}

void LocalStorageProviderTest::aLinkToNothingCanBeDeleted()
{
    LocalStorageProvider storage(root());
    QVERIFY(QFile::link(dir_->filePath("gone"), root() + "/enlace"));
    QVERIFY(storage.deleteProject("enlace"));
    QVERIFY(!QFileInfo(root() + "/enlace").isSymLink());
}

void LocalStorageProviderTest::aWorkIsThereWhileItsFileIs()
{
    LocalStorageProvider storage(root());
    QVERIFY(!storage.hasProject("obra"));
    QVERIFY(storage.saveProject("obra", Project()));
    QVERIFY(storage.hasProject("obra"));
    QVERIFY(QFile::remove(root() + "/obra/project.json"));
    QVERIFY(!storage.hasProject("obra"));
    writeBytes(root() + "/project.json", "{}");
    QVERIFY(!storage.hasProject(QString()));
}

void LocalStorageProviderTest::changesOfSomebodyElseAreSeen()
{
    LocalStorageProvider mine(root());
    LocalStorageProvider theirs(root());
    QVERIFY(!mine.changedElsewhere("obra"));
    QVERIFY(mine.saveProject("obra", Project()));
    QVERIFY(!mine.changedElsewhere("obra"));
    QVERIFY2(!theirs.changedElsewhere("obra"), "who has not read it knows of no change");

    const std::unique_ptr<Project> work(theirs.loadProject("obra", nullptr));
    QVERIFY(!theirs.changedElsewhere("obra"));
    work->bpm = 121;
    QVERIFY(theirs.saveProject("obra", *work));
    QVERIFY(mine.changedElsewhere("obra"));
    QVERIFY(!theirs.changedElsewhere("obra"));

    QVERIFY2(mine.saveProject("obra", Project()), "whoever has been asked may save");
    QVERIFY(!mine.changedElsewhere("obra"));
    QVERIFY(theirs.changedElsewhere("obra"));
    QVERIFY(QDir(root() + "/obra").removeRecursively());
    QVERIFY2(!mine.changedElsewhere("obra"), "there is nothing left to overwrite");
}

void LocalStorageProviderTest::deletingWhatIsNotThereFails()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("obra", Project()));
    QVERIFY(!storage.deleteProject("no_such_work"));
    QVERIFY(!storage.deleteProject(QString()));
    QVERIFY(QFile::exists(root() + "/obra/project.json"));
}

void LocalStorageProviderTest::idsAreMadeFromTitles_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("id");
    QTest::newRow("an accent is a foreign character") << "Mi canción"
                                                      << "mi_canci_n";
    QTest::newRow("underscores at the ends stay") << "¡Hola!"
                                                  << "_hola_";
    QTest::newRow("a run becomes one underscore") << "a  -- b"
                                                  << "a_b";
    QTest::newRow("digits stay") << "Tema 2"
                                 << "tema_2";
    QTest::newRow("no title") << ""
                              << "proyecto";
    QTest::newRow("spaces and punctuation only") << " ...! "
                                                 << "_";
    QTest::newRow("sixty letters are cut to forty") << QString(60, 'x') << QString(40, 'x');
    QTest::newRow("a path stays inside the root") << "../../etc"
                                                  << "_etc";
}

void LocalStorageProviderTest::idsAreMadeFromTitles()
{
    QFETCH(QString, title);
    LocalStorageProvider storage(root());
    QTEST(storage.createProjectId(title), "id");
}

void LocalStorageProviderTest::takenIdsGetANumber()
{
    LocalStorageProvider storage(root());
    for (const char* expected : {"tarea", "tarea_2", "tarea_3"}) {
        const QString id = storage.createProjectId("Tarea");
        QCOMPARE(id, expected);
        QVERIFY(storage.saveProject(id, Project()));
    }
}

void LocalStorageProviderTest::theNumberComesBehindTheFortyCharacters()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject(QString(40, 'x'), Project()));
    QCOMPARE(storage.createProjectId(QString(60, 'X')), QString(40, 'x') + "_2");
}

void LocalStorageProviderTest::anIdMakesNoFolder()
{
    LocalStorageProvider storage(root());
    storage.createProjectId("Tarea");
    QCOMPARE(QDir(root()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

void LocalStorageProviderTest::theFolderOfAnEmptyIdIsTheRootAndASlash()
{
    QCOMPARE(LocalStorageProvider(root()).projectFolder(QString()), root() + "/");
}

void LocalStorageProviderTest::anEmptyRootIsTheDocumentsFolder()
{
    const LocalStorageProvider storage{QString()};
    const QString expected =
        QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/Velta";
    QVERIFY(expected.startsWith(dir_->path()));
    QCOMPARE(storage.projectFolder("obra"), expected + "/obra");
    QVERIFY(QDir(expected).exists());
}

void LocalStorageProviderTest::worksOfTheOlderLayoutMove()
{
    writeBytes(older() + "/zamba/project.json", R"({"name": "Zamba"})");
    writeBytes(older() + "/zamba/toma.wav", "RIFF");
    LocalStorageProvider storage{QString()};
    QCOMPARE(storage.listProjects().size(), 1);
    QCOMPARE(storage.listProjects()[0].name, "Zamba");
    QVERIFY(QFile::exists(storage.projectFolder("zamba") + "/toma.wav"));
    QVERIFY(!QFile::exists(older()));
}

void LocalStorageProviderTest::aTakenNameStaysInTheOlderLayout()
{
    const QString documents =
        QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) + "/Velta";
    writeBytes(older() + "/zamba/project.json", R"({"name": "vieja"})");
    writeBytes(older() + "/gato/project.json", R"({"name": "Gato"})");
    writeBytes(documents + "/zamba/project.json", R"({"name": "nueva"})");
    LocalStorageProvider storage{QString()};
    QCOMPARE(bytesOf(documents + "/zamba/project.json"), R"({"name": "nueva"})");
    QCOMPARE(bytesOf(older() + "/zamba/project.json"), R"({"name": "vieja"})");
    QVERIFY(QFile::exists(documents + "/gato/project.json"));
    QVERIFY(!QFile::exists(older() + "/gato"));
}

void LocalStorageProviderTest::aGivenRootMovesNothing()
{
    writeBytes(older() + "/zamba/project.json", "{}");
    LocalStorageProvider storage(root());
    QVERIFY(storage.listProjects().isEmpty());
    QVERIFY(QFile::exists(older() + "/zamba/project.json"));
}

// ---- Recent uses ---------------------------------------------------------------------------

void LocalStorageProviderTest::openingAWorkIsARecentUseOfEveryMember()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("zamba", Project()));
    beginSession();
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    QVERIFY(storage.loadProject("zamba", this));
    for (const char* member : {"ana", "beto"}) {
        const QList<brusel::ArchivoReciente> recent = brusel::Recientes::listar(member);
        QCOMPARE(recent.size(), 1);
        QCOMPARE(recent[0].ruta, root() + "/zamba");
        QCOMPARE(recent[0].app, "velta");
        QVERIFY(recent[0].ultimo_uso >= before);
        QVERIFY(!recent[0].temporal);
    }
}

void LocalStorageProviderTest::savingAWorkIsARecentUseOfEveryMember()
{
    LocalStorageProvider storage(root());
    beginSession();
    const QByteArray begun = bytesOf(suite_.sessionFile());
    QVERIFY(storage.saveProject("zamba", Project()));
    QVERIFY(storage.saveProject("gato", Project()));
    QVERIFY(storage.saveProject("zamba", Project()));
    for (const char* member : {"ana", "beto"})
        QCOMPARE(recentPaths(member), (QStringList{root() + "/zamba", root() + "/gato"}));
    QVERIFY2(bytesOf(suite_.sessionFile()) != begun, "the session is kept alive");
}

void LocalStorageProviderTest::aUseCountsOnlyWhenTheWorkIsThere_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no JSON") << QByteArray("obra");
    QTest::newRow("a list") << QByteArray("[]");
    QTest::newRow("nothing") << QByteArray();
}

void LocalStorageProviderTest::aUseCountsOnlyWhenTheWorkIsThere()
{
    QFETCH(QByteArray, content);
    LocalStorageProvider storage(root());
    beginSession();
    writeBytes(root() + "/rota/project.json", content);
    QDir().mkpath(root() + "/tomada/project.json");
    QVERIFY(!storage.loadProject("rota", this));
    QVERIFY(!storage.loadProject("no_such_work", this));
    QVERIFY(!storage.saveProject("tomada", Project()));
    QVERIFY(!storage.saveProject("rota/project.json", Project()));
    QCOMPARE(suite_.everything(), QStringList{"sesion.json"});
}

void LocalStorageProviderTest::listingAndDeletingAreNoUses()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("zamba", Project()));
    beginSession();
    const QByteArray begun = bytesOf(suite_.sessionFile());
    QCOMPARE(storage.listProjects().size(), 1);
    storage.createProjectId("zamba");
    QVERIFY(storage.deleteProject("zamba"));
    QCOMPARE(suite_.everything(), QStringList{"sesion.json"});
    QCOMPARE(bytesOf(suite_.sessionFile()), begun);
}

void LocalStorageProviderTest::recentWorksAreThoseThatMembersUsedLast()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("nunca", Project()));
    beginSession();
    for (const char* id : {"zamba", "gato", "huayno"})
        QVERIFY(storage.saveProject(id, Project()));
    QVERIFY(std::unique_ptr<Project>(storage.loadProject("zamba", nullptr)));
    QVERIFY(storage.deleteProject("gato"));
    brusel::Recientes::registrarEnSesionActiva("/otro/lugar", "velta", false);
    QCOMPARE(idsOf(storage.recentProjects(10)), (QStringList{"zamba", "huayno"}));
    QCOMPARE(idsOf(storage.recentProjects(1)), QStringList{"zamba"});
}

void LocalStorageProviderTest::withoutASessionRecentWorksAreThoseWrittenLast()
{
    LocalStorageProvider storage(root());
    const QDateTime noon(QDate(2026, 11, 20), QTime(12, 0));
    int hours = 0;
    for (const char* id : {"zamba", "gato", "huayno"}) {
        QVERIFY(storage.saveProject(id, Project()));
        QFile file(root() + '/' + id + "/project.json");
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(noon.addSecs(3600 * ++hours), QFileDevice::FileModificationTime));
    }
    writeBytes(root() + "/rota/project.json", "obra");
    QCOMPARE(idsOf(storage.recentProjects(10)), (QStringList{"huayno", "gato", "zamba"}));
    QCOMPARE(idsOf(storage.recentProjects(2)), (QStringList{"huayno", "gato"}));
}

void LocalStorageProviderTest::withoutASessionNothingIsNoted()
{
    LocalStorageProvider storage(root());
    QVERIFY(storage.saveProject("zamba", Project()));
    QVERIFY(storage.loadProject("zamba", this));
    QCOMPARE(suite_.everything(), QStringList());
}

void LocalStorageProviderTest::aDamagedSessionStopsNeitherOpeningNorSaving_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < obstacles().size(); ++i)
        QTest::newRow(obstacles()[i].name) << i;
}

void LocalStorageProviderTest::aDamagedSessionStopsNeitherOpeningNorSaving()
{
    QFETCH(int, index);
    LocalStorageProvider storage(root());
    obstacles()[index].place(suite_.sessionFile());
    QVERIFY(storage.saveProject("zamba", Project()));
    QVERIFY(storage.loadProject("zamba", this));
    QVERIFY(!QFile::exists(suite_.listsFolder()));
}

void LocalStorageProviderTest::aListThatCannotBeWrittenStopsNoSave()
{
    LocalStorageProvider storage(root());
    beginSession();
    QDir().mkpath(suite_.listFile("ana"));
    QVERIFY(storage.saveProject("zamba", Project()));
    QVERIFY(storage.loadProject("zamba", this));
    QCOMPARE(recentPaths("beto"), QStringList{root() + "/zamba"});

    QVERIFY(QDir(suite_.listsFolder()).removeRecursively());
    writeBytes(suite_.listsFolder(), "a file");
    QVERIFY(storage.saveProject("gato", Project()));
    QVERIFY(storage.loadProject("gato", this));
}

/// The list of the first member is a link to the project file, which no write may reach.
void LocalStorageProviderTest::aLinkFromAListToTheWorkDoesNoHarm()
{
    LocalStorageProvider storage(root());
    beginSession();
    QDir().mkpath(suite_.listsFolder());
    QVERIFY(QFile::link(root() + "/zamba/project.json", suite_.listFile("ana")));
    QVERIFY(storage.saveProject("zamba", Project()));
    QCOMPARE(bytesOf(root() + "/zamba/project.json"),
             QJsonDocument(Project().toJson()).toJson(QJsonDocument::Indented));
}

VELTA_GUILESS_TEST(LocalStorageProviderTest)

} // namespace LocalStorageProviderTests

#include "LocalStorageProviderTest.moc"
