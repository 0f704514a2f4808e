#include "model/Song.h"

#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

namespace SongTests {

using namespace ProjectBuilder;

namespace {

/// A song that has something in every list.
Song fullSong()
{
    Song song;
    Track track = melodyTrack({melody({note(60, 0.0)})});
    track.loopBlocks.append(LoopBlock());
    song.tracks.append(track);
    AudioTrack voice;
    voice.clips.append(clip("voz-1.wav"));
    song.audioTracks.append(voice);
    song.harmonyTrack.blocks.append({.barIndex = 0, .events = {HarmonyDegreeEvent()}});
    song.collapsedGroups = {"voz"};
    return song;
}

/// Where the elements of a list lie.
template <typename Element>
const void* placeOf(const QList<Element>& list)
{
    return list.constData();
}

QList<const void*> placesOf(const Song& song)
{
    return {placeOf(song.tracks),
            placeOf(song.tracks[0].melodyBlocks),
            placeOf(song.tracks[0].melodyBlocks[0].notes),
            placeOf(song.tracks[0].loopBlocks),
            placeOf(song.audioTracks),
            placeOf(song.audioTracks[0].clips),
            placeOf(song.harmonyTrack.blocks),
            placeOf(song.harmonyTrack.blocks[0].events),
            placeOf(song.collapsedGroups)};
}

} // namespace

class SongTest : public QObject {
    Q_OBJECT

private slots:
    void aCopySharesItsLists();
    void aDetachedCopySharesNone();
};

void SongTest::aCopySharesItsLists()
{
    const Song song = fullSong();
    const Song copy = song;
    QCOMPARE(placesOf(copy), placesOf(song));
}

void SongTest::aDetachedCopySharesNone()
{
    const Song song = fullSong();
    const Song copy = detachedCopy(song);
    QCOMPARE(copy, song);
    const QList<const void*> own = placesOf(copy);
    for (const void* place : placesOf(song))
        QVERIFY(!own.contains(place));
}

VELTA_GUILESS_TEST(SongTest)

} // namespace SongTests

#include "SongTest.moc"
