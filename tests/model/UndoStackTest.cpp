#include "model/UndoStack.h"

#include "model/Project.h"
#include "model/ProjectJson.h"
#include "support/ProjectBuilder.h"
#include "support/SeededRandom.h"
#include "support/TestProgram.h"

#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

#include <vector>

namespace UndoStackTests {

using namespace ProjectBuilder;

namespace {

QByteArray textOf(const QJsonObject& json)
{
    return QJsonDocument(json).toJson(QJsonDocument::Compact);
}

/// A project, its undo stack, and what the stack has announced.
class Desk {
public:
    explicit Desk(qint64 mostPlainBytes = kUndoBytes) : stack(nullptr, mostPlainBytes)
    {
        stack.reset(project);
    }

    /// An edit like any other.
    void edit(int bpm)
    {
        project.bpm = bpm;
        stack.snapshot(project);
    }

    /// Loads the state that the stack gives, as the window does.
    void undo() { project.loadJson(stack.undo(project)); }

    void redo() { project.loadJson(stack.redo()); }

    /// Edits everything again and again; returns the texts of the states, the first one included.
    QList<QByteArray> editAtRandom(Generator& generator, int edits)
    {
        QList<QByteArray> states{text()};
        for (int edit = 0; edit < edits; ++edit) {
            generator.fill(project);
            // What JSON makes of a project is what it comes back as.
            project.loadJson(project.toJson());
            stack.snapshot(project);
            states.append(text());
        }
        return states;
    }

    /// Undoes down to the first of so many states and redoes up to the last; returns the texts on
    /// the way up, or what the first difference between the two ways is in place of its state.
    QList<QByteArray> backAndForth(qsizetype states)
    {
        QList<QByteArray> down{text()};
        while (down.size() < states) {
            undo();
            down.prepend(text());
        }
        QList<QByteArray> up{text()};
        while (up.size() < states) {
            redo();
            up.append(text());
        }
        for (qsizetype i = 0; i < states; ++i) {
            if (down[i] != up[i])
                up[i] = "down " + down[i] + ", up " + up[i];
        }
        return up;
    }

    QByteArray text() const { return textOf(project.toJson()); }

    /// Announcements since the last call, as "<canUndo> <canRedo>".
    QStringList announced()
    {
        QStringList texts;
        for (const QList<QVariant>& arguments : spy_)
            texts.append(arguments[0].toString() + ' ' + arguments[1].toString());
        spy_.clear();
        return texts;
    }

    Project project;
    UndoStack stack;

private:
    QSignalSpy spy_{&stack, &UndoStack::availabilityChanged};
};

/// The stack told in words: texts of whole states, the one that is worked on, and a depth.
class PlainStack {
public:
    explicit PlainStack(const QByteArray& state) : states_{state} {}

    void snapshot(const QByteArray& state)
    {
        if (state == states_[present_])
            return;
        states_.erase(states_.begin() + static_cast<std::ptrdiff_t>(present_) + 1, states_.end());
        states_.push_back(state);
        if (states_.size() == 101)
            states_.erase(states_.begin());
        present_ = states_.size() - 1;
    }

    QByteArray undo(const QByteArray& state)
    {
        states_[present_] = state;
        return states_[--present_];
    }

    QByteArray redo() { return states_[++present_]; }

    bool canUndo() const { return present_ > 0; }

    bool canRedo() const { return present_ + 1 < states_.size(); }

private:
    std::vector<QByteArray> states_;
    std::size_t present_ = 0;
};

} // namespace

class UndoStackTest : public QObject {
    Q_OBJECT

private slots:
    void songsAreTheStatesWithoutTheDetour();
    void newStackHasNothing();
    void firstSnapshotOfANewStackIsItsFirstState();
    void newProjectHasNothingToUndo();
    void resetIsAnnouncedThoughNothingChanged();
    void resetForgetsWhatWasAndWhatCouldBe();
    void resetTakesTheProjectAsTheFirstState();

