#include "voice/PitchShifter.h"

#include "support/HeldNote.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"
#include "support/Tones.h"

#include <QTest>

#include <bit>
#include <cmath>
#include <limits>

namespace PitchShifterTests {

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

const QList<float>& window()
{
    static const QList<float> values = [] {
        QList<float> hann(2048);
        for (int i = 0; i < 2048; ++i)
            hann[i] =
                static_cast<float>(0.5 - 0.5 * std::cos(2.0 * 3.14159265358979323846 * i / 2047.0));
        return hann;
    }();
    return values;
}

/// What the shifter adds up: the windowed readings, and the windows themselves.
struct Overlap {
    QList<float> readings;
    QList<float> windows;
};

/// One frame of the plain form, every bound asked for every sample, read from `drift` samples
/// beside its place.
void addPlainFrame(const QList<float>& samples, int start, double drift, float ratio,
                   Overlap& overlap)
{
    const auto count = static_cast<int>(samples.size());
    for (int i = 0; i < 2048; ++i) {
        const int o = start + i;
        if (o >= count)
            return;
        const float position =
            static_cast<float>(i) * ratio + static_cast<float>(drift - std::floor(drift));
        const int steps = static_cast<int>(position);
        const int k = start + static_cast<int>(std::floor(drift)) + steps;
        if (k + 1 >= count)
            return;
        const float part = position - static_cast<float>(steps);
        const float reading = (1 - part) * samples[k] + part * samples[k + 1];
        overlap.readings[o] += reading * window()[i];
        overlap.windows[o] += window()[i];
    }
}

/// Where the frames of the plain form begin to read: each goes on, in the middle of what it shares
/// with the frame before, where that one reads, or whole periods beside it, as near as may be to
/// its own place.
class PlainDrift {
public:
    double of(int frame, float ratio, float period)
    {
        const double r = std::abs(ratio - 1.0F) < 1e-4F ? 1.0 : static_cast<double>(ratio);
        if (frame > 0)
            drift_ = drift_ + (former_ - 1.0) * 512 + (former_ - r) * 768;
        if (period >= 1.0F && period <= 1024.0F)
            last_ = static_cast<double>(period);
        else
            period = 0.0F;
        if (last_ > 0.0)
            drift_ = drift_ - last_ * std::round(drift_ / last_);
        else
            drift_ = 0.0;
        if (period == 0.0F)
            drift_ = std::round(drift_);
        former_ = r;
        return drift_;
    }

private:
    double drift_ = 0.0;
    double former_ = 1.0;
    double last_ = 0.0;
};

/// The plain form of the shifter. A ratio or a period that is not a number counts as out of range.
QList<float> plainShift(const QList<float>& samples, const QList<float>& ratios,
                        const QList<float>& periods = {})
{
    if (samples.isEmpty() || ratios.isEmpty())
        return samples;
    const auto count = static_cast<int>(samples.size());
    Overlap overlap{Tones::silence(count), Tones::silence(count)};
    PlainDrift drift;
    for (int frame = 0; frame == 0 || frame * 512 + 512 < count; ++frame) {
        float ratio = frame < ratios.size() ? ratios[frame] : ratios.last();
        if (std::isnan(ratio) || ratio <= 0.25F || ratio >= 4.0F)
            ratio = 1.0F;
        float period = 0.0F;
        if (!periods.isEmpty())
            period = frame < periods.size() ? periods[frame] : periods.last();
        addPlainFrame(samples, frame * 512, drift.of(frame, ratio, period), ratio, overlap);
    }
    QList<float> result(count);
    for (int i = 0; i < count; ++i)
        result[i] =
            overlap.windows[i] <= 0.0001F ? samples[i] : overlap.readings[i] / overlap.windows[i];
    return result;
}

/// Nothing if two lists hold the same bits, else the first place where they part.
QString difference(const QList<float>& actual, const QList<float>& expected)
{
    if (actual.size() != expected.size())
        return QString("%1 values, not %2").arg(actual.size()).arg(expected.size());
    for (qsizetype i = 0; i < actual.size(); ++i) {
        if (std::bit_cast<quint32>(actual[i]) != std::bit_cast<quint32>(expected[i]))
            return QString("sample %1 is %2, not %3")
                .arg(i)
                .arg(static_cast<double>(actual[i]), 0, 'g', 9)
                .arg(static_cast<double>(expected[i]), 0, 'g', 9);
    }
    return {};
}

QList<float> ramp(qsizetype count)
{
    QList<float> samples(count);
    for (qsizetype i = 0; i < count; ++i)
        samples[i] = static_cast<float>(i);
    return samples;
}

} // namespace

