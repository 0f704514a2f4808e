#include "views/arranger/ArrangerScene.h"

#include "ArrangerStage.h"
#include "shell/theme/ThemeManager.h"
#include "support/ContextTranslator.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"

#include <QPainter>
#include <QTranslator>

#include <cmath>
#include <limits>

namespace ArrangerSceneTests {

using namespace ProjectBuilder;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kMostInt = std::numeric_limits<int>::max();
constexpr int kLeastInt = std::numeric_limits<int>::min();

/// "kind track/block x,y widthxheight color label".
QString written(const BlockItem& item)
{
    const BlockRef& block = item.block();
    return QStringLiteral("%1 %2/%3 %4,%5 %6x%7 %8 %9")
        .arg(static_cast<int>(block.kind))
        .arg(block.trackIndex)
        .arg(block.blockIndex)
        .arg(item.rect().x())
        .arg(item.rect().y())
        .arg(item.rect().width())
        .arg(item.rect().height())
        .arg(item.fill().name(), item.label());
}

QList<BlockItem*> blocksOf(const ArrangerScene& scene)
{
    QList<BlockItem*> blocks;
    for (QGraphicsItem* item : scene.items(Qt::AscendingOrder)) {
        if (auto* block = qgraphicsitem_cast<BlockItem*>(item))
            blocks.append(block);
    }
    return blocks;
}

/// The blocks of a scene in the order in which they are painted.
QStringList written(const ArrangerScene& scene)
{
    QStringList lines;
    for (const BlockItem* block : blocksOf(scene))
        lines.append(written(*block));
    return lines;
}

QGraphicsLineItem* playheadOf(const ArrangerScene& scene)
{
    QGraphicsLineItem* found = nullptr;
    for (QGraphicsItem* item : scene.items()) {
        if (auto* line = qgraphicsitem_cast<QGraphicsLineItem*>(item))
            found = found ? nullptr : line;
    }
    return found;
}

/// Puts every text into marks.
class Foreign : public QTranslator {
public:
    QString translate(const char* context, const char* source, const char*, int) const override
    {
        return qstrcmp(context, "TrackArranger") == 0 ? "<" + QString::fromUtf8(source) + ">"
                                                      : QString();
    }

    bool isEmpty() const override { return false; }
};

} // namespace

class ArrangerSceneTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void songBecomesBlocks();
    void blocksOfFoldedGroupsAreLeftOut();
    void blocksWithoutALaneAreLeftOut();
    void barsOfChordsFollowTheMeter_data();
    void barsOfChordsFollowTheMeter();
    void chordsAreLabelledInTheKey_data();
    void chordsAreLabelledInTheKey();
    void degreesHaveTheirColors_data();
    void degreesHaveTheirColors();
    void loopsAreLabelledBySection_data();
    void loopsAreLabelledBySection();
    void melodiesTellTheirNotes_data();
    void melodiesTellTheirNotes();
    void textsAreTranslatedInTheContextOfTheArranger();
    void blocksKeepTheirColorsInTheDark();

    void loopsLieOverMelodies();
    void laterBlocksLieOverEarlierOnes();
    void blockAtAPlace_data();
    void blockAtAPlace();
    void itemOfABlock();

    void playheadIsALineOverEverything();
    void playheadHasTheColorOfTheTheme();
    void playheadMovesWithTheBeat_data();
    void playheadMovesWithTheBeat();
    void rebuildBringsThePlayheadBack();
    void emptySceneHasNoPlayheadToMove();

    void rebuildForgetsWhatWasThere();
    void sceneIsAsLargeAsTheSong();
    void blocksWithoutAFinitePlaceAreNotDrawn_data();
    void blocksWithoutAFinitePlaceAreNotDrawn();
    void chordsWithoutAFinitePlaceAreNotDrawn_data();
    void chordsWithoutAFinitePlaceAreNotDrawn();
    void hostileSongsAreBuiltAndPainted();
    void loopsKnowTheirRepetitions();

private:
    void rebuild() { scene_.rebuild(song_, ArrangerLayout::lanes(song_, content_.library())); }

    UserHome home_;
    ArrangerContent content_;
    Project song_;
    ArrangerScene scene_;
};

void ArrangerSceneTest::init()
{
    ThemeManager::instance()->setDark(false);
    song_.timeSignature = {};
    song_.keySignature = {};
    song_.collapsedGroups.clear();
    writeSong(song_);
    rebuild();
}

