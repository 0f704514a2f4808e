#include "voice/VoiceTuner.h"

#include "support/HeldNote.h"
#include "support/SeededRandom.h"
#include "support/SungVoices.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "voice/PitchDetector.h"
#include "voice/PitchShifter.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>

namespace VoiceTunerTests {

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

const QList<int> kCMajor{0, 2, 4, 5, 7, 9, 11};

constexpr KeySignature key(int root, KeyMode mode = KeyMode::Major)
{
    return {.rootPitchClass = root, .mode = mode};
}

constexpr VoiceTuneSettings tuning(float intensity)
{
    return {.enabled = true, .intensity = intensity};
}

/// Frequency of a MIDI note.
double hzOf(double note)
{
    return 440.0 * std::exp2((note - 69.0) / 12.0);
}

/// The ratio of one frame by itself.
double ratioOf(double hz, const QList<int>& scale, float intensity = 1.0F)
{
    const QList<float> ratios =
        VoiceTuner::ratiosTowardScale({static_cast<float>(hz)}, scale, intensity);
    return ratios.size() == 1 ? static_cast<double>(ratios.first()) : 0.0;
}

/// Frequency of the second half of a tone that crosses zero upward once a period.
double hzOfHeld(const QList<float>& samples)
{
    return Tones::hzByZeroCrossings(samples.last(samples.size() / 2), 44100);
}

/// Frequency of the note of C Major that lies nearest.
double nearestInCMajor(double hz)
{
    double nearest = 0.0;
    for (int note = 0; note < 128; ++note) {
        const double off = std::abs(Tones::cents(hzOf(note), hz));
        if (kCMajor.contains(note % 12) &&
            (nearest == 0.0 || off < std::abs(Tones::cents(nearest, hz))))
            nearest = hzOf(note);
    }
    return nearest;
}

/// How many cents a held note is off, on the whole, once it has set in.
double centsFrom(double hz, const QList<float>& samples)
{
    return HeldNote::median(HeldNote::centsOff(samples.sliced(4096), hz, 44100));
}

bool allFinite(const QList<float>& samples)
{
    return std::ranges::all_of(samples, [](float sample) { return std::isfinite(sample); });
}

} // namespace

class VoiceTunerTest : public QObject {
    Q_OBJECT

private slots:
    void theInputItselfComesBack_data();
    void theInputItselfComesBack();
    void theLengthStays_data();
    void theLengthStays();

    void aVoiceIsDrawnToANoteOfTheScale_data();
    void aVoiceIsDrawnToANoteOfTheScale();
    void nothingIsLeftOfThePitchThatWasSung();
    void everySteadyToneIsDrawnToTheNearestNote_data();
    void everySteadyToneIsDrawnToTheNearestNote();
    void sungVoicesAreDrawnToTheNearestNote_data();
    void sungVoicesAreDrawnToTheNearestNote();
    void aVoiceHalfCorrectedMovesHalfOfTheRatio();
    void anIntensityBeyondOneActsAsOne_data();
    void anIntensityBeyondOneActsAsOne();
    void aVoiceInTuneComesOutUnchanged_data();
    void aVoiceInTuneComesOutUnchanged();
    void aVoiceWithoutPitchComesOutUnchanged_data();
    void aVoiceWithoutPitchComesOutUnchanged();
    void anotherKeyDrawsToAnotherNote();
    void theShifterGetsTheRatiosAndThePeriods();

    void ratioTowardTheNearestNote_data();
    void ratioTowardTheNearestNote();
    void everyFrequencyIsDrawnToTheNearestNote_data();
    void everyFrequencyIsDrawnToTheNearestNote();
    void theMidpointGoesToTheLowerNote_data();
    void theMidpointGoesToTheLowerNote();
    void anEmptyScaleSnapsToTheNearestSemitone();
    void aScaleWithoutPitchClassesSnapsToTheNearestSemitone();
    void intensityScalesTheRatioNotTheCents_data();
    void intensityScalesTheRatioNotTheCents();

