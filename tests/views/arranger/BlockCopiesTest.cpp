#include "views/arranger/BlockCopies.h"

#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"

#include <QTest>

namespace BlockCopiesTests {

using namespace ProjectBuilder;

namespace {

BlockRef melodyAt(int track, int block)
{
    return {BlockKind::Melody, track, block};
}

BlockRef loopAt(int track, int block)
{
    return {BlockKind::Loop, track, block};
}

BlockRef clipAt(int track, int block)
{
    return {BlockKind::Audio, track, block};
}

BlockRef chordAt(int bar, int event)
{
    return {BlockKind::Chord, bar, event};
}

LoopBlock bombo(double start)
{
    return loop("zamba", "zamba_bombo", start, 4.0);
}

/// Two melodies, an accompaniment, two voices and a chord in each of the first four bars.
std::unique_ptr<Project> song()
{
    auto project = ProjectBuilder::project(
        {melodyTrack({melody({note(60, 0.0)}, 4.0), melody({note(62, 0.0)}, 12.0)}),
         loopTrack({bombo(0.0), bombo(8.0)}, "bombo"), melodyTrack({melody({note(64, 0.0)}, 0.0)})},
        harmony({1, 4, 5, 1}));
    project->audioTracks = {voiceTrack({clip("a.wav", 2.0, 4.0)}),
                            voiceTrack({clip("b.wav", 6.0, 4.0)})};
    return project;
}

} // namespace

/// Copies of blocks, and where they come to lie.
class BlockCopiesTest : public QObject {
    Q_OBJECT

private slots:
    void theirSpanGoesFromTheFirstToTheEndOfTheLast();
    void staleReferencesAreLeftOut();
    void theyLieAsFarFromOneAnotherAsTheyDid();
    void whatLiesThereAlreadyIsNotLaidAgain();
    void aMelodyWithoutItsTrackGoesToTheOneWishedFor();
    void aMelodyWithoutAnyTrackIsHomeless();
    void aLoopWithoutItsTrackGoesToThatOfItsLayer();
    void aLoopWithoutRoomForItsTrackIsHomeless();
    void aVoiceWithoutItsTrackGoesToTheLastOne();
    void chordsAreLaidOverWhatIsThere();
    void chordsAreToldInOrderAndOnce();
    void chordsThatLieThereAlreadyAreToldAsPresent();
    void forgottenVoicesAreNotLaid();
};

void BlockCopiesTest::theirSpanGoesFromTheFirstToTheEndOfTheLast()
{
    const auto project = song();
    QCOMPARE(BlockCopies(*project, {melodyAt(0, 1)}).span(), (BlockSpan{12.0, 4.0}));
    QCOMPARE(BlockCopies(*project, {melodyAt(0, 1), clipAt(0, 0)}).span(), (BlockSpan{2.0, 14.0}));
    QCOMPARE(BlockCopies(*project, {clipAt(0, 0), melodyAt(0, 1)}).span(), (BlockSpan{2.0, 14.0}));
    QCOMPARE(BlockCopies(*project, {chordAt(2, 0)}).span(), (BlockSpan{8.0, 4.0}));
    QCOMPARE(BlockCopies(*project, {}).span(), BlockSpan());
}

void BlockCopiesTest::staleReferencesAreLeftOut()
{
    const auto project = song();
    QVERIFY(BlockCopies(*project, {}).isEmpty());
    QVERIFY(BlockCopies(*project, {melodyAt(9, 0), loopAt(1, 2), clipAt(2, 0), chordAt(7, 0)})
                .isEmpty());
    for (const BlockRef& one : {melodyAt(0, 0), loopAt(1, 0), clipAt(0, 0), chordAt(0, 0)}) {
        const BlockCopies copies(*project, {melodyAt(9, 0), one});
        QVERIFY(!copies.isEmpty());
        QCOMPARE(copies.span(), BlockCopies(*project, {one}).span());
    }
}

void BlockCopiesTest::theyLieAsFarFromOneAnotherAsTheyDid()
{
    auto project = song();
    const BlockCopies copies(*project, {melodyAt(0, 0), loopAt(1, 1), clipAt(1, 0)});
    const auto laid = copies.layAt(*project, 20.0, 0);
    QCOMPARE(laid.blocks, QList<BlockRef>({melodyAt(0, 2), loopAt(1, 2), clipAt(1, 1)}));
    QVERIFY(laid.present.isEmpty());
    QCOMPARE(laid.homeless, 0);
    QCOMPARE(project->tracks[0].melodyBlocks[2], melody({note(60, 0.0)}, 20.0));
    QCOMPARE(project->tracks[1].loopBlocks[2], bombo(24.0));
    QCOMPARE(project->audioTracks[1].clips[1], clip("b.wav", 22.0, 4.0));
    QCOMPARE(project->tracks[2], song()->tracks[2]);
}

void BlockCopiesTest::whatLiesThereAlreadyIsNotLaidAgain()
{
    auto project = song();
    const BlockCopies copies(*project, {melodyAt(2, 0), loopAt(1, 0), loopAt(1, 1), clipAt(0, 0)});
    const auto laid = copies.layAt(*project, 0.0, 0);
    QVERIFY(laid.blocks.isEmpty());
    QCOMPARE(laid.present,
             QList<BlockRef>({melodyAt(2, 0), loopAt(1, 0), loopAt(1, 1), clipAt(0, 0)}));
    QCOMPARE(firstDifference(*project, *song()), QString());
}

void BlockCopiesTest::aMelodyWithoutItsTrackGoesToTheOneWishedFor()
{
    const auto before = song();
    const BlockCopies copies(*before, {melodyAt(2, 0)});
    const auto homeOf = [&](int wished) {
        auto project = song();
        project->tracks.removeLast();
        const auto laid = copies.layAt(*project, 40.0, wished);
        return laid.blocks.size() == 1 ? laid.blocks.first() : BlockRef{BlockKind::Chord, 0, 0};
    };
    QCOMPARE(homeOf(0), melodyAt(0, 2));
    // No track of this number, and one of an accompaniment: the first that takes melodies.
    for (const int wished : {-1, 1, 2, 7})
        QCOMPARE(homeOf(wished), melodyAt(0, 2));

    auto project = song();
    project->tracks[2].isAccompaniment = true;
    QCOMPARE(copies.layAt(*project, 40.0, 0).blocks, QList<BlockRef>{melodyAt(0, 2)});
    project->tracks.insert(1, melodyTrack({}));
    project->tracks.remove(3);
    project->tracks[2].isAccompaniment = true;
    QCOMPARE(copies.layAt(*project, 40.0, 1).blocks, QList<BlockRef>{melodyAt(1, 0)});
}

void BlockCopiesTest::aMelodyWithoutAnyTrackIsHomeless()
{
    auto project = song();
    const BlockCopies copies(*project, {melodyAt(0, 0), melodyAt(0, 1), clipAt(0, 0)});
    project->tracks = {project->tracks[1]};
    const auto laid = copies.layAt(*project, 30.0, 0);
    QCOMPARE(laid.homeless, 2);
    QCOMPARE(laid.blocks, QList<BlockRef>{clipAt(0, 1)});
    QCOMPARE(project->tracks[0], song()->tracks[1]);
}

void BlockCopiesTest::aLoopWithoutItsTrackGoesToThatOfItsLayer()
{
    auto project = song();
    const BlockCopies copies(*project, {loopAt(1, 0)});
    project->tracks.move(1, 0);
    QCOMPARE(copies.layAt(*project, 30.0, 0).blocks, QList<BlockRef>{loopAt(0, 2)});

    project->tracks.removeFirst();
    project->tracks.removeLast();
    const auto laid = copies.layAt(*project, 30.0, 0);
    QCOMPARE(laid.blocks, QList<BlockRef>{loopAt(1, 0)});
    QCOMPARE(project->tracks.size(), 2);
    QCOMPARE(project->tracks[1].loopBlocks, QList<LoopBlock>{bombo(30.0)});
    QCOMPARE(project->tracks[1].layerId, "zamba_bombo");
    QCOMPARE(project->tracks[1].instrumentId, "bombo");
    QVERIFY(project->tracks[1].isAccompaniment);
}

void BlockCopiesTest::aLoopWithoutRoomForItsTrackIsHomeless()
{
    auto project = song();
    const BlockCopies copies(*project, {loopAt(1, 0), loopAt(1, 1)});
    project->tracks = QList<Track>(kMaxNoteTracks, melodyTrack({}));
    const QList<Track> tracks = project->tracks;
    const auto laid = copies.layAt(*project, 30.0, 0);
    QCOMPARE(laid.homeless, 2);
    QVERIFY(laid.blocks.isEmpty());
    QCOMPARE(project->tracks, tracks);
}

void BlockCopiesTest::aVoiceWithoutItsTrackGoesToTheLastOne()
{
    auto project = song();
    const BlockCopies copies(*project, {clipAt(1, 0)});
    project->audioTracks.removeLast();
    QCOMPARE(copies.layAt(*project, 30.0, 0).blocks, QList<BlockRef>{clipAt(0, 1)});
    QCOMPARE(project->audioTracks[0].clips[1], clip("b.wav", 30.0, 4.0));
    QCOMPARE(copies.layAt(*project, 30.0, 0).present, QList<BlockRef>{clipAt(0, 1)});

    project->audioTracks.clear();
    QCOMPARE(copies.layAt(*project, 30.0, 0).blocks, QList<BlockRef>{clipAt(0, 0)});
    QCOMPARE(project->audioTracks.size(), 1);
    QCOMPARE(project->audioTracks[0].name, "Voz");
    QCOMPARE(project->audioTracks[0].clips, QList<AudioClip>{clip("b.wav", 30.0, 4.0)});
}

void BlockCopiesTest::chordsAreLaidOverWhatIsThere()
{
    auto project = song();
    const BlockCopies copies(*project, {chordAt(1, 0), chordAt(2, 0)});
    const auto laid = copies.layAt(*project, 2.0, 0);
    // The fourth degree over the halves of two bars, the fifth over those of the next.
    QCOMPARE(laid.blocks,
             QList<BlockRef>({chordAt(0, 1), chordAt(1, 0), chordAt(1, 1), chordAt(2, 0)}));
    const HarmonyTrack& lane = project->harmonyTrack;
    QCOMPARE(lane.blockForBar(0)->events,
             QList<HarmonyDegreeEvent>({chord(1, 0.0, 2.0), chord(4, 2.0, 2.0)}));
    QCOMPARE(lane.blockForBar(1)->events,
             QList<HarmonyDegreeEvent>({chord(4, 0.0, 2.0), chord(5, 2.0, 2.0)}));
    QCOMPARE(lane.blockForBar(2)->events,
             QList<HarmonyDegreeEvent>({chord(5, 0.0, 2.0), chord(5, 2.0, 2.0)}));
    QCOMPARE(lane.blockForBar(3)->events, QList<HarmonyDegreeEvent>{chord(1, 0.0, 4.0)});
}

void BlockCopiesTest::chordsAreToldInOrderAndOnce()
{
    auto project = song();
    const BlockCopies copies(*project, {chordAt(2, 0), chordAt(1, 0), chordAt(2, 0)});
    QCOMPARE(copies.layAt(*project, 20.0, 0).blocks,
             QList<BlockRef>({chordAt(5, 0), chordAt(6, 0)}));
    QCOMPARE(project->harmonyTrack.blockForBar(5)->events,
             QList<HarmonyDegreeEvent>{chord(4, 0.0, 4.0)});
    QCOMPARE(project->harmonyTrack.blockForBar(6)->events,
             QList<HarmonyDegreeEvent>{chord(5, 0.0, 4.0)});
}

void BlockCopiesTest::chordsThatLieThereAlreadyAreToldAsPresent()
{
    auto project = song();
    const BlockCopies copies(*project, {chordAt(1, 0)});
    const auto laid = copies.layAt(*project, 4.0, 0);
    QVERIFY(laid.blocks.isEmpty());
    QCOMPARE(laid.present, QList<BlockRef>{chordAt(1, 0)});
    QCOMPARE(firstDifference(*project, *song()), QString());

    // A chord that has no bar to lie in leaves the lane as it is.
    const auto nowhere = copies.layAt(*project, 1e300, 0);
    QVERIFY(nowhere.blocks.isEmpty() && nowhere.present.isEmpty());
    QCOMPARE(firstDifference(*project, *song()), QString());
}

void BlockCopiesTest::forgottenVoicesAreNotLaid()
{
    auto project = song();
    BlockCopies copies(*project, {clipAt(0, 0)});
    copies.forgetVoices();
    QVERIFY(copies.isEmpty());
    QVERIFY(copies.layAt(*project, 30.0, 0).blocks.isEmpty());
    QCOMPARE(firstDifference(*project, *song()), QString());
}

VELTA_GUILESS_TEST(BlockCopiesTest)

} // namespace BlockCopiesTests

#include "BlockCopiesTest.moc"