// ---- Blocks --------------------------------------------------------------------------------

void ArrangerSceneTest::songBecomesBlocks()
{
    QCOMPARE(written(scene_), QStringList({
                                  "3 0/0 0,2 128x22 #e53935 I",
                                  "3 1/0 128,2 64x22 #43a047 IV",
                                  "3 1/1 192,2 64x22 #1e88e5 V7",
                                  "0 0/0 0,47 128x36 #4a7325 Melodía (2 notas)",
                                  "0 0/1 256,47 128x36 #4a7325 Melodía (0 notas)",
                                  "1 1/0 0,255 256x36 #00695c Introducción 2",
                                  "1 1/1 256,255 256x36 #00695c Normal 1",
                                  "0 2/0 80,89 128x36 #4a7325 Melodía (1 nota)",
                                  "1 3/0 128,319 128x36 #00695c Final 3",
                                  "2 0/0 40,131 96x36 #c2185b Voz",
                                  "2 1/0 512,173 128x36 #c2185b Voz",
                              }));
}

void ArrangerSceneTest::blocksOfFoldedGroupsAreLeftOut()
{
    song_.collapsedGroups = {"acomp/percusion"};
    rebuild();
    const QStringList blocks = written(scene_);
    QCOMPARE(blocks.size(), 9);
    QVERIFY(blocks.filter("1 1/").isEmpty());
    // The bass has moved up by the lane of the drum.
    QVERIFY(blocks.contains("1 3/0 128,277 128x36 #00695c Final 3"));
}

void ArrangerSceneTest::blocksWithoutALaneAreLeftOut()
{
    scene_.rebuild(song_, {});
    QCOMPARE(written(scene_).size(), 3);
    QCOMPARE(written(scene_).filter(QRegularExpression("^3 ")).size(), 3);
}

void ArrangerSceneTest::barsOfChordsFollowTheMeter_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("x");

    QTest::newRow("4/4") << TimeSignature{4, 4, false} << 192.0;
    QTest::newRow("3/4") << TimeSignature{3, 4, false} << 160.0;
    QTest::newRow("6/8") << TimeSignature{6, 8, true} << 160.0;
    QTest::newRow("7/8") << TimeSignature{7, 8, false} << 176.0;
    QTest::newRow("12/8") << TimeSignature{12, 8, true} << 256.0;
}

void ArrangerSceneTest::barsOfChordsFollowTheMeter()
{
    QFETCH(TimeSignature, meter);
    song_.timeSignature = meter;
    rebuild();
    QTEST(scene_.itemOf({BlockKind::Chord, 1, 1})->rect().x(), "x");
}

void ArrangerSceneTest::chordsAreLabelledInTheKey_data()
{
    QTest::addColumn<KeySignature>("key");
    QTest::addColumn<int>("degree");
    QTest::addColumn<ChordExtension>("extension");
    QTest::addColumn<QString>("label");

    const KeySignature major;
    const KeySignature minor{9, KeyMode::Minor};
    QTest::newRow("major triad") << major << 5 << ChordExtension::Triad << "V";
    QTest::newRow("minor triad") << major << 2 << ChordExtension::Triad << "ii";
    QTest::newRow("diminished seventh") << major << 7 << ChordExtension::Seventh << "vii°7";
    QTest::newRow("ninth") << major << 5 << ChordExtension::Ninth << "V9";
    QTest::newRow("minor key") << minor << 5 << ChordExtension::Seventh << "v7";
    QTest::newRow("third of a minor key") << minor << 3 << ChordExtension::Triad << "III";
    QTest::newRow("no degree") << major << 0 << ChordExtension::Seventh << "";
    QTest::newRow("degree too high") << major << 8 << ChordExtension::Triad << "";
}

void ArrangerSceneTest::chordsAreLabelledInTheKey()
{
    QFETCH(KeySignature, key);
    QFETCH(int, degree);
    QFETCH(ChordExtension, extension);
    song_.keySignature = key;
    song_.harmonyTrack.blocks = {{.barIndex = 0, .events = {chord(degree, 0.0, 4.0, extension)}}};
    rebuild();
    QTEST(scene_.itemOf({BlockKind::Chord, 0, 0})->label(), "label");
}