    void ratiosAreSmoothedInPlace_data();
    void ratiosAreSmoothedInPlace();
    void noPitchesGiveNoRatios();
    void pitchesThatAreNoFrequenciesKeepTheRatioOne_data();
    void pitchesThatAreNoFrequenciesKeepTheRatioOne();
    void anyPitchesGiveFiniteRatios();
    void hostileRecordingsComeBackAtTheirLength_data();
    void hostileRecordingsComeBackAtTheirLength();
};

void VoiceTunerTest::theInputItselfComesBack_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<float>("intensity");
    QTest::addColumn<qsizetype>("samples");
    QTest::newRow("tuning is off") << false << 1.0F << qsizetype(8192);
    QTest::newRow("an intensity of 0") << true << 0.0F << qsizetype(8192);
    QTest::newRow("an intensity of minus 0") << true << -0.0F << qsizetype(8192);
    QTest::newRow("a negative intensity") << true << -1.0F << qsizetype(8192);
    QTest::newRow("an intensity of minus infinity") << true << -kInfinity << qsizetype(8192);
    QTest::newRow("an intensity that is not a number") << true << kNaN << qsizetype(8192);
    QTest::newRow("no samples") << true << 1.0F << qsizetype(0);
    QTest::newRow("less than one frame") << true << 1.0F << qsizetype(2047);
}

void VoiceTunerTest::theInputItselfComesBack()
{
    QFETCH(bool, enabled);
    QFETCH(float, intensity);
    QFETCH(qsizetype, samples);
    const QList<float> voice = Tones::sine(450.0, 44100, samples);
    const QList<float> tuned = VoiceTuner::tune(voice, 44100, key(0), {enabled, intensity});
    QCOMPARE(tuned.size(), voice.size());
    QCOMPARE(tuned.constData(), voice.constData());
}

void VoiceTunerTest::theLengthStays_data()
{
    QTest::addColumn<qsizetype>("samples");
    for (const int samples : {1, 2047, 2048, 2049, 2559, 2560, 2561, 10000, 44100})
        QTest::addRow("%d samples", samples) << qsizetype(samples);
}

void VoiceTunerTest::theLengthStays()
{
    QFETCH(qsizetype, samples);
    const QList<float> voice = Tones::voice({.hz = 230.0}, 44100, samples);
    QCOMPARE(VoiceTuner::tune(voice, 44100, key(0), tuning(1.0F)).size(), samples);
}

void VoiceTunerTest::aVoiceIsDrawnToANoteOfTheScale_data()
{
    QTest::addColumn<int>("root");
    QTest::addColumn<double>("sung");
    QTest::addColumn<double>("drawnTo");
    QTest::newRow("450 Hz in C Major to 440 Hz") << 0 << 450.0 << 440.0;
    QTest::newRow("460 Hz in C Major to 440 Hz, nearer than B") << 0 << 460.0 << 440.0;
    QTest::newRow("430 Hz in C Major to 440 Hz") << 0 << 430.0 << 440.0;
    QTest::newRow("480 Hz in C Major to B") << 0 << 480.0 << 493.8833;
    QTest::newRow("460 Hz in F Major to B flat") << 5 << 460.0 << 466.1638;
    QTest::newRow("265 Hz in C Major to middle C") << 0 << 265.0 << 261.6256;
    QTest::newRow("725 Hz in E Major to F sharp") << 4 << 725.0 << 739.9888;
    QTest::newRow("725 Hz in C Major to F") << 0 << 725.0 << 698.4565;
    QTest::newRow("225 Hz in C Major to A") << 0 << 225.0 << 220.0;
    QTest::newRow("107 Hz in C Major to a low A") << 0 << 107.0 << 110.0;
    QTest::newRow("227 Hz in C Major, more than half a semitone, to A") << 0 << 227.0 << 220.0;
}

void VoiceTunerTest::aVoiceIsDrawnToANoteOfTheScale()
{
    QFETCH(int, root);
    QFETCH(double, sung);
    QFETCH(double, drawnTo);
    const QList<float> voice = Tones::sine(sung, 44100, 44100);
    const QList<float> tuned = VoiceTuner::tune(voice, 44100, key(root), tuning(1.0F));
    const double heard = hzOfHeld(tuned);
    QVERIFY2(std::abs(Tones::cents(hzOfHeld(voice), sung)) < 0.5, "the measurement itself");
    QVERIFY2(std::abs(Tones::cents(heard, drawnTo)) < 0.5, qPrintable(QString::number(heard)));
}

