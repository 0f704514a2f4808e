#include "views/pianoroll/NoteEditor.h"

#include "PianoRollStage.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"

#include <limits>
#include <memory>

namespace NoteEditorTests {

using namespace ProjectBuilder;

namespace {

constexpr int kMostInt = std::numeric_limits<int>::max();
constexpr int kLeastInt = std::numeric_limits<int>::min();

const QStringList kTune{"60@0+1", "62@1+1", "64@2+1", "72@4+0.5"};

} // namespace

class NoteEditorTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void activeBlockOfATrack_data();
    void activeBlockOfATrack();
    void trackWithoutABlockGetsOne();
    void blockIsCreatedInSilence();
    void blockIsAsLongAsTheSong_data();
    void blockIsAsLongAsTheSong();
    void accompanimentIsNeverEditable();

    void stepsFollowTheLevel_data();
    void stepsFollowTheLevel();

    void addedNoteCountsFromTheBlock_data();
    void addedNoteCountsFromTheBlock();
    void addedNoteIsShownInSilence();
    void addingWithoutABlockDoesNothing();
    void commitOrdersTheNotes();
    void commitAlwaysTells();

    void deleteKeysDelete_data();
    void deleteKeysDelete();
    void deletingNothingIsNoEdit();
    void deletingAllNotesLeavesTheLength();

    void pasteStandsAtThePlayhead_data();
    void pasteStandsAtThePlayhead();
    void pasteKeepsPitchLengthAndVelocity();
    void pastedNotesAreSelected();
    void duplicatesAreSelected();
    void cutTakesTheNotesAway();
    void allNotesAreSelected();
    void pasteOfNothingDoesNothing();
    void pasteWithoutAnEngineDoesNothing();
    void pasteIntoTheAccompanimentDoesNothing();
    void copyOfNothingEmptiesTheBuffer();
    void copyIsSharedByAllBlocks();
    void duplicateFollowsTheSelection_data();
    void duplicateFollowsTheSelection();
    void duplicateOfNothingIsNoEdit();

private:
    PianoRollCanvas& canvas() const { return stage_->canvas; }

    NoteEditor& notes() const { return *canvas().notes(); }

    Project& song() const { return stage_->song; }

    PlaybackEngine& engine() const { return band_->engine(); }

    void select(const QList<int>& indices) const { canvas().scene()->selectNotes(indices); }

    UserHome home_;
    std::unique_ptr<SilentBand> band_;
    std::unique_ptr<PianoRollStage> stage_;
    std::unique_ptr<Editor> editor_;
};

void NoteEditorTest::init()
{
    band_ = std::make_unique<SilentBand>();
    stage_ = std::make_unique<PianoRollStage>(&band_->engine());
    editor_ = std::make_unique<Editor>(*stage_);
}

void NoteEditorTest::cleanup()
{
    editor_.reset();
    stage_.reset();
    band_.reset();
}

// ---- The block -----------------------------------------------------------------------------

void NoteEditorTest::activeBlockOfATrack_data()
{
    QTest::addColumn<int>("track");
    QTest::addColumn<int>("block");
    QTest::addColumn<int>("found");

    QTest::newRow("first") << 0 << 0 << 0;
    QTest::newRow("second") << 0 << 1 << 1;
    QTest::newRow("behind the last") << 0 << 7 << 1;
    QTest::newRow("before the first") << 0 << -3 << 0;
    QTest::newRow("absurd") << 0 << kMostInt << 1;
    QTest::newRow("accompaniment") << 1 << 0 << -1;
    QTest::newRow("no track") << -1 << 0 << -1;
    QTest::newRow("behind the last track") << 4 << 0 << -1;
    QTest::newRow("absurd track") << kMostInt << 0 << -1;
    QTest::newRow("absurd negative track") << kLeastInt << 0 << -1;
}

void NoteEditorTest::activeBlockOfATrack()
{
    QFETCH(int, track);
    QFETCH(int, block);
    QFETCH(int, found);
    song().tracks[0].melodyBlocks.append(melody({}, 12.0));
    canvas().setActiveBlock(track, block);
    QCOMPARE(notes().hasEditableBlock(), found >= 0);
    if (found >= 0)
        QCOMPARE(notes().activeBlock(), &song().tracks[track].melodyBlocks[found]);
    else
        QVERIFY(!notes().activeBlock());
}

