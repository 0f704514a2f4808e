#include "voice/VoiceMix.h"

#include "model/Project.h"
#include "support/Files.h"
#include "support/SeededRandom.h"
#include "support/SoundFile.h"
#include "support/TestProgram.h"
#include "support/Tones.h"
#include "voice/AudioDecoder.h"
#include "voice/Resampled.h"
#include "voice/VoiceTuner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <sys/stat.h>

namespace VoiceMixTests {

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kLargest = std::numeric_limits<float>::max();

/// At the 120 of a new project a beat has 22050 frames.
constexpr double kBeatFrames = 22050.0;

constexpr double beatsOf(double frames)
{
    return frames / kBeatFrames;
}

AudioClip clip(const QString& file, double offsetBeats = 0.0)
{
    AudioClip result;
    result.audioFilePath = file;
    result.offsetBeats = offsetBeats;
    return result;
}

/// A track that leaves its clips as loud as they are.
AudioTrack track(const QList<AudioClip>& clips)
{
    AudioTrack result;
    result.volume = 1.0F;
    result.clips = clips;
    return result;
}

QList<float> constant(qsizetype count, float value = 1.0F)
{
    return QList<float>(count, value);
}

QList<float> ramp(qsizetype count)
{
    QList<float> samples(count);
    for (qsizetype i = 0; i < count; ++i)
        samples[i] = static_cast<float>(i + 1);
    return samples;
}

/// One side of an interleaved mix.
QList<float> channel(const QList<float>& mix, int side)
{
    QList<float> samples;
    for (qsizetype i = side; i < mix.size(); i += 2)
        samples.append(mix[i]);
    return samples;
}

bool isSilent(const QList<float>& samples)
{
    return std::ranges::all_of(samples, [](float sample) { return sample == 0.0F; });
}

bool allFinite(const QList<float>& samples)
{
    return std::ranges::all_of(samples, [](float sample) { return std::isfinite(sample); });
}

/// Adds a clip to one side of a mix in its plainest form, every sample asked whether it lies in
/// the mix.
void addPlainClip(const AudioClip& clip, float volume, int bpm, const QList<float>& mono,
                  QList<float>& side)
{
    const double beatFrames = 2646000.0 / std::max(bpm, 1);
    long long n = mono.size();
    if (clip.durationBeats > 0)
        n = std::min(n, static_cast<long long>(clip.durationBeats * beatFrames));
    const float gain = clip.gain * volume;
    const auto start = static_cast<long long>(clip.offsetBeats * beatFrames);
    const auto fadeIn = static_cast<long long>(clip.fadeInSeconds * 44100.0F);
    const auto fadeOut = static_cast<long long>(clip.fadeOutSeconds * 44100.0F);
    for (long long i = 0; i < n; ++i) {
        const long long p = start + i;
        if (p < 0 || p >= side.size())
            continue;
        float s = mono[i] * gain;
        if (i < fadeIn)
            s *= static_cast<float>(i) / static_cast<float>(fadeIn);
        if (fadeOut > 0 && i > n - fadeOut)
            s *= static_cast<float>(n - i) / static_cast<float>(fadeOut);
        side[p] += s;
    }
}

/// Up to three tracks of up to three clips of the takes "0.wav" to "3.wav", around the first 3000
/// frames.
QList<AudioTrack> randomVoices(SeededRandom& random, int bpm)
{
    const double beatFrames = 2646000.0 / std::max(bpm, 1);
    QList<AudioTrack> voices(random.between(0, 3));
    for (AudioTrack& voice : voices) {
        voice.volume = static_cast<float>(random.between(0.0, 1.0));
        voice.clips.resize(random.between(0, 3));
        for (AudioClip& placed : voice.clips) {
            placed.audioFilePath = QString("%1.wav").arg(random.between(0, 3));
            placed.offsetBeats = random.between(-3000.0, 3500.0) / beatFrames;
            placed.durationBeats = random.between(-500.0, 3000.0) / beatFrames;
            placed.gain = static_cast<float>(random.between(-1.0, 2.0));
            placed.fadeInSeconds = static_cast<float>(random.between(-0.01, 0.05));
            placed.fadeOutSeconds = static_cast<float>(random.between(-0.01, 0.05));
        }
    }
    return voices;
}

/// Linear interpolation in its plainest form; behind the last sample that sample is held.
QList<float> plainlyResampled(const QList<float>& mono, int sampleRate)
{
    const double ratio = sampleRate / 44100.0;
    const int count = static_cast<int>(std::floor(static_cast<double>(mono.size()) / ratio)) - 1;
    QList<float> out;
    for (int i = 0; i < count; ++i) {
        const double position = i * ratio;
        const int k = static_cast<int>(position);
        const auto f = static_cast<float>(position - k);
        const float next = k + 1 < mono.size() ? mono[k + 1] : mono[k];
        out.append((1 - f) * mono[k] + f * next);
    }
    return out;
}

} // namespace

class VoiceMixTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void alwaysTwiceTheFrames_data();
    void alwaysTwiceTheFrames();
    void withoutVoiceTracksThereIsSilence();
    void bothSidesHoldTheSame();
    void equalProjectsGiveEqualMixes();

    void aClipStartsAtItsBeat_data();
    void aClipStartsAtItsBeat();
    void aStartBetweenTwoFramesIsCutTowardZero_data();
    void aStartBetweenTwoFramesIsCutTowardZero();
    void onlyThePartInsideTheMixIsHeard_data();
    void onlyThePartInsideTheMixIsHeard();
    void durationCutsTheClip_data();
    void durationCutsTheClip();

    void gainAndVolumeMultiply_data();
    void gainAndVolumeMultiply();
    void overlappingClipsAreAddedWithoutLimiting();
    void channelsOfAFileAreFolded_data();
    void channelsOfAFileAreFolded();

    void muteAndSolo_data();
    void muteAndSolo();
    void aSoloOnANoteTrackSilencesTheVoices_data();
    void aSoloOnANoteTrackSilencesTheVoices();

    void fades_data();
    void fades();
    void fadesCountFromTheClipsStartAndNotTheMixs();

    void resampledClipsKeepTheirPitch_data();
    void resampledClipsKeepTheirPitch();
    void resampledClipsAreOneSampleShort_data();
    void resampledClipsAreOneSampleShort();
    void theLastSampleIsHeldBelowTheMixingRate_data();
    void theLastSampleIsHeldBelowTheMixingRate();
    void resamplingHasTheBitsOfThePlainForm();
    void resamplingFromNoRateGivesNothing_data();
    void resamplingFromNoRateGivesNothing();

    void tuningHappensAtTheMixingRate_data();
    void tuningHappensAtTheMixingRate();
    void tuningWithoutStrengthLeavesTheClip_data();
    void tuningWithoutStrengthLeavesTheClip();
    void whatIsHeardIsTunedAsTheWholeTakeWouldBe();
    void tuningLeavesTheFileAsItWas();
    void anotherKeyChangesTheNextMix();
    void theKeyDoesNotMatterWithoutTuning();

    void filesAreFoundFromTheProjectsFolder_data();
    void filesAreFoundFromTheProjectsFolder();
    void whatCannotBeReadIsLeftOut_data();
    void whatCannotBeReadIsLeftOut();

    void theBitsAreThoseOfThePlainSum();
    void hostileClipFieldsGiveAFiniteMix_data();
    void hostileClipFieldsGiveAFiniteMix();
    void aPlaceThatIsNoNumberLeavesTheClipOut_data();
    void aPlaceThatIsNoNumberLeavesTheClipOut();
    void hostileTemposGiveAFiniteMix_data();
    void hostileTemposGiveAFiniteMix();
    void hostileSamplesGiveAFiniteMix_data();
    void hostileSamplesGiveAFiniteMix();
    void sumsBeyondTheLargestNumberStayFinite();
    void anyCombinationOfHostileFieldsGivesAFiniteMix();

    void theKeptMixIsTheUncachedOne();
    void theKeptMixEndsWithTheLastClip_data();
    void theKeptMixEndsWithTheLastClip();
    void whatIsHeardDecidesWhetherVoicesAreEqual();
    void aPlaceThatIsNotFiniteIsNoVoice();
    void aStoppedMixIsEmpty();