void VoiceTunerTest::nothingIsLeftOfThePitchThatWasSung()
{
    const QList<float> voice = Tones::sine(450.0, 44100, 3 * 44100);
    const QList<float> tuned =
        VoiceTuner::tune(voice, 44100, key(0), tuning(1.0F)).mid(4096, 2 * 44100);
    const double heard = Tones::strongestHz(tuned, 44100, 435.0, 455.0);
    QVERIFY2(std::abs(Tones::cents(heard, 440.0)) < 0.1, qPrintable(QString::number(heard)));
    QVERIFY(Tones::strengthAt(tuned, 44100, 450.0) <
            0.001 * Tones::strengthAt(tuned, 44100, 440.0));
    QVERIFY(HeldNote::amplitudeModulation(tuned) < 0.001);
}

void VoiceTunerTest::everySteadyToneIsDrawnToTheNearestNote_data()
{
    QTest::addColumn<bool>("vowel");
    QTest::newRow("sines") << false;
    QTest::newRow("vowels") << true;
}

void VoiceTunerTest::everySteadyToneIsDrawnToTheNearestNote()
{
    QFETCH(bool, vowel);
    for (int i = 0; i < 160; ++i) {
        const double hz = 80.0 * std::pow(980.0 / 80.0, i / 159.0);
        const QList<float> tone = vowel ? Tones::voice({.hz = hz, .vibratoCents = 0.0}, 44100, 8192)
                                        : Tones::sine(hz, 44100, 8192);
        const QList<float> tuned = VoiceTuner::tune(tone, 44100, key(0), tuning(1.0F));
        const double off = centsFrom(nearestInCMajor(hz), tuned);
        QVERIFY2(std::abs(off) < 1.0, qPrintable(QString("%1 Hz: %2").arg(hz).arg(off)));
    }
}

void VoiceTunerTest::sungVoicesAreDrawnToTheNearestNote_data()
{
    QTest::addColumn<SungVoices::Manner>("manner");
    QTest::addColumn<double>("leastShare");
    QTest::addColumn<double>("mostModulation");
    // What misses are voices in the middle between two notes, which go to either as they waver.
    QTest::newRow("held steadily") << SungVoices::Manner::Steady << 0.98 << 0.01;
    QTest::newRow("with jitter") << SungVoices::Manner::Jitter << 0.95 << 0.03;
    QTest::newRow("with breath") << SungVoices::Manner::Breath << 0.95 << 0.04;
    QTest::newRow("with vibrato") << SungVoices::Manner::Vibrato << 0.80 << 0.06;
}

void VoiceTunerTest::sungVoicesAreDrawnToTheNearestNote()
{
    QFETCH(SungVoices::Manner, manner);
    QFETCH(double, leastShare);
    QFETCH(double, mostModulation);
    int drawn = 0;
    int missedBefore = 0;
    double modulation = 0.0;
    const QList<SungVoices::Singer> singers = SungVoices::all();
    QCOMPARE(singers.size(), 65);
    for (const SungVoices::Singer& singer : singers) {
        const QList<float> sung = SungVoices::samples(singer, manner, 44100, 36000);
        const QList<float> tuned = VoiceTuner::tune(sung, 44100, key(0), tuning(1.0F));
        const double target = nearestInCMajor(singer.hz);
        drawn += std::abs(centsFrom(target, tuned)) <= 10.0 ? 1 : 0;
        missedBefore += std::abs(Tones::cents(singer.hz, target)) > 10.0 ? 1 : 0;
        modulation += HeldNote::amplitudeModulation(tuned.sliced(4096)) / 65.0;
    }
    const double share = drawn / 65.0;
    QVERIFY2(missedBefore > 50, "the voices themselves");
    QVERIFY2(share >= leastShare, qPrintable(QString::number(share)));
    QVERIFY2(modulation <= mostModulation, qPrintable(QString::number(modulation)));
}

