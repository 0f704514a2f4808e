#include "playback/VoiceMixer.h"

#include "model/Project.h"
#include "support/SoundFile.h"
#include "support/TestProgram.h"
#include "support/Tones.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <memory>

namespace VoiceMixerTests {

/// Voices that are mixed on a thread of their own.
class VoiceMixerTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void withoutVoicesNothingIsWaitedFor();
    void theMixIsTheUncachedOne();
    void whatIsPreparedBecomesReady();
    void theMixIsKept();
    void theLastVoicesAskedForAreMixed();
    void changedVoicesAreMixedAnew();
    void theMixerMayGoWhileItMixes();

private:
    /// A project of one tuned voice of so many seconds.
    VoiceMix::Voices voice(double seconds, float volume = 0.8F);

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Project> project_;
};

void VoiceMixerTest::init()
{
    folder_ = std::make_unique<QTemporaryDir>();
    QVERIFY(folder_->isValid());
    project_ = std::make_unique<Project>();
}

VoiceMix::Voices VoiceMixerTest::voice(double seconds, float volume)
{
    const QString name = QString("%1.wav").arg(seconds);
    const QString path = QDir(folder_->path()).filePath(name);
    if (!QFile::exists(path))
        SoundFile::writeExact(path,
                              Tones::sine(450.0, 44100, static_cast<qsizetype>(seconds * 44100.0)));
    AudioClip clip;
    clip.audioFilePath = name;
    clip.tune = {.enabled = true, .intensity = 1.0F};
    project_->audioTracks = {{.name = "Voz", .volume = volume, .clips = {clip}}};
    return VoiceMix::voicesOf(*project_, folder_->path());
}

void VoiceMixerTest::withoutVoicesNothingIsWaitedFor()
{
    VoiceMixer mixer;
    QVERIFY(mixer.isReady({}));
    QVERIFY(mixer.mix({}).isEmpty());
}

void VoiceMixerTest::theMixIsTheUncachedOne()
{
    VoiceMixer mixer;
    const VoiceMix::Voices voices = voice(0.5);
    QVERIFY(!mixer.isReady(voices));
    const QList<float> mix = mixer.mix(voices);
    QVERIFY(mixer.isReady(voices));
    QCOMPARE(mix, VoiceMix::render(*project_, folder_->path(), 22050));
    QVERIFY(Tones::rms(mix) > 0.1);
}

void VoiceMixerTest::whatIsPreparedBecomesReady()
{
    VoiceMixer mixer;
    const VoiceMix::Voices voices = voice(0.5);
    mixer.prepare(voices);
    QTRY_VERIFY(mixer.isReady(voices));
    QCOMPARE(mixer.mix(voices), VoiceMix::render(*project_, folder_->path(), 22050));
}

void VoiceMixerTest::theMixIsKept()
{
    VoiceMixer mixer;
    const VoiceMix::Voices voices = voice(0.2);
    const QList<float> mix = mixer.mix(voices);
    mixer.prepare(voice(0.2));
    QVERIFY(mixer.isReady(voices));
    QCOMPARE(mixer.mix(voices).constData(), mix.constData());
}

void VoiceMixerTest::theLastVoicesAskedForAreMixed()
{
    VoiceMixer mixer;
    mixer.prepare(voice(20.0));
    mixer.prepare(voice(10.0));
    const VoiceMix::Voices last = voice(0.5);
    mixer.prepare(last);
    QCOMPARE(mixer.mix(last), VoiceMix::render(*project_, folder_->path(), 22050));
    // What was called off is mixed when it is asked for after all.
    const VoiceMix::Voices first = voice(20.0);
    QVERIFY(!mixer.isReady(first));
    QCOMPARE(mixer.mix(first).size(), 2 * 20 * 44100);
    QVERIFY(Tones::rms(mixer.mix(first).last(44100)) > 0.1);
}

void VoiceMixerTest::changedVoicesAreMixedAnew()
{
    VoiceMixer mixer;
    const double loud = Tones::rms(mixer.mix(voice(0.5, 0.8F)));
    const VoiceMix::Voices quiet = voice(0.5, 0.4F);
    QVERIFY(!mixer.isReady(quiet));
    QVERIFY(std::abs(Tones::rms(mixer.mix(quiet)) / loud - 0.5) < 1e-6);
    // A file that was replaced sounds as it is now.
    SoundFile::writeExact(QDir(folder_->path()).filePath("0.5.wav"), Tones::silence(1000));
    QCOMPARE(mixer.mix(voice(0.5, 0.4F)), Tones::silence(2000));
}

void VoiceMixerTest::theMixerMayGoWhileItMixes()
{
    const VoiceMix::Voices voices = voice(60.0);
    for (int i = 0; i < 5; ++i) {
        VoiceMixer mixer;
        mixer.prepare(voices);
        QTest::qSleep(i * 10);
    }
}

VELTA_GUILESS_TEST(VoiceMixerTest)

} // namespace VoiceMixerTests

#include "VoiceMixerTest.moc"
