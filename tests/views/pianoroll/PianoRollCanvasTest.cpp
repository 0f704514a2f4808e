#include "views/pianoroll/PianoRollCanvas.h"

#include "PianoRollStage.h"
#include "shell/theme/CanvasColors.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"
#include "views/TimelineRuler.h"

#include <QGraphicsTextItem>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>
#include <functional>

namespace PianoRollCanvasTests {

using namespace ProjectBuilder;

namespace {

/// What is written into the grid; empty for nothing.
using Act = std::function<void(PianoRollCanvas&)>;

/// Counts how often a widget is painted anew.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }

    int count() const { return count_; }

private:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count_ += event->type() == QEvent::Paint;
        return false;
    }

    int count_ = 0;
};

QString messageIn(const PianoRollCanvas& canvas)
{
    for (const QGraphicsItem* item : canvas.scene()->items()) {
        if (const auto* text = dynamic_cast<const QGraphicsTextItem*>(item))
            return text->toPlainText();
    }
    return {};
}

/// The message in the pixels of the view.
QRectF messageRect(const PianoRollCanvas& canvas)
{
    for (const QGraphicsItem* item : canvas.scene()->items()) {
        if (const auto* text = dynamic_cast<const QGraphicsTextItem*>(item))
            return {canvas.view()->viewportTransform().map(text->pos()),
                    text->boundingRect().size()};
    }
    return {};
}

qsizetype ghostsIn(const PianoRollCanvas& canvas)
{
    return std::ranges::count_if(canvas.scene()->items(), [](const QGraphicsItem* item) {
        return qFuzzyCompare(item->zValue(), -1.0);
    });
}

template <typename Button>
Button* buttonOf(const QWidget& root, const QString& text)
{
    for (Button* button : root.findChildren<Button*>()) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

const QString kMessage =
    QStringLiteral("Elegí una velta de melodía en la línea de tiempo para editarla acá.");

} // namespace

class PianoRollCanvasTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void startsWithoutAProject();
    void isBuiltOfABarACornerARulerKeysAndAGrid();
    void viewIsSetUpForWholeRows();
    void buttonsHaveTheirWords();

    void contextShowsTheFirstTrack();
    void contextResetsTheRowsAndStartsAtTheFirstBarInTheScaleOne();
    void contextShowsAMelodyOutOfSight();
    void projectWithoutTracksHasAMessage();
    void noProjectShowsNothing();
    void formerProjectIsLetGo();
    void changesOfTheProjectAreShown();
    void dyingWithFocusAndAHeldKeyIsHarmless();

    void onlyOneBlockIsShown();

    void messageWithoutABlock_data();
    void messageWithoutABlock();
    void otherSelectedTracksShowThrough();
    void activeTrackIsNoGhost();
    void staleTracksAreSurvived();
    void selectionIsNotCarriedOverARebuild();

    void blockInSightLeavesTheRows();
    void blockOutOfSightIsShownWhole_data();
    void blockOutOfSightIsShownWhole();
    void emptyBlockLeavesTheRows();
    void melodyIsVisibleByAnyNote_data();
    void melodyIsVisibleByAnyNote();
    void wholeMelodyIsShown_data();
    void wholeMelodyIsShown();
    void wholeMelodyOfNothingIsUsual();
    void buttonShowsTheWholeMelody();

    void levelRepaintsTheGrid();
    void wheelOverTheRulerScrollsTheGrid();
    void messageStandsInTheMiddle_data();
    void messageStandsInTheMiddle();

    void downAtTheBottomDoesNothing();
    void arrowButtonsScroll();

    void captionTellsTrackKeyAndLength_data();
    void captionTellsTrackKeyAndLength();
    void captionKeepsPercentSigns();
    void captionIsEmptyWithoutABlock();

    void rulerFollowsZoomAndScroll();
    void rulerSeeks();
    void playheadIsShown();
    void playheadDoesNotScroll();

    void hostileSongsAreShown();

private:
    PianoRollCanvas& canvas() const { return stage_->canvas; }

    Project& song() const { return stage_->song; }

    UserHome home_;
    std::unique_ptr<SilentBand> band_;
    std::unique_ptr<PianoRollStage> stage_;
};

