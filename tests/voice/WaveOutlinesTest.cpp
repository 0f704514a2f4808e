#include "voice/WaveOutlines.h"

#include "support/TestProgram.h"
#include "support/Tones.h"
#include "support/WavFile.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace WaveOutlinesTests {

namespace {

constexpr int kRate = 44100;

AudioClip clipOf(const QString& file)
{
    AudioClip clip;
    clip.audioFilePath = file;
    return clip;
}

} // namespace

class WaveOutlinesTest : public QObject {
    Q_OBJECT

private slots:
    void anOutlineArrivesAndStays();
    void aFileIsReadOnce();
    void anotherFileOfTheNameIsReadAnew();
    void whatWasReplacedMeanwhileDoesNotArrive();
    void itReadsUntilAllHaveArrived();
    void whatCannotBeReadIsNotReadAgain();
    void whatIsForgottenDoesNotArrive();
    void itMayGoWhileItReads();

private:
    ClipSource file(const QString& name, double seconds)
    {
        QFile wav(dir_.filePath(name));
        if (wav.open(QIODevice::WriteOnly))
            wav.write(
                WavFile::bytes(Tones::sine(440.0, kRate, static_cast<qsizetype>(seconds * kRate))));
        wav.close();
        return source(name);
    }

    ClipSource source(const QString& name) { return ClipSource::of(clipOf(name), dir_.path(), {}); }

    QTemporaryDir dir_;
};

void WaveOutlinesTest::anOutlineArrivesAndStays()
{
    WaveOutlines outlines;
    QSignalSpy arrived(&outlines, &WaveOutlines::arrived);
    const ClipSource voice = file("voz.wav", 2.0);
    QVERIFY(!outlines.of(voice));
    QVERIFY(arrived.wait());
    const auto peaks = outlines.of(voice);
    QVERIFY(peaks);
    QCOMPARE(peaks->seconds(), 2.0);
    QVERIFY(peaks->between(0.0, 1.0).greatest > 0.4F);
    QCOMPARE(outlines.of(voice), peaks);
}

void WaveOutlinesTest::aFileIsReadOnce()
{
    WaveOutlines outlines;
    QSignalSpy arrived(&outlines, &WaveOutlines::arrived);
    const ClipSource voice = file("voz.wav", 1.0);
    for (int i = 0; i < 5; ++i)
        QVERIFY(!outlines.of(voice));
    QVERIFY(arrived.wait());
    QVERIFY(QFile::remove(voice.path));
    QVERIFY(outlines.of(voice));
    QVERIFY(!arrived.wait(100));
    QCOMPARE(arrived.count(), 1);
}

void WaveOutlinesTest::anotherFileOfTheNameIsReadAnew()
{
    WaveOutlines outlines;
    QSignalSpy arrived(&outlines, &WaveOutlines::arrived);
    outlines.of(file("voz.wav", 1.0));
    QVERIFY(arrived.wait());
    const ClipSource longer = file("voz.wav", 3.0);
    QVERIFY(!outlines.of(longer));
    QVERIFY(arrived.wait());
    QCOMPARE(outlines.of(longer)->seconds(), 3.0);
}

void WaveOutlinesTest::whatWasReplacedMeanwhileDoesNotArrive()
{
    WaveOutlines outlines;
    QSignalSpy arrived(&outlines, &WaveOutlines::arrived);
    outlines.of(file("voz.wav", 1.0));
    const ClipSource longer = file("voz.wav", 3.0);
    QVERIFY(!outlines.of(longer));
    QVERIFY(arrived.wait());
    QCOMPARE(outlines.of(longer)->seconds(), 3.0);
    QVERIFY(!arrived.wait(100));
    QCOMPARE(arrived.count(), 1);
}

void WaveOutlinesTest::itReadsUntilAllHaveArrived()
{
    WaveOutlines outlines;
    const QSignalSpy arrived(&outlines, &WaveOutlines::arrived);
    QVERIFY(!outlines.isReading());
    outlines.of(file("una.wav", 0.1));
    outlines.of(file("otra.wav", 3.0));
    connect(&outlines, &WaveOutlines::arrived, this,
            [&] { QCOMPARE(outlines.isReading(), arrived.count() < 2); });
    QTRY_COMPARE(arrived.count(), 2);
    QVERIFY(!outlines.isReading());
}

void WaveOutlinesTest::whatCannotBeReadIsNotReadAgain()
{
    WaveOutlines outlines;
    QSignalSpy arrived(&outlines, &WaveOutlines::arrived);
    const ClipSource none = source("nadie.wav");
    QVERIFY(!outlines.of(none));
    QVERIFY(arrived.wait());
    QCOMPARE(outlines.of(none)->seconds(), 0.0);
    QVERIFY(!arrived.wait(100));
}

void WaveOutlinesTest::whatIsForgottenDoesNotArrive()
{
    WaveOutlines outlines;
    QSignalSpy arrived(&outlines, &WaveOutlines::arrived);
    const ClipSource former = file("vieja.wav", 3.0);
    outlines.of(former);
    outlines.forget();
    const ClipSource next = file("nueva.wav", 1.0);
    outlines.of(next);
    QVERIFY(arrived.wait());
    QVERIFY(outlines.of(next));
    QCOMPARE(arrived.count(), 1);
    QVERIFY(!outlines.of(former));
    QVERIFY(arrived.wait());
    QVERIFY(outlines.of(former));
}

void WaveOutlinesTest::itMayGoWhileItReads()
{
    const ClipSource one = file("una.wav", 3.0);
    const ClipSource other = file("otra.wav", 3.0);
    for (int i = 0; i < 20; ++i) {
        WaveOutlines outlines;
        outlines.of(one);
        outlines.of(other);
    }
}

VELTA_GUILESS_TEST(WaveOutlinesTest)

} // namespace WaveOutlinesTests

#include "WaveOutlinesTest.moc"