void ArrangerSceneTest::degreesHaveTheirColors_data()
{
    QTest::addColumn<int>("degree");
    QTest::addColumn<QColor>("color");

    const QStringList colors{"#e53935", "#f9a825", "#fdd835", "#43a047",
                             "#1e88e5", "#5e35b1", "#8d6e63"};
    for (int degree = 1; degree <= 7; ++degree)
        QTest::addRow("%d", degree) << degree << QColor(colors[degree - 1]);
    QTest::newRow("8 as 1") << 8 << QColor("#e53935");
    QTest::newRow("700 as 7") << 700 << QColor("#8d6e63");
    QTest::newRow("0 as 7") << 0 << QColor("#8d6e63");
    QTest::newRow("-6 as 1") << -6 << QColor("#e53935");
    // 2^31 is 2 more than a multiple of 7.
    QTest::newRow("2^31 - 1 as 1") << kMostInt << QColor("#e53935");
    QTest::newRow("-2^31 as 5") << kLeastInt << QColor("#1e88e5");
}

void ArrangerSceneTest::degreesHaveTheirColors()
{
    QFETCH(int, degree);
    song_.harmonyTrack.blocks = {{.barIndex = 0, .events = {chord(degree, 0.0, 4.0)}}};
    rebuild();
    QTEST(scene_.itemOf({BlockKind::Chord, 0, 0})->fill(), "color");
}

void ArrangerSceneTest::loopsAreLabelledBySection_data()
{
    QTest::addColumn<LoopSection>("section");
    QTest::addColumn<int>("variant");
    QTest::addColumn<QString>("label");

    QTest::newRow("introduction") << LoopSection::Intro << 2 << "Introducción 2";
    QTest::newRow("middle") << LoopSection::Intermedio << 1 << "Intermedio 1";
    QTest::newRow("normal") << LoopSection::Normal << 12 << "Normal 12";
    QTest::newRow("end") << LoopSection::Final << 3 << "Final 3";
    QTest::newRow("unknown") << static_cast<LoopSection>(99) << 1 << "Normal 1";
    QTest::newRow("negative") << static_cast<LoopSection>(-1) << -5 << "Normal -5";
    QTest::newRow("number without separators")
        << LoopSection::Normal << 1234567 << "Normal 1234567";
}

void ArrangerSceneTest::loopsAreLabelledBySection()
{
    QFETCH(LoopSection, section);
    QFETCH(int, variant);
    song_.tracks[1].loopBlocks[0].section = section;
    song_.tracks[1].loopBlocks[0].variantIndex = variant;
    rebuild();
    QTEST(scene_.itemOf({BlockKind::Loop, 1, 0})->label(), "label");
    ContextTranslator translator;
    QCoreApplication::installTranslator(&translator);
    rebuild();
    QCoreApplication::removeTranslator(&translator);
    QFETCH(QString, label);
    QCOMPARE(scene_.itemOf({BlockKind::Loop, 1, 0})->label(), "Secciones: " + label);
}

void ArrangerSceneTest::melodiesTellTheirNotes_data()
{
    QTest::addColumn<int>("notes");
    QTest::addColumn<QString>("label");

    QTest::newRow("none") << 0 << "Melodía (0 notas)";
    QTest::newRow("one") << 1 << "Melodía (1 nota)";
    QTest::newRow("many") << 1500 << "Melodía (1500 notas)";
}

void ArrangerSceneTest::melodiesTellTheirNotes()
{
    QFETCH(int, notes);
    song_.tracks[0].melodyBlocks[0].notes = QList<NoteEvent>(notes, note(60, 0.0));
    rebuild();
    QTEST(scene_.itemOf({BlockKind::Melody, 0, 0})->label(), "label");
}

void ArrangerSceneTest::textsAreTranslatedInTheContextOfTheArranger()
{
    Foreign foreign;
    QCoreApplication::installTranslator(&foreign);
    rebuild();
    QCoreApplication::removeTranslator(&foreign);
    QCOMPARE(scene_.itemOf({BlockKind::Melody, 0, 0})->label(), QString("<Melodía (2 notas)>"));
    // The words of sections have a context of their own.
    QCOMPARE(scene_.itemOf({BlockKind::Loop, 1, 0})->label(), QString("Introducción 2"));
    QCOMPARE(scene_.itemOf({BlockKind::Audio, 0, 0})->label(), QString("<Voz>"));
}

