#include "content/ContentRoots.h"

#include "content/DownloadStage.h"
#include "content/InstallPlan.h"
#include "support/Nobody.h"
#include "support/TestProgram.h"

#include <QStandardPaths>

namespace ContentRootsTests {

namespace {

/// The package of a rhythm with one layer, whose label and style tell where it comes from.
QByteArray packageFrom(const QString& from, const QString& rhythmId, const QString& layerId)
{
    return QStringLiteral(R"({"musicalStyle": {"id": "folk", "displayName": "%1"},
                              "rhythm": {"id": "%2", "styleId": "folk", "displayName": "%1"},
                              "loopLayers": [{"id": "%3", "rhythmId": "%2", "label": "%1"}],
                              "instruments": [{"id": "arpa_gm", "name": "%1",
                                               "source": "GeneralMidiBank"}]})")
        .arg(from, rhythmId, layerId)
        .toUtf8();
}

QByteArray grooveFrom(const QString& rhythmId, double offset)
{
    return QStringLiteral(R"({"rhythmId": "%1", "offsets": [{"position": 0, "timing": %2}]})")
        .arg(rhythmId)
        .arg(offset)
        .toUtf8();
}

QStringList rhythmNames(const LoopLibrary& library)
{
    QStringList names;
    for (const Rhythm& rhythm : library.rhythms())
        names.append(rhythm.id + u' ' + rhythm.displayName);
    return names;
}

/// A program whose own content cannot be written, and a user's folder beside it.
class SplitStage {
public:
    SplitStage() : roots(dir.filePath("own"), dir.filePath("user")) {}

    void add(const QString& side, const QString& fileName, const QByteArray& text) const
    {
        ContentFixture::write(path(side, "loops/installed/" + fileName + ".content.json"), text);
    }

    void addGroove(const QString& side, const QString& fileName, const QByteArray& text) const
    {
        ContentFixture::write(path(side, "loops/grooves/" + fileName + ".groove.json"), text);
    }

    void addBank(const QString& side, const QString& id) const
    {
        ContentFixture::write(path(side, "soundfonts/instruments/" + id + ".sf2"), someBank());
    }

    QString path(const QString& side, const QString& name) const
    {
        return dir.filePath(side + '/' + name);
    }

    /// Every file of one side, by its path in it.
    QMap<QString, QByteArray> files(const QString& side) const
    {
        QMap<QString, QByteArray> files;
        const QDir root(dir.filePath(side));
        QDirIterator all(root.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (all.hasNext()) {
            const QString file = all.next();
            files[root.relativeFilePath(file)] = ContentFixture::read(file);
        }
        return files;
    }

    QTemporaryDir dir;
    ContentRoots roots;
};

/// What the program builds on such roots.
struct Services {
    Services(const ContentRoots& roots, const QUrl& server)
        : instruments(roots.soundfonts()), library(roots.loops(), &instruments), registry(roots),
          catalog(server), downloads(&catalog, &registry, &library, &instruments)
    {
        registry.load();
        library.reload();
    }

    /// "installed", or the message of the failure.
    QString install(const QString& id)
    {
        QSignalSpy installed(&downloads, &ContentDownloadManager::rhythmInstalled);
        QSignalSpy failed(&downloads, &ContentDownloadManager::installFailed);
        downloads.installRhythm(id);
        if (!await([&] { return installed.size() + failed.size() > 0; }))
            return QStringLiteral("no signal");
        return failed.isEmpty() ? QStringLiteral("installed") : failed[0][1].toString();
    }

