#include "views/pianoroll/PianoRollScene.h"

#include "PianoRollStage.h"
#include "shell/theme/CanvasColors.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/Painted.h"

#include <QGraphicsTextItem>

#include <algorithm>
#include <limits>

namespace PianoRollSceneTests {

using namespace ProjectBuilder;

namespace {

/// What stands in a scene at a height of the stack.
template <typename Item>
QList<Item*> itemsAt(const QGraphicsScene& scene, double z)
{
    QList<Item*> found;
    for (QGraphicsItem* item : scene.items(Qt::AscendingOrder)) {
        auto* candidate = dynamic_cast<Item*>(item);
        if (candidate && qFuzzyCompare(candidate->zValue() + 1000.0, z + 1000.0))
            found.append(candidate);
    }
    return found;
}

QList<NoteItem*> notesOf(const PianoRollScene& scene)
{
    return itemsAt<NoteItem>(scene, 0.0);
}

QList<QGraphicsRectItem*> ghostsOf(const PianoRollScene& scene)
{
    return itemsAt<QGraphicsRectItem>(scene, -1.0);
}

QGraphicsLineItem* playheadOf(const PianoRollScene& scene)
{
    return itemsAt<QGraphicsLineItem>(scene, 100.0).value(0);
}

/// A track whose only note has a pitch.
Track trackOf(int pitch, double blockStart = 0.0)
{
    return melodyTrack({melody({note(pitch, 0.0)}, blockStart)});
}

} // namespace

class PianoRollSceneTest : public QObject {
    Q_OBJECT

private slots:
    void init();

    void notesStandWhereTheyAreWritten();
    void notesOfALaterBlockStandLater();
    void noBlockHasNoNotes();
    void notesWithoutAPlaceKeepTheIndicesOfTheOthers();
    void selectionIsLostWithARebuild();
    void selectedNotesAreInOrder();

    void ghostsShowThrough();
    void everyMelodyBlockOfATrackShowsThrough();
    void loopsDoNotShowThrough();
    void ghostsHaveTheColorsOfTheirTurn();
    void tracksThatAreNoneTakeNoColor();
    void ghostsCannotBeSelected();
    void ghostsLieBehindNotes();

    void noteAtAPlace_data();
    void noteAtAPlace();
    void laterNotesLieOnTop();
    void ghostsAreNotFound();

    void playheadRunsFromTopToBottom();
    void playheadMoves_data();
    void playheadMoves();
    void playheadWithoutASceneIsHarmless();

    void messageIsWritten();
    void messageIsGoneWithARebuild();
    void emptySceneHasNothing();
    void sceneIsEightBarsLongerThanTheSong();

