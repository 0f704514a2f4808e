#include "content/ContentDownloadManager.h"
#include "content/ContentHost.h"
#include "content/ContentServer.h"
#include "content/DownloadStage.h"
#include "support/FullDisk.h"
#include "support/StaticServer.h"
#include "support/TestProgram.h"

#include <QRegularExpression>

#include <functional>

namespace DownloadFaultsTests {

namespace {

const QString kContent = "/content/zamba.content.json";
const QString kGroove = "/grooves/zamba.groove.json";
const QString kFirstBank = "/instruments/charango.sf2";
const QString kSecondBank = "/instruments/quena.sf2";

const QString kFirstBankFile = "soundfonts/instruments/charango.sf2";

/// Offers the rhythm zamba with a groove and two banks.
struct ZambaHost : ContentHost {
    ZambaHost()
    {
        put(kContent, packageWith("zamba", {"charango", "quena"}));
        put(kGroove, grooveOf("zamba"));
        put(kFirstBank, someBank());
        put(kSecondBank, someBank());
    }
};

/// An answer that does not end, since a server has no word for its length.
QByteArray headOf(const QByteArray& moreHeaders)
{
    return "HTTP/1.1 200 OK\r\n" + moreHeaders + "\r\n";
}

/// A package of one recorded instrument.
QByteArray packageOf(const QString& instrumentId, const QString& bankPath)
{
    QJsonObject package = jsonObject(packageWith("zamba", {"charango"}));
    package["instruments"] = QJsonArray{QJsonObject{
        {"id", instrumentId}, {"source", "CustomRecordedBank"}, {"soundfontBankPath", bankPath}}};
    return QJsonDocument(package).toJson();
}

} // namespace

class DownloadFaultsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void aFaultOfTheServerFailsTheInstall_data();
    void aFaultOfTheServerFailsTheInstall();
    void aBodyThatIsCutBetweenItsPiecesIsRefused_data();
    void aBodyThatIsCutBetweenItsPiecesIsRefused();
    void aMissingSecondBankLeavesTheFirst();
    void aServerThatIsDownFailsTheInstall();
    void noAddressFailsTheInstall();
    void badPackagesAreRefused_data();
    void badPackagesAreRefused();
    void aBankThatIsNoneIsRefused_data();
    void aBankThatIsNoneIsRefused();
    void idsThatAreNoFileNamesAreRefused_data();
    void idsThatAreNoFileNamesAreRefused();
    void hostilePathsAreRefused_data();
    void hostilePathsAreRefused();
    void linksAreReplacedAndNotFollowed();
    void noRoomForABankFailsTheInstall_data();
    void noRoomForABankFailsTheInstall();
    void noRoomForThePackageFailsTheInstall_data();
    void noRoomForThePackageFailsTheInstall();
    void aRegistryThatIsNotWrittenListsNothing();
    void noRoomForTheGrooveIsForgiven();
    void aHostileRegistryUninstallsNothingOutside_data();
    void aHostileRegistryUninstallsNothingOutside();
    void aHostileRecordDeletesNoOtherFile_data();
    void aHostileRecordDeletesNoOtherFile();
};

void DownloadFaultsTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

// ---- The server ----------------------------------------------------------------------------

