#include "content/ContentDownloadManager.h"

#include "content/DownloadStage.h"
#include "support/TestProgram.h"

#include <QRegularExpression>

namespace ContentDownloadManagerTests {

namespace {

InstalledInstrumentRecord recordOf(const QString& id, int count)
{
    return {id, "instruments/" + id + ".sf2", count};
}

QStringList messages(const QSignalSpy& spy)
{
    QStringList messages;
    for (const QList<QVariant>& signal : spy)
        messages.append(signal[0].toString());
    return messages;
}

} // namespace

class ContentDownloadManagerTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void aRhythmWithoutBanksTakesTwoRequests();
    void banksAreFetchedOneAfterTheOther();
    void filesAreKeptAsTheyCame();
    void aBankThatIsThereIsNotFetchedButCounted();
    void anInstalledRhythmIsToldAtOnce();
    void aSecondInstallIsRefusedAndTheFirstGoesOn();
    void anInstalledRhythmIsRefusedWhileAnotherComes();
    void theOutcomeIsToldWhenAllIsDone();
    void oneInstallMayFollowAnother();
    void aPackageOfAnotherRhythmIsRefused_data();
    void aPackageOfAnotherRhythmIsRefused();
    void aGrooveBeyondItsBoundIsRefused();
    void rhythmsOfTheProgramAreNotDownloaded_data();
    void rhythmsOfTheProgramAreNotDownloaded();
    void aRegistryThatListsThemUninstallsNone();
    void instrumentsAreToldOfWhenTheBankIsGone();
    void aBaseWithASlashAtItsEndWorks();
    void idsAreEscapedInAddresses();
    void cancellingLeavesNothingBehind_data();
    void cancellingLeavesNothingBehind();
    void cancellingKeepsBanksThatWereThere();
    void cancellingWithoutAnInstallDoesNothing();
    void uninstallingTakesEverythingAway();
    void uninstallingKeepsSharedBanks();
    void rhythmsOfTheProgramCannotBeUninstalled();
    void uninstallingWithoutAPackageKeepsTheBanks_data();
    void uninstallingWithoutAPackageKeepsTheBanks();
    void uninstallingDuringAnInstallGoesAhead();
    void idsMayStandInTheRegistryItself();
    void aSlotMayStartTheNextInstall();
    void aSlotMayDeleteTheDownloads_data();
    void aSlotMayDeleteTheDownloads();
    void deletingEndsWhatIsUnderWay();
    void theCatalogueMayGoFirst();
};

void ContentDownloadManagerTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

// ---- Installing ----------------------------------------------------------------------------

void ContentDownloadManagerTest::aRhythmWithoutBanksTakesTwoRequests()
{
    ContentHost host;
    offer(host, "zamba", {});
    DownloadStage stage(host.url());
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(host.asked(),
             QStringList({"/content/zamba.content.json", "/grooves/zamba.groove.json"}));
    QCOMPARE(messages(stage.progress), QStringList{"Descargando zamba..."});
    QVERIFY(!stage.downloads->isBusy());
    QVERIFY(stage.registry.isRhythmInstalled("zamba"));
    QVERIFY(stage.content.library().findRhythm("zamba"));
    QVERIFY(stage.content.library().grooveForRhythm("zamba"));
}

void ContentDownloadManagerTest::banksAreFetchedOneAfterTheOther()
{
    ContentHost host;
    offer(host, "zamba", {"quena", "charango"});
    DownloadStage stage(host.url());
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(host.asked().mid(2),
             QStringList({"/instruments/quena.sf2", "/instruments/charango.sf2"}));
    const QStringList expected{"Descargando zamba...", "Descargando instrumento quena...",
                               "Descargando instrumento charango..."};
    QCOMPARE(messages(stage.progress), expected);
    const Instrument* quena = stage.content.instruments().find("quena");
    QVERIFY(quena && stage.content.instruments().customBankAvailable(*quena));
    const QList records{recordOf("quena", 1), recordOf("charango", 1)};
    QCOMPARE(stage.registry.installedInstruments(), records);
}

