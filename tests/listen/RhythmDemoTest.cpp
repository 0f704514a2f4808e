#include "listen/RhythmDemo.h"

#include "model/Project.h"
#include "support/ContentFixture.h"
#include "support/TestProgram.h"

#include <QTest>

namespace RhythmDemoTests {

using RhythmDemo::Loop;

namespace {

LoopVariant variantOf(const QString& layerId, LoopSection section, int index, int bars)
{
    return {.layerId = layerId,
            .section = section,
            .variantIndex = index,
            .notes = {},
            .durationBars = bars};
}

} // namespace

class RhythmDemoTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void loopsStandInTheOrderOfASong();
    void theLongestLayerGivesTheLength();
    void aRhythmWithoutLayersHasNoLoops();
    void everyLayerHasATrack();
    void aLayerWithoutTheLoopHasNoTrack();
    void everyChordLastsOneLoop();
    void theSongHasTheTempoAndTheMeterOfTheRhythm();
    void theChordsThemselvesAreSilent();
    void aTrackAloneKeepsTheSong();
    void aSettingGivesKeyChordsAndTempo();
    void layersAreKeptByTheirId();

private:
    std::unique_ptr<Project> song(const Loop& loop)
    {
        return RhythmDemo::song(content_.library(), *content_.library().findRhythm("zamba"), loop);
    }

    ContentFixture content_;
};

void RhythmDemoTest::initTestCase()
{
    const Rhythm zamba{.id = "zamba",
                       .displayName = {},
                       .styleId = {},
                       .timeSignature = {.numerator = 6, .denominator = 8, .isCompound = true},
                       .grooveTemplateId = {}};
    const auto layer = [](const QString& id, bool pitched) {
        return LoopLayer{
            .id = id, .rhythmId = "zamba", .label = id, .instrumentId = {}, .pitched = pitched};
    };
    const QList layers{layer("bombo", false), layer("bajo", true)};
    QJsonObject package = jsonObject(packageText(
        zamba, layers,
        {variantOf("bombo", LoopSection::Final, 1, 1),
         variantOf("bombo", LoopSection::Normal, 2, 1),
         variantOf("bombo", LoopSection::Normal, 1, 2),
         variantOf("bajo", LoopSection::Normal, 2, 4), variantOf("bajo", LoopSection::Intro, 1, 1),
         variantOf("bajo", LoopSection::Intermedio, 3, 1)}));
    QJsonObject rhythm = package["rhythm"].toObject();
    rhythm["referenceBpm"] = 84;
    package["rhythm"] = rhythm;
    content_.addPackage("zamba", QJsonDocument(package).toJson());
    content_.addPackage("vacio", R"({"rhythm": {"id": "vacio", "referenceBpm": 61}})");
    content_.library().reload();
}

void RhythmDemoTest::loopsStandInTheOrderOfASong()
{
    QStringList order;
    for (const Loop& loop : RhythmDemo::loopsOf(content_.library(), "zamba"))
        order.append(loopSectionToString(loop.section) + QString::number(loop.variantIndex));
    QCOMPARE(order, (QStringList{"Intro1", "Normal1", "Normal2", "Intermedio3", "Final1"}));
}

void RhythmDemoTest::theLongestLayerGivesTheLength()
{
    const QList<Loop> loops = RhythmDemo::loopsOf(content_.library(), "zamba");
    QCOMPARE(loops.at(2), (Loop{LoopSection::Normal, 2, 4}));
}

void RhythmDemoTest::aRhythmWithoutLayersHasNoLoops()
{
    QVERIFY(RhythmDemo::loopsOf(content_.library(), "vacio").isEmpty());
    QVERIFY(RhythmDemo::loopsOf(content_.library(), "nadie").isEmpty());
}

