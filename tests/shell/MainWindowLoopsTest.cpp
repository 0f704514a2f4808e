#include "support/ContentFixture.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"
#include "views/arranger/TrackArranger.h"

#include <QTest>

#include <limits>

namespace MainWindowLoopsTests {

using namespace ProjectBuilder;

namespace {

QJsonObject layerJson(const QString& rhythm, const QString& part, const QString& label,
                      const QString& instrument)
{
    return {{"id", rhythm + '_' + part},
            {"rhythmId", rhythm},
            {"label", label},
            {"instrumentId", instrument}};
}

QJsonObject loopJson(const QString& layer, const QString& section, int index, int bars)
{
    return {{"layerId", layer},
            {"section", section},
            {"variantIndex", index},
            {"durationBars", bars},
            {"notes", QJsonArray{noteJson(note(60, 0.0))}}};
}

/// Two Normal loops of a layer and one for each other section.
void appendLoops(QJsonArray& loops, const QString& layer, int bars)
{
    for (const char* section : {"Intro", "Intermedio", "Normal", "Final"})
        loops.append(loopJson(layer, section, 1, bars));
    loops.append(loopJson(layer, "Normal", 2, bars));
}

/// A rhythm of a drum and a bass, with loops of `bars` bars.
QByteArray packageOf(const QString& id, const QString& name, int numerator, int denominator,
                     int bars)
{
    QJsonArray loops;
    appendLoops(loops, id + "_bombo", bars);
    appendLoops(loops, id + "_bajo", bars);
    const QJsonObject meter{{"numerator", numerator}, {"denominator", denominator}};
    return QJsonDocument(
               QJsonObject{
                   {"rhythm",
                    QJsonObject{{"id", id}, {"displayName", name}, {"timeSignature", meter}}},
                   {"loopLayers", QJsonArray{layerJson(id, "bombo", "Bombo", "gm_bateria"),
                                             layerJson(id, "bajo", "Bajo", "gm_bajo")}},
                   {"loopVariants", loops}})
        .toJson();
}

} // namespace

/// Loops on their way from the library into the song.
class MainWindowLoopsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void aLoopMakesTheTrackOfItsLayer();
    void loopsOfOneLayerShareATrack();
    void theTrackOfALayerKeepsItsName();
    void aLoopLastsBarsOfItsOwnMeter();
    void aPlaceBeforeTheSongIsItsStart_data();
    void aPlaceBeforeTheSongIsItsStart();
    void aChosenLoopGoesToTheBarOfThePlayhead_data();
    void aChosenLoopGoesToTheBarOfThePlayhead();
    void clicksLayLoopsOneBehindTheOther();
    void aClickWhileTheSongPlaysLeavesThePlayheadAlone();
    void aDropLeavesThePlayheadAlone();
    void undoAndRedoTakeThePlayheadAlong();
    void theSameLoopIsNotLaidOnItself();
    void aLoopThatTheLibraryLacksIsNotPlaced_data();
    void aLoopThatTheLibraryLacksIsNotPlaced();
    void aThirteenthTrackTakesLoopsOfItsLayer();
    void aNewLayerFindsNoPlaceInAFullList();
    void theMessageNamesSectionTrackAndBar_data();
    void theMessageNamesSectionTrackAndBar();
    void namesWithPlaceholdersAreShownAsTheyAre();
    void placingIsOneStepOfUndo();
    void aDropOnTheArrangerIsPlaced();
    void aMeterWithoutBarsPlacesAtTheStart();

private:
    void place(const QString& layer, LoopSection section, int index, double beat)
    {
        stage_->window().placeLoop("zamba", layer, static_cast<int>(section), index, beat);
    }

    void choose(const QString& layer, int index = 1)
    {
        LoopBlock block = loop("zamba", layer, -1.0, 6.0);
        block.variantIndex = index;
        stage_->window().handleLoopChosen(block, "gm_bajo", "Bajo");
    }