void PianoRollCanvasTest::init()
{
    ThemeManager::instance()->setDark(false);
    qApp->setStyleSheet(QString());
    band_ = std::make_unique<SilentBand>();
    stage_ = std::make_unique<PianoRollStage>(&band_->engine());
}

void PianoRollCanvasTest::cleanup()
{
    stage_.reset();
    band_.reset();
}

// ---- Composition ---------------------------------------------------------------------------

void PianoRollCanvasTest::startsWithoutAProject()
{
    PianoRollCanvas canvas;
    QCOMPARE(canvas.notes()->activeTrack(), -1);
    QCOMPARE(canvas.rows()->visibleRows(), 13);
    QCOMPARE(canvas.rows()->topPitch(), 72);
    QCOMPARE(canvas.rows()->zoomX(), 1.0);
    QCOMPARE(canvas.rows()->zoomY(), 1.0);
    QCOMPARE(canvas.notes()->snapBeats(), 0.5);
    QCOMPARE(canvas.notes()->subdivisionLevel(), GridSubdivisionLevel::Division);
    QCOMPARE(canvas.live()->octave(), 4);
    QVERIFY(!canvas.notes()->activeBlock());
    QVERIFY(!canvas.notes()->hasEditableBlock());
    QVERIFY(canvas.melodyVisible());
    canvas.rebuildScene();
    QVERIFY(canvas.scene()->items().isEmpty());
}

void PianoRollCanvasTest::isBuiltOfABarACornerARulerKeysAndAGrid()
{
    const auto place = [this](const QWidget* widget) {
        return QRect(widget->mapTo(&canvas(), QPoint()), widget->size());
    };
    const QRect keys = place(canvas().keyboard());
    const QRect ruler = place(canvas().ruler());
    const QRect view = place(canvas().view());
    QCOMPARE(keys.left(), 0);
    QCOMPARE(view.left(), keys.right() + 1);
    QCOMPARE(ruler.left(), view.left());
    QCOMPARE(view.top(), keys.top());
    QCOMPARE(ruler.bottom() + 1, view.top());
    QCOMPARE(ruler.height(), 34);
    QCOMPARE(view.right(), canvas().width() - 1);
    QCOMPARE(view.bottom(), canvas().height() - 1);
    QCOMPARE(stage_->grid()->mapTo(canvas().view(), QPoint()), QPoint());

    const QWidget* up = buttonOf<QToolButton>(canvas(), "▲");
    const QRect corner = place(up->parentWidget());
    QCOMPARE(corner.topLeft(), QPoint(0, ruler.top()));
    QCOMPARE(corner.size(), QSize(keys.width(), 34));
}