class PitchShifterTest : public QObject {
    Q_OBJECT

private slots:
    void withoutSamplesOrRatiosNothingIsDone();
    void ratiosOfOneReturnTheInputUpToRounding_data();
    void ratiosOfOneReturnTheInputUpToRounding();
    void theLastRatioServesForLaterFrames();
    void ratiosBeyondTheFramesAreNotUsed();
    void ratiosOutOfRangeActAsOne_data();
    void ratiosOutOfRangeActAsOne();
    void ratiosJustInsideTheRangeAreApplied_data();
    void ratiosJustInsideTheRangeAreApplied();

    void aShortInputIsReadAtTheSpeedOfTheRatio_data();
    void aShortInputIsReadAtTheSpeedOfTheRatio();
    void theFirstSamplesKeepTheInput();
    void whatNoFrameReachesKeepsTheInput();
    void aFrameRunsWhileMoreThanAHopIsLeft_data();
    void aFrameRunsWhileMoreThanAHopIsLeft();
    void theOutputIsAsLongAsTheInput();

    void aFrameSoundsAtThePitchOfItsRatio_data();
    void aFrameSoundsAtThePitchOfItsRatio();
    void aHeldNoteMovesByTheRatio_data();
    void aHeldNoteMovesByTheRatio();
    void aRatioThatChangesTearsNothing();
    void withoutShiftingPeriodsChangeNothing();
    void aGapInTheMiddleOfANoteLeavesItsLoudness();
    void noiseIsReadAtWholeSamples();
    void movingTheInputByAHopMovesTheOutputByAHop_data();
    void movingTheInputByAHopMovesTheOutputByAHop();
    void noOutputIsLouderThanTheLoudestInput();

    void theBitsAreThoseOfThePlainForm_data();
    void theBitsAreThoseOfThePlainForm();
    void theBitsAreThoseOfThePlainFormForRandomRatios();
    void theBitsAreThoseOfThePlainFormForHostileRatios();
    void theBitsAreThoseOfThePlainFormWithPeriods();
    void theBitsAreThoseOfThePlainFormWithHostilePeriods();
    void nothingIsLostLateInARecording();
    void samplesThatAreNoNumbersStayNearTheirPlace();
};

void PitchShifterTest::withoutSamplesOrRatiosNothingIsDone()
{
    const QList<float> samples = Tones::noise(3000, 1);
    const QList<float> unchanged = PitchShifter::process(samples, {});
    QCOMPARE(unchanged.constData(), samples.constData());
    QVERIFY(PitchShifter::process({}, {2.0F}).isEmpty());
    QVERIFY(PitchShifter::process({}, {}).isEmpty());
}

void PitchShifterTest::ratiosOfOneReturnTheInputUpToRounding_data()
{
    QTest::addColumn<qsizetype>("count");
    for (const qsizetype count : {1, 2, 100, 511, 512, 513, 1024, 1025, 2047, 2048, 2560, 20000})
        QTest::addRow("%d samples", static_cast<int>(count)) << count;
}

void PitchShifterTest::ratiosOfOneReturnTheInputUpToRounding()
{
    QFETCH(qsizetype, count);
    const QList<float> samples = Tones::noise(count, 2, 1.0);
    for (const qsizetype ratios : {1, 3, 100}) {
        const QList<float> shifted = PitchShifter::process(samples, QList<float>(ratios, 1.0F));
        QVERIFY(Tones::largestDifference(shifted, samples) <= 1e-6);
    }
}

