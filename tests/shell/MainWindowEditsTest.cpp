#include "support/FluidSpy.h"
#include "support/ProjectBuilder.h"
#include "support/TestProgram.h"
#include "support/WindowStage.h"

#include <QComboBox>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>

#include <algorithm>

namespace MainWindowEditsTests {

using namespace ProjectBuilder;

namespace {

QStringList namesOf(const QList<Track>& tracks)
{
    QStringList names;
    for (const Track& track : tracks)
        names.append(track.name);
    return names;
}

Track named(const QString& name, bool accompaniment = false)
{
    Track track;
    track.name = name;
    track.isAccompaniment = accompaniment;
    return track;
}

constexpr auto kLimit = "inform | Veltas | Se alcanzó el máximo de 13 veltas de notas.";

/// A work without the blocks that the piano roll gives to the tracks that it shows, without a step
/// of undo.
QJsonObject written(const Project& song)
{
    const std::unique_ptr<Project> copy(Project::fromJson(song.toJson(), nullptr));
    for (Track& track : copy->tracks)
        track.melodyBlocks.removeIf([](const MelodyBlock& block) { return block.notes.isEmpty(); });
    return copy->toJson();
}

} // namespace

/// What the window does to the open work, and how that is undone.
class MainWindowEditsTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // One way for every edit
    void anEditIsUndoableVisibleAndAudible();
    void anEditDuringPlaybackIsHeard();
    void anEditThatChangesNothingIsNoStep();
    void anEditThatChangesNothingKeepsTheFuture();

    // Tempo, key and chords
    void aTempoIsSetAndUndone();
    void aMeterIsSetAndUndone();
    void whatGoesByBarsFollowsTheMeter();
    void aTypedTempoIsOneStep();
    void aTempoOfAFileStaysUntilItIsTouched();
    void aKeyIsSetAndUndone();
    void aModeIsSetAndUndone();
    void aModeOfAFileStaysUntilTheKeyIsTouched_data();
    void aModeOfAFileStaysUntilTheKeyIsTouched();
    void chordsAreMutedAndUndone();
    void undoingShowsInTheRibbonWithoutAnEdit();

    // Adding tracks
    void anAddedTrackHasAPianoAndANumber();
    void anAddedTrackStandsAboveTheAccompaniment();
    void anAddedTrackIsTheSelectedOne();
    void namesRepeatAfterRemoving();
    void thirteenTracksAreTheMost();
    void aFileMayHoldMoreThanThirteen();

    // Removing tracks
    void theOnlyTrackMayGo();
    void withoutTracksRemovingDoesNothing();
    void removingSelectsTheFirst();
    void removingAsksNothing();
    void aNewWorkSelectsItsFirstTrack();

    // Undo
    void atFirstNothingCanBeUndone();
    void undoAndRedoBringTheWorkBack();
    void anEditAfterUndoEndsTheFuture();
    void atTheEndsOfTheRoadNothingHappens();
    void ninetyNineStepsAreKept();
    void theMixGoesAlongWithTheEditBeforeIt();
    void undoAndRedoAreHeardWherePlaybackStands();
    void undoAndRedoTellTheViews();
    void theKeysUndoAndRedo();
    void randomEditsAllComeBack();

private:
    QSpinBox* bpmBox() { return Widgets::over<QSpinBox>(stage_->ribbon(), "Velocidad"); }

    QComboBox* keyBox() { return Widgets::over<QComboBox>(stage_->ribbon(), "Tonalidad"); }

    QComboBox* modeBox() { return Widgets::over<QComboBox>(stage_->ribbon(), "Modo"); }

    /// Undo and redo as the menu has them.
    QList<bool> available() { return {stage_->canUndo(), stage_->canRedo()}; }

    void openWith(const QList<Track>& tracks)
    {
        QVERIFY(stage_->saveWork("work", *project(tracks)));
        stage_->window().openProject("work");
    }

    std::unique_ptr<WindowStage> stage_;
};

void MainWindowEditsTest::init()
{
    FluidSpy::reset();
    stage_ = std::make_unique<WindowStage>();
}

void MainWindowEditsTest::cleanup()
{
    QVERIFY(stage_->prompts().allAnswersUsed());
    stage_.reset();
}

// ---- One way for every edit ----------------------------------------------------------------

