#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/AudioExporter.h"
#include "listen/Balance.h"
#include "listen/Loudness.h"
#include "listen/RhythmDemo.h"
#include "model/Project.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <QTest>

#include <numeric>

namespace {

/// Louder or softer loops stand out of the library.
constexpr double kLoudestLufs = -14.0;
constexpr double kSoftestLufs = -34.0;
constexpr double kMostSpreadLu = 4.0;
/// A jota of strings and castanets is no candombe, and need not be as loud.
constexpr double kMostSpreadOfRhythmsLu = 7.0;

double meanOf(const QList<double>& values)
{
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

} // namespace

/// What the rhythms of the program and of the content server sound like, with their own banks.
class RenderedLibraryTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void everyLoopIsHeardAndNoneIsClipped_data();
    void everyLoopIsHeardAndNoneIsClipped();
    void sectionsAreAboutAsLoudAsEachOther_data();
    void sectionsAreAboutAsLoudAsEachOther();
    void rhythmsAreAboutAsLoudAsEachOther_data();
    void rhythmsAreAboutAsLoudAsEachOther();
    void everyLayerIsAsLoudAsItsRole_data();
    void everyLayerIsAsLoudAsItsRole();

private:
    QList<float> mixOf(const Rhythm& rhythm, const RhythmDemo::Loop& loop)
    {
        QString error;
        return AudioExporter::renderFullMix(
            *RhythmDemo::song(*library_, rhythm, loop), QString(), library_.get(),
            instruments_.get(), folder_.filePath("soundfonts/velta_bank_gm.sf2"), &error);
    }

    void addRhythms() const
    {
        QTest::addColumn<QString>("rhythmId");
        for (const Rhythm& rhythm : library_->rhythms())
            QTest::newRow(qPrintable(rhythm.id)) << rhythm.id;
    }

    QTemporaryDir folder_;
    std::unique_ptr<InstrumentLibrary> instruments_;
    std::unique_ptr<LoopLibrary> library_;
    std::optional<Balance::Stems> stems_;
    std::unique_ptr<LoopLibrary> stemLibrary_;
    /// Of each rhythm: LUFS of its loops, by their section.
    QMap<QString, QMap<LoopSection, QList<double>>> lufs_;
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
    QVERIFY(library_->rhythms().size() == 36);
    stems_ = Balance::readStems(QStringLiteral(VELTA_STEMS_DIR "/stems.json"));
    QVERIFY(stems_.has_value());
    stemLibrary_ =
        std::make_unique<LoopLibrary>(QStringLiteral(VELTA_STEMS_DIR "/loops"), instruments_.get());
    stemLibrary_->reload();
}

void RenderedLibraryTest::everyLoopIsHeardAndNoneIsClipped_data()
{
    addRhythms();
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
        lufs_[rhythmId][loop.section].append(loudness.lufs);
    }
}

void RenderedLibraryTest::sectionsAreAboutAsLoudAsEachOther_data()
{
    addRhythms();
}

void RenderedLibraryTest::sectionsAreAboutAsLoudAsEachOther()
{
    QFETCH(QString, rhythmId);
    QMap<LoopSection, double> means;
    for (const auto& [section, lufs] : lufs_[rhythmId].asKeyValueRange())
        means[section] = meanOf(lufs);
    QCOMPARE(means.size(), 4);
    const auto [softest, loudest] = std::ranges::minmax(means.values());
    QVERIFY2(loudest - softest <= kMostSpreadLu,
             qPrintable(QString("%1 is %2, %3 is %4 LUFS")
                            .arg(loopSectionToString(means.key(softest)))
                            .arg(softest)
                            .arg(loopSectionToString(means.key(loudest)))
                            .arg(loudest)));
}

void RenderedLibraryTest::rhythmsAreAboutAsLoudAsEachOther_data()
{
    QTest::addColumn<LoopSection>("section");
    for (const LoopSection section :
         {LoopSection::Intro, LoopSection::Normal, LoopSection::Intermedio, LoopSection::Final})
        QTest::newRow(qPrintable(loopSectionToString(section))) << section;
}

void RenderedLibraryTest::rhythmsAreAboutAsLoudAsEachOther()
{
    QFETCH(LoopSection, section);
    QMap<QString, double> means;
    for (const auto& [rhythmId, sections] : lufs_.asKeyValueRange())
        means[rhythmId] = meanOf(sections.value(section));
    QCOMPARE(means.size(), library_->rhythms().size());
    const auto [softest, loudest] = std::ranges::minmax(means.values());
    QVERIFY2(loudest - softest <= kMostSpreadOfRhythmsLu,
             qPrintable(QString("%1 is %2, %3 is %4 LUFS")
                            .arg(means.key(softest))
                            .arg(softest)
                            .arg(means.key(loudest))
                            .arg(loudest)));
}

void RenderedLibraryTest::everyLayerIsAsLoudAsItsRole_data()
{
    addRhythms();
}

void RenderedLibraryTest::everyLayerIsAsLoudAsItsRole()
{
    QFETCH(QString, rhythmId);
    const QList<Balance::Measured> measured =
        Balance::measure(stems_->stems, *stemLibrary_->findRhythm(rhythmId), *stemLibrary_,
                         *instruments_, folder_.filePath("soundfonts/velta_bank_gm.sf2"));
    QVERIFY(measured.size() >= 4);
    for (const Balance::Measured& one : measured)
        QVERIFY2(std::abs(one.missesTargetBy()) <= stems_->toleranceDb,
                 qPrintable(QString("%1 lies %2 dB above the bass, not %3")
                                .arg(one.stem.layerId)
                                .arg(one.aboveBassDb, 0, 'f', 1)
                                .arg(one.stem.targetDb, 0, 'f', 1)));
}

QTEST_GUILESS_MAIN(RenderedLibraryTest)
#include "RenderedLibraryTest.moc"
