#include "views/arranger/ArrangerGridView.h"

#include "ArrangerStage.h"
#include "shell/theme/CanvasColors.h"
#include "shell/theme/ThemeManager.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/LoopDragPayload.h"
#include "views/Painted.h"
#include "views/TimelineRuler.h"

#include <QDialog>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QWheelEvent>

#include <functional>

namespace ArrangerGridViewTests {

using namespace ProjectBuilder;

/// What is open to notice an edit: the signal, and the project as it was at the last one.
class Editor {
public:
    explicit Editor(ArrangerStage& stage) : stage_(stage)
    {
        QObject::connect(&stage.arranger, &TrackArranger::edited, &context_, [this] {
            ++edits_;
            announce();
        });
    }

    int edits() const { return edits_; }

    void announce()
    {
        announced_ = stage_.song.toJson();
        emit stage_.song.changed();
    }

    const QJsonObject& announced() const { return announced_; }

private:
    ArrangerStage& stage_;
    QObject context_;
    int edits_ = 0;
    QJsonObject announced_;
};

namespace {

const BlockRef kFirstMelody{BlockKind::Melody, 0, 0};
const BlockRef kSecondMelody{BlockKind::Melody, 0, 1};

using Change = std::function<void(Project&)>;

/// Every block of a scene with its place.
QList<std::pair<BlockRef, QRectF>> blocksOf(const ArrangerScene& scene)
{
    QList<std::pair<BlockRef, QRectF>> blocks;
    for (QGraphicsItem* item : scene.items(Qt::AscendingOrder)) {
        if (const auto* block = qgraphicsitem_cast<BlockItem*>(item))
            blocks.append({block->block(), block->rect()});
    }
    return blocks;
}

/// Whether the arranger shows the song as it is now, and in a scene of its size unless a drag holds
/// it wider.
bool isInStep(const ArrangerStage& stage)
{
    const QList<LaneInfo> lanes = ArrangerLayout::lanes(stage.song, stage.content.library());
    ArrangerScene fresh;
    fresh.rebuild(stage.song, lanes);
    const ArrangerScene& shown = *stage.arranger.scene();
    const bool fits = stage.arranger.view()->isDragging() ? shown.width() >= fresh.width()
                                                          : shown.sceneRect() == fresh.sceneRect();
    return fits && blocksOf(shown) == blocksOf(fresh);
}

/// Turns the wheel by notches over the middle of the grid.
void turnWheel(const ArrangerStage& stage, const QPoint& notches, Qt::KeyboardModifiers modifiers)
{
    const QPointF place = stage.grid()->rect().center();
    QWheelEvent event(place, stage.grid()->mapToGlobal(place), QPoint(), 120 * notches,
                      Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
    QApplication::sendEvent(stage.grid(), &event);
}

/// Data of a loop on its way.
std::unique_ptr<QMimeData> loopData(const QByteArray& json)
{
    auto data = std::make_unique<QMimeData>();
    data->setData("application/x-velta-loop", json);
    return data;
}

const QByteArray kLoop = R"({"rhythmId":"r","layerId":"bombo","section":"Final","variantIndex":3})";

/// The rhythm of the stage with that loop, two bars long, in two of its layers.
const QByteArray kPlayable = R"({"rhythm": {"id": "r"}, "loopLayers": [
    {"id": "bombo", "pitched": false}, {"id": "palmas", "pitched": false},
    {"id": "bajo", "pitched": true}, {"id": "piano", "pitched": true}], "loopVariants": [
    {"layerId": "bombo", "section": "Final", "variantIndex": 3, "durationBars": 2},
    {"layerId": "piano", "section": "Final", "variantIndex": 3, "durationBars": 2}]})";

bool enter(const ArrangerStage& stage, const QPoint& place, const QMimeData& data)
{
    QDragEnterEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(stage.grid(), &event);
    return event.isAccepted();
}

bool hover(const ArrangerStage& stage, const QPoint& place, const QMimeData& data)
{
    QDragMoveEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    event.ignore();
    QApplication::sendEvent(stage.grid(), &event);
    return event.isAccepted();
}

bool drop(const ArrangerStage& stage, const QPoint& place, const QMimeData& data)
{
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    event.ignore();
    QApplication::sendEvent(stage.grid(), &event);
    return event.isAccepted();
}

/// Drags something over the grid from its left edge to a place, and lets it go there.
bool dragAndDrop(const ArrangerStage& stage, const QPoint& place, const QMimeData& data)
{
    return enter(stage, QPoint(1, place.y()), data) && hover(stage, place, data) &&
           drop(stage, place, data);
}

/// "rhythm layer section variant beat" of a signal.
QString written(const QList<QVariant>& drop)
{
    return QStringLiteral("%1 %2 %3 %4 %5")
        .arg(drop[0].toString(), drop[1].toString())
        .arg(static_cast<int>(drop[2].value<LoopSection>()))
        .arg(drop[3].toInt())
        .arg(drop[4].toDouble());
}

} // namespace

class ArrangerGridViewTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void standsAtTheTopLeftAndTakesDrops();

    void pressSelectsTheLane_data();
    void pressSelectsTheLane();
    void everyButtonSelectsTheLane_data();
    void everyButtonSelectsTheLane();
    void ctrlPressTakesFurtherTracksAlong();
    void pressOutsideTheTracksSelectsNoLane_data();
    void pressOutsideTheTracksSelectsNoLane();

    void leftPressSelectsOneBlock();
    void leftPressOnNothingSelectsNoBlock();
    void rightPressDeletesWhateverIsSelected_data();
    void rightPressDeletesWhateverIsSelected();
    void rightPressOnNothingDoesNothing();
    void middleButtonEditsNothing();
    void overlappingBlocksAreTakenFromTheTop();
    void anEditOfASelectionIsSurvived();

    void dragMovesABlock_data();
    void dragMovesABlock();
    void dragMovesEveryKindOfBlock_data();
    void dragMovesEveryKindOfBlock();
    void dragLeftStopsAtTheStart();
    void dragBackRestores();
    void dragStaysOnItsLane();
    void dragMayOverlapOthers();
    void dragBeyondTheEndMakesTheSceneGrow();
    void lastBlockStaysUnderTheMouse_data();
    void lastBlockStaysUnderTheMouse();
    void dragInASixEightGoesByPulses();
    void dragOfAScrolledSong_data();
    void dragOfAScrolledSong();

    void gripResizes_data();
    void gripResizes();
    void resizingStopsAtAStep_data();
    void resizingStopsAtAStep();
    void gripOfALongHiddenBlockIsAtItsEnd();

    void oneDragIsOneEdit();
    void clickIsNoEdit();
    void clickOfAShakingHandSelects();
    void releaseElsewhereEndsADrag();
    void pressWithoutAReleaseEndsADrag();
    void releaseOfAnotherButtonLeavesADrag();
    void menuOfChordsEndsADrag();
    void dialogEndsADrag();
    void draggedBlockStaysSelected();
    void noBlockIsSelectedAfterAnEditOutsideADrag();
    void blockFollowsTheMouse();

    void chordsMakeRoomForOneThatIsDragged_data();
    void chordsMakeRoomForOneThatIsDragged();
    void dragOfAChordBackRestoresTheOthers();
    void gripOfAChordStretchesIt();

    void foldingTheGroupEndsADrag();
    void undoThatTakesTheBlockEndsADrag();
    void undoThatPutsAnotherBlockThereEndsADrag();
    void undoThatKeepsTheBlockLeavesADrag();
    void anotherProjectEndsADrag();
    void noProjectEndsADrag();
    void deletingDuringADragMovesNoOtherBlock_data();
    void deletingDuringADragMovesNoOtherBlock();

    void doubleClickOpensAMelody();
    void doubleClickOnAnythingElseOpensNothing_data();
    void doubleClickOnAnythingElseOpensNothing();
    void doubleClickFindsTheMelodyUnderALoop();

    void ctrlWheelZooms();
    void wheelScrolls();
    void wheelBesideTheGridScrollsIt_data();
    void wheelBesideTheGridScrollsIt();
    void cursorTellsTheGrip();
    void aBeatCanBeMovedAtEveryZoom();

    void loopsAreTakenAndNothingElse();
    void dropLandsOnItsBar_data();
    void dropLandsOnItsBar();
    void dropTellsTheLoop_data();
    void dropTellsTheLoop();
    void dropInAnotherMeter_data();
    void dropInAnotherMeter();
    void dropOfAZoomedAndScrolledSong();
    void loopShowsWhereItWouldLie_data();
    void loopShowsWhereItWouldLie();
    void nothingButALoopOfTheLibraryShowsWhereItWouldLie();
    void whereALoopWouldLieIsPainted();
    void dropThatIsNoLoopIsRefused_data();
    void dropThatIsNoLoopIsRefused();
    void dropChangesNothingByItself();

    void withoutAProjectNothingHappens();

    void lanesArePaintedInBothThemes_data();
    void lanesArePaintedInBothThemes();
    void lanesAreSeparatedByHairlines();
    void barsAndBeatsArePainted_data();
    void barsAndBeatsArePainted();
    void linesStayThinUnderZoom_data();
    void linesStayThinUnderZoom();
    void belowTheLanesIsTheBackground();
    void zoomedLinesMeetTheRuler();

    void anyGesturesAreSurvived();

