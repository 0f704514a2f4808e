#include "voice/AudioRecorder.h"

#include "support/Files.h"
#include "support/PulseDaemon.h"
#include "support/Tones.h"
#include "support/WavFile.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSource>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMediaDevices>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

#include <algorithm>
#include <cmath>
#include <dlfcn.h>
#include <functional>
#include <memory>

// ---- Devices that a sound server does not have ---------------------------------------------

namespace {

/// What devices seem to be. The functions of Qt Multimedia that are defined below take the place
/// of the library's, as the linker prefers them.
struct DeviceMask {
    /// Formats that every device knows; the device answers itself if there is none.
    std::function<bool(const QAudioFormat&)> supports;
    QAudioFormat preferred;
    bool opens = true;
};

DeviceMask& mask()
{
    static DeviceMask mask;
    return mask;
}

template <typename Function>
Function* library(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

bool QAudioDevice::isFormatSupported(const QAudioFormat& format) const
{
    static auto* const pass = library<bool(const QAudioDevice*, const QAudioFormat&)>(
        "_ZNK12QAudioDevice17isFormatSupportedERK12QAudioFormat");
    return mask().supports ? mask().supports(format) : pass(this, format);
}

QAudioFormat QAudioDevice::preferredFormat() const
{
    static auto* const pass =
        library<QAudioFormat(const QAudioDevice*)>("_ZNK12QAudioDevice15preferredFormatEv");
    return mask().supports ? mask().preferred : pass(this);
}

QIODevice* QAudioSource::start()
{
    static auto* const pass = library<QIODevice*(QAudioSource*)>("_ZN12QAudioSource5startEv");
    return mask().opens ? pass(this) : nullptr;
}

namespace {

QAudioFormat formatOf(int sampleRate, int channels, QAudioFormat::SampleFormat samples)
{
    QAudioFormat format;
    format.setSampleRate(sampleRate);
    format.setChannelCount(channels);
    format.setSampleFormat(samples);
    return format;
}

/// A device that knows one rate and number of channels, in 16 bits, but would rather have others.
void maskDevices(int sampleRate, int channels, QAudioFormat::SampleFormat preferred)
{
    mask().preferred = formatOf(sampleRate, channels, preferred);
    mask().supports = [sampleRate, channels](const QAudioFormat& format) {
        return format == formatOf(sampleRate, channels, QAudioFormat::Int16);
    };
}

// ---- Microphones ---------------------------------------------------------------------------

/// What pactl answers; empty if it fails.
QString control(const QStringList& command)
{
    QProcess process;
    process.start("pactl", command);
    process.waitForFinished(15000);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// Loads modules into the sound server, the last of which makes the source "mic", the default one.
class Microphone {
public:
    explicit Microphone(const QList<QStringList>& modules)
    {
        for (const QStringList& module : modules)
            modules_.prepend(control(QStringList{"load-module"} + module));
        control({"set-default-source", "mic"});
        // Qt learns of it in its own time.
        (void)QTest::qWaitFor([] { return QMediaDevices::defaultAudioInput().id() == "mic"; });
    }

    ~Microphone()
    {
        unplug();
        (void)QTest::qWaitFor([] { return QMediaDevices::audioInputs().isEmpty(); });
    }

    Microphone(const Microphone&) = delete;
    Microphone& operator=(const Microphone&) = delete;

    void unplug()
    {
        for (const QString& module : std::exchange(modules_, QStringList()))
            control({"unload-module", module});
    }

private:
    QStringList modules_;
};

/// Hears nothing but a sine, which is right to the last sample, but hands it out two seconds at a
/// time.
class SineMicrophone : public Microphone {
public:
    explicit SineMicrophone(double hz)
        : Microphone({{"module-sine-source", "source_name=mic", "rate=44100",
                       "frequency=" + QString::number(hz)}})
    {}
};

// What the stereo microphone hears on either side.
constexpr double kLeftHz = 500.0;
constexpr double kRightHz = 800.0;

/// Hears a tone on each side, and hands them out at once.
class StereoMicrophone : public Microphone {
public:
    static constexpr int kRate = 48000;

    StereoMicrophone()
        : Microphone({{"module-null-sink", "sink_name=desk", "rate=48000", "channels=2"},
                      {"module-remap-source", "source_name=mic", "master=desk.monitor"}})
    {
        const QString file = dir_.filePath("tones.wav");
        writeBytes(file, WavFile::bytes(tones(), kRate, 2));
        endWithTest(player_);
        player_.start("paplay", {"--device=desk", "--latency-msec=20", file});
        player_.waitForStarted();
        // Until it plays, the server renders two seconds at a time.
        QTest::qWait(2200);
    }

    ~StereoMicrophone()
    {
        player_.kill();
        player_.waitForFinished();
    }

private:
    static QList<float> tones()
    {
        QList<float> interleaved;
        const QList<float> left = Tones::sine(kLeftHz, kRate, 60 * kRate, 0.4);
        const QList<float> right = Tones::sine(kRightHz, kRate, 60 * kRate, 0.2);
        for (qsizetype i = 0; i < left.size(); ++i)
            interleaved << left[i] << right[i];
        return interleaved;
    }

    QTemporaryDir dir_;
    QProcess player_;
};

QList<float> samplesOf(const WavFile::Content& wav)
{
    QList<float> samples;
    for (const int sample : wav.samples)
        samples.append(static_cast<float>(sample) / 32768.0F);
    return samples;
}

/// Puts every text of the recorder into marks.
class Foreign : public QTranslator {
public:
    QString translate(const char* context, const char* source, const char*, int) const override
    {
        return qstrcmp(context, "AudioRecorder") == 0 ? "<" + QString::fromUtf8(source) + ">"
                                                      : QString();
    }

    bool isEmpty() const override { return false; }
};

} // namespace

/// Records from a sound server of the test's own.
class AudioRecorderTest : public QObject {
    Q_OBJECT

public:
    explicit AudioRecorderTest(PulseDaemon& daemon) : daemon_(daemon) {}

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void withoutAMicrophoneItSaysSo();
    void messagesAreTranslated();

    void takeHoldsTheTone();
    void ofSeveralMicrophonesTheChosenOneIsHeard();
    void takeIsAsLongAsItsFile();
    void secondStartIsRefused();
    void stopWithoutATakeWritesNothing();
    void takeWithoutSoundWritesNothing();
    void cancelledTakeLeavesNothing();
    void cancelWithoutATakeIsHarmless();
    void aTakeMayBeginAnew();
    void itTellsHowLoudTheMicrophoneIs();
    void takesFollowOneAnother();
    void takeThatCannotBeWrittenGivesZero_data();
    void takeThatCannotBeWrittenGivesZero();
    void takeReplacesAFile();
    void recorderGoesDuringATake();
    void sourcesAreGoneAfterTheirTakes();

    void stereoIsFoldedAtTheRateOfTheDevice();
    void deviceThatPrefersFloatsRecordsSixteenBits();
    void deviceWithoutSixteenBitsIsRefused();
    void deviceThatDoesNotOpenIsRefused();

    void aTakeWithoutAMicrophoneIsKept();
    void aTakeWithoutAServerIsKept();

private:
    QString path(const QString& name = "voz.wav") const { return dir_->filePath(name); }

    /// Lets sound come in.
    static void listen(double seconds) { QTest::qWait(static_cast<int>(seconds * 1000)); }

    /// Plugs the stereo microphone in, which stays for the tests that follow.
    void needMicrophone()
    {
        if (!microphone_)
            microphone_ = std::make_unique<StereoMicrophone>();
    }

    PulseDaemon& daemon_;
    std::unique_ptr<StereoMicrophone> microphone_;
    std::unique_ptr<QTemporaryDir> dir_;
    std::unique_ptr<AudioRecorder> recorder_;
    std::unique_ptr<QSignalSpy> failures_;
};

void AudioRecorderTest::initTestCase()
{
    QVERIFY2(daemon_.problem().isEmpty(), qPrintable(daemon_.problem()));
    // Qt begins to look for devices when it is first asked.
    QVERIFY(QMediaDevices::audioInputs().isEmpty());
}

void AudioRecorderTest::init()
{
    mask() = {};
    dir_ = std::make_unique<QTemporaryDir>();
    recorder_ = std::make_unique<AudioRecorder>();
    failures_ = std::make_unique<QSignalSpy>(recorder_.get(), &AudioRecorder::recordingFailed);
}

void AudioRecorderTest::cleanup()
{
    recorder_.reset();
}

// ---- Without a microphone ------------------------------------------------------------------

void AudioRecorderTest::withoutAMicrophoneItSaysSo()
{
    QVERIFY(!recorder_->startRecording());
    QCOMPARE(failures_->size(), 1);
    QCOMPARE(failures_->at(0)[0].toString(), QString("No hay micrófono disponible."));
    QVERIFY(!recorder_->isRecording());
    QCOMPARE(recorder_->stopRecording(path()), 0.0);
    QVERIFY(!QFile::exists(path()));
}

void AudioRecorderTest::messagesAreTranslated()
{
    Foreign foreign;
    QCoreApplication::installTranslator(&foreign);
    recorder_->startRecording();
    QCoreApplication::removeTranslator(&foreign);
    QCOMPARE(failures_->value(0).value(0).toString(), QString("<No hay micrófono disponible.>"));
}

// ---- Takes ---------------------------------------------------------------------------------

void AudioRecorderTest::takeHoldsTheTone()
{
    constexpr double kHz = 441.0;
    const SineMicrophone microphone(kHz);
    QVERIFY(recorder_->startRecording());
    QVERIFY(recorder_->isRecording());
    listen(4.4);
    QVERIFY(recorder_->stopRecording(path()) > 3.0);
    QVERIFY(!recorder_->isRecording());
    QCOMPARE(failures_->size(), 0);

    const WavFile::Content wav = WavFile::read(bytesOf(path()));
    QVERIFY(wav.ok);
    QCOMPARE(wav.channels, 1);
    QCOMPARE(wav.sampleRate, 44100);
    const QList<float> samples = samplesOf(wav);
    const double hz = Tones::strongestHz(samples.mid(0, 22050), 44100, 100.0, 2000.0);
    QVERIFY2(std::abs(Tones::cents(hz, kHz)) < 1.0, qPrintable(QString::number(hz)));
    // A period is 100 samples. None is lost or comes twice between the blocks that came in.
    for (qsizetype i = 100; i < samples.size(); ++i)
        QVERIFY2(std::abs(samples[i] - samples[i - 100]) < 0.001F, qPrintable(QString::number(i)));
    QVERIFY(Tones::rms(samples) > 0.1);
}

void AudioRecorderTest::ofSeveralMicrophonesTheChosenOneIsHeard()
{
    const QString camera = control(
        {"load-module", "module-sine-source", "source_name=camera", "rate=44100", "frequency=300"});
    const SineMicrophone headset(900.0);
    QTRY_COMPARE(QMediaDevices::audioInputs().size(), 2);
    QVERIFY(recorder_->startRecording());
    listen(2.4);
    recorder_->stopRecording(path());
    control({"unload-module", camera});
    const QList<float> samples = samplesOf(WavFile::read(bytesOf(path())));
    const double hz = Tones::strongestHz(samples.mid(0, 22050), 44100, 100.0, 2000.0);
    QVERIFY2(std::abs(Tones::cents(hz, 900.0)) < 1.0, qPrintable(QString::number(hz)));
}

void AudioRecorderTest::takeIsAsLongAsItsFile()
{
    needMicrophone();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(recorder_->startRecording());
    listen(0.6);
    const double seconds = recorder_->stopRecording(path());
    const WavFile::Content wav = WavFile::read(bytesOf(path()));
    QVERIFY(seconds > 0.1);
    QCOMPARE(seconds, static_cast<double>(wav.samples.size()) / 44100.0);
    // A source may hold some tenths of a second already when it is opened.
    QVERIFY(seconds < static_cast<double>(clock.elapsed()) / 1000.0 + 0.5);
}

void AudioRecorderTest::secondStartIsRefused()
{
    needMicrophone();
    QVERIFY(recorder_->startRecording());
    listen(0.6);
    QVERIFY(!recorder_->startRecording());
    QVERIFY(recorder_->isRecording());
    QCOMPARE(failures_->size(), 0);
    // What came before is not lost.
    QVERIFY(recorder_->stopRecording(path()) > 0.1);
}

void AudioRecorderTest::stopWithoutATakeWritesNothing()
{
    needMicrophone();
    QCOMPARE(recorder_->stopRecording(path()), 0.0);
    QVERIFY(!QFile::exists(path()));
    QVERIFY(recorder_->startRecording());
    listen(0.3);
    QVERIFY(recorder_->stopRecording(path()) > 0.0);
    QCOMPARE(recorder_->stopRecording(path("otra.wav")), 0.0);
    QVERIFY(!QFile::exists(path("otra.wav")));
    QCOMPARE(failures_->size(), 0);
}

void AudioRecorderTest::takeWithoutSoundWritesNothing()
{
    needMicrophone();
    QVERIFY(recorder_->startRecording());
    QCOMPARE(recorder_->stopRecording(path()), 0.0);
    QVERIFY(!QFile::exists(path()));
    QVERIFY(!recorder_->isRecording());
    QCOMPARE(failures_->size(), 0);
}

void AudioRecorderTest::cancelledTakeLeavesNothing()
{
    needMicrophone();
    QVERIFY(recorder_->startRecording());
    listen(0.3);
    recorder_->cancelRecording();
    QVERIFY(!recorder_->isRecording());
    QCOMPARE(recorder_->stopRecording(path()), 0.0);
    QCOMPARE(QDir(dir_->path()).entryList(QDir::Files), QStringList());
    // A new take starts at once, and from nothing.
    QVERIFY(recorder_->startRecording());
    QCOMPARE(recorder_->stopRecording(path()), 0.0);
    QVERIFY(!QFile::exists(path()));
}

void AudioRecorderTest::cancelWithoutATakeIsHarmless()
{
    recorder_->cancelRecording();
    recorder_->cancelRecording();
    QVERIFY(!recorder_->isRecording());
    QCOMPARE(failures_->size(), 0);
}

void AudioRecorderTest::aTakeMayBeginAnew()
{
    needMicrophone();
    QVERIFY(recorder_->startRecording());
    listen(0.3);
    recorder_->beginAnew();
    QVERIFY(recorder_->isRecording());
    // Nothing has come since.
    QCOMPARE(recorder_->stopRecording(path()), 0.0);
    QVERIFY(!QFile::exists(path()));

    QVERIFY(recorder_->startRecording());
    recorder_->beginAnew();
    listen(0.3);
    QVERIFY(recorder_->stopRecording(path()) > 0.0);
}

void AudioRecorderTest::itTellsHowLoudTheMicrophoneIs()
{
    needMicrophone();
    QSignalSpy levels(recorder_.get(), &AudioRecorder::levelHeard);
    QVERIFY(recorder_->startRecording());
    listen(0.3);
    QVERIFY(!levels.isEmpty());
    recorder_->stopRecording(path());
    float loudest = 0.0F;
    for (const QList<QVariant>& level : levels)
        loudest = std::max(loudest, level.first().toFloat());
    int most = 0;
    for (const int sample : WavFile::read(bytesOf(path())).samples)
        most = std::max(most, std::abs(sample));
    QVERIFY(std::abs(loudest - static_cast<float>(most) / 32768.0F) < 0.001F);
}

void AudioRecorderTest::takesFollowOneAnother()
{
    needMicrophone();
    for (const char* name : {"voz_1.wav", "voz_2.wav", "voz_3.wav"}) {
        QVERIFY(recorder_->startRecording());
        listen(0.3);
        const double seconds = recorder_->stopRecording(path(name));
        QVERIFY(seconds > 0.0);
        QCOMPARE(static_cast<double>(WavFile::read(bytesOf(path(name))).samples.size()) / 44100.0,
                 seconds);
    }
}

void AudioRecorderTest::takeThatCannotBeWrittenGivesZero_data()
{
    QTest::addColumn<QString>("file");

    QTest::newRow("folder that is not there") << "/nowhere/at/all/voz.wav";
    QTest::newRow("folder") << "/";
    QTest::newRow("no name") << "";
}

void AudioRecorderTest::takeThatCannotBeWrittenGivesZero()
{
    QFETCH(QString, file);
    needMicrophone();
    QVERIFY(recorder_->startRecording());
    listen(0.3);
    QCOMPARE(recorder_->stopRecording(file), 0.0);
    QVERIFY(!recorder_->isRecording());
    QCOMPARE(failures_->size(), 0);
    // The take is gone, and the next one is not the longer for it.
    QVERIFY(recorder_->startRecording());
    QCOMPARE(recorder_->stopRecording(path()), 0.0);
}

void AudioRecorderTest::takeReplacesAFile()
{
    needMicrophone();
    writeBytes(path(), QByteArray(3000000, 'x'));
    QVERIFY(recorder_->startRecording());
    listen(0.3);
    QVERIFY(recorder_->stopRecording(path()) > 0.0);
    QVERIFY(WavFile::read(bytesOf(path())).ok);
}

void AudioRecorderTest::recorderGoesDuringATake()
{
    needMicrophone();
    QVERIFY(recorder_->startRecording());
    listen(0.2);
    recorder_.reset();
    listen(0.2);
    QCOMPARE(QDir(dir_->path()).entryList(QDir::Files), QStringList());
}

void AudioRecorderTest::sourcesAreGoneAfterTheirTakes()
{
    needMicrophone();
    for (int i = 0; i < 3; ++i) {
        QVERIFY(recorder_->startRecording());
        QCOMPARE(recorder_->findChildren<QAudioSource*>().size(), 1);
        recorder_->cancelRecording();
        listen(0.05);
        QCOMPARE(recorder_->findChildren<QAudioSource*>().size(), 0);
    }
}

// ---- Other devices -------------------------------------------------------------------------

void AudioRecorderTest::stereoIsFoldedAtTheRateOfTheDevice()
{
    constexpr int kRate = StereoMicrophone::kRate;
    needMicrophone();
    maskDevices(kRate, 2, QAudioFormat::Int16);
    QVERIFY(recorder_->startRecording());
    listen(1.2);
    const double seconds = recorder_->stopRecording(path());

    const WavFile::Content wav = WavFile::read(bytesOf(path()));
    QVERIFY(wav.ok);
    QCOMPARE(wav.channels, 1);
    QCOMPARE(wav.sampleRate, kRate);
    QCOMPARE(seconds, static_cast<double>(wav.samples.size()) / kRate);
    QVERIFY2(seconds > 0.5, qPrintable(QString::number(seconds)));
    // The mean of two sides has half of each. A busy machine leaves gaps, which only weaken a tone.
    const auto strongest = [&](double hz) {
        const QList<float> samples = samplesOf(wav);
        double strength = 0.0;
        for (qsizetype at = 0; at + kRate / 4 <= samples.size(); at += kRate / 20)
            strength = std::max(strength, Tones::strengthAt(samples.mid(at, kRate / 4), kRate, hz));
        return strength;
    };
    const double left = strongest(kLeftHz);
    const double right = strongest(kRightHz);
    QVERIFY2(std::abs(left - 0.2) < 0.01, qPrintable(QString::number(left)));
    QVERIFY2(std::abs(right - 0.1) < 0.01, qPrintable(QString::number(right)));
}

void AudioRecorderTest::deviceThatPrefersFloatsRecordsSixteenBits()
{
    constexpr int kRate = 22050;
    needMicrophone();
    maskDevices(kRate, 1, QAudioFormat::Float);
    QVERIFY(recorder_->startRecording());
    listen(0.8);
    QVERIFY(recorder_->stopRecording(path()) > 0.3);
    const WavFile::Content wav = WavFile::read(bytesOf(path()));
    QVERIFY(wav.ok);
    QCOMPARE(wav.sampleRate, kRate);
    const double hz = Tones::strongestHz(samplesOf(wav).last(5000), kRate, 100.0, 2000.0);
    QVERIFY2(std::abs(Tones::cents(hz, kLeftHz)) < 10.0, qPrintable(QString::number(hz)));
}

void AudioRecorderTest::deviceWithoutSixteenBitsIsRefused()
{
    needMicrophone();
    mask().preferred = formatOf(44100, 1, QAudioFormat::Float);
    mask().supports = [](const QAudioFormat& format) {
        return format.sampleFormat() == QAudioFormat::Float;
    };
    QVERIFY(!recorder_->startRecording());
    QCOMPARE(failures_->size(), 1);
    QCOMPARE(failures_->at(0)[0].toString(), QString("El micrófono no soporta PCM de 16 bits."));
    QVERIFY(!recorder_->isRecording());
    mask() = {};
    QVERIFY(recorder_->startRecording());
}

void AudioRecorderTest::deviceThatDoesNotOpenIsRefused()
{
    needMicrophone();
    mask().opens = false;
    QVERIFY(!recorder_->startRecording());
    QCOMPARE(failures_->size(), 1);
    QCOMPARE(failures_->at(0)[0].toString(), QString("No pude abrir el micrófono."));
    QVERIFY(!recorder_->isRecording());
    QCOMPARE(recorder_->stopRecording(path()), 0.0);
    mask() = {};
    QVERIFY(recorder_->startRecording());
    listen(0.3);
    QVERIFY(recorder_->stopRecording(path()) > 0.0);
}

// ---- What goes away ------------------------------------------------------------------------

void AudioRecorderTest::aTakeWithoutAMicrophoneIsKept()
{
    needMicrophone();
    QVERIFY(recorder_->startRecording());
    listen(0.5);
    microphone_->unplug();
    QTRY_COMPARE(failures_->size(), 1);
    QCOMPARE(failures_->takeFirst()[0].toString(), QString("No hay micrófono disponible."));
    listen(1.0);
    QVERIFY2(failures_->isEmpty(), "it is told once");
    QVERIFY(recorder_->isRecording());
    // What had come by then is kept.
    const double seconds = recorder_->stopRecording(path());
    QVERIFY2(seconds > 0.1, qPrintable(QString::number(seconds)));
    QVERIFY(WavFile::read(bytesOf(path())).ok);
    microphone_.reset();
    QVERIFY(!recorder_->startRecording());
    QCOMPARE(failures_->value(0).value(0).toString(), QString("No hay micrófono disponible."));
}

// The last one: the server does not come back.
void AudioRecorderTest::aTakeWithoutAServerIsKept()
{
    needMicrophone();
    QVERIFY(recorder_->startRecording());
    listen(0.5);
    daemon_.kill();
    QTRY_COMPARE(failures_->size(), 1);
    QCOMPARE(failures_->at(0)[0].toString(), QString("No hay micrófono disponible."));
    QVERIFY(recorder_->isRecording());
    const double seconds = recorder_->stopRecording(path());
    QVERIFY2(seconds > 0.1, qPrintable(QString::number(seconds)));
    QVERIFY(!recorder_->startRecording());
    QVERIFY(!recorder_->isRecording());
    recorder_->cancelRecording();
    listen(0.1);
}

int main(int argc, char** argv)
{
    PulseDaemon daemon;
    QCoreApplication application(argc, argv);
    AudioRecorderTest test(daemon);
    return QTest::qExec(&test, argc, argv);
}

#include "AudioRecorderTest.moc"