void ContentDownloadManagerTest::filesAreKeptAsTheyCame()
{
    ContentHost host;
    offer(host, "zamba", {"charango"});
    const QByteArray package = "\xEF\xBB\xBF \n" + packageWith("zamba", {"charango"}) + "\r\n\n ";
    host.put("/content/zamba.content.json", package);
    host.put("/grooves/zamba.groove.json", "no groove at all");
    DownloadStage stage(host.url());
    const auto before = stage.files();
    QCOMPARE(stage.install("zamba"), "installed");
    auto after = stage.files();
    QCOMPARE(after.take("loops/installed/zamba.content.json"), package);
    QCOMPARE(after.take("loops/grooves/zamba.groove.json"), QByteArray("no groove at all"));
    QCOMPARE(after.take("soundfonts/instruments/charango.sf2"), someBank());
    QVERIFY(after.take("loops/installed_registry.json").contains("zamba"));
    QVERIFY(after.value("loops/manifest.json").contains("zamba"));
    after["loops/manifest.json"] = before["loops/manifest.json"];
    QCOMPARE(after, before);
}

void ContentDownloadManagerTest::aBankThatIsThereIsNotFetchedButCounted()
{
    ContentHost host;
    offer(host, "zamba", {"charango"});
    offer(host, "cueca", {"charango"});
    DownloadStage stage(host.url());
    ContentFixture::write(stage.bank("charango"), "another bank");
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(host.asked().size(), 2);
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 1)});
    QCOMPARE(stage.install("cueca"), "installed");
    QCOMPARE(host.asked().size(), 4);
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 2)});
    QCOMPARE(ContentFixture::read(stage.bank("charango")), QByteArray("another bank"));
}

void ContentDownloadManagerTest::anInstalledRhythmIsToldAtOnce()
{
    const ContentHost host;
    DownloadStage stage(host.url());
    stage.registry.registerRhythm("zamba", {});
    stage.downloads->installRhythm("zamba");
    QCOMPARE(messages(stage.installed), QStringList{"zamba"});
    QVERIFY(!stage.downloads->isBusy());
    QTest::qWait(20);
    QCOMPARE(host.server().connections(), 0);
    QCOMPARE(stage.progress.size(), 0);
}

void ContentDownloadManagerTest::aSecondInstallIsRefusedAndTheFirstGoesOn()
{
    ContentHost host;
    offer(host, "zamba", {"charango"});
    offer(host, "cueca", {});
    DownloadStage stage(host.url());
    stage.downloads->installRhythm("zamba");
    QVERIFY(stage.downloads->isBusy());
    stage.downloads->installRhythm("cueca");
    QCOMPARE(stage.failed.size(), 1);
    QCOMPARE(stage.failed[0][0].toString(), "cueca");
    QCOMPARE(stage.failed[0][1].toString(), "Ya hay una descarga en curso.");
    QTRY_COMPARE(messages(stage.installed), QStringList{"zamba"});
    QCOMPARE(stage.registry.installedRhythms(), QStringList{"zamba"});
    QVERIFY(!host.asked().join(' ').contains("cueca"));
}

void ContentDownloadManagerTest::anInstalledRhythmIsRefusedWhileAnotherComes()
{
    ContentHost host;
    offer(host, "zamba", {});
    DownloadStage stage(host.url());
    stage.registry.registerRhythm("cueca", {});
    stage.downloads->installRhythm("zamba");
    stage.downloads->installRhythm("cueca");
    QCOMPARE(messages(stage.failed), QStringList{"cueca"});
    QTRY_COMPARE(messages(stage.installed), QStringList{"zamba"});
}

void ContentDownloadManagerTest::theOutcomeIsToldWhenAllIsDone()
{
    ContentHost host;
    offer(host, "zamba", {});
    DownloadStage stage(host.url());
    QStringList seen;
    connect(&stage.registry, &InstalledContentRegistry::registryChanged, this,
            [&] { seen.append(stage.downloads->isBusy() ? "registered" : "too late"); });
    connect(&stage.content.library(), &LoopLibrary::libraryChanged, this,
            [&] { seen.append(stage.downloads->isBusy() ? "reloaded" : "too late"); });
    connect(stage.downloads.get(), &ContentDownloadManager::rhythmInstalled, this,
            [&] { seen.append(stage.downloads->isBusy() ? "too early" : "told"); });
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(seen, QStringList({"registered", "reloaded", "told"}));
}

void ContentDownloadManagerTest::oneInstallMayFollowAnother()
{
    ContentHost host;
    offer(host, "zamba", {"charango"});
    offer(host, "cueca", {"quena"});
    DownloadStage stage(host.url());
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(stage.install("cueca"), "installed");
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(host.asked().size(), 6);
    QCOMPARE(stage.registry.installedRhythms(), QStringList({"zamba", "cueca"}));
}

