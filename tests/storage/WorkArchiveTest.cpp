#include "storage/WorkArchive.h"

#include "model/Project.h"
#include "storage/LocalStorageProvider.h"
#include "support/Files.h"
#include "support/TestProgram.h"
#include "support/ZipBytes.h"

#include <QDir>
#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace WorkArchiveTests {

namespace {

using ZipBytes::File;

/// A work with one clip for each of these paths.
Project* workWith(const QStringList& clips, QObject* parent)
{
    auto* work = new Project(parent);
    work->name = "Zamba de la siesta";
    work->tracks.append(Track{});
    AudioTrack voice;
    for (const QString& clip : clips) {
        AudioClip take;
        take.audioFilePath = clip;
        take.durationBeats = 1.5;
        voice.clips.append(take);
    }
    work->audioTracks.append(voice);
    return work;
}

QByteArray textOf(const QStringList& clips)
{
    const std::unique_ptr<Project> work(workWith(clips, nullptr));
    return QJsonDocument(work->toJson()).toJson(QJsonDocument::Indented);
}

File projectFile(const QStringList& clips = {})
{
    return {.name = "project.json", .bytes = textOf(clips)};
}

/// Two computers, and what is carried from one to the other.
class Computers {
public:
    QString path(const QString& name) const { return dir_.filePath(name); }

    QString archive() const { return path("carried/obra.velta"); }

    std::optional<QString> importInto(const QString& computer) const
    {
        LocalStorageProvider storage(path(computer));
        return storage.importProject(archive());
    }

    /// Everything below a folder, hidden or not, by its path in it.
    QStringList everythingIn(const QString& folder) const
    {
        QStringList found;
        const QDir root(path(folder));
        QDirIterator all(root.path(),
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
        while (all.hasNext())
            found.append(root.relativeFilePath(all.next()));
        found.sort();
        return found;
    }

private:
    QTemporaryDir dir_;
};

} // namespace

class WorkArchiveTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void aWorkIsCarriedAsItIs();
    void anArchiveHoldsTheWorkAndNothingElse();
    void everyZipProgramReadsIt();
    void aWorkThatComesTwiceIsTwoWorks();
    void theIdIsMadeOfTheTitle();
    void aClipFromElsewhereComesAlongUnderAPlainName();
    void aClipWithoutItsFileStaysSilent();
    void aDigitallySilentTakeIsCarried();
    void filesThatNoClipNamesStayOut();
    void anArchiveThatOthersPackedIsRead();
    void hostileArchivesAreRefusedWithoutATrace_data();
    void hostileArchivesAreRefusedWithoutATrace();
    void cutAndFlippedArchivesAreWholeOrRefused();
    void aBombIsRefusedBeforeItIsUnpacked();
    void pipesAndFoldersAreNoArchives();
    void whereNothingCanBeWrittenNothingIsLost();
    void tooManyFilesAreNotWritten();
};

void WorkArchiveTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

// ---- Carrying ------------------------------------------------------------------------------

void WorkArchiveTest::aWorkIsCarriedAsItIs()
{
    const Computers computers;
    const QByteArray take(300000, 'v');
    LocalStorageProvider here(computers.path("here"));
    const std::unique_ptr<Project> work(workWith({"toma.wav", "ñandú.wav"}, nullptr));
    QVERIFY(here.saveProject("zamba", *work));
    QVERIFY(writeBytes(computers.path("here/zamba/toma.wav"), take));
    QVERIFY(writeBytes(computers.path("here/zamba/ñandú.wav"), "voz"));

    QVERIFY(QDir().mkpath(computers.path("carried")));
    const std::unique_ptr<Project> opened(here.loadProject("zamba", nullptr));
    QVERIFY(WorkArchive::write(*opened, here.projectFolder("zamba"), computers.archive()));
    const auto id = computers.importInto("there");
    QCOMPARE(id, "zamba_de_la_siesta");
    QCOMPARE(computers.everythingIn("there"),
             QStringList({"zamba_de_la_siesta", "zamba_de_la_siesta/project.json",
                          "zamba_de_la_siesta/toma.wav", "zamba_de_la_siesta/ñandú.wav"}));
    const QString there = computers.path("there/zamba_de_la_siesta");
    QCOMPARE(bytesOf(there + "/project.json"), bytesOf(computers.path("here/zamba/project.json")));
    QVERIFY(bytesOf(there + "/toma.wav") == take);
    QCOMPARE(bytesOf(there + "/ñandú.wav"), "voz");
}