void PianoRollCanvasTest::viewIsSetUpForWholeRows()
{
    const PianoRollGridView* view = canvas().view();
    QVERIFY(!view->renderHints().testFlag(QPainter::Antialiasing));
    QCOMPARE(view->transformationAnchor(), QGraphicsView::AnchorUnderMouse);
    QCOMPARE(view->alignment(), Qt::AlignLeft | Qt::AlignTop);
    QVERIFY(view->hasMouseTracking());
    QCOMPARE(view->verticalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    QCOMPARE(view->focusProxy(), &canvas());
    QCOMPARE(canvas().focusPolicy(), Qt::StrongFocus);
}

void PianoRollCanvasTest::buttonsHaveTheirWords()
{
    const auto* whole = buttonOf<QPushButton>(canvas(), "Ver toda la melodía");
    QVERIFY(whole);
    QCOMPARE(whole->toolTip(), "Muestra desde la nota más grave hasta la más aguda");
    const auto* up = buttonOf<QToolButton>(canvas(), "▲");
    const auto* down = buttonOf<QToolButton>(canvas(), "▼");
    QVERIFY(up && down);
    QCOMPARE(up->toolTip(), "Subir una nota (flecha arriba)");
    QCOMPARE(down->toolTip(), "Bajar una nota (flecha abajo)");
    for (const QToolButton* button : {up, down}) {
        QCOMPARE(button->objectName(), "btn_toolbar");
        QVERIFY(button->autoRepeat());
        QCOMPARE(button->sizePolicy().horizontalPolicy(), QSizePolicy::Ignored);
        QCOMPARE(button->sizePolicy().verticalPolicy(), QSizePolicy::Ignored);
    }
    QCOMPARE(canvas().findChild<QLabel*>()->font().weight(), QFont::Bold);
}

// ---- Context -------------------------------------------------------------------------------

void PianoRollCanvasTest::contextShowsTheFirstTrack()
{
    QCOMPARE(canvas().notes()->activeTrack(), 0);
    QCOMPARE(canvas().notes()->activeBlock(), &song().tracks[0].melodyBlocks[0]);
    QCOMPARE(stage_->noteItems().size(), 4);
}

void PianoRollCanvasTest::contextResetsTheRowsAndStartsAtTheFirstBarInTheScaleOne()
{
    canvas().zoomHorizontal(2.0);
    canvas().rows()->zoomVertical(0.5);
    canvas().rows()->scrollToTopPitch(90, false);
    canvas().view()->horizontalScrollBar()->setValue(300);
    QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 300);
    canvas().setContext(&song(), &band_->engine());
    QCOMPARE(canvas().rows()->visibleRows(), 13);
    QCOMPARE(canvas().rows()->topPitch(), 72);
    QCOMPARE(canvas().rows()->zoomX(), 1.0);
    QCOMPARE(canvas().view()->transform().m11(), 1.0);
    QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 0);
    QCOMPARE(canvas().ruler()->viewport(), (RulerViewport{0.0, 64.0, 0}));
}

void PianoRollCanvasTest::contextShowsAMelodyOutOfSight()
{
    stage_->notes() = {note(90, 0.0)};
    canvas().setContext(&song(), &band_->engine());
    QCOMPARE(canvas().rows()->visibleRows(), 13);
    QCOMPARE(canvas().rows()->topPitch(), 96);
}

void PianoRollCanvasTest::projectWithoutTracksHasAMessage()
{
    Project bare;
    canvas().setContext(&bare, nullptr);
    QCOMPARE(canvas().notes()->activeTrack(), -1);
    QVERIFY(!canvas().notes()->activeBlock());
    QCOMPARE(messageIn(canvas()), kMessage);
    // The grid still paints: a line of bar 2, and a row out of the key.
    const QImage grid = painted(stage_->grid());
    COMPARE_COLOR(grid.pixelColor(256, 10), over(QColor(0, 0, 0, 150), QColor(0xfa, 0xfb, 0xf7)));
    canvas().setContext(nullptr, nullptr);
}

void PianoRollCanvasTest::noProjectShowsNothing()
{
    canvas().setContext(nullptr, nullptr);
    QCOMPARE(canvas().notes()->activeTrack(), -1);
    QVERIFY(canvas().scene()->items().isEmpty());
    QCOMPARE(stage_->caption(), QString());
    const QImage grid = painted(stage_->grid());
    COMPARE_COLOR(grid.pixelColor(256, 10), QColor(0xfa, 0xfb, 0xf7));
}

void PianoRollCanvasTest::formerProjectIsLetGo()
{
    Project other;
    other.tracks = {melodyTrack({melody({note(60, 0.0)})})};
    canvas().setContext(&other, nullptr);
    QCOMPARE(stage_->noteItems().size(), 1);
    emit song().changed();
    stage_->notes().clear();
    emit song().changed();
    QCOMPARE(stage_->noteItems().size(), 1);
    canvas().setContext(nullptr, nullptr);
}

void PianoRollCanvasTest::changesOfTheProjectAreShown()
{
    stage_->notes().append(note(65, 5.0));
    QCOMPARE(stage_->noteItems().size(), 4);
    emit song().changed();
    QCOMPARE(stage_->noteItems().size(), 5);
}

void PianoRollCanvasTest::dyingWithFocusAndAHeldKeyIsHarmless()
{
    auto mortal = std::make_unique<PianoRollCanvas>();
    mortal->setContext(&song(), &band_->engine());
    mortal->show();
    mortal->activateWindow();
    mortal->setFocus();
    QVERIFY(QTest::qWaitForWindowActive(mortal.get()));
    QTest::keyPress(mortal.get(), Qt::Key_C);
    mortal.reset();
    QCOMPARE(stage_->tune().size(), 4);
}

