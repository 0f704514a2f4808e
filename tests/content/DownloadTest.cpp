#include "content/DownloadStage.h"
#include "support/StaticServer.h"
#include "support/TestProgram.h"

#include <QRegularExpression>

namespace DownloadTests {

namespace {

/// A folder with two rhythms that share a bank, as an author would put it on a web server.
struct Site {
    Site()
    {
        write("catalog.json", R"({"rhythms": [
            {"rhythmId": "zamba", "displayName": "Zamba", "styleId": "folklore",
             "estimatedDownloadBytes": 20000, "instrumentIds": ["charango"]},
            {"rhythmId": "cueca", "displayName": "Cueca"},
            {"rhythmId": "../escape", "displayName": "Escape"}]})");
        write("content/zamba.content.json", packageWith("zamba", {"charango"}));
        write("grooves/zamba.groove.json", grooveOf("zamba"));
        write("content/cueca.content.json", packageWith("cueca", {"charango", "quena"}));
        write("grooves/cueca.groove.json", grooveOf("cueca"));
        write("instruments/charango.sf2", someBank());
        write("instruments/quena.sf2", someBank());
    }

    void write(const QString& path, const QByteArray& bytes) const
    {
        ContentFixture::write(dir.filePath(path), bytes);
    }

    QTemporaryDir dir;
};

} // namespace

/// Downloads from an ordinary web server.
class DownloadTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void rhythmsAreOfferedInstalledAndUninstalled();
    void aRestartFindsWhatWasInstalled();
    void aBaseMayBeAFolderAndEndInASlash_data();
    void aBaseMayBeAFolderAndEndInASlash();
    void aFileThatIsNotThereFails();
};

void DownloadTest::init()
{
    QTest::failOnWarning(QRegularExpression(".*"));
}

void DownloadTest::rhythmsAreOfferedInstalledAndUninstalled()
{
    const Site site;
    const StaticServer server(site.dir.path());
    QVERIFY2(server.problem().isEmpty(), qPrintable(server.problem()));
    DownloadStage stage(server.url());
    const QSignalSpy loaded(&stage.catalog, &ContentCatalog::catalogLoaded);
    stage.catalog.refresh();
    QTRY_COMPARE(loaded.size(), 1);
    QCOMPARE(stage.catalog.entries().size(), 3);
    QCOMPARE(stage.catalog.findEntry("zamba")->estimatedDownloadBytes, 20000);

    const auto before = stage.files();
    QCOMPARE(stage.install("zamba"), "installed");
    QCOMPARE(stage.install("cueca"), "installed");
    QCOMPARE(ContentFixture::read(stage.bank("quena")), someBank());
    QCOMPARE(stage.content.library().rhythms().size(), 3);
    QCOMPARE(stage.content.library().layersForRhythm("cueca").size(), 2);
    QVERIFY(stage.downloads->uninstallRhythm("zamba"));
    QVERIFY(stage.downloads->uninstallRhythm("cueca"));
    auto after = stage.files();
    after.remove("loops/installed_registry.json");
    QCOMPARE(after, before);
}

void DownloadTest::aRestartFindsWhatWasInstalled()
{
    const Site site;
    const StaticServer server(site.dir.path());
    DownloadStage stage(server.url());
    QCOMPARE(stage.install("zamba"), "installed");

    InstalledContentRegistry registry(stage.content.root() + "/installed_registry.json",
                                      stage.content.bankRoot());
    registry.load();
    InstrumentLibrary instruments(stage.content.bankRoot());
    LoopLibrary library(stage.content.root(), &instruments);
    library.reload();
    QCOMPARE(registry.installedRhythms(), QStringList{"zamba"});
    QCOMPARE(registry.installedInstruments(), stage.registry.installedInstruments());
    QVERIFY(library.findRhythm("zamba") && library.grooveForRhythm("zamba"));
    QVERIFY(instruments.customBankAvailable(*instruments.find("charango")));
}

void DownloadTest::aBaseMayBeAFolderAndEndInASlash_data()
{
    QTest::addColumn<QString>("base");
    QTest::newRow("a folder") << "/sub folder";
    QTest::newRow("a folder and a slash") << "/sub folder/";
    QTest::newRow("a slash") << "/";
}

void DownloadTest::aBaseMayBeAFolderAndEndInASlash()
{
    QFETCH(QString, base);
    const Site site;
    if (base.size() > 1)
        QVERIFY(QFile::link(site.dir.path(), site.dir.filePath("sub folder")));
    const StaticServer server(site.dir.path());
    QUrl url = server.url();
    url.setPath(base);
    DownloadStage stage(url);
    QCOMPARE(stage.install("zamba"), "installed");
}

void DownloadTest::aFileThatIsNotThereFails()
{
    const Site site;
    QVERIFY(QFile::remove(site.dir.filePath("grooves/zamba.groove.json")));
    const StaticServer server(site.dir.path());
    DownloadStage stage(server.url());
    const auto before = stage.files();
    const QString outcome = stage.install("zamba");
    QVERIFY2(outcome.contains("zamba.groove.json"), qPrintable(outcome));
    QCOMPARE(stage.files(), before);
    site.write("grooves/zamba.groove.json", grooveOf("zamba"));
    QCOMPARE(stage.install("zamba"), "installed");
}

VELTA_GUILESS_TEST(DownloadTest)

} // namespace DownloadTests

#include "DownloadTest.moc"
