#include "voice/AudioDecoder.h"

#include "support/ContextTranslator.h"
#include "support/Files.h"
#include "support/FullDisk.h"
#include "support/SoundFile.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "support/WavFile.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <fcntl.h>
#include <limits>
#include <random>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace AudioDecoderTests {

#ifdef __SANITIZE_ADDRESS__
/// libsndfile 1.2 does not give back what libvorbis holds when the headers of a file are damaged.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:vorbis_info_init";
}
#endif

namespace {

constexpr int kWav16 = SF_FORMAT_WAV | SF_FORMAT_PCM_16;

/// A number as the file formats hold it, least significant byte first.
QByteArray littleEndian(quint64 value, int bytes)
{
    QByteArray result;
    for (int i = 0; i < bytes; ++i)
        result.append(static_cast<char>(value >> (8 * i)));
    return result;
}

/// Every sample different, none beyond full scale.
QList<float> ramp(qsizetype count)
{
    QList<float> samples(count);
    for (qsizetype i = 0; i < count; ++i)
        samples[i] = static_cast<float>(static_cast<double>(i) / static_cast<double>(count) - 0.5);
    return samples;
}

/// The ways in which a file is written, all of which make the same of it.
enum class Way { InPlace, Replacing, IntoADevice };

bool writeIn(Way way, const QString& path, const QList<float>& samples, int sampleRate,
             int channels)
{
    if (way == Way::InPlace)
        return AudioDecoder::writeWav(path, samples, sampleRate, channels);
    if (way == Way::Replacing)
        return AudioDecoder::replaceWav(path, samples, sampleRate, channels);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) &&
           AudioDecoder::writeWav(file, samples, sampleRate, channels) && file.flush();
}

const QList<Way> kWays{Way::InPlace, Way::Replacing, Way::IntoADevice};

/// Memory that refuses one of the calls that write to it or seek in it, by its number.
class UnsteadyDevice : public QBuffer {
public:
    explicit UnsteadyDevice(int refused) : refused_(refused) {}

    int calls() const { return calls_; }

    bool seek(qint64 position) override { return calls_++ != refused_ && QBuffer::seek(position); }

protected:
    qint64 writeData(const char* bytes, qint64 count) override
    {
        return calls_++ != refused_ ? QBuffer::writeData(bytes, count) : -1;
    }

private:
    int refused_;
    int calls_ = 0;
};

/// What every result must satisfy, whatever was read.
bool isCoherent(const AudioDecoder::Result& result)
{
    if (!result.ok)
        return result.samples.isEmpty() && !result.error.isEmpty();
    return result.error.isEmpty() && result.sampleRate > 0 && result.channels > 0 &&
           !result.samples.isEmpty() && result.samples.size() % result.channels == 0;
}

AudioDecoder::Result interleaved(int channels, const QList<float>& samples)
{
    AudioDecoder::Result result;
    result.samples = samples;
    result.sampleRate = 44100;
    result.channels = channels;
    result.ok = true;
    return result;
}

/// Holds one of the process's standard streams for as long as it lives.
class RedirectedStream {
public:
    RedirectedStream(int stream, int replacement) : stream_(stream), saved_(dup(stream))
    {
        dup2(replacement, stream);
    }

    ~RedirectedStream()
    {
        dup2(saved_, stream_);
        close(saved_);
    }

    RedirectedStream(const RedirectedStream&) = delete;
    RedirectedStream& operator=(const RedirectedStream&) = delete;

private:
    int stream_;
    int saved_;
};

/// Sends what libraries write about damaged files nowhere for as long as it lives.
class SilentErrors {
public:
    SilentErrors() : nowhere_(open("/dev/null", O_WRONLY)), stream_(STDERR_FILENO, nowhere_) {}

    ~SilentErrors() { close(nowhere_); }

    SilentErrors(const SilentErrors&) = delete;
    SilentErrors& operator=(const SilentErrors&) = delete;

private:
    int nowhere_;
    RedirectedStream stream_;
};

} // namespace

class AudioDecoderTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void everyWrittenSampleComesBack_data();
    void everyWrittenSampleComesBack();
    void compressedWithLossKeepsThePitch_data();
    void compressedWithLossKeepsThePitch();
    void aFileLongerThanOneReadComesBackWhole();
    void aVisitorSeesEveryFrameOnce_data();
    void aVisitorSeesEveryFrameOnce();
    void stereoOfAThousandFrames();

    void meanOfTheChannels_data();
    void meanOfTheChannels();
    void monoIsSharedWithoutACopy_data();
    void monoIsSharedWithoutACopy();

    void anyFileNameIsReadAndWritten_data();
    void anyFileNameIsReadAndWritten();

    void whatHoldsNoSoundFailsWithAText_data();
    void whatHoldsNoSoundFailsWithAText();
    void aFileWithoutFramesIsEmptyOrUnreadable_data();
    void aFileWithoutFramesIsEmptyOrUnreadable();
    void whatIsNoRegularFileIsRefusedWithoutWaiting_data();
    void whatIsNoRegularFileIsRefusedWithoutWaiting();
    void whatCannotBeOpenedIsToldInTheWordsOfLibsndfile_data();
    void whatCannotBeOpenedIsToldInTheWordsOfLibsndfile();
    void linksToRegularFilesAreFollowed();
    void aLoneDashIsAFileName();
    void aPathIsNotCutAtANullCharacter();

    void aTruncatedFileGivesItsBeginningOrNothing_data();
    void aTruncatedFileGivesItsBeginningOrNothing();
    void aHeaderThatClaimsMoreGivesWhatIsThere_data();
    void aHeaderThatClaimsMoreGivesWhatIsThere();
    void aFileBeyondTheLimitIsRefused_data();
    void aFileBeyondTheLimitIsRefused();
    void damagedBytesNeverBreakTheReader_data();
    void damagedBytesNeverBreakTheReader();
    void randomBytesBehindAnySignatureNeverBreakTheReader();

    void bytesOfATinyFile_data();
    void bytesOfATinyFile();
    void writtenFilesReadBackWithinHalfAStep_data();
    void writtenFilesReadBackWithinHalfAStep();
    void samplesBeyondFullScaleAreHeldThere_data();
    void samplesBeyondFullScaleAreHeldThere();
    void loudMusicIsNotTorn();
    void samplesBehindTheLastWholeFrameAreLeftOut();
    void aShorterFileReplacesALongerOne();
    void whatCannotBeWrittenGivesFalse_data();
    void whatCannotBeWrittenGivesFalse();
    void aDiskThatFillsUpGivesFalse_data();
    void aDiskThatFillsUpGivesFalse();
    void whatCannotBeReplacedStaysAsItWas();
    void aDeviceThatFailsOnceGivesFalse();