void ArrangerSceneTest::blocksKeepTheirColorsInTheDark()
{
    const QStringList light = written(scene_);
    ThemeManager::instance()->setDark(true);
    rebuild();
    QCOMPARE(written(scene_), light);
}

// ---- Which block is where ------------------------------------------------------------------

void ArrangerSceneTest::loopsLieOverMelodies()
{
    song_.tracks[1].melodyBlocks = {melody({}, 2.0, 4.0)};
    rebuild();
    QCOMPARE(scene_.blockAt(QPointF(100, 270))->block(), (BlockRef{BlockKind::Loop, 1, 0}));
    QImage image(40, 20, QImage::Format_RGB32);
    QPainter painter(&image);
    scene_.render(&painter, QRectF(), QRectF(160, 262, 40, 20));
    painter.end();
    QCOMPARE(image.pixelColor(20, 10), QColor("#00695c"));
}

void ArrangerSceneTest::laterBlocksLieOverEarlierOnes()
{
    song_.tracks[0].melodyBlocks[1].startBeat = 2.0;
    rebuild();
    QCOMPARE(scene_.blockAt(QPointF(100, 60))->block(), (BlockRef{BlockKind::Melody, 0, 1}));
    QCOMPARE(scene_.blockAt(QPointF(40, 60))->block(), (BlockRef{BlockKind::Melody, 0, 0}));
}

void ArrangerSceneTest::blockAtAPlace_data()
{
    QTest::addColumn<QPointF>("place");
    QTest::addColumn<QString>("block");

    QTest::newRow("chord") << QPointF(64, 13) << "3 0/0";
    QTest::newRow("second chord of a bar") << QPointF(200, 13) << "3 1/1";
    QTest::newRow("under the chord") << QPointF(64, 25.5) << "";
    QTest::newRow("right of the chords") << QPointF(300, 13) << "";
    QTest::newRow("header") << QPointF(64, 35) << "";
    QTest::newRow("melody") << QPointF(64, 48) << "0 0/0";
    QTest::newRow("above the blocks of a lane") << QPointF(64, 45) << "";
    QTest::newRow("below the blocks of a lane") << QPointF(64, 84) << "";
    QTest::newRow("between two melodies") << QPointF(200, 60) << "";
    QTest::newRow("voice") << QPointF(60, 140) << "2 0/0";
    QTest::newRow("below the lanes") << QPointF(60, 400) << "";
    QTest::newRow("playhead is no block") << QPointF(0, 35) << "";
    QTest::newRow("block under the playhead") << QPointF(0.4, 60) << "0 0/0";
}

void ArrangerSceneTest::blockAtAPlace()
{
    QFETCH(QPointF, place);
    QFETCH(QString, block);
    const BlockItem* found = scene_.blockAt(place);
    QCOMPARE(found ? written(*found).section(' ', 0, 1) : QString(), block);
}

void ArrangerSceneTest::itemOfABlock()
{
    for (const BlockItem* block : blocksOf(scene_))
        QCOMPARE(scene_.itemOf(block->block()), block);
    QVERIFY(!scene_.itemOf({BlockKind::Melody, 0, 2}));
    QVERIFY(!scene_.itemOf({BlockKind::Loop, 0, 0}));
    QVERIFY(!scene_.itemOf({BlockKind::Audio, -1, 0}));
}

// ---- Playhead ------------------------------------------------------------------------------

void ArrangerSceneTest::playheadIsALineOverEverything()
{
    const QGraphicsLineItem* line = playheadOf(scene_);
    QVERIFY(line);
    QCOMPARE(line->line(), QLineF(0, 0, 0, 362));
    QCOMPARE(line->zValue(), 100.0);
    QCOMPARE(line->pen().widthF(), 2.0);
    QVERIFY(line->pen().isCosmetic());
    // At the start it covers a chord and a melody.
    QCOMPARE(scene_.items(QPointF(0.4, 13)).first(), line);
    QCOMPARE(scene_.items(QPointF(0.4, 60)).first(), line);
}

void ArrangerSceneTest::playheadHasTheColorOfTheTheme()
{
    QCOMPARE(playheadOf(scene_)->pen().color(), QColor("#4a7325"));
    ThemeManager::instance()->setDark(true);
    rebuild();
    QCOMPARE(playheadOf(scene_)->pen().color(), QColor("#9ccc65"));
}

