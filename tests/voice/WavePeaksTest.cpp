#include "voice/WavePeaks.h"

#include "support/SoundFile.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "support/WavFile.h"
#include "voice/AudioDecoder.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace WavePeaksTests {

namespace {

constexpr int kRate = 8000;

/// The swing of samples from one to before another, found by looking at each.
WaveSwing plainSwing(const QList<float>& samples, qint64 from, qint64 to)
{
    WaveSwing swing;
    for (qint64 i = std::max<qint64>(from, 0); i < std::min<qint64>(to, samples.size()); ++i) {
        swing.least = std::min(swing.least, samples.at(i));
        swing.greatest = std::max(swing.greatest, samples.at(i));
    }
    return swing;
}

} // namespace

class WavePeaksTest : public QObject {
    Q_OBJECT

private slots:
    void aStretchSwingsAsItsSamplesDo_data();
    void aStretchSwingsAsItsSamplesDo();
    void aSingleLoudSampleIsSeenAtEveryScale();
    void channelsAreFoldedToTheirMean();
    void itIsAsLongAsTheFile();
    void nothingSwingsOutsideOfTheFile();
    void whatCannotBeReadHasNoLength_data();
    void whatCannotBeReadHasNoLength();
    void aFileBeyondTheLimitHasNoLength_data();
    void aFileBeyondTheLimitHasNoLength();
    void whatIsCalledOffEnds();

private:
    QString written(const QList<float>& samples, int channels = 1, int rate = kRate)
    {
        const QString path = dir_.filePath("voz.wav");
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write(WavFile::bytes(samples, rate, channels));
        return path;
    }

    QTemporaryDir dir_;
};

void WavePeaksTest::aStretchSwingsAsItsSamplesDo_data()
{
    QTest::addColumn<qint64>("length");
    for (const qint64 length : {1, 10, 127, 128, 600, 5000, 40000})
        QTest::addRow("%lld frames", length) << length;
}

void WavePeaksTest::aStretchSwingsAsItsSamplesDo()
{
    QFETCH(qint64, length);
    // Ever louder, so that each place has a swing of its own.
    QList<float> samples = Tones::sine(37.0, kRate, 40'000, 1.0);
    for (qsizetype i = 0; i < samples.size(); ++i)
        samples[i] *= static_cast<float>(i) / static_cast<float>(samples.size());
    const WavePeaks peaks = WavePeaks::read(written(samples));
    // What a number too many on either side may add.
    const qint64 around = std::max<qint64>(length / WavePeaks::kCoarser, WavePeaks::kFinestFrames);
    constexpr float kSixteenBits = 2.0F / 32768.0F;
    for (qint64 from = 0; from + length <= samples.size();
         from += std::max<qint64>(length / 3, 997)) {
        const WaveSwing told = peaks.between(double(from) / kRate, double(from + length) / kRate);
        const WaveSwing inside = plainSwing(samples, from, from + length);
        const WaveSwing outside = plainSwing(samples, from - around, from + length + around);
        QVERIFY(told.least <= inside.least + kSixteenBits);
        QVERIFY(told.greatest >= inside.greatest - kSixteenBits);
        QVERIFY(told.least >= outside.least - kSixteenBits);
        QVERIFY(told.greatest <= outside.greatest + kSixteenBits);
    }
}

void WavePeaksTest::aSingleLoudSampleIsSeenAtEveryScale()
{
    QList<float> samples = Tones::silence(32 * kRate);
    samples[31 * kRate + 5] = -0.75F;
    const WavePeaks peaks = WavePeaks::read(written(samples));
    for (const double seconds : {0.002, 0.1, 1.0, 10.0, 32.0}) {
        const double from = std::floor(31.0006 / seconds) * seconds;
        const WaveSwing swing = peaks.between(from, from + seconds);
        QCOMPARE(qRound(swing.least * 100.0F), -75);
        QCOMPARE(swing.greatest, 0.0F);
    }
}

void WavePeaksTest::channelsAreFoldedToTheirMean()
{
    QList<float> samples;
    for (int i = 0; i < 1000; ++i)
        samples.append({0.75F, -0.25F});
    const WavePeaks peaks = WavePeaks::read(written(samples, 2));
    QCOMPARE(peaks.seconds(), 1000.0 / kRate);
    QVERIFY(std::abs(peaks.between(0.0, 0.1).greatest - 0.25F) < 0.001F);
    QCOMPARE(peaks.between(0.0, 0.1).least, 0.0F);
}

void WavePeaksTest::itIsAsLongAsTheFile()
{
    for (const int frames : {1, 127, 128, 129, 65536, 65537})
        QCOMPARE(WavePeaks::read(written(Tones::silence(frames))).seconds(),
                 static_cast<double>(frames) / kRate);
    QCOMPARE(WavePeaks::read(written(Tones::silence(100), 1, 1)).seconds(), 100.0);
}

void WavePeaksTest::nothingSwingsOutsideOfTheFile()
{
    const WavePeaks peaks = WavePeaks::read(written(Tones::sine(100.0, kRate, kRate)));
    QVERIFY(peaks.between(-1.0, 0.01).greatest > 0.0F);
    for (const auto& [from, to] : QList<std::pair<double, double>>{{-2.0, -1.0},
                                                                   {1.0, 2.0},
                                                                   {0.5, 0.5},
                                                                   {0.6, 0.5},
                                                                   {std::nan(""), 1.0},
                                                                   {0.0, std::nan("")}})
        QCOMPARE(peaks.between(from, to), WaveSwing());
}

void WavePeaksTest::whatCannotBeReadHasNoLength_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("no file") << QByteArray();
    QTest::newRow("no sound") << QByteArray("esto no suena");
    QTest::newRow("no frames") << WavFile::bytes({});
}

