#include "views/arranger/TrackArranger.h"

#include "ArrangerStage.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "shell/theme/ThemeManager.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"
#include "views/TimelineRuler.h"

#include <QMainWindow>
#include <QScreen>
#include <QWheelEvent>

#include <cmath>
#include <limits>

namespace TrackArrangerTests {

using namespace ProjectBuilder;

namespace {

constexpr int kMostInt = std::numeric_limits<int>::max();

/// Counts what a widget paints.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override
    {
        paints_ += event->type() == QEvent::Paint;
        return false;
    }

    /// Since the last call.
    int take()
    {
        QCoreApplication::processEvents();
        return std::exchange(paints_, 0);
    }

private:
    int paints_ = 0;
};

QString tracksOf(const TrackArranger& arranger)
{
    QStringList words;
    for (const int track : arranger.selectedTracks())
        words.append(QString::number(track));
    return QStringLiteral("%1 | %2 | %3")
        .arg(words.join(' '))
        .arg(arranger.activeTrack())
        .arg(arranger.selectedAudioTrack());
}

/// Whether the screen shows what a repaint of the whole would show. Where the screen is scaled,
/// Qt gives the top left part of the window only.
bool isUpToDate(QWidget& window)
{
    QCoreApplication::processEvents();
    const QImage seen = window.screen()->grabWindow(window.winId()).toImage();
    const QImage wanted = window.grab().toImage();
    return seen.width() >= 400 &&
           seen.convertToFormat(QImage::Format_RGB32) ==
               wanted.copy(QRect(QPoint(), seen.size())).convertToFormat(QImage::Format_RGB32);
}

} // namespace

class TrackArrangerTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startsWithoutAProject();
    void childrenStandInAGrid();
    void keysReachTheArrangerFromTheGrid();
    void goesWhileItIsScrolled();

    void contextSelectsTheFirstTrack_data();
    void contextSelectsTheFirstTrack();
    void contextForgetsThePreviousProject();
    void contextWithoutAnythingIsHarmless();
    void contextStartsAtTheFirstBarInTheScaleOne();
    void changesOfTheProjectRebuild();
    void selectionSurvivesRebuilds();
    void scrollSurvivesRebuilds();
    void libraryDecidesTheGroups();

    void lanesAreFoundByHeight();
    void lanesAreFoundByTrack();
    void snapStepFollowsTheMeter();
    void groupsFoldAndUnfold();
    void withoutAProjectNothingFolds();
    void foldingAKeyThatStandsTwiceUnfolds();

    void selectingNoteTracks_data();
    void selectingNoteTracks();
    void selectingAudioTracks();
    void everySelectionIsTold();

    void mutingLanes_data();
    void mutingLanes();
    void mutingWhatIsNotThereTellsNothing_data();
    void mutingWhatIsNotThereTellsNothing();

    void deletingTakesBlocksOnly();
    void deletingAStaleBlockIsAnEditAllTheSame();
    void deleteKeysDeleteTheSelectedBlock_data();
    void deleteKeysDeleteTheSelectedBlock();
    void deleteKeysWithoutASelectionDoNothing();
    void deleteKeysDeleteEverySelectedBlock();

    void zoomIsHeldToItsLimits();
    void zoomKeepsTheHeights();
    void zoomAtTheLimitRepaintsTheRuler();
    void zoomAtTheStartKeepsTheStart();
    void zoomKeepsThePlayheadInSight();
    void zoomWithoutAPlayheadInSightKeepsTheMiddle();
    void zoomByNoNumberDoesNothing();
    void wheelZoomKeepsWhatIsUnderTheMouse();
    void rulerFollowsZoomAndScroll();
    void columnIsRepaintedWhenTheGridScrolls();
    void gridStandsStillWhileThePlayheadMoves();

    void screenIsUpToDateAfter_data();
    void screenIsUpToDateAfter();

private:
    TrackArranger& arranger() const { return stage_->arranger; }

    std::unique_ptr<UserHome> home_ = std::make_unique<UserHome>();
    std::unique_ptr<ArrangerStage> stage_;
};

void TrackArrangerTest::init()
{
    ThemeManager::instance()->setDark(false);
    stage_ = std::make_unique<ArrangerStage>();
    connect(&arranger(), &TrackArranger::edited, &stage_->song, &Project::changed);
}

void TrackArrangerTest::cleanup()
{
    stage_.reset();
}

// ---- Life ----------------------------------------------------------------------------------