// ---- The block -----------------------------------------------------------------------------

void PianoRollCanvasTest::onlyOneBlockIsShown()
{
    song().tracks[0].melodyBlocks.append(melody({note(65, 0.0)}, 12.0));
    canvas().setActiveBlock(0, 1);
    QCOMPARE(stage_->noteItems().size(), 1);
    QCOMPARE(stage_->noteItems()[0]->rect().left(), 12.0 * 64.0);
    canvas().setActiveTrack(0);
    QCOMPARE(stage_->noteItems().size(), 4);
}

// ---- Scene ---------------------------------------------------------------------------------

void PianoRollCanvasTest::messageWithoutABlock_data()
{
    QTest::addColumn<QList<int>>("visible");
    QTest::addColumn<int>("active");
    QTest::addColumn<QString>("message");

    QTest::newRow("melody") << QList{0} << 0 << QString();
    QTest::newRow("accompaniment") << QList{1} << 1 << kMessage;
    QTest::newRow("nothing selected") << QList<int>() << -1 << kMessage;
    QTest::newRow("tracks to look at only") << QList{0, 2} << -1 << QString();
    QTest::newRow("a track that is gone") << QList{9} << 9 << kMessage;
}

void PianoRollCanvasTest::messageWithoutABlock()
{
    QFETCH(QList<int>, visible);
    QFETCH(int, active);
    canvas().setVisibleTracks(visible, active);
    QTEST(messageIn(canvas()), "message");
}

void PianoRollCanvasTest::messageStandsInTheMiddle_data()
{
    QTest::addColumn<Act>("act");

    QTest::newRow("as it comes") << Act([](PianoRollCanvas&) {});
    QTest::newRow("in the highest rows")
        << Act([](PianoRollCanvas& canvas) { canvas.rows()->scrollToTopPitch(96, false); });
    QTest::newRow("in the lowest rows")
        << Act([](PianoRollCanvas& canvas) { canvas.rows()->scrollToTopPitch(24, false); });
    QTest::newRow("far in the song") << Act(
        [](PianoRollCanvas& canvas) { canvas.view()->horizontalScrollBar()->setValue(1000); });
    QTest::newRow("zoomed in") << Act([](PianoRollCanvas& canvas) {
        canvas.zoomHorizontal(4.0);
        canvas.rows()->zoomVertical(2.0);
    });
    QTest::newRow("in a larger window") << Act([](PianoRollCanvas& canvas) {
        canvas.resize(1300, 700);
        QCoreApplication::processEvents();
    });
    QTest::newRow("in a window narrower than the sentence") << Act([](PianoRollCanvas& canvas) {
        canvas.resize(400, 500);
        QCoreApplication::processEvents();
    });
}

void PianoRollCanvasTest::messageStandsInTheMiddle()
{
    QFETCH(Act, act);
    canvas().setVisibleTracks({1}, 1);
    act(canvas());
    const QRectF message = messageRect(canvas());
    const QRectF room = stage_->grid()->rect();
    QVERIFY(room.contains(message));
    QVERIFY2((message.center() - room.center()).manhattanLength() <= 3.0,
             qPrintable(QString::number(message.center().y())));
}

void PianoRollCanvasTest::otherSelectedTracksShowThrough()
{
    QCOMPARE(ghostsIn(canvas()), 0);
    canvas().setVisibleTracks({0, 2}, 0);
    QCOMPARE(ghostsIn(canvas()), 1);
    QCOMPARE(stage_->noteItems().size(), 4);
    canvas().setVisibleTracks({0, 2}, 2);
    QCOMPARE(ghostsIn(canvas()), 4);
    QCOMPARE(stage_->noteItems().size(), 1);
}

void PianoRollCanvasTest::activeTrackIsNoGhost()
{
    song().tracks[0].melodyBlocks.append(melody({note(65, 0.0)}, 12.0));
    canvas().setVisibleTracks({0}, 0);
    QCOMPARE(ghostsIn(canvas()), 0);
}