void WorkArchiveTest::anArchiveHoldsTheWorkAndNothingElse()
{
    const Computers computers;
    QVERIFY(writeBytes(computers.path("here/toma.wav"), "voz"));
    QVERIFY(writeBytes(computers.path("here/secreto.txt"), "secreto"));
    QVERIFY(writeBytes(computers.path("here/vieja.wav"), "no longer used"));
    QVERIFY(QDir().mkpath(computers.path("carried")));
    const std::unique_ptr<Project> work(workWith({"toma.wav", "toma.wav"}, nullptr));
    QVERIFY(WorkArchive::write(*work, computers.path("here"), computers.archive()));
    QCOMPARE(computers.everythingIn("carried"), QStringList("obra.velta"));
    const QByteArray bytes = bytesOf(computers.archive());
    QCOMPARE(bytes.count("PK\1\2"), 2);
    QVERIFY(!bytes.contains("secreto") && !bytes.contains("vieja"));
}

void WorkArchiveTest::everyZipProgramReadsIt()
{
    const Computers computers;
    QVERIFY(writeBytes(computers.path("here/toma.wav"), "voz"));
    QVERIFY(QDir().mkpath(computers.path("carried")));
    const std::unique_ptr<Project> work(workWith({"toma.wav"}, nullptr));
    QVERIFY(WorkArchive::write(*work, computers.path("here"), computers.archive()));
    QProcess python;
    python.start("python3", {"-c",
                             "import sys, zipfile\n"
                             "work = zipfile.ZipFile(sys.argv[1])\n"
                             "assert work.testzip() is None\n"
                             "assert sorted(work.namelist()) == ['project.json', 'toma.wav']\n"
                             "sys.stdout.buffer.write(work.read('project.json'))",
                             computers.archive()});
    QVERIFY(python.waitForFinished(60000));
    QCOMPARE(python.exitCode(), 0);
    QCOMPARE(python.readAllStandardOutput(), textOf({"toma.wav"}));
}

void WorkArchiveTest::aWorkThatComesTwiceIsTwoWorks()
{
    const Computers computers;
    QVERIFY(writeBytes(computers.archive(), ZipBytes::of({projectFile()})));
    QCOMPARE(computers.importInto("there"), "zamba_de_la_siesta");
    QVERIFY(writeBytes(computers.path("there/zamba_de_la_siesta/project.json"), "{}"));
    QCOMPARE(computers.importInto("there"), "zamba_de_la_siesta_2");
    QCOMPARE(bytesOf(computers.path("there/zamba_de_la_siesta/project.json")), "{}");
}

void WorkArchiveTest::theIdIsMadeOfTheTitle()
{
    const Computers computers;
    QVERIFY(writeBytes(computers.archive(),
                       ZipBytes::of({{.name = "project.json", .bytes = R"({"name": "¡Hola!"})"}})));
    QCOMPARE(computers.importInto("there"), "_hola_");
    QVERIFY(writeBytes(computers.archive(),
                       ZipBytes::of({{.name = "project.json", .bytes = R"({"name": 7})"}})));
    QCOMPARE(computers.importInto("there"), "proyecto");
    QVERIFY(writeBytes(computers.archive(), ZipBytes::of({{.name = "project.json",
                                                           .bytes = R"({"name": "../../x"})"}})));
    QCOMPARE(computers.importInto("there"), "_x");
}

void WorkArchiveTest::aClipFromElsewhereComesAlongUnderAPlainName()
{
    const Computers computers;
    QVERIFY(writeBytes(computers.path("here/toma.wav"), "in the folder"));
    QVERIFY(writeBytes(computers.path("elsewhere/toma.wav"), "elsewhere"));
    QVERIFY(QDir().mkpath(computers.path("carried")));
    const std::unique_ptr<Project> work(workWith(
        {"toma.wav", computers.path("elsewhere/toma.wav"), computers.path("elsewhere/missing.wav")},
        nullptr));
    QVERIFY(WorkArchive::write(*work, computers.path("here"), computers.archive()));
    QCOMPARE(work->audioTracks[0].clips[1].audioFilePath, computers.path("elsewhere/toma.wav"));
    const auto id = computers.importInto("there");
    QVERIFY(id);
    LocalStorageProvider there(computers.path("there"));
    const std::unique_ptr<Project> opened(there.loadProject(*id, nullptr));
    const auto clip = [&](int index) { return opened->audioTracks[0].clips[index].audioFilePath; };
    QCOMPARE(bytesOf(there.projectFolder(*id) + '/' + clip(0)), "in the folder");
    QCOMPARE(bytesOf(there.projectFolder(*id) + '/' + clip(1)), "elsewhere");
    QCOMPARE(clip(1), "toma_2.wav");
    QCOMPARE(clip(2), "missing.wav");
}