private:
    std::unique_ptr<UserHome> home_ = std::make_unique<UserHome>();
    std::unique_ptr<ArrangerStage> stage_;
    std::unique_ptr<Editor> editor_;
};

void ArrangerGridViewTest::init()
{
    ThemeManager::instance()->setDark(false);
    stage_ = std::make_unique<ArrangerStage>();
    editor_ = std::make_unique<Editor>(*stage_);
}

void ArrangerGridViewTest::cleanup()
{
    editor_.reset();
    stage_.reset();
}

void ArrangerGridViewTest::standsAtTheTopLeftAndTakesDrops()
{
    const ArrangerGridView* view = stage_->arranger.view();
    QCOMPARE(view->alignment(), Qt::AlignLeft | Qt::AlignTop);
    QVERIFY(view->hasMouseTracking());
    QVERIFY(view->acceptDrops());
    QVERIFY(view->viewport()->acceptDrops());
}

// ---- Selecting lanes -----------------------------------------------------------------------

void ArrangerGridViewTest::pressSelectsTheLane_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("track");
    QTest::addColumn<int>("audioTrack");

    QTest::newRow("on a block") << 9.0 << kQuenaY << 0 << -1;
    QTest::newRow("beside the blocks") << 20.0 << kFlautaY << 2 << -1;
    QTest::newRow("first row of a lane") << 20.0 << 86 << 2 << -1;
    QTest::newRow("last row of a lane") << 20.0 << 127 << 2 << -1;
    QTest::newRow("accompaniment") << 20.0 << kBajoY << 3 << -1;
    QTest::newRow("voice") << 2.0 << kAnaY << -1 << 0;
    QTest::newRow("second voice, beside the blocks") << 2.0 << kBetoY << -1 << 1;
}

void ArrangerGridViewTest::pressSelectsTheLane()
{
    QFETCH(double, beat);
    QFETCH(int, y);
    QFETCH(int, track);
    QFETCH(int, audioTrack);
    const QSignalSpy selected(&stage_->arranger, &TrackArranger::laneSelectionChanged);
    stage_->press(stage_->at(beat, y));
    QCOMPARE(selected.size(), 1);
    QCOMPARE(stage_->arranger.activeTrack(), track);
    QCOMPARE(stage_->arranger.selectedAudioTrack(), audioTrack);
    QCOMPARE(stage_->arranger.selectedTracks(), track < 0 ? QList<int>() : QList<int>{track});
}

void ArrangerGridViewTest::everyButtonSelectsTheLane_data()
{
    QTest::addColumn<Qt::MouseButton>("button");

    QTest::newRow("left") << Qt::LeftButton;
    QTest::newRow("right") << Qt::RightButton;
    QTest::newRow("middle") << Qt::MiddleButton;
    QTest::newRow("back") << Qt::BackButton;
}

void ArrangerGridViewTest::everyButtonSelectsTheLane()
{
    QFETCH(Qt::MouseButton, button);
    stage_->click(stage_->at(20.0, kFlautaY), button);
    QCOMPARE(stage_->arranger.activeTrack(), 2);
}

void ArrangerGridViewTest::ctrlPressTakesFurtherTracksAlong()
{
    stage_->click(stage_->at(20.0, kQuenaY));
    stage_->click(stage_->at(20.0, kFlautaY), Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>({0, 2}));
    QCOMPARE(stage_->arranger.activeTrack(), 2);
    stage_->click(stage_->at(1.0, kQuenaY), Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>{2});
    QCOMPARE(stage_->arranger.activeTrack(), 0);
    stage_->click(stage_->at(20.0, kBomboY), Qt::LeftButton, Qt::ControlModifier);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>{1});
    stage_->click(stage_->at(20.0, kQuenaY), Qt::LeftButton, Qt::ShiftModifier);
    QCOMPARE(stage_->arranger.selectedTracks(), QList<int>{0});
}

void ArrangerGridViewTest::pressOutsideTheTracksSelectsNoLane_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("y");

    QTest::newRow("header of a section") << 1.0 << kVeltasY;
    QTest::newRow("header of a group") << 1.0 << kPercussionY;
    QTest::newRow("below the lanes") << 1.0 << 380;
}

void ArrangerGridViewTest::pressOutsideTheTracksSelectsNoLane()
{
    QFETCH(double, beat);
    QFETCH(int, y);
    const QSignalSpy selected(&stage_->arranger, &TrackArranger::laneSelectionChanged);
    stage_->click(stage_->at(beat, y));
    QCOMPARE(selected.size(), 0);
    QCOMPARE(stage_->arranger.activeTrack(), 0);
}

// ---- Selecting and deleting blocks ---------------------------------------------------------

void ArrangerGridViewTest::leftPressSelectsOneBlock()
{
    stage_->click(stage_->at(1.0, kQuenaY));
    QCOMPARE(stage_->selected(), QList<BlockRef>{kFirstMelody});
    stage_->click(stage_->at(9.0, kQuenaY));
    QCOMPARE(stage_->selected(), QList<BlockRef>{kSecondMelody});
    stage_->click(stage_->at(1.0, kChordsY));
    QCOMPARE(stage_->selected(), (QList<BlockRef>{{BlockKind::Chord, 0, 0}}));
}

void ArrangerGridViewTest::leftPressOnNothingSelectsNoBlock()
{
    for (const int y : {kQuenaY, kVeltasY, 380}) {
        stage_->click(stage_->at(1.0, kQuenaY));
        stage_->click(stage_->at(20.0, y));
        QCOMPARE(stage_->selected(), QList<BlockRef>());
    }
    QCOMPARE(editor_->edits(), 0);
}

void ArrangerGridViewTest::rightPressDeletesWhateverIsSelected_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("y");
    QTest::addColumn<Change>("deletion");

    QTest::newRow("melody") << 9.0 << kQuenaY << Change([](Project& song) {
        song.tracks[0].melodyBlocks.removeAt(1);
    });
    QTest::newRow("loop") << 9.0 << kBomboY
                          << Change([](Project& song) { song.tracks[1].loopBlocks.removeAt(1); });
    QTest::newRow("voice") << 2.0 << kAnaY
                           << Change([](Project& song) { song.audioTracks[0].clips.clear(); });
    QTest::newRow("chord") << 5.0 << kChordsY << Change([](Project& song) {
        song.harmonyTrack.blocks[1].events.removeFirst();
    });
}

void ArrangerGridViewTest::rightPressDeletesWhateverIsSelected()
{
    QFETCH(double, beat);
    QFETCH(int, y);
    QFETCH(Change, deletion);
    stage_->click(stage_->at(1.0, kQuenaY));
    stage_->click(stage_->at(beat, y), Qt::RightButton);
    Project expected;
    writeSong(expected);
    deletion(expected);
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(editor_->edits(), 1);
    QCOMPARE(stage_->selected(), QList<BlockRef>());
}

void ArrangerGridViewTest::rightPressOnNothingDoesNothing()
{
    stage_->click(stage_->at(1.0, kQuenaY));
    for (const int y : {kQuenaY, kVeltasY, kPercussionY, 380})
        stage_->click(stage_->at(20.0, y), Qt::RightButton);
    QCOMPARE(stage_->selected(), QList<BlockRef>{kFirstMelody});
    QCOMPARE(editor_->edits(), 0);
    QVERIFY(!QApplication::activePopupWidget());
}

void ArrangerGridViewTest::middleButtonEditsNothing()
{
    const QPoint place = stage_->at(1.0, kQuenaY);
    stage_->press(place, Qt::MiddleButton);
    stage_->move(place + QPoint(100, 0));
    stage_->release(place + QPoint(100, 0), Qt::MiddleButton);
    stage_->click(stage_->at(20.0, kChordsY), Qt::MiddleButton);
    Project expected;
    writeSong(expected);
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(editor_->edits(), 0);
}

