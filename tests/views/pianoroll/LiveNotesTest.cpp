#include "views/pianoroll/LiveNotes.h"

#include "PianoRollStage.h"
#include "support/FluidSpy.h"
#include "support/UserHome.h"

#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include <limits>
#include <memory>

using namespace ProjectBuilder;

namespace {

/// The previews since the last reset of the spy: "on 60 100", "off 60" and "program 0 75".
QStringList heard()
{
    QStringList calls;
    for (const QString& call : FluidSpy::calls({"noteon", "noteoff", "program_select"})) {
        const QStringList words = call.split(' ');
        if (words.value(1) != "13")
            continue;
        if (words[0] == "noteon")
            calls.append("on " + words[2] + ' ' + words[3]);
        else if (words[0] == "noteoff")
            calls.append("off " + words[2]);
        else
            calls.append("program " + words[3] + ' ' + words[4]);
    }
    FluidSpy::reset();
    return calls;
}

/// What is heard without the choices of instruments.
QStringList heardNotes()
{
    QStringList calls = heard();
    calls.removeIf([](const QString& call) { return call.startsWith("program"); });
    return calls;
}

const QStringList kTune{"60@0+1", "62@1+1", "64@2+1", "72@4+0.5"};

} // namespace

class LiveNotesTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void lettersPlayTheirPitches_data();
    void lettersPlayTheirPitches();
    void keysThatAreNoLettersHaveNoPitch();
    void octavesGoFromOneToSeven();
    void octaveKeysAreHeardByNobody();
    void copyIsNoEdit();
    void ctrlZIsPassedOn();
    void shiftPlaysSharps();

    void letterSoundsWhileItIsHeld();
    void heldLetterDoesNotRetrigger();
    void secondPressOfAHeldLetterIsPassedOn();
    void twoLettersAreTwoNotes();
    void octaveDuringAHeldLetterStrandsNothing();
    void shiftDuringAHeldLetterStrandsNothing();
    void lettersWithCtrlOrAltArePassedOn_data();
    void lettersWithCtrlOrAltArePassedOn();
    void otherKeysArePassedOn();
    void lettersSoundLikeTheTrack_data();
    void lettersSoundLikeTheTrack();
    void lettersWithoutATrackAreSilent();
    void lettersWithoutAnEngineAreSilent();
    void keysOfThePianoSound();

    void silentSongRecordsNothing();
    void playingSongRecords_data();
    void playingSongRecords();
    void recordedNoteCountsFromTheBlock_data();
    void recordedNoteCountsFromTheBlock();
    void oneEditForEachNote();
    void twoNotesAtOnceAreRecorded();
    void stoppingDoesNotEndALiveNote();
    void pitchIsRecordedOnce();
    void accompanimentRecordsNothingButTells();
    void liveNotesOfTheMouseAreRecorded();
    void liveNotesOfAnEndedContextAreForgotten();

    void losingTheFocusEndsHeldLetters_data();
    void losingTheFocusEndsHeldLetters();
    void openingAMenuEndsHeldLetters();
    void lettersOfAButtonWithTheFocusEndWithIt();
    void clicksOnTheBarLeaveTheLetters();
    void drawnNoteSoundsWhileItIsHeld();
    void drawnNoteOfALostDragIsSilenced_data();
    void drawnNoteOfALostDragIsSilenced();

    void otherRepeatedKeysAreTaken();

private:
    PianoRollCanvas& canvas() const { return stage_->canvas; }

    PlaybackEngine& engine() const { return band_->engine(); }

    /// Selects notes by their indices.
    void select(const QList<int>& indices) const;

    void send(QEvent::Type type, Qt::Key key, Qt::KeyboardModifiers modifiers = {},
              bool repeated = false) const;

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        send(QEvent::KeyPress, key, modifiers);
    }

    void release(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        send(QEvent::KeyRelease, key, modifiers);
    }

    /// Whether a key goes on to who is behind the piano roll.
    bool isPassedOn(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const;

    UserHome home_;
    std::unique_ptr<SilentBand> band_;
    std::unique_ptr<PianoRollStage> stage_;
    std::unique_ptr<Editor> editor_;
};