    InstrumentLibrary instruments;
    LoopLibrary library;
    InstalledContentRegistry registry;
    ContentCatalog catalog;
    ContentDownloadManager downloads;
};

} // namespace

class ContentRootsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void aFolderThatCanBeWrittenHoldsAll();
    void aFolderThatCannotBeWrittenIsJoinedByTheUsers();
    void nobodyWritesIntoTheResourcesOfRoot_data();
    void nobodyWritesIntoTheResourcesOfRoot();
    void resourcesThatAreNotThereCanBeWrittenWhereTheyCouldBeMade();
    void theProgramsOwnFileIsFoundFirst();
    void bothFoldersAreReadTheProgramsOwnFirst();
    void theUsersFilesTakeNoPlaceOfTheProgramsOwn_data();
    void theUsersFilesTakeNoPlaceOfTheProgramsOwn();
    void aDamagedFileOfTheProgramsKeepsItsPlace();
    void instrumentsOfTheProgramStayWhatTheyAre();
    void groovesOfTheProgramStayWhatTheyAre();
    void whatLeftTheProgramsFolderTakesNoPlace();
    void nothingIsWrittenBesideTheProgram();
    void aRhythmComesAndGoesInTheUsersFolder();
    void aBankOfTheProgramIsNeitherFetchedNorDeleted();
    void rhythmsOfTheProgramAreNotDownloaded();
    void aRegistryThatListsThemUninstallsNone();
    void whereTheFolderCanBeWrittenNothingIsCalledTheProgramsOwn();
};

void ContentRootsTest::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

// ---- Which folders -------------------------------------------------------------------------

void ContentRootsTest::aFolderThatCanBeWrittenHoldsAll()
{
    const ContentRoots roots = ContentRoots::of("/opt/velta/resources", true);
    QCOMPARE(roots.loops(), ContentFolder("/opt/velta/resources/loops"));
    QCOMPARE(roots.soundfonts(), ContentFolder("/opt/velta/resources/soundfonts"));
    QVERIFY(!roots.loops().isSplit());
    QCOMPARE(roots.loops().inReadingOrder(), QStringList("/opt/velta/resources/loops"));
    QCOMPARE(roots.registryFile(), "/opt/velta/resources/loops/installed_registry.json");
    QCOMPARE(roots.gmBank(), "/opt/velta/resources/soundfonts/velta_bank_gm.sf2");
}

void ContentRootsTest::aFolderThatCannotBeWrittenIsJoinedByTheUsers()
{
    const QString user =
        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/contenido";
    const ContentRoots roots = ContentRoots::of("/usr/lib/velta/resources", false);
    QCOMPARE(roots.loops(), ContentFolder("/usr/lib/velta/resources/loops", user + "/loops"));
    QCOMPARE(roots.soundfonts(),
             ContentFolder("/usr/lib/velta/resources/soundfonts", user + "/soundfonts"));
    QVERIFY(roots.loops().isSplit());
    QCOMPARE(roots.loops().inReadingOrder(),
             QStringList({"/usr/lib/velta/resources/loops", user + "/loops"}));
    QCOMPARE(roots.registryFile(), user + "/loops/installed_registry.json");
    QCOMPARE(roots.gmBank(), "/usr/lib/velta/resources/soundfonts/velta_bank_gm.sf2");
}

void ContentRootsTest::nobodyWritesIntoTheResourcesOfRoot_data()
{
    QTest::addColumn<QString>("closed");
    QTest::newRow("the folder itself") << "";
    QTest::newRow("its loops") << "loops";
    QTest::newRow("its soundfonts") << "soundfonts";
}

void ContentRootsTest::nobodyWritesIntoTheResourcesOfRoot()
{
    QFETCH(QString, closed);
    QTemporaryDir dir;
    QVERIFY(Nobody::open(dir.path()));
    for (const char* name : {"resources", "resources/loops", "resources/soundfonts"}) {
        QVERIFY(QDir().mkpath(dir.filePath(name)));
        QVERIFY(Nobody::open(dir.filePath(name)));
    }
    const QString resources = dir.filePath("resources");
    const auto writable = [&] { return ContentRoots::canBeWritten(resources); };
    QCOMPARE(Nobody::answers(writable), 1);
    QVERIFY(Nobody::close(resources + '/' + closed));
    QCOMPARE(Nobody::answers(writable), 0);
}