void PianoRollCanvasTest::staleTracksAreSurvived()
{
    canvas().setVisibleTracks({0, 2, 3, -1, 77}, 3);
    song().tracks.resize(1);
    emit song().changed();
    QCOMPARE(ghostsIn(canvas()), 4);
    QCOMPARE(messageIn(canvas()), kMessage);
    song().tracks.clear();
    emit song().changed();
    QCOMPARE(ghostsIn(canvas()), 0);
}

void PianoRollCanvasTest::selectionIsNotCarriedOverARebuild()
{
    stage_->noteItems()[1]->setSelected(true);
    canvas().rebuildScene();
    QVERIFY(stage_->selected().isEmpty());
}

// ---- The melody in sight -------------------------------------------------------------------

void PianoRollCanvasTest::blockInSightLeavesTheRows()
{
    canvas().rows()->scrollToTopPitch(75, false);
    canvas().setActiveTrack(2);
    QCOMPARE(canvas().rows()->topPitch(), 75);
    canvas().setActiveBlock(0, 0);
    QCOMPARE(canvas().rows()->topPitch(), 75);
}

void PianoRollCanvasTest::blockOutOfSightIsShownWhole_data()
{
    QTest::addColumn<int>("way");

    QTest::newRow("setActiveTrack") << 0;
    QTest::newRow("setActiveBlock") << 1;
    QTest::newRow("setVisibleTracks") << 2;
}

void PianoRollCanvasTest::blockOutOfSightIsShownWhole()
{
    QFETCH(int, way);
    canvas().rows()->scrollToTopPitch(96, false);
    if (way == 0)
        canvas().setActiveTrack(2);
    else if (way == 1)
        canvas().setActiveBlock(2, 0);
    else
        canvas().setVisibleTracks({2}, 2);
    // One note at 67: three rows, stretched to thirteen.
    QCOMPARE(canvas().rows()->visibleRows(), 13);
    QCOMPARE(canvas().rows()->topPitch(), 73);
}

void PianoRollCanvasTest::emptyBlockLeavesTheRows()
{
    canvas().rows()->scrollToTopPitch(96, false);
    canvas().setActiveTrack(3);
    QCOMPARE(canvas().rows()->topPitch(), 96);
}

void PianoRollCanvasTest::melodyIsVisibleByAnyNote_data()
{
    QTest::addColumn<QList<int>>("pitches");
    QTest::addColumn<bool>("visible");

    QTest::newRow("none") << QList<int>() << true;
    QTest::newRow("in the top row") << QList{72} << true;
    QTest::newRow("just above") << QList{73} << false;
    QTest::newRow("in the lowest row") << QList{60} << true;
    QTest::newRow("just below") << QList{59} << false;
    QTest::newRow("one of many") << QList{90, 59, 66} << true;
}

void PianoRollCanvasTest::melodyIsVisibleByAnyNote()
{
    QFETCH(QList<int>, pitches);
    stage_->notes() = notesInARow(pitches);
    QTEST(canvas().melodyVisible(), "visible");
}

void PianoRollCanvasTest::wholeMelodyIsShown_data()
{
    QTest::addColumn<QList<int>>("pitches");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("top");

    QTest::newRow("one note at 60") << QList{60} << 13 << 66;
    QTest::newRow("from 30 to 90") << QList{30, 90} << 63 << 91;
    QTest::newRow("up to 96") << QList{80, 96} << 19 << 96;
}

void PianoRollCanvasTest::wholeMelodyIsShown()
{
    QFETCH(QList<int>, pitches);
    QFETCH(int, rows);
    QFETCH(int, top);
    stage_->notes() = notesInARow(pitches);
    canvas().showWholeMelody();
    QCOMPARE(canvas().rows()->visibleRows(), rows);
    QCOMPARE(canvas().rows()->topPitch(), top);
    QCOMPARE(canvas().view()->transform().m22(), PianoRollStage::kGridHeight / (rows * 16.0));
}

