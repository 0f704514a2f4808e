#include "voice/PitchDetector.h"

#include "support/PlainPitchDetector.h"
#include "support/SeededRandom.h"
#include "support/SungVoices.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "voice/CorrelationScreen.h"

#include <QTest>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace PitchDetectorTests {

namespace {

using Fractions = PitchDetector::OddFractions;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kLargest = std::numeric_limits<float>::max();

/// Nothing if two lists hold the same bits, else the first place where they part.
QString difference(const QList<float>& actual, const QList<float>& expected)
{
    if (actual.size() != expected.size())
        return QString("%1 values, not %2").arg(actual.size()).arg(expected.size());
    for (qsizetype i = 0; i < actual.size(); ++i) {
        if (std::bit_cast<quint32>(actual[i]) != std::bit_cast<quint32>(expected[i]))
            return QString("value %1 is %2, not %3")
                .arg(i)
                .arg(static_cast<double>(actual[i]), 0, 'g', 9)
                .arg(static_cast<double>(expected[i]), 0, 'g', 9);
    }
    return {};
}

/// Distance of a pitch from `hz`, or from the whole fraction of it that lies nearest: a tone
/// repeats after two of its periods as well as after one.
double centsFromWholeFraction(float pitch, double hz)
{
    const auto found = static_cast<double>(pitch);
    return Tones::cents(found * std::max(1.0, std::round(hz / found)), hz);
}

/// A signal of a random kind's length: one frame to four, rarely a whole number of them.
qsizetype anyLength(SeededRandom& random)
{
    return random.between(2048, 2048 + 3 * 512 + 511);
}

int anySampleRate(SeededRandom& random)
{
    // Low rates have few lags, and let many more signals be held against the plain search.
    static const QList<int> rates{44100, 96000, 22050, 16000, 11025, 8000, 8000, 8000,
                                  8000,  4000,  4000,  4000,  4000,  4000, 2000, 2000,
                                  2000,  1000,  999,   500,   141,   70,   1};
    return random.pick(rates);
}

double anyPitch(SeededRandom& random, int sampleRate)
{
    return std::min(random.magnitude(40.0, 1500.0), 0.4 * sampleRate);
}

/// What the kinds of signals are made from.
struct Recipe {
    SeededRandom& random;
    int sampleRate;
    qsizetype count;
};

QList<float> sungVoice(const Recipe& recipe)
{
    const Tones::Voice sung{.hz = anyPitch(recipe.random, recipe.sampleRate),
                            .amplitude = recipe.random.between(0.05, 1.0),
                            .vibratoHz = recipe.random.between(3.0, 8.0),
                            .vibratoCents = recipe.random.between(0.0, 100.0)};
    return Tones::voice(sung, recipe.sampleRate, recipe.count);
}

QList<float> whiteNoise(const Recipe& recipe)
{
    return Tones::noise(recipe.count, static_cast<unsigned>(recipe.random.between(1, 1 << 30)),
                        recipe.random.between(0.01, 1.0));
}

/// A voice under so much noise that its correlation lies around the voiced threshold.
QList<float> hoarseVoice(const Recipe& recipe)
{
    const auto loudness = static_cast<float>(recipe.random.between(0.05, 1.0));
    return Tones::sum(Tones::scaled(sungVoice(recipe), loudness), whiteNoise(recipe));
}

QList<float> clicks(const Recipe& recipe)
{
    QList<float> samples = Tones::silence(recipe.count);
    for (int i = recipe.random.between(1, 40); i > 0; --i) {
        const int at = recipe.random.between(0, static_cast<int>(recipe.count) - 1);
        samples[at] = static_cast<float>(recipe.random.between(-1.0, 1.0));
    }
    return samples;
}

QList<float> singleSample(const Recipe& recipe)
{
    QList<float> samples = Tones::silence(recipe.count);
    samples[recipe.random.between(0, static_cast<int>(recipe.count) - 1)] = 0.5F;
    return samples;
}

/// Two pulses, which correlate at one lag alone.
QList<float> twoPulses(const Recipe& recipe)
{
    QList<float> samples = Tones::silence(recipe.count);
    const int first = recipe.random.between(0, 1500);
    samples[first] = static_cast<float>(recipe.random.between(0.1, 1.0));
    samples[first + recipe.random.between(0, 547)] = 0.75F;
    return samples;
}

QList<float> onsetAfterSilence(const Recipe& recipe)
{
    QList<float> samples = sungVoice(recipe);
    const int onset = recipe.random.between(0, static_cast<int>(recipe.count));
    std::fill(samples.begin(), samples.begin() + onset, 0.0F);
    return samples;
}

QList<float> endBeforeSilence(const Recipe& recipe)
{
    QList<float> samples = sungVoice(recipe);
    const int end = recipe.random.between(0, static_cast<int>(recipe.count));
    std::fill(samples.begin() + end, samples.end(), 0.0F);
    return samples;
}

QList<float> constantSignal(const Recipe& recipe)
{
    return QList<float>(recipe.count, static_cast<float>(recipe.random.magnitude(9e-4, 1e3)));
}

/// Lags that differ by units of the last place, if at all.
QList<float> oneOddSample(const Recipe& recipe)
{
    QList<float> samples(recipe.count, 1.0F);
    for (int i = recipe.random.between(1, 3); i > 0; --i)
        samples[recipe.random.between(0, static_cast<int>(recipe.count) - 1)] +=
            std::exp2(static_cast<float>(-recipe.random.between(8, 22)));
    return samples;
}

/// Every lag correlates almost perfectly, and as well as any other.
QList<float> almostConstant(const Recipe& recipe)
{
    const double ripple = recipe.random.magnitude(1e-8, 1e-2);
    return Tones::sum(constantSignal(recipe),
                      Tones::noise(recipe.count, static_cast<unsigned>(recipe.count), ripple));
}

QList<float> onTheSilenceThreshold(const Recipe& recipe)
{
    // The mean square of a sine is half its squared amplitude, and the threshold 1e-6.
    const double nearby =
        1.0 + recipe.random.between(-1.0, 1.0) * recipe.random.magnitude(1e-8, 1e-1);
    return Tones::sine(anyPitch(recipe.random, recipe.sampleRate), recipe.sampleRate, recipe.count,
                       std::sqrt(2e-6) * nearby);
}

/// Of energies that single precision holds and that it does not.
QList<float> enormousVoice(const Recipe& recipe)
{
    const auto factor = static_cast<float>(recipe.random.magnitude(1e11, 3e38));
    return Tones::scaled(sungVoice(recipe), factor);
}

/// Products that single precision holds, in sums that it may not.
QList<float> overflowingSums(const Recipe& recipe)
{
    const QList<float> pattern = recipe.random.oneIn(2) ? clicks(recipe) : whiteNoise(recipe);
    const int period = recipe.random.between(1, 2 * std::max(1, recipe.sampleRate / 70));
    const double energy = recipe.random.magnitude(1e37, 1e41);
    QList<float> samples(recipe.count);
    for (qsizetype i = 0; i < samples.size(); ++i)
        samples[i] = pattern[i % period];
    const double factor = std::sqrt(energy / std::max(1e-9, Tones::energy(samples)));
    return Tones::scaled(samples, static_cast<float>(std::min(factor, 1e19)));
}

QList<float> largestNumbers(const Recipe& recipe)
{
    QList<float> samples = clicks(recipe);
    for (float& sample : samples) {
        if (sample != 0.0F || recipe.random.oneIn(20))
            sample = sample < 0.0F ? -kLargest : kLargest;
    }
    return samples;
}

QList<float> withNumbersThatAreNone(const Recipe& recipe)
{
    static const QList<float> none{kNaN, -kNaN, kInfinity, -kInfinity};
    QList<float> samples = recipe.random.oneIn(3) ? enormousVoice(recipe) : sungVoice(recipe);
    for (int i = recipe.random.between(1, 3); i > 0; --i)
        samples[recipe.random.between(0, static_cast<int>(recipe.count) - 1)] =
            recipe.random.pick(none);
    return samples;
}

/// Numbers below the normal range of single precision, and sometimes one sound that is not.
QList<float> denormals(const Recipe& recipe)
{
    QList<float> samples = Tones::scaled(sungVoice(recipe), 1e-38F);
    if (recipe.random.oneIn(2))
        samples[recipe.random.between(0, static_cast<int>(recipe.count) - 1)] = 0.5F;
    if (recipe.random.oneIn(2))
        samples[recipe.random.between(0, static_cast<int>(recipe.count) - 1)] = 0.5F;
    return samples;
}

/// Numbers whose squares vanish although their products with others do not.
QList<float> vanishingSquares(const Recipe& recipe)
{
    QList<float> samples = sungVoice(recipe);
    const int from = recipe.random.between(0, static_cast<int>(recipe.count) - 1);
    const int to = recipe.random.between(from, static_cast<int>(recipe.count) - 1);
    const auto factor = static_cast<float>(recipe.random.magnitude(1e-40, 1e-15));
    for (int i = from; i < to; ++i)
        samples[i] *= factor;
    return samples;
}

QList<float> squareWave(const Recipe& recipe)
{
    return Tones::square(recipe.random.between(2, 1100), recipe.count,
                         static_cast<float>(recipe.random.magnitude(2e-3, 1.0)));
}

/// A random pattern over and over: multiples of its period all correlate perfectly.
QList<float> exactRepetition(const Recipe& recipe)
{
    const QList<float> pattern = whiteNoise(recipe);
    const int period = recipe.random.between(1, 700);
    QList<float> samples(recipe.count);
    for (qsizetype i = 0; i < samples.size(); ++i)
        samples[i] = pattern[i % period];
    return samples;
}

/// As a repetition, with the sound of few bits that a bad microphone gives.
QList<float> coarseSteps(const Recipe& recipe)
{
    QList<float> samples = sungVoice(recipe);
    const auto steps = static_cast<float>(recipe.random.between(1, 16));
    for (float& sample : samples)
        sample = std::round(sample * steps) / steps;
    return samples;
}

QList<float> glide(const Recipe& recipe)
{
    return Tones::chirp(anyPitch(recipe.random, recipe.sampleRate),
                        anyPitch(recipe.random, recipe.sampleRate), recipe.sampleRate,
                        recipe.count);
}

QList<float> nearlyEqualPeriods(const Recipe& recipe)
{
    const double hz = anyPitch(recipe.random, recipe.sampleRate);
    const double other = hz * (1.0 + recipe.random.magnitude(1e-7, 1e-2));
    return Tones::sum(Tones::sine(hz, recipe.sampleRate, recipe.count),
                      Tones::sine(other, recipe.sampleRate, recipe.count));
}

/// Multiples of one period that correlate better or worse by almost nothing.
QList<float> almostExactRepetition(const Recipe& recipe)
{
    const double ripple = recipe.random.magnitude(1e-9, 1e-3);
    return Tones::sum(exactRepetition(recipe),
                      Tones::noise(recipe.count, static_cast<unsigned>(recipe.count), ripple));
}

/// Dies away or grows so fast that one end of the frame holds almost nothing of its energy.
QList<float> fadingVoice(const Recipe& recipe)
{
    QList<float> samples = sungVoice(recipe);
    const double length = recipe.random.magnitude(10.0, 2000.0);
    const bool grows = recipe.random.oneIn(2);
    for (qsizetype i = 0; i < samples.size(); ++i) {
        const auto age = static_cast<double>(grows ? samples.size() - 1 - i : i);
        samples[i] *= static_cast<float>(std::exp(-age / length));
    }
    return samples;
}

/// Every multiple of the period correlates almost perfectly, with ends of ever smaller shares.
QList<float> fadingRepetition(const Recipe& recipe)
{
    const QList<float> pattern = whiteNoise(recipe);
    const int period = recipe.random.between(1, std::max(2, recipe.sampleRate / 400));
    const double length = recipe.sampleRate / 70.0 * recipe.random.magnitude(0.03, 1.0);
    const bool grows = recipe.random.oneIn(2);
    QList<float> samples(recipe.count);
    for (qsizetype i = 0; i < samples.size(); ++i) {
        const auto age = static_cast<double>(grows ? samples.size() - 1 - i : i);
        const auto pulse = static_cast<double>(pattern[i % period]);
        samples[i] = static_cast<float>(1e4 * pulse * std::exp(-age / length));
    }
    return samples;
}

QList<float> stepInLoudness(const Recipe& recipe)
{
    QList<float> samples = sungVoice(recipe);
    const int step = recipe.random.between(0, static_cast<int>(recipe.count) - 1);
    // Around shares of 1e-6 of the frame's energy.
    const auto factor = static_cast<float>(recipe.random.magnitude(1e-5, 1e5));
    for (int i = step; i < recipe.count; ++i)
        samples[i] *= factor;
    return samples;
}

/// Loud samples ahead of quiet ones whose squares a single precision sum loses one by one.
QList<float> lostAdditions(const Recipe& recipe)
{
    const int loud = recipe.random.between(1, 64);
    const int period =
        recipe.random.pick(QList<int>{128, 256, 512, recipe.random.between(64, 630)});
    const auto quiet = static_cast<float>(std::exp2(-12.0) * recipe.random.between(0.7, 1.2));
    QList<float> samples(recipe.count);
    for (qsizetype i = 0; i < samples.size(); ++i)
        samples[i] = i % period < loud ? 1.0F : quiet;
    return samples;
}

/// Stretches of two voices, of noise and of silence, one behind the other.
QList<float> patchwork(const Recipe& recipe)
{
    const QList<QList<float>> sources{sungVoice(recipe), sungVoice(recipe), whiteNoise(recipe),
                                      Tones::silence(recipe.count), squareWave(recipe)};
    QList<float> samples;
    while (samples.size() < recipe.count) {
        const QList<float> source = recipe.random.pick(sources);
        samples += source.mid(samples.size(), recipe.random.between(1, 900));
    }
    return samples;
}

struct Kind {
    const char* name = "";
    QList<float> (*make)(const Recipe&) = nullptr;
};

const QList<Kind> kKinds{
    {"sung voices", sungVoice},
    {"white noise", whiteNoise},
    {"voices under noise", hoarseVoice},
    {"clicks", clicks},
    {"single samples", singleSample},
    {"pairs of pulses", twoPulses},
    {"onsets after digital silence", onsetAfterSilence},
    {"ends before digital silence", endBeforeSilence},
    {"constant signals", constantSignal},
    {"almost constant signals", almostConstant},
    {"constants with an odd sample", oneOddSample},
    {"tones on the silence threshold", onTheSilenceThreshold},
    {"voices of enormous amplitude", enormousVoice},
    {"sums beyond single precision", overflowingSums},
    {"the largest numbers", largestNumbers},
    {"infinities and what is not a number", withNumbersThatAreNone},
    {"denormal numbers", denormals},
    {"squares that vanish", vanishingSquares},
    {"square waves of whole periods", squareWave},
    {"exact repetitions", exactRepetition},
    {"almost exact repetitions", almostExactRepetition},
    {"voices of few bits", coarseSteps},
    {"glides", glide},
    {"sums of nearly equal periods", nearlyEqualPeriods},
    {"voices that fade or grow fast", fadingVoice},
    {"repetitions that fade or grow fast", fadingRepetition},
    {"steps in loudness", stepInLoudness},
    {"sums that lose what is added", lostAdditions},
    {"patchworks of sounds", patchwork},
};

/// What a screen's products make of a lag, against the sums that they stand for.
struct ScreenedLag {
    double quick = 0.0;
    double exact = 0.0;
    /// The screen's promise holds here.
    bool covered = false;
};

ScreenedLag screenedLag(const float* frame, int lag, double product)
{
    double energy = 0.0;
    double laterEnergy = 0.0;
    for (int i = 0; i < 2048 - lag; ++i) {
        energy += static_cast<double>(frame[i] * frame[i]);
        laterEnergy += static_cast<double>(frame[i + lag] * frame[i + lag]);
    }
    const double total = PlainPitchDetector::frameEnergy(frame);
    const double least = total * CorrelationScreen::kLeastShare;
    const bool loudEnough = total / 2048 >= PitchDetector::kSilenceThreshold;
    return {.quick = product / std::sqrt(energy * laterEnergy),
            .exact = PlainPitchDetector::correlation(frame, lag),
            .covered = loudEnough && total < CorrelationScreen::kMostEnergy && energy >= least &&
                       laterEnergy >= least};
}

/// The largest error of a screen over the lags of every frame that its promise covers; -1.0 where
/// it covers none.
double largestScreenError(const QList<float>& samples, int lagMin, int lagMax, int lagStep)
{
    double largest = -1.0;
    CorrelationScreen screen(samples, lagMin, lagMax);
    for (qsizetype start = 0; start + 2048 <= samples.size(); start += 512) {
        const std::vector<double>& products = screen.nextFrame();
        for (int lag = lagMin; lag <= lagMax; lag += lagStep) {
            const double product = products[static_cast<std::size_t>(lag - lagMin)];
            const ScreenedLag screened = screenedLag(samples.constData() + start, lag, product);
            if (!screened.covered)
                continue;
            const double error = std::abs(screened.quick - screened.exact);
            // An error that is not a number is beyond any bound.
            largest = std::isnan(error) ? 1e9 : std::max(largest, error);
        }
    }
    return largest;
}

} // namespace

