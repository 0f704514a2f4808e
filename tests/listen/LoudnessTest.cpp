#include "listen/Loudness.h"

#include "music/Beats.h"
#include "support/TestProgram.h"

#include <QTest>

#include <cmath>
#include <numbers>

namespace LoudnessTests {

namespace {

/// A sine of 997 Hz in both channels, as the measurements of EBU Tech 3341 have it.
QList<float> sine(double peakDb, int seconds)
{
    const double peak = std::pow(10.0, peakDb / 20.0);
    QList<float> mix;
    for (int frame = 0; frame < seconds * kSampleRate; ++frame) {
        const double phase = 2.0 * std::numbers::pi * 997.0 * frame / kSampleRate;
        const auto sample = static_cast<float>(peak * std::sin(phase));
        mix << sample << sample;
    }
    return mix;
}

} // namespace

class LoudnessTest : public QObject {
    Q_OBJECT

private slots:
    void aSineInBothChannelsIsAsLoudAsItsPeak_data();
    void aSineInBothChannelsIsAsLoudAsItsPeak();
    void silenceHasNoLoudness();
};

void LoudnessTest::aSineInBothChannelsIsAsLoudAsItsPeak_data()
{
    QTest::addColumn<double>("peakDb");
    QTest::newRow("-23 dB") << -23.0;
    QTest::newRow("-33 dB") << -33.0;
    QTest::newRow("-6 dB") << -6.0;
}

void LoudnessTest::aSineInBothChannelsIsAsLoudAsItsPeak()
{
    QFETCH(double, peakDb);
    const Loudness loudness = Loudness::of(sine(peakDb, 5));
    QVERIFY2(std::abs(loudness.lufs - peakDb) < 0.1, qPrintable(QString::number(loudness.lufs)));
    QVERIFY2(std::abs(loudness.peakDb - peakDb) < 0.1,
             qPrintable(QString::number(loudness.peakDb)));
}

void LoudnessTest::silenceHasNoLoudness()
{
    for (const QList<float>& mix : {QList<float>(), QList<float>(2 * kSampleRate, 0.0F)}) {
        const Loudness loudness = Loudness::of(mix);
        QVERIFY(std::isinf(loudness.lufs) && loudness.lufs < 0.0);
        QVERIFY(std::isinf(loudness.peakDb) && loudness.peakDb < 0.0);
    }
}

VELTA_GUILESS_TEST(LoudnessTest)

} // namespace LoudnessTests

#include "LoudnessTest.moc"