void PianoRollCanvasTest::wholeMelodyOfNothingIsUsual()
{
    canvas().rows()->zoomVertical(0.5);
    canvas().rows()->scrollToTopPitch(90, false);
    canvas().setVisibleTracks({}, -1);
    canvas().showWholeMelody();
    QCOMPARE(canvas().rows()->visibleRows(), 13);
    QCOMPARE(canvas().rows()->topPitch(), 72);
}

void PianoRollCanvasTest::buttonShowsTheWholeMelody()
{
    canvas().rows()->scrollToTopPitch(96, false);
    QTest::mouseClick(buttonOf<QPushButton>(canvas(), "Ver toda la melodía"), Qt::LeftButton);
    // From 60 to 72: fifteen rows with one on either side.
    QCOMPARE(canvas().rows()->visibleRows(), 15);
    QCOMPARE(canvas().rows()->topPitch(), 73);
}

// ---- Steps ---------------------------------------------------------------------------------

void PianoRollCanvasTest::levelRepaintsTheGrid()
{
    const QPoint quarter(16, 10);
    const QColor before = painted(stage_->grid()).pixelColor(quarter);
    PaintCounter paints(stage_->grid());
    canvas().setSubdivisionLevel(GridSubdivisionLevel::Subdivision);
    QTRY_VERIFY(paints.count() > 0);
    QVERIFY(painted(stage_->grid()).pixelColor(quarter) != before);
}

void PianoRollCanvasTest::wheelOverTheRulerScrollsTheGrid()
{
    PianoRollStage::turnWheel(canvas().ruler(), QPoint(0, 120));
    QCOMPARE(canvas().rows()->topPitch(), 73);
    PianoRollStage::turnWheel(canvas().ruler(), QPoint(0, -120), Qt::ShiftModifier);
    QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 120);
}

void PianoRollCanvasTest::downAtTheBottomDoesNothing()
{
    canvas().rows()->scrollToTopPitch(36, false);
    const int y = canvas().view()->verticalScrollBar()->value();
    QTest::mouseClick(buttonOf<QToolButton>(canvas(), "▼"), Qt::LeftButton);
    QCOMPARE(canvas().rows()->topPitch(), 36);
    QTest::qWait(200);
    QCOMPARE(canvas().view()->verticalScrollBar()->value(), y);
}

void PianoRollCanvasTest::arrowButtonsScroll()
{
    QTest::mouseClick(buttonOf<QToolButton>(canvas(), "▲"), Qt::LeftButton);
    QTest::mouseClick(buttonOf<QToolButton>(canvas(), "▲"), Qt::LeftButton);
    QCOMPARE(canvas().rows()->topPitch(), 74);
    QTest::mouseClick(buttonOf<QToolButton>(canvas(), "▼"), Qt::LeftButton);
    QCOMPARE(canvas().rows()->topPitch(), 73);
}

// ---- Caption -------------------------------------------------------------------------------

void PianoRollCanvasTest::captionTellsTrackKeyAndLength_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("root");
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<NoteEvent>>("notes");
    QTest::addColumn<QString>("caption");

    const QList<NoteEvent> aBar{note(60, 0.0, 4.0)};
    QTest::newRow("one bar") << "Quena" << 0 << 0 << aBar << "Quena · Do mayor · 1 compás";
    QTest::newRow("two bars, D dorian")
        << "Quena" << 2 << 2 << QList{note(60, 3.0, 2.0)} << "Quena · Re dórico · 2 compases";
    QTest::newRow("no notes") << "Quena" << 9 << 1 << QList<NoteEvent>()
                              << "Quena · La menor · sin notas todavía";
    QTest::newRow("no name") << "  " << 6 << 3 << aBar << "Melodía · Fa# lidio · 1 compás";
    QTest::newRow("name is trimmed") << "  Voz " << 0 << 0 << aBar << "Voz · Do mayor · 1 compás";
    QTest::newRow("unknown mode") << "Voz" << 0 << 44 << aBar << "Voz · Do mayor · 1 compás";
    QTest::newRow("no bar at all")
        << "Voz" << 0 << 0 << QList{note(60, 4.0, 0.0)} << "Voz · Do mayor · 0 compases";
}