void ContentDownloadManagerTest::aPackageOfAnotherRhythmIsRefused_data()
{
    QTest::addColumn<QByteArray>("package");
    QTest::addColumn<QString>("reason");
    QTest::newRow("another rhythm") << packageWith("cueca", {}) << "es de otro ritmo";
    QTest::newRow("the rhythm in another case") << packageWith("Zamba", {}) << "es de otro ritmo";
    QTest::newRow("a rhythm of the program")
        << packageWith("folklore_carnavalito", {}) << "es de otro ritmo";
    QTest::newRow("a layer of a rhythm of the program")
        << QByteArray(R"({"rhythm": {"id": "zamba"}, "loopLayers": [{"id": "carna_bombo"}]})")
        << "cambia un ritmo que vino con el programa";
    QTest::newRow("a variant of a rhythm of the program")
        << QByteArray(
               R"({"rhythm": {"id": "zamba"}, "loopVariants": [{"layerId": "carna_bombo"}]})")
        << "cambia un ritmo que vino con el programa";
    QTest::newRow("more than any rhythm needs")
        << R"({"rhythm": {"id": "zamba"}, "instruments": [)" + QByteArray("{},").repeated(64) +
               "{}]}"
        << "tiene demasiados instrumentos";
}

void ContentDownloadManagerTest::aPackageOfAnotherRhythmIsRefused()
{
    QFETCH(QByteArray, package);
    QFETCH(QString, reason);
    ContentHost host;
    offer(host, "zamba", {});
    host.put("/content/zamba.content.json", package);
    DownloadStage stage(host.url());
    stage.content.addPackage("folklore_carnavalito",
                             R"({"rhythm": {"id": "folklore_carnavalito"},
                                 "loopLayers": [{"id": "carna_bombo"}]})");
    stage.content.library().reload();
    const auto before = stage.files();
    QCOMPARE(stage.install("zamba"), "Paquete inválido: " + reason);
    QCOMPARE(stage.files(), before);
    QVERIFY(!stage.downloads->isBusy());
}

void ContentDownloadManagerTest::aGrooveBeyondItsBoundIsRefused()
{
    ContentHost host;
    offer(host, "zamba", {});
    host.put("/grooves/zamba.groove.json",
             R"({"rhythmId": "zamba", "offsets": [)" + QByteArray("{},").repeated(256) + "{}]}");
    DownloadStage stage(host.url());
    const auto before = stage.files();
    QCOMPARE(stage.install("zamba"), "Paquete inválido: tiene un groove demasiado largo");
    QCOMPARE(stage.files(), before);
}

void ContentDownloadManagerTest::rhythmsOfTheProgramAreNotDownloaded_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("a rhythm that is there") << "folklore_carnavalito";
    QTest::newRow("one that was deleted by hand") << "folklore_zamba";
    QTest::newRow("another case, which many file systems take for the same")
        << "Folklore_Carnavalito";
    QTest::newRow("one that somebody put there by hand") << "carnavalito";
}

void ContentDownloadManagerTest::rhythmsOfTheProgramAreNotDownloaded()
{
    QFETCH(QString, id);
    ContentHost host;
    offer(host, id, {});
    DownloadStage stage(host.url());
    stage.content.addPackage("folklore_carnavalito",
                             R"({"rhythm": {"id": "folklore_carnavalito"}})");
    stage.content.library().reload();
    const auto before = stage.files();
    QCOMPARE(stage.install(id), "El ritmo " + id + " ya vino con el programa.");
    QCOMPARE(host.server().connections(), 0);
    QCOMPARE(stage.files(), before);
    QVERIFY(!stage.downloads->isBusy());
}

void ContentDownloadManagerTest::aRegistryThatListsThemUninstallsNone()
{
    const ContentHost host;
    DownloadStage stage(host.url());
    stage.content.addPackage("folklore_carnavalito",
                             R"({"rhythm": {"id": "folklore_carnavalito"}})");
    ContentFixture::write(
        stage.content.root() + "/installed_registry.json",
        R"({"installedRhythms": ["folklore_carnavalito", "Folklore_Carnavalito", "otro"],
            "installedInstruments": [{"instrumentId": "velta_bank_gm",
                "localFilePath": "velta_bank_gm.sf2", "referenceCount": 0}]})");
    stage.registry.load();
    stage.content.library().reload();
    auto before = stage.files();
    QVERIFY(!stage.downloads->uninstallRhythm("folklore_carnavalito"));
    QVERIFY(!stage.downloads->uninstallRhythm("Folklore_Carnavalito"));
    QCOMPARE(stage.files(), before);
    QVERIFY(stage.downloads->uninstallRhythm("otro"));
    auto after = stage.files();
    QVERIFY(after.take("loops/installed_registry.json") !=
            before.take("loops/installed_registry.json"));
    QCOMPARE(after, before);
}