class PitchDetectorTest : public QObject {
    Q_OBJECT

private slots:
    void oneValueForEveryWholeFrame_data();
    void oneValueForEveryWholeFrame();
    void withoutASampleRateThereAreNoValues_data();
    void withoutASampleRateThereAreNoValues();

    void digitalSilenceHasNoPitch();
    void whiteNoiseHasNoPitch_data();
    void whiteNoiseHasNoPitch();
    void theSilenceThresholdIsAMeanSquare_data();
    void theSilenceThresholdIsAMeanSquare();
    void halfACorrelationIsVoiced_data();
    void halfACorrelationIsVoiced();

    void aPure440IsHeardInEveryFrame();
    void tonesAreHeardAtAnySampleRate_data();
    void tonesAreHeardAtAnySampleRate();
    void aGlideIsFollowed();
    void belowTheRangeNothingLowerThanTheLongestLag_data();
    void belowTheRangeNothingLowerThanTheLongestLag();
    void at96000HzTheLongestLagIsHeldAt1024();

    void repetitionsGiveTheirPeriod_data();
    void repetitionsGiveTheirPeriod();
    void aPeakBetweenTwoSamplesIsPlacedByAParabola();
    void aPeakTooFlatForAParabolaKeepsItsWholeLag();
    void aConstantSignalTiesAtTheShortestLag();
    void aSampleRateThatLeavesNoLagGivesZeros_data();
    void aSampleRateThatLeavesNoLagGivesZeros();
    void aShortestLagOfNothingGivesAnInfinitePitch_data();
    void aShortestLagOfNothingGivesAnInfinitePitch();
    void oneNumberThatIsNoneSilencesItsFrames_data();
    void oneNumberThatIsNoneSilencesItsFrames();
    void sumsBeyondSinglePrecisionHideNoLag();