void ArrangerSceneTest::playheadMovesWithTheBeat_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("x");

    QTest::newRow("start") << 0.0 << 0.0;
    QTest::newRow("one beat") << 1.0 << 32.0;
    QTest::newRow("between beats") << 2.53125 << 81.0;
    QTest::newRow("behind the song") << 5000.0 << 160000.0;
    QTest::newRow("not a number stays where it was") << kNaN << 96.0;
    QTest::newRow("infinity stays where it was") << kInfinity << 96.0;
    QTest::newRow("far away is held") << 1e300 << 32e6;
    QTest::newRow("far before is held") << -1e300 << -32e6;
}

void ArrangerSceneTest::playheadMovesWithTheBeat()
{
    QFETCH(double, beat);
    scene_.setPlayheadBeat(3.0);
    scene_.setPlayheadBeat(beat);
    QTEST(playheadOf(scene_)->x(), "x");
}

void ArrangerSceneTest::rebuildBringsThePlayheadBack()
{
    scene_.setPlayheadBeat(7.0);
    rebuild();
    QCOMPARE(playheadOf(scene_)->x(), 0.0);
}

void ArrangerSceneTest::emptySceneHasNoPlayheadToMove()
{
    ArrangerScene scene;
    scene.setPlayheadBeat(3.0);
    QVERIFY(scene.items().isEmpty());
}

// ---- Rebuilding ----------------------------------------------------------------------------

void ArrangerSceneTest::rebuildForgetsWhatWasThere()
{
    blocksOf(scene_).first()->setSelected(true);
    song_.tracks.clear();
    song_.audioTracks.clear();
    song_.harmonyTrack.blocks.clear();
    rebuild();
    QCOMPARE(scene_.items().size(), 1);
    QVERIFY(scene_.selectedItems().isEmpty());
    rebuild();
    QCOMPARE(scene_.items().size(), 1);
}

void ArrangerSceneTest::sceneIsAsLargeAsTheSong()
{
    QCOMPARE(scene_.sceneRect(), QRectF(0, 0, 2048, 362));
    song_.tracks[0].melodyBlocks[1].startBeat = 50.0;
    rebuild();
    // The song ends with bar 14.
    QCOMPARE(scene_.sceneRect(), QRectF(0, 0, 22 * 128, 362));
}

void ArrangerSceneTest::blocksWithoutAFinitePlaceAreNotDrawn_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("length");
    QTest::addColumn<QRectF>("rect");

    const QRectF nowhere;
    QTest::newRow("start is not a number") << kNaN << 4.0 << nowhere;
    QTest::newRow("start is infinite") << kInfinity << 4.0 << nowhere;
    QTest::newRow("start is infinitely early") << -kInfinity << 4.0 << nowhere;
    QTest::newRow("start is far away") << 1e300 << 4.0 << nowhere;
    QTest::newRow("start is far before") << -1e300 << 4.0 << nowhere;
    QTest::newRow("length is not a number") << 1.0 << kNaN << nowhere;
    QTest::newRow("length is infinite") << 1.0 << kInfinity << nowhere;
    QTest::newRow("huge length is held") << 1.0 << 1e300 << QRectF(32, 47, 32e6, 36);
    QTest::newRow("no length is seen") << 1.0 << 0.0 << QRectF(32, 47, 8, 36);
    QTest::newRow("negative length is none") << 1.0 << -1e300 << QRectF(32, 47, 8, 36);
    QTest::newRow("a short one is seen") << 1.0 << 0.01 << QRectF(32, 47, 8, 36);
    QTest::newRow("one that is seen stays as it is") << 1.0 << 0.25 << QRectF(32, 47, 8, 36);
    QTest::newRow("before the song") << -2.0 << 4.0 << QRectF(-64, 47, 128, 36);
    QTest::newRow("last place that is drawn") << 1e6 << 4.0 << QRectF(32e6, 47, 128, 36);
    QTest::newRow("first place that is not drawn") << 1000001.0 << 4.0 << nowhere;
}

void ArrangerSceneTest::blocksWithoutAFinitePlaceAreNotDrawn()
{
    QFETCH(double, start);
    QFETCH(double, length);
    QFETCH(QRectF, rect);
    song_.tracks[0].melodyBlocks[0] = melody({}, start, length);
    song_.tracks[1].loopBlocks[0] = loop("r", "bombo", start, length);
    song_.audioTracks[0].clips[0] = clip("a.wav", start, length);
    rebuild();
    const QList<std::pair<BlockKind, int>> places{
        {BlockKind::Melody, 47}, {BlockKind::Loop, 255}, {BlockKind::Audio, 131}};
    for (const auto& [kind, y] : places) {
        const BlockItem* item = scene_.itemOf({kind, kind == BlockKind::Loop ? 1 : 0, 0});
        QCOMPARE(item != nullptr, !rect.isNull());
        if (item)
            QCOMPARE(item->rect(), QRectF(rect.x(), y, rect.width(), 36));
    }
}