private:
    /// A path in a folder of the test function's own; absolute and empty ones stay as they are.
    QString path(const QString& name) const
    {
        return name.isEmpty() ? name : QDir(folder_->path()).filePath(name);
    }

    std::unique_ptr<QTemporaryDir> folder_;
};

void AudioDecoderTest::init()
{
    folder_ = std::make_unique<QTemporaryDir>();
    QVERIFY(folder_->isValid());
}

void AudioDecoderTest::everyWrittenSampleComesBack_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("channels");
    QTest::addColumn<double>("tolerance");

    // Half a step of the stored integers, and a little for full scale being 2^n - 1 or 2^n.
    constexpr double k8 = 1.0 / 100.0;
    constexpr double k16 = 1.0 / 32000.0;
    constexpr double k24 = 1.0 / 8000000.0;
    const auto row = [](const char* name, int format, int rate, int channels, double tolerance) {
        QVERIFY2(SoundFile::canWrite(format), name);
        QTest::newRow(name) << format << rate << channels << tolerance;
    };
    row("WAV of 8 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 8000, 1, k8);
    row("WAV of 16 bits", kWav16, 44100, 1, k16);
    row("WAV of 24 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_24, 48000, 1, k24);
    row("WAV of 32 bits", SF_FORMAT_WAV | SF_FORMAT_PCM_32, 96000, 1, k24);
    row("WAV of floats", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 22050, 1, 0.0);
    row("WAV of doubles", SF_FORMAT_WAV | SF_FORMAT_DOUBLE, 11025, 1, 0.0);
    row("WAV in stereo", kWav16, 44100, 2, k16);
    row("WAV of five channels", kWav16, 44100, 5, k16);
    row("WAV of floats of seven channels", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 192000, 7, 0.0);
    row("extensible WAV", SF_FORMAT_WAVEX | SF_FORMAT_PCM_16, 44100, 2, k16);
    row("RF64", SF_FORMAT_RF64 | SF_FORMAT_PCM_16, 44100, 2, k16);
    row("W64", SF_FORMAT_W64 | SF_FORMAT_PCM_16, 44100, 1, k16);
    row("AIFF", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 44100, 2, k16);
    row("AU", SF_FORMAT_AU | SF_FORMAT_PCM_24, 44100, 1, k24);
    row("CAF of floats", SF_FORMAT_CAF | SF_FORMAT_FLOAT, 44100, 1, 0.0);
    row("FLAC of 16 bits", SF_FORMAT_FLAC | SF_FORMAT_PCM_16, 44100, 1, k16);
    row("FLAC of 24 bits in stereo", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 48000, 2, k24);
}

void AudioDecoderTest::everyWrittenSampleComesBack()
{
    QFETCH(int, format);
    QFETCH(int, sampleRate);
    QFETCH(int, channels);
    QFETCH(double, tolerance);
    const QList<float> samples = ramp(1000 * channels);
    QVERIFY(SoundFile::write(path("toma"), format, sampleRate, channels, samples));

    const AudioDecoder::Result result = AudioDecoder::decode(path("toma"));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.error, QString());
    QCOMPARE(result.sampleRate, sampleRate);
    QCOMPARE(result.channels, channels);
    QCOMPARE(result.samples.size(), samples.size());
    QVERIFY(Tones::largestDifference(result.samples, samples) <= tolerance);
}

void AudioDecoderTest::compressedWithLossKeepsThePitch_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<qsizetype>("padding");

    QTest::newRow("Ogg Vorbis holds the exact count")
        << int(SF_FORMAT_OGG | SF_FORMAT_VORBIS) << qsizetype(0);
    QTest::newRow("MP3 may add some frames of its own")
        << int(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III) << qsizetype(3 * 1152);
}

void AudioDecoderTest::compressedWithLossKeepsThePitch()
{
    QFETCH(int, format);
    QFETCH(qsizetype, padding);
    QVERIFY(SoundFile::canWrite(format));
    QVERIFY(SoundFile::write(path("toma"), format, 44100, 1, Tones::sine(440.0, 44100, 22050)));

    const AudioDecoder::Result result = AudioDecoder::decode(path("toma"));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.sampleRate, 44100);
    QCOMPARE(result.channels, 1);
    QVERIFY(result.samples.size() >= 22050 && result.samples.size() <= 22050 + padding);
    const double heard = Tones::strongestHz(result.samples.mid(4096, 8192), 44100, 400.0, 480.0);
    QVERIFY2(std::abs(Tones::cents(heard, 440.0)) < 1.0, qPrintable(QString::number(heard)));
}