void VoiceTunerTest::aVoiceHalfCorrectedMovesHalfOfTheRatio()
{
    // 440 / 450 is 0.97778; half of the way from 1 is 0.98889, and 450 Hz times that is 445 Hz.
    const QList<float> voice = Tones::sine(450.0, 44100, 44100);
    const double heard = hzOfHeld(VoiceTuner::tune(voice, 44100, key(0), tuning(0.5F)));
    QVERIFY2(std::abs(Tones::cents(heard, 445.0)) < 0.5, qPrintable(QString::number(heard)));
}

void VoiceTunerTest::anIntensityBeyondOneActsAsOne_data()
{
    QTest::addColumn<float>("intensity");
    QTest::newRow("2") << 2.0F;
    QTest::newRow("just above 1") << std::nextafter(1.0F, 2.0F);
    QTest::newRow("1e30") << 1e30F;
    QTest::newRow("infinity") << kInfinity;
}

void VoiceTunerTest::anIntensityBeyondOneActsAsOne()
{
    QFETCH(float, intensity);
    const QList<float> voice = Tones::voice({.hz = 230.0}, 44100, 8192);
    QCOMPARE(VoiceTuner::tune(voice, 44100, key(0), tuning(intensity)),
             VoiceTuner::tune(voice, 44100, key(0), tuning(1.0F)));
    QCOMPARE(VoiceTuner::ratiosTowardScale({450.0F}, kCMajor, intensity),
             VoiceTuner::ratiosTowardScale({450.0F}, kCMajor, 1.0F));
}

void VoiceTunerTest::aVoiceInTuneComesOutUnchanged_data()
{
    QTest::addColumn<double>("note");
    QTest::newRow("A below middle C") << 57.0;
    QTest::newRow("middle C") << 60.0;
    QTest::newRow("the A above") << 69.0;
    QTest::newRow("a low G") << 43.0;
    QTest::newRow("a B, of which seven periods correlate best") << 71.0;
    QTest::newRow("a high F, of which seven periods correlate best") << 77.0;
}

void VoiceTunerTest::aVoiceInTuneComesOutUnchanged()
{
    QFETCH(double, note);
    const QList<float> voice = Tones::sine(hzOf(note), 44100, 44100);
    const QList<float> tuned = VoiceTuner::tune(voice, 44100, key(0), tuning(1.0F));
    // A pitch found 0.1 cents off moves the end of a frame by a tenth of a sample.
    QVERIFY(Tones::largestDifference(tuned, voice) < 0.005);
}

void VoiceTunerTest::aVoiceWithoutPitchComesOutUnchanged_data()
{
    QTest::addColumn<QList<float>>("samples");
    QTest::newRow("silence") << Tones::silence(10000);
    QTest::newRow("white noise") << Tones::noise(10000, 11);
    QTest::newRow("a tone below the silence threshold") << Tones::sine(450.0, 44100, 10000, 1e-3);
}

void VoiceTunerTest::aVoiceWithoutPitchComesOutUnchanged()
{
    QFETCH(QList<float>, samples);
    const QList<float> tuned = VoiceTuner::tune(samples, 44100, key(0), tuning(1.0F));
    QVERIFY(Tones::largestDifference(tuned, samples) <= 1e-6);
}

void VoiceTunerTest::anotherKeyDrawsToAnotherNote()
{
    const QList<float> voice = Tones::sine(460.0, 44100, 44100);
    const double inC = hzOfHeld(VoiceTuner::tune(voice, 44100, key(0), tuning(1.0F)));
    const double inCMinor =
        hzOfHeld(VoiceTuner::tune(voice, 44100, key(0, KeyMode::Minor), tuning(1.0F)));
    QVERIFY(std::abs(Tones::cents(inC, 440.0)) < 0.5);
    // C Minor has A flat and B flat, and no A.
    QVERIFY(std::abs(Tones::cents(inCMinor, 466.1638)) < 0.5);
}

void VoiceTunerTest::theShifterGetsTheRatiosAndThePeriods()
{
    const QList<float> voice = Tones::voice({.hz = 207.0, .vibratoCents = 60.0}, 44100, 22050) +
                               Tones::silence(6000) + Tones::sine(725.0, 44100, 8000);
    const QList<float> pitches =
        PitchDetector::detectTrack(voice, 44100, PitchDetector::OddFractions::Undone);
    const QList<float> ratios = VoiceTuner::ratiosTowardScale(pitches, kCMajor, 0.8F);
    QList<float> periods;
    for (const float hz : pitches)
        periods.append(hz > 0.0F ? 44100.0F / hz : 0.0F);
    QVERIFY(periods.contains(0.0F));
    QCOMPARE(ratios.size(), pitches.size());
    QCOMPARE(VoiceTuner::tune(voice, 44100, key(0), tuning(0.8F)),
             PitchShifter::process(voice, ratios, periods));
}

