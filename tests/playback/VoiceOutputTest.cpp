#include "playback/VoiceOutput.h"

#include "support/PulseDaemon.h"
#include "support/Tones.h"

#include <QAudioDevice>
#include <QAudioSink>
#include <QBuffer>
#include <QCoreApplication>
#include <QMediaDevices>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace {

constexpr int kRate = 44100;

/// The tones that mixes are made of, an octave apart.
const QList<double> kTones{500.0, 1000.0, 2000.0};

QList<float> stereo(const QList<float>& left, const QList<float>& right)
{
    QList<float> samples;
    for (qsizetype i = 0; i < left.size(); ++i)
        samples.append({left[i], right[i]});
    return samples;
}

/// One tone on both sides.
QList<float> tone(double hz, double seconds)
{
    const QList<float> samples = Tones::sine(hz, kRate, static_cast<qsizetype>(seconds * kRate));
    return stereo(samples, samples);
}

/// All tones, half a second each.
QList<float> scale()
{
    QList<float> samples;
    for (const double hz : kTones)
        samples += tone(hz, 0.5);
    return samples;
}

/// The tones in some samples, by ear.
QList<double> tonesIn(const QList<float>& samples)
{
    QList<double> heard;
    for (const double hz : kTones) {
        if (Tones::strengthAt(samples, kRate, hz) > 0.1)
            heard.append(hz);
    }
    return heard;
}

/// The last so many seconds.
QList<float> tail(const QList<float>& samples, double seconds)
{
    return samples.last(std::min(samples.size(), static_cast<qsizetype>(seconds * kRate)));
}

/// What is heard in the first fifth of a second of sound, once it has set in.
QList<float> beginning(const QList<float>& samples)
{
    const auto loud = std::find_if(samples.cbegin(), samples.cend(),
                                   [](float sample) { return std::abs(sample) > 0.1F; });
    return samples.mid(loud - samples.cbegin() + kRate / 50, kRate / 5);
}

bool hasDevice()
{
    return !QMediaDevices::defaultAudioOutput().isNull();
}

} // namespace

/// What the voices sound like on a real sound server.
class VoiceOutputTest : public QObject {
    Q_OBJECT

public:
    explicit VoiceOutputTest(PulseDaemon& daemon) : daemon_(daemon) {}

private slots:
    void initTestCase();
    void init();

    void mixIsHeardFromAFrameOn_data();
    void mixIsHeardFromAFrameOn();
    void sidesStayApart();
    void nothingIsHeardBehindTheEnd_data();
    void nothingIsHeardBehindTheEnd();
    void emptyMixIsSilent();
    void laterMixTakesThePlaceOfTheFormer();
    void mixMayBeExchangedOnTheWay();
    void nothingIsExchangedWhereNothingPlays();
    void mixThatTheCallerChangesSoundsOn();
    void stopSilences();
    void stopBeforeAnythingPlays();
    void whatIsStoppedIsDeletedWithTheEventLoop();
    void outputMayGoWhileItPlays();
    void outputMayGoWithStoppedMixes();

    void deviceThatVanishesWhileItPlays();
    void deviceThatHasJustVanished();
    void noDeviceIsSilent();
    void deviceMayComeBack();

private:
    /// What is heard from the start of the test until so many seconds from now.
    QList<float> heard(double seconds);

    PulseDaemon& daemon_;
    std::unique_ptr<MonitorRecording> recording_;
};

void VoiceOutputTest::initTestCase()
{
    QVERIFY2(daemon_.problem().isEmpty(), qPrintable(daemon_.problem()));
    recording_ = std::make_unique<MonitorRecording>();
    QVERIFY2(recording_->runs(), "Nothing is recorded; the package pulseaudio-utils is needed.");
    QTRY_VERIFY(hasDevice());
}

void VoiceOutputTest::init()
{
    if (!recording_)
        return;
    // What sounded before may still be on its way.
    do {
        recording_->clear();
    } while (Tones::rms(heard(0.15)) > 1e-6);
    recording_->clear();
}

QList<float> VoiceOutputTest::heard(double seconds)
{
    return recording_->await(seconds) ? recording_->samples() : QList<float>();
}

// ---- Sound ---------------------------------------------------------------------------------

