#include "playback/SongVoices.h"

#include "model/Project.h"
#include "support/TestProgram.h"

#include <QTest>

#include <limits>

namespace SongVoicesTests {

namespace {

AudioTrack voice(const QList<double>& ends, bool muted = false, bool solo = false)
{
    AudioTrack track;
    track.muted = muted;
    track.solo = solo;
    for (const double end : ends) {
        AudioClip clip;
        clip.offsetBeats = end - 1.0;
        clip.durationBeats = 1.0;
        track.clips.append(clip);
    }
    return track;
}

} // namespace

class SongVoicesTest : public QObject {
    Q_OBJECT

private slots:
    void mutedAndEmptyVoicesAreNotHeard();
    void aSoloLeavesTheOthersOut();
    void theLastClipThatIsHeardEndsTheVoices();
    void levelsAreThoseOfAllClips();
    void withoutAFolderThereAreNoVoices();
    void anHourIsMixedAhead_data();
    void anHourIsMixedAhead();
};

void SongVoicesTest::mutedAndEmptyVoicesAreNotHeard()
{
    Project song;
    song.audioTracks = {voice({4.0}), voice({9.0}, true), voice({})};
    QCOMPARE(SongVoices::heard(song), (QList<bool>{true, false, false}));
}

void SongVoicesTest::aSoloLeavesTheOthersOut()
{
    Project song;
    song.audioTracks = {voice({4.0}), voice({9.0}, false, true)};
    QCOMPARE(SongVoices::heard(song), (QList<bool>{false, true}));
    song.audioTracks = {voice({4.0})};
    song.tracks = {Track()};
    song.tracks[0].solo = true;
    QCOMPARE(SongVoices::heard(song), QList<bool>{false});
}

void SongVoicesTest::theLastClipThatIsHeardEndsTheVoices()
{
    Project song;
    QCOMPARE(SongVoices::endBeat(song), 0.0);
    song.audioTracks = {voice({7.0, 4.0}), voice({9.0}, true),
                        voice({std::numeric_limits<double>::infinity()})};
    QCOMPARE(SongVoices::endBeat(song), 7.0);
}

void SongVoicesTest::levelsAreThoseOfAllClips()
{
    Project song;
    song.audioTracks = {voice({1.0}), voice({2.0}, true)};
    song.audioTracks[1].clips[0].gain = 0.5F;
    song.audioTracks[1].clips[0].fadeInSeconds = 2.0F;
    song.audioTracks[1].clips[0].fadeOutSeconds = 3.0F;
    QCOMPARE(SongVoices::levels(song), (QList<float>{1.0F, 0.0F, 0.0F, 0.5F, 2.0F, 3.0F}));
}

void SongVoicesTest::withoutAFolderThereAreNoVoices()
{
    Project song;
    song.audioTracks = {voice({1.0})};
    QVERIFY(SongVoices::of(&song, {}).clips.isEmpty());
    QVERIFY(SongVoices::of(nullptr, "/obras").clips.isEmpty());
    QCOMPARE(SongVoices::of(&song, "/obras").clips.size(), 1);
}

/// At 60 beats a minute an hour is 3600 of them.
void SongVoicesTest::anHourIsMixedAhead_data()
{
    QTest::addColumn<double>("end");
    QTest::addColumn<bool>("tooLong");
    QTest::newRow("an hour") << 3600.0 << false;
    QTest::newRow("more than that") << 3601.0 << true;
}

void SongVoicesTest::anHourIsMixedAhead()
{
    QFETCH(double, end);
    QFETCH(bool, tooLong);
    Project song;
    song.bpm = 60;
    song.audioTracks = {voice({2.0, end})};
    QCOMPARE(SongVoices::areTooLongToMixAhead(SongVoices::of(&song, "/obras")), tooLong);
}

VELTA_GUILESS_TEST(SongVoicesTest)

} // namespace SongVoicesTests

#include "SongVoicesTest.moc"