    QList<double> startsOn(qsizetype track)
    {
        QList<double> starts;
        for (const LoopBlock& block : stage_->song().tracks.at(track).loopBlocks)
            starts.append(block.startBeat);
        return starts;
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowLoopsTest::init()
{
    stage_ = std::make_unique<WindowStage>();
    const auto add = [this](const QString& id, const QByteArray& package) {
        ContentFixture::write(
            stage_->home().filePath("resources/loops/installed/" + id + ".content.json"), package);
    };
    add("zamba", packageOf("zamba", "Zamba", 6, 8, 2));
    add("rock", packageOf("rock", "100%1 rock", 4, 4, 1));
    stage_->window();
}

void MainWindowLoopsTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

void MainWindowLoopsTest::aLoopMakesTheTrackOfItsLayer()
{
    place("zamba_bombo", LoopSection::Normal, 2, 8.0);
    QCOMPARE(stage_->song().tracks.size(), 2);
    const Track& track = stage_->song().tracks.at(1);
    QCOMPARE(track.name, "Zamba · Bombo");
    QCOMPARE(track.instrumentId, "gm_bateria");
    QCOMPARE(track.layerId, "zamba_bombo");
    QVERIFY(track.isAccompaniment);
    LoopBlock expected = loop("zamba", "zamba_bombo", 8.0, 6.0);
    expected.section = LoopSection::Normal;
    expected.variantIndex = 2;
    QCOMPARE(track.loopBlocks, QList{expected});
}

void MainWindowLoopsTest::loopsOfOneLayerShareATrack()
{
    place("zamba_bombo", LoopSection::Intro, 1, 0.0);
    place("zamba_bajo", LoopSection::Normal, 1, 0.0);
    place("zamba_bombo", LoopSection::Normal, 1, 12.0);
    QCOMPARE(stage_->song().tracks.size(), 3);
    QCOMPARE(stage_->song().tracks.at(1).loopBlocks.size(), 2);
    QCOMPARE(stage_->song().tracks.at(2).loopBlocks.size(), 1);
}

void MainWindowLoopsTest::theTrackOfALayerKeepsItsName()
{
    place("zamba_bombo", LoopSection::Normal, 1, 0.0);
    stage_->song().tracks[1].name = "Mis bombos";
    place("zamba_bombo", LoopSection::Normal, 2, 12.0);
    QCOMPARE(stage_->song().tracks.size(), 2);
    QCOMPARE(stage_->song().tracks.at(1).name, "Mis bombos");
    QCOMPARE(stage_->message(), "Normal 2 agregada a «Mis bombos» en el compás 4.");
}

void MainWindowLoopsTest::aLoopLastsBarsOfItsOwnMeter()
{
    QCOMPARE(stage_->song().beatsPerBar(), 4.0);
    place("zamba_bombo", LoopSection::Normal, 1, 4.0);
    QCOMPARE(stage_->song().tracks.at(1).loopBlocks.at(0).durationBeats, 6.0);
}

void MainWindowLoopsTest::aPlaceBeforeTheSongIsItsStart_data()
{
    QTest::addColumn<double>("beat");
    QTest::newRow("0 stays 0, wherever the playhead stands") << 0.0;
    QTest::newRow("before the song") << -4.0;
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN();
}

void MainWindowLoopsTest::aPlaceBeforeTheSongIsItsStart()
{
    QFETCH(double, beat);
    stage_->engine().setPlayheadBeat(9.0);
    place("zamba_bombo", LoopSection::Normal, 1, beat);
    QCOMPARE(stage_->song().tracks.at(1).loopBlocks.at(0).startBeat, 0.0);
}

void MainWindowLoopsTest::aChosenLoopGoesToTheBarOfThePlayhead_data()
{
    QTest::addColumn<double>("playhead");
    QTest::addColumn<double>("start");
    QTest::newRow("at the start") << 0.0 << 0.0;
    QTest::newRow("within the third bar") << 9.75 << 8.0;
    QTest::newRow("on a bar line") << 12.0 << 12.0;
}

void MainWindowLoopsTest::aChosenLoopGoesToTheBarOfThePlayhead()
{
    QFETCH(double, playhead);
    stage_->engine().setPlayheadBeat(playhead);
    stage_->window().handleLoopChosen(loop("zamba", "zamba_bajo", -1.0, 6.0), "gm_bajo", "Bajo");
    QTEST(stage_->song().tracks.at(1).loopBlocks.at(0).startBeat, "start");
}

void MainWindowLoopsTest::clicksLayLoopsOneBehindTheOther()
{
    stage_->song().timeSignature = {.numerator = 6, .denominator = 8, .isCompound = true};
    stage_->engine().setPlayheadBeat(4.0);
    for (const int index : {1, 1, 2})
        choose("zamba_bajo", index);
    QCOMPARE(startsOn(1), (QList{3.0, 9.0, 15.0}));
    QCOMPARE(stage_->engine().playheadBeat(), 21.0);
    QVERIFY(!stage_->engine().isPlaying());
}

void MainWindowLoopsTest::aClickWhileTheSongPlaysLeavesThePlayheadAlone()
{
    stage_->song().tracks[0].melodyBlocks = {melody({note(60, 0.0, 400.0)}, 0.0, 400.0)};
    stage_->engine().play(200.0);
    choose("zamba_bajo");
    QCOMPARE(startsOn(1), QList{200.0});
    QVERIFY(stage_->engine().isPlaying());
    QVERIFY(stage_->engine().playheadBeat() < 206.0);
    stage_->engine().stop();
}

void MainWindowLoopsTest::aDropLeavesThePlayheadAlone()
{
    stage_->engine().setPlayheadBeat(4.0);
    place("zamba_bombo", LoopSection::Normal, 1, 8.0);
    QCOMPARE(stage_->engine().playheadBeat(), 4.0);
}

void MainWindowLoopsTest::undoAndRedoTakeThePlayheadAlong()
{
    const QJsonObject blank = stage_->song().toJson();
    stage_->song().timeSignature = {.numerator = 3, .denominator = 4};
    choose("zamba_bajo", 1);
    choose("zamba_bombo", 2);
    const QJsonObject whole = stage_->song().toJson();
    stage_->choose("Deshacer");
    QCOMPARE(stage_->engine().playheadBeat(), 6.0);
    stage_->choose("Deshacer");
    QCOMPARE(stage_->engine().playheadBeat(), 0.0);
    QCOMPARE(stage_->song().toJson(), blank);
    stage_->choose("Rehacer");
    stage_->choose("Rehacer");
    QCOMPARE(stage_->song().toJson(), whole);
    QCOMPARE(stage_->engine().playheadBeat(), 12.0);
    // Who has gone elsewhere stays there.
    stage_->engine().setPlayheadBeat(3.0);
    stage_->choose("Deshacer");
    QCOMPARE(stage_->engine().playheadBeat(), 3.0);
    stage_->choose("Rehacer");
    QCOMPARE(stage_->engine().playheadBeat(), 3.0);
}

void MainWindowLoopsTest::theSameLoopIsNotLaidOnItself()
{
    place("zamba_bajo", LoopSection::Normal, 1, 0.0);
    const QJsonObject before = stage_->song().toJson();
    place("zamba_bajo", LoopSection::Normal, 1, 0.0);
    QCOMPARE(stage_->message(), "Ahí ya está Normal 1.");
    choose("zamba_bajo");
    QCOMPARE(stage_->message(), "Ahí ya está Normal 1.");
    QCOMPARE(stage_->engine().playheadBeat(), 0.0);
    QCOMPARE(stage_->song().toJson(), before);
    stage_->choose("Deshacer");
    QVERIFY(!stage_->canUndo());
}

void MainWindowLoopsTest::aLoopThatTheLibraryLacksIsNotPlaced_data()
{
    QTest::addColumn<QString>("rhythm");
    QTest::addColumn<QString>("layer");
    QTest::addColumn<int>("section");
    QTest::addColumn<int>("index");
    const QString zamba("zamba");
    const QString bombo("zamba_bombo");
    QTest::newRow("no such rhythm") << "vals" << bombo << 2 << 1;
    QTest::newRow("no such layer") << zamba << "zamba_arpa" << 2 << 1;
    QTest::newRow("no such variant") << zamba << bombo << 2 << 3;
    QTest::newRow("no such section") << zamba << bombo << 9 << 1;
    QTest::newRow("another case") << "Zamba" << bombo << 2 << 1;
    QTest::newRow("a negative section") << zamba << bombo << -1 << 1;
}

void MainWindowLoopsTest::aLoopThatTheLibraryLacksIsNotPlaced()
{
    QFETCH(QString, rhythm);
    QFETCH(QString, layer);
    QFETCH(int, section);
    QFETCH(int, index);
    const QJsonObject before = stage_->song().toJson();
    stage_->window().placeLoop(rhythm, layer, section, index, 4.0);
    QCOMPARE(stage_->song().toJson(), before);
    QVERIFY(!stage_->canUndo());
    QCOMPARE(stage_->message(), QString());
    QVERIFY(stage_->prompts().calls().isEmpty());
}

void MainWindowLoopsTest::aThirteenthTrackTakesLoopsOfItsLayer()
{
    place("zamba_bombo", LoopSection::Normal, 1, 0.0);
    while (stage_->song().tracks.size() < kMaxNoteTracks)
        stage_->song().tracks.append(melodyTrack({}));
    place("zamba_bombo", LoopSection::Final, 1, 24.0);
    QCOMPARE(stage_->song().tracks.at(1).loopBlocks.size(), 2);
    QVERIFY(stage_->prompts().calls().isEmpty());
}

void MainWindowLoopsTest::aNewLayerFindsNoPlaceInAFullList()
{
    while (stage_->song().tracks.size() < kMaxNoteTracks)
        stage_->song().tracks.append(melodyTrack({}));
    const QJsonObject before = stage_->song().toJson();
    place("zamba_bombo", LoopSection::Normal, 1, 0.0);
    QCOMPARE(stage_->song().toJson(), before);
    QCOMPARE(stage_->prompts().takeCalls(),
             QStringList{"inform | Veltas | No quedan veltas libres."});
    QVERIFY(!stage_->canUndo());
}

void MainWindowLoopsTest::theMessageNamesSectionTrackAndBar_data()
{
    QTest::addColumn<LoopSection>("section");
    QTest::addColumn<double>("beat");
    QTest::addColumn<QString>("message");
    QTest::newRow("an intro at the start")
        << LoopSection::Intro << 0.0 << "Introducción 1 agregada a «Zamba · Bajo» en el compás 1.";
    QTest::newRow("a normal loop on the third bar")
        << LoopSection::Normal << 8.0 << "Normal 1 agregada a «Zamba · Bajo» en el compás 3.";
    QTest::newRow("an interlude within the fourth bar")
        << LoopSection::Intermedio << 13.0
        << "Intermedio 1 agregada a «Zamba · Bajo» en el compás 4.";
    QTest::newRow("an ending on the hundredth bar")
        << LoopSection::Final << 396.0 << "Final 1 agregada a «Zamba · Bajo» en el compás 100.";
}

void MainWindowLoopsTest::theMessageNamesSectionTrackAndBar()
{
    QFETCH(LoopSection, section);
    QFETCH(double, beat);
    place("zamba_bajo", section, 1, beat);
    QTEST(stage_->message(), "message");
}

void MainWindowLoopsTest::namesWithPlaceholdersAreShownAsTheyAre()
{
    stage_->window().placeLoop("rock", "rock_bajo", 2, 2, 4.0);
    QCOMPARE(stage_->message(), "Normal 2 agregada a «100%1 rock · Bajo» en el compás 2.");
}

void MainWindowLoopsTest::placingIsOneStepOfUndo()
{
    const QJsonObject before = stage_->song().toJson();
    place("zamba_bombo", LoopSection::Normal, 1, 0.0);
    stage_->choose("Deshacer");
    QCOMPARE(stage_->song().toJson(), before);
    QVERIFY(!stage_->canUndo());
}

void MainWindowLoopsTest::aDropOnTheArrangerIsPlaced()
{
    auto* arranger = stage_->window().findChild<TrackArranger*>();
    emit arranger->loopDropped("zamba", "zamba_bombo", LoopSection::Final, 1, 12.0);
    QCOMPARE(stage_->song().tracks.size(), 2);
    QCOMPARE(stage_->song().tracks.at(1).loopBlocks.at(0).section, LoopSection::Final);
    QCOMPARE(stage_->song().tracks.at(1).loopBlocks.at(0).startBeat, 12.0);
}

void MainWindowLoopsTest::aMeterWithoutBarsPlacesAtTheStart()
{
    stage_->song().timeSignature.denominator = 0;
    stage_->engine().setPlayheadBeat(9.0);
    stage_->window().handleLoopChosen(loop("zamba", "zamba_bajo", -1.0, 6.0), "gm_bajo", "Bajo");
    QCOMPARE(stage_->song().tracks.at(1).loopBlocks.at(0).startBeat, 0.0);
    QCOMPARE(stage_->message(), "Normal 1 agregada a «Bajo» en el compás 1.");
}

VELTA_TEST(MainWindowLoopsTest)

} // namespace MainWindowLoopsTests

#include "MainWindowLoopsTest.moc"