    void everyFrameIsJudgedByItself();
    void loudnessDoesNotMatter();
    void whatFollowsDoesNotMatter();

    void theBitsAreThoseOfThePlainSearch_data();
    void theBitsAreThoseOfThePlainSearch();
    void theBitsAreThoseOfThePlainSearchAtEveryOnset();
    void theBitsAreThoseOfThePlainSearchForConstants();

    void anOddFractionIsUndone_data();
    void anOddFractionIsUndone();
    void octavesOfAPitchAreLeft();
    void belowTheRangeNoFractionIsUndone_data();
    void belowTheRangeNoFractionIsUndone();
    void aboveTheRangeNoPitchIsUndoneTo();
    void undoingFollowsThePlainRule_data();
    void undoingFollowsThePlainRule();
    void withoutFractionsNothingIsUndone();

    void theScreenKeepsItsPromise_data();
    void theScreenKeepsItsPromise();
    void theScreenKeepsItsPromiseWhenEveryAdditionIsLost_data();
    void theScreenKeepsItsPromiseWhenEveryAdditionIsLost();
};

void PitchDetectorTest::oneValueForEveryWholeFrame_data()
{
    QTest::addColumn<qsizetype>("samples");
    QTest::addColumn<qsizetype>("values");
    QTest::newRow("no samples") << qsizetype(0) << qsizetype(0);
    QTest::newRow("one sample") << qsizetype(1) << qsizetype(0);
    QTest::newRow("2047 samples give an empty list") << qsizetype(2047) << qsizetype(0);
    QTest::newRow("2048 samples give one value") << qsizetype(2048) << qsizetype(1);
    QTest::newRow("2049 samples give one value") << qsizetype(2049) << qsizetype(1);
    QTest::newRow("2559 samples give one value") << qsizetype(2559) << qsizetype(1);
    QTest::newRow("2560 samples give two values") << qsizetype(2560) << qsizetype(2);
    QTest::newRow("3071 samples give two values") << qsizetype(3071) << qsizetype(2);
    QTest::newRow("3072 samples give three values") << qsizetype(3072) << qsizetype(3);
    QTest::newRow("a second of sound") << qsizetype(44100) << qsizetype(83);
}