void TrackArrangerTest::startsWithoutAProject()
{
    TrackArranger arranger;
    QVERIFY(!arranger.project());
    QVERIFY(arranger.lanes().isEmpty());
    QCOMPARE(tracksOf(arranger), QString(" | 0 | -1"));
    QCOMPARE(arranger.zoomX(), 1.0);
    QCOMPARE(arranger.snapBeats(), 1.0);
    QVERIFY(!arranger.laneAtY(5.0));
    QCOMPARE(arranger.laneTopForNoteTrack(0), -1);
    arranger.rebuildScene();
    QVERIFY(arranger.scene()->items().isEmpty());
    arranger.insertHarmonyAtPlayhead(1, ChordExtension::Triad);
    arranger.openHarmonyMenu(0.0, QPoint());
    QVERIFY(!arranger.grab().isNull());
}

void TrackArrangerTest::childrenStandInAGrid()
{
    QCOMPARE(arranger().ruler()->geometry(), QRect(170, 0, 830, 34));
    QCOMPARE(arranger().headerColumn()->geometry(), QRect(0, 34, 170, 466));
    QCOMPARE(arranger().view()->geometry(), QRect(170, 34, 830, 466));
    const QWidget* corner = arranger().childAt(5, 5);
    QVERIFY(corner);
    QCOMPARE(corner->geometry(), QRect(0, 0, 170, 34));
    arranger().resize(400, 300);
    QCOMPARE(arranger().ruler()->geometry(), QRect(170, 0, 230, 34));
    QCOMPARE(arranger().headerColumn()->geometry(), QRect(0, 34, 170, 266));
}

void TrackArrangerTest::keysReachTheArrangerFromTheGrid()
{
    QCOMPARE(arranger().focusPolicy(), Qt::StrongFocus);
    QCOMPARE(arranger().view()->focusProxy(), &arranger());
    arranger().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&arranger()));
    stage_->click(stage_->at(20.0, kQuenaY));
    QCOMPARE(QApplication::focusWidget(), &arranger());
}

void TrackArrangerTest::goesWhileItIsScrolled()
{
    auto arranger = std::make_unique<TrackArranger>();
    arranger->setContext(&stage_->song, nullptr, nullptr);
    arranger->resize(300, 200);
    arranger->show();
    arranger->zoomHorizontal(6.0);
    arranger->view()->horizontalScrollBar()->setValue(5000);
    arranger->view()->verticalScrollBar()->setValue(100);
    QCOMPARE(arranger->view()->horizontalScrollBar()->value(), 5000);
    arranger.reset();
    emit stage_->song.changed();
}

// ---- Context -------------------------------------------------------------------------------

void TrackArrangerTest::contextSelectsTheFirstTrack_data()
{
    QTest::addColumn<int>("tracks");
    QTest::addColumn<int>("audioTracks");
    QTest::addColumn<QString>("selection");

    QTest::newRow("tracks") << 2 << 1 << "0 | 0 | -1";
    QTest::newRow("no tracks") << 0 << 0 << " | -1 | -1";
    QTest::newRow("voices only") << 0 << 2 << " | -1 | -1";
}

void TrackArrangerTest::contextSelectsTheFirstTrack()
{
    QFETCH(int, tracks);
    QFETCH(int, audioTracks);
    Project song;
    song.tracks.resize(tracks);
    song.audioTracks.resize(audioTracks);
    arranger().selectAudioTrack(1);
    const QSignalSpy selected(&arranger(), &TrackArranger::laneSelectionChanged);
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    arranger().setContext(&song, nullptr, nullptr);
    QTEST(tracksOf(arranger()), "selection");
    QCOMPARE(selected.size(), 1);
    QCOMPARE(edited.size(), 0);
    QCOMPARE(arranger().lanes().size(), 3 + tracks + audioTracks);
    arranger().setContext(&stage_->song, nullptr, nullptr);
}

void TrackArrangerTest::contextForgetsThePreviousProject()
{
    Project other;
    arranger().setContext(&other, nullptr, stage_->content.library());
    QCOMPARE(arranger().lanes().size(), 3);
    other.tracks.resize(2);
    emit stage_->song.changed();
    QCOMPARE(arranger().lanes().size(), 3);
    emit other.changed();
    QCOMPARE(arranger().lanes().size(), 5);
    arranger().setContext(&stage_->song, nullptr, stage_->content.library());
    QCOMPARE(arranger().lanes().size(), 11);
}

