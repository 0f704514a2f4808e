#include "content/ContentCatalog.h"
#include "content/ContentDownloadManager.h"
#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "support/FluidSpy.h"
#include "support/StaticServer.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QSignalSpy>
#include <QTest>

namespace ServedRhythmsTests {

namespace {

constexpr int kAnswerMs = 20000;

} // namespace

/// Every rhythm of the content server, from the catalogue into a song and out again.
class ServedRhythmsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void everyRhythmIsInstalledPlayedAndUninstalled_data();
    void everyRhythmIsInstalledPlayedAndUninstalled();
    void theLastUninstallLeavesNothingBehind();

private:
    ContentCatalog& catalog() { return *stage_->window().findChild<ContentCatalog*>(); }

    ContentDownloadManager& downloads()
    {
        return *stage_->window().findChild<ContentDownloadManager*>();
    }

    bool install(const QString& id)
    {
        QSignalSpy installed(&downloads(), &ContentDownloadManager::rhythmInstalled);
        downloads().installRhythm(id);
        return installed.count() > 0 || installed.wait(kAnswerMs);
    }

    /// A blank song with the second Normal loop of every layer.
    void compose(const Rhythm& rhythm)
    {
        stage_->window().startBlankProject();
        stage_->song().timeSignature = rhythm.timeSignature;
        stage_->song().bpm = 240;
        for (const LoopLayer& layer : stage_->window().loopLibrary()->layersForRhythm(rhythm.id))
            stage_->window().placeLoop(rhythm.id, layer.id, static_cast<int>(LoopSection::Normal),
                                       2, 0.0);
    }

    std::unique_ptr<StaticServer> server_;
    std::unique_ptr<WindowStage> stage_;
};

void ServedRhythmsTest::initTestCase()
{
    server_ = std::make_unique<StaticServer>(QString::fromUtf8(VELTA_SERVED_DIR));
    QCOMPARE(server_->problem(), QString());
    qputenv("VELTA_CONTENT_URL", server_->url().toEncoded());
    stage_ = std::make_unique<WindowStage>();
    QSignalSpy loaded(&catalog(), &ContentCatalog::catalogLoaded);
    catalog().refresh();
    QVERIFY(loaded.wait(kAnswerMs));
    QVERIFY(catalog().entries().size() >= 8);
}

void ServedRhythmsTest::cleanupTestCase()
{
    stage_.reset();
    server_.reset();
    qunsetenv("VELTA_CONTENT_URL");
}

void ServedRhythmsTest::everyRhythmIsInstalledPlayedAndUninstalled_data()
{
    QTest::addColumn<CatalogEntry>("entry");
    int recorded = 0;
    for (const CatalogEntry& entry : catalog().entries()) {
        QTest::newRow(qPrintable(entry.rhythmId)) << entry;
        recorded += !entry.instrumentIds.isEmpty();
    }
    // The others do with the instruments that everybody has.
    QVERIFY(recorded >= 8);
}

void ServedRhythmsTest::everyRhythmIsInstalledPlayedAndUninstalled()
{
    QFETCH(CatalogEntry, entry);
    FluidSpy::reset();
    QVERIFY(install(entry.rhythmId));
    const Rhythm* rhythm = stage_->window().loopLibrary()->findRhythm(entry.rhythmId);
    QVERIFY(rhythm);
    QCOMPARE(rhythm->displayName, entry.displayName);
    for (const QString& id : entry.instrumentIds) {
        const Instrument* instrument = stage_->window().instruments()->find(id);
        QVERIFY2(instrument && stage_->window().instruments()->customBankAvailable(*instrument),
                 qPrintable(id));
    }

    compose(*rhythm);
    const qsizetype layers = stage_->window().loopLibrary()->layersForRhythm(entry.rhythmId).size();
    QCOMPARE(stage_->song().tracks.size(), layers + 1);
    stage_->engine().play();
    QVERIFY(stage_->engine().isPlaying());
    QTRY_VERIFY(FluidSpy::calls({"noteon"}).size() >= 4);

    QVERIFY(downloads().uninstallRhythm(entry.rhythmId));
    QVERIFY(!stage_->window().loopLibrary()->findRhythm(entry.rhythmId));
    FluidSpy::reset();
    QTest::qWait(300);
    QCOMPARE(FluidSpy::calls({"noteon"}), QStringList());
    stage_->engine().stop();
}

void ServedRhythmsTest::theLastUninstallLeavesNothingBehind()
{
    for (const CatalogEntry& entry : catalog().entries())
        QVERIFY(install(entry.rhythmId));
    const QDir banks(stage_->home().filePath("resources/soundfonts/instruments"));
    QCOMPARE(banks.entryList(QDir::Files).size(), 6);
    for (const CatalogEntry& entry : catalog().entries())
        QVERIFY(downloads().uninstallRhythm(entry.rhythmId));
    QCOMPARE(banks.entryList(QDir::Files), QStringList());
    QVERIFY(stage_->window().loopLibrary()->rhythms().isEmpty());
}

VELTA_TEST(ServedRhythmsTest)

} // namespace ServedRhythmsTests

#include "ServedRhythmsTest.moc"