private:
    QString path(const QString& name) const { return QDir(folder_->path()).filePath(name); }

    /// The mix of one clip of a file of these samples, left side.
    QList<float> heard(const QList<float>& samples, AudioClip clip, qint64 frames)
    {
        if (!SoundFile::writeExact(path("toma.wav"), samples))
            return {};
        clip.audioFilePath = "toma.wav";
        project_->audioTracks = {track({clip})};
        return channel(VoiceMix::render(*project_, folder_->path(), frames), 0);
    }

    std::unique_ptr<QTemporaryDir> folder_;
    std::unique_ptr<Project> project_;
};

void VoiceMixTest::init()
{
    folder_ = std::make_unique<QTemporaryDir>();
    project_ = std::make_unique<Project>();
    QVERIFY(folder_->isValid());
}

void VoiceMixTest::alwaysTwiceTheFrames_data()
{
    QTest::addColumn<qint64>("frames");
    QTest::addColumn<qsizetype>("samples");
    QTest::newRow("none") << qint64(0) << qsizetype(0);
    QTest::newRow("one") << qint64(1) << qsizetype(2);
    QTest::newRow("fewer than the clip has") << qint64(50) << qsizetype(100);
    QTest::newRow("as many as the clip has") << qint64(100) << qsizetype(200);
    QTest::newRow("more than the clip has") << qint64(88200) << qsizetype(176400);
    QTest::newRow("a negative number") << qint64(-1) << qsizetype(0);
    QTest::newRow("the lowest number") << std::numeric_limits<qint64>::min() << qsizetype(0);
    QTest::newRow("beyond the limit") << VoiceMix::kMaxFrames + 1 << qsizetype(0);
    QTest::newRow("the highest number") << std::numeric_limits<qint64>::max() << qsizetype(0);
}

void VoiceMixTest::alwaysTwiceTheFrames()
{
    QFETCH(qint64, frames);
    QVERIFY(SoundFile::writeExact(path("toma.wav"), ramp(100)));
    QTEST(VoiceMix::render(*project_, folder_->path(), frames).size(), "samples");
    project_->audioTracks = {track({clip("toma.wav")})};
    QTEST(VoiceMix::render(*project_, folder_->path(), frames).size(), "samples");
}

void VoiceMixTest::withoutVoiceTracksThereIsSilence()
{
    project_->tracks = {Track()};
    QCOMPARE(VoiceMix::render(*project_, folder_->path(), 500), Tones::silence(1000));
    project_->audioTracks = {track({}), track({})};
    QCOMPARE(VoiceMix::render(*project_, folder_->path(), 500), Tones::silence(1000));
}

void VoiceMixTest::bothSidesHoldTheSame()
{
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::noise(3000, 1)));
    project_->audioTracks = {track({clip("toma.wav"), clip("toma.wav", 0.01)})};
    const QList<float> mix = VoiceMix::render(*project_, folder_->path(), 4000);
    QVERIFY(!isSilent(mix));
    QCOMPARE(channel(mix, 0), channel(mix, 1));
}

void VoiceMixTest::equalProjectsGiveEqualMixes()
{
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::voice({}, 44100, 6000)));
    AudioClip tuned = clip("toma.wav");
    tuned.tune = {.enabled = true, .intensity = 0.7F};
    project_->audioTracks = {track({tuned})};
    const QList<AudioTrack> before = project_->audioTracks;
    const QList<float> mix = VoiceMix::render(*project_, folder_->path(), 7000);
    QCOMPARE(VoiceMix::render(*project_, folder_->path(), 7000), mix);
    QVERIFY(project_->audioTracks == before);
}

void VoiceMixTest::aClipStartsAtItsBeat_data()
{
    QTest::addColumn<int>("bpm");
    QTest::addColumn<double>("offset");
    QTest::addColumn<qsizetype>("start");
    QTest::newRow("the start of the song") << 120 << 0.0 << qsizetype(0);
    QTest::newRow("beat 1 at 120") << 120 << 1.0 << qsizetype(22050);
    QTest::newRow("beat 2.5 at 120") << 120 << 2.5 << qsizetype(55125);
    QTest::newRow("beat 1 at 60") << 60 << 1.0 << qsizetype(44100);
    QTest::newRow("beat 1 at 90") << 90 << 1.0 << qsizetype(29400);
    QTest::newRow("beat 0.01 at a tempo of 1") << 1 << 0.01 << qsizetype(26460);
    QTest::newRow("a tempo of 0 counts as 1") << 0 << 0.01 << qsizetype(26460);
    QTest::newRow("a negative tempo counts as 1") << -120 << 0.01 << qsizetype(26460);
}

void VoiceMixTest::aClipStartsAtItsBeat()
{
    QFETCH(int, bpm);
    QFETCH(double, offset);
    QFETCH(qsizetype, start);
    project_->bpm = bpm;
    QCOMPARE(heard(ramp(100), clip({}, offset), 60000),
             Tones::silence(start) + ramp(100) + Tones::silence(60000 - 100 - start));
}

void VoiceMixTest::aStartBetweenTwoFramesIsCutTowardZero_data()
{
    QTest::addColumn<double>("frames");
    QTest::addColumn<float>("atZero");
    QTest::addColumn<float>("atOne");
    QTest::newRow("0.9 frames in") << 0.9 << 1.0F << 2.0F;
    QTest::newRow("1.5 frames in") << 1.5 << 0.0F << 1.0F;
    QTest::newRow("0.9 frames before the start") << -0.9 << 1.0F << 2.0F;
    QTest::newRow("1.5 frames before the start") << -1.5 << 2.0F << 3.0F;
}

void VoiceMixTest::aStartBetweenTwoFramesIsCutTowardZero()
{
    QFETCH(double, frames);
    const QList<float> mix = heard(ramp(10), clip({}, beatsOf(frames)), 20);
    QTEST(mix[0], "atZero");
    QTEST(mix[1], "atOne");
}