void ArrangerGridViewTest::overlappingBlocksAreTakenFromTheTop()
{
    stage_->song.tracks[0].melodyBlocks[1].startBeat = 2.0;
    emit stage_->song.changed();
    stage_->click(stage_->at(3.0, kQuenaY), Qt::RightButton);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks.size(), 1);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].startBeat, 0.0);
}

// Whoever listens to the selection may have the scene made anew.
void ArrangerGridViewTest::anEditOfASelectionIsSurvived()
{
    QObject context;
    connect(&stage_->arranger, &TrackArranger::laneSelectionChanged, &context,
            [this] { emit stage_->song.changed(); });
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->drag(place, 64);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 10.0);
    stage_->click(place + QPoint(64, 0), Qt::RightButton);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks.size(), 1);
}

// ---- Moving --------------------------------------------------------------------------------

void ArrangerGridViewTest::dragMovesABlock_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<int>("pixels");
    QTest::addColumn<double>("start");

    // The block lies at 8. A step is 32 pixels times the zoom; half of one is a step already.
    QTest::newRow("one beat") << 1.0 << 32 << 9.0;
    QTest::newRow("less than half a beat") << 1.0 << 15 << 8.0;
    QTest::newRow("half a beat") << 1.0 << 16 << 9.0;
    QTest::newRow("back") << 1.0 << -100 << 5.0;
    QTest::newRow("far") << 1.0 << 640 << 28.0;
    QTest::newRow("zoomed in") << 2.0 << 128 << 10.0;
    QTest::newRow("zoomed in, less than half a beat") << 2.0 << 31 << 8.0;
    QTest::newRow("zoomed in, half a beat") << 2.0 << 32 << 9.0;
    QTest::newRow("zoomed out") << 0.5 << 80 << 13.0;
    QTest::newRow("as far out as it goes") << 0.2 << 64 << 18.0;
    QTest::newRow("as close up as it goes") << 6.0 << -192 << 7.0;
}

void ArrangerGridViewTest::dragMovesABlock()
{
    QFETCH(double, zoom);
    QFETCH(int, pixels);
    QFETCH(double, start);
    stage_->arranger.zoomHorizontal(zoom);
    stage_->arranger.view()->horizontalScrollBar()->setValue(zoom > 2.0 ? 1400 : 0);
    stage_->drag(stage_->at(9.0, kQuenaY), pixels);
    Project expected;
    writeSong(expected);
    expected.tracks[0].melodyBlocks[1].startBeat = start;
    QCOMPARE(firstDifference(stage_->song, expected), QString());
}

void ArrangerGridViewTest::dragMovesEveryKindOfBlock_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("y");
    QTest::addColumn<Change>("move");

    QTest::newRow("melody") << 9.0 << kQuenaY << Change([](Project& song) {
        song.tracks[0].melodyBlocks[1].startBeat = 11.0;
    });
    QTest::newRow("melody off the grid keeps its offset")
        << 3.0 << kFlautaY
        << Change([](Project& song) { song.tracks[2].melodyBlocks[0].startBeat = 5.5; });
    QTest::newRow("loop") << 9.0 << kBomboY << Change([](Project& song) {
        song.tracks[1].loopBlocks[1].startBeat = 11.0;
    });
    QTest::newRow("voice") << 2.0 << kAnaY << Change([](Project& song) {
        song.audioTracks[0].clips[0].offsetBeats = 4.25;
    });
}

void ArrangerGridViewTest::dragMovesEveryKindOfBlock()
{
    QFETCH(double, beat);
    QFETCH(int, y);
    QFETCH(Change, move);
    stage_->drag(stage_->at(beat, y), 96);
    Project expected;
    writeSong(expected);
    move(expected);
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::dragLeftStopsAtTheStart()
{
    const QPoint place = stage_->at(3.0, kFlautaY);
    stage_->press(place);
    stage_->move(QPoint(-400, place.y()));
    QCOMPARE(stage_->song.tracks[2].melodyBlocks[0].startBeat, 0.0);
    QCOMPARE(stage_->song.tracks[2].melodyBlocks[0].durationBeats, 4.0);
    // Each move counts from the press.
    stage_->move(place + QPoint(-64, 0));
    QCOMPARE(stage_->song.tracks[2].melodyBlocks[0].startBeat, 0.5);
    stage_->release(place);
}

void ArrangerGridViewTest::dragBackRestores()
{
    const QPoint place = stage_->at(3.0, kFlautaY);
    stage_->press(place);
    for (const int way : {300, -300, 77, 0})
        stage_->move(place + QPoint(way, 0));
    stage_->release(place);
    Project expected;
    writeSong(expected);
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    // It was a drag all the same.
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::dragStaysOnItsLane()
{
    stage_->press(stage_->at(9.0, kQuenaY));
    stage_->move(stage_->at(10.0, kFlautaY));
    stage_->move(stage_->at(10.0, -200));
    stage_->release(stage_->at(10.0, 380));
    Project expected;
    writeSong(expected);
    expected.tracks[0].melodyBlocks[1].startBeat = 9.0;
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(stage_->arranger.activeTrack(), 0);
}

void ArrangerGridViewTest::dragMayOverlapOthers()
{
    stage_->drag(stage_->at(9.0, kQuenaY), -7 * 32);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].startBeat, 0.0);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 1.0);
}

void ArrangerGridViewTest::dragBeyondTheEndMakesTheSceneGrow()
{
    stage_->press(stage_->at(9.0, kQuenaY));
    stage_->move(stage_->at(9.0 + 60.0, kQuenaY));
    // The block ends with beat 72, which is bar 18.
    QCOMPARE(stage_->arranger.scene()->width(), 26.0 * 128.0);
    stage_->move(stage_->at(9.0, kQuenaY));
    // Room that is not needed any more goes with the release.
    QCOMPARE(stage_->arranger.scene()->width(), 26.0 * 128.0);
    stage_->release(stage_->at(9.0, kQuenaY));
    QCOMPARE(stage_->arranger.scene()->width(), 2048.0);
}

void ArrangerGridViewTest::lastBlockStaysUnderTheMouse_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<bool>("grip");

    for (const double zoom : {1.0, 0.8, 0.5, 0.2}) {
        QTest::addRow("moved at zoom %g", zoom) << zoom << false;
        QTest::addRow("resized at zoom %g", zoom) << zoom << true;
    }
}

// Four beats to the left, from the end of a song of forty bars in a view of more than eight: the
// song gets shorter on the way, and the view stands at its end.
void ArrangerGridViewTest::lastBlockStaysUnderTheMouse()
{
    QFETCH(double, zoom);
    QFETCH(bool, grip);
    stage_->arranger.resize(1660, 500);
    QList<MelodyBlock>& blocks = stage_->song.tracks[0].melodyBlocks;
    blocks.last() = melody({}, 152.0, 8.0);
    emit stage_->song.changed();
    stage_->arranger.zoomHorizontal(zoom);
    QScrollBar* bar = stage_->arranger.view()->horizontalScrollBar();
    bar->setValue(bar->maximum());
    const QPoint place =
        grip ? stage_->at(160.0, kQuenaY) - QPoint(2, 0) : stage_->at(155.0, kQuenaY);
    const QPoint goal = place - QPoint(qRound(4 * 32 * zoom), 0);
    stage_->press(place);
    for (const int part : {1, 2, 3, 4})
        stage_->move(place + (goal - place) * part / 4);
    // The hand rests.
    for (const int tremor : {1, 0, 1, 0, 1, 0})
        stage_->move(goal + QPoint(tremor, 0));
    QCOMPARE(blocks.last().startBeat, grip ? 152.0 : 148.0);
    QCOMPARE(blocks.last().durationBeats, grip ? 4.0 : 8.0);
    stage_->release(goal);
    QCOMPARE(blocks.last().startBeat, grip ? 152.0 : 148.0);
    QCOMPARE(stage_->arranger.scene()->width(), (39.0 + 8.0) * 128.0);
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::dragInASixEightGoesByPulses()
{
    stage_->song.timeSignature = {6, 8, true};
    emit stage_->song.changed();
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    const QList<std::pair<int, double>> ways{{23, 8.0},  {24, 9.5},  {48, 9.5},
                                             {96, 11.0}, {-96, 5.0}, {-900, 0.0}};
    for (const auto& [way, start] : ways) {
        stage_->move(place + QPoint(way, 0));
        QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, start);
    }
    stage_->release(place);
}

void ArrangerGridViewTest::dragOfAScrolledSong_data()
{
    QTest::addColumn<int>("scroll");
    QTest::addColumn<double>("beat");

    QTest::newRow("a little") << 200 << 9.0;
    QTest::newRow("to the end") << 1000000 << 41.0;
}