void RhythmDemoTest::everyLayerHasATrack()
{
    const auto demo = song({LoopSection::Normal, 2, 4});
    QCOMPARE(demo->tracks.size(), 2);
    QCOMPARE(demo->tracks.at(0).name, "bombo");
    // Four chords of four bars of three beats.
    for (const Track& track : demo->tracks)
        QCOMPARE(track.loopBlocks.at(0).durationBeats, 48.0);
    QCOMPARE(demo->tracks.at(1).loopBlocks.at(0).variantIndex, 2);
}

void RhythmDemoTest::aLayerWithoutTheLoopHasNoTrack()
{
    const auto demo = song({LoopSection::Intro, 1, 1});
    QCOMPARE(demo->tracks.size(), 1);
    QCOMPARE(demo->tracks.at(0).layerId, "bajo");
}

void RhythmDemoTest::everyChordLastsOneLoop()
{
    const auto demo = song({LoopSection::Normal, 1, 2});
    QList<int> degrees;
    for (int bar = 0; bar < 9; ++bar) {
        const auto* chord = demo->harmonyTrack.eventAt(bar * 3.0 + 1.0, 3.0);
        degrees.append(chord ? chord->degree : 0);
    }
    QCOMPARE(degrees, (QList<int>{1, 1, 4, 4, 5, 5, 1, 1, 0}));
}

void RhythmDemoTest::theSongHasTheTempoAndTheMeterOfTheRhythm()
{
    const auto demo = song({LoopSection::Normal, 1, 2});
    QCOMPARE(demo->bpm, 84);
    QCOMPARE(demo->beatsPerBar(), 3.0);
    QCOMPARE(demo->keySignature, (KeySignature{.rootPitchClass = 9, .mode = KeyMode::Minor}));
}

void RhythmDemoTest::theChordsThemselvesAreSilent()
{
    QVERIFY(song({LoopSection::Normal, 1, 2})->harmonyTrack.muted);
}

void RhythmDemoTest::aTrackAloneKeepsTheSong()
{
    const auto demo = song({LoopSection::Normal, 2, 4});
    const auto bass = RhythmDemo::alone(*demo, 1);
    QCOMPARE(bass->tracks, QList{demo->tracks.at(1)});
    QCOMPARE(bass->harmonyTrack, demo->harmonyTrack);
    QCOMPARE(bass->bpm, 84);
}

void RhythmDemoTest::aSettingGivesKeyChordsAndTempo()
{
    const KeySignature key{.rootPitchClass = 2, .mode = KeyMode::Dorian};
    const auto demo =
        RhythmDemo::song(content_.library(), *content_.library().findRhythm("zamba"),
                         {LoopSection::Normal, 1, 2}, {.key = key, .degrees = {2, 6}, .bpm = 99});
    QCOMPARE(demo->keySignature, key);
    QCOMPARE(demo->bpm, 99);
    QCOMPARE(demo->harmonyTrack.eventAt(1.0, 3.0)->degree, 2);
    QCOMPARE(demo->harmonyTrack.eventAt(7.0, 3.0)->degree, 6);
    QCOMPARE(demo->tracks.at(0).loopBlocks.at(0).durationBeats, 12.0);
}

void RhythmDemoTest::layersAreKeptByTheirId()
{
    const auto kept = [this](const QStringList& layers) {
        const auto demo = song({LoopSection::Normal, 2, 4});
        demo->tracks[1].layerId = "zamba_bajo";
        RhythmDemo::keepLayers(*demo, layers);
        QStringList ids;
        for (const Track& track : demo->tracks)
            ids.append(track.layerId);
        return ids;
    };
    QCOMPARE(kept({}), (QStringList{"bombo", "zamba_bajo"}));
    QCOMPARE(kept({"bajo"}), (QStringList{"zamba_bajo"}));
    QCOMPARE(kept({"zamba_bajo", "bombo"}), (QStringList{"bombo", "zamba_bajo"}));
    QCOMPARE(kept({"jo"}), QStringList());
}

VELTA_GUILESS_TEST(RhythmDemoTest)

} // namespace RhythmDemoTests

#include "RhythmDemoTest.moc"
