#include "views/arranger/BlockOrder.h"

#include "model/Project.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/arranger/ArrangerStage.h"

#include <limits>

namespace BlockOrderTests {

using namespace ProjectBuilder;

/// In which order the keys go through the arranger.
class BlockOrderTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void blocksOfALaneAreInTheOrderOfTime();
    void chordsAreBlocksOfTheirLane();
    void voicesAreBlocksOfTheirLane();
    void headingsHoldNoBlocks();
    void whatCannotBeDrawnIsPassedOver();
    void staleReferencesHoldNothing();
    void theNextIsTheOneBehind();
    void withoutAPresentOneTheNearestIsNext();
    void lanesAreGoneThroughWithoutTheSections();
    void atTheEndTheLaneStays();
    void whoseLaneIsGoneStartsAtTheFirst();

private:
    UserHome home_;
    Project song_;
    QList<LaneInfo> lanes_;
};

namespace {

/// "kind track index @ start + length".
QStringList written(const QList<PlacedBlock>& blocks)
{
    QStringList lines;
    for (const auto& [block, span] : blocks)
        lines.append(QStringLiteral("%1 %2 %3 @%4+%5")
                         .arg(int(block.kind))
                         .arg(block.trackIndex)
                         .arg(block.blockIndex)
                         .arg(span.start)
                         .arg(span.length));
    return lines;
}

const LaneRef kQuena{LaneKind::NoteTrack, 0};
const LaneRef kAna{LaneKind::AudioTrack, 0};
const LaneRef kPercussion{LaneKind::Group, -1, kGroupPercusion};

} // namespace

void BlockOrderTest::init()
{
    song_.loadJson({});
    writeSong(song_);
    lanes_ = ArrangerLayout::lanes(song_, ArrangerContent().library());
}

void BlockOrderTest::blocksOfALaneAreInTheOrderOfTime()
{
    song_.tracks[0].loopBlocks = {loop("r", "bombo", 6.0, 1.0), loop("r", "bombo", 0.0, 2.0)};
    QCOMPARE(written(BlockOrder::blocksOf(song_, kQuena)),
             QStringList({"0 0 0 @0+4", "1 0 1 @0+2", "1 0 0 @6+1", "0 0 1 @8+4"}));
}

void BlockOrderTest::chordsAreBlocksOfTheirLane()
{
    QCOMPARE(written(BlockOrder::blocksOf(song_, {})),
             QStringList({"3 0 0 @0+4", "3 1 0 @4+2", "3 1 1 @6+2"}));
    QCOMPARE(BlockOrder::laneRefOf({BlockKind::Chord, 1, 1}), LaneRef());
}

void BlockOrderTest::voicesAreBlocksOfTheirLane()
{
    QCOMPARE(written(BlockOrder::blocksOf(song_, kAna)), QStringList({"2 0 0 @1.25+3"}));
    QCOMPARE(BlockOrder::laneRefOf({BlockKind::Audio, 0, 0}), kAna);
    QCOMPARE(BlockOrder::laneRefOf({BlockKind::Loop, 0, 4}), kQuena);
}

void BlockOrderTest::headingsHoldNoBlocks()
{
    QVERIFY(BlockOrder::blocksOf(song_, kPercussion).isEmpty());
    QVERIFY(BlockOrder::blocksOf(song_, {LaneKind::Section}).isEmpty());
    QVERIFY(BlockOrder::blocksOf(song_, {LaneKind::NoteTrack, 99}).isEmpty());
}

void BlockOrderTest::whatCannotBeDrawnIsPassedOver()
{
    song_.tracks[0].melodyBlocks[0].startBeat = std::numeric_limits<double>::quiet_NaN();
    song_.tracks[0].melodyBlocks.append(melody({}, 1e300));
    QCOMPARE(written(BlockOrder::blocksOf(song_, kQuena)), QStringList({"0 0 1 @8+4"}));
}

void BlockOrderTest::staleReferencesHoldNothing()
{
    for (const BlockKind kind :
         {BlockKind::Melody, BlockKind::Loop, BlockKind::Audio, BlockKind::Chord}) {
        for (const auto& [track, index] : {std::pair(0, 99), {99, 0}, {-1, 0}, {0, -1}})
            QVERIFY(!BlockOrder::placeOf(song_, {kind, track, index}));
    }
    for (const LaneKind kind : {LaneKind::NoteTrack, LaneKind::AudioTrack})
        QVERIFY(BlockOrder::blocksOf(song_, {kind, 99}).isEmpty());
}

void BlockOrderTest::theNextIsTheOneBehind()
{
    const auto blocks = BlockOrder::blocksOf(song_, {});
    const BlockRef first{BlockKind::Chord, 0, 0};
    const BlockRef second{BlockKind::Chord, 1, 0};
    const BlockRef last{BlockKind::Chord, 1, 1};
    QCOMPARE(BlockOrder::neighbour(blocks, first, 1, 0.0), second);
    QCOMPARE(BlockOrder::neighbour(blocks, last, -1, 0.0), second);
    QCOMPARE(BlockOrder::neighbour(blocks, last, 1, 0.0), last);
    QCOMPARE(BlockOrder::neighbour(blocks, first, -1, 0.0), first);
}

void BlockOrderTest::withoutAPresentOneTheNearestIsNext()
{
    const auto blocks = BlockOrder::blocksOf(song_, {});
    const BlockRef elsewhere{BlockKind::Melody, 0, 0};
    QCOMPARE(BlockOrder::neighbour(blocks, std::nullopt, -1, 4.9), (BlockRef{BlockKind::Chord, 1}));
    QCOMPARE(BlockOrder::neighbour(blocks, elsewhere, 1, 99.0), (BlockRef{BlockKind::Chord, 1, 1}));
    QVERIFY(!BlockOrder::neighbour({}, elsewhere, 1, 0.0));
}

void BlockOrderTest::lanesAreGoneThroughWithoutTheSections()
{
    QStringList labels;
    LaneRef present;
    for (qsizetype i = 0; i < lanes_.size(); ++i) {
        const LaneInfo* lane = BlockOrder::laneBeside(lanes_, present, -1);
        if (BlockOrder::refOf(*lane) == present)
            break;
        labels.append(lane->label);
        present = BlockOrder::refOf(*lane);
    }
    QCOMPARE(labels, QStringList({"🎹 Quena", "🎹 Flauta", "🎤 Ana", "🎤 Beto", "Percusión",
                                  "🥁 Bombo", "Instrumental", "🎸 Bajo"}));
    QCOMPARE(BlockOrder::laneBeside(lanes_, kPercussion, 1)->label, "🎤 Beto");
}

void BlockOrderTest::atTheEndTheLaneStays()
{
    QCOMPARE(BlockOrder::laneBeside(lanes_, {}, 1)->kind, LaneKind::Harmony);
    QCOMPARE(BlockOrder::laneBeside(lanes_, {LaneKind::NoteTrack, 3}, -1)->label, "🎸 Bajo");
    QVERIFY(!BlockOrder::laneBeside({}, {}, -1));
}

void BlockOrderTest::whoseLaneIsGoneStartsAtTheFirst()
{
    QCOMPARE(BlockOrder::laneBeside(lanes_, {LaneKind::NoteTrack, 99}, 1)->kind, LaneKind::Harmony);
    QVERIFY(!BlockOrder::laneOf(lanes_, {LaneKind::NoteTrack, 99}));
    QCOMPARE(BlockOrder::laneOf(lanes_, kPercussion)->label, "Percusión");
}

VELTA_TEST(BlockOrderTest)

} // namespace BlockOrderTests

#include "BlockOrderTest.moc"
