#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/AudioExporter.h"
#include "listen/Loudness.h"
#include "listen/RhythmDemo.h"
#include "model/Project.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <QTest>

namespace {

/// Louder or softer loops stand out of the library.
constexpr double kLoudestLufs = -14.0;
constexpr double kSoftestLufs = -34.0;
constexpr double kMostSpreadLu = 6.0;

} // namespace

/// What the rhythms of the program and of the content server sound like, with their own banks.
class RenderedLibraryTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void everyLoopIsHeardAndNoneIsClipped_data();
    void everyLoopIsHeardAndNoneIsClipped();
    void rhythmsAreAboutAsLoudAsEachOther();

private:
    QList<float> mixOf(const Rhythm& rhythm, const RhythmDemo::Loop& loop)
    {
        QString error;
        return AudioExporter::renderFullMix(
            *RhythmDemo::song(*library_, rhythm, loop), QString(), library_.get(),
            instruments_.get(), folder_.filePath("soundfonts/velta_bank_gm.sf2"), &error);
    }

    QTemporaryDir folder_;
    std::unique_ptr<InstrumentLibrary> instruments_;
    std::unique_ptr<LoopLibrary> library_;
    /// Of the second Normal loop of each rhythm.
    QMap<QString, double> lufs_;
};

void RenderedLibraryTest::initTestCase()
{
    const QString staged = QCoreApplication::applicationDirPath() + "/resources";
    const QString served = QString::fromUtf8(VELTA_SERVED_DIR);
    QVERIFY(copyFiles(QStringLiteral(VELTA_LOOPS_DIR "/installed"),
                      folder_.filePath("loops/installed")));
    QVERIFY(copyFiles(served + "/content", folder_.filePath("loops/installed")));
    QVERIFY(
        copyFiles(QStringLiteral(VELTA_LOOPS_DIR "/grooves"), folder_.filePath("loops/grooves")));
    QVERIFY(copyFiles(served + "/grooves", folder_.filePath("loops/grooves")));
    QVERIFY(copyFiles(served + "/instruments", folder_.filePath("soundfonts/instruments")));
    QVERIFY(QFile::link(staged + "/soundfonts/velta_bank_gm.sf2",
                        folder_.filePath("soundfonts/velta_bank_gm.sf2")));
    instruments_ = std::make_unique<InstrumentLibrary>(folder_.filePath("soundfonts"));
    instruments_->loadBuiltinGmInstruments();
    library_ = std::make_unique<LoopLibrary>(folder_.filePath("loops"), instruments_.get());
    library_->reload();
    QVERIFY(library_->rhythms().size() >= 24);
}

void RenderedLibraryTest::everyLoopIsHeardAndNoneIsClipped_data()
{
    QTest::addColumn<QString>("rhythmId");
    for (const Rhythm& rhythm : library_->rhythms())
        QTest::newRow(qPrintable(rhythm.id)) << rhythm.id;
}

void RenderedLibraryTest::everyLoopIsHeardAndNoneIsClipped()
{
    QFETCH(QString, rhythmId);
    const Rhythm rhythm = *library_->findRhythm(rhythmId);
    const QList<RhythmDemo::Loop> loops = RhythmDemo::loopsOf(*library_, rhythmId);
    QVERIFY(loops.size() >= 10);
    for (const RhythmDemo::Loop& loop : loops) {
        const Loudness loudness = Loudness::of(mixOf(rhythm, loop));
        const QString told = QString("%1 %2: %3 LUFS, %4 dB")
                                 .arg(loopSectionToString(loop.section))
                                 .arg(loop.variantIndex)
                                 .arg(loudness.lufs, 0, 'f', 1)
                                 .arg(loudness.peakDb, 0, 'f', 1);
        QVERIFY2(loudness.lufs > kSoftestLufs && loudness.lufs < kLoudestLufs, qPrintable(told));
        QVERIFY2(loudness.peakDb < -0.5, qPrintable(told));
        if (loop.section == LoopSection::Normal && loop.variantIndex == 2)
            lufs_[rhythmId] = loudness.lufs;
    }
}

void RenderedLibraryTest::rhythmsAreAboutAsLoudAsEachOther()
{
    QVERIFY(!lufs_.isEmpty());
    const auto [softest, loudest] = std::ranges::minmax(lufs_.values());
    QVERIFY2(loudest - softest <= kMostSpreadLu, qPrintable(QString("%1 is %2, %3 is %4 LUFS")
                                                                .arg(lufs_.key(softest))
                                                                .arg(softest)
                                                                .arg(lufs_.key(loudest))
                                                                .arg(loudest)));
}

QTEST_GUILESS_MAIN(RenderedLibraryTest)
#include "RenderedLibraryTest.moc"