void ArrangerGridViewTest::dragOfAScrolledSong()
{
    QFETCH(int, scroll);
    QFETCH(double, beat);
    stage_->song.tracks[0].melodyBlocks.append(melody({}, 40.0, 8.0));
    emit stage_->song.changed();
    QScrollBar* bar = stage_->arranger.view()->horizontalScrollBar();
    bar->setValue(scroll);
    const int before = bar->value();
    Project expected;
    writeSong(expected);
    expected.tracks[0].melodyBlocks.append(melody({}, 40.0, 8.0));
    expected.tracks[0].melodyBlocks[beat > 40.0 ? 2 : 1].startBeat += 2.0;
    stage_->drag(stage_->at(beat, kQuenaY), 64);
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(stage_->scroll().x(), before);
}

// ---- Resizing ------------------------------------------------------------------------------

void ArrangerGridViewTest::gripResizes_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<int>("fromRight");
    QTest::addColumn<BlockSpan>("span");

    // The loop lies at 4 and is 4 long; it is dragged 2 beats to the right.
    const BlockSpan moved{6.0, 4.0};
    const BlockSpan resized{4.0, 6.0};
    QTest::newRow("left of the grip") << 1.0 << 8 << moved;
    QTest::newRow("edge of the grip belongs to the block") << 1.0 << 7 << moved;
    QTest::newRow("first pixel of the grip") << 1.0 << 6 << resized;
    QTest::newRow("last pixel of the grip") << 1.0 << 1 << resized;
    QTest::newRow("zoomed in, left of the grip") << 4.0 << 8 << moved;
    QTest::newRow("zoomed in, on the grip") << 4.0 << 6 << resized;
    QTest::newRow("zoomed out, left of the grip") << 0.25 << 8 << moved;
    QTest::newRow("zoomed out, on the grip") << 0.25 << 6 << resized;
}

void ArrangerGridViewTest::gripResizes()
{
    QFETCH(double, zoom);
    QFETCH(int, fromRight);
    QFETCH(BlockSpan, span);
    stage_->arranger.zoomHorizontal(zoom);
    stage_->arranger.view()->horizontalScrollBar()->setValue(zoom > 1.0 ? 400 : 0);
    stage_->drag(stage_->at(8.0, kBajoY) - QPoint(fromRight, 0), static_cast<int>(64 * zoom));
    Project expected;
    writeSong(expected);
    expected.tracks[3].loopBlocks[0].startBeat = span.start;
    expected.tracks[3].loopBlocks[0].durationBeats = span.length;
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::resizingStopsAtAStep_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("length");

    QTest::newRow("4/4") << TimeSignature{4, 4, false} << 1.0;
    QTest::newRow("6/8") << TimeSignature{6, 8, true} << 1.5;
    QTest::newRow("3/8 that is not marked as compound") << TimeSignature{3, 8, false} << 1.0;
}

void ArrangerGridViewTest::resizingStopsAtAStep()
{
    QFETCH(TimeSignature, meter);
    stage_->song.timeSignature = meter;
    emit stage_->song.changed();
    stage_->drag(stage_->at(4.25, kAnaY) - QPoint(3, 0), -300);
    QTEST(stage_->song.audioTracks[0].clips[0].durationBeats, "length");
    QCOMPARE(stage_->song.audioTracks[0].clips[0].offsetBeats, 1.25);
}

void ArrangerGridViewTest::gripOfALongHiddenBlockIsAtItsEnd()
{
    stage_->song.tracks[0].melodyBlocks[1].durationBeats = 300.0;
    emit stage_->song.changed();
    stage_->drag(stage_->at(9.0, kQuenaY), 32);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 9.0);
    stage_->arranger.view()->horizontalScrollBar()->setValue(309 * 32 - 300);
    stage_->drag(stage_->at(309.0, kQuenaY) - QPoint(4, 0), -32);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].durationBeats, 299.0);
}

// ---- What a drag is ------------------------------------------------------------------------

void ArrangerGridViewTest::oneDragIsOneEdit()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    for (int way = 0; way < 300; way += 7) {
        stage_->move(place + QPoint(way, 0));
        QCOMPARE(editor_->edits(), 0);
    }
    stage_->release(place + QPoint(300, 0));
    QCOMPARE(editor_->edits(), 1);
    stage_->release(place + QPoint(300, 0));
    stage_->move(place);
    QCOMPARE(editor_->edits(), 1);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 17.0);
}

void ArrangerGridViewTest::clickIsNoEdit()
{
    for (const int y : {kQuenaY, kBomboY, kChordsY})
        stage_->click(stage_->at(1.0, y));
    QCOMPARE(editor_->edits(), 0);
}

void ArrangerGridViewTest::clickOfAShakingHandSelects()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    for (const int tremor : {1, 0, -2, 1})
        stage_->move(place + QPoint(tremor, tremor));
    stage_->release(place + QPoint(1, 0));
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(stage_->selected(), QList<BlockRef>{kSecondMelody});
    stage_->key(Qt::Key_Delete);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks.size(), 1);
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::releaseElsewhereEndsADrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(64, 0));
    stage_->moveWithoutButtons(place + QPoint(320, 0));
    QCOMPARE(editor_->edits(), 1);
    QVERIFY(!stage_->arranger.view()->isDragging());
    stage_->moveWithoutButtons(place + QPoint(640, 0));
    stage_->release(place);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 10.0);
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::pressWithoutAReleaseEndsADrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(64, 0));
    stage_->press(stage_->at(1.0, kQuenaY));
    QCOMPARE(editor_->edits(), 1);
    stage_->move(stage_->at(1.0, kQuenaY) + QPoint(32, 0));
    stage_->release(stage_->at(2.0, kQuenaY));
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].startBeat, 1.0);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 10.0);
    QCOMPARE(editor_->edits(), 2);
}

void ArrangerGridViewTest::releaseOfAnotherButtonLeavesADrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(64, 0));
    stage_->click(stage_->at(20.0, kFlautaY), Qt::RightButton);
    stage_->click(stage_->at(20.0, kFlautaY), Qt::MiddleButton);
    QCOMPARE(editor_->edits(), 0);
    stage_->move(place + QPoint(96, 0));
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 11.0);
    stage_->release(place + QPoint(96, 0));
    QCOMPARE(editor_->edits(), 1);
}

// The menu takes both releases.
void ArrangerGridViewTest::menuOfChordsEndsADrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(64, 0));
    const MenuAnswer nothing({});
    stage_->press(stage_->at(20.0, kChordsY), Qt::RightButton);
    QVERIFY(nothing.wasAsked());
    QCOMPARE(editor_->edits(), 1);
    stage_->moveWithoutButtons(place + QPoint(320, 0));
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 10.0);
    stage_->release(place, Qt::RightButton);
    stage_->release(place);
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::dialogEndsADrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(64, 0));
    QDialog dialog(&stage_->arranger);
    dialog.open();
    QTRY_COMPARE(editor_->edits(), 1);
    QVERIFY(!stage_->arranger.view()->isDragging());
    dialog.close();
    stage_->release(place);
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::draggedBlockStaysSelected()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    for (const int way : {40, 80, 120}) {
        stage_->move(place + QPoint(way, 0));
        QCOMPARE(stage_->selected(), QList<BlockRef>{kSecondMelody});
    }
    stage_->release(place + QPoint(120, 0));
    // The edit makes the scene anew.
    QCOMPARE(stage_->selected(), QList<BlockRef>{kSecondMelody});
}

void ArrangerGridViewTest::noBlockIsSelectedAfterAnEditOutsideADrag()
{
    stage_->click(stage_->at(9.0, kQuenaY));
    emit stage_->song.changed();
    QCOMPARE(stage_->selected(), QList<BlockRef>());
}

void ArrangerGridViewTest::blockFollowsTheMouse()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(64, 0));
    QCOMPARE(stage_->arranger.scene()->itemOf(kSecondMelody)->rect(), QRectF(320, 47, 128, 36));
    const QImage grid = painted(stage_->grid());
    COMPARE_COLOR(grid.pixelColor(stage_->at(13.5, 80)), QColor(0x57, 0x88, 0x2c));
    QVERIFY(!isNear(grid.pixelColor(stage_->at(8.5, 80)), QColor(0x57, 0x88, 0x2c), 40));
    stage_->release(place + QPoint(64, 0));
}

// ---- Chords --------------------------------------------------------------------------------