void LiveNotesTest::init()
{
    band_ = std::make_unique<SilentBand>();
    stage_ = std::make_unique<PianoRollStage>(&band_->engine());
    editor_ = std::make_unique<Editor>(*stage_);
    FluidSpy::reset();
}

void LiveNotesTest::cleanup()
{
    editor_.reset();
    stage_.reset();
    band_.reset();
}

void LiveNotesTest::select(const QList<int>& indices) const
{
    for (NoteItem* item : stage_->noteItems())
        item->setSelected(indices.contains(item->index()));
}

void LiveNotesTest::send(QEvent::Type type, Qt::Key key, Qt::KeyboardModifiers modifiers,
                         bool repeated) const
{
    QKeyEvent event(type, key, modifiers, QString(), repeated);
    QApplication::sendEvent(&canvas(), &event);
}

bool LiveNotesTest::isPassedOn(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    QApplication::sendEvent(&canvas(), &event);
    return !event.isAccepted();
}

// ---- Letters -------------------------------------------------------------------------------

void LiveNotesTest::lettersPlayTheirPitches_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("pitch");

    QTest::newRow("C") << Qt::Key_C << 60;
    QTest::newRow("D") << Qt::Key_D << 62;
    QTest::newRow("E") << Qt::Key_E << 64;
    QTest::newRow("F") << Qt::Key_F << 65;
    QTest::newRow("G") << Qt::Key_G << 67;
    QTest::newRow("A, above C") << Qt::Key_A << 69;
    QTest::newRow("B") << Qt::Key_B << 71;
}

void LiveNotesTest::lettersPlayTheirPitches()
{
    QFETCH(Qt::Key, key);
    QFETCH(int, pitch);
    QCOMPARE(canvas().live()->pitchOfKey(key, false), pitch);
    QCOMPARE(canvas().live()->pitchOfKey(key, true), pitch + 1);
    stage_->key(key);
    QCOMPARE(heardNotes(), QStringList({QStringLiteral("on %1 100").arg(pitch),
                                        QStringLiteral("off %1").arg(pitch)}));
}

void LiveNotesTest::keysThatAreNoLettersHaveNoPitch()
{
    for (const int key : {int(Qt::Key_H), int(Qt::Key_Z), int(Qt::Key_1), int(Qt::Key_Space),
                          int(Qt::Key_At), 0, -1})
        QCOMPARE(canvas().live()->pitchOfKey(key, false), -1);
}

void LiveNotesTest::octavesGoFromOneToSeven()
{
    for (int octave = 5; octave <= 9; ++octave) {
        stage_->key(Qt::Key_X);
        QCOMPARE(canvas().live()->octave(), qMin(octave, 7));
    }
    QCOMPARE(canvas().live()->pitchOfKey(Qt::Key_C, false), 96);
    QCOMPARE(canvas().live()->pitchOfKey(Qt::Key_B, true), 108);
    for (int octave = 6; octave >= -1; --octave) {
        stage_->key(Qt::Key_Z);
        QCOMPARE(canvas().live()->octave(), qMax(octave, 1));
    }
    QCOMPARE(canvas().live()->pitchOfKey(Qt::Key_C, false), 24);
}

void LiveNotesTest::octaveKeysAreHeardByNobody()
{
    stage_->key(Qt::Key_X);
    stage_->key(Qt::Key_Z, Qt::AltModifier);
    QVERIFY(heard().isEmpty());
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(canvas().live()->octave(), 4);
}