    void editCanBeUndoneAndRedone();
    void everyStepIsAnnounced();
    void editAfterUndoEndsTheFuture();
    void editThatChangedNothingIsNone();
    void editThatChangedNothingKeepsTheFuture();
    void aNameAloneIsNoEdit();
    void editBackToAnOlderStateIsOne();

    void endsOfTheRoadGiveNothing();
    void hundredStatesAreKept();
    void oldestStateGoesFirst();
    void futureIsDroppedBeforeTheDepthCounts();

    void mixGoesBackWithTheEditBeforeIt();
    void mixComesBackWithTheNextEdit();
    void mixAloneIsNoStep();
    void mixAfterTheLastUndoIsNotKept();

    void tracksThatStayAreHeldOnce();
    void tracksAreSharedAcrossOneThatCameOrWent();
    void whatIsBeyondTheBoundIsPacked();
    void aGivenUpFutureGivesItsMemoryBack();
    void justAsManyBytesAsAllowedStayAsTheyAre();
    void whereNothingMayStayThePresentAloneDoes();
    void everyKindOfRecordCounts();
    void aHundredStepsOfALongMelodyAreLight();
    void packedStatesComeBack();
    void walksOverPackedStatesAgreeWithAPlainStack();

    void filesGetOtherNamesInEveryState();

    void stackNeverTouchesTheProject();
    void whoHoldsARecordReachesNoState();
    void statesAreCopies();
    void notifyTellsWhatCanBeDone();
    void slotMayAskTheStack();