void AudioDecoderTest::aFileLongerThanOneReadComesBackWhole()
{
    // Around multiples of 65536 frames, in case a reader asks for that many at once.
    for (const qsizetype frames : {65535, 65536, 65537, 131072, 131073}) {
        const QList<float> samples = ramp(2 * frames);
        QVERIFY(SoundFile::write(path("larga.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, 2,
                                 samples));
        QCOMPARE(AudioDecoder::decode(path("larga.wav")).samples, samples);
    }
}

void AudioDecoderTest::aVisitorSeesEveryFrameOnce_data()
{
    QTest::addColumn<int>("frames");
    for (const int frames : {0, 1, 65535, 65536, 65537, 131072, 150000})
        QTest::addRow("%d frames", frames) << frames;
}

void AudioDecoderTest::aVisitorSeesEveryFrameOnce()
{
    QFETCH(int, frames);
    const QList<float> samples = Tones::noise(2 * frames, 65);
    QVERIFY(SoundFile::write(path("toma"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 22050, 2, samples));
    QList<float> seen;
    AudioDecoder::visit(path("toma"), [&](std::span<const float> block, int rate, int channels) {
        seen.append(QList<float>(block.begin(), block.end()));
        return !block.empty() && rate == 22050 && channels == 2;
    });
    QCOMPARE(seen, samples);
    int visits = 0;
    AudioDecoder::visit(path("toma"), [&](std::span<const float>, int, int) {
        ++visits;
        return false;
    });
    QCOMPARE(visits, frames > 0 ? 1 : 0);
}

void AudioDecoderTest::stereoOfAThousandFrames()
{
    QVERIFY(SoundFile::write(path("toma.wav"), kWav16, 44100, 2, ramp(2000)));
    const AudioDecoder::Result result = AudioDecoder::decode(path("toma.wav"));
    QCOMPARE(result.samples.size(), 2000);
    QCOMPARE(AudioDecoder::toMono(result).size(), 1000);
}

void AudioDecoderTest::meanOfTheChannels_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<QList<float>>("samples");
    QTest::addColumn<QList<float>>("expected");
    using Samples = QList<float>;

    QTest::newRow("two channels, each weighs a half")
        << 2 << Samples{1.0F, 0.5F, -1.0F, 1.0F} << Samples{0.75F, 0.0F};
    QTest::newRow("four channels, each weighs a quarter")
        << 4 << Samples{1.0F, 0.0F, 0.0F, 0.0F, 0.25F, 0.5F, 0.25F, 0.0F} << Samples{0.25F, 0.25F};
    QTest::newRow("five channels") << 5 << Samples{1.0F, 2.0F, 3.0F, 4.0F, 5.0F} << Samples{3.0F};
    QTest::newRow("an incomplete last frame is left out")
        << 2 << Samples{0.5F, 0.5F, 1.0F} << Samples{0.5F};
    QTest::newRow("fewer samples than channels give nothing")
        << 5 << Samples{1.0F, 2.0F} << Samples{};
    QTest::newRow("no samples give nothing") << 2 << Samples{} << Samples{};
    // 1e8 has no room for a 1 beside it in single precision.
    QTest::newRow("channels are summed in their order, a small one first lost")
        << 3 << Samples{1e8F, 1.0F, -1e8F} << Samples{0.0F};
    QTest::newRow("channels are summed in their order, a small one last kept")
        << 3 << Samples{1e8F, -1e8F, 0.75F} << Samples{0.25F};
}

void AudioDecoderTest::meanOfTheChannels()
{
    QFETCH(int, channels);
    QFETCH(QList<float>, samples);
    QTEST(AudioDecoder::toMono(interleaved(channels, samples)), "expected");
}

void AudioDecoderTest::monoIsSharedWithoutACopy_data()
{
    QTest::addColumn<int>("channels");
    QTest::newRow("one channel") << 1;
    QTest::newRow("no channel at all") << 0;
    QTest::newRow("a negative count") << -3;
}

void AudioDecoderTest::monoIsSharedWithoutACopy()
{
    QFETCH(int, channels);
    const AudioDecoder::Result result = interleaved(channels, ramp(1000));
    const QList<float> mono = AudioDecoder::toMono(result);
    QCOMPARE(mono.size(), 1000);
    QCOMPARE(mono.constData(), result.samples.constData());
}

void AudioDecoderTest::anyFileNameIsReadAndWritten_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("accents") << "canción de cuna, último ñandú.wav";
    QTest::newRow("spaces at both ends") << " mi voz .wav ";
    QTest::newRow("composed and decomposed accents") << QString("cancio\u0301n y canci\u00F3n.wav");
    QTest::newRow("a script of its own") << QString("\u6B4C\u58F0.wav");
    QTest::newRow("beyond the basic plane") << QString("\U0001F3A4.wav");
    QTest::newRow("quotes and a line break") << "a'b\"c\nd.wav";
    QTest::newRow("no suffix") << "toma";
    QTest::newRow("the suffix of another format") << "toma.flac";
    QTest::newRow("in a folder with accents") << "Año nuevo/estrofa één.wav";
}