void ArrangerGridViewTest::chordsMakeRoomForOneThatIsDragged_data()
{
    QTest::addColumn<int>("pixels");
    QTest::addColumn<QList<HarmonyBlock>>("blocks");

    // I fills the first bar; IV and V7 share the second.
    const auto seventh = ChordExtension::Seventh;
    QTest::newRow("by a hair") << 3
                               << QList<HarmonyBlock>{
                                      {0, {chord(1, 0.0, 4.0)}},
                                      {1, {chord(4, 0.0, 2.0), chord(5, 2.0, 2.0, seventh)}}};
    QTest::newRow("a beat") << 32
                            << QList<HarmonyBlock>{
                                   {0, {chord(1, 0.0, 4.0)}},
                                   {1, {chord(4, 1.0, 2.0), chord(5, 3.0, 1.0, seventh)}}};
    QTest::newRow("a beat back over the bar line")
        << -32
        << QList<HarmonyBlock>{{0, {chord(1, 0.0, 3.0), chord(4, 3.0, 1.0)}},
                               {1, {chord(4, 0.0, 1.0), chord(5, 2.0, 2.0, seventh)}}};
    QTest::newRow("not before the start")
        << -500
        << QList<HarmonyBlock>{{0, {chord(4, 0.0, 2.0), chord(1, 2.0, 2.0)}},
                               {1, {chord(5, 2.0, 2.0, seventh)}}};
    QTest::newRow("to where there is none")
        << 192
        << QList<HarmonyBlock>{{0, {chord(1, 0.0, 4.0)}},
                               {1, {chord(5, 2.0, 2.0, seventh)}},
                               {2, {chord(4, 2.0, 2.0)}}};
}

void ArrangerGridViewTest::chordsMakeRoomForOneThatIsDragged()
{
    QFETCH(int, pixels);
    stage_->drag(stage_->at(5.0, kChordsY), pixels);
    QTEST(stage_->song.harmonyTrack.blocks, "blocks");
}

void ArrangerGridViewTest::dragOfAChordBackRestoresTheOthers()
{
    const QPoint place = stage_->at(1.0, kChordsY);
    stage_->press(place);
    for (const int way : {32, 96, 160, 300, 0})
        stage_->move(place + QPoint(way, 0));
    stage_->release(place);
    Project expected;
    writeSong(expected);
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(stage_->selected(), (QList<BlockRef>{{BlockKind::Chord, 0, 0}}));
}

void ArrangerGridViewTest::gripOfAChordStretchesIt()
{
    stage_->drag(stage_->at(6.0, kChordsY) - QPoint(3, 0), 96);
    const QList<HarmonyBlock> expected{
        {0, {chord(1, 0.0, 4.0)}}, {1, {chord(4, 0.0, 4.0)}}, {2, {chord(4, 0.0, 1.0)}}};
    QCOMPARE(stage_->song.harmonyTrack.blocks, expected);
    QCOMPARE(editor_->edits(), 1);
    QCOMPARE(stage_->arranger.scene()->selectedBlocks(),
             (QList<BlockRef>{{BlockKind::Chord, 1, 0}, {BlockKind::Chord, 2, 0}}));
}

// ---- What comes between press and release --------------------------------------------------

void ArrangerGridViewTest::foldingTheGroupEndsADrag()
{
    const QPoint place = stage_->at(9.0, kBomboY);
    stage_->press(place);
    stage_->move(place + QPoint(32, 0));
    stage_->arranger.toggleGroup("acomp/percusion");
    QCOMPARE(editor_->edits(), 1);
    stage_->move(place + QPoint(64, 0));
    QVERIFY(!stage_->arranger.view()->isDragging());
    stage_->move(place + QPoint(128, 0));
    stage_->release(place + QPoint(128, 0));
    // The move that found no block any more was the last one.
    QCOMPARE(stage_->song.tracks[1].loopBlocks[1].startBeat, 10.0);
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::undoThatTakesTheBlockEndsADrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(32, 0));
    stage_->song.loadJson({});
    emit stage_->song.changed();
    stage_->move(place + QPoint(64, 0));
    QVERIFY(!stage_->arranger.view()->isDragging());
    stage_->release(place + QPoint(64, 0));
    QVERIFY(stage_->song.tracks.isEmpty());
    QCOMPARE(editor_->edits(), 0);
}

// A block comes back in front of the one that is dragged, which has another index from there on.
void ArrangerGridViewTest::undoThatPutsAnotherBlockThereEndsADrag()
{
    QList<MelodyBlock>& blocks = stage_->song.tracks[0].melodyBlocks;
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(32, 0));
    blocks.prepend(melody({}, 20.0, 2.0));
    emit stage_->song.changed();
    stage_->move(place + QPoint(64, 0));
    QVERIFY(!stage_->arranger.view()->isDragging());
    stage_->release(place + QPoint(64, 0));
    QList<BlockSpan> spans;
    for (const MelodyBlock& block : blocks)
        spans.append({block.startBeat, block.durationBeats});
    QCOMPARE(spans, (QList<BlockSpan>{{20.0, 2.0}, {0.0, 4.0}, {9.0, 4.0}}));
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(stage_->arranger.scene()->width(), 2048.0);
}

void ArrangerGridViewTest::undoThatKeepsTheBlockLeavesADrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(32, 0));
    // Something else goes back to what it was.
    Project undone;
    undone.loadJson(stage_->song.toJson());
    undone.tracks[0].melodyBlocks.removeLast();
    undone.tracks[0].melodyBlocks.append(melody({note(67, 0.0)}, 9.0, 4.0));
    undone.tracks[1].loopBlocks.clear();
    undone.bpm = 77;
    stage_->song.loadJson(undone.toJson());
    emit stage_->song.changed();
    stage_->move(place + QPoint(64, 0));
    stage_->release(place + QPoint(64, 0));
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].startBeat, 10.0);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[1].notes.size(), 1);
    QVERIFY(stage_->song.tracks[1].loopBlocks.isEmpty());
    QCOMPARE(stage_->song.bpm, 77);
    QCOMPARE(editor_->edits(), 1);
}

void ArrangerGridViewTest::anotherProjectEndsADrag()
{
    Project other;
    writeSong(other);
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(32, 0));
    stage_->arranger.setContext(&other, nullptr, stage_->content.library());
    stage_->move(place + QPoint(64, 0));
    stage_->release(place + QPoint(64, 0));
    Project expected;
    writeSong(expected);
    QCOMPARE(firstDifference(other, expected), QString());
    QCOMPARE(editor_->edits(), 0);
    stage_->arranger.setContext(&stage_->song, nullptr, stage_->content.library());
}

void ArrangerGridViewTest::noProjectEndsADrag()
{
    const QPoint place = stage_->at(9.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(32, 0));
    stage_->arranger.setContext(nullptr, nullptr, nullptr);
    stage_->move(place + QPoint(64, 0));
    stage_->release(place + QPoint(64, 0));
    QCOMPARE(editor_->edits(), 0);
}

void ArrangerGridViewTest::deletingDuringADragMovesNoOtherBlock_data()
{
    QTest::addColumn<bool>("byKey");

    QTest::newRow("right button") << false;
    QTest::newRow("Delete") << true;
}

// The next block moves up to the index of the one that is being dragged.
void ArrangerGridViewTest::deletingDuringADragMovesNoOtherBlock()
{
    QFETCH(bool, byKey);
    const QPoint place = stage_->at(1.0, kQuenaY);
    stage_->press(place);
    stage_->move(place + QPoint(32, 0));
    if (byKey)
        stage_->key(Qt::Key_Delete);
    else
        stage_->press(place + QPoint(32, 0), Qt::RightButton);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks.size(), 1);
    stage_->move(place + QPoint(96, 0));
    stage_->release(place + QPoint(96, 0));
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].startBeat, 8.0);
    QCOMPARE(editor_->edits(), 1);
}

// ---- Double clicks -------------------------------------------------------------------------

void ArrangerGridViewTest::doubleClickOpensAMelody()
{
    const QSignalSpy opened(&stage_->arranger, &TrackArranger::openMelodyBlock);
    stage_->doubleClick(stage_->at(9.0, kQuenaY));
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened[0], QList<QVariant>({0, 1}));
    QCOMPARE(editor_->edits(), 0);
}

void ArrangerGridViewTest::doubleClickOnAnythingElseOpensNothing_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("y");

    QTest::newRow("loop") << 1.0 << kBomboY;
    QTest::newRow("voice") << 2.0 << kAnaY;
    QTest::newRow("chord") << 1.0 << kChordsY;
    QTest::newRow("beside the blocks") << 20.0 << kQuenaY;
    QTest::newRow("below the lanes") << 1.0 << 380;
}

void ArrangerGridViewTest::doubleClickOnAnythingElseOpensNothing()
{
    QFETCH(double, beat);
    QFETCH(int, y);
    const QSignalSpy opened(&stage_->arranger, &TrackArranger::openMelodyBlock);
    stage_->doubleClick(stage_->at(beat, y));
    QCOMPARE(opened.size(), 0);
    QCOMPARE(editor_->edits(), 0);
}