void TrackArrangerTest::contextWithoutAnythingIsHarmless()
{
    arranger().setContext(nullptr, nullptr, nullptr);
    QCOMPARE(tracksOf(arranger()), QString(" | -1 | -1"));
    QCOMPARE(arranger().snapBeats(), 1.0);
    QVERIFY(arranger().lanes().isEmpty());
    QVERIFY(!arranger().scene()->blockAt(QPointF(40, kQuenaY)));
    QVERIFY(!arranger().grab().isNull());
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    for (const int y : {kChordsY, kQuenaY, kBomboY}) {
        stage_->click(QPoint(40, y));
        stage_->click(QPoint(40, y), Qt::RightButton);
        QTest::mouseClick(arranger().headerColumn(), Qt::LeftButton, {}, QPoint(155, y));
    }
    stage_->key(Qt::Key_C);
    stage_->key(Qt::Key_Delete);
    arranger().toggleGroup("acomp/percusion");
    QTest::mouseClick(arranger().ruler(), Qt::LeftButton, {}, QPoint(64, 5));
    QCOMPARE(edited.size(), 0);
}

void TrackArrangerTest::contextStartsAtTheFirstBarInTheScaleOne()
{
    arranger().resize(500, 250);
    arranger().zoomHorizontal(2.0);
    arranger().view()->horizontalScrollBar()->setValue(700);
    arranger().view()->verticalScrollBar()->setValue(60);
    Project other;
    writeSong(other);
    arranger().setContext(&other, nullptr, stage_->content.library());
    QCOMPARE(arranger().zoomX(), 1.0);
    QCOMPARE(arranger().view()->transform(), QTransform());
    QCOMPARE(stage_->scroll(), QPoint(0, 0));
    QCOMPARE(arranger().ruler()->viewport(), (RulerViewport{0.0, 32.0, 0}));
    arranger().setContext(&stage_->song, nullptr, stage_->content.library());
}

void TrackArrangerTest::changesOfTheProjectRebuild()
{
    stage_->song.tracks[0].melodyBlocks[0].startBeat = 1.0;
    QCOMPARE(arranger().scene()->itemOf({BlockKind::Melody, 0, 0})->rect().x(), 0.0);
    emit stage_->song.changed();
    QCOMPARE(arranger().scene()->itemOf({BlockKind::Melody, 0, 0})->rect().x(), 32.0);
}

void TrackArrangerTest::selectionSurvivesRebuilds()
{
    arranger().selectNoteTrack(2, true);
    emit stage_->song.changed();
    QCOMPARE(tracksOf(arranger()), QString("0 2 | 2 | -1"));
    arranger().selectAudioTrack(1);
    emit stage_->song.changed();
    QCOMPARE(tracksOf(arranger()), QString(" | -1 | 1"));
    stage_->song.audioTracks.clear();
    stage_->song.tracks.clear();
    emit stage_->song.changed();
    QCOMPARE(tracksOf(arranger()), QString(" | -1 | 1"));
}

void TrackArrangerTest::scrollSurvivesRebuilds()
{
    arranger().resize(500, 250);
    arranger().view()->horizontalScrollBar()->setValue(333);
    arranger().view()->verticalScrollBar()->setValue(77);
    for (int i = 0; i < 3; ++i)
        emit stage_->song.changed();
    QCOMPARE(stage_->scroll(), QPoint(333, 77));
    // A shorter song scrolls as far as it goes, and the ruler knows.
    arranger().view()->horizontalScrollBar()->setValue(1600);
    stage_->song.timeSignature = {1, 4, false};
    stage_->song.tracks.clear();
    stage_->song.audioTracks.clear();
    emit stage_->song.changed();
    QCOMPARE(arranger().ruler()->viewport().scrollPixels, stage_->scroll().x());
    QVERIFY(stage_->scroll().x() < 600);
}

void TrackArrangerTest::libraryDecidesTheGroups()
{
    QVERIFY(!arranger().isPitchedTrack(stage_->song.tracks[1]));
    QVERIFY(arranger().isPitchedTrack(stage_->song.tracks[3]));
    arranger().setContext(&stage_->song, nullptr, nullptr);
    QVERIFY(arranger().isPitchedTrack(stage_->song.tracks[1]));
    QCOMPARE(arranger().lanes().size(), 10);
}

// ---- Lanes ---------------------------------------------------------------------------------

void TrackArrangerTest::lanesAreFoundByHeight()
{
    QCOMPARE(arranger().laneAtY(86.0)->trackIndex, 2);
    QCOMPARE(arranger().laneAtY(127.99)->trackIndex, 2);
    QCOMPARE(arranger().laneAtY(0.0)->kind, LaneKind::Harmony);
    QVERIFY(!arranger().laneAtY(358.0));
    QVERIFY(!arranger().laneAtY(-1.0));
}