void PitchDetectorTest::oneValueForEveryWholeFrame()
{
    QFETCH(qsizetype, samples);
    QTEST(PitchDetector::detectTrack(Tones::sine(220.0, 44100, samples), 44100).size(), "values");
    QTEST(PitchDetector::detectTrack(Tones::silence(samples), 44100).size(), "values");
}

void PitchDetectorTest::withoutASampleRateThereAreNoValues_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::newRow("0 Hz") << 0;
    QTest::newRow("-1 Hz") << -1;
    QTest::newRow("-44100 Hz") << -44100;
    QTest::newRow("the lowest number") << std::numeric_limits<int>::min();
}

void PitchDetectorTest::withoutASampleRateThereAreNoValues()
{
    QFETCH(int, sampleRate);
    QVERIFY(PitchDetector::detectTrack(Tones::sine(220.0, 44100, 8192), sampleRate).isEmpty());
}

void PitchDetectorTest::digitalSilenceHasNoPitch()
{
    QCOMPARE(PitchDetector::detectTrack(Tones::silence(8192), 44100), QList<float>(13, 0.0F));
    QCOMPARE(PitchDetector::detectTrack(QList<float>(8192, -0.0F), 44100), QList<float>(13, 0.0F));
}

void PitchDetectorTest::whiteNoiseHasNoPitch_data()
{
    QTest::addColumn<double>("amplitude");
    QTest::newRow("quiet") << 0.003;
    QTest::newRow("at half scale") << 0.5;
    QTest::newRow("at full scale") << 1.0;
}

void PitchDetectorTest::whiteNoiseHasNoPitch()
{
    QFETCH(double, amplitude);
    for (unsigned seed = 1; seed <= 10; ++seed)
        QCOMPARE(PitchDetector::detectTrack(Tones::noise(4096, seed, amplitude), 44100),
                 QList<float>(5, 0.0F));
}

void PitchDetectorTest::theSilenceThresholdIsAMeanSquare_data()
{
    QTest::addColumn<float>("level");
    QTest::addColumn<int>("soundingSamples");
    QTest::addColumn<bool>("heard");

    QTest::newRow("a mean square of 0.99e-6") << std::sqrt(0.99e-6F) << 2048 << false;
    QTest::newRow("a mean square of 1.01e-6") << std::sqrt(1.01e-6F) << 2048 << true;
    QTest::newRow("a quarter of the frame at 3.9e-6") << std::sqrt(3.9e-6F) << 512 << false;
    QTest::newRow("a quarter of the frame at 4.1e-6") << std::sqrt(4.1e-6F) << 512 << true;
}

void PitchDetectorTest::theSilenceThresholdIsAMeanSquare()
{
    QFETCH(float, level);
    QFETCH(int, soundingSamples);
    QFETCH(bool, heard);
    QList<float> samples = Tones::silence(2048);
    std::fill_n(samples.begin() + (2048 - soundingSamples) / 2, soundingSamples, level);
    QCOMPARE(PitchDetector::detectTrack(samples, 44100).first() > 0.0F, heard);
}