void ArrangerGridViewTest::doubleClickFindsTheMelodyUnderALoop()
{
    stage_->song.tracks[1].melodyBlocks = {melody({}, 1.0, 2.0)};
    emit stage_->song.changed();
    const QSignalSpy opened(&stage_->arranger, &TrackArranger::openMelodyBlock);
    stage_->doubleClick(stage_->at(2.0, kBomboY));
    QCOMPARE(opened.size(), 1);
    QCOMPARE(opened[0], QList<QVariant>({1, 0}));
}

// ---- Wheel ---------------------------------------------------------------------------------

void ArrangerGridViewTest::ctrlWheelZooms()
{
    TrackArranger& arranger = stage_->arranger;
    turnWheel(*stage_, QPoint(0, 1), Qt::ControlModifier);
    QCOMPARE(arranger.zoomX(), 1.15);
    turnWheel(*stage_, QPoint(0, 3), Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(arranger.zoomX(), 1.3225);
    turnWheel(*stage_, QPoint(0, -1), Qt::ControlModifier);
    turnWheel(*stage_, QPoint(0, -1), Qt::ControlModifier);
    turnWheel(*stage_, QPoint(0, -1), Qt::ControlModifier);
    QCOMPARE(arranger.zoomX(), 0.8695652173913044);
    // A turn to the side is one down.
    turnWheel(*stage_, QPoint(1, 0), Qt::ControlModifier);
    QCOMPARE(arranger.zoomX(), 0.7561436672967865);
    QCOMPARE(arranger.view()->transform(), QTransform::fromScale(arranger.zoomX(), 1.0));
    for (int i = 0; i < 40; ++i)
        turnWheel(*stage_, QPoint(0, -1), Qt::ControlModifier);
    QCOMPARE(arranger.zoomX(), 0.2);
    for (int i = 0; i < 60; ++i)
        turnWheel(*stage_, QPoint(0, 1), Qt::ControlModifier);
    QCOMPARE(arranger.zoomX(), 6.0);
    QCOMPARE(editor_->edits(), 0);
}

void ArrangerGridViewTest::wheelScrolls()
{
    stage_->arranger.resize(600, 250);
    turnWheel(*stage_, QPoint(0, -1), {});
    QVERIFY(stage_->scroll().y() > 0);
    QCOMPARE(stage_->scroll().x(), 0);
    turnWheel(*stage_, QPoint(-1, 0), {});
    QVERIFY(stage_->scroll().x() > 0);
    QCOMPARE(stage_->arranger.zoomX(), 1.0);
}

void ArrangerGridViewTest::wheelBesideTheGridScrollsIt_data()
{
    QTest::addColumn<bool>("ruler");

    QTest::newRow("over the left column") << false;
    QTest::newRow("over the ruler") << true;
}

void ArrangerGridViewTest::wheelBesideTheGridScrollsIt()
{
    QFETCH(bool, ruler);
    stage_->arranger.resize(600, 250);
    QWidget* beside = ruler ? static_cast<QWidget*>(stage_->arranger.ruler())
                            : static_cast<QWidget*>(stage_->arranger.headerColumn());
    const QPointF place = beside->rect().center();
    for (const QPoint& angle : {QPoint(0, -120), QPoint(-120, 0)}) {
        QWheelEvent event(place, beside->mapToGlobal(place), QPoint(), angle, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(beside, &event);
    }
    QVERIFY(stage_->scroll().y() > 0);
    QVERIFY(stage_->scroll().x() > 0);
}

void ArrangerGridViewTest::cursorTellsTheGrip()
{
    const auto shapeAt = [this](const QPoint& place) {
        stage_->moveWithoutButtons(place);
        return stage_->grid()->cursor().shape();
    };
    QCOMPARE(shapeAt(stage_->at(12.0, kQuenaY) - QPoint(3, 0)), Qt::SizeHorCursor);
    QCOMPARE(shapeAt(stage_->at(12.0, kQuenaY) - QPoint(8, 0)), Qt::ArrowCursor);
    QCOMPARE(shapeAt(stage_->at(12.0, kQuenaY) + QPoint(3, 0)), Qt::ArrowCursor);
    QCOMPARE(shapeAt(stage_->at(8.0, kBajoY) - QPoint(3, 0)), Qt::SizeHorCursor);
    QCOMPARE(shapeAt(stage_->at(4.0, kChordsY) - QPoint(3, 0)), Qt::SizeHorCursor);
}

void ArrangerGridViewTest::aBeatCanBeMovedAtEveryZoom()
{
    stage_->song.tracks[0].melodyBlocks = {melody({}, 8.0, 1.0)};
    emit stage_->song.changed();
    stage_->arranger.zoomHorizontal(0.2);
    // 6.4 pixels wide.
    const QPoint place = stage_->at(8.0, kQuenaY) + QPoint(3, 0);
    stage_->press(place);
    stage_->move(place + QPoint(26, 0));
    stage_->release(place + QPoint(26, 0));
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0], melody({}, 12.0, 1.0));
}

// ---- Drops ---------------------------------------------------------------------------------

void ArrangerGridViewTest::loopsAreTakenAndNothingElse()
{
    const QPoint place = stage_->at(5.0, kQuenaY);
    const auto loop = loopData(kLoop);
    QMimeData text;
    text.setText(QString::fromUtf8(kLoop));
    QMimeData file;
    file.setUrls({QUrl("file:///loop.json")});
    QMimeData both;
    both.setText("Zamba");
    both.setData("application/x-velta-loop", kLoop);
    QVERIFY(enter(*stage_, place, *loop));
    QVERIFY(hover(*stage_, place, *loop));
    QVERIFY(hover(*stage_, stage_->at(9.0, 380), *loop));
    QVERIFY(!hover(*stage_, place, text));
    QVERIFY(enter(*stage_, place, both));
    QVERIFY(!enter(*stage_, place, text));
    QVERIFY(!enter(*stage_, place, file));
    QVERIFY(!enter(*stage_, place, QMimeData()));
}

void ArrangerGridViewTest::dropLandsOnItsBar_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<int>("y");
    QTest::addColumn<double>("bar");

    QTest::newRow("start of a bar") << 8.0 << kQuenaY << 8.0;
    QTest::newRow("last pixel of a bar") << 7.97 << kQuenaY << 4.0;
    QTest::newRow("chord lane") << 6.0 << kChordsY << 4.0;
    QTest::newRow("header") << 6.0 << kVeltasY << 4.0;
    QTest::newRow("voice") << 6.0 << kAnaY << 4.0;
    QTest::newRow("on a block") << 1.0 << kBomboY << 0.0;
    QTest::newRow("below the last lane") << 14.5 << 400 << 12.0;
    QTest::newRow("left of the scene") << -2.0 << kQuenaY << 0.0;
    QTest::newRow("behind the song") << 25.0 << kQuenaY << 24.0;
}

void ArrangerGridViewTest::dropLandsOnItsBar()
{
    QFETCH(double, beat);
    QFETCH(int, y);
    QFETCH(double, bar);
    const QSignalSpy dropped(&stage_->arranger, &TrackArranger::loopDropped);
    QVERIFY(dragAndDrop(*stage_, stage_->at(beat, y), *loopData(kLoop)));
    QCOMPARE(dropped.size(), 1);
    QCOMPARE(dropped[0][4].toDouble(), bar);
}

void ArrangerGridViewTest::dropTellsTheLoop_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("expected");

    QTest::newRow("whole") << kLoop << "r bombo 3 3 4";
    QTest::newRow("without a variant")
        << QByteArray(R"({"rhythmId":"r","layerId":"b","section":"Intro"})") << "r b 0 1 4";
    QTest::newRow("unknown section")
        << QByteArray(R"({"rhythmId":"r","layerId":"b","section":"Puente","variantIndex":2})")
        << "r b 2 2 4";
    QTest::newRow("middle") << QByteArray(R"({"section":"Intermedio"})") << "  1 1 4";
}

void ArrangerGridViewTest::dropTellsTheLoop()
{
    QFETCH(QByteArray, json);
    const QSignalSpy dropped(&stage_->arranger, &TrackArranger::loopDropped);
    QVERIFY(dragAndDrop(*stage_, stage_->at(6.0, kQuenaY), *loopData(json)));
    QTEST(written(dropped.value(0)), "expected");
}