void TrackArrangerTest::lanesAreFoundByTrack()
{
    QCOMPARE(arranger().laneTopForNoteTrack(0), 44);
    QCOMPARE(arranger().laneTopForNoteTrack(1), 252);
    QCOMPARE(arranger().laneTopForAudioTrack(1), 170);
    QCOMPARE(arranger().laneTopForNoteTrack(9), -1);
    QCOMPARE(arranger().laneTopForAudioTrack(-1), -1);
    arranger().toggleGroup("acomp/percusion");
    QCOMPARE(arranger().laneTopForNoteTrack(1), -1);
    QCOMPARE(arranger().laneTopForNoteTrack(3), 274);
}

void TrackArrangerTest::snapStepFollowsTheMeter()
{
    QCOMPARE(arranger().snapBeats(), 1.0);
    stage_->song.timeSignature = {12, 8, true};
    QCOMPARE(arranger().snapBeats(), 1.5);
    stage_->song.timeSignature = {12, 8, false};
    QCOMPARE(arranger().snapBeats(), 1.0);
}

void TrackArrangerTest::groupsFoldAndUnfold()
{
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    QVERIFY(!arranger().isGroupCollapsed("acomp/percusion"));
    arranger().toggleGroup("acomp/percusion");
    QVERIFY(arranger().isGroupCollapsed("acomp/percusion"));
    arranger().toggleGroup("acomp/instrumental");
    QCOMPARE(stage_->song.collapsedGroups, QStringList({"acomp/percusion", "acomp/instrumental"}));
    QCOMPARE(arranger().lanes().size(), 9);
    QVERIFY(!arranger().scene()->itemOf({BlockKind::Loop, 1, 0}));
    arranger().toggleGroup("acomp/percusion");
    QCOMPARE(stage_->song.collapsedGroups, QStringList{"acomp/instrumental"});
    QVERIFY(arranger().scene()->itemOf({BlockKind::Loop, 1, 0}));
    QCOMPARE(edited.size(), 3);
    arranger().toggleGroup("otro");
    QCOMPARE(stage_->song.collapsedGroups, QStringList({"acomp/instrumental", "otro"}));
    QCOMPARE(edited.size(), 4);
}

void TrackArrangerTest::withoutAProjectNothingFolds()
{
    TrackArranger arranger;
    const QSignalSpy edited(&arranger, &TrackArranger::edited);
    arranger.toggleGroup("acomp/percusion");
    QVERIFY(!arranger.isGroupCollapsed("acomp/percusion"));
    QCOMPARE(edited.size(), 0);
}

void TrackArrangerTest::foldingAKeyThatStandsTwiceUnfolds()
{
    stage_->song.collapsedGroups = {"acomp/percusion", "x", "acomp/percusion"};
    arranger().toggleGroup("acomp/percusion");
    QVERIFY(!arranger().isGroupCollapsed("acomp/percusion"));
    QCOMPARE(arranger().laneTopForNoteTrack(1), 252);
}

// ---- Selection -----------------------------------------------------------------------------

struct Choice {
    int index;
    bool additive;
};

void TrackArrangerTest::selectingNoteTracks_data()
{
    QTest::addColumn<QList<Choice>>("choices");
    QTest::addColumn<QString>("selection");

    // Tracks 0 and 2 are melodies, 1 and 3 accompaniment.
    using Choices = QList<Choice>;
    QTest::newRow("one") << Choices{{2, false}} << "2 | 2 | -1";
    QTest::newRow("one in place of another") << Choices{{2, false}, {0, false}} << "0 | 0 | -1";
    QTest::newRow("a further one") << Choices{{2, true}} << "0 2 | 2 | -1";
    QTest::newRow("in the order of the choices")
        << Choices{{2, false}, {0, true}} << "2 0 | 0 | -1";
    QTest::newRow("one of several is taken out and is active all the same")
        << Choices{{2, true}, {2, true}} << "0 | 2 | -1";
    QTest::newRow("the first of several is taken out")
        << Choices{{2, true}, {0, true}} << "2 | 0 | -1";
    QTest::newRow("the only one stays") << Choices{{0, true}} << "0 | 0 | -1";
    QTest::newRow("the only one stays however often")
        << Choices{{0, true}, {0, true}, {0, true}} << "0 | 0 | -1";
    QTest::newRow("accompaniment is alone") << Choices{{2, true}, {1, true}} << "1 | 1 | -1";
    QTest::newRow("accompaniment, then a melody beside it")
        << Choices{{1, true}, {0, true}} << "1 0 | 0 | -1";
    QTest::newRow("accompaniment again") << Choices{{3, true}, {3, true}} << "3 | 3 | -1";
    QTest::newRow("out of range is alone") << Choices{{2, true}, {9, true}} << "9 | 9 | -1";
    QTest::newRow("below the range is alone") << Choices{{2, true}, {-1, true}} << "-1 | -1 | -1";
    QTest::newRow("plain choice of one of several")
        << Choices{{2, true}, {0, false}} << "0 | 0 | -1";
}