void MainWindowEditsTest::anEditIsUndoableVisibleAndAudible()
{
    const QSignalSpy changed(&stage_->song(), &Project::changed);
    stage_->song().harmonyTrack.volume = 1.0F;
    FluidSpy::reset();
    stage_->window().snapshotAndRefresh();
    QVERIFY(stage_->canUndo());
    QCOMPARE(changed.count(), 1);
    QVERIFY(FluidSpy::calls({"cc"}).contains("cc 15 7 127"));
    QVERIFY(FluidSpy::calls({"program_select"}).contains("program_select 0 1 0 0"));
    QVERIFY(FluidSpy::calls({"all_notes_off"}).isEmpty());
}

void MainWindowEditsTest::anEditDuringPlaybackIsHeard()
{
    stage_->engine().play();
    FluidSpy::reset();
    stage_->song().tracks[0].melodyBlocks = {melody({note(67, 0.05)}, 0.0, 40.0)};
    stage_->window().snapshotAndRefresh();
    // What sounded is cut before the notes are taken anew.
    QVERIFY(!FluidSpy::calls({"all_notes_off"}).isEmpty());
    QTRY_VERIFY(FluidSpy::calls({"noteon"}).size() == 1);
    QVERIFY(FluidSpy::calls({"noteon"}).first().startsWith("noteon 0 67 "));
}

void MainWindowEditsTest::anEditThatChangesNothingIsNoStep()
{
    const QSignalSpy changed(&stage_->song(), &Project::changed);
    stage_->window().snapshotAndRefresh();
    QCOMPARE(available(), (QList{false, false}));
    QCOMPARE(changed.count(), 1);
}

void MainWindowEditsTest::anEditThatChangesNothingKeepsTheFuture()
{
    stage_->window().addTrack();
    stage_->window().undo();
    stage_->window().snapshotAndRefresh();
    QCOMPARE(available(), (QList{false, true}));
    stage_->window().redo();
    QCOMPARE(stage_->song().tracks.size(), 2);
}

// ---- Tempo, key and chords -----------------------------------------------------------------

void MainWindowEditsTest::aTempoIsSetAndUndone()
{
    QTest::keyClick(bpmBox(), Qt::Key_Up);
    QCOMPARE(stage_->song().bpm, 121);
    QCOMPARE(available(), (QList{true, false}));
    stage_->window().undo();
    QCOMPARE(stage_->song().bpm, 120);
    QCOMPARE(bpmBox()->value(), 120);
    QCOMPARE(available(), (QList{false, true}));
    stage_->window().redo();
    QCOMPARE(stage_->song().bpm, 121);
    QCOMPARE(bpmBox()->value(), 121);
    QCOMPARE(available(), (QList{true, false}));
}

void MainWindowEditsTest::aMeterIsSetAndUndone()
{
    stage_->song().tracks[0].melodyBlocks = {melody({note(60, 5.0)}, 0.0, 8.0)};
    stage_->song().harmonyTrack = harmony({1, 4});
    stage_->window().snapshotAndRefresh();
    const QJsonObject before = stage_->song().toJson();
    auto* box = Widgets::over<QComboBox>(stage_->ribbon(), "Compás");
    box->setCurrentText("6/8");
    const TimeSignature sixEight{.numerator = 6, .denominator = 8, .isCompound = true};
    QCOMPARE(stage_->song().timeSignature, sixEight);
    QCOMPARE(stage_->song().tracks.at(0).melodyBlocks, QList{melody({note(60, 5.0)}, 0.0, 8.0)});
    QList<int> degrees;
    for (double beat = 0.5; beat < 9.0; beat += 1.0) {
        const auto* chord = stage_->song().harmonyTrack.eventAt(beat, 3.0);
        degrees.append(chord ? chord->degree : 0);
    }
    QCOMPARE(degrees, (QList{1, 1, 1, 1, 4, 4, 4, 4, 0}));
    const QJsonObject after = stage_->song().toJson();
    stage_->window().undo();
    QCOMPARE(stage_->song().toJson(), before);
    QCOMPARE(box->currentText(), "4/4");
    stage_->window().redo();
    QCOMPARE(stage_->song().toJson(), after);
    QCOMPARE(box->currentText(), "6/8");
}