void VoiceMixTest::onlyThePartInsideTheMixIsHeard_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<qsizetype>("silentBefore");
    QTest::addColumn<qsizetype>("firstSample");
    QTest::addColumn<qsizetype>("heardSamples");

    // A clip of 100 samples in a mix of 60 frames.
    QTest::newRow("from the start past the end")
        << 0.0 << qsizetype(0) << qsizetype(0) << qsizetype(60);
    QTest::newRow("past the end") << 20.5 << qsizetype(20) << qsizetype(0) << qsizetype(40);
    QTest::newRow("on the last frame") << 59.5 << qsizetype(59) << qsizetype(0) << qsizetype(1);
    QTest::newRow("behind the last frame") << 60.5 << qsizetype(60) << qsizetype(0) << qsizetype(0);
    QTest::newRow("far behind the end") << 1e9 << qsizetype(60) << qsizetype(0) << qsizetype(0);
    QTest::newRow("before the start and past the end")
        << -30.5 << qsizetype(0) << qsizetype(30) << qsizetype(60);
    QTest::newRow("before the start") << -70.5 << qsizetype(0) << qsizetype(70) << qsizetype(30);
    QTest::newRow("its last sample on the first frame")
        << -99.5 << qsizetype(0) << qsizetype(99) << qsizetype(1);
    QTest::newRow("ends before the start")
        << -100.5 << qsizetype(0) << qsizetype(0) << qsizetype(0);
    QTest::newRow("long before the start") << -1e9 << qsizetype(0) << qsizetype(0) << qsizetype(0);
}

void VoiceMixTest::onlyThePartInsideTheMixIsHeard()
{
    QFETCH(double, start);
    QFETCH(qsizetype, silentBefore);
    QFETCH(qsizetype, firstSample);
    QFETCH(qsizetype, heardSamples);
    const qsizetype silentAfter = 60 - silentBefore - heardSamples;
    QCOMPARE(heard(ramp(100), clip({}, beatsOf(start)), 60),
             Tones::silence(silentBefore) + ramp(100).mid(firstSample, heardSamples) +
                 Tones::silence(silentAfter));
}

void VoiceMixTest::durationCutsTheClip_data()
{
    QTest::addColumn<double>("duration");
    QTest::addColumn<qsizetype>("played");
    QTest::newRow("0 plays the whole file") << 0.0 << qsizetype(100);
    QTest::newRow("a negative length plays the whole file") << -2.0 << qsizetype(100);
    QTest::newRow("shorter than the file") << beatsOf(40.5) << qsizetype(40);
    QTest::newRow("one frame") << beatsOf(1.5) << qsizetype(1);
    QTest::newRow("less than one frame") << beatsOf(0.5) << qsizetype(0);
    QTest::newRow("longer than the file") << 4.0 << qsizetype(100);
    QTest::newRow("without end") << std::numeric_limits<double>::infinity() << qsizetype(100);
}

void VoiceMixTest::durationCutsTheClip()
{
    QFETCH(double, duration);
    QFETCH(qsizetype, played);
    AudioClip cut = clip({});
    cut.durationBeats = duration;
    QCOMPARE(heard(ramp(100), cut, 150), ramp(played) + Tones::silence(150 - played));
}

void VoiceMixTest::gainAndVolumeMultiply_data()
{
    QTest::addColumn<float>("gain");
    QTest::addColumn<float>("volume");
    QTest::addColumn<float>("expected");
    QTest::newRow("both 1") << 1.0F << 1.0F << 0.75F;
    QTest::newRow("a half of a half") << 0.5F << 0.5F << 0.1875F;
    QTest::newRow("louder than the file") << 4.0F << 1.0F << 3.0F;
    QTest::newRow("no gain") << 0.0F << 1.0F << 0.0F;
    QTest::newRow("no volume") << 1.0F << 0.0F << 0.0F;
    QTest::newRow("a negative gain turns the wave over") << -1.0F << 0.5F << -0.375F;
}

void VoiceMixTest::gainAndVolumeMultiply()
{
    QFETCH(float, gain);
    QFETCH(float, volume);
    QFETCH(float, expected);
    QVERIFY(SoundFile::writeExact(path("toma.wav"), constant(20, 0.75F)));
    AudioTrack voice = track({clip("toma.wav")});
    voice.clips[0].gain = gain;
    voice.volume = volume;
    project_->audioTracks = {voice};
    QCOMPARE(VoiceMix::render(*project_, folder_->path(), 20), constant(40, expected));
}

void VoiceMixTest::overlappingClipsAreAddedWithoutLimiting()
{
    QVERIFY(SoundFile::writeExact(path("a.wav"), constant(100, 0.75F)));
    QVERIFY(SoundFile::writeExact(path("b.wav"), constant(100, 0.5F)));
    // Two clips of one track, and one of another.
    project_->audioTracks = {track({clip("a.wav"), clip("b.wav", beatsOf(50.5))}),
                             track({clip("b.wav", beatsOf(75.5))})};
    const QList<float> mix = channel(VoiceMix::render(*project_, folder_->path(), 200), 0);
    QCOMPARE(mix, constant(50, 0.75F) + constant(25, 1.25F) + constant(25, 1.75F) +
                      constant(50, 1.0F) + constant(25, 0.5F) + constant(25, 0.0F));
}

void VoiceMixTest::channelsOfAFileAreFolded_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<QList<float>>("frame");
    QTest::addColumn<float>("expected");
    QTest::newRow("stereo") << 2 << QList<float>{0.5F, 0.25F} << 0.375F;
    QTest::newRow("opposite sides cancel") << 2 << QList<float>{0.5F, -0.5F} << 0.0F;
    QTest::newRow("five channels") << 5 << QList<float>{1.0F, 0.0F, 0.5F, 0.75F, 0.25F} << 0.5F;
}

