#include "views/arranger/HeldBlocks.h"

#include "support/ProjectBuilder.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"
#include "views/arranger/BlockOrder.h"

#include <QTest>

namespace HeldBlocksTests {

using namespace ProjectBuilder;

namespace {

using Act = HeldBlocks::Act;

/// Every block of a song that is drawn.
QList<BlockRef> blocksOf(const Project& song)
{
    QList<LaneRef> lanes{LaneRef()};
    for (int i = 0; i < song.tracks.size(); ++i)
        lanes.append({LaneKind::NoteTrack, i});
    for (int i = 0; i < song.audioTracks.size(); ++i)
        lanes.append({LaneKind::AudioTrack, i});
    QList<BlockRef> blocks;
    for (const LaneRef& lane : lanes) {
        for (const PlacedBlock& placed : BlockOrder::blocksOf(song, lane))
            blocks.append(placed.block);
    }
    return blocks;
}

QList<BlockRef> someOf(const QList<BlockRef>& blocks, SeededRandom& random)
{
    QList<BlockRef> some;
    for (const BlockRef& block : blocks) {
        if (random.oneIn(3))
            some.append(block);
    }
    return some;
}

} // namespace

class HeldBlocksTest : public QObject {
    Q_OBJECT

private slots:
    void theWayBackRestoresEverything_data();
    void theWayBackRestoresEverything();
    void theLastStepAloneCounts();
    void staleBlocksAreNotHeld();
    void chordsWithoutBarsStay();
};

void HeldBlocksTest::theWayBackRestoresEverything_data()
{
    QTest::addColumn<int>("numbers");

    QTest::newRow("songs of users") << static_cast<int>(Numbers::Musical);
    QTest::newRow("songs of damaged files") << static_cast<int>(Numbers::Hostile);
}

void HeldBlocksTest::theWayBackRestoresEverything()
{
    QFETCH(int, numbers);
    SeededRandom random(31);
    Generator songs(6, static_cast<Numbers>(numbers));
    for (int i = 0; i < 200; ++i) {
        Project song;
        songs.fill(song, 4);
        const QJsonObject before = song.toJson();
        HeldBlocks held(song, someOf(blocksOf(song), random));
        for (int step = 0; step < 4; ++step)
            held.set(song, random.pick(QList{Act::Move, Act::Copy, Act::Stretch}),
                     random.between(-9, 9), 1.0);
        held.set(song, Act::Move, 0.0, 1.0);
        QCOMPARE(song.toJson(), before);
    }
}

// Whatever a drag has passed over on its way leaves no trace.
void HeldBlocksTest::theLastStepAloneCounts()
{
    SeededRandom random(32);
    Generator songs(7, Numbers::Musical);
    for (int i = 0; i < 200; ++i) {
        Project wandered;
        songs.fill(wandered, 4);
        Project straight;
        straight.loadJson(wandered.toJson());
        const QList<BlockRef> blocks = someOf(blocksOf(wandered), random);
        const Act act = random.pick(QList{Act::Move, Act::Copy, Act::Stretch});
        const double way = random.between(-9, 9);
        HeldBlocks wandering(wandered, blocks);
        for (int step = 0; step < 3; ++step)
            wandering.set(wandered, Act::Copy, random.between(-9, 9), 1.0);
        wandering.set(wandered, act, way, 1.0);
        HeldBlocks direct(straight, blocks);
        direct.set(straight, act, way, 1.0);
        QCOMPARE(wandered.toJson(), straight.toJson());
        QCOMPARE(wandering.blocks(), direct.blocks());
    }
}

void HeldBlocksTest::staleBlocksAreNotHeld()
{
    Project song;
    song.harmonyTrack = harmony({1});
    HeldBlocks held(song, {{BlockKind::Melody, 3, 0}, {BlockKind::Chord, 0, 4}});
    QVERIFY(held.isEmpty());
    held.set(song, Act::Copy, 4.0, 1.0);
    QCOMPARE(song.harmonyTrack, harmony({1}));
}

void HeldBlocksTest::chordsWithoutBarsStay()
{
    Project song;
    song.harmonyTrack = harmony({1, 4});
    song.timeSignature.denominator = 0;
    HeldBlocks held(song, {{BlockKind::Chord, 0, 0}});
    held.set(song, Act::Move, 4.0, 1.0);
    QCOMPARE(song.harmonyTrack, harmony({1, 4}));
}

VELTA_GUILESS_TEST(HeldBlocksTest)

} // namespace HeldBlocksTests

#include "HeldBlocksTest.moc"