void MainWindowEditsTest::whatGoesByBarsFollowsTheMeter()
{
    stage_->clickRibbon("Repetir");
    Widgets::over<QSpinBox>(stage_->ribbon(), "Del compás")->setValue(3);
    auto* box = Widgets::over<QComboBox>(stage_->ribbon(), "Compás");
    const auto startOfRepeat = [this] {
        stage_->engine().stop();
        return stage_->engine().playheadBeat();
    };
    QCOMPARE(startOfRepeat(), 8.0);
    QVERIFY(Widgets::entry(stage_->window(), "División binaria (de a 2)"));
    box->setCurrentText("6/8");
    QCOMPARE(startOfRepeat(), 6.0);
    QVERIFY(Widgets::entry(stage_->window(), "División ternaria (de a 3)"));
    stage_->window().undo();
    QCOMPARE(startOfRepeat(), 8.0);
    QVERIFY(Widgets::entry(stage_->window(), "División binaria (de a 2)"));
}

void MainWindowEditsTest::aTypedTempoIsOneStep()
{
    bpmBox()->selectAll();
    QTest::keyClicks(bpmBox(), "150");
    QTest::keyClick(bpmBox(), Qt::Key_Enter);
    QCOMPARE(stage_->song().bpm, 150);
    stage_->window().undo();
    QCOMPARE(stage_->song().bpm, 120);
    QCOMPARE(available(), (QList{false, true}));
}

void MainWindowEditsTest::aTempoOfAFileStaysUntilItIsTouched()
{
    QVERIFY(stage_->saveWork("work", *project({}, {}, {}, {}, 300)));
    stage_->window().openProject("work");
    QTest::keyClick(keyBox(), Qt::Key_Down);
    QCOMPARE(stage_->song().bpm, 300);
    QTest::keyClick(bpmBox(), Qt::Key_Down);
    QCOMPARE(stage_->song().bpm, 239);
}

void MainWindowEditsTest::aKeyIsSetAndUndone()
{
    QTest::keyClick(keyBox(), Qt::Key_End);
    QCOMPARE(stage_->song().keySignature, KeySignature{.rootPitchClass = 11});
    QCOMPARE(available(), (QList{true, false}));
    stage_->window().undo();
    QCOMPARE(stage_->song().keySignature, KeySignature());
    QCOMPARE(keyBox()->currentText(), "C / Do");
    stage_->window().redo();
    QCOMPARE(keyBox()->currentText(), "B / Si");
}

void MainWindowEditsTest::aModeIsSetAndUndone()
{
    QTest::keyClick(modeBox(), Qt::Key_Down);
    QCOMPARE(stage_->song().keySignature.mode, KeyMode::Minor);
    QTest::keyClick(modeBox(), Qt::Key_Up);
    QCOMPARE(stage_->song().keySignature.mode, KeyMode::Major);
    stage_->window().undo();
    QCOMPARE(stage_->song().keySignature.mode, KeyMode::Minor);
    QCOMPARE(modeBox()->currentText(), "Menor");
}

void MainWindowEditsTest::aModeOfAFileStaysUntilTheKeyIsTouched_data()
{
    QTest::addColumn<KeyMode>("mode");
    QTest::addColumn<bool>("byMode");
    QTest::addColumn<KeySignature>("touched");
    QTest::newRow("Dorian, by the root")
        << KeyMode::Dorian << false << KeySignature{.rootPitchClass = 3};
    QTest::newRow("Lydian, by the root")
        << KeyMode::Lydian << false << KeySignature{.rootPitchClass = 3};
    QTest::newRow("Dorian, by the mode")
        << KeyMode::Dorian << true << KeySignature{.rootPitchClass = 2, .mode = KeyMode::Minor};
}

void MainWindowEditsTest::aModeOfAFileStaysUntilTheKeyIsTouched()
{
    QFETCH(KeyMode, mode);
    QFETCH(bool, byMode);
    const KeySignature ofFile{.rootPitchClass = 2, .mode = mode};
    QVERIFY(stage_->saveWork("work", *project({}, {}, {}, ofFile)));
    stage_->window().openProject("work");
    QCOMPARE(modeBox()->currentText(), "Mayor");
    QTest::keyClick(bpmBox(), Qt::Key_Up);
    stage_->clickRibbon("Acordes");
    stage_->window().addTrack();
    QCOMPARE(stage_->song().keySignature, ofFile);
    QTest::keyClick(byMode ? modeBox() : keyBox(), Qt::Key_Down);
    QTEST(stage_->song().keySignature, "touched");
    stage_->window().undo();
    QCOMPARE(stage_->song().keySignature, ofFile);
}