void ContentDownloadManagerTest::instrumentsAreToldOfWhenTheBankIsGone()
{
    ContentHost host;
    offer(host, "zamba", {"charango"});
    DownloadStage stage(host.url());
    QCOMPARE(stage.install("zamba"), "installed");
    QList<bool> bankSeen;
    connect(&stage.content.instruments(), &InstrumentLibrary::instrumentsChanged, this,
            [&] { bankSeen.append(QFile::exists(stage.bank("charango"))); });
    QVERIFY(stage.downloads->uninstallRhythm("zamba"));
    QCOMPARE(bankSeen, QList<bool>{false});
}

void ContentDownloadManagerTest::aBaseWithASlashAtItsEndWorks()
{
    ContentHost host;
    offer(host, "zamba", {"charango"}, "/velta/");
    DownloadStage stage(host.url("/velta/"));
    QCOMPARE(stage.install("zamba"), "installed");
    const QStringList expected{"/velta//content/zamba.content.json",
                               "/velta//grooves/zamba.groove.json",
                               "/velta//instruments/charango.sf2"};
    QCOMPARE(host.asked(), expected);
}

void ContentDownloadManagerTest::idsAreEscapedInAddresses()
{
    ContentHost host;
    const QByteArray package = packageWith("ñandú 2%", {});
    host.put("/content/%C3%B1and%C3%BA%202%25.content.json", package);
    host.put("/grooves/%C3%B1and%C3%BA%202%25.groove.json", "{}");
    DownloadStage stage(host.url());
    QCOMPARE(stage.install("ñandú 2%"), "installed");
    QCOMPARE(stage.files().value("loops/installed/ñandú 2%.content.json"), package);
    QVERIFY(stage.downloads->uninstallRhythm("ñandú 2%"));
    QVERIFY(!stage.files().contains("loops/installed/ñandú 2%.content.json"));
}

// ---- Cancelling ----------------------------------------------------------------------------

void ContentDownloadManagerTest::cancellingLeavesNothingBehind_data()
{
    QTest::addColumn<QString>("awaited");
    QTest::newRow("the package") << "/content/zamba.content.json";
    QTest::newRow("the groove") << "/grooves/zamba.groove.json";
    QTest::newRow("the first bank") << "/instruments/quena.sf2";
    QTest::newRow("the second bank") << "/instruments/charango.sf2";
}

void ContentDownloadManagerTest::cancellingLeavesNothingBehind()
{
    QFETCH(QString, awaited);
    ContentHost host;
    offer(host, "zamba", {"quena", "charango"});
    DownloadStage stage(host.url());
    const QSignalSpy cancelled(stage.downloads.get(), &ContentDownloadManager::installCancelled);
    const auto before = stage.files();
    bool reached = false;
    host.misbehave(awaited, [&](QTcpSocket&) { reached = true; });
    stage.downloads->installRhythm("zamba");
    QTRY_VERIFY(reached);
    stage.downloads->cancelInstall();
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(messages(cancelled), QStringList{"zamba"});
    QCOMPARE(stage.files(), before);
    QTRY_COMPARE(host.server().openConnections(), 0);
    QCOMPARE(stage.failed.size() + stage.installed.size(), 0);
    host.heal();
    QCOMPARE(stage.install("zamba"), "installed");
}

void ContentDownloadManagerTest::cancellingKeepsBanksThatWereThere()
{
    ContentHost host;
    offer(host, "zamba", {"quena", "charango"});
    DownloadStage stage(host.url());
    ContentFixture::write(stage.bank("quena"), "another bank");
    bool reached = false;
    host.misbehave("/instruments/charango.sf2", [&](QTcpSocket&) { reached = true; });
    stage.downloads->installRhythm("zamba");
    QTRY_VERIFY(reached);
    stage.downloads->cancelInstall();
    QCOMPARE(ContentFixture::read(stage.bank("quena")), QByteArray("another bank"));
}