    void walksAgreeWithAPlainStack_data();
    void walksAgreeWithAPlainStack();
    void undoThenRedoIsTheIdentity();
    void wayBackAndForthMeetsEveryState();
    void hostileProjectsAreSurvived();
};

// ---- Beginnings ----------------------------------------------------------------------------

void UndoStackTest::newStackHasNothing()
{
    UndoStack stack;
    const QSignalSpy spy(&stack, &UndoStack::availabilityChanged);
    const Project project;
    QVERIFY(!stack.canUndo() && !stack.canRedo());
    QVERIFY(stack.undo(project).isEmpty());
    QVERIFY(stack.redo().isEmpty());
    QCOMPARE(spy.count(), 0);
}

void UndoStackTest::firstSnapshotOfANewStackIsItsFirstState()
{
    UndoStack stack;
    const QSignalSpy spy(&stack, &UndoStack::availabilityChanged);
    Project project;
    stack.snapshot(project);
    QCOMPARE(spy.count(), 1);
    QVERIFY(!stack.canUndo() && !stack.canRedo());
    project.bpm = 90;
    stack.snapshot(project);
    QVERIFY(stack.canUndo());
}

void UndoStackTest::newProjectHasNothingToUndo()
{
    Desk desk;
    QVERIFY(!desk.stack.canUndo() && !desk.stack.canRedo());
}

void UndoStackTest::resetIsAnnouncedThoughNothingChanged()
{
    Desk desk;
    desk.announced();
    desk.stack.reset(desk.project);
    desk.stack.reset(desk.project);
    QCOMPARE(desk.announced(), QStringList({"false false", "false false"}));
}

void UndoStackTest::resetForgetsWhatWasAndWhatCouldBe()
{
    Desk desk;
    desk.edit(90);
    desk.edit(91);
    desk.undo();
    QVERIFY(desk.stack.canUndo() && desk.stack.canRedo());
    desk.announced();
    desk.stack.reset(*project({}, {}, {}, {}, 60));
    QCOMPARE(desk.announced(), QStringList{"false false"});
    QVERIFY(!desk.stack.canUndo() && !desk.stack.canRedo());
    QVERIFY(desk.stack.redo().isEmpty());
}

void UndoStackTest::resetTakesTheProjectAsTheFirstState()
{
    Desk desk;
    const auto other = project({}, {}, {}, {}, 60);
    desk.stack.reset(*other);
    desk.edit(91);
    desk.undo();
    QCOMPARE(desk.project.bpm, 60);
}

// ---- Steps ---------------------------------------------------------------------------------

void UndoStackTest::editCanBeUndoneAndRedone()
{
    Desk desk;
    desk.edit(90);
    desk.undo();
    QCOMPARE(desk.project.bpm, 120);
    QVERIFY(!desk.stack.canUndo() && desk.stack.canRedo());
    desk.redo();
    QCOMPARE(desk.project.bpm, 90);
    QVERIFY(desk.stack.canUndo() && !desk.stack.canRedo());
}

void UndoStackTest::everyStepIsAnnounced()
{
    Desk desk;
    desk.announced();
    desk.edit(90);
    QCOMPARE(desk.announced(), QStringList{"true false"});
    desk.edit(91);
    QCOMPARE(desk.announced(), QStringList{"true false"});
    desk.undo();
    QCOMPARE(desk.announced(), QStringList{"true true"});
    desk.undo();
    QCOMPARE(desk.announced(), QStringList{"false true"});
    desk.redo();
    QCOMPARE(desk.announced(), QStringList{"true true"});
    desk.redo();
    QCOMPARE(desk.announced(), QStringList{"true false"});
}

void UndoStackTest::editAfterUndoEndsTheFuture()
{
    Desk desk;
    desk.edit(90);
    desk.edit(91);
    desk.undo();
    desk.announced();
    desk.edit(70);
    QCOMPARE(desk.announced(), QStringList{"true false"});
    QVERIFY(desk.stack.redo().isEmpty());
    desk.undo();
    QCOMPARE(desk.project.bpm, 90);
    desk.redo();
    QCOMPARE(desk.project.bpm, 70);
}

void UndoStackTest::editThatChangedNothingIsNone()
{
    Desk desk;
    desk.edit(90);
    desk.announced();
    desk.edit(90);
    QVERIFY(desk.announced().isEmpty());
    desk.undo();
    QCOMPARE(desk.project.bpm, 120);
}

void UndoStackTest::editThatChangedNothingKeepsTheFuture()
{
    Desk desk;
    desk.edit(90);
    desk.undo();
    desk.announced();
    desk.stack.snapshot(desk.project);
    QVERIFY(desk.announced().isEmpty());
    QVERIFY(desk.stack.canRedo());
    desk.redo();
    QCOMPARE(desk.project.bpm, 90);
}

void UndoStackTest::aNameAloneIsNoEdit()
{
    Desk desk;
    desk.edit(90);
    desk.undo();
    desk.announced();
    desk.project.name = "Zamba";
    desk.stack.snapshot(desk.project);
    QVERIFY(desk.announced().isEmpty());
    QVERIFY(desk.stack.canRedo());
    desk.redo();
    desk.undo();
    QCOMPARE(desk.project.name, "Zamba");
}

void UndoStackTest::editBackToAnOlderStateIsOne()
{
    Desk desk;
    desk.edit(90);
    desk.edit(120);
    desk.undo();
    QCOMPARE(desk.project.bpm, 90);
    QVERIFY(desk.stack.canUndo() && desk.stack.canRedo());
}

// ---- Ends ----------------------------------------------------------------------------------

void UndoStackTest::endsOfTheRoadGiveNothing()
{
    Desk desk;
    desk.edit(90);
    desk.announced();
    QVERIFY(desk.stack.redo().isEmpty());
    QVERIFY(desk.announced().isEmpty());
    desk.undo();
    desk.announced();
    desk.project.bpm = 77;
    QVERIFY(desk.stack.undo(desk.project).isEmpty());
    QVERIFY(desk.announced().isEmpty());
    QVERIFY(!desk.stack.canUndo() && desk.stack.canRedo());
}

void UndoStackTest::hundredStatesAreKept()
{
    QCOMPARE(kUndoDepth, 100);
    Desk desk;
    for (int edit = 1; edit <= 150; ++edit)
        desk.edit(1000 + edit);
    int steps = 0;
    while (desk.stack.canUndo()) {
        desk.undo();
        ++steps;
        QCOMPARE(desk.project.bpm, 1150 - steps);
    }
    QCOMPARE(steps, 99);
    QVERIFY(desk.stack.undo(desk.project).isEmpty());
    while (desk.stack.canRedo())
        desk.redo();
    QCOMPARE(desk.project.bpm, 1150);
}

void UndoStackTest::oldestStateGoesFirst()
{
    Desk desk;
    for (int edit = 1; edit <= 99; ++edit)
        desk.edit(1000 + edit);
    for (int step = 0; step < 99; ++step)
        desk.undo();
    QCOMPARE(desk.project.bpm, 120);
    for (int step = 0; step < 99; ++step)
        desk.redo();
    desk.edit(1100);
    for (int step = 0; step < 99; ++step)
        desk.undo();
    QCOMPARE(desk.project.bpm, 1001);
    QVERIFY(!desk.stack.canUndo());
}

void UndoStackTest::futureIsDroppedBeforeTheDepthCounts()
{
    Desk desk;
    for (int edit = 1; edit <= 99; ++edit)
        desk.edit(1000 + edit);
    desk.undo();
    desk.edit(500);
    for (int step = 0; step < 99; ++step)
        desk.undo();
    QCOMPARE(desk.project.bpm, 120);
}

// ---- The mix, which makes no step of its own ------------------------------------------------

void UndoStackTest::mixGoesBackWithTheEditBeforeIt()
{
    Desk desk;
    desk.project.tracks = {melodyTrack({})};
    desk.stack.snapshot(desk.project);
    const float before = desk.project.tracks[0].volume;
    desk.edit(90);
    desk.project.tracks[0].volume = 0.25F;
    desk.undo();
    QCOMPARE(desk.project.tracks[0].volume, before);
    QCOMPARE(desk.project.bpm, 120);
    desk.redo();
    QCOMPARE(desk.project.tracks[0].volume, 0.25F);
    QCOMPARE(desk.project.bpm, 90);
}

void UndoStackTest::mixComesBackWithTheNextEdit()
{
    Desk desk;
    desk.edit(90);
    desk.project.harmonyTrack.muted = true;
    desk.edit(91);
    desk.undo();
    QVERIFY(!desk.project.harmonyTrack.muted);
    desk.redo();
    QVERIFY(desk.project.harmonyTrack.muted);
}

void UndoStackTest::mixAloneIsNoStep()
{
    Desk desk;
    desk.project.harmonyTrack.volume = 0.125F;
    QVERIFY(!desk.stack.canUndo());
    QVERIFY(desk.stack.undo(desk.project).isEmpty());
}

void UndoStackTest::mixAfterTheLastUndoIsNotKept()
{
    // Nothing is saved on the way forward: the redone state is as it was left.
    Desk desk;
    desk.edit(90);
    desk.undo();
    desk.project.harmonyTrack.volume = 0.125F;
    desk.redo();
    QVERIFY(desk.project.harmonyTrack.volume != 0.125F);
    desk.undo();
    QVERIFY(desk.project.harmonyTrack.volume != 0.125F);
}

// ---- Memory --------------------------------------------------------------------------------

namespace {

/// Thirteen tracks of so many notes.
QList<Track> manyTracks(int notes)
{
    QList<NoteEvent> list;
    for (int i = 0; i < notes; ++i)
        list.append(note(48 + i % 24, i * 0.25));
    return QList<Track>(13, melodyTrack({melody(list)}));
}

} // namespace

void UndoStackTest::tracksThatStayAreHeldOnce()
{
    Desk desk;
    desk.project.tracks = manyTracks(200);
    desk.stack.reset(desk.project);
    const qint64 whole = desk.stack.plainBytes();
    QVERIFY(whole >= qint64{13 * 200 * sizeof(NoteEvent)});
    for (int edit = 0; edit < 99; ++edit) {
        desk.project.tracks[edit % 13].melodyBlocks[0].notes[edit].pitch = 90;
        desk.stack.snapshot(desk.project);
    }
    QVERIFY2(desk.stack.plainBytes() <= whole + 99 * (whole / 13 + 1),
             qPrintable(QString::number(desk.stack.plainBytes())));
    for (int step = 0; step < 99; ++step)
        desk.undo();
    QVERIFY(desk.project.tracks == manyTracks(200));
    const qint64 before = desk.stack.plainBytes();
    desk.edit(77);
    QVERIFY2(desk.stack.plainBytes() < before, "after an undo too a track is held once");
}

void UndoStackTest::tracksAreSharedAcrossOneThatCameOrWent()
{
    Desk desk;
    desk.project.tracks = manyTracks(10);
    for (int i = 0; i < 13; ++i)
        desk.project.tracks[i].name = QString::number(i);
    desk.stack.reset(desk.project);
    const qint64 whole = desk.stack.plainBytes();
    const Track gone = desk.project.tracks.takeAt(4);
    desk.stack.snapshot(desk.project);
    QVERIFY(desk.stack.plainBytes() == whole);
    desk.project.tracks.insert(2, gone);
    desk.stack.snapshot(desk.project);
    QVERIFY(desk.stack.plainBytes() <= whole + 2 * (whole / 13));
}

void UndoStackTest::whatIsBeyondTheBoundIsPacked()
{
    constexpr qint64 kBound = 60000;
    Desk desk(kBound);
    desk.project.tracks = manyTracks(100);
    desk.stack.reset(desk.project);
    for (int edit = 0; edit < 99; ++edit) {
        desk.project.tracks[edit % 13].melodyBlocks[0].notes[edit].pitch = 90;
        desk.stack.snapshot(desk.project);
        QVERIFY(desk.stack.plainBytes() <= kBound);
    }
    while (desk.stack.canUndo()) {
        desk.undo();
        QVERIFY(desk.stack.plainBytes() <= kBound);
        // The present state is never packed.
        QVERIFY(desk.stack.plainBytes() >= qint64{13 * 100 * sizeof(NoteEvent)});
    }
    QVERIFY(desk.project.tracks == manyTracks(100));
}

void UndoStackTest::justAsManyBytesAsAllowedStayAsTheyAre()
{
    const auto bytesAfterAnEdit = [](qint64 bound) {
        Desk desk(bound);
        desk.project.tracks = manyTracks(100);
        desk.stack.snapshot(desk.project);
        desk.project.tracks.clear();
        desk.stack.snapshot(desk.project);
        return desk.stack.plainBytes();
    };
    const qint64 all = bytesAfterAnEdit(kUndoBytes);
    QCOMPARE(bytesAfterAnEdit(all), all);
    QVERIFY(bytesAfterAnEdit(all - 1) < all);
}

void UndoStackTest::whereNothingMayStayThePresentAloneDoes()
{
    Desk desk(0);
    for (int tracks = 1; tracks < 4; ++tracks) {
        desk.project.tracks = manyTracks(tracks);
        desk.project.tracks[0].name = QString::number(tracks);
        desk.project.audioTracks = {
            voiceTrack(QList<AudioClip>(tracks, clip("voz" + QString::number(tracks))))};
        desk.project.harmonyTrack = harmony(QList<int>(tracks, 4));
        desk.stack.snapshot(desk.project);
    }
    desk.undo();
    const qint64 withOthers = desk.stack.plainBytes();
    desk.stack.changeAudioTracks([](QList<AudioTrack>& tracks) {
        for (AudioTrack& track : tracks)
            track.volume = 0.5F;
    });
    QCOMPARE(desk.stack.plainBytes(), withOthers);
    desk.stack.reset(desk.project);
    QCOMPARE(withOthers, desk.stack.plainBytes());
}

void UndoStackTest::everyKindOfRecordCounts()
{
    Track loops;
    loops.loopBlocks = QList<LoopBlock>(100);
    AudioTrack clips;
    clips.clips = QList<AudioClip>(100);
    Desk desk;
    const auto added = [&](auto& list, const auto& record) {
        const qint64 before = desk.stack.plainBytes();
        list.append(record);
        desk.stack.reset(desk.project);
        return desk.stack.plainBytes() - before;
    };
    QVERIFY(added(desk.project.tracks, loops) >= qint64{100 * sizeof(LoopBlock)});
    QVERIFY(added(desk.project.audioTracks, clips) >= qint64{100 * sizeof(AudioClip)});
    QVERIFY(added(desk.project.harmonyTrack.blocks,
                  HarmonyBlock{.events = QList<HarmonyDegreeEvent>(100)}) >=
            qint64{100 * sizeof(HarmonyDegreeEvent)});
    // A letter takes two bytes.
    const QString text(1000, 'a');
    Track named;
    named.name = text;
    named.instrumentId = text;
    const qint64 nameless = added(desk.project.tracks, Track());
    QVERIFY(added(desk.project.tracks, named) - nameless >= 4000);
    const qint64 plain = added(desk.project.tracks, loopTrack({loop({}, {}, 0.0, 4.0)}));
    QVERIFY(added(desk.project.tracks, loopTrack({loop(text, text, 0.0, 4.0)})) - plain >= 4000);
    AudioTrack voice = voiceTrack({clip(text)});
    voice.name = text;
    QVERIFY(added(desk.project.audioTracks, voice) >= 4000);
}

void UndoStackTest::aGivenUpFutureGivesItsMemoryBack()
{
    Desk desk;
    const qint64 empty = desk.stack.plainBytes();
    desk.project.tracks = manyTracks(100);
    desk.stack.snapshot(desk.project);
    desk.undo();
    QVERIFY(desk.stack.plainBytes() > empty);
    desk.stack.reset(desk.project);
    QCOMPARE(desk.stack.plainBytes(), empty);
}

void UndoStackTest::aHundredStepsOfALongMelodyAreLight()
{
    constexpr qint64 kBound = 30'000'000;
    Desk desk;
    desk.project.tracks.append(melodyTrack({melody(QList<NoteEvent>(5000), 1250.0)}, "gm_flauta"));
    desk.stack.reset(desk.project);
    for (int edit = 0; edit < 100; ++edit) {
        desk.project.tracks[0].melodyBlocks[0].notes[edit].pitch = 61;
        desk.stack.snapshot(desk.project);
    }
    QVERIFY2(desk.stack.plainBytes() <= kBound,
             qPrintable(QString::number(desk.stack.plainBytes())));
}

void UndoStackTest::packedStatesComeBack()
{
    Desk desk(0);
    Generator generator(24, Numbers::AnyFinite);
    const QList<QByteArray> states = desk.editAtRandom(generator, 60);
    for (int way = 0; way < 2; ++way)
        QCOMPARE(desk.backAndForth(states.size()), states);
}

void UndoStackTest::walksOverPackedStatesAgreeWithAPlainStack()
{
    SeededRandom random(25);
    Desk desk(3000);
    desk.project.tracks = manyTracks(5);
    desk.stack.reset(desk.project);
    PlainStack plain(textOf(desk.project.toJson()));
    for (int step = 0; step < 300; ++step) {
        if (plain.canUndo() && random.oneIn(3)) {
            const QByteArray expected = plain.undo(textOf(desk.project.toJson()));
            desk.undo();
            QCOMPARE(textOf(desk.project.toJson()), expected);
        } else if (plain.canRedo() && random.oneIn(2)) {
            const QByteArray expected = plain.redo();
            desk.redo();
            QCOMPARE(textOf(desk.project.toJson()), expected);
        } else {
            desk.project.tracks[random.between(0, 12)].melodyBlocks[0].notes[0].pitch =
                random.between(40, 44);
            desk.stack.snapshot(desk.project);
            plain.snapshot(textOf(desk.project.toJson()));
        }
        QCOMPARE(desk.stack.canUndo(), plain.canUndo());
        QCOMPARE(desk.stack.canRedo(), plain.canRedo());
    }
}

// ---- Voices --------------------------------------------------------------------------------

void UndoStackTest::filesGetOtherNamesInEveryState()
{
    Desk desk;
    desk.project.audioTracks = {voiceTrack({clip("voz.wav")})};
    desk.stack.reset(desk.project);
    desk.edit(90);
    desk.project.audioTracks[0].clips.append(clip("eco.wav"));
    desk.stack.snapshot(desk.project);
    const auto files = [](const QList<AudioTrack>& tracks) {
        QStringList names;
        for (const AudioTrack& track : tracks) {
            for (const AudioClip& clip : track.clips)
                names.append(clip.audioFilePath);
        }
        return names;
    };
    const qint64 bytes = desk.stack.plainBytes();
    desk.stack.changeAudioTracks([](QList<AudioTrack>& tracks) {
        for (AudioTrack& track : tracks)
            track.clips[0].audioFilePath = "luz.wav";
    });
    QCOMPARE(files(desk.stack.audioTracks()),
             (QStringList{"luz.wav", "luz.wav", "luz.wav", "eco.wav"}));
    // A track that two states share is still held once.
    QCOMPARE(desk.stack.plainBytes(), bytes);
    desk.undo();
    QCOMPARE(files(desk.project.audioTracks), QStringList{"luz.wav"});
}

// ---- Manners -------------------------------------------------------------------------------

void UndoStackTest::stackNeverTouchesTheProject()
{
    Desk desk;
    desk.edit(90);
    const QSignalSpy changed(&desk.project, &Project::changed);
    const QByteArray before = textOf(desk.project.toJson());
    desk.stack.undo(desk.project);
    desk.stack.redo();
    desk.stack.snapshot(desk.project);
    desk.stack.reset(desk.project);
    QCOMPARE(textOf(desk.project.toJson()), before);
    QCOMPARE(changed.count(), 0);
}

/// A view may go on writing through a reference that it took before its edit was recorded.
void UndoStackTest::whoHoldsARecordReachesNoState()
{
    Desk desk;
    desk.project.tracks = {melodyTrack({melody({note(60, 0.0)})})};
    desk.project.audioTracks = {voiceTrack({clip("voz.wav")})};
    desk.project.harmonyTrack = harmony({1});
    NoteEvent& held = desk.project.tracks[0].melodyBlocks[0].notes[0];
    AudioClip& heldClip = desk.project.audioTracks[0].clips[0];
    HarmonyDegreeEvent& heldChord = desk.project.harmonyTrack.blocks[0].events[0];
    desk.project.collapsedGroups = {"bombo"};
    QString& heldGroup = desk.project.collapsedGroups[0];
    desk.stack.snapshot(desk.project);
    const QByteArray before = textOf(desk.project.toJson());
    held.pitch = 61;
    heldClip.gain = 0.5F;
    heldChord.degree = 5;
    heldGroup = "bajo";
    desk.stack.snapshot(desk.project);
    desk.undo();
    QCOMPARE(textOf(desk.project.toJson()), before);
}

void UndoStackTest::statesAreCopies()
{
    Desk desk;
    desk.edit(90);
    QJsonObject state = desk.stack.undo(desk.project);
    for (const QString& key : state.keys())
        state.remove(key);
    desk.redo();
    desk.undo();
    QCOMPARE(desk.project.bpm, 120);
}

void UndoStackTest::notifyTellsWhatCanBeDone()
{
    Desk desk;
    desk.edit(90);
    desk.edit(91);
    desk.undo();
    desk.announced();
    desk.stack.notify();
    QCOMPARE(desk.announced(), QStringList{"true true"});
}

void UndoStackTest::slotMayAskTheStack()
{
    Desk desk;
    QStringList answers;
    connect(&desk.stack, &UndoStack::availabilityChanged, this, [&](bool canUndo, bool canRedo) {
        answers.append(canUndo == desk.stack.canUndo() && canRedo == desk.stack.canRedo()
                           ? "agrees"
                           : "differs");
    });
    desk.edit(90);
    desk.undo();
    desk.redo();
    desk.stack.reset(desk.project);
    QCOMPARE(answers, QStringList(4, "agrees"));
}

// ---- Laws ----------------------------------------------------------------------------------

void UndoStackTest::walksAgreeWithAPlainStack_data()
{
    QTest::addColumn<int>("undoEvery");
    QTest::newRow("a step back now and then") << 8;
    QTest::newRow("back and forth") << 2;
    QTest::newRow("hardly ever back") << 100;
}

void UndoStackTest::walksAgreeWithAPlainStack()
{
    QFETCH(int, undoEvery);
    SeededRandom random(static_cast<unsigned>(undoEvery));
    for (int walk = 0; walk < 15; ++walk) {
        Desk desk;
        PlainStack plain(textOf(desk.project.toJson()));
        for (int step = 0; step < 400; ++step) {
            if (random.oneIn(10))
                desk.project.harmonyTrack.volume = static_cast<float>(random.between(0, 8)) / 8.0F;
            const bool back = random.oneIn(undoEvery);
            if (back && plain.canUndo() && random.oneIn(2)) {
                const QByteArray expected = plain.undo(textOf(desk.project.toJson()));
                desk.undo();
                QCOMPARE(textOf(desk.project.toJson()), expected);
            } else if (back && plain.canRedo()) {
                const QByteArray expected = plain.redo();
                desk.redo();
                QCOMPARE(textOf(desk.project.toJson()), expected);
            } else {
                desk.edit(random.between(60, 64));
                plain.snapshot(textOf(desk.project.toJson()));
            }
            QCOMPARE(desk.stack.canUndo(), plain.canUndo());
            QCOMPARE(desk.stack.canRedo(), plain.canRedo());
        }
    }
}

void UndoStackTest::undoThenRedoIsTheIdentity()
{
    Desk desk;
    Generator generator(21);
    for (int edit = 0; edit < 200; ++edit) {
        generator.fill(desk.project);
        desk.stack.snapshot(desk.project);
        const QByteArray before = textOf(desk.project.toJson());
        desk.undo();
        desk.redo();
        QCOMPARE(textOf(desk.project.toJson()), before);
    }
}

void UndoStackTest::wayBackAndForthMeetsEveryState()
{
    Desk desk;
    Generator generator(22, Numbers::AnyFinite);
    const QList<QByteArray> states = desk.editAtRandom(generator, 60);
    QCOMPARE(desk.backAndForth(states.size()), states);
}

void UndoStackTest::hostileProjectsAreSurvived()
{
    Desk desk;
    Generator generator(23, Numbers::Hostile);
    SeededRandom random(23);
    for (int step = 0; step < 1500; ++step) {
        if (random.oneIn(4) && desk.stack.canUndo()) {
            desk.undo();
        } else if (random.oneIn(4) && desk.stack.canRedo()) {
            desk.redo();
        } else {
            generator.fill(desk.project);
            desk.stack.snapshot(desk.project);
            QVERIFY(!desk.stack.canRedo());
        }
    }
    int steps = 0;
    while (desk.stack.canUndo()) {
        desk.undo();
        ++steps;
    }
    QVERIFY(steps <= 99);
}

void UndoStackTest::songsAreTheStatesWithoutTheDetour()
{
    Project project;
    UndoStack byJson;
    UndoStack bySong;
    byJson.reset(project);
    bySong.reset(project);
    QVERIFY(!bySong.undoSong(project));
    QVERIFY(!bySong.redoSong());
    for (unsigned seed = 1; seed <= 5; ++seed) {
        ProjectBuilder::Generator(seed).fill(project);
        byJson.snapshot(project);
        bySong.snapshot(project);
    }
    while (byJson.canUndo())
        QCOMPARE(ProjectJson::write(bySong.undoSong(project).value()), byJson.undo(project));
    QVERIFY(!bySong.canUndo());
    while (byJson.canRedo())
        QCOMPARE(ProjectJson::write(bySong.redoSong().value()), byJson.redo());
    QVERIFY(!bySong.canRedo());
}

VELTA_GUILESS_TEST(UndoStackTest)

} // namespace UndoStackTests

#include "UndoStackTest.moc"
