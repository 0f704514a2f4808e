#include "export/Mp3Writer.h"

#include "support/ContentFixture.h"
#include "support/LameSpy.h"
#include "support/Mp3Frames.h"
#include "support/Tones.h"
#include "voice/AudioDecoder.h"

#include <QBuffer>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr int kRate = 44100;
constexpr int kSamplesOfAFrame = 1152;

/// What encoder and decoder may put around the sound: their delays and the last frame's padding,
/// with the frame that LAME keeps for its tag.
constexpr int kMostPadding = 4 * kSamplesOfAFrame;

QList<float> stereo(const QList<float>& left, const QList<float>& right)
{
    QList<float> samples;
    for (qsizetype i = 0; i < left.size(); ++i)
        samples << left[i] << right[i];
    return samples;
}

/// One side of interleaved samples.
QList<float> side(const QList<float>& samples, int channel)
{
    QList<float> result;
    for (qsizetype i = channel; i < samples.size(); i += 2)
        result.append(samples[i]);
    return result;
}

QByteArray encoded(const QList<float>& samples)
{
    QByteArray bytes;
    QBuffer device(&bytes);
    device.open(QIODevice::WriteOnly);
    Mp3Writer writer;
    return writer.isReady() && writer.encode(samples, device) ? bytes : QByteArray();
}

/// What a device does with bytes that it has no room for.
enum class WhenFull {
    Refuses,
    /// Takes as many as fit.
    TakesAPart,
    /// Refuses once, then has room without end.
    RefusesOnce
};

/// A device that takes only so many bytes.
class FullDevice : public QIODevice {
public:
    FullDevice(qint64 room, WhenFull whenFull) : room_(room), whenFull_(whenFull)
    {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char*, qint64) override { return -1; }

    qint64 writeData(const char*, qint64 size) override
    {
        if (size <= room_) {
            room_ -= size;
            return size;
        }
        if (whenFull_ == WhenFull::TakesAPart)
            return std::exchange(room_, 0);
        if (whenFull_ == WhenFull::RefusesOnce)
            room_ = std::numeric_limits<qint64>::max();
        return -1;
    }

private:
    qint64 room_;
    WhenFull whenFull_;
};

} // namespace

class Mp3WriterTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void lameIsSetUpBeforeItsParameters();
    void lameIsClosedOnce();
    void refusedParametersLeaveTheWriterUnready();
    void withoutLameTheWriterIsUnready();

    void sampleBecomesSixteenBits_data();
    void sampleBecomesSixteenBits();
    void samplesAreHandedOverInOrder();
    void chunksAreOfAtMost8192Frames_data();
    void chunksAreOfAtMost8192Frames();
    void oddSampleAtTheEndIsLeftOut();

    void fileIsFramesOf192KilobitsThroughout_data();
    void fileIsFramesOf192KilobitsThroughout();
    void decodedLengthIsThatOfTheSong_data();
    void decodedLengthIsThatOfTheSong();
    void toneKeepsItsPitchAndLevel_data();
    void toneKeepsItsPitchAndLevel();
    void sidesAreNotExchanged();
    void silenceStaysSilent();
    void valuesOutOfRangeSoundAsTheNearestInRange();
    void equalSamplesGiveEqualBytes();

    void failingDeviceIsReported_data();
    void failingDeviceIsReported();
    void lameStoppingHalfWayKeepsWhatItGave();
    void nothingToEncodeIsNoFailure();

private:
    /// Encodes and decodes again, which libsndfile does without LAME.
    AudioDecoder::Result decodedAgain(const QList<float>& samples);

    ContentFixture files_;
};

void Mp3WriterTest::init()
{
    LameSpy::reset();
}

AudioDecoder::Result Mp3WriterTest::decodedAgain(const QList<float>& samples)
{
    const QString path = files_.filePath("song.mp3");
    ContentFixture::write(path, encoded(samples));
    return AudioDecoder::decode(path);
}

// ---- LAME ----------------------------------------------------------------------------------