void PitchShifterTest::theLastRatioServesForLaterFrames()
{
    const QList<float> samples = Tones::voice({}, 44100, 8192);
    QList<float> whole(15, 1.25F);
    whole[0] = 0.8F;
    QCOMPARE(difference(PitchShifter::process(samples, {0.8F, 1.25F}),
                        PitchShifter::process(samples, whole)),
             QString());
}

void PitchShifterTest::ratiosBeyondTheFramesAreNotUsed()
{
    // 4096 samples have frames at 0, 512, ... 3072: seven.
    const QList<float> samples = Tones::voice({}, 44100, 4096);
    const QList<float> seven(7, 1.25F);
    QCOMPARE(difference(PitchShifter::process(samples, seven + QList<float>(50, 3.0F)),
                        PitchShifter::process(samples, seven)),
             QString());
    const QList<float> six = seven.first(6) + QList<float>{3.0F};
    QVERIFY(PitchShifter::process(samples, six) != PitchShifter::process(samples, seven));
}

void PitchShifterTest::ratiosOutOfRangeActAsOne_data()
{
    QTest::addColumn<float>("ratio");
    QTest::newRow("0.25") << 0.25F;
    QTest::newRow("just below 0.25") << std::nextafter(0.25F, 0.0F);
    QTest::newRow("0") << 0.0F;
    QTest::newRow("minus 0") << -0.0F;
    QTest::newRow("negative") << -1.5F;
    QTest::newRow("4") << 4.0F;
    QTest::newRow("just above 4") << std::nextafter(4.0F, 5.0F);
    QTest::newRow("1e30") << 1e30F;
    QTest::newRow("the largest number") << std::numeric_limits<float>::max();
    QTest::newRow("infinity") << kInfinity;
    QTest::newRow("minus infinity") << -kInfinity;
    QTest::newRow("not a number") << kNaN;
    QTest::newRow("a denormal number") << std::numeric_limits<float>::denorm_min();
}

void PitchShifterTest::ratiosOutOfRangeActAsOne()
{
    QFETCH(float, ratio);
    const QList<float> samples = Tones::voice({}, 44100, 6000);
    QCOMPARE(
        difference(PitchShifter::process(samples, {ratio}), PitchShifter::process(samples, {1.0F})),
        QString());
    QCOMPARE(difference(PitchShifter::process(samples, {1.5F, ratio, 0.5F}),
                        PitchShifter::process(samples, {1.5F, 1.0F, 0.5F})),
             QString());
}

void PitchShifterTest::ratiosJustInsideTheRangeAreApplied_data()
{
    QTest::addColumn<float>("ratio");
    QTest::newRow("0.2501") << 0.2501F;
    QTest::newRow("just above 0.25") << std::nextafter(0.25F, 1.0F);
    QTest::newRow("3.999") << 3.999F;
    QTest::newRow("just below 4") << std::nextafter(4.0F, 0.0F);
}

void PitchShifterTest::ratiosJustInsideTheRangeAreApplied()
{
    QFETCH(float, ratio);
    // One frame alone, on a ramp: sample i holds what stood at i * ratio.
    const QList<float> shifted = PitchShifter::process(ramp(1000), {ratio});
    for (const qsizetype i : {10, 100, 200})
        QVERIFY(std::abs(shifted[i] - static_cast<float>(i) * ratio) < 0.01F);
}

void PitchShifterTest::aShortInputIsReadAtTheSpeedOfTheRatio_data()
{
    QTest::addColumn<float>("ratio");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("reached");
    // Readings end before the last sample: i * ratio + 1 < count.
    QTest::newRow("half speed") << 0.5F << 1000 << 1000;
    QTest::newRow("double speed") << 2.0F << 1000 << 500;
    QTest::newRow("three times the speed") << 3.0F << 900 << 300;
    QTest::newRow("as it is, all but the last sample") << 1.0F << 700 << 699;
    QTest::newRow("1024 samples are still one frame") << 0.5F << 1024 << 1024;
}