void LiveNotesTest::copyIsNoEdit()
{
    select({1});
    stage_->key(Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(editor_->edits(), 0);
    QCOMPARE(stage_->selected(), QList<int>{1});
    QVERIFY(heard().isEmpty());
}

void LiveNotesTest::ctrlZIsPassedOn()
{
    QVERIFY(isPassedOn(Qt::Key_Z, Qt::ControlModifier));
    QCOMPARE(canvas().live()->octave(), 4);
}

void LiveNotesTest::shiftPlaysSharps()
{
    stage_->key(Qt::Key_F, Qt::ShiftModifier);
    QCOMPARE(heardNotes(), QStringList({"on 66 100", "off 66"}));
}

void LiveNotesTest::letterSoundsWhileItIsHeld()
{
    press(Qt::Key_C);
    QCOMPARE(heardNotes(), QStringList{"on 60 100"});
    QVERIFY(engine().previewHeld().contains(60));
    release(Qt::Key_C);
    QCOMPARE(heardNotes(), QStringList{"off 60"});
    QVERIFY(engine().previewHeld().isEmpty());
}

void LiveNotesTest::heldLetterDoesNotRetrigger()
{
    press(Qt::Key_C);
    for (int i = 0; i < 5; ++i) {
        send(QEvent::KeyRelease, Qt::Key_C, {}, true);
        send(QEvent::KeyPress, Qt::Key_C, {}, true);
    }
    QCOMPARE(heardNotes(), QStringList{"on 60 100"});
    release(Qt::Key_C);
    QCOMPARE(heardNotes(), QStringList{"off 60"});
}

void LiveNotesTest::secondPressOfAHeldLetterIsPassedOn()
{
    press(Qt::Key_C);
    heard();
    QVERIFY(isPassedOn(Qt::Key_C));
    QVERIFY(heard().isEmpty());
}

void LiveNotesTest::twoLettersAreTwoNotes()
{
    press(Qt::Key_C);
    press(Qt::Key_E);
    release(Qt::Key_C);
    release(Qt::Key_E);
    QCOMPARE(heardNotes(), QStringList({"on 60 100", "on 64 100", "off 60", "off 64"}));
}

void LiveNotesTest::octaveDuringAHeldLetterStrandsNothing()
{
    press(Qt::Key_C);
    stage_->key(Qt::Key_X);
    release(Qt::Key_C);
    QCOMPARE(heardNotes(), QStringList({"on 60 100", "off 60"}));
    stage_->key(Qt::Key_C);
    QCOMPARE(heardNotes(), QStringList({"on 72 100", "off 72"}));
}

void LiveNotesTest::shiftDuringAHeldLetterStrandsNothing()
{
    press(Qt::Key_C, Qt::ShiftModifier);
    release(Qt::Key_C);
    press(Qt::Key_C);
    release(Qt::Key_C, Qt::ShiftModifier);
    QCOMPARE(heardNotes(), QStringList({"on 61 100", "off 61", "on 60 100", "off 60"}));
}

void LiveNotesTest::lettersWithCtrlOrAltArePassedOn_data()
{
    QTest::addColumn<int>("modifier");
    QTest::addColumn<Qt::Key>("key");

    QTest::newRow("Ctrl+B") << int(Qt::ControlModifier) << Qt::Key_B;
    QTest::newRow("Ctrl+G") << int(Qt::ControlModifier) << Qt::Key_G;
    QTest::newRow("Alt+A") << int(Qt::AltModifier) << Qt::Key_A;
    QTest::newRow("Alt+C") << int(Qt::AltModifier) << Qt::Key_C;
}

void LiveNotesTest::lettersWithCtrlOrAltArePassedOn()
{
    QFETCH(int, modifier);
    QFETCH(Qt::Key, key);
    QVERIFY(isPassedOn(key, Qt::KeyboardModifiers(modifier)));
    QVERIFY(heard().isEmpty());
}

void LiveNotesTest::otherKeysArePassedOn()
{
    for (const Qt::Key key : {Qt::Key_H, Qt::Key_Space, Qt::Key_Escape, Qt::Key_F1})
        QVERIFY(isPassedOn(key));
    QKeyEvent released(QEvent::KeyRelease, Qt::Key_C, Qt::NoModifier);
    QApplication::sendEvent(&canvas(), &released);
    QVERIFY(!released.isAccepted());
}

void LiveNotesTest::lettersSoundLikeTheTrack_data()
{
    QTest::addColumn<int>("track");
    QTest::addColumn<QString>("program");

    QTest::newRow("piano") << 0 << "program 0 0";
    QTest::newRow("pan flute") << 2 << "program 0 75";
    QTest::newRow("drums of the accompaniment") << 1 << "program 128 0";
}

void LiveNotesTest::lettersSoundLikeTheTrack()
{
    QFETCH(int, track);
    QFETCH(QString, program);
    canvas().setActiveTrack(track);
    stage_->key(Qt::Key_C);
    QCOMPARE(heard(), QStringList({program, "on 60 100", "off 60"}));
}

void LiveNotesTest::lettersWithoutATrackAreSilent()
{
    for (const int track : {-1, 4, std::numeric_limits<int>::max()}) {
        canvas().setActiveTrack(track);
        press(Qt::Key_C);
        QVERIFY(heardNotes().isEmpty());
        release(Qt::Key_C);
        heard();
    }
    QCOMPARE(editor_->edits(), 0);
}

void LiveNotesTest::lettersWithoutAnEngineAreSilent()
{
    canvas().setContext(&stage_->song, nullptr);
    heard();
    stage_->key(Qt::Key_C);
    QVERIFY(heard().isEmpty());
    QCOMPARE(editor_->edits(), 0);
}

void LiveNotesTest::keysOfThePianoSound()
{
    QTest::mousePress(canvas().keyboard(), Qt::LeftButton, {}, QPoint(10, stage_->at(0.0, 64).y()));
    QCOMPARE(heardNotes(), QStringList{"on 64 100"});
    QTest::mouseRelease(canvas().keyboard(), Qt::LeftButton, {}, QPoint(2000, 2000));
    QCOMPARE(heardNotes(), QStringList{"off 64"});
    canvas().rows()->scrollToTopPitch(36, false);
    QTest::mouseClick(canvas().keyboard(), Qt::LeftButton, {},
                      QPoint(10, PianoRollStage::kGridHeight + 3));
    QVERIFY(heardNotes().isEmpty());
}

// ---- Recording -----------------------------------------------------------------------------

void LiveNotesTest::silentSongRecordsNothing()
{
    stage_->key(Qt::Key_C);
    press(Qt::Key_D);
    engine().play(0.0);
    release(Qt::Key_D);
    QCOMPARE(stage_->tune(), kTune);
    QCOMPARE(editor_->edits(), 0);
}

void LiveNotesTest::playingSongRecords_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<QString>("recorded");

    QTest::newRow("start and length are snapped") << 5.2 << 6.6 << "65@5+1.5";
    QTest::newRow("at least a step") << 5.2 << 5.3 << "65@5+0.5";
    QTest::newRow("start is rounded up") << 5.3 << 6.6 << "65@5.5+1";
    QTest::newRow("backwards: a step") << 5.0 << 1.0 << "65@5+0.5";
}