void NoteEditorTest::trackWithoutABlockGetsOne()
{
    canvas().setActiveTrack(3);
    QCOMPARE(song().tracks[3].melodyBlocks.size(), 1);
    QCOMPARE(song().tracks[3].melodyBlocks[0], melody({}, 0.0, 32.0));
    QCOMPARE(notes().activeBlock(), &song().tracks[3].melodyBlocks[0]);
    canvas().rebuildScene();
    QCOMPARE(song().tracks[3].melodyBlocks.size(), 1);
}

void NoteEditorTest::blockIsCreatedInSilence()
{
    const QSignalSpy edited(&canvas(), &PianoRollCanvas::edited);
    const QSignalSpy changed(&song(), &Project::changed);
    canvas().setVisibleTracks({3}, 3);
    QCOMPARE(song().tracks[3].melodyBlocks.size(), 1);
    QCOMPARE(edited.size(), 0);
    QCOMPARE(changed.size(), 0);
}

void NoteEditorTest::blockIsAsLongAsTheSong_data()
{
    QTest::addColumn<TimeSignature>("meter");
    QTest::addColumn<double>("end");
    QTest::addColumn<double>("length");

    QTest::newRow("short song: eight bars") << TimeSignature{4, 4, false} << 8.0 << 32.0;
    QTest::newRow("long song") << TimeSignature{4, 4, false} << 47.0 << 48.0;
    QTest::newRow("6/8") << TimeSignature{6, 8, true} << 8.0 << 24.0;
    QTest::newRow("bar without length") << TimeSignature{4, 0, false} << 8.0 << 4.0;
    QTest::newRow("negative bar") << TimeSignature{-4, 4, false} << 8.0 << 4.0;
}

void NoteEditorTest::blockIsAsLongAsTheSong()
{
    QFETCH(TimeSignature, meter);
    QFETCH(double, end);
    QFETCH(double, length);
    song().timeSignature = meter;
    song().tracks[0].melodyBlocks[0].durationBeats = end;
    canvas().setActiveTrack(3);
    QCOMPARE(song().tracks[3].melodyBlocks[0].durationBeats, length);
}

void NoteEditorTest::accompanimentIsNeverEditable()
{
    song().tracks[1].melodyBlocks = {melody({note(60, 0.0)})};
    canvas().setActiveTrack(1);
    QVERIFY(!notes().hasEditableBlock());
    QVERIFY(stage_->noteItems().isEmpty());
}

// ---- Steps ---------------------------------------------------------------------------------

void NoteEditorTest::stepsFollowTheLevel_data()
{
    QTest::addColumn<bool>("compound");
    QTest::addColumn<int>("level");
    QTest::addColumn<double>("step");

    QTest::newRow("pulse") << false << 0 << 1.0;
    QTest::newRow("division") << false << 1 << 0.5;
    QTest::newRow("subdivision") << false << 2 << 0.25;
    QTest::newRow("pulse in compound time") << true << 0 << 1.5;
    QTest::newRow("division in compound time") << true << 1 << 0.5;
}

void NoteEditorTest::stepsFollowTheLevel()
{
    QFETCH(bool, compound);
    QFETCH(int, level);
    song().timeSignature.isCompound = compound;
    canvas().setSubdivisionLevel(static_cast<GridSubdivisionLevel>(level));
    QTEST(notes().snapBeats(), "step");
}

// ---- Adding and committing -----------------------------------------------------------------

void NoteEditorTest::addedNoteCountsFromTheBlock_data()
{
    QTest::addColumn<double>("beat");
    QTest::addColumn<QString>("added");

    QTest::newRow("inside") << 6.0 << "70@2+1.5";
    QTest::newRow("at its start") << 4.0 << "70@0+1.5";
    QTest::newRow("before it") << 1.0 << "70@0+1.5";
    QTest::newRow("nowhere") << std::numeric_limits<double>::quiet_NaN() << "70@0+1.5";
}

void NoteEditorTest::addedNoteCountsFromTheBlock()
{
    QFETCH(double, beat);
    QFETCH(QString, added);
    canvas().setActiveTrack(2);
    notes().addNoteAt(beat, 70, 1.5);
    QCOMPARE(stage_->tune(2), QStringList({"67@0+1", added}));
    QCOMPARE(stage_->notes(2).last().velocity, 100);
}

void NoteEditorTest::addedNoteIsShownInSilence()
{
    notes().addNoteAt(20.0, 70, 1.0);
    QCOMPARE(stage_->noteItems().size(), 5);
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].durationBeats, 21.0);
    QCOMPARE(editor_->edits(), 0);
}

