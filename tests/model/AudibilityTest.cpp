#include "model/Audibility.h"

#include "model/AudioTrack.h"
#include "model/Track.h"
#include "support/TestProgram.h"

#include <QTest>

namespace AudibilityTests {

class AudibilityTest : public QObject {
    Q_OBJECT

private slots:
    void trackIsHeard_data();
    void trackIsHeard();
    void soloOfAnyTrackCounts();
};

void AudibilityTest::trackIsHeard_data()
{
    QTest::addColumn<bool>("muted");
    QTest::addColumn<bool>("solo");
    QTest::addColumn<bool>("anySolo");
    QTest::addColumn<bool>("heard");

    QTest::newRow("a plain track") << false << false << false << true;
    QTest::newRow("a muted track is not") << true << false << false << false;
    QTest::newRow("beside a soloed track no other is") << false << false << true << false;
    QTest::newRow("a soloed track") << false << true << true << true;
    QTest::newRow("mute beats solo") << true << true << true << false;
    QTest::newRow("muted beside a solo is not") << true << false << true << false;
    QTest::newRow("a solo that does not count silences nothing") << false << true << false << true;
}

void AudibilityTest::trackIsHeard()
{
    QFETCH(bool, muted);
    QFETCH(bool, solo);
    QFETCH(bool, anySolo);
    Track track;
    track.muted = muted;
    track.solo = solo;
    QTEST(Audibility::sounds(track, anySolo), "heard");

    AudioTrack voice;
    voice.muted = muted;
    voice.solo = solo;
    QTEST(Audibility::sounds(voice, anySolo), "heard");
}

void AudibilityTest::soloOfAnyTrackCounts()
{
    QVERIFY(!Audibility::anySolo(QList<Track>()));
    // Of the fifteen tracks, also those that have no channel.
    for (qsizetype soloed = 0; soloed < 15; ++soloed) {
        QList<Track> tracks(15);
        QVERIFY(!Audibility::anySolo(tracks));
        tracks[soloed].solo = true;
        QVERIFY(Audibility::anySolo(tracks));
        tracks[soloed].muted = true;
        QVERIFY2(Audibility::anySolo(tracks), "a muted solo counts too");
    }
    QList<AudioTrack> voices(2);
    QVERIFY(!Audibility::anySolo(voices));
    voices[1].solo = true;
    QVERIFY(Audibility::anySolo(voices));
}

VELTA_GUILESS_TEST(AudibilityTest)

} // namespace AudibilityTests

#include "AudibilityTest.moc"