void PitchDetectorTest::halfACorrelationIsVoiced_data()
{
    QTest::addColumn<float>("first");
    QTest::addColumn<float>("second");
    QTest::addColumn<bool>("voiced");

    // Two pulses a lag apart that head and tail both hold: a * b / (a^2 + b^2).
    QTest::newRow("exactly a half") << 0.5F << 0.5F << true;
    QTest::newRow("exactly a half, the other sign") << -0.25F << -0.25F << true;
    QTest::newRow("a correlation of 0.49999") << 0.5F << 0.503F << false;
    QTest::newRow("a correlation of -0.5") << 0.5F << -0.5F << false;
}

void PitchDetectorTest::halfACorrelationIsVoiced()
{
    QFETCH(float, first);
    QFETCH(float, second);
    QFETCH(bool, voiced);
    QList<float> samples = Tones::silence(2048);
    samples[900] = first;
    samples[1000] = second;
    QCOMPARE(PitchDetector::detectTrack(samples, 44100), QList<float>{voiced ? 441.0F : 0.0F});
}

void PitchDetectorTest::aPure440IsHeardInEveryFrame()
{
    const QList<float> pitches =
        PitchDetector::detectTrack(Tones::sine(440.0, 44100, 44100), 44100);
    QCOMPARE(pitches.size(), 83);
    for (const float pitch : pitches) {
        QVERIFY(pitch >= 70.0F && pitch < 441.0F);
        QVERIFY(std::abs(centsFromWholeFraction(pitch, 440.0)) < 1.0);
    }
}

void PitchDetectorTest::tonesAreHeardAtAnySampleRate_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<double>("hz");
    for (const int sampleRate : {8000, 16000, 22050, 44100, 48000, 96000}) {
        for (const double hz : {82.41, 110.0, 196.0, 261.63, 440.0, 659.26, 880.0}) {
            if (hz > sampleRate / 1024.0)
                QTest::addRow("%g Hz at %d Hz", hz, sampleRate) << sampleRate << hz;
        }
    }
}

void PitchDetectorTest::tonesAreHeardAtAnySampleRate()
{
    QFETCH(int, sampleRate);
    QFETCH(double, hz);
    const QList<float> pure = Tones::sine(hz, sampleRate, 6144);
    const QList<float> sung = Tones::voice({.hz = hz, .vibratoCents = 0.0}, sampleRate, 6144);
    for (const QList<float>& samples : {pure, sung}) {
        for (const float pitch : PitchDetector::detectTrack(samples, sampleRate)) {
            QVERIFY(pitch > 0.0F);
            const double off = centsFromWholeFraction(pitch, hz);
            QVERIFY2(std::abs(off) < 12.0, qPrintable(QString("%1 Hz").arg(double(pitch))));
        }
    }
}

void PitchDetectorTest::aGlideIsFollowed()
{
    const QList<float> pitches =
        PitchDetector::detectTrack(Tones::chirp(200.0, 400.0, 44100, 88200), 44100);
    for (qsizetype i = 0; i < pitches.size(); ++i) {
        // The glide's frequency in the middle of the frame.
        const double hz = 200.0 + 200.0 * static_cast<double>(512 * i + 1024) / 88200.0;
        QVERIFY(pitches[i] > 0.0F);
        QVERIFY(std::abs(centsFromWholeFraction(pitches[i], hz)) < 25.0);
    }
}

void PitchDetectorTest::belowTheRangeNothingLowerThanTheLongestLag_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<double>("hz");
    QTest::addColumn<float>("lowest");
    QTest::newRow("50 Hz at 44100 Hz") << 44100 << 50.0 << 70.0F;
    QTest::newRow("69 Hz at 44100 Hz") << 44100 << 69.0 << 70.0F;
    QTest::newRow("20 Hz at 44100 Hz") << 44100 << 20.0 << 70.0F;
    QTest::newRow("1 Hz at 44100 Hz") << 44100 << 1.0 << 70.0F;
    // 48000 / 70 is 685.7, so the longest lag is 685 samples.
    QTest::newRow("50 Hz at 48000 Hz") << 48000 << 50.0 << 48000.0F / 685.0F;
    QTest::newRow("50 Hz at 8000 Hz") << 8000 << 50.0 << 8000.0F / 114.0F;
    QTest::newRow("80 Hz at 96000 Hz") << 96000 << 80.0 << 93.75F;
}

void PitchDetectorTest::belowTheRangeNothingLowerThanTheLongestLag()
{
    QFETCH(int, sampleRate);
    QFETCH(double, hz);
    QFETCH(float, lowest);
    const QList<float> pitches =
        PitchDetector::detectTrack(Tones::sine(hz, sampleRate, 20480), sampleRate);
    QCOMPARE(pitches.size(), 37);
    for (const float pitch : pitches)
        QVERIFY2(pitch == 0.0F || pitch >= lowest, qPrintable(QString::number(double(pitch))));
}

void PitchDetectorTest::at96000HzTheLongestLagIsHeldAt1024()
{
    // A pattern that repeats after 1024 samples and one after 1025: 93.75 Hz and just below.
    QCOMPARE(PitchDetector::detectTrack(Tones::square(1024, 2048), 96000), QList<float>{93.75F});
    const float below = PitchDetector::detectTrack(Tones::square(1028, 2048), 96000).first();
    QVERIFY(below >= 93.75F);
}

void PitchDetectorTest::repetitionsGiveTheirPeriod_data()
{
    QTest::addColumn<int>("period");
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<float>("expected");

    // Lags 44 and 630 end the range at 44100 Hz and stay whole; in between the neighbours of a
    // square wave's peak are equal but for the overlap, which bends the result by a few cents.
    QTest::newRow("44 samples, the shortest lag") << 44 << 44100 << 44100.0F / 44.0F;
    QTest::newRow("630 samples, the longest lag") << 630 << 44100 << 70.0F;
    QTest::newRow("100 samples, not 200 nor 600") << 100 << 44100 << 441.0F;
    QTest::newRow("45 samples") << 45 << 44100 << 980.0F;
    QTest::newRow("210 samples, not 420 nor 630") << 210 << 44100 << 210.0F;
    QTest::newRow("42 samples are too short, twice 42 is not") << 42 << 44100 << 525.0F;
    QTest::newRow("8 samples, the shortest lag at 8000 Hz") << 8 << 8000 << 1000.0F;
    QTest::newRow("114 samples, the longest lag at 8000 Hz") << 114 << 8000 << 8000.0F / 114.0F;
}