void ContentRootsTest::resourcesThatAreNotThereCanBeWrittenWhereTheyCouldBeMade()
{
    QTemporaryDir dir;
    const auto writable = [&] { return ContentRoots::canBeWritten(dir.filePath("a/resources")); };
    QVERIFY(Nobody::open(dir.path()));
    QCOMPARE(Nobody::answers(writable), 1);
    QVERIFY(Nobody::close(dir.path()));
    QCOMPARE(Nobody::answers(writable), 0);
    ContentFixture::write(dir.filePath("a"), "a file");
    QVERIFY(!writable());
}

void ContentRootsTest::theProgramsOwnFileIsFoundFirst()
{
    const SplitStage stage;
    const ContentFolder folder = stage.roots.soundfonts();
    QCOMPARE(folder.find("instruments/a.sf2"), stage.path("own", "soundfonts/instruments/a.sf2"));
    stage.addBank("user", "a");
    QCOMPARE(folder.find("instruments/a.sf2"), stage.path("user", "soundfonts/instruments/a.sf2"));
    stage.addBank("own", "a");
    QCOMPARE(folder.find("instruments/a.sf2"), stage.path("own", "soundfonts/instruments/a.sf2"));
}

// ---- What is read --------------------------------------------------------------------------

void ContentRootsTest::bothFoldersAreReadTheProgramsOwnFirst()
{
    const SplitStage stage;
    stage.add("own", "zamba", packageFrom("own", "zamba", "zamba_a"));
    stage.addGroove("own", "zamba", grooveFrom("zamba", 0.25));
    stage.add("user", "bailecito", packageFrom("user", "bailecito", "bailecito_a"));
    stage.addGroove("user", "bailecito", grooveFrom("bailecito", 0.5));
    stage.addBank("user", "erke");
    const Services services(stage.roots, QUrl());
    QCOMPARE(rhythmNames(services.library), QStringList({"zamba own", "bailecito user"}));
    QCOMPARE(services.library.styles().size(), 1);
    QCOMPARE(services.library.styles().first().displayName, "own");
    QVERIFY(services.library.grooveForRhythm("zamba"));
    QVERIFY(services.library.grooveForRhythm("bailecito"));
    Instrument erke;
    erke.source = InstrumentSource::CustomRecordedBank;
    erke.soundfontBankPath = "instruments/erke.sf2";
    QVERIFY(services.instruments.customBankAvailable(erke));
    QCOMPARE(services.library.refused(), QStringList());
}

void ContentRootsTest::theUsersFilesTakeNoPlaceOfTheProgramsOwn_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("rhythm");
    QTest::addColumn<QString>("layer");
    QTest::newRow("the same file") << "vidala"
                                   << "vidala"
                                   << "vidala_b";
    QTest::newRow("the same file in capitals") << "VIDALA"
                                               << "VIDALA"
                                               << "vidala_b";
    QTest::newRow("the same rhythm in another file") << "other"
                                                     << "vidala"
                                                     << "vidala_b";
    QTest::newRow("another rhythm in a file of this name") << "vidala"
                                                           << "other"
                                                           << "other_a";
    QTest::newRow("a layer of the program's") << "other"
                                              << "other"
                                              << "vidala_a";
    QTest::newRow("a rhythm of the build") << "folklore_zamba"
                                           << "folklore_zamba"
                                           << "folklore_zamba_b";
}