void PitchShifterTest::aShortInputIsReadAtTheSpeedOfTheRatio()
{
    QFETCH(float, ratio);
    QFETCH(int, count);
    QFETCH(int, reached);
    const QList<float> shifted = PitchShifter::process(ramp(count), {ratio});
    QCOMPARE(shifted.size(), count);
    for (int i = 7; i < count; ++i) {
        const float expected = i < reached ? static_cast<float>(i) * ratio : static_cast<float>(i);
        QVERIFY2(std::abs(shifted[i] - expected) <= 1e-6F * expected,
                 qPrintable(QString("%1: %2").arg(i).arg(static_cast<double>(shifted[i]))));
    }
}

void PitchShifterTest::theFirstSamplesKeepTheInput()
{
    // The window rises as (pi * i / 2047)^2: 0.000085 at 6, 0.000115 at 7.
    const QList<float> samples = Tones::noise(5000, 3);
    for (const float ratio : {0.3F, 0.5F, 1.7F, 3.5F}) {
        const QList<float> shifted = PitchShifter::process(samples, {ratio});
        QCOMPARE(shifted.first(7), samples.first(7));
        QVERIFY(shifted[7] != samples[7]);
    }
}

void PitchShifterTest::whatNoFrameReachesKeepsTheInput()
{
    // At ratio 3 the last frame, at 3072, has read to the end after 341 samples; the frame before
    // it, at 2560, after 512, which is where the last one starts.
    const QList<float> samples = Tones::noise(4096, 4);
    const QList<float> shifted = PitchShifter::process(samples, {3.0F});
    QCOMPARE(shifted.last(1024 - 341), samples.last(1024 - 341));
    QVERIFY(shifted[3072 + 340] != samples[3072 + 340]);
}

void PitchShifterTest::aFrameRunsWhileMoreThanAHopIsLeft_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("frames");
    // A frame runs when 512 samples and one more are left from its start; the first always runs.
    QTest::newRow("1 sample") << 1 << 1;
    QTest::newRow("512 samples") << 512 << 1;
    QTest::newRow("1024 samples") << 1024 << 1;
    QTest::newRow("1025 samples") << 1025 << 2;
    QTest::newRow("1536 samples") << 1536 << 2;
    QTest::newRow("1537 samples") << 1537 << 3;
    QTest::newRow("2048 samples") << 2048 << 3;
    QTest::newRow("2560 samples") << 2560 << 4;
    QTest::newRow("2561 samples") << 2561 << 5;
}

void PitchShifterTest::aFrameRunsWhileMoreThanAHopIsLeft()
{
    QFETCH(int, count);
    QFETCH(int, frames);
    const QList<float> samples = Tones::noise(count, 5);
    // A ratio of its own for the last frame that runs, and for the first that does not.
    QList<float> ratios(frames + 1, 1.0F);
    const QList<float> plain = PitchShifter::process(samples, ratios);
    ratios[frames] = 0.5F;
    QCOMPARE(PitchShifter::process(samples, ratios), plain);
    if (count > 7) {
        ratios[frames - 1] = 0.5F;
        QVERIFY(PitchShifter::process(samples, ratios) != plain);
    }
}

void PitchShifterTest::theOutputIsAsLongAsTheInput()
{
    SeededRandom random(81);
    for (int round = 0; round < 300; ++round) {
        const QList<float> samples = Tones::noise(random.between(1, 3000), 6);
        const auto ratio = static_cast<float>(random.between(0.2, 4.2));
        QCOMPARE(PitchShifter::process(samples, {ratio}).size(), samples.size());
    }
}

void PitchShifterTest::aFrameSoundsAtThePitchOfItsRatio_data()
{
    QTest::addColumn<float>("ratio");
    for (const double ratio : {0.5, 0.75, 0.943874, 0.977778, 1.0, 1.059463, 1.25, 1.5, 2.0, 3.0})
        QTest::addRow("ratio %g", ratio) << static_cast<float>(ratio);
}

void PitchShifterTest::aFrameSoundsAtThePitchOfItsRatio()
{
    QFETCH(float, ratio);
    // Only the first frame covers the first 512 samples, so its pitch is heard there alone.
    const QList<float> samples = Tones::sine(700.0, 44100, 8192);
    const QList<float> first = PitchShifter::process(samples, {ratio}).first(512);
    const double heard = Tones::hzByZeroCrossings(first, 44100);
    const double off = Tones::cents(heard, 700.0 * static_cast<double>(ratio));
    QVERIFY2(std::abs(off) < 2.0, qPrintable(QString::number(heard)));
    QVERIFY(std::abs(Tones::rms(first) - 0.5 / std::sqrt(2.0)) < 0.02);
}