void TrackArrangerTest::selectingNoteTracks()
{
    QFETCH(QList<Choice>, choices);
    for (const Choice& choice : choices)
        arranger().selectNoteTrack(choice.index, choice.additive);
    QTEST(tracksOf(arranger()), "selection");
}

void TrackArrangerTest::selectingAudioTracks()
{
    arranger().selectNoteTrack(2, true);
    arranger().selectAudioTrack(1);
    QCOMPARE(tracksOf(arranger()), QString(" | -1 | 1"));
    arranger().selectNoteTrack(2, true);
    QCOMPARE(tracksOf(arranger()), QString("2 | 2 | -1"));
    arranger().selectAudioTrack(-1);
    QCOMPARE(tracksOf(arranger()), QString(" | -1 | -1"));
}

void TrackArrangerTest::everySelectionIsTold()
{
    const QSignalSpy selected(&arranger(), &TrackArranger::laneSelectionChanged);
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    arranger().selectNoteTrack(0, false);
    arranger().selectNoteTrack(0, true);
    arranger().selectAudioTrack(0);
    arranger().selectAudioTrack(0);
    QCOMPARE(selected.size(), 4);
    QCOMPARE(edited.size(), 0);
}

// ---- Muting --------------------------------------------------------------------------------

void TrackArrangerTest::mutingLanes_data()
{
    QTest::addColumn<LaneKind>("kind");
    QTest::addColumn<int>("index");

    QTest::newRow("chords") << LaneKind::Harmony << -1;
    QTest::newRow("track") << LaneKind::NoteTrack << 2;
    QTest::newRow("accompaniment") << LaneKind::NoteTrack << 1;
    QTest::newRow("voice") << LaneKind::AudioTrack << 1;
}

void TrackArrangerTest::mutingLanes()
{
    QFETCH(LaneKind, kind);
    QFETCH(int, index);
    Project expected;
    writeSong(expected);
    if (kind == LaneKind::Harmony)
        expected.harmonyTrack.muted = true;
    else if (kind == LaneKind::NoteTrack)
        expected.tracks[index].muted = true;
    else
        expected.audioTracks[index].muted = true;
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    arranger().toggleLaneMute({.kind = kind, .trackIndex = index});
    QCOMPARE(firstDifference(stage_->song, expected), QString());
    QCOMPARE(edited.size(), 1);
    arranger().toggleLaneMute({.kind = kind, .trackIndex = index});
    Project before;
    writeSong(before);
    QCOMPARE(firstDifference(stage_->song, before), QString());
    QCOMPARE(edited.size(), 2);
}

void TrackArrangerTest::mutingWhatIsNotThereTellsNothing_data()
{
    QTest::addColumn<LaneKind>("kind");
    QTest::addColumn<int>("index");

    QTest::newRow("section") << LaneKind::Section << -1;
    QTest::newRow("group") << LaneKind::Group << -1;
    QTest::newRow("track behind the last") << LaneKind::NoteTrack << 4;
    QTest::newRow("track before the first") << LaneKind::NoteTrack << -1;
    QTest::newRow("voice behind the last") << LaneKind::AudioTrack << 2;
    QTest::newRow("voice far behind") << LaneKind::AudioTrack << kMostInt;
}

void TrackArrangerTest::mutingWhatIsNotThereTellsNothing()
{
    QFETCH(LaneKind, kind);
    QFETCH(int, index);
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    arranger().toggleLaneMute({.kind = kind, .trackIndex = index});
    QCOMPARE(edited.size(), 0);
    Project expected;
    writeSong(expected);
    QCOMPARE(firstDifference(stage_->song, expected), QString());
}

// ---- Deleting ------------------------------------------------------------------------------

void TrackArrangerTest::deletingTakesBlocksOnly()
{
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    arranger().deleteItem(nullptr);
    QGraphicsRectItem plain;
    arranger().deleteItem(&plain);
    for (QGraphicsItem* item : arranger().scene()->items()) {
        if (item->type() != BlockItem::Type)
            arranger().deleteItem(item);
    }
    QCOMPARE(edited.size(), 0);
    arranger().deleteItem(arranger().scene()->itemOf({BlockKind::Audio, 1, 0}));
    QCOMPARE(edited.size(), 1);
    QVERIFY(stage_->song.audioTracks[1].clips.isEmpty());
    QCOMPARE(stage_->song.audioTracks.size(), 2);
}