void NoteEditorTest::addingWithoutABlockDoesNothing()
{
    canvas().setActiveTrack(1);
    notes().addNoteAt(1.0, 70, 1.0);
    QVERIFY(stage_->song.tracks[1].melodyBlocks.isEmpty());
}

void NoteEditorTest::commitOrdersTheNotes()
{
    stage_->notes() = {note(64, 3.0, 9.0), note(62, 1.0), note(60, 1.0)};
    notes().commitEdit();
    QCOMPARE(stage_->tune(), QStringList({"60@1+1", "62@1+1", "64@3+9"}));
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].durationBeats, 12.0);
}

void NoteEditorTest::commitAlwaysTells()
{
    notes().commitEdit();
    QCOMPARE(editor_->edits(), 1);
    canvas().setActiveTrack(1);
    notes().commitEdit();
    QCOMPARE(editor_->edits(), 2);
    canvas().setContext(nullptr, nullptr);
    notes().commitEdit();
    QCOMPARE(editor_->edits(), 3);
}

// ---- Deleting ------------------------------------------------------------------------------

void NoteEditorTest::deleteKeysDelete_data()
{
    QTest::addColumn<Qt::Key>("key");

    QTest::newRow("Delete") << Qt::Key_Delete;
    QTest::newRow("Backspace") << Qt::Key_Backspace;
}

void NoteEditorTest::deleteKeysDelete()
{
    QFETCH(Qt::Key, key);
    select({0, 2});
    stage_->key(key);
    QCOMPARE(stage_->tune(), QStringList({"62@1+1", "72@4+0.5"}));
    QCOMPARE(editor_->edits(), 1);
    stage_->key(key);
    QCOMPARE(editor_->edits(), 1);
}

void NoteEditorTest::deletingNothingIsNoEdit()
{
    stage_->key(Qt::Key_Delete);
    canvas().setActiveTrack(1);
    stage_->key(Qt::Key_Delete);
    QCOMPARE(editor_->edits(), 0);
}

void NoteEditorTest::deletingAllNotesLeavesTheLength()
{
    select({0, 1, 2, 3});
    notes().deleteSelectedNotes();
    QVERIFY(stage_->notes().isEmpty());
    QCOMPARE(stage_->song.tracks[0].melodyBlocks[0].durationBeats, 8.0);
}

// ---- Copying -------------------------------------------------------------------------------

void NoteEditorTest::pasteStandsAtThePlayhead_data()
{
    QTest::addColumn<double>("playhead");
    QTest::addColumn<QStringList>("pasted");

    QTest::newRow("on a step") << 6.0 << QStringList{"62@6+1", "64@7+1"};
    QTest::newRow("nearest step") << 6.3 << QStringList{"62@6.5+1", "64@7.5+1"};
    QTest::newRow("at the start") << 0.0 << QStringList{"62@0+1", "64@1+1"};
}

void NoteEditorTest::pasteStandsAtThePlayhead()
{
    QFETCH(double, playhead);
    QFETCH(QStringList, pasted);
    select({1, 2});
    stage_->key(Qt::Key_C, Qt::ControlModifier);
    engine().setPlayheadBeat(playhead);
    stage_->key(Qt::Key_V, Qt::ControlModifier);
    QStringList expected = kTune + pasted;
    QStringList found = stage_->tune();
    expected.sort();
    found.sort();
    QCOMPARE(found, expected);
    QCOMPARE(editor_->edits(), 1);
}

void NoteEditorTest::pasteKeepsPitchLengthAndVelocity()
{
    stage_->notes() = {note(65, 0.25, 0.3, 17)};
    emit stage_->song.changed();
    select({0});
    notes().copySelection();
    engine().setPlayheadBeat(4.0);
    notes().pasteAtPlayhead();
    QCOMPARE(stage_->notes().last(), note(65, 4.0, 0.3, 17));
}

void NoteEditorTest::pastedNotesAreSelected()
{
    select({1, 2});
    notes().copySelection();
    notes().pasteAtPlayhead();
    QList<NoteEvent> pasted;
    for (const int index : stage_->selected())
        pasted.append(stage_->notes().at(index));
    QCOMPARE(pasted.size(), 2);
    QCOMPARE(pasted[0].startBeat, 0.0);
}

