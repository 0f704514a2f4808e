#include "listen/NotePicture.h"

#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

namespace NotePictureTests {

using namespace ProjectBuilder;

namespace {

int inkOf(const QImage& picture, int left, int right)
{
    int ink = 0;
    for (int x = left; x < right; ++x) {
        for (int y = 0; y < picture.height(); ++y)
            ink += picture.pixelColor(x, y).saturation() > 60 ? 1 : 0;
    }
    return ink;
}

} // namespace

class NotePictureTest : public QObject {
    Q_OBJECT

private slots:
    void aSongIsAsWideAsItsBeats();
    void notesStandWhereTheySound();
    void everyTrackHasAStrip();
    void titleBarsChordsAndNotesHaveNames();
    void absurdSongsGiveAPicture_data();
    void absurdSongsGiveAPicture();

private:
    ContentFixture content_;
};

void NotePictureTest::aSongIsAsWideAsItsBeats()
{
    const auto four = project({melodyTrack({melody({note(60, 3.0)})})});
    const auto eight = project({melodyTrack({melody({note(60, 3.0)}, 4.0)})});
    QCOMPARE(notePicture(*eight, content_.library()).width() -
                 notePicture(*four, content_.library()).width(),
             4 * 44);
}

void NotePictureTest::notesStandWhereTheySound()
{
    Track track = melodyTrack({melody({note(60, 2.0)})});
    track.humanize.enabled = false;
    const QImage picture = notePicture(*project({track}), content_.library());
    const int origin = 190;
    QCOMPARE(inkOf(picture, origin, origin + 2 * 44), 0);
    QVERIFY(inkOf(picture, origin + 2 * 44, origin + 3 * 44) > 0);
    QCOMPARE(inkOf(picture, origin + 3 * 44 + 1, picture.width()), 0);
}

void NotePictureTest::everyTrackHasAStrip()
{
    const Track track = melodyTrack({melody({note(60, 0.0)})});
    const int one = notePicture(*project({track}), content_.library()).height();
    const int three = notePicture(*project({track, track, track}), content_.library()).height();
    const int none = notePicture(*project({}), content_.library()).height();
    QCOMPARE(three - none, 3 * (one - none));
}

void NotePictureTest::titleBarsChordsAndNotesHaveNames()
{
    const auto song = project({melodyTrack({melody({note(60, 0.0)})})});
    const auto darkIn = [](const QImage& picture, const QRect& place) {
        int dark = 0;
        for (int x = place.left(); x <= place.right(); ++x) {
            for (int y = place.top(); y <= place.bottom(); ++y)
                dark += qGray(picture.pixel(x, y)) < 128 ? 1 : 0;
        }
        return dark;
    };
    const QRect title(0, 0, 190, 24);
    const QRect firstBar(191, 25, 120, 16);
    const QRect names(110, 50, 78, 30);
    const QImage plain = notePicture(*song, content_.library());
    const QImage named = notePicture(*song, content_.library(), {.title = "Zamba", .drums = {}});
    QCOMPARE(darkIn(plain, title), 0);
    QVERIFY(darkIn(named, title) > 0);
    QVERIFY(darkIn(plain, names) > 0);
    const int withoutChord = darkIn(plain, firstBar);
    QVERIFY(withoutChord > 0);
    song->harmonyTrack.insertEvent(0.0, 4.0, 2, ChordExtension::Triad, 4.0);
    QVERIFY(darkIn(notePicture(*song, content_.library()), firstBar) > withoutChord);
}

void NotePictureTest::absurdSongsGiveAPicture_data()
{
    QTest::addColumn<QList<Track>>("tracks");
    QTest::addColumn<int>("denominator");
    QTest::newRow("no tracks") << QList<Track>() << 4;
    QTest::newRow("no bars") << QList{melodyTrack({melody({note(60, 0.0)})})} << 0;
    QTest::newRow("a note at the end of time")
        << QList{melodyTrack({melody({note(60, 1e15)})})} << 4;
    QTest::newRow("notes of absurd pitches")
        << QList{melodyTrack({melody({note(-2000000000, 0.0), note(2000000000, 1.0)})})} << 4;
}

void NotePictureTest::absurdSongsGiveAPicture()
{
    QFETCH(QList<Track>, tracks);
    QFETCH(int, denominator);
    const auto song = project(tracks);
    song->timeSignature.denominator = denominator;
    const QImage picture = notePicture(*song, content_.library());
    QVERIFY(!picture.isNull());
    QVERIFY(picture.width() <= 190 + 512 * 44 + 1);
}

VELTA_TEST(NotePictureTest)

} // namespace NotePictureTests

#include "NotePictureTest.moc"
