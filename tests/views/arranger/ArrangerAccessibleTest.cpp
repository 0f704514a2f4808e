#include "views/arranger/ArrangerAccessible.h"

#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/ScreenListener.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/TimelineRuler.h"
#include "views/arranger/ArrangerStage.h"

#include <memory>

namespace ArrangerAccessibleTests {

using namespace ProjectBuilder;

namespace {

QAccessibleInterface* partOf(QObject* widget)
{
    return QAccessible::queryAccessibleInterface(widget);
}

} // namespace

/// The arranger for those who hear it.
class ArrangerAccessibleTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void blocksAreChildrenOfTheGrid();
    void namesOfTheLibraryAreSaid();
    void aStretchedLoopTellsItsRounds();
    void lanesAreChildrenOfTheColumn();
    void aBlockKnowsWhereItStands();
    void aBlockCanBeSelected();
    void aLaneCanBePressed();
    void blocksFollowTheEdits();
    void staleReferencesHaveNoName();
    void theSelectionIsTold();
    void aLaneWithoutBlocksIsTold();
    void theArrangerTellsWhereItIs();
    void withoutAProjectThereIsNothing();

private:
    TrackArranger& arranger() const { return stage_->arranger; }

    QAccessibleInterface* block(int place) const { return partOf(arranger().view())->child(place); }

    void go(Qt::Key key) const { stage_->key(key, Qt::ControlModifier); }

    std::unique_ptr<ScreenListener> listener_;
    UserHome home_;
    std::unique_ptr<SoundfontPlayer> player_;
    std::unique_ptr<PlaybackEngine> engine_;
    std::unique_ptr<ArrangerStage> stage_;
};

void ArrangerAccessibleTest::init()
{
    listener_ = std::make_unique<ScreenListener>();
    player_ = std::make_unique<SoundfontPlayer>(SoundfontPlayer::Mode::Offline);
    engine_ = std::make_unique<PlaybackEngine>(player_.get(), nullptr, nullptr);
    stage_ = std::make_unique<ArrangerStage>();
    engine_->setProject(&stage_->song);
    arranger().setContext(&stage_->song, engine_.get(), stage_->content.library());
    connect(&arranger(), &TrackArranger::edited, &stage_->song, &Project::changed);
    arranger().activateWindow();
    arranger().setFocus();
    QTRY_VERIFY(arranger().hasFocus());
    ScreenListener::heard();
}

void ArrangerAccessibleTest::cleanup()
{
    stage_.reset();
    engine_.reset();
    player_.reset();
    listener_.reset();
}

void ArrangerAccessibleTest::blocksAreChildrenOfTheGrid()
{
    QCOMPARE(
        ScreenListener::namesIn(arranger().view()),
        QStringList(
            {"Acorde I, Do mayor, compás 1, 1 compás", "Acorde IV, Fa mayor, compás 2, blanca",
             "Acorde V7, Sol séptima, compás 2, blanca", "Melodía (2 notas), compás 1, 1 compás",
             "Melodía (0 notas), compás 3, 1 compás", "Melodía (1 nota), compás 1, 1 compás",
             "Voz, a.wav, compás 1, blanca con puntillo", "Voz, b.wav, compás 5, 1 compás",
             "r, bombo, Introducción 2, compás 1, 2 compases",
             "r, bombo, Normal 1, compás 3, 2 compases", "r, bajo, Final 3, compás 2, 1 compás"}));
    const QAccessibleInterface* grid = partOf(arranger().view());
    for (int i = 0; i < grid->childCount(); ++i) {
        QCOMPARE(block(i)->parent(), grid);
        QCOMPARE(grid->indexOfChild(block(i)), i);
    }
}