void PianoRollCanvasTest::captionTellsTrackKeyAndLength()
{
    QFETCH(QString, name);
    QFETCH(int, root);
    QFETCH(int, mode);
    QFETCH(QList<NoteEvent>, notes);
    song().tracks[0].name = name;
    song().keySignature = {root, static_cast<KeyMode>(mode)};
    stage_->notes() = notes;
    emit song().changed();
    QTEST(stage_->caption(), "caption");
}

void PianoRollCanvasTest::captionKeepsPercentSigns()
{
    song().tracks[0].name = "100 %2 %1";
    emit song().changed();
    QCOMPARE(stage_->caption(), "100 %2 %1 · Do mayor · 2 compases");
}

void PianoRollCanvasTest::captionIsEmptyWithoutABlock()
{
    QCOMPARE(stage_->caption(), "Quena · Do mayor · 2 compases");
    canvas().setActiveTrack(1);
    QCOMPARE(stage_->caption(), QString());
}

// ---- Ruler and playhead --------------------------------------------------------------------

void PianoRollCanvasTest::rulerFollowsZoomAndScroll()
{
    QCOMPARE(canvas().ruler()->viewport(), (RulerViewport{0.0, 64.0, 0}));
    canvas().view()->horizontalScrollBar()->setValue(100);
    QCOMPARE(canvas().ruler()->viewport(), (RulerViewport{100.0, 64.0, 0}));
    canvas().zoomHorizontal(2.0);
    canvas().view()->horizontalScrollBar()->setValue(300);
    QCOMPARE(canvas().ruler()->viewport(), (RulerViewport{300.0, 128.0, 0}));
}

void PianoRollCanvasTest::rulerSeeks()
{
    PlaybackEngine& engine = band_->engine();
    QTest::mouseClick(canvas().ruler(), Qt::LeftButton, {}, QPoint(64 * 3 + 5, 10));
    QVERIFY(engine.isPlaying());
    QVERIFY(engine.playheadBeat() >= 3.0 && engine.playheadBeat() < 3.5);
    engine.stop();
    canvas().setContext(&song(), nullptr);
    QTest::mouseClick(canvas().ruler(), Qt::LeftButton, {}, QPoint(64 * 3, 10));
    QVERIFY(!engine.isPlaying());
}

void PianoRollCanvasTest::playheadIsShown()
{
    const auto x = [this] {
        for (const QGraphicsItem* item : canvas().scene()->items()) {
            if (qFuzzyCompare(item->zValue(), 100.0))
                return item->x();
        }
        return -1.0;
    };
    band_->engine().setPlayheadBeat(2.5);
    QCOMPARE(x(), 160.0);
    canvas().rebuildScene();
    QCOMPARE(x(), 160.0);
    canvas().setContext(&song(), &band_->engine());
    band_->engine().setPlayheadBeat(1.0);
    QCOMPARE(x(), 64.0);
}

void PianoRollCanvasTest::playheadDoesNotScroll()
{
    band_->engine().setPlayheadBeat(30.0);
    QCOMPARE(canvas().view()->horizontalScrollBar()->value(), 0);
}

// ---- Damage --------------------------------------------------------------------------------

void PianoRollCanvasTest::hostileSongsAreShown()
{
    Generator songs(23, Numbers::Hostile);
    for (int i = 0; i < 150; ++i) {
        songs.fill(song(), 5);
        emit song().changed();
        canvas().setVisibleTracks({0, 1, 2, 3, 4, 5}, i % 6 - 1);
        canvas().showWholeMelody();
        canvas().setSubdivisionLevel(static_cast<GridSubdivisionLevel>(i % 5 - 1));
        if (i % 10 == 0)
            painted(&canvas());
        QVERIFY(canvas().rows()->visibleRows() >= 8 && canvas().rows()->visibleRows() <= 73);
        QVERIFY(canvas().rows()->topPitch() <= 96);
        QVERIFY(canvas().rows()->topPitch() - canvas().rows()->visibleRows() >= 23);
    }
}

VELTA_TEST(PianoRollCanvasTest)

} // namespace PianoRollCanvasTests

#include "PianoRollCanvasTest.moc"