void Mp3WriterTest::lameIsSetUpBeforeItsParameters()
{
    const Mp3Writer writer;
    QVERIFY(writer.isReady());
    QStringList calls = LameSpy::calls();
    QCOMPARE(calls.takeFirst(), "init");
    QCOMPARE(calls.takeLast(), "init_params");
    calls.sort();
    QCOMPARE(calls, QStringList({"set_brate 192", "set_in_samplerate 44100", "set_num_channels 2",
                                 "set_quality 5"}));
}

void Mp3WriterTest::lameIsClosedOnce()
{
    {
        const Mp3Writer writer;
    }
    LameSpy::refuseParameters();
    {
        const Mp3Writer writer;
    }
    QCOMPARE(LameSpy::calls().count("close"), 2);
}

void Mp3WriterTest::refusedParametersLeaveTheWriterUnready()
{
    LameSpy::refuseParameters();
    QVERIFY(!Mp3Writer().isReady());
}

void Mp3WriterTest::withoutLameTheWriterIsUnready()
{
    LameSpy::letInitFail();
    QVERIFY(!Mp3Writer().isReady());
    QCOMPARE(LameSpy::calls(), QStringList{"init"});
}

// ---- Samples -------------------------------------------------------------------------------

void Mp3WriterTest::sampleBecomesSixteenBits_data()
{
    using Limits = std::numeric_limits<float>;
    QTest::addColumn<float>("sample");
    QTest::addColumn<int>("pcm");
    QTest::newRow("0.0") << 0.0F << 0;
    QTest::newRow("1.0 is full scale") << 1.0F << 32767;
    QTest::newRow("-1.0 is full scale") << -1.0F << -32767;
    QTest::newRow("0.5 is cut toward zero") << 0.5F << 16383;
    QTest::newRow("-0.5 is cut toward zero") << -0.5F << -16383;
    QTest::newRow("less than a step is none") << 0.00003F << 0;
    QTest::newRow("less than a negative step is none") << -0.00003F << 0;
    QTest::newRow("just below full scale") << 0.99999F << 32766;
    QTest::newRow("above full scale is held") << 1.0001F << 32767;
    QTest::newRow("below full scale is held") << -1.0001F << -32767;
    QTest::newRow("far above") << 1e30F << 32767;
    QTest::newRow("far below") << -1e30F << -32767;
    QTest::newRow("infinite") << Limits::infinity() << 32767;
    QTest::newRow("infinitely negative") << -Limits::infinity() << -32767;
    QTest::newRow("no number is silence") << Limits::quiet_NaN() << 0;
    QTest::newRow("the smallest number") << Limits::denorm_min() << 0;
}

void Mp3WriterTest::sampleBecomesSixteenBits()
{
    QFETCH(float, sample);
    encoded({sample, 0.25F});
    QCOMPARE(LameSpy::samples().size(), 2);
    QTEST(static_cast<int>(LameSpy::samples().first()), "pcm");
    QCOMPARE(static_cast<int>(LameSpy::samples().last()), 8191);
}

void Mp3WriterTest::samplesAreHandedOverInOrder()
{
    QList<float> samples;
    QList<short> expected;
    for (int i = 0; i < 2 * 20000; ++i) {
        const int step = (i * 7919) % 60000 - 30000;
        // The middle of a step, so that rounding of the product cannot pass into the next one.
        samples.append(static_cast<float>(step + (step < 0 ? -0.5 : 0.5)) / 32767.0F);
        expected.append(static_cast<short>(step));
    }
    encoded(samples);
    QCOMPARE(LameSpy::samples(), expected);
}

void Mp3WriterTest::chunksAreOfAtMost8192Frames_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<QList<int>>("chunks");
    QTest::newRow("one frame") << 1 << QList<int>{1};
    QTest::newRow("one chunk") << 8192 << QList<int>{8192};
    QTest::newRow("one frame more") << 8193 << QList<int>{8192, 1};
    QTest::newRow("two and a half") << 20480 << QList<int>{8192, 8192, 4096};
}