void ContentDownloadManagerTest::cancellingWithoutAnInstallDoesNothing()
{
    ContentHost host;
    offer(host, "zamba", {"quena"});
    DownloadStage stage(host.url());
    const QSignalSpy cancelled(stage.downloads.get(), &ContentDownloadManager::installCancelled);
    stage.downloads->cancelInstall();
    QCOMPARE(stage.install("zamba"), "installed");
    const auto after = stage.files();
    stage.downloads->cancelInstall();
    QCOMPARE(stage.files(), after);
    QCOMPARE(cancelled.size(), 0);
}

// ---- Uninstalling --------------------------------------------------------------------------

void ContentDownloadManagerTest::uninstallingTakesEverythingAway()
{
    ContentHost host;
    offer(host, "zamba", {"charango"});
    DownloadStage stage(host.url());
    auto before = stage.files();
    QCOMPARE(stage.install("zamba"), "installed");
    QVERIFY(stage.downloads->uninstallRhythm("zamba"));
    QCOMPARE(messages(stage.uninstalled), QStringList{"zamba"});
    auto after = stage.files();
    QVERIFY(!after.take("loops/installed_registry.json").contains("zamba"));
    QCOMPARE(after, before);
    QVERIFY(!stage.content.library().findRhythm("zamba"));
    QCOMPARE(stage.install("zamba"), "installed");
}

void ContentDownloadManagerTest::uninstallingKeepsSharedBanks()
{
    ContentHost host;
    offer(host, "zamba", {"charango", "quena"});
    offer(host, "cueca", {"charango"});
    DownloadStage stage(host.url());
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(stage.install("cueca"), "installed");
    QVERIFY(stage.downloads->uninstallRhythm("zamba"));
    QVERIFY(QFile::exists(stage.bank("charango")));
    QVERIFY(!QFile::exists(stage.bank("quena")));
    QVERIFY(stage.downloads->uninstallRhythm("cueca"));
    QVERIFY(!QFile::exists(stage.bank("charango")));
}

void ContentDownloadManagerTest::rhythmsOfTheProgramCannotBeUninstalled()
{
    const ContentHost host;
    DownloadStage stage(host.url());
    const auto before = stage.files();
    QVERIFY(!stage.downloads->uninstallRhythm("carnavalito"));
    QVERIFY(!stage.downloads->uninstallRhythm("nobody"));
    QVERIFY(!stage.downloads->uninstallRhythm(""));
    QCOMPARE(stage.files(), before);
    QCOMPARE(stage.uninstalled.size(), 0);
    QVERIFY(stage.content.library().findRhythm("carnavalito"));
}

void ContentDownloadManagerTest::uninstallingWithoutAPackageKeepsTheBanks_data()
{
    QTest::addColumn<QByteArray>("package");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("damaged") << QByteArray("{\"rhythm\": {\"id\": \"zamba\"}, \"instr");
    QTest::newRow("without its id")
        << QByteArray(R"({"instruments": [{"id": "charango", "source": "CustomRecordedBank"}]})");
}

void ContentDownloadManagerTest::uninstallingWithoutAPackageKeepsTheBanks()
{
    QFETCH(QByteArray, package);
    ContentHost host;
    offer(host, "zamba", {"charango"});
    DownloadStage stage(host.url());
    QCOMPARE(stage.install("zamba"), "installed");
    const QString path = stage.content.library().installedDir() + "/zamba.content.json";
    QVERIFY(QFile::remove(path));
    if (!package.isNull())
        ContentFixture::write(path, package);
    QVERIFY(stage.downloads->uninstallRhythm("zamba"));
    QVERIFY(!QFile::exists(path));
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 1)});
    QVERIFY(QFile::exists(stage.bank("charango")));
}

void ContentDownloadManagerTest::uninstallingDuringAnInstallGoesAhead()
{
    ContentHost host;
    offer(host, "zamba", {"charango"});
    offer(host, "cueca", {"quena"});
    DownloadStage stage(host.url());
    QCOMPARE(stage.install("cueca"), "installed");
    host.misbehave("/instruments/charango.sf2", [&](QTcpSocket& connection) {
        QVERIFY(stage.downloads->isBusy());
        QVERIFY(stage.downloads->uninstallRhythm("cueca"));
        sends(httpAnswer("200 OK", someBank()))(connection);
    });
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(stage.registry.installedRhythms(), QStringList{"zamba"});
    QCOMPARE(stage.registry.installedInstruments(), QList{recordOf("charango", 1)});
    QVERIFY(stage.content.library().findRhythm("zamba"));
    QVERIFY(!stage.content.library().findRhythm("cueca"));
    QVERIFY(!QFile::exists(stage.bank("quena")));
}

