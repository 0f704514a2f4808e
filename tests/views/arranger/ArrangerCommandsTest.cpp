#include "ArrangerStage.h"
#include "StageBlocks.h"
#include "playback/PlaybackEngine.h"
#include "playback/SoundfontPlayer.h"
#include "support/TestProgram.h"
#include "support/UserHome.h"
#include "views/arranger/BlockEditor.h"

namespace ArrangerCommandsTests {

using namespace ProjectBuilder;

/// What the menu of edits does to blocks, by its keys.
class ArrangerCommandsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void copiesAreLaidAtThePlayhead();
    void copiesOutliveWhatTheyWereMadeOf();
    void copiesKeepTheirPlaceInTheStep();
    void whatLiesThereAlreadyIsNotLaidAgain();
    void aPasteOfNothingDoesNothing();
    void aLoopWithoutItsTrackGetsOne();
    void aLoopWithoutATrackLeftIsToldOf();
    void aMelodyWithoutItsTrackGoesToTheActiveOne();
    void voicesStayInTheirWork();
    void chordsGoAlongToAnotherWork();

    void duplicatesLieBehindThemselves();
    void duplicatesOfAGroupLieBehindTheGroup();
    void duplicatesCountWholeSteps();
    void cutTakesBlocksAway();
    void allBlocksAreSelected();
    void commandsHaveTheirCondition();
    void letterKeysOfCommandsLayChordsOtherwise();

    void ctrlShiftAndArrowsTakeBlocksAlong();
    void theNextStepIsFromTheOneTakenAlongLast();

private:
    TrackArranger& arranger() const { return stage_->arranger; }

    BlockEditor& editor() const { return *arranger().blocks(); }

    Project& song() const { return stage_->song; }

    void ctrl(Qt::Key key) const { stage_->key(key, Qt::ControlModifier); }

    void extend(Qt::Key key) const { stage_->key(key, Qt::ControlModifier | Qt::ShiftModifier); }

    BlockSpan spanOf(const BlockRef& block) const
    {
        return BlockEdits::spanOf(song(), block).value_or(BlockSpan{-1.0, -1.0});
    }

    void show(Project& project) const
    {
        engine_->setProject(&project);
        arranger().setContext(&project, engine_.get(), stage_->content.library());
    }

    UserHome home_;
    std::unique_ptr<SoundfontPlayer> player_;
    std::unique_ptr<PlaybackEngine> engine_;
    std::unique_ptr<ArrangerStage> stage_;
    int edits_ = 0;
};

void ArrangerCommandsTest::init()
{
    player_ = std::make_unique<SoundfontPlayer>(SoundfontPlayer::Mode::Offline);
    engine_ = std::make_unique<PlaybackEngine>(player_.get(), nullptr, nullptr);
    stage_ = std::make_unique<ArrangerStage>();
    show(song());
    edits_ = 0;
    connect(&arranger(), &TrackArranger::edited, this, [this] {
        ++edits_;
        emit song().changed();
    });
}

void ArrangerCommandsTest::cleanup()
{
    engine_->setProject(nullptr);
    stage_.reset();
    engine_.reset();
    player_.reset();
}

// ---- Copy and paste ------------------------------------------------------------------------

void ArrangerCommandsTest::copiesAreLaidAtThePlayhead()
{
    editor().selectAll({kSecondMelody, kBajo, kSeventh});
    ctrl(Qt::Key_C);
    engine_->setPlayheadBeat(20.7);
    ctrl(Qt::Key_V);
    const BlockRef melody{BlockKind::Melody, 0, 2};
    const BlockRef loop{BlockKind::Loop, 3, 1};
    const BlockRef chord{BlockKind::Chord, 5, 0};
    QCOMPARE(editor().selected(), (QList<BlockRef>{melody, loop, chord}));
    QCOMPARE(spanOf(melody), (BlockSpan{24.0, 4.0}));
    QCOMPARE(spanOf(loop), (BlockSpan{20.0, 4.0}));
    QCOMPARE(spanOf(chord), (BlockSpan{22.0, 2.0}));
    QCOMPARE(song().harmonyTrack.blocks.last().events.first().extension, ChordExtension::Seventh);
    QCOMPARE(edits_, 1);
}

void ArrangerCommandsTest::copiesOutliveWhatTheyWereMadeOf()
{
    editor().select(kFirstMelody);
    ctrl(Qt::Key_C);
    stage_->key(Qt::Key_Delete);
    engine_->setPlayheadBeat(16.0);
    ctrl(Qt::Key_V);
    ctrl(Qt::Key_V);
    QCOMPARE(song().tracks[0].melodyBlocks,
             (QList<MelodyBlock>{melody({}, 8.0), melody(notesInARow({60, 62}), 16.0)}));
}