void PitchDetectorTest::repetitionsGiveTheirPeriod()
{
    QFETCH(int, period);
    QFETCH(int, sampleRate);
    QFETCH(float, expected);
    // A pattern of noise, so that nothing but whole periods correlates.
    const QList<float> pattern = Tones::noise(period, 5);
    QList<float> samples(4096);
    for (qsizetype i = 0; i < samples.size(); ++i)
        samples[i] = pattern[i % period];
    const bool atAnEnd = period == sampleRate / 1000 || period == sampleRate / 70;
    for (const float pitch : PitchDetector::detectTrack(samples, sampleRate)) {
        const double off = Tones::cents(static_cast<double>(pitch), static_cast<double>(expected));
        QVERIFY2(atAnEnd ? pitch == expected : std::abs(off) < 10.0,
                 qPrintable(QString::number(static_cast<double>(pitch))));
    }
}

void PitchDetectorTest::aPeakBetweenTwoSamplesIsPlacedByAParabola()
{
    // 44100 / 600 is 73.5: the whole lags beside it are 37 cents off to either side or more.
    const QList<float> sung = Tones::voice({.hz = 600.0, .vibratoCents = 0.0}, 44100, 8192);
    for (const float pitch : PitchDetector::detectTrack(sung, 44100))
        QVERIFY(std::abs(centsFromWholeFraction(pitch, 600.0)) < 3.0);
}

void PitchDetectorTest::aPeakTooFlatForAParabolaKeepsItsWholeLag()
{
    // The square of 1 + 2^-13 loses its last term, 2^-26, to single precision. Lags beyond the
    // odd sample then correlate better than perfectly, by some units of the last place.
    QList<float> samples(2048, 1.0F);
    samples[300] += std::exp2(-13.0F);
    const double lag =
        44100.0 / static_cast<double>(PitchDetector::detectTrack(samples, 44100).first());
    QVERIFY2(lag > 300.0 && lag < 629.5, qPrintable(QString::number(lag)));
    QVERIFY2(std::abs(lag - std::round(lag)) < 1e-4, qPrintable(QString::number(lag, 'g', 9)));
}

void PitchDetectorTest::aConstantSignalTiesAtTheShortestLag()
{
    for (const float level : {1.0F, -0.3F, 0.0017F, 1234.5F}) {
        QCOMPARE(PitchDetector::detectTrack(QList<float>(4096, level), 44100),
                 QList<float>(5, 44100.0F / 44.0F));
        QCOMPARE(PitchDetector::detectTrack(QList<float>(4096, level), 8000),
                 QList<float>(5, 1000.0F));
    }
    // Whatever was heard before.
    const QList<float> after = Tones::square(100, 2048) + QList<float>(4096, 1.0F);
    QCOMPARE(PitchDetector::detectTrack(after, 44100).last(5), QList<float>(5, 44100.0F / 44.0F));
}

void PitchDetectorTest::aSampleRateThatLeavesNoLagGivesZeros_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::newRow("the shortest lag is 1025") << 1025000;
    QTest::newRow("the shortest lag is 2000") << 2000000;
    QTest::newRow("the highest number") << std::numeric_limits<int>::max();
}

void PitchDetectorTest::aSampleRateThatLeavesNoLagGivesZeros()
{
    QFETCH(int, sampleRate);
    QCOMPARE(PitchDetector::detectTrack(Tones::square(1024, 4096), sampleRate),
             QList<float>(5, 0.0F));
    // One step below the first of them a single lag is left.
    QCOMPARE(PitchDetector::detectTrack(Tones::square(1024, 4096), 1024999),
             QList<float>(5, 1024999.0F / 1024.0F));
}

void PitchDetectorTest::aShortestLagOfNothingGivesAnInfinitePitch_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::newRow("999 Hz") << 999;
    QTest::newRow("500 Hz") << 500;
    QTest::newRow("70 Hz") << 70;
    QTest::newRow("69 Hz") << 69;
    QTest::newRow("1 Hz") << 1;
}

void PitchDetectorTest::aShortestLagOfNothingGivesAnInfinitePitch()
{
    // At lag 0 every sound correlates perfectly with itself.
    QFETCH(int, sampleRate);
    QCOMPARE(PitchDetector::detectTrack(Tones::noise(4096, 9), sampleRate),
             QList<float>(5, kInfinity));
    QCOMPARE(PitchDetector::detectTrack(Tones::silence(4096), sampleRate), QList<float>(5, 0.0F));
}

void PitchDetectorTest::oneNumberThatIsNoneSilencesItsFrames_data()
{
    QTest::addColumn<float>("none");
    QTest::newRow("not a number") << kNaN;
    QTest::newRow("infinity") << kInfinity;
    QTest::newRow("minus infinity") << -kInfinity;
}

void PitchDetectorTest::oneNumberThatIsNoneSilencesItsFrames()
{
    QFETCH(float, none);
    const QList<float> clean = Tones::voice({}, 44100, 8192);
    const QList<float> heard = PitchDetector::detectTrack(clean, 44100);
    for (const qsizetype at : {0, 511, 512, 2047, 2048, 4000, 8191}) {
        QList<float> samples = clean;
        samples[at] = none;
        QList<float> expected = heard;
        for (qsizetype frame = 0; frame < expected.size(); ++frame) {
            if (at >= 512 * frame && at < 512 * frame + 2048)
                expected[frame] = 0.0F;
        }
        QCOMPARE(PitchDetector::detectTrack(samples, 44100), expected);
    }
}

void PitchDetectorTest::sumsBeyondSinglePrecisionHideNoLag()
{
    // Squares of 1.8e19 just fit single precision, two of them do not. Four pairs of pulses a lag
    // of 100 apart correlate by 4 / sqrt(8 * 7). At lag 600 the third pair's sign takes away what
    // the first two add, but a sum in single precision has no way back from infinity.
    constexpr float kPulse = 1.8e19F;
    QList<float> samples = Tones::silence(2048);
    samples[0] = samples[100] = kPulse;
    samples[600] = samples[700] = kPulse;
    samples[1100] = samples[1200] = -kPulse;
    samples[1600] = samples[1700] = kPulse;
    QCOMPARE(PitchDetector::detectTrack(samples, 44100), QList<float>{441.0F});
}