void MainWindowEditsTest::chordsAreMutedAndUndone()
{
    stage_->clickRibbon("Acordes");
    QVERIFY(stage_->song().harmonyTrack.muted);
    QCOMPARE(available(), (QList{true, false}));
    stage_->window().undo();
    QVERIFY(!stage_->song().harmonyTrack.muted);
    QVERIFY(Widgets::over<QToolButton>(stage_->ribbon(), "Acordes")->isChecked());
    stage_->window().redo();
    stage_->clickRibbon("Acordes");
    QVERIFY(!stage_->song().harmonyTrack.muted);
}

void MainWindowEditsTest::undoingShowsInTheRibbonWithoutAnEdit()
{
    QTest::keyClick(bpmBox(), Qt::Key_Up);
    QTest::keyClick(keyBox(), Qt::Key_Down);
    stage_->clickRibbon("Acordes");
    for (int step = 0; step < 3; ++step)
        stage_->window().undo();
    // An update that came back as an edit would end the future.
    QCOMPARE(available(), (QList{false, true}));
    for (int step = 0; step < 3; ++step)
        stage_->window().redo();
    QCOMPARE(available(), (QList{true, false}));
    QCOMPARE(stage_->song().bpm, 121);
}

// ---- Adding tracks -------------------------------------------------------------------------

void MainWindowEditsTest::anAddedTrackHasAPianoAndANumber()
{
    stage_->clickRibbon("Agregar");
    Track expected;
    expected.name = "Velta 2";
    expected.instrumentId = "gm_piano";
    // The piano roll gives the track that it shows a block to write in.
    expected.melodyBlocks = {{.startBeat = 0.0, .durationBeats = 32.0, .notes = {}}};
    QCOMPARE(stage_->song().tracks.size(), 2);
    QCOMPARE(stage_->song().tracks.at(1), expected);
    stage_->window().undo();
    QCOMPARE(namesOf(stage_->song().tracks), QStringList{"Melodía"});
    stage_->window().redo();
    QCOMPARE(namesOf(stage_->song().tracks), (QStringList{"Melodía", "Velta 2"}));
}

void MainWindowEditsTest::anAddedTrackStandsAboveTheAccompaniment()
{
    openWith({named("a"), named("bombo", true), named("bajo", true)});
    stage_->window().addTrack();
    QCOMPARE(namesOf(stage_->song().tracks), (QStringList{"a", "Velta 4", "bombo", "bajo"}));
    stage_->window().removeSelectedTrack();
    QCOMPARE(namesOf(stage_->song().tracks), (QStringList{"a", "bombo", "bajo"}));
}

void MainWindowEditsTest::anAddedTrackIsTheSelectedOne()
{
    openWith({named("a"), named("b")});
    stage_->window().addTrack();
    stage_->window().addTrack();
    stage_->window().removeSelectedTrack();
    QCOMPARE(namesOf(stage_->song().tracks), (QStringList{"a", "b", "Velta 3"}));
}

void MainWindowEditsTest::namesRepeatAfterRemoving()
{
    stage_->window().addTrack();
    stage_->window().addTrack();
    stage_->song().tracks.removeAt(1);
    stage_->window().addTrack();
    QCOMPARE(namesOf(stage_->song().tracks), (QStringList{"Melodía", "Velta 3", "Velta 3"}));
}

void MainWindowEditsTest::thirteenTracksAreTheMost()
{
    for (int added = 2; added <= 13; ++added)
        stage_->window().addTrack();
    QCOMPARE(stage_->song().tracks.size(), 13);
    QCOMPARE(stage_->song().tracks.last().name, "Velta 13");
    QCOMPARE(stage_->prompts().calls(), QStringList());
    const QJsonObject before = stage_->song().toJson();
    const QSignalSpy changed(&stage_->song(), &Project::changed);
    stage_->clickRibbon("Agregar");
    QCOMPARE(stage_->prompts().calls(), QStringList{kLimit});
    QCOMPARE(stage_->song().toJson(), before);
    QCOMPARE(changed.count(), 0);
    stage_->window().removeSelectedTrack();
    stage_->window().addTrack();
    QCOMPARE(stage_->song().tracks.size(), 13);
    QCOMPARE(stage_->prompts().calls().size(), 1);
}

