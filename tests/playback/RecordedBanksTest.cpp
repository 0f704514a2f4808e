#include "content/InstrumentLibrary.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/Tones.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double kMaxCents = 5.0;
constexpr double kMaxDecibels = 3.0;
constexpr double kMaxRoughness = 1.6;
constexpr qint64 kMaxBytes = 4'000'000;
/// FluidSynth renders by so many frames.
constexpr int kBlockFrames = 64;

enum class Tone { Struck, Plucked, Held };

struct Recorded {
    const char* id;
    Tone tone;
    InstrumentCategory category;
    /// The instrument's real range.
    int lowest;
    int highest;
    /// Keys that are written in loops.
    QList<int> written;
};

const QList<Recorded>& recorded()
{
    using Category = InstrumentCategory;
    static const QList<Recorded> all{
        {"bombo_leguero", Tone::Struck, Category::Percussion, 0, 127, {36, 37, 41, 43, 76}},
        {"charango", Tone::Plucked, Category::Strings, 64, 91, {72, 76, 79, 84}},
        {"guitarra_criolla", Tone::Plucked, Category::Strings, 40, 83, {48, 55, 60, 64, 67, 72}},
        {"acordeon", Tone::Held, Category::Folklorico, 53, 93, {60, 64, 67, 72, 76, 79}},
        {"bandoneon", Tone::Held, Category::Folklorico, 36, 95, {43, 48, 55, 60, 67, 72, 79}},
        {"quena", Tone::Held, Category::Winds, 67, 103, {72, 76, 79, 84}},
    };
    return all;
}

/// Rows of the banks whose tone is one of these, with their index.
void rows(const QList<Tone>& tones)
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < recorded().size(); ++i)
        if (tones.contains(recorded().at(i).tone))
            QTest::newRow(recorded().at(i).id) << i;
}

QString gmBank()
{
    return QCoreApplication::applicationDirPath() + u"/resources/soundfonts/velta_bank_gm.sf2"_s;
}

/// A player without a device whose channel 0 is an instrument, as a song gives it to a track.
class Stage {
public:
    /// Banks are looked up under `bankRoot`; where there are none, the stand-in plays.
    Stage(const Recorded& instrument, const QString& bankRoot) : library_(bankRoot)
    {
        const QString id = QString::fromLatin1(instrument.id);
        library_.registerInstrument({.id = id,
                                     .name = id,
                                     .category = instrument.category,
                                     .source = InstrumentSource::CustomRecordedBank,
                                     .generalMidiProgram = 0,
                                     .soundfontBankPath = id + ".sf2"_L1});
        player_.loadGmBank(gmBank());
        PlaybackEngine::configureChannel(&player_, &library_, 0, id);
        loaded_ = player_.instrumentBankLoaded(id);
    }

    bool loaded() const { return loaded_; }

    /// The left side of one note that is held for so long.
    QList<float> note(int key, int velocity, double seconds)
    {
        player_.allSoundOff();
        // What was rendered of the note before and not yet handed out.
        rendered(kBlockFrames);
        player_.noteOn(0, key, velocity);
        const QList<float> sound = rendered(static_cast<int>(seconds * kSampleRate));
        player_.noteOff(0, key);
        return sound;
    }

    /// What follows while no key is held.
    QList<float> silence(double seconds)
    {
        return rendered(static_cast<int>(seconds * kSampleRate));
    }

    double decibels(int key, int velocity)
    {
        return 20.0 * std::log10(std::max(Tones::rms(note(key, velocity, 0.5)), 1e-10));
    }

private:
    QList<float> rendered(int frames)
    {
        QList<float> stereo(2 * frames);
        if (!player_.renderFloat(stereo.data(), frames))
            return {};
        QList<float> left(frames);
        const float* from = stereo.constData();
        for (float& sample : left) {
            sample = *from;
            from += 2;
        }
        return left;
    }

    InstrumentLibrary library_;
    SoundfontPlayer player_{SoundfontPlayer::Mode::Offline};
    bool loaded_ = false;
};

Stage withBank(const Recorded& instrument)
{
    return Stage(instrument, QStringLiteral(VELTA_BANKS_DIR));
}

double keyHz(int key)
{
    return 440.0 * std::exp2((key - 69) / 12.0);
}

QList<double> underHannWindow(const QList<float>& samples)
{
    const double turn = 2.0 * std::numbers::pi / static_cast<double>(samples.size());
    QList<double> shaped(samples.size());
    for (qsizetype i = 0; i < samples.size(); ++i)
        shaped[i] = static_cast<double>(samples.at(i)) *
                    (0.5 - 0.5 * std::cos(turn * static_cast<double>(i)));
    return shaped;
}