void VoiceOutputTest::mixIsHeardFromAFrameOn_data()
{
    using Limits = std::numeric_limits<qint64>;
    QTest::addColumn<qint64>("frame");
    QTest::addColumn<double>("hz");
    QTest::newRow("from its start") << qint64(0) << 500.0;
    QTest::newRow("from its second tone") << qint64(kRate / 2) << 1000.0;
    QTest::newRow("from its last tone") << qint64(kRate) << 2000.0;
    QTest::newRow("a frame before it is its start") << qint64(-1) << 500.0;
    QTest::newRow("the least number is its start") << Limits::min() << 500.0;
}

void VoiceOutputTest::mixIsHeardFromAFrameOn()
{
    QFETCH(qint64, frame);
    QFETCH(double, hz);
    VoiceOutput output;
    output.play(scale(), frame);
    QVERIFY(output.isActive());
    QCOMPARE(tonesIn(beginning(heard(0.5))), QList<double>{hz});
}

void VoiceOutputTest::sidesStayApart()
{
    VoiceOutput output;
    output.play(stereo(Tones::sine(1000.0, kRate, kRate), Tones::sine(2000.0, kRate, kRate)), 0);
    QCOMPARE(tonesIn(beginning(heard(0.5))), QList<double>{1000.0});
}

void VoiceOutputTest::nothingIsHeardBehindTheEnd_data()
{
    QTest::addColumn<qint64>("frame");
    QTest::newRow("its end") << qint64(3 * kRate / 2);
    QTest::newRow("far behind its end") << (qint64(1) << 40);
    QTest::newRow("the largest number") << std::numeric_limits<qint64>::max();
}

void VoiceOutputTest::nothingIsHeardBehindTheEnd()
{
    QFETCH(qint64, frame);
    VoiceOutput output;
    output.play(scale(), frame);
    QVERIFY(output.isActive());
    QVERIFY(Tones::rms(heard(0.4)) < 1e-6);
}

void VoiceOutputTest::emptyMixIsSilent()
{
    VoiceOutput output;
    output.play({}, 0);
    output.play({}, 1000);
    QVERIFY(Tones::rms(heard(0.4)) < 1e-6);
}

void VoiceOutputTest::laterMixTakesThePlaceOfTheFormer()
{
    VoiceOutput output;
    output.play(tone(500.0, 5.0), 0);
    QCOMPARE(tonesIn(tail(heard(0.5), 0.2)), QList<double>{500.0});
    output.play(tone(2000.0, 5.0), 0);
    QCOMPARE(tonesIn(tail(heard(0.5), 0.2)), QList<double>{2000.0});
}

void VoiceOutputTest::mixMayBeExchangedOnTheWay()
{
    VoiceOutput output;
    output.play(tone(500.0, 5.0), 0);
    QCOMPARE(tonesIn(tail(heard(0.5), 0.2)), QList<double>{500.0});
    // Its beginning is behind the place where the former one is.
    output.goOnWith(tone(1000.0, 0.2) + tone(2000.0, 5.0));
    const QList<float> samples = heard(1.0);
    QCOMPARE(tonesIn(tail(samples, 0.2)), QList<double>{2000.0});
    QVERIFY(Tones::strengthAt(samples, kRate, 1000.0) < 0.02);
}

void VoiceOutputTest::nothingIsExchangedWhereNothingPlays()
{
    VoiceOutput output;
    output.goOnWith(tone(500.0, 5.0));
    QVERIFY(!output.isActive());
    output.play(tone(500.0, 5.0), 0);
    output.stop();
    output.goOnWith(tone(500.0, 5.0));
    QVERIFY(!output.isActive());
}

void VoiceOutputTest::mixThatTheCallerChangesSoundsOn()
{
    VoiceOutput output;
    QList<float> mix = tone(1000.0, 5.0);
    output.play(mix, 0);
    mix.fill(0.0F);
    mix.clear();
    mix = tone(500.0, 5.0);
    QCOMPARE(tonesIn(tail(heard(0.5), 0.2)), QList<double>{1000.0});
}

