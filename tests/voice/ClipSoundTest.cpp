#include "voice/ClipSound.h"

#include "support/SoundFile.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "voice/VoiceTuner.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace ClipSoundTests {

namespace {

constexpr qint64 kAll = qint64(1) << 40;
constexpr VoiceTuneSettings kTuned{.enabled = true, .intensity = 1.0F};
constexpr KeySignature kEMajor{.rootPitchClass = 4, .mode = KeyMode::Major};

/// Whether two lists are one and the same in memory: what was kept is shared, what is read anew is
/// not.
bool isShared(const ClipSound& a, const ClipSound& b)
{
    return a.samples.constData() == b.samples.constData();
}

bool setModified(const QString& path, const QDateTime& time)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite) &&
           file.setFileTime(time, QFileDevice::FileModificationTime);
}

} // namespace

/// What is read of clips, and what is kept of them.
class ClipSoundTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void aFileIsReadFromItsBeginning();
    void aFileThatCannotBeReadIsSilent_data();
    void aFileThatCannotBeReadIsSilent();
    void aTunedClipIsTuned();
    void theKeyIsHeededWithTuningOnly();

    void aClipIsReadOnce();
    void aClipInAnotherKeyIsTunedAnew();
    void anotherTuningIsAnotherSound();
    void aFileThatWasReplacedIsNoticed_data();
    void aFileThatWasReplacedIsNoticed();
    void aFileThatComesLaterIsNoticed();
    void moreOfALongFileIsReadWhenItIsAskedFor();
    void whatIsKeptIsWhatIsRead();
    void theOneAskedForLongestAgoIsDropped();
    void aClipThatIsTooLargeIsNotKeptAndDropsNothing();
    void clipsThatJustFitAreKept();
    void whatWasStoppedIsNotKept();

private:
    /// Writes a file and gives the source of a clip of it.
    ClipSource written(const QString& name, const QList<float>& samples,
                       const VoiceTuneSettings& tune = {}, const KeySignature& key = {})
    {
        const QString path = QDir(folder_->path()).filePath(name);
        return SoundFile::writeExact(path, samples) ? source(name, tune, key) : ClipSource();
    }

    ClipSource source(const QString& name, const VoiceTuneSettings& tune = {},
                      const KeySignature& key = {}) const
    {
        AudioClip clip;
        clip.audioFilePath = name;
        clip.tune = tune;
        return ClipSource::of(clip, folder_->path(), key);
    }

    std::unique_ptr<QTemporaryDir> folder_;
};

void ClipSoundTest::init()
{
    folder_ = std::make_unique<QTemporaryDir>();
    QVERIFY(folder_->isValid());
}

void ClipSoundTest::aFileIsReadFromItsBeginning()
{
    const QList<float> noise = Tones::noise(5000, 1);
    const ClipSource toma = written("toma.wav", noise);
    QCOMPARE(ClipSound::read(toma, kAll).samples, noise);
    QCOMPARE(ClipSound::read(toma, kAll).length, 5000);
    QCOMPARE(ClipSound::read(toma, 300).samples, noise.first(300));
    QCOMPARE(ClipSound::read(toma, 300).length, 5000);
}

void ClipSoundTest::aFileThatCannotBeReadIsSilent_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no file") << "nadie.wav";
    QTest::newRow("a folder") << ".";
    QTest::newRow("no name") << "";
}

void ClipSoundTest::aFileThatCannotBeReadIsSilent()
{
    QFETCH(QString, name);
    ClipCache cache;
    for (int i = 0; i < 2; ++i) {
        QVERIFY(cache.sound(source(name, kTuned), kAll).samples.isEmpty());
        QCOMPARE(cache.sound(source(name, kTuned), kAll).length, 0);
    }
}

void ClipSoundTest::aTunedClipIsTuned()
{
    const QList<float> voice = Tones::voice({.hz = 450.0}, 44100, 20000);
    const QList<float> tuned = VoiceTuner::tune(voice, 44100, kEMajor, kTuned);
    const ClipSource toma = written("toma.wav", voice, kTuned, kEMajor);
    QCOMPARE(ClipSound::read(toma, kAll).samples, tuned);
    QCOMPARE(ClipSound::read(toma, 7000).samples, tuned.first(7000));
    QVERIFY(tuned != voice);
}