    void hostileSongsAreShown();

private:
    UserHome home_;
    Project song_;
    PianoRollScene* scene_ = nullptr;
    std::unique_ptr<PianoRollScene> holder_;
};

void PianoRollSceneTest::init()
{
    ThemeManager::instance()->setDark(false);
    writeTune(song_);
    holder_ = std::make_unique<PianoRollScene>();
    scene_ = holder_.get();
}

// ---- Notes ---------------------------------------------------------------------------------

void PianoRollSceneTest::notesStandWhereTheyAreWritten()
{
    scene_->rebuild(song_, &song_.tracks[0].melodyBlocks[0], {});
    const QList<NoteItem*> notes = notesOf(*scene_);
    QCOMPARE(notes.size(), 4);
    QCOMPARE(notes[0]->rect(), QRectF(0, 577, 64, 14));
    QCOMPARE(notes[1]->rect(), QRectF(64, 545, 64, 14));
    QCOMPARE(notes[3]->rect(), QRectF(256, 385, 32, 14));
    for (int i = 0; i < notes.size(); ++i) {
        QCOMPARE(notes[i]->data(0).toInt(), i);
        QCOMPARE(notes[i]->pitch(), song_.tracks[0].melodyBlocks[0].notes[i].pitch);
        QVERIFY(notes[i]->flags() & QGraphicsItem::ItemIsSelectable);
    }
}

void PianoRollSceneTest::notesOfALaterBlockStandLater()
{
    scene_->rebuild(song_, &song_.tracks[2].melodyBlocks[0], {});
    QCOMPARE(notesOf(*scene_).value(0)->rect(), QRectF(256, 465, 64, 14));
}

void PianoRollSceneTest::noBlockHasNoNotes()
{
    scene_->rebuild(song_, nullptr, {});
    QVERIFY(notesOf(*scene_).isEmpty());
    QVERIFY(playheadOf(*scene_));
}

void PianoRollSceneTest::notesWithoutAPlaceKeepTheIndicesOfTheOthers()
{
    const MelodyBlock block =
        melody({note(60, std::numeric_limits<double>::quiet_NaN()), note(62, 1.0)});
    scene_->rebuild(song_, &block, {});
    QCOMPARE(notesOf(*scene_).size(), 1);
    QCOMPARE(notesOf(*scene_)[0]->index(), 1);
}

void PianoRollSceneTest::selectionIsLostWithARebuild()
{
    const MelodyBlock& block = song_.tracks[0].melodyBlocks[0];
    scene_->rebuild(song_, &block, {});
    notesOf(*scene_)[1]->setSelected(true);
    QCOMPARE(scene_->selectedNotes(), QList<int>{1});
    scene_->rebuild(song_, &block, {});
    QCOMPARE(scene_->selectedNotes(), QList<int>());
}

void PianoRollSceneTest::selectedNotesAreInOrder()
{
    scene_->rebuild(song_, &song_.tracks[0].melodyBlocks[0], {});
    for (const int index : {3, 0, 2})
        notesOf(*scene_)[index]->setSelected(true);
    QCOMPARE(scene_->selectedNotes(), (QList<int>{0, 2, 3}));
}

// ---- Ghosts --------------------------------------------------------------------------------

void PianoRollSceneTest::ghostsShowThrough()
{
    scene_->rebuild(song_, nullptr, {2});
    const QList<QGraphicsRectItem*> ghosts = ghostsOf(*scene_);
    QCOMPARE(ghosts.size(), 1);
    QCOMPARE(ghosts[0]->rect(), QRectF(256, 465, 64, 14));
    QVERIFY(ghosts[0]->type() != 65537);
}

void PianoRollSceneTest::everyMelodyBlockOfATrackShowsThrough()
{
    song_.tracks[2].melodyBlocks.append(melody({note(70, 1.0), note(71, 2.0)}, 12.0));
    scene_->rebuild(song_, nullptr, {2});
    QCOMPARE(ghostsOf(*scene_).size(), 3);
    QCOMPARE(ghostsOf(*scene_)[1]->rect().left(), 13.0 * 64.0);
}

void PianoRollSceneTest::loopsDoNotShowThrough()
{
    scene_->rebuild(song_, nullptr, {1});
    QVERIFY(ghostsOf(*scene_).isEmpty());
}

void PianoRollSceneTest::ghostsHaveTheColorsOfTheirTurn()
{
    for (int i = 0; i < 7; ++i)
        song_.tracks.append(trackOf(60 + i));
    scene_->rebuild(song_, nullptr, {10, 4, 5, 6, 7, 8, 9});
    const QList<QColor> colors{{0x1e, 0x88, 0xe5}, {0x43, 0xa0, 0x47}, {0xf9, 0xa8, 0x25},
                               {0xe5, 0x39, 0x35}, {0x00, 0x89, 0x7b}, {0x8d, 0x6e, 0x63},
                               {0x1e, 0x88, 0xe5}};
    const QList<QGraphicsRectItem*> ghosts = ghostsOf(*scene_);
    QCOMPARE(ghosts.size(), 7);
    for (int i = 0; i < 7; ++i) {
        const QColor fill = ghosts[i]->brush().color();
        QCOMPARE(fill.rgb(), colors[i].rgb());
        QCOMPARE(fill.alpha(), 170);
        QCOMPARE(ghosts[i]->pen().color(), colors[i].darker(140));
        QCOMPARE(ghosts[i]->pen().widthF(), 0.0);
    }
}

void PianoRollSceneTest::tracksThatAreNoneTakeNoColor()
{
    scene_->rebuild(song_, nullptr, {-1, 99, std::numeric_limits<int>::max(), 2});
    QCOMPARE(ghostsOf(*scene_).size(), 1);
    QCOMPARE(ghostsOf(*scene_)[0]->brush().color().rgb(), QColor(0x1e, 0x88, 0xe5).rgb());
}

void PianoRollSceneTest::ghostsCannotBeSelected()
{
    scene_->rebuild(song_, nullptr, {2});
    ghostsOf(*scene_)[0]->setSelected(true);
    QVERIFY(scene_->selectedItems().isEmpty());
}

void PianoRollSceneTest::ghostsLieBehindNotes()
{
    song_.tracks.append(trackOf(60));
    scene_->rebuild(song_, &song_.tracks[0].melodyBlocks[0], {4});
    const QList<QGraphicsItem*> there = scene_->items(QPointF(32.0, 584.0));
    QCOMPARE(there.first()->type(), 65537);
    QVERIFY(there.contains(ghostsOf(*scene_)[0]));
}

// ---- Places --------------------------------------------------------------------------------

void PianoRollSceneTest::noteAtAPlace_data()
{
    QTest::addColumn<QPointF>("place");
    QTest::addColumn<int>("index");

    QTest::newRow("in the middle") << QPointF(32, 584) << 0;
    QTest::newRow("first pixel") << QPointF(64, 545) << 1;
    QTest::newRow("last pixel") << QPointF(127.9, 558.9) << 1;
    QTest::newRow("right of the last") << QPointF(288.5, 392) << -1;
    QTest::newRow("the pixel over a note") << QPointF(32, 576.4) << -1;
    QTest::newRow("another row") << QPointF(32, 600) << -1;
}

void PianoRollSceneTest::noteAtAPlace()
{
    QFETCH(QPointF, place);
    QFETCH(int, index);
    scene_->rebuild(song_, &song_.tracks[0].melodyBlocks[0], {});
    const NoteItem* found = scene_->noteAt(place);
    QCOMPARE(found ? found->index() : -1, index);
}

void PianoRollSceneTest::laterNotesLieOnTop()
{
    const MelodyBlock block = melody({note(60, 0.0, 2.0), note(60, 1.0, 2.0)});
    scene_->rebuild(song_, &block, {});
    QCOMPARE(scene_->noteAt(QPointF(96, 584))->index(), 1);
    QCOMPARE(scene_->noteAt(QPointF(32, 584))->index(), 0);
}

void PianoRollSceneTest::ghostsAreNotFound()
{
    scene_->rebuild(song_, nullptr, {2});
    QVERIFY(!scene_->noteAt(QPointF(270, 470)));
}

// ---- Playhead ------------------------------------------------------------------------------

void PianoRollSceneTest::playheadRunsFromTopToBottom()
{
    scene_->rebuild(song_, nullptr, {});
    const QGraphicsLineItem* playhead = playheadOf(*scene_);
    QVERIFY(playhead);
    QCOMPARE(playhead->line(), QLineF(0, 0, 0, 1168));
    QCOMPARE(playhead->pen().color(), QColor(0x4a, 0x73, 0x25));
    QCOMPARE(playhead->pen().widthF(), 2.0);
    QVERIFY(playhead->pen().isCosmetic());
}

void PianoRollSceneTest::playheadMoves_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<double>("x");