void PitchDetectorTest::everyFrameIsJudgedByItself()
{
    SeededRandom random(71);
    for (int round = 0; round < 20; ++round) {
        const int sampleRate = anySampleRate(random);
        const QList<float> samples = random.pick(kKinds).make({random, sampleRate, 2048 + 512 * 7});
        const QList<float> track = PitchDetector::detectTrack(samples, sampleRate);
        QList<float> alone;
        for (qsizetype start = 0; start + 2048 <= samples.size(); start += 512)
            alone += PitchDetector::detectTrack(samples.mid(start, 2048), sampleRate);
        QCOMPARE(difference(alone, track), QString());
    }
}

void PitchDetectorTest::loudnessDoesNotMatter()
{
    // Powers of two scale every product and sum without rounding.
    const QList<float> samples =
        Tones::sum(Tones::voice({}, 44100, 6144), Tones::noise(6144, 4, 0.1));
    const QList<float> expected = PitchDetector::detectTrack(samples, 44100);
    QVERIFY(!expected.contains(0.0F));
    for (const int exponent : {-6, -1, 1, 10, 40}) {
        const float factor = std::ldexp(1.0F, exponent);
        QCOMPARE(
            difference(PitchDetector::detectTrack(Tones::scaled(samples, factor), 44100), expected),
            QString());
    }
}

void PitchDetectorTest::whatFollowsDoesNotMatter()
{
    const QList<float> samples = Tones::voice({}, 44100, 8192);
    const QList<float> whole = PitchDetector::detectTrack(samples, 44100);
    for (const qsizetype length : {2048, 2500, 3072, 5000, 8191}) {
        const QList<float> part = PitchDetector::detectTrack(samples.first(length), 44100);
        QCOMPARE(difference(part, whole.first(part.size())), QString());
    }
}

void PitchDetectorTest::theBitsAreThoseOfThePlainSearch_data()
{
    QTest::addColumn<int>("kind");
    for (int kind = 0; kind < kKinds.size(); ++kind)
        QTest::newRow(kKinds[kind].name) << kind;
}

void PitchDetectorTest::theBitsAreThoseOfThePlainSearch()
{
    QFETCH(int, kind);
    SeededRandom random(72U + static_cast<unsigned>(kind));
    for (int round = 0; round < 36; ++round) {
        const int sampleRate = anySampleRate(random);
        const QList<float> samples = kKinds[kind].make({random, sampleRate, anyLength(random)});
        const QString parted = difference(PitchDetector::detectTrack(samples, sampleRate),
                                          PlainPitchDetector::detectTrack(samples, sampleRate));
        QVERIFY2(
            parted.isEmpty(),
            qPrintable(QString("round %1 at %2 Hz: %3").arg(round).arg(sampleRate).arg(parted)));
    }
}

void PitchDetectorTest::theBitsAreThoseOfThePlainSearchAtEveryOnset()
{
    const QList<float> voice = Tones::voice({.hz = 300.0}, 8000, 2048);
    for (int onset = 0; onset < 2048; onset += 4) {
        QList<float> samples = voice;
        std::fill_n(samples.begin(), onset, 0.0F);
        QCOMPARE(difference(PitchDetector::detectTrack(samples, 8000),
                            PlainPitchDetector::detectTrack(samples, 8000)),
                 QString());
    }
}

void PitchDetectorTest::theBitsAreThoseOfThePlainSearchForConstants()
{
    // All lags tie exactly, and only rounding could tell them apart.
    SeededRandom random(73);
    for (int round = 0; round < 400; ++round) {
        const auto level = static_cast<float>(random.magnitude(1e-3, 1e3));
        const QList<float> samples(2048, level);
        QCOMPARE(PitchDetector::detectTrack(samples, 4000), QList<float>{1000.0F});
    }
}

void PitchDetectorTest::anOddFractionIsUndone_data()
{
    QTest::addColumn<double>("hz");
    QTest::newRow("B, found at a seventh") << 493.8833;
    QTest::newRow("a high F") << 698.4565;
    QTest::newRow("725 Hz, found at a sixth") << 725.0;
    QTest::newRow("950 Hz") << 950.0;
}

void PitchDetectorTest::anOddFractionIsUndone()
{
    QFETCH(double, hz);
    const QList<float> tone = Tones::sine(hz, 44100, 8192);
    for (const float pitch : PitchDetector::detectTrack(tone, 44100, Fractions::Undone)) {
        const double octaves = std::log2(hz / static_cast<double>(pitch));
        QVERIFY2(std::abs(octaves - std::round(octaves)) < 1e-4,
                 qPrintable(QString::number(pitch)));
    }
}

void PitchDetectorTest::octavesOfAPitchAreLeft()
{
    // A loud second harmonic: an octave higher correlates well, and is not taken for the pitch.
    const QList<float> voice =
        Tones::sum(Tones::sine(150.0, 44100, 8192, 0.1), Tones::sine(300.0, 44100, 8192, 0.8));
    for (const float pitch : PitchDetector::detectTrack(voice, 44100, Fractions::Undone))
        QVERIFY(std::abs(centsFromWholeFraction(pitch, 150.0)) < 1.0);
}

void PitchDetectorTest::belowTheRangeNoFractionIsUndone_data()
{
    QTest::addColumn<double>("hz");
    for (const double hz : {40.0, 50.0, 60.0, 69.0})
        QTest::addRow("%g Hz", hz) << hz;
}

void PitchDetectorTest::belowTheRangeNoFractionIsUndone()
{
    QFETCH(double, hz);
    const QList<float> tone = Tones::sine(hz, 44100, 8192);
    QCOMPARE(PitchDetector::detectTrack(tone, 44100, Fractions::Undone),
             PitchDetector::detectTrack(tone, 44100));
}

void PitchDetectorTest::aboveTheRangeNoPitchIsUndoneTo()
{
    for (double hz = 1010.0; hz < 3000.0; hz *= 1.01) {
        const QList<float> tone = Tones::sine(hz, 44100, 4096);
        for (const float pitch : PitchDetector::detectTrack(tone, 44100, Fractions::Undone))
            // The shortest lag is 44 samples.
            QVERIFY2(pitch <= 44100.0F / 44.0F, qPrintable(QString::number(pitch)));
    }
}

