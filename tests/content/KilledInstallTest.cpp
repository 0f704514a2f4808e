#include "ContentHost.h"
#include "DownloadStage.h"
#include "support/ChildProcess.h"
#include "support/KilledWriting.h"

#include <QCoreApplication>
#include <QTest>

namespace {

constexpr auto kArgument = "--until";

/// Installs a rhythm with a bank, uninstalls it, and is killed before a change of a file.
int installUntil(int change)
{
    ContentHost host;
    host.put("/content/vidala.content.json", packageWith("vidala", {"charango"}));
    host.put("/grooves/vidala.groove.json", grooveOf("vidala"));
    host.put("/instruments/charango.sf2", someBank());
    DownloadStage stage(host.url());
    KilledWriting::killBefore(change);
    if (stage.install("vidala") != "installed" || !stage.downloads->uninstallRhythm("vidala"))
        return 1;
    KilledWriting::killBefore(-1);
    return 0;
}

} // namespace

/// An install and an uninstall that a power cut breaks off anywhere.
class KilledInstallTest : public QObject {
    Q_OBJECT

private slots:
    void whatIsLeftCanBeUninstalledAndInstalled();

private:
    /// What the next start makes of the content below a folder.
    static void lookAfter(const QString& folder);
};

void KilledInstallTest::lookAfter(const QString& folder)
{
    ContentHost host;
    host.put("/content/vidala.content.json", packageWith("vidala", {}));
    host.put("/grooves/vidala.groove.json", grooveOf("vidala"));
    InstrumentLibrary instruments(folder + "/soundfonts");
    LoopLibrary library(folder + "/loops", &instruments);
    InstalledContentRegistry registry(folder + "/loops/installed_registry.json",
                                      folder + "/soundfonts");
    ContentCatalog catalog(host.url());
    ContentDownloadManager downloads(&catalog, &registry, &library, &instruments);
    registry.load();
    library.reload();
    QVERIFY2(!library.hasPackageFile("vidala") || registry.isRhythmInstalled("vidala"),
             "it could never be uninstalled");
    QVERIFY(library.hasPackageFile("carnavalito"));
    if (registry.isRhythmInstalled("vidala"))
        QVERIFY(downloads.uninstallRhythm("vidala"));
    QVERIFY(!library.findRhythm("vidala"));
    QSignalSpy installed(&downloads, &ContentDownloadManager::rhythmInstalled);
    downloads.installRhythm("vidala");
    QVERIFY(await([&] { return !installed.isEmpty(); }));
    QVERIFY(library.findRhythm("vidala"));
    QVERIFY(downloads.uninstallRhythm("vidala"));
    QVERIFY(!library.findRhythm("vidala"));
}

void KilledInstallTest::whatIsLeftCanBeUninstalledAndInstalled()
{
    bool broken = true;
    int change = 0;
    for (; broken && change < 200; ++change) {
        const QTemporaryDir home;
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", home.path());
        process.setProcessEnvironment(environment);
        endWithTest(process);
        process.start(QCoreApplication::applicationFilePath(),
                      {kArgument, QString::number(change)});
        QVERIFY(process.waitForFinished(60000));
        broken = process.exitStatus() == QProcess::CrashExit;
        QVERIFY(broken || process.exitCode() == 0);
        for (const QString& left : QDir(home.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            lookAfter(home.filePath(left));
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(QString("Killed before change %1.").arg(change)));
    }
    // Bank, package, registry and groove, each in several steps, and back again.
    QVERIFY2(change > 15 && change < 200, qPrintable(QString::number(change)));
    qInfo("%d kills", change - 1);
}

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    if (argc == 3 && QByteArray(argv[1]) == kArgument)
        return installUntil(QByteArray(argv[2]).toInt());
    KilledInstallTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "KilledInstallTest.moc"