void VoiceTunerTest::ratioTowardTheNearestNote_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<QList<int>>("scale");
    QTest::addColumn<double>("ratio");

    // Frequencies of the tempered scale as printed in tables; quotients by hand.
    QTest::newRow("450 Hz to A, 440") << 450.0 << kCMajor << 0.9777778;
    QTest::newRow("460 Hz to A, 440") << 460.0 << kCMajor << 0.9565217;
    QTest::newRow("470 Hz to B, 493.8833") << 470.0 << kCMajor << 1.0508155;
    QTest::newRow("A sharp, 466.2, lies above the middle: to B")
        << 466.2 << kCMajor << 493.8833 / 466.2;
    QTest::newRow("A sharp, 466.1, lies below the middle: to A")
        << 466.1 << kCMajor << 440.0 / 466.1;
    QTest::newRow("in tune") << 440.0 << kCMajor << 1.0;
    QTest::newRow("a low E, 82.4069") << 80.0 << kCMajor << 1.0300861;
    QTest::newRow("a scale of C alone draws A up to C, 523.2511")
        << 440.0 << QList<int>{0} << 1.1892071;
    QTest::newRow("a scale of D alone draws A down to D, 293.6648")
        << 400.0 << QList<int>{2} << 293.6648 / 400.0;
    QTest::newRow("below the lowest MIDI note, 7 Hz to A, 6.875") << 7.0 << kCMajor << 0.9821429;
    QTest::newRow("below one hertz, 0.45 Hz to A, 0.4296875") << 0.45 << kCMajor << 0.9548611;
    QTest::newRow("above the highest MIDI note, 20500 Hz to E, 21096.16")
        << 20500.0 << kCMajor << 21096.16 / 20500.0;
}

void VoiceTunerTest::ratioTowardTheNearestNote()
{
    QFETCH(double, hz);
    QFETCH(QList<int>, scale);
    QFETCH(double, ratio);
    QVERIFY2(std::abs(ratioOf(hz, scale) - ratio) < 1e-6,
             qPrintable(QString::number(ratioOf(hz, scale), 'g', 9)));
}

void VoiceTunerTest::everyFrequencyIsDrawnToTheNearestNote_data()
{
    QTest::addColumn<QList<int>>("scale");
    QTest::newRow("C Major") << kCMajor;
    QTest::newRow("F sharp Minor, in degree order") << QList<int>{6, 8, 9, 11, 1, 2, 4};
    QTest::newRow("all semitones") << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    QTest::newRow("two notes a tritone apart") << QList<int>{3, 9};
    QTest::newRow("a single note") << QList<int>{1};
}

void VoiceTunerTest::everyFrequencyIsDrawnToTheNearestNote()
{
    QFETCH(QList<int>, scale);
    for (double hz = 60.0; hz < 1200.0; hz *= 1.0037) {
        const auto sung = static_cast<double>(static_cast<float>(hz));
        double nearest = 1e9;
        for (int note = 0; note < 128; ++note) {
            const double cents = std::abs(Tones::cents(hzOf(note), sung));
            if (scale.contains(note % 12))
                nearest = std::min(nearest, cents);
        }
        const double drawnTo = sung * ratioOf(hz, scale);
        QVERIFY(std::abs(std::abs(Tones::cents(drawnTo, sung)) - nearest) < 1e-3);
    }
}