void DownloadFaultsTest::aFaultOfTheServerFailsTheInstall_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<LocalServer::Behaviour>("fault");
    QTest::addColumn<QString>("message");
    const QList<QPair<const char*, QString>> files{
        {"package", kContent}, {"groove", kGroove}, {"bank", kFirstBank}};
    for (const auto& [what, path] : files) {
        const auto row = [&](const char* fault, const LocalServer::Behaviour& behaviour,
                             const QString& message) {
            QTest::addRow("%s: %s", what, fault) << path << behaviour << message;
        };
        const QByteArray toFile = "Location: file:///etc/hostname\r\n";
        row("not there", sends(httpAnswer("404 Not Found", "<html></html>")), "Not Found$");
        row("refused", sends(httpAnswer("403 Forbidden", "")), "Forbidden$");
        row("out of order", sends(httpAnswer("500 Internal Server Error", "")),
            "Internal Server Error$");
        row("hangs up", hangsUp(), "^Connection closed$");
        row("cut", sends(headOf("Content-Length: 5000\r\n") + "{\"rhythm\""),
            "^Connection closed$");
        row("sent to a file", sends(httpAnswer("302 Found", "", toFile)),
            "^Unknown protocol specified$");
        row("announced as endless", floods(headOf("Content-Length: 9999999999\r\n"), ""),
            "^Operation canceled$");
    }
    const QByteArray toItself = "Location: " + kContent.toUtf8() + "\r\n";
    QTest::newRow("package: sent round and round")
        << kContent << sends(httpAnswer("302 Found", "", toItself)) << "^Too many redirects$";
    QTest::newRow("package: endless")
        << kContent << floods(headOf(""), QByteArray(1 << 20, ' ')) << "^Operation canceled$";
    QTest::newRow("groove: endless")
        << kGroove << floods(headOf(""), QByteArray(1 << 20, ' ')) << "^Operation canceled$";
}

void DownloadFaultsTest::aFaultOfTheServerFailsTheInstall()
{
    QFETCH(QString, path);
    QFETCH(LocalServer::Behaviour, fault);
    QFETCH(QString, message);
    ZambaHost host;
    DownloadStage stage(host.url());
    const auto before = stage.files();
    host.misbehave(path, fault);
    const QString outcome = stage.install("zamba");
    QVERIFY2(QRegularExpression(message).match(outcome).hasMatch(), qPrintable(outcome));
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(stage.files(), before);
    QVERIFY(stage.registry.installedRhythms().isEmpty());
    QVERIFY(!stage.content.library().findRhythm("zamba"));
    host.heal();
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::aBodyThatIsCutBetweenItsPiecesIsRefused_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("package") << kContent << packageWith("zamba", {"charango"});
    QTest::newRow("bank") << kFirstBank << someBank();
}

// Qt mostly takes the end of the connection for that of the body.
void DownloadFaultsTest::aBodyThatIsCutBetweenItsPiecesIsRefused()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    ZambaHost host;
    DownloadStage stage(host.url());
    const auto before = stage.files();
    host.misbehave(
        path, sends(headOf("Transfer-Encoding: chunked\r\n") + "80\r\n" + body.left(128) + "\r\n"));
    const QString outcome = stage.install("zamba");
    QVERIFY2(outcome.startsWith("Paquete inválido: ") || outcome == "Connection closed",
             qPrintable(outcome));
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(stage.files(), before);
    host.heal();
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::aMissingSecondBankLeavesTheFirst()
{
    ZambaHost host;
    DownloadStage stage(host.url());
    auto expected = stage.files();
    expected[kFirstBankFile] = someBank();
    host.misbehave(kSecondBank, sends(httpAnswer("404 Not Found", "")));
    const QString outcome = stage.install("zamba");
    QVERIFY2(outcome.endsWith("quena.sf2 - server replied: Not Found"), qPrintable(outcome));
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(stage.files(), expected);
    QVERIFY(stage.registry.installedRhythms().isEmpty());
    QVERIFY(stage.registry.installedInstruments().isEmpty());

    host.heal();
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(host.asked().count(kFirstBank), 1);
    QCOMPARE(stage.registry.installedInstruments().size(), 2);
}