void PitchShifterTest::aHeldNoteMovesByTheRatio_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<double>("drawnTo");
    QTest::newRow("half a semitone down") << 450.0 << 440.0;
    QTest::newRow("a semitone down") << 466.1638 << 440.0;
    QTest::newRow("a few cents up") << 438.0 << 440.0;
    QTest::newRow("half a semitone up") << 107.0 << 110.0;
    QTest::newRow("a tritone up") << 311.127 << 440.0;
    QTest::newRow("a tritone down") << 311.127 << 220.0;
    QTest::newRow("a low note") << 78.0 << 82.4069;
    QTest::newRow("a high note") << 950.0 << 987.7666;
}

void PitchShifterTest::aHeldNoteMovesByTheRatio()
{
    QFETCH(double, hz);
    QFETCH(double, drawnTo);
    const QList<float> note = Tones::sine(hz, 44100, 3 * 44100);
    const QList<float> shifted = PitchShifter::process(note, {static_cast<float>(drawnTo / hz)},
                                                       {static_cast<float>(44100.0 / hz)})
                                     .mid(4096, 2 * 44100);
    const double off = HeldNote::median(HeldNote::centsOff(shifted, drawnTo, 44100));
    QVERIFY2(std::abs(off) < 0.1, qPrintable(QString::number(off)));
    QVERIFY(Tones::strengthAt(shifted, 44100, drawnTo) > 0.49);
    QVERIFY(Tones::strengthAt(shifted, 44100, hz) < 0.5 * 0.01);
    QVERIFY(std::abs(Tones::rms(shifted) - 0.5 / std::sqrt(2.0)) < 0.01);
    QVERIFY(HeldNote::amplitudeModulation(shifted) < 0.001);
}

void PitchShifterTest::aRatioThatChangesTearsNothing()
{
    // From a semitone down to one up and back, over and over.
    const QList<float> note = Tones::sine(440.0, 44100, 2 * 44100);
    QList<float> ratios;
    for (int frame = 0; frame < 180; ++frame)
        ratios.append(static_cast<float>(std::exp2(std::sin(0.07 * frame) / 12.0)));
    const QList<float> shifted = PitchShifter::process(note, ratios, {44100.0F / 440.0F});
    QVERIFY(HeldNote::amplitudeModulation(shifted.mid(4096, 44100)) < 0.01);
    // A sine bends by its amplitude times the square of its step, at most; a tear would show.
    const double step = 2.0 * 3.14159265358979323846 * 440.0 * std::exp2(1.0 / 12.0) / 44100.0;
    for (qsizetype i = 4096; i < 80000; ++i) {
        const double bend = static_cast<double>(shifted[i - 1]) -
                            2.0 * static_cast<double>(shifted[i]) +
                            static_cast<double>(shifted[i + 1]);
        QVERIFY(std::abs(bend) < 1.1 * 0.5 * step * step);
    }
}

void PitchShifterTest::withoutShiftingPeriodsChangeNothing()
{
    const QList<float> samples = Tones::voice({}, 44100, 16384);
    for (const float ratio : {1.0F, 0.0F, 5.0F}) {
        QCOMPARE(difference(PitchShifter::process(samples, {ratio}, {200.4F}),
                            PitchShifter::process(samples, {ratio})),
                 QString());
    }
    QCOMPARE(difference(PitchShifter::process(samples, {0.9F, 1.2F}, {0.0F}),
                        PitchShifter::process(samples, {0.9F, 1.2F})),
             QString());
}

void PitchShifterTest::aGapInTheMiddleOfANoteLeavesItsLoudness()
{
    const QList<float> note = Tones::sine(450.0, 44100, 2 * 44100);
    QList<float> periods(170, 98.0F);
    for (qsizetype frame = 7; frame < periods.size(); frame += 10)
        periods[frame] = 0.0F;
    const QList<float> shifted = PitchShifter::process(note, {440.0F / 450.0F}, periods);
    QVERIFY(HeldNote::amplitudeModulation(shifted.mid(4096, 44100)) < 0.01);
}