void WorkArchiveTest::aClipWithoutItsFileStaysSilent()
{
    const Computers computers;
    QVERIFY(QDir().mkpath(computers.path("carried")));
    const std::unique_ptr<Project> work(workWith({"gone.wav", ""}, nullptr));
    QVERIFY(WorkArchive::write(*work, computers.path("here"), computers.archive()));
    const auto id = computers.importInto("there");
    QVERIFY(id);
    QCOMPARE(bytesOf(computers.path("there/" + *id + "/project.json")), textOf({"gone.wav", ""}));
}

void WorkArchiveTest::aDigitallySilentTakeIsCarried()
{
    // A microphone that is switched off writes zeros, which any packing would shrink like a bomb.
    const Computers computers;
    const QByteArray silence(90 * 1024 * 1024, '\0');
    QVERIFY(writeBytes(computers.path("here/toma.wav"), silence));
    QVERIFY(QDir().mkpath(computers.path("carried")));
    const std::unique_ptr<Project> work(workWith({"toma.wav"}, nullptr));
    QVERIFY(WorkArchive::write(*work, computers.path("here"), computers.archive()));
    const auto id = computers.importInto("there");
    QVERIFY(id);
    QCOMPARE(QFileInfo(computers.path("there/" + *id + "/toma.wav")).size(), silence.size());
}

void WorkArchiveTest::filesThatNoClipNamesStayOut()
{
    const Computers computers;
    QVERIFY(writeBytes(computers.archive(),
                       ZipBytes::of({projectFile({"toma.wav"}),
                                     {.name = "toma.wav", .bytes = "voz"},
                                     {.name = "velta.desktop", .bytes = "[Desktop Entry]"}})));
    const auto id = computers.importInto("there");
    QVERIFY(id);
    QCOMPARE(computers.everythingIn("there/" + *id), QStringList({"project.json", "toma.wav"}));
}

void WorkArchiveTest::anArchiveThatOthersPackedIsRead()
{
    const Computers computers;
    File project = projectFile({"toma.wav"});
    project.deflated = true;
    project.unixMode = 0;
    File take{.name = "toma.wav", .bytes = QByteArray(5000, 'v'), .deflated = true, .flags = 0};
    QVERIFY(writeBytes(computers.archive(), ZipBytes::of({take, project})));
    const auto id = computers.importInto("there");
    QVERIFY(id);
    QVERIFY(bytesOf(computers.path("there/" + *id + "/toma.wav")) == take.bytes);
}

// ---- Hostile archives ----------------------------------------------------------------------