void ClipSoundTest::theKeyIsHeededWithTuningOnly()
{
    QVERIFY(!written("toma.wav", Tones::noise(10, 1)).path.isEmpty());
    QVERIFY(source("toma.wav", {}, kEMajor) == source("toma.wav"));
    QVERIFY(source("toma.wav", kTuned, kEMajor) != source("toma.wav", kTuned));
    VoiceTuneSettings off = kTuned;
    off.enabled = false;
    QVERIFY(source("toma.wav", off, kEMajor) == source("toma.wav"));
}

void ClipSoundTest::aClipIsReadOnce()
{
    ClipCache cache;
    const ClipSource toma = written("toma.wav", Tones::voice({}, 44100, 9000), kTuned);
    const ClipSound first = cache.sound(toma, kAll);
    QCOMPARE(first.length, 9000);
    QVERIFY(isShared(cache.sound(toma, kAll), first));
    QVERIFY(isShared(cache.sound(toma, 10), first));
    // It is the source that tells what the file holds, not the file.
    QVERIFY(QFile::remove(toma.path));
    QVERIFY(isShared(cache.sound(toma, kAll), first));
}

void ClipSoundTest::aClipInAnotherKeyIsTunedAnew()
{
    ClipCache cache;
    const QList<float> voice = Tones::voice({.hz = 350.0}, 44100, 9000);
    const ClipSound inC = cache.sound(written("toma.wav", voice, kTuned), kAll);
    const ClipSound inE = cache.sound(source("toma.wav", kTuned, kEMajor), kAll);
    QVERIFY(inC.samples != inE.samples);
    QVERIFY(isShared(cache.sound(source("toma.wav", kTuned), kAll), inC));
    QVERIFY(isShared(cache.sound(source("toma.wav", kTuned, kEMajor), kAll), inE));
}

void ClipSoundTest::anotherTuningIsAnotherSound()
{
    ClipCache cache;
    const QList<float> voice = Tones::voice({.hz = 450.0}, 44100, 9000);
    const ClipSound whole = cache.sound(written("toma.wav", voice, kTuned), kAll);
    VoiceTuneSettings half = kTuned;
    half.intensity = 0.5F;
    QCOMPARE(cache.sound(source("toma.wav", half), kAll).samples,
             VoiceTuner::tune(voice, 44100, {}, half));
    QCOMPARE(cache.sound(source("toma.wav"), kAll).samples, voice);
    QVERIFY(isShared(cache.sound(source("toma.wav", kTuned), kAll), whole));
}

void ClipSoundTest::aFileThatWasReplacedIsNoticed_data()
{
    QTest::addColumn<int>("samples");
    QTest::addColumn<int>("msLater");
    QTest::newRow("by a longer one at the same moment") << 6000 << 0;
    QTest::newRow("by one of the same size, later") << 5000 << 1;
    QTest::newRow("by one of the same size, from earlier") << 5000 << -3600000;
}

void ClipSoundTest::aFileThatWasReplacedIsNoticed()
{
    QFETCH(int, samples);
    QFETCH(int, msLater);
    const QDateTime moment(QDate(2026, 3, 1), QTime(10, 0), Qt::UTC);
    ClipCache cache;
    QVERIFY(!written("toma.wav", Tones::noise(5000, 1)).path.isEmpty());
    QVERIFY(setModified(source("toma.wav").path, moment));
    const ClipSound before = cache.sound(source("toma.wav"), kAll);
    const QList<float> other = Tones::noise(samples, 2);
    QVERIFY(!written("toma.wav", other).path.isEmpty());
    QVERIFY(setModified(source("toma.wav").path, moment.addMSecs(msLater)));
    QCOMPARE(cache.sound(source("toma.wav"), kAll).samples, other);
}

void ClipSoundTest::aFileThatComesLaterIsNoticed()
{
    ClipCache cache;
    QVERIFY(cache.sound(source("toma.wav"), kAll).samples.isEmpty());
    const QList<float> noise = Tones::noise(500, 1);
    QCOMPARE(cache.sound(written("toma.wav", noise), kAll).samples, noise);
}

void ClipSoundTest::moreOfALongFileIsReadWhenItIsAskedFor()
{
    // What is kept is cut at whole minutes.
    constexpr qsizetype kMinute = 60 * 44100;
    const QList<float> noise = Tones::noise(kMinute + 1000, 1);
    ClipCache cache;
    const ClipSource toma = written("toma.wav", noise);
    const ClipSound little = cache.sound(toma, 100);
    QCOMPARE(little.length, noise.size());
    QCOMPARE(little.samples, noise.first(kMinute));
    QVERIFY(isShared(cache.sound(toma, kMinute), little));
    const ClipSound all = cache.sound(toma, kMinute + 1);
    QCOMPARE(all.samples, noise);
    QVERIFY(isShared(cache.sound(toma, kAll), all));
    QVERIFY(isShared(cache.sound(toma, 100), all));
}