    QTest::newRow("beat 2.5") << 2.5 << 160.0;
    QTest::newRow("start") << 0.0 << 0.0;
    QTest::newRow("beyond everything") << 1e300 << 64e6;
    QTest::newRow("nowhere: where it was") << std::numeric_limits<double>::quiet_NaN() << 64.0;
}

void PianoRollSceneTest::playheadMoves()
{
    QFETCH(double, beat);
    QFETCH(double, x);
    scene_->rebuild(song_, nullptr, {});
    scene_->setPlayheadBeat(1.0);
    scene_->setPlayheadBeat(beat);
    QCOMPARE(playheadOf(*scene_)->x(), x);
}

void PianoRollSceneTest::playheadWithoutASceneIsHarmless()
{
    scene_->setPlayheadBeat(2.0);
    scene_->rebuild(song_, nullptr, {});
    scene_->empty();
    scene_->setPlayheadBeat(2.0);
    QVERIFY(scene_->items().isEmpty());
}

// ---- The rest ------------------------------------------------------------------------------

void PianoRollSceneTest::messageIsWritten()
{
    scene_->rebuild(song_, nullptr, {});
    scene_->showMessage("Hola");
    const auto messages = itemsAt<QGraphicsTextItem>(*scene_, 50.0);
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages[0]->toPlainText(), "Hola");
    QCOMPARE(messages[0]->font().pointSize(), 11);
    QCOMPARE(messages[0]->defaultTextColor(), QColor(0x2e, 0x52, 0x14));
    QVERIFY(messages[0]->flags().testFlag(QGraphicsItem::ItemIgnoresTransformations));
}

void PianoRollSceneTest::messageIsGoneWithARebuild()
{
    scene_->rebuild(song_, nullptr, {});
    scene_->showMessage("Hola");
    scene_->rebuild(song_, nullptr, {});
    QVERIFY(itemsAt<QGraphicsTextItem>(*scene_, 50.0).isEmpty());
}

void PianoRollSceneTest::emptySceneHasNothing()
{
    scene_->rebuild(song_, &song_.tracks[0].melodyBlocks[0], {2});
    scene_->empty();
    QVERIFY(scene_->items().isEmpty());
}

void PianoRollSceneTest::sceneIsEightBarsLongerThanTheSong()
{
    scene_->rebuild(song_, nullptr, {});
    QCOMPARE(scene_->sceneRect(), QRectF(0, 0, 16 * 4 * 64, 1168));
    song_.tracks[2].melodyBlocks[0].durationBeats = 40.0;
    scene_->rebuild(song_, nullptr, {});
    QCOMPARE(scene_->sceneRect(), QRectF(0, 0, 19 * 4 * 64, 1168));
}

void PianoRollSceneTest::hostileSongsAreShown()
{
    Generator songs(11, Numbers::Hostile);
    for (int i = 0; i < 200; ++i) {
        songs.fill(song_, 5);
        const bool melodic = !song_.tracks.isEmpty() && !song_.tracks[0].melodyBlocks.isEmpty();
        const MelodyBlock* block = melodic ? &song_.tracks[0].melodyBlocks[0] : nullptr;
        scene_->rebuild(song_, block, {0, 1, 2, 3, 4});
        QVERIFY(notesOf(*scene_).size() <= (block ? block->notes.size() : 0));
        for (const QGraphicsItem* item : scene_->items())
            QVERIFY(std::isfinite(item->sceneBoundingRect().left()));
    }
}

VELTA_TEST(PianoRollSceneTest)

} // namespace PianoRollSceneTests

#include "PianoRollSceneTest.moc"