void PitchDetectorTest::undoingFollowsThePlainRule_data()
{
    QTest::addColumn<QList<float>>("samples");
    QTest::addColumn<int>("sampleRate");
    const QList<SungVoices::Singer> singers = SungVoices::all();
    for (qsizetype i = 0; i < singers.size(); i += 4) {
        for (const auto manner : {SungVoices::Manner::Jitter, SungVoices::Manner::Breath})
            QTest::addRow("singer %d, %s", static_cast<int>(i),
                          manner == SungVoices::Manner::Breath ? "with breath" : "with jitter")
                << SungVoices::samples(singers.at(i), manner, 44100, 9000) << 44100;
    }
    for (const int sampleRate : {8000, 22050, 96000})
        QTest::addRow("a vowel at %d Hz", sampleRate)
            << Tones::voice({.hz = 610.0}, sampleRate, 9000) << sampleRate;
    // Short periods, whose peaks lie far between two lags, and such as the range does not hold.
    for (int i = 0; i < 20; ++i) {
        const double hz = 700.0 * std::pow(2.0, i / 20.0);
        QTest::addRow("%g Hz at 8000 Hz", hz) << Tones::sine(hz, 8000, 9000) << 8000;
        QTest::addRow("%g Hz at 44100 Hz", hz) << Tones::sine(hz, 44100, 9000) << 44100;
    }
    // A third harmonic that correlates about as well as is nearly as high.
    for (int i = 0; i < 30; ++i) {
        const double hz = 210.0 + 3.7 * i;
        const double fundamental = 0.05 + 0.001 * i;
        QTest::addRow("a third harmonic of %g Hz over %g", hz, fundamental)
            << Tones::sum(Tones::sine(hz, 8000, 5000, fundamental),
                          Tones::sine(3.0 * hz, 8000, 5000, 0.5))
            << 8000;
    }
    QTest::newRow("white noise") << Tones::noise(9000, 14) << 44100;
    QTest::newRow("a voice in noise")
        << Tones::sum(Tones::voice({.hz = 610.0}, 44100, 9000), Tones::noise(9000, 15, 0.2))
        << 44100;
    QTest::newRow("a constant") << QList<float>(9000, 0.25F) << 44100;
    QTest::newRow("beyond what the screen covers")
        << Tones::scaled(Tones::sine(493.8833, 44100, 4096), 1e17F) << 44100;
}

void PitchDetectorTest::undoingFollowsThePlainRule()
{
    QFETCH(QList<float>, samples);
    QFETCH(int, sampleRate);
    const QList<float> kept = PitchDetector::detectTrack(samples, sampleRate);
    const QList<float> undone = PitchDetector::detectTrack(samples, sampleRate, Fractions::Undone);
    QCOMPARE(undone.size(), kept.size());
    for (qsizetype i = 0; i < kept.size(); ++i) {
        const auto found = static_cast<double>(kept[i]);
        const double expected = found > 0.0 ? PlainPitchDetector::undoneFraction(
                                                  samples.constData() + i * 512, found, sampleRate)
                                            : 0.0;
        QVERIFY2(std::abs(static_cast<double>(undone[i]) - expected) <= 1e-6 * expected,
                 qPrintable(QString("%1: %2 of %3").arg(i).arg(undone[i]).arg(expected)));
    }
}

void PitchDetectorTest::withoutFractionsNothingIsUndone()
{
    // Notes below a third of the range's end, which leave no room for a fraction.
    for (const double hz : {220.0, 261.6256, 329.6276}) {
        const QList<float> voice = Tones::voice({.hz = hz}, 44100, 8192);
        for (const float pitch : PitchDetector::detectTrack(voice, 44100, Fractions::Undone))
            QVERIFY(std::abs(centsFromWholeFraction(pitch, hz)) < 35.0);
    }
    for (const int sampleRate : {999, 500, 70, 1}) {
        const QList<float> voice = Tones::noise(4096, 13);
        QCOMPARE(PitchDetector::detectTrack(voice, sampleRate, Fractions::Undone),
                 PitchDetector::detectTrack(voice, sampleRate));
    }
}

void PitchDetectorTest::theScreenKeepsItsPromise_data()
{
    theBitsAreThoseOfThePlainSearch_data();
}

void PitchDetectorTest::theScreenKeepsItsPromise()
{
    QFETCH(int, kind);
    SeededRandom random(74U + static_cast<unsigned>(kind));
    for (int round = 0; round < 6; ++round) {
        const QList<float> samples = kKinds[kind].make({random, 44100, random.between(2048, 2560)});
        // A step that meets every remainder of a stretch and of a group of samples.
        const double error = largestScreenError(samples, 0, 1024, 7);
        QVERIFY2(error <= CorrelationScreen::kMaxError, qPrintable(QString::number(error)));
    }
}

void PitchDetectorTest::theScreenKeepsItsPromiseWhenEveryAdditionIsLost_data()
{
    QTest::addColumn<float>("quiet");
    // Beside 1 the square of 2^-12 is half of what single precision can add, and goes to even.
    QTest::newRow("just what is lost") << std::exp2(-12.0F);
    QTest::newRow("a little less") << std::exp2(-12.0F) * 0.999F;
    QTest::newRow("a little more, and rounded up") << std::exp2(-12.0F) * 1.001F;
}

void PitchDetectorTest::theScreenKeepsItsPromiseWhenEveryAdditionIsLost()
{
    QFETCH(float, quiet);
    QList<float> samples(2048, quiet);
    for (qsizetype i = 0; i < samples.size(); ++i) {
        if (i % 512 < 16)
            samples[i] = 1.0F;
    }
    const double error = largestScreenError(samples, 0, 1024, 1);
    // 31 additions lost in each of 16 lanes: 31 * 2^-24 of the sum, 1.85e-6.
    QVERIFY2(error > 1.7e-6, qPrintable(QString::number(error)));
    QVERIFY2(error <= CorrelationScreen::kMaxError, qPrintable(QString::number(error)));
}

VELTA_GUILESS_TEST(PitchDetectorTest)

} // namespace PitchDetectorTests

#include "PitchDetectorTest.moc"