void PitchShifterTest::noiseIsReadAtWholeSamples()
{
    // A frame of a note leaves a distance behind, with which the noise after it is read: 1280 times
    // the ratio's distance from 1 is 60.03 samples back, or a period of 101.3 later 41.27 ahead.
    // Reading between samples would soften the noise, so it is 41.
    QList<float> ratios(200, 1.0F);
    QList<float> periods(200, 0.0F);
    ratios[0] = 0.9531F;
    periods[0] = 101.3F;
    const QList<float> noise = Tones::noise(60000, 12);
    const QList<float> shifted = PitchShifter::process(noise, ratios, periods);
    QVERIFY(Tones::largestDifference(shifted.mid(4096, 50000), noise.mid(4096 + 41, 50000)) < 1e-6);
}

void PitchShifterTest::movingTheInputByAHopMovesTheOutputByAHop_data()
{
    QTest::addColumn<float>("ratio");
    QTest::newRow("lower") << 0.7F;
    QTest::newRow("a little lower") << 0.98F;
    QTest::newRow("higher") << 1.5F;
}

void PitchShifterTest::movingTheInputByAHopMovesTheOutputByAHop()
{
    QFETCH(float, ratio);
    const QList<float> samples = Tones::voice({}, 44100, 16384);
    const QList<float> shifted = PitchShifter::process(samples, {ratio});
    const QList<float> moved = PitchShifter::process(samples.mid(512), {ratio});
    // Clear of the edges, where fewer frames overlap.
    QCOMPARE(difference(shifted.mid(4096, 4096), moved.mid(4096 - 512, 4096)), QString());
    QVERIFY(Tones::largestDifference(shifted.mid(4096, 4096), samples.mid(4096, 4096)) > 1e-2);
}

void PitchShifterTest::noOutputIsLouderThanTheLoudestInput()
{
    // Every output is a mean of inputs, weighted by windows and by nearness.
    SeededRandom random(82);
    for (int round = 0; round < 100; ++round) {
        const QList<float> samples = Tones::noise(random.between(500, 6000), 7, 1.0);
        QList<float> ratios;
        for (int i = random.between(1, 12); i > 0; --i)
            ratios.append(static_cast<float>(random.between(0.25, 4.0)));
        for (const float sample : PitchShifter::process(samples, ratios))
            QVERIFY(std::abs(sample) <= 1.000001F);
    }
}

void PitchShifterTest::theBitsAreThoseOfThePlainForm_data()
{
    QTest::addColumn<int>("count");
    for (const int count : {1,    2,    3,    7,    8,    511,  512,  513,  1023, 1024, 1025, 1026,
                            1535, 1536, 1537, 2047, 2048, 2049, 2559, 2560, 2561, 5000, 12345})
        QTest::addRow("%d samples", count) << count;
}

void PitchShifterTest::theBitsAreThoseOfThePlainForm()
{
    QFETCH(int, count);
    const QList<float> samples = Tones::noise(count, 8, 1.0);
    for (const QList<float>& ratios :
         {QList<float>{1.0F}, {0.5F}, {2.0F}, {0.2501F}, {3.999F}, {0.977778F, 1.059463F, 3.0F}})
        QCOMPARE(difference(PitchShifter::process(samples, ratios), plainShift(samples, ratios)),
                 QString());
}

void PitchShifterTest::theBitsAreThoseOfThePlainFormForRandomRatios()
{
    SeededRandom random(83);
    for (int round = 0; round < 400; ++round) {
        const int count = random.between(1, 6000);
        const QList<float> samples = Tones::noise(count, static_cast<unsigned>(round), 1.0);
        QList<float> ratios;
        for (int i = random.between(1, 15); i > 0; --i)
            ratios.append(static_cast<float>(random.magnitude(0.2, 5.0)));
        QCOMPARE(difference(PitchShifter::process(samples, ratios), plainShift(samples, ratios)),
                 QString());
    }
}

