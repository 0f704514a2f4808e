#include "views/arranger/BlockEdits.h"

#include "model/Project.h"
#include "support/ProjectBuilder.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <memory>

namespace BlockEditsTests {

using namespace ProjectBuilder;

namespace {

constexpr int kMostInt = std::numeric_limits<int>::max();
constexpr int kLeastInt = std::numeric_limits<int>::min();

/// Two tracks with blocks of both kinds, two voices and chords in bars 0, 1 and 3.
std::unique_ptr<Project> song()
{
    Track second = loopTrack({loop("r", "bombo", 4.0, 8.0), loop("r", "bombo", 12.0, 4.0)});
    second.melodyBlocks = {melody({note(64, 0.0)}, 1.5, 2.5)};
    auto result =
        project({melodyTrack({melody({note(60, 0.0)}), melody({note(62, 0.0)}, 8.0, 2.0)}), second},
                harmony({1, 4, 0, 5}));
    result->harmonyTrack.blocks[1].events = {chord(4, 0.0, 2.0), chord(5, 2.0, 2.0)};
    result->audioTracks = {voiceTrack({clip("a.wav", 0.25, 3.5)}),
                           voiceTrack({clip("b.wav", 2.0, 1.0), clip("c.wav", 6.75, 4.0)})};
    return result;
}

void setSpan(Project& project, const BlockRef& block, const BlockSpan& span)
{
    BlockEdits::setStart(project, block, span.start);
    BlockEdits::setLength(project, block, span.length);
}

std::unique_ptr<Project> copyOf(const Project& original)
{
    auto copy = project(original.tracks, original.harmonyTrack, original.timeSignature,
                        original.keySignature, original.bpm);
    copy->name = original.name;
    copy->audioTracks = original.audioTracks;
    copy->collapsedGroups = original.collapsedGroups;
    return copy;
}

/// Every block of a project but its chords.
QList<BlockRef> movableBlocks(const Project& project)
{
    QList<BlockRef> blocks;
    for (int t = 0; t < project.tracks.size(); ++t) {
        for (int i = 0; i < project.tracks[t].melodyBlocks.size(); ++i)
            blocks.append({BlockKind::Melody, t, i});
        for (int i = 0; i < project.tracks[t].loopBlocks.size(); ++i)
            blocks.append({BlockKind::Loop, t, i});
    }
    for (int t = 0; t < project.audioTracks.size(); ++t) {
        for (int i = 0; i < project.audioTracks[t].clips.size(); ++i)
            blocks.append({BlockKind::Audio, t, i});
    }
    return blocks;
}

} // namespace

class BlockEditsTest : public QObject {
    Q_OBJECT

private slots:
    void spanOfABlock_data();
    void spanOfABlock();
    void chordHasItsPlaceInTheSong();
    void staleReferencesDoNothing_data();
    void staleReferencesDoNothing();

    void settingASpanChangesThatRecordAlone();
    void settingASpanKeepsWhatTheRecordHolds();
    void settingTheSpanOfAChordDoesNothing();
    void startAndLengthAreSetApart();

    void removingABlockLeavesTheOthers();
    void removingSomeOfAListLeavesTheOthers();
    void removingTheLastBlockLeavesItsTrack();
    void removingAChordLeavesTheOthersOfItsBar();
    void removingTheLastChordOfABarRemovesTheBar();
    void removingAChordLooksIntoEveryBlockOfItsBar();
    void removingAStaleChordStillSweepsEmptyBars();