// ---- Lives ---------------------------------------------------------------------------------

void ContentDownloadManagerTest::idsMayStandInTheRegistryItself()
{
    const ContentHost host;
    DownloadStage stage(host.url());
    stage.registry.registerRhythm("zamba", {});
    stage.downloads->installRhythm(stage.registry.installedRhythms()[0]);
    QVERIFY(stage.downloads->uninstallRhythm(stage.registry.installedRhythms()[0]));
    QCOMPARE(messages(stage.uninstalled), QStringList{"zamba"});
}

void ContentDownloadManagerTest::aSlotMayStartTheNextInstall()
{
    ContentHost host;
    offer(host, "cueca", {});
    offer(host, "huayno", {});
    DownloadStage stage(host.url());
    ContentDownloadManager& downloads = *stage.downloads;
    QStringList told;
    const auto next = [&](const QString& id) {
        downloads.installRhythm(id == "zamba" ? "cueca" : "huayno");
        told.append(id);
    };
    connect(&downloads, &ContentDownloadManager::installFailed, this, next);
    connect(&downloads, &ContentDownloadManager::rhythmInstalled, this, next,
            Qt::SingleShotConnection);
    downloads.installRhythm("zamba");
    QTRY_VERIFY(stage.registry.isRhythmInstalled("huayno"));
    QCOMPARE(told, QStringList({"zamba", "cueca"}));
}

void ContentDownloadManagerTest::aSlotMayDeleteTheDownloads_data()
{
    QTest::addColumn<bool>("fails");
    QTest::newRow("when it failed") << true;
    QTest::newRow("when it is done") << false;
}

void ContentDownloadManagerTest::aSlotMayDeleteTheDownloads()
{
    QFETCH(bool, fails);
    ContentHost host;
    offer(host, "zamba", {"charango"});
    if (fails)
        host.misbehave("/instruments/charango.sf2", hangsUp());
    DownloadStage stage(host.url());
    const auto forget = [&] { stage.downloads.reset(); };
    connect(stage.downloads.get(), &ContentDownloadManager::installFailed, this, forget);
    connect(stage.downloads.get(), &ContentDownloadManager::rhythmInstalled, this, forget);
    stage.downloads->installRhythm("zamba");
    QTRY_VERIFY(!stage.downloads);
    QTest::qWait(20);
    QCOMPARE(stage.failed.size(), fails ? 1 : 0);
    QCOMPARE(stage.installed.size(), fails ? 0 : 1);
}

void ContentDownloadManagerTest::deletingEndsWhatIsUnderWay()
{
    ContentHost host;
    offer(host, "zamba", {"charango"});
    host.misbehave("/grooves/zamba.groove.json", keepsSilent());
    DownloadStage stage(host.url());
    const auto before = stage.files();
    stage.downloads->installRhythm("zamba");
    QTRY_COMPARE(host.asked().size(), 2);
    stage.downloads.reset();
    QTRY_COMPARE(host.server().openConnections(), 0);
    QCOMPARE(stage.installed.size() + stage.failed.size(), 0);
    QCOMPARE(stage.files(), before);
}

void ContentDownloadManagerTest::theCatalogueMayGoFirst()
{
    ContentHost host;
    offer(host, "zamba", {});
    host.misbehave("/grooves/zamba.groove.json", keepsSilent());
    ContentFixture content;
    InstalledContentRegistry registry(content.filePath("registry.json"), content.bankRoot());
    auto catalog = std::make_unique<ContentCatalog>(host.url());
    auto downloads = std::make_unique<ContentDownloadManager>(
        catalog.get(), &registry, &content.library(), &content.instruments());
    const QSignalSpy failed(downloads.get(), &ContentDownloadManager::installFailed);
    downloads->installRhythm("zamba");
    QTRY_COMPARE(host.asked().size(), 2);
    catalog.reset();
    QTRY_COMPARE(host.server().openConnections(), 0);
    downloads.reset();
    QCOMPARE(failed.size(), 0);
}

VELTA_GUILESS_TEST(ContentDownloadManagerTest)

} // namespace ContentDownloadManagerTests

#include "ContentDownloadManagerTest.moc"