void VoiceTunerTest::theMidpointGoesToTheLowerNote_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<QList<int>>("scale");
    QTest::addColumn<double>("ratio");

    // Octaves of 440 Hz are whole notes to the last bit. F sharp Major holds the semitones to
    // either side of A, and not A itself: a semitone down is 2^(-1/12).
    const QList<int> fSharpMajor{6, 8, 10, 11, 1, 3, 5};
    QTest::newRow("440 Hz between G sharp and A sharp") << 440.0 << fSharpMajor << 0.9438743;
    QTest::newRow("110 Hz between G sharp and A sharp") << 110.0 << fSharpMajor << 0.9438743;
    QTest::newRow("880 Hz between G sharp and A sharp") << 880.0 << fSharpMajor << 0.9438743;
    QTest::newRow("6.875 Hz, a note below 0") << 6.875 << fSharpMajor << 0.9438743;
    QTest::newRow("whatever the order of the scale") << 440.0 << QList<int>{10, 8} << 0.9438743;
    QTest::newRow("two notes at a distance of a third") << 440.0 << QList<int>{0, 6} << 0.8408964;
    QTest::newRow("the same note a tritone up and down") << 440.0 << QList<int>{3} << 0.7071068;
}

void VoiceTunerTest::theMidpointGoesToTheLowerNote()
{
    QFETCH(double, hz);
    QFETCH(QList<int>, scale);
    QFETCH(double, ratio);
    QVERIFY(std::abs(ratioOf(hz, scale) - ratio) < 1e-7);
}

void VoiceTunerTest::anEmptyScaleSnapsToTheNearestSemitone()
{
    QVERIFY(std::abs(ratioOf(450.0, {}) - 440.0 / 450.0) < 1e-7);
    QVERIFY(std::abs(ratioOf(460.0, {}) - 466.1638 / 460.0) < 1e-6);
    QVERIFY(std::abs(ratioOf(455.0, {}) - 466.1638 / 455.0) < 1e-6);
    QVERIFY(std::abs(ratioOf(7.0, {}) - 6.875 / 7.0) < 1e-7);
}

void VoiceTunerTest::aScaleWithoutPitchClassesSnapsToTheNearestSemitone()
{
    for (const QList<int>& scale : {QList<int>{12, -1, 100}, {std::numeric_limits<int>::min()}})
        QVERIFY(std::abs(ratioOf(460.0, scale) - 466.1638 / 460.0) < 1e-6);
}

void VoiceTunerTest::intensityScalesTheRatioNotTheCents_data()
{
    QTest::addColumn<float>("intensity");
    QTest::addColumn<double>("ratio");
    // A scale of E flat alone draws 440 Hz to its half, less a tritone: 0.7071068.
    QTest::newRow("nothing") << 0.0F << 1.0;
    QTest::newRow("below nothing") << -3.0F << 1.0;
    QTest::newRow("a quarter") << 0.25F << 0.9267767;
    QTest::newRow("half") << 0.5F << 0.8535534;
    QTest::newRow("all") << 1.0F << 0.7071068;
}

void VoiceTunerTest::intensityScalesTheRatioNotTheCents()
{
    QFETCH(float, intensity);
    QFETCH(double, ratio);
    QVERIFY(std::abs(ratioOf(440.0, {3}, intensity) - ratio) < 1e-7);
}

void VoiceTunerTest::ratiosAreSmoothedInPlace_data()
{
    QTest::addColumn<QList<float>>("pitches");
    QTest::addColumn<QList<double>>("expected");
    using Pitches = QList<float>;
    using Ratios = QList<double>;

    // A scale of E flat alone gives 440 Hz the ratio q = 0.70710678. Each next frame is
    // 0.7 * its own + 0.3 * the smoothed one before it.
    QTest::newRow("the first frame is not smoothed") << Pitches{440.0F} << Ratios{0.7071068};
    QTest::newRow("equal ratios stay")
        << Pitches{440.0F, 440.0F, 440.0F} << Ratios{0.7071068, 0.7071068, 0.7071068};
    QTest::newRow("the onset of a voice is softened")
        << Pitches{0.0F, 440.0F, 440.0F, 440.0F} << Ratios{1.0, 0.7949747, 0.7334672, 0.7150149};
    QTest::newRow("the end of a voice is softened")
        << Pitches{440.0F, 0.0F, 0.0F} << Ratios{0.7071068, 0.9121320, 0.9736396};
    QTest::newRow("unvoiced frames keep 1") << Pitches{0.0F, 0.0F} << Ratios{1.0, 1.0};
    QTest::newRow("one voiced frame leaves a tail")
        << Pitches{0.0F, 440.0F, 0.0F, 0.0F} << Ratios{1.0, 0.7949747, 0.9384924, 0.9815477};
}

