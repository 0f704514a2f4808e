#include "content/InstrumentLibrary.h"
#include "content/LoopLibrary.h"
#include "export/AudioExporter.h"
#include "listen/Balance.h"
#include "listen/Loudness.h"
#include "listen/RhythmDemo.h"
#include "model/Project.h"
#include "playback/SoundfontPlayer.h"
#include "support/Files.h"

#include <QTemporaryDir>
#include <QTest>

#include <numeric>

namespace {

/// Louder or softer loops stand out of the library.
constexpr double kLoudestLufs = -14.0;
constexpr double kSoftestLufs = -34.0;
constexpr double kMostSpreadLu = 4.0;

/// So far above the loudness of its section may a rhythm lie, or below: two rhythms in one song are
/// at most 4 LU apart.
constexpr double kMostOffLu = 2.0;

/// How loud a section is in LUFS: it leads in, it goes on, it rests, it ends.
double loudnessOf(LoopSection section)
{
    switch (section) {
    case LoopSection::Intro:
        return -23.4;
    case LoopSection::Normal:
        return -22.8;
    case LoopSection::Intermedio:
        return -23.5;
    case LoopSection::Final:
        return -22.0;
    }
    return 0.0;
}

/// Several processes share the library where VELTA_PART says which rhythms are this one's: "2/3"
/// for the second of every three.
bool isOurs(qsizetype rhythm)
{
    const QByteArrayList part = qgetenv("VELTA_PART").split('/');
    const int of = part.size() == 2 ? part.at(1).toInt() : 1;
    return of < 2 || rhythm % of == part.at(0).toInt() % of;
}

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
        const QList<Rhythm>& rhythms = library_->rhythms();
        for (qsizetype i = 0; i < rhythms.size(); ++i) {
            if (isOurs(i))
                QTest::newRow(qPrintable(rhythms.at(i).id)) << rhythms.at(i).id;
        }
    }

    QTemporaryDir folder_;
    /// Holds the samples of the bank, which FluidSynth then reads once and not for every mix.
    SoundfontPlayer samples_{SoundfontPlayer::Mode::Offline};
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
    QVERIFY(samples_.loadGmBank(folder_.filePath("soundfonts/velta_bank_gm.sf2")));
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
    addRhythms();
}

void RenderedLibraryTest::rhythmsAreAboutAsLoudAsEachOther()
{
    QFETCH(QString, rhythmId);
    QCOMPARE(lufs_[rhythmId].size(), 4);
    for (const auto& [section, lufs] : lufs_[rhythmId].asKeyValueRange()) {
        const double mean = meanOf(lufs);
        QVERIFY2(std::abs(mean - loudnessOf(section)) <= kMostOffLu,
                 qPrintable(QString("%1 is %2 LUFS, not about %3")
                                .arg(loopSectionToString(section))
                                .arg(mean, 0, 'f', 1)
                                .arg(loudnessOf(section), 0, 'f', 1)));
    }
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