/// Centre of the power within half a semitone: where beating reeds and a vibrato are heard.
double centsOff(const QList<float>& samples, double hz)
{
    const QList<double> shaped = underHannWindow(samples);
    const double spacing = kSampleRate / static_cast<double>(samples.size());
    const double reach = std::max(hz * (std::exp2(50.0 / 1200.0) - 1.0), 6.0 * spacing);
    double total = 0.0;
    double weighed = 0.0;
    for (double away = -reach; away <= reach; away += spacing) {
        const double power = Tones::powerAt(shaped, kSampleRate, hz + away);
        total += power;
        weighed += power * away;
    }
    return Tones::cents(hz + weighed / std::max(total, 1e-30), hz);
}

/// The sharpest bend of every 20 ms, a click's being sharper than its neighbours'.
QList<double> bends(const QList<float>& samples)
{
    const int span = static_cast<int>(0.02 * kSampleRate);
    QList<double> result;
    for (qsizetype from = 2; from + span <= samples.size(); from += span) {
        double most = 0.0;
        for (qsizetype i = from; i < from + span; ++i) {
            const float bend = samples.at(i) - 2.0F * samples.at(i - 1) + samples.at(i - 2);
            most = std::max(most, std::abs(static_cast<double>(bend)));
        }
        result.append(most);
    }
    return result;
}

/// How far the sharpest bend stands out of the usual ones: about 1 where nothing clicks.
double roughness(const QList<float>& samples)
{
    QList<double> all = bends(samples);
    std::sort(all.begin(), all.end());
    return all.last() / std::max(all.at(all.size() * 9 / 10), 1e-12);
}

QList<float> lastPart(const QList<float>& samples, double seconds)
{
    return samples.last(static_cast<qsizetype>(seconds * kSampleRate));
}

float peak(const QList<float>& samples)
{
    float most = 0.0F;
    for (const float sample : samples)
        most = std::max(most, std::abs(sample));
    return most;
}

} // namespace

/// The banks that tools/velta-banks synthesises, as the program plays them.
class RecordedBanksTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void aBankIsSmallAndPlaysItsInstrument_data()
    {
        rows({Tone::Struck, Tone::Plucked, Tone::Held});
    }

    void aBankIsSmallAndPlaysItsInstrument();

    void everyKeySoundsUnderFullScale_data() { rows({Tone::Struck, Tone::Plucked, Tone::Held}); }

    void everyKeySoundsUnderFullScale();

    void everyKeyOfTheRangeIsInTune_data() { rows({Tone::Plucked, Tone::Held}); }

    void everyKeyOfTheRangeIsInTune();

    void aHeldNoteNeitherClicksNorEnds_data() { rows({Tone::Held}); }

    void aHeldNoteNeitherClicksNorEnds();

    void aStruckNoteDiesAwayByItself_data() { rows({Tone::Struck, Tone::Plucked}); }

    void aStruckNoteDiesAwayByItself();

    void harderIsLouder_data() { rows({Tone::Struck, Tone::Plucked, Tone::Held}); }

    void harderIsLouder();

    void aReleasedNoteEndsWithinASecond_data() { rows({Tone::Plucked, Tone::Held}); }

    void aReleasedNoteEndsWithinASecond();

    void aBankIsAsLoudAsItsStandIn_data() { rows({Tone::Struck, Tone::Plucked, Tone::Held}); }

    void aBankIsAsLoudAsItsStandIn();
    void theSkinIsLowerThanTheRim();
    void aMeasureFindsAWrongPitchAndAClick();

private:
    /// Holds the samples of the bank, which FluidSynth then reads once and not for every stage.
    SoundfontPlayer samples_{SoundfontPlayer::Mode::Offline};
};

void RecordedBanksTest::initTestCase()
{
    QVERIFY(samples_.loadGmBank(gmBank()));
}

void RecordedBanksTest::aBankIsSmallAndPlaysItsInstrument()
{
    QFETCH(int, index);
    const Recorded& instrument = recorded().at(index);
    QVERIFY(withBank(instrument).loaded());
    QVERIFY(!Stage(instrument, u"/nowhere"_s).loaded());
    const QString path =
        QStringLiteral(VELTA_BANKS_DIR "/%1.sf2").arg(QLatin1String(instrument.id));
    QCOMPARE_LE(QFileInfo(path).size(), kMaxBytes);
}

void RecordedBanksTest::everyKeySoundsUnderFullScale()
{
    QFETCH(int, index);
    Stage stage = withBank(recorded().at(index));
    for (int key = 0; key <= 127; ++key) {
        const QList<float> sound = stage.note(key, 127, 0.5);
        QVERIFY2(peak(sound) > 0.01F && peak(sound) < 0.7F, qPrintable(QString::number(key)));
    }
}