void ArrangerGridViewTest::dropInAnotherMeter_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("bar");

    QTest::newRow("3/4") << TimeSignature{3, 4, false} << 6.0;
    QTest::newRow("6/8 by bars, not by pulses") << TimeSignature{6, 8, true} << 6.0;
    QTest::newRow("7/8") << TimeSignature{7, 8, false} << 7.0;
    QTest::newRow("5/4") << TimeSignature{5, 4, false} << 5.0;
    QTest::newRow("bar without length") << TimeSignature{0, 4, false} << 0.0;
    QTest::newRow("bar of infinite length") << TimeSignature{4, 0, false} << 0.0;
    QTest::newRow("bar of negative length") << TimeSignature{-4, 4, false} << 0.0;
}

void ArrangerGridViewTest::dropInAnotherMeter()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, bar);
    stage_->song.timeSignature = meter;
    emit stage_->song.changed();
    const QSignalSpy dropped(&stage_->arranger, &TrackArranger::loopDropped);
    QVERIFY(dragAndDrop(*stage_, QPoint(270, kQuenaY), *loopData(kLoop)));
    QCOMPARE(dropped[0][4].toDouble(), bar);
}

void ArrangerGridViewTest::dropOfAZoomedAndScrolledSong()
{
    stage_->arranger.zoomHorizontal(2.0);
    stage_->arranger.view()->horizontalScrollBar()->setValue(1000);
    const QSignalSpy dropped(&stage_->arranger, &TrackArranger::loopDropped);
    // Pixel 100 is scene place 550, in the fifth bar.
    QVERIFY(dragAndDrop(*stage_, QPoint(100, kQuenaY), *loopData(kLoop)));
    QCOMPARE(dropped[0][4].toDouble(), 16.0);
}

void ArrangerGridViewTest::loopShowsWhereItWouldLie_data()
{
    QTest::addColumn<QString>("layer");
    QTest::addColumn<double>("beat");
    QTest::addColumn<QRectF>("block");
    QTest::addColumn<QString>("label");

    QTest::newRow("on the lane of its layer, of two bars")
        << "bombo" << 21.0 << QRectF(640, 255, 256, 36) << "Final 3 · compás 6";
    QTest::newRow("in a lane that is still to be made")
        << "piano" << 0.5 << QRectF(0, 361, 256, 36) << "Final 3 · compás 1";
}

void ArrangerGridViewTest::loopShowsWhereItWouldLie()
{
    QFETCH(QString, layer);
    QFETCH(double, beat);
    stage_->content.files().addPackage("r", kPlayable);
    stage_->content.library()->reload();
    QByteArray json = kLoop;
    const auto data = loopData(json.replace("bombo", layer.toUtf8()));
    QVERIFY(enter(*stage_, stage_->at(1.0, kQuenaY), *data));
    QVERIFY(hover(*stage_, stage_->at(beat, kQuenaY), *data));
    const auto& ghost = stage_->arranger.view()->ghost();
    QVERIFY(ghost);
    QTEST(ghost->block, "block");
    QTEST(ghost->label, "label");
    QDragLeaveEvent leave;
    QApplication::sendEvent(stage_->grid(), &leave);
    QVERIFY(!ghost);
    QVERIFY(dragAndDrop(*stage_, stage_->at(beat, kQuenaY), *data));
    QVERIFY(!ghost);
}

void ArrangerGridViewTest::nothingButALoopOfTheLibraryShowsWhereItWouldLie()
{
    QMimeData text;
    text.setText("Zamba");
    QVERIFY(enter(*stage_, stage_->at(1.0, kQuenaY), *loopData(kLoop)));
    QVERIFY(hover(*stage_, stage_->at(9.0, kQuenaY), *loopData(kLoop)));
    QVERIFY(!stage_->arranger.view()->ghost());
    QVERIFY(!enter(*stage_, stage_->at(1.0, kQuenaY), text));
    QVERIFY(!hover(*stage_, stage_->at(9.0, kQuenaY), text));
    QVERIFY(!stage_->arranger.view()->ghost());
}

void ArrangerGridViewTest::whereALoopWouldLieIsPainted()
{
    stage_->content.files().addPackage("r", kPlayable);
    stage_->content.library()->reload();
    const QPoint inBlock = stage_->at(25.5, kBomboY);
    const QPoint inBars = stage_->at(25.5, kQuenaY);
    const QPoint beside = stage_->at(19.5, kQuenaY);
    const QImage before = stage_->grid()->grab().toImage();
    QVERIFY(enter(*stage_, stage_->at(1.0, kQuenaY), *loopData(kLoop)));
    QVERIFY(hover(*stage_, stage_->at(21.0, kQuenaY), *loopData(kLoop)));
    const QImage during = stage_->grid()->grab().toImage();
    QCOMPARE(during.pixelColor(inBlock * during.devicePixelRatio()), kLoopBlock);
    QVERIFY(during.pixelColor(inBars * during.devicePixelRatio()) !=
            before.pixelColor(inBars * before.devicePixelRatio()));
    QCOMPARE(during.pixelColor(beside * during.devicePixelRatio()),
             before.pixelColor(beside * before.devicePixelRatio()));
}

void ArrangerGridViewTest::dropThatIsNoLoopIsRefused_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("empty object") << QByteArray("{}");
    QTest::newRow("array") << QByteArray("[1]");
    QTest::newRow("no JSON") << QByteArray("zamba");
    QTest::newRow("deep nesting") << QByteArray(100000, '[');
}

void ArrangerGridViewTest::dropThatIsNoLoopIsRefused()
{
    QFETCH(QByteArray, json);
    const QSignalSpy dropped(&stage_->arranger, &TrackArranger::loopDropped);
    // What comes is known by its format until it is dropped.
    QVERIFY(enter(*stage_, QPoint(50, 50), *loopData(kLoop)));
    QVERIFY(!drop(*stage_, QPoint(50, 50), *loopData(json)));
    QCOMPARE(dropped.size(), 0);
}

void ArrangerGridViewTest::dropChangesNothingByItself()
{
    QVERIFY(dragAndDrop(*stage_, stage_->at(6.0, kQuenaY), *loopData(kLoop)));
    Project expected;
    writeSong(expected);
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(stage_->arranger.activeTrack(), 0);
}

// ---- Without a project ---------------------------------------------------------------------

void ArrangerGridViewTest::withoutAProjectNothingHappens()
{
    TrackArranger arranger;
    arranger.resize(600, 300);
    arranger.show();
    QVERIFY(QTest::qWaitForWindowExposed(&arranger));
    const QSignalSpy selected(&arranger, &TrackArranger::laneSelectionChanged);
    const QSignalSpy edited(&arranger, &TrackArranger::edited);
    const QSignalSpy opened(&arranger, &TrackArranger::openMelodyBlock);
    const QSignalSpy dropped(&arranger, &TrackArranger::loopDropped);
    QWidget* grid = arranger.view()->viewport();
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton}) {
        QTest::mouseClick(grid, button, {}, QPoint(50, 13));
        QTest::mouseDClick(grid, button, {}, QPoint(50, 60));
        QTest::mouseMove(grid, QPoint(90, 60));
    }
    const auto loop = loopData(kLoop);
    QDragEnterEvent enters(QPoint(50, 60), Qt::CopyAction, loop.get(), Qt::LeftButton, {});
    QApplication::sendEvent(grid, &enters);
    QDropEvent drops(QPoint(50, 60), Qt::CopyAction, loop.get(), Qt::LeftButton, {});
    drops.ignore();
    QApplication::sendEvent(grid, &drops);
    QVERIFY(!drops.isAccepted());
    QCOMPARE(selected.size() + edited.size() + opened.size() + dropped.size(), 0);
    COMPARE_COLOR(painted(grid).pixelColor(300, 150), QColor(0xef, 0xf3, 0xe9));
}

// ---- Painting ------------------------------------------------------------------------------

void ArrangerGridViewTest::lanesArePaintedInBothThemes_data()
{
    QTest::addColumn<int>("y");
    QTest::addColumn<QColor>("light");
    QTest::addColumn<QColor>("dark");

    const QColor oddLight("#ebf0e4");
    const QColor evenLight("#f5f8f1");
    const QColor oddDark("#1b2113");
    const QColor evenDark("#14190e");
    QTest::newRow("chords") << kChordsY << QColor("#e4ecd7") << QColor("#253016");
    QTest::newRow("section") << kVeltasY << QColor("#d7e1c9") << QColor("#2b361b");
    QTest::newRow("second section") << kAccompanimentY << QColor("#d7e1c9") << QColor("#2b361b");
    QTest::newRow("track 0") << kQuenaY << evenLight << evenDark;
    // Its stripe follows its index, and both of its neighbours are even too.
    QTest::newRow("track 2") << kFlautaY << evenLight << evenDark;
    QTest::newRow("voice 0") << kAnaY << evenLight << evenDark;
    QTest::newRow("voice 1") << kBetoY << oddLight << oddDark;
    QTest::newRow("group") << kPercussionY << oddLight << oddDark;
    QTest::newRow("track 1") << kBomboY << oddLight << oddDark;
    QTest::newRow("track 3") << kBajoY << oddLight << oddDark;
    QTest::newRow("below the lanes") << 400 << QColor("#eff3e9") << QColor("#11160b");
}