void ContentRootsTest::theUsersFilesTakeNoPlaceOfTheProgramsOwn()
{
    QFETCH(QString, file);
    QFETCH(QString, rhythm);
    QFETCH(QString, layer);
    const SplitStage stage;
    stage.add("own", "vidala", packageFrom("own", "vidala", "vidala_a"));
    stage.add("own", "folklore_zamba", packageFrom("own", "folklore_zamba", "folklore_zamba_a"));
    stage.add("user", file, packageFrom("user", rhythm, layer));
    const Services services(stage.roots, QUrl());
    QCOMPARE(rhythmNames(services.library), QStringList({"folklore_zamba own", "vidala own"}));
    QCOMPARE(services.library.refused(), QStringList(file));
    QVERIFY(services.library.cameWithProgram("Vidala"));
}

void ContentRootsTest::aDamagedFileOfTheProgramsKeepsItsPlace()
{
    const SplitStage stage;
    stage.add("own", "Vidala", "{");
    stage.add("user", "vidala", packageFrom("user", "vidala", "vidala_a"));
    const Services services(stage.roots, QUrl());
    QCOMPARE(rhythmNames(services.library), QStringList());
    QCOMPARE(services.library.refused(), QStringList("vidala"));
    QVERIFY(services.library.cameWithProgram("vidala"));
}

void ContentRootsTest::instrumentsOfTheProgramStayWhatTheyAre()
{
    const SplitStage stage;
    stage.add("own", "zamba", packageFrom("own", "zamba", "zamba_a"));
    stage.add("user", "gato", packageFrom("user", "gato", "gato_a"));
    const Services services(stage.roots, QUrl());
    QCOMPARE(services.library.rhythms().size(), 2);
    QCOMPARE(services.instruments.find("arpa_gm")->name, "own");
}

void ContentRootsTest::groovesOfTheProgramStayWhatTheyAre()
{
    const SplitStage stage;
    stage.add("own", "vidala", packageFrom("own", "vidala", "vidala_a"));
    stage.addGroove("own", "vidala", grooveFrom("vidala", 0.25));
    const Services before(stage.roots, QUrl());
    const GrooveTemplate groove = *before.library.grooveForRhythm("vidala");
    stage.addGroove("user", "vidala", grooveFrom("vidala", 0.5));
    stage.addGroove("user", "z", grooveFrom("vidala", 0.5));
    const Services after(stage.roots, QUrl());
    QCOMPARE(*after.library.grooveForRhythm("vidala"), groove);
}

void ContentRootsTest::whatLeftTheProgramsFolderTakesNoPlace()
{
    const SplitStage stage;
    stage.add("own", "vidala", packageFrom("own", "vidala", "vidala_a"));
    stage.add("own", "folklore_zamba", packageFrom("own", "folklore_zamba", "folklore_zamba_a"));
    stage.add("user", "gato", packageFrom("user", "gato", "folklore_zamba_a"));
    stage.add("user", "vidala", packageFrom("user", "vidala", "vidala_a"));
    Services services(stage.roots, QUrl());
    QCOMPARE(rhythmNames(services.library), QStringList({"folklore_zamba own", "vidala own"}));
    QVERIFY(QDir(stage.path("own", "")).removeRecursively());
    services.library.reload();
    QCOMPARE(rhythmNames(services.library), QStringList({"gato user", "vidala user"}));
    QCOMPARE(services.library.refused(), QStringList());
    QCOMPARE(services.library.styles().first().displayName, "user");
    QCOMPARE(services.instruments.find("arpa_gm")->name, "user");
    QVERIFY(!services.library.cameWithProgram("vidala"));
    QVERIFY(!services.library.hasPackageFile("folklore_zamba"));
}

// ---- What is written -----------------------------------------------------------------------

void ContentRootsTest::nothingIsWrittenBesideTheProgram()
{
    const SplitStage stage;
    stage.add("own", "zamba", packageFrom("own", "zamba", "zamba_a"));
    const auto before = stage.files("own");
    const Services services(stage.roots, QUrl());
    QCOMPARE(stage.files("own"), before);
    QCOMPARE(stage.files("user").keys(), QStringList("loops/manifest.json"));
    QVERIFY(stage.files("user").first().contains("zamba"));
}