void Mp3WriterTest::chunksAreOfAtMost8192Frames()
{
    QFETCH(int, frames);
    QFETCH(QList<int>, chunks);
    encoded(QList<float>(2 * frames, 0.0F));
    QCOMPARE(LameSpy::chunkFrames(), chunks);
    for (const int size : LameSpy::bufferSizes())
        QCOMPARE(size, frames * 5 / 4 + 8224);
    QCOMPARE(LameSpy::calls().count("encode_flush"), 1);
}

void Mp3WriterTest::oddSampleAtTheEndIsLeftOut()
{
    encoded({0.5F, 0.5F, 0.5F});
    QCOMPARE(LameSpy::chunkFrames(), QList<int>{1});
}

// ---- Sound ---------------------------------------------------------------------------------

void Mp3WriterTest::fileIsFramesOf192KilobitsThroughout_data()
{
    QTest::addColumn<QList<float>>("mono");
    QTest::newRow("silence") << Tones::silence(kRate);
    QTest::newRow("a tone") << Tones::sine(440.0, kRate, kRate / 2);
    QTest::newRow("noise at full scale") << Tones::noise(kRate / 2, 1, 1.0);
    QTest::newRow("a hundredth of a second") << Tones::sine(440.0, kRate, 441);
}

void Mp3WriterTest::fileIsFramesOf192KilobitsThroughout()
{
    QFETCH(QList<float>, mono);
    const Mp3Frames::Walk walk = Mp3Frames::over(encoded(stereo(mono, mono)));
    QVERIFY(walk.ok);
    QCOMPARE(walk.kilobits, 192);
    QCOMPARE(walk.sampleRate, 44100);
    const qsizetype needed = mono.size() / kSamplesOfAFrame;
    QVERIFY(walk.frames > needed && walk.frames <= needed + 4);
}

void Mp3WriterTest::decodedLengthIsThatOfTheSong_data()
{
    QTest::addColumn<int>("frames");
    for (const int frames : {1000, 1152, 8192, 44100, 88200})
        QTest::addRow("%d frames", frames) << frames;
}

void Mp3WriterTest::decodedLengthIsThatOfTheSong()
{
    QFETCH(int, frames);
    const QList<float> tone = Tones::sine(300.0, kRate, frames);
    const AudioDecoder::Result result = decodedAgain(stereo(tone, tone));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.channels, 2);
    QCOMPARE(result.sampleRate, kRate);
    const qsizetype decoded = result.samples.size() / 2;
    QVERIFY2(decoded >= frames && decoded <= frames + kMostPadding,
             qPrintable(QString::number(decoded)));
}

void Mp3WriterTest::toneKeepsItsPitchAndLevel_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<double>("amplitude");
    QTest::newRow("low") << 110.0 << 0.5;
    QTest::newRow("middle") << 440.0 << 0.5;
    QTest::newRow("high") << 3000.0 << 0.5;
    QTest::newRow("loud") << 440.0 << 0.9;
    QTest::newRow("soft") << 440.0 << 0.05;
}

void Mp3WriterTest::toneKeepsItsPitchAndLevel()
{
    QFETCH(double, hz);
    QFETCH(double, amplitude);
    const QList<float> tone = Tones::sine(hz, kRate, kRate, amplitude);
    const AudioDecoder::Result result = decodedAgain(stereo(tone, tone));
    for (const int channel : {0, 1}) {
        const QList<float> middle = side(result.samples, channel).mid(kRate / 4, kRate / 2);
        const double heard = Tones::strongestHz(middle, kRate, 0.97 * hz, 1.03 * hz);
        QVERIFY2(std::abs(Tones::cents(heard, hz)) < 2.0, qPrintable(QString::number(heard)));
        const double level = Tones::rms(middle) / (amplitude / std::sqrt(2.0));
        QVERIFY2(level > 0.96 && level < 1.04, qPrintable(QString::number(level)));
    }
}

void Mp3WriterTest::sidesAreNotExchanged()
{
    const AudioDecoder::Result result = decodedAgain(
        stereo(Tones::sine(440.0, kRate, kRate / 2), Tones::sine(1000.0, kRate, kRate / 2)));
    const QList<float> left = side(result.samples, 0);
    const QList<float> right = side(result.samples, 1);
    QVERIFY(Tones::strengthAt(left, kRate, 440.0) > 20 * Tones::strengthAt(left, kRate, 1000.0));
    QVERIFY(Tones::strengthAt(right, kRate, 1000.0) > 20 * Tones::strengthAt(right, kRate, 440.0));
}