void RecordedBanksTest::everyKeyOfTheRangeIsInTune()
{
    QFETCH(int, index);
    const Recorded& instrument = recorded().at(index);
    Stage stage = withBank(instrument);
    for (int key = instrument.lowest; key <= instrument.highest; ++key)
        for (const int velocity : {64, 100}) {
            const double off = centsOff(lastPart(stage.note(key, velocity, 2.1), 2.0), keyHz(key));
            QVERIFY2(std::abs(off) < kMaxCents, qPrintable(u"%1: %2"_s.arg(key).arg(off)));
        }
}

void RecordedBanksTest::aHeldNoteNeitherClicksNorEnds()
{
    QFETCH(int, index);
    const Recorded& instrument = recorded().at(index);
    Stage stage = withBank(instrument);
    for (int key = instrument.lowest; key <= instrument.highest; key += 5)
        for (const int velocity : {64, 100}) {
            const QList<float> sound = lastPart(stage.note(key, velocity, 8.0), 7.0);
            QVERIFY2(roughness(sound) < kMaxRoughness, qPrintable(QString::number(key)));
            const double atTheEnd = Tones::rms(lastPart(sound, 1.0));
            QVERIFY(std::abs(20.0 * std::log10(atTheEnd / Tones::rms(sound))) < kMaxDecibels);
        }
}

void RecordedBanksTest::aStruckNoteDiesAwayByItself()
{
    QFETCH(int, index);
    Stage stage = withBank(recorded().at(index));
    for (const int key : recorded().at(index).written) {
        const QList<float> sound = stage.note(key, 100, 6.0);
        QVERIFY(Tones::rms(lastPart(sound, 0.5)) < 1e-4 * Tones::rms(sound.first(kSampleRate)));
    }
}

void RecordedBanksTest::harderIsLouder()
{
    QFETCH(int, index);
    Stage stage = withBank(recorded().at(index));
    for (const int key : recorded().at(index).written) {
        double before = -200.0;
        for (const int velocity : {1, 30, 61, 62, 80, 100, 127}) {
            const double now = stage.decibels(key, velocity);
            QVERIFY2(now > before, qPrintable(u"%1 at %2"_s.arg(key).arg(velocity)));
            before = now;
        }
    }
}

void RecordedBanksTest::aReleasedNoteEndsWithinASecond()
{
    QFETCH(int, index);
    Stage stage = withBank(recorded().at(index));
    for (const int key : recorded().at(index).written) {
        const double held = Tones::rms(stage.note(key, 100, 0.2));
        QVERIFY(Tones::rms(lastPart(stage.silence(1.2), 0.2)) < 0.01 * held);
    }
}

void RecordedBanksTest::aBankIsAsLoudAsItsStandIn()
{
    QFETCH(int, index);
    const Recorded& instrument = recorded().at(index);
    Stage own = withBank(instrument);
    Stage standIn(instrument, u"/nowhere"_s);
    for (const int key : instrument.written)
        for (const int velocity : {64, 100}) {
            const double apart = own.decibels(key, velocity) - standIn.decibels(key, velocity);
            QVERIFY2(std::abs(apart) < kMaxDecibels, qPrintable(u"%1: %2"_s.arg(key).arg(apart)));
        }
}

void RecordedBanksTest::theSkinIsLowerThanTheRim()
{
    Stage stage = withBank(recorded().first());
    const auto share = [&stage](int key, double lowHz, double highHz) {
        const QList<float> sound = stage.note(key, 100, 0.4);
        const QList<double> all(sound.begin(), sound.end());
        double total = 0.0;
        for (double hz = lowHz; hz < highHz; hz += 2.0)
            total += Tones::powerAt(all, kSampleRate, hz);
        return total;
    };
    for (const int skin : {35, 36, 41, 43})
        QVERIFY(share(skin, 40.0, 200.0) > 5.0 * share(skin, 700.0, 4000.0));
    for (const int rim : {37, 76})
        QVERIFY(share(rim, 700.0, 4000.0) > 5.0 * share(rim, 40.0, 200.0));
}

void RecordedBanksTest::aMeasureFindsAWrongPitchAndAClick()
{
    QList<float> tone = Tones::sine(440.0 * std::exp2(8.0 / 1200.0), kSampleRate, 2 * kSampleRate);
    QVERIFY(std::abs(centsOff(tone, 440.0) - 8.0) < 0.2);
    QVERIFY(roughness(tone) < 1.1);
    for (qsizetype i = kSampleRate; i < tone.size(); ++i)
        tone[i] += 0.02F;
    QVERIFY(roughness(tone) > kMaxRoughness);
}

QTEST_GUILESS_MAIN(RecordedBanksTest)
#include "RecordedBanksTest.moc"