void TrackArrangerTest::deletingAStaleBlockIsAnEditAllTheSame()
{
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    Project expected;
    writeSong(expected);
    for (const BlockKind kind :
         {BlockKind::Melody, BlockKind::Loop, BlockKind::Audio, BlockKind::Chord}) {
        BlockItem stale({kind, 1, 7}, QRectF(), {});
        arranger().deleteItem(&stale);
        QCOMPARE(firstDifference(stage_->song, expected), QString());
    }
    QCOMPARE(edited.size(), 4);
}

void TrackArrangerTest::deleteKeysDeleteTheSelectedBlock_data()
{
    QTest::addColumn<Qt::Key>("key");

    QTest::newRow("Delete") << Qt::Key_Delete;
    QTest::newRow("Backspace") << Qt::Key_Backspace;
}

void TrackArrangerTest::deleteKeysDeleteTheSelectedBlock()
{
    QFETCH(Qt::Key, key);
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    stage_->click(stage_->at(5.0, kChordsY));
    stage_->key(key);
    QCOMPARE(stage_->song.harmonyTrack.blocks[1].events.size(), 1);
    stage_->key(key);
    QCOMPARE(edited.size(), 1);
    stage_->click(stage_->at(3.0, kFlautaY));
    stage_->key(key, Qt::ShiftModifier);
    QVERIFY(stage_->song.tracks[2].melodyBlocks.isEmpty());
    QCOMPARE(edited.size(), 2);
}

void TrackArrangerTest::deleteKeysWithoutASelectionDoNothing()
{
    const QSignalSpy edited(&arranger(), &TrackArranger::edited);
    stage_->key(Qt::Key_Delete);
    stage_->key(Qt::Key_Backspace);
    QCOMPARE(edited.size(), 0);
}

// A user cannot select two, but whoever holds the scene can.
void TrackArrangerTest::deleteKeysDeleteEverySelectedBlock()
{
    arranger().disconnect(&stage_->song);
    for (const BlockRef& block : {BlockRef{BlockKind::Melody, 2, 0}, {BlockKind::Audio, 0, 0}})
        arranger().scene()->itemOf(block)->setSelected(true);
    stage_->key(Qt::Key_Delete);
    QVERIFY(stage_->song.tracks[2].melodyBlocks.isEmpty());
    QVERIFY(stage_->song.audioTracks[0].clips.isEmpty());
}

// ---- Zoom and scrolling --------------------------------------------------------------------

void TrackArrangerTest::zoomIsHeldToItsLimits()
{
    const QList<std::pair<double, double>> zooms{{2.0, 2.0}, {0.5, 1.0},  {0.1, 0.2},
                                                 {0.5, 0.2}, {20.0, 4.0}, {2.0, 6.0},
                                                 {2.0, 6.0}, {0.25, 1.5}, {0.0, 0.2}};
    for (const auto& [factor, zoom] : zooms) {
        arranger().zoomHorizontal(factor);
        QCOMPARE(arranger().zoomX(), zoom);
        QCOMPARE(arranger().view()->transform(), QTransform::fromScale(zoom, 1.0));
    }
}

void TrackArrangerTest::zoomKeepsTheHeights()
{
    const QRectF before = arranger().scene()->sceneRect();
    arranger().zoomHorizontal(3.0);
    QCOMPARE(arranger().scene()->sceneRect(), before);
    QCOMPARE(arranger().view()->mapFromScene(QPointF(0, 86)).y(), 86);
    QCOMPARE(arranger().view()->mapFromScene(QPointF(10, 0)).x() -
                 arranger().view()->mapFromScene(QPointF(0, 0)).x(),
             30);
}

void TrackArrangerTest::zoomAtTheStartKeepsTheStart()
{
    for (const double factor : {1.25, 1.25, 1.25, 1.25, 0.8}) {
        arranger().zoomHorizontal(factor);
        QCOMPARE(stage_->scroll().x(), 0);
    }
}

void TrackArrangerTest::zoomKeepsThePlayheadInSight()
{
    SoundfontPlayer player(SoundfontPlayer::Mode::Offline);
    PlaybackEngine engine(&player, nullptr, nullptr);
    engine.setProject(&stage_->song);
    arranger().setContext(&stage_->song, &engine, stage_->content.library());
    engine.setPlayheadBeat(20.0);
    arranger().view()->horizontalScrollBar()->setValue(300);
    for (const double factor : {1.25, 1.25, 0.8, 1.25}) {
        arranger().zoomHorizontal(factor);
        // 640 - 300 pixels from the left edge, as far as the scroll bar takes whole ones.
        QVERIFY(std::abs(20.0 * 32.0 * arranger().zoomX() - stage_->scroll().x() - 340.0) <= 2.0);
    }
    arranger().setContext(nullptr, nullptr, nullptr);
}