void WorkArchiveTest::hostileArchivesAreRefusedWithoutATrace_data()
{
    QTest::addColumn<QByteArray>("archive");
    const auto with = [](const File& file) { return ZipBytes::of({projectFile({"a.wav"}), file}); };
    const auto row = [](const char* name, const QByteArray& archive) {
        QTest::newRow(name) << archive;
    };
    const QByteArray honest = with({.name = "a.wav", .bytes = "voz"});

    row("nothing", "");
    row("no ZIP at all", "RIFF, but not for long");
    row("an empty ZIP", ZipBytes::of({}));
    row("no project.json", ZipBytes::of({{.name = "a.wav", .bytes = "voz"}}));
    row("a project.json that is none", ZipBytes::of({{.name = "project.json", .bytes = "[1, 2]"}}));
    row("a path upwards", with({.name = "../a.wav", .bytes = "voz"}));
    row("a path upwards for Windows", with({.name = "..\\a.wav", .bytes = "voz"}));
    row("a path upwards that comes back", with({.name = "x/../../a.wav", .bytes = "voz"}));
    row("an absolute path", with({.name = "/tmp/a.wav", .bytes = "voz"}));
    row("a path with a drive", with({.name = "C:a.wav", .bytes = "voz"}));
    row("a file in a folder", with({.name = "x/a.wav", .bytes = "voz"}));
    row("a folder", with({.name = "a.wav/", .bytes = "", .unixMode = 0040755}));
    row("a hidden file", with({.name = ".bashrc", .bytes = "voz"}));
    row("a symbolic link", with({.name = "a.wav", .bytes = "/etc/passwd", .unixMode = 0120777}));
    row("a device", with({.name = "a.wav", .bytes = "", .unixMode = 0020666}));
    row("a pipe", with({.name = "a.wav", .bytes = "", .unixMode = 0010644}));
    row("a name that is no UTF-8", with({.name = "a\xFF.wav", .bytes = "voz"}));
    row("a name without letters", with({.name = "", .bytes = "voz"}));
    row("the name of a device", with({.name = "NUL.wav", .bytes = "voz"}));
    row("names that differ in case", ZipBytes::of({projectFile({"a.wav"}),
                                                   {.name = "a.wav", .bytes = "voz"},
                                                   {.name = "A.WAV", .bytes = "voz"}}));
    row("names that differ in how an accent is written",
        ZipBytes::of({projectFile(),
                      {.name = "\xC3\xB1.wav", .bytes = "voz"},
                      {.name = "n\xCC\x83.wav", .bytes = "voz"}}));
    row("one name twice", ZipBytes::of({projectFile(), projectFile()}));
    row("a second project.json in capitals",
        ZipBytes::of({projectFile(), {.name = "PROJECT.JSON", .bytes = "{}"}}));
    row("an encrypted file", with({.name = "a.wav", .bytes = "voz", .flags = 0x801}));
    row("a method that nobody knows", with({.name = "a.wav", .bytes = "voz", .method = 99}));
    row("a file that is shorter than stated",
        with({.name = "a.wav", .bytes = "voz", .deflated = true, .statedSize = 4}));
    row("a file that is longer than stated",
        with(
            {.name = "a.wav", .bytes = QByteArray(70000, 'v'), .deflated = true, .statedSize = 3}));
    row("a checksum that does not hold", with({.name = "a.wav", .bytes = "voz", .statedCrc = 1}));
    row("deflated bytes that are none",
        with({.name = "a.wav", .bytes = "\xFF\xFF\xFF\xFF\xFF", .method = 8, .statedSize = 9}));
    row("two headers that contradict each other",
        with({.name = "a.wav", .bytes = "voz", .localName = "b.wav"}));
    row("a directory that is cut", honest.chopped(40));
    row("a directory that begins elsewhere",
        QByteArray(honest).replace(honest.size() - 6, 4, ZipBytes::little<quint32>(7)));
    row("a directory that tells of more files",
        QByteArray(honest).replace(honest.size() - 14, 4, QByteArray("\xFF\x7F\xFF\x7F", 4)));

    QList<File> thousand{projectFile()};
    for (int i = 0; i < 1000; ++i)
        thousand.append({.name = QByteArray::number(i) + ".wav", .bytes = "voz"});
    row("a thousand files", ZipBytes::of(thousand));

    const auto naming = [](const QString& clip) { return ZipBytes::of({projectFile({clip})}); };
    row("a clip that names a file of the system", naming("/etc/passwd"));
    row("a clip that names a file of another work", naming("../otra/toma.wav"));
    row("a clip that names the work's own file", naming("Project.json"));
    row("a project.json of a thousand million zeros that is told to be small",
        ZipBytes::of({{.name = "project.json",
                       .bytes = QByteArray(8 << 20, '0'),
                       .deflated = true,
                       .statedSize = 100}}));
}

void WorkArchiveTest::hostileArchivesAreRefusedWithoutATrace()
{
    QFETCH(QByteArray, archive);
    const Computers computers;
    QVERIFY(writeBytes(computers.archive(), archive));
    QVERIFY(writeBytes(computers.path("there/otra/toma.wav"), "precious"));
    const QStringList before = computers.everythingIn("");
    QVERIFY(!computers.importInto("there"));
    QCOMPARE(computers.everythingIn(""), before);
    QCOMPARE(bytesOf(computers.path("there/otra/toma.wav")), "precious");
}