void ArrangerAccessibleTest::namesOfTheLibraryAreSaid()
{
    ContentFixture files;
    files.addPackage("gato", R"({"rhythm": {"id": "gato", "displayName": "Gato"}, "loopLayers": [
        {"id": "gato_bajo", "rhythmId": "gato", "label": "Bajo"}]})");
    files.library().reload();
    Project song;
    song.tracks = {loopTrack({loop("gato", "gato_bajo", 8.0, 16.0, LoopSection::Intermedio, 2)})};
    QCOMPARE(ArrangerAccessible::nameOf(song, &files.library(), {BlockKind::Loop, 0, 0}),
             QStringLiteral("Gato, Bajo, Intermedio 2, compás 3, 4 compases"));
    QCOMPARE(ArrangerAccessible::nameOf(song, nullptr, {BlockKind::Loop, 0, 0}),
             QStringLiteral("gato, gato_bajo, Intermedio 2, compás 3, 4 compases"));
}

void ArrangerAccessibleTest::aStretchedLoopTellsItsRounds()
{
    ContentFixture files;
    files.addPackage("gato", R"({"rhythm": {"id": "gato", "displayName": "Gato"},
        "loopLayers": [{"id": "gato_bajo", "label": "Bajo"}],
        "loopVariants": [{"layerId": "gato_bajo", "section": "Normal", "variantIndex": 1,
                          "durationBars": 2, "notes": []}]})");
    files.library().reload();
    Project song;
    song.tracks = {
        loopTrack({loop("gato", "gato_bajo", 0.0, 8.0), loop("gato", "gato_bajo", 8.0, 20.0)})};
    QCOMPARE(ArrangerAccessible::nameOf(song, &files.library(), {BlockKind::Loop, 0, 0}),
             QStringLiteral("Gato, Bajo, Normal 1, compás 1, 2 compases"));
    QCOMPARE(ArrangerAccessible::nameOf(song, &files.library(), {BlockKind::Loop, 0, 1}),
             QStringLiteral("Gato, Bajo, Normal 1, compás 3, 5 compases, ") +
                 QLocale().toString(2.5) + QStringLiteral(" vueltas"));
}

void ArrangerAccessibleTest::lanesAreChildrenOfTheColumn()
{
    stage_->song.tracks[2].muted = true;
    stage_->song.collapsedGroups = {kGroupInstrumental};
    emit stage_->song.changed();
    QCOMPARE(ScreenListener::namesIn(arranger().headerColumn()),
             QStringList({"Acordes", "VELTAS", "Quena", "Flauta, silenciado", "Ana", "Beto",
                          "ACOMPAÑAMIENTO", "Percusión, 1, desplegado", "Bombo",
                          "Instrumental, 1, plegado"}));
    const QAccessibleInterface* column = partOf(arranger().headerColumn());
    QVERIFY(column->child(2)->state().selected);
    QVERIFY(!column->child(3)->state().selected);
}

void ArrangerAccessibleTest::aBlockKnowsWhereItStands()
{
    const QPoint onScreen = stage_->grid()->mapToGlobal(stage_->at(9.0, kBomboY));
    QCOMPARE(partOf(arranger().view())->childAt(onScreen.x(), onScreen.y()), block(9));
}

void ArrangerAccessibleTest::aBlockCanBeSelected()
{
    block(6)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(stage_->selected(), QList<BlockRef>({{BlockKind::Audio, 0, 0}}));
    QCOMPARE(arranger().selectedAudioTrack(), 0);
    QVERIFY(block(6)->state().selected);
    QVERIFY(block(6)->state().focused);
}

void ArrangerAccessibleTest::aLaneCanBePressed()
{
    const QAccessibleInterface* column = partOf(arranger().headerColumn());
    const auto press = [&](int lane) {
        column->child(lane)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    };
    press(3);
    QCOMPARE(arranger().activeTrack(), 2);
    press(0);
    QCOMPARE(arranger().keyLane(), LaneRef());
    press(1);
    QCOMPARE(arranger().keyLane(), LaneRef());
    press(7);
    QVERIFY(arranger().isGroupCollapsed(kGroupPercusion));
}