void ArrangerGridViewTest::lanesArePaintedInBothThemes()
{
    QFETCH(int, y);
    QFETCH(QColor, light);
    QFETCH(QColor, dark);
    const QPoint place = stage_->at(22.5, y);
    QCOMPARE(painted(stage_->grid()).pixelColor(place), light);
    ThemeManager::instance()->setDark(true);
    QCOMPARE(painted(stage_->grid()).pixelColor(place), dark);
}

void ArrangerGridViewTest::lanesAreSeparatedByHairlines()
{
    const QImage grid = painted(stage_->grid());
    const QList<std::pair<int, QColor>> edges{
        {26, QColor("#d7e1c9")},  {44, QColor("#f5f8f1")},  {86, QColor("#f5f8f1")},
        {128, QColor("#f5f8f1")}, {170, QColor("#ebf0e4")}, {212, QColor("#d7e1c9")},
        {230, QColor("#ebf0e4")}, {252, QColor("#ebf0e4")}, {294, QColor("#ebf0e4")},
        {316, QColor("#ebf0e4")}, {358, QColor("#eff3e9")}};
    for (const auto& [y, below] : edges) {
        COMPARE_COLOR(grid.pixelColor(stage_->at(22.5, y)), over(QColor(0, 0, 0, 40), below));
        COMPARE_COLOR(grid.pixelColor(stage_->at(22.5, y + 1)), below);
    }
}

void ArrangerGridViewTest::barsAndBeatsArePainted_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<QList<int>>("bars");
    QTest::addColumn<QList<int>>("beats");

    QTest::newRow("4/4") << TimeSignature{4, 4, false} << QList<int>{768, 896}
                         << QList<int>{736, 800, 832, 864};
    QTest::newRow("3/4") << TimeSignature{3, 4, false} << QList<int>{768, 864}
                         << QList<int>{736, 800, 832, 896};
    QTest::newRow("6/8") << TimeSignature{6, 8, true} << QList<int>{768, 864}
                         << QList<int>{720, 816};
    QTest::newRow("5/4") << TimeSignature{5, 4, false} << QList<int>{800}
                         << QList<int>{736, 768, 832, 864, 896};
}

void ArrangerGridViewTest::barsAndBeatsArePainted()
{
    QFETCH(TimeSignature, meter);
    QFETCH(QList<int>, bars);
    QFETCH(QList<int>, beats);
    stage_->song.timeSignature = meter;
    stage_->arranger.resize(1200, 500);
    emit stage_->song.changed();
    stage_->arranger.view()->horizontalScrollBar()->setValue(0);
    for (const bool dark : {false, true}) {
        ThemeManager::instance()->setDark(dark);
        const QColor lane = dark ? QColor("#14190e") : QColor("#f5f8f1");
        const QColor bar = over(dark ? QColor(255, 255, 255, 130) : QColor(0, 0, 0, 150), lane);
        const QColor beat = over(dark ? QColor(255, 255, 255, 60) : QColor(0, 0, 0, 70), lane);
        const QImage grid = painted(stage_->grid());
        for (int x = 705; x < 910; ++x) {
            const bool onBar = bars.contains(x) || bars.contains(x + 1);
            COMPARE_COLOR(grid.pixelColor(x, kQuenaY), onBar               ? bar
                                                       : beats.contains(x) ? beat
                                                                           : lane);
        }
    }
}

void ArrangerGridViewTest::linesStayThinUnderZoom_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<int>("barColumns");
    QTest::addColumn<int>("beatColumns");

    // Beats are 192 and 9.6 pixels apart. A bar line is two pixels wide, any other one.
    QTest::newRow("zoomed in") << 6.0 << 15.5 << 18.5 << 2 << 2;
    QTest::newRow("zoomed out") << 0.3 << 16.5 << 25.5 << 4 << 7;
}

void ArrangerGridViewTest::linesStayThinUnderZoom()
{
    QFETCH(double, zoom);
    QFETCH(double, from);
    QFETCH(double, to);
    stage_->arranger.zoomHorizontal(zoom);
    stage_->arranger.view()->horizontalScrollBar()->setValue(qRound(32.0 * zoom * (from - 0.5)));
    const QImage grid = painted(stage_->grid());
    const QColor lane("#f5f8f1");
    int bars = 0;
    int beats = 0;
    QVERIFY(stage_->at(from, 0).x() >= 0 && stage_->at(to, 0).x() < grid.width());
    for (int x = stage_->at(from, 0).x(); x < stage_->at(to, 0).x(); ++x) {
        bars += isNear(grid.pixelColor(x, kFlautaY), over(QColor(0, 0, 0, 150), lane));
        beats += isNear(grid.pixelColor(x, kFlautaY), over(QColor(0, 0, 0, 70), lane));
    }
    QTEST(bars, "barColumns");
    QTEST(beats, "beatColumns");
}

void ArrangerGridViewTest::belowTheLanesIsTheBackground()
{
    const QImage grid = painted(stage_->grid());
    QCOMPARE(grid.pixelColor(stage_->at(22.5, 370)), QColor("#eff3e9"));
    // The lines of time go on.
    COMPARE_COLOR(grid.pixelColor(stage_->at(22.0, 370)),
                  over(QColor(0, 0, 0, 70), QColor("#eff3e9")));
}

void ArrangerGridViewTest::zoomedLinesMeetTheRuler()
{
    const QColor lane("#f5f8f1");
    for (const double factor : {1.15, 1.15, 0.6, 2.3, 0.33}) {
        stage_->arranger.zoomHorizontal(factor);
        stage_->arranger.view()->horizontalScrollBar()->setValue(123);
        const QImage grid = painted(stage_->grid());
        const QImage ruler = painted(stage_->arranger.ruler());
        int lines = 0;
        for (int x = 40; x < grid.width() - 2; ++x) {
            if (!isNear(grid.pixelColor(x, kBetoY), over(QColor(0, 0, 0, 150), QColor("#ebf0e4"))))
                continue;
            ++lines;
            bool met = false;
            for (int near = x - 1; near <= x + 1; ++near)
                met = met || isNear(ruler.pixelColor(near, 18), QColor("#2e5214"));
            QVERIFY2(met, qPrintable(QString::number(x)));
        }
        QVERIFY(lines > 4);
    }
}

// ---- Anything at all -----------------------------------------------------------------------

void ArrangerGridViewTest::anyGesturesAreSurvived()
{
    SeededRandom random(77);
    Generator songs(5, Numbers::Hostile);
    const QList<Qt::MouseButton> buttons{Qt::LeftButton, Qt::LeftButton, Qt::RightButton,
                                         Qt::MiddleButton};
    for (int i = 0; i < 1500; ++i) {
        if (i % 100 == 0) {
            songs.fill(stage_->song, 5);
            stage_->arranger.setContext(&stage_->song, nullptr, stage_->content.library());
            editor_->announce();
        }
        QPoint place(random.between(-50, 800), random.between(0, 460));
        // A menu would wait for an answer.
        if (const LaneInfo* lane = stage_->arranger.laneAtY(place.y() + stage_->scroll().y());
            lane && lane->kind == LaneKind::Harmony)
            place.setY(place.y() + 40);
        switch (random.between(0, 9)) {
        case 0:
            stage_->press(place, random.pick(buttons));
            break;
        case 1:
            stage_->release(place, random.pick(buttons));
            break;
        case 2:
            stage_->doubleClick(place);
            break;
        case 3:
            turnWheel(*stage_, QPoint(0, random.oneIn(2) ? 1 : -1), Qt::ControlModifier);
            break;
        case 4:
            stage_->key(Qt::Key_Delete);
            break;
        case 5:
            dragAndDrop(*stage_, place, *loopData(kLoop));
            break;
        case 6:
            stage_->moveWithoutButtons(place);
            break;
        default:
            stage_->move(place);
        }
        QVERIFY2(isInStep(*stage_), qPrintable(QString::number(i)));
        if (!stage_->arranger.view()->isDragging())
            QCOMPARE(stage_->song.toJson(), editor_->announced());
    }
    QVERIFY(editor_->edits() > 0);
}

VELTA_TEST(ArrangerGridViewTest)

} // namespace ArrangerGridViewTests

#include "ArrangerGridViewTest.moc"