void MainWindowEditsTest::aFileMayHoldMoreThanThirteen()
{
    openWith(QList<Track>(20, named("a")));
    stage_->window().addTrack();
    QCOMPARE(stage_->prompts().calls(), QStringList{kLimit});
    QCOMPARE(stage_->song().tracks.size(), 20);
    stage_->engine().play();
    for (int left = 20; left > 12; --left)
        stage_->window().removeSelectedTrack();
    stage_->window().addTrack();
    QCOMPARE(stage_->song().tracks.size(), 13);
    QCOMPARE(stage_->prompts().calls().size(), 1);
}

// ---- Removing tracks -----------------------------------------------------------------------

void MainWindowEditsTest::theOnlyTrackMayGo()
{
    stage_->clickRibbon("Quitar");
    QVERIFY(stage_->song().tracks.isEmpty());
    QCOMPARE(available(), (QList{true, false}));
    stage_->window().undo();
    QCOMPARE(namesOf(stage_->song().tracks), QStringList{"Melodía"});
}

void MainWindowEditsTest::withoutTracksRemovingDoesNothing()
{
    stage_->window().removeSelectedTrack();
    const QSignalSpy changed(&stage_->song(), &Project::changed);
    const QJsonObject before = stage_->song().toJson();
    stage_->window().removeSelectedTrack();
    QCOMPARE(changed.count(), 0);
    QCOMPARE(stage_->song().toJson(), before);
    stage_->window().undo();
    QCOMPARE(available(), (QList{false, true}));
    openWith({});
    stage_->window().removeSelectedTrack();
    QCOMPARE(available(), (QList{false, false}));
}

void MainWindowEditsTest::removingSelectsTheFirst()
{
    openWith({named("a"), named("b"), named("c")});
    stage_->window().addTrack();
    stage_->window().removeSelectedTrack();
    QCOMPARE(namesOf(stage_->song().tracks), (QStringList{"a", "b", "c"}));
    stage_->window().removeSelectedTrack();
    QCOMPARE(namesOf(stage_->song().tracks), (QStringList{"b", "c"}));
    stage_->window().removeSelectedTrack();
    QCOMPARE(namesOf(stage_->song().tracks), QStringList{"c"});
}

void MainWindowEditsTest::removingAsksNothing()
{
    stage_->song().tracks[0].melodyBlocks = {melody({note(60, 0.0)})};
    stage_->window().removeSelectedTrack();
    QCOMPARE(stage_->prompts().calls(), QStringList());
    QVERIFY(!stage_->window().projectHasContent());
}

void MainWindowEditsTest::aNewWorkSelectsItsFirstTrack()
{
    stage_->window().addTrack();
    openWith({named("a"), named("b"), named("c")});
    stage_->window().removeSelectedTrack();
    QCOMPARE(namesOf(stage_->song().tracks), (QStringList{"b", "c"}));
}

// ---- Undo ----------------------------------------------------------------------------------

void MainWindowEditsTest::atFirstNothingCanBeUndone()
{
    const QJsonObject before = stage_->song().toJson();
    QCOMPARE(available(), (QList{false, false}));
    stage_->window().undo();
    stage_->window().redo();
    QCOMPARE(stage_->song().toJson(), before);
}

void MainWindowEditsTest::undoAndRedoBringTheWorkBack()
{
    const QJsonObject before = stage_->song().toJson();
    stage_->window().addTrack();
    const QJsonObject after = stage_->song().toJson();
    const Project* present = &stage_->song();
    stage_->window().undo();
    QCOMPARE(stage_->song().toJson(), before);
    stage_->window().redo();
    QCOMPARE(stage_->song().toJson(), after);
    QCOMPARE(&stage_->song(), present);
}

void MainWindowEditsTest::anEditAfterUndoEndsTheFuture()
{
    stage_->window().addTrack();
    stage_->window().undo();
    QCOMPARE(available(), (QList{false, true}));
    QTest::keyClick(bpmBox(), Qt::Key_Up);
    QCOMPARE(available(), (QList{true, false}));
    stage_->window().redo();
    QCOMPARE(stage_->song().tracks.size(), 1);
    QCOMPARE(stage_->song().bpm, 121);
}

void MainWindowEditsTest::atTheEndsOfTheRoadNothingHappens()
{
    stage_->window().addTrack();
    const QSignalSpy changed(&stage_->song(), &Project::changed);
    stage_->window().redo();
    QCOMPARE(changed.count(), 0);
    stage_->window().undo();
    stage_->window().undo();
    QCOMPARE(changed.count(), 1);
    QCOMPARE(stage_->song().tracks.size(), 1);
    QCOMPARE(stage_->song().name, "Obra sin título");
}