void ArrangerAccessibleTest::blocksFollowTheEdits()
{
    QAccessibleInterface* last = block(10);
    const QAccessible::Id id = QAccessible::uniqueId(last);
    arranger().goToBlock({BlockKind::Loop, 3, 0});
    stage_->key(Qt::Key_Right);
    QCOMPARE(last->text(QAccessible::Name), QStringLiteral("r, bajo, Final 3, compás 2, 1 compás"));
    for (int i = 0; i < 3; ++i)
        stage_->key(Qt::Key_Right);
    QCOMPARE(last->text(QAccessible::Name), QStringLiteral("r, bajo, Final 3, compás 3, 1 compás"));
    stage_->key(Qt::Key_Delete);
    QAccessibleInterface* gone = QAccessible::accessibleInterface(id);
    QVERIFY(!gone || !gone->isValid());
    QCOMPARE(partOf(arranger().view())->childCount(), 10);
    // Another work, and none.
    Project other;
    other.harmonyTrack = harmony({6});
    arranger().setContext(&other, nullptr, nullptr);
    QCOMPARE(ScreenListener::namesIn(arranger().view()),
             QStringList({"Acorde vi, La menor, compás 1, 1 compás"}));
    arranger().setContext(nullptr, nullptr, nullptr);
    QCOMPARE(ScreenListener::namesIn(arranger().view()), QStringList());
}

void ArrangerAccessibleTest::staleReferencesHaveNoName()
{
    for (const BlockKind kind :
         {BlockKind::Melody, BlockKind::Loop, BlockKind::Audio, BlockKind::Chord})
        QCOMPARE(ArrangerAccessible::nameOf(stage_->song, nullptr, {kind, 99, 99}), QString());
}

void ArrangerAccessibleTest::theSelectionIsTold()
{
    go(Qt::Key_Right);
    QCOMPARE(ScreenListener::heard(),
             QStringList({"focus Acorde I, Do mayor, compás 1, 1 compás"}));
    go(Qt::Key_Down);
    QCOMPARE(ScreenListener::heard().last(),
             QStringLiteral("focus Melodía (2 notas), compás 1, 1 compás"));
    stage_->key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(ScreenListener::heard(), QStringList({"focus Melodía (2 notas), compás 1, 5 negras"}));
    stage_->click(stage_->at(9.0, kBomboY));
    QCOMPARE(ScreenListener::heard().last(),
             QStringLiteral("focus r, bombo, Normal 1, compás 3, 2 compases"));
}

void ArrangerAccessibleTest::aLaneWithoutBlocksIsTold()
{
    stage_->song.tracks[0].melodyBlocks.clear();
    emit stage_->song.changed();
    ScreenListener::heard();
    go(Qt::Key_Down);
    QCOMPARE(ScreenListener::heard(), QStringList({"focus Quena"}));
}

void ArrangerAccessibleTest::theArrangerTellsWhereItIs()
{
    stage_->key(Qt::Key_PageDown);
    QCOMPARE(
        ScreenListener::heard(),
        QStringList({"focus Cabezal del arreglo", "value Cabezal del arreglo: compás 2, pulso 1"}));
    QCOMPARE(partOf(&arranger())->text(QAccessible::Description),
             QStringLiteral("Acordes, compás 2, pulso 1"));
    QCOMPARE(partOf(&arranger())->focusChild(), partOf(arranger().ruler()));
}

void ArrangerAccessibleTest::withoutAProjectThereIsNothing()
{
    TrackArranger empty;
    QCOMPARE(ScreenListener::namesIn(empty.view()), QStringList());
    QCOMPARE(ScreenListener::namesIn(empty.headerColumn()), QStringList());
    QCOMPARE(partOf(&empty)->text(QAccessible::Description), QString());
}

VELTA_TEST(ArrangerAccessibleTest)

} // namespace ArrangerAccessibleTests

#include "ArrangerAccessibleTest.moc"