void AudioDecoderTest::anyFileNameIsReadAndWritten()
{
    QFETCH(QString, name);
    QVERIFY(QDir(folder_->path()).mkpath(QFileInfo(path(name)).path()));
    QVERIFY(AudioDecoder::writeWav(path(name), ramp(10), 44100, 1));
    QVERIFY(QFile::exists(path(name)));
    QCOMPARE(bytesOf(path(name)).size(), 44 + 20);
    const AudioDecoder::Result result = AudioDecoder::decode(path(name));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.samples.size(), 10);
}

void AudioDecoderTest::whatHoldsNoSoundFailsWithAText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray wav16 = QByteArray("RIFF\x24\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0", 24);

    QTest::newRow("an empty file") << QByteArray();
    QTest::newRow("one byte") << QByteArray("R");
    QTest::newRow("a text") << QByteArray("Esto no es una voz, es una carta.\n").repeated(40);
    QTest::newRow("a project file") << QByteArray("{\"name\": \"obra\", \"bpm\": 120}");
    QTest::newRow("zeros") << QByteArray(5000, '\0');
    QTest::newRow("ones") << QByteArray(5000, '\xFF');
    QTest::newRow("a picture") << QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16);
    QTest::newRow("RIFF and no more") << QByteArray("RIFF");
    QTest::newRow("RIFF of another kind")
        << QByteArray("RIFF\x24\0\0\0AVI LIST", 16) + QByteArray(100, 'x');
    QTest::newRow("WAV without a format") << QByteArray("RIFF\x04\0\0\0WAVE", 12);
    QTest::newRow("WAV without data")
        << wav16 + littleEndian(44100, 4) + littleEndian(88200, 4) + littleEndian(0x100002, 4);
    QTest::newRow("WAV with a sample rate of 0")
        << wav16 + QByteArray(8, '\0') + QByteArray("\2\0\x10\0data\4\0\0\0abcd", 16);
    QTest::newRow("WAV with no channels")
        << QByteArray("RIFF\x28\0\0\0WAVEfmt \x10\0\0\0\1\0\0\0", 24) + littleEndian(44100, 4) +
               littleEndian(88200, 4) + QByteArray("\2\0\x10\0data\4\0\0\0abcd", 16);
    QTest::newRow("FLAC signature alone") << QByteArray("fLaC");
    QTest::newRow("Ogg signature alone") << QByteArray("OggS");
    QTest::newRow("a long tag without music") << QByteArray("ID3\4\0\0\x7F\x7F\x7F\x7F", 10);
}

void AudioDecoderTest::whatHoldsNoSoundFailsWithAText()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(writeBytes(path("voz.wav"), bytes));
    const AudioDecoder::Result result = AudioDecoder::decode(path("voz.wav"));
    QVERIFY(!result.ok);
    QVERIFY(result.samples.isEmpty());
    QVERIFY(!result.error.isEmpty());
}

void AudioDecoderTest::aFileWithoutFramesIsEmptyOrUnreadable_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("WAV") << kWav16;
    QTest::newRow("WAV of floats") << int(SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    QTest::newRow("AIFF") << int(SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    QTest::newRow("AU") << int(SF_FORMAT_AU | SF_FORMAT_PCM_16);
}

void AudioDecoderTest::aFileWithoutFramesIsEmptyOrUnreadable()
{
    QFETCH(int, format);
    QVERIFY(SoundFile::write(path("vacía"), format, 44100, 2, {}));
    const AudioDecoder::Result result = AudioDecoder::decode(path("vacía"));
    QVERIFY(!result.ok);
    QCOMPARE(result.error, QString("archivo vacío o ilegible"));
    QVERIFY(result.samples.isEmpty());
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    QCOMPARE(AudioDecoder::decode(path("vacía")).error,
             QString("AudioDecoder: archivo vacío o ilegible"));
    QCoreApplication::removeTranslator(&translator);
}

void AudioDecoderTest::whatIsNoRegularFileIsRefusedWithoutWaiting_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no name") << "";
    QTest::newRow("a file that is not there") << "no está.wav";
    QTest::newRow("a folder that is not there") << "no/está.wav";
    QTest::newRow("a folder") << "carpeta.wav";
    QTest::newRow("a pipe that nobody writes to") << "tubo.wav";
    QTest::newRow("a link to a pipe") << "enlace a tubo.wav";
    QTest::newRow("a pipe's name and a null character") << QString("tubo.wav").append(QChar(0));
    QTest::newRow("a socket") << "socket.wav";
    QTest::newRow("a link to itself") << "lazo.wav";
    QTest::newRow("a link to nothing") << "roto.wav";
    QTest::newRow("a device without end") << "/dev/zero";
    QTest::newRow("a device of noise without end") << "/dev/urandom";
    QTest::newRow("a device without content") << "/dev/null";
    QTest::newRow("a name that no file system takes") << QString(10000, 'x');
}

void AudioDecoderTest::whatIsNoRegularFileIsRefusedWithoutWaiting()
{
    QFETCH(QString, name);
    QVERIFY(QDir(folder_->path()).mkdir("carpeta.wav"));
    QCOMPARE(mkfifo(qPrintable(path("tubo.wav")), 0600), 0);
    QVERIFY(QFile::link(path("tubo.wav"), path("enlace a tubo.wav")));
    QVERIFY(QFile::link(path("lazo.wav"), path("lazo.wav")));
    QVERIFY(QFile::link(path("nada"), path("roto.wav")));
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, qPrintable(path("socket.wav")), sizeof address.sun_path);
    QCOMPARE(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

    const AudioDecoder::Result result = AudioDecoder::decode(path(name));
    close(socket);
    QVERIFY(!result.ok);
    QVERIFY(result.samples.isEmpty());
    QVERIFY(!result.error.isEmpty());
}