    void moving_data();
    void moving();
    void resizing_data();
    void resizing();
    void goingBackWithinADragRestores();
    void movingKeepsLengthAndOffsetFromTheGrid();
    void absurdNumbersStayHarmless();
};

// ---- Spans ---------------------------------------------------------------------------------

void BlockEditsTest::spanOfABlock_data()
{
    QTest::addColumn<BlockRef>("block");
    QTest::addColumn<BlockSpan>("span");

    QTest::newRow("melody") << BlockRef{BlockKind::Melody, 0, 1} << BlockSpan{8.0, 2.0};
    QTest::newRow("melody of an accompaniment track")
        << BlockRef{BlockKind::Melody, 1, 0} << BlockSpan{1.5, 2.5};
    QTest::newRow("loop") << BlockRef{BlockKind::Loop, 1, 1} << BlockSpan{12.0, 4.0};
    QTest::newRow("voice") << BlockRef{BlockKind::Audio, 1, 1} << BlockSpan{6.75, 4.0};
}

void BlockEditsTest::spanOfABlock()
{
    QFETCH(BlockRef, block);
    QFETCH(BlockSpan, span);
    QCOMPARE(BlockEdits::spanOf(*song(), block), std::optional(span));
}

void BlockEditsTest::chordHasItsPlaceInTheSong()
{
    QCOMPARE(BlockEdits::spanOf(*song(), {BlockKind::Chord, 1, 1}),
             std::optional(BlockSpan{6.0, 2.0}));
}

void BlockEditsTest::staleReferencesDoNothing_data()
{
    QTest::addColumn<BlockRef>("block");
    const QList<std::pair<const char*, BlockKind>> kinds{{"melody", BlockKind::Melody},
                                                         {"loop", BlockKind::Loop},
                                                         {"voice", BlockKind::Audio},
                                                         {"chord", BlockKind::Chord}};
    const QList<std::pair<int, int>> places{{-1, 0},        {7, 0},         {kMostInt, 0},
                                            {kLeastInt, 0}, {1, -1},        {1, 2},
                                            {1, kMostInt},  {1, kLeastInt}, {-1, -1}};
    for (const auto& [name, kind] : kinds) {
        for (const auto& [track, index] : places)
            QTest::addRow("%s %d, %d", name, track, index) << BlockRef{kind, track, index};
    }
    QTest::newRow("loop of a track without loops") << BlockRef{BlockKind::Loop, 0, 0};
    QTest::newRow("chord in a bar without chords") << BlockRef{BlockKind::Chord, 2, 0};
    QTest::newRow("unknown kind") << BlockRef{static_cast<BlockKind>(9), 0, 7};
}

void BlockEditsTest::staleReferencesDoNothing()
{
    QFETCH(BlockRef, block);
    const auto edited = song();
    QVERIFY(!BlockEdits::spanOf(*edited, block));
    setSpan(*edited, block, {99.0, 99.0});
    QCOMPARE(firstDifference(*edited, *song()), QString());
    BlockEdits::remove(*edited, block);
    QCOMPARE(firstDifference(*edited, *song()), QString());
}

void BlockEditsTest::settingASpanChangesThatRecordAlone()
{
    for (quint32 seed = 0; seed < 60; ++seed) {
        const auto original = Generator(seed).project();
        const QList<BlockRef> blocks = movableBlocks(*original);
        for (const BlockRef& block : blocks) {
            const auto edited = copyOf(*original);
            setSpan(*edited, block, {1234.5, 67.25});
            for (const BlockRef& other : blocks) {
                const auto expected = other == block ? std::optional(BlockSpan{1234.5, 67.25})
                                                     : BlockEdits::spanOf(*original, other);
                QCOMPARE(BlockEdits::spanOf(*edited, other), expected);
            }
            setSpan(*edited, block, *BlockEdits::spanOf(*original, block));
            QCOMPARE(firstDifference(*edited, *original), QString());
        }
    }
}

void BlockEditsTest::settingASpanKeepsWhatTheRecordHolds()
{
    const auto edited = song();
    setSpan(*edited, {BlockKind::Melody, 0, 1}, {9.0, 3.0});
    setSpan(*edited, {BlockKind::Loop, 1, 0}, {5.0, 6.0});
    setSpan(*edited, {BlockKind::Audio, 0, 0}, {1.25, 4.5});
    const auto expected = song();
    expected->tracks[0].melodyBlocks[1] = melody({note(62, 0.0)}, 9.0, 3.0);
    expected->tracks[1].loopBlocks[0] = loop("r", "bombo", 5.0, 6.0);
    expected->audioTracks[0].clips[0] = clip("a.wav", 1.25, 4.5);
    QCOMPARE(firstDifference(*edited, *expected), QString());
}

void BlockEditsTest::settingTheSpanOfAChordDoesNothing()
{
    const auto edited = song();
    setSpan(*edited, {BlockKind::Chord, 1, 0}, {9.0, 3.0});
    QCOMPARE(firstDifference(*edited, *song()), QString());
}

void BlockEditsTest::startAndLengthAreSetApart()
{
    const auto edited = song();
    BlockEdits::setStart(*edited, {BlockKind::Melody, 0, 1}, 9.0);
    BlockEdits::setLength(*edited, {BlockKind::Loop, 1, 0}, 6.0);
    BlockEdits::setStart(*edited, {BlockKind::Audio, 0, 0}, 1.25);
    BlockEdits::setLength(*edited, {BlockKind::Audio, 1, 1}, 5.0);
    const auto expected = song();
    expected->tracks[0].melodyBlocks[1].startBeat = 9.0;
    expected->tracks[1].loopBlocks[0].durationBeats = 6.0;
    expected->audioTracks[0].clips[0].offsetBeats = 1.25;
    expected->audioTracks[1].clips[1].durationBeats = 5.0;
    QCOMPARE(firstDifference(*edited, *expected), QString());
}

// ---- Removing ------------------------------------------------------------------------------

void BlockEditsTest::removingABlockLeavesTheOthers()
{
    const auto edited = song();
    BlockEdits::remove(*edited, {BlockKind::Melody, 0, 0});
    BlockEdits::remove(*edited, {BlockKind::Loop, 1, 1});
    BlockEdits::remove(*edited, {BlockKind::Audio, 1, 0});
    const auto expected = song();
    expected->tracks[0].melodyBlocks = {melody({note(62, 0.0)}, 8.0, 2.0)};
    expected->tracks[1].loopBlocks = {loop("r", "bombo", 4.0, 8.0)};
    expected->audioTracks[1].clips = {clip("c.wav", 6.75, 4.0)};
    QCOMPARE(firstDifference(*edited, *expected), QString());
}

void BlockEditsTest::removingSomeOfAListLeavesTheOthers()
{
    const auto edited = song();
    BlockEdits::removeAll(*edited, {{BlockKind::Loop, 1, 0},
                                    {BlockKind::Melody, 0, 0},
                                    {BlockKind::Loop, 1, 1},
                                    {BlockKind::Audio, 1, 0}});
    const auto expected = song();
    expected->tracks[0].melodyBlocks = {melody({note(62, 0.0)}, 8.0, 2.0)};
    expected->tracks[1].loopBlocks.clear();
    expected->audioTracks[1].clips = {clip("c.wav", 6.75, 4.0)};
    QCOMPARE(firstDifference(*edited, *expected), QString());
}

void BlockEditsTest::removingTheLastBlockLeavesItsTrack()
{
    const auto edited = song();
    BlockEdits::remove(*edited, {BlockKind::Melody, 0, 1});
    BlockEdits::remove(*edited, {BlockKind::Melody, 0, 0});
    BlockEdits::remove(*edited, {BlockKind::Audio, 0, 0});
    QCOMPARE(edited->tracks.size(), 2);
    QVERIFY(edited->tracks[0].melodyBlocks.isEmpty());
    QCOMPARE(edited->audioTracks.size(), 2);
    QVERIFY(edited->audioTracks[0].clips.isEmpty());
}

void BlockEditsTest::removingAChordLeavesTheOthersOfItsBar()
{
    const auto edited = song();
    BlockEdits::remove(*edited, {BlockKind::Chord, 1, 0});
    const auto expected = song();
    expected->harmonyTrack.blocks[1].events = {chord(5, 2.0, 2.0)};
    QCOMPARE(firstDifference(*edited, *expected), QString());
}

void BlockEditsTest::removingTheLastChordOfABarRemovesTheBar()
{
    const auto edited = song();
    BlockEdits::remove(*edited, {BlockKind::Chord, 3, 0});
    QCOMPARE(edited->harmonyTrack.blocks.size(), 2);
    QVERIFY(!edited->harmonyTrack.blockForBar(3));
}

// A damaged file may hold a bar twice.
void BlockEditsTest::removingAChordLooksIntoEveryBlockOfItsBar()
{
    const auto edited = song();
    edited->harmonyTrack.blocks = {
        {.barIndex = 2, .events = {chord(1, 0.0, 1.0), chord(2, 1.0, 1.0)}},
        {.barIndex = 5, .events = {chord(3, 0.0, 1.0), chord(4, 1.0, 1.0)}},
        {.barIndex = 2, .events = {chord(5, 0.0, 1.0), chord(6, 1.0, 1.0)}},
        {.barIndex = 2, .events = {chord(7, 0.0, 1.0)}}};
    BlockEdits::remove(*edited, {BlockKind::Chord, 2, 1});
    const QList<HarmonyBlock> expected{
        {.barIndex = 2, .events = {chord(1, 0.0, 1.0)}},
        {.barIndex = 5, .events = {chord(3, 0.0, 1.0), chord(4, 1.0, 1.0)}},
        {.barIndex = 2, .events = {chord(5, 0.0, 1.0)}},
        {.barIndex = 2, .events = {chord(7, 0.0, 1.0)}}};
    QCOMPARE(edited->harmonyTrack.blocks, expected);
}

void BlockEditsTest::removingAStaleChordStillSweepsEmptyBars()
{
    const auto edited = song();
    edited->harmonyTrack.blocks.append(HarmonyBlock{.barIndex = 9, .events = {}});
    BlockEdits::remove(*edited, {BlockKind::Chord, 77, 0});
    QCOMPARE(edited->harmonyTrack.blocks, song()->harmonyTrack.blocks);
}

// ---- Drags ---------------------------------------------------------------------------------

void BlockEditsTest::moving_data()
{
    QTest::addColumn<BlockSpan>("original");
    QTest::addColumn<double>("pixels");
    QTest::addColumn<double>("step");
    QTest::addColumn<BlockSpan>("expected");

    const BlockSpan block{4.0, 2.0};
    QTest::newRow("not at all") << block << 0.0 << 1.0 << block;
    QTest::newRow("less than half a beat") << block << 15.9 << 1.0 << block;
    QTest::newRow("half a beat") << block << 16.0 << 1.0 << BlockSpan{5.0, 2.0};
    QTest::newRow("half a beat back") << block << -16.0 << 1.0 << BlockSpan{3.0, 2.0};
    QTest::newRow("three beats") << block << 90.0 << 1.0 << BlockSpan{7.0, 2.0};
    QTest::newRow("to the start") << block << -128.0 << 1.0 << BlockSpan{0.0, 2.0};
    QTest::newRow("not before the start") << block << -900.0 << 1.0 << BlockSpan{0.0, 2.0};
    QTest::newRow("block off the grid keeps its offset")
        << BlockSpan{2.3, 1.7} << 64.0 << 1.0 << BlockSpan{4.3, 1.7};
    QTest::newRow("block off the grid stops at the start")
        << BlockSpan{2.3, 1.7} << -96.0 << 1.0 << BlockSpan{0.0, 1.7};
    QTest::newRow("6/8 by less than half a pulse") << block << 23.9 << 1.5 << block;
    QTest::newRow("6/8 by half a pulse") << block << 24.0 << 1.5 << BlockSpan{5.5, 2.0};
    QTest::newRow("6/8 by two pulses") << block << 96.0 << 1.5 << BlockSpan{7.0, 2.0};
    QTest::newRow("block before the start comes in")
        << BlockSpan{-3.0, 2.0} << 0.0 << 1.0 << BlockSpan{0.0, 2.0};
}

void BlockEditsTest::moving()
{
    QFETCH(BlockSpan, original);
    QFETCH(double, pixels);
    QFETCH(double, step);
    QTEST(BlockEdits::moved(original, BlockEdits::wayOver(pixels, step)), "expected");
}

void BlockEditsTest::resizing_data()
{
    QTest::addColumn<BlockSpan>("original");
    QTest::addColumn<double>("pixels");
    QTest::addColumn<double>("step");
    QTest::addColumn<BlockSpan>("expected");

    const BlockSpan block{4.0, 3.0};
    QTest::newRow("not at all") << block << 0.0 << 1.0 << block;
    QTest::newRow("longer") << block << 70.0 << 1.0 << BlockSpan{4.0, 5.0};
    QTest::newRow("shorter") << block << -32.0 << 1.0 << BlockSpan{4.0, 2.0};
    QTest::newRow("not shorter than a beat") << block << -96.0 << 1.0 << BlockSpan{4.0, 1.0};
    QTest::newRow("far to the left of its start") << block << -900.0 << 1.0 << BlockSpan{4.0, 1.0};
    QTest::newRow("length off the grid stays off it")
        << BlockSpan{4.0, 2.25} << 32.0 << 1.0 << BlockSpan{4.0, 3.25};
    QTest::newRow("block shorter than a beat becomes one")
        << BlockSpan{4.0, 0.25} << 0.0 << 1.0 << BlockSpan{4.0, 1.0};
    QTest::newRow("6/8 longer by a pulse") << block << 48.0 << 1.5 << BlockSpan{4.0, 4.5};
    QTest::newRow("6/8 not shorter than a pulse") << block << -400.0 << 1.5 << BlockSpan{4.0, 1.5};
    QTest::newRow("start before the song stays")
        << BlockSpan{-2.0, 3.0} << 32.0 << 1.0 << BlockSpan{-2.0, 4.0};
}

void BlockEditsTest::resizing()
{
    QFETCH(BlockSpan, original);
    QFETCH(double, pixels);
    QFETCH(double, step);
    QTEST(BlockEdits::resized(original, BlockEdits::wayOver(pixels, step), step), "expected");
}

void BlockEditsTest::goingBackWithinADragRestores()
{
    SeededRandom random(7);
    for (int i = 0; i < 2000; ++i) {
        const BlockSpan original{random.between(0.0, 200.0), random.between(1.5, 20.0)};
        const double step = random.oneIn(2) ? 1.0 : 1.5;
        const double back = random.between(-0.49, 0.49) * 32.0 * step;
        QCOMPARE(BlockEdits::moved(original, BlockEdits::wayOver(back, step)), original);
        QCOMPARE(BlockEdits::resized(original, BlockEdits::wayOver(back, step), step), original);
    }
}

void BlockEditsTest::movingKeepsLengthAndOffsetFromTheGrid()
{
    SeededRandom random(8);
    for (int i = 0; i < 2000; ++i) {
        const BlockSpan original{random.between(0.0, 50.0), random.between(0.0, 20.0)};
        const double step = random.oneIn(2) ? 1.0 : 1.5;
        const double way = random.between(-3000.0, 3000.0);
        const BlockSpan moved = BlockEdits::moved(original, BlockEdits::wayOver(way, step));
        QCOMPARE(moved.length, original.length);
        QVERIFY(moved.start >= 0.0);
        if (moved.start > 0.0) {
            const double steps = (moved.start - original.start) / step;
            QVERIFY(std::abs(steps - std::round(steps)) < 1e-9);
            QVERIFY(std::abs(moved.start - original.start - way / 32.0) <= step / 2.0 + 1e-9);
        }
        const BlockSpan resized =
            BlockEdits::resized(original, BlockEdits::wayOver(way, step), step);
        QCOMPARE(resized.start, original.start);
        QVERIFY(resized.length >= step);
    }
}

void BlockEditsTest::absurdNumbersStayHarmless()
{
    using Limits = std::numeric_limits<double>;
    const QList<double> absurd{
        0.0, -0.0, 1e300, -1e300, Limits::infinity(), -1e-300, -1.0, Limits::quiet_NaN()};
    for (const double start : absurd) {
        for (const double length : absurd) {
            for (const double way : {-1e300, -1e9, 0.0, 1e9, 1e300}) {
                QVERIFY(BlockEdits::moved({start, length}, BlockEdits::wayOver(way, 1.5)).start >=
                        0.0);
                QVERIFY(BlockEdits::resized({start, length}, BlockEdits::wayOver(way, 1.5), 1.5)
                            .length >= 1.5);
            }
        }
    }
}

VELTA_GUILESS_TEST(BlockEditsTest)

} // namespace BlockEditsTests

#include "BlockEditsTest.moc"