void LiveNotesTest::playingSongRecords()
{
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(QString, recorded);
    engine().play(from);
    press(Qt::Key_F);
    QCOMPARE(stage_->tune(), kTune);
    engine().setPlayheadBeat(to);
    release(Qt::Key_F);
    QCOMPARE(stage_->tune(), kTune + QStringList{recorded});
    QCOMPARE(stage_->notes().last().velocity, 100);
    QCOMPARE(editor_->edits(), 1);
    QCOMPARE(stage_->noteItems().size(), 5);
}

void LiveNotesTest::recordedNoteCountsFromTheBlock_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<QStringList>("notes");

    QTest::newRow("inside") << 6.0 << QStringList{"67@0+1", "65@2+1"};
    QTest::newRow("before its start: at its start") << 2.0 << QStringList{"65@0+1", "67@0+1"};
}

void LiveNotesTest::recordedNoteCountsFromTheBlock()
{
    QFETCH(double, from);
    QFETCH(QStringList, notes);
    canvas().setActiveTrack(2);
    engine().play(from);
    press(Qt::Key_F);
    engine().setPlayheadBeat(from + 1.0);
    release(Qt::Key_F);
    QCOMPARE(stage_->tune(2), notes);
}

void LiveNotesTest::oneEditForEachNote()
{
    engine().play(5.0);
    stage_->key(Qt::Key_F);
    stage_->key(Qt::Key_G);
    QCOMPARE(editor_->edits(), 2);
    QCOMPARE(stage_->tune().size(), 6);
}