void VoiceTunerTest::ratiosAreSmoothedInPlace()
{
    QFETCH(QList<float>, pitches);
    QFETCH(QList<double>, expected);
    const QList<float> ratios = VoiceTuner::ratiosTowardScale(pitches, {3}, 1.0F);
    QCOMPARE(ratios.size(), expected.size());
    for (qsizetype i = 0; i < ratios.size(); ++i)
        QVERIFY2(std::abs(static_cast<double>(ratios[i]) - expected[i]) < 2e-7,
                 qPrintable(QString::number(static_cast<double>(ratios[i]), 'g', 9)));
}

void VoiceTunerTest::noPitchesGiveNoRatios()
{
    QVERIFY(VoiceTuner::ratiosTowardScale({}, kCMajor, 1.0F).isEmpty());
}

void VoiceTunerTest::pitchesThatAreNoFrequenciesKeepTheRatioOne_data()
{
    QTest::addColumn<float>("pitch");
    QTest::newRow("no pitch") << 0.0F;
    QTest::newRow("minus 0") << -0.0F;
    QTest::newRow("negative") << -440.0F;
    QTest::newRow("infinity") << kInfinity;
    QTest::newRow("minus infinity") << -kInfinity;
    QTest::newRow("not a number") << kNaN;
}

void VoiceTunerTest::pitchesThatAreNoFrequenciesKeepTheRatioOne()
{
    QFETCH(float, pitch);
    for (const QList<int>& scale : {kCMajor, QList<int>{}})
        QCOMPARE(VoiceTuner::ratiosTowardScale({pitch, pitch}, scale, 1.0F),
                 (QList<float>{1.0F, 1.0F}));
}

void VoiceTunerTest::anyPitchesGiveFiniteRatios()
{
    SeededRandom random(91);
    const QList<float> hostile{0.0F,
                               kNaN,
                               kInfinity,
                               -1.0F,
                               std::numeric_limits<float>::max(),
                               std::numeric_limits<float>::denorm_min(),
                               1e-30F,
                               1e30F,
                               440.0F};
    for (int round = 0; round < 500; ++round) {
        QList<float> pitches;
        for (int i = random.between(1, 20); i > 0; --i)
            pitches.append(random.pick(hostile));
        const auto intensity = static_cast<float>(random.between(-0.5, 1.5));
        const QList<float> ratios = VoiceTuner::ratiosTowardScale(pitches, kCMajor, intensity);
        QCOMPARE(ratios.size(), pitches.size());
        // The nearest note of a scale is never further than a tritone away.
        for (const float ratio : ratios)
            QVERIFY(ratio >= 0.7071067F && ratio <= 1.4142137F);
    }
}

void VoiceTunerTest::hostileRecordingsComeBackAtTheirLength_data()
{
    QTest::addColumn<float>("value");
    QTest::newRow("not a number") << kNaN;
    QTest::newRow("infinity") << kInfinity;
    QTest::newRow("the largest number") << std::numeric_limits<float>::max();
    QTest::newRow("a denormal number") << std::numeric_limits<float>::denorm_min();
}

void VoiceTunerTest::hostileRecordingsComeBackAtTheirLength()
{
    QFETCH(float, value);
    for (const int sampleRate : {44100, 8000, 999, 1, 0, -44100, std::numeric_limits<int>::max()}) {
        QList<float> voice = Tones::voice({.hz = 230.0}, 44100, 6000);
        QVERIFY(allFinite(VoiceTuner::tune(voice, sampleRate, key(0), tuning(1.0F))));
        voice[3000] = value;
        QCOMPARE(VoiceTuner::tune(voice, sampleRate, key(0), tuning(1.0F)).size(), 6000);
        voice.fill(value);
        QCOMPARE(VoiceTuner::tune(voice, sampleRate, key(0), tuning(1.0F)).size(), 6000);
    }
}

VELTA_GUILESS_TEST(VoiceTunerTest)

} // namespace VoiceTunerTests

#include "VoiceTunerTest.moc"