void VoiceMixTest::channelsOfAFileAreFolded()
{
    QFETCH(int, channels);
    QFETCH(QList<float>, frame);
    QFETCH(float, expected);
    QList<float> samples;
    for (int i = 0; i < 30; ++i)
        samples += frame;
    QVERIFY(SoundFile::write(path("toma.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, channels,
                             samples));
    project_->audioTracks = {track({clip("toma.wav")})};
    QCOMPARE(channel(VoiceMix::render(*project_, folder_->path(), 40), 0),
             constant(30, expected) + Tones::silence(10));
}

void VoiceMixTest::muteAndSolo_data()
{
    QTest::addColumn<bool>("firstMuted");
    QTest::addColumn<bool>("firstSolo");
    QTest::addColumn<bool>("secondMuted");
    QTest::addColumn<bool>("secondSolo");
    QTest::addColumn<float>("expected");

    // The first track sounds 1, the second 2.
    QTest::newRow("both sound") << false << false << false << false << 3.0F;
    QTest::newRow("a muted track is silent") << true << false << false << false << 2.0F;
    QTest::newRow("both muted") << true << false << true << false << 0.0F;
    QTest::newRow("a solo silences the other") << false << true << false << false << 1.0F;
    QTest::newRow("two solos both sound") << false << true << false << true << 3.0F;
    QTest::newRow("mute beats solo, and the solo still counts")
        << true << true << false << false << 0.0F;
    QTest::newRow("a muted solo beside a solo") << true << true << false << true << 2.0F;
    QTest::newRow("a solo beside a muted track") << false << true << true << false << 1.0F;
}

void VoiceMixTest::muteAndSolo()
{
    QFETCH(bool, firstMuted);
    QFETCH(bool, firstSolo);
    QFETCH(bool, secondMuted);
    QFETCH(bool, secondSolo);
    QFETCH(float, expected);
    QVERIFY(SoundFile::writeExact(path("uno.wav"), constant(10, 1.0F)));
    QVERIFY(SoundFile::writeExact(path("dos.wav"), constant(10, 2.0F)));
    AudioTrack first = track({clip("uno.wav")});
    AudioTrack second = track({clip("dos.wav")});
    first.muted = firstMuted;
    first.solo = firstSolo;
    second.muted = secondMuted;
    second.solo = secondSolo;
    project_->audioTracks = {first, second};
    QCOMPARE(VoiceMix::render(*project_, folder_->path(), 10), constant(20, expected));
}

void VoiceMixTest::aSoloOnANoteTrackSilencesTheVoices_data()
{
    QTest::addColumn<bool>("noteMuted");
    QTest::addColumn<bool>("noteSolo");
    QTest::addColumn<bool>("voiceSolo");
    QTest::addColumn<bool>("audible");
    QTest::newRow("no solo") << false << false << false << true;
    QTest::newRow("a muted note track") << true << false << false << true;
    QTest::newRow("a solo note track") << false << true << false << false;
    QTest::newRow("a solo note track, although muted") << true << true << false << false;
    QTest::newRow("a solo note track beside a solo voice") << false << true << true << true;
}

void VoiceMixTest::aSoloOnANoteTrackSilencesTheVoices()
{
    QFETCH(bool, noteMuted);
    QFETCH(bool, noteSolo);
    QFETCH(bool, voiceSolo);
    QFETCH(bool, audible);
    QVERIFY(SoundFile::writeExact(path("toma.wav"), constant(10)));
    Track notes;
    notes.muted = noteMuted;
    notes.solo = noteSolo;
    AudioTrack voice = track({clip("toma.wav")});
    voice.solo = voiceSolo;
    project_->tracks = {Track(), notes};
    project_->audioTracks = {voice};
    QCOMPARE(!isSilent(VoiceMix::render(*project_, folder_->path(), 10)), audible);
}

void VoiceMixTest::fades_data()
{
    QTest::addColumn<double>("duration");
    QTest::addColumn<float>("fadeIn");
    QTest::addColumn<float>("fadeOut");
    QTest::addColumn<QList<int>>("frames");
    QTest::addColumn<QList<double>>("levels");
    using Frames = QList<int>;
    using Levels = QList<double>;

    // A second of ones: 44100 frames, and two beats.
    QTest::newRow("half a second in")
        << 0.0 << 0.5F << 0.0F << Frames{0, 1, 2205, 11025, 22049, 22050, 44099}
        << Levels{0.0, 1.0 / 22050, 0.1, 0.5, 22049.0 / 22050, 1.0, 1.0};
    QTest::newRow("half a second out, which ends above nothing")
        << 0.0 << 0.0F << 0.5F << Frames{0, 22050, 22051, 33075, 41895, 44099, 44100}
        << Levels{1.0, 1.0, 22049.0 / 22050, 0.5, 0.1, 1.0 / 22050, 0.0};
    QTest::newRow("out before the cut and not at the file's end")
        << 1.0 << 0.0F << 0.25F << Frames{11024, 11025, 11026, 19845, 22049, 22050, 40000}
        << Levels{1.0, 1.0, 11024.0 / 11025, 0.2, 1.0 / 11025, 0.0, 0.0};
    QTest::newRow("in and out over the same frames multiply")
        << 1.0 << 0.5F << 0.5F << Frames{0, 11025, 5512, 22049}
        << Levels{0.0, 0.25, (5512.0 / 22050) * (16538.0 / 22050), 22049.0 / 22050 / 22050};
    QTest::newRow("in longer than the clip never arrives")
        << 0.5 << 1.0F << 0.0F << Frames{0, 4410, 11024, 11025}
        << Levels{0.0, 0.1, 11024.0 / 44100, 0.0};
    QTest::newRow("out longer than the clip is under way at its start")
        << 0.5 << 0.0F << 1.0F << Frames{0, 6615, 11024} << Levels{0.25, 0.1, 1.0 / 44100};
    QTest::newRow("4.41 frames in are four")
        << 0.0 << 0.0001F << 0.0F << Frames{0, 1, 2, 3, 4} << Levels{0.0, 0.25, 0.5, 0.75, 1.0};
    QTest::newRow("0.01 seconds, a little less in binary, are 441 frames in single precision")
        << 0.0 << 0.01F << 0.01F << Frames{21, 440, 441, 44099 - 439}
        << Levels{21.0 / 441, 440.0 / 441, 1.0, 440.0 / 441};
    QTest::newRow("less than a frame is none")
        << 0.0 << 0.00002F << 0.00002F << Frames{0, 44099} << Levels{1.0, 1.0};
    QTest::newRow("negative fades are none")
        << 0.0 << -1.0F << -1.0F << Frames{0, 20000, 44099} << Levels{1.0, 1.0, 1.0};
}

void VoiceMixTest::fades()
{
    QFETCH(double, duration);
    QFETCH(float, fadeIn);
    QFETCH(float, fadeOut);
    QFETCH(QList<int>, frames);
    QFETCH(QList<double>, levels);
    AudioClip faded = clip({});
    faded.durationBeats = duration;
    faded.fadeInSeconds = fadeIn;
    faded.fadeOutSeconds = fadeOut;
    const QList<float> mix = heard(constant(44100), faded, 50000);
    for (qsizetype i = 0; i < frames.size(); ++i) {
        const auto level = static_cast<double>(mix[frames[i]]);
        QVERIFY2(std::abs(level - levels[i]) <= 1e-7 * levels[i],
                 qPrintable(QString("%1: %2").arg(frames[i]).arg(level)));
    }
}

void VoiceMixTest::fadesCountFromTheClipsStartAndNotTheMixs()
{
    AudioClip faded = clip({}, -1.0);
    faded.fadeInSeconds = 1.0F;
    faded.fadeOutSeconds = 0.25F;
    // The mix ends 1000 frames before the clip, amid its fade.
    const QList<float> mix = heard(constant(44100), faded, 21050);
    QCOMPARE(mix[0], 0.5F);
    QCOMPARE(mix[4410], 0.6F);
    QVERIFY(std::abs(static_cast<double>(mix[21049]) - 1001.0 / 11025 * 43099 / 44100) < 1e-7);
}

void VoiceMixTest::resampledClipsKeepTheirPitch_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<double>("hz");
    for (const int sampleRate : {8000, 11025, 16000, 22050, 32000, 48000, 88200, 96000, 192000}) {
        for (const double hz : {110.0, 440.0, 880.0})
            QTest::addRow("%g Hz from %d Hz", hz, sampleRate) << sampleRate << hz;
    }
}

void VoiceMixTest::resampledClipsKeepTheirPitch()
{
    QFETCH(int, sampleRate);
    QFETCH(double, hz);
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::sine(hz, sampleRate, sampleRate / 2),
                                  sampleRate));
    project_->audioTracks = {track({clip("toma.wav")})};
    const QList<float> mix = channel(VoiceMix::render(*project_, folder_->path(), 22050), 0);
    const double heard = Tones::strongestHz(mix.mid(4000, 8192), 44100, hz - 20.0, hz + 20.0);
    QVERIFY2(std::abs(Tones::cents(heard, hz)) < 0.5, qPrintable(QString::number(heard)));
    // Lines between the samples of a sine lie a little inside it.
    QVERIFY(std::abs(Tones::rms(mix.mid(4000, 8192)) - 0.5 / std::sqrt(2.0)) < 0.02);
}