void Mp3WriterTest::silenceStaysSilent()
{
    const AudioDecoder::Result result = decodedAgain(Tones::silence(kRate));
    QVERIFY(result.ok);
    QVERIFY(Tones::rms(result.samples) < 1e-4);
}

void Mp3WriterTest::valuesOutOfRangeSoundAsTheNearestInRange()
{
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    const QList<float> wild{kNaN, kInfinity, -kInfinity, 7.0F, -7.0F, 0.25F};
    const QList<float> tame{0.0F, 1.0F, -1.0F, 1.0F, -1.0F, 0.25F};
    QList<float> wildSong;
    QList<float> tameSong;
    for (int i = 0; i < 12000; ++i) {
        wildSong.append(wild[(i * 5 + i / 7) % 6]);
        tameSong.append(tame[(i * 5 + i / 7) % 6]);
    }
    const QByteArray bytes = encoded(wildSong);
    QVERIFY(Mp3Frames::over(bytes).ok);
    QVERIFY(bytes == encoded(tameSong));
}

void Mp3WriterTest::equalSamplesGiveEqualBytes()
{
    const QList<float> noise = Tones::noise(40000, 3);
    QVERIFY(!encoded(noise).isEmpty());
    QVERIFY(encoded(noise) == encoded(noise));
}

// ---- Failures ------------------------------------------------------------------------------

void Mp3WriterTest::failingDeviceIsReported_data()
{
    QTest::addColumn<qint64>("room");
    QTest::addColumn<WhenFull>("whenFull");
    QTest::newRow("takes nothing") << qint64(0) << WhenFull::Refuses;
    QTest::newRow("takes a part of the first bytes") << qint64(5) << WhenFull::TakesAPart;
    QTest::newRow("fails half way") << qint64(5000) << WhenFull::Refuses;
    QTest::newRow("is full half way") << qint64(5000) << WhenFull::TakesAPart;
    QTest::newRow("fails once and recovers") << qint64(5000) << WhenFull::RefusesOnce;
    QTest::newRow("fails at the very last bytes") << qint64(-1) << WhenFull::Refuses;
    QTest::newRow("is full at the very last byte") << qint64(-1) << WhenFull::TakesAPart;
}

void Mp3WriterTest::failingDeviceIsReported()
{
    QFETCH(qint64, room);
    QFETCH(WhenFull, whenFull);
    const QList<float> song = Tones::noise(60000, 4);
    const qint64 whole = encoded(song).size();
    FullDevice device(room < 0 ? whole - 1 : room, whenFull);
    QVERIFY(!Mp3Writer().encode(song, device));
    FullDevice spacious(whole, whenFull);
    QVERIFY(Mp3Writer().encode(song, spacious));
}

void Mp3WriterTest::lameStoppingHalfWayKeepsWhatItGave()
{
    const QList<float> song = Tones::noise(2 * 5 * 8192, 5);
    const QByteArray whole = encoded(song);
    LameSpy::reset();
    LameSpy::failEncodingFrom(2);
    const QByteArray part = encoded(song);
    // It is not asked again.
    QCOMPARE(LameSpy::chunkFrames().size(), 3);
    QCOMPARE(LameSpy::calls().count("encode_flush"), 1);
    QVERIFY(part.size() > whole.size() / 3 && part.size() < whole.size() / 2);
    QVERIFY(Mp3Frames::over(part).ok);
}

void Mp3WriterTest::nothingToEncodeIsNoFailure()
{
    QByteArray bytes;
    QBuffer device(&bytes);
    device.open(QIODevice::WriteOnly);
    QVERIFY(Mp3Writer().encode({}, device));
    QVERIFY(LameSpy::chunkFrames().isEmpty());
    QVERIFY(bytes.isEmpty() || Mp3Frames::over(bytes).ok);
}

QTEST_GUILESS_MAIN(Mp3WriterTest)
#include "Mp3WriterTest.moc"