void ArrangerSceneTest::chordsWithoutAFinitePlaceAreNotDrawn_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<int>("bar");
    QTest::addColumn<double>("start");
    QTest::addColumn<bool>("drawn");

    const TimeSignature meter;
    QTest::newRow("ordinary") << meter << 3 << 1.0 << true;
    QTest::newRow("bar before the song") << meter << -1 << 1.0 << true;
    QTest::newRow("bar 2^31 - 1") << meter << kMostInt << 0.0 << false;
    QTest::newRow("bar -2^31") << meter << kLeastInt << 0.0 << false;
    QTest::newRow("start is not a number") << meter << 0 << kNaN << false;
    QTest::newRow("start is far away") << meter << 0 << 1e300 << false;
    QTest::newRow("bar without length") << TimeSignature{0, 4, false} << 7 << 0.0 << true;
    QTest::newRow("bar of infinite length") << TimeSignature{4, 0, false} << 7 << 0.0 << false;
    QTest::newRow("bar that is no number") << TimeSignature{0, 0, false} << 7 << 0.0 << false;
    QTest::newRow("first bar of infinite length")
        << TimeSignature{4, 0, false} << 0 << 0.0 << false;
}

void ArrangerSceneTest::chordsWithoutAFinitePlaceAreNotDrawn()
{
    QFETCH(TimeSignature, meter);
    QFETCH(int, bar);
    QFETCH(double, start);
    song_.timeSignature = meter;
    song_.harmonyTrack.blocks = {{.barIndex = bar, .events = {chord(1, start, 2.0)}}};
    rebuild();
    QTEST(scene_.itemOf({BlockKind::Chord, bar, 0}) != nullptr, "drawn");
}

void ArrangerSceneTest::hostileSongsAreBuiltAndPainted()
{
    QImage image(300, 400, QImage::Format_RGB32);
    qsizetype drawn = 0;
    for (quint32 seed = 0; seed < 250; ++seed) {
        Generator(seed, seed % 3 ? Numbers::Hostile : Numbers::AnyFinite).fill(song_);
        rebuild();
        QVERIFY(scene_.width() >= 0.0 && scene_.width() <= 32e6);
        for (const BlockItem* block : blocksOf(scene_)) {
            const QRectF rect = block->rect();
            QVERIFY(std::isfinite(rect.left()) && std::isfinite(rect.right()));
            QVERIFY(rect.width() >= 0.0 && rect.width() <= 32e6);
            ++drawn;
        }
        scene_.setPlayheadBeat(seed);
        QPainter painter(&image);
        scene_.render(&painter, QRectF(), QRectF(0, 0, 300, 400), Qt::IgnoreAspectRatio);
    }
    QVERIFY(drawn > 1000);
}

void ArrangerSceneTest::loopsKnowTheirRepetitions()
{
    ContentFixture files;
    files.addPackage("r",
                     R"({"rhythm": {"id": "r", "timeSignature": {"numerator": 3, "denominator": 4}},
        "loopLayers": [{"id": "bombo"}],
        "loopVariants": [{"layerId": "bombo", "section": "Normal", "variantIndex": 1,
                      "durationBars": 2, "notes": []}]})");
    files.library().reload();
    Project song;
    song.tracks = {loopTrack({loop("r", "bombo", 0.0, 12.0), loop("r", "otro", 12.0, 12.0)})};
    ArrangerScene scene;
    scene.setLibrary(&files.library());
    scene.rebuild(song, ArrangerLayout::lanes(song, &files.library()));
    // Two bars of three beats.
    QCOMPARE(scene.itemOf({BlockKind::Loop, 0, 0})->repeat(), 6.0 * 32.0);
    QCOMPARE(scene.itemOf({BlockKind::Loop, 0, 1})->repeat(), 0.0);
}

VELTA_TEST(ArrangerSceneTest)

} // namespace ArrangerSceneTests

#include "ArrangerSceneTest.moc"