void MainWindowEditsTest::ninetyNineStepsAreKept()
{
    for (int edit = 0; edit < 150; ++edit) {
        stage_->song().bpm = 1000 + edit;
        stage_->window().snapshotAndRefresh();
    }
    int steps = 0;
    while (stage_->canUndo()) {
        stage_->choose("Deshacer");
        QCOMPARE(stage_->song().bpm, 1149 - ++steps);
    }
    QCOMPARE(steps, 99);
    while (stage_->canRedo())
        stage_->choose("Rehacer");
    QCOMPARE(stage_->song().bpm, 1149);
}

void MainWindowEditsTest::theMixGoesAlongWithTheEditBeforeIt()
{
    stage_->window().addTrack();
    // A change of the mix takes no step of its own.
    stage_->song().tracks[0].volume = 0.25F;
    stage_->window().undo();
    QCOMPARE(stage_->song().tracks.at(0).volume, 0.8F);
    QCOMPARE(stage_->song().tracks.size(), 1);
    stage_->window().redo();
    QCOMPARE(stage_->song().tracks.at(0).volume, 0.25F);
    QCOMPARE(stage_->song().tracks.size(), 2);
}

void MainWindowEditsTest::undoAndRedoAreHeardWherePlaybackStands()
{
    stage_->song().tracks[0].melodyBlocks = {melody({note(60, 60.0)}, 0.0, 64.0)};
    stage_->window().snapshotAndRefresh();
    stage_->window().addTrack();
    stage_->engine().play(8.0);
    const double before = stage_->engine().playheadBeat();
    for (void (MainWindow::*step)() : {&MainWindow::undo, &MainWindow::redo, &MainWindow::undo}) {
        FluidSpy::reset();
        (stage_->window().*step)();
        QVERIFY(!FluidSpy::calls().isEmpty());
    }
    QVERIFY(stage_->engine().isPlaying());
    QVERIFY(stage_->engine().playheadBeat() >= before);
}

void MainWindowEditsTest::undoAndRedoTellTheViews()
{
    stage_->window().addTrack();
    const QSignalSpy changed(&stage_->song(), &Project::changed);
    stage_->window().undo();
    QCOMPARE(changed.count(), 1);
    stage_->window().redo();
    QCOMPARE(changed.count(), 2);
}

void MainWindowEditsTest::theKeysUndoAndRedo()
{
    QVERIFY(stage_->showWindow());
    stage_->window().addTrack();
    QTest::keySequence(&stage_->window(), QKeySequence(QKeySequence::Undo));
    QCOMPARE(stage_->song().tracks.size(), 1);
    QTest::keySequence(&stage_->window(), QKeySequence(QKeySequence::Redo));
    QCOMPARE(stage_->song().tracks.size(), 2);
}

void MainWindowEditsTest::randomEditsAllComeBack()
{
    QRandomGenerator random(84);
    QList<QJsonObject> states{written(stage_->song())};
    for (int edit = 0; edit < 60; ++edit) {
        switch (random.bounded(5)) {
        case 0:
            stage_->window().addTrack();
            break;
        case 1:
            stage_->window().removeSelectedTrack();
            break;
        case 2:
            QTest::keyClick(bpmBox(), random.bounded(2) ? Qt::Key_Up : Qt::Key_PageDown);
            break;
        case 3:
            QTest::keyClick(keyBox(), random.bounded(2) ? Qt::Key_Home : Qt::Key_Down);
            break;
        default:
            stage_->clickRibbon("Acordes");
        }
        if (written(stage_->song()) != states.last())
            states.append(written(stage_->song()));
    }
    QVERIFY(states.size() > 30);
    for (qsizetype i = states.size() - 2; i >= 0; --i) {
        stage_->window().undo();
        QCOMPARE(written(stage_->song()), states.at(i));
    }
    QVERIFY(!stage_->canUndo());
    for (qsizetype i = 1; i < states.size(); ++i) {
        stage_->window().redo();
        QCOMPARE(written(stage_->song()), states.at(i));
    }
    QVERIFY(!stage_->canRedo());
}

VELTA_TEST(MainWindowEditsTest)

} // namespace MainWindowEditsTests

#include "MainWindowEditsTest.moc"