void PitchShifterTest::theBitsAreThoseOfThePlainFormForHostileRatios()
{
    const QList<float> hostile{kNaN,  kInfinity, -kInfinity, 0.0F,  -0.0F, -1.0F, 0.25F, 4.0F,
                               1e30F, -1e30F,    1e-45F,     3e38F, 1.0F,  0.26F, 3.99F, 1.5F};
    SeededRandom random(84);
    for (int round = 0; round < 200; ++round) {
        const QList<float> samples = Tones::noise(random.between(1, 5000), 9, 1.0);
        QList<float> ratios;
        for (int i = random.between(1, 10); i > 0; --i)
            ratios.append(random.pick(hostile));
        QCOMPARE(difference(PitchShifter::process(samples, ratios), plainShift(samples, ratios)),
                 QString());
    }
}

void PitchShifterTest::theBitsAreThoseOfThePlainFormWithPeriods()
{
    SeededRandom random(85);
    for (int round = 0; round < 400; ++round) {
        const int count = random.between(1, 9000);
        const QList<float> samples = Tones::noise(count, static_cast<unsigned>(round), 1.0);
        QList<float> ratios;
        for (int i = random.between(1, 20); i > 0; --i)
            ratios.append(static_cast<float>(random.between(0.68, 1.45)));
        QList<float> periods;
        for (int i = random.between(1, 20); i > 0; --i)
            periods.append(random.oneIn(4) ? 0.0F
                                           : static_cast<float>(random.between(40.0, 640.0)));
        QCOMPARE(difference(PitchShifter::process(samples, ratios, periods),
                            plainShift(samples, ratios, periods)),
                 QString());
    }
}

void PitchShifterTest::theBitsAreThoseOfThePlainFormWithHostilePeriods()
{
    const QList<float> hostile{kNaN,   kInfinity, -kInfinity, 0.0F,    -0.0F,   -100.0F, 1e-45F,
                               0.999F, 1.0F,      1.5F,       1023.9F, 1024.0F, 1024.1F, 3e38F};
    const QList<float> ratios{0.26F, 0.5F, 0.7071F, 0.99995F, 1.0F, 1.4142F, 2.0F, 3.99F, kNaN};
    SeededRandom random(86);
    for (int round = 0; round < 200; ++round) {
        const QList<float> samples = Tones::noise(random.between(1, 9000), 9, 1.0);
        QList<float> some;
        QList<float> periods;
        for (int i = 0; i < 16; ++i) {
            some.append(random.pick(ratios));
            periods.append(random.pick(hostile));
        }
        QCOMPARE(difference(PitchShifter::process(samples, some, periods),
                            plainShift(samples, some, periods)),
                 QString());
    }
}

void PitchShifterTest::nothingIsLostLateInARecording()
{
    // A minute and a half of silence before a voice changes nothing about the voice.
    const QList<float> voice = Tones::voice({}, 44100, 20000);
    const QList<float> late = Tones::silence(qsizetype(8192) * 512) + voice;
    for (const float ratio : {0.9F, 1.3F}) {
        const QList<float> shifted = PitchShifter::process(voice, {ratio});
        const QList<float> shiftedLate = PitchShifter::process(late, {ratio});
        // From where the frames that began in the silence have ended.
        QCOMPARE(difference(shiftedLate.last(20000 - 2048), shifted.last(20000 - 2048)), QString());
    }
}

void PitchShifterTest::samplesThatAreNoNumbersStayNearTheirPlace()
{
    QList<float> samples = Tones::voice({}, 44100, 16384);
    const QList<float> clean = PitchShifter::process(samples, {0.9F});
    samples[8000] = kNaN;
    samples[8001] = kInfinity;
    const QList<float> shifted = PitchShifter::process(samples, {0.9F});
    // A frame that reads sample 8000 starts at most 2048 samples before it.
    QCOMPARE(shifted.first(5900), clean.first(5900));
    QCOMPARE(shifted.last(16384 - 8300), clean.last(16384 - 8300));
}

VELTA_GUILESS_TEST(PitchShifterTest)

} // namespace PitchShifterTests

#include "PitchShifterTest.moc"