void VoiceMixTest::resampledClipsAreOneSampleShort_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("expected");

    // floor(count / (rate / 44100.0)) - 1, in double precision: 48000 / 1.08843... is just below
    // 44100.
    QTest::newRow("as it is at the mixing rate") << 44100 << 1000 << 1000;
    QTest::newRow("a second at 48000 Hz") << 48000 << 48000 << 44098;
    QTest::newRow("a second at 44101 Hz") << 44101 << 44101 << 44099;
    QTest::newRow("a second at 44099 Hz") << 44099 << 44099 << 44099;
    QTest::newRow("22050 Hz") << 22050 << 1000 << 1999;
    QTest::newRow("96000 Hz") << 96000 << 5000 << 2295;
    QTest::newRow("8000 Hz") << 8000 << 100 << 550;
    QTest::newRow("four samples at 88200 Hz") << 88200 << 4 << 1;
    QTest::newRow("three samples at 88200 Hz give nothing") << 88200 << 3 << 0;
    QTest::newRow("one sample at 48000 Hz gives nothing") << 48000 << 1 << 0;
    QTest::newRow("one sample at 22050 Hz") << 22050 << 1 << 1;
    QTest::newRow("one sample at 1 Hz") << 1 << 1 << 44099;
}

void VoiceMixTest::resampledClipsAreOneSampleShort()
{
    QFETCH(int, sampleRate);
    QFETCH(int, count);
    QFETCH(int, expected);
    QVERIFY(SoundFile::writeExact(path("toma.wav"), constant(count), sampleRate));
    project_->audioTracks = {track({clip("toma.wav")})};
    QCOMPARE(channel(VoiceMix::render(*project_, folder_->path(), 50000), 0),
             constant(expected) + Tones::silence(50000 - expected));
}

void VoiceMixTest::theLastSampleIsHeldBelowTheMixingRate_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<QList<float>>("samples");
    QTest::addColumn<QList<float>>("expected");
    using Samples = QList<float>;

    QTest::newRow("22050 Hz, and the last position is the last sample")
        << 22050 << Samples{1.0F, 3.0F, 2.0F} << Samples{1.0F, 2.0F, 3.0F, 2.5F, 2.0F};
    QTest::newRow("11025 Hz, and the last sample is held twice")
        << 11025 << Samples{1.0F, 3.0F} << Samples{1.0F, 1.5F, 2.0F, 2.5F, 3.0F, 3.0F, 3.0F};
    QTest::newRow("a single sample at 14700 Hz") << 14700 << Samples{0.5F} << Samples{0.5F, 0.5F};
    QTest::newRow("88200 Hz, where nothing is held")
        << 88200 << Samples{1.0F, 9.0F, 2.0F, 9.0F, 3.0F, 9.0F, 4.0F, 9.0F}
        << Samples{1.0F, 2.0F, 3.0F};
}

void VoiceMixTest::theLastSampleIsHeldBelowTheMixingRate()
{
    QFETCH(int, sampleRate);
    QFETCH(QList<float>, samples);
    QTEST(resampled(samples, sampleRate), "expected");
}

void VoiceMixTest::resamplingHasTheBitsOfThePlainForm()
{
    SeededRandom random(101);
    for (int round = 0; round < 400; ++round) {
        const int sampleRate = static_cast<int>(random.magnitude(2000.0, 400000.0));
        const QList<float> mono = Tones::noise(random.between(0, 400), 12);
        QVERIFY2(resampled(mono, sampleRate) == plainlyResampled(mono, sampleRate),
                 qPrintable(QString("%1 samples at %2 Hz").arg(mono.size()).arg(sampleRate)));
    }
}

void VoiceMixTest::resamplingFromNoRateGivesNothing_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::newRow("0 Hz") << 0;
    QTest::newRow("-1 Hz") << -1;
    QTest::newRow("-48000 Hz") << -48000;
    QTest::newRow("the lowest number") << std::numeric_limits<int>::min();
    QTest::newRow("the highest number, which leaves no sample") << std::numeric_limits<int>::max();
}

void VoiceMixTest::resamplingFromNoRateGivesNothing()
{
    QFETCH(int, sampleRate);
    QVERIFY(resampled({}, sampleRate).isEmpty());
    QVERIFY(resampled(ramp(100), sampleRate).isEmpty());
}

void VoiceMixTest::tuningHappensAtTheMixingRate_data()
{
    QTest::addColumn<int>("sampleRate");
    QTest::addColumn<float>("intensity");
    QTest::newRow("44100 Hz") << 44100 << 1.0F;
    QTest::newRow("48000 Hz, resampled before it is tuned") << 48000 << 1.0F;
    QTest::newRow("22050 Hz, resampled before it is tuned") << 22050 << 1.0F;
    QTest::newRow("half of the way") << 44100 << 0.5F;
}

void VoiceMixTest::tuningHappensAtTheMixingRate()
{
    QFETCH(int, sampleRate);
    QFETCH(float, intensity);
    const QList<float> sung = Tones::sine(450.0, sampleRate, sampleRate / 4);
    QVERIFY(SoundFile::writeExact(path("toma.wav"), sung, sampleRate));
    AudioClip tuned = clip("toma.wav");
    tuned.tune = {.enabled = true, .intensity = intensity};
    project_->audioTracks = {track({tuned})};

    const QList<float> mix = channel(VoiceMix::render(*project_, folder_->path(), 10000), 0);
    const QList<float> atMixingRate =
        sampleRate == 44100 ? sung : plainlyResampled(sung, sampleRate);
    QCOMPARE(mix, VoiceTuner::tune(atMixingRate, 44100, KeySignature(), tuned.tune).first(10000));
    // The first 512 samples sound at the first frame's ratio alone: 440 Hz, or half way there.
    const double heard = Tones::hzByZeroCrossings(mix.first(512), 44100);
    QVERIFY(std::abs(Tones::cents(heard, 450.0 - 10.0 * static_cast<double>(intensity))) < 3.0);
}

void VoiceMixTest::tuningWithoutStrengthLeavesTheClip_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<float>("intensity");
    QTest::newRow("off") << false << 1.0F;
    QTest::newRow("an intensity of 0") << true << 0.0F;
    QTest::newRow("a negative intensity") << true << -0.5F;
    QTest::newRow("an intensity that is not a number") << true << kNaN;
}

void VoiceMixTest::tuningWithoutStrengthLeavesTheClip()
{
    QFETCH(bool, enabled);
    QFETCH(float, intensity);
    const QList<float> sung = Tones::sine(450.0, 44100, 8192);
    AudioClip plain = clip({});
    plain.tune = {enabled, intensity};
    QCOMPARE(heard(sung, plain, 8192), sung);
}

void VoiceMixTest::whatIsHeardIsTunedAsTheWholeTakeWouldBe()
{
    // Out of tune upward and downward by turns, so that frames are read faster and slower.
    const QList<float> sung =
        Tones::sum(Tones::chirp(200.0, 420.0, 44100, 44100), Tones::noise(44100, 14, 0.1));
    const VoiceTuneSettings settings{.enabled = true, .intensity = 1.0F};
    const QList<float> whole = VoiceTuner::tune(sung, 44100, KeySignature(), settings);
    SeededRandom random(104);
    for (int round = 0; round < 40; ++round) {
        AudioClip cut = clip({}, beatsOf(-random.between(0.0, 20000.0)));
        cut.durationBeats = beatsOf(random.between(21000.0, 50000.0));
        cut.tune = settings;
        const int frames = random.between(1, 30000);
        const QList<float> mix = heard(sung, cut, frames);
        const auto skipped = static_cast<qsizetype>(-cut.offsetBeats * kBeatFrames);
        const auto played =
            std::min<qsizetype>(44100, static_cast<qsizetype>(cut.durationBeats * kBeatFrames));
        const qsizetype inside = std::min<qsizetype>(frames, played - skipped);
        QCOMPARE(mix.first(inside), whole.mid(skipped, inside));
        QVERIFY(isSilent(mix.mid(inside)));
    }
}