void TrackArrangerTest::zoomWithoutAPlayheadInSightKeepsTheMiddle()
{
    arranger().view()->horizontalScrollBar()->setValue(600);
    const double half = stage_->grid()->width() / 2.0;
    const double middle = 600.0 + half;
    arranger().zoomHorizontal(1.25);
    QVERIFY(std::abs(middle * 1.25 - half - stage_->scroll().x()) <= 1.0);
}

void TrackArrangerTest::zoomByNoNumberDoesNothing()
{
    arranger().zoomHorizontal(std::numeric_limits<double>::quiet_NaN());
    QCOMPARE(arranger().zoomX(), 1.0);
    arranger().zoomHorizontal(1.5);
    QCOMPARE(arranger().zoomX(), 1.5);
}

void TrackArrangerTest::wheelZoomKeepsWhatIsUnderTheMouse()
{
    QVERIFY(QTest::qWaitForWindowExposed(&arranger()));
    const QPoint place(300, 65);
    stage_->moveWithoutButtons(place);
    QTest::mouseMove(stage_->grid(), place - QPoint(1, 0));
    QTest::mouseMove(stage_->grid(), place);
    const double before = arranger().view()->mapToScene(place).x();
    for (int i = 0; i < 4; ++i) {
        QWheelEvent event(place, stage_->grid()->mapToGlobal(QPointF(place)), QPoint(),
                          QPoint(0, 120), Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase,
                          false);
        QApplication::sendEvent(stage_->grid(), &event);
    }
    QVERIFY2(std::abs(arranger().view()->mapToScene(place).x() - before) <= 3.0,
             qPrintable(QString::number(arranger().view()->mapToScene(place).x())));
}

void TrackArrangerTest::zoomAtTheLimitRepaintsTheRuler()
{
    arranger().zoomHorizontal(10.0);
    PaintCounter ruler(arranger().ruler());
    ruler.take();
    arranger().zoomHorizontal(10.0);
    QVERIFY(ruler.take() > 0);
    QCOMPARE(arranger().zoomX(), 6.0);
}

void TrackArrangerTest::rulerFollowsZoomAndScroll()
{
    QCOMPARE(arranger().ruler()->viewport(), (RulerViewport{0.0, 32.0, 0}));
    arranger().view()->horizontalScrollBar()->setValue(100);
    QCOMPARE(arranger().ruler()->viewport(), (RulerViewport{100.0, 32.0, 0}));
    for (const double factor : {2.0, 1.15, 0.3, 0.87, 5.0}) {
        arranger().zoomHorizontal(factor);
        for (const int scroll : {0, 17, 150}) {
            arranger().view()->horizontalScrollBar()->setValue(scroll);
            const RulerViewport& viewport = arranger().ruler()->viewport();
            QVERIFY(std::abs(viewport.scrollPixels - stage_->scroll().x()) < 1e-6);
            QCOMPARE(viewport.pixelsPerBeat, 32.0 * arranger().zoomX());
            QCOMPARE(viewport.leftMargin, 0);
        }
    }
}

void TrackArrangerTest::columnIsRepaintedWhenTheGridScrolls()
{
    arranger().resize(500, 250);
    PaintCounter column(arranger().headerColumn());
    column.take();
    arranger().view()->verticalScrollBar()->setValue(40);
    QCOMPARE(arranger().view()->verticalScrollBar()->value(), 40);
    QVERIFY(column.take() > 0);
}

void TrackArrangerTest::gridStandsStillWhileThePlayheadMoves()
{
    arranger().view()->horizontalScrollBar()->setValue(100);
    arranger().scene()->setPlayheadBeat(1000.0);
    QCOMPARE(stage_->scroll().x(), 100);
}

// ---- What is seen --------------------------------------------------------------------------