void ArrangerCommandsTest::copiesKeepTheirPlaceInTheStep()
{
    // The clip begins off the grid, and the flute a beat and a quarter behind it.
    editor().selectAll({kAna, kFlute});
    ctrl(Qt::Key_C);
    engine_->setPlayheadBeat(30.0);
    ctrl(Qt::Key_V);
    QCOMPARE(spanOf({BlockKind::Audio, 0, 1}), (BlockSpan{30.0, 3.0}));
    QCOMPARE(spanOf({BlockKind::Melody, 2, 1}), (BlockSpan{31.25, 4.0}));
}

void ArrangerCommandsTest::whatLiesThereAlreadyIsNotLaidAgain()
{
    const QJsonObject before = song().toJson();
    const QSignalSpy told(&arranger(), &TrackArranger::alreadyThere);
    for (const BlockRef& block : {kFirstMelody, kFirstBombo, BlockRef{BlockKind::Chord, 0, 0}}) {
        editor().select(block);
        ctrl(Qt::Key_C);
        ctrl(Qt::Key_V);
    }
    QCOMPARE(song().toJson(), before);
    QCOMPARE(edits_, 0);
    QCOMPARE(told.size(), 3);
    QCOMPARE(told[0][0].toString(), QStringLiteral("Melodía (2 notas), compás 1, 1 compás"));
}

void ArrangerCommandsTest::aPasteOfNothingDoesNothing()
{
    ctrl(Qt::Key_V);
    QCOMPARE(edits_, 0);
}

void ArrangerCommandsTest::aLoopWithoutItsTrackGetsOne()
{
    editor().select(kBajo);
    ctrl(Qt::Key_C);
    song().tracks.removeAt(3);
    emit song().changed();
    ctrl(Qt::Key_V);
    QCOMPARE(song().tracks.size(), 4);
    QCOMPARE(song().tracks[3].name, QStringLiteral("Bajo"));
    QCOMPARE(song().tracks[3].layerId, QStringLiteral("bajo"));
    QCOMPARE(song().tracks[3].loopBlocks,
             (QList<LoopBlock>{loop("r", "bajo", 0.0, 4.0, LoopSection::Final, 3)}));
    QCOMPARE(editor().selected(), QList<BlockRef>{kBajo});
}

void ArrangerCommandsTest::aLoopWithoutATrackLeftIsToldOf()
{
    editor().select(kBajo);
    ctrl(Qt::Key_C);
    song().tracks.removeAt(3);
    while (song().tracks.size() < kMaxNoteTracks)
        song().tracks.append(melodyTrack({}));
    emit song().changed();
    const QSignalSpy told(&arranger(), &TrackArranger::tracksExhausted);
    ctrl(Qt::Key_V);
    QCOMPARE(told.size(), 1);
    QCOMPARE(edits_, 0);
}

void ArrangerCommandsTest::aMelodyWithoutItsTrackGoesToTheActiveOne()
{
    editor().select(kFlute);
    ctrl(Qt::Key_C);
    song().tracks.removeAt(2);
    emit song().changed();
    arranger().selectNoteTrack(0, false);
    engine_->setPlayheadBeat(40.0);
    ctrl(Qt::Key_V);
    QCOMPARE(song().tracks[0].melodyBlocks.last(), melody({note(70, 0.0)}, 40.0));
}

void ArrangerCommandsTest::voicesStayInTheirWork()
{
    editor().selectAll({kAna, kFlute});
    ctrl(Qt::Key_C);
    Project other;
    other.tracks = {melodyTrack({})};
    show(other);
    ctrl(Qt::Key_V);
    QCOMPARE(other.tracks[0].melodyBlocks.size(), 1);
    QVERIFY(other.audioTracks.isEmpty());
    show(song());
}

void ArrangerCommandsTest::chordsGoAlongToAnotherWork()
{
    editor().selectAll({{BlockKind::Chord, 0, 0}, {BlockKind::Chord, 1, 0}});
    ctrl(Qt::Key_C);
    Project other;
    show(other);
    ctrl(Qt::Key_V);
    const QList<HarmonyBlock> expected{{0, {chord(1, 0.0, 4.0)}}, {1, {chord(4, 0.0, 2.0)}}};
    QCOMPARE(other.harmonyTrack.blocks, expected);
    show(song());
}

// ---- The others ----------------------------------------------------------------------------

void ArrangerCommandsTest::duplicatesLieBehindThemselves()
{
    editor().select(kBajo);
    ctrl(Qt::Key_D);
    ctrl(Qt::Key_D);
    QCOMPARE(spanOf({BlockKind::Loop, 3, 1}), (BlockSpan{8.0, 4.0}));
    QCOMPARE(spanOf({BlockKind::Loop, 3, 2}), (BlockSpan{12.0, 4.0}));
    QCOMPARE(editor().selected(), (QList<BlockRef>{{BlockKind::Loop, 3, 2}}));
    QCOMPARE(edits_, 2);
}