void VoiceMixTest::tuningLeavesTheFileAsItWas()
{
    QVERIFY(AudioDecoder::writeWav(path("toma.wav"), Tones::sine(450.0, 44100, 8192), 44100, 1));
    const QByteArray before = bytesOf(path("toma.wav"));
    const QDateTime written = QFileInfo(path("toma.wav")).lastModified();
    AudioClip tuned = clip("toma.wav");
    tuned.tune = {.enabled = true, .intensity = 1.0F};
    project_->audioTracks = {track({tuned})};
    QVERIFY(!isSilent(VoiceMix::render(*project_, folder_->path(), 8192)));
    QCOMPARE(bytesOf(path("toma.wav")), before);
    QCOMPARE(QFileInfo(path("toma.wav")).lastModified(), written);
    QCOMPARE(QDir(folder_->path()).entryList(QDir::Files), QStringList{"toma.wav"});
}

void VoiceMixTest::anotherKeyChangesTheNextMix()
{
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::sine(460.0, 44100, 8192)));
    AudioClip tuned = clip("toma.wav");
    tuned.tune = {.enabled = true, .intensity = 1.0F};
    project_->audioTracks = {track({tuned})};
    const auto heardHz = [this] {
        const QList<float> mix = VoiceMix::render(*project_, folder_->path(), 512);
        return Tones::hzByZeroCrossings(channel(mix, 0), 44100);
    };
    QVERIFY(std::abs(Tones::cents(heardHz(), 440.0)) < 2.0);
    // F Major has B flat, which is nearer than A.
    project_->keySignature.rootPitchClass = 5;
    QVERIFY(std::abs(Tones::cents(heardHz(), 466.1638)) < 2.0);
    project_->keySignature.rootPitchClass = 0;
    QVERIFY(std::abs(Tones::cents(heardHz(), 440.0)) < 2.0);
}

void VoiceMixTest::theKeyDoesNotMatterWithoutTuning()
{
    const QList<float> sung = Tones::sine(460.0, 44100, 4096);
    project_->keySignature = {.rootPitchClass = 5, .mode = KeyMode::Dorian};
    QCOMPARE(heard(sung, clip({}), 4096), sung);
}

void VoiceMixTest::filesAreFoundFromTheProjectsFolder_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("file");
    QTest::newRow("beside the project") << "obra"
                                        << "toma.wav";
    QTest::newRow("in a folder of the project") << "obra"
                                                << "voces/toma 1.wav";
    QTest::newRow("accents in the file's name") << "obra"
                                                << "canción de mañana.wav";
    QTest::newRow("accents in both folders") << "Año nuevo ñandú"
                                             << "vóces/está.wav";
    QTest::newRow("a script of its own") << "\u97F3\u697D"
                                         << "\u6B4C.wav";
    QTest::newRow("above the project") << "obra"
                                       << "../toma.wav";
    QTest::newRow("a slash behind the folder") << "obra/"
                                               << "toma.wav";
    QTest::newRow("a file named as the standard streams") << "obra"
                                                          << "-";
}

void VoiceMixTest::filesAreFoundFromTheProjectsFolder()
{
    QFETCH(QString, folder);
    QFETCH(QString, file);
    const QString whole = path(folder + "/" + file);
    QVERIFY(QDir().mkpath(path(folder)) && QDir().mkpath(QFileInfo(whole).path()));
    QVERIFY(SoundFile::writeExact(whole, ramp(10)));
    // An absolute name stands for itself.
    for (const QString& name : {file, whole}) {
        project_->audioTracks = {track({clip(name)})};
        QCOMPARE(channel(VoiceMix::render(*project_, path(folder), 10), 0), ramp(10));
    }
}

void VoiceMixTest::whatCannotBeReadIsLeftOut_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("no name") << "";
    QTest::newRow("the folder itself") << ".";
    QTest::newRow("the folder above") << "..";
    QTest::newRow("a file that is not there") << "no está.wav";
    QTest::newRow("a text named as a sound") << "carta.wav";
    QTest::newRow("an empty file") << "vacía.wav";
    QTest::newRow("a sound without frames") << "muda.wav";
    QTest::newRow("a sound cut off in its header") << "cortada.wav";
    QTest::newRow("a pipe that nobody writes to") << "tubo.wav";
    QTest::newRow("a device without end") << "/dev/zero";
    QTest::newRow("a name cut by a null character") << QString("buena.wav") + QChar(0);
    QTest::newRow("a name that no file system takes") << QString(10000, 'x');
}

void VoiceMixTest::whatCannotBeReadIsLeftOut()
{
    QFETCH(QString, file);
    QVERIFY(SoundFile::writeExact(path("buena.wav"), ramp(10)));
    QVERIFY(writeBytes(path("carta.wav"), QByteArray("Querida abuela:\n").repeated(50)));
    QVERIFY(writeBytes(path("vacía.wav"), {}));
    QVERIFY(SoundFile::writeExact(path("muda.wav"), {}));
    QVERIFY(writeBytes(path("cortada.wav"), bytesOf(path("buena.wav")).first(30)));
    QCOMPARE(mkfifo(qPrintable(path("tubo.wav")), 0600), 0);
    AudioClip unread = clip(file);
    unread.tune = {.enabled = true, .intensity = 1.0F};
    project_->audioTracks = {track({unread, clip("buena.wav")}), track({unread})};
    QCOMPARE(channel(VoiceMix::render(*project_, folder_->path(), 20), 0),
             ramp(10) + Tones::silence(10));
}

void VoiceMixTest::theBitsAreThoseOfThePlainSum()
{
    QList<QList<float>> takes;
    for (const int length : {1, 7, 600, 2500}) {
        takes.append(Tones::noise(length, static_cast<unsigned>(length), 1.0));
        QVERIFY(SoundFile::writeExact(path(QString("%1.wav").arg(takes.size() - 1)), takes.last()));
    }
    SeededRandom random(102);
    for (int round = 0; round < 300; ++round) {
        project_->bpm = random.between(-10, 400);
        project_->audioTracks = randomVoices(random, project_->bpm);
        QList<float> expected = Tones::silence(random.between(1, 3000));
        for (const AudioTrack& voice : project_->audioTracks) {
            for (const AudioClip& placed : voice.clips)
                addPlainClip(placed, voice.volume, project_->bpm,
                             takes[placed.audioFilePath.first(1).toInt()], expected);
        }
        const QList<float> mix = VoiceMix::render(*project_, folder_->path(), expected.size());
        QVERIFY2(channel(mix, 0) == expected, qPrintable(QString::number(round)));
        QVERIFY2(channel(mix, 1) == expected, qPrintable(QString::number(round)));
    }
}

void VoiceMixTest::hostileClipFieldsGiveAFiniteMix_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<double>("value");
    const QList<const char*> fields{"offset",   "duration",         "gain",        "fade in",
                                    "fade out", "tuning intensity", "track volume"};
    for (int field = 0; field < fields.size(); ++field) {
        for (const double value :
             {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
              -std::numeric_limits<double>::infinity(), 1e300, -1e300, 1e308, -1e308, 1e18, -1e18,
              9.3e18, 3.4e38, -3.4e38, 1e-300, -1e-300, -1.0, 0.0})
            QTest::addRow("%s %g", fields[field], value) << field << value;
    }
}