void AudioDecoderTest::whatCannotBeOpenedIsToldInTheWordsOfLibsndfile_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a file that is not there") << "no está.wav";
    QTest::newRow("a folder") << "carpeta.wav";
    QTest::newRow("a text") << "texto.wav";
}

void AudioDecoderTest::whatCannotBeOpenedIsToldInTheWordsOfLibsndfile()
{
    QFETCH(QString, name);
    QVERIFY(QDir(folder_->path()).mkdir("carpeta.wav"));
    QVERIFY(writeBytes(path("texto.wav"), "Samba de mi esperanza"));
    SF_INFO info{};
    QVERIFY(!sf_open(qUtf8Printable(path(name)), SFM_READ, &info));
    const QString words = QString::fromUtf8(sf_strerror(nullptr));
    QVERIFY(!words.isEmpty());
    QCOMPARE(AudioDecoder::decode(path(name)).error, words);
}

void AudioDecoderTest::linksToRegularFilesAreFollowed()
{
    QVERIFY(SoundFile::writeExact(path("toma.wav"), ramp(64)));
    QVERIFY(QFile::link(path("toma.wav"), path("enlace.wav")));
    QCOMPARE(AudioDecoder::decode(path("enlace.wav")).samples, ramp(64));
}

void AudioDecoderTest::aLoneDashIsAFileName()
{
    // libsndfile itself takes "-" for the standard streams.
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder_->path()));
    const auto goBack = qScopeGuard([before] { QDir::setCurrent(before); });

    QVERIFY(SoundFile::writeExact(path("otra.wav"), ramp(64)));
    const int other = open(qPrintable(path("otra.wav")), O_RDONLY);
    const int captured = open(qPrintable(path("salida")), O_CREAT | O_RDWR, 0600);
    {
        const RedirectedStream input(STDIN_FILENO, other);
        QVERIFY(!AudioDecoder::decode("-").ok);
    }
    bool written = false;
    {
        const RedirectedStream output(STDOUT_FILENO, captured);
        written = AudioDecoder::writeWav("-", ramp(32), 44100, 1);
    }
    close(other);
    close(captured);
    QVERIFY(written);
    QCOMPARE(bytesOf(path("salida")), QByteArray());
    QCOMPARE(AudioDecoder::decode("-").samples.size(), 32);
}

void AudioDecoderTest::aPathIsNotCutAtANullCharacter()
{
    QVERIFY(SoundFile::writeExact(path("toma.wav"), ramp(64)));
    const QString longer = path("toma.wav") + QChar(0) + "otra.wav";
    QVERIFY(!AudioDecoder::decode(longer).ok);
    QCOMPARE(AudioDecoder::decode(longer).error, QString("archivo vacío o ilegible"));
    QVERIFY(!AudioDecoder::writeWav(longer, ramp(32), 44100, 1));
    QCOMPARE(AudioDecoder::decode(path("toma.wav")).samples, ramp(64));
}