void ClipSoundTest::whatIsKeptIsWhatIsRead()
{
    ClipCache cache;
    const ClipSource toma = written(
        "toma.wav", Tones::voice({.hz = 233.0, .vibratoCents = 60.0}, 44100, 30000), kTuned);
    for (const qint64 frames : {qint64(1), qint64(5000), qint64(29999), qint64(30000), kAll}) {
        const ClipSound read = ClipSound::read(toma, frames);
        for (int i = 0; i < 2; ++i) {
            const ClipSound kept = cache.sound(toma, frames);
            QCOMPARE(kept.length, read.length);
            QCOMPARE(kept.samples.first(read.samples.size()), read.samples);
        }
    }
}

void ClipSoundTest::theOneAskedForLongestAgoIsDropped()
{
    // Room for two clips of 10,000 samples and the spare room of their lists, not for three.
    ClipCache cache(2 * 70000);
    const ClipSource a = written("a.wav", Tones::noise(10000, 1));
    const ClipSource b = written("b.wav", Tones::noise(10000, 2));
    const ClipSource c = written("c.wav", Tones::noise(10000, 3));
    const ClipSound soundOfA = cache.sound(a, kAll);
    const ClipSound soundOfB = cache.sound(b, kAll);
    QVERIFY(isShared(cache.sound(a, kAll), soundOfA));
    const ClipSound soundOfC = cache.sound(c, kAll);
    QVERIFY(isShared(cache.sound(a, kAll), soundOfA));
    QVERIFY(isShared(cache.sound(c, kAll), soundOfC));
    QVERIFY(!isShared(cache.sound(b, kAll), soundOfB));
}

void ClipSoundTest::aClipThatIsTooLargeIsNotKeptAndDropsNothing()
{
    ClipCache cache(70000);
    const ClipSource small = written("a.wav", Tones::noise(10000, 1));
    const ClipSource large = written("b.wav", Tones::noise(20000, 2));
    const ClipSound soundOfSmall = cache.sound(small, kAll);
    const ClipSound soundOfLarge = cache.sound(large, kAll);
    QCOMPARE(soundOfLarge.samples, Tones::noise(20000, 2));
    QVERIFY(!isShared(cache.sound(large, kAll), soundOfLarge));
    QVERIFY(isShared(cache.sound(small, kAll), soundOfSmall));
}

void ClipSoundTest::clipsThatJustFitAreKept()
{
    const ClipSource a = written("a.wav", Tones::noise(10000, 1));
    const ClipSource b = written("b.wav", Tones::noise(20000, 2));
    const auto bytes = [](const ClipSound& sound) {
        return qint64(sizeof(float)) * sound.samples.capacity();
    };
    const qint64 ofA = bytes(ClipSound::read(a, kAll));
    const qint64 ofBoth = ofA + bytes(ClipSound::read(b, kAll));

    ClipCache one(ofA);
    const ClipSound alone = one.sound(a, kAll);
    QVERIFY(isShared(one.sound(a, kAll), alone));

    ClipCache both(ofBoth);
    const ClipSound first = both.sound(a, kAll);
    const ClipSound second = both.sound(b, kAll);
    QVERIFY(isShared(both.sound(a, kAll), first));
    QVERIFY(isShared(both.sound(b, kAll), second));

    ClipCache almost(ofBoth - 1);
    const ClipSound dropped = almost.sound(a, kAll);
    const ClipSound kept = almost.sound(b, kAll);
    QVERIFY(isShared(almost.sound(b, kAll), kept));
    QVERIFY(!isShared(almost.sound(a, kAll), dropped));
}

void ClipSoundTest::whatWasStoppedIsNotKept()
{
    ClipCache cache;
    const QList<float> voice = Tones::voice({.hz = 450.0}, 44100, 20000);
    const ClipSource toma = written("toma.wav", voice, kTuned);
    std::stop_source stop;
    stop.request_stop();
    cache.sound(toma, kAll, stop.get_token());
    QCOMPARE(cache.sound(toma, kAll).samples, VoiceTuner::tune(voice, 44100, {}, kTuned));
}

VELTA_GUILESS_TEST(ClipSoundTest)

} // namespace ClipSoundTests

#include "ClipSoundTest.moc"