void ContentRootsTest::aRhythmComesAndGoesInTheUsersFolder()
{
    const SplitStage stage;
    stage.add("own", "zamba", packageFrom("own", "zamba", "zamba_a"));
    const auto own = stage.files("own");
    ContentHost host;
    offer(host, "gato", {"charango"});
    Services services(stage.roots, host.url());
    QCOMPARE(services.install("gato"), "installed");
    QCOMPARE(stage.files("own"), own);
    QCOMPARE(stage.files("user").keys(),
             QStringList({"loops/grooves/gato.groove.json", "loops/installed/gato.content.json",
                          "loops/installed_registry.json", "loops/manifest.json",
                          "soundfonts/instruments/charango.sf2"}));
    QVERIFY(services.library.findRhythm("gato"));

    Services again(stage.roots, host.url());
    QVERIFY(again.registry.isRhythmInstalled("gato"));
    QVERIFY(again.instruments.customBankAvailable(*again.instruments.find("charango")));
    QVERIFY(again.downloads.uninstallRhythm("gato"));
    QCOMPARE(stage.files("own"), own);
    QCOMPARE(stage.files("user").keys(),
             QStringList({"loops/installed_registry.json", "loops/manifest.json"}));
}

void ContentRootsTest::aBankOfTheProgramIsNeitherFetchedNorDeleted()
{
    const SplitStage stage;
    stage.addBank("own", "charango");
    ContentHost host;
    offer(host, "gato", {"charango"});
    Services services(stage.roots, host.url());
    QCOMPARE(services.install("gato"), "installed");
    QVERIFY(!host.asked().contains("/instruments/charango.sf2"));
    QVERIFY(services.downloads.uninstallRhythm("gato"));
    QVERIFY(QFile::exists(stage.path("own", "soundfonts/instruments/charango.sf2")));
}

void ContentRootsTest::rhythmsOfTheProgramAreNotDownloaded()
{
    const SplitStage stage;
    stage.add("own", "file", packageFrom("own", "vidala", "vidala_a"));
    ContentHost host;
    for (const char* id : {"file", "vidala", "VIDALA"})
        offer(host, id, {});
    Services services(stage.roots, host.url());
    for (const QString id : {"file", "vidala", "VIDALA"}) {
        QVERIFY(InstallPlan::isProgramsOwn(id, services.library, services.registry));
        QCOMPARE(services.install(id), "El ritmo " + id + " ya vino con el programa.");
    }
    QCOMPARE(host.asked(), QStringList());
}

void ContentRootsTest::aRegistryThatListsThemUninstallsNone()
{
    const SplitStage stage;
    stage.add("own", "vidala", packageFrom("own", "vidala", "vidala_a"));
    ContentFixture::write(stage.path("user", "loops/installed_registry.json"),
                          R"({"installedRhythms": ["gato", "vidala", "Vidala"]})");
    Services services(stage.roots, QUrl());
    QCOMPARE(services.registry.installedRhythms(), QStringList("gato"));
    QVERIFY(!services.downloads.uninstallRhythm("vidala"));
    QVERIFY(InstallPlan::isProgramsOwn("vidala", services.library, services.registry));
    QVERIFY(services.library.findRhythm("vidala"));
}

void ContentRootsTest::whereTheFolderCanBeWrittenNothingIsCalledTheProgramsOwn()
{
    const SplitStage stage;
    stage.add("own", "gato", packageFrom("own", "gato", "gato_a"));
    const ContentRoots roots(stage.path("own", ""));
    QVERIFY(roots.ownPackages().isEmpty());
    const Services services(roots, QUrl());
    QVERIFY(!services.library.cameWithProgram("gato"));
    QVERIFY(services.library.cameWithProgram("folklore_zamba"));
}

VELTA_GUILESS_TEST(ContentRootsTest)

} // namespace ContentRootsTests

#include "ContentRootsTest.moc"