void AudioDecoderTest::aTruncatedFileGivesItsBeginningOrNothing_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("WAV of 16 bits") << kWav16;
    QTest::newRow("WAV of 24 bits") << int(SF_FORMAT_WAV | SF_FORMAT_PCM_24);
    QTest::newRow("WAV of floats") << int(SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    QTest::newRow("AIFF") << int(SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    QTest::newRow("AU") << int(SF_FORMAT_AU | SF_FORMAT_PCM_16);
    QTest::newRow("FLAC") << int(SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
}

void AudioDecoderTest::aTruncatedFileGivesItsBeginningOrNothing()
{
    QFETCH(int, format);
    QVERIFY(SoundFile::write(path("entera"), format, 44100, 2, ramp(200)));
    const QList<float> whole = AudioDecoder::decode(path("entera")).samples;
    const QByteArray bytes = bytesOf(path("entera"));
    QCOMPARE(whole.size(), 200);
    for (qsizetype length = 0; length < bytes.size(); ++length) {
        QVERIFY(writeBytes(path("cortada"), bytes.first(length)));
        const AudioDecoder::Result result = AudioDecoder::decode(path("cortada"));
        QVERIFY2(isCoherent(result), qPrintable(QString::number(length)));
        QCOMPARE(result.samples, whole.first(std::min(result.samples.size(), whole.size())));
    }
}

void AudioDecoderTest::aHeaderThatClaimsMoreGivesWhatIsThere_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("at");
    QTest::addColumn<QByteArray>("claim");

    const QByteArray most = QByteArray(4, '\xFF');
    const int wavFloat = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    QTest::newRow("WAV of 4 GiB of data") << kWav16 << 40 << most;
    QTest::newRow("WAV of 2 GiB of data") << kWav16 << 40 << littleEndian(0x7FFFFFFE, 4);
    QTest::newRow("WAV whose RIFF is 4 GiB") << kWav16 << 4 << most;
    QTest::newRow("WAV whose RIFF is empty") << kWav16 << 4 << QByteArray(4, '\0');
    QTest::newRow("WAV of floats whose fact is 4 G frames") << wavFloat << 44 << most;
    QTest::newRow("AU of unknown length") << int(SF_FORMAT_AU | SF_FORMAT_PCM_16) << 8 << most;
    QTest::newRow("AU of 1 GiB") << int(SF_FORMAT_AU | SF_FORMAT_PCM_16) << 8
                                 << QByteArray("\x40\0\0\0", 4);
    // The number of samples of a FLAC file is the 36 bits from bit 4 of byte 21 on.
    QTest::newRow("FLAC of 64 G frames") << int(SF_FORMAT_FLAC | SF_FORMAT_PCM_16) << 22 << most;
}

void AudioDecoderTest::aHeaderThatClaimsMoreGivesWhatIsThere()
{
    QFETCH(int, format);
    QFETCH(int, at);
    QFETCH(QByteArray, claim);
    QVERIFY(SoundFile::write(path("toma"), format, 44100, 1, ramp(1000)));
    const QList<float> whole = AudioDecoder::decode(path("toma")).samples;
    QByteArray bytes = bytesOf(path("toma"));
    bytes.replace(at, claim.size(), claim);
    QVERIFY(writeBytes(path("toma"), bytes));

    const AudioDecoder::Result result = AudioDecoder::decode(path("toma"));
    QVERIFY2(result.ok, qPrintable(result.error));
    QCOMPARE(result.samples, whole);
}

void AudioDecoderTest::aFileBeyondTheLimitIsRefused_data()
{
    QTest::addColumn<int>("more");
    QTest::newRow("by one sample") << 1;
    QTest::newRow("by more than one read") << 65537;
}

void AudioDecoderTest::aFileBeyondTheLimitIsRefused()
{
    QFETCH(int, more);
    // A file of 8 bits with a hole for its silence.
    QVERIFY(SoundFile::write(path("enorme.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_U8, 44100, 1, {}));
    const auto samples = static_cast<quint64>(AudioDecoder::kMaxSamples + more);
    QFile file(path("enorme.wav"));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QCOMPARE(file.size(), 44);
    QVERIFY(file.resize(44 + static_cast<qint64>(samples)));
    QVERIFY(file.seek(4) && file.write(littleEndian(samples + 36, 4)) == 4);
    QVERIFY(file.seek(40) && file.write(littleEndian(samples, 4)) == 4);
    file.close();

    const AudioDecoder::Result result = AudioDecoder::decode(path("enorme.wav"));
    QVERIFY(!result.ok);
    QVERIFY(result.samples.isEmpty());
    QCOMPARE(result.error, QString("archivo vacío o ilegible"));
}

void AudioDecoderTest::damagedBytesNeverBreakTheReader_data()
{
    QTest::addColumn<int>("format");
    QTest::newRow("WAV of 16 bits") << kWav16;
    QTest::newRow("WAV of floats") << int(SF_FORMAT_WAV | SF_FORMAT_FLOAT);
    QTest::newRow("WAV of small differences") << int(SF_FORMAT_WAV | SF_FORMAT_IMA_ADPCM);
    QTest::newRow("RF64") << int(SF_FORMAT_RF64 | SF_FORMAT_PCM_16);
    QTest::newRow("W64") << int(SF_FORMAT_W64 | SF_FORMAT_PCM_16);
    QTest::newRow("AIFF") << int(SF_FORMAT_AIFF | SF_FORMAT_PCM_16);
    QTest::newRow("AU") << int(SF_FORMAT_AU | SF_FORMAT_PCM_16);
    QTest::newRow("CAF") << int(SF_FORMAT_CAF | SF_FORMAT_PCM_16);
    QTest::newRow("FLAC") << int(SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
    QTest::newRow("Ogg Vorbis") << int(SF_FORMAT_OGG | SF_FORMAT_VORBIS);
    QTest::newRow("MP3") << int(SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
}

void AudioDecoderTest::damagedBytesNeverBreakTheReader()
{
    QFETCH(int, format);
    QVERIFY(SoundFile::write(path("sana"), format, 44100, 2, ramp(4000)));
    // The MP3 library behind libsndfile speaks of every damage.
    const SilentErrors silent;
    const QByteArray sound = bytesOf(path("sana"));
    std::mt19937 generator(61);
    for (int round = 0; round < 150; ++round) {
        QByteArray damaged = sound;
        // Headers decide how much is read, so most of the damage goes there.
        const auto reach = static_cast<unsigned>(round % 3 == 0 ? damaged.size() : 128);
        for (int i = 0; i <= round % 5; ++i)
            damaged[static_cast<qsizetype>(generator() % reach)] = static_cast<char>(generator());
        QVERIFY(writeBytes(path("dañada"), damaged));
        const AudioDecoder::Result result = AudioDecoder::decode(path("dañada"));
        QVERIFY2(isCoherent(result), qPrintable(QString::number(round)));
        QVERIFY(AudioDecoder::toMono(result).size() <= result.samples.size());
    }
}

void AudioDecoderTest::randomBytesBehindAnySignatureNeverBreakTheReader()
{
    const QList<QByteArray> signatures{"RIFF....WAVEfmt ",
                                       "RIFX....WAVEfmt ",
                                       "RF64....WAVEds64",
                                       "FORM....AIFFCOMM",
                                       "FORM....AIFCCOMM",
                                       "FORM....8SVXVHDR",
                                       ".snd",
                                       "caff",
                                       "fLaC",
                                       "OggS",
                                       "ID3",
                                       "\xFF\xFB",
                                       "Creative Voice File\x1A",
                                       "riff\x2E\x91\xCF\x11",
                                       "NIST_1A",
                                       "MAT4",
                                       "PVF1\n",
                                       "2BIT",
                                       "\x64\xA3\x01",
                                       "Extended Instrument: "};
    const SilentErrors silent;
    std::mt19937 generator(62);
    for (int round = 0; round < 1000; ++round) {
        QByteArray bytes = signatures[round % signatures.size()];
        const auto length = static_cast<qsizetype>(generator() % 400);
        while (bytes.size() < length)
            bytes.append(static_cast<char>(generator()));
        QVERIFY(writeBytes(path("azar"), bytes));
        QVERIFY2(isCoherent(AudioDecoder::decode(path("azar"))), bytes.toHex().constData());
    }
}

void AudioDecoderTest::bytesOfATinyFile_data()
{
    QTest::addColumn<QList<float>>("samples");
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("channels");
    QTest::addColumn<QByteArray>("bytes");
    using Samples = QList<float>;

    // Sizes, format 1 (PCM), channels, rate, bytes a second, bytes a frame, 16 bits, data.
    QTest::newRow("three stereo frames at 44100 Hz")
        << Samples{0.0F, 1.0F, -1.0F, 0.5F, 1.0F / 32767, -0.25F} << 44100 << 2
        << QByteArray::fromHex("52494646 30000000 57415645 666d7420 10000000 0100 0200"
                               "44ac0000 10b10200 0400 1000 64617461 0c000000"
                               "0000 ff7f 0180 0040 0100 00e0");
    QTest::newRow("two mono frames at 48000 Hz")
        << Samples{-0.5F, 0.125F} << 48000 << 1
        << QByteArray::fromHex("52494646 28000000 57415645 666d7420 10000000 0100 0100"
                               "80bb0000 00770100 0200 1000 64617461 04000000"
                               "00c0 0010");
    QTest::newRow("no frames make a valid empty file")
        << Samples{} << 44100 << 1
        << QByteArray::fromHex("52494646 24000000 57415645 666d7420 10000000 0100 0100"
                               "44ac0000 88580100 0200 1000 64617461 00000000");
}

void AudioDecoderTest::bytesOfATinyFile()
{
    QFETCH(QList<float>, samples);
    QFETCH(int, sampleRate);
    QFETCH(int, channels);
    QFETCH(QByteArray, bytes);
    for (const Way way : kWays) {
        QVERIFY(writeIn(way, path("toma.wav"), samples, sampleRate, channels));
        QCOMPARE(bytesOf(path("toma.wav")).toHex(' '), bytes.toHex(' '));
    }
}

void AudioDecoderTest::writtenFilesReadBackWithinHalfAStep_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("channels");
    QTest::newRow("a mix") << 44100 << 2;
    QTest::newRow("a take at the rate of a telephone") << 8000 << 1;
    QTest::newRow("a take at a high rate") << 192000 << 1;
    QTest::newRow("a take at an odd rate") << 44099 << 1;
    QTest::newRow("eight channels") << 48000 << 8;
    QTest::newRow("one sample a second") << 1 << 1;
}

void AudioDecoderTest::writtenFilesReadBackWithinHalfAStep()
{
    QFETCH(int, sampleRate);
    QFETCH(int, channels);
    const QList<float> samples = Tones::noise(2400 * channels, 63, 1.0);
    for (const Way way : kWays) {
        QVERIFY(writeIn(way, path("toma.wav"), samples, sampleRate, channels));
        const AudioDecoder::Result result = AudioDecoder::decode(path("toma.wav"));
        QVERIFY(result.ok);
        QCOMPARE(result.sampleRate, sampleRate);
        QCOMPARE(result.channels, channels);
        // Written as multiples of 1/32767, read as multiples of 1/32768.
        QVERIFY(Tones::largestDifference(result.samples, samples) <= 0.5 / 32767 + 1.0 / 32768);
    }
}

void AudioDecoderTest::samplesBeyondFullScaleAreHeldThere_data()
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    QTest::addColumn<float>("sample");
    QTest::addColumn<int>("written");
    QTest::newRow("full scale") << 1.0F << 32767;
    QTest::newRow("full scale downward") << -1.0F << -32767;
    QTest::newRow("a little beyond") << 1.0001F << 32767;
    QTest::newRow("a fifth beyond") << 1.2F << 32767;
    QTest::newRow("a fifth beyond, downward") << -1.2F << -32767;
    QTest::newRow("twice full scale") << 2.0F << 32767;
    QTest::newRow("the largest number") << std::numeric_limits<float>::max() << 32767;
    QTest::newRow("infinity") << kInfinity << 32767;
    QTest::newRow("minus infinity") << -kInfinity << -32767;
}

void AudioDecoderTest::samplesBeyondFullScaleAreHeldThere()
{
    QFETCH(float, sample);
    QFETCH(int, written);
    QList<float> samples(200000, 0.5F);
    const QList<qsizetype> places{0, 65535, 65536, 131071, 131072, 199999};
    for (const qsizetype place : places)
        samples[place] = sample;
    QVERIFY(AudioDecoder::writeWav(path("toma.wav"), samples, 44100, 2));
    const QList<int> read = WavFile::read(bytesOf(path("toma.wav"))).samples;
    QCOMPARE(read.size(), samples.size());
    for (const qsizetype place : places)
        QCOMPARE(read.at(place), written);
    // 0.5 * 32767 lies between two steps and goes to the even one.
    QCOMPARE(read.count(16384), samples.size() - places.size());
}

void AudioDecoderTest::loudMusicIsNotTorn()
{
    constexpr int kOgg = SF_FORMAT_OGG | SF_FORMAT_VORBIS;
    QVERIFY(SoundFile::canWrite(kOgg));
    // Music mastered to full scale: its peaks are cut flat, and coding throws them beyond.
    QList<float> music = Tones::sine(440.0, 44100, 44100, 3.0);
    for (float& sample : music)
        sample = std::clamp(sample, -1.0F, 1.0F);
    QVERIFY(SoundFile::write(path("fuerte.ogg"), kOgg, 44100, 1, music));
    const AudioDecoder::Result loud = AudioDecoder::decode(path("fuerte.ogg"));
    QVERIFY2(std::ranges::max(loud.samples) > 1.01F, "the source itself");

    QVERIFY(AudioDecoder::writeWav(path("fuerte.wav"), loud.samples, loud.sampleRate, 1));
    const QList<float> written = AudioDecoder::decode(path("fuerte.wav")).samples;
    QCOMPARE(written.size(), loud.samples.size());
    for (qsizetype i = 0; i < written.size(); ++i)
        QVERIFY(std::abs(written.at(i) - std::clamp(loud.samples.at(i), -1.0F, 1.0F)) < 1e-4F);
}

void AudioDecoderTest::samplesBehindTheLastWholeFrameAreLeftOut()
{
    QVERIFY(AudioDecoder::writeWav(path("toma.wav"), ramp(5), 44100, 2));
    QCOMPARE(AudioDecoder::decode(path("toma.wav")).samples.size(), 4);
}

void AudioDecoderTest::aShorterFileReplacesALongerOne()
{
    for (const Way way : kWays) {
        QVERIFY(writeIn(way, path("toma.wav"), ramp(5000), 44100, 1));
        QVERIFY(writeIn(way, path("toma.wav"), ramp(50), 44100, 1));
        QCOMPARE(bytesOf(path("toma.wav")).size(), 44 + 100);
    }
}

void AudioDecoderTest::whatCannotBeWrittenGivesFalse_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("channels");
    QTest::newRow("no name") << "" << 44100 << 1;
    QTest::newRow("a folder that is not there") << "no/está.wav" << 44100 << 1;
    QTest::newRow("a folder") << "." << 44100 << 1;
    QTest::newRow("a file taken for a folder") << "archivo/toma.wav" << 44100 << 1;
    QTest::newRow("a device that is always full") << "/dev/full" << 44100 << 1;
    QTest::newRow("a name that no file system takes") << QString(10000, 'x') << 44100 << 1;
    QTest::newRow("no channels") << "toma.wav" << 44100 << 0;
    QTest::newRow("a negative number of channels") << "toma.wav" << 44100 << -1;
    QTest::newRow("more channels than a file holds") << "toma.wav" << 44100 << 5000;
    QTest::newRow("no sample rate") << "toma.wav" << 0 << 1;
    QTest::newRow("a negative sample rate") << "toma.wav" << -44100 << 1;
}

void AudioDecoderTest::whatCannotBeWrittenGivesFalse()
{
    QFETCH(QString, name);
    QFETCH(int, sampleRate);
    QFETCH(int, channels);
    QVERIFY(writeBytes(path("archivo"), "x"));
    for (const Way way : kWays) {
        // A file could take the place of a device.
        if (way == Way::Replacing && name.startsWith("/dev/"))
            continue;
        QVERIFY(!writeIn(way, path(name), ramp(1000), sampleRate, channels));
        QVERIFY(!writeIn(way, path(name), {}, sampleRate, channels));
    }
}

void AudioDecoderTest::aDiskThatFillsUpGivesFalse_data()
{
    QTest::addColumn<int>("room");
    QTest::newRow("no room at all") << 0;
    QTest::newRow("room for half a header") << 20;
    QTest::newRow("room for the header") << 44;
    QTest::newRow("room for some of the samples") << 20000;
    QTest::newRow("room for all but one byte") << 44 + 2 * 50000 - 1;
}

void AudioDecoderTest::aDiskThatFillsUpGivesFalse()
{
    QFETCH(int, room);
    const QList<float> samples = ramp(50000);
    const QString target = path("toma.wav");
    for (const Way way : kWays) {
        bool written = true;
        {
            const FullDisk disk(static_cast<rlim_t>(room));
            written = writeIn(way, target, samples, 44100, 1);
        }
        QVERIFY(!written);
    }
}

void AudioDecoderTest::whatCannotBeReplacedStaysAsItWas()
{
    QVERIFY(AudioDecoder::writeWav(path("toma.wav"), ramp(5000), 44100, 1));
    const QByteArray before = bytesOf(path("toma.wav"));
    QVERIFY(!AudioDecoder::replaceWav(path("toma.wav"), ramp(50), 44100, 0));
    {
        const FullDisk disk(20000);
        (void)AudioDecoder::replaceWav(path("toma.wav"), ramp(50000), 44100, 1);
    }
    QCOMPARE(bytesOf(path("toma.wav")), before);
    QCOMPARE(QDir(folder_->path()).entryList(QDir::Files), QStringList{"toma.wav"});
}

void AudioDecoderTest::aDeviceThatFailsOnceGivesFalse()
{
    const auto write = [](UnsteadyDevice& device) {
        return device.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
               AudioDecoder::writeWav(device, ramp(100), 44100, 1);
    };
    UnsteadyDevice steady(-1);
    QVERIFY(write(steady));
    QVERIFY(steady.calls() > 3);
    for (int call = 0; call < steady.calls(); ++call) {
        UnsteadyDevice device(call);
        QVERIFY2(!write(device), qPrintable(QString::number(call)));
    }
}

VELTA_GUILESS_TEST(AudioDecoderTest)

} // namespace AudioDecoderTests

#include "AudioDecoderTest.moc"