void TrackArrangerTest::screenIsUpToDateAfter_data()
{
    using Act = void (*)(ArrangerStage&);
    QTest::addColumn<Act>("act");

    QTest::newRow("nothing") << Act([](ArrangerStage&) {});
    QTest::newRow("a further voice") << Act([](ArrangerStage& stage) {
        stage.song.audioTracks.append(AudioTrack());
        emit stage.song.changed();
    });
    QTest::newRow("an empty song") << Act([](ArrangerStage& stage) {
        stage.song.loadJson({});
        emit stage.song.changed();
    });
    QTest::newRow("another meter") << Act([](ArrangerStage& stage) {
        stage.song.timeSignature = {6, 8, true};
        emit stage.song.changed();
    });
    QTest::newRow("a meter of equal length") << Act([](ArrangerStage& stage) {
        stage.song.timeSignature = {8, 8, false};
        emit stage.song.changed();
        stage.song.timeSignature = {12, 12, true};
        emit stage.song.changed();
    });
    QTest::newRow("folding a group") << Act([](ArrangerStage& stage) {
        QTest::mouseClick(stage.arranger.headerColumn(), Qt::LeftButton, {},
                          QPoint(20, kPercussionY));
    });
    QTest::newRow("tracks in another order") << Act([](ArrangerStage& stage) {
        stage.song.tracks.swapItemsAt(1, 2);
        emit stage.song.changed();
    });
    QTest::newRow("muting") << Act([](ArrangerStage& stage) {
        QTest::mouseClick(stage.arranger.headerColumn(), Qt::LeftButton, {}, QPoint(155, kFlautaY));
    });
    QTest::newRow("muting the chords elsewhere") << Act([](ArrangerStage& stage) {
        stage.song.harmonyTrack.muted = true;
        emit stage.song.changed();
    });
    QTest::newRow("another name") << Act([](ArrangerStage& stage) {
        stage.song.tracks[0].name = "Charango";
        emit stage.song.changed();
    });
    QTest::newRow("selecting lanes") << Act([](ArrangerStage& stage) {
        stage.click(stage.at(20.0, kFlautaY), Qt::LeftButton, Qt::ControlModifier);
        stage.click(stage.at(20.0, kBetoY));
    });
    QTest::newRow("selecting a block") << Act([](ArrangerStage& stage) {
        stage.click(stage.at(9.0, kQuenaY));
        stage.click(stage.at(5.0, kChordsY));
    });
    QTest::newRow("a move in a drag") << Act([](ArrangerStage& stage) {
        stage.press(stage.at(9.0, kQuenaY));
        stage.move(stage.at(30.0, kQuenaY));
        QCoreApplication::processEvents();
        stage.move(stage.at(10.0, kQuenaY));
    });
    QTest::newRow("a drag") << Act(
        [](ArrangerStage& stage) { stage.drag(stage.at(9.0, kQuenaY), 100); });
    QTest::newRow("a deleted block")
        << Act([](ArrangerStage& stage) { stage.click(stage.at(9.0, kBomboY), Qt::RightButton); });
    QTest::newRow("a laid chord") << Act([](ArrangerStage& stage) { stage.key(Qt::Key_G); });
    QTest::newRow("zoom") << Act([](ArrangerStage& stage) {
        stage.arranger.zoomHorizontal(1.7);
        QCoreApplication::processEvents();
        stage.arranger.zoomHorizontal(0.3);
    });
    QTest::newRow("zoom and scroll") << Act([](ArrangerStage& stage) {
        stage.arranger.zoomHorizontal(1.15);
        QCoreApplication::processEvents();
        stage.arranger.view()->horizontalScrollBar()->setValue(123);
    });
    QTest::newRow("scrolling") << Act(
        [](ArrangerStage& stage) { stage.arranger.view()->horizontalScrollBar()->setValue(61); });
    QTest::newRow("scrolling down") << Act([](ArrangerStage& stage) {
        stage.arranger.resize(700, 240);
        QCoreApplication::processEvents();
        stage.arranger.view()->verticalScrollBar()->setValue(61);
    });
    QTest::newRow("a moved playhead") << Act([](ArrangerStage& stage) {
        stage.arranger.scene()->setPlayheadBeat(3.3);
        stage.arranger.ruler()->setPlayheadBeat(3.3);
        QCoreApplication::processEvents();
        stage.arranger.scene()->setPlayheadBeat(4.7);
        stage.arranger.ruler()->setPlayheadBeat(4.7);
    });
    QTest::newRow("a zoomed and moved playhead") << Act([](ArrangerStage& stage) {
        stage.arranger.zoomHorizontal(0.37);
        for (const double beat : {3.3, 3.4, 5.9, 2.1}) {
            stage.arranger.scene()->setPlayheadBeat(beat);
            QCoreApplication::processEvents();
        }
    });
    QTest::newRow("another theme") << Act([](ArrangerStage& stage) {
        ThemeManager::instance()->setDark(true);
        emit stage.song.changed();
    });
    QTest::newRow("no project") << Act(
        [](ArrangerStage& stage) { stage.arranger.setContext(nullptr, nullptr, nullptr); });
}

void TrackArrangerTest::screenIsUpToDateAfter()
{
    using Act = void (*)(ArrangerStage&);
    QFETCH(Act, act);
    QVERIFY(isUpToDate(arranger()));
    act(*stage_);
    QVERIFY(isUpToDate(arranger()));
}

VELTA_TEST(TrackArrangerTest)

} // namespace TrackArrangerTests

#include "TrackArrangerTest.moc"
