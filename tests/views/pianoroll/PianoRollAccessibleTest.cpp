#include "support/ScreenListener.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/TimelineRuler.h"
#include "views/pianoroll/PianoRollStage.h"

#include <memory>

namespace PianoRollAccessibleTests {

using namespace ProjectBuilder;

namespace {

QAccessibleInterface* partOf(QObject* widget)
{
    return QAccessible::queryAccessibleInterface(widget);
}

const QStringList kTune{"Do 4, compás 1, negra", "Re 4, compás 1, negra", "Mi 4, compás 1, negra",
                        "Do 5, compás 2, corchea"};

} // namespace

/// The piano roll for those who hear it.
class PianoRollAccessibleTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void notesAreChildrenOfTheGrid();
    void aNoteKnowsWhereItStands();
    void aNoteCanBeSelected();
    void aNoteIsWhatStandsInItsPlace();
    void aNoteThatIsGoneIsNotValid();
    void withoutAProjectThereIsNothing();
    void partsHaveNamesAndRoles();
    void theRollTellsWhereItIs();
    void theRulerIsASlider();
    void aValueMovesThePlayheadInSilence();
    void theSelectionIsTold();
    void thePlayheadIsTold();
    void nothingIsToldWhilePlaying();
    void theKeysAreOnTheNoteOrThePlayhead();
    void nobodyIsToldWhereNobodyListens();

private:
    PianoRollCanvas& canvas() const { return stage_->canvas; }

    QAccessibleInterface* note(int place) const { return partOf(canvas().view())->child(place); }

    std::unique_ptr<ScreenListener> listener_;
    UserHome home_;
    std::unique_ptr<SilentBand> band_;
    std::unique_ptr<PianoRollStage> stage_;
    std::unique_ptr<Editor> editor_;
};

void PianoRollAccessibleTest::init()
{
    listener_ = std::make_unique<ScreenListener>();
    band_ = std::make_unique<SilentBand>();
    stage_ = std::make_unique<PianoRollStage>(&band_->engine());
    editor_ = std::make_unique<Editor>(*stage_);
    canvas().activateWindow();
    canvas().setFocus();
    QTRY_VERIFY(canvas().hasFocus());
    ScreenListener::heard();
}

void PianoRollAccessibleTest::cleanup()
{
    editor_.reset();
    stage_.reset();
    band_.reset();
    listener_.reset();
}

void PianoRollAccessibleTest::notesAreChildrenOfTheGrid()
{
    QCOMPARE(ScreenListener::namesIn(canvas().view()), kTune);
    const QAccessibleInterface* grid = partOf(canvas().view());
    for (int i = 0; i < grid->childCount(); ++i) {
        QCOMPARE(note(i)->parent(), grid);
        QCOMPARE(grid->indexOfChild(note(i)), i);
        QCOMPARE(note(i)->role(), QAccessible::ListItem);
        QCOMPARE(note(i), grid->child(i));
    }
    QVERIFY(!grid->child(4));
    QVERIFY(!grid->child(-1));
}

void PianoRollAccessibleTest::aNoteKnowsWhereItStands()
{
    const QPoint onScreen = stage_->grid()->mapToGlobal(stage_->at(1.5, 62));
    QVERIFY(note(1)->rect().contains(onScreen));
    QCOMPARE(partOf(canvas().view())->childAt(onScreen.x(), onScreen.y()), note(1));
    const QPoint empty = stage_->grid()->mapToGlobal(stage_->at(7.0, 62));
    QVERIFY(!partOf(canvas().view())->childAt(empty.x(), empty.y()));
}

void PianoRollAccessibleTest::aNoteCanBeSelected()
{
    QVERIFY(note(2)->state().selectable);
    QVERIFY(!note(2)->state().selected);
    note(2)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(stage_->selected(), QList<int>({2}));
    QVERIFY(note(2)->state().selected);
    QVERIFY(note(2)->state().focused);
    QVERIFY(!note(1)->state().selected);
    QCOMPARE(editor_->edits(), 0);
}

void PianoRollAccessibleTest::aNoteIsWhatStandsInItsPlace()
{
    QAccessibleInterface* first = note(0);
    canvas().scene()->selectNotes({0});
    stage_->key(Qt::Key_Up);
    QCOMPARE(first->text(QAccessible::Name), QStringLiteral("Do sostenido 4, compás 1, negra"));
    // Another work.
    Project other;
    other.tracks = {melodyTrack({melody({ProjectBuilder::note(48, 8.0, 3.0)})})};
    canvas().setContext(&other, nullptr);
    QCOMPARE(ScreenListener::namesIn(canvas().view()),
             QStringList({"Do 3, compás 3, blanca con puntillo"}));
    QVERIFY(first->isValid());
    canvas().setContext(nullptr, nullptr);
}

void PianoRollAccessibleTest::aNoteThatIsGoneIsNotValid()
{
    const QAccessible::Id last = QAccessible::uniqueId(note(3));
    const QAccessible::Id first = QAccessible::uniqueId(note(0));
    canvas().scene()->selectNotes({3});
    stage_->key(Qt::Key_Delete);
    QAccessibleInterface* gone = QAccessible::accessibleInterface(last);
    QVERIFY(!gone || !gone->isValid());
    QCOMPARE(QAccessible::accessibleInterface(first), note(0));
    // Nobody listened while these went.
    listener_.reset();
    QAccessibleInterface* second = note(1);
    stage_->notes().clear();
    canvas().rebuildScene();
    QVERIFY(!second->isValid());
    QCOMPARE(second->text(QAccessible::Name), QString());
    QVERIFY(second->rect().isNull());
    second->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    QVERIFY(second->state().invalid);
}