void NoteEditorTest::duplicatesAreSelected()
{
    select({0});
    const NoteEvent first = stage_->notes().at(0);
    stage_->key(Qt::Key_D, Qt::ControlModifier);
    stage_->key(Qt::Key_D, Qt::ControlModifier);
    QCOMPARE(stage_->selected().size(), 1);
    const NoteEvent last = stage_->notes().at(stage_->selected().first());
    QCOMPARE(last.pitch, first.pitch);
    QVERIFY(last.startBeat >= first.startBeat + 2 * first.durationBeats);
}

void NoteEditorTest::cutTakesTheNotesAway()
{
    const QStringList before = stage_->tune();
    select({1, 2});
    stage_->key(Qt::Key_X, Qt::ControlModifier);
    QCOMPARE(stage_->tune().size(), before.size() - 2);
    QCOMPARE(editor_->edits(), 1);
    QVERIFY(notes().can(EditCommand::Paste));
}

void NoteEditorTest::allNotesAreSelected()
{
    stage_->key(Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(stage_->selected().size(), stage_->notes().size());
    QCOMPARE(editor_->edits(), 0);
}

void NoteEditorTest::pasteOfNothingDoesNothing()
{
    stage_->key(Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(stage_->tune(), kTune);
    QCOMPARE(editor_->edits(), 0);
}

void NoteEditorTest::pasteWithoutAnEngineDoesNothing()
{
    select({1});
    notes().copySelection();
    canvas().setContext(&stage_->song, nullptr);
    notes().pasteAtPlayhead();
    QCOMPARE(stage_->tune(), kTune);
    QCOMPARE(editor_->edits(), 0);
}

void NoteEditorTest::pasteIntoTheAccompanimentDoesNothing()
{
    select({1});
    notes().copySelection();
    canvas().setActiveTrack(1);
    notes().pasteAtPlayhead();
    QVERIFY(stage_->song.tracks[1].melodyBlocks.isEmpty());
    QCOMPARE(editor_->edits(), 0);
}

void NoteEditorTest::copyOfNothingEmptiesTheBuffer()
{
    select({1});
    notes().copySelection();
    select({});
    notes().copySelection();
    notes().pasteAtPlayhead();
    QCOMPARE(stage_->tune(), kTune);
}

void NoteEditorTest::copyIsSharedByAllBlocks()
{
    select({1, 2});
    notes().copySelection();
    canvas().setActiveTrack(2);
    engine().setPlayheadBeat(6.0);
    notes().pasteAtPlayhead();
    // Counted from the block, which starts at beat 4.
    QCOMPARE(stage_->tune(2), QStringList({"67@0+1", "62@2+1", "64@3+1"}));
    engine().setPlayheadBeat(1.0);
    notes().pasteAtPlayhead();
    QCOMPARE(stage_->tune(2), QStringList({"62@0+1", "67@0+1", "64@1+1", "62@2+1", "64@3+1"}));
}

void NoteEditorTest::duplicateFollowsTheSelection_data()
{
    QTest::addColumn<QList<NoteEvent>>("notes");
    QTest::addColumn<QStringList>("after");

    QTest::newRow("one note") << QList{note(60, 1.0, 1.0)} << QStringList{"60@1+1", "60@2+1"};
    QTest::newRow("to the next step")
        << QList{note(60, 1.0, 0.7)} << QStringList{"60@1+0.7", "60@2+0.7"};
    QTest::newRow("counted from its start, not from the grid")
        << QList{note(60, 1.1, 0.5)} << QStringList{"60@1.1+0.5", "60@1.6+0.5"};
    QTest::newRow("a phrase") << QList{note(60, 0.0, 1.0), note(64, 2.0, 1.2)}
                              << QStringList{"60@0+1", "64@2+1.2", "60@3.5+1", "64@5.5+1.2"};
}

void NoteEditorTest::duplicateFollowsTheSelection()
{
    QFETCH(QList<NoteEvent>, notes);
    QFETCH(QStringList, after);
    stage_->notes() = notes;
    emit stage_->song.changed();
    select({0, 1});
    stage_->key(Qt::Key_D, Qt::ControlModifier);
    QCOMPARE(stage_->tune(), after);
    QCOMPARE(editor_->edits(), 1);
}

void NoteEditorTest::duplicateOfNothingIsNoEdit()
{
    notes().duplicateSelection();
    canvas().setActiveTrack(1);
    notes().duplicateSelection();
    QCOMPARE(editor_->edits(), 0);
}

VELTA_TEST(NoteEditorTest)

} // namespace NoteEditorTests

#include "NoteEditorTest.moc"
