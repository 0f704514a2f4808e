#include "listen/Balance.h"

#include "music/Beats.h"
#include "support/Files.h"
#include "support/TestProgram.h"

#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <numbers>

namespace BalanceTests {

namespace {

/// A tone of 1 kHz on both sides, on for `onMs` of every `periodMs`.
QList<float> tone(double amplitude, int seconds, int onMs, int periodMs)
{
    QList<float> mix;
    for (int i = 0; i < seconds * kSampleRate; ++i) {
        const int ms = static_cast<int>(1000.0 * i / kSampleRate) % periodMs;
        const double phase = 2.0 * std::numbers::pi * 1000.0 * i / kSampleRate;
        const auto sample = static_cast<float>(ms < onMs ? amplitude * std::sin(phase) : 0.0);
        mix << sample << sample;
    }
    return mix;
}

} // namespace

class BalanceTest : public QObject {
    Q_OBJECT

private slots:
    void aSteadyToneIsAsLoudAsItsStrokes();
    void strokesAreMeasuredWhereTheySound();
    void tenDecibelsLessAreTenDecibelsLess();
    void silenceHasNoLevel();
    void targetsAreReadAsTheyAreWritten();
    void aFileThatIsNoListIsRefused();
    void theMissIsCountedFromTheTarget();
};

void BalanceTest::aSteadyToneIsAsLoudAsItsStrokes()
{
    // EBU R 128: a stereo tone of 1 kHz that peaks at -20 dBFS has -20 LUFS.
    const Balance::Level level = Balance::levelOf(tone(0.1, 4, 1, 1));
    QVERIFY2(std::abs(level.loudness + 20.0) < 0.2, qPrintable(QString::number(level.loudness)));
    QVERIFY2(std::abs(level.strokes + 20.0) < 0.3, qPrintable(QString::number(level.strokes)));
}

void BalanceTest::strokesAreMeasuredWhereTheySound()
{
    // A tenth of the time sounds: as a mean that would be 10 dB softer.
    const Balance::Level level = Balance::levelOf(tone(0.1, 4, 100, 1000));
    QVERIFY2(std::abs(level.strokes + 20.0) < 0.5, qPrintable(QString::number(level.strokes)));
    QVERIFY(level.loudness < -24.0);
}

void BalanceTest::tenDecibelsLessAreTenDecibelsLess()
{
    const Balance::Level loud = Balance::levelOf(tone(0.3162, 4, 100, 500));
    const Balance::Level soft = Balance::levelOf(tone(0.1, 4, 100, 500));
    QVERIFY(std::abs(loud.strokes - soft.strokes - 10.0) < 0.1);
    QVERIFY(std::abs(loud.loudness - soft.loudness - 10.0) < 0.1);
}

void BalanceTest::silenceHasNoLevel()
{
    const Balance::Level level = Balance::levelOf(tone(0.0, 2, 1, 1));
    QVERIFY(!(level.strokes > -90.0));
    QVERIFY(!(level.loudness > -70.0));
}

void BalanceTest::targetsAreReadAsTheyAreWritten()
{
    QTemporaryDir folder;
    QVERIFY(writeBytes(folder.filePath("stems.json"),
                       R"({"toleranceDb": 2, "stems": [{"rhythmId": "r", "layerId": "r_b:platillo",
                          "role": "platillo", "targetDb": -8, "byStrokes": true}]})"));
    const auto stems = Balance::readStems(folder.filePath("stems.json"));
    QVERIFY(stems.has_value());
    QCOMPARE(stems->toleranceDb, 2.0);
    QCOMPARE(stems->stems.size(), 1);
    const Balance::Stem& stem = stems->stems.first();
    QCOMPARE(stem.rhythmId, QString("r"));
    QCOMPARE(stem.layerId, QString("r_b:platillo"));
    QCOMPARE(stem.role, QString("platillo"));
    QCOMPARE(stem.targetDb, -8.0);
    QVERIFY(stem.byStrokes);
}

void BalanceTest::aFileThatIsNoListIsRefused()
{
    QTemporaryDir folder;
    QVERIFY(!Balance::readStems(folder.filePath("nothing.json")));
    for (const QByteArray& text : {QByteArray("["), QByteArray("{}"), QByteArray("stems")}) {
        QVERIFY(writeBytes(folder.filePath("stems.json"), text));
        QVERIFY(!Balance::readStems(folder.filePath("stems.json")));
    }
}

void BalanceTest::theMissIsCountedFromTheTarget()
{
    Balance::Measured measured;
    measured.stem.targetDb = -3.0;
    measured.aboveBassDb = -4.5;
    QCOMPARE(measured.missesTargetBy(), -1.5);
}

VELTA_GUILESS_TEST(BalanceTest)

} // namespace BalanceTests

#include "BalanceTest.moc"