void VoiceMixTest::hostileClipFieldsGiveAFiniteMix()
{
    QFETCH(int, field);
    QFETCH(double, value);
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::voice({}, 44100, 3000)));
    AudioTrack voice = track({clip("toma.wav")});
    AudioClip& hostile = voice.clips[0];
    hostile.tune.enabled = true;
    const auto single = static_cast<float>(value);
    switch (field) {
    case 0:
        hostile.offsetBeats = value;
        break;
    case 1:
        hostile.durationBeats = value;
        break;
    case 2:
        hostile.gain = single;
        break;
    case 3:
        hostile.fadeInSeconds = single;
        break;
    case 4:
        hostile.fadeOutSeconds = single;
        break;
    case 5:
        hostile.tune.intensity = single;
        break;
    default:
        voice.volume = single;
        break;
    }
    QVERIFY(SoundFile::writeExact(path("otra.wav"), constant(4000, 0.5F)));
    project_->audioTracks = {voice, track({clip("otra.wav")})};
    const QList<float> mix = VoiceMix::render(*project_, folder_->path(), 4000);
    QCOMPARE(mix.size(), 8000);
    QVERIFY(allFinite(mix));
    // Behind the hostile clip's file the other one sounds alone.
    QCOMPARE(mix.last(), 0.5F);
}

void VoiceMixTest::aPlaceThatIsNoNumberLeavesTheClipOut_data()
{
    QTest::addColumn<double>("offset");
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN();
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
    QTest::newRow("minus infinity") << -std::numeric_limits<double>::infinity();
    QTest::newRow("a beat whose frame is beyond numbers") << 1e306;
    QTest::newRow("a beat whose frame is no 64-bit number") << 1e200;
    QTest::newRow("a beat whose frame is below all numbers") << -1e306;
}

void VoiceMixTest::aPlaceThatIsNoNumberLeavesTheClipOut()
{
    QFETCH(double, offset);
    QVERIFY(isSilent(heard(ramp(100), clip({}, offset), 1000)));
}

void VoiceMixTest::hostileTemposGiveAFiniteMix_data()
{
    QTest::addColumn<int>("bpm");
    for (const int bpm :
         {std::numeric_limits<int>::min(), -1, 0, 1, 1000000, std::numeric_limits<int>::max()})
        QTest::addRow("a tempo of %d", bpm) << bpm;
}

void VoiceMixTest::hostileTemposGiveAFiniteMix()
{
    QFETCH(int, bpm);
    project_->bpm = bpm;
    AudioClip placed = clip({}, 0.0);
    placed.durationBeats = 1e12;
    QCOMPARE(heard(ramp(100), placed, 200), ramp(100) + Tones::silence(100));
}

void VoiceMixTest::hostileSamplesGiveAFiniteMix_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<float>("value");
    for (const int channels : {1, 2}) {
        for (const float value : {kNaN, kInfinity, -kInfinity, kLargest, -kLargest,
                                  std::numeric_limits<float>::denorm_min()})
            QTest::addRow("%g in %d channels", static_cast<double>(value), channels)
                << channels << value;
    }
}

void VoiceMixTest::hostileSamplesGiveAFiniteMix()
{
    QFETCH(int, channels);
    QFETCH(float, value);
    QList<float> samples = constant(6000 * channels, 0.5F);
    for (qsizetype i = 0; i < samples.size(); i += 701)
        samples[i] = value;
    QVERIFY(SoundFile::write(path("toma.wav"), SF_FORMAT_WAV | SF_FORMAT_FLOAT, 44100, channels,
                             samples));
    AudioClip tuned = clip("toma.wav");
    tuned.tune = {.enabled = true, .intensity = 1.0F};
    AudioClip faded = clip("toma.wav", 0.01);
    faded.gain = 100.0F;
    faded.fadeInSeconds = 0.01F;
    project_->audioTracks = {track({clip("toma.wav"), tuned, faded})};
    const QList<float> mix = VoiceMix::render(*project_, folder_->path(), 7000);
    QCOMPARE(mix.size(), 14000);
    QVERIFY(allFinite(mix));
    QVERIFY(!isSilent(mix));
}

void VoiceMixTest::sumsBeyondTheLargestNumberStayFinite()
{
    QVERIFY(SoundFile::writeExact(path("toma.wav"), constant(10, 3e38F)));
    const AudioTrack voice = track({clip("toma.wav"), clip("toma.wav"), clip("toma.wav")});
    AudioTrack opposite = voice;
    opposite.volume = -1.0F;
    for (const QList<AudioTrack>& tracks :
         {QList<AudioTrack>{voice}, {opposite}, {voice, opposite}, {opposite, opposite, voice}}) {
        project_->audioTracks = tracks;
        QVERIFY(allFinite(VoiceMix::render(*project_, folder_->path(), 10)));
    }
}

void VoiceMixTest::anyCombinationOfHostileFieldsGivesAFiniteMix()
{
    QVERIFY(SoundFile::writeExact(path("a.wav"), Tones::noise(300, 13)));
    QVERIFY(SoundFile::writeExact(path("b.wav"), {1.0F, kNaN, kInfinity, 1e38F}, 22050));
    const QList<double> values{0.0,
                               1.0,
                               -1.0,
                               0.5,
                               1e-3,
                               -1e-3,
                               1e-9,
                               1e9,
                               -1e9,
                               1e18,
                               1e300,
                               3e38,
                               -1e300,
                               std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()};
    const QList<int> tempos{120, 0, -5, 1, std::numeric_limits<int>::max()};
    SeededRandom random(103);
    const auto single = [&] { return static_cast<float>(random.pick(values)); };
    for (int round = 0; round < 1500; ++round) {
        project_->bpm = random.pick(tempos);
        project_->audioTracks.clear();
        for (int voices = random.between(1, 2); voices > 0; --voices) {
            AudioTrack voice;
            voice.volume = single();
            for (int clips = random.between(1, 2); clips > 0; --clips)
                voice.clips.append({.audioFilePath = random.oneIn(2) ? "a.wav" : "b.wav",
                                    .offsetBeats = random.pick(values),
                                    .durationBeats = random.pick(values),
                                    .gain = single(),
                                    .fadeInSeconds = single(),
                                    .fadeOutSeconds = single(),
                                    .tune = {.enabled = random.oneIn(2), .intensity = single()}});
            project_->audioTracks.append(voice);
        }
        const QList<float> mix = VoiceMix::render(*project_, folder_->path(), 400);
        QCOMPARE(mix.size(), 800);
        QVERIFY2(allFinite(mix), qPrintable(QString::number(round)));
    }
}

