#include "listen/DemoSong.h"

#include "model/Project.h"
#include "storage/LocalStorageProvider.h"
#include "support/ContentFixture.h"
#include "support/TestProgram.h"

#include <QTemporaryDir>
#include <QTest>

#include <numeric>

namespace DemoSongTests {

using DemoSong::Part;
using RhythmDemo::Loop;

namespace {

QList<Loop> loopsOf(int intro, int normal, int intermedio, int final)
{
    QList<Loop> loops{{LoopSection::Intro, 1, intro}, {LoopSection::Intro, 2, intro}};
    for (int index = 1; index <= 4; ++index)
        loops.append({LoopSection::Normal, index, normal});
    loops.append({LoopSection::Intermedio, 1, intermedio});
    loops.append({LoopSection::Final, 1, final});
    return loops;
}

int barsOf(const QList<Part>& parts)
{
    return std::accumulate(parts.begin(), parts.end(), 0,
                           [](int sum, const Part& part) { return sum + part.bars; });
}

QList<int> lengthsOf(const QList<Part>& parts)
{
    QList<int> bars;
    for (const Part& part : parts)
        bars.append(part.bars);
    return bars;
}

} // namespace

class DemoSongTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void aSongGoesFromIntroToFinal();
    void everySongHasSixteenBars();
    void longSidesAreCutAtFourBars();
    void whatARhythmLacksIsLeftOut();
    void withoutANormalLoopThereIsNoSong();
    void chordsGoOutAndComeHome();
    void everyLayerPlaysItsParts();
    void theSongIsAWorkThatOpens();

private:
    ContentFixture content_;
};

void DemoSongTest::initTestCase()
{
    const Rhythm zamba{.id = "zamba",
                       .displayName = {},
                       .styleId = {},
                       .timeSignature = {.numerator = 6, .denominator = 8, .isCompound = true},
                       .grooveTemplateId = {}};
    const LoopLayer bass{.id = "zamba_bajo",
                         .rhythmId = "zamba",
                         .label = "Bajo",
                         .instrumentId = "gm_bajo",
                         .pitched = true};
    const auto loop = [](LoopSection section, int index, int bars) {
        return LoopVariant{.layerId = "zamba_bajo",
                           .section = section,
                           .variantIndex = index,
                           .notes = {},
                           .durationBars = bars};
    };
    QJsonObject package =
        jsonObject(packageText(zamba, {bass},
                               {loop(LoopSection::Intro, 1, 2), loop(LoopSection::Normal, 1, 1),
                                loop(LoopSection::Normal, 2, 2), loop(LoopSection::Final, 1, 2)}));
    QJsonObject rhythm = package["rhythm"].toObject();
    rhythm["referenceBpm"] = 84;
    rhythm["displayName"] = "Zamba";
    package["rhythm"] = rhythm;
    content_.addPackage("zamba", QJsonDocument(package).toJson());
    content_.library().reload();
}

void DemoSongTest::aSongGoesFromIntroToFinal()
{
    const QList<Part> parts = DemoSong::partsOf(loopsOf(2, 4, 2, 2));
    QList<LoopSection> sections;
    for (const Part& part : parts)
        sections.append(part.loop.section);
    using enum LoopSection;
    QCOMPARE(sections,
             (QList<LoopSection>{Intro, Normal, Normal, Intermedio, Normal, Normal, Final}));
    QCOMPARE(lengthsOf(parts), (QList<int>{2, 2, 4, 2, 2, 2, 2}));
}

void DemoSongTest::everySongHasSixteenBars()
{
    for (int intro = 1; intro <= 16; ++intro) {
        for (int final = 1; final <= 16; ++final) {
            const QList<Part> parts = DemoSong::partsOf(loopsOf(intro, 2, intro, final));
            QCOMPARE(barsOf(parts), DemoSong::kBars);
            for (const Part& part : parts)
                QVERIFY(part.bars >= 1);
        }
    }
}

void DemoSongTest::longSidesAreCutAtFourBars()
{
    const QList<int> bars = lengthsOf(DemoSong::partsOf(loopsOf(8, 4, 16, 8)));
    QCOMPARE(bars, (QList<int>{4, 1, 1, 4, 1, 1, 4}));
}

void DemoSongTest::whatARhythmLacksIsLeftOut()
{
    const QList<Part> parts = DemoSong::partsOf({{LoopSection::Normal, 2, 4}});
    QCOMPARE(parts, (QList<Part>{{{LoopSection::Normal, 2, 4}, 16}}));
}

void DemoSongTest::withoutANormalLoopThereIsNoSong()
{
    QVERIFY(DemoSong::partsOf({{LoopSection::Intro, 1, 4}}).isEmpty());
    QVERIFY(DemoSong::partsOf({}).isEmpty());
    const Rhythm nobody{.id = "nadie",
                        .displayName = {},
                        .styleId = {},
                        .timeSignature = {},
                        .grooveTemplateId = {}};
    QVERIFY(!DemoSong::of(content_.library(), nobody));
}

void DemoSongTest::chordsGoOutAndComeHome()
{
    const auto song = DemoSong::of(content_.library(), *content_.library().findRhythm("zamba"),
                                   {.key = {.rootPitchClass = 7, .mode = KeyMode::Major}});
    QList<int> degrees;
    for (int bar = 0; bar < DemoSong::kBars; ++bar)
        degrees.append(song->harmonyTrack.eventAt(bar * 3.0, 3.0)->degree);
    QCOMPARE(degrees.first(), 1);
    QCOMPARE(degrees.last(2), (QList<int>{5, 1}));
    QVERIFY(QSet<int>(degrees.begin(), degrees.end()).size() >= 4);
    QVERIFY(song->harmonyTrack.muted);
    QCOMPARE(song->keySignature.rootPitchClass, 7);
    QCOMPARE(song->bpm, 84);
}

void DemoSongTest::everyLayerPlaysItsParts()
{
    const auto song =
        DemoSong::of(content_.library(), *content_.library().findRhythm("zamba"), {.bpm = 100});
    QCOMPARE(song->bpm, 100);
    QCOMPARE(song->tracks.size(), 1);
    double end = 0.0;
    for (const LoopBlock& block : song->tracks.at(0).loopBlocks) {
        QCOMPARE(block.startBeat, end);
        end += block.durationBeats;
    }
    QCOMPARE(end, DemoSong::kBars * 3.0);
    QCOMPARE(song->tracks.at(0).loopBlocks.last().section, LoopSection::Final);
}

void DemoSongTest::theSongIsAWorkThatOpens()
{
    const QTemporaryDir folder;
    const auto song = DemoSong::of(content_.library(), *content_.library().findRhythm("zamba"));
    LocalStorageProvider works(folder.path());
    QVERIFY(works.saveProject("cancion", *song));
    const std::unique_ptr<Project> opened(works.loadProject("cancion", nullptr));
    QVERIFY(opened);
    QCOMPARE(opened->name, "Zamba");
    QCOMPARE(opened->tracks, song->tracks);
    QCOMPARE(opened->harmonyTrack, song->harmonyTrack);
}

VELTA_GUILESS_TEST(DemoSongTest)

} // namespace DemoSongTests

#include "DemoSongTest.moc"