void VoiceOutputTest::stopSilences()
{
    VoiceOutput output;
    output.play(tone(1000.0, 5.0), 0);
    QCOMPARE(tonesIn(tail(heard(0.5), 0.2)), QList<double>{1000.0});
    output.stop();
    QVERIFY(!output.isActive());
    QVERIFY(Tones::rms(tail(heard(0.5), 0.2)) < 1e-6);
    output.stop();
    QVERIFY(!output.isActive());
}

void VoiceOutputTest::stopBeforeAnythingPlays()
{
    VoiceOutput output;
    output.stop();
    output.stop();
    QVERIFY(!output.isActive());
}

// ---- Life ----------------------------------------------------------------------------------

void VoiceOutputTest::whatIsStoppedIsDeletedWithTheEventLoop()
{
    VoiceOutput output;
    for (int i = 0; i < 10; ++i)
        output.play(tone(500.0, 0.5), 0);
    QTRY_COMPARE(output.findChildren<QAudioSink*>().size(), 1);
    QCOMPARE(output.findChildren<QBuffer*>().size(), 1);
    QVERIFY(output.isActive());
    output.stop();
    QTRY_VERIFY(output.children().isEmpty());
}

void VoiceOutputTest::outputMayGoWhileItPlays()
{
    for (int i = 0; i < 10; ++i) {
        VoiceOutput output;
        output.play(tone(500.0, 5.0), 0);
        QTest::qWait(5 * i);
        // A busy moment, in which requests for more sound pile up.
        QThread::msleep(60);
    }
    QVERIFY(Tones::rms(tail(heard(0.5), 0.2)) < 1e-6);
}

void VoiceOutputTest::outputMayGoWithStoppedMixes()
{
    for (int i = 0; i < 10; ++i) {
        VoiceOutput output;
        output.play(tone(500.0, 5.0), 0);
        output.play(tone(500.0, 5.0), 0);
        output.stop();
        output.play(tone(500.0, 5.0), 0);
    }
    QVERIFY(Tones::rms(tail(heard(0.5), 0.2)) < 1e-6);
}

// ---- Without a device ----------------------------------------------------------------------

void VoiceOutputTest::deviceThatVanishesWhileItPlays()
{
    recording_.reset();
    VoiceOutput output;
    output.play(tone(500.0, 5.0), 0);
    QTest::qWait(100);
    daemon_.unloadSink();
    QTRY_VERIFY(!hasDevice());
    output.play(tone(500.0, 5.0), 0);
    QVERIFY(!output.isActive());
    daemon_.loadSink();
    QTRY_VERIFY(hasDevice());
}

void VoiceOutputTest::deviceThatHasJustVanished()
{
    for (int i = 0; i < 5; ++i) {
        VoiceOutput output;
        output.play(tone(500.0, 5.0), 0);
        daemon_.unloadSink();
        // Starting a sink on a device that is still listed but gone hangs in Qt 6.4.
        QTRY_VERIFY(!hasDevice());
        output.play(tone(500.0, 5.0), 0);
        QVERIFY(!output.isActive());
        daemon_.loadSink();
        QTRY_VERIFY(hasDevice());
    }
}

void VoiceOutputTest::noDeviceIsSilent()
{
    daemon_.unloadSink();
    QTRY_VERIFY(!hasDevice());
    VoiceOutput output;
    output.play(tone(500.0, 1.0), 0);
    QVERIFY(!output.isActive());
    QVERIFY(output.children().isEmpty());
    output.stop();
    output.play({}, -1);
    QVERIFY(!output.isActive());
}

void VoiceOutputTest::deviceMayComeBack()
{
    VoiceOutput output;
    output.play(tone(500.0, 1.0), 0);
    QVERIFY(!output.isActive());
    daemon_.loadSink();
    QTRY_VERIFY(hasDevice());
    recording_ = std::make_unique<MonitorRecording>();
    output.play(tone(500.0, 3.0), 0);
    QVERIFY(output.isActive());
    QCOMPARE(tonesIn(beginning(heard(0.5))), QList<double>{500.0});
}

int main(int argc, char** argv)
{
    PulseDaemon daemon;
    QCoreApplication application(argc, argv);
    VoiceOutputTest test(daemon);
    return QTest::qExec(&test, argc, argv);
}

#include "VoiceOutputTest.moc"