void VoiceMixTest::theKeptMixIsTheUncachedOne()
{
    QVERIFY(SoundFile::writeExact(path("a.wav"), Tones::voice({.hz = 233.0}, 44100, 9000)));
    QVERIFY(SoundFile::writeExact(path("b.wav"), Tones::noise(4000, 13), 22050));
    ClipCache cache;
    SeededRandom random(105);
    for (int round = 0; round < 200; ++round) {
        project_->bpm = random.between(60, 200);
        project_->keySignature.rootPitchClass = random.between(0, 11);
        project_->audioTracks.clear();
        for (int voices = random.between(0, 3); voices > 0; --voices) {
            AudioTrack voice;
            voice.volume = static_cast<float>(random.between(0.0, 1.0));
            voice.muted = random.oneIn(4);
            voice.solo = random.oneIn(4);
            for (int clips = random.between(0, 3); clips > 0; --clips)
                voice.clips.append(
                    {.audioFilePath = random.pick(QStringList{"a.wav", "b.wav", "nadie.wav"}),
                     .offsetBeats = random.between(-0.3, 1.0),
                     .durationBeats = random.oneIn(3) ? 0.0 : random.between(0.01, 1.0),
                     .gain = static_cast<float>(random.between(0.2, 2.0)),
                     .fadeInSeconds = random.oneIn(2) ? 0.05F : 0.0F,
                     .fadeOutSeconds = random.oneIn(2) ? 0.05F : 0.0F,
                     .tune = {.enabled = random.oneIn(2), .intensity = 0.9F}});
            project_->audioTracks.append(voice);
        }
        const QList<float> kept =
            VoiceMix::renderToTheEnd(VoiceMix::voicesOf(*project_, folder_->path()), cache);
        constexpr qint64 kFrames = 60000;
        const QList<float> whole = VoiceMix::render(*project_, folder_->path(), kFrames);
        QVERIFY(kept.size() <= whole.size());
        QCOMPARE(kept, whole.first(kept.size()));
        QVERIFY(isSilent(whole.mid(kept.size())));
    }
}

void VoiceMixTest::theKeptMixEndsWithTheLastClip_data()
{
    QTest::addColumn<QList<AudioTrack>>("tracks");
    QTest::addColumn<qsizetype>("frames");
    AudioClip cut = clip("toma.wav", beatsOf(500.0));
    cut.durationBeats = beatsOf(100.0);
    AudioClip longer = clip("toma.wav");
    longer.durationBeats = beatsOf(9000.0);
    AudioTrack muted = track({clip("toma.wav", 8.0)});
    muted.muted = true;
    using Tracks = QList<AudioTrack>;
    QTest::newRow("no voices") << Tracks{} << qsizetype(0);
    QTest::newRow("no clips") << Tracks{track({})} << qsizetype(0);
    QTest::newRow("a clip") << Tracks{track({clip("toma.wav")})} << qsizetype(1000);
    QTest::newRow("a clip later on")
        << Tracks{track({clip("toma.wav", beatsOf(500.0))})} << qsizetype(1500);
    QTest::newRow("a clip that is cut") << Tracks{track({cut})} << qsizetype(600);
    QTest::newRow("a clip that claims to be longer than its file")
        << Tracks{track({longer})} << qsizetype(1000);
    QTest::newRow("a clip that begins before the song")
        << Tracks{track({clip("toma.wav", beatsOf(-400.0))})} << qsizetype(600);
    QTest::newRow("the last frame of a clip")
        << Tracks{track({clip("toma.wav", beatsOf(-999.0))})} << qsizetype(1);
    QTest::newRow("a clip that ends before the song")
        << Tracks{track({clip("toma.wav", -1.0)})} << qsizetype(0);
    QTest::newRow("a file that is not there, far behind")
        << Tracks{track({clip("toma.wav"), clip("nadie.wav", 1e6)})} << qsizetype(1000);
    QTest::newRow("a muted track behind")
        << Tracks{track({clip("toma.wav")}), muted} << qsizetype(1000);
    QTest::newRow("a clip beyond all mixes")
        << Tracks{track({clip("toma.wav"), clip("toma.wav", 1e9)})} << qsizetype(1000);
}

void VoiceMixTest::theKeptMixEndsWithTheLastClip()
{
    QFETCH(QList<AudioTrack>, tracks);
    QFETCH(qsizetype, frames);
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::noise(1000, 1)));
    project_->audioTracks = tracks;
    ClipCache cache;
    QCOMPARE(VoiceMix::renderToTheEnd(VoiceMix::voicesOf(*project_, folder_->path()), cache).size(),
             2 * frames);
}

void VoiceMixTest::whatIsHeardDecidesWhetherVoicesAreEqual()
{
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::noise(1000, 1)));
    AudioClip tuned = clip("toma.wav");
    tuned.tune.enabled = true;
    project_->audioTracks = {track({clip("toma.wav")}), track({tuned})};
    project_->tracks = {Track()};
    const auto voices = [this] { return VoiceMix::voicesOf(*project_, folder_->path()); };
    const VoiceMix::Voices before = voices();

    // What is written, and what other tracks do, is not heard in the voices.
    project_->name = "otra";
    project_->audioTracks[0].name = "otro";
    project_->tracks[0].volume = 0.1F;
    project_->timeSignature.numerator = 3;
    QVERIFY(voices() == before);

    const QList<AudioTrack> tracks = project_->audioTracks;
    const auto changes = [&](auto&& change) {
        change();
        const bool changed = voices() != before;
        project_->audioTracks = tracks;
        project_->tracks[0].solo = false;
        project_->bpm = 120;
        project_->keySignature = {};
        return changed && voices() == before;
    };
    QVERIFY(changes([this] { project_->bpm = 121; }));
    QVERIFY(changes([this] { project_->keySignature.rootPitchClass = 1; }));
    QVERIFY(changes([this] { project_->tracks[0].solo = true; }));
    QVERIFY(changes([this] { project_->audioTracks[1].solo = true; }));
    QVERIFY(changes([this] { project_->audioTracks[0].muted = true; }));
    QVERIFY(changes([this] { project_->audioTracks[0].volume = 0.9F; }));
    QVERIFY(changes([this] { project_->audioTracks[0].clips[0].gain = 0.9F; }));
    QVERIFY(changes([this] { project_->audioTracks[0].clips[0].offsetBeats = 1.0; }));
    QVERIFY(changes([this] { project_->audioTracks[0].clips[0].fadeInSeconds = 0.1F; }));
    QVERIFY(changes([this] { project_->audioTracks[1].clips[0].tune.intensity = 0.1F; }));
    QVERIFY(changes([this] { project_->audioTracks[1].clips.clear(); }));
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::noise(1001, 1)));
    QVERIFY(voices() != before);
}

void VoiceMixTest::aPlaceThatIsNotFiniteIsNoVoice()
{
    const auto heardAt = [this](double beat) {
        project_->audioTracks = {track({clip("toma.wav", beat)})};
        return VoiceMix::voicesOf(*project_, folder_->path()).clips.size();
    };
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    for (const double beat : {kInfinite, -kInfinite, std::nan(""), 1e305, -1e305})
        QCOMPARE(heardAt(beat), 0);
    for (const double beat : {0.0, -1e18, 1e18})
        QCOMPARE(heardAt(beat), 1);
}

void VoiceMixTest::aStoppedMixIsEmpty()
{
    QVERIFY(SoundFile::writeExact(path("toma.wav"), Tones::noise(1000, 1)));
    project_->audioTracks = {track({clip("toma.wav")})};
    ClipCache cache;
    std::stop_source stop;
    stop.request_stop();
    QVERIFY(VoiceMix::renderToTheEnd(VoiceMix::voicesOf(*project_, folder_->path()), cache,
                                     stop.get_token())
                .isEmpty());
}

VELTA_GUILESS_TEST(VoiceMixTest)

} // namespace VoiceMixTests

#include "VoiceMixTest.moc"