void LiveNotesTest::twoNotesAtOnceAreRecorded()
{
    engine().play(5.0);
    press(Qt::Key_F);
    engine().setPlayheadBeat(6.0);
    press(Qt::Key_A);
    engine().setPlayheadBeat(7.0);
    release(Qt::Key_F);
    engine().setPlayheadBeat(8.0);
    release(Qt::Key_A);
    QCOMPARE(stage_->tune(), kTune + QStringList({"65@5+2", "69@6+2"}));
}

void LiveNotesTest::stoppingDoesNotEndALiveNote()
{
    engine().play(5.0);
    press(Qt::Key_F);
    engine().setPlayheadBeat(7.0);
    engine().pause();
    release(Qt::Key_F);
    QCOMPARE(stage_->tune().last(), "65@5+2");
    engine().play(9.0);
    press(Qt::Key_F);
    // Back to the start: the note is a step long.
    engine().stop();
    release(Qt::Key_F);
    QCOMPARE(stage_->tune().last(), "65@9+0.5");
}

void LiveNotesTest::pitchIsRecordedOnce()
{
    engine().play(5.0);
    canvas().live()->noteOn(65);
    engine().setPlayheadBeat(6.0);
    canvas().live()->noteOn(65);
    engine().setPlayheadBeat(7.0);
    canvas().live()->noteOff(65);
    canvas().live()->noteOff(65);
    QCOMPARE(stage_->tune(), kTune + QStringList{"65@5+2"});
    QCOMPARE(editor_->edits(), 1);
}

void LiveNotesTest::accompanimentRecordsNothingButTells()
{
    canvas().setActiveTrack(1);
    const Track before = stage_->song.tracks[1];
    engine().play(5.0);
    stage_->key(Qt::Key_F);
    QCOMPARE(heardNotes().filter("65"), QStringList({"on 65 100", "off 65"}));
    QCOMPARE(stage_->song.tracks[1], before);
    QCOMPARE(editor_->edits(), 1);
}

void LiveNotesTest::liveNotesOfTheMouseAreRecorded()
{
    engine().play(5.0);
    const QPoint key(10, stage_->at(0.0, 66).y());
    QTest::mousePress(canvas().keyboard(), Qt::LeftButton, {}, key);
    engine().setPlayheadBeat(6.5);
    QTest::mouseRelease(canvas().keyboard(), Qt::LeftButton, {}, key);
    QCOMPARE(stage_->tune().last(), "66@5+1.5");
}

void LiveNotesTest::liveNotesOfAnEndedContextAreForgotten()
{
    Project other;
    writeTune(other);
    engine().play(5.0);
    press(Qt::Key_F);
    canvas().setContext(&other, &engine());
    QVERIFY(!engine().previewHeld().contains(65));
    release(Qt::Key_F);
    QCOMPARE(stage_->tune(), kTune);
    QCOMPARE(written(other.tracks[0].melodyBlocks[0].notes), kTune);
    QCOMPARE(editor_->edits(), 0);
    canvas().setContext(nullptr, nullptr);
}

// ---- Notes that must not hang --------------------------------------------------------------

void LiveNotesTest::losingTheFocusEndsHeldLetters_data()
{
    QTest::addColumn<bool>("playing");

    QTest::newRow("in silence: nothing is written") << false;
    QTest::newRow("while the song plays: as if released") << true;
}

void LiveNotesTest::losingTheFocusEndsHeldLetters()
{
    QFETCH(bool, playing);
    QLineEdit elsewhere(&canvas());
    elsewhere.show();
    canvas().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&canvas()));
    canvas().setFocus();
    if (playing)
        engine().play(5.0);
    press(Qt::Key_F);
    QVERIFY(engine().previewHeld().contains(65));
    elsewhere.setFocus();
    QVERIFY(!engine().previewHeld().contains(65));
    QCOMPARE(stage_->tune().contains("65@5+0.5"), playing);
    QCOMPARE(editor_->edits(), playing ? 1 : 0);
    release(Qt::Key_F);
    QCOMPARE(editor_->edits(), playing ? 1 : 0);
}