void ArrangerCommandsTest::duplicatesOfAGroupLieBehindTheGroup()
{
    editor().selectAll({kFirstMelody, kBajo, {BlockKind::Chord, 0, 0}});
    ctrl(Qt::Key_D);
    QCOMPARE(spanOf({BlockKind::Melody, 0, 2}), (BlockSpan{8.0, 4.0}));
    QCOMPARE(spanOf({BlockKind::Loop, 3, 1}), (BlockSpan{12.0, 4.0}));
    QCOMPARE(spanOf({BlockKind::Chord, 2, 0}), (BlockSpan{8.0, 4.0}));
    QCOMPARE(edits_, 1);
}

void ArrangerCommandsTest::duplicatesCountWholeSteps()
{
    song().audioTracks[0].clips[0].durationBeats = 2.4;
    emit song().changed();
    editor().select(kAna);
    ctrl(Qt::Key_D);
    QCOMPARE(spanOf({BlockKind::Audio, 0, 1}), (BlockSpan{4.25, 2.4}));
}

void ArrangerCommandsTest::cutTakesBlocksAway()
{
    editor().selectAll({kFirstMelody, kFirstBombo});
    ctrl(Qt::Key_X);
    QCOMPARE(edits_, 1);
    QCOMPARE(song().tracks[0].melodyBlocks.size(), 1);
    QCOMPARE(song().tracks[1].loopBlocks.size(), 1);
    ctrl(Qt::Key_V);
    QCOMPARE(edits_, 2);
    QCOMPARE(spanOf({BlockKind::Melody, 0, 1}).start, 0.0);
    QCOMPARE(spanOf({BlockKind::Loop, 1, 1}).start, 0.0);
}

void ArrangerCommandsTest::allBlocksAreSelected()
{
    ctrl(Qt::Key_A);
    QCOMPARE(editor().selected().size(), 11);
    // What is folded away is not drawn.
    arranger().toggleGroup(kGroupPercusion);
    ctrl(Qt::Key_A);
    QCOMPARE(editor().selected().size(), 9);
    QVERIFY(!editor().selected().contains(kFirstBombo));
}

void ArrangerCommandsTest::commandsHaveTheirCondition()
{
    const auto able = [this] {
        QList<EditCommand> commands;
        for (const EditCommand command : kEditCommands) {
            if (arranger().can(command))
                commands.append(command);
        }
        return commands;
    };
    QCOMPARE(able(), QList{EditCommand::SelectAll});
    editor().select(kBajo);
    QCOMPARE(able(), (QList{EditCommand::Cut, EditCommand::Copy, EditCommand::Duplicate,
                            EditCommand::SelectAll}));
    ctrl(Qt::Key_C);
    stage_->key(Qt::Key_Escape);
    QCOMPARE(able(), (QList{EditCommand::Paste, EditCommand::SelectAll}));
    arranger().setContext(nullptr, nullptr, nullptr);
    QCOMPARE(able(), QList<EditCommand>());
}

void ArrangerCommandsTest::letterKeysOfCommandsLayChordsOtherwise()
{
    engine_->setPlayheadBeat(32.0);
    editor().select(kBajo);
    ctrl(Qt::Key_C);
    QCOMPARE(song().harmonyTrack.blocks.size(), 2);
    stage_->key(Qt::Key_Escape);
    ctrl(Qt::Key_C);
    QCOMPARE(song().harmonyTrack.blocks.last(),
             (HarmonyBlock{8, {chord(1, 0.0, 4.0, ChordExtension::Seventh)}}));
}

// ---- Taking along --------------------------------------------------------------------------

void ArrangerCommandsTest::ctrlShiftAndArrowsTakeBlocksAlong()
{
    arranger().goToBlock(kFirstMelody);
    extend(Qt::Key_Right);
    QCOMPARE(editor().selected(), (QList<BlockRef>{kFirstMelody, kSecondMelody}));
    extend(Qt::Key_Down);
    QCOMPARE(editor().selected(), (QList<BlockRef>{kFirstMelody, kSecondMelody, kFlute}));
    stage_->key(Qt::Key_Right);
    QCOMPARE(spanOf(kFirstMelody).start, 1.0);
    QCOMPARE(spanOf(kFlute).start, 3.5);
    QCOMPARE(edits_, 1);
}

void ArrangerCommandsTest::theNextStepIsFromTheOneTakenAlongLast()
{
    arranger().goToBlock(kFirstMelody);
    extend(Qt::Key_Down);
    ctrl(Qt::Key_Right);
    QCOMPARE(editor().selected(), QList<BlockRef>{kFlute});
    QCOMPARE(arranger().activeTrack(), 2);
}

VELTA_TEST(ArrangerCommandsTest)

} // namespace ArrangerCommandsTests

#include "ArrangerCommandsTest.moc"