void WorkArchiveTest::cutAndFlippedArchivesAreWholeOrRefused()
{
    File project = projectFile({"a.wav"});
    project.deflated = true;
    const File take{.name = "a.wav", .bytes = QByteArray(200, 'v')};
    const QByteArray honest = ZipBytes::of({project, take});
    const Computers computers;
    const auto tryOne = [&](const QByteArray& bytes) {
        QVERIFY(writeBytes(computers.archive(), bytes));
        const auto id = computers.importInto("there");
        const QStringList expected =
            id ? QStringList({*id, *id + "/a.wav", *id + "/project.json"}) : QStringList();
        if (id) {
            QCOMPARE(bytesOf(computers.path("there/" + *id + "/project.json")), project.bytes);
            QVERIFY(bytesOf(computers.path("there/" + *id + "/a.wav")) == take.bytes ||
                    computers.everythingIn("there") == expected);
        }
        QDir(computers.path("there")).removeRecursively();
    };
    for (qsizetype at = 0; at < honest.size(); at += 3) {
        tryOne(honest.first(at));
        QByteArray flipped = honest;
        flipped[at] = static_cast<char>(flipped[at] ^ 0x41);
        tryOne(flipped);
    }
}

void WorkArchiveTest::aBombIsRefusedBeforeItIsUnpacked()
{
    // 100 MiB of zeros take some 100 KiB.
    const Computers computers;
    const QByteArray bomb =
        ZipBytes::of({projectFile({"a.wav"}),
                      {.name = "a.wav", .bytes = QByteArray(100 << 20, '\0'), .deflated = true}});
    QVERIFY(bomb.size() < 200 * 1024);
    QVERIFY(writeBytes(computers.archive(), bomb));
    QVERIFY(!WorkArchive::unpack(computers.archive(), computers.path("unpacked")));
    QVERIFY(!QFileInfo::exists(computers.path("unpacked")));
    QVERIFY(!computers.importInto("there"));
    QCOMPARE(computers.everythingIn("there"), QStringList());
}

void WorkArchiveTest::pipesAndFoldersAreNoArchives()
{
    const Computers computers;
    QVERIFY(!computers.importInto("there"));
    QVERIFY(QDir().mkpath(computers.archive()));
    QVERIFY(!computers.importInto("there"));
    QVERIFY(QDir().rmdir(computers.archive()));
    QCOMPARE(QProcess::execute("mkfifo", {computers.archive()}), 0);
    QVERIFY(!computers.importInto("there"));
    QCOMPARE(computers.everythingIn("there"), QStringList());
}

// ---- Faults --------------------------------------------------------------------------------

void WorkArchiveTest::whereNothingCanBeWrittenNothingIsLost()
{
    const Computers computers;
    const std::unique_ptr<Project> work(workWith({}, nullptr));
    QVERIFY(!WorkArchive::write(*work, computers.path("here"), computers.archive()));
    QVERIFY(QDir().mkpath(computers.archive()));
    QVERIFY(!WorkArchive::write(*work, computers.path("here"), computers.archive()));
    QCOMPARE(computers.everythingIn("carried"), QStringList("obra.velta"));

    QVERIFY(QDir().rmdir(computers.archive()));
    QVERIFY(writeBytes(computers.archive(), ZipBytes::of({projectFile()})));
    QVERIFY(writeBytes(computers.path("there"), "a file in the way"));
    QVERIFY(!computers.importInto("there"));
}

void WorkArchiveTest::tooManyFilesAreNotWritten()
{
    const Computers computers;
    QVERIFY(QDir().mkpath(computers.path("carried")));
    QStringList clips;
    for (int i = 0; i <= WorkArchive::kMaxFiles; ++i) {
        clips.append(QString::number(i) + ".wav");
        QVERIFY(writeBytes(computers.path("here/" + clips.last()), "voz"));
    }
    const std::unique_ptr<Project> all(workWith(clips, nullptr));
    QVERIFY(!WorkArchive::write(*all, computers.path("here"), computers.archive()));
    const std::unique_ptr<Project> most(workWith(clips.mid(1), nullptr));
    QVERIFY(WorkArchive::write(*most, computers.path("here"), computers.archive()));
    QVERIFY(computers.importInto("there"));
}

VELTA_GUILESS_TEST(WorkArchiveTest)

} // namespace WorkArchiveTests

#include "WorkArchiveTest.moc"