void PianoRollAccessibleTest::withoutAProjectThereIsNothing()
{
    canvas().setContext(nullptr, nullptr);
    QCOMPARE(partOf(canvas().view())->childCount(), 0);
    QCOMPARE(partOf(canvas().ruler())->text(QAccessible::Value), QString());
    QCOMPARE(partOf(canvas().ruler())->valueInterface()->maximumValue().toDouble(), 0.0);
}

void PianoRollAccessibleTest::partsHaveNamesAndRoles()
{
    for (QWidget* part :
         QList<QWidget*>{&canvas(), canvas().view(), canvas().keyboard(), canvas().ruler()}) {
        QVERIFY(!partOf(part)->text(QAccessible::Name).isEmpty());
        QVERIFY(partOf(part)->role() != QAccessible::Client);
    }
    QCOMPARE(partOf(canvas().keyboard())->text(QAccessible::Value),
             QStringLiteral("de Do 4 a Do 5"));
}

void PianoRollAccessibleTest::theRollTellsWhereItIs()
{
    band_->engine().setPlayheadBeat(5.0);
    QCOMPARE(partOf(&canvas())->text(QAccessible::Description),
             QStringLiteral("Quena · Do mayor · 2 compases, compás 2, pulso 2"));
}

void PianoRollAccessibleTest::theRulerIsASlider()
{
    QAccessibleInterface* ruler = partOf(canvas().ruler());
    QCOMPARE(ruler->role(), QAccessible::Slider);
    band_->engine().setPlayheadBeat(6.0);
    QCOMPARE(ruler->valueInterface()->currentValue().toDouble(), 6.0);
    QCOMPARE(ruler->valueInterface()->minimumValue().toDouble(), 0.0);
    QCOMPARE(ruler->valueInterface()->maximumValue().toDouble(), 64.0);
    QCOMPARE(ruler->valueInterface()->minimumStepSize().toDouble(), 1.0);
}

void PianoRollAccessibleTest::aValueMovesThePlayheadInSilence()
{
    partOf(canvas().ruler())->valueInterface()->setCurrentValue(9.0);
    QCOMPARE(band_->engine().playheadBeat(), 9.0);
    partOf(canvas().ruler())->valueInterface()->setCurrentValue(-5.0);
    QCOMPARE(band_->engine().playheadBeat(), 0.0);
    QVERIFY(!band_->engine().isPlaying());
}

void PianoRollAccessibleTest::theSelectionIsTold()
{
    stage_->key(Qt::Key_Right, Qt::ControlModifier);
    QCOMPARE(ScreenListener::heard(), QStringList({"focus Do 4, compás 1, negra"}));
    stage_->key(Qt::Key_Up);
    QCOMPARE(ScreenListener::heard(), QStringList({"focus Do sostenido 4, compás 1, negra"}));
    stage_->key(Qt::Key_Right, Qt::ShiftModifier);
    QCOMPARE(ScreenListener::heard(),
             QStringList({"focus Do sostenido 4, compás 1, negra con puntillo"}));
    stage_->click(stage_->at(2.3, 64));
    QCOMPARE(ScreenListener::heard().last(), QStringLiteral("focus Mi 4, compás 1, negra"));
}

void PianoRollAccessibleTest::thePlayheadIsTold()
{
    stage_->key(Qt::Key_PageDown);
    QCOMPARE(ScreenListener::heard(),
             QStringList({"focus Cabezal del piano roll",
                          "value Cabezal del piano roll: compás 2, pulso 1"}));
}

void PianoRollAccessibleTest::nothingIsToldWhilePlaying()
{
    band_->engine().play(2.0);
    band_->engine().setPlayheadBeat(3.0);
    QTest::qWait(60);
    QCOMPARE(ScreenListener::heard(), QStringList());
    band_->engine().pause();
    QCOMPARE(ScreenListener::heard().size(), 2);
}

void PianoRollAccessibleTest::theKeysAreOnTheNoteOrThePlayhead()
{
    QCOMPARE(partOf(&canvas())->focusChild(), partOf(canvas().ruler()));
    QVERIFY(partOf(canvas().ruler())->state().focused);
    canvas().scene()->selectNotes({1});
    QCOMPARE(partOf(&canvas())->focusChild(), note(1));
    QVERIFY(!partOf(canvas().ruler())->state().focused);
}

void PianoRollAccessibleTest::nobodyIsToldWhereNobodyListens()
{
    listener_.reset();
    stage_->key(Qt::Key_Right, Qt::ControlModifier);
    stage_->key(Qt::Key_Up);
    stage_->key(Qt::Key_PageDown);
    QCOMPARE(ScreenListener::heard(), QStringList());
    QCOMPARE(stage_->selected(), QList<int>({0}));
}

VELTA_TEST(PianoRollAccessibleTest)

} // namespace PianoRollAccessibleTests

#include "PianoRollAccessibleTest.moc"