void DownloadFaultsTest::aServerThatIsDownFailsTheInstall()
{
    ContentFixture files;
    ContentFixture::write(files.filePath("www" + kContent), packageWith("zamba", {}));
    ContentFixture::write(files.filePath("www" + kGroove), grooveOf("zamba"));
    StaticServer server(files.filePath("www"));
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    DownloadStage stage(server.url());
    server.stop();
    const auto before = stage.files();
    QCOMPARE(stage.install("zamba"), "Connection refused");
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(stage.files(), before);
    server.start();
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::noAddressFailsTheInstall()
{
    DownloadStage stage(QUrl(""));
    const QString outcome = stage.install("zamba");
    QVERIFY2(outcome.contains("unknown"), qPrintable(outcome));
    QVERIFY(!stage.downloads->isBusy());
}

// ---- What it sends -------------------------------------------------------------------------

void DownloadFaultsTest::badPackagesAreRefused_data()
{
    QTest::addColumn<QByteArray>("package");
    QTest::addColumn<QString>("message");
    QTest::newRow("a page") << QByteArray("<html><body>Hi</body></html>") << "Paquete inválido: ";
    QTest::newRow("nothing") << QByteArray("") << "Paquete inválido: ";
    QTest::newRow("an array") << QByteArray("[]") << "Paquete inválido: ";
    QTest::newRow("half of it") << packageWith("zamba", {"charango"}).left(100)
                                << "Paquete inválido: ";
    QTest::newRow("nested without end")
        << "{\"rhythm\":" + QByteArray(100000, '[') << "Paquete inválido: ";
    QTest::newRow("no rhythm") << QByteArray("{}") << "Paquete inválido: falta rhythm.id";
    QTest::newRow("a rhythm without an id") << QByteArray(R"({"rhythm": {"displayName": "Zamba"}})")
                                            << "Paquete inválido: falta rhythm.id";
}

void DownloadFaultsTest::badPackagesAreRefused()
{
    QFETCH(QByteArray, package);
    ZambaHost host;
    DownloadStage stage(host.url());
    const auto before = stage.files();
    host.put(kContent, package);
    QTEST(stage.install("zamba"), "message");
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(host.asked(), QStringList({kContent, kGroove}));
    QCOMPARE(stage.files(), before);
    QVERIFY(stage.registry.installedRhythms().isEmpty());
    host.put(kContent, packageWith("zamba", {"charango"}));
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::aBankThatIsNoneIsRefused_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("a page") << QByteArray("<html><body>Not found</body></html>");
    QTest::newRow("nothing") << QByteArray("");
    QTest::newRow("half of it") << someBank().left(1000);
}

void DownloadFaultsTest::aBankThatIsNoneIsRefused()
{
    QFETCH(QByteArray, body);
    ZambaHost host;
    DownloadStage stage(host.url());
    const auto before = stage.files();
    host.put(kFirstBank, body);
    QCOMPARE(stage.install("zamba"), "Paquete inválido: el banco de charango no es un SoundFont");
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(stage.files(), before);
    host.put(kFirstBank, someBank());
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::idsThatAreNoFileNamesAreRefused_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("nothing") << "";
    QTest::newRow("up") << "../../victim";
    QTest::newRow("a path") << "a/b";
    QTest::newRow("a path of Windows") << "..\\a";
    QTest::newRow("absolute") << "/etc/passwd";
    QTest::newRow("two dots") << "..";
    QTest::newRow("hidden") << ".zamba";
    QTest::newRow("a null character") << QString::fromLatin1("a\0b", 3);
    QTest::newRow("a device") << "nul";
}

void DownloadFaultsTest::idsThatAreNoFileNamesAreRefused()
{
    QFETCH(QString, id);
    ZambaHost host;
    DownloadStage stage(host.url());
    const auto before = stage.files();
    QCOMPARE(stage.install(id),
             "Paquete inválido: el id del ritmo no sirve como nombre de archivo");
    QVERIFY(!stage.downloads->isBusy());
    QVERIFY(host.asked().isEmpty());
    QCOMPARE(stage.files(), before);
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::hostilePathsAreRefused_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("path");
    QTest::newRow("an id up") << "../../victim"
                              << "instruments/a.sf2";
    QTest::newRow("an id with a slash") << "a/b"
                                        << "instruments/a.sf2";
    QTest::newRow("an id with a backslash") << "..\\b"
                                            << "instruments/a.sf2";
    QTest::newRow("no id") << ""
                           << "instruments/a.sf2";
    QTest::newRow("a bank up") << "charango"
                               << "../victim.txt";
    QTest::newRow("a bank up from inside") << "charango"
                                           << "instruments/../../victim.txt";
    QTest::newRow("an absolute bank") << "charango"
                                      << "/etc/passwd";
    QTest::newRow("a bank behind a link") << "charango"
                                          << "out/victim.txt";
    QTest::newRow("the bank of the program") << "charango"
                                             << "velta_bank_gm.sf2";
}

void DownloadFaultsTest::hostilePathsAreRefused()
{
    QFETCH(QString, id);
    QFETCH(QString, path);
    ZambaHost host;
    DownloadStage stage(host.url());
    QVERIFY(QFile::link(stage.content.filePath("."), stage.content.bankRoot() + "/out"));
    const auto before = stage.files();
    host.put(kContent, packageOf(id, path));
    const QString outcome = stage.install("zamba");
    QVERIFY2(outcome.startsWith("Paquete inválido: el "), qPrintable(outcome));
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(host.asked(), QStringList({kContent, kGroove}));
    QCOMPARE(stage.files(), before);
    host.put(kContent, packageWith("zamba", {"charango"}));
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::linksAreReplacedAndNotFollowed()
{
    ZambaHost host;
    host.put(kContent, packageWith("zamba", {}));
    DownloadStage stage(host.url());
    const QString victim = stage.content.filePath("victim.txt");
    QVERIFY(QDir().mkpath(stage.content.library().groovesDir()));
    QVERIFY(QFile::link(victim, stage.content.library().installedDir() + "/zamba.content.json"));
    QVERIFY(QFile::link(victim, stage.content.library().groovesDir() + "/zamba.groove.json"));
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(ContentFixture::read(victim), QByteArray("precious"));
    QCOMPARE(stage.files().value("loops/grooves/zamba.groove.json"), grooveOf("zamba"));
}

// ---- The disk ------------------------------------------------------------------------------

void DownloadFaultsTest::noRoomForABankFailsTheInstall_data()
{
    QTest::addColumn<bool>("full");
    QTest::newRow("a full disk") << true;
    QTest::newRow("a file in the place of the folder") << false;
}

void DownloadFaultsTest::noRoomForABankFailsTheInstall()
{
    QFETCH(bool, full);
    ZambaHost host;
    DownloadStage stage(host.url());
    const QString folder = stage.content.bankRoot() + "/instruments";
    if (!full)
        ContentFixture::write(folder, "a file");
    const auto before = stage.files();
    {
        const FullDisk disk(full ? 1000 : RLIM_INFINITY);
        QCOMPARE(stage.install("zamba"), "No pude guardar charango.sf2");
    }
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(stage.files(), before);
    QVERIFY(stage.registry.installedRhythms().isEmpty());
    QFile::remove(folder);
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::noRoomForThePackageFailsTheInstall_data()
{
    noRoomForABankFailsTheInstall_data();
}

void DownloadFaultsTest::noRoomForThePackageFailsTheInstall()
{
    QFETCH(bool, full);
    ZambaHost host;
    host.put(kContent, packageWith("zamba", {}) + QByteArray(2000, ' '));
    DownloadStage stage(host.url());
    const QString folder = stage.content.library().installedDir();
    if (!full)
        QVERIFY(QDir(folder).removeRecursively());
    if (!full)
        ContentFixture::write(folder, "a file");
    const auto before = stage.files();
    {
        const FullDisk disk(full ? 1000 : RLIM_INFINITY);
        QCOMPARE(stage.install("zamba"), "No pude guardar el contenido del ritmo.");
    }
    QVERIFY(!stage.downloads->isBusy());
    QCOMPARE(stage.files(), before);
    QVERIFY(stage.registry.installedRhythms().isEmpty());
    QFile::remove(folder);
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadFaultsTest::aRegistryThatIsNotWrittenListsNothing()
{
    ZambaHost host;
    host.put(kContent, packageWith("zamba", {}));
    DownloadStage stage(host.url());
    const QString registry = stage.content.root() + "/installed_registry.json";
    QVERIFY(QDir().mkpath(registry));
    const auto before = stage.files();
    QCOMPARE(stage.install("zamba"), "No pude guardar el contenido del ritmo.");
    QCOMPARE(stage.files(), before);
    QVERIFY(!stage.registry.isRhythmInstalled("zamba"));
    QVERIFY(QDir().rmdir(registry));
    QCOMPARE(stage.install("zamba"), "installed");
    QVERIFY(stage.registry.isRhythmInstalled("zamba"));
}

void DownloadFaultsTest::noRoomForTheGrooveIsForgiven()
{
    ZambaHost host;
    host.put(kContent, packageWith("zamba", {}));
    DownloadStage stage(host.url());
    ContentFixture::write(stage.content.library().groovesDir(), "a file");
    QCOMPARE(stage.install("zamba"), "installed");
    QVERIFY(stage.content.library().findRhythm("zamba"));
    QVERIFY(!stage.content.library().grooveForRhythm("zamba"));
}

// ---- The registry --------------------------------------------------------------------------

void DownloadFaultsTest::aHostileRegistryUninstallsNothingOutside_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("victim");
    QTest::newRow("up") << "../../victim"
                        << "victim.content.json";
    QTest::newRow("beside") << "../beside"
                            << "loops/beside.content.json";
    QTest::newRow("absolute") << "%1/victim"
                              << "victim.content.json";
    QTest::newRow("nothing") << ""
                             << "loops/installed/.content.json";
}

void DownloadFaultsTest::aHostileRegistryUninstallsNothingOutside()
{
    QFETCH(QString, id);
    QFETCH(QString, victim);
    const ContentHost host;
    DownloadStage stage(host.url());
    id.replace("%1", stage.content.filePath("."));
    ContentFixture::write(stage.content.filePath(victim), packageOf("charango", "../victim.txt"));
    ContentFixture::write(stage.bank("charango"), someBank());
    stage.registry.registerRhythm(id, {{"charango", "../victim.txt", 1}});
    auto before = stage.files();
    QVERIFY(stage.downloads->uninstallRhythm(id));
    QVERIFY(!stage.registry.isRhythmInstalled(id));
    auto after = stage.files();
    for (auto* files : {&before, &after}) {
        files->remove("loops/installed_registry.json");
        files->remove("loops/manifest.json");
    }
    QCOMPARE(after, before);
    QCOMPARE(stage.uninstalled.size(), 1);
}

void DownloadFaultsTest::aHostileRecordDeletesNoOtherFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("outside") << "../victim.txt";
    QTest::newRow("the program's own bank") << "velta_bank_gm.sf2";
    QTest::newRow("the bank of another instrument") << "instruments/quena.sf2";
    QTest::newRow("the registry itself") << "../loops/installed_registry.json";
}

void DownloadFaultsTest::aHostileRecordDeletesNoOtherFile()
{
    QFETCH(QString, path);
    const ContentHost host;
    DownloadStage stage(host.url());
    stage.content.addPackage("zamba", packageOf("charango", path));
    ContentFixture::write(stage.bank("quena"), someBank());
    const QJsonObject record{
        {"instrumentId", "charango"}, {"localFilePath", path}, {"referenceCount", 1}};
    ContentFixture::write(stage.content.root() + "/installed_registry.json",
                          QJsonDocument(QJsonObject{{"installedRhythms", QJsonArray{"zamba"}},
                                                    {"installedInstruments", QJsonArray{record}}})
                              .toJson());
    stage.registry.load();
    stage.content.library().reload();
    auto before = stage.files();
    QVERIFY(stage.downloads->uninstallRhythm("zamba"));
    auto after = stage.files();
    QVERIFY(before.remove("loops/installed/zamba.content.json"));
    for (auto* files : {&before, &after}) {
        QVERIFY(files->remove("loops/installed_registry.json"));
        files->remove("loops/manifest.json");
    }
    QCOMPARE(after, before);
}

VELTA_GUILESS_TEST(DownloadFaultsTest)

} // namespace DownloadFaultsTests

#include "DownloadFaultsTest.moc"