void LiveNotesTest::openingAMenuEndsHeldLetters()
{
    canvas().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&canvas()));
    canvas().setFocus();
    press(Qt::Key_F);
    QMenu menu(&canvas());
    menu.addAction("Algo");
    menu.popup(canvas().mapToGlobal(QPoint(50, 50)));
    QVERIFY(!engine().previewHeld().contains(65));
}

void LiveNotesTest::lettersOfAButtonWithTheFocusEndWithIt()
{
    QLineEdit elsewhere(&canvas());
    elsewhere.show();
    canvas().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&canvas()));
    auto* button = canvas().findChild<QPushButton*>();
    button->setFocus();
    QTest::keyPress(button, Qt::Key_F);
    QVERIFY(engine().previewHeld().contains(65));
    elsewhere.setFocus();
    QVERIFY(!engine().previewHeld().contains(65));
}

void LiveNotesTest::clicksOnTheBarLeaveTheLetters()
{
    canvas().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&canvas()));
    QTest::mouseClick(stage_->grid(), Qt::LeftButton, {}, stage_->at(0.5, 60));
    QCOMPARE(QApplication::focusWidget(), &canvas());
    QTest::mouseClick(canvas().findChild<QPushButton*>(), Qt::LeftButton);
    QCOMPARE(QApplication::focusWidget(), &canvas());
    QTest::mouseClick(canvas().keyboard(), Qt::LeftButton, {}, QPoint(10, 10));
    QCOMPARE(QApplication::focusWidget(), &canvas());
}

void LiveNotesTest::drawnNoteSoundsWhileItIsHeld()
{
    canvas().setActiveTrack(2);
    stage_->press(stage_->at(6.0, 66));
    QCOMPARE(heard(), QStringList({"program 0 75", "on 66 100"}));
    stage_->move(stage_->at(9.0, 70));
    QVERIFY(heard().isEmpty());
    stage_->release(stage_->at(9.0, 70));
    QCOMPARE(heard(), QStringList{"off 66"});
    // Notes that are taken or moved are silent.
    stage_->drag(stage_->at(6.2, 66), stage_->at(7.2, 68));
    QVERIFY(heard().isEmpty());
}

void LiveNotesTest::drawnNoteOfALostDragIsSilenced_data()
{
    QTest::addColumn<int>("loss");

    QTest::newRow("undo") << 0;
    QTest::newRow("another track") << 1;
    QTest::newRow("no project") << 2;
    QTest::newRow("undo, and no move after it") << 3;
}

void LiveNotesTest::drawnNoteOfALostDragIsSilenced()
{
    QFETCH(int, loss);
    stage_->press(stage_->at(6.0, 66));
    QVERIFY(engine().previewHeld().contains(66));
    if (loss == 1)
        canvas().setActiveTrack(2);
    else if (loss == 2)
        canvas().setContext(nullptr, nullptr);
    else
        stage_->notes() = {note(60, 0.0)};
    if (loss == 0)
        stage_->move(stage_->at(7.0, 66));
    if (loss == 3)
        stage_->release(stage_->at(6.0, 66));
    QVERIFY(!engine().previewHeld().contains(66));
}

void LiveNotesTest::otherRepeatedKeysAreTaken()
{
    select({0});
    for (const Qt::Key key : {Qt::Key_C, Qt::Key_Delete, Qt::Key_X, Qt::Key_H}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(&canvas(), &event);
        QVERIFY(event.isAccepted());
    }
    QCOMPARE(stage_->tune(), kTune);
    QCOMPARE(canvas().live()->octave(), 4);
    QVERIFY(heard().isEmpty());
}

QTEST_MAIN(LiveNotesTest)

#include "LiveNotesTest.moc"