void WavePeaksTest::whatCannotBeReadHasNoLength()
{
    QFETCH(QByteArray, bytes);
    const QString path = dir_.filePath("otra.wav");
    QFile::remove(path);
    if (!bytes.isEmpty()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    const WavePeaks peaks = WavePeaks::read(path);
    QCOMPARE(peaks.seconds(), 0.0);
    QCOMPARE(peaks.between(0.0, 1.0), WaveSwing());
}

void WavePeaksTest::aFileBeyondTheLimitHasNoLength_data()
{
    QTest::addColumn<qint64>("frames");
    constexpr qint64 kMost = AudioDecoder::kMaxSamples / 3;
    QTest::newRow("by one frame") << kMost + 1;
    // What follows the read that is too much would have room by itself.
    QTest::newRow("by more than one read") << kMost / 65536 * 65536 + 65536 + 100;
}

void WavePeaksTest::aFileBeyondTheLimitHasNoLength()
{
    QFETCH(qint64, frames);
    // Of three channels of 8 bits, with a hole for its silence.
    const QString path = dir_.filePath("enorme.wav");
    QVERIFY(SoundFile::write(path, SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 44100, 3, {}));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QCOMPARE(file.size(), 44);
    QVERIFY(file.resize(44 + 3 * frames));
    QVERIFY(file.seek(4) && file.write(WavFile::littleEndian(36 + 3 * frames, 4)) == 4);
    QVERIFY(file.seek(40) && file.write(WavFile::littleEndian(3 * frames, 4)) == 4);
    file.close();
    QCOMPARE(WavePeaks::read(path).seconds(), 0.0);
}

void WavePeaksTest::whatIsCalledOffEnds()
{
    std::stop_source stop;
    stop.request_stop();
    const WavePeaks peaks = WavePeaks::read(written(Tones::silence(kRate)), stop.get_token());
    QCOMPARE(peaks.seconds(), 0.0);
}

VELTA_GUILESS_TEST(WavePeaksTest)

} // namespace WavePeaksTests

#include "WavePeaksTest.moc"
